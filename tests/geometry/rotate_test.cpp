// Free rotation and skew.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "geometry/geometry_checks.h"
#include "geometry/rotation.h"

using namespace effects::test;
using effects::packedPicture;
using effects::geometry::Rotation;

namespace {

template <class P>
std::vector<P> rotated(const std::vector<P>& in, Size from, Size to, float angle) {
  std::vector<P> out = pattern<P>(to.pixels(), 99);
  Api<P>::rotate(from.width, from.height, in.data(), to.width, to.height, out.data(), angle);
  return out;
}

template <class P>
class Rotate : public ::testing::Test {};
TYPED_TEST_SUITE(Rotate, Layouts);

TYPED_TEST(Rotate, ZeroDegreesIntoAnEqualTargetIsTheIdentity) {
  for (const Size s : kSizes) {
    const auto in = pattern<TypeParam>(s.pixels());
    expectSamePixels(rotated(in, s, s, 0.0f), in);
  }
}

// The plain sampler (bounds test per tap) against the fast one on the same
// walk, and the export against both, over awkward sizes and angles.
TYPED_TEST(Rotate, FastSamplerGivesThePlainBytes) {
  using P = TypeParam;
  using effects::geometry::rotateInto;
  const float angles[] = {0, 90, -90, 180, -720, 33.3f, -7.5f, 1e-3f, 1e9f, std::numeric_limits<float>::quiet_NaN()};
  const Size targets[] = {{1, 1}, {1, 9}, {9, 1}, {40, 23}};
  for (const Size s : kSizes)
    for (const Size t : targets)
      for (const float angle : angles) {
        SCOPED_TRACE(::testing::Message() << s.width << "x" << s.height << " -> " << t.width << "x" << t.height << " @ " << angle);
        const auto in = pattern<P>(s.pixels());
        const auto source = packedPicture(s.width, s.height, in.data());
        const Rotation map(s.width, s.height, t.width, t.height, angle);
        std::vector<P> plain(static_cast<size_t>(t.width) * t.height), fast(plain.size());
        rotateInto<false>(source, packedPicture(t.width, t.height, plain.data()), map);
        rotateInto<true>(source, packedPicture(t.width, t.height, fast.data()), map);
        expectSamePixels(fast, plain);
        expectSamePixels(rotated(in, s, t, angle), plain);
      }
}

TYPED_TEST(Rotate, NanAngleAndFarTargetsAreTransparentBlack) {
  using P = TypeParam;
  const auto in = pattern<P>(15);
  const std::vector<P> black(12, P{});
  expectSamePixels(rotated(in, {5, 3}, {4, 3}, std::numeric_limits<float>::quiet_NaN()), black);
  // A 3 x 5 source in the middle of a 12 x 1 target: columns more than two
  // away from the centre see nothing.
  const auto wide = rotated(in, {3, 5}, {12, 1}, 0.0f);
  for (int x : {0, 1, 2, 3, 9, 10, 11}) EXPECT_EQ(wide[x], P{}) << x;
}

TEST(Rotate, PositiveAndNegativeAnglesTurnOppositeWays) {
  // On a 3 x 3 picture -90 takes target (x, y) from about (2 - y, x) and
  // +90 from about (y, 2 - x); 450 acts as -90. The sines are a hair off, so
  // the 8-bit sums truncate to the value or one below.
  std::vector<Pixel32> in(9);
  for (int i = 0; i < 9; ++i) in[i] = Pixel32{uint8_t(20 * i + 10), uint8_t(20 * i + 10), 255, 255};
  const auto minus = rotated(in, {3, 3}, {3, 3}, -90.0f), plus = rotated(in, {3, 3}, {3, 3}, 90.0f);
  expectSamePixels(rotated(in, {3, 3}, {3, 3}, 450.0f), minus);
  for (int y = 0; y < 3; ++y)
    for (int x = 0; x < 3; ++x) {
      const int a = in[x * 3 + 2 - y].blue, b = in[(2 - x) * 3 + y].blue;
      EXPECT_TRUE(minus[y * 3 + x].blue == a || minus[y * 3 + x].blue == a - 1) << x << "," << y;
      EXPECT_TRUE(plus[y * 3 + x].blue == b || plus[y * 3 + x].blue == b - 1) << x << "," << y;
    }
  // The centre maps exactly onto itself and keeps its value.
  EXPECT_EQ(minus[4], in[4]);
}

TEST(Rotate, HalfTurnIsShortBecausePiIsTakenAs3_1415) {
  // Source rows 0..99 are 1.0, rows 100.. are 0. A true half turn would put
  // target (0, 100) on source (200, 100) exactly; sin r = 9.27e-5 moves it
  // up by 0.0093 of a row, into the bright row above.
  const int side = 201;
  std::vector<Pixel128> in(side * side);
  for (int i = 0; i < side * 100; ++i) in[i] = Pixel128{1, 1, 1, 1};
  const auto out = rotated(in, {side, side}, {side, side}, 180.0f);
  EXPECT_NEAR(out[100 * side + 0].red, 0.0093f, 2e-4f);
  EXPECT_EQ(out[100 * side + 100].red, 0.0f);
}

TEST(Rotate, LargerTargetHasATransparentSurroundAndASoftEdge) {
  std::vector<Pixel32> in(16, Pixel32{200, 100, 50, 255});
  const auto out = rotated(in, {4, 4}, {10, 10}, -10.0f);
  EXPECT_EQ(out[0], Pixel32{});
  EXPECT_EQ(out[99], Pixel32{});
  EXPECT_EQ(out[5 * 10 + 5], in[0]);  // the centres meet exactly
  // Target (4, 5) reads (1.0152, 1.8264): weights 0.1710, 0.0026, 0.8138,
  // 0.0126, and each partial sum is truncated: for 200, 34, 34, 196, 198.
  EXPECT_EQ(out[5 * 10 + 4], (Pixel32{198, 99, 48, 253}));
  int partial = 0;
  for (const auto& p : out) partial += p.mask > 0 && p.mask < 200;
  EXPECT_GE(partial, 8);
}

TEST(Rotate, RunsOnPaddedTwentyFourBitRows) {
  // The 24-bit rows give the blue, green and red of the 8-bit rotation; the
  // row padding is neither read into the picture nor written.
  const int32_t w = 5, h = 3, tw = 6, th = 4;
  const auto in = pattern<Pixel32>(w * h, 3);
  std::vector<uint8_t> from(16 * h, 0xEE), to(20 * th, 0xEE);
  for (int32_t i = 0; i < w * h; ++i) std::memcpy(&from[i / w * 16 + i % w * 3], &in[i], 3);
  effects::geometry::rotate(effects::Picture<const effects::Pixel24>::paddedRows(w, h, from.data()),
                            effects::Picture<effects::Pixel24>::paddedRows(tw, th, to.data()), 21.0f);
  const auto want = rotated(in, {w, h}, {tw, th}, 21.0f);
  for (int32_t i = 0; i < tw * th; ++i) EXPECT_EQ(std::memcmp(&to[i / tw * 20 + i % tw * 3], &want[i], 3), 0) << i;
  for (int32_t y = 0; y < th; ++y) EXPECT_EQ(to[y * 20 + 18] + to[y * 20 + 19], 2 * 0xEE);
}

// ------------------------------------------------------------------- skew

template <class P>
class Skew : public ::testing::Test {};
TYPED_TEST_SUITE(Skew, Layouts);

TYPED_TEST(Skew, NoPercentIntoZeroIsACopyAndAnyVerticalPercentIsVertical) {
  using P = TypeParam;
  for (const Size s : kSizes) {
    const auto in = pattern<P>(s.pixels());
    std::vector<P> out(in.size());
    Api<P>::skew(s.width, s.height, s.width, s.height, in.data(), out.data(), 0.0f, 0.0f);
    expectSamePixels(out, in);
  }
  const auto in = pattern<P>(35);
  std::vector<P> a(35), b(35), c(35);
  Api<P>::skew(5, 7, 5, 7, in.data(), a.data(), 30.0f, 0.0f);
  Api<P>::skew(5, 7, 5, 7, in.data(), b.data(), 30.0f, -77.0f);
  Api<P>::skew(5, 7, 5, 7, in.data(), c.data(), 0.0f, 30.0f);
  expectSamePixels(a, b);
  EXPECT_TRUE(differ(a, c));
}

TEST(Skew, HalfPixelShiftsSplitAddAndCap) {
  // Row 1 of a 3 x 2 source of 200s goes half a pixel right into a 4 x 2
  // target: 100, 100 + 100, 100; the pair that would end on the target's
  // last pixel is skipped.
  std::vector<Pixel32> in(6, Pixel32{200, 200, 200, 200}), out(8);
  VexoSkew32(3, 2, 4, 2, in.data(), out.data(), 0.0f, 50.0f);
  const Pixel32 z{}, h{100, 100, 100, 100}, f{200, 200, 200, 200};
  expectSamePixels(out, {f, f, f, z, h, f, h, z});
  // The target is added to, and the sums are capped at 255.
  VexoSkew32(3, 2, 4, 2, in.data(), out.data(), 0.0f, 50.0f);
  const Pixel32 c{255, 255, 255, 255};
  expectSamePixels(out, {f, f, f, z, f, c, f, z});
  std::vector<Pixel64> in64(6, Pixel64{30000, 30000, 30000, 30000}), out64(8, Pixel64{30000, 0, 0, 0});
  VexoSkew64(3, 2, 4, 2, in64.data(), out64.data(), 0.0f, 50.0f);
  EXPECT_EQ(out64[4], (Pixel64{32767, 15000, 15000, 15000}));
}

TEST(Skew, WholeShiftsWrapIntoTheNextRowAndFallOffTheEnd) {
  const Pixel32 a{1, 1, 1, 1}, b{2, 2, 2, 2}, c{3, 3, 3, 3}, d{4, 4, 4, 4}, z{};
  const std::vector<Pixel32> in{a, b, c, d};
  std::vector<Pixel32> out(6);
  VexoSkew32(2, 2, 2, 3, in.data(), out.data(), 0.0f, 100.0f);
  expectSamePixels(out, {a, b, z, c, d, z});
  std::vector<Pixel32> short4(4);
  VexoSkew32(2, 2, 2, 2, in.data(), short4.data(), 0.0f, 200.0f);
  expectSamePixels(short4, {a, b, z, z});
}

TEST(Skew, NegativeShiftsSplitTowardTheStart) {
  // Horizontal -50: source (0, 1) lands at -0.5, which truncates to column 0
  // with fraction -0.5: half stays, half goes one pixel back, to the end of
  // row 0.
  std::vector<Pixel128> in{{0, 0, 0, 0}, {0, 0, 0, 0}, {1, 1, 1, 1}, {0, 0, 0, 0}}, out(4);
  VexoSkew128(2, 2, 2, 2, in.data(), out.data(), 0.0f, -50.0f);
  EXPECT_EQ(out[1].red, 0.5f);
  EXPECT_EQ(out[2].red, 0.5f);
  // Vertical -50: column 1 moves up half a row; in row 0 the share for the
  // row above falls before the target and is dropped.
  std::vector<Pixel128> v{{0, 0, 0, 0}, {1, 1, 1, 1}}, vout(2);
  VexoSkew128(2, 1, 2, 1, v.data(), vout.data(), -50.0f, 0.0f);
  EXPECT_EQ(vout[1].red, 0.5f);
  EXPECT_EQ(vout[0].red, 0.0f);
}

}  // namespace
