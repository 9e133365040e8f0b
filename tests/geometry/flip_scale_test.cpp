// Flips, mirrors, the quarter turn and nearest-neighbour scaling.
#include <gtest/gtest.h>

#include <vector>

#include "core/scratch.h"
#include "geometry/geometry_checks.h"
#include "geometry/transform.h"

using namespace effects::test;

namespace {

// Pixel (x, y) of the result comes from in[from(x, y)]: the moves as plainly
// as they can be said.
template <class P, class F>
std::vector<P> moved(const std::vector<P>& in, Size s, F from) {
  std::vector<P> out(in.size());
  for (int32_t y = 0; y < s.height; ++y)
    for (int32_t x = 0; x < s.width; ++x) out[y * s.width + x] = in[from(x, y)];
  return out;
}

template <class P>
class Transform : public ::testing::Test {};
TYPED_TEST_SUITE(Transform, Layouts);

TYPED_TEST(Transform, FlipsReverseAndMirrorsReflectOneHalf) {
  using P = TypeParam;
  using A = Api<P>;
  for (const Size s : kSizes) {
    SCOPED_TRACE(::testing::Message() << s.width << " x " << s.height);
    const int32_t w = s.width, h = s.height;
    const auto in = pattern<P>(s.pixels());
    auto px = in;
    A::verticalFlip(w, h, px.data(), 0);
    expectSamePixels(px, moved(in, s, [&](int32_t x, int32_t y) { return (h - 1 - y) * w + x; }));
    A::verticalFlip(w, h, px.data(), 0);
    expectSamePixels(px, in);
    A::horizontalFlip(w, h, px.data(), 0);
    expectSamePixels(px, moved(in, s, [&](int32_t x, int32_t y) { return y * w + w - 1 - x; }));
    A::horizontalFlip(w, h, px.data(), 0);
    A::verticalMirror(w, h, px.data(), 0);
    expectSamePixels(px, moved(in, s, [&](int32_t x, int32_t y) { return (y < h / 2 ? h - 1 - y : y) * w + x; }));
    px = in;
    A::horizontalMirror(w, h, px.data(), 0);
    expectSamePixels(px, moved(in, s, [&](int32_t x, int32_t y) { return y * w + (x < w / 2 ? w - 1 - x : x); }));
  }
}

TYPED_TEST(Transform, QuarterTurnsTransposeAndFourMakeTheIdentity) {
  using P = TypeParam;
  std::vector<Size> sizes(std::begin(kSizes), std::end(kSizes));
  sizes.insert(sizes.end(), {{130, 130}, {128, 128}, {131, 66}, {64, 192}});  // several whole tiles
  for (const Size s : sizes) {
    SCOPED_TRACE(::testing::Message() << s.width << " x " << s.height);
    const auto in = pattern<P>(s.pixels());
    auto px = in;
    Api<P>::quarterTurn(s.width, s.height, px.data());
    // Row x of the result (rows `height` long) is column x of the picture.
    expectSamePixels(px, moved(in, {s.height, s.width}, [&](int32_t y, int32_t x) { return y * s.width + x; }));
    Api<P>::quarterTurn(s.height, s.width, px.data());
    Api<P>::quarterTurn(s.width, s.height, px.data());
    Api<P>::quarterTurn(s.height, s.width, px.data());
    expectSamePixels(px, in);
  }
}

// (Sizes below 1 are swept for every export by the frame test.)
TYPED_TEST(Transform, AMissingBlockChangesNothing) {
  using P = TypeParam;
  const auto in = pattern<P>(6);
  auto px = in, target = in;
  effects::ScratchLimit none(0);
  Api<P>::quarterTurn(2, 3, px.data());
  Api<P>::scale(2, 3, px.data(), 3, 2, target.data());
  expectSamePixels(px, in);
  expectSamePixels(target, in);
}

TYPED_TEST(Transform, ScaleCopiesAtTheSameSizeAndPicksByTruncatedSingleProducts) {
  using P = TypeParam;
  for (const Size s : kSizes) {
    const auto in = pattern<P>(s.pixels());
    std::vector<P> target(in.size());
    Api<P>::scale(s.width, s.height, in.data(), s.width, s.height, target.data());
    expectSamePixels(target, in);
  }
  const auto in = pattern<P>(16);
  std::vector<P> quarter(4), wide(6), tall(6), big(6);
  Api<P>::scale(4, 4, in.data(), 2, 2, quarter.data());
  expectSamePixels(quarter, {in[0], in[2], in[8], in[10]});
  // 10 to 6: the ratio 1.6666666f times 3 is 5.0 in single precision
  // (4.9999998 in double). Rows follow the same rule as columns.
  Api<P>::scale(10, 1, in.data(), 6, 1, wide.data());
  Api<P>::scale(1, 10, in.data(), 1, 6, tall.data());
  expectSamePixels(wide, {in[0], in[1], in[3], in[5], in[6], in[8]});
  expectSamePixels(tall, wide);
  Api<P>::scale(2, 1, in.data(), 3, 2, big.data());  // enlarging repeats
  expectSamePixels(big, {in[0], in[0], in[1], in[0], in[0], in[1]});
}

TYPED_TEST(Transform, VectorScaleRowGivesThePlainBytes) {
  using P = TypeParam;
  auto from = pattern<P>(12, 3);
  std::memset(&from[5], 0xFF, sizeof(P));  // 255s, 65535s and a NaN to wrap and carry
  for (int32_t width = 0; width < 10; ++width) {
    std::vector<int32_t> columns(width);
    for (int32_t x = 0; x < width; ++x) columns[x] = (x * 7 + width) % 12;
    auto plain = pattern<P>(width, 5);
    if (width > 1) std::memset(&plain[1], 0xFF, sizeof(P));
    auto fast = plain;
    effects::geometry::scaleRowPlain(plain.data(), from.data(), columns.data(), width);
    effects::geometry::scaleRow(fast.data(), from.data(), columns.data(), width);
    expectSamePixels(fast, plain);
  }
}

TEST(Transform, ScaleAddsColourWithWrapAndReplacesTheMask) {
  std::vector<Pixel32> s32{{250, 1, 255, 7}}, t32{{10, 2, 255, 200}};
  std::vector<Pixel64> s64{{65530, 1, 32767, 7}}, t64{{10, 2, 32767, 200}};
  std::vector<Pixel128> s128{{0.75f, -1, 2, 0.5f}}, t128{{0.5f, 1, 2, 0.25f}};
  VexoScale32(1, 1, s32.data(), 1, 1, t32.data());
  VexoScale64(1, 1, s64.data(), 1, 1, t64.data());
  VexoScale128(1, 1, s128.data(), 1, 1, t128.data());
  EXPECT_EQ(t32[0], (Pixel32{4, 3, 254, 7}));
  EXPECT_EQ(t64[0], (Pixel64{4, 3, 65534, 7}));
  EXPECT_EQ(t128[0], (Pixel128{1.25f, 0, 4, 0.5f}));
}

}  // namespace
