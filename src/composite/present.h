// Handing a composited 32-bit picture to a device context.
#pragma once

#include <cstdint>

#include "effects/effects.h"
#include "platform/gdi.h"

namespace effects::composite {

// Fills the bitmap header of a width x height 32-bit BI_RGB picture (height
// as given: positive is bottom-up) with the stated image size, and calls
// SetDIBitsToDevice(dc, x, y, width, height, 0, 0, 0, lines, bits, ...). Its
// result is ignored by every caller.
inline void present(void* dc, int32_t x, int32_t y, int32_t width, int32_t height, uint32_t lines,
                    uint32_t sizeImage, const Pixel32* bits) {
  platform::BitmapHeader h{};
  h.biSize = 40;
  h.biWidth = width;
  h.biHeight = height;
  h.biPlanes = 1;
  h.biBitCount = 32;
  h.biCompression = platform::kRgb;
  h.biSizeImage = sizeImage;
  platform::setDIBitsToDevice(dc, x, y, static_cast<uint32_t>(width), static_cast<uint32_t>(height),
                              0, 0, 0, lines, bits, &h, platform::kRgbColours);
}

}  // namespace effects::composite
