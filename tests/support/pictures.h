// Picture builders shared by the tests.
#pragma once

#include <cstdint>
#include <cstring>
#include <iomanip>
#include <ostream>
#include <vector>

#include "effects/effects.h"

namespace effects::test {

// A buffer of n pixels with distinct, deterministic contents in every
// element, so a test notices any element an export touches by mistake.
inline std::vector<Pixel32> pattern32(size_t n, uint32_t seed = 1) {
  std::vector<Pixel32> v(n);
  uint32_t s = seed;
  for (auto& p : v) {
    s = s * 1103515245u + 12345u; p.blue = static_cast<uint8_t>(s >> 16);
    s = s * 1103515245u + 12345u; p.green = static_cast<uint8_t>(s >> 16);
    s = s * 1103515245u + 12345u; p.red = static_cast<uint8_t>(s >> 16);
    s = s * 1103515245u + 12345u; p.mask = static_cast<uint8_t>(s >> 16);
  }
  return v;
}

inline std::vector<Pixel64> pattern64(size_t n, uint32_t seed = 1) {
  std::vector<Pixel64> v(n);
  uint32_t s = seed;
  for (auto& p : v) {
    s = s * 1103515245u + 12345u; p.blue = static_cast<uint16_t>((s >> 8) % 32768u);
    s = s * 1103515245u + 12345u; p.green = static_cast<uint16_t>((s >> 8) % 32768u);
    s = s * 1103515245u + 12345u; p.red = static_cast<uint16_t>((s >> 8) % 32768u);
    s = s * 1103515245u + 12345u; p.mask = static_cast<uint16_t>((s >> 8) % 32768u);
  }
  return v;
}

inline std::vector<Pixel128> pattern128(size_t n, uint32_t seed = 1) {
  std::vector<Pixel128> v(n);
  uint32_t s = seed;
  auto next = [&s] { s = s * 1103515245u + 12345u; return static_cast<float>((s >> 8) % 2001u) / 1000.0f - 0.25f; };
  for (auto& p : v) { p.blue = next(); p.green = next(); p.red = next(); p.mask = next(); }
  return v;
}

// Byte-for-byte equality of two pixel ranges (floats compared bit for bit).
template <class P>
bool sameBytes(const std::vector<P>& a, const std::vector<P>& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(P)) == 0;
}

inline uint32_t bitsOf(float f) { uint32_t u; std::memcpy(&u, &f, 4); return u; }

}  // namespace effects::test

// Whole-pixel comparison and printing for EXPECT_EQ, found through the pixel
// types' own (global) namespace. Floats are compared bit for bit, so -0.0 and
// 0.0 differ and a NaN equals the same NaN.
inline bool operator==(const Pixel32& a, const Pixel32& b) { return std::memcmp(&a, &b, sizeof a) == 0; }
inline bool operator==(const Pixel64& a, const Pixel64& b) { return std::memcmp(&a, &b, sizeof a) == 0; }
inline bool operator==(const Pixel128& a, const Pixel128& b) { return std::memcmp(&a, &b, sizeof a) == 0; }

namespace effects::test {
template <class P>
void printPixel(const P& p, std::ostream* os) {
  *os << std::setprecision(9) << "{" << +p.blue << ", " << +p.green << ", " << +p.red << ", " << +p.mask << "}";
}
}  // namespace effects::test

inline void PrintTo(const Pixel32& p, std::ostream* os) { effects::test::printPixel(p, os); }
inline void PrintTo(const Pixel64& p, std::ostream* os) { effects::test::printPixel(p, os); }
inline void PrintTo(const Pixel128& p, std::ostream* os) { effects::test::printPixel(p, os); }
