// The picture view, its walks, the value dispatcher and the scratch buffers.
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <vector>

#include "core/dispatch.h"
#include "core/picture.h"
#include "core/scratch.h"

namespace effects {
namespace {

TEST(Picture, RowsColumnsAndInteriorVisitTheStatedPixels) {
  std::vector<Pixel32> px(5 * 3);
  const auto pic = packedPicture(5, 3, px.data());
  ASSERT_FALSE(pic.empty());
  EXPECT_EQ(&pic.at(4, 2), &px[14]);
  EXPECT_EQ(pic.row(1), &px[5]);

  std::vector<int> raster, columns, interior;
  forEachXY(pic, [&](Pixel32& p, int32_t x, int32_t y) { raster.push_back(int(&p - px.data())); EXPECT_EQ(&p, &px[y * 5 + x]); });
  forEachColumnMajor(pic, [&](Pixel32& p, int32_t, int32_t) { columns.push_back(int(&p - px.data())); });
  forEachInterior(pic, 1, [&](Pixel32& p, int32_t, int32_t) { interior.push_back(int(&p - px.data())); });
  EXPECT_EQ(raster, (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14}));
  EXPECT_EQ(columns, (std::vector<int>{0, 5, 10, 1, 6, 11, 2, 7, 12, 3, 8, 13, 4, 9, 14}));
  EXPECT_EQ(interior, (std::vector<int>{6, 7, 8}));

  const int32_t steps[2][2] = {{-1, -1}, {1, 1}};
  const auto off = Offsets<2>::in(pic, steps);
  EXPECT_EQ(&neighbour(&pic.at(2, 1), off[0]), &pic.at(1, 0));
  EXPECT_EQ(&neighbour(&pic.at(2, 1), off[1]), &pic.at(3, 2));
}

TEST(Picture, EmptyAndImpossibleSizesVisitNothing) {
  Pixel64 one{};
  const int32_t sizes[][2] = {{0, 5}, {5, 0}, {-1, 3}, {3, -7}, {INT32_MAX, INT32_MAX}};
  for (const auto& s : sizes) {
    const auto pic = packedPicture(s[0], s[1], &one);
    EXPECT_TRUE(pic.empty()) << s[0] << " x " << s[1];
    forEachPixel(pic, [](Pixel64&) { ADD_FAILURE(); });
  }
  EXPECT_TRUE(packedPicture<Pixel64>(2, 2, nullptr).empty());
  EXPECT_EQ(wrappedElementCount(0x40000000u, 1u), 0);
  EXPECT_EQ(wrappedElementCount(3u, 5u), 60);
}

TEST(Picture, PaddedRowsOfTheDeviceContextFrame) {
  std::vector<uint8_t> bits(16 * 2);
  const auto pic = Picture<Pixel24>::paddedRows(5, 2, bits.data());
  EXPECT_EQ(pic.stride(), 16);  // 15 bytes of pixels, padded to 16
  EXPECT_EQ(reinterpret_cast<uint8_t*>(&pic.at(0, 1)), bits.data() + 16);
  EXPECT_EQ(Picture<Pixel24>::paddedRowBytes(4), 12u);
}

TEST(LayoutFacts, TruncateThenClampAndComparedReads) {
  EXPECT_EQ(truncClamp<Layout32>(254.99), 254);
  EXPECT_EQ(truncClamp<Layout32>(-0.99), 0);
  EXPECT_EQ(truncClamp<Layout32>(300.0), 255);
  EXPECT_EQ(truncClamp<Layout64>(40000.0), 32767);
  EXPECT_EQ(truncClamp<Layout32>(std::numeric_limits<double>::quiet_NaN()), 0);
  EXPECT_EQ(truncClamp<Layout32>(1e300), 0);  // beyond 32 bits: the most negative integer
  EXPECT_EQ(compared<Layout64>(40000), -25536);
  EXPECT_EQ(compared<Layout32>(200), 200);
}

TEST(Dispatch, WithValueCallsOnlyInsideItsRange) {
  int seen = -1;
  EXPECT_TRUE((withValue<0, 16>(7, [&](auto v) { seen = decltype(v)::value; })));
  EXPECT_EQ(seen, 7);
  EXPECT_FALSE((withValue<0, 16>(17, [&](auto) { seen = 99; })));
  EXPECT_FALSE((withValue<1, 6>(0, [&](auto) { seen = 99; })));
  EXPECT_EQ(seen, 7);
}

TEST(Scratch, ReusedPerThreadAndFailsUnderALimit) {
  auto a = scratchPicture<Pixel128>(8, 8, ScratchSlot::First);
  ASSERT_FALSE(a.empty());
  auto b = scratchPicture<Pixel128>(4, 4, ScratchSlot::First);
  EXPECT_EQ(static_cast<void*>(a.data()), static_cast<void*>(b.data()));  // a smaller request reuses the buffer
  auto c = scratchPicture<Pixel128>(4, 4, ScratchSlot::Second);
  EXPECT_NE(static_cast<void*>(c.data()), static_cast<void*>(b.data()));
  {
    ScratchLimit limit(100);
    EXPECT_TRUE(scratchPicture<Pixel32>(8, 8, ScratchSlot::Third).empty());
    EXPECT_FALSE(scratchPicture<Pixel32>(4, 4, ScratchSlot::Third).empty());
  }
  EXPECT_FALSE(scratchPicture<Pixel32>(8, 8, ScratchSlot::Third).empty());
  std::vector<Pixel32> px{{1, 2, 3, 4}, {5, 6, 7, 8}};
  const auto copy = scratchCopy(packedPicture(2, 1, px.data()), ScratchSlot::Fourth);
  EXPECT_EQ(copy.at(1, 0).red, 7);
}

}  // namespace
}  // namespace effects
