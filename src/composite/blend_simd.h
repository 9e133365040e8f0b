// SSE2 form of the 8-bit layer composite's per-pixel step: a row of canvas
// pixels blended toward a row of source pixels under one mode, four pixels a
// step. It works on whole vectors from the start of the row and returns how
// many pixels it did; blend::blendPixel (blend.h) does the rest, and the
// tests hold this form and the AVX2 ones (blend_avx2.h) to it.
//
// The canvas and source 4 KiB ahead are asked for once a cache line: with
// two streams read and one written the processor's own prefetching falls
// behind (the 16-bit rows took a quarter longer without).
//
// Every element is worked in a 32-bit lane: the mode's target and the
// condition under which the mode moves the element in integers, exactly as
// blend.h states them (the divisions by the full value included), then
// d + (t - d) x a in packed single precision, rounded by the conversion
// instruction the plain form uses, and the low byte of a result within the
// 16-bit range kept (0 beyond it), as roundLowByte does.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "composite/blend.h"
#include "composite/blend_avx2.h"
#include "core/cpu.h"
#include "core/simd.h"

namespace effects::blend::sse2 {

#if defined(__SSE2__)

namespace detail {

inline __m128i set(int32_t v) { return _mm_set1_epi32(v); }
inline __m128i gt(__m128i a, __m128i b) { return _mm_cmpgt_epi32(a, b); }
inline __m128i eq(__m128i a, __m128i b) { return _mm_cmpeq_epi32(a, b); }

// The integer targets of modes 4 and 5 for elements 0..65535: s div M is 0,
// 1 or (16 bits only, at 65534 and 65535) 2; (M - s) div M is 1 at s = 0,
// -1 at 65534 and 65535 (16 bits only) and 0 otherwise.
template <int32_t M>
inline __m128i multiplyTarget(__m128i d, __m128i s) {
  if constexpr (M == 255) {
    return _mm_and_si128(eq(s, set(255)), d);
  } else {
    const __m128i once = _mm_and_si128(gt(s, set(M - 1)), d);
    return _mm_add_epi32(once, _mm_and_si128(gt(s, set(2 * M - 1)), d));
  }
}
template <int32_t M>
inline __m128i screenTarget(__m128i d, __m128i s) {
  const __m128i t = simd::select(eq(s, _mm_setzero_si128()), d, set(M));
  if constexpr (M == 255) return t;
  else return simd::select(gt(s, set(2 * M - 1)), _mm_sub_epi32(set(2 * M), d), t);
}

// Whether a mode changes element `Channel` (0 blue, 1 green, 2 red).
template <int32_t Mode, int Channel>
inline constexpr bool touchesElement =
    ((Mode != EFFECTS_BLEND_RED_FROM_SOURCE && Mode != EFFECTS_BLEND_RED_FROM_INVERTED_SOURCE) || Channel == 2) &&
    ((Mode != EFFECTS_BLEND_GREEN_FROM_SOURCE && Mode != EFFECTS_BLEND_GREEN_FROM_INVERTED_SOURCE) || Channel == 1) &&
    ((Mode != EFFECTS_BLEND_BLUE_FROM_SOURCE && Mode != EFFECTS_BLEND_BLUE_FROM_INVERTED_SOURCE) || Channel == 0);

// The target of a mode (0..14) and where it applies (all ones: everywhere).
template <class L, int32_t Mode>
inline __m128i targetOf(__m128i d, __m128i s, __m128i& apply) {
  constexpr int32_t M = fullInt<L>, T = kThreshold<L>;
  apply = set(-1);
  switch (Mode) {
    case EFFECTS_BLEND_DARKEN: apply = gt(d, s); return s;
    case EFFECTS_BLEND_LIGHTEN: apply = gt(s, d); return s;
    case EFFECTS_BLEND_DIFFERENCE: {
      const __m128i x = _mm_sub_epi32(d, s), sign = _mm_srai_epi32(x, 31);
      return _mm_sub_epi32(_mm_xor_si128(x, sign), sign);
    }
    case EFFECTS_BLEND_MULTIPLY: return multiplyTarget<M>(d, s);
    case EFFECTS_BLEND_SCREEN: return screenTarget<M>(d, s);
    case EFFECTS_BLEND_OVERLAY: return simd::select(gt(d, set(T - 1)), screenTarget<M>(d, s), multiplyTarget<M>(d, s));
    case EFFECTS_BLEND_HARD_LIGHT:
      return simd::select(gt(s, set(T - 1)), screenTarget<M>(d, s), multiplyTarget<M>(d, s));
    case EFFECTS_BLEND_PIN_LIGHT: apply = simd::select(gt(s, set(T)), gt(s, d), gt(d, s)); return s;
    case EFFECTS_BLEND_RED_FROM_INVERTED_SOURCE:
    case EFFECTS_BLEND_GREEN_FROM_INVERTED_SOURCE:
    case EFFECTS_BLEND_BLUE_FROM_INVERTED_SOURCE: return _mm_sub_epi32(set(M), s);
    default: return s;  // normal and the three copies from the source
  }
}

// The low byte of a rounded result within -32768..32767, 0 beyond it (the
// low byte of -32768). With Narrow the caller knows every result is within.
template <bool Narrow>
inline __m128i lowByte(__m128i r) {
  if constexpr (Narrow) return _mm_and_si128(r, set(0xFF));
  const __m128i fits = eq(_mm_srai_epi32(_mm_slli_epi32(r, 16), 16), r);
  return _mm_and_si128(_mm_and_si128(r, fits), set(0xFF));
}

// Modes 15 and 16: round(s x a) added and limited to M, or subtracted and
// limited to 0; the bound is decided on the true sum, the low bits kept.
template <class L, int32_t Mode>
inline __m128i addOrSubtract(__m128i d, __m128i q) {
  const __m128i low = set(fullInt<L> == 255 ? 0xFF : 0xFFFF);
  if constexpr (Mode == EFFECTS_BLEND_ADD) {
    return simd::select(gt(q, _mm_sub_epi32(set(fullInt<L>), d)), set(fullInt<L>), _mm_and_si128(_mm_add_epi32(d, q), low));
  } else {
    return _mm_andnot_si128(gt(q, d), _mm_and_si128(_mm_sub_epi32(d, q), low));
  }
}

// 8 bits: one element of four pixels.
template <int32_t Mode, int Channel, bool Narrow>
inline __m128i element32(__m128i canvas, __m128i source, __m128 a) {
  const __m128i ff = set(0xFF);
  const __m128i d = _mm_and_si128(_mm_srli_epi32(canvas, 8 * Channel), ff);
  if constexpr (!touchesElement<Mode, Channel>) {
    return d;
  } else {
    const __m128i s = _mm_and_si128(_mm_srli_epi32(source, 8 * Channel), ff);
    if constexpr (Mode == EFFECTS_BLEND_ADD || Mode == EFFECTS_BLEND_SUBTRACT) {
      return addOrSubtract<Layout32, Mode>(d, _mm_cvtps_epi32(_mm_mul_ps(_mm_cvtepi32_ps(s), a)));
    } else {
      __m128i apply;
      const __m128i t = targetOf<Layout32, Mode>(d, s, apply);
      const __m128 sum = _mm_add_ps(_mm_cvtepi32_ps(d), _mm_mul_ps(_mm_cvtepi32_ps(_mm_sub_epi32(t, d)), a));
      return simd::select(apply, lowByte<Narrow>(_mm_cvtps_epi32(sum)), d);
    }
  }
}

}  // namespace detail

// 8 bits, four pixels a step; a pixel whose source mask is 0 is left as it
// is, and the canvas mask never changes.
template <int32_t Mode, bool Narrow>
inline size_t row(Pixel32* canvas, const Pixel32* source, size_t n, float k) {
  using namespace detail;
  const __m128 kk = _mm_set1_ps(k);
  const __m128i masks = simd::maskLanes(canvas);
  size_t i = 0;
  for (; i + 4 <= n; i += 4) {
    if ((i & 15) == 0) simd::prefetchAhead(canvas + i), simd::prefetchAhead(source + i);
    const __m128i c = simd::load(canvas + i), s = simd::load(source + i);
    const __m128i m = _mm_srli_epi32(s, 24);
    const __m128 a = _mm_mul_ps(_mm_cvtepi32_ps(m), kk);
    __m128i out = _mm_and_si128(c, masks);
    out = _mm_or_si128(out, element32<Mode, 0, Narrow>(c, s, a));
    out = _mm_or_si128(out, _mm_slli_epi32(element32<Mode, 1, Narrow>(c, s, a), 8));
    out = _mm_or_si128(out, _mm_slli_epi32(element32<Mode, 2, Narrow>(c, s, a), 16));
    simd::store(canvas + i, simd::select(eq(m, _mm_setzero_si128()), c, out));
  }
  return i;
}

namespace detail {

inline __m128 ones() { return _mm_castsi128_ps(_mm_set1_epi32(-1)); }

// Float: the target of a mode (0..14) and where it applies, for the four
// elements of one pixel, in single precision as blend.h states them.
template <int32_t Mode>
inline __m128 targetOf(__m128 d, __m128 s, __m128& apply) {
  const __m128 one = _mm_set1_ps(1.0f), half = _mm_set1_ps(0.5f);
  const __m128 product = _mm_mul_ps(d, s);
  const __m128 screen = _mm_sub_ps(one, _mm_mul_ps(_mm_sub_ps(one, s), _mm_sub_ps(one, d)));
  apply = ones();
  switch (Mode) {
    case EFFECTS_BLEND_DARKEN: apply = _mm_cmpgt_ps(d, s); return s;
    case EFFECTS_BLEND_LIGHTEN: apply = _mm_cmpgt_ps(s, d); return s;
    case EFFECTS_BLEND_DIFFERENCE: return _mm_andnot_ps(_mm_set1_ps(-0.0f), _mm_sub_ps(d, s));
    case EFFECTS_BLEND_MULTIPLY: return product;
    case EFFECTS_BLEND_SCREEN: return screen;
    case EFFECTS_BLEND_OVERLAY: return simd::select(_mm_cmplt_ps(d, half), product, screen);
    case EFFECTS_BLEND_HARD_LIGHT: return simd::select(_mm_cmplt_ps(s, half), product, screen);
    case EFFECTS_BLEND_PIN_LIGHT:
      apply = simd::select(_mm_cmpgt_ps(s, half), _mm_cmpgt_ps(s, d), _mm_cmplt_ps(s, d));
      return s;
    case EFFECTS_BLEND_RED_FROM_INVERTED_SOURCE:
    case EFFECTS_BLEND_GREEN_FROM_INVERTED_SOURCE:
    case EFFECTS_BLEND_BLUE_FROM_INVERTED_SOURCE: return _mm_sub_ps(one, s);
    default: return s;
  }
}

// float(double(d) + double(x) x a) for four floats, a in both lanes; with
// Subtract, float(double(d) - double(x) x a).
template <bool Subtract = false>
inline __m128 moved(__m128 d, __m128 x, __m128d a) {
  auto half = [&](__m128 dd, __m128 xx) {
    const __m128d w = _mm_mul_pd(_mm_cvtps_pd(xx), a), base = _mm_cvtps_pd(dd);
    return _mm_cvtpd_ps(Subtract ? _mm_sub_pd(base, w) : _mm_add_pd(base, w));
  };
  return _mm_movelh_ps(half(d, x), half(_mm_movehl_ps(d, d), _mm_movehl_ps(x, x)));
}

}  // namespace detail

// Float, one pixel a step in four lanes (the mask lane is computed and
// thrown away); the skip and the mode 0 shortcut are decided per pixel, as
// blend::blendPixel decides them.
template <int32_t Mode>
inline size_t row(Pixel128* canvas, const Pixel128* source, size_t n, double k) {
  using namespace detail;
  constexpr bool b = touchesElement<Mode, 0>, g = touchesElement<Mode, 1>, r = touchesElement<Mode, 2>;
  const __m128 lanes = _mm_castsi128_ps(_mm_setr_epi32(b ? -1 : 0, g ? -1 : 0, r ? -1 : 0, 0));
  for (size_t i = 0; i < n; ++i) {
    const float m = source[i].mask;
    if constexpr (Mode == EFFECTS_BLEND_NORMAL) {
      if (!(m > 0.0f)) continue;
      if (k + static_cast<double>(m) == 2.0) {
        canvas[i].blue = source[i].blue, canvas[i].green = source[i].green, canvas[i].red = source[i].red;
        continue;
      }
    } else {
      if (m == 0) continue;
    }
    const __m128d a = _mm_set1_pd(static_cast<double>(m) * k);
    const __m128 d = simd::loadf(canvas + i), s = simd::loadf(source + i);
    __m128 out, apply = lanes;
    if constexpr (Mode == EFFECTS_BLEND_ADD || Mode == EFFECTS_BLEND_SUBTRACT) {
      out = moved<Mode == EFFECTS_BLEND_SUBTRACT>(d, s, a);
    } else {
      __m128 where;
      const __m128 t = targetOf<Mode>(d, s, where);
      out = moved(d, _mm_sub_ps(t, d), a);
      apply = _mm_and_ps(apply, where);
    }
    simd::storef(canvas + i, simd::select(apply, out, d));
  }
  return n;
}

#endif

// Modes 9 to 14, which change one element of a pixel.
template <int32_t Mode>
inline constexpr bool oneElement = Mode >= EFFECTS_BLEND_RED_FROM_SOURCE && Mode <= EFFECTS_BLEND_BLUE_FROM_INVERTED_SOURCE;

// Whether every d + (t - d) x a of the 8-bit modes stays within 16 bits:
// |t - d| <= 255, so |k| x 255 x 255 + 255 <= 32767 is enough.
inline bool narrow(const Weight<Layout32>& w) { return w.k <= 0.5f && w.k >= -0.5f; }

// The vector form over the whole vectors of a row, the plain form on the
// rest: AVX2 where the processor has it, else SSE2 for 8 bits; 16 bits in
// AVX2 only (two doubles a step are no faster than the plain form); float in
// AVX2 two pixels a step, else (and for the last odd pixel) SSE2, a pixel a
// step, without the plain form's branches per element. The
// modes that change one element take the plain form in 16 bits and float.
template <class L, int32_t Mode>
inline void blendRow(typename L::Pixel* canvas, const typename L::Pixel* source, size_t n, const Weight<L>& w) {
  size_t i = 0;
  if constexpr (std::is_same_v<L, Layout32>) {
    const bool within = narrow(w);
#if EFFECTS_WIDE
    if (cpu::avx2()) {
      i = within ? avx2::row<Mode, true>(canvas, source, n, w.k) : avx2::row<Mode, false>(canvas, source, n, w.k);
    } else
#endif
    {
#if defined(__SSE2__)
      i = within ? row<Mode, true>(canvas, source, n, w.k) : row<Mode, false>(canvas, source, n, w.k);
#endif
    }
  } else if constexpr (oneElement<Mode>) {
    // The modes that change one element are faster in the plain form.
  } else if constexpr (std::is_same_v<L, Layout64>) {
#if EFFECTS_WIDE
    if (cpu::avx2()) i = avx2::row<Mode>(canvas, source, n, w.k);
#endif
  } else if constexpr (std::is_same_v<L, Layout128>) {
#if EFFECTS_WIDE
    if (cpu::avx2()) i = avx2::row<Mode>(canvas, source, n, w.k);
#endif
#if defined(__SSE2__)
    i += row<Mode>(canvas + i, source + i, n - i, w.k);
#endif
  }
  for (; i < n; ++i) blendPixel<L, Mode>(canvas[i], source[i], w);
}

}  // namespace effects::blend::sse2
