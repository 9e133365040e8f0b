// The placement of a region (a layer, a brush stroke, a pasted selection) on a
// larger canvas, clipped to the canvas. Every export that takes a position
// shares this routine.
#pragma once

#include <cstdint>

#include "core/picture.h"

namespace effects::composite {

// Canvas rows rowStart..rowEnd-1 and columns colStart..colEnd-1 are covered;
// canvas pixel (cx, cy) corresponds to region pixel (cx - x, cy - y).
// The ends are clipped only at the far side of the canvas and the starts only
// at 0, so a region wholly outside yields an empty range. The arithmetic is
// 64-bit so that no position overflows.
struct Placement {
  int64_t x, y, width, height;
  int64_t rowStart, rowEnd, colStart, colEnd;

  bool empty() const { return rowStart >= rowEnd || colStart >= colEnd; }

  // Visits the covered rows from the top: f(canvasRow, regionRow, canvasColumn,
  // regionColumn, count) for the `count` covered pixels of canvas row
  // `canvasRow` from `canvasColumn` on, which land on region row `regionRow`
  // from `regionColumn` on. A region turned upside down (a Flip export's
  // region, the bottom-up display of a composite) has row height - 1 -
  // regionRow there.
  template <class F>
  void forEachRow(F&& f) const {
    if (empty()) return;
    const auto count = static_cast<int32_t>(colEnd - colStart);
    for (int64_t cy = rowStart; cy < rowEnd; ++cy)
      f(static_cast<int32_t>(cy), static_cast<int32_t>(cy - y), static_cast<int32_t>(colStart),
        static_cast<int32_t>(colStart - x), count);
  }
  int32_t flipped(int32_t regionRow) const { return static_cast<int32_t>(height - 1 - regionRow); }
};

inline Placement place(int32_t x, int32_t y, int32_t width, int32_t height, int32_t canvasWidth,
                       int32_t canvasHeight) {
  Placement p{x, y, width, height, 0, 0, 0, 0};
  p.rowEnd = p.y + height;
  if (p.y + height - 1 >= canvasHeight) p.rowEnd = canvasHeight;
  p.colEnd = p.x + width;
  if (p.x + width - 1 >= canvasWidth) p.colEnd = canvasWidth;
  p.rowStart = y > 0 ? y : 0;
  p.colStart = x > 0 ? x : 0;
  return p;
}

// The region and the canvas of a placement as pictures. Whenever the
// placement covers anything, both are real pictures that contain every
// covered pixel; a size that cannot exist gives an empty placement.
template <class R, class C>
struct Placed {
  Placement placement;
  Picture<R> region;
  Picture<C> canvas;
};

template <class R, class C>
inline Placed<R, C> placeOn(int32_t x, int32_t y, int32_t width, int32_t height, R* region, C* canvas,
                            int32_t canvasWidth, int32_t canvasHeight) {
  Placed<R, C> p{place(x, y, width, height, canvasWidth, canvasHeight), packedPicture(width, height, region),
                 packedPicture(canvasWidth, canvasHeight, canvas)};
  if (p.region.empty() || p.canvas.empty()) p.placement.rowEnd = p.placement.rowStart;
  return p;
}

}  // namespace effects::composite
