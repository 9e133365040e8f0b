#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <limits>
#include <utility>
#include <vector>

#include "core/layout.h"
#include "core/numeric.h"
#include "effects/effects.h"
#include "support/pictures.h"

using namespace effects;
using namespace effects::test;

namespace {
const float kNaN = std::numeric_limits<float>::quiet_NaN();
}

TEST(ConvertWhole, EightToSixteenBitNeverReachesFull) {
  std::vector<Pixel32> a{{255, 1, 0, 128}};
  std::vector<Pixel64> b(1);
  EXPECT_EQ(Convert32to64Fast(4, a.data(), b.data()), 4);
  EXPECT_EQ(b[0].blue, 32640); EXPECT_EQ(b[0].green, 128); EXPECT_EQ(b[0].red, 0); EXPECT_EQ(b[0].mask, 16384);
  std::vector<Pixel64> c{{32767, 32640, 127, 128}};
  EXPECT_EQ(Convert64to32Fast(4, a.data(), c.data()), 4);
  EXPECT_EQ(a[0].blue, 255); EXPECT_EQ(a[0].green, 255); EXPECT_EQ(a[0].red, 0); EXPECT_EQ(a[0].mask, 1);
  // The screen form writes an opaque mask and answers 0.
  EXPECT_EQ(Convert64to32Screen(4, a.data(), c.data()), 0);
  EXPECT_EQ(a[0].blue, 255); EXPECT_EQ(a[0].red, 0); EXPECT_EQ(a[0].mask, 255);
}

TEST(ConvertWhole, RoundTripsThroughWiderLayouts) {
  std::vector<Pixel32> bytes(64), back(64);
  for (int i = 0; i < 256; ++i) element(bytes[i / 4], i % 4) = static_cast<uint8_t>(i);
  std::vector<Pixel64> words(64);
  Convert32to64Fast(256, bytes.data(), words.data());
  Convert64to32Fast(256, back.data(), words.data());
  EXPECT_TRUE(sameBytes(bytes, back));
  // Through float every byte returns except 254: 254/255 stored as float is
  // a hair above 254/255 and saturates.
  std::vector<Pixel128> floats(64);
  Convert32to128Fast(256, bytes.data(), floats.data());
  EXPECT_EQ(floats[0].green, static_cast<float>(1 * 0.00392156862745098));
  EXPECT_EQ(floats[63].mask, 1.0f);
  Convert128to32Fast(256, back.data(), floats.data());
  for (int i = 0; i < 256; ++i) EXPECT_EQ(element(back[i / 4], i % 4), i == 254 ? 255 : i) << i;
  // 16 -> float -> 16 truncates, so values lose one on the way back.
  std::vector<Pixel64> w{{1, 32767, 16384, 0}}, w2(1);
  std::vector<Pixel128> f(1);
  Convert64to128Fast(4, w.data(), f.data());
  Convert128to64Fast(4, w2.data(), f.data());
  EXPECT_EQ(w2[0].blue, 0); EXPECT_EQ(w2[0].green, 32767); EXPECT_EQ(w2[0].mask, 0);
}

TEST(ConvertWhole, SixteenBitReadsAsSigned) {
  std::vector<Pixel64> w{{40000, 32767, 0, 65535}};
  std::vector<Pixel128> f(1);
  EXPECT_EQ(Convert64to128Fast(4, w.data(), f.data()), 4);
  EXPECT_EQ(f[0].blue, static_cast<float>(-25536 * 3.051850947599719e-5));
  EXPECT_LT(f[0].blue, 0.0f);
  EXPECT_EQ(f[0].green, 1.0f); EXPECT_EQ(f[0].red, 0.0f);
  EXPECT_EQ(f[0].mask, static_cast<float>(-1 * 3.051850947599719e-5));
}

TEST(ConvertWhole, FloatToSixteenBitTruncatesAndClamps) {
  std::vector<Pixel128> f{{0.99999f, 1.5f, -0.1f, kNaN}, {1.0f, 60000.0f, 70000.0f, 0.5f}};
  std::vector<Pixel64> w(2);
  EXPECT_EQ(Convert128to64Fast(8, w.data(), f.data()), 8);
  EXPECT_EQ(w[0].blue, 32766); EXPECT_EQ(w[0].green, 32767); EXPECT_EQ(w[0].red, 0); EXPECT_EQ(w[0].mask, 0);
  EXPECT_EQ(w[1].blue, 32767); EXPECT_EQ(w[1].green, 32767); EXPECT_EQ(w[1].mask, 16383);
  // Products beyond the 32-bit range still clamp to full white.
  EXPECT_EQ(w[1].red, 32767);
  std::vector<Pixel128> huge{{1e30f, std::numeric_limits<float>::infinity(), 65538.0f, -1e30f}};
  Convert128to64Fast(4, w.data(), huge.data());
  EXPECT_EQ(w[0].blue, 32767); EXPECT_EQ(w[0].green, 32767); EXPECT_EQ(w[0].red, 32767); EXPECT_EQ(w[0].mask, 0);
}

TEST(ConvertWhole, Q8SaturatesAndRoundsToEven) {
  std::vector<Pixel128> f{{0.9970f, 0.003f, 0.5f, 2.0f}, {-1.0f, kNaN, 1.0f / 255.0f, 254.0f / 255.0f}};
  std::vector<Pixel32> b(2);
  EXPECT_EQ(Convert128to32Fast(8, b.data(), f.data()), 8);
  EXPECT_EQ(b[0].blue, 255); EXPECT_EQ(b[0].green, 0); EXPECT_EQ(b[0].red, 128); EXPECT_EQ(b[0].mask, 255);
  EXPECT_EQ(b[1].blue, 0); EXPECT_EQ(b[1].green, 0); EXPECT_EQ(b[1].red, 1);
  EXPECT_EQ(b[1].mask, 255);  // 254/255 as a float times 255 lands just above 254
}

TEST(ConvertWhole, BlackPointLockLiftsOnlyNegativeBuffers) {
  std::vector<Pixel128> f{{0.5f, -0.5f, 0.0f, 0.5f}, {0.25f, 0.1f, 0.2f, -3.0f}};
  std::vector<Pixel32> b(2);
  EXPECT_EQ(Convert128to32Lock(8, b.data(), f.data()), 8);
  EXPECT_EQ(b[0].blue, 255); EXPECT_EQ(b[0].green, 0); EXPECT_EQ(b[0].red, 128);
  EXPECT_EQ(b[0].mask, 128);  // the mask is neither scanned nor shifted
  EXPECT_EQ(b[1].blue, 191); EXPECT_EQ(b[1].mask, 0);
  // Without negative colour values the lock is the plain conversion.
  auto g = pattern128(9);
  for (auto& p : g) { p.blue = std::fabs(p.blue); p.green = std::fabs(p.green); p.red = std::fabs(p.red); }
  std::vector<Pixel32> locked(9), plain(9);
  Convert128to32Lock(36, locked.data(), g.data());
  Convert128to32Fast(36, plain.data(), g.data());
  EXPECT_TRUE(sameBytes(locked, plain));
  std::vector<Pixel128> neg{{-0.5f, 0, 0, 1}};
  Convert128to32Fast(4, plain.data(), neg.data());
  EXPECT_EQ(plain[0].blue, 0);
}

TEST(ConvertWhole, CountsBelowOneTouchNothingAndPartialPixelsConvertWhole) {
  auto src = pattern128(3);
  std::vector<Pixel32> dst(3, Pixel32{7, 7, 7, 7});
  const auto before = dst;
  EXPECT_EQ(Convert128to32Lock(0, dst.data(), src.data()), 0);
  EXPECT_EQ(Convert128to32Fast(-8, dst.data(), src.data()), -8);
  EXPECT_EQ(Convert64to32Screen(0, dst.data(), nullptr), 0);
  EXPECT_TRUE(sameBytes(dst, before));
  EXPECT_EQ(Convert128to32Fast(5, dst.data(), src.data()), 5);
  EXPECT_EQ(dst[1].mask, Q8(src[1].mask));
  EXPECT_EQ(dst[2].blue, 7);
}

// Row conversions: the 3-channel buffers are red, green, blue.
TEST(ConvertRows, ThreeChannelBuffersSwapRedAndBlue) {
  std::vector<Pixel32> a{{1, 2, 3, 4}, {5, 6, 7, 8}};
  std::vector<uint8_t> rgb(6);
  EXPECT_EQ(Convert32BIT_4to3ChannelsFast(2, 1, a.data(), rgb.data()), 0);
  EXPECT_EQ(rgb, (std::vector<uint8_t>{3, 2, 1, 7, 6, 5}));
  std::vector<Pixel128> f{{0.25f, -0.0f, 2.5f, 0.5f}};
  std::vector<float> frgb(3);
  Convert32BITto24BITFast(1, 1, f.data(), frgb.data());
  EXPECT_EQ(frgb[0], 2.5f); EXPECT_EQ(bitsOf(frgb[1]), 0x80000000u); EXPECT_EQ(frgb[2], 0.25f);
  std::vector<Pixel128> back{{9, 9, 9, 0.75f}};
  Convert128BIT_3to4ChannelsFast(1, 1, back.data(), frgb.data());
  EXPECT_EQ(back[0].blue, 0.25f); EXPECT_EQ(back[0].red, 2.5f); EXPECT_EQ(back[0].mask, 0.75f);
}

TEST(ConvertRows, FifteenToSixteenBitDoublesAndWraps) {
  std::vector<Pixel64> w{{1, 40000, 32767, 5}};
  std::vector<uint16_t> rgb(3);
  Convert15BITto16BITFast(1, 1, w.data(), rgb.data());
  EXPECT_EQ(rgb, (std::vector<uint16_t>{65534, 14464, 2}));
}

TEST(ConvertRows, FortyEightBitImportRescalesBlueOnly) {
  // red and green go across bit for bit; blue is scaled and keeps only the
  // low eight bits of its rounding (512 rounds to 256, so 0).
  std::vector<uint16_t> rgb{65535, 40000, 32767,  7, 8, 512,  0, 0, 514,  0, 0, 2,  0, 0, 3,  0, 0, 40000};
  std::vector<Pixel64> w(6, Pixel64{9, 9, 9, 1234});
  EXPECT_EQ(Convert16BITto15BITFast(3, 2, rgb.data(), w.data()), 0);
  EXPECT_EQ(w[0].red, 65535); EXPECT_EQ(w[0].green, 40000); EXPECT_EQ(w[0].blue, 255);
  EXPECT_EQ(w[1].red, 7); EXPECT_EQ(w[1].green, 8); EXPECT_EQ(w[1].blue, 0);
  EXPECT_EQ(w[2].blue, 1); EXPECT_EQ(w[3].blue, 0); EXPECT_EQ(w[4].blue, 1);
  EXPECT_EQ(w[5].blue, 0);  // a word above 32767 reads negative
  for (auto& p : w) EXPECT_EQ(p.mask, 1234);
}

TEST(ConvertRows, FloatTripleKeepsPixelOrderAndRounds) {
  std::vector<float> bgr{1.0f, 0.5f, 0.25f,  2.0f, -0.5f, kNaN};
  std::vector<Pixel64> w(2, Pixel64{1, 1, 1, 1});
  EXPECT_EQ(Convertfloat3xto64(2, 1, w.data(), bgr.data()), 0);
  EXPECT_EQ(w[0].blue, 32767); EXPECT_EQ(w[0].green, 16384); EXPECT_EQ(w[0].red, 8192); EXPECT_EQ(w[0].mask, 32767);
  EXPECT_EQ(w[1].blue, 32767); EXPECT_EQ(w[1].green, 0); EXPECT_EQ(w[1].red, 0); EXPECT_EQ(w[1].mask, 32767);
}

TEST(ConvertRows, HdrImportAppliesDisplayGamma) {
  std::vector<float> rgb{4.0f, 0.25f, 1.0f,  0.0f, 0.5f, 0.0f};
  std::vector<Pixel128> f(2, Pixel128{9, 9, 9, 0.5f});
  EXPECT_EQ(Convert128HDRFast(1, 2, f.data(), rgb.data(), 77), 0);
  EXPECT_EQ(f[0].red, 1.8778618574142456f); EXPECT_EQ(f[0].green, 0.5325205326080322f); EXPECT_EQ(f[0].blue, 1.0f);
  EXPECT_EQ(f[1].red, 0.0f); EXPECT_EQ(f[1].green, 0.7297400236129761f);
  EXPECT_EQ(f[1].mask, 0.5f);
}

TEST(ConvertRows, RgbeImportScalesByTheSharedExponent) {
  // (r, g, b, e): e = 136 is a scale of 1, 128 of 1/256; e = 0 is not zero.
  std::vector<uint8_t> rgbe{1, 4, 0, 136,  0, 0, 128, 128,  255, 0, 0, 0};
  std::vector<Pixel128> f(3, Pixel128{9, 9, 9, 0.25f});
  EXPECT_EQ(Convert128HDRRAWFast(3, 1, f.data(), rgbe.data(), 0), 0);
  EXPECT_EQ(f[0].red, 1.0f); EXPECT_EQ(f[0].green, 1.8778618574142456f); EXPECT_EQ(f[0].blue, 0.0f);
  EXPECT_EQ(f[1].blue, 0.7297400236129761f); EXPECT_EQ(f[1].red, 0.0f);
  EXPECT_EQ(f[2].red, 3.0531974668028955e-18f);
  for (auto& p : f) EXPECT_EQ(p.mask, 0.25f);
}

TEST(ConvertRows, EmptyShapesTouchNothing) {
  std::vector<Pixel64> w(2, Pixel64{5, 5, 5, 5});
  std::vector<uint16_t> rgb(6, 3);
  std::vector<uint8_t> rgbe(8, 200);
  std::vector<Pixel128> f(2, Pixel128{5, 5, 5, 5});
  for (auto [width, height] : std::initializer_list<std::pair<int32_t, int32_t>>{{2, 0}, {0, 2}, {-1, 2}, {2, -1}, {-2, -1}}) {
    EXPECT_EQ(Convert16BITto15BITFast(width, height, rgb.data(), w.data()), 0);
    EXPECT_EQ(Convert15BITto16BITFast(width, height, w.data(), rgb.data()), 0);
    EXPECT_EQ(Convert128HDRRAWFast(width, height, f.data(), rgbe.data(), 0), 0);
  }
  EXPECT_EQ(w[0].blue, 5); EXPECT_EQ(w[1].red, 5); EXPECT_EQ(rgb[5], 3); EXPECT_EQ(f[1].red, 5.0f);
}
