// Fixed patterns laid over a picture: the dot grid, doubled scan lines, the
// green phosphor displays, the thatch grid, the bacterial cast, the two
// ghosting effects and the diagonal relief.
#include <type_traits>

#include "core/fpenv.h"
#include "filters/stylize.h"
#include "filters/stylize_simd.h"

namespace effects {
namespace {

using namespace stylize;

// ----------------------------------------------------------------- dot grid

// Every columnStep-th pixel of every rowStep-th row, from (0, 0). The
// counters are 64-bit so that the last step may pass the 32-bit range.
template <class P, class F>
void everyNth(const Picture<P>& pic, int32_t columnStep, int32_t rowStep, F&& f) {
  for (int64_t y = 0; y < pic.height(); y += rowStep) {
    P* r = pic.row(static_cast<int32_t>(y));
    for (int64_t x = 0; x < pic.width(); x += columnStep) f(r[x]);
  }
}

template <class L>
void pixelizer(int32_t width, int32_t height, typename L::Pixel* px, int32_t red, int32_t green, int32_t blue) {
  using P = typename L::Pixel;
  const auto pic = packedPicture(width, height, px);
  if constexpr (L::integer) {
    everyNth(pic, 2, 2, [=](P& p) {
      p.red = addClamped<L>(p.red, red);
      p.green = addClamped<L>(p.green, green);
      p.blue = addClamped<L>(p.blue, blue);
    });
  } else {
    const double r = red * k255, g = green * k255, b = blue * k255;
    everyNth(pic, 2, 2, [=](P& p) {
      p.red = static_cast<float>(p.red + r);
      p.green = static_cast<float>(p.green + g);
      p.blue = static_cast<float>(p.blue + b);
    });
  }
}

// ---------------------------------------------------------------- scan lines

template <class L>
void monitor(int32_t width, int32_t height, typename L::Pixel* px) {
  const auto pic = packedPicture(width, height, px);
  for (int32_t y = 0; y + 1 < pic.height(); y += 2) {
    const auto* from = pic.row(y);
    auto* to = pic.row(y + 1);
    for (int32_t x = 0; x < pic.width(); ++x) {
      to[x].blue = from[x].blue;
      to[x].green = from[x].green;
      to[x].red = from[x].red;
    }
  }
}

// Green raised by 150 (19274, 0.5882137516403699), blue and red cleared, on
// every third column (kind 3), every third row (kind 4) or both (kind 5).
template <class L, int Kind>
void digitalDisplay(int32_t width, int32_t height, typename L::Pixel* px) {
  using E = typename L::Element;
  const auto pic = packedPicture(width, height, px);
  constexpr int32_t rowStep = Kind == 3 ? 1 : 3, columnStep = Kind == 4 ? 1 : 3;
  everyNth(pic, columnStep, rowStep, [](typename L::Pixel& p) {
    if constexpr (std::is_same_v<L, Layout32>) p.green = addClamped<L>(p.green, 150);
    else if constexpr (std::is_same_v<L, Layout64>) p.green = addClamped<L>(p.green, 19274);
    else p.green = static_cast<float>(p.green + 0.5882137516403699);
    p.blue = E(0);
    p.red = E(0);
  });
}

// -------------------------------------------------------------------- thatch

// One pass over the rows instead of two: a pixel takes the row addition
// (even rows) and then the column addition (even columns), the order the two
// passes give it. Runs of whole vectors first, the plain additions after.
template <class L>
void thatch(int32_t width, int32_t height, typename L::Pixel* px) {
  using P = typename L::Pixel;
  const auto pic = packedPicture(width, height, px);
  if constexpr (L::integer) {
    using E = typename L::Element;
    constexpr bool bytes = std::is_same_v<L, Layout32>;
    constexpr E green = bytes ? 41 : 5268, red = bytes ? 79 : 10151;
    // Patterns of whole vectors: four 8-bit or two 16-bit pixels, from an
    // even column.
    constexpr size_t lanes = bytes ? 16 : 8;
    E everyPixel[lanes] = {}, evenPixels[lanes] = {}, none[lanes] = {};
    for (size_t i = 0; i < lanes; i += 4) {
      everyPixel[i + 1] = green, everyPixel[i + 2] = red;
      if (i % 8 == 0) evenPixels[i + 1] = green, evenPixels[i + 2] = red;
    }
    forEachRow(pic, [&](P* r, int32_t y) {
      const bool evenRow = y % 2 == 0;
      const size_t n = static_cast<size_t>(pic.width());
      size_t done;
      if constexpr (bytes) done = sse2::addCapped32(r, n, evenRow ? everyPixel : evenPixels, evenRow ? evenPixels : none);
      else done = sse2::addCapped64(r, n, evenRow ? everyPixel : evenPixels, evenRow ? evenPixels : none);
      for (size_t x = done; x < n; ++x) {
        if (evenRow) thatchRowPass<L>(r[x]);
        if (x % 2 == 0) thatchColumnPass<L>(r[x]);
      }
    });
  } else {
    thatchPlain<L>(pic);
  }
}

// ----------------------------------------------------------------- bacterial

// The strong and weak additions of modes 1..6, as (red, green, blue) in
// units of the strong (2) and weak (1) amount.
constexpr int32_t kBacterialShares[6][3] = {{2, 1, 0}, {2, 0, 1}, {0, 1, 2}, {1, 0, 2}, {0, 2, 1}, {1, 2, 0}};

// No addition, the weak one and the strong one: 41 and 79 wrap around in 8
// bits (a red of 200 becomes 23); 5268 and 10151 clamp in 16 bits; 5268/32767
// and 10151/32767 in float do not clamp.
template <class L> struct CastAmounts;
template <> struct CastAmounts<Layout32> { static constexpr uint8_t of[3] = {0, 41, 79}; };
template <> struct CastAmounts<Layout64> { static constexpr uint16_t of[3] = {0, 5268, 10151}; };
template <> struct CastAmounts<Layout128> {
  static constexpr double of[3] = {0, 0.16077150791955322, 0.3097933896908475};
};

template <class L>
void bacterial(int32_t width, int32_t height, typename L::Pixel* px, int32_t mode, int32_t channel) {
  using P = typename L::Pixel;
  const Channels ch = Channels::of(channel);
  if (mode < 1 || mode > 6 || !ch.any()) return;
  const auto pic = packedPicture(width, height, px);
  const int32_t* shares = kBacterialShares[mode - 1];
  const auto& amounts = CastAmounts<L>::of;
  const auto r = amounts[ch.red ? shares[0] : 0], g = amounts[ch.green ? shares[1] : 0];
  const auto b = amounts[ch.blue ? shares[2] : 0];
  forEachRow(pic, [&](P* row, int32_t) {
    const size_t n = static_cast<size_t>(pic.width());
    size_t done = 0;
    if constexpr (std::is_same_v<L, Layout32>) {
      done = sse2::addWrapping32(row, n, b, g, r);
    } else if constexpr (std::is_same_v<L, Layout64>) {
      const uint16_t pattern[8] = {b, g, r, 0, b, g, r, 0}, none[8] = {};
      done = sse2::addCapped64(row, n, pattern, none);
    }
    for (size_t x = done; x < n; ++x) castPixel<L>(row[x], r, g, b);
  });
}

// --------------------------------------------------------------------- ghosts

// The mean of two elements: a shift for the integer layouts, (a + b) x 0.5 in
// double precision for the float one.
template <class E>
inline E halfSum(E a, E b) {
  if constexpr (std::is_floating_point_v<E>) {
    return static_cast<E>((static_cast<double>(a) + b) * 0.5);
  } else {
    return static_cast<E>((a + b) >> 1);
  }
}

// In place, in raster order, so a target at (x + 3, y + 3) that later serves
// as the source of (x + 6, y + 6) carries its ghost on: the compounding is
// the look.
template <class L>
void goggles(int32_t width, int32_t height, typename L::Pixel* px) {
  if (height < 7 || width < 7) return;
  const auto pic = packedPicture(width, height, px);
  const ptrdiff_t target = pic.offset(3, 3), partner = pic.offset(6, 6);
  forEachInterior(pic, 0, 0, 6, 6, [=](auto& p, int32_t, int32_t) {
    auto& t = neighbour(&p, target);
    const auto& q = neighbour(&p, partner);
    t.red = halfSum(p.red, q.red);
    t.blue = halfSum(p.blue, q.blue);
  });
}

// Left to right, so the partner 15 pixels on still holds its entry value.
template <class L>
void doubleVision(int32_t width, int32_t height, typename L::Pixel* px) {
  const auto pic = packedPicture(width, height, px);
  forEachInterior(pic, 0, 0, 15, 0, [](auto& p, int32_t, int32_t) {
    const auto& q = (&p)[15];
    p.blue = halfSum(p.blue, q.blue);
    p.green = halfSum(p.green, q.green);
    p.red = halfSum(p.red, q.red);
  });
}

// -------------------------------------------------------------------- roughen

// In raster order from (1, 1), against the upper-left pixel as already
// rewritten. The integer layouts compute in wrapping 32-bit arithmetic and
// clamp to 0..255, the 16-bit one too (its pictures end at most at 255).
template <class L>
void roughen(int32_t width, int32_t height, typename L::Pixel* px, int32_t amount, int32_t divisor) {
  if (height < 2 || divisor == 0) return;
  const auto pic = packedPicture(width, height, px);
  const ptrdiff_t upperLeft = pic.offset(-1, -1);
  if constexpr (L::integer) {
    auto relief = [=](typename L::Element e, typename L::Element ul) {
      const int32_t c = compared<L>(e), p = compared<L>(ul);
      const int32_t v = wrapAdd(wrapMul(wrapSub(c, p), amount), divTrunc(c, divisor));
      return static_cast<typename L::Element>(clampTo(v, 0, 255));
    };
    forEachInterior(pic, 1, 1, 0, 0, [=](auto& p, int32_t, int32_t) {
      const auto& q = neighbour(&p, upperLeft);
      p.blue = relief(p.blue, q.blue);
      p.green = relief(p.green, q.green);
      p.red = relief(p.red, q.red);
    });
  } else {
    const float reciprocal = 1.0f / static_cast<float>(divisor);
    const float a = static_cast<float>(amount);
    auto relief = [=](float c, float p) { return (c - p) * a + c * reciprocal; };
    forEachInterior(pic, 1, 1, 0, 0, [=](auto& p, int32_t, int32_t) {
      const auto& q = neighbour(&p, upperLeft);
      p.blue = relief(p.blue, q.blue);
      p.green = relief(p.green, q.green);
      p.red = relief(p.red, q.red);
    });
  }
}

}  // namespace
}  // namespace effects

using namespace effects;

extern "C" {

EFFECTS_API int32_t EFFECTS_CALL VexoPixelizer32(int32_t w, int32_t h, Pixel32* px, int32_t r, int32_t g, int32_t b) { const FloatEnvironment env; pixelizer<Layout32>(w, h, px, r, g, b); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoPixelizer64(int32_t w, int32_t h, Pixel64* px, int32_t r, int32_t g, int32_t b) { const FloatEnvironment env; pixelizer<Layout64>(w, h, px, r, g, b); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoPixelizer128(int32_t w, int32_t h, Pixel128* px, int32_t r, int32_t g, int32_t b) { const FloatEnvironment env; pixelizer<Layout128>(w, h, px, r, g, b); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoMonitor32(int32_t w, int32_t h, Pixel32* px) { const FloatEnvironment env; monitor<Layout32>(w, h, px); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoMonitor64(int32_t w, int32_t h, Pixel64* px) { const FloatEnvironment env; monitor<Layout64>(w, h, px); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoMonitor128(int32_t w, int32_t h, Pixel128* px) { const FloatEnvironment env; monitor<Layout128>(w, h, px); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoDigitalDisplay332(int32_t w, int32_t h, Pixel32* px) { const FloatEnvironment env; digitalDisplay<Layout32, 3>(w, h, px); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoDigitalDisplay364(int32_t w, int32_t h, Pixel64* px) { const FloatEnvironment env; digitalDisplay<Layout64, 3>(w, h, px); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoDigitalDisplay3128(int32_t w, int32_t h, Pixel128* px) { const FloatEnvironment env; digitalDisplay<Layout128, 3>(w, h, px); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoDigitalDisplay432(int32_t w, int32_t h, Pixel32* px) { const FloatEnvironment env; digitalDisplay<Layout32, 4>(w, h, px); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoDigitalDisplay464(int32_t w, int32_t h, Pixel64* px) { const FloatEnvironment env; digitalDisplay<Layout64, 4>(w, h, px); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoDigitalDisplay4128(int32_t w, int32_t h, Pixel128* px) { const FloatEnvironment env; digitalDisplay<Layout128, 4>(w, h, px); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoDigitalDisplay532(int32_t w, int32_t h, Pixel32* px) { const FloatEnvironment env; digitalDisplay<Layout32, 5>(w, h, px); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoDigitalDisplay564(int32_t w, int32_t h, Pixel64* px) { const FloatEnvironment env; digitalDisplay<Layout64, 5>(w, h, px); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoDigitalDisplay5128(int32_t w, int32_t h, Pixel128* px) { const FloatEnvironment env; digitalDisplay<Layout128, 5>(w, h, px); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoThachet32(int32_t w, int32_t h, Pixel32* px, int32_t) { const FloatEnvironment env; thatch<Layout32>(w, h, px); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoThachet64(int32_t w, int32_t h, Pixel64* px, int32_t) { const FloatEnvironment env; thatch<Layout64>(w, h, px); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoThachet128(int32_t w, int32_t h, Pixel128* px, int32_t) { const FloatEnvironment env; thatch<Layout128>(w, h, px); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoBacterial32(int32_t w, int32_t h, Pixel32* px, int32_t mode, int32_t channel) { const FloatEnvironment env; bacterial<Layout32>(w, h, px, mode, channel); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoBacterial64(int32_t w, int32_t h, Pixel64* px, int32_t mode, int32_t channel) { const FloatEnvironment env; bacterial<Layout64>(w, h, px, mode, channel); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoBacterial128(int32_t w, int32_t h, Pixel128* px, int32_t mode, int32_t channel) { const FloatEnvironment env; bacterial<Layout128>(w, h, px, mode, channel); return 0; }

EFFECTS_API int32_t EFFECTS_CALL Vexo3DGoggles32(int32_t w, int32_t h, Pixel32* px) { const FloatEnvironment env; goggles<Layout32>(w, h, px); return 0; }
EFFECTS_API int32_t EFFECTS_CALL Vexo3DGoggles64(int32_t w, int32_t h, Pixel64* px) { const FloatEnvironment env; goggles<Layout64>(w, h, px); return 0; }
EFFECTS_API int32_t EFFECTS_CALL Vexo3DGoggles128(int32_t w, int32_t h, Pixel128* px) { const FloatEnvironment env; goggles<Layout128>(w, h, px); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoDoubleVision32(int32_t w, int32_t h, Pixel32* px) { const FloatEnvironment env; doubleVision<Layout32>(w, h, px); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoDoubleVision64(int32_t w, int32_t h, Pixel64* px) { const FloatEnvironment env; doubleVision<Layout64>(w, h, px); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoDoubleVision128(int32_t w, int32_t h, Pixel128* px) { const FloatEnvironment env; doubleVision<Layout128>(w, h, px); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoRoughen32(int32_t w, int32_t h, Pixel32* px, int32_t amount, int32_t divisor) { const FloatEnvironment env; roughen<Layout32>(w, h, px, amount, divisor); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoRoughen64(int32_t w, int32_t h, Pixel64* px, int32_t amount, int32_t divisor) { const FloatEnvironment env; roughen<Layout64>(w, h, px, amount, divisor); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoRoughen128(int32_t w, int32_t h, Pixel128* px, int32_t amount, int32_t divisor) { const FloatEnvironment env; roughen<Layout128>(w, h, px, amount, divisor); return 0; }

}  // extern "C"
