// The stand-in against real GDI, call for call: on Windows (under Wine) the
// same random calls go to both, on surfaces with the same pixels, and every
// result, every byte read and every pixel left behind must agree. Elsewhere
// there is no real GDI to compare with.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#if defined(_WIN32)
#define EFFECTS_MEMORY_SURFACES 1
#include "effects/surface.h"
#include "platform/gdi.h"
#include "platform/test_surface.h"

namespace gdi = effects::platform;
namespace mem = effects::platform::memory;
using effects::test::TestSurface;

namespace {

class Draws {
 public:
  explicit Draws(uint32_t seed) : s_(seed) {}
  uint32_t next() {
    s_ = s_ * 1664525u + 1013904223u;
    return s_ >> 8;
  }
  int32_t in(int32_t lo, int32_t hi) { return lo + int32_t(next() % uint32_t(hi - lo + 1)); }
  bool chance(int percent) { return int(next() % 100u) < percent; }

 private:
  uint32_t s_;
};

// The same picture twice: in real GDI and in the stand-in.
struct Twin {
  TestSurface real;
  std::vector<uint8_t> pixels;
  EffectsBitmap bitmap;
  EffectsDeviceContext dc;

  Twin(int32_t w, int32_t h, TestSurface::Kind kind, Draws& d)
      : real(w, h, 0, kind), pixels(size_t(w) * size_t(h) * 4u), bitmap{w, h, pixels.data()}, dc{&bitmap} {
    std::vector<uint32_t> v(size_t(w) * size_t(h));
    for (uint32_t& p : v) p = d.next() | (d.next() << 24);
    real.setAll(v.data());
    std::memcpy(pixels.data(), v.data(), pixels.size());
  }
  // The first pixel where the two differ, or "" when they agree.
  std::string difference() {
    for (int32_t y = 0; y < bitmap.height; ++y)
      for (int32_t x = 0; x < bitmap.width; ++x) {
        uint32_t m;
        std::memcpy(&m, pixels.data() + (size_t(y) * size_t(bitmap.width) + size_t(x)) * 4u, 4);
        const uint32_t r = real.at(x, y);
        if (m != r) {
          char buf[96];
          std::snprintf(buf, sizeof buf, "pixel %d,%d: GDI %08x, stand-in %08x", x, y, r, m);
          return buf;
        }
      }
    return "";
  }
};

gdi::BitmapHeader randomHeader(Draws& d, bool query) {
  gdi::BitmapHeader h{};
  h.biSize = 40;
  if (query) return h;
  h.biWidth = d.in(1, 9);
  h.biHeight = d.in(1, 9) * (d.chance(30) ? -1 : 1);
  h.biPlanes = 1;
  h.biBitCount = d.chance(50) ? 24 : 32;
  h.biCompression = gdi::kRgb;
  return h;
}

std::vector<uint8_t> randomBytes(Draws& d, size_t n) {
  std::vector<uint8_t> v(n);
  for (auto& b : v) b = static_cast<uint8_t>(d.next());
  return v;
}

size_t imageBytes(const gdi::BitmapHeader& h) {
  const int32_t height = h.biHeight < 0 ? -h.biHeight : h.biHeight;
  return size_t(gdi::dibStride(h.biWidth, h.biBitCount)) * size_t(height);
}

const TestSurface::Kind kKinds[] = {TestSurface::Kind::Section, TestSurface::Kind::DeviceDependent};

}  // namespace

// Format queries and pixel reads: the header GDI fills in, the result and
// every byte of the buffer (filled alike beforehand) agree.
TEST(GdiAgreement, GetDIBits) {
  Draws d(7);
  for (auto kind : kKinds) {
    for (int i = 0; i < 400; ++i) {
      Twin t(d.in(1, 7), d.in(1, 7), kind, d);
      const bool query = d.chance(15);
      gdi::BitmapHeader hr = randomHeader(d, query), hm = hr;
      const uint32_t start = uint32_t(d.in(0, 9)), lines = uint32_t(d.in(0, 10));
      const bool noBits = query || d.chance(10);
      std::vector<uint8_t> br(noBits ? 0 : imageBytes(hr) + 64, 0xEE), bm = br;
      const std::string what = "case " + std::to_string(i) + " start " + std::to_string(start) + " lines " +
                               std::to_string(lines) + " header " + std::to_string(hr.biWidth) + "x" +
                               std::to_string(hr.biHeight) + "x" + std::to_string(hr.biBitCount);
      const int32_t rr = gdi::getDIBits(t.real.dc(), t.real.bitmap(), start, lines, noBits ? nullptr : br.data(), &hr, 0);
      const int32_t rm = mem::getDIBits(&t.dc, &t.bitmap, start, lines, noBits ? nullptr : bm.data(), &hm, 0);
      EXPECT_EQ(rr, rm) << what;
      EXPECT_TRUE(hr.biWidth == hm.biWidth && hr.biHeight == hm.biHeight && hr.biBitCount == hm.biBitCount &&
                  hr.biSizeImage == hm.biSizeImage && hr.biCompression == hm.biCompression)
          << what;
      EXPECT_TRUE(br == bm) << what;
    }
  }
}

// Pixel writes: the result and every pixel left behind agree.
TEST(GdiAgreement, SetDIBits) {
  Draws d(11);
  for (auto kind : kKinds) {
    for (int i = 0; i < 400; ++i) {
      Twin t(d.in(1, 7), d.in(1, 7), kind, d);
      const gdi::BitmapHeader h = randomHeader(d, false);
      const uint32_t start = uint32_t(d.in(0, 9)), lines = uint32_t(d.in(0, 10));
      const auto bits = randomBytes(d, imageBytes(h) + 64);
      const std::string what = "case " + std::to_string(i) + " start " + std::to_string(start) + " lines " +
                               std::to_string(lines) + " header " + std::to_string(h.biWidth) + "x" +
                               std::to_string(h.biHeight) + "x" + std::to_string(h.biBitCount);
      EXPECT_EQ(gdi::setDIBits(t.real.dc(), t.real.bitmap(), start, lines, bits.data(), &h, 0),
                mem::setDIBits(&t.dc, &t.bitmap, start, lines, bits.data(), &h, 0))
          << what;
      EXPECT_EQ(t.difference(), "") << what;
    }
  }
}

// Pictures drawn on a device context: positions, sizes, source offsets and
// scan ranges on every side of the bitmap.
TEST(GdiAgreement, SetDIBitsToDevice) {
  Draws d(13);
  for (auto kind : kKinds) {
    for (int i = 0; i < 400; ++i) {
      Twin t(d.in(1, 7), d.in(1, 7), kind, d);
      const gdi::BitmapHeader h = randomHeader(d, false);
      const int32_t x = d.in(-4, 8), y = d.in(-4, 8), w = d.in(-1, 9), hh = d.in(-1, 9);
      const int32_t xs = d.in(-2, 4), ys = d.in(-2, 4);
      const uint32_t start = uint32_t(d.in(0, 5)), lines = uint32_t(d.in(0, 10));
      const auto bits = randomBytes(d, imageBytes(h) + 64);
      char what[160];
      std::snprintf(what, sizeof what, "case %d at %d,%d size %dx%d from %d,%d scans %u+%u header %dx%dx%d", i, x, y,
                    w, hh, xs, ys, start, lines, h.biWidth, h.biHeight, h.biBitCount);
      EXPECT_EQ(gdi::setDIBitsToDevice(t.real.dc(), x, y, uint32_t(w), uint32_t(hh), xs, ys, start, lines,
                                       bits.data(), &h, 0),
                mem::setDIBitsToDevice(&t.dc, x, y, uint32_t(w), uint32_t(hh), xs, ys, start, lines, bits.data(),
                                       &h, 0))
          << what;
      EXPECT_EQ(t.difference(), "") << what;
    }
  }
}

// Single pixels in and around the bitmap.
TEST(GdiAgreement, GetPixelAndSetPixelV) {
  Draws d(17);
  for (auto kind : kKinds) {
    for (int i = 0; i < 100; ++i) {
      Twin t(d.in(1, 6), d.in(1, 6), kind, d);
      for (int k = 0; k < 8; ++k) {
        const int32_t x = d.in(-2, 7), y = d.in(-2, 7);
        const uint32_t colour = d.next() & 0xFFFFFFu;
        EXPECT_EQ(gdi::getPixel(t.real.dc(), x, y), mem::getPixel(&t.dc, x, y)) << i << ": " << x << "," << y;
        EXPECT_EQ(gdi::setPixelV(t.real.dc(), x, y, colour), mem::setPixelV(&t.dc, x, y, colour));
      }
      EXPECT_EQ(t.difference(), "") << i;
    }
  }
}

// Block transfers between two surfaces and through a memory device context
// with a compatible bitmap, rectangles clipped on every side.
TEST(GdiAgreement, CompatibleBitmapsAndBitBlt) {
  Draws d(19);
  for (auto kind : kKinds) {
    for (int i = 0; i < 200; ++i) {
      Twin a(d.in(1, 7), d.in(1, 7), kind, d), b(d.in(1, 7), d.in(1, 7), kind, d);
      const int32_t cw = d.in(1, 6), ch = d.in(1, 6);
      void* rm = gdi::createCompatibleDC(a.real.dc());
      void* rb = gdi::createCompatibleBitmap(a.real.dc(), cw, ch);
      void* mm = mem::createCompatibleDC(&a.dc);
      void* mb = mem::createCompatibleBitmap(&a.dc, cw, ch);
      ASSERT_TRUE(rm && rb && mm && mb);
      void* rOld = gdi::selectBitmap(rm, rb);
      void* mOld = mem::selectBitmap(mm, mb);
      ASSERT_TRUE(rOld && mOld);
      auto rect = [&d](int32_t v[6]) {
        v[0] = d.in(-3, 7); v[1] = d.in(-3, 7); v[2] = d.in(0, 8); v[3] = d.in(0, 8);
        v[4] = d.in(-3, 7); v[5] = d.in(-3, 7);
      };
      int32_t r1[6], r2[6], r3[6];
      rect(r1), rect(r2), rect(r3);
      const std::string what = "case " + std::to_string(i);
      // a -> memory bitmap, memory bitmap -> b, a -> b
      EXPECT_EQ(gdi::bitBlt(rm, r1[0], r1[1], r1[2], r1[3], a.real.dc(), r1[4], r1[5]),
                mem::bitBlt(mm, r1[0], r1[1], r1[2], r1[3], &a.dc, r1[4], r1[5]))
          << what;
      EXPECT_EQ(gdi::bitBlt(b.real.dc(), r2[0], r2[1], r2[2], r2[3], rm, r2[4], r2[5]),
                mem::bitBlt(&b.dc, r2[0], r2[1], r2[2], r2[3], mm, r2[4], r2[5]))
          << what;
      EXPECT_EQ(gdi::bitBlt(b.real.dc(), r3[0], r3[1], r3[2], r3[3], a.real.dc(), r3[4], r3[5]),
                mem::bitBlt(&b.dc, r3[0], r3[1], r3[2], r3[3], &a.dc, r3[4], r3[5]))
          << what;
      EXPECT_EQ(b.difference(), "") << what;
      for (int32_t y = -1; y <= ch; ++y)
        for (int32_t x = -1; x <= cw; ++x) EXPECT_EQ(gdi::getPixel(rm, x, y), mem::getPixel(mm, x, y)) << what;
      EXPECT_EQ(gdi::selectBitmap(rm, rOld), rb);
      EXPECT_EQ(mem::selectBitmap(mm, mOld), mb);
      EXPECT_TRUE(gdi::deleteObject(rb) && mem::deleteObject(mb));
      EXPECT_TRUE(gdi::deleteDC(rm) && mem::deleteDC(mm));
    }
  }
}

#else

TEST(GdiAgreement, NeedsRealGdi) { GTEST_SKIP() << "the stand-in is compared with real GDI on Windows"; }

#endif
