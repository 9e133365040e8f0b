// Seeding the library's random effects from a test, and an independent copy
// of the generator to work out what a seeded call must give.
#pragma once

#include <cstdint>
#include <cstdlib>

#include "effects/effects.h"

namespace effects::test {

// Starts the calling thread's sequence from `seed`: the C runtime's srand on
// Windows, the library's own export elsewhere.
inline void seedDraws(uint32_t seed) {
#if defined(_WIN32)
  std::srand(seed);
#else
  EffectsSeedRandom(seed);
#endif
}

// The generator the random effects draw from: state x 214013 + 2531011,
// draws (state >> 16) & 0x7fff.
struct Lcg {
  uint32_t state;
  int32_t next() {
    state = state * 214013u + 2531011u;
    return static_cast<int32_t>((state >> 16) & 0x7fffu);
  }
  // A draw scaled as the effects scale it.
  double unit() { return next() * 3.051850947599719e-05; }
};

// The seed whose `n`-th draw (1 for the first) is `draw`, found by running the
// generator backwards from a state that yields it.
inline uint32_t seedForDraw(int n, int32_t draw) {
  uint32_t inverse = 214013u;  // Newton's iteration for the inverse mod 2^32
  for (int i = 0; i < 5; ++i) inverse *= 2u - 214013u * inverse;
  uint32_t state = static_cast<uint32_t>(draw) << 16;
  for (int i = 0; i < n; ++i) state = (state - 2531011u) * inverse;
  return state;
}

}  // namespace effects::test
