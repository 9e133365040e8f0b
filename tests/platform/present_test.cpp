// What the layer exports hand to a device context, and where it lands:
// natively against the stand-in, on Windows against real GDI.
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

// The equal-size exports hand over a bottom-up picture: the 8-bit destination
// itself (its row 0 at the bottom, with its fourth byte), or the display.
// Failures draw nothing; an unknown mode still shows the picture.
TEST(Present, EqualSizeCompositesShowTheirPictureBottomUp) {
  TestSurface s(6, 5, kFill);
  auto dst = pattern<Pixel32>(6, 1), src = pattern<Pixel32>(6, 2);
  EXPECT_EQ(Vexo32AdvancedDIB(s.dc(), 2, 1, 3, 2, dst.data(), src.data(), 70, 5), 1);
  for (int32_t i = 0; i < 6; ++i) EXPECT_EQ(s.at(2 + i % 3, 2 - i / 3), word(dst[size_t(i)])) << i;
  EXPECT_TRUE(s.untouchedOutside(2, 1, 5, 3));

  TestSurface f(4, 4, kFill);
  std::vector<Pixel128> dF{{0.5f, 1.5f, -1.0f, 1.0f}, {0.25f, 0.0f, 0.0f, 0.5f}};
  std::vector<Pixel32> display(2, kMarker);
  const std::vector<Pixel128> none(2);
  EXPECT_EQ(Vexo128AdvancedDIB(f.dc(), -1, 3, 2, 1, dF.data(), none.data(), display.data(), 100, 0), 1);
  EXPECT_EQ(f.at(0, 3), 0x80000040u);  // Q8 of 0.25, 0, 0, 0.5
  EXPECT_TRUE(f.untouchedOutside(0, 3, 1, 4));

  TestSurface t(2, 2, kFill);
  EXPECT_EQ(Vexo32AdvancedDIB(t.dc(), 0, 0, 2, 2, dst.data(), src.data(), 0, 0), -1);
  // GDI reads the size as signed: a negative height or width draws nothing
  // and reads no row of a picture sized for an empty walk
  std::vector<Pixel32> one(1, kMarker);
  EXPECT_EQ(Vexo32AdvancedDIB(t.dc(), 0, 0, 2, -2, one.data(), src.data(), 100, 0), 1);
  EXPECT_EQ(Vexo32AdvancedDIB(t.dc(), 1, 1, -2, 2, one.data(), src.data(), 100, 0), 1);
  EXPECT_TRUE(t.untouched());
  EXPECT_EQ(Vexo32AdvancedDIB(t.dc(), 0, 0, 2, 2, dst.data(), src.data(), 100, 40), 1);
  EXPECT_EQ(t.at(0, 0), word(dst[2]));
}

// The canvas composite shows the covered canvas in place, right way up, with
// the display's unwritten fourth byte as it was; an unknown mode draws nothing.
TEST(Present, CanvasCompositeShowsTheCoveredCanvasInPlace) {
  TestSurface s(5, 4, kFill);
  const auto src = pattern<Pixel32>(12, 3);
  auto canvas = pattern<Pixel32>(20, 4);
  std::vector<Pixel32> display(12, kMarker);
  const auto before = canvas, blank = display;
  EXPECT_EQ(Vexo32AdvancedDirectDIB(s.dc(), 0, 0, 4, 3, display.data(), src.data(), canvas.data(), 5, 4, 70, 40), 0);
  EXPECT_TRUE(s.untouched() && canvas == before && display == blank);
  EXPECT_EQ(Vexo32AdvancedDirectDIB(s.dc(), -1, -1, 4, 3, display.data(), src.data(), canvas.data(), 5, 4, 70, 6), 1);
  for (int32_t y = 0; y < 2; ++y)
    for (int32_t x = 0; x < 3; ++x) {
      Pixel32 shown = canvas[size_t(y * 5 + x)];
      shown.mask = kMarker.mask;
      EXPECT_EQ(s.at(x, y), word(shown)) << x << "," << y;
    }
  EXPECT_TRUE(s.untouchedOutside(0, 0, 3, 2));
}

// Clipped at the bottom, the scan-line count handed over is the canvas
// height, fewer than the picture's rows: the top covered row is composited
// but not shown.
TEST(Present, CanvasCompositeClippedAtTheBottomHandsOverFewerLines) {
  TestSurface s(3, 4, kFill);
  auto src = pattern<Pixel64>(10, 5);
  for (auto& p : src) p.mask = 32767;
  auto canvas = pattern<Pixel64>(12, 6);
  std::vector<Pixel32> display(10, kMarker);
  EXPECT_EQ(Vexo64AdvancedDirectDIB(s.dc(), 1, 1, 2, 5, display.data(), src.data(), canvas.data(), 3, 4, 100, 0), 1);
  EXPECT_EQ(canvas[4].blue, src[0].blue);
  for (int32_t y = 2; y < 4; ++y)
    for (int32_t x = 1; x < 3; ++x) {
      const Pixel64& c = canvas[size_t(y * 3 + x)];
      const Pixel32 shown{uint8_t(c.blue >> 7), uint8_t(c.green >> 7), uint8_t(c.red >> 7), kMarker.mask};
      EXPECT_EQ(s.at(x, y), word(shown)) << x << "," << y;
    }
  EXPECT_TRUE(s.untouchedOutside(1, 2, 3, 4));
}

TEST(Present, MaskPaintingShowsTheMask) {
  TestSurface s(2, 2, kFill);
  const std::vector<Pixel32> src{{0, 0, 0, 255}, {0, 0, 0, 0}};
  std::vector<Pixel32> canvas{{1, 2, 3, 10}, {4, 5, 6, 20}, {7, 8, 9, 30}, {1, 1, 1, 40}};
  std::vector<Pixel32> display(4, kMarker);
  EXPECT_EQ(Vexo32AdvancedMaskDIB(s.dc(), 0, 1, 2, 1, display.data(), src.data(), canvas.data(), 2, 2, 100, 2), 1);
  EXPECT_EQ(s.at(0, 1), (255u << 24) | (word(kMarker) & 0xFFFFFFu));
  EXPECT_EQ(s.at(1, 1), (40u << 24) | (word(kMarker) & 0xFFFFFFu));
  EXPECT_TRUE(s.untouchedOutside(0, 1, 2, 2));
}
