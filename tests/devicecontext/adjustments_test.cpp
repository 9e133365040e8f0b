// The adjustment entry points on bitmaps, natively against the stand-in and
// on Windows against real GDI (DIB sections and device-dependent bitmaps).
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <utility>
#include <vector>

#include "core/scratch.h"
#include "devicecontext/bitmaps.h"
#include "effects/effects.h"

using namespace effects::test;

namespace {

using OnBitmap = std::function<int32_t(void*, void*)>;

Words after(int32_t w, int32_t h, const Words& in, const OnBitmap& run, TestSurface::Kind kind = {}) {
  auto s = surfaceOf(w, h, in, kind);
  EXPECT_EQ(run(s->dc(), s->bitmap()), h);
  return wordsOf(*s);
}

}  // namespace

// Where the arithmetic is the 32-bit buffer export's, the bitmap gets that
// export's colours for every setting tried (7 pixels a row: padded rows).
TEST(DeviceContextAdjust, RepeatTheBufferExports) {
  const int32_t w = 7, h = 3, n = w * h * 4;
  const Words pic = randomWords(w * h, 1);
  auto buffer = [&](auto run) {
    auto px = pixelsOf(pic);
    run(px.data());
    return coloursOf(px);
  };
  for (auto kind : kSurfaceKinds) {
    for (int32_t v : {-300, -255, -40, 0, 4, 60, 255, 350, 600}) {
      EXPECT_EQ(after(w, h, pic, [v](void* dc, void* bm) { return VexoSaturation(dc, bm, v); }, kind),
                buffer([&](Pixel32* p) { VexoSaturation32(n, p, v); }));
      EXPECT_EQ(after(w, h, pic, [v](void* dc, void* bm) { return VexoHue(dc, bm, v); }, kind),
                buffer([&](Pixel32* p) { VexoHue32(w, h, p, v); }));
    }
    for (int32_t c = 0; c <= 5; ++c) {
      auto src = surfaceOf(w, h, pic, kind), inv = surfaceOf(w, h, Words(w * h), kind), grey = surfaceOf(w, h, Words(w * h), kind);
      EXPECT_EQ(VexoInvert(inv->dc(), inv->bitmap(), src->dc(), src->bitmap(), c), h);
      EXPECT_EQ(VexoGrayScale(grey->dc(), grey->bitmap(), src->dc(), src->bitmap(), c), h);
      EXPECT_EQ(wordsOf(*inv), buffer([&](Pixel32* p) { VexoInvert32(n, p, c); }));
      EXPECT_EQ(wordsOf(*grey), buffer([&](Pixel32* p) { VexoGrayScale32(n, p, c); }));
      EXPECT_EQ(wordsOf(*src), pic);
      EXPECT_EQ(after(w, h, pic, [c](void* dc, void* bm) { return VexoRGBChannelFilter(dc, bm, c); }, kind),
                buffer([&](Pixel32* p) { VexoRGBChannelFilter32(n, p, c); }));
      EXPECT_EQ(after(w, h, pic, [c](void* dc, void* bm) { return VexoColorFilter(dc, bm, dc, bm, 9, c < 4 ? c : c + 3, 9); }, kind),
                buffer([&](Pixel32* p) { VexoColorFilter32(n, p, c < 4 ? c : c + 3); }));
    }
  }
}

// One pixel: the signed mixing filters, whole stops, the truncating gamma
// table (which at 1.0 still moves some bytes down by one), the palette.
TEST(DeviceContextAdjust, WorkedExamples) {
  auto filter = [](int32_t f) { return OnBitmap([f](void* dc, void* bm) { return VexoColorFilter(dc, bm, dc, bm, 0, f, 0); }); };
  auto stops = [](double s) { return OnBitmap([s](void* dc, void* bm) { return Vexofstop(dc, bm, s); }); };
  auto gamma = [](float g) { return OnBitmap([g](void* dc, void* bm) { return VexoGamma(dc, bm, g); }); };
  const OnBitmap web = [](void* dc, void* bm) { return VexoWebColour(dc, bm); };
  const struct { uint32_t in; OnBitmap run; uint32_t out; } cases[] = {
      {word(9, 200, 200), filter(4), word(0, 200, 200)},  // (-56 + -56) / 2 = -56
      {word(9, 50, 100), filter(4), word(0, 75, 75)},
      {word(9, 50, 200), filter(4), word(0, 253, 253)},   // (-56 + 50) / 2 = -3
      {word(130, 9, 129), filter(5), word(130, 0, 130)},  // -253 / 2 = -126
      {word(255, 1, 9), filter(6), word(0, 0, 0)},
      {word(10, 127, 128), stops(1.0), word(20, 254, 255)},
      {word(11, 127, 255), stops(-1.0), word(5, 63, 127)},
      {word(100, 181, 200), stops(0.5), word(141, 255, 255)},
      {word(33, 34, 244), gamma(1.0f), word(32, 34, 243)},
      {word(1, 64, 128), gamma(2.0f), word(15, 127, 180)},
      {word(254, 255, 1), gamma(-3.0f), word(0, 255, 0)},  // as 0: 1 / 0 is infinite
      {word(25, 26, 77), web, word(0, 51, 51)},
      {word(78, 128, 129), web, word(102, 102, 153)},
      {word(179, 180, 231), web, word(153, 204, 255)},
  };
  for (const auto& c : cases) EXPECT_EQ(after(1, 1, {c.in}, c.run), Words{c.out}) << &c - cases;
}

// Edge-only smoothing: a hard edge mixes by the share of differing cells;
// within 50 counts as the pixel's own colour; the walk goes bottom row first
// and left to right and reads cells already smoothed.
TEST(DeviceContextAdjust, AntiAlias) {
  const OnBitmap aa = [](void* dc, void* bm) { return VexoAntiAlias(dc, bm); };
  const uint32_t W = word(255, 255, 255), D = word(9, 9, 9), K = 0, S = word(28, 28, 28), E = word(59, 59, 59);
  EXPECT_EQ(after(3, 3, {W, D, D, W, D, D, W, D, D}, aa), (Words{W, D, D, W, word(91, 91, 91), D, W, D, D}));
  EXPECT_EQ(after(3, 3, {D, D, D, D, E, D, D, D, D}, aa), (Words{D, D, D, D, E, D, D, D, D}));
  // (1, 2) becomes 28 first; (1, 1) then sees 28, within its band
  EXPECT_EQ(after(3, 4, {K, K, K, K, K, K, K, W, K, K, K, K}, aa), (Words{K, K, K, K, K, K, K, S, K, K, K, K}));
  EXPECT_EQ(after(4, 3, {K, K, K, K, K, W, K, K, K, K, K, K}, aa), (Words{K, K, K, K, K, S, K, K, K, K, K, K}));
  const Words thin = randomWords(8, 3);
  EXPECT_TRUE(after(2, 4, thin, aa) == coloursOf(thin) && after(4, 2, thin, aa) == coloursOf(thin));
}

// The smoothing as a plain walk over the cells, each cell's brightness
// taken where it is read: the rows go bottom first (the order GDI delivers
// them), left to right, in place.
Words antiAliased(int32_t w, int32_t h, Words px) {
  auto level = [](uint32_t c) { return int32_t(((c & 0xFF) + (c >> 8 & 0xFF) + (c >> 16 & 0xFF)) / 3); };
  for (int32_t y = h - 2; y >= 1; --y)
    for (int32_t x = 1; x + 1 < w; ++x) {
      const uint32_t own = px[size_t(y * w + x)];
      uint32_t sum[3] = {};
      for (int32_t dy = -1; dy <= 1; ++dy)
        for (int32_t dx = -1; dx <= 1; ++dx) {
          const uint32_t cell = px[size_t((y + dy) * w + x + dx)];
          const uint32_t c = std::abs(level(cell) - level(own)) <= 50 ? own : cell;
          for (int k = 0; k < 3; ++k) sum[k] += c >> (8 * k) & 0xFF;
        }
      px[size_t(y * w + x)] = word(uint8_t(sum[0] / 9), uint8_t(sum[1] / 9), uint8_t(sum[2] / 9));
    }
  return coloursOf(px);
}

// The walk with its kept rows of brightness gives the plain walk's colours
// on pictures with edges everywhere (colours drawn from a few far-apart
// levels, so cells fall on both sides of the band).
TEST(DeviceContextAdjust, AntiAliasAsThePlainWalk) {
  const OnBitmap aa = [](void* dc, void* bm) { return VexoAntiAlias(dc, bm); };
  for (auto [w, h] : {std::pair{3, 3}, std::pair{37, 23}, std::pair{64, 5}}) {
    Words pic = randomWords(size_t(w * h), uint32_t(w));
    for (auto& c : pic) c = (c & 0x3F3F3F3Fu) + 0x40404040u * ((c >> 6) & 3);
    EXPECT_EQ(after(w, h, pic, aa), antiAliased(w, h, pic)) << w << " x " << h;
  }
}

// -1 for a bitmap GDI cannot describe, 0 and nothing written without memory
// for the picture or the widened row.
TEST(DeviceContextAdjust, Failures) {
  const Words row = randomWords(5, 4);
  auto s = surfaceOf(5, 1, row);
  EXPECT_EQ(VexoSaturation(s->dc(), nullptr, 10), -1);
  EXPECT_EQ(VexoInvert(s->dc(), s->bitmap(), s->dc(), nullptr, 1), -1);
  EXPECT_EQ(VexoWebColour(nullptr, s->bitmap()), -1);
  effects::ScratchLimit pictureOnly(16);  // the 16-byte row, not 5 pixels of 4 bytes
  EXPECT_EQ(VexoSaturation(s->dc(), s->bitmap(), 10), 0);
  effects::ScratchLimit none(0);
  EXPECT_EQ(VexoGamma(s->dc(), s->bitmap(), 2.0f), 0);
  EXPECT_EQ(wordsOf(*s), row);
}
