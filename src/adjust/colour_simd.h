// SSE2 forms of the 8-bit colour mixes (and an AVX2 saturation). Each works
// on whole vectors of pixels from the start of a span and returns how many
// pixels it did; the plain forms of adjust/colour.h finish the rest.
#pragma once

#include <cstddef>
#include <cstdint>

#include "adjust/colour.h"
#include "core/cpu.h"
#include "core/simd.h"

namespace effects::colour::sse2 {

#if defined(__SSE2__)

namespace detail {

// Two 8-bit pixels widened to 16-bit lanes, saturated: the average of each
// pixel's blue, green and red (by 43691 / 2^17, which is x / 3 for every sum
// up to 765), then keep x avg + s x c in 32-bit lanes (the weights in
// pairs), shifted by 8 and narrowed with signed saturation.
inline __m128i saturateTwo(__m128i x, __m128i weights) {
  const __m128i sum = _mm_add_epi16(_mm_add_epi16(x, _mm_srli_epi64(x, 16)), _mm_srli_epi64(x, 32));
  __m128i avg = _mm_srli_epi16(_mm_mulhi_epu16(sum, _mm_set1_epi16(static_cast<short>(43691))), 1);
  avg = _mm_shufflehi_epi16(_mm_shufflelo_epi16(avg, 0), 0);
  const __m128i first = _mm_srai_epi32(_mm_madd_epi16(_mm_unpacklo_epi16(avg, x), weights), 8);
  const __m128i second = _mm_srai_epi32(_mm_madd_epi16(_mm_unpackhi_epi16(avg, x), weights), 8);
  return _mm_packs_epi32(first, second);
}

}  // namespace detail

// Saturation, s in 1..767: the results of at most 1018 and at least -510
// narrow to 16 bits unclipped, and the final unsigned narrowing is the clamp
// to 0..255.
inline size_t saturate32(Pixel32* px, size_t n, int32_t s) {
  const int32_t keep = 255 - s;
  const __m128i weights = _mm_set1_epi32(static_cast<int32_t>((static_cast<uint32_t>(s) << 16) | (keep & 0xFFFF)));
  const __m128i zero = _mm_setzero_si128(), masks = simd::maskLanes(px);
  size_t i = 0;
  for (; i + 4 <= n; i += 4) {
    const __m128i v = simd::load(px + i);
    const __m128i out = _mm_packus_epi16(detail::saturateTwo(_mm_unpacklo_epi8(v, zero), weights),
                                         detail::saturateTwo(_mm_unpackhi_epi8(v, zero), weights));
    simd::store(px + i, simd::select(masks, v, out));
  }
  return i;
}

// The hue wheel, one sector: blue, green and red in 32-bit lanes, the mixed
// element as ((255 - w) x a + w x z) >> 8 from one multiply-add of the pair
// (a, z).
template <int Sector>
inline size_t hue32(Pixel32* px, size_t n, int32_t w) {
  const __m128i ff = _mm_set1_epi32(0xFF), masks = simd::maskLanes(px);
  const __m128i weights = _mm_set1_epi32(static_cast<int32_t>((static_cast<uint32_t>(w) << 16) | (255 - w)));
  auto mix = [&](__m128i a, __m128i z) {
    if (w == 0) return a;
    if (w == 255) return z;
    return _mm_srli_epi32(_mm_madd_epi16(_mm_or_si128(a, _mm_slli_epi32(z, 16)), weights), 8);
  };
  size_t i = 0;
  for (; i + 4 <= n; i += 4) {
    const __m128i v = simd::load(px + i);
    const __m128i b = _mm_and_si128(v, ff), g = _mm_and_si128(_mm_srli_epi32(v, 8), ff),
                  r = _mm_and_si128(_mm_srli_epi32(v, 16), ff);
    __m128i b2 = b, g2 = g, r2 = r;
    if constexpr (Sector == 0) {
      g2 = mix(g, r);
    } else if constexpr (Sector == 1) {
      g2 = r; r2 = mix(r, b);
    } else if constexpr (Sector == 2) {
      b2 = mix(b, r); g2 = r; r2 = b;
    } else if constexpr (Sector == 3) {
      b2 = r; g2 = mix(r, b); r2 = b;
    } else if constexpr (Sector == 4) {
      b2 = r; g2 = b; r2 = mix(b, r);
    } else if constexpr (Sector == 5) {
      b2 = mix(r, b); g2 = b;
    } else {
      g2 = mix(b, g);
    }
    const __m128i colour = _mm_or_si128(b2, _mm_or_si128(_mm_slli_epi32(g2, 8), _mm_slli_epi32(r2, 16)));
    simd::store(px + i, _mm_or_si128(_mm_and_si128(v, masks), colour));
  }
  return i;
}

#if EFFECTS_WIDE
namespace detail {
EFFECTS_TARGET_AVX2 inline __m256i saturateTwo(__m256i x, __m256i weights) {
  const __m256i sum = _mm256_add_epi16(_mm256_add_epi16(x, _mm256_srli_epi64(x, 16)), _mm256_srli_epi64(x, 32));
  __m256i avg = _mm256_srli_epi16(_mm256_mulhi_epu16(sum, _mm256_set1_epi16(static_cast<short>(43691))), 1);
  avg = _mm256_shufflehi_epi16(_mm256_shufflelo_epi16(avg, 0), 0);
  const __m256i first = _mm256_srai_epi32(_mm256_madd_epi16(_mm256_unpacklo_epi16(avg, x), weights), 8);
  const __m256i second = _mm256_srai_epi32(_mm256_madd_epi16(_mm256_unpackhi_epi16(avg, x), weights), 8);
  return _mm256_packs_epi32(first, second);
}
}  // namespace detail

// The same, eight pixels a step (the unpacking and packing stay within each
// 128-bit half, so every pixel keeps its place).
EFFECTS_TARGET_AVX2 inline size_t saturate32Avx2(Pixel32* px, size_t n, int32_t s) {
  const int32_t keep = 255 - s;
  const __m256i weights = _mm256_set1_epi32(static_cast<int32_t>((static_cast<uint32_t>(s) << 16) | (keep & 0xFFFF)));
  const __m256i zero = _mm256_setzero_si256(), masks = _mm256_set1_epi32(static_cast<int32_t>(0xFF000000u));
  size_t i = 0;
  for (; i + 8 <= n; i += 8) {
    const __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(px + i));
    const __m256i out = _mm256_packus_epi16(detail::saturateTwo(_mm256_unpacklo_epi8(v, zero), weights),
                                            detail::saturateTwo(_mm256_unpackhi_epi8(v, zero), weights));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(px + i), _mm256_blendv_epi8(out, v, masks));
  }
  return i;
}
#endif

#else

inline size_t saturate32(Pixel32*, size_t, int32_t) { return 0; }
template <int Sector>
inline size_t hue32(Pixel32*, size_t, int32_t) { return 0; }

#endif

}  // namespace effects::colour::sse2
