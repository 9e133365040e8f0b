// AVX2 forms of the layer composite's per-pixel step, chosen at run time
// where the processor has AVX2 (core/cpu.h): eight 8-bit pixels a step in
// 32-bit lanes and packed single precision, four 16-bit pixels a step with
// each pixel's four elements in packed double precision, two float pixels a
// step likewise. The arithmetic is
// that of blend_simd.h lane for lane; blend::blendPixel does the rest of a
// row, and the tests hold both forms to it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "composite/blend.h"
#include "core/cpu.h"
#include "core/simd.h"

namespace effects::blend::avx2 {

#if EFFECTS_WIDE

namespace detail {

using V = __m256i;

EFFECTS_TARGET_AVX2 inline V set(int32_t v) { return _mm256_set1_epi32(v); }
EFFECTS_TARGET_AVX2 inline V gt(V a, V b) { return _mm256_cmpgt_epi32(a, b); }
EFFECTS_TARGET_AVX2 inline V eq(V a, V b) { return _mm256_cmpeq_epi32(a, b); }
// a where the mask is set, b elsewhere.
EFFECTS_TARGET_AVX2 inline V select(V mask, V a, V b) { return _mm256_blendv_epi8(b, a, mask); }

// The integer targets of modes 4 and 5 (see blend_simd.h).
template <int32_t M>
EFFECTS_TARGET_AVX2 inline V multiplyTarget(V d, V s) {
  if constexpr (M == 255) {
    return _mm256_and_si256(eq(s, set(255)), d);
  } else {
    const V once = _mm256_and_si256(gt(s, set(M - 1)), d);
    return _mm256_add_epi32(once, _mm256_and_si256(gt(s, set(2 * M - 1)), d));
  }
}
template <int32_t M>
EFFECTS_TARGET_AVX2 inline V screenTarget(V d, V s) {
  const V t = select(eq(s, _mm256_setzero_si256()), d, set(M));
  if constexpr (M == 255) return t;
  else return select(gt(s, set(2 * M - 1)), _mm256_sub_epi32(set(2 * M), d), t);
}

template <class L, int32_t Mode>
EFFECTS_TARGET_AVX2 inline V targetOf(V d, V s, V& apply) {
  constexpr int32_t M = fullInt<L>, T = kThreshold<L>;
  apply = set(-1);
  switch (Mode) {
    case EFFECTS_BLEND_DARKEN: apply = gt(d, s); return s;
    case EFFECTS_BLEND_LIGHTEN: apply = gt(s, d); return s;
    case EFFECTS_BLEND_DIFFERENCE: return _mm256_abs_epi32(_mm256_sub_epi32(d, s));
    case EFFECTS_BLEND_MULTIPLY: return multiplyTarget<M>(d, s);
    case EFFECTS_BLEND_SCREEN: return screenTarget<M>(d, s);
    case EFFECTS_BLEND_OVERLAY: return select(gt(d, set(T - 1)), screenTarget<M>(d, s), multiplyTarget<M>(d, s));
    case EFFECTS_BLEND_HARD_LIGHT: return select(gt(s, set(T - 1)), screenTarget<M>(d, s), multiplyTarget<M>(d, s));
    case EFFECTS_BLEND_PIN_LIGHT: apply = select(gt(s, set(T)), gt(s, d), gt(d, s)); return s;
    case EFFECTS_BLEND_RED_FROM_INVERTED_SOURCE:
    case EFFECTS_BLEND_GREEN_FROM_INVERTED_SOURCE:
    case EFFECTS_BLEND_BLUE_FROM_INVERTED_SOURCE: return _mm256_sub_epi32(set(M), s);
    default: return s;
  }
}

template <class L, int32_t Mode>
EFFECTS_TARGET_AVX2 inline V addOrSubtract(V d, V q) {
  const V low = set(fullInt<L> == 255 ? 0xFF : 0xFFFF);
  if constexpr (Mode == EFFECTS_BLEND_ADD) {
    return select(gt(q, _mm256_sub_epi32(set(fullInt<L>), d)), set(fullInt<L>), _mm256_and_si256(_mm256_add_epi32(d, q), low));
  } else {
    return _mm256_andnot_si256(gt(q, d), _mm256_and_si256(_mm256_sub_epi32(d, q), low));
  }
}

// Whether a result lies within -32768..32767.
EFFECTS_TARGET_AVX2 inline V fits16(V r) { return eq(_mm256_srai_epi32(_mm256_slli_epi32(r, 16), 16), r); }

template <int32_t Mode, int Channel>
inline constexpr bool touchesElement =
    ((Mode != EFFECTS_BLEND_RED_FROM_SOURCE && Mode != EFFECTS_BLEND_RED_FROM_INVERTED_SOURCE) || Channel == 2) &&
    ((Mode != EFFECTS_BLEND_GREEN_FROM_SOURCE && Mode != EFFECTS_BLEND_GREEN_FROM_INVERTED_SOURCE) || Channel == 1) &&
    ((Mode != EFFECTS_BLEND_BLUE_FROM_SOURCE && Mode != EFFECTS_BLEND_BLUE_FROM_INVERTED_SOURCE) || Channel == 0);

// 8 bits: one element of eight pixels.
template <int32_t Mode, int Channel, bool Narrow>
EFFECTS_TARGET_AVX2 inline V element32(V canvas, V source, __m256 a) {
  const V ff = set(0xFF);
  const V d = _mm256_and_si256(_mm256_srli_epi32(canvas, 8 * Channel), ff);
  if constexpr (!touchesElement<Mode, Channel>) {
    return d;
  } else {
    const V s = _mm256_and_si256(_mm256_srli_epi32(source, 8 * Channel), ff);
    if constexpr (Mode == EFFECTS_BLEND_ADD || Mode == EFFECTS_BLEND_SUBTRACT) {
      return addOrSubtract<Layout32, Mode>(d, _mm256_cvtps_epi32(_mm256_mul_ps(_mm256_cvtepi32_ps(s), a)));
    } else {
      V apply;
      const V t = targetOf<Layout32, Mode>(d, s, apply);
      const __m256 sum =
          _mm256_add_ps(_mm256_cvtepi32_ps(d), _mm256_mul_ps(_mm256_cvtepi32_ps(_mm256_sub_epi32(t, d)), a));
      V r = _mm256_cvtps_epi32(sum);
      if constexpr (!Narrow) r = _mm256_and_si256(r, fits16(r));
      return select(apply, _mm256_and_si256(r, ff), d);
    }
  }
}

// 16 bits: x x a rounded, for two pixels' elements in 32-bit lanes (lanes
// 0-3 and 4-7) with their weights in two vectors of four doubles.
EFFECTS_TARGET_AVX2 inline V times(V x, __m256d a0, __m256d a1) {
  const __m128i lo = _mm256_cvtpd_epi32(_mm256_mul_pd(_mm256_cvtepi32_pd(_mm256_castsi256_si128(x)), a0));
  const __m128i hi = _mm256_cvtpd_epi32(_mm256_mul_pd(_mm256_cvtepi32_pd(_mm256_extracti128_si256(x, 1)), a1));
  return _mm256_inserti128_si256(_mm256_castsi128_si256(lo), hi, 1);
}
// d + diff x a rounded, likewise.
EFFECTS_TARGET_AVX2 inline V moved(V d, V diff, __m256d a0, __m256d a1) {
  const __m128i lo = _mm256_cvtpd_epi32(_mm256_add_pd(_mm256_cvtepi32_pd(_mm256_castsi256_si128(d)),
                                                      _mm256_mul_pd(_mm256_cvtepi32_pd(_mm256_castsi256_si128(diff)), a0)));
  const __m128i hi = _mm256_cvtpd_epi32(_mm256_add_pd(_mm256_cvtepi32_pd(_mm256_extracti128_si256(d, 1)),
                                                      _mm256_mul_pd(_mm256_cvtepi32_pd(_mm256_extracti128_si256(diff, 1)), a1)));
  return _mm256_inserti128_si256(_mm256_castsi128_si256(lo), hi, 1);
}

// 16 bits: two pixels' elements under a mode; a pixel whose source mask is 0
// and the elements the mode does not touch keep their values.
template <int32_t Mode>
EFFECTS_TARGET_AVX2 inline V pixels64(V d, V s, __m256d a0, __m256d a1) {
  V out;
  if constexpr (Mode == EFFECTS_BLEND_ADD || Mode == EFFECTS_BLEND_SUBTRACT) {
    out = addOrSubtract<Layout64, Mode>(d, times(s, a0, a1));
  } else {
    V apply;
    const V t = targetOf<Layout64, Mode>(d, s, apply);
    const V r = moved(d, _mm256_sub_epi32(t, d), a0, a1);
    // The 16 bits of a result within -32768..32767, 0x8000 beyond it.
    out = select(apply, select(fits16(r), _mm256_and_si256(r, set(0xFFFF)), set(0x8000)), d);
  }
  const V keep = _mm256_setr_epi32(!touchesElement<Mode, 0>, !touchesElement<Mode, 1>, !touchesElement<Mode, 2>, 1,
                                   !touchesElement<Mode, 0>, !touchesElement<Mode, 1>, !touchesElement<Mode, 2>, 1);
  const V skip = _mm256_or_si256(_mm256_sub_epi32(_mm256_setzero_si256(), keep),
                                 eq(_mm256_shuffle_epi32(s, _MM_SHUFFLE(3, 3, 3, 3)), _mm256_setzero_si256()));
  return select(skip, d, out);
}

// The low 16 bits of each 32-bit lane, sign-extended (so that the signed
// narrowing keeps them).
EFFECTS_TARGET_AVX2 inline V lowWords(V x) { return _mm256_srai_epi32(_mm256_slli_epi32(x, 16), 16); }

// Float: the target of a mode (0..14) and where it applies, for two pixels'
// elements in single precision, as blend_simd.h has them for one.
template <int32_t Mode>
EFFECTS_TARGET_AVX2 inline __m256 targetOf(__m256 d, __m256 s, __m256& apply) {
  const __m256 one = _mm256_set1_ps(1.0f), half = _mm256_set1_ps(0.5f);
  apply = _mm256_castsi256_ps(_mm256_set1_epi32(-1));
  switch (Mode) {
    case EFFECTS_BLEND_DARKEN: apply = _mm256_cmp_ps(d, s, _CMP_GT_OQ); return s;
    case EFFECTS_BLEND_LIGHTEN: apply = _mm256_cmp_ps(s, d, _CMP_GT_OQ); return s;
    case EFFECTS_BLEND_DIFFERENCE: return _mm256_andnot_ps(_mm256_set1_ps(-0.0f), _mm256_sub_ps(d, s));
    case EFFECTS_BLEND_MULTIPLY: return _mm256_mul_ps(d, s);
    case EFFECTS_BLEND_SCREEN: return _mm256_sub_ps(one, _mm256_mul_ps(_mm256_sub_ps(one, s), _mm256_sub_ps(one, d)));
    case EFFECTS_BLEND_OVERLAY:
    case EFFECTS_BLEND_HARD_LIGHT: {
      const __m256 product = _mm256_mul_ps(d, s);
      const __m256 screen = _mm256_sub_ps(one, _mm256_mul_ps(_mm256_sub_ps(one, s), _mm256_sub_ps(one, d)));
      const __m256 low = _mm256_cmp_ps(Mode == EFFECTS_BLEND_OVERLAY ? d : s, half, _CMP_LT_OQ);
      return _mm256_blendv_ps(screen, product, low);
    }
    case EFFECTS_BLEND_PIN_LIGHT:
      apply = _mm256_blendv_ps(_mm256_cmp_ps(s, d, _CMP_LT_OQ), _mm256_cmp_ps(s, d, _CMP_GT_OQ),
                               _mm256_cmp_ps(s, half, _CMP_GT_OQ));
      return s;
    case EFFECTS_BLEND_RED_FROM_INVERTED_SOURCE:
    case EFFECTS_BLEND_GREEN_FROM_INVERTED_SOURCE:
    case EFFECTS_BLEND_BLUE_FROM_INVERTED_SOURCE: return _mm256_sub_ps(one, s);
    default: return s;
  }
}

// float(double(d) + double(x) x a) for one pixel's four floats (with
// Subtract, minus), a in all four lanes.
template <bool Subtract>
EFFECTS_TARGET_AVX2 inline __m128 moved(__m128 d, __m128 x, __m256d a) {
  const __m256d w = _mm256_mul_pd(_mm256_cvtps_pd(x), a), base = _mm256_cvtps_pd(d);
  return _mm256_cvtpd_ps(Subtract ? _mm256_sub_pd(base, w) : _mm256_add_pd(base, w));
}

// The four 32-bit lanes of a pixel whose four double lanes hold one mask.
EFFECTS_TARGET_AVX2 inline __m128 lanesOf(__m256d mask) { return _mm_castpd_ps(_mm256_castpd256_pd128(mask)); }

}  // namespace detail

// 8 bits, eight pixels a step.
template <int32_t Mode, bool Narrow>
EFFECTS_TARGET_AVX2 inline size_t row(Pixel32* canvas, const Pixel32* source, size_t n, float k) {
  using namespace detail;
  const __m256 kk = _mm256_set1_ps(k);
  const V masks = set(static_cast<int32_t>(0xFF000000u));
  size_t i = 0;
  for (; i + 8 <= n; i += 8) {
    if ((i & 15) == 0) simd::prefetchAhead(canvas + i), simd::prefetchAhead(source + i);
    const V c = _mm256_loadu_si256(reinterpret_cast<const V*>(canvas + i));
    const V s = _mm256_loadu_si256(reinterpret_cast<const V*>(source + i));
    const V m = _mm256_srli_epi32(s, 24);
    const __m256 a = _mm256_mul_ps(_mm256_cvtepi32_ps(m), kk);
    V out = _mm256_and_si256(c, masks);
    out = _mm256_or_si256(out, element32<Mode, 0, Narrow>(c, s, a));
    out = _mm256_or_si256(out, _mm256_slli_epi32(element32<Mode, 1, Narrow>(c, s, a), 8));
    out = _mm256_or_si256(out, _mm256_slli_epi32(element32<Mode, 2, Narrow>(c, s, a), 16));
    _mm256_storeu_si256(reinterpret_cast<V*>(canvas + i), select(eq(m, _mm256_setzero_si256()), c, out));
  }
  return i;
}

// 16 bits, four pixels a step, the weights m x k in double precision.
template <int32_t Mode>
EFFECTS_TARGET_AVX2 inline size_t row(Pixel64* canvas, const Pixel64* source, size_t n, double k) {
  using namespace detail;
  const __m256d kk = _mm256_set1_pd(k);
  size_t i = 0;
  for (; i + 4 <= n; i += 4) {
    if ((i & 7) == 0) simd::prefetchAhead(canvas + i), simd::prefetchAhead(source + i);
    const V c = _mm256_loadu_si256(reinterpret_cast<const V*>(canvas + i));
    const V s = _mm256_loadu_si256(reinterpret_cast<const V*>(source + i));
    // Pixels 0, 1 and 2, 3 widened to 32-bit lanes.
    const V c01 = _mm256_cvtepu16_epi32(_mm256_castsi256_si128(c)), c23 = _mm256_cvtepu16_epi32(_mm256_extracti128_si256(c, 1));
    const V s01 = _mm256_cvtepu16_epi32(_mm256_castsi256_si128(s)), s23 = _mm256_cvtepu16_epi32(_mm256_extracti128_si256(s, 1));
    // The four source masks, their weights, each spread over its pixel's lanes.
    const V maskLanes = _mm256_setr_epi32(3, 7, 3, 7, 3, 7, 3, 7);
    const __m128i m = _mm_unpacklo_epi64(_mm256_castsi256_si128(_mm256_permutevar8x32_epi32(s01, maskLanes)),
                                         _mm256_castsi256_si128(_mm256_permutevar8x32_epi32(s23, maskLanes)));
    const __m256d a = _mm256_mul_pd(_mm256_cvtepi32_pd(m), kk);
    const __m256d a0 = _mm256_permute4x64_pd(a, 0x00), a1 = _mm256_permute4x64_pd(a, 0x55),
                  a2 = _mm256_permute4x64_pd(a, 0xAA), a3 = _mm256_permute4x64_pd(a, 0xFF);
    const V r01 = pixels64<Mode>(c01, s01, a0, a1), r23 = pixels64<Mode>(c23, s23, a2, a3);
    // Back to words, the canvas masks as they were.
    const V packed = _mm256_permute4x64_epi64(_mm256_packs_epi32(lowWords(r01), lowWords(r23)), _MM_SHUFFLE(3, 1, 2, 0));
    const V masks = _mm256_setr_epi16(0, 0, 0, -1, 0, 0, 0, -1, 0, 0, 0, -1, 0, 0, 0, -1);
    _mm256_storeu_si256(reinterpret_cast<V*>(canvas + i), select(masks, c, packed));
  }
  return i;
}

// Float, two pixels a step, each pixel's four elements in packed double for
// d + (t - d) x a. The skip and the mode 0 shortcut are decided per pixel
// from its mask, as blend::blendPixel decides them: a mask not above 0 (mode
// 0) or equal to 0 (the others, so NaN blends) leaves the pixel alone, and in
// mode 0 k + m = 2.0 exactly copies the source colour.
template <int32_t Mode>
EFFECTS_TARGET_AVX2 inline size_t row(Pixel128* canvas, const Pixel128* source, size_t n, double k) {
  using namespace detail;
  constexpr bool b = touchesElement<Mode, 0>, g = touchesElement<Mode, 1>, r = touchesElement<Mode, 2>;
  const __m256 lanes = _mm256_castsi256_ps(
      _mm256_setr_epi32(b ? -1 : 0, g ? -1 : 0, r ? -1 : 0, 0, b ? -1 : 0, g ? -1 : 0, r ? -1 : 0, 0));
  const __m256d kk = _mm256_set1_pd(k), two = _mm256_set1_pd(2.0);
  const __m256 zero = _mm256_setzero_ps();
  size_t i = 0;
  for (; i + 2 <= n; i += 2) {
    if ((i & 3) == 0) simd::prefetchAhead(canvas + i), simd::prefetchAhead(source + i);
    const __m256 d = _mm256_loadu_ps(&canvas[i].blue), s = _mm256_loadu_ps(&source[i].blue);
    const __m256 m = _mm256_permute_ps(s, _MM_SHUFFLE(3, 3, 3, 3));  // each pixel's mask in its half
    const __m256 use = Mode == EFFECTS_BLEND_NORMAL ? _mm256_cmp_ps(m, zero, _CMP_GT_OQ) : _mm256_cmp_ps(m, zero, _CMP_NEQ_UQ);
    const __m256d m0 = _mm256_cvtps_pd(_mm256_castps256_ps128(m)), m1 = _mm256_cvtps_pd(_mm256_extractf128_ps(m, 1));
    const __m256d a0 = _mm256_mul_pd(m0, kk), a1 = _mm256_mul_pd(m1, kk);
    __m256 out, apply = _mm256_and_ps(lanes, use);
    if constexpr (Mode == EFFECTS_BLEND_ADD || Mode == EFFECTS_BLEND_SUBTRACT) {
      constexpr bool sub = Mode == EFFECTS_BLEND_SUBTRACT;
      out = _mm256_set_m128(moved<sub>(_mm256_extractf128_ps(d, 1), _mm256_extractf128_ps(s, 1), a1),
                            moved<sub>(_mm256_castps256_ps128(d), _mm256_castps256_ps128(s), a0));
    } else {
      __m256 where;
      const __m256 diff = _mm256_sub_ps(targetOf<Mode>(d, s, where), d);
      out = _mm256_set_m128(moved<false>(_mm256_extractf128_ps(d, 1), _mm256_extractf128_ps(diff, 1), a1),
                            moved<false>(_mm256_castps256_ps128(d), _mm256_castps256_ps128(diff), a0));
      apply = _mm256_and_ps(apply, where);
      if constexpr (Mode == EFFECTS_BLEND_NORMAL) {
        const __m256 copy = _mm256_set_m128(lanesOf(_mm256_cmp_pd(_mm256_add_pd(kk, m1), two, _CMP_EQ_OQ)),
                                            lanesOf(_mm256_cmp_pd(_mm256_add_pd(kk, m0), two, _CMP_EQ_OQ)));
        out = _mm256_blendv_ps(out, s, copy);
      }
    }
    _mm256_storeu_ps(&canvas[i].blue, _mm256_blendv_ps(d, out, apply));
  }
  return i;
}

#endif

}  // namespace effects::blend::avx2
