// The layer exports that present their result: their walks, clipping and
// display pictures (with a null device; what reaches a device is checked in
// tests/platform/present_test.cpp).
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "effects/effects.h"
#include "support/pictures.h"

using namespace effects::test;

namespace {
// A display pixel no export writes, with a chosen fourth byte.
constexpr Pixel32 marker(uint8_t fourth = 0x5A) { return {0xAB, 0xCD, 0xEF, fourth}; }
const Pixel32 kMarker = marker();
}  // namespace

// Every compositing export runs the same engine: the equal-size exports give
// the canvas composite's bytes in every mode and layout, and the flip export
// gives what the plain one gives with the source turned upside down.
TEST(AdvancedDIB, AgreesWithTheCanvasCompositeInEveryMode) {
  std::vector<Pixel32> display(20);
  const auto s8 = pattern<Pixel32>(20, 11);
  const auto s16 = pattern<Pixel64>(20, 13);
  const auto sF = pattern<Pixel128>(20, 15);
  std::vector<Pixel32> turned(20);
  for (size_t r = 0; r < 4; ++r) std::copy_n(s8.begin() + long((3 - r) * 5), 5, turned.begin() + long(r * 5));
  for (int32_t mode = 0; mode <= 16; ++mode) {
    auto a8 = pattern<Pixel32>(20, 12), b8 = a8, f8 = a8, g8 = a8;
    EXPECT_EQ(Vexo32AdvancedDIB(nullptr, 0, 0, 5, 4, a8.data(), s8.data(), 60, mode), 1);
    Vexo32DirectDIB(0, 0, 5, 4, s8.data(), b8.data(), 5, 4, 60, mode);
    EXPECT_EQ(Vexo32AdvancedFlipDIB(nullptr, 0, 0, 5, 4, f8.data(), s8.data(), 60, mode), 1);
    Vexo32AdvancedDIB(nullptr, 0, 0, 5, 4, g8.data(), turned.data(), 60, mode);
    auto a16 = pattern<Pixel64>(20, 14), b16 = a16;
    EXPECT_EQ(Vexo64AdvancedDIB(nullptr, 0, 0, 5, 4, a16.data(), s16.data(), display.data(), 60, mode), 1);
    Vexo64DirectDIB(0, 0, 5, 4, s16.data(), b16.data(), 5, 4, 60, mode);
    auto aF = pattern<Pixel128>(20, 16), bF = aF;
    EXPECT_EQ(Vexo128AdvancedDIB(nullptr, 0, 0, 5, 4, aF.data(), sF.data(), display.data(), 60, mode), 1);
    Vexo128DirectDIB(0, 0, 5, 4, sF.data(), bF.data(), 5, 4, 60, mode);
    EXPECT_TRUE(a8 == b8 && f8 == g8 && a16 == b16 && aF == bF) << mode;
  }
}

TEST(AdvancedDIB, DisplayPictures) {
  // 16 bits: shifted right by 7, fourth byte left alone, also for an unknown mode
  std::vector<Pixel64> d16{{32767, 128, 127, 32767}};
  const std::vector<Pixel64> s16(1);  // mask 0: nothing blends
  std::vector<Pixel32> display(2, kMarker);
  for (int32_t mode : {0, 99}) {
    display[0] = kMarker;
    EXPECT_EQ(Vexo64AdvancedDIB(nullptr, 0, 0, 1, 1, d16.data(), s16.data(), display.data(), 100, mode), 1);
    EXPECT_EQ(display[0], (Pixel32{255, 1, 0, kMarker.mask}));
  }
  // float: Q8 of all four (above 254/255 saturates, below 1/255 is black)
  std::vector<Pixel128> dF{{0.999f, 0.003f, 0.5f, 1.0f}, {1.5f, -0.2f, 0.01f, 0.0f}};
  const std::vector<Pixel128> sF(2);
  EXPECT_EQ(Vexo128AdvancedDIB(nullptr, 0, 0, 2, 1, dF.data(), sF.data(), display.data(), 100, 0), 1);
  EXPECT_EQ(display, (std::vector<Pixel32>{{255, 0, 128, 255}, {255, 0, 3, 0}}));
}

// x = -10, width 30 on a 15-wide canvas: canvas columns 0..14 take source
// columns 10..24; the display is bottom-up and written only where covered.
TEST(AdvancedDirectDIB, ClipsAndWritesTheCoveredDisplayBottomUp) {
  const int32_t w = 30, h = 4, cw = 15, ch = 3;
  auto src = pattern<Pixel32>(w * h, 31);
  for (auto& p : src) p.mask = 255;  // full weight: mode 0 copies
  auto canvas = pattern<Pixel32>(cw * ch, 32);
  const Pixel32 aboveTheLayer = canvas[0];
  std::vector<Pixel32> display(w * h, kMarker);
  EXPECT_EQ(Vexo32AdvancedDirectDIB(nullptr, -10, 1, w, h, display.data(), src.data(), canvas.data(), cw, ch, 100, 0),
            1);
  for (int32_t sy = 0; sy < h; ++sy)
    for (int32_t sx = 0; sx < w; ++sx) {
      const Pixel32& d = display[size_t((h - 1 - sy) * w + sx)];
      const int32_t cx = sx - 10, cy = sy + 1;
      const bool covered = cx >= 0 && cx < cw && cy < ch;
      Pixel32 shown = covered ? canvas[size_t(cy * cw + cx)] : kMarker, copied = src[size_t(sy * w + sx)];
      shown.mask = copied.mask = kMarker.mask;
      EXPECT_EQ(d, shown) << sx << "," << sy;
      EXPECT_TRUE(!covered || shown == copied);
    }
  EXPECT_EQ(canvas[0], aboveTheLayer);
}

// 0.003 shows as 0 after mode 0 (Q8) and as 1 after mode 1 (clamp and round);
// 0.996 x 255 = 253.98 rounds to 254 (Q8 would saturate it).
TEST(AdvancedDirectDIB, FloatShowsModeZeroThroughQ8) {
  const std::vector<Pixel128> src(1);
  std::vector<Pixel128> canvas{{0.003f, 1.25f, -0.5f, 0.75f}};
  Pixel32 display = kMarker;
  const struct { float blue; int32_t mode; Pixel32 want; } cases[] = {
      {0.003f, 0, {0, 255, 0, 0x5A}}, {0.003f, 1, {1, 255, 0, 0x5A}}, {0.996f, 2, {254, 255, 0, 0x5A}}};
  for (const auto& c : cases) {
    canvas[0].blue = c.blue;
    EXPECT_EQ(Vexo128AdvancedDirectDIB(nullptr, 0, 0, 1, 1, &display, src.data(), canvas.data(), 1, 1, 100, c.mode), 1);
    EXPECT_EQ(display, c.want) << c.blue << " mode " << c.mode;
  }
}

TEST(AdvancedMaskDIB, AddsAndErasesTheSquaredMaskOnly) {
  const struct { uint8_t m, c, opacity; int32_t mode; uint8_t want; } cases[] = {
      {255, 10, 100, 2, 255}, {128, 100, 50, 2, 132},  // q = 255; q = round(128 x 128 / 510) = 32
      {128, 100, 50, 1, 68}, {255, 200, 100, 1, 0}, {255, 100, 100, 3, 100},
  };
  for (const auto& c : cases) {
    const Pixel32 src{1, 2, 3, c.m};
    Pixel32 canvas{40, 50, 60, c.c}, display = kMarker;
    EXPECT_EQ(Vexo32AdvancedMaskDIB(nullptr, 0, 0, 1, 1, &display, &src, &canvas, 1, 1, c.opacity, c.mode), 1);
    EXPECT_EQ(canvas, (Pixel32{40, 50, 60, c.want})) << int(c.m) << " " << c.mode;
    EXPECT_EQ(display, marker(c.want));
  }
  Pixel32 canvas{0, 0, 0, 9}, display = kMarker;
  const Pixel32 full{0, 0, 0, 255};
  EXPECT_EQ(Vexo32AdvancedMaskDIB(nullptr, 0, 0, 1, 1, &display, &full, &canvas, 1, 1, 0, 2), -1);
  EXPECT_EQ(canvas.mask, 9);

  const Pixel64 s16{0, 0, 0, 16384};
  Pixel64 c16{0, 0, 0, 32767};
  Vexo64AdvancedMaskDIB(nullptr, 0, 0, 1, 1, &display, &s16, &c16, 1, 1, 100, 1);
  EXPECT_TRUE(c16.mask == 32767 - 8192 && display.mask == (32767 - 8192) >> 7);  // q = round(16384² / 32767)
  // float: unrounded, shown as round(127.5) = 128 (ties to even), clamped at
  // 0 when erasing, and a source mask of 0 leaves even an out-of-range mask
  const Pixel128 sF{0, 0, 0, 0.5f}, none{0, 0, 0, 0};
  Pixel128 cF{0, 0, 0, 0.25f};
  Vexo128AdvancedMaskDIB(nullptr, 0, 0, 1, 1, &display, &sF, &cF, 1, 1, 100, 2);
  EXPECT_TRUE(cF.mask == 0.5f && display.mask == 128);
  for (int i = 0; i < 3; ++i) Vexo128AdvancedMaskDIB(nullptr, 0, 0, 1, 1, &display, &sF, &cF, 1, 1, 100, 1);
  EXPECT_EQ(cF.mask, 0.0f);
  cF.mask = 1.5f;
  Vexo128AdvancedMaskDIB(nullptr, 0, 0, 1, 1, &display, &none, &cF, 1, 1, 100, 2);
  EXPECT_EQ(cF.mask, 1.5f);
}
