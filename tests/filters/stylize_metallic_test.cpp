#include <gtest/gtest.h>

#include <vector>

#include "filters/stylize_checks.h"
#include "support/pictures.h"

using namespace effects::test;

TEST(StylizeMetallic, BandsSheenAndLayouts) {
  // Y of (R, G, B) = (200, 100, 50) is 0.4613529: one band keeps it (117.6),
  // two fold it three times (3Y = 1.384 -> 0.616 -> 157.1), eight fifteen
  // times (15Y = 6.920 -> 0.920 -> 234.7). Black and white stay.
  for (auto [bands, grey] : {std::pair{1, 118}, std::pair{0, 118}, std::pair{2, 157}, std::pair{8, 235}, std::pair{40, 235}}) {
    std::vector<Pixel32> px{{50, 100, 200, 33}, {0, 0, 0, 1}, {255, 255, 255, 2}};
    VexoMetallic32(3, 1, px.data(), bands, 0);
    EXPECT_TRUE(sameBytes(px, {{uint8_t(grey), uint8_t(grey), uint8_t(grey), 33}, {0, 0, 0, 1}, {255, 255, 255, 2}})) << bands;
    std::vector<Pixel64> w{{0, 0, 0, 1}, {32767, 32767, 32767, 2}};
    VexoMetallic64(1, 2, w.data(), bands, 0);
    EXPECT_TRUE(sameBytes(w, {{0, 0, 0, 1}, {32767, 32767, 32767, 2}})) << bands;
  }
  // sheen 10 adds 0.4 x (Y upper left - Y lower right), a neighbour past the
  // edge being the pixel itself; above 100 it acts as 100 (x 4).
  const Pixel32 black{0, 0, 0, 9}, white{255, 255, 255, 9};
  std::vector<Pixel32> a{white, black}, b{black, white}, c{{20, 20, 20, 9}, black, black, black};
  VexoMetallic32(2, 1, a.data(), 1, 10);
  VexoMetallic32(2, 1, b.data(), 1, 10);
  VexoMetallic32(2, 2, c.data(), 1, 400);
  EXPECT_TRUE(sameBytes(a, {white, {102, 102, 102, 9}}));
  EXPECT_TRUE(sameBytes(b, {black, {153, 153, 153, 9}}));
  EXPECT_TRUE(sameBytes(c, {{100, 100, 100, 9}, {80, 80, 80, 9}, {80, 80, 80, 9}, {80, 80, 80, 9}}));
  // The 16-bit member paints the 8-bit picture within one step.
  const auto base = pattern<Pixel32>(31 * 19, 4);
  for (auto [bands, sheen] : {std::pair{1, 0}, std::pair{3, 40}, std::pair{8, 100}}) {
    auto eight = base;
    auto wide = widen64(base);
    VexoMetallic32(31, 19, eight.data(), bands, sheen);
    VexoMetallic64(31, 19, wide.data(), bands, sheen);
    expectWithinOneStep(wide, eight);
  }
}
