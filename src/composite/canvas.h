// Compositing a placed region onto a canvas: the walk shared by the layer
// exports that draw to a device and those that only change the canvas.
#pragma once

#include "composite/blend.h"
#include "composite/blend_simd.h"
#include "composite/clip.h"

namespace effects::composite {

// Blends every covered pixel of the region onto the canvas under `mode`, a
// row at a time, and when there is a display calls after(canvasRow,
// displayRow, count) once the row is finished (every covered pixel, blended
// or not). The display is a picture of the region's size, bottom-up (row
// height - 1 - r shows region row r). The mode is resolved once, so each mode
// runs its own loop. Returns false, touching nothing, for a mode outside
// 0..16.
template <class L, class Display, class After>
bool compositeOnCanvas(const Placed<const typename L::Pixel, typename L::Pixel>& p,
                       const Picture<Display>& display, const blend::Weight<L>& w, int32_t mode, After&& after) {
  return blend::withMode(mode, [&](auto m) {
    p.placement.forEachRow([&](int32_t cy, int32_t ry, int32_t cx, int32_t rx, int32_t n) {
      typename L::Pixel* c = p.canvas.row(cy) + cx;
      const typename L::Pixel* s = p.region.row(ry) + rx;
      Display* d = display.empty() ? nullptr : display.row(p.placement.flipped(ry)) + rx;
      blend::sse2::blendRow<L, decltype(m)::value>(c, s, static_cast<size_t>(n), w);
      if (d) after(c, d, static_cast<size_t>(n));
    });
  });
}

// No display: only the canvas changes.
struct NoDisplay {
  template <class P, class D>
  void operator()(const P*, D*, size_t) const {}
};

}  // namespace effects::composite
