// SSE2 forms of the 16-bit element maps that are too cheap for a table: the
// additive colour offsets and the whole-factor dodge. Two pixels a vector
// from the start of a span; each returns how many pixels it did, and the
// plain maps finish the rest. The masks are kept.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/layout.h"
#include "core/simd.h"

namespace effects::maps::sse2 {

#if defined(__SSE2__)

// c + delta in wrapping 32-bit arithmetic, clamped to 0..32767: the elements
// widened to 32-bit lanes, the clamp by comparisons (SSE2 has no 32-bit
// minimum or maximum), and a signed narrowing of values that then fit.
inline size_t offsets64(Pixel64* px, size_t n, int32_t blue, int32_t green, int32_t red) {
  const __m128i deltas = _mm_setr_epi32(blue, green, red, 0), top = _mm_set1_epi32(32767);
  const __m128i zero = _mm_setzero_si128(), masks = simd::maskLanes(px);
  const auto add = [&](__m128i c) {
    const __m128i v = _mm_add_epi32(c, deltas);
    const __m128i atLeast0 = _mm_andnot_si128(_mm_srai_epi32(v, 31), v);
    return simd::select(_mm_cmpgt_epi32(atLeast0, top), top, atLeast0);
  };
  size_t i = 0;
  for (; i + 2 <= n; i += 2) {
    const __m128i v = simd::load(px + i);
    const __m128i out = _mm_packs_epi32(add(_mm_unpacklo_epi16(v, zero)), add(_mm_unpackhi_epi16(v, zero)));
    simd::store(px + i, simd::select(masks, v, out));
  }
  return i;
}

// The low 32 bits of c x factor, capped at 32767 when above it, stored as
// their low 16 bits. In 16-bit lanes: the product's low half is c x the
// factor's low half (low part), its high half that product's high part plus
// c x the factor's high half (low part); the product is above 32767 when its
// high half is positive, or zero with the top bit of the low half set.
inline size_t dodge64(Pixel64* px, size_t n, int32_t factor) {
  const __m128i low = _mm_set1_epi16(static_cast<short>(factor & 0xFFFF));
  const __m128i high = _mm_set1_epi16(static_cast<short>((static_cast<uint32_t>(factor) >> 16) & 0xFFFF));
  const __m128i zero = _mm_setzero_si128(), cap = _mm_set1_epi16(32767), masks = simd::maskLanes(px);
  size_t i = 0;
  for (; i + 2 <= n; i += 2) {
    const __m128i c = simd::load(px + i);
    const __m128i lo = _mm_mullo_epi16(c, low);
    const __m128i hi = _mm_add_epi16(_mm_mulhi_epu16(c, low), _mm_mullo_epi16(c, high));
    const __m128i over =
        _mm_or_si128(_mm_cmpgt_epi16(hi, zero), _mm_and_si128(_mm_cmpeq_epi16(hi, zero), _mm_cmplt_epi16(lo, zero)));
    simd::store(px + i, simd::select(masks, c, simd::select(over, cap, lo)));
  }
  return i;
}

#else

inline size_t offsets64(Pixel64*, size_t, int32_t, int32_t, int32_t) { return 0; }
inline size_t dodge64(Pixel64*, size_t, int32_t) { return 0; }

#endif

}  // namespace effects::maps::sse2
