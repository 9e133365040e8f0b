#include <gtest/gtest.h>

#include <vector>

#include "filters/stylize_checks.h"
#include "support/pictures.h"

using namespace effects::test;

TEST(StylizeMetallic, BandsFoldTheLuminance) {
  // Y of (R, G, B) = (200, 100, 50) is 0.4613529: one band keeps it (117.6);
  // two fold it three times (3Y = 1.384 -> 0.616 -> 157.1); eight fifteen
  // times (15Y = 6.920 -> 0.920 -> 234.7).
  const std::pair<int32_t, uint8_t> cases[] = {{1, 118}, {0, 118}, {2, 157}, {8, 235}, {40, 235}};
  for (auto [bands, grey] : cases) {
    std::vector<Pixel32> px{{50, 100, 200, 33}};
    VexoMetallic32(1, 1, px.data(), bands, 0);
    EXPECT_EQ(px[0], (Pixel32{grey, grey, grey, 33})) << "bands " << bands;
  }
  // Black and white keep their place in every setting.
  for (int32_t bands = 1; bands <= 8; ++bands) {
    std::vector<Pixel32> a{{0, 0, 0, 1}, {255, 255, 255, 2}};
    VexoMetallic32(2, 1, a.data(), bands, 0);
    EXPECT_TRUE(sameBytes(a, {{0, 0, 0, 1}, {255, 255, 255, 2}})) << bands;
    std::vector<Pixel64> b{{0, 0, 0, 1}, {32767, 32767, 32767, 2}};
    VexoMetallic64(1, 2, b.data(), bands, 0);
    EXPECT_TRUE(sameBytes(b, {{0, 0, 0, 1}, {32767, 32767, 32767, 2}})) << bands;
  }
}

TEST(StylizeMetallic, SheenRisesTowardTheUpperLeft) {
  // sheen 10 adds 0.4 x (Y upper left - Y lower right); neighbours past the
  // edge are the pixel itself.
  const Pixel32 black{0, 0, 0, 9}, white{255, 255, 255, 9};
  std::vector<Pixel32> a{white, black};
  VexoMetallic32(2, 1, a.data(), 1, 10);
  EXPECT_TRUE(sameBytes(a, {white, {102, 102, 102, 9}}));
  std::vector<Pixel32> b{black, white};
  VexoMetallic32(2, 1, b.data(), 1, 10);
  EXPECT_TRUE(sameBytes(b, {black, {153, 153, 153, 9}}));
  // On the diagonal of a 2 x 2 picture; sheen above 100 acts as 100 (x 4).
  std::vector<Pixel32> c{{20, 20, 20, 9}, black, black, black};
  VexoMetallic32(2, 2, c.data(), 1, 400);
  EXPECT_TRUE(sameBytes(c, {{100, 100, 100, 9}, {80, 80, 80, 9}, {80, 80, 80, 9}, {80, 80, 80, 9}}));
}

TEST(StylizeMetallic, SixteenBitMatchesEightBit) {
  const auto base = pattern32(31 * 19, 4);
  for (auto [bands, sheen] : {std::pair{1, 0}, std::pair{3, 40}, std::pair{8, 100}}) {
    auto eight = base;
    VexoMetallic32(31, 19, eight.data(), bands, sheen);
    auto wide = widen64(base);
    VexoMetallic64(31, 19, wide.data(), bands, sheen);
    SCOPED_TRACE(bands);
    expectWithinOneStep(wide, eight);
  }
}
