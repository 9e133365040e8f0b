// The sliding level histogram of the oil paint.
#pragma once

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

// Index of the first largest of counts[0 .. bins), scanning up.
inline uint32_t firstLargestPlain(const uint8_t* counts, uint32_t bins) {
  uint32_t best = 0;
  for (uint32_t i = 1; i < bins; ++i)
    if (counts[i] > counts[best]) best = i;
  return best;
}

#if defined(__SSE2__)
// The same over 16 counts at a time; counts holds 256 bytes (16-aligned) and
// every count from `bins` on is 0, so whole blocks can be read.
inline uint32_t firstLargestSse2(const uint8_t* counts, uint32_t bins) {
  const uint32_t blocks = (bins + 15) / 16;
  __m128i most = _mm_setzero_si128();
  for (uint32_t b = 0; b < blocks; ++b)
    most = _mm_max_epu8(most, _mm_load_si128(reinterpret_cast<const __m128i*>(counts + 16 * b)));
  most = _mm_max_epu8(most, _mm_srli_si128(most, 8));
  most = _mm_max_epu8(most, _mm_srli_si128(most, 4));
  most = _mm_max_epu8(most, _mm_srli_si128(most, 2));
  most = _mm_max_epu8(most, _mm_srli_si128(most, 1));
  const __m128i target = _mm_set1_epi8(static_cast<char>(_mm_cvtsi128_si32(most) & 0xFF));
  for (uint32_t b = 0; b < blocks; ++b) {
    const int hits = _mm_movemask_epi8(
        _mm_cmpeq_epi8(_mm_load_si128(reinterpret_cast<const __m128i*>(counts + 16 * b)), target));
    if (hits != 0) return 16 * b + static_cast<uint32_t>(__builtin_ctz(static_cast<unsigned>(hits)));
  }
  return 0;
}
#endif

inline uint32_t firstLargest(const uint8_t* counts, uint32_t bins) {
#if defined(__SSE2__)
  return firstLargestSse2(counts, bins);
#else
  return firstLargestPlain(counts, bins);
#endif
}

// Pixel counts and colour sums per level over a moving square. A pixel comes
// as its 8-bit blue, green, red and its level in the mask byte. The sums of a
// level sit in one 64-bit word, 16 bits a channel: none can carry into the
// next, since none exceeds 121 x 255, and a pixel is only ever removed after
// it was added.
class Histogram {
 public:
  explicit Histogram(uint32_t bins) : bins_(bins) { clear(); }

  void clear() {
    std::memset(counts_, 0, sizeof counts_);
    std::memset(sums_, 0, sizeof sums_);
    best_ = 0;
    stale_ = false;
  }

  // Keeps the most common level up to date: a level that grows past the
  // leader, or level with it from below, takes the lead.
  void add(Pixel32 s) {
    const uint32_t l = s.mask;
    sums_[l] += packed(s);
    ++counts_[l];
    if (counts_[l] > counts_[best_] || (counts_[l] == counts_[best_] && l < best_)) best_ = l;
  }
  // A level that shrinks may lose the lead: settle() looks again.
  void remove(Pixel32 s) {
    const uint32_t l = s.mask;
    sums_[l] -= packed(s);
    --counts_[l];
    stale_ |= l == best_;
  }
  // Call after the removals of a step and before its additions.
  void settle() {
    if (stale_) best_ = firstLargest(counts_, bins_);
    stale_ = false;
  }

  // The rounded mean colour of the most common level, packed red in bits
  // 0-7, green in 8-15, blue in 16-23.
  uint32_t meanOfMostCommon() const {
    const uint32_t n = counts_[best_];
    const uint64_t s = sums_[best_];
    auto mean = [n](uint64_t sum) { return kReciprocals.divide(static_cast<uint32_t>(sum & 0xFFFFu) + n / 2, n); };
    return mean(s >> 32) | mean(s >> 16) << 8 | mean(s) << 16;
  }

 private:
  static uint64_t packed(Pixel32 s) {
    return uint64_t{s.blue} | uint64_t{s.green} << 16 | uint64_t{s.red} << 32;
  }

  alignas(16) uint8_t counts_[256];
  uint64_t sums_[256];
  uint32_t bins_;
  uint32_t best_;
  bool stale_;
};

}  // namespace effects::oil
