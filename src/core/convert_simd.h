// SSE2 forms of the element conversions between the layouts: the saturating
// quantiser Q8, the clamped 8-bit display value, the 8- and 16-bit widenings
// to float and the truncating 16-bit narrowing. Each does, lane by lane, what
// the scalar helper it is named after does (core/numeric.h, core/convert.cpp),
// NaN and out-of-range values included.
#pragma once

#include <bit>
#include <cstdint>

#include "core/cpu.h"
#include "core/numeric.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace effects::convert {

namespace detail {

constexpr float floatAbove(float f) { return std::bit_cast<float>(std::bit_cast<uint32_t>(f) + 1); }
constexpr float floatBelow(float f) { return std::bit_cast<float>(std::bit_cast<uint32_t>(f) - 1); }

// The smallest positive float x with x * 255.0 (exact in double) at least
// `v`: Q8's thresholds as float comparisons.
constexpr float leastWithProductAtLeast(double v) {
  float f = static_cast<float>(v / 255.0);
  while (static_cast<double>(f) * 255.0 < v) f = floatAbove(f);
  while (static_cast<double>(floatBelow(f)) * 255.0 >= v) f = floatBelow(f);
  return f;
}

}  // namespace detail

// Q8 gives 0 below this (and for NaN) ...
inline constexpr float kQ8Low = detail::leastWithProductAtLeast(1.0);
// ... and 255 above this (x * 255 > 254 exactly when x > kQ8High).
inline constexpr float kQ8High = detail::floatBelow(detail::leastWithProductAtLeast(std::bit_cast<double>(std::bit_cast<uint64_t>(254.0) + 1)));

#if defined(__SSE2__)

// Q8 of four floats, in 32-bit lanes: x * 255 in double (exact), rounded to
// nearest even by the conversion instruction; above 254 is 255, below 1 and
// NaN are 0.
inline __m128i q8(__m128 x) {
  const __m128d k = _mm_set1_pd(255.0);
  const __m128i lo = _mm_cvtpd_epi32(_mm_mul_pd(_mm_cvtps_pd(x), k));
  const __m128i hi = _mm_cvtpd_epi32(_mm_mul_pd(_mm_cvtps_pd(_mm_movehl_ps(x, x)), k));
  const __m128i r = _mm_unpacklo_epi64(lo, hi);
  const __m128i full = _mm_castps_si128(_mm_cmpgt_ps(x, _mm_set1_ps(kQ8High)));
  const __m128i dark = _mm_castps_si128(_mm_cmpnge_ps(x, _mm_set1_ps(kQ8Low)));  // NaN too
  return _mm_or_si128(_mm_andnot_si128(_mm_or_si128(full, dark), r), _mm_and_si128(full, _mm_set1_epi32(255)));
}

// roundLowByte(clamp(x * 255, 0, 255)) of four floats: the product in single
// precision, a NaN passing both limits and rounding to the low byte of
// -32768, 0.
inline __m128i clampedByte(__m128 x) {
  const __m128 v = _mm_mul_ps(x, _mm_set1_ps(255.0f));
  const __m128 below = _mm_cmplt_ps(v, _mm_setzero_ps()), above = _mm_cmpgt_ps(v, _mm_set1_ps(255.0f));
  const __m128 clamped = _mm_or_ps(_mm_andnot_ps(_mm_or_ps(below, above), v), _mm_and_ps(above, _mm_set1_ps(255.0f)));
  const __m128i nan = _mm_castps_si128(_mm_cmpunord_ps(v, v));
  return _mm_andnot_si128(nan, _mm_cvtps_epi32(clamped));
}

// Four vectors of four 32-bit lanes of 0..255 into sixteen bytes: lane i of
// a in byte 0 of word i, of b in byte 1, of c in byte 2, of d in byte 3.
inline __m128i bytes(__m128i a, __m128i b, __m128i c, __m128i d) {
  return _mm_or_si128(_mm_or_si128(a, _mm_slli_epi32(b, 8)), _mm_or_si128(_mm_slli_epi32(c, 16), _mm_slli_epi32(d, 24)));
}

#endif

#if EFFECTS_WIDE
// q8 of eight floats (AVX2): the same steps, four products a vector.
EFFECTS_TARGET_AVX2 inline __m256i q8(__m256 x) {
  const __m256d k = _mm256_set1_pd(255.0);
  const __m128i lo = _mm256_cvtpd_epi32(_mm256_mul_pd(_mm256_cvtps_pd(_mm256_castps256_ps128(x)), k));
  const __m128i hi = _mm256_cvtpd_epi32(_mm256_mul_pd(_mm256_cvtps_pd(_mm256_extractf128_ps(x, 1)), k));
  const __m256i r = _mm256_inserti128_si256(_mm256_castsi128_si256(lo), hi, 1);
  const __m256i full = _mm256_castps_si256(_mm256_cmp_ps(x, _mm256_set1_ps(kQ8High), _CMP_GT_OQ));
  const __m256i dark = _mm256_castps_si256(_mm256_cmp_ps(x, _mm256_set1_ps(kQ8Low), _CMP_NGE_UQ));  // NaN too
  return _mm256_or_si256(_mm256_andnot_si256(_mm256_or_si256(full, dark), r),
                         _mm256_and_si256(full, _mm256_set1_epi32(255)));
}
#endif

}  // namespace effects::convert
