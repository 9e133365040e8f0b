#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "adjust/adjust_checks.h"

using namespace effects::test;

using V32 = std::vector<Pixel32>;
using V64 = std::vector<Pixel64>;
using V128 = std::vector<Pixel128>;

// c / 255 is 0 below full, so the curve is a plain multiplication by
// 1 + amount; only full elements see sin(1 degree). A fractional quotient
// would give 200 -> 103 at amount -0.5. Unchosen elements are still clamped.
TEST(AdjustSine, IntegerQuotientMakesAPlainMultiply) {
  V32 a{{100, 101, 103, 9}, {200, 255, 0, 9}};
  VexoAdjustSine32(2, 1, a.data(), 0.5f, 1);  // 151.5 and 154.5 round to even
  EXPECT_EQ(a, (V32{{150, 152, 154, 9}, {255, 255, 0, 9}}));
  a = {{200, 255, 255, 9}, {200, 200, 200, 9}};
  VexoAdjustSine32(1, 2, a.data(), -0.5f, 2);  // 255 x (0.5 + sin 1 degree) = 131.95; rows x columns
  EXPECT_EQ(a, (V32{{200, 255, 132, 9}, {200, 200, 100, 9}}));
}

// The float member divides by each channel's maximum over the picture and
// does not guard it: a channel that is 0 everywhere becomes NaN.
TEST(AdjustSine, FloatIsRelativeToTheChannelMaximum) {
  V128 c{{0.0f, 0.3f, 2.0f, 9}, {0.0f, 0.1f, 0.5f, 9}};
  VexoAdjustSine128(2, 1, c.data(), 1.0f, 2);
  VexoAdjustSine128(2, 1, c.data(), 0.0f, 1);  // amount 0 returns before the curve
  // 2 x (2 + sin 1 degree) and 0.5 x (2 + sin 0.25 degree)
  EXPECT_EQ(c, (V128{{0.0f, 0.3f, 4.034904956817627f, 9}, {0.0f, 0.1f, 1.0021816492080688f, 9}}));
  VexoAdjustSine128(1, 2, c.data(), 1.0f, 4);
  EXPECT_TRUE(std::isnan(c[0].blue) && std::isnan(c[1].blue));
}

TEST(AdjustLevels, PointOrderInputGammaCurveAndOutput) {
  // Input points blue, green, red (high first) cut without stretching;
  // channel 0 stops after the first pass.
  V32 a{{15, 15, 15, 9}, {25, 25, 25, 9}, {150, 60, 100, 9}};
  VexoAdjustLevels32(12, a.data(), 100, 10, 255, 20, 255, 30, 1.0f, 0.0f, 0, 0, 0, 0, 0, 0, 0);
  EXPECT_EQ(a, (V32{{15, 0, 0, 9}, {25, 25, 0, 9}, {255, 60, 100, 9}}));
  a = {{128, 128, 128, 9}};  // the exponent is gamma itself
  VexoAdjustLevels32(4, a.data(), 255, 0, 255, 0, 255, 0, 2.0f, 0.0f, 0, 0, 0, 0, 0, 0, 5);
  EXPECT_EQ(a, (V32{{64, 64, 64, 9}}));
  // Output points red, green, blue: each channel's maximum maps to its high
  // point, 0 to its low one; green 0.5 x 255 = 127.5 rounds to even.
  a = {{200, 100, 50, 9}, {100, 200, 100, 9}};
  VexoAdjustLevels32(8, a.data(), 255, 0, 255, 0, 255, 0, 1.0f, 0.0f, 200, 100, 255, 0, 50, 0, 1);
  EXPECT_EQ(a, (V32{{50, 128, 150, 9}, {25, 255, 200, 9}}));
  // The curve, on red only, with the integer quotient: 200 halves, 255 -> 132.
  a = {{7, 255, 255, 9}, {7, 200, 200, 9}};
  VexoAdjustLevels32(8, a.data(), 255, 0, 255, 0, 255, 0, 1.0f, -0.5f, 132, 0, 0, 0, 0, 0, 2);
  EXPECT_EQ(a, (V32{{7, 255, 132, 9}, {7, 200, 100, 9}}));
  // 16 bits: signed input comparison (40000 reads as -25536), divided output.
  V64 b{{40000, 10000, 100, 9}, {100, 30000, 100, 9}};
  VexoAdjustLevels64(8, b.data(), 32767, 0, 32767, 0, 32767, 0, 1.0f, 0.0f, 0, 0, 32767, 0, 0, 0, 3);
  EXPECT_EQ(b, (V64{{0, 10922, 100, 9}, {100, 32767, 100, 9}}));
}

// 3 of a maximum of 5 onto 0..7.5: 3 x (1/5) x 7.5 is 4.500000000000001 and
// rounds to 5 in the 8-bit levels, which multiply by the reciprocal; 3 / 5 x
// 7.5 is the tie 4.5 and rounds to even 4 in the 16-bit levels, which divide.
TEST(AdjustLevels, ReciprocalIn8BitsDivisionIn16Bits) {
  V32 a{{5, 0, 0, 9}, {3, 0, 0, 9}};
  VexoAdjustLevels32(8, a.data(), 255, 0, 255, 0, 255, 0, 1.0f, 0.0f, 0, 0, 0, 0, 7.5f, 0, 4);
  EXPECT_EQ(a[1].blue, 5);
  V64 b{{5, 0, 0, 9}, {3, 0, 0, 9}};
  VexoAdjustLevels64(8, b.data(), 32767, 0, 32767, 0, 32767, 0, 1.0f, 0.0f, 0, 0, 0, 0, 7.5f, 0, 4);
  EXPECT_EQ(b[1].blue, 4);
}

// Float: input points on the 0..1 scale (255 cuts HDR values to 1.0), a sine
// curve relative to each maximum, output points scaled by max(1, maximum):
// a channel within 0..1 maps its maximum to the high point, one above 1.0
// keeps its headroom.
TEST(AdjustLevels, FloatKeepsHeadroom) {
  V128 c{{0.5f, 0.25f, 2.0f, 9}, {0.1f, 0.5f, 0.5f, 9}};
  VexoAdjustLevels128(8, c.data(), 255, 51, 255, 0, 1000, 0, 1.0f, 0.0f, 1.0f, 0.0f, 0.8f, 0.2f, 1.0f, 0.0f, 1);
  EXPECT_EQ(c, (V128{{1.0f, 0.4974271357059479f, 2.034904718399048f, 9},
                    {0.0f, 0.800000011920929f, 0.5021816492080688f, 9}}));
  c = {{0.5f, 0.25f, 2.0f, 9}};
  VexoAdjustLevels128(4, c.data(), 102, 0, 255, 0, 255, 0, 2.0f, 0.0f, 1, 0, 1, 0, 1, 0, 0);
  EXPECT_EQ(c, (V128{{1.0f, 0.0625f, 1.0f, 9}}));
}

TEST(Equalizer, KeepsTheDominantColourOrItsComplement) {
  V32 a{{10, 200, 200, 9}, {50, 100, 30, 9}, {7, 7, 7, 9}, {200, 10, 100, 9}};
  VexoEqualizer32(12, a.data(), 1, 1);
  VexoEqualizer32(4, a.data() + 3, 2, 2);  // only red is written
  VexoEqualizer32(16, a.data(), 3, 1);
  EXPECT_EQ(a, (V32{{0, 200, 200, 9}, {0, 100, 0, 9}, {7, 7, 7, 9}, {200, 10, 255, 9}}));
  a = {{10, 200, 200, 9}};
  VexoEqualizer32(4, a.data(), 2, 1);
  EXPECT_EQ(a, (V32{{255, 55, 55, 9}}));
  V64 b{{40000, 100, 50, 9}};  // signed: 40000 is the smallest
  VexoEqualizer64(4, b.data(), 1, 1);
  EXPECT_EQ(b, (V64{{0, 100, 0, 9}}));
  // The six tests run in a fixed order on the values already changed, which
  // for negative values is not "keep the largest".
  V128 c{{0.5f, 2.0f, 1.0f, 9}, {-1.0f, -2.0f, -3.0f, 9}};
  VexoEqualizer128(8, c.data(), 2, 1);
  EXPECT_EQ(c, (V128{{1.0f, -1.0f, 1.0f, 9}, {1.0f, 1.0f, 1.0f, 9}}));
}

// The factor is amount / 100 truncated toward zero, plus 1.
TEST(Dodge, WholeFactorWithUpperBoundOnly) {
  struct Case { int32_t amount; uint8_t at100, at200; };
  for (Case k : {Case{-99, 100, 200}, Case{199, 200, 255}, Case{-200, 156, 56}}) {
    V32 a{{100, 100, 200, 9}, {100, 100, 100, 9}};
    VexoDodge32(4, a.data(), k.amount);
    EXPECT_EQ(a, (V32{{k.at100, k.at100, k.at200, 9}, {100, 100, 100, 9}}));
  }
  V128 c{{0.5f, 2.0f, -1.0f, 9}, {1.0f, 1.0f, 1.0f, 9}};
  VexoDodge128(5, c.data(), 250);
  EXPECT_EQ(c, (V128{{1.5f, 6.0f, -3.0f, 9}, {3.0f, 3.0f, 3.0f, 9}}));
}
