#include <gtest/gtest.h>

#include <vector>

#include "effects/effects.h"
#include "support/pictures.h"

using namespace effects::test;

namespace {
template <class P>
void expectBgr(const P& p, decltype(p.blue) b, decltype(p.blue) g, decltype(p.blue) r) {
  EXPECT_EQ(p.blue, b);
  EXPECT_EQ(p.green, g);
  EXPECT_EQ(p.red, r);
}
}  // namespace

TEST(AdditiveOffsets, ClampedExceptInFloat) {
  std::vector<Pixel32> px{{250, 5, 100, 1}};
  VexoAdjust1Colors32(1, 1, px.data(), 10, -10, 10);
  expectBgr(px[0], 255, 0, 110);
  VexoAdjust1Colors32(1, -1, px.data(), 10, 10, 10);
  expectBgr(px[0], 255, 0, 110);
  std::vector<Pixel64> w{{32760, 100, 0, 1}};
  VexoAdjust1Colors64(1, 1, w.data(), 10, -200, 10);  // deltas are not scaled
  expectBgr(w[0], 32767, 0, 10);
  std::vector<Pixel128> f{{0.5f, 1.0f, 1.0f, 1}};
  VexoAdjust1Colors128(1, 1, f.data(), 255, -510, 51);
  expectBgr(f[0], 0.7f, -1.0f, 2.0f);
}

TEST(SineOffsets, SineOfTheScaledValue) {
  // 8 bits: c + sin(c / 255) x amount, truncated, then clamped.
  std::vector<Pixel32> px{{10, 128, 255, 1}, {5, 0, 0, 1}};
  VexoAdjust0Colors32(1, 2, px.data(), 100, 100, -200);
  expectBgr(px[0], 2, 176, 255);  // 2.16, 176.11, 339.1
  px[1].blue = 5;
  VexoAdjust0Colors32(1, 2, px.data(), 0, 0, -1000);
  EXPECT_EQ(px[1].blue, 0);  // -14.6
  std::vector<Pixel64> w{{0, 0, 16384, 1}};
  VexoAdjust0Colors64(1, 1, w.data(), 1000, 0, 0);
  EXPECT_EQ(w[0].red, 16863);
  // Float: sine of the value itself, amount over 255.
  std::vector<Pixel128> f{{0, 0.5f, 1.0f, 1}};
  VexoAdjust0Colors128(1, 1, f.data(), 255, -51, 7);
  expectBgr(f[0], 0.0f, 0.40411490201950073f, 1.8414709568023682f);
}

TEST(ConstantTint, WrapsAround) {
  std::vector<Pixel32> px{{0, 255, 250, 9}};
  VexoCustomBacterial32(4, px.data(), 10, 1, 5, 1);
  expectBgr(px[0], 5, 0, 4);
  VexoCustomBacterial32(4, px.data(), 10, 1, 5, 3);
  expectBgr(px[0], 5, 1, 4);
  VexoCustomBacterial32(4, px.data(), 10, 1, 5, 0);
  expectBgr(px[0], 5, 1, 4);
  // 16 bits wrap at 65536, not at 32767.
  std::vector<Pixel64> w{{65530, 32767, 0, 9}};
  VexoCustomBacterial64(4, w.data(), 7, 1, 10, 1);
  expectBgr(w[0], 4, 32768, 7);
  std::vector<Pixel128> f{{0.5f, 0.5f, 0.5f, 9}};
  VexoCustomBacterial128(4, f.data(), 255, -255, 0, 1);
  expectBgr(f[0], 0.5f, -0.5f, 1.5f);
  VexoCustomBacterial128(4, f.data(), 255, 255, 255, 4);
  expectBgr(f[0], 1.5f, -0.5f, 1.5f);
}

TEST(WebColour, OnlyZeroOrFiftyOne) {
  std::vector<Pixel32> px{{25, 26, 128, 3}, {255, 200, 77, 4}};
  VexoWebColour32(8, px.data());
  expectBgr(px[0], 0, 51, 51);
  expectBgr(px[1], 51, 51, 51);
  EXPECT_EQ(px[1].mask, 4);
  auto many = pattern32(64);
  VexoWebColour32(256, many.data());
  for (const auto& p : many)
    for (int v : {p.blue, p.green, p.red}) EXPECT_TRUE(v == 0 || v == 51) << v;
  // The same numbers on the 16-bit scale; elements are read as signed.
  std::vector<Pixel64> w{{25, 26, 32767, 3}, {40000, 51, 100, 4}};
  VexoWebColour64(8, w.data());
  expectBgr(w[0], 0, 51, 51);
  expectBgr(w[1], 0, 51, 51);
}

TEST(GreyAndAgedPhoto, ChannelsAndLimits) {
  std::vector<Pixel32> px{{10, 20, 32, 1}};
  VexoGrayScale32(4, px.data(), 2);
  expectBgr(px[0], 10, 20, 20);  // 62 / 3, red only
  px[0].red = 32;
  VexoGrayScale32(4, px.data(), 1);
  expectBgr(px[0], 20, 20, 20);
  std::vector<Pixel64> w{{30000, 30000, 30002, 1}};
  VexoGrayScale64(4, w.data(), 1);
  expectBgr(w[0], 30000, 30000, 30000);
  std::vector<Pixel128> f{{0.25f, 0.0f, 0.75f, 1}};
  VexoGrayScale128(4, f.data(), 3);
  expectBgr(f[0], 0.25f, 0.33333334f, 0.75f);

  px = {{10, 20, 200, 1}};
  VexoAgedPhoto32(4, px.data(), 4);
  expectBgr(px[0], 10, 20, 200);
  VexoAgedPhoto32(4, px.data(), 3);
  expectBgr(px[0], 10, 61, 200);
  VexoAgedPhoto32(4, px.data(), 1);
  expectBgr(px[0], 10, 102, 255);
  w = {{0, 100, 30000, 1}};
  VexoAgedPhoto64(4, w.data(), 1);
  expectBgr(w[0], 0, 5368, 32767);
  f = {{0.5f, 0.0f, 1.0f, 1}};
  VexoAgedPhoto128(4, f.data(), 1);
  expectBgr(f[0], 0.5f, 0.1607715f, 1.3097933530807495f);
}
