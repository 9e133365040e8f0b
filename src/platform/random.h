// The random numbers of the noise, speck, scratch and drop effects.
//
// On Windows they come from the C runtime's rand(), so the host's srand()
// decides the sequence, as it does for everything else the host draws.
// Elsewhere the library keeps a generator of its own with the same
// arithmetic (state = state * 214013 + 2531011 modulo 2^32, draw = (state >>
// 16) & 0x7fff, first seed 1), one per thread, seeded through the export
// EffectsSeedRandom. Either way a draw is 0..32767, each thread has its own
// sequence, and the same seed gives the same picture.
#pragma once

#include <cstdint>

#if defined(_WIN32)
#include <cstdlib>
#endif

namespace effects::platform {

#if defined(_WIN32)

class RandomDraws {
 public:
  int32_t next() { return std::rand(); }
};

#else

// This thread's generator state.
uint32_t& randomState();

// Draws from the calling thread's generator; bind one per call, draw in the
// loop.
class RandomDraws {
 public:
  RandomDraws() : state_(randomState()) {}
  int32_t next() {
    state_ = state_ * 214013u + 2531011u;
    return static_cast<int32_t>((state_ >> 16) & 0x7fffu);
  }

 private:
  uint32_t& state_;
};

// Starts this thread's sequence again from `seed`.
void seedRandom(uint32_t seed);

#endif

}  // namespace effects::platform
