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

// An uncompressed picture of width x height (positive: bottom-up) pixels.
BitmapHeader header(int32_t width, int32_t height, uint16_t bitCount) {
  return BitmapHeader{40, width, height, 1, bitCount, kRgb, 0, 0, 0, 0, 0};
}

// A 32-bit picture: memory row r, column c holds 0xA0 << 24 | r << 12 | c + 1.
std::vector<uint32_t> picture(int32_t width, int32_t rows) {
  std::vector<uint32_t> v;
  for (int32_t r = 0; r < rows; ++r)
    for (int32_t c = 0; c < width; ++c) v.push_back(0xA0000000u | (uint32_t(r) << 12) | uint32_t(c + 1));
  return v;
}

}  // namespace

// Each case draws a 32-bit picture on a fresh 5 x 6 surface and names the
// rectangle that changes and up to three of its pixels (surface x, y and the
// picture pixel, in memory order, that lands there).
TEST(GdiSetDIBitsToDevice, RowOrderClippingAndScanLines) {
  struct Probe { int32_t x, y, index; };
  const struct {
    const char* what;
    int32_t x, y, cx, cy;
    uint32_t lines;
    int32_t picWidth, picHeight, result;
    int32_t left, top, right, bottom;
    std::vector<Probe> probes;
  } cases[] = {
      {"bottom-up, fourth byte kept", 1, 1, 3, 2, 2, 3, 2, 2, 1, 1, 4, 3, {{1, 1, 3}, {3, 1, 5}, {1, 2, 0}}},
      {"top-down", 1, 1, 3, 2, 2, 3, -2, 2, 1, 1, 4, 3, {{1, 1, 0}, {3, 2, 5}}},
      {"clipped left and bottom", -1, 4, 3, 3, 3, 3, 3, 3, 0, 4, 2, 6, {{0, 4, 7}, {1, 5, 5}}},
      {"clipped right and top", 4, -2, 3, 3, 3, 3, 3, 3, 4, 0, 5, 1, {{4, 0, 0}}},
      {"wholly right", 5, 0, 3, 3, 3, 3, 3, 3, 0, 0, 0, 0, {}},
      {"wholly above", 0, -3, 3, 3, 3, 3, 3, 3, 0, 0, 0, 0, {}},
      // 2 of 4 scan lines: the picture's bottom two rows, in their own places
      {"fewer scan lines", 1, 1, 2, 4, 2, 2, 4, 2, 1, 3, 3, 5, {{1, 4, 0}, {2, 3, 3}}},
      {"more scan lines than rows", 0, 0, 2, 4, 100, 2, 4, 4, 0, 0, 2, 4, {{0, 0, 6}, {1, 3, 1}}},
      // GDI reads the size as signed: 2^32 - 3 is an empty rectangle
      {"negative width", 1, 1, -3, 2, 2, 3, 2, 0, 0, 0, 0, 0, {}},
      {"negative height", 1, 1, 3, -2, 2, 3, -2, 2, 0, 0, 0, 0, {}},
  };
  for (const auto& c : cases) {
    TestSurface s(5, 6, kFill);
    const auto pic = picture(c.picWidth, c.picHeight < 0 ? -c.picHeight : c.picHeight);
    const BitmapHeader h = header(c.picWidth, c.picHeight, 32);
    EXPECT_EQ(setDIBitsToDevice(s.dc(), c.x, c.y, uint32_t(c.cx), uint32_t(c.cy), 0, 0, 0, c.lines, pic.data(), &h,
                                kRgbColours),
              c.result)
        << c.what;
    for (const Probe& p : c.probes)
      EXPECT_EQ(s.at(p.x, p.y), pic[size_t(p.index)]) << c.what << " at " << p.x << "," << p.y;
    EXPECT_TRUE(s.untouchedOutside(c.left, c.top, c.right, c.bottom)) << c.what;
  }
  const BitmapHeader small = header(3, 2, 32);
  const auto pic = picture(3, 2);
  EXPECT_EQ(setDIBitsToDevice(nullptr, 0, 0, 2, 2, 0, 0, 0, 2, pic.data(), &small, kRgbColours), 0);
}

// GetDIBits and SetDIBits move 24- and 32-bit rows padded to 4 bytes,
// bottom-up for a positive height; a format query describes the bitmap.
// Row sizes padded to 4 bytes, and counted past 32 bits for the widest rows
// (2^27 32-bit pixels already have 2^32 bits).
TEST(GdiDIBits, RowSizes) {
  EXPECT_EQ(dibStride(5, 24), 16u);
  EXPECT_EQ(dibStride(5, 32), 20u);
  EXPECT_EQ(dibStride(1 << 27, 32), uint64_t(1) << 29);
  EXPECT_EQ(dibStride(INT32_MAX, 24), (uint64_t(INT32_MAX) * 3 + 3) / 4 * 4);
}

TEST(GdiDIBits, FormatQueryReadsAndWrites) {
  TestSurface s(5, 4, kFill);
  for (int32_t y = 0; y < 4; ++y)
    for (int32_t x = 0; x < 5; ++x) s.set(x, y, 0x7F000000u | (uint32_t(y) << 8) | uint32_t(x));
  BitmapHeader q{};
  q.biSize = 40;
  EXPECT_EQ(getDIBits(s.dc(), s.bitmap(), 0, 0, nullptr, &q, kRgbColours), 4);  // the scan lines
  EXPECT_TRUE(q.biWidth == 5 && q.biHeight == 4 && q.biBitCount == 32 && q.biPlanes == 1);
  // no bitmap, or no device context: nothing to describe
  BitmapHeader none{};
  none.biSize = 40;
  EXPECT_EQ(getDIBits(s.dc(), nullptr, 0, 0, nullptr, &none, kRgbColours), 0);
  EXPECT_EQ(getDIBits(nullptr, s.bitmap(), 0, 0, nullptr, &none, kRgbColours), 0);
  // no rows wanted, a bit count given: only the description is completed
  BitmapHeader h = header(5, 4, 24);
  EXPECT_NE(getDIBits(s.dc(), s.bitmap(), 0, 4, nullptr, &h, kRgbColours), 0);
  EXPECT_EQ(h.biSizeImage, 64u);

  // 24 bits, rows of 16 bytes: buffer row j is bitmap row 3 - j; the row
  // padding reads as 0. Written back, each row lands where it came from, with
  // a fourth byte of 0.
  std::vector<uint8_t> rows(64, 0xEE);
  EXPECT_EQ(getDIBits(s.dc(), s.bitmap(), 0, 4, rows.data(), &h, kRgbColours), 4);
  for (int32_t j = 0; j < 4; ++j)
    for (int32_t x = 0; x < 5; ++x) {
      uint8_t* p = &rows[size_t(j * 16 + x * 3)];
      EXPECT_TRUE(p[0] == x && p[1] == 3 - j && p[2] == 0) << j << "," << x;
      p[2] = 0x44;
    }
  EXPECT_EQ(rows[15], 0);
  EXPECT_EQ(setDIBits(s.dc(), s.bitmap(), 0, 4, rows.data(), &h, kRgbColours), 4);
  EXPECT_TRUE(s.at(0, 3) == 0x00440300u && s.at(4, 0) == 0x00440004u);
  // a start scan and a count: scans 1 and 2 are bitmap rows 2 and 1
  EXPECT_EQ(getDIBits(s.dc(), s.bitmap(), 1, 2, rows.data(), &h, kRgbColours), 2);
  EXPECT_TRUE(rows[1] == 2 && rows[16 + 13] == 1 && rows[16 + 12] == 4);
  // taller than the bitmap: the extra bottom scans come back blank
  h = header(5, 6, 24);
  std::vector<uint8_t> tall(96, 0xEE);
  EXPECT_EQ(getDIBits(s.dc(), s.bitmap(), 0, 6, tall.data(), &h, kRgbColours), 4);
  EXPECT_TRUE(tall[0] == 0 && tall[30] == 0 && tall[32 + 10] == 3 && tall[81] == 0);
  // 32 bits, top-down, the fourth byte included; fewer lines give the rows
  // nearest the bottom
  h = header(5, -4, 32);
  std::vector<uint32_t> px(20, 0);
  s.set(1, 1, 0x7F440101u);
  EXPECT_EQ(getDIBits(s.dc(), s.bitmap(), 0, 4, px.data(), &h, kRgbColours), 4);
  EXPECT_TRUE(px[0] == 0x00440000u && px[6] == 0x7F440101u && px[19] == 0x00440304u);
  EXPECT_EQ(getDIBits(s.dc(), s.bitmap(), 0, 2, px.data(), &h, kRgbColours), 2);
  EXPECT_TRUE(px[0] == 0x00440200u && px[9] == 0x00440304u);
}

TEST(GdiPixels, ReadAndWriteSinglePixels) {
  TestSurface s(3, 2, kFill);
  EXPECT_EQ(getPixel(s.dc(), 2, 1), 0x00332211u);  // 0x00BBGGRR
  for (auto [x, y] : {std::pair{-1, 0}, {3, 0}, {0, 2}, {0, -1}}) {
    EXPECT_EQ(getPixel(s.dc(), x, y), kInvalidColour);
    EXPECT_TRUE(setPixelV(s.dc(), x, y, 0));  // clipped away, not an error
  }
  EXPECT_TRUE(setPixelV(s.dc(), 1, 0, 0x00CCBBAAu));
  EXPECT_EQ(s.at(1, 0), 0xAABBCCu);
  EXPECT_TRUE(s.untouchedOutside(1, 0, 2, 1));
  EXPECT_EQ(getPixel(nullptr, 0, 0), kInvalidColour);
  EXPECT_FALSE(setPixelV(nullptr, 0, 0, 0));
}

// The rotation entry point's round trip: a memory device context, a black
// compatible bitmap selected into it, whole pixels (fourth byte included)
// copied in and out with clipping to both bitmaps, and everything released.
TEST(GdiMemoryDC, CompatibleBitmapSelectBlitAndRelease) {
  TestSurface s(5, 4, kFill);
  for (int32_t y = 0; y < 4; ++y)
    for (int32_t x = 0; x < 5; ++x) s.set(x, y, 0x7F000000u | (uint32_t(y) << 8) | uint32_t(x));
  void* mem = createCompatibleDC(s.dc());
  void* bm = createCompatibleBitmap(s.dc(), 3, 2);
  ASSERT_TRUE(mem && bm);
  void* stock = selectBitmap(mem, bm);
  EXPECT_NE(stock, nullptr);
  EXPECT_TRUE(getPixel(mem, 2, 1) == 0 && getPixel(mem, 3, 0) == kInvalidColour);

  EXPECT_TRUE(bitBlt(mem, 0, 0, 3, 2, s.dc(), 1, 1));
  EXPECT_EQ(getPixel(mem, 2, 1), 0x030200u);  // surface pixel (3, 2) as 0x00BBGGRR
  // back onto the surface at (3, 2): clipped at the right edge
  EXPECT_TRUE(bitBlt(s.dc(), 3, 2, 3, 2, mem, 0, 0));
  EXPECT_TRUE(s.at(3, 2) == 0x7F000101u && s.at(4, 3) == 0x7F000202u && s.at(2, 2) == 0x7F000202u);
  // a source rectangle partly outside its bitmap: only the part inside lands
  EXPECT_TRUE(bitBlt(s.dc(), 0, 0, 2, 2, mem, 2, -1));
  EXPECT_TRUE(s.at(0, 1) == 0x7F000103u && s.at(1, 1) == 0x7F000101u && s.at(0, 0) == 0x7F000000u);

  EXPECT_EQ(selectBitmap(mem, stock), bm);
  EXPECT_TRUE(deleteObject(bm));
  EXPECT_TRUE(deleteDC(mem));
  EXPECT_EQ(createCompatibleBitmap(s.dc(), 0, 3), nullptr);
  EXPECT_EQ(createCompatibleBitmap(s.dc(), 3, -1), nullptr);
}
