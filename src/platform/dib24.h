// The 24-bit frame of the exports that work on a (device context, bitmap)
// pair: GDI's format query describes the bitmap, the header is switched to 24
// bits (BI_RGB, image size 0), and the pixels are read and written as rows of
// blue, green, red bytes padded to 4 bytes, in the order GDI delivers them for
// the bitmap's reported height (bottom row first), or top row first on
// request. GDI's raw results go back to the callers, which decide what they
// mean.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/layout.h"
#include "core/picture.h"
#include "core/scratch.h"
#include "platform/gdi.h"

namespace effects::platform {

class Dib24 {
 public:
  // The format query GetDIBits(dc, bitmap, 0, 0, null, header) with a
  // cleared header of size 40; then the header is made 24-bit.
  Dib24(DeviceContext dc, Bitmap bitmap) : dc_(dc), bitmap_(bitmap) {
    header_.biSize = 40;
    queried_ = getDIBits(dc, bitmap, 0, 0, nullptr, &header_, kRgbColours);
    header_.biBitCount = 24;
    header_.biCompression = kRgb;
    header_.biSizeImage = 0;
  }

  // What the format query returned (GDI: the bitmap's scan lines); 0 when
  // GDI could not describe the bitmap.
  int32_t queried() const { return queried_; }
  bool described() const { return queried_ != 0; }

  int32_t width() const { return header_.biWidth; }
  // Reads and writes the rows top row first from here on (a negative
  // height in the header), for the exports that work on the picture as it
  // is seen.
  void topDown() { header_.biHeight = -lines(); }

  // The scan lines of the picture (the reported height, whichever its sign).
  int32_t lines() const {
    return header_.biHeight < 0 ? (header_.biHeight == INT32_MIN ? 0 : -header_.biHeight) : header_.biHeight;
  }
  size_t stride() const { return Picture<Pixel24>::paddedRowBytes(width()); }
  // stride x lines, or 0 when no such picture can exist in memory.
  size_t bytes() const {
    const size_t s = stride();
    return s != 0 && sizeFits(width(), lines(), s) ? s * static_cast<size_t>(lines()) : 0;
  }
  bool sameSize(const Dib24& other) const { return width() == other.width() && lines() == other.lines(); }
  const BitmapHeader& header() const { return header_; }

  // The picture's buffer in a scratch slot; null when there is no memory for
  // it (or no picture).
  uint8_t* scratch(ScratchSlot slot) const {
    const size_t n = bytes();
    return n == 0 ? nullptr : static_cast<uint8_t*>(scratchBytes(n, slot));
  }
  // A view of `bits` as the picture, rows in buffer order.
  Picture<Pixel24> picture(void* bits) const { return Picture<Pixel24>::paddedRows(width(), lines(), bits); }

  // GetDIBits of every scan line into `bits`: the lines read, 0 on failure.
  int32_t read(void* bits) {
    return getDIBits(dc_, bitmap_, 0, static_cast<uint32_t>(lines()), bits, &header_, kRgbColours);
  }
  // SetDIBits of every scan line into another (or the same) bitmap.
  int32_t write(DeviceContext dc, Bitmap bitmap, const void* bits) const {
    return setDIBits(dc, bitmap, 0, static_cast<uint32_t>(lines()), bits, &header_, kRgbColours);
  }
  // SetDIBitsToDevice(dc, x, y, width, height, 0, 0, 0, lines, bits).
  int32_t present(DeviceContext dc, int32_t x, int32_t y, int32_t width, int32_t height, const void* bits) const {
    return setDIBitsToDevice(dc, x, y, static_cast<uint32_t>(width), static_cast<uint32_t>(height), 0, 0, 0,
                             static_cast<uint32_t>(lines()), bits, &header_, kRgbColours);
  }

 private:
  DeviceContext dc_;
  Bitmap bitmap_;
  BitmapHeader header_{};
  int32_t queried_ = 0;
};

}  // namespace effects::platform
