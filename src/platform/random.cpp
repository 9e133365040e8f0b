#include "platform/random.h"

#include "effects/effects.h"

#if !defined(_WIN32)

namespace effects::platform {

uint32_t& randomState() {
  thread_local uint32_t state = 1;
  return state;
}

void seedRandom(uint32_t seed) { randomState() = seed; }

}  // namespace effects::platform

extern "C" EFFECTS_API void EFFECTS_CALL EffectsSeedRandom(uint32_t seed) { effects::platform::seedRandom(seed); }

#endif
