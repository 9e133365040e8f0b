// Seeding the library's random effects from a test, and an independent copy
// of the generator to work out what a seeded call must give.
#pragma once

#include <cstdint>
#include <cstdlib>

#include "effects/effects.h"

namespace effects::test {

// The C runtime's srand on Windows, the library's own export elsewhere.
inline void seedDraws(uint32_t seed) {
#if defined(_WIN32)
  std::srand(seed);
#else
  EffectsSeedRandom(seed);
#endif
}

// state x 214013 + 2531011, draws (state >> 16) & 0x7fff, scaled by 1/32767.
struct Lcg {
  uint32_t state;
  int32_t next() { return static_cast<int32_t>(((state = state * 214013u + 2531011u) >> 16) & 0x7fffu); }
  double unit() { return next() * 3.051850947599719e-05; }
};

// The seed whose n-th draw is `draw`: the generator run backwards (with the
// multiplier's inverse modulo 2^32, by Newton's iteration).
inline uint32_t seedForDraw(int n, int32_t draw) {
  uint32_t inverse = 214013u;
  for (int i = 0; i < 5; ++i) inverse *= 2u - 214013u * inverse;
  uint32_t state = static_cast<uint32_t>(draw) << 16;
  for (int i = 0; i < n; ++i) state = (state - 2531011u) * inverse;
  return state;
}

}  // namespace effects::test
