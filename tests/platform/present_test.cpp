// Which picture the layer exports hand to a device context, where it lands
// and with how many scan lines: natively against the stand-in, on Windows
// against real GDI. What the pictures hold is the layer tests' business.
#include <gtest/gtest.h>

#include <vector>

#include "effects/effects.h"
#include "platform/test_surface.h"
#include "support/pictures.h"

using namespace effects::test;

namespace {

constexpr uint32_t kFill = 0x5A112233u;
const Pixel32 kMarker{0xAB, 0xCD, 0xEF, 0x77};

uint32_t word(const Pixel32& p) {
  return uint32_t{p.blue} | (uint32_t{p.green} << 8) | (uint32_t{p.red} << 16) | (uint32_t{p.mask} << 24);
}

}  // namespace

// The equal-size exports hand over a bottom-up picture at (x, y): the 8-bit
// destination itself, fourth byte included, or the display of the wider
// layouts. An unknown mode still shows the picture; opacity 0 draws nothing.
TEST(Present, EqualSizeCompositesShowTheirPictureBottomUp) {
  TestSurface s(6, 5, kFill);
  auto dst = pattern<Pixel32>(6, 1), src = pattern<Pixel32>(6, 2);
  EXPECT_EQ(Vexo32AdvancedDIB(s.dc(), 2, 1, 3, 2, dst.data(), src.data(), 70, 5), 1);
  for (int32_t i = 0; i < 6; ++i) EXPECT_EQ(s.at(2 + i % 3, 2 - i / 3), word(dst[size_t(i)])) << i;
  EXPECT_TRUE(s.untouchedOutside(2, 1, 5, 3));

  TestSurface f(1, 2, kFill);
  auto d16 = pattern<Pixel64>(2, 3);
  std::vector<Pixel32> display(2, kMarker);
  EXPECT_EQ(Vexo64AdvancedDIB(f.dc(), 0, 0, 1, 2, d16.data(), d16.data(), display.data(), 100, 99), 1);
  EXPECT_TRUE(f.at(0, 0) == word(display[1]) && f.at(0, 1) == word(display[0]));

  TestSurface t(2, 2, kFill);
  EXPECT_EQ(Vexo32AdvancedDIB(t.dc(), 0, 0, 2, 2, dst.data(), src.data(), 0, 0), -1);
  EXPECT_TRUE(t.untouched());
}

// The canvas composites hand over their display at the unclipped position,
// as many scan lines as the clipped rows end at: clipped at the bottom, fewer
// than the picture's rows, so its top row is not shown. An unknown mode draws
// nothing and touches nothing.
TEST(Present, CanvasCompositesHandOverTheClippedRows) {
  const auto src = pattern<Pixel64>(10, 5);
  auto canvas = pattern<Pixel64>(12, 6);
  for (auto composite : {Vexo64AdvancedDirectDIB, Vexo64AdvancedMaskDIB}) {
    TestSurface s(3, 4, kFill);
    std::vector<Pixel32> display(10, kMarker);
    EXPECT_EQ(composite(s.dc(), 1, 1, 2, 5, display.data(), src.data(), canvas.data(), 3, 4, 70, 2), 1);
    // canvas row y shows display row 5 - y (bottom-up, y = 1 at row 4)
    for (int32_t y = 2; y < 4; ++y)
      for (int32_t x = 1; x < 3; ++x) EXPECT_EQ(s.at(x, y), word(display[size_t((5 - y) * 2 + x - 1)])) << x << y;
    EXPECT_TRUE(s.untouchedOutside(1, 2, 3, 4));
  }
  TestSurface s(3, 4, kFill);
  std::vector<Pixel32> display(10, kMarker);
  const auto before = canvas;
  EXPECT_EQ(Vexo64AdvancedDirectDIB(s.dc(), 1, 1, 2, 5, display.data(), src.data(), canvas.data(), 3, 4, 70, 40), 0);
  EXPECT_TRUE(s.untouched() && canvas == before && display == std::vector<Pixel32>(10, kMarker));

  TestSurface n(4, 3, kFill);
  auto c8 = pattern<Pixel32>(12, 4), s8 = pattern<Pixel32>(4, 7);
  std::vector<Pixel32> d8(4, kMarker);
  EXPECT_EQ(Vexo32AdvancedDirectDIB(n.dc(), -1, -1, 2, 2, d8.data(), s8.data(), c8.data(), 4, 3, 70, 6), 1);
  EXPECT_EQ(n.at(0, 0), word(d8[1]));
  EXPECT_TRUE(n.untouchedOutside(0, 0, 1, 1));
}
