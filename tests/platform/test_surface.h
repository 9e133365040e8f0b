// A device context with a 32-bit bitmap selected, for the tests of what
// reaches a device: on Windows a memory DC with a top-down DIB section or a
// device-dependent bitmap (real GDI), elsewhere the library's host-owned
// surfaces. The same test cases run against both, which keeps the stand-in
// honest.
#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

#if defined(_WIN32)
#include <windows.h>
#else
#include "effects/surface.h"
#endif

namespace effects::test {

class TestSurface {
 public:
  // On Windows: a DIB section, or a bitmap of the screen's own format
  // (CreateCompatibleBitmap of the screen), whose pixels the test reaches
  // through GetBitmapBits and SetBitmapBits. Elsewhere both are the stand-in's
  // one kind.
  enum class Kind { Section, DeviceDependent };

  // Every pixel set to `fill` (blue in the low byte, the fourth byte on top).
  TestSurface(int32_t width, int32_t height, uint32_t fill, Kind kind = Kind::Section)
      : width_(width), height_(height), fill_(fill) {
#if defined(_WIN32)
    dc_ = CreateCompatibleDC(nullptr);
    if (kind == Kind::Section) {
      BITMAPINFO info{};
      info.bmiHeader = {sizeof(BITMAPINFOHEADER), width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
      void* bits = nullptr;
      bitmap_ = CreateDIBSection(dc_, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
      bits_ = static_cast<uint8_t*>(bits);
    } else {
      HDC screen = GetDC(nullptr);
      bitmap_ = CreateCompatibleBitmap(screen, width, height);
      ReleaseDC(nullptr, screen);
      shadow_.resize(size_t(width) * size_t(height) * 4u);
      bits_ = shadow_.data();
    }
    old_ = SelectObject(dc_, bitmap_);
#else
    (void)kind;
    pixels_.resize(static_cast<size_t>(width) * static_cast<size_t>(height) * 4u);
    bitmap_ = EffectsBitmap{width, height, pixels_.data()};
    dc_ = EffectsDeviceContext{&bitmap_};
    bits_ = pixels_.data();
#endif
    std::vector<uint32_t> all(size_t(width) * size_t(height), fill);
    setAll(all.data());
  }
#if defined(_WIN32)
  ~TestSurface() { SelectObject(dc_, old_); DeleteObject(bitmap_); DeleteDC(dc_); }
  void* dc() { return dc_; }
  void* bitmap() { return bitmap_; }
#else
  void* dc() { return &dc_; }
  void* bitmap() { return &bitmap_; }
#endif
  TestSurface(const TestSurface&) = delete;
  TestSurface& operator=(const TestSurface&) = delete;

  // Pixel (x, y) as blue | green << 8 | red << 16 | fourth << 24.
  uint32_t at(int32_t x, int32_t y) {
#if defined(_WIN32)
    GdiFlush();
    if (!shadow_.empty()) GetBitmapBits(bitmap_, LONG(shadow_.size()), shadow_.data());
#endif
    uint32_t v;
    std::memcpy(&v, bits_ + offset(x, y), 4);
    return v;
  }
  void set(int32_t x, int32_t y, uint32_t v) {
#if defined(_WIN32)
    if (!shadow_.empty()) GetBitmapBits(bitmap_, LONG(shadow_.size()), shadow_.data());
#endif
    std::memcpy(bits_ + offset(x, y), &v, 4);
#if defined(_WIN32)
    if (!shadow_.empty()) SetBitmapBits(bitmap_, DWORD(shadow_.size()), shadow_.data());
#endif
  }
  // Every pixel at once, row by row from the top (width x height values).
  void setAll(const uint32_t* values) {
    std::memcpy(bits_, values, size_t(width_) * size_t(height_) * 4u);
#if defined(_WIN32)
    if (!shadow_.empty()) SetBitmapBits(bitmap_, DWORD(shadow_.size()), shadow_.data());
#endif
  }
  int32_t width() const { return width_; }
  int32_t height() const { return height_; }

  // Every pixel outside [left, right) x [top, bottom) still holds the fill.
  bool untouchedOutside(int32_t left, int32_t top, int32_t right, int32_t bottom) {
    for (int32_t y = 0; y < height_; ++y)
      for (int32_t x = 0; x < width_; ++x)
        if ((x < left || x >= right || y < top || y >= bottom) && at(x, y) != fill_) return false;
    return true;
  }
  bool untouched() { return untouchedOutside(0, 0, 0, 0); }

 private:
  size_t offset(int32_t x, int32_t y) const { return (size_t(y) * size_t(width_) + size_t(x)) * 4u; }
  int32_t width_, height_;
  uint32_t fill_;
  uint8_t* bits_ = nullptr;
#if defined(_WIN32)
  HDC dc_ = nullptr;
  HBITMAP bitmap_ = nullptr;
  HGDIOBJ old_ = nullptr;
  std::vector<uint8_t> shadow_;  // a device-dependent bitmap's pixels, as last read or written
#else
  std::vector<uint8_t> pixels_;
  EffectsBitmap bitmap_{};
  EffectsDeviceContext dc_{};
#endif
};

}  // namespace effects::test
