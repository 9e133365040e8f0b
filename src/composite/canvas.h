// Compositing a placed region onto a canvas: the walk shared by the layer
// exports that draw to a device and those that only change the canvas.
#pragma once

#include "composite/blend.h"
#include "composite/clip.h"

namespace effects::composite {

// Blends every covered pixel of `source` onto `canvas` under `mode`, calling
// after(canvasPixel, displayIndex) once each pixel is finished, blended or
// not (displayIndex is the pixel's place in a bottom-up picture of the
// region). The mode is resolved once, so each mode runs its own loop.
// Returns false, touching nothing, for a mode outside 0..16.
template <class L, class After>
bool compositeOnCanvas(const Placement& p, const typename L::Pixel* source, typename L::Pixel* canvas,
                       const blend::Weight<L>& w, int32_t mode, After&& after) {
  return blend::withMode(mode, [&](auto m) {
    p.forEach([&](size_t ci, size_t ri, size_t di) {
      blend::blendPixel<L, decltype(m)::value>(canvas[ci], source[ri], w);
      after(canvas[ci], di);
    });
  });
}

// No display: only the canvas changes.
struct NoDisplay {
  template <class P>
  void operator()(const P&, size_t) const {}
};

}  // namespace effects::composite
