// Tonal adjustments that look at more than one element: the sine curve, the
// levels (input points, gamma, curve, output points), the equalizer that
// keeps each pixel's dominant colour, and the whole-factor dodge.
#include <cmath>
#include <type_traits>

#include "adjust/tonal.h"
#include "core/crmath.h"

namespace effects {
namespace {

using namespace tonal;

// The factor sin(q x pi x (1/180)) + amount + 1 of the sine curves, with q the
// element's integer quotient by the full value. q is 0 below full and 1 at
// full, so those two factors are worked out once; other quotients (only
// values outside the layout's range give them) are worked out as they come.
template <class T>
class SineFactor {
 public:
  explicit SineFactor(float amount) : amount_(amount), at0_(compute(0)), at1_(compute(1)) {}
  T operator()(int32_t q) const { return q == 0 ? at0_ : q == 1 ? at1_ : compute(q); }

 private:
  T compute(int32_t q) const {
    const T x = static_cast<T>(q) * static_cast<T>(kPi) * static_cast<T>(kOneOver180);
    if constexpr (std::is_same_v<T, double>) return crmath::sin(x) + amount_ + 1;
    else return std::sin(x) + amount_ + 1;
  }
  T amount_;
  T at0_, at1_;
};

// Limits to [0, full] and rounds; a NaN passes both limits and rounds to
// the out-of-range value.
template <class L, class T>
typename L::Element clampRound(T v) {
  if (v > static_cast<T>(L::full)) v = static_cast<T>(L::full);
  if (v < 0) v = 0;
  return storeRounded<L>(v);
}

// Because the quotient c / full is 0 for every element below full, the curve
// is in effect a multiplication by 1 + amount; only full elements see the
// sine. The float layout divides by each channel's maximum instead, found in
// a first pass. The integer layouts work in extended precision and clamp
// every element, chosen or not.
template <class L>
void adjustSine(uint32_t width, uint32_t height, typename L::Pixel* px, float amount, int32_t channel) {
  using E = typename L::Element;
  if (amount == 0.0f) return;
  const Channels ch = Channels::of(channel);
  const auto pic = packedPicture(unsignedSize(width), unsignedSize(height), px);
  if constexpr (!L::integer) {
    float maxBlue = 0.0f, maxGreen = 0.0f, maxRed = 0.0f;
    forEachPixel(pic, [&](const Pixel128& p) {
      if (p.blue > maxBlue) maxBlue = p.blue;
      if (p.green > maxGreen) maxGreen = p.green;
      if (p.red > maxRed) maxRed = p.red;
    });
    const double a = amount;
    auto curve = [a](float c, float max) {
      const double x = static_cast<double>(c) / max;
      return static_cast<float>(c * (crmath::sin(x * kPi * kOneOver180) + a + 1));
    };
    forEachPixel(pic, [&](Pixel128& p) {
      if (ch.blue) p.blue = curve(p.blue, maxBlue);
      if (ch.green) p.green = curve(p.green, maxGreen);
      if (ch.red) p.red = curve(p.red, maxRed);
    });
  } else {
    const SineFactor<long double> factor(amount);
    auto curve = [&factor](E c, bool chosen) {
      const long double v = chosen ? c * factor(c / fullInt<L>) : static_cast<long double>(c);
      return clampRound<L>(v);
    };
    forEachPixel(pic, [&](typename L::Pixel& p) {
      p.blue = curve(p.blue, ch.blue);
      p.green = curve(p.green, ch.green);
      p.red = curve(p.red, ch.red);
    });
  }
}

// One channel's points: the input points in 0..255 (0..32767) units, the
// output points as floats.
struct LevelPoints {
  int32_t inHigh, inLow;
  float outHigh, outLow;
};

// Element i of a pixel is blue, green, red for i = 0, 1, 2.
inline bool chosen(const Channels& ch, unsigned i) { return i == 0 ? ch.blue : i == 1 ? ch.green : ch.red; }

// The output points' scale of an element against its channel's maximum: the
// 8-bit levels multiply by the reciprocal of the maximum, the 16-bit levels
// divide by it. The two differ in the last bit for some values, and each
// layout keeps its own form.
inline double ofMaximum(uint8_t e, int32_t, double reciprocal) { return e * reciprocal; }
inline double ofMaximum(uint16_t e, int32_t max, double) { return e / static_cast<double>(max); }

// Integer layouts. Pass 1 applies the input points (no stretching: below
// the low point is black, above the high point full), gamma and, on chosen
// channels, the sine curve, and finds each channel's maximum. Pass 2 maps
// each chosen channel's 0..maximum onto its output points.
template <class L>
void adjustLevelsInt(int32_t n, typename L::Pixel* px, const LevelPoints (&pt)[3], float g, float curveAmount,
                     const Channels& ch) {
  constexpr int32_t t = fullInt<L>;
  const SineFactor<double> factor(curveAmount);
  int32_t max[3] = {0, 0, 0};
  forEachPixel(n, px, [&](typename L::Pixel& p) {
    for (unsigned i = 0; i < 3; ++i) {
      auto& e = element(p, i);
      int32_t c = compared<L>(e);
      if (c < pt[i].inLow) c = 0;
      if (c > pt[i].inHigh) c = t;
      c = roundToInt16(std::pow(c * L::unit, static_cast<double>(g)) * t);
      const double v = chosen(ch, i) ? c * factor(c / t) : c;
      e = clampRound<L>(v);
      if (e > max[i]) max[i] = e;
    }
  });
  if (!ch.any()) return;
  double reciprocal[3];
  for (unsigned i = 0; i < 3; ++i) reciprocal[i] = 1.0 / max[i];
  forEachPixel(n, px, [&](typename L::Pixel& p) {
    for (unsigned i = 0; i < 3; ++i) {
      if (!chosen(ch, i)) continue;
      auto& e = element(p, i);
      const double range = pt[i].outHigh - pt[i].outLow;
      e = clampRound<L>(ofMaximum(e, max[i], reciprocal[i]) * range + pt[i].outLow);
    }
  });
}

// Float layout: three passes. Input points (compared on the 0..1 scale) and
// gamma; the sine curve on chosen channels, relative to each channel's
// maximum; then the output points, scaled by max(1, maximum) so that a
// channel above 1.0 keeps its headroom. Nothing is clamped.
void adjustLevels128(int32_t n, Pixel128* px, const LevelPoints (&pt)[3], float g, float curveAmount,
                     const Channels& ch) {
  double low[3], high[3];
  for (unsigned i = 0; i < 3; ++i) {
    low[i] = pt[i].inLow * k255;
    high[i] = pt[i].inHigh * k255;
  }
  float max[3] = {0.0f, 0.0f, 0.0f};
  forEachPixel(n, px, [&](Pixel128& p) {
    for (unsigned i = 0; i < 3; ++i) {
      float& c = element(p, i);
      if (c < low[i]) c = 0.0f;
      if (c > high[i]) c = 1.0f;
      c = static_cast<float>(std::pow(static_cast<double>(c), static_cast<double>(g)));
      if (c > max[i]) max[i] = c;
    }
  });
  if (!ch.any()) return;
  const double a = curveAmount;
  float newMax[3] = {0.0f, 0.0f, 0.0f};
  forEachPixel(n, px, [&](Pixel128& p) {
    for (unsigned i = 0; i < 3; ++i) {
      float& c = element(p, i);
      if (chosen(ch, i)) {
        const double x = static_cast<double>(c) / max[i];
        c = static_cast<float>(c * (crmath::sin(x * kPi / 180) + a + 1));
      }
      if (c > newMax[i]) newMax[i] = c;
    }
  });
  double headroom[3];
  for (unsigned i = 0; i < 3; ++i) headroom[i] = newMax[i] > 1.0 ? newMax[i] : 1.0;
  forEachPixel(n, px, [&](Pixel128& p) {
    for (unsigned i = 0; i < 3; ++i) {
      if (!chosen(ch, i)) continue;
      float& c = element(p, i);
      const double m = headroom[i];
      c = static_cast<float>((pt[i].outHigh - pt[i].outLow) * m * (c / newMax[i]) + m * pt[i].outLow);
    }
  });
}

// The input points come blue, green, red and the output points red, green,
// blue, each with the high point first.
template <class L>
void adjustLevels(int32_t n, typename L::Pixel* px, int32_t blueInHigh, int32_t blueInLow, int32_t greenInHigh,
                  int32_t greenInLow, int32_t redInHigh, int32_t redInLow, float gamma, float curveAmount,
                  float redOutHigh, float redOutLow, float greenOutHigh, float greenOutLow, float blueOutHigh,
                  float blueOutLow, int32_t channel) {
  if (n < 1) return;
  float g = gamma;
  if (g < 0) g = 0;
  if (g > 10) g = 10;
  const LevelPoints pt[3] = {{blueInHigh, blueInLow, blueOutHigh, blueOutLow},
                             {greenInHigh, greenInLow, greenOutHigh, greenOutLow},
                             {redInHigh, redInLow, redOutHigh, redOutLow}};
  const Channels ch = Channels::of(channel);
  if constexpr (!L::integer) adjustLevels128(n, px, pt, g, curveAmount, ch);
  else adjustLevelsInt<L>(n, px, pt, g, curveAmount, ch);
}

// Six comparisons in a fixed order, each on the values the earlier ones
// left, zero every element below the pixel's largest. Mode 1 writes the
// survivors, mode 2 their complements, to the chosen channels.
template <class L>
void equalizer(int32_t n, typename L::Pixel* px, int32_t mode, int32_t channel) {
  if (mode != 1 && mode != 2) return;
  const Channels ch = Channels::of(channel);
  using V = typename L::Compare;
  forEachPixel(n, px, [&](typename L::Pixel& p) {
    V b = static_cast<V>(p.blue), g = static_cast<V>(p.green), r = static_cast<V>(p.red);
    if (b > r) r = 0;
    if (r > b) b = 0;
    if (g > b) b = 0;
    if (b > g) g = 0;
    if (r > g) g = 0;
    if (g > r) r = 0;
    auto out = [mode](V v) -> typename L::Element {
      if constexpr (!L::integer) return mode == 1 ? v : 1.0f - v;
      else return storeLow<L>(mode == 1 ? v : fullInt<L> - v);
    };
    if (ch.blue) p.blue = out(b);
    if (ch.green) p.green = out(g);
    if (ch.red) p.red = out(r);
  });
}

// Multiplies by the whole number amount / 100 + 1 (truncating), so 0..99
// change nothing and 100..199 double. Only the upper bound applies.
template <class L>
void dodge(int32_t n, typename L::Pixel* px, int32_t amount) {
  using E = typename L::Element;
  const int32_t factor = wrapAdd(divTrunc(amount, 100), 1);
  if constexpr (!L::integer) {
    const float f = static_cast<float>(factor);
    forEachPixel(n, px, [f](Pixel128& p) { p.blue *= f; p.green *= f; p.red *= f; });
  } else {
    auto scale = [factor](E c) {
      const int32_t v = wrapMul(c, factor);
      return storeLow<L>(v > fullInt<L> ? fullInt<L> : v);
    };
    forEachPixel(n, px, [&scale](typename L::Pixel& p) {
      p.blue = scale(p.blue);
      p.green = scale(p.green);
      p.red = scale(p.red);
    });
  }
}

}  // namespace
}  // namespace effects

using namespace effects;

extern "C" {

EFFECTS_API uint32_t EFFECTS_CALL VexoAdjustSine32(uint32_t w, uint32_t h, Pixel32* px, float amount, int32_t channel) { adjustSine<Layout32>(w, h, px, amount, channel); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoAdjustSine64(uint32_t w, uint32_t h, Pixel64* px, float amount, int32_t channel) { adjustSine<Layout64>(w, h, px, amount, channel); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoAdjustSine128(uint32_t w, uint32_t h, Pixel128* px, float amount, int32_t channel) { adjustSine<Layout128>(w, h, px, amount, channel); return 0; }

EFFECTS_API uint32_t EFFECTS_CALL VexoAdjustLevels32(int32_t n, Pixel32* px, int32_t bIH, int32_t bIL, int32_t gIH, int32_t gIL, int32_t rIH, int32_t rIL, float gamma, float curve, float rOH, float rOL, float gOH, float gOL, float bOH, float bOL, int32_t channel) { adjustLevels<Layout32>(n, px, bIH, bIL, gIH, gIL, rIH, rIL, gamma, curve, rOH, rOL, gOH, gOL, bOH, bOL, channel); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoAdjustLevels64(int32_t n, Pixel64* px, int32_t bIH, int32_t bIL, int32_t gIH, int32_t gIL, int32_t rIH, int32_t rIL, float gamma, float curve, float rOH, float rOL, float gOH, float gOL, float bOH, float bOL, int32_t channel) { adjustLevels<Layout64>(n, px, bIH, bIL, gIH, gIL, rIH, rIL, gamma, curve, rOH, rOL, gOH, gOL, bOH, bOL, channel); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoAdjustLevels128(int32_t n, Pixel128* px, int32_t bIH, int32_t bIL, int32_t gIH, int32_t gIL, int32_t rIH, int32_t rIL, float gamma, float curve, float rOH, float rOL, float gOH, float gOL, float bOH, float bOL, int32_t channel) { adjustLevels<Layout128>(n, px, bIH, bIL, gIH, gIL, rIH, rIL, gamma, curve, rOH, rOL, gOH, gOL, bOH, bOL, channel); return 0; }

EFFECTS_API uint32_t EFFECTS_CALL VexoEqualizer32(int32_t n, Pixel32* px, int32_t mode, int32_t channel) { equalizer<Layout32>(n, px, mode, channel); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoEqualizer64(int32_t n, Pixel64* px, int32_t mode, int32_t channel) { equalizer<Layout64>(n, px, mode, channel); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoEqualizer128(int32_t n, Pixel128* px, int32_t mode, int32_t channel) { equalizer<Layout128>(n, px, mode, channel); return 0; }

EFFECTS_API uint32_t EFFECTS_CALL VexoDodge32(int32_t n, Pixel32* px, int32_t amount) { dodge<Layout32>(n, px, amount); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoDodge64(int32_t n, Pixel64* px, int32_t amount) { dodge<Layout64>(n, px, amount); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoDodge128(int32_t n, Pixel128* px, int32_t amount) { dodge<Layout128>(n, px, amount); return 0; }

}  // extern "C"
