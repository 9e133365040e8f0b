// Rows of 24-bit pixels (blue, green, red) to and from rows of 32-bit ones,
// as the device-context bitmaps and their DIB rows need them: the fourth
// byte of a widened pixel is 0, and narrowing drops it; and a run of bytes
// through one 256-entry table.
//
// The plain forms move a pixel as one 4-byte word: narrowing stores each
// word where the next pixel's store overwrites its last byte, widening reads
// each word with the next pixel's first byte and clears it; the last pixel
// of a row goes byte by byte, so nothing past either row is touched. Where
// the processor has AVX2, eight pixels a step are moved with byte shuffles
// (each 128-bit half holds four pixels), as long as the step's loads and
// stores stay inside the rows; the plain form does the rest. With the
// AVX-512 byte permutes, the table lookups take 64 bytes a step.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "core/cpu.h"

namespace effects::rows {

static_assert(std::endian::native == std::endian::little, "the row copies move pixels as little-endian words");

namespace detail {

inline void widenPlain(const uint8_t* from, uint8_t* to, size_t n) {
  if (n == 0) return;
  for (size_t x = 0; x + 1 < n; ++x) {
    uint32_t v;
    std::memcpy(&v, from + 3 * x, 4);
    v &= 0x00FFFFFFu;
    std::memcpy(to + 4 * x, &v, 4);
  }
  const size_t last = n - 1;
  to[4 * last] = from[3 * last], to[4 * last + 1] = from[3 * last + 1], to[4 * last + 2] = from[3 * last + 2];
  to[4 * last + 3] = 0;
}

inline void narrowPlain(const uint8_t* from, uint8_t* to, size_t n) {
  if (n == 0) return;
  for (size_t x = 0; x + 1 < n; ++x) std::memcpy(to + 3 * x, from + 4 * x, 4);
  std::memcpy(to + 3 * (n - 1), from + 4 * (n - 1), 3);
}

inline void mapPlain(uint8_t* p, size_t n, const uint8_t* table) {
  for (size_t i = 0; i < n; ++i) p[i] = table[p[i]];
}

#if EFFECTS_WIDE
// A step reads 28 bytes (pixels 0-3 from byte 0, pixels 4-7 from byte 12):
// it runs while at least ten pixels (30 bytes) are left. Returns the pixels
// done.
EFFECTS_TARGET_AVX2 inline size_t widenWide(const uint8_t* from, uint8_t* to, size_t n) {
  const __m256i spread = _mm256_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1,  //
                                          0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1);
  size_t x = 0;
  for (; x + 10 <= n; x += 8) {
    const __m128i lo = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + 3 * x));
    const __m128i hi = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + 3 * x + 12));
    const __m256i v = _mm256_inserti128_si256(_mm256_castsi128_si256(lo), hi, 1);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to + 4 * x), _mm256_shuffle_epi8(v, spread));
  }
  return x;
}

// A step writes 28 bytes (the last four are the next step's first): it runs
// while at least ten pixels are left. Returns the pixels done.
EFFECTS_TARGET_AVX2 inline size_t narrowWide(const uint8_t* from, uint8_t* to, size_t n) {
  const __m256i pack = _mm256_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1,  //
                                        0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
  size_t x = 0;
  for (; x + 10 <= n; x += 8) {
    const __m256i v = _mm256_shuffle_epi8(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(from + 4 * x)), pack);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to + 3 * x), _mm256_castsi256_si128(v));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to + 3 * x + 12), _mm256_extracti128_si256(v, 1));
  }
  return x;
}

// 64 bytes a step through the table held in four registers: two
// two-register permutes pick by a byte's low seven bits, its top bit picks
// between them. Returns the bytes done.
EFFECTS_TARGET_VBMI inline size_t mapPermuted(uint8_t* p, size_t n, const uint8_t* table) {
  const __m512i a = _mm512_loadu_si512(table), b = _mm512_loadu_si512(table + 64);
  const __m512i c = _mm512_loadu_si512(table + 128), d = _mm512_loadu_si512(table + 192);
  size_t i = 0;
  for (; i + 64 <= n; i += 64) {
    const __m512i v = _mm512_loadu_si512(p + i);
    const __mmask64 high = _mm512_movepi8_mask(v);
    _mm512_storeu_si512(p + i, _mm512_mask_blend_epi8(high, _mm512_permutex2var_epi8(a, v, b),
                                                      _mm512_permutex2var_epi8(c, v, d)));
  }
  return i;
}
#endif

}  // namespace detail

// n pixels of 3 bytes into n pixels of 4 bytes (the fourth 0).
inline void widen24(const uint8_t* from, uint8_t* to, size_t n) {
  size_t x = 0;
#if EFFECTS_WIDE
  if (cpu::avx2()) x = detail::widenWide(from, to, n);
#endif
  detail::widenPlain(from + 3 * x, to + 4 * x, n - x);
}

// n pixels of 4 bytes into n pixels of 3 bytes.
inline void narrow24(const uint8_t* from, uint8_t* to, size_t n) {
  size_t x = 0;
#if EFFECTS_WIDE
  if (cpu::avx2()) x = detail::narrowWide(from, to, n);
#endif
  detail::narrowPlain(from + 4 * x, to + 3 * x, n - x);
}

// Each of n bytes replaced by its entry in a 256-byte table.
inline void mapBytes(uint8_t* p, size_t n, const uint8_t* table) {
  size_t i = 0;
#if EFFECTS_WIDE
  if (cpu::vbmi()) i = detail::mapPermuted(p, n, table);
#endif
  detail::mapPlain(p + i, n - i, table);
}

}  // namespace effects::rows
