// The GDI calls the library makes, on a memory surface: natively against the
// in-memory stand-in, on Windows against real GDI.
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
  h.biSize = 40; h.biWidth = width; h.biHeight = height; h.biPlanes = 1; h.biBitCount = bitCount;
  return h;
}

// A 32-bit picture: memory row r, column c holds 0xA0 << 24 | r << 12 | c + 1.
std::vector<uint32_t> picture(int32_t width, int32_t rows) {
  std::vector<uint32_t> v;
  for (int32_t r = 0; r < rows; ++r)
    for (int32_t c = 0; c < width; ++c) v.push_back(0xA0000000u | (uint32_t(r) << 12) | uint32_t(c + 1));
  return v;
}

// Pixels outside [left, right) x [top, bottom) still hold the fill.
bool untouchedOutside(TestSurface& s, int32_t left, int32_t top, int32_t right, int32_t bottom) {
  for (int32_t y = 0; y < s.height(); ++y)
    for (int32_t x = 0; x < s.width(); ++x)
      if ((x < left || x >= right || y < top || y >= bottom) && s.at(x, y) != kFill) return false;
  return true;
}

int32_t draw(TestSurface& s, int32_t x, int32_t y, int32_t w, int32_t h, uint32_t lines, const void* bits,
             const BitmapHeader& hdr) {
  return setDIBitsToDevice(s.dc(), x, y, uint32_t(w), uint32_t(h), 0, 0, 0, lines, bits, &hdr, kRgbColours);
}

}  // namespace

TEST(GdiSetDIBitsToDevice, RowOrderClippingAndScanLines) {
  const auto pic = picture(3, 2);
  TestSurface a(5, 4, kFill);  // bottom-up: memory row 1 is the top; the fourth byte comes along
  EXPECT_EQ(draw(a, 1, 1, 3, 2, 2, pic.data(), header(3, 2, 32)), 2);
  EXPECT_TRUE(a.at(1, 1) == pic[3] && a.at(3, 1) == pic[5] && a.at(1, 2) == pic[0] && untouchedOutside(a, 1, 1, 4, 3));
  TestSurface b(5, 4, kFill);  // top-down
  EXPECT_EQ(draw(b, 1, 1, 3, 2, 2, pic.data(), header(3, -2, 32)), 2);
  EXPECT_TRUE(b.at(1, 1) == pic[0] && b.at(3, 2) == pic[5] && untouchedOutside(b, 1, 1, 4, 3));

  const auto sq = picture(3, 3);
  TestSurface c(5, 4, kFill);  // clipped on the left and at the bottom, then wholly outside
  EXPECT_EQ(draw(c, -1, 2, 3, 3, 3, sq.data(), header(3, 3, 32)), 3);
  EXPECT_TRUE(c.at(0, 2) == sq[7] && c.at(1, 3) == sq[5] && untouchedOutside(c, 0, 2, 2, 4));
  TestSurface d(5, 4, kFill);  // clipped on the right and at the top
  draw(d, 4, -2, 3, 3, 3, sq.data(), header(3, 3, 32));
  draw(d, 5, 0, 3, 3, 3, sq.data(), header(3, 3, 32));
  draw(d, 0, -3, 3, 3, 3, sq.data(), header(3, 3, 32));
  EXPECT_TRUE(d.at(4, 0) == sq[0] && untouchedOutside(d, 4, 0, 5, 1));

  // 2 of 4 scan lines: the picture's bottom two rows, in their own places;
  // more lines than the picture has: its own height
  const auto tall = picture(2, 4);
  TestSurface e(4, 6, kFill);
  EXPECT_EQ(draw(e, 1, 1, 2, 4, 2, tall.data(), header(2, 4, 32)), 2);
  EXPECT_TRUE(e.at(1, 4) == tall[0] && e.at(2, 3) == tall[3] && untouchedOutside(e, 1, 3, 3, 5));
  TestSurface f(4, 6, kFill);
  EXPECT_EQ(draw(f, 0, 0, 2, 4, 100, tall.data(), header(2, 4, 32)), 4);
  EXPECT_TRUE(f.at(0, 0) == tall[6] && f.at(1, 3) == tall[1] && untouchedOutside(f, 0, 0, 2, 4));

  const BitmapHeader small = header(3, 2, 32);
  EXPECT_EQ(setDIBitsToDevice(nullptr, 0, 0, 2, 2, 0, 0, 0, 2, pic.data(), &small, kRgbColours), 0);
}

TEST(GdiSetDIBitsToDevice, TwentyFourBitRowsArePaddedAndBringAFourthByteOfZero) {
  std::vector<uint8_t> pic(24, 0xEE);  // 3 pixels of 3 bytes: rows of 12 bytes
  for (int i = 0; i < 6; ++i) {
    uint8_t* p = &pic[static_cast<size_t>(i / 3 * 12 + i % 3 * 3)];
    p[0] = static_cast<uint8_t>(10 * (i / 3) + i % 3); p[1] = 0x80; p[2] = 0x90;
  }
  TestSurface s(3, 2, kFill);
  EXPECT_EQ(draw(s, 0, 0, 3, 2, 2, pic.data(), header(3, 2, 24)), 2);
  EXPECT_TRUE(s.at(0, 1) == 0x00908000u && s.at(2, 0) == 0x0090800Cu);
}

TEST(GdiGetDIBits, FormatQueryAndReads) {
  TestSurface s(5, 4, kFill);
  for (int32_t y = 0; y < 4; ++y)
    for (int32_t x = 0; x < 5; ++x) s.set(x, y, 0x7F000000u | (uint32_t(y) << 8) | uint32_t(x));
  BitmapHeader q{};
  q.biSize = 40;
  EXPECT_NE(getDIBits(s.dc(), s.bitmap(), 0, 0, nullptr, &q, kRgbColours), 0);
  EXPECT_TRUE(q.biWidth == 5 && q.biHeight == 4 && q.biBitCount == 32 && q.biPlanes == 1);

  // 24 bits, bottom-up, rows of 16 bytes: buffer row j is bitmap row 3 - j
  BitmapHeader h = header(5, 4, 24);
  std::vector<uint8_t> rows(64, 0xEE);
  EXPECT_EQ(getDIBits(s.dc(), s.bitmap(), 0, 4, rows.data(), &h, kRgbColours), 4);
  for (int32_t j = 0; j < 4; ++j)
    for (int32_t x = 0; x < 5; ++x) {
      const uint8_t* p = &rows[static_cast<size_t>(j * 16 + x * 3)];
      EXPECT_TRUE(p[0] == x && p[1] == 3 - j && p[2] == 0) << j << "," << x;
    }
  EXPECT_EQ(rows[15], 0);  // the row padding reads as 0
  // no rows wanted (a null buffer, or a start past the picture): only the
  // description is completed
  h = header(5, 4, 24);
  EXPECT_NE(getDIBits(s.dc(), s.bitmap(), 0, 4, nullptr, &h, kRgbColours), 0);
  EXPECT_EQ(h.biSizeImage, 64u);
  // a start scan and a count: scans 1 and 2 are bitmap rows 2 and 1
  h = header(5, 4, 24);
  EXPECT_EQ(getDIBits(s.dc(), s.bitmap(), 1, 2, rows.data(), &h, kRgbColours), 2);
  EXPECT_TRUE(rows[1] == 2 && rows[16 + 13] == 1 && rows[16 + 12] == 4);
  // taller than the bitmap: the extra bottom scans come back blank
  h = header(5, 6, 24);
  std::vector<uint8_t> tall(96, 0xEE);
  EXPECT_EQ(getDIBits(s.dc(), s.bitmap(), 0, 6, tall.data(), &h, kRgbColours), 4);
  EXPECT_TRUE(tall[0] == 0 && tall[30] == 0 && tall[32 + 10] == 3 && tall[81] == 0);
  // 32 bits, top-down, the fourth byte included; with fewer lines, the rows nearest the bottom
  h = header(5, -4, 32);
  std::vector<uint32_t> px(20, 0);
  EXPECT_EQ(getDIBits(s.dc(), s.bitmap(), 0, 4, px.data(), &h, kRgbColours), 4);
  EXPECT_TRUE(px[0] == 0x7F000000u && px[7] == 0x7F000102u && px[19] == 0x7F000304u);
  h = header(5, -4, 32);
  EXPECT_EQ(getDIBits(s.dc(), s.bitmap(), 0, 2, px.data(), &h, kRgbColours), 2);
  EXPECT_TRUE(px[0] == 0x7F000200u && px[9] == 0x7F000304u);
}

TEST(GdiSetDIBits, WritesBottomUpRows) {
  TestSurface s(3, 2, kFill);
  std::vector<uint8_t> rows(24, 0);
  for (int i = 0; i < 6; ++i) {
    uint8_t* p = &rows[static_cast<size_t>(i / 3 * 12 + i % 3 * 3)];
    p[0] = static_cast<uint8_t>(i % 3); p[1] = static_cast<uint8_t>(i / 3); p[2] = 0x44;
  }
  const BitmapHeader h = header(3, 2, 24);
  EXPECT_EQ(setDIBits(s.dc(), s.bitmap(), 0, 2, rows.data(), &h, kRgbColours), 2);
  EXPECT_TRUE(s.at(0, 1) == 0x00440000u && s.at(2, 0) == 0x00440102u);
}

TEST(GdiPixels, ReadAndWriteSinglePixels) {
  TestSurface s(3, 2, kFill);
  EXPECT_EQ(getPixel(s.dc(), 2, 1), 0x00332211u);  // 0x00BBGGRR
  for (auto [x, y] : {std::pair{-1, 0}, {3, 0}, {0, 2}, {0, -1}}) {
    EXPECT_EQ(getPixel(s.dc(), x, y), kInvalidColour);
    EXPECT_TRUE(setPixelV(s.dc(), x, y, 0));  // clipped away, not an error
  }
  EXPECT_TRUE(setPixelV(s.dc(), 1, 0, 0x00CCBBAAu));
  EXPECT_TRUE(s.at(1, 0) == 0xAABBCCu && getPixel(s.dc(), 1, 0) == 0x00CCBBAAu && untouchedOutside(s, 1, 0, 2, 1));
  EXPECT_EQ(getPixel(nullptr, 0, 0), kInvalidColour);
  EXPECT_FALSE(setPixelV(nullptr, 0, 0, 0));
}
