/* Colour adjustments. Include effects/effects.h. */
#ifndef EFFECTS_COLOUR_H
#define EFFECTS_COLOUR_H
#include "effects/effects.h"
EFFECTS_EXTERN_C_BEGIN

/* Every export here works in place on blue, green and red, never on the mask,
 * and returns 0. Two size conventions occur: elementCount (four per pixel;
 * ((elementCount - 1) >> 2) + 1 pixels, nothing below 1) or width, height
 * (rows of width pixels, packed). A packed colour argument holds red in bits
 * 0-7, green in bits 8-15 and blue in bits 16-23. A channel argument is 1 (all
 * three), 2 (red), 3 (green) or 4 (blue); other values change nothing. */

/* amount -255 (grey) .. 0 (unchanged) .. 512 for 32; the 64 and 128 members
 * take -32767 .. 65534. */
EFFECTS_API uint32_t EFFECTS_CALL VexoSaturation32(int32_t elementCount, Pixel32* pixels, int32_t amount);
EFFECTS_API uint32_t EFFECTS_CALL VexoSaturation64(int32_t elementCount, Pixel64* pixels, int32_t amount);
EFFECTS_API uint32_t EFFECTS_CALL VexoSaturation128(int32_t elementCount, Pixel128* pixels, int32_t amount);
/* hue 0..350 in seven sectors of 50; 0 and 350 leave the picture unchanged. */
EFFECTS_API uint32_t EFFECTS_CALL VexoHue32(int32_t width, int32_t height, Pixel32* pixels, int32_t hue);
EFFECTS_API uint32_t EFFECTS_CALL VexoHue64(int32_t width, int32_t height, Pixel64* pixels, int32_t hue);
EFFECTS_API uint32_t EFFECTS_CALL VexoHue128(int32_t width, int32_t height, Pixel128* pixels, int32_t hue);
/* filter 1 red, 2 green, 3 blue, 4 yellow, 5 magenta, 6 cyan. */
EFFECTS_API uint32_t EFFECTS_CALL VexoColorFilter32(int32_t elementCount, Pixel32* pixels, int32_t filter);
EFFECTS_API uint32_t EFFECTS_CALL VexoColorFilter64(int32_t elementCount, Pixel64* pixels, int32_t filter);
EFFECTS_API uint32_t EFFECTS_CALL VexoColorFilter128(int32_t elementCount, Pixel128* pixels, int32_t filter);
/* channel 2, 3 or 4: that channel's value is copied into the other two. */
EFFECTS_API uint32_t EFFECTS_CALL VexoRGBChannelFilter32(int32_t elementCount, Pixel32* pixels, int32_t channel);
EFFECTS_API uint32_t EFFECTS_CALL VexoRGBChannelFilter64(int32_t elementCount, Pixel64* pixels, int32_t channel);
EFFECTS_API uint32_t EFFECTS_CALL VexoRGBChannelFilter128(int32_t elementCount, Pixel128* pixels, int32_t channel);
/* order 1 blue<->red, 2 green<->red, 3 blue<->green, 4 and 5 rotations. */
EFFECTS_API uint32_t EFFECTS_CALL VexoColorSwitch32(int32_t elementCount, Pixel32* pixels, int32_t order);
EFFECTS_API uint32_t EFFECTS_CALL VexoColorSwitch64(int32_t elementCount, Pixel64* pixels, int32_t order);
EFFECTS_API uint32_t EFFECTS_CALL VexoColorSwitch128(int32_t elementCount, Pixel128* pixels, int32_t order);
EFFECTS_API uint32_t EFFECTS_CALL VexoReplaceColor32(int32_t elementCount, Pixel32* pixels, uint32_t matchColour, uint32_t newColour, int32_t tolerance);
EFFECTS_API uint32_t EFFECTS_CALL VexoReplaceColor64(int32_t elementCount, Pixel64* pixels, uint32_t matchColour, uint32_t newColour, int32_t tolerance);
EFFECTS_API uint32_t EFFECTS_CALL VexoReplaceColor128(int32_t elementCount, Pixel128* pixels, uint32_t matchColour, uint32_t newColour, int32_t tolerance);
/* Adds a clamped offset per channel (the 128 member scales by 1/255). */
EFFECTS_API uint32_t EFFECTS_CALL VexoAdjust1Colors32(int32_t width, int32_t height, Pixel32* pixels, int32_t redDelta, int32_t greenDelta, int32_t blueDelta);
EFFECTS_API uint32_t EFFECTS_CALL VexoAdjust1Colors64(int32_t width, int32_t height, Pixel64* pixels, int32_t redDelta, int32_t greenDelta, int32_t blueDelta);
EFFECTS_API uint32_t EFFECTS_CALL VexoAdjust1Colors128(int32_t width, int32_t height, Pixel128* pixels, int32_t redDelta, int32_t greenDelta, int32_t blueDelta);
/* Adds a sine-shaped offset per channel. */
EFFECTS_API uint32_t EFFECTS_CALL VexoAdjust0Colors32(int32_t width, int32_t height, Pixel32* pixels, int32_t redAmount, int32_t greenAmount, int32_t blueAmount);
EFFECTS_API uint32_t EFFECTS_CALL VexoAdjust0Colors64(int32_t width, int32_t height, Pixel64* pixels, int32_t redAmount, int32_t greenAmount, int32_t blueAmount);
EFFECTS_API uint32_t EFFECTS_CALL VexoAdjust0Colors128(int32_t width, int32_t height, Pixel128* pixels, int32_t redAmount, int32_t greenAmount, int32_t blueAmount);
/* Adds a constant that wraps around (8-bit, 16-bit) instead of clamping. */
EFFECTS_API uint32_t EFFECTS_CALL VexoCustomBacterial32(int32_t elementCount, Pixel32* pixels, uint8_t redAdd, uint8_t greenAdd, uint8_t blueAdd, int32_t channel);
EFFECTS_API uint32_t EFFECTS_CALL VexoCustomBacterial64(int32_t elementCount, Pixel64* pixels, uint16_t redAdd, uint16_t greenAdd, uint16_t blueAdd, int32_t channel);
EFFECTS_API uint32_t EFFECTS_CALL VexoCustomBacterial128(int32_t elementCount, Pixel128* pixels, int32_t redAdd, int32_t greenAdd, int32_t blueAdd, int32_t channel);
/* Every colour element becomes 0 (below 26) or 51. */
EFFECTS_API uint32_t EFFECTS_CALL VexoWebColour32(int32_t elementCount, Pixel32* pixels);
EFFECTS_API uint32_t EFFECTS_CALL VexoWebColour64(int32_t elementCount, Pixel64* pixels);
/* Equal-weight grey written to the chosen channels. */
EFFECTS_API uint32_t EFFECTS_CALL VexoGrayScale32(int32_t elementCount, Pixel32* pixels, int32_t channel);
EFFECTS_API uint32_t EFFECTS_CALL VexoGrayScale64(int32_t elementCount, Pixel64* pixels, int32_t channel);
EFFECTS_API uint32_t EFFECTS_CALL VexoGrayScale128(int32_t elementCount, Pixel128* pixels, int32_t channel);
/* Warm tint on red and green; channel 4 does nothing. */
EFFECTS_API uint32_t EFFECTS_CALL VexoAgedPhoto32(int32_t elementCount, Pixel32* pixels, int32_t channel);
EFFECTS_API uint32_t EFFECTS_CALL VexoAgedPhoto64(int32_t elementCount, Pixel64* pixels, int32_t channel);
EFFECTS_API uint32_t EFFECTS_CALL VexoAgedPhoto128(int32_t elementCount, Pixel128* pixels, int32_t channel);
/* Row 0 and column 0 are never examined; reserved is ignored. */
EFFECTS_API uint32_t EFFECTS_CALL VexoRedEyeRemover32(int32_t width, int32_t height, Pixel32* pixels, int32_t reserved, int32_t threshold);
EFFECTS_API uint32_t EFFECTS_CALL VexoRedEyeRemover64(int32_t width, int32_t height, Pixel64* pixels, int32_t reserved, int32_t threshold);
EFFECTS_API uint32_t EFFECTS_CALL VexoRedEyeRemover128(int32_t width, int32_t height, Pixel128* pixels, int32_t reserved, int32_t threshold);
/* Brightens channels that are dark for their range; allocates a copy. */
EFFECTS_API uint32_t EFFECTS_CALL VexoAutoColorCorrectionLDC32(int32_t width, int32_t height, Pixel32* pixels);
/* c' = M - c, M the largest colour value in the whole buffer. */
EFFECTS_API uint32_t EFFECTS_CALL VexoVariableRangeInvert128(int32_t elementCount, Pixel128* pixels, int32_t channel);

EFFECTS_EXTERN_C_END
#endif
