#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "core/scratch.h"
#include "filters/stylize_checks.h"
#include "filters/stylize_oil.h"
#include "support/pictures.h"

using namespace effects::test;

namespace {

// The oil paint worked out directly: for every pixel a fresh histogram of the
// levels in its square, the first (darkest) largest level, its mean colour
// rounded half up; the mask stays.
std::vector<Pixel32> oilByHand(const std::vector<Pixel32>& in, int32_t w, int32_t h, int32_t brush, int32_t levels) {
  brush = std::clamp(brush, 1, 5);
  levels = std::clamp(levels, 10, 255);
  std::vector<Pixel32> out = in;
  for (int32_t y = 0; y < h; ++y) {
    for (int32_t x = 0; x < w; ++x) {
      int count[256] = {}, blue[256] = {}, green[256] = {}, red[256] = {};
      for (int32_t v = std::max(0, y - brush); v <= std::min(h - 1, y + brush); ++v) {
        for (int32_t u = std::max(0, x - brush); u <= std::min(w - 1, x + brush); ++u) {
          const Pixel32& p = in[v * w + u];
          const int l = (p.blue + p.green + p.red) * levels / 766;
          ++count[l], blue[l] += p.blue, green[l] += p.green, red[l] += p.red;
        }
      }
      const int best = static_cast<int>(std::max_element(count, count + 256) - count);
      const int n = count[best];
      Pixel32& o = out[y * w + x];
      o.blue = uint8_t((blue[best] + n / 2) / n), o.green = uint8_t((green[best] + n / 2) / n);
      o.red = uint8_t((red[best] + n / 2) / n);
    }
  }
  return out;
}

// A picture with broad areas of similar colour (where the levels tie and the
// leader changes often) and noise on top.
std::vector<Pixel32> blotches(int32_t w, int32_t h, uint32_t seed) {
  auto px = pattern32(static_cast<size_t>(w) * h, seed);
  for (int32_t y = 0; y < h; ++y)
    for (int32_t x = 0; x < w; ++x) {
      Pixel32& p = px[y * w + x];
      const int base = ((x / 5 + y / 3) % 4) * 60;
      p.blue = uint8_t(base + p.blue % 16), p.green = uint8_t(base + p.green % 16), p.red = uint8_t(base + p.red % 16);
    }
  return px;
}

}  // namespace

TEST(StylizeOilPaint, MatchesTheDirectHistogram) {
  const std::pair<int32_t, int32_t> sizes[] = {{1, 1}, {1, 9}, {9, 1}, {2, 2}, {13, 7}, {40, 31}};
  const std::pair<int32_t, int32_t> settings[] = {{0, 3}, {1, 10}, {2, 37}, {3, 255}, {5, 20}, {9, 999}};
  for (auto [w, h] : sizes) {
    for (auto [brush, levels] : settings) {
      for (const auto& in : {pattern32(w * h, 5), blotches(w, h, 6)}) {
        auto px = in;
        VexoOilPaint32(w, h, px.data(), brush, levels);
        EXPECT_TRUE(sameBytes(px, oilByHand(in, w, h, brush, levels)))
            << w << " x " << h << ", brush " << brush << ", levels " << levels;
      }
    }
  }
}

TEST(StylizeOilPaint, TiesGoDarkAndMeansRoundUp) {
  // Black, black, white: the last pixel sees one of each and stays black.
  std::vector<Pixel32> row{{0, 0, 0, 1}, {0, 0, 0, 2}, {255, 255, 255, 3}};
  VexoOilPaint32(3, 1, row.data(), 1, 10);
  EXPECT_TRUE(sameBytes(row, {{0, 0, 0, 1}, {0, 0, 0, 2}, {0, 0, 0, 3}}));
  // 10 and 11 share level 0; their mean 10.5 rounds up.
  std::vector<Pixel32> two{{10, 10, 10, 1}, {11, 11, 11, 2}};
  VexoOilPaint32(2, 1, two.data(), 1, 10);
  EXPECT_TRUE(sameBytes(two, {{11, 11, 11, 1}, {11, 11, 11, 2}}));
}

TEST(StylizeOilPaint, WideLayoutsPaintTheEightBitPicture) {
  const auto base = blotches(29, 17, 3);
  auto eight = base;
  VexoOilPaint32(29, 17, eight.data(), 2, 40);
  auto wide = widen64(base);
  VexoOilPaint64(29, 17, wide.data(), 2, 40);
  EXPECT_EQ(expectWithinOneStep(wide, eight), 0);
  auto flt = widen128(base);
  VexoOilPaint128(29, 17, flt.data(), 2, 40);
  EXPECT_EQ(expectWithinOneStep(flt, eight), 0);
  // Also through the library's own 8 <-> 16 bit conversions.
  const int32_t n = static_cast<int32_t>(base.size()) * 4;
  std::vector<Pixel64> fast(base.size());
  Convert32to64Fast(n, base.data(), fast.data());
  VexoOilPaint64(29, 17, fast.data(), 2, 40);
  std::vector<Pixel32> back(base.size());
  Convert64to32Fast(n, back.data(), fast.data());
  for (size_t i = 0; i < base.size(); ++i) back[i].mask = base[i].mask;
  EXPECT_TRUE(sameBytes(back, eight));
}

TEST(StylizeOilPaint, EndsOfTheWideLayouts) {
  // White is full in 16 bits; float values beyond 0..1 end at the ends; the
  // mask stays.
  std::vector<Pixel64> w{{32767, 32767, 32767, 5}};
  VexoOilPaint64(1, 1, w.data(), 1, 10);
  EXPECT_EQ(w[0], (Pixel64{32767, 32767, 32767, 5}));
  std::vector<Pixel128> f{{7.5f, -2.0f, 0.5f, 0.25f}};
  VexoOilPaint128(1, 1, f.data(), 1, 10);
  EXPECT_EQ(f[0], (Pixel128{1.0f, 0.0f, static_cast<float>(128 * 0.00392156862745098), 0.25f}));
}

TEST(StylizeOilPaint, NoScratchNoChange) {
  auto px = pattern32(64, 2);
  const auto before = px;
  {
    effects::ScratchLimit none(16);
    VexoOilPaint32(8, 8, px.data(), 2, 50);
  }
  EXPECT_TRUE(sameBytes(px, before));
}

// The histogram's shortcuts against the plain forms.
TEST(StylizeOilPaint, ReciprocalsDivideExactly) {
  for (uint32_t d = 1; d <= effects::oil::kMostPixels; ++d)
    for (uint32_t x = 0; x < 32768; ++x) ASSERT_EQ(effects::oil::kReciprocals.divide(x, d), x / d) << x << " / " << d;
}

#if defined(__SSE2__)
TEST(StylizeOilPaint, VectorFormsMatchThePlainOnes) {
  alignas(16) uint8_t counts[256];
  uint32_t s = 7;
  for (int round = 0; round < 20000; ++round) {
    s = s * 1103515245u + 12345u;
    const uint32_t bins = 10 + (s >> 8) % 246;
    const uint32_t spread = 1 + (s >> 20) % 8;  // small spreads make ties
    std::memset(counts, 0, sizeof counts);
    for (uint32_t i = 0; i < bins; ++i) {
      s = s * 1103515245u + 12345u;
      counts[i] = static_cast<uint8_t>((s >> 16) % spread);
    }
    if (round % 3 == 0) counts[bins - 1] = 121;
    ASSERT_EQ(effects::oil::firstLargestSse2(counts, bins), effects::oil::firstLargestPlain(counts, bins))
        << "round " << round;
    // The strip additions, wrapping as bytes do.
    uint8_t strip[256], plain[256], vector[256];
    for (int i = 0; i < 256; ++i) strip[i] = static_cast<uint8_t>(s >> (i % 24)) ^ static_cast<uint8_t>(i);
    std::memcpy(plain, counts, 256), std::memcpy(vector, counts, 256);
    effects::oil::addCountsPlain(plain, strip, 256), effects::oil::addCountsSse2(vector, strip, 256);
    effects::oil::subtractCountsPlain(plain, strip + 16, 240), effects::oil::subtractCountsSse2(vector, strip + 16, 240);
    ASSERT_EQ(std::memcmp(plain, vector, 256), 0) << "round " << round;
  }
}
#endif
