/* Stylize effects. Include effects/effects.h. */
#ifndef EFFECTS_STYLIZE_H
#define EFFECTS_STYLIZE_H
#include "effects/effects.h"
EFFECTS_EXTERN_C_BEGIN

/* Every export works in place and returns 0; the mask is never changed.
 * Two size conventions occur. elementCount: four elements a pixel,
 * ((elementCount - 1) >> 2) + 1 pixels, nothing below 1. width, height: rows
 * of width pixels packed one after another, row 0 first; a width or height
 * below 1 changes nothing (and draws no random numbers). A channel argument is
 * 1 (blue, green and red), 2 (red), 3 (green) or 4 (blue); other values change
 * nothing. The 64 members read and clamp on the 0..32767 scale; the 128
 * members do not clamp unless said. */

#if !defined(_WIN32)
/* Starts the calling thread's random sequence again from seed (Linux and the
 * other non-Windows builds; on Windows the host calls srand). Each thread has
 * its own sequence, starting from seed 1. */
EFFECTS_API void EFFECTS_CALL EffectsSeedRandom(uint32_t seed);
#endif

EFFECTS_EXTERN_C_END
#endif
