#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "effects/effects.h"
#include "support/pictures.h"

using namespace effects::test;

namespace {

// One pixel per value, the same value in blue, green and red, mask 77.
std::vector<Pixel32> grey32(std::initializer_list<int> v) {
  std::vector<Pixel32> px;
  for (int c : v) px.push_back({static_cast<uint8_t>(c), static_cast<uint8_t>(c), static_cast<uint8_t>(c), 77});
  return px;
}
std::vector<Pixel64> grey64(std::initializer_list<int> v) {
  std::vector<Pixel64> px;
  for (int c : v) px.push_back({static_cast<uint16_t>(c), static_cast<uint16_t>(c), static_cast<uint16_t>(c), 77});
  return px;
}
std::vector<Pixel128> grey128(std::initializer_list<float> v) {
  std::vector<Pixel128> px;
  for (float c : v) px.push_back({c, c, c, 0.25f});
  return px;
}

// The red of each pixel, after checking that blue and green agree with it.
template <class P>
auto reds(const std::vector<P>& px) {
  std::vector<decltype(px[0].red)> out;
  for (const P& p : px) {
    EXPECT_EQ(bitsOf(static_cast<float>(p.blue)), bitsOf(static_cast<float>(p.red)));
    EXPECT_EQ(bitsOf(static_cast<float>(p.green)), bitsOf(static_cast<float>(p.red)));
    out.push_back(p.red);
  }
  return out;
}
using V32 = std::vector<uint8_t>;
using V64 = std::vector<uint16_t>;
using VF = std::vector<float>;

uint32_t n(const auto& px) { return static_cast<uint32_t>(px.size()); }

}  // namespace

TEST(Brightness, IntegerLayoutsTruncateTowardBlackAndWhite) {
  auto a = grey32({100, 0, 255, 37});
  EXPECT_EQ(VexoBrightness32(4, 1, a.data(), -100, 0), 0u);
  EXPECT_EQ(reds(a), (V32{60, 0, 155, 22}));  // (c * 155) / 255
  a = grey32({100, 0, 255, 37});
  VexoBrightness32(2, 2, a.data(), 100, 0);
  EXPECT_EQ(reds(a), (V32{161, 100, 255, 123}));  // 255 - (155 * (255 - c)) / 255
  a = grey32({100, 0, 255});
  VexoBrightness32(3, 1, a.data(), -255, 0);
  EXPECT_EQ(reds(a), (V32{0, 0, 0}));
  VexoBrightness32(3, 1, a.data(), 255, 0);
  EXPECT_EQ(reds(a), (V32{255, 255, 255}));

  auto b = grey64({16384, 100, 32767});
  VexoBrightness64(3, 1, b.data(), -16384, 0);
  EXPECT_EQ(reds(b), (V64{8191, 49, 16383}));
  b = grey64({16384, 0});
  VexoBrightness64(1, 2, b.data(), 16384, 0);
  EXPECT_EQ(reds(b), (V64{24576, 16384}));
}

TEST(Brightness, FloatDoesNotClampAndPullsHdrTowardWhite) {
  auto px = grey128({0.5f, 2.0f, -1.0f});
  VexoBrightness128(3, 1, px.data(), -255, 0);
  EXPECT_EQ(reds(px), (VF{0.0f, 0.0f, -0.0f}));
  px = grey128({0.5f, 2.0f});
  VexoBrightness128(2, 1, px.data(), 51, 0);
  // 1 - (1 - 2) * 0.8: a value above white comes back toward it.
  EXPECT_EQ(reds(px), (VF{0.6f, 1.8f}));
}

TEST(BlackBrightness, MultipliesClampsThenRounds) {
  auto a = grey32({100, 200, 1, 3});
  VexoBlackBrightness32(4, 1, a.data(), 255, 0);
  EXPECT_EQ(reds(a), (V32{200, 255, 2, 6}));
  a = grey32({1, 3, 100});
  VexoBlackBrightness32(3, 1, a.data(), -128, 0);  // factor 0.49803919f
  EXPECT_EQ(reds(a), (V32{0, 1, 50}));
  auto b = grey64({1000, 20000});
  VexoBlackBrightness64(2, 1, b.data(), 32767, 0);
  EXPECT_EQ(reds(b), (V64{2000, 32767}));
  auto c = grey128({0.75f, 3.0f});
  VexoBlackBrightness128(2, 1, c.data(), 255, 0);
  EXPECT_EQ(reds(c), (VF{1.5f, 6.0f}));
}

TEST(Contrast, PivotIs127AndResultsTruncate) {
  auto a = grey32({127, 200, 60, 100});
  VexoContrast32(4, 1, a.data(), 255, 0);
  EXPECT_EQ(reds(a), (V32{127, 255, 0, 73}));
  // k = 0.50196081: 150 -> 161.55 truncates to 161; 129 -> 130.004 (a 127.5
  // or 128 pivot would give 129); 0 -> -63.7 clamps to 0.
  a = grey32({150, 129, 0, 100, 255});
  VexoContrast32(5, 1, a.data(), 128, 0);
  EXPECT_EQ(reds(a), (V32{161, 130, 0, 86, 255}));
  a = grey32({200, 0});
  VexoContrast32(2, 1, a.data(), -255, 0);
  EXPECT_EQ(reds(a), (V32{127, 127}));

  auto b = grey64({16383, 20000, 30000, 10000});
  VexoContrast64(4, 1, b.data(), 32767, 0);
  EXPECT_EQ(reds(b), (V64{16383, 23617, 32767, 3617}));
  auto c = grey128({0.75f, 2.0f, 0.5f, 0.0f});
  VexoContrast128(4, 1, c.data(), 255, 0);
  EXPECT_EQ(reds(c), (VF{1.0f, 3.5f, 0.5f, -0.5f}));
}

TEST(Exposure, SineAndCosineOffsets) {
  auto a = grey32({10, 100, 0});
  VexoXposure32(3, 1, a.data(), 0, 255, 0);  // + 214.575 (255 sin 1)
  EXPECT_EQ(reds(a), (V32{224, 255, 214}));
  a = grey32({10, 100});
  VexoXposure32(2, 1, a.data(), 0, -255, 0);  // amount x sin(amount/255) is even
  EXPECT_EQ(reds(a), (V32{224, 255}));
  a = grey32({10, 200});
  VexoXposure32(2, 1, a.data(), 1, 255, 0);  // + 137.777 (255 cos 1)
  EXPECT_EQ(reds(a), (V32{147, 255}));
  a = grey32({10, 200});
  VexoXposure32(2, 1, a.data(), 1, -255, 0);
  EXPECT_EQ(reds(a), (V32{0, 62}));
  a = grey32({10, 200});
  VexoXposure32(2, 1, a.data(), 2, 255, 0);
  EXPECT_EQ(reds(a), (V32{10, 200}));

  auto b = grey64({100, 6000});
  VexoXposure64(2, 1, b.data(), 0, 32767, 0);  // + 27572.48
  EXPECT_EQ(reds(b), (V64{27672, 32767}));

  auto c = grey128({0.5f, 2.0f});
  VexoXposure128(2, 1, c.data(), 0, 255, 0);  // + sin(1), not 255 sin(1)
  EXPECT_EQ(reds(c), (VF{1.3414709568023682f, 2.841470956802368f}));
  c = grey128({2.0f});
  VexoXposure128(1, 1, c.data(), 1, 255, 0);
  EXPECT_EQ(reds(c), (VF{2.540302276611328f}));
  VexoXposure128(1, 1, c.data(), 7, 255, 0);
  EXPECT_EQ(reds(c), (VF{2.540302276611328f}));
}

TEST(Fstop, TwoUnitsPerDoublingAndTruncation) {
  auto a = grey32({100, 200, 101});
  Vexofstop32(3, 1, a.data(), 2.0);
  EXPECT_EQ(reds(a), (V32{200, 255, 202}));
  a = grey32({101, 100, 1});
  Vexofstop32(3, 1, a.data(), -2.0);
  EXPECT_EQ(reds(a), (V32{50, 50, 0}));
  a = grey32({100});
  Vexofstop32(1, 1, a.data(), 1.0);
  EXPECT_EQ(reds(a), (V32{141}));
  a = grey32({100});
  // A product beyond the integer range converts to the most negative
  // integer, which the clamp turns into 0, not 255.
  Vexofstop32(1, 1, a.data(), 2000.0);
  EXPECT_EQ(reds(a), (V32{0}));
  auto b = grey64({20000, 5});
  Vexofstop64(2, 1, b.data(), 2.0);
  EXPECT_EQ(reds(b), (V64{32767, 10}));
  auto c = grey128({3.0f, 1.0f});
  Vexofstop128(2, 1, c.data(), 2.0);
  EXPECT_EQ(reds(c), (VF{6.0f, 2.0f}));
  Vexofstop128(2, 1, c.data(), 1.0);
  EXPECT_EQ(reds(c), (VF{8.485280990600586f, 2.8284270763397217f}));
}

TEST(Gamma, ReciprocalExponentRoundedAndClampedGamma) {
  auto a = grey32({64, 100, 1, 0, 255});
  VexoGamma32(5, 1, a.data(), 2.0f);
  EXPECT_EQ(reds(a), (V32{128, 160, 16, 0, 255}));
  auto ten = pattern32(6), twenty = ten;
  VexoGamma32(3, 2, ten.data(), 10.0f);
  VexoGamma32(3, 2, twenty.data(), 20.0f);
  EXPECT_TRUE(sameBytes(ten, twenty));
  // Gamma 0 raises to an infinite power: everything below full goes black.
  a = grey32({254, 255, 1});
  VexoGamma32(3, 1, a.data(), -3.0f);
  EXPECT_EQ(reds(a), (V32{0, 255, 0}));
  auto b = grey64({8192, 32767});
  VexoGamma64(2, 1, b.data(), 2.0f);  // 16383.75
  EXPECT_EQ(reds(b), (V64{16384, 32767}));
  auto c = grey128({4.0f, 0.25f});
  VexoGamma128(2, 1, c.data(), 2.0f);
  EXPECT_EQ(reds(c), (VF{2.0f, 0.5f}));
  c = grey128({-1.0f});
  VexoGamma128(1, 1, c.data(), 2.0f);
  EXPECT_TRUE(std::isnan(c[0].red));
}

TEST(Gamma, TowardHdrRaisesToGammaItself) {
  auto a = grey32({128, 200, 17});
  VexoGammatoHDR32(3, 1, a.data(), 2.0f);
  EXPECT_EQ(reds(a), (V32{64, 157, 1}));
  a = grey32({0, 100});
  VexoGammatoHDR32(2, 1, a.data(), -1.0f);  // power 0: every element becomes full
  EXPECT_EQ(reds(a), (V32{255, 255}));
  auto b = grey64({0});
  VexoGammatoHDR64(1, 1, b.data(), 0.0f);
  EXPECT_EQ(reds(b), (V64{32767}));
  auto c = grey128({3.0f});
  VexoGammatoHDR128(1, 1, c.data(), 2.0f);
  EXPECT_EQ(reds(c), (VF{9.0f}));
}

TEST(LevelPercentage, UpperBoundOnlyAndTiesToEven) {
  auto a = grey32({5, 7, 200});
  VexoAdjustLevelPrecentage32(3, 1, a.data(), 1.5f);
  EXPECT_EQ(reds(a), (V32{2, 4, 100}));
  a = grey32({100, 200});
  VexoAdjustLevelPrecentage32(2, 1, a.data(), 0.0f);
  EXPECT_EQ(reds(a), (V32{200, 255}));
  a = grey32({100, 0});
  VexoAdjustLevelPrecentage32(2, 1, a.data(), 3.0f);  // -100 keeps its low byte
  EXPECT_EQ(reds(a), (V32{156, 0}));
  auto b = grey64({100, 20000});
  VexoAdjustLevelPrecentage64(2, 1, b.data(), 3.0f);
  EXPECT_EQ(reds(b), (V64{65436, 45536}));
  VexoAdjustLevelPrecentage64(2, 1, b.data(), 0.0f);
  EXPECT_EQ(reds(b), (V64{32767, 32767}));
  auto c = grey128({3.0f});
  VexoAdjustLevelPrecentage128(1, 1, c.data(), 0.0f);
  EXPECT_EQ(reds(c), (VF{6.0f}));
}

// The size is width * 4 * height in 32-bit arithmetic: a product that wraps
// to a small count visits that many pixels, one below 1 none; the early
// returns leave every byte alone.
TEST(TonalSize, WidthHeightCountAndEarlyReturns) {
  auto a = grey32({100, 100, 100});
  VexoBrightness32(0x40000001u, 1, a.data(), -255, 0);
  EXPECT_EQ(reds(a), (V32{0, 100, 100}));
  VexoBrightness32(0x20000000u, 1, a.data(), -255, 0);  // count INT32_MIN
  VexoBrightness32(0, 5, a.data(), -255, 0);
  VexoBrightness32(5, 0, a.data(), -255, 0);
  EXPECT_EQ(reds(a), (V32{0, 100, 100}));

  const auto p32 = pattern32(6);
  const auto p64 = pattern64(6);
  const auto p128 = pattern128(6);
  auto a32 = p32; auto a64 = p64; auto a128 = p128;
  VexoBrightness32(3, 2, a32.data(), 0, 9); VexoBrightness64(3, 2, a64.data(), 0, 9); VexoBrightness128(3, 2, a128.data(), 0, 9);
  VexoBlackBrightness32(3, 2, a32.data(), 0, 9); VexoBlackBrightness64(3, 2, a64.data(), 0, 9); VexoBlackBrightness128(3, 2, a128.data(), 0, 9);
  VexoXposure32(3, 2, a32.data(), 0, 0, 9); VexoXposure64(3, 2, a64.data(), 0, 0, 9); VexoXposure128(3, 2, a128.data(), 0, 0, 9);
  Vexofstop32(3, 2, a32.data(), 0.0); Vexofstop64(3, 2, a64.data(), 0.0); Vexofstop128(3, 2, a128.data(), 0.0);
  VexoGamma32(3, 2, a32.data(), 1.0f); VexoGamma64(3, 2, a64.data(), 1.0f); VexoGamma128(3, 2, a128.data(), 1.0f);
  VexoGammatoHDR32(3, 2, a32.data(), 1.0f); VexoGammatoHDR64(3, 2, a64.data(), 1.0f); VexoGammatoHDR128(3, 2, a128.data(), 1.0f);
  VexoContrast32(0, 2, a32.data(), 255, 0); VexoContrast64(3, 0, a64.data(), 255, 0); VexoContrast128(0, 0, a128.data(), 255, 0);
  VexoAdjustLevelPrecentage32(0, 2, a32.data(), 0.0f); VexoAdjustLevelPrecentage64(3, 0, a64.data(), 0.0f);
  VexoAdjustLevelPrecentage128(0, 1, a128.data(), 0.0f);
  EXPECT_TRUE(sameBytes(a32, p32));
  EXPECT_TRUE(sameBytes(a64, p64));
  EXPECT_TRUE(sameBytes(a128, p128));
}
