// SSE2 building blocks of the vector forms. A vector form works on whole
// 16-byte vectors from the start of a span of pixels and returns how many
// pixels it did; the caller finishes the rest with the plain per-pixel form,
// which the tests hold the vector forms to. Every lane does exactly the plain
// form's operations in the plain form's precision and order. Without SSE2 the
// spans are empty and the plain forms do everything.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/layout.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace effects::simd {

// Asks for the cache line 4 KiB past p. Loops whose loads the processor's
// own prefetching does not run far enough ahead of (a load per element that
// depends on nothing streamed) call it once a cache line.
inline void prefetchAhead(const void* p) {
#if defined(__GNUC__) || defined(__clang__)
  __builtin_prefetch(reinterpret_cast<const void*>(reinterpret_cast<uintptr_t>(p) + 4096), 1);
#else
  (void)p;
#endif
}

#if defined(__SSE2__)

inline __m128i load(const void* p) { return _mm_loadu_si128(static_cast<const __m128i*>(p)); }
inline void store(void* p, __m128i v) { _mm_storeu_si128(static_cast<__m128i*>(p), v); }
inline __m128 loadf(const void* p) { return _mm_loadu_ps(static_cast<const float*>(p)); }
inline void storef(void* p, __m128 v) { _mm_storeu_ps(static_cast<float*>(p), v); }

// a where the mask is set, b elsewhere.
inline __m128i select(__m128i mask, __m128i a, __m128i b) {
  return _mm_or_si128(_mm_and_si128(mask, a), _mm_andnot_si128(mask, b));
}
inline __m128 select(__m128 mask, __m128 a, __m128 b) {
  return _mm_or_ps(_mm_and_ps(mask, a), _mm_andnot_ps(mask, b));
}

// The lanes of the chosen colour elements of every pixel in a vector: bytes
// of Pixel32, words of Pixel64, floats of Pixel128.
inline __m128i chosenLanes(Channels c, const Pixel32*) {
  const uint32_t one = (c.blue ? 0xFFu : 0u) | (c.green ? 0xFF00u : 0u) | (c.red ? 0xFF0000u : 0u);
  return _mm_set1_epi32(static_cast<int32_t>(one));
}
inline __m128i chosenLanes(Channels c, const Pixel64*) {
  const short b = c.blue ? -1 : 0, g = c.green ? -1 : 0, r = c.red ? -1 : 0;
  return _mm_setr_epi16(b, g, r, 0, b, g, r, 0);
}
inline __m128i chosenLanes(Channels c, const Pixel128*) {
  return _mm_setr_epi32(c.blue ? -1 : 0, c.green ? -1 : 0, c.red ? -1 : 0, 0);
}
// The mask lanes.
inline __m128i maskLanes(const Pixel32*) { return _mm_set1_epi32(static_cast<int32_t>(0xFF000000u)); }
inline __m128i maskLanes(const Pixel64*) { return _mm_setr_epi16(0, 0, 0, -1, 0, 0, 0, -1); }
inline __m128i maskLanes(const Pixel128*) { return _mm_setr_epi32(0, 0, 0, -1); }

// Runs f over the whole vectors of n pixels, in place: each 16 bytes are
// replaced by f(those 16 bytes). Returns the pixels done.
template <class P, class F>
inline size_t inPlace(P* px, size_t n, F&& f) {
  constexpr size_t k = 16 / sizeof(P);
  size_t i = 0;
  for (; i + k <= n; i += k) store(px + i, f(load(px + i)));
  return i;
}

#else

template <class P, class F>
inline size_t inPlace(P*, size_t, F&&) {
  return 0;
}

#endif

}  // namespace effects::simd
