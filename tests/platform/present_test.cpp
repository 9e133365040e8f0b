// What the layer exports hand to a device context: the picture's bytes and
// where they land. Runs against the stand-in natively and real GDI on Windows.
#include <gtest/gtest.h>

#include <cstring>
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

void expectUntouchedOutside(TestSurface& s, int32_t left, int32_t top, int32_t right, int32_t bottom) {
  for (int32_t y = 0; y < s.height(); ++y)
    for (int32_t x = 0; x < s.width(); ++x) {
      if (x < left || x >= right || y < top || y >= bottom) {
        EXPECT_EQ(s.at(x, y), kFill) << x << "," << y;
      }
    }
}

}  // namespace

// The 8-bit destination is handed over as a bottom-up picture: its row 0 is
// shown at the bottom, with its fourth byte.
TEST(Present, EqualSizeCompositeShowsTheDestinationBottomUp) {
  TestSurface s(6, 5, kFill);
  auto dst = pattern32(6, 1);
  auto src = pattern32(6, 2);
  for (auto& p : src) p.mask = 255;
  EXPECT_EQ(Vexo32AdvancedDIB(s.dc(), 2, 1, 3, 2, dst.data(), src.data(), 100, 0), 1);
  for (int32_t r = 0; r < 2; ++r)
    for (int32_t c = 0; c < 3; ++c) {
      const Pixel32& d = dst[static_cast<size_t>(r * 3 + c)];
      EXPECT_EQ(s.at(2 + c, 2 - r), word(d));
      EXPECT_EQ(d.blue, src[static_cast<size_t>(r * 3 + c)].blue);
    }
  expectUntouchedOutside(s, 2, 1, 5, 3);
}

TEST(Present, FloatCompositeShowsItsQuantisedDisplay) {
  TestSurface s(4, 4, kFill);
  std::vector<Pixel128> dst{{0.5f, 1.5f, -1.0f, 1.0f}, {0.25f, 0.0f, 0.0f, 0.5f}};
  const std::vector<Pixel128> src(2, Pixel128{0, 0, 0, 0});
  std::vector<Pixel32> display(2, kMarker);
  EXPECT_EQ(Vexo128AdvancedDIB(s.dc(), -1, 3, 2, 1, dst.data(), src.data(), display.data(), 100, 0), 1);
  EXPECT_EQ(s.at(0, 3), 0x80000040u);  // Q8 of 0.25, 0, 0, 0.5
  expectUntouchedOutside(s, 0, 3, 1, 4);
}

// The canvas composite shows the covered part of the layer at its place,
// right way up, with the display's unwritten fourth byte as it was.
TEST(Present, CanvasCompositeShowsTheCoveredCanvasInPlace) {
  TestSurface s(5, 4, kFill);
  const int32_t w = 4, h = 3, cw = 5, ch = 4;
  const auto src = pattern32(w * h, 3);
  auto canvas = pattern32(cw * ch, 4);
  std::vector<Pixel32> display(w * h, kMarker);
  EXPECT_EQ(Vexo32AdvancedDirectDIB(s.dc(), -1, -1, w, h, display.data(), src.data(), canvas.data(), cw, ch, 70, 6), 1);
  for (int32_t y = 0; y < 2; ++y)
    for (int32_t x = 0; x < 3; ++x) {
      Pixel32 shown = canvas[static_cast<size_t>(y * cw + x)];
      shown.mask = kMarker.mask;
      EXPECT_EQ(s.at(x, y), word(shown)) << x << "," << y;
    }
  expectUntouchedOutside(s, 0, 0, 3, 2);
}

// Clipped at the bottom, the scan-line count handed over is the canvas
// height, fewer than the picture's rows: the picture's top covered row is not
// presented although the canvas changed there.
TEST(Present, CanvasCompositeClippedAtTheBottomHandsOverFewerLines) {
  TestSurface s(3, 4, kFill);
  const int32_t w = 2, h = 5, cw = 3, ch = 4;
  auto src = pattern64(w * h, 5);
  for (auto& p : src) p.mask = 32767;
  auto canvas = pattern64(cw * ch, 6);
  std::vector<Pixel32> display(w * h, kMarker);
  EXPECT_EQ(Vexo64AdvancedDirectDIB(s.dc(), 1, 1, w, h, display.data(), src.data(), canvas.data(), cw, ch, 100, 0), 1);
  EXPECT_EQ(canvas[static_cast<size_t>(1 * cw + 1)].blue, src[0].blue);  // row 1 was composited...
  for (int32_t y = 2; y < 4; ++y)
    for (int32_t x = 1; x < 3; ++x) {
      const Pixel64& c = canvas[static_cast<size_t>(y * cw + x)];
      const uint32_t want = uint32_t(c.blue >> 7) | (uint32_t(c.green >> 7) << 8) | (uint32_t(c.red >> 7) << 16) |
                            (uint32_t{kMarker.mask} << 24);
      EXPECT_EQ(s.at(x, y), want) << x << "," << y;
    }
  expectUntouchedOutside(s, 1, 2, 3, 4);  // ...but is not shown
}

TEST(Present, MaskPaintingShowsTheCanvasMaskInTheFourthByte) {
  TestSurface s(2, 2, kFill);
  const std::vector<Pixel32> src{{0, 0, 0, 255}, {0, 0, 0, 0}};
  std::vector<Pixel32> canvas{{1, 2, 3, 10}, {4, 5, 6, 20}, {7, 8, 9, 30}, {1, 1, 1, 40}};
  std::vector<Pixel32> display(2, kMarker);
  EXPECT_EQ(Vexo32AdvancedMaskDIB(s.dc(), 0, 1, 2, 1, display.data(), src.data(), canvas.data(), 2, 2, 100, 2), 1);
  EXPECT_EQ(s.at(0, 1), (255u << 24) | (word(kMarker) & 0xFFFFFFu));
  EXPECT_EQ(s.at(1, 1), (40u << 24) | (word(kMarker) & 0xFFFFFFu));
  expectUntouchedOutside(s, 0, 1, 2, 2);
}

TEST(Present, NothingIsShownForOpacityZeroOrAnUnknownCanvasMode) {
  TestSurface s(2, 2, kFill);
  auto dst = pattern32(4, 1);
  const auto src = pattern32(4, 2);
  std::vector<Pixel32> display(4, kMarker);
  auto canvas = pattern32(4, 3);
  EXPECT_EQ(Vexo32AdvancedDIB(s.dc(), 0, 0, 2, 2, dst.data(), src.data(), 0, 0), -1);
  EXPECT_EQ(Vexo32AdvancedDirectDIB(s.dc(), 0, 0, 2, 2, display.data(), src.data(), canvas.data(), 2, 2, 100, 40), 0);
  expectUntouchedOutside(s, 0, 0, 0, 0);
  // an unknown mode on the equal-size export still shows the unchanged picture
  EXPECT_EQ(Vexo32AdvancedDIB(s.dc(), 0, 0, 2, 2, dst.data(), src.data(), 100, 40), 1);
  EXPECT_EQ(s.at(0, 0), word(dst[2]));
}
