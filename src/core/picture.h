// Pictures and the walks over them.
//
// The exports describe their buffers in one of three ways, each with its own
// rule for odd and negative values:
//
//  1. An element count (`ElementCount`): four elements a pixel. The export
//     visits ((count - 1) >> 2) + 1 pixels, the shift unsigned, so a count
//     that is not a multiple of 4 covers the whole last pixel; a count below
//     1 visits nothing.
//  2. A signed width and height (`Picture<P>::packed`): rows of width pixels
//     packed one after another, row 0 first, pixel (x, y) at (y * width + x).
//     A width or height below 1 is an empty picture.
//  3. The wrapping product width * 4 * height, formed in unsigned 32-bit
//     arithmetic and read as a signed element count (`wrappedElementCount`),
//     which then follows rule 1: so 0 x anything is empty, and sizes whose
//     product wraps to a negative count are empty too.
//
// A size whose buffer could not exist in this address space, or a null
// buffer, is treated as empty: the export touches nothing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "core/layout.h"

namespace effects {

// ----------------------------------------------------------------- sizes

// Rule 1: the pixels an element count covers, 0 for a count below 1. Given
// the pixel types of the buffers the count describes, also 0 when one of
// them could not exist in this address space (past PTRDIFF_MAX bytes, which
// only a 32-bit host can meet).
template <class... P>
inline uint32_t pixelsForCount(int32_t elementCount) {
  const uint32_t n = elementCount < 1 ? 0u : (static_cast<uint32_t>(elementCount - 1) >> 2) + 1u;
  if constexpr (sizeof...(P) > 0 && sizeof(size_t) < 8) {
    if (((static_cast<uint64_t>(n) * sizeof(P) > static_cast<uint64_t>(PTRDIFF_MAX)) || ...)) return 0;
  }
  return n;
}

// A width or height passed unsigned, as a signed size: anything above
// INT32_MAX (a negative int passed through an unsigned parameter) is no
// picture that can exist, and becomes 0.
inline int32_t unsignedSize(uint32_t size) {
  return size > static_cast<uint32_t>(INT32_MAX) ? 0 : static_cast<int32_t>(size);
}

// Rule 3: width * 4 * height in 32-bit arithmetic, read as signed.
inline int32_t wrappedElementCount(uint32_t width, uint32_t height) {
  return static_cast<int32_t>(width * 4u * height);
}

// Whether width x height pixels of `bytesPerPixel` (with rows of `rowBytes`)
// fit in the address space; false for any size below 1.
inline bool sizeFits(int32_t width, int32_t height, size_t rowBytes) {
  if (width < 1 || height < 1) return false;
  const size_t limit = static_cast<size_t>(std::numeric_limits<ptrdiff_t>::max());
  return rowBytes <= limit / static_cast<size_t>(height);
}

// ----------------------------------------------------- the element-count walk

// Visits the pixels of an element count in memory order.
template <class P, class F>
inline void forEachPixel(int32_t elementCount, P* pixels, F&& f) {
  const uint32_t n = pixelsForCount<P>(elementCount);
  if (pixels == nullptr) return;
  for (uint32_t i = 0; i < n; ++i) f(pixels[i]);
}

// Visits pixel i of two buffers together (a source and a destination,
// possibly of different layouts or of encoded forms).
template <class A, class B, class F>
inline void forEachPixelPair(int32_t elementCount, A* a, B* b, F&& f) {
  const uint32_t n = pixelsForCount<A, B>(elementCount);
  if (a == nullptr || b == nullptr) return;
  for (uint32_t i = 0; i < n; ++i) f(a[i], b[i]);
}

// ----------------------------------------------------------------- pictures

// A view of width x height pixels whose rows lie `stride` bytes apart. It
// owns nothing. A picture that is empty (size below 1, null pixels, or a size
// that cannot exist) has width and height 0, so every walk over it is empty.
template <class P>
class Picture {
 public:
  using Pixel = P;
  using Byte = std::conditional_t<std::is_const_v<P>, const unsigned char, unsigned char>;

  Picture() = default;

  // Rows of width pixels, packed (the buffer exports).
  static Picture packed(int32_t width, int32_t height, P* pixels) {
    const size_t rowBytes = packedRowBytes(width, height);
    if (rowBytes == 0 || pixels == nullptr) return {};
    return Picture(pixels, width, height, static_cast<ptrdiff_t>(rowBytes));
  }
  // Bytes in one packed row of a width x height picture; 0 when the
  // picture is empty or cannot exist.
  static size_t packedRowBytes(int32_t width, int32_t height) {
    if (width < 1) return 0;
    const size_t rowBytes = static_cast<size_t>(width) * sizeof(P);
    if (rowBytes / sizeof(P) != static_cast<size_t>(width) || !sizeFits(width, height, rowBytes)) return 0;
    return rowBytes;
  }

  // Rows padded to a multiple of 4 bytes, as device-independent bitmaps
  // store them.
  static Picture paddedRows(int32_t width, int32_t height, void* bits) {
    if (width < 1 || bits == nullptr) return {};
    const size_t rowBytes = paddedRowBytes(width);
    if (rowBytes == 0 || !sizeFits(width, height, rowBytes)) return {};
    return Picture(static_cast<P*>(bits), width, height, static_cast<ptrdiff_t>(rowBytes));
  }
  // Bytes in one padded row of `width` pixels; 0 when it cannot exist.
  static size_t paddedRowBytes(int32_t width) {
    if (width < 1) return 0;
    const size_t w = static_cast<size_t>(width);
    if (w > (std::numeric_limits<size_t>::max() - 3) / sizeof(P)) return 0;
    return (w * sizeof(P) + 3) & ~static_cast<size_t>(3);
  }

  operator Picture<const P>() const { return Picture<const P>::view(pixels_, width_, height_, stride_); }
  static Picture view(P* pixels, int32_t width, int32_t height, ptrdiff_t stride) {
    return Picture(pixels, width, height, stride);
  }

  bool empty() const { return width_ < 1 || height_ < 1; }
  int32_t width() const { return width_; }
  int32_t height() const { return height_; }
  ptrdiff_t stride() const { return stride_; }
  size_t pixelCount() const { return static_cast<size_t>(width_) * static_cast<size_t>(height_); }
  size_t byteCount() const { return static_cast<size_t>(stride_) * static_cast<size_t>(height_); }
  P* data() const { return pixels_; }

  P* row(int32_t y) const {
    return reinterpret_cast<P*>(reinterpret_cast<Byte*>(pixels_) + static_cast<ptrdiff_t>(y) * stride_);
  }
  P& at(int32_t x, int32_t y) const { return row(y)[x]; }

  // Byte offset of the step (dx, dy), for reading neighbours through
  // `neighbour` without bounds tests where the walk keeps them inside.
  ptrdiff_t offset(int32_t dx, int32_t dy) const {
    return static_cast<ptrdiff_t>(dy) * stride_ + static_cast<ptrdiff_t>(dx) * static_cast<ptrdiff_t>(sizeof(P));
  }

 private:
  Picture(P* pixels, int32_t width, int32_t height, ptrdiff_t stride)
      : pixels_(pixels), width_(width), height_(height), stride_(stride) {}
  P* pixels_ = nullptr;
  int32_t width_ = 0, height_ = 0;
  ptrdiff_t stride_ = 0;
};

template <class P>
inline Picture<P> packedPicture(int32_t width, int32_t height, P* pixels) {
  return Picture<P>::packed(width, height, pixels);
}

// Rule 2: the pixels of a width x height picture of P; 0 when it is empty or
// could not exist.
template <class P>
inline size_t pixelsOf(int32_t width, int32_t height) {
  return Picture<P>::packedRowBytes(width, height) ? static_cast<size_t>(width) * static_cast<size_t>(height) : 0;
}

// The pixel `offset` bytes from p (an offset from Picture::offset).
template <class P>
inline P& neighbour(P* p, ptrdiff_t offset) {
  using Byte = std::conditional_t<std::is_const_v<P>, const unsigned char, unsigned char>;
  return *reinterpret_cast<P*>(reinterpret_cast<Byte*>(p) + offset);
}

// ------------------------------------------------------------------- walks

// Every pixel, row by row from row 0, left to right.
template <class P, class F>
inline void forEachPixel(const Picture<P>& pic, F&& f) {
  for (int32_t y = 0; y < pic.height(); ++y) {
    P* r = pic.row(y);
    for (int32_t x = 0; x < pic.width(); ++x) f(r[x]);
  }
}

// Pixel (x, y) of two pictures of the same size together, in raster order:
// f(a, b). Nothing happens unless both are non-empty.
template <class A, class B, class F>
inline void forEachPixelPair(const Picture<A>& a, const Picture<B>& b, F&& f) {
  if (b.empty()) return;
  for (int32_t y = 0; y < a.height(); ++y) {
    A* ra = a.row(y);
    B* rb = b.row(y);
    for (int32_t x = 0; x < a.width(); ++x) f(ra[x], rb[x]);
  }
}

// Every row: f(rowPointer, y).
template <class P, class F>
inline void forEachRow(const Picture<P>& pic, F&& f) {
  for (int32_t y = 0; y < pic.height(); ++y) f(pic.row(y), y);
}

// Every pixel with its coordinates, in raster order: f(pixel, x, y).
template <class P, class F>
inline void forEachXY(const Picture<P>& pic, F&& f) {
  for (int32_t y = 0; y < pic.height(); ++y) {
    P* r = pic.row(y);
    for (int32_t x = 0; x < pic.width(); ++x) f(r[x], x, y);
  }
}

// Every pixel with its coordinates, column by column (x outer, y inner):
// f(pixel, x, y).
template <class P, class F>
inline void forEachColumnMajor(const Picture<P>& pic, F&& f) {
  for (int32_t x = 0; x < pic.width(); ++x)
    for (int32_t y = 0; y < pic.height(); ++y) f(pic.at(x, y), x, y);
}

// The pixels at least `left`/`top` from the first column/row and at least
// `right`/`bottom` from the last, in raster order: f(pixel, x, y). Neighbour
// reads through Picture::offset within those margins stay inside the
// picture, so the inner loop needs no bounds tests.
template <class P, class F>
inline void forEachInterior(const Picture<P>& pic, int32_t left, int32_t top, int32_t right,
                            int32_t bottom, F&& f) {
  const int64_t x1 = static_cast<int64_t>(pic.width()) - right;
  const int64_t y1 = static_cast<int64_t>(pic.height()) - bottom;
  for (int64_t y = top; y < y1; ++y) {
    P* r = pic.row(static_cast<int32_t>(y));
    for (int64_t x = left; x < x1; ++x) f(r[x], static_cast<int32_t>(x), static_cast<int32_t>(y));
  }
}
template <class P, class F>
inline void forEachInterior(const Picture<P>& pic, int32_t margin, F&& f) {
  forEachInterior(pic, margin, margin, margin, margin, static_cast<F&&>(f));
}

// A table of neighbour offsets in a picture's rows, computed once per call:
// steps[i] = (dx, dy) becomes the byte offset of that step.
template <size_t N>
struct Offsets {
  ptrdiff_t bytes[N];
  template <class P>
  static Offsets in(const Picture<P>& pic, const int32_t (&steps)[N][2]) {
    Offsets o{};
    for (size_t i = 0; i < N; ++i) o.bytes[i] = pic.offset(steps[i][0], steps[i][1]);
    return o;
  }
  ptrdiff_t operator[](size_t i) const { return bytes[i]; }
};

}  // namespace effects
