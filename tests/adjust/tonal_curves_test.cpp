#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "effects/effects.h"
#include "support/pictures.h"

using namespace effects::test;

namespace {

template <class P, class E>
std::vector<P> pixels(std::initializer_list<std::initializer_list<E>> rows) {
  std::vector<P> px;
  for (auto r : rows) {
    auto it = r.begin();
    P p{};
    p.blue = it[0]; p.green = it[1]; p.red = it[2]; p.mask = it[3];
    px.push_back(p);
  }
  return px;
}
auto px32(std::initializer_list<std::initializer_list<uint8_t>> r) { return pixels<Pixel32, uint8_t>(r); }
auto px64(std::initializer_list<std::initializer_list<uint16_t>> r) { return pixels<Pixel64, uint16_t>(r); }
auto px128(std::initializer_list<std::initializer_list<float>> r) { return pixels<Pixel128, float>(r); }

template <class P>
void expectPixel(const P& p, decltype(p.blue) b, decltype(p.blue) g, decltype(p.blue) r) {
  EXPECT_EQ(p.blue, b);
  EXPECT_EQ(p.green, g);
  EXPECT_EQ(p.red, r);
}

// Levels with the input points open (0..full), gamma 1, no curve and the
// given output points.
uint32_t levels32(int32_t n, Pixel32* px, float curve, float outHigh, float outLow, int32_t channel) {
  return VexoAdjustLevels32(n, px, 255, 0, 255, 0, 255, 0, 1.0f, curve, outHigh, outLow, outHigh, outLow,
                            outHigh, outLow, channel);
}

}  // namespace

// The integer quotient c / 255 is 0 below full, so the sine term vanishes
// there and the curve is a plain multiplication by 1 + amount; only a full
// element sees sin(1 degree).
TEST(AdjustSine, IntegerQuotientMakesAPlainMultiply) {
  auto a = px32({{100, 101, 103, 9}, {200, 255, 0, 9}});
  EXPECT_EQ(VexoAdjustSine32(2, 1, a.data(), 0.5f, 1), 0u);
  expectPixel<Pixel32>(a[0], 150, 152, 154);  // 151.5 and 154.5 round to even
  expectPixel<Pixel32>(a[1], 255, 255, 0);
  a = px32({{200, 255, 254, 9}});
  VexoAdjustSine32(1, 1, a.data(), -0.5f, 1);
  expectPixel<Pixel32>(a[0], 100, 132, 127);  // 255 x (0.5 + sin 1 degree) = 131.95
  a = px32({{200, 200, 200, 9}});
  VexoAdjustSine32(1, 1, a.data(), -0.5f, 2);
  expectPixel<Pixel32>(a[0], 200, 200, 100);
  VexoAdjustSine32(1, 1, a.data(), -0.5f, 4);
  expectPixel<Pixel32>(a[0], 100, 200, 100);

  auto b = px64({{1000, 32767, 0, 9}});
  VexoAdjustSine64(1, 1, b.data(), 0.5f, 1);
  expectPixel<Pixel64>(b[0], 1500, 32767, 0);
  VexoAdjustSine64(1, 1, b.data(), -0.5f, 1);
  expectPixel<Pixel64>(b[0], 750, 16955, 0);
}

TEST(AdjustSine, RowsAndEarlyReturns) {
  auto a = px32({{10, 10, 10, 1}, {10, 10, 10, 2}, {10, 10, 10, 3}, {10, 10, 10, 4}, {10, 10, 10, 5},
                 {10, 10, 10, 6}, {10, 10, 10, 7}});
  VexoAdjustSine32(2, 3, a.data(), 1.0f, 1);
  for (int i = 0; i < 6; ++i) expectPixel<Pixel32>(a[i], 20, 20, 20);
  expectPixel<Pixel32>(a[6], 10, 10, 10);
  const auto before = a;
  VexoAdjustSine32(2, 0, a.data(), 1.0f, 1);
  VexoAdjustSine32(2, 3, a.data(), 0.0f, 1);
  VexoAdjustSine32(2, 3, a.data(), 1.0f, 0);  // no channel: every element clamped and rounded, so kept
  EXPECT_TRUE(sameBytes(a, before));
}

// The float member divides by each channel's maximum over the whole picture
// and does not guard it: a channel that is 0 everywhere becomes NaN.
TEST(AdjustSine, FloatIsRelativeToTheChannelMaximum) {
  auto c = px128({{0.0f, 0.3f, 2.0f, 0.5f}, {0.0f, 0.1f, 0.5f, 0.5f}});
  VexoAdjustSine128(2, 1, c.data(), 1.0f, 2);
  EXPECT_EQ(c[0].red, 4.034904956817627f);  // 2 x (2 + sin 1 degree)
  EXPECT_EQ(c[1].red, 1.0021816492080688f);  // 0.5 x (2 + sin 0.25 degree)
  EXPECT_EQ(c[0].green, 0.3f);
  VexoAdjustSine128(1, 2, c.data(), 1.0f, 4);
  EXPECT_TRUE(std::isnan(c[0].blue));
  EXPECT_TRUE(std::isnan(c[1].blue));
  EXPECT_EQ(c[1].mask, 0.5f);
}

TEST(AdjustLevels, InputPointsComeBlueGreenRedAndDoNotStretch) {
  auto a = px32({{15, 15, 15, 9}, {25, 25, 25, 9}, {150, 60, 100, 9}});
  // Channel 0: pass 1 only (input points, gamma), no output mapping.
  VexoAdjustLevels32(12, a.data(), 100, 10, 255, 20, 255, 30, 1.0f, 0.0f, 0, 0, 0, 0, 0, 0, 0);
  expectPixel<Pixel32>(a[0], 15, 0, 0);
  expectPixel<Pixel32>(a[1], 25, 25, 0);
  expectPixel<Pixel32>(a[2], 255, 60, 100);
  // The gamma exponent is the gamma itself: 128 -> 64.25.
  a = px32({{128, 128, 128, 9}});
  VexoAdjustLevels32(4, a.data(), 255, 0, 255, 0, 255, 0, 2.0f, 0.0f, 0, 0, 0, 0, 0, 0, 5);
  expectPixel<Pixel32>(a[0], 64, 64, 64);
}

TEST(AdjustLevels, OutputPointsComeRedGreenBlueAndMapEachMaximum) {
  auto a = px32({{200, 100, 50, 9}, {100, 200, 100, 9}});
  VexoAdjustLevels32(8, a.data(), 255, 0, 255, 0, 255, 0, 1.0f, 0.0f, 200, 100, 255, 0, 50, 0, 1);
  expectPixel<Pixel32>(a[0], 50, 128, 150);  // green 0.5 x 255 = 127.5 rounds to even
  expectPixel<Pixel32>(a[1], 25, 255, 200);
  // Pass 2 touches only the chosen channel.
  a = px32({{200, 100, 50, 9}});
  levels32(4, a.data(), 0.0f, 255, 0, 3);
  expectPixel<Pixel32>(a[0], 200, 255, 50);
}

// The curve uses the same integer quotient as the sine curve: 200 is halved
// by curve -0.5 (a fractional quotient would give 103), full gets sin 1 degree.
TEST(AdjustLevels, CurveOnChosenChannelsWithIntegerQuotient) {
  auto a = px32({{7, 255, 255, 9}, {7, 200, 200, 9}});
  levels32(8, a.data(), -0.5f, 132, 0, 2);
  expectPixel<Pixel32>(a[0], 7, 255, 132);
  expectPixel<Pixel32>(a[1], 7, 200, 100);
}

TEST(AdjustLevels, SixteenBitComparesSignedAndDivides) {
  auto b = px64({{40000, 10000, 100, 9}, {100, 30000, 100, 9}});
  VexoAdjustLevels64(8, b.data(), 32767, 0, 32767, 0, 32767, 0, 1.0f, 0.0f, 0, 0, 32767, 0, 0, 0, 3);
  EXPECT_EQ(b[0].blue, 0);  // 40000 reads as -25536, below the low point
  EXPECT_EQ(b[0].green, 10922);  // 10000 / 30000 x 32767
  EXPECT_EQ(b[1].green, 32767);
  EXPECT_EQ(b[0].red, 100);
}

// Float: relative sine curve, then output points scaled by max(1, maximum):
// a channel within 0..1 maps its maximum to the high point, a channel above
// 1.0 keeps its headroom. The input points are compared on the 0..1 scale
// (points above 255 let HDR values through; at 255 they are cut to 1.0).
TEST(AdjustLevels, FloatKeepsHeadroom) {
  auto c = px128({{0.5f, 0.25f, 2.0f, 0.75f}, {0.1f, 0.5f, 0.5f, 0.75f}});
  VexoAdjustLevels128(8, c.data(), 255, 51, 255, 0, 1000, 0, 1.0f, 0.0f, 1.0f, 0.0f, 0.8f, 0.2f, 1.0f, 0.0f, 1);
  expectPixel<Pixel128>(c[0], 1.0f, 0.4974271357059479f, 2.034904718399048f);
  expectPixel<Pixel128>(c[1], 0.0f, 0.800000011920929f, 0.5021816492080688f);
  EXPECT_EQ(c[1].mask, 0.75f);
  c = px128({{0.5f, 0.25f, 2.0f, 0.75f}});
  VexoAdjustLevels128(4, c.data(), 102, 0, 255, 0, 255, 0, 2.0f, 0.0f, 1, 0, 1, 0, 1, 0, 0);
  expectPixel<Pixel128>(c[0], 1.0f, 0.0625f, 1.0f);
}

TEST(Equalizer, KeepsTheDominantColourOrItsComplement) {
  auto a = px32({{10, 200, 200, 9}, {50, 100, 30, 9}, {7, 7, 7, 9}});
  EXPECT_EQ(VexoEqualizer32(12, a.data(), 1, 1), 0u);
  expectPixel<Pixel32>(a[0], 0, 200, 200);
  expectPixel<Pixel32>(a[1], 0, 100, 0);
  expectPixel<Pixel32>(a[2], 7, 7, 7);
  a = px32({{10, 200, 200, 9}});
  VexoEqualizer32(4, a.data(), 2, 1);
  expectPixel<Pixel32>(a[0], 255, 55, 55);
  a = px32({{200, 10, 100, 9}});
  VexoEqualizer32(4, a.data(), 2, 2);  // only red is written
  expectPixel<Pixel32>(a[0], 200, 10, 255);
  VexoEqualizer32(4, a.data(), 3, 1);
  expectPixel<Pixel32>(a[0], 200, 10, 255);

  auto b = px64({{40000, 100, 50, 9}});
  VexoEqualizer64(4, b.data(), 1, 1);  // signed: 40000 is the smallest
  expectPixel<Pixel64>(b[0], 0, 100, 0);
  b = px64({{10, 5, 32767, 9}});
  VexoEqualizer64(4, b.data(), 2, 1);
  expectPixel<Pixel64>(b[0], 32767, 32767, 0);
}

// The six tests run in a fixed order on the values already changed, which
// for negative values is not "keep the largest".
TEST(Equalizer, FloatFixedOrderWithNegativeValues) {
  auto c = px128({{0.5f, 2.0f, 1.0f, 0.5f}, {-1.0f, -2.0f, -3.0f, 0.5f}});
  VexoEqualizer128(8, c.data(), 1, 1);
  expectPixel<Pixel128>(c[0], 0.0f, 2.0f, 0.0f);
  expectPixel<Pixel128>(c[1], 0.0f, 0.0f, 0.0f);
  c = px128({{0.5f, 2.0f, 1.0f, 0.5f}});
  VexoEqualizer128(4, c.data(), 2, 1);
  expectPixel<Pixel128>(c[0], 1.0f, -1.0f, 1.0f);
}

TEST(Dodge, WholeFactorWithUpperBoundOnly) {
  struct Case { int32_t amount; uint8_t expect100, expect200; };
  for (Case k : {Case{0, 100, 200}, Case{99, 100, 200}, Case{-99, 100, 200}, Case{100, 200, 255},
                 Case{199, 200, 255}, Case{-100, 0, 0}, Case{-200, 156, 56}}) {
    auto a = px32({{100, 100, 200, 9}});
    EXPECT_EQ(VexoDodge32(4, a.data(), k.amount), 0u);
    expectPixel<Pixel32>(a[0], k.expect100, k.expect100, k.expect200);
  }
  auto b = px64({{5000, 10000, 0, 9}});
  VexoDodge64(4, b.data(), 300);
  expectPixel<Pixel64>(b[0], 20000, 32767, 0);
  auto c = px128({{0.5f, 2.0f, -1.0f, 9}});
  VexoDodge128(4, c.data(), 250);
  expectPixel<Pixel128>(c[0], 1.5f, 6.0f, -3.0f);
}

TEST(TonalCount, ElementCountExports) {
  auto a = px32({{100, 100, 100, 9}, {100, 100, 100, 9}, {100, 100, 100, 9}});
  VexoDodge32(5, a.data(), 100);
  VexoDodge32(0, a.data(), 100);
  VexoDodge32(-4, a.data(), 100);
  expectPixel<Pixel32>(a[0], 200, 200, 200);
  expectPixel<Pixel32>(a[1], 200, 200, 200);
  expectPixel<Pixel32>(a[2], 100, 100, 100);
  VexoEqualizer32(0, a.data(), 2, 1);
  levels32(0, a.data(), 0.0f, 10, 0, 1);
  expectPixel<Pixel32>(a[2], 100, 100, 100);
}

// Every tonal export leaves the mask as it was, whatever it does to colour.
TEST(TonalMask, NoExportTouchesTheMask) {
  const auto p32 = pattern32(6);
  const auto p64 = pattern64(6);
  const auto p128 = pattern128(6);
  auto a = p32; auto b = p64; auto c = p128;
  VexoBrightness32(3, 2, a.data(), -90, 0); VexoBrightness64(3, 2, b.data(), 900, 0); VexoBrightness128(3, 2, c.data(), 90, 0);
  VexoBlackBrightness32(3, 2, a.data(), 90, 0); VexoBlackBrightness64(3, 2, b.data(), -900, 0); VexoBlackBrightness128(3, 2, c.data(), 90, 0);
  VexoContrast32(3, 2, a.data(), 90, 0); VexoContrast64(3, 2, b.data(), 900, 0); VexoContrast128(3, 2, c.data(), 90, 0);
  VexoXposure32(3, 2, a.data(), 0, 90, 0); VexoXposure64(3, 2, b.data(), 1, 900, 0); VexoXposure128(3, 2, c.data(), 0, 90, 0);
  Vexofstop32(3, 2, a.data(), 1.5); Vexofstop64(3, 2, b.data(), -1.5); Vexofstop128(3, 2, c.data(), 1.5);
  VexoGamma32(3, 2, a.data(), 2.2f); VexoGamma64(3, 2, b.data(), 0.5f); VexoGamma128(3, 2, c.data(), 2.2f);
  VexoGammatoHDR32(3, 2, a.data(), 2.2f); VexoGammatoHDR64(3, 2, b.data(), 0.5f); VexoGammatoHDR128(3, 2, c.data(), 2.2f);
  VexoAdjustLevelPrecentage32(3, 2, a.data(), 0.5f); VexoAdjustLevelPrecentage64(3, 2, b.data(), 2.5f);
  VexoAdjustLevelPrecentage128(3, 2, c.data(), 0.5f);
  VexoAdjustSine32(3, 2, a.data(), 0.3f, 1); VexoAdjustSine64(3, 2, b.data(), -0.3f, 1); VexoAdjustSine128(3, 2, c.data(), 0.3f, 1);
  levels32(24, a.data(), 0.2f, 230, 20, 1);
  VexoAdjustLevels64(24, b.data(), 30000, 100, 30000, 100, 30000, 100, 1.5f, 0.1f, 30000, 10, 30000, 10, 30000, 10, 1);
  VexoAdjustLevels128(24, c.data(), 250, 5, 250, 5, 250, 5, 1.5f, 0.1f, 0.9f, 0.1f, 0.9f, 0.1f, 0.9f, 0.1f, 1);
  VexoEqualizer32(24, a.data(), 2, 1); VexoEqualizer64(24, b.data(), 2, 1); VexoEqualizer128(24, c.data(), 2, 1);
  VexoDodge32(24, a.data(), 150); VexoDodge64(24, b.data(), -250); VexoDodge128(24, c.data(), 150);
  for (size_t i = 0; i < 6; ++i) {
    EXPECT_EQ(a[i].mask, p32[i].mask) << i;
    EXPECT_EQ(b[i].mask, p64[i].mask) << i;
    EXPECT_EQ(bitsOf(c[i].mask), bitsOf(p128[i].mask)) << i;
  }
  EXPECT_FALSE(sameBytes(a, p32));
}
