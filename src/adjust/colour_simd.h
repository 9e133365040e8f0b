// SSE2 forms of the colour mixes (and AVX2 saturations). Each works
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

namespace detail {

// Low 32 bits of a x b in each 32-bit lane (what the plain form's wrapping
// product gives): SSE2 multiplies the even and the odd lanes apart.
inline __m128i mulWrapping(__m128i a, __m128i b) {
  const __m128i even = _mm_mul_epu32(a, b);
  const __m128i odd = _mm_mul_epu32(_mm_srli_epi64(a, 32), _mm_srli_epi64(b, 32));
  return _mm_unpacklo_epi32(_mm_shuffle_epi32(even, _MM_SHUFFLE(0, 0, 2, 0)),
                            _mm_shuffle_epi32(odd, _MM_SHUFFLE(0, 0, 2, 0)));
}

// The 16-bit saturation's last step on x = c s + keep avg (wrapped):
// trunc(x / 32767) clamped to 0..32767. A negative x gives 0 and anything
// from 32767^2 up gives 32767, so x is first clamped to 0..32767^2; there
// (x + (x >> 15) + 1) >> 15 is x / 32767 exactly (checked for every x in
// that range).
constexpr int32_t kSaturate64Top = 32767 * 32767;

inline __m128i divide32767(__m128i x) {
  x = _mm_andnot_si128(_mm_srai_epi32(x, 31), x);
  const __m128i top = _mm_set1_epi32(kSaturate64Top);
  x = simd::select(_mm_cmpgt_epi32(x, top), top, x);
  return _mm_srli_epi32(_mm_add_epi32(_mm_add_epi32(x, _mm_srli_epi32(x, 15)), _mm_set1_epi32(1)), 15);
}

// One 16-bit pixel in 32-bit lanes (b, g, r, mask). keep x avg + c x s is
// rewritten as s x (c - avg) + 32767 x avg, the same value modulo 2^32, so
// one product a lane does. The average (b + g + r) / 3: the sum (at most
// 196,605) is exact in single precision, and its product with 0.33333334f
// truncates to sum / 3 for every sum up to there (checked for all of them).
inline __m128i saturateOne(__m128i x, __m128i s) {
  const __m128i sum = _mm_add_epi32(_mm_add_epi32(x, _mm_shuffle_epi32(x, _MM_SHUFFLE(3, 0, 2, 1))),
                                    _mm_shuffle_epi32(x, _MM_SHUFFLE(3, 1, 0, 2)));
  const __m128i avg = _mm_cvttps_epi32(_mm_mul_ps(_mm_cvtepi32_ps(sum), _mm_set1_ps(0.33333334f)));
  const __m128i scaled = mulWrapping(_mm_sub_epi32(x, avg), s);
  return divide32767(_mm_add_epi32(scaled, _mm_sub_epi32(_mm_slli_epi32(avg, 15), avg)));
}

}  // namespace detail

// 16-bit saturation, s in 1..98301, two pixels a vector; the masks are kept.
inline size_t saturate64(Pixel64* px, size_t n, int32_t s) {
  const __m128i zero = _mm_setzero_si128(), masks = simd::maskLanes(px), sv = _mm_set1_epi32(s);
  size_t i = 0;
  for (; i + 2 <= n; i += 2) {
    const __m128i v = simd::load(px + i);
    const __m128i out = _mm_packs_epi32(detail::saturateOne(_mm_unpacklo_epi16(v, zero), sv),
                                        detail::saturateOne(_mm_unpackhi_epi16(v, zero), sv));
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

// The 16-bit hue wheel. Every target element of a sector is mix(a, z) of
// two of the pixel's elements, a copied element being mix(x, x) = x (the mask
// too), so a sector is two shuffles of the pixel (these masks: the source
// element of blue, green, red and the mask) and one mix on every lane.
inline constexpr int kHueA64[7] = {_MM_SHUFFLE(3, 2, 1, 0), _MM_SHUFFLE(3, 2, 2, 0), _MM_SHUFFLE(3, 0, 2, 0),
                                   _MM_SHUFFLE(3, 0, 2, 2), _MM_SHUFFLE(3, 0, 0, 2), _MM_SHUFFLE(3, 2, 0, 2),
                                   _MM_SHUFFLE(3, 2, 0, 0)};
inline constexpr int kHueZ64[7] = {_MM_SHUFFLE(3, 2, 2, 0), _MM_SHUFFLE(3, 0, 2, 0), _MM_SHUFFLE(3, 0, 2, 2),
                                   _MM_SHUFFLE(3, 0, 0, 2), _MM_SHUFFLE(3, 2, 0, 2), _MM_SHUFFLE(3, 2, 0, 0),
                                   _MM_SHUFFLE(3, 2, 1, 0)};

namespace detail {
// The mix with the weight shifted by 7, ((32640 - w) a + w z) / 32640, is
// ((255 - weight) a + weight z) / 255 = (255 a + weight (z - a)) / 255. In
// single precision every step is exact (integers below 2^24), and the
// quotient by 255 truncates to the integer quotient for every such sum
// (checked for all of them).
inline __m128i mix64(__m128i a, __m128i z, __m128 weight) {
  const __m128 fa = _mm_cvtepi32_ps(a), fz = _mm_cvtepi32_ps(z);
  const __m128 sum = _mm_add_ps(_mm_mul_ps(fa, _mm_set1_ps(255.0f)), _mm_mul_ps(_mm_sub_ps(fz, fa), weight));
  return _mm_cvttps_epi32(_mm_div_ps(sum, _mm_set1_ps(255.0f)));
}
}  // namespace detail

// Two pixels a vector. The results (at most 65535) are narrowed with signed
// saturation after taking 32768 off, and the bias is put back.
template <int Sector>
inline size_t hue64(Pixel64* px, size_t n, int32_t weight) {
  constexpr int sa = kHueA64[Sector], sz = kHueZ64[Sector];
  const __m128 w = _mm_set1_ps(static_cast<float>(weight));
  const __m128i zero = _mm_setzero_si128(), bias = _mm_set1_epi32(32768);
  size_t i = 0;
  for (; i + 2 <= n; i += 2) {
    const __m128i v = simd::load(px + i);
    const __m128i a = _mm_shufflehi_epi16(_mm_shufflelo_epi16(v, sa), sa);
    const __m128i z = _mm_shufflehi_epi16(_mm_shufflelo_epi16(v, sz), sz);
    const __m128i first = _mm_sub_epi32(detail::mix64(_mm_unpacklo_epi16(a, zero), _mm_unpacklo_epi16(z, zero), w), bias);
    const __m128i second = _mm_sub_epi32(detail::mix64(_mm_unpackhi_epi16(a, zero), _mm_unpackhi_epi16(z, zero), w), bias);
    simd::store(px + i, _mm_xor_si128(_mm_packs_epi32(first, second), _mm_set1_epi16(static_cast<short>(0x8000))));
  }
  return i;
}

#if EFFECTS_WIDE
namespace detail {
EFFECTS_TARGET_AVX2 inline __m256i mix64(__m256i a, __m256i z, __m256 weight) {
  const __m256 fa = _mm256_cvtepi32_ps(a), fz = _mm256_cvtepi32_ps(z);
  const __m256 sum =
      _mm256_add_ps(_mm256_mul_ps(fa, _mm256_set1_ps(255.0f)), _mm256_mul_ps(_mm256_sub_ps(fz, fa), weight));
  return _mm256_cvttps_epi32(_mm256_div_ps(sum, _mm256_set1_ps(255.0f)));
}
}  // namespace detail

// The same, four pixels a step (as the 16-bit saturation, the quarters of
// the packed result are put back in order).
template <int Sector>
EFFECTS_TARGET_AVX2 inline size_t hue64Avx2(Pixel64* px, size_t n, int32_t weight) {
  constexpr int sa = kHueA64[Sector], sz = kHueZ64[Sector];
  const __m256 w = _mm256_set1_ps(static_cast<float>(weight));
  size_t i = 0;
  for (; i + 4 <= n; i += 4) {
    const __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(px + i));
    const __m256i a = _mm256_shufflehi_epi16(_mm256_shufflelo_epi16(v, sa), sa);
    const __m256i z = _mm256_shufflehi_epi16(_mm256_shufflelo_epi16(v, sz), sz);
    const __m256i first = detail::mix64(_mm256_cvtepu16_epi32(_mm256_castsi256_si128(a)),
                                        _mm256_cvtepu16_epi32(_mm256_castsi256_si128(z)), w);
    const __m256i second = detail::mix64(_mm256_cvtepu16_epi32(_mm256_extracti128_si256(a, 1)),
                                         _mm256_cvtepu16_epi32(_mm256_extracti128_si256(z, 1)), w);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(px + i),
                        _mm256_permute4x64_epi64(_mm256_packus_epi32(first, second), _MM_SHUFFLE(3, 1, 2, 0)));
  }
  return i;
}

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

// The 16-bit saturation with the same steps, two pixels a 256-bit vector and
// four a loop step (the packing works within 128-bit halves, so the result's
// quarters are put back in order).
EFFECTS_TARGET_AVX2 inline __m256i saturateTwo64(__m256i x, __m256i s) {
  const __m256i sum = _mm256_add_epi32(_mm256_add_epi32(x, _mm256_shuffle_epi32(x, _MM_SHUFFLE(3, 0, 2, 1))),
                                       _mm256_shuffle_epi32(x, _MM_SHUFFLE(3, 1, 0, 2)));
  const __m256i avg = _mm256_cvttps_epi32(_mm256_mul_ps(_mm256_cvtepi32_ps(sum), _mm256_set1_ps(0.33333334f)));
  __m256i v = _mm256_add_epi32(_mm256_mullo_epi32(_mm256_sub_epi32(x, avg), s),
                               _mm256_sub_epi32(_mm256_slli_epi32(avg, 15), avg));
  v = _mm256_min_epi32(_mm256_max_epi32(v, _mm256_setzero_si256()), _mm256_set1_epi32(detail::kSaturate64Top));
  return _mm256_srli_epi32(_mm256_add_epi32(_mm256_add_epi32(v, _mm256_srli_epi32(v, 15)), _mm256_set1_epi32(1)), 15);
}

EFFECTS_TARGET_AVX2 inline size_t saturate64Avx2(Pixel64* px, size_t n, int32_t s) {
  const __m256i sv = _mm256_set1_epi32(s);
  size_t i = 0;
  for (; i + 4 <= n; i += 4) {
    const __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(px + i));
    const __m256i first = saturateTwo64(_mm256_cvtepu16_epi32(_mm256_castsi256_si128(v)), sv);
    const __m256i second = saturateTwo64(_mm256_cvtepu16_epi32(_mm256_extracti128_si256(v, 1)), sv);
    const __m256i out = _mm256_permute4x64_epi64(_mm256_packus_epi32(first, second), _MM_SHUFFLE(3, 1, 2, 0));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(px + i), _mm256_blend_epi16(out, v, 0x88));
  }
  return i;
}
#endif

#else

inline size_t saturate32(Pixel32*, size_t, int32_t) { return 0; }
inline size_t saturate64(Pixel64*, size_t, int32_t) { return 0; }
template <int Sector>
inline size_t hue32(Pixel32*, size_t, int32_t) { return 0; }
template <int Sector>
inline size_t hue64(Pixel64*, size_t, int32_t) { return 0; }

#endif

}  // namespace effects::colour::sse2
