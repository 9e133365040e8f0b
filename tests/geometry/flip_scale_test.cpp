// Flips, mirrors, the quarter turn and nearest-neighbour scaling.
#include <gtest/gtest.h>

#include <vector>

#include "core/scratch.h"
#include "geometry/transform.h"
#include "geometry/geometry_checks.h"

using namespace effects::test;

namespace {

template <class P> struct Api;
#define GEOMETRY_API(N)                                              \
  template <> struct Api<Pixel##N> {                                 \
    static constexpr auto verticalFlip = VexoVerticalFlip##N;        \
    static constexpr auto horizontalFlip = VexoHorizontalFlip##N;    \
    static constexpr auto verticalMirror = VexoVerticalMirror##N;    \
    static constexpr auto horizontalMirror = VexoHorizontalMirror##N; \
    static constexpr auto quarterTurn = VexoRotate90_##N;            \
    static constexpr auto scale = VexoScale##N;                      \
  };
GEOMETRY_API(32)
GEOMETRY_API(64)
GEOMETRY_API(128)

// The moves as plainly as they can be said, pixel by pixel.
template <class P>
std::vector<P> flippedRows(const std::vector<P>& in, Size s) {
  std::vector<P> out(in.size());
  for (int32_t y = 0; y < s.height; ++y)
    for (int32_t x = 0; x < s.width; ++x) out[y * s.width + x] = in[(s.height - 1 - y) * s.width + x];
  return out;
}
template <class P>
std::vector<P> flippedColumns(const std::vector<P>& in, Size s) {
  std::vector<P> out(in.size());
  for (int32_t y = 0; y < s.height; ++y)
    for (int32_t x = 0; x < s.width; ++x) out[y * s.width + x] = in[y * s.width + s.width - 1 - x];
  return out;
}
template <class P>
std::vector<P> turned(const std::vector<P>& in, Size s) {
  std::vector<P> out(in.size());
  for (int32_t y = 0; y < s.height; ++y)
    for (int32_t x = 0; x < s.width; ++x) out[x * s.height + y] = in[y * s.width + x];
  return out;
}

template <class P>
class Transform : public ::testing::Test {};
TYPED_TEST_SUITE(Transform, Layouts);

TYPED_TEST(Transform, FlipsReverseAndMirrorsReflectOneHalf) {
  using P = TypeParam;
  for (const Size s : kSizes) {
    SCOPED_TRACE(::testing::Message() << s.width << " x " << s.height);
    const auto in = pattern<P>(static_cast<size_t>(s.width) * s.height);
    auto px = in;
    Api<P>::verticalFlip(s.width, s.height, px.data(), 0);
    expectSamePixels(px, flippedRows(in, s));
    Api<P>::verticalFlip(s.width, s.height, px.data(), 0);
    expectSamePixels(px, in);
    Api<P>::horizontalFlip(s.width, s.height, px.data(), 0);
    expectSamePixels(px, flippedColumns(in, s));
    Api<P>::horizontalFlip(s.width, s.height, px.data(), 0);
    expectSamePixels(px, in);

    // A mirror takes the first half from the flip and keeps the second.
    auto want = flippedRows(in, s);
    std::copy(in.begin() + (s.height / 2) * s.width, in.end(), want.begin() + (s.height / 2) * s.width);
    Api<P>::verticalMirror(s.width, s.height, px.data(), 0);
    expectSamePixels(px, want);
    px = in;
    want = flippedColumns(in, s);
    for (int32_t y = 0; y < s.height; ++y)
      for (int32_t x = s.width / 2; x < s.width; ++x) want[y * s.width + x] = in[y * s.width + x];
    Api<P>::horizontalMirror(s.width, s.height, px.data(), 0);
    expectSamePixels(px, want);
  }
}

TYPED_TEST(Transform, QuarterTurnsTransposeAndFourMakeTheIdentity) {
  using P = TypeParam;
  std::vector<Size> sizes(std::begin(kSizes), std::end(kSizes));
  sizes.insert(sizes.end(), {{130, 130}, {128, 128}, {131, 66}, {64, 192}});  // several whole tiles
  for (const Size s : sizes) {
    SCOPED_TRACE(::testing::Message() << s.width << " x " << s.height);
    const auto in = pattern<P>(static_cast<size_t>(s.width) * s.height);
    auto px = in;
    Api<P>::quarterTurn(s.width, s.height, px.data());
    expectSamePixels(px, turned(in, s));
    Api<P>::quarterTurn(s.height, s.width, px.data());
    Api<P>::quarterTurn(s.width, s.height, px.data());
    Api<P>::quarterTurn(s.height, s.width, px.data());
    expectSamePixels(px, in);
  }
}

TYPED_TEST(Transform, SizesBelowOneAndAMissingBlockChangeNothing) {
  using P = TypeParam;
  const auto in = pattern<P>(6);
  auto px = in, target = in;
  for (const Size s : {Size{0, 6}, Size{6, 0}, Size{-2, -3}, Size{3, -2}}) {
    Api<P>::verticalFlip(s.width, s.height, px.data(), 0);
    Api<P>::horizontalFlip(s.width, s.height, px.data(), 0);
    Api<P>::verticalMirror(s.width, s.height, px.data(), 0);
    Api<P>::horizontalMirror(s.width, s.height, px.data(), 0);
    Api<P>::quarterTurn(s.width, s.height, px.data());
    Api<P>::scale(s.width, s.height, px.data(), 2, 3, target.data());
    Api<P>::scale(2, 3, px.data(), s.width, s.height, target.data());
  }
  expectSamePixels(px, in);
  expectSamePixels(target, in);
  effects::ScratchLimit none(0);
  Api<P>::quarterTurn(2, 3, px.data());
  Api<P>::scale(2, 3, px.data(), 3, 2, target.data());
  expectSamePixels(px, in);
  expectSamePixels(target, in);
}

TYPED_TEST(Transform, ScaleToTheSameSizeIntoZeroIsACopy) {
  using P = TypeParam;
  for (const Size s : kSizes) {
    const auto in = pattern<P>(static_cast<size_t>(s.width) * s.height);
    std::vector<P> target(in.size());
    Api<P>::scale(s.width, s.height, in.data(), s.width, s.height, target.data());
    expectSamePixels(target, in);
  }
}

TYPED_TEST(Transform, ScalePicksByTruncatedSinglePrecisionProducts) {
  using P = TypeParam;
  // 4 x 4 to 2 x 2 takes every second pixel of every second row.
  const auto in = pattern<P>(16);
  std::vector<P> target(4);
  Api<P>::scale(4, 4, in.data(), 2, 2, target.data());
  expectSamePixels(target, {in[0], in[2], in[8], in[10]});
  // 10 to 6 has the ratio 1.6666666f; x = 3 gives 5.0 in single precision
  // (4.9999998 in double). Rows and columns follow the same rule.
  const auto row = pattern<P>(10, 7);
  std::vector<P> wide(6), tall(6);
  Api<P>::scale(10, 1, row.data(), 6, 1, wide.data());
  Api<P>::scale(1, 10, row.data(), 1, 6, tall.data());
  const std::vector<P> picked{row[0], row[1], row[3], row[5], row[6], row[8]};
  expectSamePixels(wide, picked);
  expectSamePixels(tall, picked);
  // Enlarging repeats: 2 x 1 into 3 x 2 uses columns 0, 0, 1 on both rows.
  std::vector<P> big(6);
  Api<P>::scale(2, 1, row.data(), 3, 2, big.data());
  expectSamePixels(big, {row[0], row[0], row[1], row[0], row[0], row[1]});
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
  VexoScale32(1, 1, s32.data(), 1, 1, t32.data());
  EXPECT_EQ(t32[0], (Pixel32{4, 3, 254, 7}));
  std::vector<Pixel64> s64{{65530, 1, 32767, 7}}, t64{{10, 2, 32767, 200}};
  VexoScale64(1, 1, s64.data(), 1, 1, t64.data());
  EXPECT_EQ(t64[0], (Pixel64{4, 3, 65534, 7}));
  std::vector<Pixel128> s128{{0.75f, -1, 2, 0.5f}}, t128{{0.5f, 1, 2, 0.25f}};
  VexoScale128(1, 1, s128.data(), 1, 1, t128.data());
  EXPECT_EQ(t128[0], (Pixel128{1.25f, 0, 4, 0.5f}));
}

TEST(Transform, WorkedExamples) {
  const Pixel32 a{1, 1, 1, 1}, b{2, 2, 2, 2}, c{3, 3, 3, 3}, d{4, 4, 4, 4}, e{5, 5, 5, 5}, f{6, 6, 6, 6};
  std::vector<Pixel32> column{a, b, c};
  VexoVerticalMirror32(1, 3, column.data(), 0);
  expectSamePixels(column, {c, b, c});
  std::vector<Pixel32> row{a, b, c, d};
  VexoHorizontalMirror32(4, 1, row.data(), 0);
  expectSamePixels(row, {d, c, c, d});
  std::vector<Pixel32> picture{a, b, c, d, e, f};
  VexoRotate90_32(3, 2, picture.data());
  expectSamePixels(picture, {a, d, b, e, c, f});
}

}  // namespace
