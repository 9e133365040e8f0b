// The GDI calls the library makes, behind one thin interface. On Windows they
// are the real GDI; elsewhere an in-memory stand-in (gdi_memory.cpp) follows
// GDI's rules on the host-owned surfaces of include/effects/surface.h.
//
// Device contexts and bitmaps travel as untyped handles: an HDC / HBITMAP on
// Windows, an EffectsDeviceContext* / EffectsBitmap* elsewhere.
#pragma once

#include <cstdint>

namespace effects::platform {

using DeviceContext = void*;
using Bitmap = void*;

// The 40-byte BITMAPINFOHEADER, field for field.
struct BitmapHeader {
  uint32_t biSize;
  int32_t biWidth;
  int32_t biHeight;  // positive: bottom-up rows; negative: top-down
  uint16_t biPlanes;
  uint16_t biBitCount;
  uint32_t biCompression;
  uint32_t biSizeImage;
  int32_t biXPelsPerMeter;
  int32_t biYPelsPerMeter;
  uint32_t biClrUsed;
  uint32_t biClrImportant;
};
static_assert(sizeof(BitmapHeader) == 40, "BITMAPINFOHEADER is 40 bytes");

inline constexpr uint32_t kRgb = 0;            // BI_RGB
inline constexpr uint32_t kBitFields = 3;      // BI_BITFIELDS
inline constexpr uint32_t kRgbColours = 0;     // DIB_RGB_COLORS
inline constexpr uint32_t kInvalidColour = 0xFFFFFFFFu;  // CLR_INVALID

// Bytes in one DIB row: width x bits, padded up to a multiple of 4.
inline uint32_t dibStride(int32_t width, uint32_t bitCount) {
  return ((static_cast<uint32_t>(width) * bitCount + 31u) / 32u) * 4u;
}

// GetDIBits: with a null bits pointer and biBitCount 0 a format query that
// fills in the header; with a null bits pointer (or no lines) and a bit count,
// completes the header's image size and returns nonzero; otherwise reads
// `lines` rows from `start` (counted from the bottom for a positive height) as
// 24- or 32-bit rows, padding bytes 0. Returns the rows read, 0 on failure.
int32_t getDIBits(DeviceContext dc, Bitmap bitmap, uint32_t start, uint32_t lines, void* bits,
                  BitmapHeader* header, uint32_t usage);

// SetDIBits: writes `lines` rows from `start` into the bitmap; returns the
// rows written, 0 on failure.
int32_t setDIBits(DeviceContext dc, Bitmap bitmap, uint32_t start, uint32_t lines, const void* bits,
                  const BitmapHeader* header, uint32_t usage);

// SetDIBitsToDevice: draws the width x height rectangle at (xSrc, ySrc) of a
// DIB of which `bits` holds `lines` rows from row `start`, at (x, y) on the
// device, clipped to it. width and height are read as signed values, so a
// negative int passed through them draws nothing. Returns the rows handed over, 0 on failure (a null
// device context fails and draws nothing).
int32_t setDIBitsToDevice(DeviceContext dc, int32_t x, int32_t y, uint32_t width, uint32_t height,
                          int32_t xSrc, int32_t ySrc, uint32_t start, uint32_t lines,
                          const void* bits, const BitmapHeader* header, uint32_t usage);

// GetPixel: the colour 0x00BBGGRR at (x, y), kInvalidColour outside the
// device's bitmap.
uint32_t getPixel(DeviceContext dc, int32_t x, int32_t y);

// SetPixelV: sets (x, y) to the colour 0x00BBGGRR (fourth byte 0). A point
// outside is clipped away and still counts as success; false only when there
// is nothing to draw on.
bool setPixelV(DeviceContext dc, int32_t x, int32_t y, uint32_t colour);

}  // namespace effects::platform
