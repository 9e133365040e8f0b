// A device context with a 32-bit bitmap selected into it, for the tests that
// check what reaches a device. On Windows: a memory DC with a top-down DIB
// section selected (real GDI); elsewhere: the library's host-owned surfaces.
// The same test cases run against both, which keeps the stand-in honest.
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
  // A width x height surface with every pixel set to `fill` (bytes blue,
  // green, red, fourth from the low end).
  TestSurface(int32_t width, int32_t height, uint32_t fill) : width_(width), height_(height) {
#if defined(_WIN32)
    dc_ = CreateCompatibleDC(nullptr);
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = -height;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    void* bits = nullptr;
    bitmap_ = CreateDIBSection(dc_, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    bits_ = static_cast<uint8_t*>(bits);
    old_ = SelectObject(dc_, bitmap_);
#else
    pixels_.resize(static_cast<size_t>(width) * static_cast<size_t>(height) * 4u);
    bitmap_ = EffectsBitmap{width, height, pixels_.data()};
    dc_ = EffectsDeviceContext{&bitmap_};
    bits_ = pixels_.data();
#endif
    for (int32_t y = 0; y < height; ++y)
      for (int32_t x = 0; x < width; ++x) set(x, y, fill);
  }
  ~TestSurface() {
#if defined(_WIN32)
    SelectObject(dc_, old_);
    DeleteObject(bitmap_);
    DeleteDC(dc_);
#endif
  }
  TestSurface(const TestSurface&) = delete;
  TestSurface& operator=(const TestSurface&) = delete;

  void* dc() {
#if defined(_WIN32)
    return dc_;
#else
    return &dc_;
#endif
  }
  void* bitmap() {
#if defined(_WIN32)
    return bitmap_;
#else
    return &bitmap_;
#endif
  }

  // The four bytes of pixel (x, y) as blue | green << 8 | red << 16 | fourth << 24.
  uint32_t at(int32_t x, int32_t y) {
#if defined(_WIN32)
    GdiFlush();
#endif
    uint32_t v;
    std::memcpy(&v, bits_ + offset(x, y), 4);
    return v;
  }
  void set(int32_t x, int32_t y, uint32_t v) { std::memcpy(bits_ + offset(x, y), &v, 4); }

  int32_t width() const { return width_; }
  int32_t height() const { return height_; }

 private:
  size_t offset(int32_t x, int32_t y) const {
    return (static_cast<size_t>(y) * static_cast<size_t>(width_) + static_cast<size_t>(x)) * 4u;
  }
  int32_t width_, height_;
  uint8_t* bits_ = nullptr;
#if defined(_WIN32)
  HDC dc_ = nullptr;
  HBITMAP bitmap_ = nullptr;
  HGDIOBJ old_ = nullptr;
#else
  std::vector<uint8_t> pixels_;
  EffectsBitmap bitmap_{};
  EffectsDeviceContext dc_{};
#endif
};

}  // namespace effects::test
