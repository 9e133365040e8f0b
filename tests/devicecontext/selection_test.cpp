// Selection and fill: the magic wand and the bitmap members natively against
// the stand-in and on Windows against real GDI; the buffer members.
#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <vector>

#include "core/scratch.h"
#include "devicecontext/bitmaps.h"
#include "effects/effects.h"
#include "support/pictures.h"

using namespace effects::test;

namespace {

constexpr uint32_t kTarget = 0x7F102030u, kOther = 0x7F405060u;  // kTarget is COLORREF 0x302010

void wand(TestSurface& s, int32_t x, int32_t y, int32_t limitX, int32_t limitX2, uint32_t colorref) {
  VexoMagicWand(s.dc(), x, y, limitX, limitX2, colorref & 0xFF, colorref >> 8 & 0xFF, colorref >> 16 & 0xFF);
}

// The start's four-connected region with 0 <= x < limit, breadth first.
std::vector<bool> region(const Words& pic, int32_t w, int32_t h, int32_t x0, int32_t y0, int32_t limit) {
  std::vector<bool> in(pic.size());
  std::deque<std::pair<int32_t, int32_t>> todo{{x0, y0}};
  while (!todo.empty()) {
    auto [x, y] = todo.front();
    todo.pop_front();
    const size_t i = size_t(y * w + x);
    if (x < 0 || y < 0 || x >= std::min(w, limit) || y >= h || in[i] || pic[i] != pic[size_t(y0 * w + x0)]) continue;
    in[i] = true;
    todo.insert(todo.end(), {{x + 1, y}, {x, y + 1}, {x - 1, y}, {x, y - 1}});
  }
  return in;
}

}  // namespace

// Random two-colour pictures, starts and limits: exactly the start's
// four-connected region within the limits turns black, on both kinds of
// bitmap.
TEST(MagicWand, PaintsTheFourConnectedRegionWithinTheLimits) {
  for (auto kind : kSurfaceKinds)
    for (uint32_t seed = 1; seed <= 30; ++seed) {
      const int32_t w = 1 + int32_t(seed % 9), h = 1 + int32_t(seed * 7 % 8);
      Words pic = randomWords(size_t(w * h), seed);
      for (auto& p : pic) p = (p & 3u) ? kTarget : kOther;
      auto s = surfaceOf(w, h, pic, kind);
      const int32_t x = int32_t(seed % uint32_t(w)), y = int32_t(seed / 3 % uint32_t(h));
      const int32_t limitX = seed % 4 ? w + 3 : w - 1, limitX2 = seed % 5 ? w : 2;
      const auto in = region(pic, w, h, x, y, std::min(limitX, limitX2));
      wand(*s, x, y, limitX, limitX2, pic[size_t(y * w + x)] == kTarget ? 0x302010u : 0x605040u);
      const Words after = wordsOf(*s);
      for (size_t i = 0; i < pic.size(); ++i) EXPECT_EQ(after[i], in[i] ? 0u : pic[i]) << seed << ": " << i;
    }
}

// Where the plain walk goes wrong or never ends, and starts that paint
// nothing.
TEST(MagicWand, EndsOnEveryStart) {
  Words diagonal(16, kOther);  // four-way: only the start
  for (size_t i = 0; i < 16; i += 5) diagonal[i] = kTarget;
  auto d = surfaceOf(4, 4, diagonal);
  wand(*d, 1, 1, 4, 4, 0x302010u);
  diagonal[5] = 0;
  EXPECT_EQ(wordsOf(*d), diagonal);
  // black ends: its region is painted again (fourth byte 0)
  const uint32_t B = 0xAA000000u;
  auto b = surfaceOf(3, 3, {B, B, kOther, kOther, B, B, B, kOther, kOther});
  wand(*b, 0, 0, 100, 100, 0);
  EXPECT_EQ(wordsOf(*b), (Words{0, 0, kOther, kOther, 0, 0, B, kOther, kOther}));
  // white: the row below the bitmap (CLR_INVALID) does not join two white
  // columns, and a start below the bitmap paints nothing
  const uint32_t W = 0xFFFFFFu;
  auto wt = surfaceOf(3, 2, {W, kOther, W, W, kOther, W});
  wand(*wt, 0, 0, 3, 3, W);
  wand(*wt, 2, 2, 3, 3, W);
  EXPECT_EQ(wordsOf(*wt), (Words{0, kOther, W, 0, kOther, W}));
  auto n = surfaceOf(2, 1, Words(2, kTarget));
  for (auto [x, y, c] : {std::tuple{0, 0, 0x605040u}, {-1, 0, 0x302010u}, {0, -1, 0x302010u}}) wand(*n, x, y, 3, 3, c);
  EXPECT_EQ(wordsOf(*n), Words(2, kTarget));
  // deeper than any call stack would take
  auto big = surfaceOf(300, 300, Words(300 * 300, kTarget));
  wand(*big, 150, 150, 300, 300, 0x302010u);
  EXPECT_EQ(wordsOf(*big), Words(300 * 300, 0u));
}

// 128 times the byte in 16 bits (255 gives 32640), 1/255 in float; the
// selector picks the elements; the mask stays. The bitmap member fills the
// source's picture into the destination.
TEST(Bucket, FillsInEachLayoutAndOnBitmaps) {
  std::vector<Pixel32> p8{{9, 9, 9, 9}, {8, 8, 8, 8}};
  Pixel64 p16{9, 9, 9, 9};
  Pixel128 pF{0.5f, 0.5f, 0.5f, 0.5f};
  VexoBucket32(5, p8.data(), 0x00FF8001u, 1);
  VexoBucket64(4, &p16, 0x00FF8001u, 1);
  VexoBucket128(4, &pF, 0x00FF8001u, 3);
  EXPECT_EQ(p8, (std::vector<Pixel32>{{255, 128, 1, 9}, {255, 128, 1, 8}}));
  EXPECT_EQ(p16, (Pixel64{32640, 16384, 128, 9}));
  EXPECT_EQ(pF, (Pixel128{0.5f, 128 * 0.003921569f, 0.5f, 0.5f}));
  const Words pic = randomWords(15, 3);
  for (auto kind : kSurfaceKinds) {
    auto src = surfaceOf(5, 3, pic, kind), dst = surfaceOf(5, 3, Words(15, kOther), kind);
    EXPECT_EQ(VexoBucket(dst->dc(), dst->bitmap(), src->dc(), src->bitmap(), 0x00FF8001u, 2), 3);
    Words expect = coloursOf(pic);
    for (auto& w : expect) w = (w & 0x00FFFFu) | 0x010000u;
    EXPECT_TRUE(wordsOf(*dst) == expect && wordsOf(*src) == pic);
    EXPECT_EQ(VexoBucket(dst->dc(), dst->bitmap(), src->dc(), nullptr, 0, 1), -1);
    effects::ScratchLimit none(0);
    EXPECT_EQ(VexoBucket(src->dc(), src->bitmap(), src->dc(), src->bitmap(), 0, 1), 0);
    EXPECT_EQ(wordsOf(*src), pic);
  }
}

// Modes 0..3 and another, tolerance 10, key red 200, green 100, blue 50.
TEST(ColorMask, ModesAndLayouts) {
  const struct { uint8_t b, g, r, m[5]; } cases[] = {
      {0, 0, 255, {0, 255, 255, 255, 0}},       // pure red: 0 in mode 0
      {50, 100, 200, {255, 255, 255, 0, 0}},    // the key: 0 in mode 3
      {40, 110, 190, {255, 255, 255, 10, 0}},   // at the tolerance: 30 / 3
      {50, 100, 211, {255, 255, 255, 255, 0}},  // one step outside
      {5, 10, 3, {252, 245, 250, 255, 0}},      // 255 - the keyed channel
  };
  for (const auto& c : cases)
    for (int32_t mode : {0, 1, 2, 3, 7}) {
      Pixel32 p{c.b, c.g, c.r, 77};
      VexoColorMask32(1, 1, &p, mode, 10, 200, 100, 50);
      EXPECT_EQ(p, (Pixel32{c.b, c.g, c.r, c.m[mode == 7 ? 4 : mode]})) << mode;
    }
  // 16 bits: 32767 for full, elements read as signed (40000 is negative)
  std::vector<Pixel64> p16{{40000, 0, 100, 1}, {1000, 2000, 3003, 1}};
  VexoColorMask64(2, 1, p16.data(), 0, 10, 0, 0, 0);
  EXPECT_TRUE(p16[0].mask == 32667 && p16[1].mask == 32767);
  VexoColorMask64(2, 1, p16.data(), 3, 10, 3000, 2000, 1000);
  EXPECT_EQ(p16[1].mask, 1);
  // float: tolerance 6 / 255 = 0.0235 covers blue 0.01 and green 0.02
  Pixel128 pF{0.01f, 0.02f, 0.5f, 9.0f};
  VexoColorMask128(1, 1, &pF, 0, 6, 0, 0, 0);
  EXPECT_EQ(pF.mask, 0.5f);
}

// A white picture of the source's size, placed as GDI places it; the result
// is the source's scan lines.
TEST(WhiteCanvas, TheSourceSizeInWhite) {
  const uint32_t W = 0xFFFFFFu;
  for (auto kind : kSurfaceKinds) {
    auto src = surfaceOf(3, 2, randomWords(6, 1), kind), big = surfaceOf(4, 3, Words(12, kOther), kind);
    EXPECT_EQ(VexoWhiteCanvas(big->dc(), big->bitmap(), src->dc(), src->bitmap()), 2);
    EXPECT_EQ(wordsOf(*big), (Words{W, W, W, kOther, W, W, W, kOther, kOther, kOther, kOther, kOther}));
    EXPECT_EQ(VexoWhiteCanvas(big->dc(), big->bitmap(), src->dc(), nullptr), -1);
  }
}
