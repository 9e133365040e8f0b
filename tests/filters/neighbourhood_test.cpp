// The shared machinery of the filters: the edge rule, the pair average
// against the exported Blending arithmetic, brightness, the kept entry rows,
// and the sliding box sums against the plain ones.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "filters/blur.h"
#include "filters/filter_checks.h"
#include "filters/neighbourhood.h"
#include "filters/simd.h"

namespace effects::filters {
namespace {

using test::pattern32;
using test::pattern64;

TEST(FilterEdgeRule, PullsBackPastTheFarEdgeAndMarksTheNearOne) {
  struct Case { int32_t p, d, n, want; };
  const Case cases[] = {
      {2, 1, 5, 3}, {4, 1, 5, 4}, {3, 10, 5, 4}, {0, 0, 1, 0}, {0, 1, 1, 0},
      {1, -1, 5, 0}, {1, -2, 5, -1}, {0, -1, 1, -1},
      {2, INT32_MAX, 5, 4}, {2, INT32_MIN, 5, -1}, {INT32_MAX - 1, 1, INT32_MAX, INT32_MAX - 1},
  };
  for (const auto& c : cases) EXPECT_EQ(edgeStep(c.p, c.d, c.n), c.want) << c.p << " " << c.d << " " << c.n;

  std::vector<Pixel32> px = pattern32(3 * 2);
  const auto pic = packedPicture(3, 2, px.data());
  EXPECT_EQ(&sampleAt(pic, 2, 0, 1, 1), &pic.at(2, 1));   // both pulled back
  EXPECT_EQ(&sampleAt(pic, 1, 1, -2, 0), &pic.at(1, 1));  // before column 0: the centre
  EXPECT_EQ(&sampleAt(pic, 1, 1, 1, -1), &pic.at(2, 0));
}

TEST(FilterPairAverage, IsTheBlendingArithmeticInEveryLayout) {
  for (uint32_t a = 0; a < 256; ++a)
    for (uint32_t b = 0; b < 256; ++b)
      ASSERT_EQ(pairAverage<Layout32>(uint8_t(a), uint8_t(b)), Blending(a, b)) << a << " " << b;
  std::mt19937 rng(3);
  for (int i = 0; i < 100000; ++i) {
    const uint16_t a = uint16_t(rng()), b = uint16_t(rng());
    ASSERT_EQ(pairAverage<Layout64>(a, b), uint16_t(Blending(a, b))) << a << " " << b;
    const float fa = std::uniform_real_distribution<float>(-4, 4)(rng), fb = std::uniform_real_distribution<float>(-4, 4)(rng);
    ASSERT_EQ(pairAverage<Layout128>(fa, fb), static_cast<float>(Blending128(fa, fb)));
  }
  // The 16-bit halves lose bit 7: full white does not stay white.
  EXPECT_EQ(pairAverage<Layout64>(32767, 32767), 32510);
  EXPECT_EQ(pairAverage<Layout64>(256, 0), 0);
  EXPECT_EQ(pairAverage<Layout32>(255, 255), 254);
  // Floats average in double: the float sum would overflow here.
  EXPECT_EQ(pairAverage<Layout128>(3e38f, 3e38f), 3e38f);
}

#if defined(__SSE2__)
// The vector pair average of floats sums in single precision and falls back
// to double only where the sum overflows: it must give the double form's
// float for every pair of non-NaN inputs. Random bit patterns reach every
// exponent; the listed values the edges (overflow, subnormals, zeros).
TEST(FilterPairAverage, VectorFloatsAreTheDoubleForm) {
  std::mt19937 rng(5);
  std::vector<float> special{0.0f, -0.0f, 1e-45f, -1e-45f, 1.1754942e-38f, 1.1754944e-38f, 2.3509887e-38f,
                             3.4028235e38f, -3.4028235e38f, 1.7014118e38f, 1.7014119e38f, 3e38f, 1.0f,
                             16777216.0f, 16777217.0f, 1e30f, -1e30f, __builtin_huge_valf(), -__builtin_huge_valf()};
  auto any = [&] {
    if (rng() % 8 == 0) return special[rng() % special.size()];
    float f;
    do {
      const uint32_t u = uint32_t(rng());
      std::memcpy(&f, &u, 4);
    } while (f != f);
    return f;
  };
  using O = simd::Lanes<float>;
  for (int i = 0; i < 2000000; ++i) {
    alignas(16) float a[4], b[4], got[4];
    for (int k = 0; k < 4; ++k) a[k] = any(), b[k] = any();
    O::store(got, O::average(O::load(a), O::load(b)));
    for (int k = 0; k < 4; ++k) {
      const float want = pairAverage<Layout128>(a[k], b[k]);
      if (want != want) continue;  // inf + -inf
      ASSERT_EQ(test::bitsOf(got[k]), test::bitsOf(want)) << a[k] << " " << b[k];
    }
  }
}
#endif

TEST(FilterBrightness, TruncatesInIntegersAndScalesInSinglePrecision) {
  EXPECT_EQ(brightness<Layout32>(Pixel32{1, 1, 2, 0}), 1);
  EXPECT_EQ(brightness<Layout32>(Pixel32{255, 255, 255, 0}), 255);
  EXPECT_EQ(brightness<Layout64>(Pixel64{32767, 32767, 32766, 0}), 32766);
  EXPECT_EQ(brightness<Layout128>(Pixel128{0.25f, 0.5f, 0.75f, 0}), 1.5f * 0.33333334f);
}

TEST(FilterEntryRows, KeepTheRowsAboveWhileTheWalkRewritesThem) {
  std::vector<Pixel32> px = pattern32(4 * 5);
  const std::vector<Pixel32> entry = px;
  const auto pic = packedPicture(4, 5, px.data());
  EntryRows<Pixel32> rows(pic, 2, ScratchSlot::First);
  ASSERT_TRUE(rows.ok());
  for (int32_t y = 0; y < 5; ++y) {
    rows.enter(y);
    for (int32_t x = 0; x < 4; ++x) pic.at(x, y) = Pixel32{};
    for (int32_t yy = y - 2 < 0 ? 0 : y - 2; yy < 5; ++yy)
      for (int32_t x = 0; x < 4; ++x) ASSERT_EQ(rows.row(yy)[x], entry[size_t(yy * 4 + x)]) << y << " " << yy;
  }
}

// The sliding sums against the plain ones: the exports' sliding forms against
// their references on random pictures of odd sizes (narrower and lower than
// the box too), for every radius.
template <class L, class Make>
void expectMatteSlidesExactly(Make make) {
  const int32_t sizes[][2] = {{1, 1}, {1, 9}, {9, 1}, {3, 4}, {13, 7}, {23, 17}};
  for (int32_t radius = 1; radius <= 10; ++radius) {
    for (const auto& s : sizes) {
      SCOPED_TRACE(testing::Message() << "radius " << radius << " size " << s[0] << "x" << s[1]);
      auto a = make(size_t(s[0] * s[1]), uint32_t(radius * 31 + s[0]));
      auto b = a;
      ASSERT_TRUE(matteBlur<L>(packedPicture(s[0], s[1], a.data()), radius, 0, 0));
      matteBlurReference<L>(packedPicture(s[0], s[1], b.data()), radius, 0, 0);
      ASSERT_TRUE(test::sameBytes(a, b));
    }
  }
}

TEST(FilterBoxSums, FeedForwardSlidingEqualsThePlainSums) {
  expectMatteSlidesExactly<Layout32>([](size_t n, uint32_t seed) { return pattern32(n, seed); });
  expectMatteSlidesExactly<Layout64>([](size_t n, uint32_t seed) { return pattern64(n, seed); });
}

TEST(FilterBoxSums, ThresholdsThatAdmitEveryOrNoSampleTakeTheShortWay) {
  for (int32_t threshold : {-1, -1000, 255, 256, INT32_MAX}) {
    auto a = pattern32(13 * 11, 4), b = a;
    ASSERT_TRUE(matteBlur<Layout32>(packedPicture(13, 11, a.data()), 4, threshold, 1));
    matteBlurReference<Layout32>(packedPicture(13, 11, b.data()), 4, threshold, 1);
    EXPECT_TRUE(test::sameBytes(a, b)) << threshold;
  }
}

TEST(FilterBoxSums, GlowSlidingEqualsThePlainSums) {
  // Half the pixels bright, so both boxes and the switch between them occur.
  const int32_t sizes[][2] = {{1, 1}, {2, 9}, {9, 2}, {5, 4}, {31, 19}};
  for (const auto& s : sizes) {
    const size_t n = size_t(s[0] * s[1]);
    auto a32 = pattern32(n, uint32_t(s[0])), b32 = a32;
    auto a64 = pattern64(n, uint32_t(s[1])), b64 = a64;
    ASSERT_TRUE(glowBlur<Layout32>(packedPicture(s[0], s[1], a32.data())));
    glowBlurReference<Layout32>(packedPicture(s[0], s[1], b32.data()));
    ASSERT_TRUE(glowBlur<Layout64>(packedPicture(s[0], s[1], a64.data())));
    glowBlurReference<Layout64>(packedPicture(s[0], s[1], b64.data()));
    EXPECT_TRUE(test::sameBytes(a32, b32)) << s[0] << "x" << s[1];
    EXPECT_TRUE(test::sameBytes(a64, b64)) << s[0] << "x" << s[1];
  }
}

TEST(FilterBoxSums, EntrySlidingEqualsThePlainSums) {
  std::mt19937 rng(9);
  for (int32_t r = 1; r <= 10; ++r) {
    const int32_t w = int32_t(rng() % 25) + 1, h = int32_t(rng() % 25) + 1;
    std::vector<Pixel64> px = pattern64(size_t(w * h), uint32_t(r));
    const auto pic = packedPicture(w, h, px.data());
    EntryRows<Pixel64> entry(pic, r + 1, ScratchSlot::First);
    EntryBoxSums<Layout64> box(w, h, r, ScratchSlot::Second);
    ASSERT_TRUE(entry.ok() && box.ok());
    const std::vector<Pixel64> copy = px;
    const auto rowOf = [&](int32_t yy) { return copy.data() + yy * w; };
    for (int32_t y = 0; y < h; ++y) {
      entry.enter(y);
      const int32_t* sums = box.beginRow(y, entry);
      for (int32_t x = 0; x < w; ++x) {
        const Pixel64& centre = copy[size_t(y * w + x)];
        const auto want = boxSum<Layout64>(rowOf, w, h, x, y, r, centre, [](const Pixel64& p) -> const Pixel64& { return p; });
        ASSERT_EQ(sums[4 * x], want.blue) << r << " " << x << "," << y;
        ASSERT_EQ(sums[4 * x + 1], want.green);
        ASSERT_EQ(sums[4 * x + 2], want.red);
        pic.at(x, y) = Pixel64{1, 2, 3, 4};  // the walk rewrites the row behind it
      }
    }
  }
}

}  // namespace
}  // namespace effects::filters
