#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "effects/effects.h"
#include "support/pictures.h"

using namespace effects::test;

namespace {

const float kNaN = std::numeric_limits<float>::quiet_NaN();
const float kInf = std::numeric_limits<float>::infinity();

// One pixel through a whole-buffer conversion; the narrow layout is always
// the second argument, whichever way the data flows.
template <class N, class W>
W widened(int32_t(EFFECTS_CALL* convert)(int32_t, const N*, W*), N from) {
  W to{};
  EXPECT_EQ(convert(4, &from, &to), 4);
  return to;
}

template <class N, class W>
N narrowed(int32_t(EFFECTS_CALL* convert)(int32_t, N*, const W*), W from, int32_t result = 4) {
  N to{};
  EXPECT_EQ(convert(4, &to, &from), result);
  return to;
}

}  // namespace

// 8 -> 16 bit is x * 128, so 255 never reaches 32767; 16 -> 8 keeps the top
// eight of the fifteen bits. The screen form writes an opaque mask and
// answers 0; the others answer the count, also one below 1.
TEST(ConvertWhole, IntegerLayoutsShiftBySeven) {
  EXPECT_EQ(widened(Convert32to64Fast, Pixel32{255, 1, 0, 128}), (Pixel64{32640, 128, 0, 16384}));
  const Pixel64 words{32767, 32640, 127, 128};
  EXPECT_EQ(narrowed(Convert64to32Fast, words), (Pixel32{255, 255, 0, 1}));
  EXPECT_EQ(narrowed(Convert64to32Screen, words, 0), (Pixel32{255, 255, 0, 255}));
  EXPECT_EQ(Convert128to32Fast(-8, nullptr, nullptr), -8);
}

// The double reciprocals, not single-precision ones (3/255 and 128/255
// differ in the last bit); the 16-bit element is read signed.
TEST(ConvertWhole, ToFloatScalesInDouble) {
  EXPECT_EQ(widened(Convert32to128Fast, Pixel32{1, 3, 255, 128}),
            (Pixel128{0.003921568859368563f, 0.0117647061124444f, 1.0f, 0.501960813999176f}));
  EXPECT_EQ(widened(Convert64to128Fast, Pixel64{40000, 32767, 0, 65535}),
            (Pixel128{-0.7793206572532654f, 1.0f, 0.0f, -3.0518509447574615e-05f}));
}

// To 16 bits: truncation into a 32-bit integer, not rounding, then the clamp;
// a product beyond the 32-bit range truncates to the most negative integer
// and so clamps to 0.
TEST(ConvertWhole, FromFloatTruncatesOrQuantises) {
  EXPECT_EQ(narrowed(Convert128to64Fast, Pixel128{0.99999f, 1.5f, -0.1f, kNaN}), (Pixel64{32766, 32767, 0, 0}));
  EXPECT_EQ(narrowed(Convert128to64Fast, Pixel128{0.5f, 65538.0f, 65539.0f, 1e30f}), (Pixel64{16383, 32767, 0, 0}));
  EXPECT_EQ(narrowed(Convert128to64Fast, Pixel128{-1e30f, -kInf, kInf, 0.0f}), (Pixel64{0, 0, 0, 0}));
  // To 8 bits through Q8: above 254 is 255, below 1 is 0, ties to even in
  // between. 254/255 as a float is a hair above 254/255, so it saturates.
  EXPECT_EQ(narrowed(Convert128to32Fast, Pixel128{0.9970f, 0.003f, 0.5f, 2.0f}), (Pixel32{255, 0, 128, 255}));
  EXPECT_EQ(narrowed(Convert128to32Fast, Pixel128{-1.0f, kNaN, 1.0f / 255.0f, 254.0f / 255.0f}),
            (Pixel32{0, 0, 1, 255}));
}

TEST(ConvertWhole, BlackPointLockLiftsOnlyNegativeBuffers) {
  std::vector<Pixel128> f{{0.5f, -0.5f, 0.0f, 0.5f}, {0.25f, 0.1f, 0.25f, -3.0f}};
  std::vector<Pixel32> b(2);
  EXPECT_EQ(Convert128to32Lock(8, b.data(), f.data()), 8);
  // The mask is neither scanned nor shifted.
  EXPECT_EQ(b, (std::vector<Pixel32>{{255, 0, 128, 128}, {191, 153, 191, 0}}));
  // Without negative colour values the black point stays 0: no shift down.
  const Pixel128 positive{0.5f, 0.25f, 1.0f, 1.0f};
  Convert128to32Lock(4, b.data(), &positive);
  EXPECT_EQ(b[0], (Pixel32{128, 64, 255, 255}));
}

// The 3-channel buffers hold red, green, blue; the mask is dropped on the way
// out and left alone on the way in. 15 -> 16 bit doubles in 16-bit arithmetic.
TEST(ConvertRows, ThreeChannelBuffersSwapRedAndBlue) {
  std::vector<Pixel32> a{{1, 2, 3, 4}, {5, 6, 7, 8}};
  std::vector<uint8_t> rgb(6);
  EXPECT_EQ(Convert32BIT_4to3ChannelsFast(2, 1, a.data(), rgb.data()), 0);
  EXPECT_EQ(rgb, (std::vector<uint8_t>{3, 2, 1, 7, 6, 5}));
  Pixel64 w{1, 40000, 32767, 5};
  std::vector<uint16_t> rgb48(3);
  EXPECT_EQ(Convert15BITto16BITFast(1, 1, &w, rgb48.data()), 0);
  EXPECT_EQ(rgb48, (std::vector<uint16_t>{65534, 14464, 2}));
  Pixel128 f{0.25f, -0.0f, 2.5f, 0.5f};
  std::vector<float> frgb(3);
  EXPECT_EQ(Convert32BITto24BITFast(1, 1, &f, frgb.data()), 0);
  EXPECT_EQ(frgb, (std::vector<float>{2.5f, -0.0f, 0.25f}));
  Pixel128 back{9, 9, 9, 0.75f};
  EXPECT_EQ(Convert128BIT_3to4ChannelsFast(1, 1, &back, frgb.data()), 0);
  EXPECT_EQ(back, (Pixel128{0.25f, -0.0f, 2.5f, 0.75f}));
}

// Red and green go across bit for bit; blue is read signed, scaled from
// 0..65535 onto 0..32767, and keeps only the low eight bits of its rounding
// (32767 gives 16383, so 255; 512 rounds to 256, so 0; 2 gives 0.99998).
TEST(ConvertRows, FortyEightBitImportRescalesBlueOnly) {
  std::vector<uint16_t> rgb{65535, 40000, 32767,  7, 8, 512,  0, 0, 514,  0, 0, 2,  0, 0, 3,  0, 0, 40000};
  std::vector<Pixel64> w(6, Pixel64{9, 9, 9, 1234});
  EXPECT_EQ(Convert16BITto15BITFast(3, 2, rgb.data(), w.data()), 0);
  EXPECT_EQ(w, (std::vector<Pixel64>{{255, 40000, 65535, 1234}, {0, 8, 7, 1234}, {1, 0, 0, 1234},
                                     {0, 0, 0, 1234}, {1, 0, 0, 1234}, {0, 0, 0, 1234}}));
}

// This triple is already blue, green, red; the mask becomes full.
TEST(ConvertRows, FloatTripleKeepsPixelOrderAndRounds) {
  std::vector<float> bgr{1.0f, 0.5f, 0.25f,  2.0f, -0.5f, kNaN};
  std::vector<Pixel64> w(2, Pixel64{1, 1, 1, 1});
  EXPECT_EQ(Convertfloat3xto64(2, 1, w.data(), bgr.data()), 0);
  EXPECT_EQ(w, (std::vector<Pixel64>{{32767, 16384, 8192, 32767}, {32767, 0, 0, 32767}}));
}

// Both HDR imports raise to 1/2.2 and leave the mask alone. RGBE pixels are
// (r, g, b, e): e = 136 is a scale of 1, 128 of 1/256; e = 0 is not zero.
TEST(ConvertRows, HdrImportsApplyDisplayGamma) {
  std::vector<float> rgb{4.0f, 0.25f, 1.0f,  0.0f, 0.5f, 0.0f};
  std::vector<Pixel128> f(2, Pixel128{9, 9, 9, 0.5f});
  EXPECT_EQ(Convert128HDRFast(1, 2, f.data(), rgb.data(), 77), 0);
  EXPECT_EQ(f, (std::vector<Pixel128>{{1.0f, 0.5325205326080322f, 1.8778618574142456f, 0.5f},
                                      {0.0f, 0.7297400236129761f, 0.0f, 0.5f}}));
  std::vector<uint8_t> rgbe{1, 4, 0, 136,  0, 0, 128, 128,  255, 0, 0, 0};
  f.assign(3, Pixel128{9, 9, 9, 0.25f});
  EXPECT_EQ(Convert128HDRRAWFast(3, 1, f.data(), rgbe.data(), 0), 0);
  // Two negative sizes multiply to a positive count, but a height below 1 returns first.
  EXPECT_EQ(Convert128HDRRAWFast(-1, -2, f.data(), rgbe.data() + 4, 0), 0);
  EXPECT_EQ(f, (std::vector<Pixel128>{{0.0f, 1.8778618574142456f, 1.0f, 0.25f},
                                      {0.7297400236129761f, 0.0f, 0.0f, 0.25f},
                                      {0.0f, 0.0f, 3.0531974668028955e-18f, 0.25f}}));
}
