// Tonal adjustments that look at more than one element: the sine curve, the
// levels (input points, gamma, curve, output points), the equalizer that
// keeps each pixel's dominant colour, and the whole-factor dodge.
#include <algorithm>
#include <array>
#include <cmath>
#include <type_traits>

#include "adjust/maps_simd.h"
#include "adjust/tonal.h"
#include "core/crmath.h"
#include "core/element_map.h"
#include "core/fpenv.h"
#include "core/pow.h"

namespace effects {
namespace {

using namespace tonal;

// Because the quotient c / full is 0 for every element below full, the curve
// is in effect a multiplication by 1 + amount; only full elements see the
// sine. The float layout divides by each channel's maximum instead, found in
// a first pass. The integer layouts work in extended precision and clamp
// every element, chosen or not.
template <class L>
void adjustSine(uint32_t width, uint32_t height, typename L::Pixel* px, float amount, int32_t channel) {
  const FloatEnvironment env;
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
    const SineCurve<L> chosen{&factor, true}, unchosen{&factor, false};
    // References, so that channels with the same map share its table.
    const SineCurve<L>& blue = ch.blue ? chosen : unchosen;
    const SineCurve<L>& green = ch.green ? chosen : unchosen;
    const SineCurve<L>& red = ch.red ? chosen : unchosen;
    maps::each<L>(pic.data(), pic.pixelCount(), blue, green, red);
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

// The channels the second pass maps: all three when all are chosen, else the
// first chosen one of blue, green and red alone.
inline bool secondPassMaps(const Channels& ch, unsigned i) {
  if (ch.blue && ch.green && ch.red) return true;
  const unsigned first = ch.blue ? 0 : ch.green ? 1 : 2;
  return i == first;
}

// 16 bits, both passes in one walk over the pixels. The first pass's tables
// are filled; where each is non-decreasing over the elements in the order
// they compare (signed), a channel's new maximum is its table's entry for the
// channel's largest element, found by a read-only sweep. The second pass's
// map is then applied to the table entries, and the pixels go through the
// composed tables once: the same values the two passes give, with one walk
// instead of two. False (nothing done) where the tables do not pay or cannot
// be had, or a table is not monotonic: the two passes then run.
template <class L, class OutputPoints>
bool levelsInOneWalk(typename L::Pixel* px, size_t count, const LevelsIn<L> (&in)[3], const Channels& ch,
                     const OutputPoints& outputPoints) {
  if (px == nullptr || !maps::worthTables(count, 3, 65536)) return false;
  auto* t = static_cast<uint16_t*>(scratchBytes(3 * 65536 * sizeof(uint16_t), ScratchSlot::Fourth));
  if (t == nullptr) return false;
  // The powers of the input values the channels reach, each taken once
  // (INT32_MIN: not yet taken; a power is a 16-bit value).
  auto* powers = static_cast<int32_t*>(scratchBytes(65536 * sizeof(int32_t), ScratchSlot::Third));
  if (powers == nullptr) return false;
  std::fill(powers, powers + 65536, INT32_MIN);
  uint16_t* table[3] = {t, t + 65536, t + 2 * 65536};
  for (unsigned i = 0; i < 3; ++i) {
    for (uint32_t v = 0; v < 65536; ++v) {
      const int32_t c = in[i].input(static_cast<uint16_t>(v));
      int32_t& p = powers[c + 32768];
      if (p == INT32_MIN) p = LevelsIn<L>::powered(c, in[i].gamma);
      table[i][v] = in[i].output(p);
    }
    for (uint32_t k = 1; k < 65536; ++k)  // k - 32768 and k - 32769 as signed elements
      if (table[i][(k + 32768) & 0xFFFF] < table[i][(k + 32767) & 0xFFFF]) return false;
  }
  uint16_t largest[3];
  maps::signedMaxima(px, count, largest);
  int32_t max[3];
  for (unsigned i = 0; i < 3; ++i) max[i] = table[i][largest[i]];
  const auto out = outputPoints(max);
  for (unsigned i = 0; i < 3; ++i)
    if (secondPassMaps(ch, i))
      for (uint32_t v = 0; v < 65536; ++v) table[i][v] = out[i](table[i][v]);
  maps::lookup(px, count, table[0], table[1], table[2]);
  return true;
}

// Integer layouts. Pass 1 applies the input points (no stretching: below
// the low point is black, above the high point full), gamma and, on chosen
// channels, the sine curve, and finds each channel's maximum. Pass 2 maps
// each chosen channel's 0..maximum onto its output points.
template <class L>
void adjustLevelsInt(int32_t n, typename L::Pixel* px, const LevelPoints (&pt)[3], float g, float curveAmount,
                     const Channels& ch) {
  const SineFactor<double> factor(curveAmount);
  const size_t count = pixelsForCount<typename L::Pixel>(n);
  const LevelsIn<L> in[3] = {{pt[0].inHigh, pt[0].inLow, g, &factor, ch.blue},
                             {pt[1].inHigh, pt[1].inLow, g, &factor, ch.green},
                             {pt[2].inHigh, pt[2].inLow, g, &factor, ch.red}};
  const auto outputPoints = [&](const int32_t (&max)[3]) {
    std::array<LevelsOut<L>, 3> out;
    for (unsigned i = 0; i < 3; ++i) {
      const float range = pt[i].outHigh - pt[i].outLow;
      out[i] = {max[i], 1.0 / max[i], range, pt[i].outLow};
    }
    return out;
  };
  if constexpr (sizeof(typename L::Element) == 2) {
    if (ch.any() && levelsInOneWalk(px, count, in, ch, outputPoints)) return;
  }
  maps::Maxima max;
  maps::each<L>(px, count, in[0], in[1], in[2], max);
  if (!ch.any()) return;
  const auto out = outputPoints(max.of);
  const maps::Unchanged same;
  if (ch.blue && ch.green && ch.red) return maps::each<L>(px, count, out[0], out[1], out[2]);
  // A single chosen channel: the other two stay as they are.
  if (ch.blue) return maps::each<L>(px, count, out[0], same, same);
  if (ch.green) return maps::each<L>(px, count, same, out[1], same);
  maps::each<L>(px, count, same, same, out[2]);
}

// Float layout: three passes. Input points (compared on the 0..1 scale) and
// gamma; the sine curve on chosen channels, relative to each channel's
// maximum; then the output points, scaled by max(1, maximum) so that a
// channel above 1.0 keeps its headroom. Nothing is clamped.
void adjustLevels128(int32_t n, Pixel128* px, const LevelPoints (&pt)[3], float g, float curveAmount,
                     const Channels& ch) {
  if (px == nullptr) return;
  double low[3], high[3];
  for (unsigned i = 0; i < 3; ++i) {
    low[i] = pt[i].inLow * k255;
    high[i] = pt[i].inHigh * k255;
  }
  // Pass 1 a block at a time: the input points, then the power in vectors
  // (core/pow.h), then the maxima while the block is in the cache.
  float max[3] = {0.0f, 0.0f, 0.0f};
  const size_t count = pixelsForCount<Pixel128>(n);
  for (size_t b = 0; b < count; b += maps::kBlock) {
    Pixel128* block = px + b;
    const size_t m = count - b < maps::kBlock ? count - b : maps::kBlock;
    for (size_t k = 0; k < m; ++k)
      for (unsigned i = 0; i < 3; ++i) {
        float& c = element(block[k], i);
        if (c < low[i]) c = 0.0f;
        if (c > high[i]) c = 1.0f;
      }
    fastpow::powColours(block, m, static_cast<double>(g));
    for (size_t k = 0; k < m; ++k)
      for (unsigned i = 0; i < 3; ++i)
        if (element(block[k], i) > max[i]) max[i] = element(block[k], i);
  }
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
  const FloatEnvironment env;
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
  const FloatEnvironment env;
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
  const FloatEnvironment env;
  const int32_t factor = wrapAdd(divTrunc(amount, 100), 1);
  if constexpr (!L::integer) {
    const float f = static_cast<float>(factor);
    forEachPixel(n, px, [f](Pixel128& p) { p.blue *= f; p.green *= f; p.red *= f; });
  } else {
    const size_t count = pixelsForCount<typename L::Pixel>(n);
    size_t i = 0;
    if constexpr (std::is_same_v<L, Layout64>) i = px == nullptr ? 0 : maps::sse2::dodge64(px, count, factor);
    maps::all<L>(px + i, count - i, Dodge<L>{factor});
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
