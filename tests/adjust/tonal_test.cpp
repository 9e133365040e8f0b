#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <type_traits>
#include <vector>

#include "adjust/adjust_checks.h"

using namespace effects::test;

namespace {

// A run of an export over one grey pixel per input value (blue = green = red),
// and the grey values it must leave; the mask must not move.
template <class P, class E>
struct Grey {
  std::function<void(uint32_t width, P*)> run;
  std::vector<E> in, out;
};

template <class P, class E>
void check(const std::vector<Grey<P, E>>& cases) {
  const E mask = std::is_floating_point_v<E> ? E(0.25) : E(77);
  for (size_t k = 0; k < cases.size(); ++k) {
    SCOPED_TRACE(k);
    std::vector<P> px, want;
    for (E c : cases[k].in) px.push_back(P{c, c, c, mask});
    for (E c : cases[k].out) want.push_back(P{c, c, c, mask});
    cases[k].run(static_cast<uint32_t>(px.size()), px.data());
    EXPECT_EQ(px, want);
  }
}

using G32 = Grey<Pixel32, uint8_t>;
using G64 = Grey<Pixel64, uint16_t>;
using G128 = Grey<Pixel128, float>;

}  // namespace

TEST(TonalEightBit, WorkedExamples) {
  check<Pixel32, uint8_t>({
      // Brightness truncates: (c x 155) / 255 and 255 - ((255 - c) x 155) / 255.
      G32{[](uint32_t w, Pixel32* p) { VexoBrightness32(w, 1, p, -100, 0); }, {100, 0, 255, 37}, {60, 0, 155, 22}},
      G32{[](uint32_t w, Pixel32* p) { VexoBrightness32(w, 1, p, 100, 0); }, {100, 0, 255, 37}, {161, 100, 255, 123}},
      // Black brightness clamps, then rounds: 1 x 1.99999 gives 2.
      G32{[](uint32_t w, Pixel32* p) { VexoBlackBrightness32(w, 1, p, 255, 0); }, {100, 200, 1}, {200, 255, 2}},
      // Contrast pivots on 127 and truncates: with k = 0.50196, 150 -> 161.55,
      // 129 -> 130.004 (a pivot of 127.5 or 128 gives 129), 0 -> -63.7 -> 0,
      // 255 -> 319.3 -> 255.
      G32{[](uint32_t w, Pixel32* p) { VexoContrast32(w, 1, p, 128, 0); }, {150, 129, 0, 255}, {161, 130, 0, 255}},
      // Exposure adds 255 sin 1 = 214.575 or 255 cos 1 = 137.777, truncated;
      // a sin(a / 255) is even in a.
      G32{[](uint32_t w, Pixel32* p) { VexoXposure32(w, 1, p, 0, -255, 0); }, {10, 100, 0}, {224, 255, 214}},
      G32{[](uint32_t w, Pixel32* p) { VexoXposure32(w, 1, p, 1, -255, 0); }, {10, 200}, {0, 62}},
      // F-stops: one unit is 2^0.5, truncated (11 -> 15.56); 2^1000 overflows
      // the integer conversion into the most negative integer, which clamps to 0.
      G32{[](uint32_t w, Pixel32* p) { Vexofstop32(w, 1, p, 1.0); }, {11, 200}, {15, 255}},
      G32{[](uint32_t w, Pixel32* p) { Vexofstop32(w, 1, p, 2000.0); }, {100}, {0}},
      // Gamma raises to 1 / gamma and rounds (64 -> 127.75); gamma below 0 is 0,
      // an infinite exponent: all but full go black.
      G32{[](uint32_t w, Pixel32* p) { VexoGamma32(w, 1, p, 2.0f); }, {64, 100, 1, 0, 255}, {128, 160, 16, 0, 255}},
      G32{[](uint32_t w, Pixel32* p) { VexoGamma32(w, 1, p, -3.0f); }, {254, 255, 1}, {0, 255, 0}},
      // Gamma 20 acts as 10 (20 itself would give 238, 193, 252).
      G32{[](uint32_t w, Pixel32* p) { VexoGamma32(w, 1, p, 20.0f); }, {64, 1, 200}, {222, 147, 249}},
      // Toward HDR raises to gamma itself; gamma 0 makes everything full.
      G32{[](uint32_t w, Pixel32* p) { VexoGammatoHDR32(w, 1, p, 2.0f); }, {128, 200, 17}, {64, 157, 1}},
      G32{[](uint32_t w, Pixel32* p) { VexoGammatoHDR32(w, 1, p, -1.0f); }, {0, 100}, {255, 255}},
      // Level percentage rounds ties to even and keeps the low byte below 0.
      G32{[](uint32_t w, Pixel32* p) { VexoAdjustLevelPrecentage32(w, 1, p, 1.5f); }, {5, 7, 200}, {2, 4, 100}},
      G32{[](uint32_t w, Pixel32* p) { VexoAdjustLevelPrecentage32(w, 1, p, 3.0f); }, {100, 0}, {156, 0}},
  });
}

// The pivot 16383; a negative product keeps its low 16 bits.
TEST(TonalSixteenBit, WorkedExamples) {
  check<Pixel64, uint16_t>({
      G64{[](uint32_t w, Pixel64* p) { VexoContrast64(w, 1, p, 32767, 0); }, {16383, 20000, 30000, 10000}, {16383, 23617, 32767, 3617}},
      G64{[](uint32_t w, Pixel64* p) { VexoAdjustLevelPrecentage64(w, 1, p, 3.0f); }, {100, 20000}, {65436, 45536}},
  });
}

TEST(TonalFloat, NoClampingAndHdrValues) {
  check<Pixel128, float>({
      // Lightening pulls a value above white back toward it: 1 - (1 - 2) x 0.8.
      G128{[](uint32_t w, Pixel128* p) { VexoBrightness128(w, 1, p, 51, 0); }, {0.5f, 2.0f}, {0.6f, 1.8f}},
      // Amount 0 returns before 1 - (1 - c) could round 0.1 to 0.10000002.
      G128{[](uint32_t w, Pixel128* p) { VexoBrightness128(w, 1, p, 0, 0); }, {0.1f}, {0.1f}},
      G128{[](uint32_t w, Pixel128* p) { VexoBlackBrightness128(w, 1, p, 255, 0); }, {0.75f, 3.0f}, {1.5f, 6.0f}},
      G128{[](uint32_t w, Pixel128* p) { VexoContrast128(w, 1, p, 255, 0); }, {0.75f, 2.0f, 0.0f}, {1.0f, 3.5f, -0.5f}},
      // The offset is sin(1) x 1, the 8-bit offset divided by 255.
      G128{[](uint32_t w, Pixel128* p) { VexoXposure128(w, 1, p, 0, 255, 0); }, {0.5f, 2.0f}, {1.3414709568023682f, 2.841470956802368f}},
      G128{[](uint32_t w, Pixel128* p) { Vexofstop128(w, 1, p, 1.0); }, {6.0f, 2.0f}, {8.485280990600586f, 2.8284270763397217f}},
      G128{[](uint32_t w, Pixel128* p) { VexoGamma128(w, 1, p, 2.0f); }, {4.0f, 0.25f}, {2.0f, 0.5f}},
      G128{[](uint32_t w, Pixel128* p) { VexoAdjustLevelPrecentage128(w, 1, p, 0.0f); }, {3.0f}, {6.0f}},
  });
}

// The size is width x 4 x height in 32-bit arithmetic: a product that wraps
// to 4 visits one pixel.
TEST(TonalSize, WidthHeightCountIn32Bits) {
  std::vector<Pixel32> a(2, Pixel32{100, 100, 100, 7});
  VexoBrightness32(0x40000001u, 1, a.data(), -255, 0);
  EXPECT_EQ(a, (std::vector<Pixel32>{{0, 0, 0, 7}, {100, 100, 100, 7}}));
}

// The float gamma does not guard negative values.
TEST(TonalFloat, GammaOfANegativeValueIsNaN) {
  std::vector<Pixel128> px{{-1.0f, 0.0f, 0.0f, 1.0f}};
  VexoGamma128(1, 1, px.data(), 2.0f);
  EXPECT_TRUE(std::isnan(px[0].blue));
}
