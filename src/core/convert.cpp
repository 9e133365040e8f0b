// Conversions between the three pixel layouts and to and from the 3-channel
// buffers of the file codecs. Each export is one pass (the black-point lock
// needs two). Several conversions are deliberately uneven: 8 -> 16 bit is a
// shift that never reaches 32767, float -> 8 bit saturates above 254/255, and
// the 48-bit import rescales blue alone. Hosts compare the results byte for
// byte, so these stay as they are.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "core/convert_simd.h"
#include "core/cpu.h"
#include "core/fpenv.h"
#include "core/layout.h"
#include "core/numeric.h"
#include "core/picture.h"
#include "core/pow.h"
#include "core/rgbe.h"
#include "core/simd.h"

namespace effects {
namespace {

// 16 -> 8 bit keeps the top eight of the fifteen bits. A value above 32767
// (outside the layout) keeps the low byte of its shift.
inline uint8_t narrow16to8(uint16_t x) { return static_cast<uint8_t>(x >> 7); }

// 8 -> 16 bit is (x * 256) >> 1: 255 becomes 32640, never 32767.
inline uint16_t widen8to16(uint8_t x) { return static_cast<uint16_t>(x * 128u); }

inline float widen8toFloat(uint8_t x) { return static_cast<float>(x * 0.00392156862745098); }

// The element is read as signed, so a stored value above 32767 gives a
// negative float.
inline float widen16toFloat(uint16_t x) {
  return static_cast<float>(static_cast<int16_t>(x) * 3.051850947599719e-5);
}

// Truncation toward zero (not rounding) into a 32-bit integer, then the
// clamp: 0.99999 gives 32766. A product beyond the 32-bit range (a float
// above about 65538) truncates to the most negative integer, as the
// processor's conversion does, and so clamps to 0, as does NaN. Hosts compare
// against pictures made that way, so very bright HDR values stay black here.
inline uint16_t narrowFloatTo16(float x) {
  return static_cast<uint16_t>(clampTo<int32_t>(truncToInt32(x * 32767.0), 0, 32767));
}

// x * 32767 clamped to the layout's range, then rounded to nearest even. NaN
// gives 0.
inline uint16_t quantizeTo15(float x) {
  const double v = x * 32767.0;
  if (!(v > 0.0)) return 0;
  return roundLowWord(v > 32767.0 ? 32767.0 : v);
}

// 1/2.2: the display gamma of the HDR imports, raised in double precision.
constexpr double kInverseGamma = 0.45454545454545453;

// Blue of the 48-bit import: the signed word scaled from 0..65535 onto
// 0..32767, then only the low eight bits of its rounding are kept.
inline uint16_t importBlue48(uint16_t word) {
  const double v = static_cast<int16_t>(word) * 1.5259021896696422e-5 * 32767.0;
  if (v > 32767.0) return 32767;
  if (v < 1.0) return 0;
  return roundLowByte(v);
}

// ------------------------------------------------------------ vector forms

// Whole vectors of the conversions that are not already as fast as a copy:
// each returns the pixels it did, and the plain per-pixel form does the rest.
#if defined(__SSE2__)

// Q8 of every element of four float pixels, minus `black` from the colour
// elements (0 for the plain conversion).
size_t quantizeVectors(Pixel32* dst, const Pixel128* src, size_t n, float black) {
  const __m128 shift = _mm_setr_ps(black, black, black, 0.0f);
  size_t i = 0;
  for (; i + 4 <= n; i += 4) {
    auto one = [&](size_t k) { return convert::q8(_mm_sub_ps(simd::loadf(src + i + k), shift)); };
    const __m128i lo = _mm_packs_epi32(one(0), one(1)), hi = _mm_packs_epi32(one(2), one(3));
    simd::store(dst + i, _mm_packus_epi16(lo, hi));
  }
  return i;
}

// x * 32767 in double, truncated, clamped to 0..32767: the truncation gives
// the most negative integer beyond 32 bits and for NaN, the signed
// narrowing and the maximum with 0 do the clamp.
size_t narrowVectors(Pixel64* dst, const Pixel128* src, size_t n) {
  const __m128d k = _mm_set1_pd(32767.0);
  size_t i = 0;
  for (; i + 2 <= n; i += 2) {
    auto one = [&](size_t p) {
      const __m128 x = simd::loadf(src + i + p);
      const __m128i lo = _mm_cvttpd_epi32(_mm_mul_pd(_mm_cvtps_pd(x), k));
      const __m128i hi = _mm_cvttpd_epi32(_mm_mul_pd(_mm_cvtps_pd(_mm_movehl_ps(x, x)), k));
      return _mm_unpacklo_epi64(lo, hi);
    };
    simd::store(dst + i, _mm_max_epi16(_mm_packs_epi32(one(0), one(1)), _mm_setzero_si128()));
  }
  return i;
}

// The smallest of 0 and every colour element: a NaN never wins (the minimum
// instruction keeps its second operand then), and neither does -0 against 0.
// Four running minima, so that no minimum waits for the one before: the
// smallest value is the same whichever way the elements are grouped (and a
// zero result is +0 from the start value, as in one chain).
float darkest(const Pixel128* src, size_t n) {
  __m128 m[4] = {_mm_setzero_ps(), _mm_setzero_ps(), _mm_setzero_ps(), _mm_setzero_ps()};
  const __m128 colour = _mm_castsi128_ps(_mm_setr_epi32(-1, -1, -1, 0));
  size_t i = 0;
  for (; i + 4 <= n; i += 4)
    for (size_t k = 0; k < 4; ++k) m[k] = _mm_min_ps(_mm_and_ps(simd::loadf(src + i + k), colour), m[k]);
  for (; i < n; ++i) m[0] = _mm_min_ps(_mm_and_ps(simd::loadf(src + i), colour), m[0]);
  float black = 0.0f;
  for (const __m128 v : m) {
    alignas(16) float lanes[4];
    _mm_store_ps(lanes, v);
    for (float x : lanes)
      if (x < black) black = x;
  }
  return black;
}

// quantizeTo15 of four floats, as 32-bit lanes: x * 32767 in double, at most
// 32767 (the minimum keeps a NaN, its second operand), rounded to nearest
// even, at least 0 (a NaN and anything far below 0 convert to the most
// negative integer).
__m128i quantize15(__m128 x) {
  const __m128d k = _mm_set1_pd(32767.0), top = _mm_set1_pd(32767.0);
  const __m128i lo = _mm_cvtpd_epi32(_mm_min_pd(top, _mm_mul_pd(_mm_cvtps_pd(x), k)));
  const __m128i hi = _mm_cvtpd_epi32(_mm_min_pd(top, _mm_mul_pd(_mm_cvtps_pd(_mm_movehl_ps(x, x)), k)));
  const __m128i v = _mm_unpacklo_epi64(lo, hi);
  return _mm_andnot_si128(_mm_srai_epi32(v, 31), v);
}

// Four blue, green, red float triples a step into 16-bit pixels with the
// mask 32767. The twelve quantised words, in source order, are dealt out
// three to a pixel.
size_t bgrTo64Vectors(Pixel64* dst, const float* bgr, size_t n) {
  size_t i = 0;
  for (; i + 4 <= n; i += 4) {
    const float* f = bgr + 3 * i;
    const __m128i w1 = _mm_packs_epi32(quantize15(_mm_loadu_ps(f)), quantize15(_mm_loadu_ps(f + 4)));
    const __m128i w2 = _mm_packs_epi32(quantize15(_mm_loadu_ps(f + 8)), _mm_setzero_si128());
    const auto masked = [](__m128i v) { return _mm_insert_epi16(v, 32767, 3); };
    const __m128i p0 = masked(w1), p1 = masked(_mm_srli_si128(w1, 6));
    const __m128i p2 = masked(_mm_insert_epi16(_mm_srli_si128(w1, 12), _mm_extract_epi16(w2, 0), 2));
    const __m128i p3 = masked(_mm_srli_si128(w2, 2));
    simd::store(dst + i, _mm_unpacklo_epi64(p0, p1));
    simd::store(dst + i + 2, _mm_unpacklo_epi64(p2, p3));
  }
  return i;
}

// importBlue48 of the blue words of two pixels (words 0 and 4, as laid out
// by the caller), in 32-bit lanes 0 and 1.
__m128i blues48(__m128i pixels) {
  const __m128i signedWords = _mm_srai_epi32(_mm_slli_epi32(pixels, 16), 16);
  const __m128d v = _mm_mul_pd(_mm_mul_pd(_mm_cvtepi32_pd(_mm_shuffle_epi32(signedWords, _MM_SHUFFLE(3, 1, 2, 0))),
                                          _mm_set1_pd(1.5259021896696422e-5)),
                               _mm_set1_pd(32767.0));
  const __m128i rounded = _mm_and_si128(_mm_cvtpd_epi32(v), _mm_set1_epi32(0xFF));
  const auto lanes = [](__m128d mask) { return _mm_shuffle_epi32(_mm_castpd_si128(mask), _MM_SHUFFLE(3, 3, 2, 0)); };
  const __m128i above = lanes(_mm_cmpgt_pd(v, _mm_set1_pd(32767.0))), below = lanes(_mm_cmplt_pd(v, _mm_set1_pd(1.0)));
  return _mm_andnot_si128(below, simd::select(above, _mm_set1_epi32(32767), rounded));
}

// Four red, green, blue word triples a step into 16-bit pixels: each triple
// turned to blue, green, red in a pixel's first three words, blue rescaled,
// the destination's masks kept. The last triple is read with an 8-byte load,
// so nothing past the four triples is touched.
size_t rgb48Vectors(Pixel64* dst, const uint16_t* rgb, size_t n) {
  const __m128i masks = simd::maskLanes(dst), firstWords = _mm_setr_epi16(-1, 0, 0, 0, -1, 0, 0, 0);
  size_t i = 0;
  for (; i + 4 <= n; i += 4) {
    const uint16_t* w = rgb + 3 * i;
    const __m128i a = simd::load(w);                                               // r0 g0 b0 r1 g1 b1 r2 g2
    const __m128i b = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(w + 8));  // b2 r3 g3 b3
    const auto turned = [](__m128i v) { return _mm_shufflelo_epi16(v, _MM_SHUFFLE(3, 0, 1, 2)); };
    const __m128i p0 = turned(a), p1 = turned(_mm_srli_si128(a, 6));
    const __m128i p2 = turned(_mm_insert_epi16(_mm_srli_si128(a, 12), _mm_extract_epi16(b, 0), 2));
    const __m128i p3 = turned(_mm_srli_si128(b, 2));
    const auto finish = [&](__m128i pair, Pixel64* out) {
      const __m128i blue = blues48(pair);  // lanes 0, 1: the two pixels' new blue
      const __m128i spread = _mm_shuffle_epi32(blue, _MM_SHUFFLE(3, 1, 2, 0));  // to words 0 and 4
      const __m128i colour = simd::select(firstWords, spread, pair);
      simd::store(out, simd::select(masks, simd::load(out), colour));
    };
    finish(_mm_unpacklo_epi64(p0, p1), dst + i);
    finish(_mm_unpacklo_epi64(p2, p3), dst + i + 2);
  }
  return i;
}

#else

size_t bgrTo64Vectors(Pixel64*, const float*, size_t) { return 0; }
size_t rgb48Vectors(Pixel64*, const uint16_t*, size_t) { return 0; }
size_t quantizeVectors(Pixel32*, const Pixel128*, size_t, float) { return 0; }
size_t narrowVectors(Pixel64*, const Pixel128*, size_t) { return 0; }
float darkest(const Pixel128* src, size_t n) {
  float black = 0.0f;
  for (size_t i = 0; i < n; ++i) {
    const Pixel128& p = src[i];
    if (p.blue < black) black = p.blue;
    if (p.green < black) black = p.green;
    if (p.red < black) black = p.red;
  }
  return black;
}

#endif

#if EFFECTS_WIDE
// Eight 8-bit pixels a step into red, green, blue byte triples (AVX2): the
// bytes reordered within each half, the two halves' twelve bytes then put
// side by side and stored as 24 bytes.
EFFECTS_TARGET_AVX2 size_t toRgb24Avx2(uint8_t* rgb, const Pixel32* px, size_t n) {
  const __m256i order = _mm256_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1,
                                         2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1);
  const __m256i together = _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7);
  size_t i = 0;
  for (; i + 8 <= n; i += 8) {
    const __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(px + i));
    const __m256i t = _mm256_permutevar8x32_epi32(_mm256_shuffle_epi8(v, order), together);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(rgb + 3 * i), _mm256_castsi256_si128(t));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(rgb + 3 * i + 16), _mm256_extracti128_si256(t, 1));
  }
  return i;
}

// Four red, green, blue word triples a step into 16-bit pixels (AVX2): two
// pixels' triples in each 16-byte half, turned into place by a byte shuffle;
// the four blues rescaled in double as blues48 does; the destination's masks
// kept. The upper half is loaded from the third triple on, so its last four
// bytes belong to the next pixel: the loop stops while one more follows.
EFFECTS_TARGET_AVX2 size_t rgb48Avx2(Pixel64* dst, const uint16_t* rgb, size_t n) {
  const __m256i turn = _mm256_setr_epi8(4, 5, 2, 3, 0, 1, -1, -1, 10, 11, 8, 9, 6, 7, -1, -1,
                                        4, 5, 2, 3, 0, 1, -1, -1, 10, 11, 8, 9, 6, 7, -1, -1);
  const __m256i firstLanes = _mm256_setr_epi32(0, 2, 4, 6, 0, 2, 4, 6);
  const __m256i notBlue = _mm256_set1_epi64x(static_cast<int64_t>(0xFFFFFFFFFFFF0000ull));
  const __m256d scale = _mm256_set1_pd(1.5259021896696422e-5), full = _mm256_set1_pd(32767.0), one = _mm256_set1_pd(1.0);
  size_t i = 0;
  for (; i + 5 <= n; i += 4) {
    const uint16_t* w = rgb + 3 * i;
    const __m256i t = _mm256_shuffle_epi8(
        _mm256_inserti128_si256(_mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(w))),
                                _mm_loadu_si128(reinterpret_cast<const __m128i*>(w + 6)), 1),
        turn);
    // The blue words (word 0 of each pixel), signed, in four 32-bit lanes.
    const __m128i blue = _mm256_castsi256_si128(
        _mm256_permutevar8x32_epi32(_mm256_srai_epi32(_mm256_slli_epi32(t, 16), 16), firstLanes));
    const __m256d v = _mm256_mul_pd(_mm256_mul_pd(_mm256_cvtepi32_pd(blue), scale), full);
    // The comparisons' 64-bit masks as four 32-bit lanes.
    const __m128i above = _mm256_castsi256_si128(
        _mm256_permutevar8x32_epi32(_mm256_castpd_si256(_mm256_cmp_pd(v, full, _CMP_GT_OQ)), firstLanes));
    const __m128i below = _mm256_castsi256_si128(
        _mm256_permutevar8x32_epi32(_mm256_castpd_si256(_mm256_cmp_pd(v, one, _CMP_LT_OQ)), firstLanes));
    __m128i b = _mm_and_si128(_mm256_cvtpd_epi32(v), _mm_set1_epi32(0xFF));
    b = _mm_andnot_si128(below, _mm_blendv_epi8(b, _mm_set1_epi32(32767), above));
    const __m256i colour = _mm256_or_si256(_mm256_and_si256(t, notBlue), _mm256_cvtepu32_epi64(b));
    const __m256i old = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(dst + i));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + i), _mm256_blend_epi16(colour, old, 0x88));
  }
  return i;
}

// Q8 of every element of four float pixels a step (AVX2), minus `black` from
// the colour elements; the packed bytes of pixels 0, 2 and 1, 3 come out in
// the two halves and are put back in order.
EFFECTS_TARGET_AVX2 size_t quantizeAvx2(Pixel32* dst, const Pixel128* src, size_t n, float black) {
  const __m256 shift = _mm256_setr_ps(black, black, black, 0.0f, black, black, black, 0.0f);
  const __m256i order = _mm256_setr_epi32(0, 4, 1, 5, 0, 4, 1, 5);
  size_t i = 0;
  for (; i + 4 <= n; i += 4) {
    const __m256i a = convert::q8(_mm256_sub_ps(_mm256_loadu_ps(&src[i].blue), shift));
    const __m256i b = convert::q8(_mm256_sub_ps(_mm256_loadu_ps(&src[i + 2].blue), shift));
    const __m256i words = _mm256_packs_epi32(a, b);
    const __m256i bytes = _mm256_permutevar8x32_epi32(_mm256_packus_epi16(words, words), order);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + i), _mm256_castsi256_si128(bytes));
  }
  return i;
}

#endif

size_t toRgb24Vectors(uint8_t* rgb, const Pixel32* px, size_t n) {
#if EFFECTS_WIDE
  if (cpu::avx2()) return toRgb24Avx2(rgb, px, n);
#endif
  (void)rgb, (void)px, (void)n;
  return 0;
}

void quantize(int32_t elementCount, Pixel32* dst, const Pixel128* src, bool lockBlack) {
  const size_t n = pixelsForCount<Pixel32, Pixel128>(elementCount);
  if (dst == nullptr || src == nullptr || n == 0) return;
  const FloatEnvironment env;
  // The darkest colour value, but never above 0: a buffer without negative
  // values converts exactly as the plain conversion does. The mask is not
  // looked at.
  const float black = lockBlack ? darkest(src, n) : 0.0f;
  size_t i = 0;
#if EFFECTS_WIDE
  if (cpu::avx2()) i = quantizeAvx2(dst, src, n, black);
#endif
  for (i += quantizeVectors(dst + i, src + i, n - i, black); i < n; ++i) {
    const Pixel128& p = src[i];
    dst[i] = Pixel32{Q8(p.blue - black), Q8(p.green - black), Q8(p.red - black), Q8(p.mask)};
  }
}

// RGBE pixels (red, green, blue mantissa, shared exponent) into float pixels
// with the display gamma applied. The walk covers width * 4 * height bytes,
// computed in 32-bit arithmetic (nothing when that is below 1). Red and green
// are stored as floats before their power is taken; blue goes straight in.
//
// s x blue is a mantissa byte times a power of two between 2^-136 and 2^119,
// which a float holds exactly, so blue too can be stored as a float first;
// the powers then run over the stored values in vectors (core/pow.h), a
// block at a time.
void importRgbe(int32_t width, int32_t height, Pixel128* dst, const uint8_t* rgbe) {
  if (height < 1 || dst == nullptr || rgbe == nullptr) return;
  const FloatEnvironment env;
  const auto* quads = reinterpret_cast<const RgbeQuad*>(rgbe);
  const size_t n = pixelsForCount<Pixel128>(wrappedElementCount(static_cast<uint32_t>(width), static_cast<uint32_t>(height)));
  for (size_t b = 0; b < n; b += 1024) {
    const size_t m = n - b < 1024 ? n - b : 1024;
    for (size_t i = b; i < b + m; ++i) {
      const RgbeQuad& q = quads[i];
      const double s = rgbeScale(q.exponent);
      dst[i].red = static_cast<float>(q.red * s);
      dst[i].green = static_cast<float>(q.green * s);
      dst[i].blue = static_cast<float>(s * q.blue);
    }
    fastpow::powColours(dst + b, m, kInverseGamma);
  }
}

// The row conversions walk two pictures of width x height: the pixels and a
// 3-channel buffer. A width or height below 1 converts nothing.
template <class A, class B, class F>
void convertRows(int32_t width, int32_t height, A* a, B* b, F f) {
  forEachPixelPair(packedPicture(width, height, a), packedPicture(width, height, b), f);
}

// The same over two packed pictures taken as one run of pixels: a fast form
// does whole steps from the start (returning how many pixels it did), the
// per-pixel f the rest.
template <class A, class B, class Fast, class F>
void convertRun(int32_t width, int32_t height, A* a, B* b, Fast fast, F f) {
  const auto pa = packedPicture(width, height, a);
  const auto pb = packedPicture(width, height, b);
  if (pa.empty() || pb.empty()) return;
  const size_t n = pa.pixelCount();
  for (size_t i = fast(pa.data(), pb.data(), n); i < n; ++i) f(pa.data()[i], pb.data()[i]);
}

}  // namespace
}  // namespace effects

using namespace effects;

extern "C" {

EFFECTS_API int32_t EFFECTS_CALL Convert64to32Fast(int32_t n, Pixel32* dst, const Pixel64* src) {
  forEachPixelPair(n, dst, src, [](Pixel32& d, const Pixel64& s) {
    d = Pixel32{narrow16to8(s.blue), narrow16to8(s.green), narrow16to8(s.red), narrow16to8(s.mask)};
  });
  return n;
}

EFFECTS_API int32_t EFFECTS_CALL Convert64to32Screen(int32_t n, Pixel32* dst, const Pixel64* src) {
  forEachPixelPair(n, dst, src, [](Pixel32& d, const Pixel64& s) {
    d = Pixel32{narrow16to8(s.blue), narrow16to8(s.green), narrow16to8(s.red), 255};
  });
  return 0;
}

EFFECTS_API int32_t EFFECTS_CALL Convert32to64Fast(int32_t n, const Pixel32* src, Pixel64* dst) {
  forEachPixelPair(n, dst, src, [](Pixel64& d, const Pixel32& s) {
    d = Pixel64{widen8to16(s.blue), widen8to16(s.green), widen8to16(s.red), widen8to16(s.mask)};
  });
  return n;
}

EFFECTS_API int32_t EFFECTS_CALL Convert32to128Fast(int32_t n, const Pixel32* src, Pixel128* dst) {
  const FloatEnvironment env;
  forEachPixelPair(n, dst, src, [](Pixel128& d, const Pixel32& s) {
    d = Pixel128{widen8toFloat(s.blue), widen8toFloat(s.green), widen8toFloat(s.red), widen8toFloat(s.mask)};
  });
  return n;
}

EFFECTS_API int32_t EFFECTS_CALL Convert64to128Fast(int32_t n, const Pixel64* src, Pixel128* dst) {
  const FloatEnvironment env;
  forEachPixelPair(n, dst, src, [](Pixel128& d, const Pixel64& s) {
    d = Pixel128{widen16toFloat(s.blue), widen16toFloat(s.green), widen16toFloat(s.red), widen16toFloat(s.mask)};
  });
  return n;
}

EFFECTS_API int32_t EFFECTS_CALL Convert128to64Fast(int32_t n, Pixel64* dst, const Pixel128* src) {
  const size_t count = pixelsForCount<Pixel64, Pixel128>(n);
  if (dst == nullptr || src == nullptr || count == 0) return n;
  const FloatEnvironment env;
  for (size_t i = narrowVectors(dst, src, count); i < count; ++i) {
    const Pixel128& s = src[i];
    dst[i] = Pixel64{narrowFloatTo16(s.blue), narrowFloatTo16(s.green), narrowFloatTo16(s.red), narrowFloatTo16(s.mask)};
  }
  return n;
}

EFFECTS_API int32_t EFFECTS_CALL Convert128to32Fast(int32_t n, Pixel32* dst, const Pixel128* src) { quantize(n, dst, src, false); return n; }
EFFECTS_API int32_t EFFECTS_CALL Convert128to32Lock(int32_t n, Pixel32* dst, const Pixel128* src) { quantize(n, dst, src, true); return n; }

// The 3-channel buffers hold red, green, blue: the reverse of the pixel order.

EFFECTS_API int32_t EFFECTS_CALL Convert32BIT_4to3ChannelsFast(int32_t width, int32_t height, const Pixel32* src, uint8_t* rgb) {
  const auto fast = [](const Pixel32* s, Rgb<uint8_t>* d, size_t n) { return toRgb24Vectors(reinterpret_cast<uint8_t*>(d), s, n); };
  convertRun(width, height, src, reinterpret_cast<Rgb<uint8_t>*>(rgb), fast, [](const Pixel32& s, Rgb<uint8_t>& d) {
    d = {s.red, s.green, s.blue};
  });
  return 0;
}

// Doubling in 16-bit arithmetic: 32767 becomes 65534, larger values wrap.
EFFECTS_API int32_t EFFECTS_CALL Convert15BITto16BITFast(int32_t width, int32_t height, const Pixel64* src, uint16_t* rgb) {
  convertRows(width, height, src, reinterpret_cast<Rgb<uint16_t>*>(rgb), [](const Pixel64& s, Rgb<uint16_t>& d) {
    d = {static_cast<uint16_t>(s.red * 2u), static_cast<uint16_t>(s.green * 2u), static_cast<uint16_t>(s.blue * 2u)};
  });
  return 0;
}

// Red and green are copied bit for bit, blue alone is rescaled (and cut to
// eight bits); the destination mask keeps its value.
EFFECTS_API int32_t EFFECTS_CALL Convert16BITto15BITFast(int32_t width, int32_t height, const uint16_t* rgb, Pixel64* dst) {
  const FloatEnvironment env;
  const auto fast = [](const Rgb<uint16_t>* s, Pixel64* d, size_t n) {
    const auto* words = reinterpret_cast<const uint16_t*>(s);
    size_t i = 0;
#if EFFECTS_WIDE
    if (cpu::avx2()) i = rgb48Avx2(d, words, n);
#endif
    return i + rgb48Vectors(d + i, words + 3 * i, n - i);
  };
  convertRun(width, height, reinterpret_cast<const Rgb<uint16_t>*>(rgb), dst, fast, [](const Rgb<uint16_t>& s, Pixel64& d) {
    d.red = s.red;
    d.green = s.green;
    d.blue = importBlue48(s.blue);
  });
  return 0;
}

EFFECTS_API int32_t EFFECTS_CALL Convert32BITto24BITFast(int32_t width, int32_t height, const Pixel128* src, float* rgb) {
  convertRows(width, height, src, reinterpret_cast<Rgb<float>*>(rgb), [](const Pixel128& s, Rgb<float>& d) {
    d = {s.red, s.green, s.blue};
  });
  return 0;
}

EFFECTS_API int32_t EFFECTS_CALL Convert128BIT_3to4ChannelsFast(int32_t width, int32_t height, Pixel128* dst, const float* rgb) {
  convertRows(width, height, dst, reinterpret_cast<const Rgb<float>*>(rgb), [](Pixel128& d, const Rgb<float>& s) {
    d.red = s.red; d.green = s.green; d.blue = s.blue;
  });
  return 0;
}

// This triple is already in pixel order (blue, green, red); the mask becomes
// fully selected.
EFFECTS_API int32_t EFFECTS_CALL Convertfloat3xto64(int32_t width, int32_t height, Pixel64* dst, const float* bgr) {
  const FloatEnvironment env;
  const auto fast = [](Pixel64* d, const Bgr<float>* s, size_t n) { return bgrTo64Vectors(d, reinterpret_cast<const float*>(s), n); };
  convertRun(width, height, dst, reinterpret_cast<const Bgr<float>*>(bgr), fast, [](Pixel64& d, const Bgr<float>& s) {
    d = Pixel64{quantizeTo15(s.blue), quantizeTo15(s.green), quantizeTo15(s.red), 32767};
  });
  return 0;
}

// The values are copied in, then raised a row at a time in vectors.
EFFECTS_API int32_t EFFECTS_CALL Convert128HDRFast(int32_t width, int32_t height, Pixel128* dst, const float* rgb, int32_t /*reserved*/) {
  const auto pixels = packedPicture(width, height, dst);
  const auto source = packedPicture(width, height, reinterpret_cast<const Rgb<float>*>(rgb));
  if (source.empty()) return 0;
  const FloatEnvironment env;
  forEachRow(pixels, [&](Pixel128* row, int32_t y) {
    const Rgb<float>* s = source.row(y);
    for (int32_t x = 0; x < width; ++x) row[x].red = s[x].red, row[x].green = s[x].green, row[x].blue = s[x].blue;
    fastpow::powColours(row, static_cast<size_t>(width), kInverseGamma);
  });
  return 0;
}

EFFECTS_API int32_t EFFECTS_CALL Convert128HDRRAWFast(int32_t width, int32_t height, Pixel128* dst, const uint8_t* rgbe, int32_t /*reserved*/) {
  importRgbe(width, height, dst, rgbe);
  return 0;
}

}  // extern "C"
