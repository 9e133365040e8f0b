// The GDI calls the library makes, checked on a memory surface. These run
// natively against the in-memory stand-in and on Windows against real GDI.
#include <gtest/gtest.h>

#include <vector>

#include "platform/gdi.h"
#include "platform/test_surface.h"

using namespace effects::platform;
using effects::test::TestSurface;

namespace {

constexpr uint32_t kFill = 0x5A112233u;

BitmapHeader header(int32_t width, int32_t height, uint16_t bitCount) {
  BitmapHeader h{};
  h.biSize = 40;
  h.biWidth = width;
  h.biHeight = height;
  h.biPlanes = 1;
  h.biBitCount = bitCount;
  h.biCompression = kRgb;
  return h;
}

// A 32-bit picture whose pixel in memory row r, column c is distinct.
std::vector<uint32_t> picture32(int32_t width, int32_t rows) {
  std::vector<uint32_t> v(static_cast<size_t>(width * rows));
  for (int32_t r = 0; r < rows; ++r)
    for (int32_t c = 0; c < width; ++c) v[static_cast<size_t>(r * width + c)] = 0xA0000000u | (0x10u * r << 8) | (c + 1u);
  return v;
}

void expectUntouchedOutside(TestSurface& s, int32_t left, int32_t top, int32_t right, int32_t bottom) {
  for (int32_t y = 0; y < s.height(); ++y)
    for (int32_t x = 0; x < s.width(); ++x) {
      if (x < left || x >= right || y < top || y >= bottom) {
        EXPECT_EQ(s.at(x, y), kFill) << x << "," << y;
      }
    }
}

}  // namespace

TEST(GdiSetDIBitsToDevice, BottomUpAndTopDownPicturesLandTheRightWayUp) {
  const auto pic = picture32(3, 2);
  {
    TestSurface s(5, 4, kFill);
    const BitmapHeader h = header(3, 2, 32);
    EXPECT_EQ(setDIBitsToDevice(s.dc(), 1, 1, 3, 2, 0, 0, 0, 2, pic.data(), &h, kRgbColours), 2);
    for (int32_t c = 0; c < 3; ++c) {
      EXPECT_EQ(s.at(1 + c, 1), pic[static_cast<size_t>(3 + c)]);  // memory row 1 is the top
      EXPECT_EQ(s.at(1 + c, 2), pic[static_cast<size_t>(c)]);      // the fourth byte comes along
    }
    expectUntouchedOutside(s, 1, 1, 4, 3);
  }
  {
    TestSurface s(5, 4, kFill);
    const BitmapHeader h = header(3, -2, 32);
    EXPECT_EQ(setDIBitsToDevice(s.dc(), 1, 1, 3, 2, 0, 0, 0, 2, pic.data(), &h, kRgbColours), 2);
    EXPECT_EQ(s.at(1, 1), pic[0]);
    EXPECT_EQ(s.at(3, 2), pic[5]);
    expectUntouchedOutside(s, 1, 1, 4, 3);
  }
}

TEST(GdiSetDIBitsToDevice, ClipsToTheTarget) {
  const auto pic = picture32(3, 3);
  const BitmapHeader h = header(3, 3, 32);
  TestSurface s(5, 4, kFill);
  EXPECT_EQ(setDIBitsToDevice(s.dc(), -1, 2, 3, 3, 0, 0, 0, 3, pic.data(), &h, kRgbColours), 3);
  // picture row t (top-down) is memory row 2 - t; column c lands at c - 1
  EXPECT_EQ(s.at(0, 2), pic[static_cast<size_t>(2 * 3 + 1)]);
  EXPECT_EQ(s.at(1, 3), pic[static_cast<size_t>(1 * 3 + 2)]);
  expectUntouchedOutside(s, 0, 2, 2, 4);

  TestSurface t(5, 4, kFill);
  setDIBitsToDevice(t.dc(), 4, -2, 3, 3, 0, 0, 0, 3, pic.data(), &h, kRgbColours);
  EXPECT_EQ(t.at(4, 0), pic[0]);  // picture (0, 2) is the bottom memory row
  expectUntouchedOutside(t, 4, 0, 5, 1);
  setDIBitsToDevice(t.dc(), 5, 0, 3, 3, 0, 0, 0, 3, pic.data(), &h, kRgbColours);
  setDIBitsToDevice(t.dc(), -3, 0, 3, 3, 0, 0, 0, 3, pic.data(), &h, kRgbColours);
  expectUntouchedOutside(t, 4, 0, 5, 1);
}

// Only the scan lines handed over are drawn: with 2 of 4 lines of a
// bottom-up picture, its bottom two rows, in their own places.
TEST(GdiSetDIBitsToDevice, DrawsOnlyTheScanLinesHandedOver) {
  const auto pic = picture32(2, 4);
  const BitmapHeader h = header(2, 4, 32);
  TestSurface s(4, 6, kFill);
  EXPECT_EQ(setDIBitsToDevice(s.dc(), 1, 1, 2, 4, 0, 0, 0, 2, pic.data(), &h, kRgbColours), 2);
  EXPECT_EQ(s.at(1, 4), pic[0]);
  EXPECT_EQ(s.at(2, 3), pic[3]);
  expectUntouchedOutside(s, 1, 3, 3, 5);
  // more lines than the picture has: the picture's own height is used
  TestSurface t(4, 6, kFill);
  EXPECT_EQ(setDIBitsToDevice(t.dc(), 0, 0, 2, 4, 0, 0, 0, 100, pic.data(), &h, kRgbColours), 4);
  EXPECT_EQ(t.at(0, 0), pic[6]);
  EXPECT_EQ(t.at(1, 3), pic[1]);
  expectUntouchedOutside(t, 0, 0, 2, 4);
}

TEST(GdiSetDIBitsToDevice, TwentyFourBitRowsArePaddedAndCarryNoFourthByte) {
  // 3 pixels of 3 bytes: rows of 12 bytes, the last 3 padding
  std::vector<uint8_t> pic(24, 0xEE);
  for (int r = 0; r < 2; ++r)
    for (int c = 0; c < 3; ++c) {
      pic[static_cast<size_t>(r * 12 + c * 3 + 0)] = static_cast<uint8_t>(10 * r + c);
      pic[static_cast<size_t>(r * 12 + c * 3 + 1)] = 0x80;
      pic[static_cast<size_t>(r * 12 + c * 3 + 2)] = 0x90;
    }
  const BitmapHeader h = header(3, 2, 24);
  TestSurface s(3, 2, kFill);
  EXPECT_EQ(setDIBitsToDevice(s.dc(), 0, 0, 3, 2, 0, 0, 0, 2, pic.data(), &h, kRgbColours), 2);
  EXPECT_EQ(s.at(0, 1), 0x00908000u);
  EXPECT_EQ(s.at(2, 0), 0x0090800Cu);
}

TEST(GdiSetDIBitsToDevice, NullDeviceContextPresentsNothing) {
  const auto pic = picture32(2, 2);
  const BitmapHeader h = header(2, 2, 32);
  EXPECT_EQ(setDIBitsToDevice(nullptr, 0, 0, 2, 2, 0, 0, 0, 2, pic.data(), &h, kRgbColours), 0);
}

TEST(GdiGetDIBits, FormatQueryAndReadsInBothRowOrders) {
  TestSurface s(5, 4, kFill);
  for (int32_t y = 0; y < 4; ++y)
    for (int32_t x = 0; x < 5; ++x) s.set(x, y, 0x7F000000u | (uint32_t(y) << 8) | uint32_t(x));

  BitmapHeader q{};
  q.biSize = 40;
  EXPECT_NE(getDIBits(s.dc(), s.bitmap(), 0, 0, nullptr, &q, kRgbColours), 0);
  EXPECT_EQ(q.biWidth, 5);
  EXPECT_EQ(q.biHeight, 4);
  EXPECT_EQ(q.biBitCount, 32);
  EXPECT_EQ(q.biPlanes, 1);

  // 24 bits, bottom-up: rows of 16 bytes (15 padded), the last row first
  BitmapHeader h = header(5, 4, 24);
  std::vector<uint8_t> rows(64, 0xEE);
  EXPECT_EQ(getDIBits(s.dc(), s.bitmap(), 0, 4, rows.data(), &h, kRgbColours), 4);
  for (int32_t j = 0; j < 4; ++j)
    for (int32_t x = 0; x < 5; ++x) {
      EXPECT_EQ(rows[static_cast<size_t>(j * 16 + x * 3 + 0)], x);
      EXPECT_EQ(rows[static_cast<size_t>(j * 16 + x * 3 + 1)], 3 - j);
      EXPECT_EQ(rows[static_cast<size_t>(j * 16 + x * 3 + 2)], 0);
    }
  // a start scan and a count: scans 1 and 2 are bitmap rows 2 and 1
  std::vector<uint8_t> two(32, 0xEE);
  h = header(5, 4, 24);
  EXPECT_EQ(getDIBits(s.dc(), s.bitmap(), 1, 2, two.data(), &h, kRgbColours), 2);
  EXPECT_EQ(two[1], 2);
  EXPECT_EQ(two[16 + 4 * 3 + 1], 1);
  EXPECT_EQ(two[16 + 4 * 3 + 0], 4);

  // a taller picture than the bitmap: its extra bottom scans come back blank
  h = header(5, 6, 24);
  std::vector<uint8_t> tall(96, 0xEE);
  EXPECT_EQ(getDIBits(s.dc(), s.bitmap(), 0, 6, tall.data(), &h, kRgbColours), 4);
  EXPECT_EQ(tall[0], 0);
  EXPECT_EQ(tall[16 + 14], 0);
  EXPECT_EQ(tall[32 + 3 * 3 + 1], 3);  // then bitmap rows 3, 2, 1, 0
  EXPECT_EQ(tall[80 + 1], 0);

  // top-down with fewer lines than the picture: the rows nearest its bottom
  h = header(5, -4, 32);
  std::vector<uint32_t> half(10, 0);
  EXPECT_EQ(getDIBits(s.dc(), s.bitmap(), 0, 2, half.data(), &h, kRgbColours), 2);
  EXPECT_EQ(half[0], 0x7F000200u);
  EXPECT_EQ(half[9], 0x7F000304u);

  // 32 bits, top-down
  h = header(5, -4, 32);
  std::vector<uint32_t> px(20, 0);
  EXPECT_EQ(getDIBits(s.dc(), s.bitmap(), 0, 4, px.data(), &h, kRgbColours), 4);
  EXPECT_EQ(px[0] & 0xFFFFFFu, 0u);
  EXPECT_EQ(px[7], 0x7F000102u);  // the fourth byte is read too
  EXPECT_EQ(px[19] & 0xFFFFFFu, 0x000304u);
}

TEST(GdiSetDIBits, WritesBottomUpRows) {
  TestSurface s(3, 2, kFill);
  std::vector<uint8_t> rows(24, 0);
  for (int j = 0; j < 2; ++j)
    for (int x = 0; x < 3; ++x) {
      rows[static_cast<size_t>(j * 12 + x * 3 + 0)] = static_cast<uint8_t>(x);
      rows[static_cast<size_t>(j * 12 + x * 3 + 1)] = static_cast<uint8_t>(j);
      rows[static_cast<size_t>(j * 12 + x * 3 + 2)] = 0x44;
    }
  const BitmapHeader h = header(3, 2, 24);
  EXPECT_EQ(setDIBits(s.dc(), s.bitmap(), 0, 2, rows.data(), &h, kRgbColours), 2);
  EXPECT_EQ(s.at(0, 1), 0x00440000u);  // 24-bit rows leave a fourth byte of 0
  EXPECT_EQ(s.at(2, 0) & 0xFFFFFFu, 0x440102u);
}

TEST(GdiPixels, ReadAndWriteSinglePixels) {
  TestSurface s(3, 2, kFill);
  EXPECT_EQ(getPixel(s.dc(), 2, 1), 0x00332211u);  // 0x00BBGGRR
  for (auto [x, y] : {std::pair{-1, 0}, {3, 0}, {0, 2}, {0, -1}}) {
    EXPECT_EQ(getPixel(s.dc(), x, y), kInvalidColour);
    EXPECT_TRUE(setPixelV(s.dc(), x, y, 0));  // clipped away, not an error
  }
  EXPECT_EQ(s.at(0, 0), kFill);
  EXPECT_TRUE(setPixelV(s.dc(), 1, 0, 0x00CCBBAAu));
  EXPECT_EQ(s.at(1, 0), 0xAABBCCu);  // fourth byte 0
  EXPECT_EQ(getPixel(s.dc(), 1, 0), 0x00CCBBAAu);
  EXPECT_EQ(s.at(0, 0), kFill);
  EXPECT_EQ(getPixel(nullptr, 0, 0), kInvalidColour);
  EXPECT_FALSE(setPixelV(nullptr, 0, 0, 0));
}
