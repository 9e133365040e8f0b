// The GDI calls the library makes, behind one thin interface. On Windows they
// are the real GDI; elsewhere an in-memory stand-in (gdi_memory.cpp) follows
// GDI's rules on the host-owned surfaces of include/effects/surface.h.
//
// Device contexts and bitmaps travel as untyped handles: an HDC / HBITMAP on
// Windows, an EffectsDeviceContext* / EffectsBitmap* elsewhere.
//
// The stand-in is also built on Windows, as platform::memory, where nothing
// in the library calls it: the tests there run it beside real GDI and compare
// the two call for call.
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

// Bytes in one DIB row: width x bits, padded up to a multiple of 4. In 64
// bits: a row of 2^27 or more 32-bit pixels has more bits than 32 bits count.
inline uint64_t dibStride(int32_t width, uint32_t bitCount) {
  return ((static_cast<uint64_t>(static_cast<uint32_t>(width)) * bitCount + 31u) / 32u) * 4u;
}

// GetDIBits: with a null bits pointer and biBitCount 0 a format query that
// fills in the header and returns the bitmap's height; with a null bits pointer (or no lines) and a bit count,
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

// CreateCompatibleDC: a memory device context (with GDI's 1 x 1 default
// bitmap selected), to be released with deleteDC; null on failure.
DeviceContext createCompatibleDC(DeviceContext dc);

// CreateCompatibleBitmap: a width x height bitmap of dc's format, all black,
// to be released with deleteObject. Null for a size below 1 (GDI hands out a
// shared 1 x 1 bitmap for a size of 0; the library never asks for one).
Bitmap createCompatibleBitmap(DeviceContext dc, int32_t width, int32_t height);

// SelectObject for a bitmap: selects it into dc and returns the bitmap
// selected before, null on failure.
Bitmap selectBitmap(DeviceContext dc, Bitmap bitmap);

// BitBlt with SRCCOPY: copies the width x height rectangle at (xSrc, ySrc) of
// source's bitmap to (x, y) of dest's, whole pixels (the fourth byte of a
// 32-bit pixel included), clipped to both bitmaps.
bool bitBlt(DeviceContext dest, int32_t x, int32_t y, int32_t width, int32_t height, DeviceContext source,
            int32_t xSrc, int32_t ySrc);

// DeleteDC and DeleteObject, for what createCompatibleDC and
// createCompatibleBitmap made (a bitmap no longer selected anywhere).
bool deleteDC(DeviceContext dc);
bool deleteObject(Bitmap bitmap);

// The stand-in, on every platform, with the same rules as above; its device
// contexts and bitmaps are EffectsDeviceContext* and EffectsBitmap*. Off
// Windows the functions above are these.
namespace memory {
int32_t getDIBits(DeviceContext dc, Bitmap bitmap, uint32_t start, uint32_t lines, void* bits,
                  BitmapHeader* header, uint32_t usage);
int32_t setDIBits(DeviceContext dc, Bitmap bitmap, uint32_t start, uint32_t lines, const void* bits,
                  const BitmapHeader* header, uint32_t usage);
int32_t setDIBitsToDevice(DeviceContext dc, int32_t x, int32_t y, uint32_t width, uint32_t height,
                          int32_t xSrc, int32_t ySrc, uint32_t start, uint32_t lines,
                          const void* bits, const BitmapHeader* header, uint32_t usage);
uint32_t getPixel(DeviceContext dc, int32_t x, int32_t y);
bool setPixelV(DeviceContext dc, int32_t x, int32_t y, uint32_t colour);
DeviceContext createCompatibleDC(DeviceContext dc);
Bitmap createCompatibleBitmap(DeviceContext dc, int32_t width, int32_t height);
Bitmap selectBitmap(DeviceContext dc, Bitmap bitmap);
bool bitBlt(DeviceContext dest, int32_t x, int32_t y, int32_t width, int32_t height, DeviceContext source,
            int32_t xSrc, int32_t ySrc);
bool deleteDC(DeviceContext dc);
bool deleteObject(Bitmap bitmap);
}  // namespace memory

}  // namespace effects::platform
