// float(pow(x, e)) for float x and a double e, as the float layout's gamma,
// levels and HDR imports form it, computed in vectors and exact.
//
// The vector form approximates z = x^e in double precision as
// y = 2^t x p(f), t = e x log2(x), and proves its result or gives up:
//
//  1. x = 2^k x m with m in [sqrt(1/2), sqrt(2)) from the float's bits
//     (exact). log2(m) = 2 atanh(s) / ln 2 with s = (m - 1) / (m + 1): m - 1
//     and m + 1 are exact (m has 24 bits), s is one rounding away, |s| <=
//     0.1716. 2 atanh(s) = s (2 + s^2 P(s^2)) with P the series' next seven
//     terms (2/3 ... 2/15); the first term left out, 2 s^17 / 17, is at most
//     2^-44.6 of the value. P has positive terms and s^2 <= 0.0295, so its
//     evaluation (Estrin's scheme: no path through it has more than 14
//     roundings) is within 14 x 2^-53; with the products and the
//     multiplication by 1/ln 2 the relative error of l = log2(m) is below
//     2^-44.6 + 20 x 2^-53 < 2^-44.5.
//  2. L = k + l: |l| <= 1/2 <= |k + l| whenever k != 0, so L keeps l's
//     relative error plus one rounding; t = e x L one more. So
//     |t - e log2(x)| <= |t| x 2^-44.4.
//  3. t is limited to [-250, 250] (beyond it z is far outside the float
//     range either way, and so is y). n = round(t), f = t - n is exact and
//     |f| <= 1/2; 2^f is the Taylor polynomial of exp(f ln 2) to degree 11,
//     whose remainder is below 2^-46.7 of it; its evaluation (Estrin's
//     scheme, at most 24 roundings on a path) errs by at most 24 x 2^-53 of
//     the sum of its terms' magnitudes, which is below e^0.347, against a
//     value of at least e^-0.347: 2^-47.4 of the value. y = 2^n x p(f) is
//     exact.
//  4. Together |y - z| <= ((|t| + 1) x 2^-44) z: the exponent's error
//     becomes a relative error of |t| x 2^-44.4 x ln 2 in the result.
//
// The platform's pow, which the plain form calls, is within one unit in the
// last place of z (2^-52 relative; the maths libraries of every build are
// better than that). So every value the plain form's pow can return lies in
// [y (1 - E), y (1 + E)] with E = (|t| + 4) x 2^-44, which also covers the
// roundings of the two bounds themselves. Rounding to float is monotonic: when
// both bounds round to the same float, the plain form gives that float, and
// so does the vector form. Otherwise (about one value in 2^15 near the middle
// of two floats), and for x <= 0, denormal x, infinities and NaN in x or e,
// the element goes through pow itself.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>

#include "core/cpu.h"
#include "core/layout.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace effects::fastpow {

// The plain form.
inline float plain(float x, double e) { return static_cast<float>(std::pow(static_cast<double>(x), e)); }

namespace detail {

// 2/3, 2/5, ..., 2/15: the atanh series after its first term, times 2.
inline constexpr double kLog[7] = {2.0 / 3, 2.0 / 5, 2.0 / 7, 2.0 / 9, 2.0 / 11, 2.0 / 13, 2.0 / 15};
inline constexpr double kInverseLn2 = 1.4426950408889634;
// (ln 2)^j / j! for j = 0..11.
inline constexpr double kExp[12] = {1.0,
                                    0.6931471805599453,
                                    0.24022650695910072,
                                    0.05550410866482158,
                                    0.009618129107628477,
                                    0.0013333558146428443,
                                    0.0001540353039338161,
                                    1.5252733804059841e-05,
                                    1.321548679014431e-06,
                                    1.01780860092397e-07,
                                    7.054911620801123e-09,
                                    4.4455382718708116e-10};
inline constexpr double kErrorScale = 0x1p-44;

}  // namespace detail

#if defined(__SSE2__)

namespace detail {

// The polynomials in Estrin's scheme (pairs, then pairs of pairs), so that
// their roundings run in parallel rather than in one long chain.
inline __m128d pair(const double* c, __m128d x) { return _mm_add_pd(_mm_set1_pd(c[0]), _mm_mul_pd(_mm_set1_pd(c[1]), x)); }
// c0 + c1 x + ... + c6 x^6
inline __m128d poly7(const double* c, __m128d x) {
  const __m128d x2 = _mm_mul_pd(x, x), x4 = _mm_mul_pd(x2, x2);
  const __m128d low = _mm_add_pd(pair(c, x), _mm_mul_pd(x2, pair(c + 2, x)));
  const __m128d high = _mm_add_pd(pair(c + 4, x), _mm_mul_pd(x2, _mm_set1_pd(c[6])));
  return _mm_add_pd(low, _mm_mul_pd(x4, high));
}
// c0 + c1 x + ... + c11 x^11
inline __m128d poly12(const double* c, __m128d x) {
  const __m128d x2 = _mm_mul_pd(x, x), x4 = _mm_mul_pd(x2, x2), x8 = _mm_mul_pd(x4, x4);
  const __m128d a = _mm_add_pd(pair(c, x), _mm_mul_pd(x2, pair(c + 2, x)));
  const __m128d b = _mm_add_pd(pair(c + 4, x), _mm_mul_pd(x2, pair(c + 6, x)));
  const __m128d d = _mm_add_pd(pair(c + 8, x), _mm_mul_pd(x2, pair(c + 10, x)));
  return _mm_add_pd(_mm_add_pd(a, _mm_mul_pd(x4, b)), _mm_mul_pd(x8, d));
}

// Two lanes: m in [sqrt(1/2), sqrt(2)), k as doubles. Returns the float
// results in the two low lanes and, in `sure`, all ones where they are
// proven.
inline __m128 powTwo(__m128d m, __m128d k, __m128d e, __m128i& sure) {
  const __m128d one = _mm_set1_pd(1.0);
  const __m128d s = _mm_div_pd(_mm_sub_pd(m, one), _mm_add_pd(m, one));
  const __m128d z = _mm_mul_pd(s, s);
  const __m128d twoAtanh = _mm_mul_pd(s, _mm_add_pd(_mm_set1_pd(2.0), _mm_mul_pd(z, poly7(kLog, z))));
  const __m128d L = _mm_add_pd(k, _mm_mul_pd(twoAtanh, _mm_set1_pd(kInverseLn2)));
  __m128d t = _mm_mul_pd(e, L);
  t = _mm_min_pd(_mm_max_pd(t, _mm_set1_pd(-250.0)), _mm_set1_pd(250.0));
  const __m128i n = _mm_cvtpd_epi32(t);
  const __m128d f = _mm_sub_pd(t, _mm_cvtepi32_pd(n));
  const __m128i bits = _mm_slli_epi64(_mm_unpacklo_epi32(_mm_add_epi32(n, _mm_set1_epi32(1023)), _mm_setzero_si128()), 52);
  const __m128d y = _mm_mul_pd(poly12(kExp, f), _mm_castsi128_pd(bits));
  const __m128d absT = _mm_andnot_pd(_mm_set1_pd(-0.0), t);
  const __m128d spread = _mm_mul_pd(y, _mm_mul_pd(_mm_add_pd(absT, _mm_set1_pd(4.0)), _mm_set1_pd(kErrorScale)));
  const __m128 lo = _mm_cvtpd_ps(_mm_sub_pd(y, spread)), hi = _mm_cvtpd_ps(_mm_add_pd(y, spread));
  sure = _mm_cmpeq_epi32(_mm_castps_si128(lo), _mm_castps_si128(hi));
  return hi;
}

}  // namespace detail

// Four floats: the results, and a bit mask (bit i for lane i) of the lanes
// that must go through pow instead.
inline __m128 pow4(__m128 x, __m128d e, int& unsure) {
  const __m128i xi = _mm_castps_si128(x);
  // Not a positive normal finite float: x < FLT_MIN (NaN, 0, negatives and
  // denormals included) or infinity.
  const __m128 special = _mm_or_ps(_mm_cmpnge_ps(x, _mm_set1_ps(1.17549435e-38f)),
                                   _mm_cmpgt_ps(x, _mm_set1_ps(3.40282347e38f)));
  __m128 m = _mm_castsi128_ps(_mm_or_si128(_mm_and_si128(xi, _mm_set1_epi32(0x007FFFFF)), _mm_set1_epi32(0x3F800000)));
  __m128i k = _mm_sub_epi32(_mm_srli_epi32(xi, 23), _mm_set1_epi32(127));
  const __m128 big = _mm_cmpgt_ps(m, _mm_set1_ps(1.41421354f));
  m = _mm_or_ps(_mm_andnot_ps(big, m), _mm_and_ps(big, _mm_mul_ps(m, _mm_set1_ps(0.5f))));
  k = _mm_sub_epi32(k, _mm_castps_si128(big));
  __m128i sureLo, sureHi;
  const __m128 lo = detail::powTwo(_mm_cvtps_pd(m), _mm_cvtepi32_pd(k), e, sureLo);
  const __m128 hi = detail::powTwo(_mm_cvtps_pd(_mm_movehl_ps(m, m)), _mm_cvtepi32_pd(_mm_shuffle_epi32(k, _MM_SHUFFLE(1, 0, 3, 2))), e, sureHi);
  const __m128 sure = _mm_castsi128_ps(_mm_unpacklo_epi64(sureLo, sureHi));
  unsure = _mm_movemask_ps(_mm_or_ps(special, _mm_xor_ps(sure, _mm_castsi128_ps(_mm_set1_epi32(-1)))));
  return _mm_movelh_ps(lo, hi);
}

#endif

#if EFFECTS_WIDE

namespace detail {

EFFECTS_TARGET_AVX2 inline __m256d pair(const double* c, __m256d x) {
  return _mm256_add_pd(_mm256_set1_pd(c[0]), _mm256_mul_pd(_mm256_set1_pd(c[1]), x));
}
EFFECTS_TARGET_AVX2 inline __m256d poly7(const double* c, __m256d x) {
  const __m256d x2 = _mm256_mul_pd(x, x), x4 = _mm256_mul_pd(x2, x2);
  const __m256d low = _mm256_add_pd(pair(c, x), _mm256_mul_pd(x2, pair(c + 2, x)));
  const __m256d high = _mm256_add_pd(pair(c + 4, x), _mm256_mul_pd(x2, _mm256_set1_pd(c[6])));
  return _mm256_add_pd(low, _mm256_mul_pd(x4, high));
}
EFFECTS_TARGET_AVX2 inline __m256d poly12(const double* c, __m256d x) {
  const __m256d x2 = _mm256_mul_pd(x, x), x4 = _mm256_mul_pd(x2, x2), x8 = _mm256_mul_pd(x4, x4);
  const __m256d a = _mm256_add_pd(pair(c, x), _mm256_mul_pd(x2, pair(c + 2, x)));
  const __m256d b = _mm256_add_pd(pair(c + 4, x), _mm256_mul_pd(x2, pair(c + 6, x)));
  const __m256d d = _mm256_add_pd(pair(c + 8, x), _mm256_mul_pd(x2, pair(c + 10, x)));
  return _mm256_add_pd(_mm256_add_pd(a, _mm256_mul_pd(x4, b)), _mm256_mul_pd(x8, d));
}

// The exponent t = e x log2(x) of four floats (steps 1 to 3), in double.
EFFECTS_TARGET_AVX2 inline __m256d exponentOf(__m128 x, __m256d e) {
  const __m128i xi = _mm_castps_si128(x);
  __m128 m = _mm_castsi128_ps(_mm_or_si128(_mm_and_si128(xi, _mm_set1_epi32(0x007FFFFF)), _mm_set1_epi32(0x3F800000)));
  __m128i k = _mm_sub_epi32(_mm_srli_epi32(xi, 23), _mm_set1_epi32(127));
  const __m128 big = _mm_cmpgt_ps(m, _mm_set1_ps(1.41421354f));
  m = _mm_blendv_ps(m, _mm_mul_ps(m, _mm_set1_ps(0.5f)), big);
  k = _mm_sub_epi32(k, _mm_castps_si128(big));
  const __m256d md = _mm256_cvtps_pd(m), one = _mm256_set1_pd(1.0);
  const __m256d s = _mm256_div_pd(_mm256_sub_pd(md, one), _mm256_add_pd(md, one));
  const __m256d z = _mm256_mul_pd(s, s);
  const __m256d twoAtanh = _mm256_mul_pd(s, _mm256_add_pd(_mm256_set1_pd(2.0), _mm256_mul_pd(z, poly7(kLog, z))));
  const __m256d L = _mm256_add_pd(_mm256_cvtepi32_pd(k), _mm256_mul_pd(twoAtanh, _mm256_set1_pd(kInverseLn2)));
  const __m256d t = _mm256_mul_pd(e, L);
  return _mm256_min_pd(_mm256_max_pd(t, _mm256_set1_pd(-250.0)), _mm256_set1_pd(250.0));
}

// 2^t as floats (step 3), with all ones in `sure` where they are proven.
EFFECTS_TARGET_AVX2 inline __m128 powerOf(__m256d t, __m128i& sure) {
  const __m128i n = _mm256_cvtpd_epi32(t);
  const __m256d f = _mm256_sub_pd(t, _mm256_cvtepi32_pd(n));
  const __m256i bits = _mm256_slli_epi64(_mm256_cvtepi32_epi64(_mm_add_epi32(n, _mm_set1_epi32(1023))), 52);
  const __m256d y = _mm256_mul_pd(poly12(kExp, f), _mm256_castsi256_pd(bits));
  const __m256d absT = _mm256_andnot_pd(_mm256_set1_pd(-0.0), t);
  const __m256d spread =
      _mm256_mul_pd(y, _mm256_mul_pd(_mm256_add_pd(absT, _mm256_set1_pd(4.0)), _mm256_set1_pd(kErrorScale)));
  const __m128 lo = _mm256_cvtpd_ps(_mm256_sub_pd(y, spread)), hi = _mm256_cvtpd_ps(_mm256_add_pd(y, spread));
  sure = _mm_cmpeq_epi32(_mm_castps_si128(lo), _mm_castps_si128(hi));
  return hi;
}

}  // namespace detail

#endif


#if EFFECTS_WIDE

// The same steps eight lanes a step in AVX-512: each lane does exactly the
// operations of the AVX2 lanes above, in the same order, so the proof holds
// for them unchanged. On processors that run 512-bit operations as two
// 256-bit halves this still pays: half the instructions for the same work
// let more of the long chains of consecutive vectors run at once.
//
// GCC 12's AVX-512 conversions, minimum and maximum start from an
// "undefined" register it then warns about (a false alarm).
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
namespace detail {

EFFECTS_TARGET_AVX512 inline __m512d pair(const double* c, __m512d x) {
  return _mm512_add_pd(_mm512_set1_pd(c[0]), _mm512_mul_pd(_mm512_set1_pd(c[1]), x));
}
EFFECTS_TARGET_AVX512 inline __m512d poly7(const double* c, __m512d x) {
  const __m512d x2 = _mm512_mul_pd(x, x), x4 = _mm512_mul_pd(x2, x2);
  const __m512d low = _mm512_add_pd(pair(c, x), _mm512_mul_pd(x2, pair(c + 2, x)));
  const __m512d high = _mm512_add_pd(pair(c + 4, x), _mm512_mul_pd(x2, _mm512_set1_pd(c[6])));
  return _mm512_add_pd(low, _mm512_mul_pd(x4, high));
}
EFFECTS_TARGET_AVX512 inline __m512d poly12(const double* c, __m512d x) {
  const __m512d x2 = _mm512_mul_pd(x, x), x4 = _mm512_mul_pd(x2, x2), x8 = _mm512_mul_pd(x4, x4);
  const __m512d a = _mm512_add_pd(pair(c, x), _mm512_mul_pd(x2, pair(c + 2, x)));
  const __m512d b = _mm512_add_pd(pair(c + 4, x), _mm512_mul_pd(x2, pair(c + 6, x)));
  const __m512d d = _mm512_add_pd(pair(c + 8, x), _mm512_mul_pd(x2, pair(c + 10, x)));
  return _mm512_add_pd(_mm512_add_pd(a, _mm512_mul_pd(x4, b)), _mm512_mul_pd(x8, d));
}

// The exponent t = e x log2(x) of eight floats (steps 1 to 3), in double.
EFFECTS_TARGET_AVX512 inline __m512d exponentOf(__m256 x, __m512d e) {
  const __m256i xi = _mm256_castps_si256(x);
  __m256 m = _mm256_castsi256_ps(
      _mm256_or_si256(_mm256_and_si256(xi, _mm256_set1_epi32(0x007FFFFF)), _mm256_set1_epi32(0x3F800000)));
  __m256i k = _mm256_sub_epi32(_mm256_srli_epi32(xi, 23), _mm256_set1_epi32(127));
  const __m256 big = _mm256_cmp_ps(m, _mm256_set1_ps(1.41421354f), _CMP_GT_OQ);
  m = _mm256_blendv_ps(m, _mm256_mul_ps(m, _mm256_set1_ps(0.5f)), big);
  k = _mm256_sub_epi32(k, _mm256_castps_si256(big));
  const __m512d md = _mm512_cvtps_pd(m), one = _mm512_set1_pd(1.0);
  const __m512d s = _mm512_div_pd(_mm512_sub_pd(md, one), _mm512_add_pd(md, one));
  const __m512d z = _mm512_mul_pd(s, s);
  const __m512d twoAtanh = _mm512_mul_pd(s, _mm512_add_pd(_mm512_set1_pd(2.0), _mm512_mul_pd(z, poly7(kLog, z))));
  const __m512d L = _mm512_add_pd(_mm512_cvtepi32_pd(k), _mm512_mul_pd(twoAtanh, _mm512_set1_pd(kInverseLn2)));
  const __m512d t = _mm512_mul_pd(e, L);
  return _mm512_min_pd(_mm512_max_pd(t, _mm512_set1_pd(-250.0)), _mm512_set1_pd(250.0));
}

// 2^t as eight floats (step 3), with a bit set in `sure` for each lane
// proven.
EFFECTS_TARGET_AVX512 inline __m256 powerOf(__m512d t, __mmask8& sure) {
  const __m256i n = _mm512_cvtpd_epi32(t);
  const __m512d f = _mm512_sub_pd(t, _mm512_cvtepi32_pd(n));
  const __m512i bits = _mm512_slli_epi64(_mm512_cvtepi32_epi64(_mm256_add_epi32(n, _mm256_set1_epi32(1023))), 52);
  const __m512d y = _mm512_mul_pd(poly12(kExp, f), _mm512_castsi512_pd(bits));
  const __m512d absT = _mm512_abs_pd(t);
  const __m512d spread =
      _mm512_mul_pd(y, _mm512_mul_pd(_mm512_add_pd(absT, _mm512_set1_pd(4.0)), _mm512_set1_pd(kErrorScale)));
  const __m256 lo = _mm512_cvtpd_ps(_mm512_sub_pd(y, spread)), hi = _mm512_cvtpd_ps(_mm512_add_pd(y, spread));
  sure = _mm256_cmpeq_epi32_mask(_mm256_castps_si256(lo), _mm256_castps_si256(hi));
  return hi;
}

}  // namespace detail

#endif

#if EFFECTS_WIDE
// Blue, green and red of n float pixels, two a step; returns the pixels done.
EFFECTS_TARGET_AVX2 inline size_t powColoursAvx2(Pixel128* px, size_t n, double e) {
  const __m256d ev = _mm256_set1_pd(e);
  // A block at a time: its colour elements gathered into one row of floats,
  // then in two passes the exponents of all of them and their powers (each
  // pass's steps short and independent, so the processor runs many at once),
  // and back into the pixels.
  constexpr size_t kPixels = 64, kValues = 3 * kPixels;
  alignas(32) float v[kValues];
  alignas(32) double t[kValues];
  uint32_t unsure[kValues / 4];
  for (size_t i = 0; i < n; i += kPixels) {
    const size_t m = n - i < kPixels ? n - i : kPixels, count = 3 * m, vectors = (count + 3) / 4;
    for (size_t p = 0; p < m; ++p) v[3 * p] = px[i + p].blue, v[3 * p + 1] = px[i + p].green, v[3 * p + 2] = px[i + p].red;
    for (size_t k = count; k < 4 * vectors; ++k) v[k] = 1.0f;
    for (size_t k = 0; k < vectors; ++k) _mm256_store_pd(t + 4 * k, detail::exponentOf(_mm_load_ps(v + 4 * k), ev));
    for (size_t k = 0; k < vectors; ++k) {
      const __m128 x = _mm_load_ps(v + 4 * k);
      __m128i sure;
      const __m128 y = detail::powerOf(_mm256_load_pd(t + 4 * k), sure);
      // Not a positive normal finite float: x < FLT_MIN (NaN, 0, negatives
      // and denormals included) or infinity.
      const __m128 special = _mm_or_ps(_mm_cmpnge_ps(x, _mm_set1_ps(1.17549435e-38f)),
                                       _mm_cmpgt_ps(x, _mm_set1_ps(3.40282347e38f)));
      const __m128 doubtful = _mm_or_ps(special, _mm_castsi128_ps(_mm_xor_si128(sure, _mm_set1_epi32(-1))));
      unsure[k] = static_cast<uint32_t>(_mm_movemask_ps(doubtful));
      _mm_store_ps(v + 4 * k, _mm_blendv_ps(y, x, doubtful));  // x kept for pow below
    }
    for (size_t k = 0; k < vectors; ++k)
      for (uint32_t u = unsure[k]; u != 0; u &= u - 1) {
        const size_t j = 4 * k + static_cast<size_t>(__builtin_ctz(u));
        if (j < count) v[j] = plain(v[j], e);
      }
    for (size_t p = 0; p < m; ++p) px[i + p].blue = v[3 * p], px[i + p].green = v[3 * p + 1], px[i + p].red = v[3 * p + 2];
  }
  return n;
}
#endif

#if EFFECTS_WIDE
// Blue, green and red of n float pixels in AVX-512: as powColoursAvx2, eight
// elements a step, the colour elements of four pixels gathered into a row
// and put back with one compress and one expand. Returns the pixels done.
EFFECTS_TARGET_AVX512 inline size_t powColoursAvx512(Pixel128* px, size_t n, double e) {
  const __m512d ev = _mm512_set1_pd(e);
  constexpr size_t kPixels = 64, kValues = 3 * kPixels;
  constexpr __mmask16 kColours = 0x7777;  // blue, green and red of four pixels
  // (a compressed group is stored as a whole vector: four lanes to spare)
  alignas(64) float v[kValues + 4];
  alignas(64) double t[kValues];
  uint32_t unsure[kValues / 8];
  for (size_t i = 0; i < n; i += kPixels) {
    const size_t m = n - i < kPixels ? n - i : kPixels, count = 3 * m, vectors = (count + 7) / 8;
    size_t p = 0;
    for (; p + 4 <= m; p += 4)
      _mm512_storeu_ps(v + 3 * p, _mm512_maskz_compress_ps(kColours, _mm512_loadu_ps(&px[i + p].blue)));
    for (; p < m; ++p) v[3 * p] = px[i + p].blue, v[3 * p + 1] = px[i + p].green, v[3 * p + 2] = px[i + p].red;
    for (size_t k = count; k < 8 * vectors; ++k) v[k] = 1.0f;
    for (size_t k = 0; k < vectors; ++k) _mm512_store_pd(t + 8 * k, detail::exponentOf(_mm256_load_ps(v + 8 * k), ev));
    for (size_t k = 0; k < vectors; ++k) {
      const __m256 x = _mm256_load_ps(v + 8 * k);
      __mmask8 sure;
      const __m256 y = detail::powerOf(_mm512_load_pd(t + 8 * k), sure);
      // Not a positive normal finite float: x < FLT_MIN (NaN, 0, negatives
      // and denormals included) or infinity.
      const __mmask8 special = static_cast<__mmask8>(_mm256_cmp_ps_mask(x, _mm256_set1_ps(1.17549435e-38f), _CMP_NGE_UQ) |
                                                     _mm256_cmp_ps_mask(x, _mm256_set1_ps(3.40282347e38f), _CMP_GT_OQ));
      const auto doubtful = static_cast<__mmask8>(special | static_cast<__mmask8>(~sure));
      unsure[k] = doubtful;
      _mm256_store_ps(v + 8 * k, _mm256_mask_blend_ps(doubtful, y, x));  // x kept for pow below
    }
    for (size_t k = 0; k < vectors; ++k)
      for (uint32_t u = unsure[k]; u != 0; u &= u - 1) {
        const size_t j = 8 * k + static_cast<size_t>(__builtin_ctz(u));
        if (j < count) v[j] = plain(v[j], e);
      }
    for (p = 0; p + 4 <= m; p += 4) {
      float* f = &px[i + p].blue;
      _mm512_storeu_ps(f, _mm512_mask_expand_ps(_mm512_loadu_ps(f), kColours, _mm512_loadu_ps(v + 3 * p)));
    }
    for (; p < m; ++p) px[i + p].blue = v[3 * p], px[i + p].green = v[3 * p + 1], px[i + p].red = v[3 * p + 2];
  }
  return n;
}
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif
#endif

// float(pow(x, e)) of blue, green and red of n float pixels, in place (the
// mask is left alone): the vector form where it proves its result, pow for
// the elements it cannot prove and for an exponent that is not finite.
inline void powColours(Pixel128* px, size_t n, double e) {
  if (px == nullptr) return;
  size_t i = 0;
  if (std::isfinite(e)) {
#if EFFECTS_WIDE
    if (cpu::avx512()) i = powColoursAvx512(px, n, e);
    else if (cpu::avx2()) i = powColoursAvx2(px, n, e);
#endif
#if defined(__SSE2__)
    const __m128d ev = _mm_set1_pd(e);
    for (; i < n; ++i) {
      float* f = &px[i].blue;
      const __m128 x = _mm_loadu_ps(f);
      int unsure;
      const __m128 y = pow4(x, ev, unsure);
      alignas(16) float in[4], out[4];
      _mm_store_ps(in, x);
      _mm_store_ps(out, y);
      for (int lane = 0; lane < 3; ++lane) f[lane] = (unsure >> lane) & 1 ? plain(in[lane], e) : out[lane];
    }
#endif
  }
  for (; i < n; ++i) {
    px[i].blue = plain(px[i].blue, e);
    px[i].green = plain(px[i].green, e);
    px[i].red = plain(px[i].red, e);
  }
}

}  // namespace effects::fastpow
