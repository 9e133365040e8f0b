// The in-memory stand-in for GDI, the platform's GDI everywhere but Windows
// (where the tests run it beside the real one). A device context and a bitmap
// are the host-owned EffectsDeviceContext and EffectsBitmap of
// include/effects/surface.h (32-bit pixels, top row first). Each call follows
// the rules of its GDI namesake for the cases the library uses: 24- and
// 32-bit BI_RGB pictures, rows padded to 4 bytes, bottom-up rows for a
// positive height, start scan and scan count, clipping to the bitmap; memory
// device contexts with a 1 x 1 default bitmap, black compatible bitmaps,
// block transfers of whole pixels.
#define EFFECTS_MEMORY_SURFACES 1

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include "core/pixel_rows.h"
#include "effects/surface.h"
#include "platform/gdi.h"

namespace effects::platform::memory {
namespace {

EffectsBitmap* bitmapOf(Bitmap b) {
  auto* bm = static_cast<EffectsBitmap*>(b);
  if (!bm || !bm->bits || bm->width <= 0 || bm->height <= 0) return nullptr;
  return bm;
}

EffectsBitmap* selectedBitmap(DeviceContext dc) {
  return dc ? bitmapOf(static_cast<EffectsDeviceContext*>(dc)->bitmap) : nullptr;
}

uint8_t* pixelAt(const EffectsBitmap& bm, int64_t x, int64_t y) {
  return bm.bits + (static_cast<size_t>(y) * static_cast<size_t>(bm.width) + static_cast<size_t>(x)) * 4u;
}

int64_t abs64(int32_t v) { return v < 0 ? -static_cast<int64_t>(v) : v; }

// Only uncompressed 24- and 32-bit pictures of a sensible size are handled.
bool usableFormat(const BitmapHeader* h) {
  return h && h->biCompression == kRgb && (h->biBitCount == 24 || h->biBitCount == 32) &&
         h->biWidth > 0 && h->biHeight != 0;
}

// `columns` pixels of a bitmap row (four bytes each) into a DIB row of 24 or
// 32 bits, and back (a 24-bit pixel's fourth byte becoming 0).
void getRow(uint8_t* to, const uint8_t* from, int64_t columns, uint32_t bitCount) {
  if (columns <= 0) return;
  if (bitCount == 32) std::memcpy(to, from, static_cast<size_t>(columns) * 4u);
  else rows::narrow24(from, to, static_cast<size_t>(columns));
}
void putRow(uint8_t* to, const uint8_t* from, int64_t columns, uint32_t bitCount) {
  if (columns <= 0) return;
  if (bitCount == 32) std::memcpy(to, from, static_cast<size_t>(columns) * 4u);
  else rows::widen24(from, to, static_cast<size_t>(columns));
}

// The rows of a caller's buffer of `lines` rows that starts at scan `start`:
// buffer row j (in memory order) holds bitmap row rowOf(j) (top row 0), or
// nothing when that falls outside the bitmap. `lines` is the count GDI
// settles on (limited to the picture for a bottom-up one).
struct ScanMap {
  int64_t pictureHeight;
  bool topDown;
  int64_t start, lines;
  int64_t rowOf(int64_t j) const {
    if (topDown) return j + (pictureHeight - lines - start);
    return pictureHeight - 1 - start - j;
  }
};

// A memory device context: GDI gives a new one a 1 x 1 bitmap of its own,
// which is what selecting another bitmap into it first hands back.
struct MemoryDC {
  EffectsDeviceContext dc;
  EffectsBitmap stock;
  uint8_t stockBits[4];
};

}  // namespace

int32_t getDIBits(DeviceContext dc, Bitmap bitmap, uint32_t start, uint32_t lines, void* bits,
                  BitmapHeader* header, uint32_t usage) {
  EffectsBitmap* bm = bitmapOf(bitmap);
  if (!dc || !bm || !header || usage > 1) return 0;
  const int64_t height = abs64(header->biHeight);
  if (lines == 0 || start >= height) bits = nullptr;
  if (!bits && header->biBitCount == 0) {
    // Format query: the bitmap's own description (32 bits, bit fields).
    header->biWidth = bm->width;
    header->biHeight = bm->height;
    header->biPlanes = 1;
    header->biBitCount = 32;
    header->biCompression = kBitFields;
    header->biSizeImage = static_cast<uint32_t>(dibStride(bm->width, 32) * static_cast<uint32_t>(bm->height));
    header->biXPelsPerMeter = header->biYPelsPerMeter = 0;
    header->biClrUsed = header->biClrImportant = 0;
    return bm->height;  // as GDI: the bitmap's scan lines
  }
  if (!usableFormat(header) || header->biPlanes == 0) return 0;
  const uint32_t bitCount = header->biBitCount;
  const size_t stride = static_cast<size_t>(dibStride(header->biWidth, bitCount));
  header->biClrUsed = 0;
  header->biSizeImage = static_cast<uint32_t>(stride * static_cast<size_t>(height));
  if (!bits) return 1;  // no rows wanted: only the description is completed

  ScanMap map{height, header->biHeight < 0, start, lines};
  if (!map.topDown) {
    map.lines = std::min<int64_t>(lines, height - start);
  } else if (height - map.lines - start < 0) {
    map.lines = height - start;
  }
  // top-down, a block of scans that starts below the bitmap's last row plus
  // one is left alone (one starting right below it reads as blank rows)
  if (map.topDown && height - map.lines - start > bm->height) return 0;
  const int64_t columns = std::min<int64_t>(header->biWidth, bm->width);
  auto* out = static_cast<uint8_t*>(bits);
  int32_t copied = 0;
  const int64_t rows = map.topDown ? std::min(map.lines, height) : map.lines;
  for (int64_t j = 0; j < rows; ++j) {
    const int64_t row = map.rowOf(j);
    uint8_t* line = out + static_cast<size_t>(j) * stride;
    if (row >= bm->height) {
      std::memset(line, 0, stride);  // below the bitmap: blank rows
      continue;
    }
    if (row < 0) continue;
    getRow(line, pixelAt(*bm, 0, row), columns, bitCount);
    // padding and columns past the bitmap read as 0
    const size_t filled = static_cast<size_t>(columns) * (bitCount / 8);
    std::memset(line + filled, 0, stride - filled);
    ++copied;
  }
  return copied;
}

int32_t setDIBits(DeviceContext, Bitmap bitmap, uint32_t start, uint32_t lines, const void* bits,
                  const BitmapHeader* header, uint32_t usage) {
  EffectsBitmap* bm = bitmapOf(bitmap);
  if (!bm || !bits || !usableFormat(header) || usage > 1) return 0;
  const int64_t height = abs64(header->biHeight);
  ScanMap map{height, header->biHeight < 0, start, lines};
  // bottom-up, the lines are limited to those left above `start`, counted in
  // unsigned 32 bits as GDI does (a start past the picture leaves them as given)
  if (!map.topDown) map.lines = std::min(lines, static_cast<uint32_t>(height) - start);
  const uint32_t bitCount = header->biBitCount;
  const size_t stride = static_cast<size_t>(dibStride(header->biWidth, bitCount));
  const int64_t columns = std::min<int64_t>(header->biWidth, bm->width);
  const auto* in = static_cast<const uint8_t*>(bits);
  const int64_t rows = std::min(map.lines, height);
  for (int64_t j = 0; j < rows; ++j) {
    const int64_t row = map.rowOf(j);
    if (row < 0 || row >= bm->height) continue;
    putRow(pixelAt(*bm, 0, row), in + static_cast<size_t>(j) * stride, columns, bitCount);
  }
  return static_cast<int32_t>(map.lines);
}

int32_t setDIBitsToDevice(DeviceContext dc, int32_t x, int32_t y, uint32_t width, uint32_t height,
                          int32_t xSrc, int32_t ySrc, uint32_t start, uint32_t lines,
                          const void* bits, const BitmapHeader* header, uint32_t usage) {
  EffectsBitmap* bm = selectedBitmap(dc);
  if (!bm || !bits || !usableFormat(header) || usage > 1 || lines == 0) return 0;
  const bool topDown = header->biHeight < 0;
  const uint32_t pictureHeight = static_cast<uint32_t>(abs64(header->biHeight));
  if (start >= pictureHeight) return 0;
  uint32_t count = lines;
  if (!topDown) count = std::min(count, pictureHeight - start);

  // GDI reads the rectangle's size as signed values (a "width" of 2^32 - 3 is
  // -3, an empty rectangle), and works out where the rectangle's top lies in
  // the block of scan lines handed over in 32-bit arithmetic that wraps.
  const int64_t cx = static_cast<int32_t>(width), cy = static_cast<int32_t>(height);
  int64_t srcY = static_cast<int32_t>(start + count - (static_cast<uint32_t>(ySrc) + height));
  if (srcY > 0) {
    if (topDown) {
      if (srcY >= count) return static_cast<int32_t>(count);
    } else {
      // rows above the rectangle are not needed
      if (srcY >= count) return 0;
      count -= static_cast<uint32_t>(srcY);
      srcY = 0;
    }
  }
  const int64_t blockRows = topDown ? std::min<int64_t>(count, pictureHeight) : int64_t{count};

  // The source rectangle within the block, then its image on the bitmap.
  const int64_t sLeft = std::max<int64_t>(xSrc, 0), sRight = std::min<int64_t>(int64_t{xSrc} + cx, header->biWidth);
  const int64_t sTop = std::max<int64_t>(srcY, 0), sBottom = std::min<int64_t>(srcY + cy, blockRows);
  if (sLeft >= sRight || sTop >= sBottom) return 0;
  const int64_t dx = int64_t{x} - xSrc, dy = int64_t{y} - srcY;  // block -> bitmap
  const int64_t left = std::max<int64_t>({sLeft + dx, x, 0});
  const int64_t right = std::min<int64_t>({sRight + dx, int64_t{x} + cx, bm->width});
  const int64_t top = std::max<int64_t>({sTop + dy, y, 0});
  const int64_t bottom = std::min<int64_t>({sBottom + dy, int64_t{y} + cy, bm->height});

  const uint32_t bitCount = header->biBitCount;
  const size_t stride = static_cast<size_t>(dibStride(header->biWidth, bitCount));
  const auto* in = static_cast<const uint8_t*>(bits);
  for (int64_t row = top; row < bottom; ++row) {
    const int64_t blockRow = row - dy;
    const int64_t memoryRow = topDown ? blockRow : blockRows - 1 - blockRow;
    const uint8_t* line = in + static_cast<size_t>(memoryRow) * stride;
    putRow(pixelAt(*bm, left, row), line + static_cast<size_t>(left - dx) * (bitCount / 8), right - left, bitCount);
  }
  return static_cast<int32_t>(count);
}

uint32_t getPixel(DeviceContext dc, int32_t x, int32_t y) {
  EffectsBitmap* bm = selectedBitmap(dc);
  if (!bm || x < 0 || y < 0 || x >= bm->width || y >= bm->height) return kInvalidColour;
  const uint8_t* p = pixelAt(*bm, x, y);
  return uint32_t{p[2]} | (uint32_t{p[1]} << 8) | (uint32_t{p[0]} << 16);
}

bool setPixelV(DeviceContext dc, int32_t x, int32_t y, uint32_t colour) {
  EffectsBitmap* bm = selectedBitmap(dc);
  if (!bm) return false;
  // a point outside is clipped away, which GDI counts as success
  if (x < 0 || y < 0 || x >= bm->width || y >= bm->height) return true;
  uint8_t* p = pixelAt(*bm, x, y);
  p[0] = static_cast<uint8_t>(colour >> 16);
  p[1] = static_cast<uint8_t>(colour >> 8);
  p[2] = static_cast<uint8_t>(colour);
  p[3] = 0;
  return true;
}

DeviceContext createCompatibleDC(DeviceContext) {
  auto* m = new (std::nothrow) MemoryDC{};
  if (!m) return nullptr;
  m->stock = EffectsBitmap{1, 1, m->stockBits};
  m->dc.bitmap = &m->stock;
  return &m->dc;
}

Bitmap createCompatibleBitmap(DeviceContext, int32_t width, int32_t height) {
  if (width < 1 || height < 1) return nullptr;
  const size_t w = static_cast<size_t>(width), h = static_cast<size_t>(height);
  // GDI keeps a bitmap's size in 32 bits: none past INT32_MAX bytes.
  if (w > static_cast<size_t>(INT32_MAX) / 4u / h) return nullptr;
  // the description and its pixels in one block, the pixels black
  auto* block = static_cast<unsigned char*>(std::calloc(1, sizeof(EffectsBitmap) + w * h * 4u));
  if (!block) return nullptr;
  return new (block) EffectsBitmap{width, height, block + sizeof(EffectsBitmap)};
}

Bitmap selectBitmap(DeviceContext dc, Bitmap bitmap) {
  if (!dc || !bitmap) return nullptr;
  auto* d = static_cast<EffectsDeviceContext*>(dc);
  EffectsBitmap* previous = d->bitmap;
  d->bitmap = static_cast<EffectsBitmap*>(bitmap);
  return previous;
}

bool bitBlt(DeviceContext dest, int32_t x, int32_t y, int32_t width, int32_t height, DeviceContext source,
            int32_t xSrc, int32_t ySrc) {
  EffectsBitmap* to = selectedBitmap(dest);
  EffectsBitmap* from = selectedBitmap(source);
  if (!to || !from) return false;
  // The steps i (columns) and j (rows) of the rectangle that land on both
  // bitmaps.
  auto range = [](int64_t at, int64_t atSrc, int64_t size, int64_t toSize, int64_t fromSize) {
    const int64_t first = std::max<int64_t>({0, -at, -atSrc});
    const int64_t last = std::min<int64_t>({size, toSize - at, fromSize - atSrc});
    return std::pair<int64_t, int64_t>{first, last};
  };
  const auto [i0, i1] = range(x, xSrc, width, to->width, from->width);
  const auto [j0, j1] = range(y, ySrc, height, to->height, from->height);
  if (i0 >= i1 || j0 >= j1) return true;
  const size_t bytes = static_cast<size_t>(i1 - i0) * 4u;
  // Rows in the order that leaves an overlapping source intact (the same
  // bitmap in both device contexts); memmove takes care of a row's own overlap.
  const bool upward = to == from && y > ySrc;
  for (int64_t k = 0; k < j1 - j0; ++k) {
    const int64_t j = upward ? j1 - 1 - k : j0 + k;
    std::memmove(pixelAt(*to, x + i0, y + j), pixelAt(*from, xSrc + i0, ySrc + j), bytes);
  }
  return true;
}

bool deleteDC(DeviceContext dc) {
  if (!dc) return false;
  delete reinterpret_cast<MemoryDC*>(static_cast<EffectsDeviceContext*>(dc));
  return true;
}

bool deleteObject(Bitmap bitmap) {
  if (!bitmap) return false;
  auto* bm = static_cast<EffectsBitmap*>(bitmap);
  bm->~EffectsBitmap();
  std::free(bm);
  return true;
}

}  // namespace effects::platform::memory

#if !defined(_WIN32)
namespace effects::platform {

int32_t getDIBits(DeviceContext dc, Bitmap bitmap, uint32_t start, uint32_t lines, void* bits,
                  BitmapHeader* header, uint32_t usage) {
  return memory::getDIBits(dc, bitmap, start, lines, bits, header, usage);
}
int32_t setDIBits(DeviceContext dc, Bitmap bitmap, uint32_t start, uint32_t lines, const void* bits,
                  const BitmapHeader* header, uint32_t usage) {
  return memory::setDIBits(dc, bitmap, start, lines, bits, header, usage);
}
int32_t setDIBitsToDevice(DeviceContext dc, int32_t x, int32_t y, uint32_t width, uint32_t height,
                          int32_t xSrc, int32_t ySrc, uint32_t start, uint32_t lines,
                          const void* bits, const BitmapHeader* header, uint32_t usage) {
  return memory::setDIBitsToDevice(dc, x, y, width, height, xSrc, ySrc, start, lines, bits, header, usage);
}
uint32_t getPixel(DeviceContext dc, int32_t x, int32_t y) { return memory::getPixel(dc, x, y); }
bool setPixelV(DeviceContext dc, int32_t x, int32_t y, uint32_t colour) { return memory::setPixelV(dc, x, y, colour); }
DeviceContext createCompatibleDC(DeviceContext dc) { return memory::createCompatibleDC(dc); }
Bitmap createCompatibleBitmap(DeviceContext dc, int32_t width, int32_t height) {
  return memory::createCompatibleBitmap(dc, width, height);
}
Bitmap selectBitmap(DeviceContext dc, Bitmap bitmap) { return memory::selectBitmap(dc, bitmap); }
bool bitBlt(DeviceContext dest, int32_t x, int32_t y, int32_t width, int32_t height, DeviceContext source,
            int32_t xSrc, int32_t ySrc) {
  return memory::bitBlt(dest, x, y, width, height, source, xSrc, ySrc);
}
bool deleteDC(DeviceContext dc) { return memory::deleteDC(dc); }
bool deleteObject(Bitmap bitmap) { return memory::deleteObject(bitmap); }

}  // namespace effects::platform
#endif
