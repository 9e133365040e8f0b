// Every stylize export on buffers of exactly the picture's size (so the
// sanitizers see any access outside), at the smallest and odd sizes: the mask
// stays, and an empty size changes nothing.
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <vector>

#include "support/pictures.h"
#include "support/random_draws.h"

using namespace effects::test;

namespace {

template <class P>
struct Call {
  const char* name;
  std::function<void(int32_t w, int32_t h, P*)> run;
};

template <class P>
void sweep(const std::vector<Call<P>>& calls, std::vector<P> (*pattern)(size_t, uint32_t)) {
  const std::pair<int32_t, int32_t> sizes[] = {{1, 1}, {1, 7}, {7, 1}, {2, 2}, {5, 3}, {17, 9}, {33, 2}};
  const std::pair<int32_t, int32_t> empty[] = {{0, 3}, {3, 0}, {-2, 3}, {3, -2}, {-1, -1}};
  for (const auto& c : calls) {
    for (auto [w, h] : sizes) {
      auto px = pattern(static_cast<size_t>(w) * h, 5);
      const auto before = px;
      seedDraws(3);
      c.run(w, h, px.data());
      for (size_t i = 0; i < px.size(); ++i)
        ASSERT_EQ(bitsOf(px[i].mask), bitsOf(before[i].mask)) << c.name << ' ' << w << 'x' << h << " pixel " << i;
    }
    for (auto [w, h] : empty) {
      auto px = pattern(1, 5);
      const auto before = px;
      c.run(w, h, px.data());
      EXPECT_TRUE(sameBytes(px, before)) << c.name << ' ' << w << 'x' << h;
    }
  }
}

// An element-count export called with the count of a w x h picture (0 or
// negative for the empty sizes).
inline int32_t countOf(int32_t w, int32_t h) { return w < 1 || h < 1 ? -4 * std::abs(w * h) : 4 * w * h; }
#define BY_COUNT(name, ...) {#name, [](int32_t w, int32_t h, auto* p) { name(countOf(w, h), p __VA_OPT__(,) __VA_ARGS__); }}
#define BY_SIZE(name, ...) {#name, [](int32_t w, int32_t h, auto* p) { name(w, h, p __VA_OPT__(,) __VA_ARGS__); }}

}  // namespace

TEST(StylizeFrame, EightBit) {
  sweep<Pixel32>({BY_COUNT(VexoHalftone32, 2, 1), BY_COUNT(VexoCustomHalftone32, 300, 1),
                  BY_COUNT(VexoPolarPass32, 1, 1), BY_COUNT(VexoMultiPolarPass32, 200, 50, 200, 50, 200, 50),
                  BY_SIZE(VexoPixelNoise32, 4, 90, -90, 90), BY_SIZE(VexoPixelizer32, 9, 9, 9), BY_SIZE(VexoMonitor32),
                  BY_SIZE(VexoDigitalDisplay332), BY_SIZE(VexoDigitalDisplay432), BY_SIZE(VexoDigitalDisplay532),
                  BY_SIZE(Vexo3DGoggles32), BY_SIZE(VexoDoubleVision32), BY_SIZE(VexoOilPaint32, 5, 255),
                  BY_SIZE(VexoThachet32, 0), BY_SIZE(VexoRoughen32, 3, 2), BY_SIZE(VexoDiffuse32, 40, 9, 9, 9),
                  BY_SIZE(VexoAgedLines32, 40, 40), BY_SIZE(VexoBacterial32, 3, 1), BY_SIZE(VexoRainDrops32, 6, 64),
                  BY_SIZE(VexoMetallic32, 3, 50)},
                 pattern32);
}

TEST(StylizeFrame, SixteenBit) {
  sweep<Pixel64>({BY_COUNT(VexoHalftone64, 2, 1), BY_COUNT(VexoCustomHalftone64, 30000, 1),
                  BY_COUNT(VexoPolarPass64, 1, 1), BY_COUNT(VexoMultiPolarPass64, 20000, 5000, 20000, 5000, 20000, 5000),
                  BY_SIZE(VexoPixelNoise64, 4, 9000, -9000, 9000), BY_SIZE(VexoPixelizer64, 900, 900, 900),
                  BY_SIZE(VexoMonitor64), BY_SIZE(VexoDigitalDisplay364), BY_SIZE(VexoDigitalDisplay464),
                  BY_SIZE(VexoDigitalDisplay564), BY_SIZE(Vexo3DGoggles64), BY_SIZE(VexoDoubleVision64),
                  BY_SIZE(VexoOilPaint64, 1, 10), BY_SIZE(VexoThachet64, 0), BY_SIZE(VexoRoughen64, 3, 2),
                  BY_SIZE(VexoDiffuse64, 40, 900, 900, 900), BY_SIZE(VexoAgedLines64, 40, 40),
                  BY_SIZE(VexoBacterial64, 3, 1), BY_SIZE(VexoRainDrops64, 6, 64), BY_SIZE(VexoMetallic64, 3, 50)},
                 pattern64);
}

TEST(StylizeFrame, Float) {
  sweep<Pixel128>({BY_COUNT(VexoHalftone128, 2, 1), BY_COUNT(VexoCustomHalftone128, 1, 1),
                   BY_COUNT(VexoPolarPass128, 1, 1), BY_COUNT(VexoMultiPolarPass128, 200, 50, 200, 50, 200, 50),
                   BY_SIZE(VexoPixelNoise128, 4, 90, -90, 90), BY_SIZE(VexoPixelizer128, 9, 9, 9),
                   BY_SIZE(VexoMonitor128), BY_SIZE(VexoDigitalDisplay3128), BY_SIZE(VexoDigitalDisplay4128),
                   BY_SIZE(VexoDigitalDisplay5128), BY_SIZE(Vexo3DGoggles128), BY_SIZE(VexoDoubleVision128),
                   BY_SIZE(VexoOilPaint128, 3, 100), BY_SIZE(VexoThachet128, 0), BY_SIZE(VexoRoughen128, 3, 2),
                   BY_SIZE(VexoDiffuse128, 40, 9, 9, 9), BY_SIZE(VexoAgedLines128, 40, 40),
                   BY_SIZE(VexoBacterial128, 3, 1)},
                  pattern128);
}

// The only stylize exports that write the mask.
TEST(StylizeFrame, MaskThresholdStaysInsideTheCount) {
  for (int32_t n : {1, 5, 8}) {
    std::vector<Pixel32> px(static_cast<size_t>((n - 1) / 4 + 1), Pixel32{1, 2, 3, 200});
    VexoHalftoneMask32(n, px.data());
    for (const auto& p : px) EXPECT_EQ(p, (Pixel32{1, 2, 3, 255}));
  }
  std::vector<Pixel64> one{{1, 2, 3, 9}};
  VexoHalftoneMask64(0, one.data());
  VexoHalftoneMask64(-4, one.data());
  EXPECT_EQ(one[0], (Pixel64{1, 2, 3, 9}));
}
