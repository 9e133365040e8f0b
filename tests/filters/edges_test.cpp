// Emboss, find edges, neon and lining.
#include <gtest/gtest.h>

#include <vector>

#include "filters/filter_checks.h"
#include "filters/sharpen.h"

namespace effects::test {
namespace {

Pixel32 grey(uint8_t v, uint8_t mask = 0) { return Pixel32{v, v, v, mask}; }

TEST(FilterEmboss, FlatPicturesAndDepthZeroGiveTheMiddleGrey) {
  std::vector<Pixel32> flat(5 * 4, Pixel32{10, 200, 30, 4}), any = pattern<Pixel32>(5 * 4, 2);
  VexoEmboss32(5, 4, flat.data(), 7);
  VexoEmboss32(5, 4, any.data(), 0);
  EXPECT_EQ(flat, std::vector<Pixel32>(20, grey(128, 4)));
  for (const auto& p : any) EXPECT_EQ(p.red, 128);
  std::vector<Pixel64> f64(3 * 3, Pixel64{1, 2, 3, 4});
  VexoEmboss64(3, 3, f64.data(), -5);
  EXPECT_EQ(f64, std::vector<Pixel64>(9, Pixel64{16384, 16384, 16384, 4}));
  std::vector<Pixel128> f128(3 * 2, Pixel128{0.1f, 0.7f, 3.0f, 0.5f});
  VexoEmboss128(3, 2, f128.data(), 4);
  EXPECT_EQ(f128, std::vector<Pixel128>(6, Pixel128{0.5f, 0.5f, 0.5f, 0.5f}));
}

TEST(FilterEmboss, WorkedExamples) {
  struct Case { Pixel32 p, q; int32_t depth; uint8_t want; };
  const Case cases[] = {
      {{10, 20, 30, 0}, grey(0), 2, 168},   // (188 + 168 + 148) / 3
      {grey(0), grey(100), 2, 72},           // |-72| each
      {grey(0), grey(255), 10, 255},         // clamped
      {grey(9), grey(9), INT32_MAX, 128},
  };
  for (const auto& c : cases) {
    std::vector<Pixel32> px{c.p, c.q};  // one row: Q of pixel 0 is pixel 1
    VexoEmboss32(2, 1, px.data(), c.depth);
    EXPECT_EQ(px[0], grey(c.want)) << c.depth;
    EXPECT_EQ(px[1], grey(128));  // its own Q
  }
  // Q is the diagonal neighbour, read before it is rewritten.
  std::vector<Pixel32> sq{grey(50), grey(0), grey(0), grey(20)};
  VexoEmboss32(2, 2, sq.data(), 1);
  EXPECT_EQ(sq[0], grey(158));
  std::vector<Pixel128> f{{0.25f, 0.25f, 0.25f, 0}, {0, 0, 0, 0}};
  VexoEmboss128(2, 1, f.data(), -6);
  EXPECT_EQ(f[0].red, static_cast<float>(3.0 * 0.33333334));  // |-1.5 + 0.5| x 3
}

TEST(FilterEdges, FlatPictures) {
  std::vector<Pixel32> a(4 * 3, Pixel32{9, 99, 199, 3}), b = a;
  VexoFindEdges32(4, 3, a.data(), 4, 1);
  VexoNeon32(4, 3, b.data(), 4, 1);
  EXPECT_EQ(a, std::vector<Pixel32>(12, grey(255, 3)));
  EXPECT_EQ(b, std::vector<Pixel32>(12, grey(0, 3)));
}

TEST(FilterEdges, MagnitudeShiftedByTheGainsLowBits) {
  struct Case { int32_t gain, step; uint8_t neon; };
  const Case cases[] = {
      {0, 1, 3}, {2, 1, 6}, {33, 1, 4},  // sqrt(9 << 1)
      {0, 0, 0}, {0, 500, 3},            // no step; a far step pulled back
  };
  for (const auto& c : cases) {
    std::vector<Pixel32> n{grey(10), grey(13)}, e = n;
    VexoNeon32(2, 1, n.data(), c.gain, c.step);
    VexoFindEdges32(2, 1, e.data(), c.gain, c.step);
    EXPECT_EQ(n, (std::vector<Pixel32>{grey(c.neon), grey(0)})) << c.gain << " " << c.step;
    EXPECT_EQ(e, (std::vector<Pixel32>{grey(uint8_t(255 - c.neon)), grey(255)}));
  }
  // 255^2 + 255^2 shifted by 14 fits 31 bits (clamped to 255); by 15 the top
  // bit is set, the root is not a number and the magnitude 0.
  for (const auto& [gain, neon] : std::vector<std::pair<int32_t, uint8_t>>{{14, 255}, {15, 0}}) {
    std::vector<Pixel32> px{grey(255), grey(0), grey(0), grey(0)};
    VexoNeon32(2, 2, px.data(), gain, 1);
    EXPECT_EQ(px[0], grey(neon)) << gain;
  }
}

TEST(FilterEdges, NegativeStepReadsWhatTheWalkWrote) {
  // Pixel 1 reads pixel 0 as already rewritten; pixel 0 has nothing before it.
  std::vector<Pixel32> n{grey(10), grey(13)}, e = n;
  VexoNeon32(2, 1, n.data(), 0, -1);
  VexoFindEdges32(2, 1, e.data(), 0, -1);
  EXPECT_EQ(n, (std::vector<Pixel32>{grey(0), grey(13)}));
  EXPECT_EQ(e, (std::vector<Pixel32>{grey(255), grey(13)}));  // 255 - |13 - 255|
}

TEST(FilterEdges, FloatsScaleByTheGainItself) {
  std::vector<Pixel128> n{{0.25f, 0.25f, 0.25f, 1}, {0.5f, 0.5f, 0.5f, 1}}, e = n;
  VexoNeon128(2, 1, n.data(), 4, 1);
  VexoFindEdges128(2, 1, e.data(), 4, 1);
  EXPECT_EQ(n[0], (Pixel128{0.5f, 0.5f, 0.5f, 1}));  // sqrt(0.0625 x 4), not x 16
  EXPECT_EQ(e[0], (Pixel128{0.5f, 0.5f, 0.5f, 1}));
  EXPECT_EQ(e[1], (Pixel128{1.0f, 1.0f, 1.0f, 1}));
}

// The vector rows against the plain walk: every shift, steps inside and past
// the picture, extreme values (and 16-bit values above 32767, which take the
// plain way inside the vector rows).
template <class L, bool Complement, class P>
void expectFastEdgesArePlain(const std::vector<P>& entry) {
  for (int32_t gain : {0, 1, 2, 7, 14, 15, 16, 24, 31, 33, -1}) {
    for (int32_t step : {0, 1, 2, 5, 40}) {
      auto a = entry, b = entry;
      filters::edges<L, Complement, true>(packedPicture(29, 9, a.data()), gain, step);
      filters::edges<L, Complement, false>(packedPicture(29, 9, b.data()), gain, step);
      ASSERT_TRUE(sameBytes(a, b)) << gain << " " << step;
    }
  }
}

TEST(FilterEdges, VectorRowsAreThePlainWalk) {
  // Every shift, steps inside and past the picture, extreme values, and
  // 16-bit values above 32767 (which take the plain way in the vector rows).
  auto p32 = pattern<Pixel32>(29 * 9, 3);
  auto p64 = pattern<Pixel64>(29 * 9, 4);
  for (size_t i = 0; i < p32.size(); i += 4) p32[i] = Pixel32{255, 0, 255, 9}, p64[i] = Pixel64{32767, 0, 32767, 9};
  for (size_t i = 2; i < p64.size(); i += 11) p64[i].green = 50000;
  expectFastEdgesArePlain<Layout32, true>(p32);
  expectFastEdgesArePlain<Layout32, false>(p32);
  expectFastEdgesArePlain<Layout64, true>(p64);
  expectFastEdgesArePlain<Layout64, false>(p64);
}

TEST(FilterLining, MovesTheInteriorUpAndLeft) {
  // Factors 0 give |P|: the colours of rows and columns 1 .. size - 2 land
  // one up and one left; the last two rows and columns keep theirs.
  const auto entry = pattern<Pixel32>(6 * 5, 8);
  auto px = entry;
  VexoLining32(6, 5, px.data(), 0, 0, 0);
  for (int32_t i = 0; i < 30; ++i) {
    const int32_t x = i % 6, y = i / 6;
    Pixel32 want = entry[size_t(i)];
    if (x < 4 && y < 3) want = Pixel32{entry[size_t(i + 7)].blue, entry[size_t(i + 7)].green, entry[size_t(i + 7)].red, want.mask};
    EXPECT_EQ(px[size_t(i)], want) << x << "," << y;
  }
  auto two = entry;
  VexoLining32(6, 2, two.data(), 5, 5, 5);
  EXPECT_TRUE(std::equal(two.begin(), two.begin() + 12, entry.begin()));
}

TEST(FilterLining, PerColourFactorsAbsoluteValueAndClamp) {
  std::vector<Pixel32> px(9, grey(0));
  px[0] = Pixel32{0, 50, 1, 0};   // Q
  px[4] = Pixel32{0, 30, 0, 9};   // P
  VexoLining32(3, 3, px.data(), INT32_MIN, 2, 10);
  // blue: |0 + 0 x 10| = 0; green: |30 - 20 x 2| = 10; red: 0 - 1 x INT32_MIN
  // wraps to INT32_MIN, whose |v| is negative: 255.
  EXPECT_EQ(px[0], (Pixel32{0, 10, 255, 0}));
  EXPECT_EQ(px[4], (Pixel32{0, 30, 0, 9}));
  std::vector<Pixel64> p64(9);
  p64[4] = Pixel64{20000, 0, 0, 0};
  VexoLining64(3, 3, p64.data(), 1, 1, 1);
  EXPECT_EQ(p64[0].blue, 32767);
  std::vector<Pixel128> f(9);
  f[4] = Pixel128{0.5f, -0.5f, 0, 0};
  VexoLining128(3, 3, f.data(), 0, 1, 4);
  EXPECT_EQ(f[0], (Pixel128{2.5f, 1.0f, 0, 0}));  // unclamped, absolute
}

}  // namespace
}  // namespace effects::test
