// The stand-in against real GDI, call for call: on Windows (under Wine) the
// same random calls go to both, on surfaces with the same pixels (DIB
// sections and device-dependent bitmaps), and every result, every byte read
// and every pixel left behind must agree. Elsewhere there is no real GDI.
#include <gtest/gtest.h>

#if defined(_WIN32)
#define EFFECTS_MEMORY_SURFACES 1
#include <cstring>
#include <string>
#include <vector>

#include "effects/surface.h"
#include "platform/gdi.h"
#include "platform/test_surface.h"

namespace gdi = effects::platform;
namespace mem = effects::platform::memory;
using effects::test::TestSurface;

namespace {

uint32_t draw(uint32_t& s) { return (s = s * 1664525u + 1013904223u) >> 8; }
int32_t in(uint32_t& s, int32_t lo, int32_t hi) { return lo + int32_t(draw(s) % uint32_t(hi - lo + 1)); }

// The same random picture in real GDI and in the stand-in.
struct Twin {
  TestSurface real;
  std::vector<uint32_t> pixels;
  EffectsBitmap bitmap;
  EffectsDeviceContext dc{&bitmap};
  Twin(TestSurface::Kind kind, uint32_t& s)
      : Twin(in(s, 1, 7), in(s, 1, 7), kind, s) {}
  Twin(int32_t w, int32_t h, TestSurface::Kind kind, uint32_t& s)
      : real(w, h, 0, kind), pixels(size_t(w) * size_t(h)), bitmap{w, h, reinterpret_cast<uint8_t*>(pixels.data())} {
    for (auto& p : pixels) p = draw(s) | draw(s) << 24;
    real.setAll(pixels.data());
  }
  bool same() {
    for (int32_t y = 0; y < bitmap.height; ++y)
      for (int32_t x = 0; x < bitmap.width; ++x)
        if (real.at(x, y) != pixels[size_t(y * bitmap.width + x)]) return false;
    return true;
  }
};

// A 24- or 32-bit header of up to 9 x 9 (a third of them top-down), and a
// buffer of random bytes with room for it.
gdi::BitmapHeader header(uint32_t& s) {
  return {40, in(s, 1, 9), in(s, 1, 9) * (in(s, 0, 2) ? 1 : -1), 1, uint16_t(in(s, 0, 1) ? 24 : 32), gdi::kRgb, 0, 0, 0, 0, 0};
}
std::vector<uint8_t> bytesFor(const gdi::BitmapHeader& h, uint32_t& s) {
  std::vector<uint8_t> v(gdi::dibStride(h.biWidth, h.biBitCount) * size_t(h.biHeight < 0 ? -h.biHeight : h.biHeight) + 64);
  for (auto& b : v) b = uint8_t(draw(s));
  return v;
}
std::string describe(int i, const gdi::BitmapHeader& h, uint32_t start, uint32_t lines) {
  return "case " + std::to_string(i) + ": " + std::to_string(h.biWidth) + "x" + std::to_string(h.biHeight) + "x" +
         std::to_string(h.biBitCount) + " scans " + std::to_string(start) + "+" + std::to_string(lines);
}

const TestSurface::Kind kKinds[] = {TestSurface::Kind::Section, TestSurface::Kind::DeviceDependent};

}  // namespace

// Format queries, reads (the header GDI completes and every byte of the
// buffer), writes (every pixel left behind), over start scans and counts
// running past either end.
TEST(GdiAgreement, GetDIBitsAndSetDIBits) {
  uint32_t s = 7;
  for (auto kind : kKinds)
    for (int i = 0; i < 400; ++i) {
      Twin t(kind, s);
      gdi::BitmapHeader hr = header(s), hm = hr;
      const uint32_t start = uint32_t(in(s, 0, 9)), lines = uint32_t(in(s, 0, 10));
      const std::string what = describe(i, hr, start, lines);
      if (in(s, 0, 1)) {
        const bool query = in(s, 0, 5) == 0;
        if (query) hr = hm = gdi::BitmapHeader{40, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
        std::vector<uint8_t> br(query ? 0 : bytesFor(hr, s).size(), 0xEE), bm = br;
        EXPECT_EQ(gdi::getDIBits(t.real.dc(), t.real.bitmap(), start, lines, query ? nullptr : br.data(), &hr, 0),
                  mem::getDIBits(&t.dc, &t.bitmap, start, lines, query ? nullptr : bm.data(), &hm, 0)) << what;
        EXPECT_TRUE(std::memcmp(&hr, &hm, 24) == 0 && br == bm) << what;  // through biSizeImage
      } else {
        const auto bits = bytesFor(hr, s);
        EXPECT_EQ(gdi::setDIBits(t.real.dc(), t.real.bitmap(), start, lines, bits.data(), &hr, 0),
                  mem::setDIBits(&t.dc, &t.bitmap, start, lines, bits.data(), &hr, 0)) << what;
        EXPECT_TRUE(t.same()) << what;
      }
    }
}

// Pictures drawn on a device context: positions, sizes, source offsets and
// scan ranges on every side of the bitmap; single pixels in and around it.
TEST(GdiAgreement, SetDIBitsToDeviceAndPixels) {
  uint32_t s = 13;
  for (auto kind : kKinds)
    for (int i = 0; i < 400; ++i) {
      Twin t(kind, s);
      const gdi::BitmapHeader h = header(s);
      const int32_t x = in(s, -4, 8), y = in(s, -4, 8), w = in(s, -1, 9), hh = in(s, -1, 9), xs = in(s, -2, 4), ys = in(s, -2, 4);
      const uint32_t start = uint32_t(in(s, 0, 5)), lines = uint32_t(in(s, 0, 10));
      const auto bits = bytesFor(h, s);
      const std::string what = describe(i, h, start, lines) + " at " + std::to_string(x) + "," + std::to_string(y) +
                               " size " + std::to_string(w) + "x" + std::to_string(hh) + " from " + std::to_string(xs) + "," + std::to_string(ys);
      EXPECT_EQ(gdi::setDIBitsToDevice(t.real.dc(), x, y, uint32_t(w), uint32_t(hh), xs, ys, start, lines, bits.data(), &h, 0),
                mem::setDIBitsToDevice(&t.dc, x, y, uint32_t(w), uint32_t(hh), xs, ys, start, lines, bits.data(), &h, 0)) << what;
      const int32_t px = in(s, -2, 8), py = in(s, -2, 8);
      const uint32_t colour = draw(s) & 0xFFFFFFu;
      EXPECT_EQ(gdi::getPixel(t.real.dc(), px, py), mem::getPixel(&t.dc, px, py)) << what;
      EXPECT_EQ(gdi::setPixelV(t.real.dc(), px, py, colour), mem::setPixelV(&t.dc, px, py, colour)) << what;
      EXPECT_TRUE(t.same()) << what;
    }
}

// Block transfers between surfaces and through a memory device context with
// a compatible bitmap, rectangles clipped on every side.
TEST(GdiAgreement, CompatibleBitmapsAndBitBlt) {
  uint32_t s = 19;
  for (auto kind : kKinds)
    for (int i = 0; i < 200; ++i) {
      Twin a(kind, s), b(kind, s);
      const int32_t cw = in(s, 1, 6), ch = in(s, 1, 6);
      void* rm = gdi::createCompatibleDC(a.real.dc());
      void* mm = mem::createCompatibleDC(&a.dc);
      void* rb = gdi::createCompatibleBitmap(a.real.dc(), cw, ch);
      void* mb = mem::createCompatibleBitmap(&a.dc, cw, ch);
      void* rOld = gdi::selectBitmap(rm, rb);
      void* mOld = mem::selectBitmap(mm, mb);
      ASSERT_TRUE(rm && mm && rb && mb && rOld && mOld);
      void* const from[][2] = {{a.real.dc(), &a.dc}, {rm, mm}, {a.real.dc(), &a.dc}};
      void* const to[][2] = {{rm, mm}, {b.real.dc(), &b.dc}, {b.real.dc(), &b.dc}};
      for (int k = 0; k < 3; ++k) {
        const int32_t r[6] = {in(s, -3, 7), in(s, -3, 7), in(s, 0, 8), in(s, 0, 8), in(s, -3, 7), in(s, -3, 7)};
        EXPECT_EQ(gdi::bitBlt(to[k][0], r[0], r[1], r[2], r[3], from[k][0], r[4], r[5]),
                  mem::bitBlt(to[k][1], r[0], r[1], r[2], r[3], from[k][1], r[4], r[5])) << i;
      }
      EXPECT_TRUE(b.same()) << i;
      for (int32_t y = -1; y <= ch; ++y)
        for (int32_t x = -1; x <= cw; ++x) EXPECT_EQ(gdi::getPixel(rm, x, y), mem::getPixel(mm, x, y)) << i;
      EXPECT_TRUE(gdi::selectBitmap(rm, rOld) == rb && mem::selectBitmap(mm, mOld) == mb);
      EXPECT_TRUE(gdi::deleteObject(rb) && mem::deleteObject(mb) && gdi::deleteDC(rm) && mem::deleteDC(mm));
    }
}

#else

TEST(GdiAgreement, NeedsRealGdi) { GTEST_SKIP() << "the stand-in is compared with real GDI on Windows"; }

#endif
