// The level histograms of the oil paint.
//
// Each picture column keeps a strip histogram of the pixels of the brush's
// rows in it (a count and the colour sums per level), updated by one pixel
// out and one in as the brush moves down a row. Along a row, the square's
// counts are the strips' counts added up, kept by adding the strip that
// enters and taking away the one that leaves; the most common level is read
// off those counts, and its colour sums are gathered from the square's strips.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "effects/effects.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace effects::oil {

// The largest square is 11 x 11 pixels, so a level never holds more than 121
// pixels and a colour sum stays below 121 x 255 + 60 < 2^15.
inline constexpr uint32_t kMostPixels = 121;

// x / d for 1 <= d <= 121 and x < 2^15, as (x * m) >> 32 with m = ceil(2^32 /
// d): the error of m is below d / 2^32, too small to reach the next integer.
struct Reciprocals {
  uint64_t m[kMostPixels + 1];
  constexpr Reciprocals() : m{} {
    for (uint64_t d = 1; d <= kMostPixels; ++d) m[d] = ((uint64_t{1} << 32) + d - 1) / d;
  }
  uint32_t divide(uint32_t x, uint32_t d) const { return static_cast<uint32_t>((x * m[d]) >> 32); }
};
inline constexpr Reciprocals kReciprocals{};

// ---------------------------------------------------------------- counts

// Counts are bytes, `stride` of them a histogram (a multiple of 16, with
// every count from the number of levels on 0).

inline void addCountsPlain(uint8_t* to, const uint8_t* from, size_t stride) {
  for (size_t i = 0; i < stride; ++i) to[i] = static_cast<uint8_t>(to[i] + from[i]);
}
inline void subtractCountsPlain(uint8_t* to, const uint8_t* from, size_t stride) {
  for (size_t i = 0; i < stride; ++i) to[i] = static_cast<uint8_t>(to[i] - from[i]);
}
// Index of the first largest of counts[0 .. bins), scanning up.
inline uint32_t firstLargestPlain(const uint8_t* counts, uint32_t bins) {
  uint32_t best = 0;
  for (uint32_t i = 1; i < bins; ++i)
    if (counts[i] > counts[best]) best = i;
  return best;
}

#if defined(__SSE2__)
inline void addCountsSse2(uint8_t* to, const uint8_t* from, size_t stride) {
  for (size_t i = 0; i < stride; i += 16) {
    __m128i* t = reinterpret_cast<__m128i*>(to + i);
    _mm_storeu_si128(t, _mm_add_epi8(_mm_loadu_si128(t), _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + i))));
  }
}
inline void subtractCountsSse2(uint8_t* to, const uint8_t* from, size_t stride) {
  for (size_t i = 0; i < stride; i += 16) {
    __m128i* t = reinterpret_cast<__m128i*>(to + i);
    _mm_storeu_si128(t, _mm_sub_epi8(_mm_loadu_si128(t), _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + i))));
  }
}
// The first largest over whole blocks of 16: the counts past `bins` are 0,
// and the largest count is at least 1, so they never win.
inline uint32_t firstLargestSse2(const uint8_t* counts, uint32_t bins) {
  const uint32_t blocks = (bins + 15) / 16;
  __m128i most = _mm_setzero_si128();
  for (uint32_t b = 0; b < blocks; ++b)
    most = _mm_max_epu8(most, _mm_loadu_si128(reinterpret_cast<const __m128i*>(counts + 16 * b)));
  most = _mm_max_epu8(most, _mm_srli_si128(most, 8));
  most = _mm_max_epu8(most, _mm_srli_si128(most, 4));
  most = _mm_max_epu8(most, _mm_srli_si128(most, 2));
  most = _mm_max_epu8(most, _mm_srli_si128(most, 1));
  const __m128i target = _mm_set1_epi8(static_cast<char>(_mm_cvtsi128_si32(most) & 0xFF));
  for (uint32_t b = 0; b < blocks; ++b) {
    const int hits = _mm_movemask_epi8(
        _mm_cmpeq_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(counts + 16 * b)), target));
    if (hits != 0) return 16 * b + static_cast<uint32_t>(__builtin_ctz(static_cast<unsigned>(hits)));
  }
  return 0;
}
#endif

inline void addCounts(uint8_t* to, const uint8_t* from, size_t stride) {
#if defined(__SSE2__)
  addCountsSse2(to, from, stride);
#else
  addCountsPlain(to, from, stride);
#endif
}
inline void subtractCounts(uint8_t* to, const uint8_t* from, size_t stride) {
#if defined(__SSE2__)
  subtractCountsSse2(to, from, stride);
#else
  subtractCountsPlain(to, from, stride);
#endif
}
inline uint32_t firstLargest(const uint8_t* counts, uint32_t bins) {
#if defined(__SSE2__)
  return firstLargestSse2(counts, bins);
#else
  return firstLargestPlain(counts, bins);
#endif
}

// ---------------------------------------------------------------- strips

// The strip histograms of every column, in caller-provided memory: `stride`
// counts per column, and the sums level by level (the square gathers one
// level's sums from neighbouring columns). The sums of a level sit in one 64-bit
// word, 16 bits a channel: a strip holds at most 11 pixels, so no channel
// carries into the next, and a pixel is only ever removed after it was added.
// A pixel comes as its 8-bit blue, green, red and its level in the mask byte.
class Strips {
 public:
  Strips(uint8_t* counts, uint64_t* sums, size_t width, size_t stride, size_t bins)
      : counts_(counts), sums_(sums), width_(width), stride_(stride), bins_(bins) {
    std::memset(counts_, 0, width_ * stride_);
    std::memset(sums_, 0, width_ * bins_ * sizeof(uint64_t));
  }
  // Bytes of memory the strips of `width` columns take.
  static size_t countBytes(size_t width, size_t stride) { return width * stride; }
  static size_t sumBytes(size_t width, size_t bins) { return width * bins * sizeof(uint64_t); }

  void add(size_t x, Pixel32 s) {
    ++counts_[x * stride_ + s.mask];
    sums_[s.mask * width_ + x] += packed(s);
  }
  void remove(size_t x, Pixel32 s) {
    --counts_[x * stride_ + s.mask];
    sums_[s.mask * width_ + x] -= packed(s);
  }
  const uint8_t* counts(size_t x) const { return counts_ + x * stride_; }
  // The sums of one level, one word per column.
  const uint64_t* sums(uint32_t level) const { return sums_ + level * width_; }

 private:
  static uint64_t packed(Pixel32 s) {
    return uint64_t{s.blue} | uint64_t{s.green} << 16 | uint64_t{s.red} << 32;
  }

  uint8_t* counts_;
  uint64_t* sums_;
  size_t width_, stride_, bins_;
};

// The rounded-half-up mean of n pixels' packed sums, packed red in bits 0-7,
// green in 8-15, blue in 16-23.
inline uint32_t meanColour(uint64_t sums, uint32_t n) {
  auto mean = [n](uint64_t s) { return kReciprocals.divide(static_cast<uint32_t>(s & 0xFFFFu) + n / 2, n); };
  return mean(sums >> 32) | mean(sums >> 16) << 8 | mean(sums) << 16;
}

}  // namespace effects::oil
