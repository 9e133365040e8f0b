// Layer compositing with presentation: a layer is blended onto an equally
// sized destination or placed on a larger canvas, and the 8-bit picture of
// the result is handed to a device context. The arithmetic is the blend
// engine's; this file adds the walks, the display pictures and the hand-off.
#include <algorithm>
#include <type_traits>

#include "composite/blend.h"
#include "composite/blend_simd.h"
#include "composite/canvas.h"
#include "composite/clip.h"
#include "composite/present.h"
#include "composite/show.h"
#include "core/fpenv.h"
#include "core/layout.h"
#include "core/numeric.h"

namespace effects::composite {
namespace {

using blend::Weight;

// The display rows of a Direct composite: blue, green and red of the canvas
// (the fourth byte is not written), 16 bits shifted down to 8, float through
// Q8 after mode 0 and clamped-and-rounded after the other modes.
struct ShowDirect {
  bool normal;
  void operator()(const Pixel32* c, Pixel32* d, size_t n) const { showRow(c, d, n); }
  void operator()(const Pixel64* c, Pixel32* d, size_t n) const { showRow(c, d, n); }
  void operator()(const Pixel128* c, Pixel32* d, size_t n) const {
    if (normal) showRow<true, false>(c, d, n);
    else showRow<false, false>(c, d, n);
  }
};

// The picture of a non-Direct composite: 16 bits shifted down to 8 (the
// fourth byte is left as it was), float through Q8 in all four elements.
inline void showWhole(const Pixel64* p, Pixel32* out, size_t n) { showRow(p, out, n); }
inline void showWhole(const Pixel128* p, Pixel32* out, size_t n) { showRow<true, true>(p, out, n); }

// Source and destination of equal size, composited pixel for pixel (with
// flip, destination row r takes source row height - 1 - r). The 8-bit
// destination is itself the picture; the others are shown through `display`.
template <class L>
int32_t advanced(void* dc, int32_t x, int32_t y, int32_t width, int32_t height,
                 typename L::Pixel* dst, const typename L::Pixel* src, Pixel32* display,
                 uint8_t opacity, int32_t mode, bool flip) {
  using P = typename L::Pixel;
  constexpr bool ownPicture = std::is_same_v<P, Pixel32>;
  if (opacity == 0) return -1;
  if (missing(width, height, dst) || missing(width, height, src) || (!ownPicture && missing(width, height, display)))
    return 1;
  const FloatEnvironment env;
  const Weight<L> w(opacity);
  const auto destination = packedPicture(width, height, dst);
  const auto source = packedPicture(width, height, src);
  const auto out = packedPicture(width, height, display);
  if (!source.empty()) {
    const bool known = blend::withMode(mode, [&](auto m) {
      forEachRow(destination, [&](P* d, int32_t r) {
        const P* s = source.row(flip ? height - 1 - r : r);
        Pixel32* o = ownPicture || out.empty() ? nullptr : out.row(r);
        blend::sse2::blendRow<L, decltype(m)::value>(d, s, static_cast<size_t>(width), w);
        if constexpr (!ownPicture) {
          if (o) showWhole(d, o, static_cast<size_t>(width));
        }
      });
    });
    if constexpr (!ownPicture) {
      // an unknown mode blends nothing, but the picture still shows the destination
      if (!known && !out.empty())
        forEachRow(destination, [&](P* d, int32_t r) { showWhole(d, out.row(r), static_cast<size_t>(width)); });
    }
  }
  const Pixel32* picture = ownPicture ? reinterpret_cast<const Pixel32*>(dst) : display;
  const uint32_t rowsAbs = height < 0 ? 0u - static_cast<uint32_t>(height) : static_cast<uint32_t>(height);
  present(dc, x, y, width, height, static_cast<uint32_t>(height),
          rowsAbs * static_cast<uint32_t>(width) * 4u, picture);
  return 1;
}

// The image size carried in the header of the Direct and Mask exports: the
// canvas width, not the drawn width.
inline uint32_t canvasImageSize(int32_t canvasWidth, int32_t height) {
  return static_cast<uint32_t>(canvasWidth) * 4u * static_cast<uint32_t>(height);
}

// The source placed at (x, y) on the canvas and clipped to it; each covered
// pixel's display pixel (bottom-up) is written after it, blended or not. The
// scan-line count handed to the device is the clipped row end.
template <class L>
int32_t advancedDirect(void* dc, int32_t x, int32_t y, int32_t width, int32_t height, Pixel32* display,
                       const typename L::Pixel* src, typename L::Pixel* canvas, int32_t canvasWidth,
                       int32_t canvasHeight, uint8_t opacity, int32_t mode) {
  if (opacity == 0) return -1;
  if (mode < 0 || mode >= blend::kModeCount) return 0;
  if (missing(width, height, src) || missing(width, height, display) || missing(canvasWidth, canvasHeight, canvas))
    return 1;
  const FloatEnvironment env;
  const auto p = placeOn(x, y, width, height, src, canvas, canvasWidth, canvasHeight);
  compositeOnCanvas<L>(p, packedPicture(width, height, display), Weight<L>(opacity), mode,
                       ShowDirect{mode == EFFECTS_BLEND_NORMAL});
  present(dc, x, y, width, height, static_cast<uint32_t>(p.placement.rowEnd),
          canvasImageSize(canvasWidth, height), display);
  return 1;
}

// Painting into the canvas mask: q = m x k x m (rounded in the integer
// layouts); mode 2 adds it, mode 1 takes it away, clamped to 0..M; any other
// mode changes nothing. Only the display's fourth byte is written.
template <class L>
typename L::Element paintedMask(typename L::Element c, typename L::Element m, const Weight<L>& w,
                                int32_t mode) {
  if constexpr (!L::integer) {
    const double amount = static_cast<double>(m) * w.k * static_cast<double>(m);
    if (mode == 2) return static_cast<float>(std::min(1.0, static_cast<double>(c) + amount));
    if (mode == 1) return static_cast<float>(std::max(0.0, static_cast<double>(c) - amount));
    return c;
  } else {
    using A = typename Weight<L>::Type;
    const int64_t q = roundToInt32(static_cast<A>(m) * w.k * static_cast<A>(m));
    if (mode == 2) return static_cast<typename L::Element>(std::min<int64_t>(L::full, c + q));
    if (mode == 1) return static_cast<typename L::Element>(std::max<int64_t>(0, c - q));
    return c;
  }
}

inline uint8_t shownMask(uint8_t m) { return m; }
inline uint8_t shownMask(uint16_t m) { return shown(m); }
inline uint8_t shownMask(float m) { return roundLowByte(m * 255); }

template <class L>
int32_t advancedMask(void* dc, int32_t x, int32_t y, int32_t width, int32_t height, Pixel32* display,
                     const typename L::Pixel* src, typename L::Pixel* canvas, int32_t canvasWidth,
                     int32_t canvasHeight, uint8_t opacity, int32_t mode) {
  if (opacity == 0) return -1;
  if (missing(width, height, src) || missing(width, height, display) || missing(canvasWidth, canvasHeight, canvas))
    return 1;
  const FloatEnvironment env;
  const auto p = placeOn(x, y, width, height, src, canvas, canvasWidth, canvasHeight);
  const auto out = packedPicture(width, height, display);
  const Weight<L> w(opacity);
  p.placement.forEachRow([&](int32_t cy, int32_t ry, int32_t cx, int32_t rx, int32_t n) {
    typename L::Pixel* c = p.canvas.row(cy) + cx;
    const typename L::Pixel* s = p.region.row(ry) + rx;
    Pixel32* d = out.empty() ? nullptr : out.row(p.placement.flipped(ry)) + rx;
    for (int32_t i = 0; i < n; ++i) {
      const auto m = s[i].mask;
      if (m != 0) c[i].mask = paintedMask<L>(c[i].mask, m, w, mode);
      if (d) d[i].mask = shownMask(c[i].mask);
    }
  });
  present(dc, x, y, width, height, static_cast<uint32_t>(p.placement.rowEnd),
          canvasImageSize(canvasWidth, height), display);
  return 1;
}

}  // namespace
}  // namespace effects::composite

using namespace effects;
using namespace effects::composite;

extern "C" {

EFFECTS_API int32_t EFFECTS_CALL Vexo32AdvancedDIB(void* hdc, int32_t x, int32_t y, int32_t width, int32_t height, Pixel32* destination, const Pixel32* source, uint8_t opacity, int32_t mode) { return advanced<Layout32>(hdc, x, y, width, height, destination, source, nullptr, opacity, mode, false); }
EFFECTS_API int32_t EFFECTS_CALL Vexo32AdvancedFlipDIB(void* hdc, int32_t x, int32_t y, int32_t width, int32_t height, Pixel32* destination, const Pixel32* source, uint8_t opacity, int32_t mode) { return advanced<Layout32>(hdc, x, y, width, height, destination, source, nullptr, opacity, mode, true); }
EFFECTS_API int32_t EFFECTS_CALL Vexo64AdvancedDIB(void* hdc, int32_t x, int32_t y, int32_t width, int32_t height, Pixel64* destination, const Pixel64* source, Pixel32* display, uint8_t opacity, int32_t mode) { return advanced<Layout64>(hdc, x, y, width, height, destination, source, display, opacity, mode, false); }
EFFECTS_API int32_t EFFECTS_CALL Vexo128AdvancedDIB(void* hdc, int32_t x, int32_t y, int32_t width, int32_t height, Pixel128* destination, const Pixel128* source, Pixel32* display, uint8_t opacity, int32_t mode) { return advanced<Layout128>(hdc, x, y, width, height, destination, source, display, opacity, mode, false); }

EFFECTS_API int32_t EFFECTS_CALL Vexo32AdvancedDirectDIB(void* hdc, int32_t x, int32_t y, int32_t width, int32_t height, Pixel32* display, const Pixel32* source, Pixel32* canvas, int32_t canvasWidth, int32_t canvasHeight, uint8_t opacity, int32_t mode) { return advancedDirect<Layout32>(hdc, x, y, width, height, display, source, canvas, canvasWidth, canvasHeight, opacity, mode); }
EFFECTS_API int32_t EFFECTS_CALL Vexo64AdvancedDirectDIB(void* hdc, int32_t x, int32_t y, int32_t width, int32_t height, Pixel32* display, const Pixel64* source, Pixel64* canvas, int32_t canvasWidth, int32_t canvasHeight, uint8_t opacity, int32_t mode) { return advancedDirect<Layout64>(hdc, x, y, width, height, display, source, canvas, canvasWidth, canvasHeight, opacity, mode); }
EFFECTS_API int32_t EFFECTS_CALL Vexo128AdvancedDirectDIB(void* hdc, int32_t x, int32_t y, int32_t width, int32_t height, Pixel32* display, const Pixel128* source, Pixel128* canvas, int32_t canvasWidth, int32_t canvasHeight, uint8_t opacity, int32_t mode) { return advancedDirect<Layout128>(hdc, x, y, width, height, display, source, canvas, canvasWidth, canvasHeight, opacity, mode); }

EFFECTS_API int32_t EFFECTS_CALL Vexo32AdvancedMaskDIB(void* hdc, int32_t x, int32_t y, int32_t width, int32_t height, Pixel32* display, const Pixel32* source, Pixel32* canvas, int32_t canvasWidth, int32_t canvasHeight, uint8_t opacity, int32_t mode) { return advancedMask<Layout32>(hdc, x, y, width, height, display, source, canvas, canvasWidth, canvasHeight, opacity, mode); }
EFFECTS_API int32_t EFFECTS_CALL Vexo64AdvancedMaskDIB(void* hdc, int32_t x, int32_t y, int32_t width, int32_t height, Pixel32* display, const Pixel64* source, Pixel64* canvas, int32_t canvasWidth, int32_t canvasHeight, uint8_t opacity, int32_t mode) { return advancedMask<Layout64>(hdc, x, y, width, height, display, source, canvas, canvasWidth, canvasHeight, opacity, mode); }
EFFECTS_API int32_t EFFECTS_CALL Vexo128AdvancedMaskDIB(void* hdc, int32_t x, int32_t y, int32_t width, int32_t height, Pixel32* display, const Pixel128* source, Pixel128* canvas, int32_t canvasWidth, int32_t canvasHeight, uint8_t opacity, int32_t mode) { return advancedMask<Layout128>(hdc, x, y, width, height, display, source, canvas, canvasWidth, canvasHeight, opacity, mode); }

// The per-byte average of blue, green and red, each rounded down; the fourth
// byte comes out 0.
EFFECTS_API int32_t EFFECTS_CALL Blending(uint32_t a, uint32_t b) { return static_cast<int32_t>(((a >> 1) & 0x7F7F7Fu) + ((b >> 1) & 0x7F7F7Fu)); }
EFFECTS_API double EFFECTS_CALL Blending128(float a, float b) { const FloatEnvironment env; return (static_cast<double>(a) + static_cast<double>(b)) * 0.5; }

}  // extern "C"
