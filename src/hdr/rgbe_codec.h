// The RGBE pixel codecs and the readers shared by the file loader, the stream
// export, the tests and the fuzz targets.
#pragma once

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#include <xmmintrin.h>
#endif

#include "core/cpu.h"
#include "core/numeric.h"
#include "core/picture.h"
#include "core/rgbe.h"
#include "core/simd.h"
#include "effects/effects.h"

namespace effects::rgbe {

// The shared scale of one float triple: v is the largest of r, g, b (red
// first; only a strictly greater value replaces it). Returns false when the
// pixel is black (v < 1e-32). Otherwise v = f x 2^e with f in [0.5, 1) and
// s = f x 256 / v, which is 2^(8 - e) for every finite v. Infinity and NaN
// give e = 0 and a NaN scale, so their mantissas come out as 0 and the
// exponent byte as 128.
inline bool sharedScale(float r, float g, float b, double& s, int& e) {
  float v = r;
  if (g > v) v = g;
  if (b > v) v = b;
  if (v < 1e-32) return false;
  e = 0;
  const double f = std::isfinite(v) ? std::frexp(v, &e) : static_cast<double>(v);
  s = f * 256 / v;
  return true;
}

// The file encoder: mantissas truncated toward zero, low byte kept.
inline void encodeTruncating(float r, float g, float b, uint8_t out[4]) {
  double s;
  int e;
  if (!sharedScale(r, g, b, s, e)) {
    out[0] = out[1] = out[2] = out[3] = 0;
    return;
  }
  out[0] = static_cast<uint8_t>(static_cast<uint32_t>(truncToInt32(r * s)));
  out[1] = static_cast<uint8_t>(static_cast<uint32_t>(truncToInt32(g * s)));
  out[2] = static_cast<uint8_t>(static_cast<uint32_t>(truncToInt32(b * s)));
  out[3] = static_cast<uint8_t>(e + 128);
}

// The memory encoder: mantissas rounded to nearest (ties to even), low byte
// kept, so 255.5 and above wrap to 0. That wrap is intended.
inline void encodeRounding(float r, float g, float b, uint8_t out[4]) {
  double s;
  int e;
  if (!sharedScale(r, g, b, s, e)) {
    out[0] = out[1] = out[2] = out[3] = 0;
    return;
  }
  out[0] = roundLowByte(r * s);
  out[1] = roundLowByte(g * s);
  out[2] = roundLowByte(b * s);
  out[3] = static_cast<uint8_t>(e + 128);
}

// ------------------------------------------------- the memory encoder in bulk

// The value the memory encoder takes for an 8-bit element: times 1/255 in
// double, stored as float (so 255 is exactly 1.0f).
inline float encoderValue(uint8_t v) { return static_cast<float>(v * k255); }

#if defined(__SSE2__)
namespace detail {

// The smallest float v with v >= 1e-32 in double: below it a pixel is black.
inline constexpr float kBlackBelow = [] {
  float f = 1e-32f;
  while (static_cast<double>(f) < 1e-32) f = std::bit_cast<float>(std::bit_cast<uint32_t>(f) + 1);
  while (static_cast<double>(std::bit_cast<float>(std::bit_cast<uint32_t>(f) - 1)) >= 1e-32)
    f = std::bit_cast<float>(std::bit_cast<uint32_t>(f) - 1);
  return f;
}();

// roundLowByte of four floats times their scale: a power of two, so the
// product is exact in single precision wherever it is not far outside the
// byte range (and then both products round to the same out-of-range value).
inline __m128i mantissas(__m128 x, __m128 scale) {
  const __m128i r = _mm_cvtps_epi32(_mm_mul_ps(x, scale));
  const __m128i fits = _mm_cmpeq_epi32(_mm_srai_epi32(_mm_slli_epi32(r, 16), 16), r);
  return _mm_and_si128(_mm_and_si128(r, fits), _mm_set1_epi32(0xFF));
}

}  // namespace detail

// encodeRounding of four pixels in lanes, given as their blue, green and red
// floats: v the largest of red, green, blue as sharedScale picks it; a normal
// v has the exponent byte B, so frexp's e is B - 126 and the scale 2^(8 - e)
// is the float with exponent byte 261 - B; infinity and NaN (B = 255) give
// 0, 0, 0, 128.
inline __m128i quadsOf(__m128 b, __m128 g, __m128 r) {
  const __m128 v = _mm_max_ps(b, _mm_max_ps(g, r));
  const __m128i biased = _mm_and_si128(_mm_srli_epi32(_mm_castps_si128(v), 23), _mm_set1_epi32(0xFF));
  const __m128 scale = _mm_castsi128_ps(_mm_slli_epi32(_mm_sub_epi32(_mm_set1_epi32(261), biased), 23));
  __m128i quad = _mm_or_si128(
      _mm_or_si128(detail::mantissas(r, scale), _mm_slli_epi32(detail::mantissas(g, scale), 8)),
      _mm_or_si128(_mm_slli_epi32(detail::mantissas(b, scale), 16),
                   _mm_slli_epi32(_mm_and_si128(_mm_add_epi32(biased, _mm_set1_epi32(2)), _mm_set1_epi32(0xFF)), 24)));
  const __m128i special = _mm_cmpeq_epi32(biased, _mm_set1_epi32(0xFF));
  quad = _mm_or_si128(_mm_andnot_si128(special, quad), _mm_and_si128(special, _mm_set1_epi32(128 << 24)));
  const __m128i black = _mm_castps_si128(_mm_cmplt_ps(v, _mm_set1_ps(detail::kBlackBelow)));
  return _mm_andnot_si128(black, quad);
}

// encodeRounding of four float pixels a step. Returns the pixels done.
inline size_t encodeRoundingVectors(const Pixel128* px, size_t n, RgbeQuad* out) {
  size_t i = 0;
  for (; i + 4 <= n; i += 4) {
    __m128 b = _mm_loadu_ps(&px[i].blue), g = _mm_loadu_ps(&px[i + 1].blue), r = _mm_loadu_ps(&px[i + 2].blue),
           m = _mm_loadu_ps(&px[i + 3].blue);
    _MM_TRANSPOSE4_PS(b, g, r, m);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), quadsOf(b, g, r));
  }
  return i;
}

// 8-bit pixels: the floats are k / 255 in [0, 1], so there is no infinity
// or NaN, every mantissa is at most 256 (its low byte is the wrap), and the
// exponent byte is at most 129; quadsOf's range checks drop out. The floats
// the encoder takes, encoderValue(k) = k x 1/255 in double rounded to float,
// are k / 255 in single precision for every k (checked for all 256), one
// division in the lanes.
namespace detail {
inline __m128 encoderValues(__m128i k) { return _mm_div_ps(_mm_cvtepi32_ps(k), _mm_set1_ps(255.0f)); }

inline __m128i quadsOfBytes(__m128 b, __m128 g, __m128 r) {
  const __m128 v = _mm_max_ps(b, _mm_max_ps(g, r));
  const __m128i biased = _mm_srli_epi32(_mm_castps_si128(v), 23);
  const __m128 scale = _mm_castsi128_ps(_mm_slli_epi32(_mm_sub_epi32(_mm_set1_epi32(261), biased), 23));
  const __m128i byte = _mm_set1_epi32(0xFF);
  const auto mantissa = [&](__m128 x) { return _mm_and_si128(_mm_cvtps_epi32(_mm_mul_ps(x, scale)), byte); };
  const __m128i quad =
      _mm_or_si128(_mm_or_si128(mantissa(r), _mm_slli_epi32(mantissa(g), 8)),
                   _mm_or_si128(_mm_slli_epi32(mantissa(b), 16), _mm_slli_epi32(_mm_add_epi32(biased, _mm_set1_epi32(2)), 24)));
  return _mm_andnot_si128(_mm_castps_si128(_mm_cmplt_ps(v, _mm_set1_ps(kBlackBelow))), quad);
}
}  // namespace detail

// encodeRounding of four 8-bit pixels a step. Returns the pixels done.
inline size_t encodeRoundingVectors(const Pixel32* px, size_t n, RgbeQuad* out) {
  const __m128i byte = _mm_set1_epi32(0xFF);
  size_t i = 0;
  for (; i + 4 <= n; i += 4) {
    const __m128i p = _mm_loadu_si128(reinterpret_cast<const __m128i*>(px + i));
    const __m128 b = detail::encoderValues(_mm_and_si128(p, byte));
    const __m128 g = detail::encoderValues(_mm_and_si128(_mm_srli_epi32(p, 8), byte));
    const __m128 r = detail::encoderValues(_mm_and_si128(_mm_srli_epi32(p, 16), byte));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), detail::quadsOfBytes(b, g, r));
  }
  return i;
}

#if EFFECTS_WIDE
// The same, eight pixels a step.
EFFECTS_TARGET_AVX2 inline size_t encodeRoundingAvx2(const Pixel32* px, size_t n, RgbeQuad* out) {
  const __m256i byte = _mm256_set1_epi32(0xFF);
  const __m256 d255 = _mm256_set1_ps(255.0f), black = _mm256_set1_ps(detail::kBlackBelow);
  size_t i = 0;
  for (; i + 8 <= n; i += 8) {
    const __m256i p = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(px + i));
    const __m256 b = _mm256_div_ps(_mm256_cvtepi32_ps(_mm256_and_si256(p, byte)), d255);
    const __m256 g = _mm256_div_ps(_mm256_cvtepi32_ps(_mm256_and_si256(_mm256_srli_epi32(p, 8), byte)), d255);
    const __m256 r = _mm256_div_ps(_mm256_cvtepi32_ps(_mm256_and_si256(_mm256_srli_epi32(p, 16), byte)), d255);
    const __m256 v = _mm256_max_ps(b, _mm256_max_ps(g, r));
    const __m256i biased = _mm256_srli_epi32(_mm256_castps_si256(v), 23);
    const __m256 scale = _mm256_castsi256_ps(_mm256_slli_epi32(_mm256_sub_epi32(_mm256_set1_epi32(261), biased), 23));
    const __m256i mr = _mm256_and_si256(_mm256_cvtps_epi32(_mm256_mul_ps(r, scale)), byte);
    const __m256i mg = _mm256_and_si256(_mm256_cvtps_epi32(_mm256_mul_ps(g, scale)), byte);
    const __m256i mb = _mm256_and_si256(_mm256_cvtps_epi32(_mm256_mul_ps(b, scale)), byte);
    const __m256i quad = _mm256_or_si256(
        _mm256_or_si256(mr, _mm256_slli_epi32(mg, 8)),
        _mm256_or_si256(_mm256_slli_epi32(mb, 16),
                        _mm256_slli_epi32(_mm256_add_epi32(biased, _mm256_set1_epi32(2)), 24)));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + i),
                        _mm256_andnot_si256(_mm256_castps_si256(_mm256_cmp_ps(v, black, _CMP_LT_OQ)), quad));
  }
  return i;
}
#endif
#endif

// The memory encoder over n float pixels (red, green, blue; the mask is
// ignored).
inline void encodeRounding(const Pixel128* px, size_t n, RgbeQuad* out) {
  size_t i = 0;
#if defined(__SSE2__)
  i = encodeRoundingVectors(px, n, out);
#endif
  for (; i < n; ++i) encodeRounding(px[i].red, px[i].green, px[i].blue, reinterpret_cast<uint8_t*>(out + i));
}

// The memory encoder over n 8-bit pixels.
inline void encodeRounding(const Pixel32* px, size_t n, RgbeQuad* out) {
  size_t i = 0;
#if EFFECTS_WIDE
  if (cpu::avx2()) i = encodeRoundingAvx2(px, n, out);
#endif
#if defined(__SSE2__)
  i += encodeRoundingVectors(px + i, n - i, out + i);
#endif
  for (; i < n; ++i)
    encodeRounding(encoderValue(px[i].red), encoderValue(px[i].green), encoderValue(px[i].blue),
                   reinterpret_cast<uint8_t*>(out + i));
}

// The file decoder: (m + 0.5) x 2^(e - 136) in double, stored as float; an
// exponent byte of 0 is black. The half step centres each value in its
// mantissa interval, so decoding is deliberately not the encoders' inverse.
inline void decode(const uint8_t in[4], float out[3]) {
  if (in[3] == 0) {
    out[0] = out[1] = out[2] = 0.0f;
    return;
  }
  const double scale = rgbeScale(in[3]);
  out[0] = static_cast<float>((in[0] + 0.5) * scale);
  out[1] = static_cast<float>((in[1] + 0.5) * scale);
  out[2] = static_cast<float>((in[2] + 0.5) * scale);
}

// The largest float RGB picture a header may describe: what one buffer can
// span in this address space (PTRDIFF_MAX bytes on 32-bit hosts; 2^47 bytes,
// the whole user address space of x86-64, on 64-bit ones).
inline constexpr uint64_t kMaxPictureBytes =
    sizeof(void*) < 8 ? static_cast<uint64_t>(PTRDIFF_MAX) : uint64_t(1) << 47;

// Whether a width x height float RGB picture stays within kMaxPictureBytes
// (true for sizes below 1, which need nothing).
bool sizeFitsHost(int32_t width, int32_t height);

// The header: the "#?" line, lines up to the blank one (one of them must be
// the exact FORMAT line), then "-Y <height> +X <width>". Problems are printed
// to the standard error stream and give -1: a size whose float RGB picture
// exceeds kMaxPictureBytes is one ("image size too large for this host").
// Success gives 0 and the size.
int32_t readHeader(std::FILE* file, int32_t* width, int32_t* height);

// Scans a size line as "-Y %d +X %d" would: returns how many numbers were
// converted (0, 1 or 2). Numbers beyond 32 bits saturate.
int scanSizeLine(const char* line, int32_t* height, int32_t* width);

// The scanline readers over a buffered file and over the library's stream.
int32_t readScanlines(std::FILE* file, float* data, int32_t width, int32_t height);
int32_t readScanlines(EffectsStream& stream, float* data, int32_t width, int32_t height);

}  // namespace effects::rgbe
