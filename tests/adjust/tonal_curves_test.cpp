#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "effects/effects.h"
#include "support/pictures.h"

using namespace effects::test;

namespace {

// Pixels given as (blue, green, red); every mask is 9 and must stay 9.
template <class P, class E>
std::vector<P> make(std::initializer_list<std::initializer_list<E>> rows) {
  std::vector<P> px;
  for (auto r : rows) px.push_back(P{r.begin()[0], r.begin()[1], r.begin()[2], E(9)});
  return px;
}
auto px32(std::initializer_list<std::initializer_list<uint8_t>> r) { return make<Pixel32, uint8_t>(r); }
auto px64(std::initializer_list<std::initializer_list<uint16_t>> r) { return make<Pixel64, uint16_t>(r); }
auto px128(std::initializer_list<std::initializer_list<float>> r) { return make<Pixel128, float>(r); }

template <class P, class E>
void expectPixel(const P& p, E b, E g, E r) {
  EXPECT_EQ(p.blue, b);
  EXPECT_EQ(p.green, g);
  EXPECT_EQ(p.red, r);
  EXPECT_EQ(p.mask, E(9));
}

// Levels with open input points, gamma 1 and the same output points on
// every channel.
void levels32(int32_t n, Pixel32* px, float curve, float outHigh, float outLow, int32_t channel) {
  VexoAdjustLevels32(n, px, 255, 0, 255, 0, 255, 0, 1.0f, curve, outHigh, outLow, outHigh, outLow, outHigh, outLow, channel);
}

}  // namespace

// c / 255 is 0 below full, so the curve is a plain multiplication by
// 1 + amount; only full elements see sin(1 degree). A fractional quotient
// would give 200 -> 103 at amount -0.5.
TEST(AdjustSine, IntegerQuotientMakesAPlainMultiply) {
  auto a = px32({{100, 101, 103}, {200, 255, 0}, {200, 255, 254}, {200, 200, 200}});
  VexoAdjustSine32(2, 1, a.data(), 0.5f, 1);  // 151.5 and 154.5 round to even
  expectPixel<Pixel32, uint8_t>(a[0], 150, 152, 154);
  expectPixel<Pixel32, uint8_t>(a[1], 255, 255, 0);
  VexoAdjustSine32(1, 2, a.data() + 2, -0.5f, 2);  // 255 x (0.5 + sin 1 degree) = 131.95
  expectPixel<Pixel32, uint8_t>(a[2], 200, 255, 127);
  expectPixel<Pixel32, uint8_t>(a[3], 200, 200, 100);
  auto b = px64({{1000, 32767, 0}});
  VexoAdjustSine64(1, 1, b.data(), -0.5f, 1);
  expectPixel<Pixel64, uint16_t>(b[0], 500, 16955, 0);
  // Rows x columns pixels, and the early returns for height 0 and amount 0.
  a = px32({{10, 10, 10}, {10, 10, 10}, {10, 10, 10}});
  VexoAdjustSine32(1, 2, a.data(), 1.0f, 4);
  VexoAdjustSine32(3, 0, a.data(), 1.0f, 4);
  VexoAdjustSine32(3, 1, a.data(), 0.0f, 4);
  expectPixel<Pixel32, uint8_t>(a[1], 20, 10, 10);
  expectPixel<Pixel32, uint8_t>(a[2], 10, 10, 10);
}

// The float member divides by each channel's maximum over the picture and
// does not guard it: a channel that is 0 everywhere becomes NaN.
TEST(AdjustSine, FloatIsRelativeToTheChannelMaximum) {
  auto c = px128({{0.0f, 0.3f, 2.0f}, {0.0f, 0.1f, 0.5f}});
  VexoAdjustSine128(2, 1, c.data(), 1.0f, 2);
  expectPixel<Pixel128, float>(c[0], 0.0f, 0.3f, 4.034904956817627f);  // 2 x (2 + sin 1 degree)
  expectPixel<Pixel128, float>(c[1], 0.0f, 0.1f, 1.0021816492080688f);  // 0.5 x (2 + sin 0.25 degree)
  VexoAdjustSine128(1, 2, c.data(), 1.0f, 4);
  EXPECT_TRUE(std::isnan(c[0].blue) && std::isnan(c[1].blue));
}

TEST(AdjustLevels, PointOrderInputGammaCurveAndOutput) {
  // Input points blue, green, red (high first) cut without stretching;
  // channel 0 stops after pass 1.
  auto a = px32({{15, 15, 15}, {25, 25, 25}, {150, 60, 100}});
  VexoAdjustLevels32(12, a.data(), 100, 10, 255, 20, 255, 30, 1.0f, 0.0f, 0, 0, 0, 0, 0, 0, 0);
  expectPixel<Pixel32, uint8_t>(a[0], 15, 0, 0);
  expectPixel<Pixel32, uint8_t>(a[1], 25, 25, 0);
  expectPixel<Pixel32, uint8_t>(a[2], 255, 60, 100);
  a = px32({{128, 128, 128}});  // the exponent is gamma itself
  VexoAdjustLevels32(4, a.data(), 255, 0, 255, 0, 255, 0, 2.0f, 0.0f, 0, 0, 0, 0, 0, 0, 5);
  expectPixel<Pixel32, uint8_t>(a[0], 64, 64, 64);
  // Output points red, green, blue: each channel's maximum maps to its high
  // point, 0 to its low one; green 0.5 x 255 = 127.5 rounds to even.
  a = px32({{200, 100, 50}, {100, 200, 100}});
  VexoAdjustLevels32(8, a.data(), 255, 0, 255, 0, 255, 0, 1.0f, 0.0f, 200, 100, 255, 0, 50, 0, 1);
  expectPixel<Pixel32, uint8_t>(a[0], 50, 128, 150);
  expectPixel<Pixel32, uint8_t>(a[1], 25, 255, 200);
  // The curve, on red only, with the integer quotient: 200 halves, 255 -> 132.
  a = px32({{7, 255, 255}, {7, 200, 200}});
  levels32(8, a.data(), -0.5f, 132, 0, 2);
  expectPixel<Pixel32, uint8_t>(a[0], 7, 255, 132);
  expectPixel<Pixel32, uint8_t>(a[1], 7, 200, 100);
  // 16 bits: signed input comparison (40000 reads as -25536), divided output.
  auto b = px64({{40000, 10000, 100}, {100, 30000, 100}});
  VexoAdjustLevels64(8, b.data(), 32767, 0, 32767, 0, 32767, 0, 1.0f, 0.0f, 0, 0, 32767, 0, 0, 0, 3);
  expectPixel<Pixel64, uint16_t>(b[0], 0, 10922, 100);
}

// Float: input points on the 0..1 scale (255 cuts HDR values to 1.0), a sine
// curve relative to each maximum, output points scaled by max(1, maximum):
// a channel within 0..1 maps its maximum to the high point, one above 1.0
// keeps its headroom.
TEST(AdjustLevels, FloatKeepsHeadroom) {
  auto c = px128({{0.5f, 0.25f, 2.0f}, {0.1f, 0.5f, 0.5f}});
  VexoAdjustLevels128(8, c.data(), 255, 51, 255, 0, 1000, 0, 1.0f, 0.0f, 1.0f, 0.0f, 0.8f, 0.2f, 1.0f, 0.0f, 1);
  expectPixel<Pixel128, float>(c[0], 1.0f, 0.4974271357059479f, 2.034904718399048f);
  expectPixel<Pixel128, float>(c[1], 0.0f, 0.800000011920929f, 0.5021816492080688f);
  c = px128({{0.5f, 0.25f, 2.0f}});
  VexoAdjustLevels128(4, c.data(), 102, 0, 255, 0, 255, 0, 2.0f, 0.0f, 1, 0, 1, 0, 1, 0, 0);
  expectPixel<Pixel128, float>(c[0], 1.0f, 0.0625f, 1.0f);
}

TEST(Equalizer, KeepsTheDominantColourOrItsComplement) {
  auto a = px32({{10, 200, 200}, {50, 100, 30}, {7, 7, 7}, {200, 10, 100}});
  VexoEqualizer32(12, a.data(), 1, 1);
  VexoEqualizer32(4, a.data() + 3, 2, 2);  // only red is written
  expectPixel<Pixel32, uint8_t>(a[0], 0, 200, 200);
  expectPixel<Pixel32, uint8_t>(a[1], 0, 100, 0);
  expectPixel<Pixel32, uint8_t>(a[2], 7, 7, 7);
  expectPixel<Pixel32, uint8_t>(a[3], 200, 10, 255);
  VexoEqualizer32(4, a.data(), 2, 1);
  VexoEqualizer32(16, a.data(), 3, 1);
  expectPixel<Pixel32, uint8_t>(a[0], 255, 55, 55);
  auto b = px64({{40000, 100, 50}});  // signed: 40000 is the smallest
  VexoEqualizer64(4, b.data(), 1, 1);
  expectPixel<Pixel64, uint16_t>(b[0], 0, 100, 0);
  // The six tests run in a fixed order on the values already changed, which
  // for negative values is not "keep the largest".
  auto c = px128({{0.5f, 2.0f, 1.0f}, {-1.0f, -2.0f, -3.0f}});
  VexoEqualizer128(8, c.data(), 2, 1);
  expectPixel<Pixel128, float>(c[0], 1.0f, -1.0f, 1.0f);
  expectPixel<Pixel128, float>(c[1], 1.0f, 1.0f, 1.0f);
}

TEST(Dodge, WholeFactorWithUpperBoundOnly) {
  struct Case { int32_t amount; uint8_t at100, at200; };
  for (Case k : {Case{99, 100, 200}, Case{-99, 100, 200}, Case{100, 200, 255}, Case{199, 200, 255},
                 Case{-100, 0, 0}, Case{-200, 156, 56}}) {
    auto a = px32({{100, 100, 200}, {100, 100, 100}});
    VexoDodge32(4, a.data(), k.amount);
    expectPixel<Pixel32, uint8_t>(a[0], k.at100, k.at100, k.at200);
    expectPixel<Pixel32, uint8_t>(a[1], 100, 100, 100);
  }
  auto b = px64({{5000, 10000, 0}});
  VexoDodge64(1, b.data(), 300);
  expectPixel<Pixel64, uint16_t>(b[0], 20000, 32767, 0);
  auto c = px128({{0.5f, 2.0f, -1.0f}, {1.0f, 1.0f, 1.0f}});
  VexoDodge128(5, c.data(), 250);
  VexoDodge128(0, c.data(), 250);
  expectPixel<Pixel128, float>(c[0], 1.5f, 6.0f, -3.0f);
  expectPixel<Pixel128, float>(c[1], 3.0f, 3.0f, 3.0f);
}
