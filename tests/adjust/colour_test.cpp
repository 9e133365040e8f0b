#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <vector>

#include "adjust/adjust_checks.h"

using namespace effects::test;

namespace {

constexpr uint32_t packed(uint32_t r, uint32_t g, uint32_t b) { return r | (g << 8) | (b << 16); }

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
    EXPECT_TRUE(px == before) << c.name << " touched an empty picture";
    c.run(px.data(), false);
    for (size_t i = 0; i < 6; ++i) EXPECT_EQ(bitsOf(px[i].mask), bitsOf(before[i].mask)) << c.name << " mask " << i;
    EXPECT_EQ(std::memcmp(&px[6], &before[6], sizeof(P)), 0) << c.name << " went past the picture";
  }
}

// 21 elements cover 6 pixels (the last partly); a 3 x 2 picture is 6 pixels.
#define BY_COUNT(name, ...) {#name, [](auto* p, bool e) { name(e ? 0 : 21, p __VA_OPT__(,) __VA_ARGS__); }}
#define BY_SIZE(name, ...) {#name, [](auto* p, bool e) { name(3, e ? 0 : 2, p __VA_OPT__(,) __VA_ARGS__); }}

}  // namespace

TEST(ColourFrame, MaskAndBoundsKeptByEveryExport) {
  sweep<Pixel32>({BY_COUNT(VexoSaturation32, 100), BY_SIZE(VexoHue32, 120), BY_COUNT(VexoColorFilter32, 5),
                  BY_COUNT(VexoRGBChannelFilter32, 3), BY_COUNT(VexoColorSwitch32, 4),
                  BY_COUNT(VexoReplaceColor32, 0, 0, 300), BY_SIZE(VexoAdjust1Colors32, 9, -9, 9),
                  BY_SIZE(VexoAdjust0Colors32, 50, 60, -70), BY_COUNT(VexoCustomBacterial32, 1, 2, 3, 1),
                  BY_COUNT(VexoWebColour32), BY_COUNT(VexoGrayScale32, 1), BY_COUNT(VexoAgedPhoto32, 1),
                  BY_SIZE(VexoRedEyeRemover32, 0, 255), BY_SIZE(VexoAutoColorCorrectionLDC32)},
                 pattern<Pixel32>);
  sweep<Pixel64>({BY_COUNT(VexoSaturation64, 100), BY_SIZE(VexoHue64, 120), BY_COUNT(VexoColorFilter64, 5),
                  BY_COUNT(VexoRGBChannelFilter64, 3), BY_COUNT(VexoColorSwitch64, 4),
                  BY_COUNT(VexoReplaceColor64, 0, 0, 40000), BY_SIZE(VexoAdjust1Colors64, 9, -9, 9),
                  BY_SIZE(VexoAdjust0Colors64, 50, 60, -70), BY_COUNT(VexoCustomBacterial64, 1, 2, 3, 1),
                  BY_COUNT(VexoWebColour64), BY_COUNT(VexoGrayScale64, 1), BY_COUNT(VexoAgedPhoto64, 1),
                  BY_SIZE(VexoRedEyeRemover64, 0, 32767)},
                 pattern<Pixel64>);
  sweep<Pixel128>({BY_COUNT(VexoSaturation128, 100), BY_SIZE(VexoHue128, 120), BY_COUNT(VexoColorFilter128, 5),
                   BY_COUNT(VexoRGBChannelFilter128, 3), BY_COUNT(VexoColorSwitch128, 4),
                   BY_COUNT(VexoReplaceColor128, 0, 0, 300), BY_SIZE(VexoAdjust1Colors128, 9, -9, 9),
                   BY_SIZE(VexoAdjust0Colors128, 50, 60, -70), BY_COUNT(VexoCustomBacterial128, 1, 2, 3, 1),
                   BY_COUNT(VexoGrayScale128, 1), BY_COUNT(VexoAgedPhoto128, 1),
                   BY_SIZE(VexoRedEyeRemover128, 0, 255), BY_COUNT(VexoVariableRangeInvert128, 1)},
                  pattern<Pixel128>);
}

TEST(ColourExamples, EightBit) {
  const uint32_t key = packed(200, 100, 50), to = packed(1, 2, 3);
  expectExamples<Pixel32>({
      {"saturation -300 acts as -255: the integer average", ONE(VexoSaturation32(4, p, -300)), {10, 20, 36, 7}, {22, 22, 22, 7}},
      {"saturation +1 darkens grey: weights 255, divisor 256", ONE(VexoSaturation32(4, p, 1)), {100, 100, 100, 7}, {99, 99, 99, 7}},
      {"saturation 0 changes nothing", ONE(VexoSaturation32(4, p, 0)), {10, 20, 36, 7}, {10, 20, 36, 7}},
      {"saturation 600 acts as 512", ONE(VexoSaturation32(4, p, 600)), {10, 20, 36, 7}, {0, 15, 63, 7}},
      {"saturation 255 clamps both ways", ONE(VexoSaturation32(4, p, 255)), {10, 20, 36, 7}, {0, 17, 49, 7}},
      // Both ends of the wheel (clamped hues too) give the pixel back exactly.
      {"hue 0", ONE(VexoHue32(1, 1, p, 0)), {0, 255, 40, 7}, {0, 255, 40, 7}},
      {"hue -20", ONE(VexoHue32(1, 1, p, -20)), {0, 255, 40, 7}, {0, 255, 40, 7}},
      {"hue 350: weight trunc(50 x 5.11) = 255", ONE(VexoHue32(1, 1, p, 350)), {0, 255, 40, 7}, {0, 255, 40, 7}},
      {"hue 1000", ONE(VexoHue32(1, 1, p, 1000)), {0, 255, 40, 7}, {0, 255, 40, 7}},
      {"hue 100: b, r, b", ONE(VexoHue32(1, 1, p, 100)), {10, 0, 255, 7}, {10, 255, 10, 7}},
      {"hue 25: weight trunc(25 x 5.12) = 128", ONE(VexoHue32(1, 1, p, 25)), {10, 0, 255, 7}, {10, 127, 255, 7}},
      {"hue 175: r, mix(r, b), b", ONE(VexoHue32(1, 1, p, 175)), {10, 0, 255, 7}, {255, 131, 10, 7}},
      {"hue 250: r, b, r", ONE(VexoHue32(1, 1, p, 250)), {0, 255, 40, 7}, {40, 0, 40, 7}},
      {"hue 325: weight trunc(25 x 5.11) = 127", ONE(VexoHue32(1, 1, p, 325)), {0, 255, 40, 7}, {0, 126, 40, 7}},
      {"filter 1 red", ONE(VexoColorFilter32(4, p, 1)), {9, 100, 51, 7}, {0, 0, 51, 7}},
      {"filter 2 green", ONE(VexoColorFilter32(4, p, 2)), {9, 100, 51, 7}, {0, 100, 0, 7}},
      {"filter 3 blue", ONE(VexoColorFilter32(4, p, 3)), {9, 100, 51, 7}, {9, 0, 0, 7}},
      {"filter 4 yellow", ONE(VexoColorFilter32(4, p, 4)), {9, 100, 51, 7}, {0, 75, 75, 7}},
      {"filter 5 magenta", ONE(VexoColorFilter32(4, p, 5)), {9, 100, 51, 7}, {30, 0, 30, 7}},
      {"filter 6 cyan", ONE(VexoColorFilter32(4, p, 6)), {9, 100, 51, 7}, {54, 54, 0, 7}},
      {"copy red", ONE(VexoRGBChannelFilter32(4, p, 2)), {1, 2, 3, 7}, {3, 3, 3, 7}},
      {"copy green", ONE(VexoRGBChannelFilter32(4, p, 3)), {1, 2, 3, 7}, {2, 2, 2, 7}},
      {"copy blue", ONE(VexoRGBChannelFilter32(4, p, 4)), {1, 2, 3, 7}, {1, 1, 1, 7}},
      {"copy with selector 1", ONE(VexoRGBChannelFilter32(4, p, 1)), {1, 2, 3, 7}, {1, 2, 3, 7}},
      {"swap 1", ONE(VexoColorSwitch32(4, p, 1)), {1, 2, 3, 7}, {3, 2, 1, 7}},
      {"swap 2", ONE(VexoColorSwitch32(4, p, 2)), {1, 2, 3, 7}, {1, 3, 2, 7}},
      {"swap 3", ONE(VexoColorSwitch32(4, p, 3)), {1, 2, 3, 7}, {2, 1, 3, 7}},
      {"swap 4", ONE(VexoColorSwitch32(4, p, 4)), {1, 2, 3, 7}, {2, 3, 1, 7}},
      {"swap 5", ONE(VexoColorSwitch32(4, p, 5)), {1, 2, 3, 7}, {3, 1, 2, 7}},
      {"swap 0", ONE(VexoColorSwitch32(4, p, 0)), {1, 2, 3, 7}, {1, 2, 3, 7}},
      {"replace: blue 3 off, tolerance 2", ONE(VexoReplaceColor32(4, p, key, to, 2)), {53, 100, 200, 7}, {53, 100, 200, 7}},
      {"replace: blue 3 off, tolerance 3", ONE(VexoReplaceColor32(4, p, key, to, 3)), {53, 100, 200, 7}, {3, 2, 1, 7}},
      {"replace: red 3 below, tolerance 3", ONE(VexoReplaceColor32(4, p, key, to, 3)), {50, 100, 197, 7}, {3, 2, 1, 7}},
      {"offsets clamp", ONE(VexoAdjust1Colors32(1, 1, p, 10, -10, 10)), {250, 5, 100, 7}, {255, 0, 110, 7}},
      {"sine offsets: 2.16, 176.11, 339.1", ONE(VexoAdjust0Colors32(1, 1, p, 100, 100, -200)), {10, 128, 255, 7}, {2, 176, 255, 7}},
      {"sine offset below 0: -14.6", ONE(VexoAdjust0Colors32(1, 1, p, 0, 0, -1000)), {5, 0, 0, 7}, {0, 0, 0, 7}},
      {"tint wraps modulo 256", ONE(VexoCustomBacterial32(4, p, 10, 1, 5, 1)), {0, 255, 250, 7}, {5, 0, 4, 7}},
      {"tint on green only", ONE(VexoCustomBacterial32(4, p, 10, 1, 5, 3)), {0, 255, 250, 7}, {0, 0, 250, 7}},
      {"web 25, 26, 128", ONE(VexoWebColour32(4, p)), {25, 26, 128, 7}, {0, 51, 51, 7}},
      {"web 255, 200, 77", ONE(VexoWebColour32(4, p)), {255, 200, 77, 7}, {51, 51, 51, 7}},
      {"grey on red", ONE(VexoGrayScale32(4, p, 2)), {10, 20, 32, 7}, {10, 20, 20, 7}},
      {"aged photo", ONE(VexoAgedPhoto32(4, p, 1)), {10, 20, 200, 7}, {10, 61, 255, 7}},
      {"aged photo on blue", ONE(VexoAgedPhoto32(4, p, 4)), {10, 20, 200, 7}, {10, 20, 200, 7}},
  });
}

TEST(ColourExamples, SixteenBit) {
  const uint32_t key = packed(200, 100, 50), to = packed(1, 2, 3);
  expectExamples<Pixel64>({
      {"saturation 32767", ONE(VexoSaturation64(4, p, 32767)), {1000, 2000, 3000, 7}, {0, 2000, 4000, 7}},
      // The 32-bit product sum overflows for a lone full channel at the top
      // setting; the wrapped sum is negative and clamps to 0.
      {"saturation 70000 acts as 65534", ONE(VexoSaturation64(4, p, 70000)), {0, 0, 32767, 7}, {0, 0, 0, 7}},
      {"saturation -32767", ONE(VexoSaturation64(4, p, -32767)), {1000, 2000, 3001, 7}, {2000, 2000, 2000, 7}},
      {"hue 350 gives the pixel back", ONE(VexoHue64(1, 1, p, 350)), {0, 32767, 40, 7}, {0, 32767, 40, 7}},
      {"hue 25: 128 << 7 out of 32640", ONE(VexoHue64(1, 1, p, 25)), {0, 1000, 2000, 7}, {0, 1501, 2000, 7}},
      {"filter 5", ONE(VexoColorFilter64(4, p, 5)), {1001, 5, 2000, 7}, {1500, 0, 1500, 7}},
      {"replace: bytes x 128", ONE(VexoReplaceColor64(4, p, key, to, 0)), {6400, 12800, 25600, 7}, {384, 256, 128, 7}},
      {"replace: not rescaled to 32767", ONE(VexoReplaceColor64(4, p, key, to, 0)), {6400, 12800, 25699, 7}, {6400, 12800, 25699, 7}},
      {"replace: tolerance unscaled", ONE(VexoReplaceColor64(4, p, key, to, 99)), {6400, 12800, 25699, 7}, {384, 256, 128, 7}},
      {"offsets unscaled, clamped", ONE(VexoAdjust1Colors64(1, 1, p, 10, -200, 10)), {32760, 100, 0, 7}, {32767, 0, 10, 7}},
      {"sine offset", ONE(VexoAdjust0Colors64(1, 1, p, 1000, 0, 0)), {0, 0, 16384, 7}, {0, 0, 16863, 7}},
      {"tint wraps modulo 65536", ONE(VexoCustomBacterial64(4, p, 7, 1, 10, 1)), {65530, 32767, 0, 7}, {4, 32768, 7, 7}},
      {"web", ONE(VexoWebColour64(4, p)), {25, 26, 32767, 7}, {0, 51, 51, 7}},
      {"web reads signed", ONE(VexoWebColour64(4, p)), {40000, 51, 100, 7}, {0, 51, 51, 7}},
      {"grey", ONE(VexoGrayScale64(4, p, 1)), {30000, 30000, 30002, 7}, {30000, 30000, 30000, 7}},
      {"aged photo", ONE(VexoAgedPhoto64(4, p, 1)), {0, 100, 30000, 7}, {0, 5368, 32767, 7}},
  });
}

TEST(ColourExamples, Float) {
  const uint32_t key = packed(200, 100, 50), to = packed(1, 2, 3);
  auto k = [](int v) { return static_cast<float>(v / 255.0); };
  const Pixel128 match{k(50), k(100), k(200), 0.5f}, replaced{k(3), k(2), k(1), 0.5f};
  const Pixel128 offByTwo{k(52), k(100), k(200), 0.5f};
  expectExamples<Pixel128>({
      {"saturation 2550: the 16-bit range, factor 11", ONE(VexoSaturation128(4, p, 2550)),
       {0.25f, 0.5f, 0.75f, 0.5f}, {-2.25f, 0.5f, 3.25f, 0.5f}},
      {"saturation -255: factor 0", ONE(VexoSaturation128(4, p, -255)), {0.25f, 0.5f, 0.75f, 0.5f}, {0.5f, 0.5f, 0.5f, 0.5f}},
      {"saturation -300: factor below 0", ONE(VexoSaturation128(4, p, -300)), {0.25f, 0.5f, 0.75f, 0.5f}, {0.25f, 0.5f, 0.75f, 0.5f}},
      {"hue 350 gives the pixel back", ONE(VexoHue128(1, 1, p, 350)), {0.1f, 0.7f, 0.3f, 0.5f}, {0.1f, 0.7f, 0.3f, 0.5f}},
      {"hue 25: divided by 255", ONE(VexoHue128(1, 1, p, 25)), {0.0f, 0.5f, 1.0f, 0.5f}, {0.0f, 0.7509804368019104f, 1.0f, 0.5f}},
      {"filter 4 sums", ONE(VexoColorFilter128(4, p, 4)), {0.0f, 0.8f, 0.8f, 0.5f}, {0.0f, 1.6f, 1.6f, 0.5f}},
      {"copy raw bits", ONE(VexoRGBChannelFilter128(4, p, 3)), {0.0f, -0.0f, 7.5f, 0.5f}, {-0.0f, -0.0f, -0.0f, 0.5f}},
      {"replace", ONE(VexoReplaceColor128(4, p, key, to, 1)), match, replaced},
      {"replace: 2 off, tolerance 1", ONE(VexoReplaceColor128(4, p, key, to, 1)), offByTwo, offByTwo},
      {"offsets over 255, no clamp", ONE(VexoAdjust1Colors128(1, 1, p, 255, -510, 51)), {0.5f, 1.0f, 1.0f, 0.5f}, {0.7f, -1.0f, 2.0f, 0.5f}},
      {"sine of the value", ONE(VexoAdjust0Colors128(1, 1, p, 255, -51, 7)),
       {0.0f, 0.5f, 1.0f, 0.5f}, {0.0f, 0.40411490201950073f, 1.8414709568023682f, 0.5f}},
      {"tint over 255, unbounded", ONE(VexoCustomBacterial128(4, p, 255, -255, 0, 1)), {0.5f, 0.5f, 0.5f, 0.5f}, {0.5f, -0.5f, 1.5f, 0.5f}},
      {"grey on green", ONE(VexoGrayScale128(4, p, 3)), {0.25f, 0.0f, 0.75f, 0.5f}, {0.25f, 0.33333334f, 0.75f, 0.5f}},
      {"aged photo", ONE(VexoAgedPhoto128(4, p, 1)), {0.5f, 0.0f, 1.0f, 0.5f}, {0.5f, 0.1607715f, 1.3097933530807495f, 0.5f}},
  });
}
