// The seventeen blend modes in the three layouts, through the canvas
// composite (a 1 x 1 region on a 1 x 1 canvas) unless a test needs more.
#include <gtest/gtest.h>

#include <vector>

#include "composite/blend.h"
#include "effects/effects.h"
#include "support/pictures.h"

using namespace effects::test;

namespace {

struct Case8 { int32_t mode; uint8_t d, s, expected; };

// One element value in all three colour channels, blended once.
uint8_t blend8(int32_t mode, uint8_t d, uint8_t s, int32_t opacity = 100, uint8_t m = 255) {
  Pixel32 canvas{d, d, d, 77};
  const Pixel32 src{s, s, s, m};
  EXPECT_EQ(Vexo32DirectDIB(0, 0, 1, 1, &src, &canvas, 1, 1, opacity, mode), 1);
  EXPECT_EQ(canvas.blue, canvas.red);
  EXPECT_EQ(canvas.green, canvas.red);
  EXPECT_EQ(canvas.mask, 77);  // never changed by a blend
  return canvas.red;
}

uint16_t blend16(int32_t mode, uint16_t d, uint16_t s, int32_t opacity = 100, uint16_t m = 32767) {
  Pixel64 canvas{d, d, d, 5};
  const Pixel64 src{s, s, s, m};
  EXPECT_EQ(Vexo64DirectDIB(0, 0, 1, 1, &src, &canvas, 1, 1, opacity, mode), 1);
  EXPECT_EQ(canvas.blue, canvas.red);
  EXPECT_EQ(canvas.mask, 5);
  return canvas.red;
}

float blendF(int32_t mode, float d, float s, int32_t opacity = 100, float m = 1.0f) {
  Pixel128 canvas{d, d, d, 0.25f};
  const Pixel128 src{s, s, s, m};
  EXPECT_EQ(Vexo128DirectDIB(0, 0, 1, 1, &src, &canvas, 1, 1, opacity, mode), 1);
  EXPECT_EQ(bitsOf(canvas.blue), bitsOf(canvas.red));
  EXPECT_EQ(canvas.mask, 0.25f);
  return canvas.red;
}

}  // namespace

// At opacity 100 and a full mask the 8-bit weight is exactly 1, so each
// result is the mode's target itself.
TEST(Blend8, TargetsOfEveryModeAtFullWeight) {
  const Case8 cases[] = {
      {0, 10, 200, 200},
      {1, 100, 50, 50}, {1, 50, 100, 50},      // darken
      {2, 100, 50, 100}, {2, 50, 100, 100},    // lighten
      {3, 100, 30, 70}, {3, 30, 100, 70},      // difference
      // multiply divides s by 255 first: only s = 255 keeps d
      {4, 200, 255, 200}, {4, 200, 254, 0}, {4, 200, 1, 0},
      // screen: s = 0 keeps d, anything else goes to 255
      {5, 100, 0, 100}, {5, 100, 1, 255},
      // overlay keyed on d at 128, without the factor 2
      {6, 128, 10, 255}, {6, 128, 0, 128}, {6, 127, 10, 0}, {6, 127, 255, 127},
      // hard light keyed on s at 128
      {7, 50, 128, 255}, {7, 50, 127, 0}, {7, 50, 0, 0}, {7, 50, 255, 255},
      // pin light: lightens above 128, darkens at 128 and below
      {8, 100, 129, 129}, {8, 200, 129, 200}, {8, 100, 128, 100}, {8, 200, 128, 128},
      // add and subtract clamp after rounding
      {15, 200, 100, 255}, {15, 100, 100, 200}, {16, 50, 100, 0}, {16, 150, 100, 50},
  };
  for (const auto& c : cases)
    EXPECT_EQ(blend8(c.mode, c.d, c.s), c.expected) << "mode " << c.mode << " d " << int(c.d) << " s " << int(c.s);
}

TEST(Blend8, HalfWeightRoundsTiesToEven) {
  // opacity 50 with a full mask weighs exactly 0.5
  EXPECT_EQ(blend8(0, 0, 1, 50), 0);    // 0.5 -> 0
  EXPECT_EQ(blend8(0, 0, 3, 50), 2);    // 1.5 -> 2
  EXPECT_EQ(blend8(0, 200, 100, 50), 150);
  EXPECT_EQ(blend8(4, 200, 254, 50), 100);  // d x (1 - a), not d x 254/255
  EXPECT_EQ(blend8(4, 200, 255, 50), 200);
  EXPECT_EQ(blend8(15, 10, 101, 50), 60);   // round(50.5) = 50 before the add
  EXPECT_EQ(blend8(16, 100, 103, 50), 48);  // round(51.5) = 52
  // half opacity and half mask: a = 128 x 50 x 3.92156862e-5 (single precision)
  EXPECT_EQ(blend8(0, 10, 200, 50, 128), 58);  // 10 + 190 x 0.2509804 = 57.686
}

TEST(Blend8, SingleChannelModesTouchOnlyTheirChannel) {
  struct { int32_t mode; uint8_t b, g, r; } cases[] = {
      {9, 1, 2, 30}, {10, 1, 20, 3}, {11, 10, 2, 3},
      {12, 1, 2, 225}, {13, 1, 235, 3}, {14, 245, 2, 3},
  };
  for (const auto& c : cases) {
    Pixel32 canvas{1, 2, 3, 4};
    const Pixel32 src{10, 20, 30, 255};
    Vexo32DirectDIB(0, 0, 1, 1, &src, &canvas, 1, 1, 100, c.mode);
    EXPECT_EQ(canvas.blue, c.b) << c.mode;
    EXPECT_EQ(canvas.green, c.g) << c.mode;
    EXPECT_EQ(canvas.red, c.r) << c.mode;
    EXPECT_EQ(canvas.mask, 4);
  }
}

TEST(Blend8, MaskZeroOpacityZeroAndUnknownModes) {
  auto canvas = pattern32(12, 3);
  auto src = pattern32(12, 4);
  for (auto& p : src) p.mask = 0;
  const auto before = canvas;
  for (int32_t mode = 0; mode <= 16; ++mode) {
    EXPECT_EQ(Vexo32DirectDIB(0, 0, 4, 3, src.data(), canvas.data(), 4, 3, 100, mode), 1);
    EXPECT_TRUE(sameBytes(canvas, before)) << mode;
  }
  src = pattern32(12, 4);
  EXPECT_EQ(Vexo32DirectDIB(0, 0, 4, 3, src.data(), canvas.data(), 4, 3, 0, 0), -1);
  EXPECT_EQ(Vexo32DirectDIB(0, 0, 4, 3, src.data(), canvas.data(), 4, 3, 100, 17), 1);
  EXPECT_EQ(Vexo32DirectDIB(0, 0, 4, 3, src.data(), canvas.data(), 4, 3, 100, -1), 1);
  EXPECT_TRUE(sameBytes(canvas, before));
}

TEST(Blend16, TargetsAndThresholds) {
  struct { int32_t mode; uint16_t d, s, expected; } cases[] = {
      {0, 100, 30000, 30000},
      {3, 1000, 31000, 30000},
      {4, 20000, 32767, 20000}, {4, 20000, 32766, 0},
      {5, 20000, 0, 20000}, {5, 20000, 1, 32767},
      {6, 16447, 5, 32767}, {6, 16446, 5, 0},          // overlay switches at 16447
      {7, 9000, 16447, 32767}, {7, 9000, 16446, 0},    // hard light too
      {8, 100, 16448, 16448}, {8, 100, 16447, 100},    // pin light lightens above 16447
      {8, 20000, 16447, 16447},
      {15, 30000, 5000, 32767}, {16, 3000, 5000, 0}, {16, 9000, 5000, 4000},
  };
  for (const auto& c : cases)
    EXPECT_EQ(blend16(c.mode, c.d, c.s), c.expected) << "mode " << c.mode << " d " << c.d << " s " << c.s;
  // opacity 50 with a full mask weighs just under 0.5 (1 / 32767 scale)
  EXPECT_EQ(blend16(0, 0, 3, 50), 1);  // 1.49999... -> 1, not a tie
  Pixel64 canvas{1, 2, 3, 4};
  const Pixel64 src{100, 200, 300, 32767};
  Vexo64DirectDIB(0, 0, 1, 1, &src, &canvas, 1, 1, 100, 13);  // green from inverted source
  EXPECT_EQ(canvas.green, 32767 - 200);
  EXPECT_EQ(canvas.blue, 1);
  EXPECT_EQ(canvas.red, 3);
}

TEST(BlendFloat, ExactTargetsWithoutFactorTwoAndNoClamp) {
  EXPECT_EQ(blendF(1, 0.75f, 0.5f), 0.5f);
  EXPECT_EQ(blendF(2, 0.75f, 0.5f), 0.75f);
  EXPECT_EQ(blendF(3, 0.25f, 1.0f), 0.75f);
  EXPECT_EQ(blendF(4, 0.5f, 0.5f), 0.25f);
  EXPECT_EQ(blendF(5, 0.5f, 0.5f), 0.75f);
  EXPECT_EQ(blendF(6, 0.25f, 0.5f), 0.125f);   // d < 0.5: d x s, not 2 d s
  EXPECT_EQ(blendF(6, 0.5f, 0.5f), 0.75f);     // otherwise the plain screen
  EXPECT_EQ(blendF(7, 0.5f, 0.25f), 0.125f);   // keyed on s
  EXPECT_EQ(blendF(7, 0.25f, 0.5f), 0.625f);
  EXPECT_EQ(blendF(8, 0.5f, 0.75f), 0.75f);    // s > 0.5 lightens
  EXPECT_EQ(blendF(8, 0.875f, 0.75f), 0.875f);
  EXPECT_EQ(blendF(8, 0.75f, 0.5f), 0.5f);     // s = 0.5 darkens
  EXPECT_EQ(blendF(15, 0.75f, 0.5f), 1.25f);   // HDR values stay
  EXPECT_EQ(blendF(16, 0.25f, 0.5f), -0.25f);
  // half weight (opacity 50), and an opacity above 100 extrapolates
  EXPECT_EQ(blendF(0, 0.0f, 0.5f, 50), 0.25f);
  EXPECT_EQ(blendF(0, 0.0f, 0.5f, 100, 0.5f), 0.25f);
  EXPECT_EQ(blendF(15, 0.5f, 0.5f, 200), 1.5f);
}

TEST(BlendFloat, ModeZeroCopiesExactlyWhenOpacityAndMaskSumToTwo) {
  const float third = 1.0f / 3.0f;
  // opacity 50 and mask 1.5: 0.5 + 1.5 = 2.0, the source is copied bit for bit
  EXPECT_EQ(bitsOf(blendF(0, 0.0f, third, 50, 1.5f)), bitsOf(third));
  // the same weight through the arithmetic would give 0.75 x s
  EXPECT_EQ(blendF(0, 0.0f, third, 75, 1.0f), static_cast<float>(third * 0.75));
  // a mask not above 0 is skipped in mode 0 only
  EXPECT_EQ(blendF(0, 0.5f, 1.0f, 100, -0.5f), 0.5f);
  EXPECT_EQ(blendF(1, 0.5f, 0.0f, 100, -0.5f), 0.75f);  // darken with a = -0.5
  EXPECT_EQ(blendF(1, 0.5f, 0.0f, 100, 0.0f), 0.5f);
}

TEST(Blending, AveragesPerByteAndClearsTheFourth) {
  EXPECT_EQ(static_cast<uint32_t>(Blending(0xFF00FF00u, 0x00FF00FFu)), 0x007F7F7Fu);
  EXPECT_EQ(static_cast<uint32_t>(Blending(0x01030507u, 0x01010101u)), 0x00010203u);  // each rounded down
  EXPECT_EQ(static_cast<uint32_t>(Blending(0xFFFFFFFFu, 0xFFFFFFFFu)), 0x00FEFEFEu);
  EXPECT_EQ(Blending128(0.1f, 0.2f), (static_cast<double>(0.1f) + static_cast<double>(0.2f)) * 0.5);
  EXPECT_EQ(Blending128(3.0e38f, 3.0e38f), static_cast<double>(3.0e38f));  // no float overflow on the way
}
