// Compositing a placed region onto a canvas: the walk shared by the layer
// exports that draw to a device and those that only change the canvas.
#pragma once

#include "composite/blend.h"
#include "composite/clip.h"

namespace effects::composite {

// Blends every covered pixel of the region onto the canvas under `mode`,
// calling after(canvasPixel, displayPixel) once each pixel is finished,
// blended or not; the display is a picture of the region's size, bottom-up
// (row height - 1 - r shows region row r). The mode is resolved once, so each
// mode runs its own loop. Returns false, touching nothing, for a mode outside
// 0..16.
template <class L, class Display, class After>
bool compositeOnCanvas(const Placed<const typename L::Pixel, typename L::Pixel>& p,
                       const Picture<Display>& display, const blend::Weight<L>& w, int32_t mode, After&& after) {
  return blend::withMode(mode, [&](auto m) {
    p.placement.forEachRow([&](int32_t cy, int32_t ry, int32_t cx, int32_t rx, int32_t n) {
      typename L::Pixel* c = p.canvas.row(cy) + cx;
      const typename L::Pixel* s = p.region.row(ry) + rx;
      Display* d = display.empty() ? nullptr : display.row(p.placement.flipped(ry)) + rx;
      for (int32_t i = 0; i < n; ++i) {
        blend::blendPixel<L, decltype(m)::value>(c[i], s[i], w);
        after(c[i], d ? d + i : nullptr);
      }
    });
  });
}

// No display: only the canvas changes.
struct NoDisplay {
  template <class P, class D>
  void operator()(const P&, D*) const {}
};

}  // namespace effects::composite
