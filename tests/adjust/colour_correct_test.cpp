#include <gtest/gtest.h>

#include <vector>

#include "effects/effects.h"
#include "support/pictures.h"

using namespace effects::test;

TEST(RedEye, SkipsFirstRowAndColumn) {
  std::vector<Pixel32> px(9, Pixel32{10, 20, 200, 7});
  VexoRedEyeRemover32(3, 3, px.data(), 12345, 50);
  for (int y = 0; y < 3; ++y)
    for (int x = 0; x < 3; ++x) EXPECT_EQ(px[y * 3 + x].red, (x == 0 || y == 0) ? 200 : 15) << x << "," << y;
  px.assign(9, Pixel32{10, 20, 200, 7});
  VexoRedEyeRemover32(3, 3, px.data(), 0, 19);  // green above the threshold
  VexoRedEyeRemover32(9, 1, px.data(), 0, 255);  // a single row returns at once
  for (const auto& p : px) EXPECT_EQ(p.red, 200);
  px.assign(4, Pixel32{10, 100, 90, 7});  // red is not the largest
  VexoRedEyeRemover32(2, 2, px.data(), 0, 255);
  EXPECT_EQ(px[3].red, 90);

  std::vector<Pixel64> w(4, Pixel64{500, 1000, 30000, 7});
  VexoRedEyeRemover64(2, 2, w.data(), 0, 999);
  EXPECT_EQ(w[3].red, 30000);
  VexoRedEyeRemover64(2, 2, w.data(), 0, 1000);
  EXPECT_EQ(w[3].red, 750);
  EXPECT_EQ(w[2].red, 30000);
  std::vector<Pixel128> f(4, Pixel128{0.1f, 0.15f, 0.9f, 1});
  VexoRedEyeRemover128(2, 2, f.data(), 0, 51);  // threshold 0.2
  EXPECT_EQ(f[3].red, 0.125f);
  EXPECT_EQ(f[1].red, 0.9f);
}

TEST(AutoColourCorrection, LiftsDarkChannels) {
  // Red: max 200, min 0, sum 250 over 8 pixels; the mean divides by 7, so the
  // ratio is 100 / (250 / 7) = 2.8. Green is flat (ratio below 2), blue all
  // 0 (no ratio at all): both stay.
  std::vector<Pixel32> px(8, Pixel32{0, 100, 0, 5});
  px[0].red = 200;
  px[1].red = 50;
  VexoAutoColorCorrectionLDC32(4, 2, px.data());
  EXPECT_EQ(px[0].red, 240);  // 255 x (1 - e^-(2.8 + sin(1 degree)))
  EXPECT_EQ(px[1].red, 129);
  for (size_t i = 2; i < 8; ++i) EXPECT_EQ(px[i].red, 0);
  for (const auto& p : px) {
    EXPECT_EQ(p.green, 100);
    EXPECT_EQ(p.blue, 0);
    EXPECT_EQ(p.mask, 5);
  }
  // Five pixels, one of them 200: the ratio is exactly 2 with the N - 1
  // divisor (2.5 with N), and 2 is not above 2.
  std::vector<Pixel32> row(5, Pixel32{0, 0, 0, 5});
  row[0].red = 200;
  const auto before = row;
  VexoAutoColorCorrectionLDC32(5, 1, row.data());
  EXPECT_TRUE(sameBytes(row, before));
  std::vector<Pixel32> one{{0, 0, 200, 1}};
  VexoAutoColorCorrectionLDC32(1, 1, one.data());
  EXPECT_EQ(one[0].red, 200);
}

TEST(RangeInvert, AgainstTheLargestColourValue) {
  std::vector<Pixel128> px{{0.25f, 0.5f, 1.5f, 0.5f}, {0.125f, 2.0f, 0.375f, 0.5f}};
  auto orig = px;
  VexoVariableRangeInvert128(8, px.data(), 1);
  EXPECT_EQ(px[0].blue, 1.75f);
  EXPECT_EQ(px[0].red, 0.5f);
  EXPECT_EQ(px[1].green, 0.0f);
  EXPECT_EQ(px[1].red, 1.625f);
  px = orig;
  VexoVariableRangeInvert128(8, px.data(), 2);
  EXPECT_EQ(px[0].red, 0.5f);
  EXPECT_EQ(px[0].blue, 0.25f);
  // The maximum starts from 0: an all-negative picture is simply negated.
  px = {{-0.5f, -0.25f, -1.0f, 1}};
  VexoVariableRangeInvert128(4, px.data(), 1);
  EXPECT_EQ(px[0].blue, 0.5f);
  EXPECT_EQ(px[0].red, 1.0f);
}
