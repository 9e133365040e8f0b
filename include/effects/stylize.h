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
 * levels change nothing. Each element is decided on its value at entry; the
 * 64 members compare elements read as signed 16-bit values. */
EFFECTS_API int32_t EFFECTS_CALL VexoPolarPass32(int32_t elementCount, Pixel32* pixels, int32_t level, int32_t channel);
EFFECTS_API int32_t EFFECTS_CALL VexoPolarPass64(int32_t elementCount, Pixel64* pixels, int32_t level, int32_t channel);
EFFECTS_API int32_t EFFECTS_CALL VexoPolarPass128(int32_t elementCount, Pixel128* pixels, int32_t level, int32_t channel);
/* Per channel: below its low limit 0, then above its high limit full. Limits
 * on the 0..255 scale for 32 and 128, 0..32767 for 64. The 32 and 64 members
 * change nothing when every high is full and every low 0. */
EFFECTS_API int32_t EFFECTS_CALL VexoMultiPolarPass32(int32_t elementCount, Pixel32* pixels, int32_t blueHigh, int32_t blueLow, int32_t greenHigh, int32_t greenLow, int32_t redHigh, int32_t redLow);
EFFECTS_API int32_t EFFECTS_CALL VexoMultiPolarPass64(int32_t elementCount, Pixel64* pixels, int32_t blueHigh, int32_t blueLow, int32_t greenHigh, int32_t greenLow, int32_t redHigh, int32_t redLow);
EFFECTS_API int32_t EFFECTS_CALL VexoMultiPolarPass128(int32_t elementCount, Pixel128* pixels, int32_t blueHigh, int32_t blueLow, int32_t greenHigh, int32_t greenLow, int32_t redHigh, int32_t redLow);

/* Random effects. They draw from the calling thread's sequence: on Windows the
 * C runtime's rand() (seed it with srand), elsewhere the library's own
 * generator with the same arithmetic, seeded with EffectsSeedRandom (seed 1
 * until then). The same seed gives the same picture.
 *
 * Pixel noise: count x count times, a pixel (row drawn first, then column)
 * gets blue, green and red each raised by draw / 32767 x its noise amount,
 * truncated and clamped (0..255 for 32, 0..32767 for 64). The 128 member
 * adds draw / 32767 x amount / 255 and does not clamp. */
EFFECTS_API int32_t EFFECTS_CALL VexoPixelNoise32(int32_t width, int32_t height, Pixel32* pixels, int32_t count, int32_t redNoise, int32_t greenNoise, int32_t blueNoise);
EFFECTS_API int32_t EFFECTS_CALL VexoPixelNoise64(int32_t width, int32_t height, Pixel64* pixels, int32_t count, int32_t redNoise, int32_t greenNoise, int32_t blueNoise);
EFFECTS_API int32_t EFFECTS_CALL VexoPixelNoise128(int32_t width, int32_t height, Pixel128* pixels, int32_t count, int32_t redNoise, int32_t greenNoise, int32_t blueNoise);
/* Specks: for every pixel of the even rows, two draws give a distance down
 * and one to the right (0..spread), and the pixel there gets the three
 * amounts added (clamped; the 128 member adds amount / 255 unclamped). A speck
 * past the right edge lands on a following row; one past the end of the
 * picture, or before its start (a negative spread), is skipped. */
EFFECTS_API int32_t EFFECTS_CALL VexoDiffuse32(int32_t width, int32_t height, Pixel32* pixels, int32_t spread, int32_t redAdd, int32_t greenAdd, int32_t blueAdd);
EFFECTS_API int32_t EFFECTS_CALL VexoDiffuse64(int32_t width, int32_t height, Pixel64* pixels, int32_t spread, int32_t redAdd, int32_t greenAdd, int32_t blueAdd);
EFFECTS_API int32_t EFFECTS_CALL VexoDiffuse128(int32_t width, int32_t height, Pixel128* pixels, int32_t spread, int32_t redAdd, int32_t greenAdd, int32_t blueAdd);
/* Dark film scratches: verticalLines columns, then horizontalLines rows, each
 * at a drawn position 0..width (0..height); every pixel on it except the
 * first is multiplied by a fresh draw / 32767. A column at exactly width runs
 * down the first column one row lower; a row at exactly height is drawn but
 * not written. */
EFFECTS_API int32_t EFFECTS_CALL VexoAgedLines32(int32_t width, int32_t height, Pixel32* pixels, int32_t verticalLines, int32_t horizontalLines);
EFFECTS_API int32_t EFFECTS_CALL VexoAgedLines64(int32_t width, int32_t height, Pixel64* pixels, int32_t verticalLines, int32_t horizontalLines);
EFFECTS_API int32_t EFFECTS_CALL VexoAgedLines128(int32_t width, int32_t height, Pixel128* pixels, int32_t verticalLines, int32_t horizontalLines);
/* Rain drops on glass: drops round drops (none below 1), each with three draws:
 * its centre column (0..width - 1), centre row (0..height - 1) and radius (1
 * .. radius, which is clamped to 1..64). A drop magnifies what lies under it
 * (a lens that bulges toward its centre), is lit from the upper left, has a
 * dark rim on its lower right and a highlight spot a third of the way to its
 * upper left. Each drop sees the picture as the earlier drops left it. */
EFFECTS_API int32_t EFFECTS_CALL VexoRainDrops32(int32_t width, int32_t height, Pixel32* pixels, int32_t drops, int32_t radius);
EFFECTS_API int32_t EFFECTS_CALL VexoRainDrops64(int32_t width, int32_t height, Pixel64* pixels, int32_t drops, int32_t radius);

#if !defined(_WIN32)
/* Starts the calling thread's random sequence again from seed (Linux and the
 * other non-Windows builds; on Windows the host calls srand). Each thread has
 * its own sequence, starting from seed 1. */
EFFECTS_API void EFFECTS_CALL EffectsSeedRandom(uint32_t seed);
#endif

/* Screen patterns. Pixelizer: the offsets are added (clamped) to the pixels
 * on even rows and even columns; the 128 member adds offset / 255 unclamped. */
EFFECTS_API int32_t EFFECTS_CALL VexoPixelizer32(int32_t width, int32_t height, Pixel32* pixels, int32_t redOffset, int32_t greenOffset, int32_t blueOffset);
EFFECTS_API int32_t EFFECTS_CALL VexoPixelizer64(int32_t width, int32_t height, Pixel64* pixels, int32_t redOffset, int32_t greenOffset, int32_t blueOffset);
EFFECTS_API int32_t EFFECTS_CALL VexoPixelizer128(int32_t width, int32_t height, Pixel128* pixels, int32_t redOffset, int32_t greenOffset, int32_t blueOffset);
/* Doubled scan lines: each even row's colour is copied into the row below. */
EFFECTS_API int32_t EFFECTS_CALL VexoMonitor32(int32_t width, int32_t height, Pixel32* pixels);
EFFECTS_API int32_t EFFECTS_CALL VexoMonitor64(int32_t width, int32_t height, Pixel64* pixels);
EFFECTS_API int32_t EFFECTS_CALL VexoMonitor128(int32_t width, int32_t height, Pixel128* pixels);
/* Green phosphor: on the chosen pixels green + 150 (clamped; 64: + 19274; 128:
 * + 0.5882137516403699 unclamped), blue and red 0. Display3: every third
 * column; Display4: every third row; Display5: every third column of every
 * third row. */
EFFECTS_API int32_t EFFECTS_CALL VexoDigitalDisplay332(int32_t width, int32_t height, Pixel32* pixels);
EFFECTS_API int32_t EFFECTS_CALL VexoDigitalDisplay364(int32_t width, int32_t height, Pixel64* pixels);
EFFECTS_API int32_t EFFECTS_CALL VexoDigitalDisplay3128(int32_t width, int32_t height, Pixel128* pixels);
EFFECTS_API int32_t EFFECTS_CALL VexoDigitalDisplay432(int32_t width, int32_t height, Pixel32* pixels);
EFFECTS_API int32_t EFFECTS_CALL VexoDigitalDisplay464(int32_t width, int32_t height, Pixel64* pixels);
EFFECTS_API int32_t EFFECTS_CALL VexoDigitalDisplay4128(int32_t width, int32_t height, Pixel128* pixels);
EFFECTS_API int32_t EFFECTS_CALL VexoDigitalDisplay532(int32_t width, int32_t height, Pixel32* pixels);
EFFECTS_API int32_t EFFECTS_CALL VexoDigitalDisplay564(int32_t width, int32_t height, Pixel64* pixels);
EFFECTS_API int32_t EFFECTS_CALL VexoDigitalDisplay5128(int32_t width, int32_t height, Pixel128* pixels);
/* Warm grid: red + 79 and green + 41 (capped) on every even row, then again
 * on every even column. The 64 member adds 10151 and 5268 (capped at 32767).
 * The 128 member adds 10151.0 and 5268.0 on the even rows and 10151/32767
 * and 5268/32767 on the even columns, uncapped. reserved is ignored. */
EFFECTS_API int32_t EFFECTS_CALL VexoThachet32(int32_t width, int32_t height, Pixel32* pixels, int32_t reserved);
EFFECTS_API int32_t EFFECTS_CALL VexoThachet64(int32_t width, int32_t height, Pixel64* pixels, int32_t reserved);
EFFECTS_API int32_t EFFECTS_CALL VexoThachet128(int32_t width, int32_t height, Pixel128* pixels, int32_t reserved);
/* Two-channel cast, mode 1..6 choosing which channels get the strong (79) and
 * weak (41) additions: 1 red/green, 2 red/blue, 3 blue/green, 4 blue/red,
 * 5 green/blue, 6 green/red. The 32 member wraps modulo 256; the 64 member
 * adds 10151 and 5268 clamped; the 128 member 10151/32767 and 5268/32767
 * unclamped. */
EFFECTS_API int32_t EFFECTS_CALL VexoBacterial32(int32_t width, int32_t height, Pixel32* pixels, int32_t mode, int32_t channel);
EFFECTS_API int32_t EFFECTS_CALL VexoBacterial64(int32_t width, int32_t height, Pixel64* pixels, int32_t mode, int32_t channel);
EFFECTS_API int32_t EFFECTS_CALL VexoBacterial128(int32_t width, int32_t height, Pixel128* pixels, int32_t mode, int32_t channel);

/* Ghosts. 3D goggles: in raster order, the pixel 3 right and 3 down of (x, y)
 * gets red and blue averaged from (x, y) and (x + 6, y + 6); the ghost
 * compounds along the diagonal. Needs at least 7 x 7 pixels. Double vision:
 * each pixel's colour is averaged with the pixel 15 to its right (the last 15
 * columns stay). The 128 members average in double precision. */
EFFECTS_API int32_t EFFECTS_CALL Vexo3DGoggles32(int32_t width, int32_t height, Pixel32* pixels);
EFFECTS_API int32_t EFFECTS_CALL Vexo3DGoggles64(int32_t width, int32_t height, Pixel64* pixels);
EFFECTS_API int32_t EFFECTS_CALL Vexo3DGoggles128(int32_t width, int32_t height, Pixel128* pixels);
EFFECTS_API int32_t EFFECTS_CALL VexoDoubleVision32(int32_t width, int32_t height, Pixel32* pixels);
EFFECTS_API int32_t EFFECTS_CALL VexoDoubleVision64(int32_t width, int32_t height, Pixel64* pixels);
EFFECTS_API int32_t EFFECTS_CALL VexoDoubleVision128(int32_t width, int32_t height, Pixel128* pixels);

/* Diagonal relief, in raster order from (1, 1): each colour element becomes
 * (c - p) x amount + c / divisor, p the same element of the upper-left pixel
 * as already rewritten, clamped to 0..255 (in the 64 member too); the 128
 * member computes in single precision with 1 / divisor and does not clamp.
 * Row 0 and column 0 stay. A divisor of 0 changes nothing. */
EFFECTS_API int32_t EFFECTS_CALL VexoRoughen32(int32_t width, int32_t height, Pixel32* pixels, int32_t amount, int32_t divisor);
EFFECTS_API int32_t EFFECTS_CALL VexoRoughen64(int32_t width, int32_t height, Pixel64* pixels, int32_t amount, int32_t divisor);
EFFECTS_API int32_t EFFECTS_CALL VexoRoughen128(int32_t width, int32_t height, Pixel128* pixels, int32_t amount, int32_t divisor);

/* Oil paint: every pixel takes the mean colour of the most common brightness
 * level within brushSize pixels of it (a square of side 2 x brushSize + 1,
 * cut at the picture's edges). brushSize is clamped to 1..5 and levels to
 * 10..255; a pixel's level is (B + G + R) x levels / 766 on the 8-bit scale,
 * ties go to the darker level, and the mean is rounded half up. The colour is
 * 8 bits a channel in every layout: the 64 member reads element >> 7 and
 * writes round(v x 32767 / 255), the 128 member reads round(element x 255)
 * clamped to 0..255 and writes v / 255, so bright HDR values end at 1.0. */
EFFECTS_API int32_t EFFECTS_CALL VexoOilPaint32(int32_t width, int32_t height, Pixel32* pixels, int32_t brushSize, int32_t levels);
EFFECTS_API int32_t EFFECTS_CALL VexoOilPaint64(int32_t width, int32_t height, Pixel64* pixels, int32_t brushSize, int32_t levels);
EFFECTS_API int32_t EFFECTS_CALL VexoOilPaint128(int32_t width, int32_t height, Pixel128* pixels, int32_t brushSize, int32_t levels);

/* Polished metal: a grey picture from the luminance Y (0.2125 R + 0.7154 G +
 * 0.0721 B, 0..1). bands (clamped to 1..8) folds Y into 2 x bands - 1 light
 * and dark swings (1: Y itself; black stays black and white stays white);
 * sheen (clamped to 0..100) adds sheen / 25 times the luminance step from the
 * lower-right neighbour to the upper-left one, an embossed relief. */
EFFECTS_API int32_t EFFECTS_CALL VexoMetallic32(int32_t width, int32_t height, Pixel32* pixels, int32_t bands, int32_t sheen);
EFFECTS_API int32_t EFFECTS_CALL VexoMetallic64(int32_t width, int32_t height, Pixel64* pixels, int32_t bands, int32_t sheen);

EFFECTS_EXTERN_C_END
#endif
