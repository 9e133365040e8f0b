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

// Tiles of about 16 KiB (a row of a tile is 256 bytes), so that a tile and
// its transposed partner stay in the first-level cache.
template <class P>
inline constexpr size_t kTile = 256 / sizeof(P);

// to[x * h + y] = from[y * w + x] for one square of kSquare pixels.
template <class P>
inline void transposeSquare(const P* from, size_t w, P* to, size_t h) {
#if defined(__SSE2__)
  Square<P> s;
  s.load(from, w);
  s.storeTransposed(to, h);
#else
  (void)w, (void)h;
  *to = *from;
#endif
}

// Exchanges the square at a with the square at b, each transposed (a == b
// transposes one square in place): both are read before either is written.
template <class P>
inline void swapTransposedSquares(P* a, P* b, size_t n) {
#if defined(__SSE2__)
  Square<P> sa, sb;
  sa.load(a, n);
  sb.load(b, n);
  sa.storeTransposed(b, n);
  sb.storeTransposed(a, n);
#else
  (void)n;
  std::swap(*a, *b);
#endif
}

}  // namespace detail

// The quarter turn's block: to[x * h + y] = from[y * w + x], that is the
// picture transposed into rows h pixels long. Cache-sized tiles of register
// squares, then the edges that do not fill a square.
template <class P>
void transposeInto(const P* from, int32_t width, int32_t height, P* to) {
  constexpr size_t k = detail::kSquare<P>, tile = detail::kTile<P>;
  const size_t w = static_cast<size_t>(width), h = static_cast<size_t>(height);
  const size_t wk = w - w % k, hk = h - h % k;
  for (size_t y0 = 0; y0 < hk; y0 += tile)
    for (size_t x0 = 0; x0 < wk; x0 += tile) {
      const size_t y1 = std::min(y0 + tile, hk), x1 = std::min(x0 + tile, wk);
      for (size_t y = y0; y < y1; y += k)
        for (size_t x = x0; x < x1; x += k) detail::transposeSquare(from + y * w + x, w, to + x * h + y, h);
    }
  for (size_t y = 0; y < h; ++y)
    for (size_t x = (y < hk ? wk : 0); x < w; ++x) to[x * h + y] = from[y * w + x];
}

// The same for a square picture n x n, in place: pairs of tiles across the
// diagonal are exchanged transposed.
template <class P>
void transposeSquareInPlace(P* p, int32_t side) {
  constexpr size_t k = detail::kSquare<P>, tile = detail::kTile<P>;
  const size_t n = static_cast<size_t>(side), nk = n - n % k;
  for (size_t i0 = 0; i0 < nk; i0 += tile)
    for (size_t j0 = i0; j0 < nk; j0 += tile) {
      const size_t i1 = std::min(i0 + tile, nk), j1 = std::min(j0 + tile, nk);
      for (size_t i = i0; i < i1; i += k)
        for (size_t j = (j0 == i0 ? i : j0); j < j1; j += k) detail::swapTransposedSquares(p + i * n + j, p + j * n + i, n);
    }
  for (size_t r = nk; r < n; ++r)
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
void scaleRow(P* to, const P* from, const int32_t* columns, int32_t width) {
  for (int32_t x = 0; x < width; ++x) addColour(to[x], from[columns[x]]);
}

}  // namespace effects::geometry
