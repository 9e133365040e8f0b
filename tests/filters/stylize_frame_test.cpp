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
using Call = std::pair<const char*, std::function<void(int32_t w, int32_t h, P*)>>;

template <class P>
void sweep(const std::vector<Call<P>>& calls, std::vector<P> (*pattern)(size_t, uint32_t)) {
  for (const auto& [name, run] : calls) {
    for (auto [w, h] : {std::pair{1, 1}, std::pair{1, 7}, std::pair{7, 1}, std::pair{2, 2}, std::pair{17, 9}, std::pair{33, 2}}) {
      auto px = pattern(static_cast<size_t>(w) * h, 5);
      const auto before = px;
      seedDraws(3);
      run(w, h, px.data());
      for (size_t i = 0; i < px.size(); ++i) ASSERT_EQ(bitsOf(px[i].mask), bitsOf(before[i].mask)) << name << ' ' << w << 'x' << h;
    }
    for (auto [w, h] : {std::pair{0, 3}, std::pair{3, 0}, std::pair{-2, 3}, std::pair{-1, -1}}) {
      auto px = pattern(1, 5);
      run(w, h, px.data());
      EXPECT_TRUE(sameBytes(px, pattern(1, 5))) << name << ' ' << w << 'x' << h;
    }
  }
}

// Element-count exports get the count of the picture, or a count below 1.
inline int32_t countOf(int32_t w, int32_t h) { return w < 1 || h < 1 ? -4 * std::abs(w * h) : 4 * w * h; }
#define BY_COUNT(name, ...) {#name, [](int32_t w, int32_t h, auto* p) { name(countOf(w, h), p __VA_OPT__(,) __VA_ARGS__); }}
#define BY_SIZE(name, ...) {#name, [](int32_t w, int32_t h, auto* p) { name(w, h, p __VA_OPT__(,) __VA_ARGS__); }}
#define EVERY_LAYOUT(L, full, ...)                                                                                \
  BY_COUNT(VexoHalftone##L, 2, 1), BY_COUNT(VexoCustomHalftone##L, 1, 1), BY_COUNT(VexoPolarPass##L, 1, 1),      \
      BY_COUNT(VexoMultiPolarPass##L, 200, 50, 200, 50, 200, 50), BY_SIZE(VexoPixelNoise##L, 4, full, -full, full), \
      BY_SIZE(VexoPixelizer##L, 9, 9, 9), BY_SIZE(VexoMonitor##L), BY_SIZE(VexoDigitalDisplay3##L),               \
      BY_SIZE(VexoDigitalDisplay4##L), BY_SIZE(VexoDigitalDisplay5##L), BY_SIZE(Vexo3DGoggles##L),               \
      BY_SIZE(VexoDoubleVision##L), BY_SIZE(VexoOilPaint##L, 5, 255), BY_SIZE(VexoThachet##L, 0),                \
      BY_SIZE(VexoRoughen##L, 3, 2), BY_SIZE(VexoDiffuse##L, 40, full, full, full), BY_SIZE(VexoAgedLines##L, 40, 40), \
      BY_SIZE(VexoBacterial##L, 3, 1) __VA_OPT__(,) __VA_ARGS__

}  // namespace

TEST(StylizeFrame, EveryExport) {
  sweep<Pixel32>({EVERY_LAYOUT(32, 255, BY_SIZE(VexoRainDrops32, 6, 64), BY_SIZE(VexoMetallic32, 3, 50))}, pattern32);
  sweep<Pixel64>({EVERY_LAYOUT(64, 32767, BY_SIZE(VexoRainDrops64, 6, 64), BY_SIZE(VexoMetallic64, 3, 50))}, pattern64);
  sweep<Pixel128>({EVERY_LAYOUT(128, 255)}, pattern128);
  // The mask threshold, the one export that writes the mask, covers whole
  // pixels of the count and nothing for a count below 1.
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
