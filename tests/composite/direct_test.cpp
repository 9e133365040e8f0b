// Block transfer between a region and a canvas, the regional merge and the
// canvas-mask painter.
#include <gtest/gtest.h>

#include <climits>
#include <vector>

#include "effects/effects.h"
#include "support/pictures.h"

using namespace effects::test;

namespace {

struct Placement { int32_t x, y, w, h; };
constexpr int32_t kCw = 6, kCh = 5;
// Sticking out on each side, over all sides, inside, and wholly outside.
const Placement kPlacements[] = {{-2, 1, 4, 2}, {5, 1, 4, 2}, {1, -3, 3, 10}, {2, 3, 3, 3}, {-2, -2, 10, 9},
                                 {0, 0, 6, 5}, {1, 1, 2, 2}, {6, 0, 3, 3}, {0, 5, 3, 3}, {-3, 0, 3, 3}, {0, -4, 3, 4}};

// The region pixel over canvas pixel i, or -1 where the region does not reach.
long regionPixelAt(const Placement& p, int32_t i, bool flip) {
  const int32_t rx = i % kCw - p.x, ry = i / kCw - p.y;
  if (rx < 0 || ry < 0 || rx >= p.w || ry >= p.h) return -1;
  return (flip ? p.h - 1 - ry : ry) * p.w + rx;
}

// One block transfer at every placement: the region (or, cutting, the
// canvas) is copied pixel for pixel where the two overlap, the mask element
// only by the Mask exports, and nothing else changes.
template <class P, class F>
void checkTransfer(F transfer, bool cut, bool flip, bool mask) {
  for (const auto& p : kPlacements) {
    auto region = pattern<P>(size_t(p.w * p.h), 7), canvas = pattern<P>(kCw * kCh, 8);
    auto wantRegion = region, wantCanvas = canvas;
    for (int32_t i = 0; i < kCw * kCh; ++i) {
      const long r = regionPixelAt(p, i, flip);
      if (r < 0) continue;
      P& to = cut ? wantRegion[size_t(r)] : wantCanvas[size_t(i)];
      const auto keep = to.mask;
      to = cut ? canvas[size_t(i)] : region[size_t(r)];
      if (!mask) to.mask = keep;
    }
    EXPECT_EQ(transfer(p.x, p.y, p.w, p.h, region.data(), canvas.data(), kCw, kCh), 1);
    EXPECT_TRUE(region == wantRegion && canvas == wantCanvas)
        << p.x << "," << p.y << " cut " << cut << " flip " << flip << " mask " << mask;
  }
}

}  // namespace

TEST(BlockTransfer, CopiesEveryCoveredPixelAndOnlyThose) {
  checkTransfer<Pixel32>(Vexo32DirectBitBltDIB, false, false, false);
  checkTransfer<Pixel32>(Vexo32DirectBitBltMaskDIB, false, false, true);
  checkTransfer<Pixel32>(Vexo32DirectBitBltFlipDIB, false, true, false);
  checkTransfer<Pixel32>(Vexo32DirectBitBltFlipMaskDIB, false, true, true);
  checkTransfer<Pixel64>(Vexo64BitBltDIB, true, false, false);
  checkTransfer<Pixel64>(Vexo64BitBltFlipDIB, true, true, false);
  checkTransfer<Pixel64>(Vexo64BitBltFlipMaskDIB, true, true, true);
  // positions whose far edge overflows 32 bits still cover nothing
  auto canvas = pattern<Pixel32>(kCw * kCh, 8);
  const auto before = canvas;
  const std::vector<Pixel32> region(25);
  for (auto [x, y] : {std::pair{INT32_MAX - 1, 0}, {0, INT32_MAX - 1}, {INT32_MIN, 0}, {0, INT32_MIN + 2}})
    EXPECT_EQ(Vexo32DirectBitBltMaskDIB(x, y, 5, 5, region.data(), canvas.data(), kCw, kCh), 1);
  EXPECT_EQ(canvas, before);
}

TEST(BlockTransfer, FloatsTravelBitForBit) {
  auto region = pattern<Pixel128>(12, 3);
  region[4].red = -0.0f;
  std::vector<Pixel128> canvas(16), back(12);
  Vexo128DirectBitBltFlipMaskDIB(1, 0, 3, 4, region.data(), canvas.data(), 4, 4);
  Vexo128BitBltFlipMaskDIB(1, 0, 3, 4, back.data(), canvas.data(), 4, 4);
  EXPECT_EQ(back, region);
}

TEST(DirectDrawRegional, TruncatedEightBitFactorAndOtherLayouts) {
  const std::vector<Pixel32> s8{{200, 128, 255, 255}, {100, 100, 100, 128}, {9, 9, 9, 0}, {0, 0, 218, 31}};
  std::vector<Pixel32> d8{{0, 0, 0, 7}, {50, 50, 50, 8}, {1, 2, 3, 4}, {0, 0, 0, 9}};
  EXPECT_EQ(Vexo32DirectDrawRegional(16, s8.data(), d8.data()), 1);
  // round(200 x 0.999855) = 200, 127.98 -> 128, 254.96 -> 255; 50 + 50 x 128
  // x 0.003921 = 75.09; mask 0 is skipped; 218 x 31 x 0.003921 = 26.498
  // (with 1/255 it would be 26.502 -> 27)
  EXPECT_EQ(d8, (std::vector<Pixel32>{{200, 128, 255, 7}, {75, 75, 75, 8}, {1, 2, 3, 4}, {0, 0, 26, 9}}));
  const Pixel64 s16{30000, 0, 0, 16384};
  Pixel64 d16{0, 1000, 0, 2};
  EXPECT_EQ(Vexo64DirectDrawRegional(4, &s16, &d16), 1);
  EXPECT_EQ(d16, (Pixel64{15000, 500, 0, 2}));  // 15000.46 and 499.985
  const Pixel128 sF{1.0f, 0.5f, 2.0f, 2.0f};
  Pixel128 dF{0.0f, 0.5f, 0.5f, 0.25f};
  Vexo128DirectDrawRegional(4, &sF, &dF);
  EXPECT_EQ(dF, (Pixel128{2.0f, 0.5f, 3.5f, 0.25f}));  // the mask is the weight, unclamped
}

TEST(DirectMaskDIB, MovesTheCanvasMaskTowardTheRegionMask) {
  std::vector<Pixel32> region{{1, 2, 3, 255}, {1, 2, 3, 200}, {1, 2, 3, 0}};
  std::vector<Pixel32> canvas{{10, 20, 30, 0}, {10, 20, 30, 50}, {10, 20, 30, 40}};
  EXPECT_EQ(Vexo32DirectMaskDIB(0, 0, 3, 1, region.data(), canvas.data(), 3, 1, 100, 12345), 1);
  // 255 reaches 255; 200 x 0.0039216 x 150 + 50 = 167.6 moves part way; mask 0 is skipped
  EXPECT_TRUE(canvas[0].mask == 255 && canvas[1].mask == 168 && canvas[2].mask == 40 && canvas[0].blue == 10);
  canvas[1].mask = 50;
  Vexo32DirectMaskDIB(0, 0, 3, 1, region.data(), canvas.data(), 3, 1, 50, 0);
  EXPECT_EQ(canvas[1].mask, 109);  // 108.8
  EXPECT_EQ(Vexo32DirectMaskDIB(0, 0, 3, 1, region.data(), canvas.data(), 3, 1, 0, 0), -1);
}
