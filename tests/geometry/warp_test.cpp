// The backward-mapping walk: the separable shortcut, 24-bit device-context
// rows and a missing snapshot. (Clamping: the waves and swirl tests.)
#include <gtest/gtest.h>

#include <vector>

#include "core/scratch.h"
#include "geometry/distortions.h"
#include "geometry/geometry_checks.h"
#include "geometry/warp.h"

using namespace effects::test;
using effects::packedPicture;
namespace g = effects::geometry;

namespace {

// Hides a mapping's separability, so the walk takes the per-pixel road.
template <class Map>
struct PerPixel {
  const Map& map;
  g::Source operator()(int32_t x, int32_t y) const { return map(x, y); }
};

TEST(Warp, SeparableShortcutMatchesThePerPixelWalk) {
  for (const Size s : kSizes)
    for (int32_t style : {0, 1}) {
      const g::BlockWaves map(s.width, s.height, 7, 23, style);
      auto a = pattern<Pixel64>(s.pixels()), b = a;
      g::warp<g::Writes::Colour>(packedPicture(s.width, s.height, a.data()), map);
      g::warp<g::Writes::Colour>(packedPicture(s.width, s.height, b.data()), PerPixel<g::BlockWaves>{map});
      expectSamePixels(a, b);
    }
}

TEST(Warp, RunsOnPaddedTwentyFourBitRows) {
  // 5 x 3 pixels of 3 bytes: rows of 15 bytes padded to 16. The padding
  // survives and the colours match the same warp on Pixel32.
  const int32_t w = 5, h = 3;
  std::vector<uint8_t> bits(16 * h, 0xEE);
  auto wide = pattern<Pixel32>(w * h, 5);
  const auto in = wide;
  for (int32_t i = 0; i < w * h; ++i) std::memcpy(&bits[i / w * 16 + i % w * 3], &wide[i], 3);
  const auto rows = effects::Picture<effects::Pixel24>::paddedRows(w, h, bits.data());
  g::warp<g::Writes::Colour>(rows, g::Swirl(w, h, 3));
  g::warp<g::Writes::Colour>(packedPicture(w, h, wide.data()), g::Swirl(w, h, 3));
  EXPECT_TRUE(differ(wide, in));
  for (int32_t i = 0; i < w * h; ++i) EXPECT_EQ(std::memcmp(&bits[i / w * 16 + i % w * 3], &wide[i], 3), 0) << i;
  for (int32_t y = 0; y < h; ++y) EXPECT_EQ(bits[y * 16 + 15], 0xEE);
}

TEST(Warp, NoSnapshotNoChange) {
  auto px = pattern<Pixel128>(20);
  const auto in = px;
  effects::ScratchLimit none(0);
  g::warp<g::Writes::ColourAndMask>(packedPicture(4, 5, px.data()), g::Swirl(4, 5, 0));
  g::warp<g::Writes::Colour>(packedPicture(4, 5, px.data()), g::BlockWaves(4, 5, 3, 10, 0));
  expectSamePixels(px, in);
}

}  // namespace
