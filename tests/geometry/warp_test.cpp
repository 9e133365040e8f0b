// The backward-mapping walk: clamping, the separable shortcut, 24-bit
// device-context rows and a missing snapshot.
#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "core/scratch.h"
#include "geometry/distortions.h"
#include "geometry/geometry_checks.h"
#include "geometry/warp.h"

using namespace effects::test;
using effects::packedPicture;
using effects::Picture;
using effects::Pixel24;
namespace g = effects::geometry;

namespace {

// Positions far outside on every side clamp to the nearest edge pixel.
struct Corners {
  int32_t width, height;
  g::Source operator()(int32_t x, int32_t y) const {
    constexpr int64_t lo = std::numeric_limits<int64_t>::min(), hi = std::numeric_limits<int64_t>::max();
    return {x < width / 2 ? lo : hi, y < height / 2 ? hi : int64_t{-1}};
  }
};

// Hides a mapping's separability, so the walk takes the per-pixel road.
template <class Map>
struct PerPixel {
  const Map& map;
  g::Source operator()(int32_t x, int32_t y) const { return map(x, y); }
};

TEST(Warp, PositionsOffThePictureRepeatTheEdges) {
  auto px = pattern32(12);
  const auto in = px;
  g::warp<g::Writes::ColourAndMask>(packedPicture(4, 3, px.data()), Corners{4, 3});
  // Left half from column 0, right half from column 3; row 0 from the last
  // row, rows 1 and 2 from the first.
  const std::vector<Pixel32> want{in[8], in[8], in[11], in[11], in[0], in[0], in[3], in[3], in[0], in[0], in[3], in[3]};
  expectSamePixels(px, want);
}

TEST(Warp, SeparableShortcutMatchesThePerPixelWalk) {
  for (const Size s : kSizes)
    for (int32_t style : {0, 1}) {
      const g::BlockWaves map(s.width, s.height, 7, 23, style);
      auto a = pattern64(static_cast<size_t>(s.width) * s.height), b = a;
      g::warp<g::Writes::Colour>(packedPicture(s.width, s.height, a.data()), map);
      g::warp<g::Writes::Colour>(packedPicture(s.width, s.height, b.data()), PerPixel<g::BlockWaves>{map});
      expectSamePixels(a, b);
    }
}

TEST(Warp, RunsOnPaddedTwentyFourBitRows) {
  // 5 x 3 pixels of 3 bytes: rows of 15 bytes padded to 16. The padding
  // must survive, and the colours must match the same warp on Pixel32.
  const int32_t w = 5, h = 3;
  std::vector<uint8_t> bits(16 * h, 0xEE);
  std::vector<Pixel32> wide(w * h);
  const auto pattern = pattern32(w * h, 5);
  for (int32_t y = 0; y < h; ++y)
    for (int32_t x = 0; x < w; ++x) {
      const Pixel32 p = pattern[y * w + x];
      bits[y * 16 + x * 3] = p.blue, bits[y * 16 + x * 3 + 1] = p.green, bits[y * 16 + x * 3 + 2] = p.red;
      wide[y * w + x] = p;
    }
  const auto rows = Picture<Pixel24>::paddedRows(w, h, bits.data());
  g::warp<g::Writes::Colour>(rows, g::Swirl(w, h, 3));
  g::warp<g::Writes::Colour>(packedPicture(w, h, wide.data()), g::Swirl(w, h, 3));
  int moved = 0;
  for (int32_t y = 0; y < h; ++y) {
    EXPECT_EQ(bits[y * 16 + 15], 0xEE);
    for (int32_t x = 0; x < w; ++x) {
      const Pixel24& p = rows.at(x, y);
      const Pixel32& q = wide[y * w + x];
      EXPECT_TRUE(p.blue == q.blue && p.green == q.green && p.red == q.red) << x << "," << y;
      moved += q.blue != pattern[y * w + x].blue;
    }
  }
  EXPECT_GT(moved, 0);
}

TEST(Warp, NoSnapshotNoChange) {
  auto px = pattern128(20);
  const auto in = px;
  effects::ScratchLimit none(0);
  g::warp<g::Writes::ColourAndMask>(packedPicture(4, 5, px.data()), g::Swirl(4, 5, 0));
  g::warp<g::Writes::Colour>(packedPicture(4, 5, px.data()), g::BlockWaves(4, 5, 3, 10, 0));
  expectSamePixels(px, in);
}

}  // namespace
