// The per-pixel steps of the device-free transfers (direct.cpp) and their
// SSE2 forms: the block copy that leaves or takes the mask element, the
// regional merge through the source mask, and the canvas-mask painter. A
// vector form works on whole vectors from the start of a span and returns
// how many pixels it did; the plain step does the rest, and the tests hold
// the two to each other.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "core/cpu.h"
#include "core/numeric.h"
#include "core/simd.h"
#include "effects/effects.h"

namespace effects::composite::direct {

// ------------------------------------------------------------ block copies

template <class P>
inline void copyPixel(P& to, const P& from, bool withMask) {
  if (withMask) {
    to = from;
  } else {
    to.blue = from.blue; to.green = from.green; to.red = from.red;
  }
}

// n pixels of `from` onto `to`, with or without the mask element. Spans that
// overlap keep the pixel-by-pixel order.
template <class P>
inline void copyRow(P* to, const P* from, int32_t n, bool withMask) {
  int32_t i = 0;
#if defined(__SSE2__)
  const auto t = reinterpret_cast<uintptr_t>(to), f = reinterpret_cast<uintptr_t>(from);
  const uintptr_t bytes = static_cast<uintptr_t>(n) * sizeof(P);
  if (n > 0 && (t + bytes <= f || f + bytes <= t)) {
    if (withMask) {
      std::memcpy(to, from, bytes);
      return;
    }
    constexpr int32_t k = 16 / sizeof(P);
    const __m128i masks = simd::maskLanes(to);
    // i <= n - k rather than i + k <= n: a span of up to INT32_MAX pixels
    // would carry i + k past INT32_MAX on its last whole vector.
    for (; i <= n - k; i += k) simd::store(to + i, simd::select(masks, simd::load(to + i), simd::load(from + i)));
  }
#endif
  for (; i < n; ++i) copyPixel(to[i], from[i], withMask);
}

// ------------------------------------------------------- the regional merge

// d + (s - d) x m x f through the source mask. The 8-bit factor is the
// truncated 0.003921 (a full mask weighs 0.999855, not 1): intended.
inline uint8_t regional(uint8_t d, uint8_t s, uint8_t m) {
  return roundLowByte(static_cast<float>(d) + static_cast<float>((s - d) * m) * 0.003921f);
}
inline uint16_t regional(uint16_t d, uint16_t s, uint16_t m) {
  const int64_t product = (int64_t{s} - int64_t{d}) * int64_t{m};
  return roundLowWord(static_cast<double>(d) + static_cast<double>(product) * 3.051850947599e-5);
}
inline float regional(float d, float s, float m) { return d + (s - d) * m; }

// A pixel whose source mask is 0 is left alone; the mask element never
// changes.
template <class P>
inline void regionalPixel(const P& s, P& d) {
  if (s.mask == 0) return;
  d.blue = regional(d.blue, s.blue, s.mask);
  d.green = regional(d.green, s.green, s.mask);
  d.red = regional(d.red, s.red, s.mask);
}

// ------------------------------------------------------ the mask painter

// The canvas mask c moves toward the region mask m: round(m x k x (m - c) + c)
// with k = opacity x 3.92156862e-5, all in single precision.
inline void maskToward(const Pixel32& region, Pixel32& canvas, float k) {
  const uint8_t m = region.mask;
  if (m == 0) return;
  const uint8_t old = canvas.mask;
  canvas.mask = roundLowByte(static_cast<float>(m) * k * static_cast<float>(m - old) + static_cast<float>(old));
}

#if defined(__SSE2__)
namespace detail {

// The low byte (word) of 32-bit lanes rounded from a double or float, where
// the rounded value fits in 16 signed bits; 0 (0x8000) elsewhere, as
// roundLowByte and roundLowWord give for the processor's out-of-range answer.
inline __m128i fitsInt16(__m128i r) { return _mm_cmpeq_epi32(_mm_srai_epi32(_mm_slli_epi32(r, 16), 16), r); }
inline __m128i lowBytes(__m128i r) { return _mm_and_si128(_mm_and_si128(r, fitsInt16(r)), _mm_set1_epi32(0xFF)); }
inline __m128i lowWords(__m128i r) {
  return simd::select(fitsInt16(r), _mm_and_si128(r, _mm_set1_epi32(0xFFFF)), _mm_set1_epi32(0x8000));
}

// The four elements of one 8-bit pixel's merge in 32-bit lanes: the product
// (s - d) x m is below 2^24, so the single-precision product of the
// converted operands is the exact integer product the plain form converts.
// The result lies between d and s (the weight m x 0.003921 is below 1 and
// every rounding is monotonic), so it is its own low byte.
inline __m128i regional8(__m128i d, __m128i s) {
  const __m128i m = _mm_shuffle_epi32(s, 0xFF);
  const __m128 product = _mm_mul_ps(_mm_cvtepi32_ps(_mm_sub_epi32(s, d)), _mm_cvtepi32_ps(m));
  const __m128 sum = _mm_add_ps(_mm_cvtepi32_ps(d), _mm_mul_ps(product, _mm_set1_ps(0.003921f)));
  return _mm_cvtps_epi32(sum);
}

// The same for one 16-bit pixel in two pairs of double lanes: (s - d) x m
// is below 2^53, so the double product is the exact 64-bit product.
inline __m128i regional16(__m128i d, __m128i s) {
  const __m128d m = _mm_cvtepi32_pd(_mm_shuffle_epi32(s, 0xFF));
  const __m128i diff = _mm_sub_epi32(s, d);
  const __m128d c = _mm_set1_pd(3.051850947599e-5);
  auto half = [&](__m128i dd, __m128i df) {
    const __m128d sum = _mm_add_pd(_mm_cvtepi32_pd(dd), _mm_mul_pd(_mm_mul_pd(_mm_cvtepi32_pd(df), m), c));
    return _mm_cvtpd_epi32(sum);
  };
  const __m128i low = half(d, diff);
  const __m128i high = half(_mm_shuffle_epi32(d, 0x0E), _mm_shuffle_epi32(diff, 0x0E));
  return lowWords(_mm_unpacklo_epi64(low, high));
}

#if EFFECTS_WIDE
// The same, eight 8-bit pixels a step; every step works within 128-bit
// halves, as the SSE2 form does on each.
EFFECTS_TARGET_AVX2 inline __m256i regional8Avx2(__m256i d, __m256i s) {
  const __m256i m = _mm256_shuffle_epi32(s, 0xFF);
  const __m256 product = _mm256_mul_ps(_mm256_cvtepi32_ps(_mm256_sub_epi32(s, d)), _mm256_cvtepi32_ps(m));
  const __m256 sum = _mm256_add_ps(_mm256_cvtepi32_ps(d), _mm256_mul_ps(product, _mm256_set1_ps(0.003921f)));
  return _mm256_cvtps_epi32(sum);
}

#endif

}  // namespace detail

#if EFFECTS_WIDE
// regionalPixel with AVX2: eight 8-bit pixels a step, each step within
// 128-bit halves as the SSE2 form does on each.
EFFECTS_TARGET_AVX2 inline size_t regionalAvx2(const Pixel32* src, Pixel32* dst, size_t n) {
  const __m256i zero = _mm256_setzero_si256(), masks = _mm256_set1_epi32(static_cast<int32_t>(0xFF000000u));
  size_t i = 0;
  for (; i + 8 <= n; i += 8) {
    const __m256i s = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src + i));
    const __m256i d = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(dst + i));
    const __m256i s01 = _mm256_unpacklo_epi8(s, zero), s23 = _mm256_unpackhi_epi8(s, zero);
    const __m256i d01 = _mm256_unpacklo_epi8(d, zero), d23 = _mm256_unpackhi_epi8(d, zero);
    const __m256i p0 = detail::regional8Avx2(_mm256_unpacklo_epi16(d01, zero), _mm256_unpacklo_epi16(s01, zero));
    const __m256i p1 = detail::regional8Avx2(_mm256_unpackhi_epi16(d01, zero), _mm256_unpackhi_epi16(s01, zero));
    const __m256i p2 = detail::regional8Avx2(_mm256_unpacklo_epi16(d23, zero), _mm256_unpacklo_epi16(s23, zero));
    const __m256i p3 = detail::regional8Avx2(_mm256_unpackhi_epi16(d23, zero), _mm256_unpackhi_epi16(s23, zero));
    const __m256i merged = _mm256_packus_epi16(_mm256_packs_epi32(p0, p1), _mm256_packs_epi32(p2, p3));
    const __m256i untouched = _mm256_or_si256(masks, _mm256_cmpeq_epi32(_mm256_and_si256(s, masks), zero));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + i), _mm256_blendv_epi8(merged, d, untouched));
  }
  return i;
}

// Half of the 16-bit merge below: d + (s - d) x m x c for four lanes in
// double precision, rounded.
EFFECTS_TARGET_AVX2 inline __m128i regional16Half(__m128i d, __m128i diff, __m128i m) {
  const __m256d c = _mm256_set1_pd(3.051850947599e-5);
  return _mm256_cvtpd_epi32(_mm256_add_pd(
      _mm256_cvtepi32_pd(d), _mm256_mul_pd(_mm256_mul_pd(_mm256_cvtepi32_pd(diff), _mm256_cvtepi32_pd(m)), c)));
}

// The low word of each 32-bit lane within 16 signed bits, 0x8000 beyond
// (lowWords, eight lanes).
EFFECTS_TARGET_AVX2 inline __m256i lowWords(__m256i r) {
  const __m256i fits = _mm256_cmpeq_epi32(_mm256_srai_epi32(_mm256_slli_epi32(r, 16), 16), r);
  return _mm256_blendv_epi8(_mm256_set1_epi32(0x8000), _mm256_and_si256(r, _mm256_set1_epi32(0xFFFF)), fits);
}

// The 16-bit merge of two pixels (in 32-bit lanes, a pixel a half), each
// pixel's four elements in four double lanes; the mask lanes are computed
// and thrown away.
EFFECTS_TARGET_AVX2 inline __m256i regional16Avx2(__m256i d, __m256i s) {
  const __m256i m = _mm256_shuffle_epi32(s, 0xFF), diff = _mm256_sub_epi32(s, d);
  const __m128i lo = regional16Half(_mm256_castsi256_si128(d), _mm256_castsi256_si128(diff), _mm256_castsi256_si128(m));
  const __m128i hi = regional16Half(_mm256_extracti128_si256(d, 1), _mm256_extracti128_si256(diff, 1),
                                    _mm256_extracti128_si256(m, 1));
  return lowWords(_mm256_inserti128_si256(_mm256_castsi128_si256(lo), hi, 1));
}

// 16 bits, four pixels a step; a pixel whose source mask is 0, and every
// mask word, keep the canvas's value.
EFFECTS_TARGET_AVX2 inline size_t regionalAvx2(const Pixel64* src, Pixel64* dst, size_t n) {
  const __m256i maskWords = _mm256_set1_epi64x(static_cast<int64_t>(0xFFFF000000000000ull));
  size_t i = 0;
  for (; i + 4 <= n; i += 4) {
    if ((i & 7) == 0) simd::prefetchAhead(src + i), simd::prefetchAhead(dst + i);
    const __m256i s = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src + i));
    const __m256i d = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(dst + i));
    const __m256i r01 = regional16Avx2(_mm256_cvtepu16_epi32(_mm256_castsi256_si128(d)),
                                       _mm256_cvtepu16_epi32(_mm256_castsi256_si128(s)));
    const __m256i r23 = regional16Avx2(_mm256_cvtepu16_epi32(_mm256_extracti128_si256(d, 1)),
                                       _mm256_cvtepu16_epi32(_mm256_extracti128_si256(s, 1)));
    const __m256i merged = _mm256_permute4x64_epi64(_mm256_packus_epi32(r01, r23), _MM_SHUFFLE(3, 1, 2, 0));
    const __m256i skip = _mm256_cmpeq_epi64(_mm256_and_si256(s, maskWords), _mm256_setzero_si256());
    const __m256i keep = _mm256_or_si256(skip, maskWords);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + i), _mm256_blendv_epi8(merged, d, keep));
  }
  return i;
}
#endif

// regionalPixel over whole vectors with SSE2: four 8-bit pixels a step.
inline size_t regionalSse2(const Pixel32* src, Pixel32* dst, size_t n) {
  const __m128i zero = _mm_setzero_si128(), masks = simd::maskLanes(dst);
  size_t i = 0;
  for (; i + 4 <= n; i += 4) {
    const __m128i s = simd::load(src + i), d = simd::load(dst + i);
    const __m128i s01 = _mm_unpacklo_epi8(s, zero), s23 = _mm_unpackhi_epi8(s, zero);
    const __m128i d01 = _mm_unpacklo_epi8(d, zero), d23 = _mm_unpackhi_epi8(d, zero);
    const __m128i p0 = detail::regional8(_mm_unpacklo_epi16(d01, zero), _mm_unpacklo_epi16(s01, zero));
    const __m128i p1 = detail::regional8(_mm_unpackhi_epi16(d01, zero), _mm_unpackhi_epi16(s01, zero));
    const __m128i p2 = detail::regional8(_mm_unpacklo_epi16(d23, zero), _mm_unpacklo_epi16(s23, zero));
    const __m128i p3 = detail::regional8(_mm_unpackhi_epi16(d23, zero), _mm_unpackhi_epi16(s23, zero));
    const __m128i merged = _mm_packus_epi16(_mm_packs_epi32(p0, p1), _mm_packs_epi32(p2, p3));
    const __m128i untouched = _mm_or_si128(masks, _mm_cmpeq_epi32(_mm_and_si128(s, masks), zero));
    simd::store(dst + i, simd::select(untouched, d, merged));
  }
  return i;
}

// Two 16-bit pixels a step.
inline size_t regionalSse2(const Pixel64* src, Pixel64* dst, size_t n) {
  const __m128i zero = _mm_setzero_si128(), masks = simd::maskLanes(dst);
  size_t i = 0;
  for (; i + 2 <= n; i += 2) {
    const __m128i s = simd::load(src + i), d = simd::load(dst + i);
    const __m128i p0 = detail::regional16(_mm_unpacklo_epi16(d, zero), _mm_unpacklo_epi16(s, zero));
    const __m128i p1 = detail::regional16(_mm_unpackhi_epi16(d, zero), _mm_unpackhi_epi16(s, zero));
    // Words 0..65535 through the signed pack: shifted to their signed value
    // first, so the pack keeps every bit.
    const __m128i merged = _mm_packs_epi32(_mm_srai_epi32(_mm_slli_epi32(p0, 16), 16),
                                           _mm_srai_epi32(_mm_slli_epi32(p1, 16), 16));
    // Per pixel: the mask word's lanes (bits 48..63 of each half) are zero?
    const __m128i maskIsZero = _mm_cmpeq_epi16(_mm_and_si128(s, masks), zero);
    const __m128i wholePixel = _mm_shufflehi_epi16(_mm_shufflelo_epi16(maskIsZero, 0xFF), 0xFF);
    const __m128i untouched = _mm_or_si128(masks, wholePixel);
    simd::store(dst + i, simd::select(untouched, d, merged));
  }
  return i;
}

// The widest form this processor runs.
template <class P>
inline size_t regionalVectors(const P* src, P* dst, size_t n) {
#if EFFECTS_WIDE
  if (cpu::avx2()) {
    const size_t i = regionalAvx2(src, dst, n);
    return i + regionalSse2(src + i, dst + i, n - i);
  }
#endif
  return regionalSse2(src, dst, n);
}

// maskToward over whole vectors: four pixels a step.
inline size_t maskTowardVectors(const Pixel32* region, Pixel32* canvas, size_t n, float k) {
  const __m128 kk = _mm_set1_ps(k);
  const __m128i colours = _mm_set1_epi32(0x00FFFFFF), zero = _mm_setzero_si128();
  size_t i = 0;
  for (; i + 4 <= n; i += 4) {
    const __m128i r = simd::load(region + i), c = simd::load(canvas + i);
    const __m128i m = _mm_srli_epi32(r, 24), old = _mm_srli_epi32(c, 24);
    const __m128 fm = _mm_cvtepi32_ps(m);
    const __m128 v = _mm_add_ps(_mm_mul_ps(_mm_mul_ps(fm, kk), _mm_cvtepi32_ps(_mm_sub_epi32(m, old))),
                                _mm_cvtepi32_ps(old));
    const __m128i painted = _mm_or_si128(_mm_and_si128(c, colours),
                                         _mm_slli_epi32(detail::lowBytes(_mm_cvtps_epi32(v)), 24));
    simd::store(canvas + i, simd::select(_mm_cmpeq_epi32(m, zero), c, painted));
  }
  return i;
}

#else

template <class P>
inline size_t regionalVectors(const P*, P*, size_t) { return 0; }
inline size_t maskTowardVectors(const Pixel32*, Pixel32*, size_t, float) { return 0; }

#endif

// The float merge has no vector form: the plain loop is already near a copy.
template <>
inline size_t regionalVectors(const Pixel128*, Pixel128*, size_t) { return 0; }

}  // namespace effects::composite::direct
