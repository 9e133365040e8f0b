#include <gtest/gtest.h>

#include "adjust/adjust_checks.h"

using namespace effects::test;

namespace {
constexpr uint32_t packed(uint32_t r, uint32_t g, uint32_t b) { return r | (g << 8) | (b << 16); }
}  // namespace

TEST(ColourExamples, EightBit) {
  const uint32_t key = packed(200, 100, 50), to = packed(1, 2, 3);
  expectExamples<Pixel32>({
      {"saturation -300 acts as -255: the integer average", ONE(VexoSaturation32(4, p, -300)), {10, 20, 36, 7}, {22, 22, 22, 7}},
      {"saturation +1 darkens grey: weights 255, divisor 256", ONE(VexoSaturation32(4, p, 1)), {100, 100, 100, 7}, {99, 99, 99, 7}},
      {"saturation 0 changes nothing", ONE(VexoSaturation32(4, p, 0)), {10, 20, 36, 7}, {10, 20, 36, 7}},
      {"saturation 600 acts as 512", ONE(VexoSaturation32(4, p, 600)), {10, 20, 36, 7}, {0, 15, 63, 7}},
      {"hue 1000 acts as 350: weight trunc(50 x 5.11) = 255", ONE(VexoHue32(1, 1, p, 1000)), {0, 255, 40, 7}, {0, 255, 40, 7}},
      {"hue -20 acts as 0", ONE(VexoHue32(1, 1, p, -20)), {0, 255, 40, 7}, {0, 255, 40, 7}},
      {"hue 25: weight trunc(25 x 5.12) = 128", ONE(VexoHue32(1, 1, p, 25)), {10, 0, 255, 7}, {10, 127, 255, 7}},
      {"hue 325: weight trunc(25 x 5.11) = 127", ONE(VexoHue32(1, 1, p, 325)), {0, 255, 40, 7}, {0, 126, 40, 7}},
      {"filter 5 magenta halves", ONE(VexoColorFilter32(4, p, 5)), {9, 100, 51, 7}, {30, 0, 30, 7}},
      {"copy red", ONE(VexoRGBChannelFilter32(4, p, 2)), {1, 2, 3, 7}, {3, 3, 3, 7}},
      {"copy with selector 1", ONE(VexoRGBChannelFilter32(4, p, 1)), {1, 2, 3, 7}, {1, 2, 3, 7}},
      {"swap 4", ONE(VexoColorSwitch32(4, p, 4)), {1, 2, 3, 7}, {2, 3, 1, 7}},
      {"swap 5", ONE(VexoColorSwitch32(4, p, 5)), {1, 2, 3, 7}, {3, 1, 2, 7}},
      // blue 3 above the key, red 3 below: the tolerance holds both ways
      {"replace: 3 off, tolerance 2", ONE(VexoReplaceColor32(4, p, key, to, 2)), {53, 100, 197, 7}, {53, 100, 197, 7}},
      {"replace: 3 off, tolerance 3", ONE(VexoReplaceColor32(4, p, key, to, 3)), {53, 100, 197, 7}, {3, 2, 1, 7}},
      {"offsets clamp", ONE(VexoAdjust1Colors32(1, 1, p, 10, -10, 10)), {250, 5, 100, 7}, {255, 0, 110, 7}},
      {"sine offsets: 2.16, 176.11, 339.1", ONE(VexoAdjust0Colors32(1, 1, p, 100, 100, -200)), {10, 128, 255, 7}, {2, 176, 255, 7}},
      {"tint wraps modulo 256", ONE(VexoCustomBacterial32(4, p, 10, 1, 5, 1)), {0, 255, 250, 7}, {5, 0, 4, 7}},
      {"web: 0 below 26, else 51 and no further", ONE(VexoWebColour32(4, p)), {25, 26, 128, 7}, {0, 51, 51, 7}},
      {"grey on red", ONE(VexoGrayScale32(4, p, 2)), {10, 20, 32, 7}, {10, 20, 20, 7}},
      {"aged photo", ONE(VexoAgedPhoto32(4, p, 1)), {10, 20, 200, 7}, {10, 61, 255, 7}},
  });
}

TEST(ColourExamples, SixteenBit) {
  const uint32_t key = packed(200, 100, 50), to = packed(1, 2, 3);
  expectExamples<Pixel64>({
      // The 32-bit product sum overflows for a lone full channel at the top
      // setting; the wrapped sum is negative and clamps to 0.
      {"saturation 70000 acts as 65534", ONE(VexoSaturation64(4, p, 70000)), {0, 0, 32767, 7}, {0, 0, 0, 7}},
      {"hue 25: 128 << 7 out of 32640", ONE(VexoHue64(1, 1, p, 25)), {0, 1000, 2000, 7}, {0, 1501, 2000, 7}},
      // key and colour bytes x 128, the tolerance unscaled: 99 off
      {"replace: tolerance 98", ONE(VexoReplaceColor64(4, p, key, to, 98)), {6400, 12800, 25699, 7}, {6400, 12800, 25699, 7}},
      {"replace: tolerance 99", ONE(VexoReplaceColor64(4, p, key, to, 99)), {6400, 12800, 25699, 7}, {384, 256, 128, 7}},
      {"tint wraps modulo 65536", ONE(VexoCustomBacterial64(4, p, 7, 1, 10, 1)), {65530, 32767, 0, 7}, {4, 32768, 7, 7}},
      {"web reads signed", ONE(VexoWebColour64(4, p)), {40000, 51, 100, 7}, {0, 51, 51, 7}},
      {"grey sums beyond 16 bits", ONE(VexoGrayScale64(4, p, 1)), {30000, 30000, 30002, 7}, {30000, 30000, 30000, 7}},
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
