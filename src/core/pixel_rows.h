// Rows of 24-bit pixels (blue, green, red) to and from rows of 32-bit ones,
// as the device-context bitmaps and their DIB rows need them: the fourth
// byte of a widened pixel is 0, and narrowing drops it. A pixel is moved as
// one 4-byte word: narrowing stores each word where the next pixel's store
// overwrites its last byte, widening reads each word with the next pixel's
// first byte and clears it; the last pixel of a row goes byte by byte, so
// nothing past either row is touched.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace effects::rows {

static_assert(std::endian::native == std::endian::little, "the row copies move pixels as little-endian words");

// n pixels of 3 bytes into n pixels of 4 bytes (the fourth 0).
inline void widen24(const uint8_t* from, uint8_t* to, size_t n) {
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

// n pixels of 4 bytes into n pixels of 3 bytes.
inline void narrow24(const uint8_t* from, uint8_t* to, size_t n) {
  if (n == 0) return;
  for (size_t x = 0; x + 1 < n; ++x) std::memcpy(to + 3 * x, from + 4 * x, 4);
  std::memcpy(to + 3 * (n - 1), from + 4 * (n - 1), 3);
}

}  // namespace effects::rows
