// SSE2 forms of the per-pixel stylize families in the integer layouts. Each
// works on whole vectors from the start of a span of pixels and returns how
// many pixels it did; the caller finishes the rest with the plain form of
// filters/stylize.h, which the tests hold these to. Without SSE2 they do
// nothing and return 0.
#pragma once

#include <cstddef>
#include <cstdint>

#include "filters/stylize.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace effects::stylize::sse2 {

#if defined(__SSE2__)

namespace detail {

inline __m128i load(const void* p) { return _mm_loadu_si128(static_cast<const __m128i*>(p)); }
inline void store(void* p, __m128i v) { _mm_storeu_si128(static_cast<__m128i*>(p), v); }

// The lanes of the chosen colour elements, as a pattern of one pixel.
inline uint32_t chosenBytes(Channels ch) {
  return (ch.blue ? 0xFFu : 0u) | (ch.green ? 0xFF00u : 0u) | (ch.red ? 0xFF0000u : 0u);
}
inline __m128i chosenWords(Channels ch) {
  const short on = -1;
  return _mm_setr_epi16(ch.blue ? on : 0, ch.green ? on : 0, ch.red ? on : 0, 0, ch.blue ? on : 0,
                        ch.green ? on : 0, ch.red ? on : 0, 0);
}

// B + G + R of four 8-bit pixels, one in each 32-bit lane: blue and red in
// one pair of 16-bit lanes, green beside a cleared mask in the other, then
// the pairs summed.
inline __m128i sum32(__m128i v) {
  const __m128i blueRed = _mm_and_si128(v, _mm_set1_epi32(0x00FF00FF));
  const __m128i green = _mm_and_si128(_mm_srli_epi16(v, 8), _mm_set1_epi32(0x0000FFFF));
  return _mm_madd_epi16(_mm_add_epi16(blueRed, green), _mm_set1_epi16(1));
}

// B + G + R of two 16-bit pixels read as signed values, in both 32-bit lanes
// of each pixel.
inline __m128i sum64(__m128i v) {
  const __m128i pairs = _mm_madd_epi16(v, _mm_setr_epi16(1, 1, 1, 0, 1, 1, 1, 0));
  return _mm_add_epi32(pairs, _mm_shuffle_epi32(pairs, _MM_SHUFFLE(2, 3, 0, 1)));
}

// min(x + a, 32767) in every lane where a is not 0; other lanes unchanged.
inline __m128i addCapped16(__m128i x, __m128i a, __m128i written) {
  const __m128i sum = _mm_adds_epu16(x, a);
  const __m128i capped = _mm_sub_epi16(sum, _mm_subs_epu16(sum, _mm_set1_epi16(32767)));
  return _mm_or_si128(_mm_and_si128(written, capped), _mm_andnot_si128(written, x));
}

}  // namespace detail

// Halftone and custom halftone, 8 bits: limits on the sum, any int32.
inline size_t halftone32(Pixel32* px, size_t n, int32_t dark, int32_t bright, Channels ch) {
  using namespace detail;
  const __m128i chosen = _mm_set1_epi32(static_cast<int32_t>(chosenBytes(ch)));
  const __m128i darkLimit = _mm_set1_epi32(dark), brightLimit = _mm_set1_epi32(bright);
  const bool all = ch.blue && ch.green && ch.red;
  size_t i = 0;
  for (; i + 4 <= n; i += 4) {
    __m128i v = load(px + i);
    const __m128i s = sum32(v);
    const __m128i notDark = _mm_cmpgt_epi32(s, darkLimit);
    v = _mm_andnot_si128(_mm_andnot_si128(notDark, chosen), v);
    // With every channel chosen a dark pixel's new sum is 0.
    const __m128i again = all ? _mm_and_si128(notDark, s) : sum32(v);
    v = _mm_or_si128(v, _mm_and_si128(_mm_cmpgt_epi32(again, brightLimit), chosen));
    store(px + i, v);
  }
  return i;
}

// Halftone and custom halftone, 16 bits (elements read as signed).
inline size_t halftone64(Pixel64* px, size_t n, int32_t dark, int32_t bright, Channels ch) {
  using namespace detail;
  const __m128i chosen = chosenWords(ch), full = _mm_set1_epi16(32767);
  const __m128i darkLimit = _mm_set1_epi32(dark), brightLimit = _mm_set1_epi32(bright);
  size_t i = 0;
  for (; i + 2 <= n; i += 2) {
    __m128i v = load(px + i);
    const __m128i notDark = _mm_cmpgt_epi32(sum64(v), darkLimit);
    v = _mm_andnot_si128(_mm_andnot_si128(notDark, chosen), v);
    const __m128i set = _mm_and_si128(_mm_cmpgt_epi32(sum64(v), brightLimit), chosen);
    v = _mm_or_si128(_mm_andnot_si128(set, v), _mm_and_si128(set, full));
    store(px + i, v);
  }
  return i;
}

// Polar pass, 8 bits: each chosen byte below low becomes 0, above high 255.
// Unchosen bytes get the limits 0 and 255, which nothing passes.
inline size_t polarPass32(Pixel32* px, size_t n, int32_t low, int32_t high, Channels ch) {
  using namespace detail;
  const uint32_t c = chosenBytes(ch);
  const uint32_t l = static_cast<uint32_t>(low) * 0x010101u & c;
  const uint32_t h = (static_cast<uint32_t>(high) * 0x010101u & c) | (~c);
  const __m128i lows = _mm_set1_epi32(static_cast<int32_t>(l)), highs = _mm_set1_epi32(static_cast<int32_t>(h));
  const __m128i zero = _mm_setzero_si128(), ones = _mm_set1_epi32(-1);
  size_t i = 0;
  for (; i + 4 <= n; i += 4) {
    const __m128i v = load(px + i);
    const __m128i atLeastLow = _mm_cmpeq_epi8(_mm_subs_epu8(lows, v), zero);
    const __m128i atMostHigh = _mm_cmpeq_epi8(_mm_subs_epu8(v, highs), zero);
    store(px + i, _mm_or_si128(_mm_and_si128(v, atLeastLow), _mm_xor_si128(atMostHigh, ones)));
  }
  return i;
}

// Polar pass, 16 bits, compared as signed values.
inline size_t polarPass64(Pixel64* px, size_t n, int32_t low, int32_t high, Channels ch) {
  using namespace detail;
  const __m128i chosen = chosenWords(ch), full = _mm_set1_epi16(32767);
  const __m128i lows = _mm_or_si128(_mm_and_si128(chosen, _mm_set1_epi16(static_cast<short>(low))),
                                    _mm_andnot_si128(chosen, _mm_set1_epi16(-32768)));
  const __m128i highs = _mm_or_si128(_mm_and_si128(chosen, _mm_set1_epi16(static_cast<short>(high))),
                                     _mm_andnot_si128(chosen, full));
  size_t i = 0;
  for (; i + 2 <= n; i += 2) {
    const __m128i v = load(px + i);
    const __m128i above = _mm_cmpgt_epi16(v, highs);
    const __m128i moved = _mm_or_si128(_mm_cmplt_epi16(v, lows), above);
    store(px + i, _mm_or_si128(_mm_andnot_si128(moved, v), _mm_and_si128(above, full)));
  }
  return i;
}

// Byte additions that wrap, the same four bytes on every pixel.
inline size_t addWrapping32(Pixel32* px, size_t n, uint8_t blue, uint8_t green, uint8_t red) {
  using namespace detail;
  const __m128i a = _mm_set1_epi32(static_cast<int32_t>(blue | green << 8 | red << 16));
  size_t i = 0;
  for (; i + 4 <= n; i += 4) store(px + i, _mm_add_epi8(load(px + i), a));
  return i;
}

// Two saturating byte additions in turn (each capped at 255), with patterns
// of four pixels; a span starts at an even column.
inline size_t addCapped32(Pixel32* px, size_t n, const uint8_t (&first)[16], const uint8_t (&second)[16]) {
  using namespace detail;
  const __m128i a = load(first), b = load(second);
  size_t i = 0;
  for (; i + 4 <= n; i += 4) store(px + i, _mm_adds_epu8(_mm_adds_epu8(load(px + i), a), b));
  return i;
}

// Two capped 16-bit additions in turn, with patterns of two pixels; a lane
// whose amount is 0 is left as it is.
inline size_t addCapped64(Pixel64* px, size_t n, const uint16_t (&first)[8], const uint16_t (&second)[8]) {
  using namespace detail;
  const __m128i a = load(first), b = load(second), zero = _mm_setzero_si128();
  const __m128i writeA = _mm_xor_si128(_mm_cmpeq_epi16(a, zero), _mm_set1_epi16(-1));
  const __m128i writeB = _mm_xor_si128(_mm_cmpeq_epi16(b, zero), _mm_set1_epi16(-1));
  size_t i = 0;
  for (; i + 2 <= n; i += 2) store(px + i, addCapped16(addCapped16(load(px + i), a, writeA), b, writeB));
  return i;
}

#else

inline size_t halftone32(Pixel32*, size_t, int32_t, int32_t, Channels) { return 0; }
inline size_t halftone64(Pixel64*, size_t, int32_t, int32_t, Channels) { return 0; }
inline size_t polarPass32(Pixel32*, size_t, int32_t, int32_t, Channels) { return 0; }
inline size_t polarPass64(Pixel64*, size_t, int32_t, int32_t, Channels) { return 0; }
inline size_t addWrapping32(Pixel32*, size_t, uint8_t, uint8_t, uint8_t) { return 0; }
inline size_t addCapped32(Pixel32*, size_t, const uint8_t (&)[16], const uint8_t (&)[16]) { return 0; }
inline size_t addCapped64(Pixel64*, size_t, const uint16_t (&)[8], const uint16_t (&)[8]) { return 0; }

#endif

}  // namespace effects::stylize::sse2
