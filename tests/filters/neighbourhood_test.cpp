// The shared machinery of the filters: the edge rule, the pair average
// against the exported Blending arithmetic, brightness, the kept entry rows,
// and the sliding box sums against the plain ones.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include <iterator>

#include "filters/blur.h"
#include "filters/filter_checks.h"
#include "filters/neighbourhood.h"
#include "filters/simd.h"

namespace effects::filters {
namespace {

using test::pattern;

TEST(FilterEdgeRule, PullsBackPastTheFarEdgeAndMarksTheNearOne) {
  const int32_t cases[][4] = {  // p, d, n, result
      {2, 1, 5, 3}, {4, 1, 5, 4}, {3, 10, 5, 4}, {0, 1, 1, 0}, {1, -1, 5, 0}, {1, -2, 5, -1},
      {2, INT32_MAX, 5, 4}, {2, INT32_MIN, 5, -1}, {INT32_MAX - 1, 1, INT32_MAX, INT32_MAX - 1}};
  for (const auto& c : cases) EXPECT_EQ(edgeStep(c[0], c[1], c[2]), c[3]) << c[0] << " " << c[1] << " " << c[2];
  std::vector<Pixel32> px = pattern<Pixel32>(3 * 2);
  const auto pic = packedPicture(3, 2, px.data());
  EXPECT_EQ(&sampleAt(pic, 1, 1, -2, 0), &pic.at(1, 1));  // before column 0: the centre
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
  const float special[] = {0.0f, -0.0f, 1e-45f, 1.1754942e-38f, 2.3509887e-38f, 3.4028235e38f, -3.4028235e38f,
                           1.7014119e38f, 3e38f, 16777217.0f, __builtin_huge_valf(), -__builtin_huge_valf()};
  auto any = [&] {
    if (rng() % 8 == 0) return special[rng() % std::size(special)];
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
  expectMatteSlidesExactly<Layout32>([](size_t n, uint32_t seed) { return pattern<Pixel32>(n, seed); });
  expectMatteSlidesExactly<Layout64>([](size_t n, uint32_t seed) { return pattern<Pixel64>(n, seed); });
}

// The matte blur with thresholds (every sample, brightness kept in a plane;
// short ways where a threshold admits every or no sample) and the float
// layout against the plain sums.
TEST(FilterBoxSums, ThresholdsAndFloatsSumAsThePlainForm) {
  const int32_t sizes[][2] = {{1, 6}, {6, 1}, {13, 11}, {25, 9}};
  for (int32_t r : {1, 2, 4, 7, 10}) {
    for (const auto& s : sizes) {
      SCOPED_TRACE(testing::Message() << "radius " << r << " size " << s[0] << "x" << s[1]);
      for (int32_t threshold : {-1, 0, 30, 120, 255, INT32_MAX}) {
        auto a = pattern<Pixel32>(size_t(s[0] * s[1]), uint32_t(r)), b = a;
        ASSERT_TRUE(matteBlur<Layout32>(packedPicture(s[0], s[1], a.data()), r, threshold, 1));
        matteBlurReference<Layout32>(packedPicture(s[0], s[1], b.data()), r, threshold, 1);
        ASSERT_TRUE(test::sameBytes(a, b)) << threshold;
      }
      auto c = pattern<Pixel64>(size_t(s[0] * s[1]), uint32_t(r)), d = c;
      ASSERT_TRUE(matteBlur<Layout64>(packedPicture(s[0], s[1], c.data()), r, 9000, 1));
      matteBlurReference<Layout64>(packedPicture(s[0], s[1], d.data()), r, 9000, 1);
      ASSERT_TRUE(test::sameBytes(c, d));
      for (int32_t use : {0, 1}) {
        auto e = test::pattern<Pixel128>(size_t(s[0] * s[1]), uint32_t(r)), f = e;
        ASSERT_TRUE(matteBlur<Layout128>(packedPicture(s[0], s[1], e.data()), r, use ? 1 : 5, use));
        matteBlurReference<Layout128>(packedPicture(s[0], s[1], f.data()), r, use ? 1 : 5, use);
        ASSERT_TRUE(test::sameBytes(e, f)) << use;
      }
    }
  }
}

TEST(FilterBoxSums, GlowSlidingEqualsThePlainSums) {
  // Half the pixels bright, so both boxes and the switch between them occur.
  const int32_t sizes[][2] = {{1, 1}, {2, 9}, {9, 2}, {5, 4}, {31, 19}};
  for (const auto& s : sizes) {
    const size_t n = size_t(s[0] * s[1]);
    auto a32 = pattern<Pixel32>(n, uint32_t(s[0])), b32 = a32;
    auto a64 = pattern<Pixel64>(n, uint32_t(s[1])), b64 = a64;
    ASSERT_TRUE(glowBlur<Layout32>(packedPicture(s[0], s[1], a32.data())));
    glowBlurReference<Layout32>(packedPicture(s[0], s[1], b32.data()));
    ASSERT_TRUE(glowBlur<Layout64>(packedPicture(s[0], s[1], a64.data())));
    glowBlurReference<Layout64>(packedPicture(s[0], s[1], b64.data()));
    EXPECT_TRUE(test::sameBytes(a32, b32)) << s[0] << "x" << s[1];
    EXPECT_TRUE(test::sameBytes(a64, b64)) << s[0] << "x" << s[1];
  }
}

}  // namespace
}  // namespace effects::filters
