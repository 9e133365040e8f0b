// SSE2 forms of the element operations of the soften and the morphology,
// one 16-byte vector of elements at a time. Each operation gives, lane by
// lane, exactly what the plain element operation gives (the plain forms stay
// the reference, and the tests compare the two).
#pragma once

#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>

namespace effects::filters::simd {

template <class E>
struct Lanes;

// Bytes: the pair average halves with truncation; max and min unsigned.
template <>
struct Lanes<uint8_t> {
  using V = __m128i;
  static constexpr int kCount = 16;
  static V load(const uint8_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
  static void store(uint8_t* p, V v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
  static V splat(uint8_t e) { return _mm_set1_epi8(static_cast<char>(e)); }
  static V average(V a, V b) {
    const V m = _mm_set1_epi8(0x7F);
    return _mm_add_epi8(_mm_and_si128(_mm_srli_epi16(a, 1), m), _mm_and_si128(_mm_srli_epi16(b, 1), m));
  }
  static V maximum(V c, V r) { return _mm_max_epu8(c, r); }
  static V minimum(V c, V r) { return _mm_min_epu8(c, r); }
  static V subtract(V a, V b) { return _mm_sub_epi8(a, b); }
  static V bits(V v) { return v; }
  static V fromBits(V v) { return v; }
};

// 16-bit elements: the byte-wise halving mask 0x7F7F also clears bit 7 of
// each half; max and min compare as signed values.
template <>
struct Lanes<uint16_t> {
  using V = __m128i;
  static constexpr int kCount = 8;
  static V load(const uint16_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
  static void store(uint16_t* p, V v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
  static V splat(uint16_t e) { return _mm_set1_epi16(static_cast<short>(e)); }
  static V average(V a, V b) {
    const V m = _mm_set1_epi16(0x7F7F);
    return _mm_add_epi16(_mm_and_si128(_mm_srli_epi16(a, 1), m), _mm_and_si128(_mm_srli_epi16(b, 1), m));
  }
  static V maximum(V c, V r) { return _mm_max_epi16(c, r); }
  static V minimum(V c, V r) { return _mm_min_epi16(c, r); }
  static V subtract(V a, V b) { return _mm_sub_epi16(a, b); }
  static V bits(V v) { return v; }
  static V fromBits(V v) { return v; }
};

// Floats: the pair average is (a + b) x 0.5 in double precision, rounded
// once to float. In single precision (a + b) x 0.5f gives the same float
// wherever a + b does not overflow: a float sum that is not exact lies at
// 2^-125 or above, where halving is exact and commutes with the rounding,
// and a sum below that is exact, so both round the same value once. Only
// lanes whose float sum overflows need the double form.
// maximum(c, r) is c > r ? c : r and minimum(c, r) is c < r ? c : r, as the
// processor's max and min give them (a not-a-number c never wins, and of two
// zeros r stays).
template <>
struct Lanes<float> {
  using V = __m128;
  static constexpr int kCount = 4;
  static V load(const float* p) { return _mm_loadu_ps(p); }
  static void store(float* p, V v) { _mm_storeu_ps(p, v); }
  static V splat(float e) { return _mm_set1_ps(e); }
  static V averageInDouble(V a, V b) {
    const __m128d half = _mm_set1_pd(0.5);
    const __m128d low = _mm_mul_pd(_mm_add_pd(_mm_cvtps_pd(a), _mm_cvtps_pd(b)), half);
    const __m128d high = _mm_mul_pd(_mm_add_pd(_mm_cvtps_pd(_mm_movehl_ps(a, a)), _mm_cvtps_pd(_mm_movehl_ps(b, b))), half);
    return _mm_movelh_ps(_mm_cvtpd_ps(low), _mm_cvtpd_ps(high));
  }
  static V average(V a, V b) {
    const V sum = _mm_add_ps(a, b);
    // An infinite sum: an overflow, or an infinite input (where the double
    // form gives the same).
    const V magnitude = _mm_andnot_ps(_mm_set1_ps(-0.0f), sum);
    if (_mm_movemask_ps(_mm_cmpeq_ps(magnitude, _mm_set1_ps(__builtin_huge_valf()))) != 0) return averageInDouble(a, b);
    return _mm_mul_ps(sum, _mm_set1_ps(0.5f));
  }
  static V maximum(V c, V r) { return _mm_max_ps(c, r); }
  static V minimum(V c, V r) { return _mm_min_ps(c, r); }
  static V subtract(V a, V b) { return _mm_sub_ps(a, b); }
  static __m128i bits(V v) { return _mm_castps_si128(v); }
  static V fromBits(__m128i v) { return _mm_castsi128_ps(v); }
};

// Lanes of `written` where `mask` is set, lanes of `kept` elsewhere (bit for
// bit).
template <class E>
inline typename Lanes<E>::V select(__m128i mask, typename Lanes<E>::V written, typename Lanes<E>::V kept) {
  using O = Lanes<E>;
  return O::fromBits(_mm_or_si128(_mm_and_si128(mask, O::bits(written)), _mm_andnot_si128(mask, O::bits(kept))));
}

// Whether any lane under `mask` differs, bit for bit.
template <class E>
inline bool anyDiffers(__m128i mask, typename Lanes<E>::V a, typename Lanes<E>::V b) {
  using O = Lanes<E>;
  const __m128i same = _mm_cmpeq_epi8(O::bits(a), O::bits(b));
  return _mm_movemask_epi8(_mm_andnot_si128(same, mask)) != 0;
}

// The lanes of the elements W writes, for pixels of `perPixel` elements:
// lane k holds element k % perPixel.
template <class E>
inline __m128i elementMask(unsigned perPixel, bool (*writes)(unsigned)) {
  alignas(16) E lanes[Lanes<E>::kCount];
  for (int k = 0; k < Lanes<E>::kCount; ++k) {
    const bool on = writes(static_cast<unsigned>(k) % perPixel);
    if constexpr (sizeof(E) == 4) {
      const uint32_t v = on ? 0xFFFFFFFFu : 0u;
      __builtin_memcpy(&lanes[k], &v, 4);
    } else {
      lanes[k] = on ? static_cast<E>(~E(0)) : E(0);
    }
  }
  return _mm_load_si128(reinterpret_cast<const __m128i*>(lanes));
}

}  // namespace effects::filters::simd

#endif  // __SSE2__
