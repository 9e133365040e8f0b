// The seventeen blend modes in the three layouts, through the canvas
// composite of a 1 x 1 region whose three colour elements are equal.
#include <gtest/gtest.h>

#include <vector>

#include "effects/effects.h"
#include "support/pictures.h"

using namespace effects::test;

namespace {

template <class P, class E, class F>
E blendOne(F fn, int32_t mode, E d, E s, int32_t opacity, E m) {
  P canvas{d, d, d, 0};
  const P src{s, s, s, m};
  EXPECT_EQ(fn(0, 0, 1, 1, &src, &canvas, 1, 1, opacity, mode), 1);
  EXPECT_TRUE(canvas.blue == canvas.red && canvas.green == canvas.red && canvas.mask == 0) << mode;
  return canvas.red;
}

template <class E>
struct Case { int32_t mode; E d, s, want; int32_t opacity; E m; };

}  // namespace

// At opacity 100 and a full mask the 8-bit weight is exactly 1, so a result
// is the mode's target; at opacity 50 it is exactly 0.5.
TEST(Blend8, EveryModeWithItsQuirks) {
  const Case<uint8_t> cases[] = {
      {0, 10, 200, 200, 100, 255}, {0, 0, 1, 0, 50, 255}, {0, 0, 3, 2, 50, 255},  // ties to even
      {0, 10, 200, 58, 50, 128},  // a = 128 x 50 x 3.92156862e-5: 57.686
      {0, 0, 150, 148, 99, 255},  // 148.5 in single precision (148.500001 in double)
      {1, 100, 50, 50, 100, 255}, {1, 50, 100, 50, 100, 255}, {2, 100, 50, 100, 100, 255}, {2, 50, 100, 100, 100, 255},
      // multiply divides s by 255 first: s = 255 keeps d, anything else pulls
      // to 0; so screen pulls to 255 from s = 1 on
      {3, 30, 100, 70, 100, 255}, {4, 200, 255, 200, 100, 255}, {4, 200, 254, 0, 100, 255}, {5, 100, 1, 255, 100, 255},
      // overlay keyed on d at 128, hard light on s, neither with the factor 2
      {6, 128, 10, 255, 100, 255}, {6, 127, 255, 127, 100, 255}, {7, 50, 128, 255, 100, 255}, {7, 50, 127, 0, 100, 255},
      // pin light lightens above 128 and darkens at 128 and below
      {8, 100, 129, 129, 100, 255}, {8, 200, 128, 128, 100, 255},
      // add and subtract round s x a first, then clamp
      {15, 200, 100, 255, 100, 255}, {16, 100, 103, 48, 50, 255},
  };
  for (const auto& c : cases)
    EXPECT_EQ(blendOne<Pixel32>(Vexo32DirectDIB, c.mode, c.d, c.s, c.opacity, c.m), c.want)
        << "mode " << c.mode << " d " << int(c.d) << " s " << int(c.s);
}

TEST(Blend16, EveryThresholdAtThe32767Scale) {
  const Case<uint16_t> cases[] = {
      {0, 0, 3, 1, 50, 32767},  // a is just under 0.5: no tie
      {4, 20000, 32766, 0, 100, 32767}, {5, 20000, 1, 32767, 100, 32767},
      {6, 16447, 5, 32767, 100, 32767}, {6, 16446, 5, 0, 100, 32767},
      {7, 9000, 16447, 32767, 100, 32767}, {7, 9000, 16446, 0, 100, 32767},
      {8, 100, 16448, 16448, 100, 32767}, {8, 20000, 16447, 16447, 100, 32767},
      {15, 30000, 5000, 32767, 100, 32767}, {16, 9000, 5000, 4000, 100, 32767},
  };
  for (const auto& c : cases)
    EXPECT_EQ(blendOne<Pixel64>(Vexo64DirectDIB, c.mode, c.d, c.s, c.opacity, c.m), c.want)
        << "mode " << c.mode << " d " << c.d << " s " << c.s;
}

TEST(BlendFloat, ExactShapesNoClampAndTheModeZeroShortcut) {
  const float third = 1.0f / 3.0f;
  const Case<float> cases[] = {
      {1, 0.75f, 0.5f, 0.5f, 100, 1}, {2, 0.75f, 0.5f, 0.75f, 100, 1}, {3, 0.25f, 1, 0.75f, 100, 1},
      {4, 0.5f, 0.5f, 0.25f, 100, 1}, {5, 0.5f, 0.5f, 0.75f, 100, 1},
      {6, 0.25f, 0.5f, 0.125f, 100, 1}, {6, 0.5f, 0.5f, 0.75f, 100, 1},  // d x s, not 2 d s
      {7, 0.5f, 0.25f, 0.125f, 100, 1}, {7, 0.25f, 0.5f, 0.625f, 100, 1},
      {8, 0.5f, 0.75f, 0.75f, 100, 1}, {8, 0.75f, 0.5f, 0.5f, 100, 1},
      {15, 0.5f, 0.5f, 1.5f, 200, 1}, {16, 0.25f, 0.5f, -0.25f, 100, 1},
      {0, 0, third, static_cast<float>(third * 0.75), 75, 1},
      {0, 0, third, third, 50, 1.5f},  // 0.5 + 1.5 = 2.0: copied bit for bit
      {0, 0.5f, 1, 0.5f, 100, -0.5f}, {1, 0.5f, 0, 0.75f, 100, -0.5f},  // only mode 0 skips m < 0
      {1, 0.5f, 0, 0.5f, 100, 0},
  };
  for (const auto& c : cases)
    EXPECT_EQ(bitsOf(blendOne<Pixel128>(Vexo128DirectDIB, c.mode, c.d, c.s, c.opacity, c.m)), bitsOf(c.want))
        << "mode " << c.mode << " d " << c.d << " s " << c.s;
}

// Modes 9 to 14 move one channel toward s or M - s; opacity 0 and unknown
// modes change nothing.
TEST(Blend, SingleChannelModesOpacityZeroAndUnknownModes) {
  const Pixel32 src{10, 20, 30, 255};
  const Pixel32 want[6] = {{1, 2, 30, 4}, {1, 20, 3, 4}, {10, 2, 3, 4}, {1, 2, 225, 4}, {1, 235, 3, 4}, {245, 2, 3, 4}};
  for (int32_t mode = 9; mode <= 14; ++mode) {
    Pixel32 canvas{1, 2, 3, 4};
    Vexo32DirectDIB(0, 0, 1, 1, &src, &canvas, 1, 1, 100, mode);
    EXPECT_EQ(canvas, want[mode - 9]) << mode;
  }
  Pixel32 canvas{1, 2, 3, 4};
  EXPECT_EQ(Vexo32DirectDIB(0, 0, 1, 1, &src, &canvas, 1, 1, 0, 0), -1);
  EXPECT_EQ(Vexo32DirectDIB(0, 0, 1, 1, &src, &canvas, 1, 1, 100, 17), 1);
  EXPECT_EQ(Vexo32DirectDIB(0, 0, 1, 1, &src, &canvas, 1, 1, 100, -1), 1);
  EXPECT_EQ(canvas, (Pixel32{1, 2, 3, 4}));
}

TEST(Blending, AveragesPerByteAndInDouble) {
  EXPECT_EQ(static_cast<uint32_t>(Blending(0xFF00FF00u, 0x00FF00FFu)), 0x007F7F7Fu);
  EXPECT_EQ(static_cast<uint32_t>(Blending(0x01030507u, 0x01010101u)), 0x00010203u);  // rounded down, no carries
  EXPECT_EQ(Blending128(3.0e38f, 3.0e38f), static_cast<double>(3.0e38f));  // in double: no float overflow
}
