// Threshold effects over an element count: the halftone levels, the mask
// threshold, the custom halftone and the two posterizes. Each pixel is decided
// on its own values, so every family is one pass.
#include "core/fpenv.h"
#include "filters/stylize.h"
#include "filters/stylize_simd.h"

namespace effects {
namespace {

using namespace stylize;

// ------------------------------------------------------------------ halftone

// Dark and bright limits of halftone levels 1..3, on each layout's sum scale.
// Level 2's pair differs by one in the 8-bit layout (383 / 382): a sum of
// exactly 383 goes dark, and comes back bright when the channels it cleared
// were 0 already.
template <class L> struct HalftoneLimits;
template <> struct HalftoneLimits<Layout32> {
  static constexpr int32_t dark[3] = {200, 383, 500}, bright[3] = {200, 382, 500};
};
template <> struct HalftoneLimits<Layout64> {
  static constexpr int32_t dark[3] = {8566, 16404, 21416}, bright[3] = {8566, 16404, 21416};
};
template <> struct HalftoneLimits<Layout128> {
  static constexpr double dark[3] = {0.26142155217139196, 0.5006256294442579, 0.6535843989379558};
  static constexpr double bright[3] = {0.26142155217139196, 0.5006256294442579, 0.6535843989379558};
};

// The vector forms do whole vectors, the plain form the rest.
template <class L, class Limit>
void thresholdSum(int32_t n, typename L::Pixel* px, Limit dark, Limit bright, Channels ch) {
  if (n < 1 || px == nullptr) return;
  const size_t count = pixelsForCount<typename L::Pixel>(n);
  size_t done = 0;
  if constexpr (std::is_same_v<L, Layout32>) done = sse2::halftone32(px, count, dark, bright, ch);
  if constexpr (std::is_same_v<L, Layout64>) done = sse2::halftone64(px, count, dark, bright, ch);
  for (size_t i = done; i < count; ++i) halftonePixel<L>(px[i], dark, bright, ch);
}

template <class L>
void halftone(int32_t n, typename L::Pixel* px, int32_t level, int32_t channel) {
  const Channels ch = Channels::of(channel);
  if (level < 1 || level > 3 || !ch.any()) return;
  using Limits = HalftoneLimits<L>;
  thresholdSum<L>(n, px, Limits::dark[level - 1], Limits::bright[level - 1], ch);
}

// Every pixel ends black or white. The limit is compared on each layout's
// own sum scale (converted to float for the float layout).
template <class L>
void customHalftone(int32_t n, typename L::Pixel* px, int32_t limit, int32_t enable) {
  if (enable != 1) return;
  const Channels all = Channels::of(1);
  if constexpr (L::integer) {
    thresholdSum<L>(n, px, limit, limit, all);
  } else {
    const float f = static_cast<float>(limit);
    thresholdSum<L>(n, px, f, f, all);
  }
}

// The mask becomes full or 0. The 16-bit threshold is inclusive and reads the
// mask as a signed value.
template <class L>
void halftoneMask(int32_t n, typename L::Pixel* px) {
  using P = typename L::Pixel;
  using E = typename L::Element;
  forEachPixel(n, px, [](P& p) {
    bool on;
    if constexpr (std::is_same_v<L, Layout32>) on = p.mask > 50;
    else if constexpr (std::is_same_v<L, Layout64>) on = compared<L>(p.mask) >= 6425;
    else on = p.mask > 0.19605090487380597;
    p.mask = on ? L::full : E(0);
  });
}

// ---------------------------------------------------------------- posterizes

// The low and high limits of polar-pass levels 1..4. The 16-bit limits are the
// 8-bit ones times 32767/255, truncated; the float ones are the 16-bit ones
// over 32767, so the float member follows the 16-bit grid.
template <class L> struct PolarLimits;
template <> struct PolarLimits<Layout32> {
  static constexpr int32_t low[4] = {50, 75, 127, 200}, high[4] = {200, 150, 128, 200};
};
template <> struct PolarLimits<Layout64> {
  static constexpr int32_t low[4] = {6424, 9637, 16383, 25699}, high[4] = {25699, 19274, 16383, 25699};
};
template <> struct PolarLimits<Layout128> {
  static constexpr double low[4] = {0.19605090487380597, 0.29410687582018497, 0.499984740745262,
                                    0.7842951750236519};
  static constexpr double high[4] = {0.7842951750236519, 0.5882137516403699, 0.499984740745262,
                                     0.7842951750236519};
};

template <class L>
void polarPass(int32_t n, typename L::Pixel* px, int32_t level, int32_t channel) {
  const Channels ch = Channels::of(channel);
  if (n < 1 || px == nullptr || level < 1 || level > 4 || !ch.any()) return;
  const auto low = PolarLimits<L>::low[level - 1], high = PolarLimits<L>::high[level - 1];
  const size_t count = pixelsForCount<typename L::Pixel>(n);
  size_t done = 0;
  if constexpr (std::is_same_v<L, Layout32>) done = sse2::polarPass32(px, count, low, high, ch);
  if constexpr (std::is_same_v<L, Layout64>) done = sse2::polarPass64(px, count, low, high, ch);
  for (size_t i = done; i < count; ++i) polarPixel<L>(px[i], low, high, ch);
}

// One element of the two-limit posterize: below low it becomes 0, then the
// (possibly new) value above high becomes full.
template <class L, class Limit>
inline typename L::Element twoLimits(typename L::Element e, Limit low, Limit high) {
  if (compared<L>(e) < low) e = 0;
  if (compared<L>(e) > high) e = L::full;
  return e;
}

template <class L>
void multiPolarPass(int32_t n, typename L::Pixel* px, int32_t blueHigh, int32_t blueLow, int32_t greenHigh,
                    int32_t greenLow, int32_t redHigh, int32_t redLow) {
  using P = typename L::Pixel;
  if constexpr (L::integer) {
    constexpr int32_t full = fullInt<L>;
    if (blueHigh == full && greenHigh == full && redHigh == full && blueLow == 0 && greenLow == 0 && redLow == 0)
      return;
    forEachPixel(n, px, [=](P& p) {
      p.blue = twoLimits<L>(p.blue, blueLow, blueHigh);
      p.green = twoLimits<L>(p.green, greenLow, greenHigh);
      p.red = twoLimits<L>(p.red, redLow, redHigh);
    });
  } else {
    // Limits over 255 in double; the elements are compared in double.
    const double bh = blueHigh * k255, bl = blueLow * k255, gh = greenHigh * k255, gl = greenLow * k255;
    const double rh = redHigh * k255, rl = redLow * k255;
    forEachPixel(n, px, [=](P& p) {
      p.blue = twoLimits<L>(p.blue, bl, bh);
      p.green = twoLimits<L>(p.green, gl, gh);
      p.red = twoLimits<L>(p.red, rl, rh);
    });
  }
}

}  // namespace
}  // namespace effects

using namespace effects;

extern "C" {

EFFECTS_API int32_t EFFECTS_CALL VexoHalftone32(int32_t n, Pixel32* px, int32_t level, int32_t channel) { const FloatEnvironment env; halftone<Layout32>(n, px, level, channel); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoHalftone64(int32_t n, Pixel64* px, int32_t level, int32_t channel) { const FloatEnvironment env; halftone<Layout64>(n, px, level, channel); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoHalftone128(int32_t n, Pixel128* px, int32_t level, int32_t channel) { const FloatEnvironment env; halftone<Layout128>(n, px, level, channel); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoHalftoneMask32(int32_t n, Pixel32* px) { const FloatEnvironment env; halftoneMask<Layout32>(n, px); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoHalftoneMask64(int32_t n, Pixel64* px) { const FloatEnvironment env; halftoneMask<Layout64>(n, px); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoHalftoneMask128(int32_t n, Pixel128* px) { const FloatEnvironment env; halftoneMask<Layout128>(n, px); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoCustomHalftone32(int32_t n, Pixel32* px, int32_t limit, int32_t enable) { const FloatEnvironment env; customHalftone<Layout32>(n, px, limit, enable); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoCustomHalftone64(int32_t n, Pixel64* px, int32_t limit, int32_t enable) { const FloatEnvironment env; customHalftone<Layout64>(n, px, limit, enable); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoCustomHalftone128(int32_t n, Pixel128* px, int32_t limit, int32_t enable) { const FloatEnvironment env; customHalftone<Layout128>(n, px, limit, enable); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoPolarPass32(int32_t n, Pixel32* px, int32_t level, int32_t channel) { const FloatEnvironment env; polarPass<Layout32>(n, px, level, channel); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoPolarPass64(int32_t n, Pixel64* px, int32_t level, int32_t channel) { const FloatEnvironment env; polarPass<Layout64>(n, px, level, channel); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoPolarPass128(int32_t n, Pixel128* px, int32_t level, int32_t channel) { const FloatEnvironment env; polarPass<Layout128>(n, px, level, channel); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoMultiPolarPass32(int32_t n, Pixel32* px, int32_t bh, int32_t bl, int32_t gh, int32_t gl, int32_t rh, int32_t rl) { const FloatEnvironment env; multiPolarPass<Layout32>(n, px, bh, bl, gh, gl, rh, rl); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoMultiPolarPass64(int32_t n, Pixel64* px, int32_t bh, int32_t bl, int32_t gh, int32_t gl, int32_t rh, int32_t rl) { const FloatEnvironment env; multiPolarPass<Layout64>(n, px, bh, bl, gh, gl, rh, rl); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoMultiPolarPass128(int32_t n, Pixel128* px, int32_t bh, int32_t bl, int32_t gh, int32_t gl, int32_t rh, int32_t rl) { const FloatEnvironment env; multiPolarPass<Layout128>(n, px, bh, bl, gh, gl, rh, rl); return 0; }

}  // extern "C"
