// The placement of a region (a layer, a brush stroke, a pasted selection) on a
// larger canvas, clipped to the canvas. Every export that takes a position
// shares this routine.
#pragma once

#include <cstddef>
#include <cstdint>

namespace effects::composite {

// Canvas rows rowStart..rowEnd-1 and columns colStart..colEnd-1 are covered;
// canvas pixel (cx, cy) corresponds to region pixel (cx - x, cy - y).
// The ends are clipped only at the far side of the canvas and the starts only
// at 0, so a region wholly outside yields an empty range. The arithmetic is
// 64-bit so that no position overflows.
struct Placement {
  int64_t x, y, width, height, canvasWidth;
  int64_t rowStart, rowEnd, colStart, colEnd;

  bool empty() const { return rowStart >= rowEnd || colStart >= colEnd; }

  // Index of canvas pixel (cx, cy).
  size_t canvasIndex(int64_t cx, int64_t cy) const {
    return static_cast<size_t>(cy * canvasWidth + cx);
  }
  // Index of the region pixel that lands on (cx, cy); with flip the region is
  // read (or written) upside down.
  size_t regionIndex(int64_t cx, int64_t cy, bool flip) const {
    const int64_t ry = flip ? height - 1 - (cy - y) : cy - y;
    return static_cast<size_t>(ry * width + (cx - x));
  }

  // Visits the covered pixels row by row from the top, left to right:
  // f(canvasIndex, regionIndex, flippedIndex), where flippedIndex is the
  // region index with the region turned upside down (a Flip export's region
  // pixel, and the bottom-up display pixel of a canvas composite).
  template <class F>
  void forEach(F&& f) const {
    for (int64_t cy = rowStart; cy < rowEnd; ++cy) {
      const int64_t canvasRow = cy * canvasWidth;
      const int64_t regionRow = (cy - y) * width - x;
      const int64_t flippedRow = (height - 1 - (cy - y)) * width - x;
      for (int64_t cx = colStart; cx < colEnd; ++cx)
        f(static_cast<size_t>(canvasRow + cx), static_cast<size_t>(regionRow + cx),
          static_cast<size_t>(flippedRow + cx));
    }
  }
};

inline Placement place(int32_t x, int32_t y, int32_t width, int32_t height, int32_t canvasWidth,
                       int32_t canvasHeight) {
  Placement p{x, y, width, height, canvasWidth, 0, 0, 0, 0};
  p.rowEnd = p.y + height;
  if (p.y + height - 1 >= canvasHeight) p.rowEnd = canvasHeight;
  p.colEnd = p.x + width;
  if (p.x + width - 1 >= canvasWidth) p.colEnd = canvasWidth;
  p.rowStart = y > 0 ? y : 0;
  p.colStart = x > 0 ? x : 0;
  return p;
}

}  // namespace effects::composite
