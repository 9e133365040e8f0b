#include <gtest/gtest.h>

#include <vector>

#include "adjust/adjust_checks.h"

using namespace effects::test;

using V128 = std::vector<Pixel128>;

// Rows and columns from 1 on only; red must be the largest element and blue
// and green at or below the threshold.
TEST(RedEye, SkipsFirstRowAndColumn) {
  std::vector<Pixel32> px(9, Pixel32{10, 20, 200, 7});
  px[8].green = 201;  // red is not the largest
  auto want = px;
  want[4].red = want[5].red = want[7].red = 15;
  VexoRedEyeRemover32(3, 3, px.data(), 12345, 19);  // green above the threshold
  VexoRedEyeRemover32(9, 1, px.data(), 0, 255);  // a single row
  VexoRedEyeRemover32(3, 3, px.data(), 12345, 20);
  EXPECT_EQ(px, want);

  // 16 bits: the threshold unscaled; float: threshold / 255, mean of blue and green.
  std::vector<Pixel64> w(4, Pixel64{500, 1000, 30000, 7});
  VexoRedEyeRemover64(2, 2, w.data(), 0, 999);
  EXPECT_EQ(w[3].red, 30000);
  VexoRedEyeRemover64(2, 2, w.data(), 0, 1000);
  EXPECT_EQ(w[3].red, 750);
  V128 f(4, Pixel128{0.1f, 0.15f, 0.9f, 1});
  VexoRedEyeRemover128(2, 2, f.data(), 0, 51);  // threshold 0.2
  EXPECT_EQ(f[3].red, 0.125f);
  EXPECT_EQ(f[2].red, 0.9f);
}

TEST(AutoColourCorrection, LiftsDarkChannels) {
  // Red: max 200, min 0, sum 250 over 8 pixels; the mean divides by 7, so the
  // ratio is 100 / (250 / 7) = 2.8. Green is flat (ratio below 2), blue all
  // 0 (no ratio at all): both stay.
  std::vector<Pixel32> px(8, Pixel32{0, 100, 0, 5});
  px[0].red = 200;
  px[1].red = 50;
  auto want = px;
  want[0].red = 240;  // 255 x (1 - e^-(2.8 + sin(1 degree)))
  want[1].red = 129;
  VexoAutoColorCorrectionLDC32(4, 2, px.data());
  EXPECT_EQ(px, want);
  // Five pixels, one of them 200: the ratio is exactly 2 with the N - 1
  // divisor (2.5 with N), and 2 is not above 2. A single pixel has no ratio.
  std::vector<Pixel32> row(5, Pixel32{0, 0, 0, 5});
  row[0].red = 200;
  const auto before = row;
  VexoAutoColorCorrectionLDC32(5, 1, row.data());
  VexoAutoColorCorrectionLDC32(1, 1, row.data());
  EXPECT_EQ(row, before);
}

// M is the largest blue, green or red anywhere, starting from 0: an
// all-negative picture is simply negated.
TEST(RangeInvert, AgainstTheLargestColourValue) {
  V128 px{{0.25f, 0.5f, 1.5f, 0.5f}, {0.125f, 2.0f, 0.375f, 0.5f}};
  VexoVariableRangeInvert128(8, px.data(), 1);
  EXPECT_EQ(px, (V128{{1.75f, 1.5f, 0.5f, 0.5f}, {1.875f, 0.0f, 1.625f, 0.5f}}));
  px = {{0.25f, 0.5f, 1.5f, 0.5f}};
  VexoVariableRangeInvert128(4, px.data(), 2);
  EXPECT_EQ(px, (V128{{0.25f, 0.5f, 0.0f, 0.5f}}));
  px = {{-0.5f, -0.25f, -1.0f, 1}};
  VexoVariableRangeInvert128(4, px.data(), 1);
  EXPECT_EQ(px, (V128{{0.5f, 0.25f, 1.0f, 1}}));
}
