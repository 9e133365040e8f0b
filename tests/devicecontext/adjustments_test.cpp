// The adjustment entry points on bitmaps, natively against the stand-in and
// on Windows against real GDI (DIB sections and device-dependent bitmaps).
#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "core/scratch.h"
#include "devicecontext/bitmaps.h"
#include "effects/effects.h"

using namespace effects::test;

namespace {

constexpr int32_t kW = 7, kH = 3;  // rows of 21 bytes padded to 24

// The colours of `words` after a 32-bit buffer export.
Words afterBufferExport(const Words& words, const std::function<void(std::vector<Pixel32>&)>& run) {
  std::vector<Pixel32> px;
  for (uint32_t w : words) px.push_back({uint8_t(w), uint8_t(w >> 8), uint8_t(w >> 16), uint8_t(w >> 24)});
  run(px);
  Words out;
  for (const auto& p : px) out.push_back(word(p.blue, p.green, p.red));
  return out;
}

// One pixel through an in-place export.
uint32_t onePixel(uint32_t colour, const std::function<int32_t(void*, void*)>& run) {
  auto s = surfaceOf(1, 1, {colour});
  EXPECT_EQ(run(s->dc(), s->bitmap()), 1);
  return s->at(0, 0);
}

}  // namespace

// Where the arithmetic is the buffer export's, the bitmap gets exactly the
// buffer export's colours, for every setting tried; the result is the scan
// lines read; a source-to-destination export leaves its source alone.
TEST(DeviceContextAdjust, RepeatTheBufferExports) {
  const Words pic = randomWords(kW * kH, 1);
  const int32_t n = kW * kH * 4;
  for (auto kind : kSurfaceKinds) {
    for (int32_t v : {-300, -255, -40, 0, 1, 4, 60, 255, 350, 600}) {
      auto a = surfaceOf(kW, kH, pic, kind), b = surfaceOf(kW, kH, pic, kind);
      EXPECT_EQ(VexoSaturation(a->dc(), a->bitmap(), v), kH);
      EXPECT_EQ(VexoHue(b->dc(), b->bitmap(), v), kH);
      EXPECT_EQ(wordsOf(*a), afterBufferExport(pic, [&](auto& px) { VexoSaturation32(n, px.data(), v); })) << v;
      EXPECT_EQ(wordsOf(*b), afterBufferExport(pic, [&](auto& px) { VexoHue32(kW, kH, px.data(), v); })) << v;
    }
    for (int32_t channel = 0; channel <= 5; ++channel) {
      auto src = surfaceOf(kW, kH, pic, kind), inv = surfaceOf(kW, kH, Words(kW * kH, 0), kind);
      auto grey = surfaceOf(kW, kH, Words(kW * kH, 0), kind), copy = surfaceOf(kW, kH, pic, kind);
      auto filter = surfaceOf(kW, kH, Words(kW * kH, 0), kind);
      EXPECT_EQ(VexoInvert(inv->dc(), inv->bitmap(), src->dc(), src->bitmap(), channel), kH);
      EXPECT_EQ(VexoGrayScale(grey->dc(), grey->bitmap(), src->dc(), src->bitmap(), channel), kH);
      EXPECT_EQ(VexoRGBChannelFilter(copy->dc(), copy->bitmap(), channel), kH);
      EXPECT_EQ(VexoColorFilter(filter->dc(), filter->bitmap(), src->dc(), src->bitmap(), 99, channel, 99), kH);
      EXPECT_EQ(wordsOf(*inv), afterBufferExport(pic, [&](auto& px) { VexoInvert32(n, px.data(), channel); }));
      EXPECT_EQ(wordsOf(*grey), afterBufferExport(pic, [&](auto& px) { VexoGrayScale32(n, px.data(), channel); }));
      EXPECT_EQ(wordsOf(*copy), afterBufferExport(pic, [&](auto& px) { VexoRGBChannelFilter32(n, px.data(), channel); }));
      if (channel != 4 && channel != 5) {  // the mixing filters differ; see below
        EXPECT_EQ(wordsOf(*filter), afterBufferExport(pic, [&](auto& px) { VexoColorFilter32(n, px.data(), channel); }));
      }
      EXPECT_EQ(wordsOf(*src), pic);
    }
  }
}

// One pixel, exact values: the signed mixing filters, whole stops, the table
// gamma (which at 1.0 still moves some bytes down by one), the six levels of
// the web palette.
TEST(DeviceContextAdjust, WorkedExamples) {
  auto filter = [](int32_t f) {
    return [f](void* dc, void* bm) { return VexoColorFilter(dc, bm, dc, bm, 0, f, 0); };
  };
  auto stops = [](double s) { return [s](void* dc, void* bm) { return Vexofstop(dc, bm, s); }; };
  auto gamma = [](float g) { return [g](void* dc, void* bm) { return VexoGamma(dc, bm, g); }; };
  const struct {
    const char* what;
    uint32_t in;
    std::function<int32_t(void*, void*)> run;
    uint32_t out;
  } cases[] = {
      {"filter 4: red 200 green 200", word(9, 200, 200), filter(4), word(0, 200, 200)},
      {"filter 4: red 100 green 50", word(9, 50, 100), filter(4), word(0, 75, 75)},
      {"filter 4: red 200 green 50: (-56 + 50) / 2 = -3", word(9, 50, 200), filter(4), word(0, 253, 253)},
      {"filter 5: red and blue", word(130, 9, 129), filter(5), word(130, 0, 130)},
      {"filter 6: green and blue", word(255, 1, 9), filter(6), word(0, 0, 0)},
      {"filter 7: nothing", word(1, 2, 3), filter(7), word(1, 2, 3)},
      {"one stop doubles, clamped", word(10, 127, 128), stops(1.0), word(20, 254, 255)},
      {"no stops: unchanged", word(10, 127, 128), stops(0.0), word(10, 127, 128)},
      {"minus one stop halves, truncated", word(11, 127, 255), stops(-1.0), word(5, 63, 127)},
      {"half a stop: x 1.41421356", word(100, 181, 200), stops(0.5), word(141, 255, 255)},
      {"gamma 1 through the table", word(33, 34, 244), gamma(1.0f), word(32, 34, 243)},
      {"gamma 2: square roots", word(1, 64, 128), gamma(2.0f), word(15, 127, 180)},
      {"gamma 0: black but white", word(254, 255, 1), gamma(0.0f), word(0, 255, 0)},
      {"gamma below 0 as 0", word(254, 255, 1), gamma(-3.0f), word(0, 255, 0)},
  };
  for (const auto& c : cases) EXPECT_EQ(onePixel(c.in, c.run), c.out) << c.what;

  // every byte through the palette, by the value before the change
  const uint8_t edges[][2] = {{0, 0}, {25, 0}, {26, 51}, {77, 51}, {78, 102}, {128, 102}, {129, 153},
                              {179, 153}, {180, 204}, {230, 204}, {231, 255}, {255, 255}};
  for (const auto& e : edges)
    EXPECT_EQ(onePixel(word(e[0], e[0], e[0]), [](void* dc, void* bm) { return VexoWebColour(dc, bm); }),
              word(e[1], e[1], e[1]))
        << int(e[0]);
}

// Edge-only smoothing: flat pictures stay, a hard edge mixes by the share of
// differing cells, and the walk goes in buffer order (bottom row first) and
// feeds its results forward.
TEST(DeviceContextAdjust, AntiAlias) {
  auto run = [](int32_t w, int32_t h, const Words& in) {
    auto s = surfaceOf(w, h, in);
    EXPECT_EQ(VexoAntiAlias(s->dc(), s->bitmap()), h);
    return wordsOf(*s);
  };
  const uint32_t W = word(255, 255, 255), D = word(9, 9, 9), K = 0;
  // three differing cells (the left column): six parts own, three theirs
  EXPECT_EQ(run(3, 3, {W, D, D, W, D, D, W, D, D}), (Words{W, D, D, W, word(91, 91, 91), D, W, D, D}));
  // within 50 of the pixel's brightness counts as its own colour
  EXPECT_EQ(run(3, 3, {D, D, D, D, word(59, 59, 59), D, D, D, D}),
            (Words{D, D, D, D, word(59, 59, 59), D, D, D, D}));
  // bottom row first: (1, 2) turns 28 before (1, 1), which then sees 28
  // within its band and stays black; top-down it would be the other way
  EXPECT_EQ(run(3, 4, {K, K, K, K, K, K, K, W, K, K, K, K}), (Words{K, K, K, K, K, K, K, word(28, 28, 28), K, K, K, K}));
  // left to right: (2, 1) sees the 28 that (1, 1) became
  EXPECT_EQ(run(4, 3, {K, K, K, K, K, W, K, K, K, K, K, K}), (Words{K, K, K, K, K, word(28, 28, 28), K, K, K, K, K, K}));
  // under 3 x 3: unchanged
  const Words thin = randomWords(8, 3);
  EXPECT_EQ(run(2, 4, thin), coloursOf(thin));
  EXPECT_EQ(run(4, 2, thin), coloursOf(thin));
}

// -1 for a bitmap GDI cannot describe, 0 and nothing written without memory;
// heights of 1 and 2.
TEST(DeviceContextAdjust, FailuresAndSmallBitmaps) {
  const Words pic = randomWords(5 * 2, 4);
  auto s = surfaceOf(5, 2, pic);
  EXPECT_EQ(VexoSaturation(s->dc(), nullptr, 10), -1);
  EXPECT_EQ(VexoInvert(s->dc(), s->bitmap(), s->dc(), nullptr, 1), -1);
  EXPECT_EQ(VexoWebColour(nullptr, s->bitmap()), -1);
  {
    effects::ScratchLimit none(0);
    EXPECT_EQ(VexoGamma(s->dc(), s->bitmap(), 2.0f), 0);
    EXPECT_EQ(VexoHue(s->dc(), s->bitmap(), 100), 0);
  }
  EXPECT_EQ(wordsOf(*s), pic);
  const Words row = randomWords(5, 5);
  auto r = surfaceOf(5, 1, row);
  {
    effects::ScratchLimit pictureOnly(16);  // the 16-byte row, not the 20 bytes of 32-bit pixels
    EXPECT_EQ(VexoSaturation(r->dc(), r->bitmap(), 10), 0);
  }
  EXPECT_EQ(wordsOf(*r), row);
  EXPECT_EQ(VexoInvert(s->dc(), s->bitmap(), s->dc(), s->bitmap(), 1), 2);
  auto one = surfaceOf(3, 1, {word(1, 2, 3), word(4, 5, 6), word(7, 8, 9)});
  EXPECT_EQ(VexoInvert(one->dc(), one->bitmap(), one->dc(), one->bitmap(), 1), 1);
  EXPECT_EQ(wordsOf(*one), (Words{word(254, 253, 252), word(251, 250, 249), word(248, 247, 246)}));
}
