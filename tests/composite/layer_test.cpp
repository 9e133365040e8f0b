// The layer exports that present their result: how they walk, clip and fill
// their display pictures. What reaches the device is checked in
// tests/platform/present_test.cpp; here the device context is null.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "effects/effects.h"
#include "support/pictures.h"

using namespace effects::test;

namespace {

template <class P>
std::vector<P> upsideDown(const std::vector<P>& v, size_t width) {
  std::vector<P> out(v.size());
  const size_t rows = v.size() / width;
  for (size_t r = 0; r < rows; ++r)
    std::copy_n(v.begin() + (rows - 1 - r) * width, width, out.begin() + r * width);
  return out;
}

const Pixel32 kMarker{0xAB, 0xCD, 0xEF, 0x5A};

}  // namespace

// The equal-size exports and the canvas composite share one engine: a layer
// composited both ways gives the same bytes in every mode.
TEST(AdvancedDIB, AgreesWithTheCanvasCompositeInEveryMode) {
  for (int32_t mode = 0; mode <= 16; ++mode) {
    const auto src8 = pattern32(20, 11);
    auto a8 = pattern32(20, 12), b8 = a8;
    EXPECT_EQ(Vexo32AdvancedDIB(nullptr, 0, 0, 5, 4, a8.data(), src8.data(), 60, mode), 1);
    Vexo32DirectDIB(0, 0, 5, 4, src8.data(), b8.data(), 5, 4, 60, mode);
    EXPECT_TRUE(sameBytes(a8, b8)) << mode;

    const auto src16 = pattern64(20, 13);
    auto a16 = pattern64(20, 14), b16 = a16;
    std::vector<Pixel32> display(20);
    EXPECT_EQ(Vexo64AdvancedDIB(nullptr, 0, 0, 5, 4, a16.data(), src16.data(), display.data(), 60, mode), 1);
    Vexo64DirectDIB(0, 0, 5, 4, src16.data(), b16.data(), 5, 4, 60, mode);
    EXPECT_TRUE(sameBytes(a16, b16)) << mode;

    const auto srcF = pattern128(20, 15);
    auto aF = pattern128(20, 16), bF = aF;
    EXPECT_EQ(Vexo128AdvancedDIB(nullptr, 0, 0, 5, 4, aF.data(), srcF.data(), display.data(), 60, mode), 1);
    Vexo128DirectDIB(0, 0, 5, 4, srcF.data(), bF.data(), 5, 4, 60, mode);
    EXPECT_TRUE(sameBytes(aF, bF)) << mode;
  }
}

TEST(AdvancedDIB, FlipReadsTheSourceUpsideDown) {
  const auto src = pattern32(12, 21);
  auto flipped = pattern32(12, 22), plain = flipped;
  EXPECT_EQ(Vexo32AdvancedFlipDIB(nullptr, 0, 0, 3, 4, flipped.data(), src.data(), 100, 0), 1);
  const auto turned = upsideDown(src, 3);
  Vexo32AdvancedDIB(nullptr, 0, 0, 3, 4, plain.data(), turned.data(), 100, 0);
  EXPECT_TRUE(sameBytes(flipped, plain));
}

TEST(AdvancedDIB, OpacityZeroTouchesNothing) {
  const auto src = pattern64(6, 1);
  auto dst = pattern64(6, 2);
  const auto before = dst;
  std::vector<Pixel32> display(6, kMarker);
  EXPECT_EQ(Vexo64AdvancedDIB(nullptr, 0, 0, 3, 2, dst.data(), src.data(), display.data(), 0, 0), -1);
  EXPECT_TRUE(sameBytes(dst, before));
  EXPECT_EQ(display[0].blue, kMarker.blue);
  auto dst8 = pattern32(6, 2);
  const auto before8 = dst8;
  EXPECT_EQ(Vexo32AdvancedFlipDIB(nullptr, 0, 0, 3, 2, dst8.data(), pattern32(6).data(), 0, 4), -1);
  EXPECT_TRUE(sameBytes(dst8, before8));
}

TEST(AdvancedDIB, SixteenBitDisplayShiftsBySevenAndLeavesTheFourthByte) {
  std::vector<Pixel64> dst{{32767, 128, 127, 32767}};
  const std::vector<Pixel64> src{{0, 0, 0, 0}};  // mask 0: nothing blends
  std::vector<Pixel32> display(1, kMarker);
  // an unknown mode blends nothing but the picture still shows the destination
  for (int32_t mode : {0, 99}) {
    display[0] = kMarker;
    EXPECT_EQ(Vexo64AdvancedDIB(nullptr, 0, 0, 1, 1, dst.data(), src.data(), display.data(), 100, mode), 1);
    EXPECT_EQ(display[0].blue, 255);
    EXPECT_EQ(display[0].green, 1);
    EXPECT_EQ(display[0].red, 0);
    EXPECT_EQ(display[0].mask, kMarker.mask);
  }
}

TEST(AdvancedDIB, FloatDisplayQuantisesAllFourElements) {
  // Q8: above 254/255 saturates, below 1/255 is black, ties go to even
  std::vector<Pixel128> dst{{0.999f, 0.003f, 0.5f, 1.0f}, {1.5f, -0.2f, 0.01f, 0.0f}};
  const std::vector<Pixel128> src(2, Pixel128{0, 0, 0, 0});
  std::vector<Pixel32> display(2, kMarker);
  EXPECT_EQ(Vexo128AdvancedDIB(nullptr, 0, 0, 2, 1, dst.data(), src.data(), display.data(), 100, 0), 1);
  EXPECT_EQ(display[0].blue, 255);
  EXPECT_EQ(display[0].green, 0);
  EXPECT_EQ(display[0].red, 128);  // 127.5 -> 128
  EXPECT_EQ(display[0].mask, 255);
  EXPECT_EQ(display[1].blue, 255);
  EXPECT_EQ(display[1].green, 0);
  EXPECT_EQ(display[1].red, 3);    // 2.55 -> 3
  EXPECT_EQ(display[1].mask, 0);
}

// x = -10, width 30 on a 15-wide canvas: canvas columns 0..14 take source
// columns 10..24; the display is written bottom-up, only where covered.
TEST(AdvancedDirectDIB, ClipsAndWritesTheCoveredDisplayBottomUp) {
  const int32_t w = 30, h = 4, cw = 15, ch = 3;
  auto src = pattern32(w * h, 31);
  for (auto& p : src) p.mask = 255;  // full opacity and mask: the source is copied
  auto canvas = pattern32(cw * ch, 32), expected = canvas;
  std::vector<Pixel32> display(w * h, kMarker);
  EXPECT_EQ(Vexo32AdvancedDirectDIB(nullptr, -10, 1, w, h, display.data(), src.data(), canvas.data(), cw, ch, 100, 0), 1);
  Vexo32DirectDIB(-10, 1, w, h, src.data(), expected.data(), cw, ch, 100, 0);
  EXPECT_TRUE(sameBytes(canvas, expected));
  for (int32_t sy = 0; sy < h; ++sy) {
    for (int32_t sx = 0; sx < w; ++sx) {
      const Pixel32& d = display[(h - 1 - sy) * w + sx];
      const int32_t cx = sx - 10, cy = sy + 1;
      EXPECT_EQ(d.mask, kMarker.mask);  // the fourth byte is never written
      if (cx >= 0 && cx < cw && cy < ch) {
        const Pixel32& c = canvas[cy * cw + cx];
        EXPECT_EQ(d.blue, c.blue); EXPECT_EQ(d.green, c.green); EXPECT_EQ(d.red, c.red);
      } else {
        EXPECT_EQ(d.blue, kMarker.blue) << sx << "," << sy;
      }
    }
  }
  // source column 10 landed on canvas column 0
  EXPECT_EQ(canvas[cw].blue, src[10].blue);
  EXPECT_EQ(canvas[cw + 14].red, src[24].red);
}

TEST(AdvancedDirectDIB, UnknownModeDoesNothingAndReturnsZero) {
  const auto src = pattern64(4, 1);
  auto canvas = pattern64(4, 2);
  const auto before = canvas;
  std::vector<Pixel32> display(4, kMarker);
  EXPECT_EQ(Vexo64AdvancedDirectDIB(nullptr, 0, 0, 2, 2, display.data(), src.data(), canvas.data(), 2, 2, 100, 17), 0);
  EXPECT_EQ(Vexo64AdvancedDirectDIB(nullptr, 0, 0, 2, 2, display.data(), src.data(), canvas.data(), 2, 2, 0, 17), -1);
  EXPECT_TRUE(sameBytes(canvas, before));
  EXPECT_EQ(display[3].red, kMarker.red);
  EXPECT_EQ(Vexo64AdvancedDirectDIB(nullptr, 0, 0, 2, 2, display.data(), src.data(), canvas.data(), 2, 2, 100, 16), 1);
  EXPECT_EQ(display[0].red, canvas[2].red >> 7);  // bottom-up: display row 0 is canvas row 1
}

// Mode 0 shows the float canvas through Q8, the other modes through a clamp
// and a rounding: 0.003 shows as 0 after mode 0 and as 1 after mode 1.
TEST(AdvancedDirectDIB, FloatDisplayConversionDependsOnTheMode) {
  const std::vector<Pixel128> src{{0, 0, 0, 0}};  // unblended: the canvas is shown as it is
  std::vector<Pixel128> canvas{{0.003f, 1.25f, -0.5f, 0.75f}};
  std::vector<Pixel32> display(1, kMarker);
  EXPECT_EQ(Vexo128AdvancedDirectDIB(nullptr, 0, 0, 1, 1, display.data(), src.data(), canvas.data(), 1, 1, 100, 0), 1);
  EXPECT_EQ(display[0].blue, 0);
  EXPECT_EQ(display[0].green, 255);
  EXPECT_EQ(display[0].red, 0);
  EXPECT_EQ(display[0].mask, kMarker.mask);
  EXPECT_EQ(Vexo128AdvancedDirectDIB(nullptr, 0, 0, 1, 1, display.data(), src.data(), canvas.data(), 1, 1, 100, 1), 1);
  EXPECT_EQ(display[0].blue, 1);
  EXPECT_EQ(display[0].green, 255);
  EXPECT_EQ(display[0].red, 0);
  // 0.996 x 255 = 253.98: Q8 saturates above 254, the clamp-and-round does not
  canvas[0].blue = 0.998f;
  Vexo128AdvancedDirectDIB(nullptr, 0, 0, 1, 1, display.data(), src.data(), canvas.data(), 1, 1, 100, 0);
  EXPECT_EQ(display[0].blue, 255);
  canvas[0].blue = 0.996f;
  Vexo128AdvancedDirectDIB(nullptr, 0, 0, 1, 1, display.data(), src.data(), canvas.data(), 1, 1, 100, 2);
  EXPECT_EQ(display[0].blue, 254);
}

TEST(AdvancedMaskDIB, AddsAndErasesTheSquaredMaskOnly) {
  struct { uint8_t m, c, opacity; int32_t mode; uint8_t expected; } cases[] = {
      {255, 10, 100, 2, 255},   // q = 255 saturates in one call
      {128, 100, 50, 2, 132},   // q = round(128 x 128 / 510) = 32
      {128, 100, 50, 1, 68},
      {255, 200, 100, 1, 0},
      {0, 100, 100, 2, 100},    // mask 0: skipped
      {255, 100, 100, 3, 100},  // other modes change nothing
  };
  for (const auto& c : cases) {
    const Pixel32 src{1, 2, 3, c.m};
    Pixel32 canvas{40, 50, 60, c.c};
    Pixel32 display = kMarker;
    EXPECT_EQ(Vexo32AdvancedMaskDIB(nullptr, 0, 0, 1, 1, &display, &src, &canvas, 1, 1, c.opacity, c.mode), 1);
    EXPECT_EQ(canvas.mask, c.expected) << int(c.m) << " " << c.mode;
    EXPECT_EQ(canvas.blue, 40); EXPECT_EQ(canvas.green, 50); EXPECT_EQ(canvas.red, 60);
    EXPECT_EQ(display.mask, c.expected);  // only the fourth byte is shown
    EXPECT_EQ(display.blue, kMarker.blue);
  }
  Pixel32 canvas{0, 0, 0, 9}, display = kMarker;
  const Pixel32 src{0, 0, 0, 255};
  EXPECT_EQ(Vexo32AdvancedMaskDIB(nullptr, 0, 0, 1, 1, &display, &src, &canvas, 1, 1, 0, 2), -1);
  EXPECT_EQ(canvas.mask, 9);
}

TEST(AdvancedMaskDIB, SixteenBitAndFloatScales) {
  const Pixel64 src16{0, 0, 0, 32767};
  Pixel64 canvas16{0, 0, 0, 100};
  Pixel32 display = kMarker;
  Vexo64AdvancedMaskDIB(nullptr, 0, 0, 1, 1, &display, &src16, &canvas16, 1, 1, 100, 2);
  EXPECT_EQ(canvas16.mask, 32767);
  EXPECT_EQ(display.mask, 255);
  const Pixel64 half16{0, 0, 0, 16384};
  Vexo64AdvancedMaskDIB(nullptr, 0, 0, 1, 1, &display, &half16, &canvas16, 1, 1, 100, 1);
  EXPECT_EQ(canvas16.mask, 32767 - 8192);  // round(16384 x 16384 / 32767) = 8192
  EXPECT_EQ(display.mask, (32767 - 8192) >> 7);

  const Pixel128 srcF{0, 0, 0, 0.5f};
  Pixel128 canvasF{0, 0, 0, 0.25f};
  Vexo128AdvancedMaskDIB(nullptr, 0, 0, 1, 1, &display, &srcF, &canvasF, 1, 1, 100, 2);
  EXPECT_EQ(canvasF.mask, 0.5f);  // 0.25 + 0.5 x 1 x 0.5, unrounded
  EXPECT_EQ(display.mask, 128);   // round(127.5) to even
  Vexo128AdvancedMaskDIB(nullptr, 0, 0, 1, 1, &display, &srcF, &canvasF, 1, 1, 100, 1);
  Vexo128AdvancedMaskDIB(nullptr, 0, 0, 1, 1, &display, &srcF, &canvasF, 1, 1, 100, 1);
  Vexo128AdvancedMaskDIB(nullptr, 0, 0, 1, 1, &display, &srcF, &canvasF, 1, 1, 100, 1);
  EXPECT_EQ(canvasF.mask, 0.0f);  // clamped at 0
}
