// The random effects against pictures worked out from the written draw
// order with the test's own copy of the generator.
#include <gtest/gtest.h>

#include <cmath>
#include <thread>
#include <vector>

#include "filters/stylize_checks.h"
#include "platform/random.h"
#include "support/pictures.h"
#include "support/random_draws.h"

using namespace effects::test;

namespace {

template <class P>
auto clamped(double v) {
  return static_cast<decltype(P{}.blue)>(std::clamp(std::trunc(v), 0.0, sizeof(P) == 4 ? 255.0 : 32767.0));
}

// Noise: count x count times row, column, then blue, green, red.
template <class P>
std::vector<P> noiseByHand(std::vector<P> px, int32_t w, int32_t h, uint32_t seed, int count, const int (&a)[3]) {
  Lcg lcg{seed};
  for (int i = 0; i < count * count; ++i) {
    const int32_t y = int32_t(lcg.unit() * (h - 1)), x = int32_t(lcg.unit() * (w - 1));
    P& p = px[y * w + x];
    const auto b = clamped<P>(lcg.unit() * a[2] + p.blue), g = clamped<P>(lcg.unit() * a[1] + p.green);
    p.red = clamped<P>(lcg.unit() * a[0] + p.red), p.green = g, p.blue = b;
  }
  return px;
}

// Specks: every pixel of the even rows, distance down, then right; no column
// bound, and nothing outside the picture.
template <class P>
std::vector<P> diffuseByHand(std::vector<P> px, int32_t w, int32_t h, uint32_t seed, int spread, const int (&a)[3]) {
  Lcg lcg{seed};
  for (int32_t y = 0; y < h; y += 2)
    for (int32_t x = 0; x < w; ++x) {
      const int32_t dy = int32_t(lcg.unit() * spread), dx = int32_t(lcg.unit() * spread);
      const int64_t i = int64_t(y + dy) * w + x + dx;
      if (i < 0 || i >= int64_t(w) * h) continue;
      px[i].red = clamped<P>(px[i].red + a[0]), px[i].green = clamped<P>(px[i].green + a[1]);
      px[i].blue = clamped<P>(px[i].blue + a[2]);
    }
  return px;
}

// Scratches: positions and products rounded to nearest even; one draw per
// pixel, made even where the pixel lies outside the picture.
template <class P>
std::vector<P> agedByHand(std::vector<P> px, int32_t w, int32_t h, uint32_t seed, int vertical, int horizontal) {
  Lcg lcg{seed};
  auto darken = [&](int64_t i) {
    const double k = lcg.unit();
    if (i < 0 || i >= int64_t(w) * h) return;
    for (auto* e : {&px[i].red, &px[i].green, &px[i].blue}) *e = static_cast<decltype(P{}.blue)>(std::nearbyint(*e * k));
  };
  for (int n = 0; n < vertical; ++n) {
    const int64_t column = int64_t(std::nearbyint(lcg.unit() * w));
    for (int32_t y = 1; y < h; ++y) darken(y * int64_t(w) + column);
  }
  for (int n = 0; n < horizontal; ++n) {
    const int64_t row = int64_t(std::nearbyint(lcg.unit() * h));
    for (int32_t x = 1; x < w; ++x) darken(row * w + x);
  }
  return px;
}

template <class P, class Run>
std::vector<P> seeded(uint32_t seed, std::vector<P> px, Run run) {
  seedDraws(seed);
  run(px.data());
  return px;
}

}  // namespace

TEST(StylizeRandom, FollowTheDrawOrder) {
  const int loud[3] = {200, -90, 60}, wide[3] = {30000, 100, -20000};
  // seedForDraw(1, 32767) puts the first scratch at column `width` (down the
  // first column one row lower) or row `height` (past the picture).
  for (uint32_t seed : {1u, 77u, 123456u, seedForDraw(1, 32767)}) {
    for (auto [w, h] : {std::pair{5, 3}, std::pair{3, 3}, std::pair{1, 1}, std::pair{1, 6}, std::pair{6, 1}}) {
      SCOPED_TRACE(testing::Message() << "seed " << seed << ", " << w << " x " << h);
      const auto a = pattern<Pixel32>(w * h, seed);
      const auto b = pattern<Pixel64>(w * h, seed);
      EXPECT_TRUE(sameBytes(seeded(seed, a, [=](Pixel32* p) { VexoPixelNoise32(w, h, p, 3, 200, -90, 60); }),
                            noiseByHand(a, w, h, seed, 3, loud)));
      EXPECT_TRUE(sameBytes(seeded(seed, b, [=](Pixel64* p) { VexoPixelNoise64(w, h, p, 2, 30000, 100, -20000); }),
                            noiseByHand(b, w, h, seed, 2, wide)));
      // Spread 3 sends specks past the right edge and the end; -2 before the start.
      EXPECT_TRUE(sameBytes(seeded(seed, a, [=](Pixel32* p) { VexoDiffuse32(w, h, p, 3, 200, -90, 60); }),
                            diffuseByHand(a, w, h, seed, 3, loud)));
      EXPECT_TRUE(sameBytes(seeded(seed, a, [=](Pixel32* p) { VexoDiffuse32(w, h, p, -2, 200, -90, 60); }),
                            diffuseByHand(a, w, h, seed, -2, loud)));
      EXPECT_TRUE(sameBytes(seeded(seed, b, [=](Pixel64* p) { VexoDiffuse64(w, h, p, 2, 30000, 100, -20000); }),
                            diffuseByHand(b, w, h, seed, 2, wide)));
      for (auto [v, hz] : {std::pair{1, 0}, std::pair{0, 2}, std::pair{3, 2}}) {
        EXPECT_TRUE(sameBytes(seeded(seed, a, [=](Pixel32* p) { VexoAgedLines32(w, h, p, v, hz); }),
                              agedByHand(a, w, h, seed, v, hz)));
        EXPECT_TRUE(sameBytes(seeded(seed, b, [=](Pixel64* p) { VexoAgedLines64(w, h, p, v, hz); }),
                              agedByHand(b, w, h, seed, v, hz)));
      }
    }
  }
}

TEST(StylizeRandom, SameSeedSamePictureWhateverOtherThreadsDraw) {
  auto run = [](uint32_t seed, bool interrupt) {
    auto px = pattern<Pixel32>(64 * 48, 3);
    seedDraws(seed);
    VexoDiffuse32(64, 48, px.data(), 5, 20, 30, 40);
    if (interrupt) std::thread([] { seedDraws(2), VexoPixelNoise32(1, 1, pattern<Pixel32>(1).data(), 50, 9, 9, 9); }).join();
    VexoAgedLines32(64, 48, px.data(), 10, 10);
    VexoPixelNoise32(64, 48, px.data(), 20, 100, 100, 100);
    VexoRainDrops32(64, 48, px.data(), 10, 9);
    return px;
  };
  const auto once = run(8, false);
  EXPECT_TRUE(sameBytes(run(8, true), once));
  EXPECT_FALSE(sameBytes(run(9, false), once));
  // An empty picture returns before its first draw.
  seedDraws(10);
  for (auto [w, h] : {std::pair{0, 2}, std::pair{2, 0}, std::pair{-3, 2}}) {
    VexoPixelNoise32(w, h, nullptr, 5, 9, 9, 9), VexoDiffuse32(w, h, nullptr, 5, 9, 9, 9);
    VexoAgedLines32(w, h, nullptr, 5, 5), VexoRainDrops32(w, h, nullptr, 5, 5);
  }
  EXPECT_EQ(effects::platform::RandomDraws().next(), Lcg{10}.next());
}

// The float members give the 8-bit members' pictures for the same draws:
// within one step each time the 8-bit noise truncated a pixel.
TEST(StylizeRandom, FloatMembersMatchTheEightBitOnes) {
  constexpr int32_t w = 37, h = 23, count = 20;
  const auto base = pattern<Pixel32>(w * h, 11);
  const auto noise8 = seeded(21, base, [](Pixel32* p) { VexoPixelNoise32(w, h, p, count, 120, -80, 255); });
  const auto noise128 = seeded(21, widen128(base), [](Pixel128* p) { VexoPixelNoise128(w, h, p, count, 120, -80, 255); });
  const auto specks8 = seeded(21, base, [](Pixel32* p) { VexoDiffuse32(w, h, p, 4, -40, 70, 5); });
  const auto specks128 = seeded(21, widen128(base), [](Pixel128* p) { VexoDiffuse128(w, h, p, 4, -40, 70, 5); });
  std::vector<int> hits(w * h, 0);
  Lcg lcg{21};
  for (int i = 0; i < count * count; ++i, lcg.next(), lcg.next(), lcg.next()) {
    const int32_t y = int32_t(lcg.unit() * (h - 1));
    ++hits[y * w + int32_t(lcg.unit() * (w - 1))];
  }
  EXPECT_GT(expectWithin(noise128, noise8, hits), 0);
  EXPECT_EQ(expectWithinOneStep(specks128, specks8), 0);
  const auto one = seeded(seedForDraw(3, 32767), std::vector<Pixel128>{{0.25f, 0.5f, 0.75f, 0.5f}},
                          [](Pixel128* p) { VexoPixelNoise128(1, 1, p, 1, 0, 0, 255); });
  EXPECT_EQ(one[0].blue, 1.25f);  // the whole amount over 255, unclamped
}

TEST(StylizeRainDrops, RadiusOneOnGrey) {
  // Lit from the upper left: +40/256 there, -40/256 and a quarter off on the
  // lower right; the middle is the highlight, 160/256 of the way to white.
  for (uint32_t seed : {3u, 40u, 1000u}) {
    Lcg lcg{seed};
    const int32_t cx = int32_t(lcg.unit() * 4), cy = int32_t(lcg.unit() * 3);
    const auto a = seeded(seed, std::vector<Pixel32>(20, {100, 100, 100, 9}), [](Pixel32* p) { VexoRainDrops32(5, 4, p, 1, 1); });
    const auto b = seeded(seed, std::vector<Pixel64>(20, {12800, 12800, 12800, 9}), [](Pixel64* p) { VexoRainDrops64(5, 4, p, 1, -7); });
    for (int32_t i = 0; i < 20; ++i) {
      const int dx = i % 5 - cx, dy = i / 5 - cy, at = dx * dx + dy * dy > 1 ? 0 : dx + dy < 0 ? 1 : dx + dy > 0 ? 2 : 3;
      const uint8_t want8[4] = {100, 116, 63, 197};
      const uint16_t want16[4] = {12800, 14800, 8100, 25279};
      EXPECT_EQ(a[i], (Pixel32{want8[at], want8[at], want8[at], 9})) << seed << ' ' << i;
      EXPECT_EQ(b[i], (Pixel64{want16[at], want16[at], want16[at], 9})) << seed << ' ' << i;
    }
  }
}

TEST(StylizeRainDrops, LensAndLayouts) {
  // Radius 4 (a third draw of 32767): two pixels from the centre the dome
  // stands 3 high, so the lens shows the centre pixel there.
  const uint32_t seed = seedForDraw(3, 32767);
  Lcg lcg{seed};
  const int32_t cx = int32_t(lcg.unit() * 15), cy = int32_t(lcg.unit() * 15);
  std::vector<Pixel32> px(256);
  for (int32_t i = 0; i < 256; ++i) px[i] = Pixel32{0, uint8_t(10 * (i / 16)), uint8_t(10 * (i % 16)), 9};
  px = seeded(seed, px, [](Pixel32* p) { VexoRainDrops32(16, 16, p, 1, 4); });
  const int32_t gain = cx + 2 < 16 ? 236 : 276;
  const Pixel32 got = px[cy * 16 + (cx + 2 < 16 ? cx + 2 : cx - 2)];
  EXPECT_EQ(got.red, (10 * cx * gain + 128) >> 8);
  EXPECT_EQ(got.green, (10 * cy * gain + 128) >> 8);
  // Many drops, in 16 bits: the 8-bit picture within one step.
  const auto base = pattern<Pixel32>(40 * 30, 17);
  const auto eight = seeded(5, base, [](Pixel32* p) { VexoRainDrops32(40, 30, p, 25, 10); });
  expectWithinOneStep(seeded(5, widen64(base), [](Pixel64* p) { VexoRainDrops64(40, 30, p, 25, 10); }), eight);
  EXPECT_FALSE(sameBytes(eight, base));
}
