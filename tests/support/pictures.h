// Picture builders and pixel comparison shared by the tests.
#pragma once

#include <cstdint>
#include <cstring>
#include <iomanip>
#include <ostream>
#include <type_traits>
#include <vector>

#include "effects/effects.h"

namespace effects::test {

// A buffer of n pixels with distinct, deterministic contents in every
// element, so a test notices any element an export touches by mistake:
// bytes, words within 0..32767, floats in -0.25..1.75.
template <class P>
std::vector<P> pattern(size_t n, uint32_t seed = 1) {
  std::vector<P> v(n);
  uint32_t s = seed;
  auto next = [&s](auto& e) {
    s = s * 1103515245u + 12345u;
    using E = std::remove_reference_t<decltype(e)>;
    if constexpr (sizeof(E) == 1) e = static_cast<E>(s >> 16);
    else if constexpr (sizeof(E) == 2) e = static_cast<E>((s >> 8) % 32768u);
    else e = static_cast<float>((s >> 8) % 2001u) / 1000.0f - 0.25f;
  };
  for (auto& p : v) { next(p.blue); next(p.green); next(p.red); next(p.mask); }
  return v;
}

inline uint32_t bitsOf(float f) { uint32_t u; std::memcpy(&u, &f, 4); return u; }

}  // namespace effects::test

// Whole-pixel comparison and printing for EXPECT_EQ (also on vectors of
// pixels), found through the pixel types' own (global) namespace. Floats are
// compared bit for bit, so -0.0 and 0.0 differ and a NaN equals the same NaN.
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
