// Compositing and copying between a region and a canvas without a device:
// blending a layer into a canvas, pasting a region in and cutting it back out
// (optionally upside down, with or without the mask), merging two equal
// buffers through the source mask, and painting a layer mask into a canvas
// mask.
#include "composite/blend.h"
#include "composite/canvas.h"
#include "composite/clip.h"
#include "composite/direct_simd.h"
#include "core/fpenv.h"
#include "core/layout.h"
#include "core/numeric.h"

namespace effects::composite {
namespace {

template <class L>
int32_t directBlend(int32_t x, int32_t y, int32_t width, int32_t height, const typename L::Pixel* src,
                    typename L::Pixel* canvas, int32_t canvasWidth, int32_t canvasHeight, int32_t opacity,
                    int32_t mode) {
  if (opacity == 0) return -1;
  const FloatEnvironment env;
  const auto p = placeOn(x, y, width, height, src, canvas, canvasWidth, canvasHeight);
  compositeOnCanvas<L>(p, Picture<Pixel32>{}, blend::Weight<L>(opacity), mode, NoDisplay{});
  return 1;
}

// Region into canvas (paste), or canvas into region (cut: only region pixels
// over a covered canvas pixel change). Elements are copied as they are, no
// conversion; with flip the region is read or written upside down.
template <class P>
int32_t transfer(int32_t x, int32_t y, int32_t width, int32_t height, P* region, P* canvas,
                 int32_t canvasWidth, int32_t canvasHeight, bool intoCanvas, bool flip, bool withMask) {
  const auto p = placeOn(x, y, width, height, region, canvas, canvasWidth, canvasHeight);
  p.placement.forEachRow([&](int32_t cy, int32_t ry, int32_t cx, int32_t rx, int32_t n) {
    P* c = p.canvas.row(cy) + cx;
    P* r = p.region.row(flip ? p.placement.flipped(ry) : ry) + rx;
    if (intoCanvas) direct::copyRow(c, r, n, withMask);
    else direct::copyRow(r, c, n, withMask);
  });
  return 1;
}

template <class P>
int32_t pasteRegion(int32_t x, int32_t y, int32_t width, int32_t height, const P* region, P* canvas,
                    int32_t canvasWidth, int32_t canvasHeight, bool flip, bool withMask) {
  // The region is only read on this path.
  return transfer(x, y, width, height, const_cast<P*>(region), canvas, canvasWidth, canvasHeight, true, flip,
                  withMask);
}

template <class P>
int32_t cutRegion(int32_t x, int32_t y, int32_t width, int32_t height, P* region, const P* canvas,
                  int32_t canvasWidth, int32_t canvasHeight, bool flip, bool withMask) {
  // The canvas is only read on this path.
  return transfer(x, y, width, height, region, const_cast<P*>(canvas), canvasWidth, canvasHeight, false, flip,
                  withMask);
}

template <class L>
void drawRegional(int32_t elementCount, const typename L::Pixel* src, typename L::Pixel* dst) {
  const FloatEnvironment env;
  const size_t n = pixelsForCount<typename L::Pixel>(elementCount);
  if (src == nullptr || dst == nullptr) return;
  for (size_t i = direct::regionalVectors(src, dst, n); i < n; ++i) direct::regionalPixel(src[i], dst[i]);
}

// The canvas mask moves toward the region mask (direct::maskToward).
int32_t directMask(int32_t x, int32_t y, int32_t width, int32_t height, const Pixel32* src, Pixel32* canvas,
                   int32_t canvasWidth, int32_t canvasHeight, int32_t opacity) {
  if (opacity == 0) return -1;
  const FloatEnvironment env;
  const auto p = placeOn(x, y, width, height, src, canvas, canvasWidth, canvasHeight);
  const float k = static_cast<float>(opacity) * 3.92156862e-5f;
  p.placement.forEachRow([&](int32_t cy, int32_t ry, int32_t cx, int32_t rx, int32_t n) {
    Pixel32* c = p.canvas.row(cy) + cx;
    const Pixel32* r = p.region.row(ry) + rx;
    for (auto i = static_cast<int32_t>(direct::maskTowardVectors(r, c, static_cast<size_t>(n), k)); i < n; ++i)
      direct::maskToward(r[i], c[i], k);
  });
  return 1;
}

}  // namespace
}  // namespace effects::composite

using namespace effects;
using namespace effects::composite;

extern "C" {

EFFECTS_API int32_t EFFECTS_CALL Vexo32DirectDIB(int32_t x, int32_t y, int32_t width, int32_t height, const Pixel32* source, Pixel32* canvas, int32_t canvasWidth, int32_t canvasHeight, int32_t opacity, int32_t mode) { return directBlend<Layout32>(x, y, width, height, source, canvas, canvasWidth, canvasHeight, opacity, mode); }
EFFECTS_API int32_t EFFECTS_CALL Vexo64DirectDIB(int32_t x, int32_t y, int32_t width, int32_t height, const Pixel64* source, Pixel64* canvas, int32_t canvasWidth, int32_t canvasHeight, int32_t opacity, int32_t mode) { return directBlend<Layout64>(x, y, width, height, source, canvas, canvasWidth, canvasHeight, opacity, mode); }
EFFECTS_API int32_t EFFECTS_CALL Vexo128DirectDIB(int32_t x, int32_t y, int32_t width, int32_t height, const Pixel128* source, Pixel128* canvas, int32_t canvasWidth, int32_t canvasHeight, int32_t opacity, int32_t mode) { return directBlend<Layout128>(x, y, width, height, source, canvas, canvasWidth, canvasHeight, opacity, mode); }

EFFECTS_API int32_t EFFECTS_CALL Vexo32DirectBitBltDIB(int32_t x, int32_t y, int32_t width, int32_t height, const Pixel32* source, Pixel32* canvas, int32_t canvasWidth, int32_t canvasHeight) { return pasteRegion(x, y, width, height, source, canvas, canvasWidth, canvasHeight, false, false); }
EFFECTS_API int32_t EFFECTS_CALL Vexo64DirectBitBltDIB(int32_t x, int32_t y, int32_t width, int32_t height, const Pixel64* source, Pixel64* canvas, int32_t canvasWidth, int32_t canvasHeight) { return pasteRegion(x, y, width, height, source, canvas, canvasWidth, canvasHeight, false, false); }
EFFECTS_API int32_t EFFECTS_CALL Vexo128DirectBitBltDIB(int32_t x, int32_t y, int32_t width, int32_t height, const Pixel128* source, Pixel128* canvas, int32_t canvasWidth, int32_t canvasHeight) { return pasteRegion(x, y, width, height, source, canvas, canvasWidth, canvasHeight, false, false); }
EFFECTS_API int32_t EFFECTS_CALL Vexo32DirectBitBltMaskDIB(int32_t x, int32_t y, int32_t width, int32_t height, const Pixel32* source, Pixel32* canvas, int32_t canvasWidth, int32_t canvasHeight) { return pasteRegion(x, y, width, height, source, canvas, canvasWidth, canvasHeight, false, true); }
EFFECTS_API int32_t EFFECTS_CALL Vexo64DirectBitBltMaskDIB(int32_t x, int32_t y, int32_t width, int32_t height, const Pixel64* source, Pixel64* canvas, int32_t canvasWidth, int32_t canvasHeight) { return pasteRegion(x, y, width, height, source, canvas, canvasWidth, canvasHeight, false, true); }
EFFECTS_API int32_t EFFECTS_CALL Vexo128DirectBitBltMaskDIB(int32_t x, int32_t y, int32_t width, int32_t height, const Pixel128* source, Pixel128* canvas, int32_t canvasWidth, int32_t canvasHeight) { return pasteRegion(x, y, width, height, source, canvas, canvasWidth, canvasHeight, false, true); }
EFFECTS_API int32_t EFFECTS_CALL Vexo32DirectBitBltFlipDIB(int32_t x, int32_t y, int32_t width, int32_t height, const Pixel32* source, Pixel32* canvas, int32_t canvasWidth, int32_t canvasHeight) { return pasteRegion(x, y, width, height, source, canvas, canvasWidth, canvasHeight, true, false); }
EFFECTS_API int32_t EFFECTS_CALL Vexo64DirectBitBltFlipDIB(int32_t x, int32_t y, int32_t width, int32_t height, const Pixel64* source, Pixel64* canvas, int32_t canvasWidth, int32_t canvasHeight) { return pasteRegion(x, y, width, height, source, canvas, canvasWidth, canvasHeight, true, false); }
EFFECTS_API int32_t EFFECTS_CALL Vexo128DirectBitBltFlipDIB(int32_t x, int32_t y, int32_t width, int32_t height, const Pixel128* source, Pixel128* canvas, int32_t canvasWidth, int32_t canvasHeight) { return pasteRegion(x, y, width, height, source, canvas, canvasWidth, canvasHeight, true, false); }
EFFECTS_API int32_t EFFECTS_CALL Vexo32DirectBitBltFlipMaskDIB(int32_t x, int32_t y, int32_t width, int32_t height, const Pixel32* source, Pixel32* canvas, int32_t canvasWidth, int32_t canvasHeight) { return pasteRegion(x, y, width, height, source, canvas, canvasWidth, canvasHeight, true, true); }
EFFECTS_API int32_t EFFECTS_CALL Vexo64DirectBitBltFlipMaskDIB(int32_t x, int32_t y, int32_t width, int32_t height, const Pixel64* source, Pixel64* canvas, int32_t canvasWidth, int32_t canvasHeight) { return pasteRegion(x, y, width, height, source, canvas, canvasWidth, canvasHeight, true, true); }
EFFECTS_API int32_t EFFECTS_CALL Vexo128DirectBitBltFlipMaskDIB(int32_t x, int32_t y, int32_t width, int32_t height, const Pixel128* source, Pixel128* canvas, int32_t canvasWidth, int32_t canvasHeight) { return pasteRegion(x, y, width, height, source, canvas, canvasWidth, canvasHeight, true, true); }

EFFECTS_API int32_t EFFECTS_CALL Vexo32BitBltDIB(int32_t x, int32_t y, int32_t width, int32_t height, Pixel32* region, const Pixel32* canvas, int32_t canvasWidth, int32_t canvasHeight) { return cutRegion(x, y, width, height, region, canvas, canvasWidth, canvasHeight, false, false); }
EFFECTS_API int32_t EFFECTS_CALL Vexo64BitBltDIB(int32_t x, int32_t y, int32_t width, int32_t height, Pixel64* region, const Pixel64* canvas, int32_t canvasWidth, int32_t canvasHeight) { return cutRegion(x, y, width, height, region, canvas, canvasWidth, canvasHeight, false, false); }
EFFECTS_API int32_t EFFECTS_CALL Vexo128BitBltDIB(int32_t x, int32_t y, int32_t width, int32_t height, Pixel128* region, const Pixel128* canvas, int32_t canvasWidth, int32_t canvasHeight) { return cutRegion(x, y, width, height, region, canvas, canvasWidth, canvasHeight, false, false); }
EFFECTS_API int32_t EFFECTS_CALL Vexo32BitBltFlipDIB(int32_t x, int32_t y, int32_t width, int32_t height, Pixel32* region, const Pixel32* canvas, int32_t canvasWidth, int32_t canvasHeight) { return cutRegion(x, y, width, height, region, canvas, canvasWidth, canvasHeight, true, false); }
EFFECTS_API int32_t EFFECTS_CALL Vexo64BitBltFlipDIB(int32_t x, int32_t y, int32_t width, int32_t height, Pixel64* region, const Pixel64* canvas, int32_t canvasWidth, int32_t canvasHeight) { return cutRegion(x, y, width, height, region, canvas, canvasWidth, canvasHeight, true, false); }
EFFECTS_API int32_t EFFECTS_CALL Vexo128BitBltFlipDIB(int32_t x, int32_t y, int32_t width, int32_t height, Pixel128* region, const Pixel128* canvas, int32_t canvasWidth, int32_t canvasHeight) { return cutRegion(x, y, width, height, region, canvas, canvasWidth, canvasHeight, true, false); }
EFFECTS_API int32_t EFFECTS_CALL Vexo32BitBltFlipMaskDIB(int32_t x, int32_t y, int32_t width, int32_t height, Pixel32* region, const Pixel32* canvas, int32_t canvasWidth, int32_t canvasHeight) { return cutRegion(x, y, width, height, region, canvas, canvasWidth, canvasHeight, true, true); }
EFFECTS_API int32_t EFFECTS_CALL Vexo64BitBltFlipMaskDIB(int32_t x, int32_t y, int32_t width, int32_t height, Pixel64* region, const Pixel64* canvas, int32_t canvasWidth, int32_t canvasHeight) { return cutRegion(x, y, width, height, region, canvas, canvasWidth, canvasHeight, true, true); }
EFFECTS_API int32_t EFFECTS_CALL Vexo128BitBltFlipMaskDIB(int32_t x, int32_t y, int32_t width, int32_t height, Pixel128* region, const Pixel128* canvas, int32_t canvasWidth, int32_t canvasHeight) { return cutRegion(x, y, width, height, region, canvas, canvasWidth, canvasHeight, true, true); }

EFFECTS_API int32_t EFFECTS_CALL Vexo32DirectDrawRegional(int32_t elementCount, const Pixel32* source, Pixel32* destination) { drawRegional<Layout32>(elementCount, source, destination); return 1; }
EFFECTS_API int32_t EFFECTS_CALL Vexo64DirectDrawRegional(int32_t elementCount, const Pixel64* source, Pixel64* destination) { drawRegional<Layout64>(elementCount, source, destination); return 1; }
EFFECTS_API int32_t EFFECTS_CALL Vexo128DirectDrawRegional(int32_t elementCount, const Pixel128* source, Pixel128* destination) { drawRegional<Layout128>(elementCount, source, destination); return 1; }

// The tenth argument is accepted and not used.
EFFECTS_API int32_t EFFECTS_CALL Vexo32DirectMaskDIB(int32_t x, int32_t y, int32_t width, int32_t height, const Pixel32* source, Pixel32* canvas, int32_t canvasWidth, int32_t canvasHeight, int32_t opacity, int32_t) { return directMask(x, y, width, height, source, canvas, canvasWidth, canvasHeight, opacity); }

}  // extern "C"
