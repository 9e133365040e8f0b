// Kernels of the flips, mirrors, quarter turn and scaling: pixel moves only,
// no arithmetic except the scale's colour addition, so the SSE2 forms move
// the same bytes as plain loops would.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "core/layout.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace effects::geometry {

// Exchanges two byte ranges that do not overlap, through a small buffer.
inline void swapBytes(void* a, void* b, size_t n) {
  unsigned char tmp[2048];
  auto* pa = static_cast<unsigned char*>(a);
  auto* pb = static_cast<unsigned char*>(b);
  while (n > 0) {
    const size_t k = std::min(n, sizeof tmp);
    std::memcpy(tmp, pa, k);
    std::memcpy(pa, pb, k);
    std::memcpy(pb, tmp, k);
    pa += k;
    pb += k;
    n -= k;
  }
}

#if defined(__SSE2__)
// Pixels in one 16-byte vector.
template <class P>
inline constexpr size_t kLane = 16 / sizeof(P);

template <class P>
inline __m128i loadPixels(const P* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
template <class P>
inline void storePixels(P* p, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }

// The pixels of a vector in reverse order.
template <class P>
inline __m128i reversePixels(__m128i v) {
  if constexpr (sizeof(P) == 4) return _mm_shuffle_epi32(v, _MM_SHUFFLE(0, 1, 2, 3));
  else if constexpr (sizeof(P) == 8) return _mm_shuffle_epi32(v, _MM_SHUFFLE(1, 0, 3, 2));
  else return v;
}
#endif

// to[i] = from[n - 1 - i] for i < n; the ranges do not overlap.
template <class P>
void reverseCopy(P* to, const P* from, size_t n) {
  size_t i = 0;
#if defined(__SSE2__)
  for (constexpr size_t k = kLane<P>; i + k <= n; i += k)
    storePixels(to + i, reversePixels<P>(loadPixels(from + n - i - k)));
#endif
  for (; i < n; ++i) to[i] = from[n - 1 - i];
}

// Reverses p[0 .. n) in place.
template <class P>
void reverseInPlace(P* p, size_t n) {
  size_t i = 0, j = n;
#if defined(__SSE2__)
  for (constexpr size_t k = kLane<P>; j - i >= 2 * k; i += k, j -= k) {
    const __m128i a = loadPixels(p + i), b = loadPixels(p + j - k);
    storePixels(p + i, reversePixels<P>(b));
    storePixels(p + j - k, reversePixels<P>(a));
  }
#endif
  std::reverse(p + i, p + j);
}

// ------------------------------------------------------------ transposition
//
// The quarter turn is a transposition. Done naively, every step down a
// column of a 4096-pixel picture is a new page and, the rows being a power
// of two apart, the same cache set. So the picture is worked in square tiles
// whose rows are 256 bytes: a tile is read a few whole rows at a time and
// transposed in registers into a small buffer, which is written back row by
// row, so every cache line is read once and written once in one go.

namespace detail {

#if defined(__SSE2__)
// A square of kLane x kLane pixels held in registers, one row a vector.
template <class P>
struct Square {
  static constexpr size_t k = kLane<P>;
  __m128i r[k];

  void load(const P* p, size_t stride) {
    for (size_t i = 0; i < k; ++i) r[i] = loadPixels(p + i * stride);
  }
  void storeTransposed(P* p, size_t stride) const {
    if constexpr (k == 4) {
      const __m128i t0 = _mm_unpacklo_epi32(r[0], r[1]), t1 = _mm_unpacklo_epi32(r[2], r[3]);
      const __m128i t2 = _mm_unpackhi_epi32(r[0], r[1]), t3 = _mm_unpackhi_epi32(r[2], r[3]);
      storePixels(p, _mm_unpacklo_epi64(t0, t1));
      storePixels(p + stride, _mm_unpackhi_epi64(t0, t1));
      storePixels(p + 2 * stride, _mm_unpacklo_epi64(t2, t3));
      storePixels(p + 3 * stride, _mm_unpackhi_epi64(t2, t3));
    } else if constexpr (k == 2) {
      storePixels(p, _mm_unpacklo_epi64(r[0], r[1]));
      storePixels(p + stride, _mm_unpackhi_epi64(r[0], r[1]));
    } else {
      storePixels(p, r[0]);
    }
  }
};
template <class P>
inline constexpr size_t kSquare = kLane<P>;
#else
template <class P>
inline constexpr size_t kSquare = 1;
#endif

// to[c * stride + r] = from[r * stride + c] for one square of kSquare pixels.
template <class P>
inline void transposeSquare(const P* from, size_t fromStride, P* to, size_t toStride) {
#if defined(__SSE2__)
  Square<P> s;
  s.load(from, fromStride);
  s.storeTransposed(to, toStride);
#else
  (void)fromStride, (void)toStride;
  *to = *from;
#endif
}

// Tile side: rows of 256 bytes (a multiple of every square).
template <class P>
inline constexpr size_t kTile = 256 / sizeof(P);

// A tile in a buffer of its own, rows packed. It is filled transposed
// straight from the picture (each group of kSquare rows is read across its
// whole 256 bytes before the next) and written back a whole row at a time.
template <class P>
struct Tile {
  static constexpr size_t side = kTile<P>;
  P px[side * side];

  void transposeFrom(const P* from, size_t stride) {
    constexpr size_t k = kSquare<P>;
    for (size_t r = 0; r < side; r += k)
      for (size_t c = 0; c < side; c += k) transposeSquare(from + r * stride + c, stride, px + c * side + r, side);
  }
  void write(P* to, size_t stride) const {
    for (size_t r = 0; r < side; ++r) std::memcpy(to + r * stride, px + r * side, side * sizeof(P));
  }
};

}  // namespace detail

// The quarter turn's block: to[x * height + y] = from[y * width + x], the
// picture transposed into rows `height` pixels long. Whole tiles, then the
// edges that do not fill one.
template <class P>
void transposeInto(const P* from, int32_t width, int32_t height, P* to) {
  using Tile = detail::Tile<P>;
  constexpr size_t tile = Tile::side;
  const size_t w = static_cast<size_t>(width), h = static_cast<size_t>(height);
  const size_t wt = w - w % tile, ht = h - h % tile;
  Tile out;
  for (size_t y = 0; y < ht; y += tile)
    for (size_t x = 0; x < wt; x += tile) {
      out.transposeFrom(from + y * w + x, w);
      out.write(to + x * h + y, h);
    }
  for (size_t y = 0; y < h; ++y)
    for (size_t x = (y < ht ? wt : 0); x < w; ++x) to[x * h + y] = from[y * w + x];
}

// The same for a square picture, in place: each tile above the diagonal
// changes places with its partner below, both transposed; the tiles on the
// diagonal are transposed where they are.
template <class P>
void transposeSquareInPlace(P* p, int32_t side) {
  using Tile = detail::Tile<P>;
  constexpr size_t tile = Tile::side;
  const size_t n = static_cast<size_t>(side), nt = n - n % tile;
  Tile upper, lower;
  for (size_t i = 0; i < nt; i += tile)
    for (size_t j = i; j < nt; j += tile) {
      upper.transposeFrom(p + i * n + j, n);
      if (i != j) {
        lower.transposeFrom(p + j * n + i, n);
        lower.write(p + i * n + j, n);
      }
      upper.write(p + j * n + i, n);
    }
  for (size_t r = nt; r < n; ++r)
    for (size_t c = 0; c < r; ++c) std::swap(p[r * n + c], p[c * n + r]);
}

// ------------------------------------------------------------------ scaling

// The scale's write: colour added in the element's own width (8-bit and
// 16-bit sums wrap), the mask replaced.
template <class P>
inline void addColour(P& to, const P& from) {
  using E = typename LayoutOf<P>::Element;
  to.blue = static_cast<E>(to.blue + from.blue);
  to.green = static_cast<E>(to.green + from.green);
  to.red = static_cast<E>(to.red + from.red);
  to.mask = from.mask;
}

// One target row of the scale from one source row through a column table.
template <class P>
void scaleRowPlain(P* to, const P* from, const int32_t* columns, int32_t width) {
  for (int32_t x = 0; x < width; ++x) addColour(to[x], from[columns[x]]);
}

// The same, several pixels a vector: the target's mask is cleared and the
// source added element-wise in the element's width, which wraps the colour
// and leaves the source's mask; the float layout adds and then takes the
// source's mask bits.
template <class P>
void scaleRow(P* to, const P* from, const int32_t* columns, int32_t width) {
  int32_t x = 0;
#if defined(__SSE2__)
  if constexpr (sizeof(P) == 4) {
    const __m128i colour = _mm_set1_epi32(0x00FFFFFF);
    for (; x < width - 3; x += 4) {  // not x + 4 <= width: that passes INT32_MAX on the widest rows
      int32_t s[4];
      for (int i = 0; i < 4; ++i) std::memcpy(&s[i], from + columns[x + i], 4);
      const __m128i t = _mm_and_si128(loadPixels(to + x), colour);
      storePixels(to + x, _mm_add_epi8(t, _mm_setr_epi32(s[0], s[1], s[2], s[3])));
    }
  } else if constexpr (sizeof(P) == 8) {
    const __m128i colour = _mm_set1_epi64x(0x0000FFFFFFFFFFFF);
    for (; x < width - 1; x += 2) {
      const __m128i s = _mm_unpacklo_epi64(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(from + columns[x])),
                                           _mm_loadl_epi64(reinterpret_cast<const __m128i*>(from + columns[x + 1])));
      storePixels(to + x, _mm_add_epi16(_mm_and_si128(loadPixels(to + x), colour), s));
    }
  } else {
    const __m128 colour = _mm_castsi128_ps(_mm_setr_epi32(-1, -1, -1, 0));
    for (; x < width; ++x) {
      const __m128 s = _mm_loadu_ps(&from[columns[x]].blue), t = _mm_loadu_ps(&to[x].blue);
      _mm_storeu_ps(&to[x].blue, _mm_or_ps(_mm_and_ps(_mm_add_ps(t, s), colour), _mm_andnot_ps(colour, s)));
    }
  }
#endif
  scaleRowPlain(to + x, from, columns + x, width - x);
}

}  // namespace effects::geometry
