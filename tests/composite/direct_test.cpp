// Block transfer between a region and a canvas, the regional merge and the
// canvas-mask painter.
#include <gtest/gtest.h>

#include <vector>

#include "effects/effects.h"
#include "support/pictures.h"

using namespace effects::test;

namespace {

// Where each canvas pixel should come from after pasting a w x h region at
// (x, y): the region pixel index, or -1 for an uncovered canvas pixel.
std::vector<long> expectedSources(int32_t x, int32_t y, int32_t w, int32_t h, int32_t cw, int32_t ch, bool flip) {
  std::vector<long> from(static_cast<size_t>(cw * ch), -1);
  for (int32_t cy = 0; cy < ch; ++cy)
    for (int32_t cx = 0; cx < cw; ++cx) {
      const int32_t rx = cx - x, ry = cy - y;
      if (rx < 0 || ry < 0 || rx >= w || ry >= h) continue;
      from[cy * cw + cx] = (flip ? h - 1 - ry : ry) * w + rx;
    }
  return from;
}

struct Placement { int32_t x, y, w, h; };

// Region sticking out on each side, over all sides, and wholly outside.
const Placement kPlacements[] = {
    {-2, 1, 4, 2}, {5, 1, 4, 2}, {1, -3, 3, 10}, {2, 3, 3, 3},
    {-2, -2, 10, 9}, {0, 0, 6, 5}, {6, 0, 3, 3}, {0, 5, 3, 3},
    {-3, 0, 3, 3}, {0, -4, 3, 4}, {1, 1, 0, 2},
};

}  // namespace

TEST(DirectBitBlt, PastesEveryCoveredPixelAndOnlyThose) {
  const int32_t cw = 6, ch = 5;
  for (const auto& p : kPlacements) {
    for (bool flip : {false, true}) {
      for (bool withMask : {false, true}) {
        const auto region = pattern32(static_cast<size_t>(std::max(p.w * p.h, 1)), 7);
        auto canvas = pattern32(cw * ch, 8);
        const auto before = canvas;
        auto fn = flip ? (withMask ? Vexo32DirectBitBltFlipMaskDIB : Vexo32DirectBitBltFlipDIB)
                       : (withMask ? Vexo32DirectBitBltMaskDIB : Vexo32DirectBitBltDIB);
        EXPECT_EQ(fn(p.x, p.y, p.w, p.h, region.data(), canvas.data(), cw, ch), 1);
        const auto from = expectedSources(p.x, p.y, p.w, p.h, cw, ch, flip);
        for (size_t i = 0; i < canvas.size(); ++i) {
          const Pixel32 want = from[i] < 0 ? before[i] : region[static_cast<size_t>(from[i])];
          EXPECT_EQ(canvas[i].blue, want.blue) << p.x << "," << p.y << " flip " << flip << " at " << i;
          EXPECT_EQ(canvas[i].red, want.red);
          EXPECT_EQ(canvas[i].mask, withMask ? want.mask : before[i].mask);
        }
      }
    }
  }
}

TEST(BitBlt, CutsOnlyTheCoveredRegionPixels) {
  const int32_t cw = 6, ch = 5;
  for (const auto& p : kPlacements) {
    for (int variant = 0; variant < 3; ++variant) {  // plain, flip, flip with mask
      const bool flip = variant > 0, withMask = variant == 2;
      const size_t n = static_cast<size_t>(std::max(p.w * p.h, 1));
      auto region = pattern64(n, 9);
      const auto before = region;
      const auto canvas = pattern64(cw * ch, 10);
      auto fn = variant == 0 ? Vexo64BitBltDIB : variant == 1 ? Vexo64BitBltFlipDIB : Vexo64BitBltFlipMaskDIB;
      EXPECT_EQ(fn(p.x, p.y, p.w, p.h, region.data(), canvas.data(), cw, ch), 1);
      const auto from = expectedSources(p.x, p.y, p.w, p.h, cw, ch, flip);
      std::vector<long> filledBy(n, -1);
      for (size_t i = 0; i < from.size(); ++i)
        if (from[i] >= 0) filledBy[static_cast<size_t>(from[i])] = static_cast<long>(i);
      for (size_t r = 0; r < n && p.w > 0; ++r) {
        const Pixel64 want = filledBy[r] < 0 ? before[r] : canvas[static_cast<size_t>(filledBy[r])];
        EXPECT_EQ(region[r].green, want.green) << p.x << "," << p.y << " variant " << variant << " at " << r;
        EXPECT_EQ(region[r].mask, withMask ? want.mask : before[r].mask);
      }
    }
  }
}

TEST(BitBlt, FloatElementsTravelBitForBit) {
  auto region = pattern128(12, 3);
  region[4].red = -0.0f;
  region[5].blue = 3.0e38f;
  std::vector<Pixel128> canvas(16);
  EXPECT_EQ(Vexo128DirectBitBltFlipMaskDIB(1, 0, 3, 4, region.data(), canvas.data(), 4, 4), 1);
  std::vector<Pixel128> back(12);
  EXPECT_EQ(Vexo128BitBltFlipMaskDIB(1, 0, 3, 4, back.data(), canvas.data(), 4, 4), 1);
  EXPECT_TRUE(sameBytes(back, region));  // flipped twice is the identity
  std::vector<Pixel128> colours(12);
  Vexo128DirectBitBltDIB(0, 0, 3, 4, region.data(), canvas.data(), 3, 4);
  Vexo128BitBltDIB(0, 0, 3, 4, colours.data(), canvas.data(), 3, 4);
  EXPECT_EQ(bitsOf(colours[4].red), bitsOf(-0.0f));
  EXPECT_EQ(bitsOf(colours[5].mask), 0u);
}

TEST(DirectDIB, ClipsLikeTheBlockTransfers) {
  // a full-weight mode-0 composite of an opaque region is a paste
  const int32_t cw = 6, ch = 5;
  for (const auto& p : kPlacements) {
    auto region = pattern128(static_cast<size_t>(std::max(p.w * p.h, 1)), 5);
    for (auto& px : region) px.mask = 1.0f;
    auto blended = pattern128(cw * ch, 6), pasted = blended;
    EXPECT_EQ(Vexo128DirectDIB(p.x, p.y, p.w, p.h, region.data(), blended.data(), cw, ch, 100, 0), 1);
    Vexo128DirectBitBltDIB(p.x, p.y, p.w, p.h, region.data(), pasted.data(), cw, ch);
    EXPECT_TRUE(sameBytes(blended, pasted)) << p.x << "," << p.y;
  }
  std::vector<Pixel128> canvas(4), region(4, Pixel128{1, 1, 1, 1});
  EXPECT_EQ(Vexo128DirectDIB(0, 0, 2, 2, region.data(), canvas.data(), 2, 2, 0, 0), -1);
  EXPECT_EQ(canvas[0].red, 0.0f);
}

TEST(DirectDrawRegional, EightBitKeepsTheTruncatedFactor) {
  std::vector<Pixel32> src{{200, 100, 255, 255}, {100, 100, 100, 128}, {9, 9, 9, 0}};
  std::vector<Pixel32> dst{{0, 50, 0, 7}, {50, 50, 50, 8}, {1, 2, 3, 4}};
  EXPECT_EQ(Vexo32DirectDrawRegional(12, src.data(), dst.data()), 1);
  EXPECT_EQ(dst[0].blue, 200);   // round(200 x 0.999855)
  EXPECT_EQ(dst[0].green, 100);
  EXPECT_EQ(dst[0].red, 255);    // 254.96 rounds back up
  EXPECT_EQ(dst[0].mask, 7);
  EXPECT_EQ(dst[1].blue, 75);    // 50 + 50 x 128 x 0.003921 = 75.09
  EXPECT_EQ(dst[2].blue, 1);     // mask 0: untouched
  // 255 x 255 x 0.003921 = 254.96: with a full mask from 0 and s = 255 the
  // factor still rounds to 255, but from s = 128 at m = 255 it shows
  std::vector<Pixel32> s2{{128, 0, 0, 255}}, d2{{0, 0, 0, 0}};
  Vexo32DirectDrawRegional(4, s2.data(), d2.data());
  EXPECT_EQ(d2[0].blue, 128);    // 127.98
}

TEST(DirectDrawRegional, CountsAndOtherLayouts) {
  std::vector<Pixel64> s16{{30000, 0, 100, 32767}, {30000, 0, 0, 16384}, {5, 5, 5, 5}};
  std::vector<Pixel64> d16{{0, 1000, 100, 1}, {0, 0, 0, 2}, {0, 0, 0, 3}};
  EXPECT_EQ(Vexo64DirectDrawRegional(5, s16.data(), d16.data()), 1);  // two pixels
  EXPECT_EQ(d16[0].blue, 30000);
  EXPECT_EQ(d16[0].green, 0);
  EXPECT_EQ(d16[0].mask, 1);
  EXPECT_EQ(d16[1].blue, 15000);  // 30000 x 16384 / 32767 = 15000.46
  EXPECT_EQ(d16[2].blue, 0);      // beyond the count
  EXPECT_EQ(Vexo64DirectDrawRegional(0, s16.data(), d16.data()), 1);

  std::vector<Pixel128> sF{{1.0f, 0.5f, 2.0f, 0.5f}, {1.0f, 1.0f, 1.0f, 2.0f}};
  std::vector<Pixel128> dF{{0.0f, 0.5f, 0.0f, 0.25f}, {0.5f, 0.0f, 0.0f, 0.0f}};
  Vexo128DirectDrawRegional(8, sF.data(), dF.data());
  EXPECT_EQ(dF[0].blue, 0.5f);
  EXPECT_EQ(dF[0].red, 1.0f);
  EXPECT_EQ(dF[0].mask, 0.25f);
  EXPECT_EQ(dF[1].blue, 1.5f);    // a mask above 1 extrapolates, unclamped
}

TEST(DirectMaskDIB, MovesTheCanvasMaskTowardTheRegionMask) {
  std::vector<Pixel32> region{{1, 2, 3, 255}, {1, 2, 3, 200}, {1, 2, 3, 0}};
  std::vector<Pixel32> canvas{{10, 20, 30, 0}, {10, 20, 30, 50}, {10, 20, 30, 40}};
  EXPECT_EQ(Vexo32DirectMaskDIB(0, 0, 3, 1, region.data(), canvas.data(), 3, 1, 100, 12345), 1);
  EXPECT_EQ(canvas[0].mask, 255);
  EXPECT_EQ(canvas[1].mask, 168);  // 200 x 0.0039216 x 150 + 50 = 167.6: a partial mask moves part way
  EXPECT_EQ(canvas[2].mask, 40);
  EXPECT_EQ(canvas[0].blue, 10);
  canvas[1].mask = 50;
  Vexo32DirectMaskDIB(0, 0, 3, 1, region.data(), canvas.data(), 3, 1, 50, 0);
  EXPECT_EQ(canvas[1].mask, 109);  // 200 x 0.00196 x 150 + 50 = 108.8
  EXPECT_EQ(Vexo32DirectMaskDIB(0, 0, 3, 1, region.data(), canvas.data(), 3, 1, 0, 0), -1);
  EXPECT_EQ(Vexo32DirectMaskDIB(5, 0, 3, 1, region.data(), canvas.data(), 3, 1, 100, 0), 1);
  EXPECT_EQ(canvas[1].mask, 109);
}
