// Selection and fill: the magic wand and the bitmap members natively against
// the stand-in and on Windows against real GDI; the buffer members.
#include <gtest/gtest.h>

#include <deque>
#include <vector>

#include "core/scratch.h"
#include "devicecontext/bitmaps.h"
#include "effects/effects.h"
#include "support/pictures.h"

using namespace effects::test;

namespace {

constexpr uint32_t kTarget = 0x7F102030u;  // blue 0x30, green 0x20, red 0x10: COLORREF 0x00302010
constexpr uint32_t kOther = 0x7F405060u;

void wand(TestSurface& s, int32_t x, int32_t y, int32_t limitX, int32_t limitX2, uint32_t colour) {
  VexoMagicWand(s.dc(), x, y, limitX, limitX2, colour & 0xFF, colour >> 8 & 0xFF, colour >> 16 & 0xFF);  // a COLORREF
}

// Which pixels are painted: the four-connected pixels of the start's colour
// with 0 <= x < min(limitX, limitX2), found by a breadth-first search.
std::vector<bool> component(const Words& pic, int32_t w, int32_t h, int32_t x0, int32_t y0, int32_t limit) {
  std::vector<bool> in(pic.size());
  auto ok = [&](int32_t x, int32_t y) {
    return x >= 0 && y >= 0 && x < w && y < h && x < limit && !in[size_t(y * w + x)] &&
           colourOf(pic[size_t(y * w + x)]) == colourOf(pic[size_t(y0 * w + x0)]);
  };
  std::deque<std::pair<int32_t, int32_t>> todo;
  if (ok(x0, y0)) todo.push_back({x0, y0}), in[size_t(y0 * w + x0)] = true;
  while (!todo.empty()) {
    auto [x, y] = todo.front();
    todo.pop_front();
    for (auto [dx, dy] : {std::pair{1, 0}, {0, 1}, {-1, 0}, {0, -1}})
      if (ok(x + dx, y + dy)) todo.push_back({x + dx, y + dy}), in[size_t((y + dy) * w + x + dx)] = true;
  }
  return in;
}

}  // namespace

// Random two-colour pictures, starts and limits: exactly the start's
// four-connected region within the limits turns black (fourth byte 0 too),
// on both kinds of bitmap.
TEST(MagicWand, PaintsTheFourConnectedRegionWithinTheLimits) {
  for (auto kind : kSurfaceKinds) {
    for (uint32_t seed = 1; seed <= 30; ++seed) {
      const int32_t w = 1 + int32_t(seed % 9), h = 1 + int32_t(seed * 7 % 8);
      Words pic = randomWords(size_t(w * h), seed);
      for (auto& p : pic) p = (p & 3u) ? kTarget : kOther;
      auto s = surfaceOf(w, h, pic, kind);
      const int32_t x = int32_t(seed % uint32_t(w)), y = int32_t(seed / 3 % uint32_t(h));
      const int32_t limitX = seed % 4 ? w + 3 : w - 1, limitX2 = seed % 5 ? w : 2;
      const auto in = component(pic, w, h, x, y, std::min(limitX, limitX2));
      wand(*s, x, y, limitX, limitX2, colourOf(pic[size_t(y * w + x)]) == colourOf(kTarget) ? 0x302010u : 0x605040u);
      const Words after = wordsOf(*s);
      for (size_t i = 0; i < pic.size(); ++i) EXPECT_EQ(after[i], in[i] ? 0u : pic[i]) << "seed " << seed << " pixel " << i;
    }
  }
}

// The cases the plain recursive walk gets wrong or never finishes, and the
// starts that paint nothing.
TEST(MagicWand, EndsOnEveryStart) {
  // a one-pixel diagonal: only the start (four-way connectivity)
  Words diagonal(16, kOther);
  for (int i = 0; i < 4; ++i) diagonal[size_t(i * 5)] = kTarget;
  auto d = surfaceOf(4, 4, diagonal);
  wand(*d, 1, 1, 4, 4, 0x302010u);
  Words expect = diagonal;
  expect[5] = 0;
  EXPECT_EQ(wordsOf(*d), expect);

  // a black target ends; its region is painted (black again, fourth byte 0)
  Words black(12, 0xAA000000u);
  black[3] = black[7] = black[11] = kOther;  // cuts off the last column
  auto b = surfaceOf(4, 3, black);
  wand(*b, 0, 0, 100, 100, 0);
  EXPECT_EQ(wordsOf(*b), (Words{0, 0, 0, kOther, 0, 0, 0, kOther, 0, 0, 0, kOther}));

  // white: the row below the bitmap (CLR_INVALID, white when split) does not
  // join the two white halves, and a start below the bitmap paints nothing
  Words white(6, 0x00FFFFFFu);
  white[1] = white[4] = kOther;
  auto wt = surfaceOf(3, 2, white);
  wand(*wt, 0, 0, 3, 3, 0xFFFFFF);
  wand(*wt, 1, 2, 3, 3, 0xFFFFFF);
  EXPECT_EQ(wordsOf(*wt), (Words{0, kOther, 0x00FFFFFFu, 0, kOther, 0x00FFFFFFu}));

  // another colour at the start, a negative x or y: nothing
  auto n = surfaceOf(3, 2, Words(6, kTarget));
  wand(*n, 0, 0, 3, 3, 0x605040u);
  wand(*n, -1, 0, 3, 3, 0x302010u);
  wand(*n, 0, -1, 3, 3, 0x302010u);
  EXPECT_EQ(wordsOf(*n), Words(6, kTarget));

  // a region far deeper than any call stack would take
  auto big = surfaceOf(300, 300, Words(300 * 300, kTarget));
  wand(*big, 150, 150, 300, 300, 0x302010u);
  EXPECT_EQ(wordsOf(*big), Words(300 * 300, 0u));
}

// The 16-bit member scales by 128 (255 gives 32640), the float one by 1/255;
// the channel selector picks the elements; the mask stays.
TEST(Bucket, BuffersTakeTheColourInTheirUnits) {
  const uint32_t colour = 0x00FF8001u;  // red 1, green 128, blue 255
  std::vector<Pixel32> p8{{9, 9, 9, 9}, {8, 8, 8, 8}};
  std::vector<Pixel64> p16{{9, 9, 9, 9}};
  std::vector<Pixel128> pF{{0.5f, 0.5f, 0.5f, 0.5f}};
  EXPECT_EQ(VexoBucket32(5, p8.data(), colour, 1), 0);
  EXPECT_EQ(VexoBucket64(4, p16.data(), colour, 1), 0);
  EXPECT_EQ(VexoBucket128(4, pF.data(), colour, 1), 0);
  EXPECT_EQ(p8, (std::vector<Pixel32>{{255, 128, 1, 9}, {255, 128, 1, 8}}));
  EXPECT_EQ(p16[0], (Pixel64{32640, 16384, 128, 9}));
  EXPECT_EQ(pF[0], (Pixel128{1.0f, 128.0f * 0.003921569f, 0.003921569f, 0.5f}));
  for (auto [channel, out] : {std::pair{2, Pixel32{9, 9, 1, 9}}, {3, Pixel32{9, 128, 9, 9}}, {4, Pixel32{255, 9, 9, 9}},
                              {0, Pixel32{9, 9, 9, 9}}, {5, Pixel32{9, 9, 9, 9}}}) {
    Pixel32 p{9, 9, 9, 9};
    VexoBucket32(4, &p, colour, channel);
    EXPECT_EQ(p, out) << channel;
  }
}

// The bitmap member fills the source's picture and writes it to the
// destination: the scan lines read, -1 for a source GDI cannot describe, 0
// (nothing written) without memory to read it into.
TEST(Bucket, BitmapToBitmap) {
  const Words pic = randomWords(15, 3);
  for (auto kind : kSurfaceKinds) {
    auto src = surfaceOf(5, 3, pic, kind), dst = surfaceOf(5, 3, Words(15, kOther), kind);
    EXPECT_EQ(VexoBucket(dst->dc(), dst->bitmap(), src->dc(), src->bitmap(), 0x00FF8001u, 3), 3);
    Words expect = coloursOf(pic);
    for (auto& w : expect) w = (w & 0xFF00FFu) | 0x8000u;
    EXPECT_EQ(wordsOf(*dst), expect);
    EXPECT_EQ(wordsOf(*src), pic);
    EXPECT_EQ(VexoBucket(dst->dc(), dst->bitmap(), src->dc(), nullptr, 0, 1), -1);
    effects::ScratchLimit none(0);
    EXPECT_EQ(VexoBucket(src->dc(), src->bitmap(), src->dc(), src->bitmap(), 0, 1), 0);
    EXPECT_EQ(wordsOf(*src), pic);
  }
}

// Worked examples of the four modes, with a pixel just outside the
// tolerance, in the three layouts.
TEST(ColorMask, ModesAndLayouts) {
  // blue, green, red, then what modes 0..3 and 7 write (tolerance 10, key
  // red 200, green 100, blue 50)
  const struct { uint8_t b, g, r, m0, m1, m2, m3, m7; } cases[] = {
      {0, 0, 255, 0, 255, 255, 255, 0},          // pure red
      {50, 100, 200, 255, 255, 255, 0, 0},        // the key itself
      {40, 110, 190, 255, 255, 255, 10, 0},      // at the tolerance: (10 + 10 + 10) / 3
      {50, 100, 211, 255, 255, 255, 255, 0},     // red one step outside
      {5, 10, 3, 252, 245, 250, 255, 0},          // dark: 255 - the keyed channel
      {9, 200, 2, 255, 55, 255, 255, 0},
  };
  for (const auto& c : cases) {
    uint8_t got[5];
    int i = 0;
    for (int32_t mode : {0, 1, 2, 3, 7}) {
      Pixel32 p{c.b, c.g, c.r, 77};
      EXPECT_EQ(VexoColorMask32(1, 1, &p, mode, 10, 200, 100, 50), 0);
      EXPECT_TRUE(p.blue == c.b && p.green == c.g && p.red == c.r);
      got[i++] = p.mask;
    }
    EXPECT_TRUE(got[0] == c.m0 && got[1] == c.m1 && got[2] == c.m2 && got[3] == c.m3 && got[4] == c.m7)
        << int(c.b) << "," << int(c.g) << "," << int(c.r) << ": " << int(got[0]) << " " << int(got[1]) << " "
        << int(got[2]) << " " << int(got[3]) << " " << int(got[4]);
  }
  // 16 bits: unscaled, 32767 for full, elements compared as signed values
  // (40000 reads as negative, so it is "below" any tolerance)
  std::vector<Pixel64> p16{{40000, 0, 100, 1}, {1000, 2000, 3003, 1}};
  VexoColorMask64(2, 1, p16.data(), 0, 10, 0, 0, 0);
  EXPECT_EQ(p16[0].mask, 32667);
  EXPECT_EQ(p16[1].mask, 32767);
  VexoColorMask64(2, 1, p16.data(), 3, 10, 3000, 2000, 1000);
  EXPECT_EQ(p16[1].mask, 1);  // (3 + 0 + 0) / 3
  // float: t and the key times 1/255; the mean times 0.33333334f
  std::vector<Pixel128> pF{{0.2f, 0.4f, 0.6f, 9.0f}, {0.01f, 0.02f, 0.5f, 9.0f}};
  VexoColorMask128(2, 1, pF.data(), 3, 255, 153, 102, 51);
  const float r = float(153 * 0.00392156862745098),
              g = float(102 * 0.00392156862745098), b = float(51 * 0.00392156862745098);
  EXPECT_EQ(bitsOf(pF[0].mask), bitsOf((std::fabs(r - 0.6f) + std::fabs(g - 0.4f) + std::fabs(b - 0.2f)) * 0.33333334f));
  VexoColorMask128(2, 1, pF.data(), 0, 6, 0, 0, 0);  // t = 0.0235
  EXPECT_EQ(pF[0].mask, 1.0f);
  EXPECT_EQ(bitsOf(pF[1].mask), bitsOf(1.0f - 0.5f));
}

// Outside the inclusive rectangle a quarter of each colour (truncated);
// inside, and every mask, unchanged.
TEST(CropPreview, DarkensOutsideTheRectangle) {
  const auto base = pattern<Pixel32>(5 * 4, 4);
  auto px = base;
  EXPECT_EQ(VexoCropPreview32(5, 4, px.data(), 0, 0, 4, 3), 0);
  EXPECT_EQ(px, base);
  EXPECT_EQ(VexoCropPreview32(5, 4, px.data(), 1, 1, 3, 2), 0);
  for (int32_t y = 0; y < 4; ++y)
    for (int32_t x = 0; x < 5; ++x) {
      const Pixel32 b = base[size_t(y * 5 + x)];
      const bool inside = x >= 1 && x <= 3 && y >= 1 && y <= 2;
      const Pixel32 want = inside ? b : Pixel32{uint8_t(b.blue >> 2), uint8_t(b.green >> 2), uint8_t(b.red >> 2), b.mask};
      EXPECT_EQ(px[size_t(y * 5 + x)], want) << x << "," << y;
    }
  px = base;
  EXPECT_EQ(VexoCropPreview32(5, 0, px.data(), 9, 9, -9, -9), 0);
  EXPECT_EQ(px, base);
}

// The destination turns white where a picture of the source's size lands on
// it (bottom-up rows placed as GDI places them); the result is what the
// description of the source returned.
TEST(WhiteCanvas, TheSourceSizeInWhite) {
  for (auto kind : kSurfaceKinds) {
    auto src = surfaceOf(3, 2, randomWords(6, 1), kind);
    auto same = surfaceOf(3, 2, randomWords(6, 2), kind);
    EXPECT_EQ(VexoWhiteCanvas(same->dc(), same->bitmap(), src->dc(), src->bitmap()), 2);
    EXPECT_EQ(wordsOf(*same), Words(6, 0x00FFFFFFu));
    auto big = surfaceOf(4, 3, Words(12, kOther), kind);
    EXPECT_EQ(VexoWhiteCanvas(big->dc(), big->bitmap(), src->dc(), src->bitmap()), 2);
    const uint32_t w = 0x00FFFFFFu;
    EXPECT_EQ(wordsOf(*big), (Words{w, w, w, kOther, w, w, w, kOther, kOther, kOther, kOther, kOther}));
    EXPECT_EQ(VexoWhiteCanvas(big->dc(), big->bitmap(), src->dc(), nullptr), -1);
  }
}
