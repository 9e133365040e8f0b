// The random effects against pictures worked out from the draw order with
// the test's own copy of the generator, their determinism, and the positions
// at the far edge.
#include <gtest/gtest.h>

#include <cmath>
#include <thread>
#include <type_traits>
#include <vector>

#include "filters/stylize_checks.h"
#include "platform/random.h"
#include "support/pictures.h"
#include "support/random_draws.h"

using namespace effects::test;

namespace {

template <class E>
constexpr int32_t kFull = std::is_same_v<E, uint8_t> ? 255 : 32767;

// trunc, then clamp to the integer layout's range.
template <class E>
E truncClamped(double v) {
  return static_cast<E>(std::clamp<double>(std::trunc(v), 0, kFull<E>));
}

// Pixel noise by hand: row, column, then blue, green, red.
template <class P>
std::vector<P> noiseByHand(std::vector<P> px, int32_t w, int32_t h, int32_t count, int32_t r, int32_t g,
                           int32_t b, uint32_t seed) {
  using E = decltype(P{}.blue);
  Lcg lcg{seed};
  for (int32_t i = 0; i < count * count; ++i) {
    const int32_t y = static_cast<int32_t>(lcg.unit() * (h - 1));
    const int32_t x = static_cast<int32_t>(lcg.unit() * (w - 1));
    P& p = px[y * w + x];
    const E nb = truncClamped<E>(lcg.unit() * b + p.blue);
    const E ng = truncClamped<E>(lcg.unit() * g + p.green);
    const E nr = truncClamped<E>(lcg.unit() * r + p.red);
    p.blue = nb, p.green = ng, p.red = nr;
  }
  return px;
}

// Diffuse by hand: every pixel of the even rows, distance down, then right.
template <class P>
std::vector<P> diffuseByHand(std::vector<P> px, int32_t w, int32_t h, int32_t spread, int32_t r, int32_t g,
                             int32_t b, uint32_t seed) {
  using E = decltype(P{}.blue);
  Lcg lcg{seed};
  for (int32_t y = 0; y < h; y += 2) {
    for (int32_t x = 0; x < w; ++x) {
      const int32_t dy = static_cast<int32_t>(lcg.unit() * spread);
      const int32_t dx = static_cast<int32_t>(lcg.unit() * spread);
      const int64_t i = int64_t(y + dy) * w + (x + dx);
      if (i < 0 || i >= int64_t(w) * h) continue;
      P& p = px[i];
      p.blue = truncClamped<E>(p.blue + b), p.green = truncClamped<E>(p.green + g), p.red = truncClamped<E>(p.red + r);
    }
  }
  return px;
}

// Aged lines by hand: positions and products rounded to nearest even.
template <class P>
std::vector<P> agedByHand(std::vector<P> px, int32_t w, int32_t h, int32_t vertical, int32_t horizontal,
                          uint32_t seed) {
  using E = decltype(P{}.blue);
  Lcg lcg{seed};
  auto darken = [&](int64_t i) {
    const double k = lcg.unit();
    if (i < 0 || i >= int64_t(w) * h) return;
    P& p = px[i];
    p.red = static_cast<E>(std::nearbyint(p.red * k));
    p.green = static_cast<E>(std::nearbyint(p.green * k));
    p.blue = static_cast<E>(std::nearbyint(p.blue * k));
  };
  for (int32_t n = 0; n < vertical; ++n) {
    const int64_t column = static_cast<int64_t>(std::nearbyint(lcg.unit() * w));
    for (int32_t y = 1; y < h; ++y) darken(int64_t(y) * w + column);
  }
  for (int32_t n = 0; n < horizontal; ++n) {
    const int64_t row = static_cast<int64_t>(std::nearbyint(lcg.unit() * h));
    for (int32_t x = 1; x < w; ++x) darken(row * w + x);
  }
  return px;
}

// Runs an export after seeding and checks the picture worked out by hand.
template <class P, class Run, class Hand>
void expectSeeded(uint32_t seed, int32_t w, int32_t h, std::vector<P> px, Run run, Hand hand) {
  SCOPED_TRACE(testing::Message() << "seed " << seed << ", " << w << " x " << h);
  const auto want = hand(px);
  seedDraws(seed);
  run(px.data());
  EXPECT_TRUE(sameBytes(px, want));
}

}  // namespace

TEST(StylizePixelNoise, FollowsTheDrawOrder) {
  for (uint32_t seed : {1u, 77u, 123456u}) {
    for (auto [w, h] : {std::pair{5, 3}, std::pair{1, 1}, std::pair{1, 6}, std::pair{6, 1}}) {
      expectSeeded(seed, w, h, pattern32(w * h, seed),
                   [=](Pixel32* p) { VexoPixelNoise32(w, h, p, 3, 200, -90, 60); },
                   [=](auto px) { return noiseByHand(px, w, h, 3, 200, -90, 60, seed); });
      expectSeeded(seed, w, h, pattern64(w * h, seed),
                   [=](Pixel64* p) { VexoPixelNoise64(w, h, p, 2, 30000, 100, -20000); },
                   [=](auto px) { return noiseByHand(px, w, h, 2, 30000, 100, -20000, seed); });
    }
  }
  // The largest draw reaches the whole amount: the float member adds
  // amount / 255 unclamped.
  std::vector<Pixel128> f{{0.25f, 0.5f, 0.75f, 0.5f}};
  seedDraws(seedForDraw(3, 32767));
  VexoPixelNoise128(1, 1, f.data(), 1, 0, 0, 255);
  EXPECT_EQ(f[0].blue, 1.25f);
  EXPECT_EQ(f[0].mask, 0.5f);
}

TEST(StylizeDiffuse, FollowsTheDrawOrderWithoutAColumnBound) {
  for (uint32_t seed : {1u, 99u, 4242u}) {
    for (auto [w, h] : {std::pair{4, 5}, std::pair{1, 1}, std::pair{1, 7}, std::pair{7, 1}, std::pair{3, 3}}) {
      // A spread of 3 on 4-wide rows sends specks past the right edge and
      // past the end.
      expectSeeded(seed, w, h, pattern32(w * h, seed),
                   [=](Pixel32* p) { VexoDiffuse32(w, h, p, 3, 50, -20, 200); },
                   [=](auto px) { return diffuseByHand(px, w, h, 3, 50, -20, 200, seed); });
      expectSeeded(seed, w, h, pattern64(w * h, seed),
                   [=](Pixel64* p) { VexoDiffuse64(w, h, p, 2, 20000, -20000, 1); },
                   [=](auto px) { return diffuseByHand(px, w, h, 2, 20000, -20000, 1, seed); });
      // A negative spread points before the picture: those specks are skipped.
      expectSeeded(seed, w, h, pattern32(w * h, seed),
                   [=](Pixel32* p) { VexoDiffuse32(w, h, p, -2, 50, 50, 50); },
                   [=](auto px) { return diffuseByHand(px, w, h, -2, 50, 50, 50, seed); });
    }
  }
  std::vector<Pixel128> f{{0.5f, 0.5f, 0.5f, 0.5f}};
  VexoDiffuse128(1, 1, f.data(), 0, 510, -255, 0);
  EXPECT_EQ(f[0], (Pixel128{0.5f, -0.5f, 2.5f, 0.5f}));
}

TEST(StylizeAgedLines, FollowsTheDrawOrder) {
  for (uint32_t seed : {1u, 5u, 31337u}) {
    for (auto [w, h] : {std::pair{6, 4}, std::pair{1, 1}, std::pair{1, 5}, std::pair{5, 1}}) {
      expectSeeded(seed, w, h, pattern32(w * h, seed), [=](Pixel32* p) { VexoAgedLines32(w, h, p, 3, 2); },
                   [=](auto px) { return agedByHand(px, w, h, 3, 2, seed); });
      expectSeeded(seed, w, h, pattern64(w * h, seed), [=](Pixel64* p) { VexoAgedLines64(w, h, p, 2, 3); },
                   [=](auto px) { return agedByHand(px, w, h, 2, 3, seed); });
    }
  }
}

TEST(StylizeAgedLines, PositionsAtTheFarEdge) {
  // A first draw of 32767 puts the vertical scratch at column 3 of a 3-wide
  // picture: row 1's pixel is the first of row 2, row 2's lies past the end.
  const uint32_t edge = seedForDraw(1, 32767);
  std::vector<Pixel32> px(9, Pixel32{200, 200, 200, 9});
  seedDraws(edge);
  VexoAgedLines32(3, 3, px.data(), 1, 0);
  Lcg lcg{edge};
  lcg.next();
  const double k = lcg.unit();
  const auto dark = static_cast<uint8_t>(std::nearbyint(200 * k));
  for (int i = 0; i < 9; ++i) EXPECT_EQ(px[i], (i == 6 ? Pixel32{dark, dark, dark, 9} : Pixel32{200, 200, 200, 9})) << i;
  // A horizontal scratch at row 3 is drawn but not written, and the second
  // one still lands where the draws put it.
  for (int32_t lines : {1, 2}) {
    expectSeeded(edge, 3, 3, pattern32(9, 4), [=](Pixel32* p) { VexoAgedLines32(3, 3, p, 0, lines); },
                 [=](auto v) { return agedByHand(v, 3, 3, 0, lines, edge); });
  }
  // The float member multiplies without rounding.
  std::vector<Pixel128> f(2, Pixel128{0.5f, 0.25f, 1.0f, 0.5f});
  seedDraws(seedForDraw(1, 0));
  VexoAgedLines128(2, 1, f.data(), 0, 1);
  Lcg l2{seedForDraw(1, 0)};
  l2.next();
  const double k2 = l2.unit();
  EXPECT_EQ(f[1], (Pixel128{float(0.5f * k2), float(0.25f * k2), float(1.0f * k2), 0.5f}));
  EXPECT_EQ(f[0], (Pixel128{0.5f, 0.25f, 1.0f, 0.5f}));
}

TEST(StylizeRandom, SameSeedSamePictureWhateverOtherThreadsDraw) {
  auto run = [](uint32_t seed, bool interrupt) {
    auto px = pattern32(64 * 48, 3);
    seedDraws(seed);
    VexoDiffuse32(64, 48, px.data(), 5, 20, 30, 40);
    if (interrupt) {
      std::thread t([] {
        auto other = pattern32(100, 9);
        seedDraws(2);
        VexoPixelNoise32(10, 10, other.data(), 50, 9, 9, 9);
      });
      t.join();
    }
    VexoAgedLines32(64, 48, px.data(), 10, 10);
    VexoPixelNoise32(64, 48, px.data(), 20, 100, 100, 100);
    VexoRainDrops32(64, 48, px.data(), 10, 9);
    return px;
  };
  const auto once = run(8, false);
  EXPECT_TRUE(sameBytes(run(8, false), once));
  EXPECT_TRUE(sameBytes(run(8, true), once));
  EXPECT_FALSE(sameBytes(run(9, false), once));
}

TEST(StylizeRandom, EmptyPicturesDrawNothing) {
  std::vector<Pixel32> px(4, Pixel32{1, 2, 3, 4});
  for (auto [w, h] : {std::pair{0, 2}, std::pair{2, 0}, std::pair{-3, 2}}) {
    seedDraws(10);
    VexoPixelNoise32(w, h, px.data(), 5, 9, 9, 9);
    VexoDiffuse32(w, h, px.data(), 5, 9, 9, 9);
    VexoAgedLines32(w, h, px.data(), 5, 5);
    VexoRainDrops32(w, h, px.data(), 5, 5);
    EXPECT_EQ(effects::platform::RandomDraws().next(), Lcg{10}.next());
  }
  EXPECT_TRUE(sameBytes(px, std::vector<Pixel32>(4, Pixel32{1, 2, 3, 4})));
}

// The float members give the 8-bit member's picture for the same draws: one
// effect at a time (the float members do not clamp, so a second effect would
// start from different values), and within one step for each time the 8-bit
// member truncated a pixel.
TEST(StylizeRandom, FloatMembersMatchTheEightBitOnes) {
  constexpr int32_t w = 37, h = 23, count = 20;
  const auto base = pattern32(w * h, 11);
  auto noise8 = base, diffuse8 = base;
  auto noise128 = widen128(base), diffuse128 = widen128(base);
  seedDraws(21);
  VexoPixelNoise32(w, h, noise8.data(), count, 120, -80, 255);
  VexoDiffuse32(w, h, diffuse8.data(), 4, -40, 70, 5);
  seedDraws(21);
  VexoPixelNoise128(w, h, noise128.data(), count, 120, -80, 255);
  VexoDiffuse128(w, h, diffuse128.data(), 4, -40, 70, 5);
  EXPECT_EQ(expectWithinOneStep(diffuse128, diffuse8), 0);
  std::vector<int> hits(w * h, 0);
  Lcg lcg{21};
  for (int i = 0; i < count * count; ++i) {
    const int32_t y = static_cast<int32_t>(lcg.unit() * (h - 1)), x = static_cast<int32_t>(lcg.unit() * (w - 1));
    ++hits[y * w + x];
    lcg.next(), lcg.next(), lcg.next();
  }
  int differing = 0;
  for (int i = 0; i < w * h; ++i) {
    const Pixel32 got = narrow(noise128[i]), want = noise8[i];
    for (auto [a, b] : {std::pair{got.blue, want.blue}, std::pair{got.green, want.green}, std::pair{got.red, want.red}}) {
      EXPECT_LE(std::abs(a - b), std::max(hits[i], 1)) << "pixel " << i;
      differing += a != b;
    }
    EXPECT_EQ(got.mask, want.mask);
  }
  EXPECT_GT(differing, 0);
}

TEST(StylizeRainDrops, RadiusOneOnGrey) {
  // Lit from the upper left: +40/256 there, -40/256 and a quarter off on the
  // lower right; the middle is the highlight, 160/256 of the way to white.
  for (uint32_t seed : {3u, 40u, 1000u}) {
    Lcg lcg{seed};
    const int32_t cx = static_cast<int32_t>(lcg.unit() * 4), cy = static_cast<int32_t>(lcg.unit() * 3);
    auto expected = [&](auto grey, auto centre, auto lit, auto shaded) {
      std::vector<decltype(grey)> want(20, grey);
      auto set = [&](int32_t x, int32_t y, auto v) {
        if (x >= 0 && x < 5 && y >= 0 && y < 4) want[y * 5 + x].blue = want[y * 5 + x].green = want[y * 5 + x].red = v;
      };
      set(cx, cy, centre);
      set(cx - 1, cy, lit), set(cx, cy - 1, lit);
      set(cx + 1, cy, shaded), set(cx, cy + 1, shaded);
      return want;
    };
    std::vector<Pixel32> a(20, Pixel32{100, 100, 100, 9});
    seedDraws(seed);
    VexoRainDrops32(5, 4, a.data(), 1, 1);
    EXPECT_TRUE(sameBytes(a, expected(Pixel32{100, 100, 100, 9}, uint8_t(197), uint8_t(116), uint8_t(63)))) << seed;
    std::vector<Pixel64> b(20, Pixel64{12800, 12800, 12800, 9});
    seedDraws(seed);
    VexoRainDrops64(5, 4, b.data(), 1, -7);
    EXPECT_TRUE(sameBytes(b, expected(Pixel64{12800, 12800, 12800, 9}, uint16_t(25279), uint16_t(14800), uint16_t(8100))))
        << seed;
  }
}

TEST(StylizeRainDrops, TheLensMagnifiesItsMiddle) {
  // Radius 4 (a third draw of 32767): two pixels from the centre the dome
  // stands 3 high, so the lens reads the centre pixel there.
  const uint32_t seed = seedForDraw(3, 32767);
  Lcg lcg{seed};
  const int32_t cx = static_cast<int32_t>(lcg.unit() * 15), cy = static_cast<int32_t>(lcg.unit() * 15);
  std::vector<Pixel32> px(256);
  for (int32_t i = 0; i < 256; ++i) px[i] = Pixel32{0, uint8_t(10 * (i / 16)), uint8_t(10 * (i % 16)), 9};
  seedDraws(seed);
  VexoRainDrops32(16, 16, px.data(), 1, 4);
  const bool right = cx + 2 < 16;
  const int32_t gain = right ? 236 : 276;
  const Pixel32 got = px[cy * 16 + (right ? cx + 2 : cx - 2)];
  EXPECT_EQ(got.red, (10 * cx * gain + 128) >> 8);
  EXPECT_EQ(got.green, (10 * cy * gain + 128) >> 8);
}

TEST(StylizeRainDrops, SixteenBitMatchesEightBit) {
  const auto base = pattern32(40 * 30, 17);
  auto eight = base;
  auto wide = widen64(base);
  seedDraws(5);
  VexoRainDrops32(40, 30, eight.data(), 25, 10);
  seedDraws(5);
  VexoRainDrops64(40, 30, wide.data(), 25, 10);
  expectWithinOneStep(wide, eight);
  EXPECT_FALSE(sameBytes(eight, base));
}
