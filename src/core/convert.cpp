// Conversions between the three pixel layouts and to and from the 3-channel
// buffers of the file codecs. Each export is one pass (the black-point lock
// needs two). Several conversions are deliberately uneven: 8 -> 16 bit is a
// shift that never reaches 32767, float -> 8 bit saturates above 254/255, and
// the 48-bit import rescales blue alone. Hosts compare the results byte for
// byte, so these stay as they are.
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "core/convert_simd.h"
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
float darkest(const Pixel128* src, size_t n) {
  __m128 m = _mm_setzero_ps();
  const __m128 colour = _mm_castsi128_ps(_mm_setr_epi32(-1, -1, -1, 0));
  for (size_t i = 0; i < n; ++i) m = _mm_min_ps(_mm_and_ps(simd::loadf(src + i), colour), m);
  alignas(16) float lanes[4];
  _mm_store_ps(lanes, m);
  float black = 0.0f;
  for (float v : lanes)
    if (v < black) black = v;
  return black;
}

#else

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

void quantize(int32_t elementCount, Pixel32* dst, const Pixel128* src, bool lockBlack) {
  const size_t n = pixelsForCount<Pixel32, Pixel128>(elementCount);
  if (dst == nullptr || src == nullptr || n == 0) return;
  const FloatEnvironment env;
  // The darkest colour value, but never above 0: a buffer without negative
  // values converts exactly as the plain conversion does. The mask is not
  // looked at.
  const float black = lockBlack ? darkest(src, n) : 0.0f;
  for (size_t i = quantizeVectors(dst, src, n, black); i < n; ++i) {
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
  convertRows(width, height, src, reinterpret_cast<Rgb<uint8_t>*>(rgb), [](const Pixel32& s, Rgb<uint8_t>& d) {
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
  convertRows(width, height, reinterpret_cast<const Rgb<uint16_t>*>(rgb), dst, [](const Rgb<uint16_t>& s, Pixel64& d) {
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
  convertRows(width, height, dst, reinterpret_cast<const Bgr<float>*>(bgr), [](Pixel64& d, const Bgr<float>& s) {
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
