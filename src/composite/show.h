// The display pictures of the compositing exports, a row at a time: what a
// canvas or destination row looks like in 8 bits. Vector forms over whole
// vectors, the per-pixel forms over the rest.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/convert_simd.h"
#include "core/layout.h"
#include "core/numeric.h"
#include "core/simd.h"

#if defined(__SSE2__)
#include <xmmintrin.h>
#endif

namespace effects::composite {

// A 15-bit element shown in 8 bits: its top eight bits (the low byte of the
// shift for a value above 32767).
inline uint8_t shown(uint16_t v) { return static_cast<uint8_t>(v >> 7); }

// The float canvas after modes 1 to 16 is shown as v = x x 255 clamped to
// 0..255 and rounded; mode 0 uses Q8 instead, which sends values below 1/255
// to 0 and above 254/255 to 255. The two differ on purpose.
inline uint8_t shownClamped(float x) { return roundLowByte(clampTo(x * 255, 0.0f, 255.0f)); }

// Blue, green and red of each pixel shown; the display's fourth byte is left
// as it was, or (withMask, the float non-Direct picture) the mask is shown
// too.
inline void showRow(const Pixel32* c, Pixel32* d, size_t n) {
  size_t i = 0;
#if defined(__SSE2__)
  const __m128i masks = simd::maskLanes(d);
  for (; i + 4 <= n; i += 4) simd::store(d + i, simd::select(masks, simd::load(d + i), simd::load(c + i)));
#endif
  for (; i < n; ++i) d[i].blue = c[i].blue, d[i].green = c[i].green, d[i].red = c[i].red;
}

inline void showRow(const Pixel64* c, Pixel32* d, size_t n) {
  size_t i = 0;
#if defined(__SSE2__)
  const __m128i masks = simd::maskLanes(d), low = _mm_set1_epi16(0xFF);
  for (; i + 4 <= n; i += 4) {
    const __m128i a = _mm_and_si128(_mm_srli_epi16(simd::load(c + i), 7), low);
    const __m128i b = _mm_and_si128(_mm_srli_epi16(simd::load(c + i + 2), 7), low);
    simd::store(d + i, simd::select(masks, simd::load(d + i), _mm_packus_epi16(a, b)));
  }
#endif
  for (; i < n; ++i) d[i].blue = shown(c[i].blue), d[i].green = shown(c[i].green), d[i].red = shown(c[i].red);
}

// Float: Q8 (quantized) or clamped and rounded.
template <bool Quantized, bool WithMask>
inline void showRow(const Pixel128* c, Pixel32* d, size_t n) {
  size_t i = 0;
#if defined(__SSE2__)
  auto byteOf = [](__m128 x) { return Quantized ? convert::q8(x) : convert::clampedByte(x); };
  for (; i + 4 <= n; i += 4) {
    __m128 b = simd::loadf(c + i), g = simd::loadf(c + i + 1), r = simd::loadf(c + i + 2), m = simd::loadf(c + i + 3);
    _MM_TRANSPOSE4_PS(b, g, r, m);
    const __m128i fourth = WithMask ? byteOf(m) : _mm_srli_epi32(simd::load(d + i), 24);
    simd::store(d + i, convert::bytes(byteOf(b), byteOf(g), byteOf(r), fourth));
  }
#endif
  for (; i < n; ++i) {
    if constexpr (Quantized) {
      d[i].blue = Q8(c[i].blue), d[i].green = Q8(c[i].green), d[i].red = Q8(c[i].red);
      if constexpr (WithMask) d[i].mask = Q8(c[i].mask);
    } else {
      d[i].blue = shownClamped(c[i].blue), d[i].green = shownClamped(c[i].green), d[i].red = shownClamped(c[i].red);
    }
  }
}

}  // namespace effects::composite
