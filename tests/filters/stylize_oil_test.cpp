#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "core/scratch.h"
#include "filters/stylize_checks.h"
#include "filters/stylize_oil.h"
#include "support/pictures.h"

using namespace effects::test;
namespace oil = effects::oil;

namespace {

// Worked out directly: a fresh histogram of each pixel's square, the first
// (darkest) largest level, its mean colour rounded half up; the mask stays.
std::vector<Pixel32> oilByHand(const std::vector<Pixel32>& in, int32_t w, int32_t h, int32_t brush, int32_t levels) {
  brush = std::clamp(brush, 1, 5), levels = std::clamp(levels, 10, 255);
  std::vector<Pixel32> out = in;
  for (int32_t y = 0; y < h; ++y)
    for (int32_t x = 0; x < w; ++x) {
      int count[256] = {}, sum[256][3] = {};
      for (int32_t v = std::max(0, y - brush); v <= std::min(h - 1, y + brush); ++v)
        for (int32_t u = std::max(0, x - brush); u <= std::min(w - 1, x + brush); ++u) {
          const Pixel32& p = in[v * w + u];
          const int l = (p.blue + p.green + p.red) * levels / 766;
          ++count[l], sum[l][0] += p.blue, sum[l][1] += p.green, sum[l][2] += p.red;
        }
      const int best = static_cast<int>(std::max_element(count, count + 256) - count), n = count[best];
      Pixel32& o = out[y * w + x];
      o.blue = uint8_t((sum[best][0] + n / 2) / n), o.green = uint8_t((sum[best][1] + n / 2) / n);
      o.red = uint8_t((sum[best][2] + n / 2) / n);
    }
  return out;
}

// Few distinct colours (where levels tie and the leader changes often).
std::vector<Pixel32> blotches(int32_t w, int32_t h, uint32_t seed) {
  auto px = pattern<Pixel32>(static_cast<size_t>(w) * h, seed);
  for (auto& p : px) p.blue &= 0xC3, p.green &= 0xC3, p.red &= 0xC3;
  return px;
}

}  // namespace

TEST(StylizeOilPaint, MatchesTheDirectHistogram) {
  for (auto [w, h] : {std::pair{1, 1}, std::pair{1, 9}, std::pair{9, 1}, std::pair{2, 2}, std::pair{13, 7}, std::pair{40, 31}})
    for (auto [brush, levels] : {std::pair{0, 3}, std::pair{1, 10}, std::pair{2, 37}, std::pair{3, 255}, std::pair{9, 999}})
      for (const auto& in : {pattern<Pixel32>(w * h, 5), blotches(w, h, 6)}) {
        auto px = in;
        VexoOilPaint32(w, h, px.data(), brush, levels);
        EXPECT_TRUE(sameBytes(px, oilByHand(in, w, h, brush, levels))) << w << 'x' << h << ' ' << brush << ' ' << levels;
      }
  // Black, black, white: the last pixel sees one of each and stays black;
  // 10 and 11 share level 0 and their mean 10.5 rounds up.
  std::vector<Pixel32> row{{0, 0, 0, 1}, {0, 0, 0, 2}, {255, 255, 255, 3}}, two{{10, 10, 10, 1}, {11, 11, 11, 2}};
  VexoOilPaint32(3, 1, row.data(), 1, 10);
  VexoOilPaint32(2, 1, two.data(), 1, 10);
  EXPECT_TRUE(sameBytes(row, {{0, 0, 0, 1}, {0, 0, 0, 2}, {0, 0, 0, 3}}));
  EXPECT_TRUE(sameBytes(two, {{11, 11, 11, 1}, {11, 11, 11, 2}}));
}

TEST(StylizeOilPaint, WideLayoutsPaintTheEightBitPicture) {
  const auto base = blotches(29, 17, 3);
  auto eight = base, fast = base;
  VexoOilPaint32(29, 17, eight.data(), 2, 40);
  auto wide = widen64(base);
  auto flt = widen128(base);
  VexoOilPaint64(29, 17, wide.data(), 2, 40);
  VexoOilPaint128(29, 17, flt.data(), 2, 40);
  EXPECT_EQ(expectWithinOneStep(wide, eight), 0);
  EXPECT_EQ(expectWithinOneStep(flt, eight), 0);
  // Also through the library's own 8 <-> 16 bit conversions (mask aside).
  std::vector<Pixel64> shifted(base.size());
  Convert32to64Fast(29 * 17 * 4, base.data(), shifted.data());
  VexoOilPaint64(29, 17, shifted.data(), 2, 40);
  Convert64to32Fast(29 * 17 * 4, fast.data(), shifted.data());
  for (size_t i = 0; i < fast.size(); ++i) fast[i].mask = eight[i].mask;
  EXPECT_TRUE(sameBytes(fast, eight));
  // White is full in 16 bits; float values beyond 0..1 end at the ends.
  std::vector<Pixel64> w{{32767, 32767, 32767, 5}};
  std::vector<Pixel128> f{{7.5f, -2.0f, 0.5f, 0.25f}};
  VexoOilPaint64(1, 1, w.data(), 1, 10);
  VexoOilPaint128(1, 1, f.data(), 1, 10);
  EXPECT_EQ(w[0], (Pixel64{32767, 32767, 32767, 5}));
  EXPECT_EQ(f[0], (Pixel128{1.0f, 0.0f, static_cast<float>(128 * 0.00392156862745098), 0.25f}));
  // Without scratch memory nothing changes.
  auto px = base;
  effects::ScratchLimit none(16);
  VexoOilPaint32(29, 17, px.data(), 2, 50);
  EXPECT_TRUE(sameBytes(px, base));
}

TEST(StylizeOilPaint, ShortcutsMatchThePlainForms) {
  for (uint32_t d = 1; d <= oil::kMostPixels; ++d)
    for (uint32_t x = 0; x < 32768; ++x) ASSERT_EQ(oil::kReciprocals.divide(x, d), x / d) << x << " / " << d;
#if defined(__SSE2__)
  alignas(16) uint8_t counts[256], strip[256], plain[256], vector[256];
  uint32_t s = 7;
  for (int round = 0; round < 20000; ++round) {
    s = s * 1103515245u + 12345u;
    const uint32_t bins = 10 + (s >> 8) % 246, spread = 1 + (s >> 20) % 8;  // small spreads tie
    std::memset(counts, 0, sizeof counts);
    for (uint32_t i = 0; i < bins; ++i) counts[i] = static_cast<uint8_t>((s = s * 1103515245u + 12345u) >> 16) % spread;
    if (round % 3 == 0) counts[bins - 1] = 121;
    ASSERT_EQ(oil::firstLargestSse2(counts, bins), oil::firstLargestPlain(counts, bins)) << round;
    for (int i = 0; i < 256; ++i) strip[i] = static_cast<uint8_t>((s >> (i % 24)) ^ i);
    std::memcpy(plain, counts, 256), std::memcpy(vector, counts, 256);
    oil::addCountsPlain(plain, strip, 256), oil::addCountsSse2(vector, strip, 256);
    oil::subtractCountsPlain(plain, strip + 16, 240), oil::subtractCountsSse2(vector, strip + 16, 240);
    ASSERT_EQ(std::memcmp(plain, vector, 256), 0) << round;
  }
#endif
}
