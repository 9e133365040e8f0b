#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "effects/effects.h"
#include "support/pictures.h"

using namespace effects::test;

namespace {

constexpr uint32_t packed(uint32_t r, uint32_t g, uint32_t b) { return r | (g << 8) | (b << 16); }

template <class P>
void expectBgr(const P& p, decltype(p.blue) b, decltype(p.blue) g, decltype(p.blue) r) {
  EXPECT_EQ(p.blue, b);
  EXPECT_EQ(p.green, g);
  EXPECT_EQ(p.red, r);
}

// Every export of the family, called with settings that change pixels, on a
// buffer one pixel longer than the call covers: the extra pixel and every mask
// must stay as they were, and an empty call (count 0, height 0) touches
// nothing at all.
template <class P>
struct Call {
  const char* name;
  std::function<void(P*, bool empty)> run;
};

template <class P>
void sweep(const std::vector<Call<P>>& calls, std::vector<P> (*pattern)(size_t, uint32_t)) {
  for (const auto& c : calls) {
    auto px = pattern(7, 3);
    const auto before = px;
    c.run(px.data(), true);
    EXPECT_TRUE(sameBytes(px, before)) << c.name << " touched an empty picture";
    c.run(px.data(), false);
    for (size_t i = 0; i < 6; ++i) EXPECT_EQ(bitsOf(px[i].mask), bitsOf(before[i].mask)) << c.name << " mask " << i;
    EXPECT_EQ(std::memcmp(&px[6], &before[6], sizeof(P)), 0) << c.name << " went past the picture";
  }
}

// 21 elements cover 6 pixels (the last partly); a 3 x 2 picture is 6 pixels.
#define BY_COUNT(name, ...) {#name, [](auto* p, bool e) { name(e ? 0 : 21, p, __VA_ARGS__); }}
#define BY_COUNT0(name) {#name, [](auto* p, bool e) { name(e ? 0 : 21, p); }}
#define BY_SIZE(name, ...) {#name, [](auto* p, bool e) { name(3, e ? 0 : 2, p __VA_OPT__(,) __VA_ARGS__); }}

}  // namespace

TEST(ColourFrame, MaskAndBoundsKeptByEveryExport) {
  sweep<Pixel32>({BY_COUNT(VexoSaturation32, 100), BY_SIZE(VexoHue32, 120), BY_COUNT(VexoColorFilter32, 5),
                  BY_COUNT(VexoRGBChannelFilter32, 3), BY_COUNT(VexoColorSwitch32, 4),
                  BY_COUNT(VexoReplaceColor32, 0, 0, 300), BY_SIZE(VexoAdjust1Colors32, 9, -9, 9),
                  BY_SIZE(VexoAdjust0Colors32, 50, 60, -70), BY_COUNT(VexoCustomBacterial32, 1, 2, 3, 1),
                  BY_COUNT0(VexoWebColour32), BY_COUNT(VexoGrayScale32, 1), BY_COUNT(VexoAgedPhoto32, 1),
                  BY_SIZE(VexoRedEyeRemover32, 0, 255), BY_SIZE(VexoAutoColorCorrectionLDC32)},
                 pattern32);
  sweep<Pixel64>({BY_COUNT(VexoSaturation64, 100), BY_SIZE(VexoHue64, 120), BY_COUNT(VexoColorFilter64, 5),
                  BY_COUNT(VexoRGBChannelFilter64, 3), BY_COUNT(VexoColorSwitch64, 4),
                  BY_COUNT(VexoReplaceColor64, 0, 0, 40000), BY_SIZE(VexoAdjust1Colors64, 9, -9, 9),
                  BY_SIZE(VexoAdjust0Colors64, 50, 60, -70), BY_COUNT(VexoCustomBacterial64, 1, 2, 3, 1),
                  BY_COUNT0(VexoWebColour64), BY_COUNT(VexoGrayScale64, 1), BY_COUNT(VexoAgedPhoto64, 1),
                  BY_SIZE(VexoRedEyeRemover64, 0, 32767)},
                 pattern64);
  sweep<Pixel128>({BY_COUNT(VexoSaturation128, 100), BY_SIZE(VexoHue128, 120), BY_COUNT(VexoColorFilter128, 5),
                   BY_COUNT(VexoRGBChannelFilter128, 3), BY_COUNT(VexoColorSwitch128, 4),
                   BY_COUNT(VexoReplaceColor128, 0, 0, 300), BY_SIZE(VexoAdjust1Colors128, 9, -9, 9),
                   BY_SIZE(VexoAdjust0Colors128, 50, 60, -70), BY_COUNT(VexoCustomBacterial128, 1, 2, 3, 1),
                   BY_COUNT(VexoGrayScale128, 1), BY_COUNT(VexoAgedPhoto128, 1),
                   BY_SIZE(VexoRedEyeRemover128, 0, 255), BY_COUNT(VexoVariableRangeInvert128, 1)},
                  pattern128);
}

TEST(Saturation, EightBitWeightsOver256) {
  std::vector<Pixel32> px{{10, 20, 36, 77}, {100, 100, 100, 5}, {0, 0, 255, 9}};
  const auto orig = px;
  VexoSaturation32(12, px.data(), -300);  // limited to -255: the integer average
  expectBgr(px[0], 22, 22, 22);
  expectBgr(px[2], 85, 85, 85);
  px = orig;
  VexoSaturation32(12, px.data(), 0);
  EXPECT_TRUE(sameBytes(px, orig));
  // A grey pixel loses one level at +1 and -1: the weights sum to 255, not 256.
  VexoSaturation32(12, px.data(), 1);
  EXPECT_EQ(px[1].red, 99);
  px = orig;
  VexoSaturation32(12, px.data(), -1);
  EXPECT_EQ(px[1].green, 99);
  px = orig;
  VexoSaturation32(12, px.data(), 255);  // blue (-21675) >> 8 = -85 -> 0; red 423 -> 255
  expectBgr(px[0], 0, 17, 49);
  expectBgr(px[2], 0, 0, 255);
  auto a = pattern32(9), b = a;
  VexoSaturation32(36, a.data(), 600);
  VexoSaturation32(36, b.data(), 512);
  EXPECT_TRUE(sameBytes(a, b));
}

TEST(Saturation, SixteenBitAndFloat) {
  std::vector<Pixel64> w{{1000, 2000, 3000, 1}, {0, 0, 32767, 2}};
  VexoSaturation64(8, w.data(), 32767);  // s = 65534
  expectBgr(w[0], 0, 2000, 4000);
  // The strongest setting on a lone full channel overflows the 32-bit product
  // sum and comes out clamped at 0, as the 32-bit arithmetic has it.
  VexoSaturation64(8, w.data(), 70000);
  EXPECT_EQ(w[1].red, 0);
  w = {{1000, 2000, 3001, 1}};
  VexoSaturation64(4, w.data(), -32767);
  expectBgr(w[0], 2000, 2000, 2000);

  std::vector<Pixel128> f{{0.25f, 0.5f, 0.75f, 0.5f}};
  const auto orig = f;
  VexoSaturation128(4, f.data(), -300);  // factor below 0: nothing happens
  EXPECT_TRUE(sameBytes(f, orig));
  VexoSaturation128(4, f.data(), 2550);  // the 16-bit range: factor 11, no clamp
  expectBgr(f[0], -2.25f, 0.5f, 3.25f);
  f = orig;
  VexoSaturation128(4, f.data(), -255);
  expectBgr(f[0], 0.5f, 0.5f, 0.5f);
}

TEST(Hue, EndsOfTheWheelLeaveThePictureAlone) {
  for (int32_t hue : {0, 350, -20, 1000}) {
    auto a = pattern32(6); const auto a0 = a;
    auto b = pattern64(6); const auto b0 = b;
    auto c = pattern128(6); const auto c0 = c;
    VexoHue32(3, 2, a.data(), hue);
    VexoHue64(3, 2, b.data(), hue);
    VexoHue128(3, 2, c.data(), hue);
    EXPECT_TRUE(sameBytes(a, a0)) << hue;
    EXPECT_TRUE(sameBytes(b, b0)) << hue;
    EXPECT_TRUE(sameBytes(c, c0)) << hue;
  }
}

TEST(Hue, SectorsAndWeights) {
  std::vector<Pixel32> px{{10, 0, 255, 1}, {0, 255, 40, 2}};
  auto run = [&](int32_t hue) { px = {{10, 0, 255, 1}, {0, 255, 40, 2}}; VexoHue32(1, 2, px.data(), hue); };
  run(100);  // sector 2 at weight 0: blue stays, green takes red, red takes blue
  expectBgr(px[0], 10, 255, 10);
  run(25);  // weight trunc(25 x 5.12) = 128: (128 x 255) >> 8
  EXPECT_EQ(px[0].green, 127);
  run(325);  // weight trunc(25 x 5.11) = 127 in the last sector
  EXPECT_EQ(px[1].green, 126);
  run(250);  // sector 5 at weight 0: blue takes red, green takes blue
  expectBgr(px[1], 40, 0, 40);
  run(175);  // sector 3, weight 128: blue r, green mix(r, b), red b
  expectBgr(px[0], 255, 131, 10);

  std::vector<Pixel64> w{{0, 1000, 2000, 0}};
  VexoHue64(1, 1, w.data(), 25);  // weight 128 << 7 = 16384, out of 32640
  EXPECT_EQ(w[0].green, 1501);
  std::vector<Pixel128> f{{0.0f, 0.5f, 1.0f, 0.0f}};
  VexoHue128(1, 1, f.data(), 25);  // divided by 255 in single precision
  EXPECT_EQ(f[0].green, 0.7509804368019104f);
}

TEST(ColorFilter, KeepsOrAveragesChannels) {
  const Pixel32 p{9, 100, 51, 7};
  const Pixel32 want[] = {{0, 0, 51, 7}, {0, 100, 0, 7}, {9, 0, 0, 7},
                          {0, 75, 75, 7}, {30, 0, 30, 7}, {54, 54, 0, 7}};
  for (int32_t filter = 1; filter <= 6; ++filter) {
    std::vector<Pixel32> px{p, p, p};
    VexoColorFilter32(5, px.data(), filter);  // two pixels
    EXPECT_TRUE(sameBytes<Pixel32>({px[0], px[1]}, {want[filter - 1], want[filter - 1]})) << filter;
    EXPECT_TRUE(sameBytes<Pixel32>({px[2]}, {p})) << filter;
  }
  std::vector<Pixel32> px{p};
  VexoColorFilter32(4, px.data(), 7);
  VexoColorFilter32(4, px.data(), 0);
  expectBgr(px[0], 9, 100, 51);
  std::vector<Pixel64> w{{1001, 5, 2000, 0}};
  VexoColorFilter64(4, w.data(), 5);
  expectBgr(w[0], 1500, 0, 1500);
  // The float member keeps the plain sums.
  std::vector<Pixel128> f{{0.0f, 0.8f, 0.8f, 0.3f}};
  VexoColorFilter128(4, f.data(), 4);
  expectBgr(f[0], 0.0f, 1.6f, 1.6f);
  f = {{0.25f, 0.5f, 1.0f, 0.3f}};
  VexoColorFilter128(4, f.data(), 6);
  expectBgr(f[0], 0.75f, 0.75f, 0.0f);
}

TEST(ChannelCopyAndSwap, MoveRawValues) {
  const Pixel32 p{1, 2, 3, 4};
  const Pixel32 copies[] = {{3, 3, 3, 4}, {2, 2, 2, 4}, {1, 1, 1, 4}};
  for (int32_t ch = 2; ch <= 4; ++ch) {
    std::vector<Pixel32> px{p};
    VexoRGBChannelFilter32(4, px.data(), ch);
    EXPECT_TRUE(sameBytes<Pixel32>(px, {copies[ch - 2]})) << ch;
  }
  const Pixel32 swaps[] = {{3, 2, 1, 4}, {1, 3, 2, 4}, {2, 1, 3, 4}, {2, 3, 1, 4}, {3, 1, 2, 4}};
  for (int32_t order = 1; order <= 5; ++order) {
    std::vector<Pixel32> px{p};
    VexoColorSwitch32(4, px.data(), order);
    EXPECT_TRUE(sameBytes<Pixel32>(px, {swaps[order - 1]})) << order;
  }
  for (int32_t other : {0, 6, -1}) {
    std::vector<Pixel32> px{p};
    VexoRGBChannelFilter32(4, px.data(), other == 6 ? 1 : other);
    VexoColorSwitch32(4, px.data(), other);
    EXPECT_TRUE(sameBytes<Pixel32>(px, {p})) << other;
  }
  // Float values are copied bit for bit, whatever they hold.
  std::vector<Pixel128> f{{0.0f, -0.0f, 7.5f, 1.0f}};
  VexoRGBChannelFilter128(4, f.data(), 3);
  EXPECT_EQ(bitsOf(f[0].blue), bitsOf(-0.0f));
  EXPECT_EQ(bitsOf(f[0].red), bitsOf(-0.0f));
  auto a = pattern64(5); const auto a0 = a;
  VexoColorSwitch64(20, a.data(), 4);
  VexoColorSwitch64(20, a.data(), 5);
  EXPECT_TRUE(sameBytes(a, a0));
}

TEST(ReplaceColor, ToleranceInEachLayoutsUnits) {
  const uint32_t key = packed(200, 100, 50), to = packed(1, 2, 3);
  std::vector<Pixel32> px{{50, 100, 200, 9}, {53, 100, 200, 9}, {50, 100, 197, 9}};
  VexoReplaceColor32(12, px.data(), key, to, 2);
  expectBgr(px[0], 3, 2, 1);
  expectBgr(px[1], 53, 100, 200);
  expectBgr(px[2], 50, 100, 197);
  VexoReplaceColor32(12, px.data(), key, to, 3);
  expectBgr(px[1], 3, 2, 1);
  expectBgr(px[2], 3, 2, 1);
  EXPECT_EQ(px[2].mask, 9);

  // Bytes times 128, not rescaled to 32767: 200 is 25600, not 25699.
  std::vector<Pixel64> w{{6400, 12800, 25600, 0}, {6400, 12800, 25699, 0}};
  VexoReplaceColor64(8, w.data(), key, to, 0);
  expectBgr(w[0], 384, 256, 128);
  expectBgr(w[1], 6400, 12800, 25699);
  VexoReplaceColor64(8, w.data(), key, to, 99);
  expectBgr(w[1], 384, 256, 128);

  const double k = 1.0 / 255;
  std::vector<Pixel128> f{{static_cast<float>(50 * k), static_cast<float>(100 * k), static_cast<float>(200 * k), 0},
                          {static_cast<float>(52 * k), static_cast<float>(100 * k), static_cast<float>(200 * k), 0}};
  VexoReplaceColor128(8, f.data(), key, to, 1);
  expectBgr(f[0], static_cast<float>(3 * k), static_cast<float>(2 * k), static_cast<float>(k));
  EXPECT_EQ(f[1].blue, static_cast<float>(52 * k));
}
