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

/* Thresholds on the sum B + G + R. Dark step: a sum at most the level's dark
 * limit sets the chosen channels to 0; bright step: the sum taken again, above
 * the bright limit, sets them to full. Levels 1, 2, 3 have the limits 200/200,
 * 383/382 and 500/500 (64: 8566, 16404, 21416; 128: 0.26142155217139196,
 * 0.5006256294442579, 0.6535843989379558); any other level changes nothing.
 * The 64 members read elements as signed 16-bit values. */
EFFECTS_API int32_t EFFECTS_CALL VexoHalftone32(int32_t elementCount, Pixel32* pixels, int32_t level, int32_t channel);
EFFECTS_API int32_t EFFECTS_CALL VexoHalftone64(int32_t elementCount, Pixel64* pixels, int32_t level, int32_t channel);
EFFECTS_API int32_t EFFECTS_CALL VexoHalftone128(int32_t elementCount, Pixel128* pixels, int32_t level, int32_t channel);
/* The mask becomes full above 50 (64: at least 6425; 128: above
 * 0.19605090487380597), otherwise 0. The only stylize exports that change the
 * mask. */
EFFECTS_API int32_t EFFECTS_CALL VexoHalftoneMask32(int32_t elementCount, Pixel32* pixels);
EFFECTS_API int32_t EFFECTS_CALL VexoHalftoneMask64(int32_t elementCount, Pixel64* pixels);
EFFECTS_API int32_t EFFECTS_CALL VexoHalftoneMask128(int32_t elementCount, Pixel128* pixels);
/* Only when enable is 1: a sum at most limit makes the pixel black, then a
 * sum above limit makes it white. limit is on the sum's own scale in every
 * layout (0..765, 0..98301, 0.0..3.0). */
EFFECTS_API int32_t EFFECTS_CALL VexoCustomHalftone32(int32_t elementCount, Pixel32* pixels, int32_t limit, int32_t enable);
EFFECTS_API int32_t EFFECTS_CALL VexoCustomHalftone64(int32_t elementCount, Pixel64* pixels, int32_t limit, int32_t enable);
EFFECTS_API int32_t EFFECTS_CALL VexoCustomHalftone128(int32_t elementCount, Pixel128* pixels, int32_t limit, int32_t enable);

/* Three-zone posterize of the chosen channels: below the level's low limit 0,
 * above its high limit full, in between unchanged. level 1..4 gives 50/200,
 * 75/150, 127/128, 200/200 (64 and 128: the same on the 16-bit grid); other
 * levels change nothing. */
EFFECTS_API int32_t EFFECTS_CALL VexoPolarPass32(int32_t elementCount, Pixel32* pixels, int32_t level, int32_t channel);
EFFECTS_API int32_t EFFECTS_CALL VexoPolarPass64(int32_t elementCount, Pixel64* pixels, int32_t level, int32_t channel);
EFFECTS_API int32_t EFFECTS_CALL VexoPolarPass128(int32_t elementCount, Pixel128* pixels, int32_t level, int32_t channel);
/* Per channel: below its low limit 0, then above its high limit full. Limits
 * on the 0..255 scale for 32 and 128, 0..32767 for 64. The 32 and 64 members
 * change nothing when every high is full and every low 0. */
EFFECTS_API int32_t EFFECTS_CALL VexoMultiPolarPass32(int32_t elementCount, Pixel32* pixels, int32_t blueHigh, int32_t blueLow, int32_t greenHigh, int32_t greenLow, int32_t redHigh, int32_t redLow);
EFFECTS_API int32_t EFFECTS_CALL VexoMultiPolarPass64(int32_t elementCount, Pixel64* pixels, int32_t blueHigh, int32_t blueLow, int32_t greenHigh, int32_t greenLow, int32_t redHigh, int32_t redLow);
EFFECTS_API int32_t EFFECTS_CALL VexoMultiPolarPass128(int32_t elementCount, Pixel128* pixels, int32_t blueHigh, int32_t blueLow, int32_t greenHigh, int32_t greenLow, int32_t redHigh, int32_t redLow);

#if !defined(_WIN32)
/* Starts the calling thread's random sequence again from seed (Linux and the
 * other non-Windows builds; on Windows the host calls srand). Each thread has
 * its own sequence, starting from seed 1. */
EFFECTS_API void EFFECTS_CALL EffectsSeedRandom(uint32_t seed);
#endif

EFFECTS_EXTERN_C_END
#endif
