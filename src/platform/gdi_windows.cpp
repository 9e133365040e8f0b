// The GDI interface on Windows: the real calls, with the handles cast back to
// HDC and HBITMAP. A BITMAPINFO with room for a colour table stands between
// the caller's header and GDI, because a format query may write colour masks
// behind the header.
#if defined(_WIN32)

#include <windows.h>

#include <cstring>

#include "platform/gdi.h"

namespace effects::platform {
namespace {

static_assert(sizeof(BITMAPINFOHEADER) == sizeof(BitmapHeader), "header layouts agree");

struct InfoBuffer {
  BITMAPINFOHEADER header;
  RGBQUAD colours[256];
};

void load(InfoBuffer& info, const BitmapHeader* header) {
  std::memset(&info, 0, sizeof info);
  std::memcpy(&info.header, header, sizeof(BitmapHeader));
}

}  // namespace

int32_t getDIBits(DeviceContext dc, Bitmap bitmap, uint32_t start, uint32_t lines, void* bits,
                  BitmapHeader* header, uint32_t usage) {
  if (!header) return 0;
  InfoBuffer info;
  load(info, header);
  const int r = GetDIBits(static_cast<HDC>(dc), static_cast<HBITMAP>(bitmap), start, lines, bits,
                          reinterpret_cast<BITMAPINFO*>(&info), usage);
  std::memcpy(header, &info.header, sizeof(BitmapHeader));
  return r;
}

int32_t setDIBits(DeviceContext dc, Bitmap bitmap, uint32_t start, uint32_t lines, const void* bits,
                  const BitmapHeader* header, uint32_t usage) {
  if (!header) return 0;
  InfoBuffer info;
  load(info, header);
  return SetDIBits(static_cast<HDC>(dc), static_cast<HBITMAP>(bitmap), start, lines, bits,
                   reinterpret_cast<const BITMAPINFO*>(&info), usage);
}

int32_t setDIBitsToDevice(DeviceContext dc, int32_t x, int32_t y, uint32_t width, uint32_t height,
                          int32_t xSrc, int32_t ySrc, uint32_t start, uint32_t lines,
                          const void* bits, const BitmapHeader* header, uint32_t usage) {
  if (!header || !dc) return 0;
  InfoBuffer info;
  load(info, header);
  return SetDIBitsToDevice(static_cast<HDC>(dc), x, y, width, height, xSrc, ySrc, start, lines, bits,
                           reinterpret_cast<const BITMAPINFO*>(&info), usage);
}

uint32_t getPixel(DeviceContext dc, int32_t x, int32_t y) {
  return GetPixel(static_cast<HDC>(dc), x, y);
}

bool setPixelV(DeviceContext dc, int32_t x, int32_t y, uint32_t colour) {
  return SetPixelV(static_cast<HDC>(dc), x, y, colour) != 0;
}

DeviceContext createCompatibleDC(DeviceContext dc) { return CreateCompatibleDC(static_cast<HDC>(dc)); }

Bitmap createCompatibleBitmap(DeviceContext dc, int32_t width, int32_t height) {
  if (width < 1 || height < 1) return nullptr;
  return CreateCompatibleBitmap(static_cast<HDC>(dc), width, height);
}

Bitmap selectBitmap(DeviceContext dc, Bitmap bitmap) {
  return SelectObject(static_cast<HDC>(dc), static_cast<HBITMAP>(bitmap));
}

bool bitBlt(DeviceContext dest, int32_t x, int32_t y, int32_t width, int32_t height, DeviceContext source,
            int32_t xSrc, int32_t ySrc) {
  return BitBlt(static_cast<HDC>(dest), x, y, width, height, static_cast<HDC>(source), xSrc, ySrc, SRCCOPY) != 0;
}

bool deleteDC(DeviceContext dc) { return DeleteDC(static_cast<HDC>(dc)) != 0; }

bool deleteObject(Bitmap bitmap) { return DeleteObject(static_cast<HBITMAP>(bitmap)) != 0; }

}  // namespace effects::platform

#endif
