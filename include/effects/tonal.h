/* Tonal adjustments. Include effects/effects.h. */
#ifndef EFFECTS_TONAL_H
#define EFFECTS_TONAL_H
#include "effects/effects.h"
EFFECTS_EXTERN_C_BEGIN

/* Every export changes blue, green and red in place, never the mask, and
 * returns 0. The width/height exports marked "width * 4 * height elements"
 * visit the pixels of that element count, the product formed in 32-bit
 * arithmetic (so it wraps), and return at once when it is below 1.
 * Amounts are on the 0..255 scale for the 32 and 128 members and on the
 * 0..32767 scale for the 64 members. `reserved` is ignored. */

/* amount < 0 darkens toward black, > 0 lightens toward white; 0 changes nothing. */
EFFECTS_API uint32_t EFFECTS_CALL VexoBrightness32(uint32_t width, uint32_t height, Pixel32* pixels, int32_t amount, uint32_t reserved); /* width * 4 * height elements */
EFFECTS_API uint32_t EFFECTS_CALL VexoBrightness64(uint32_t width, uint32_t height, Pixel64* pixels, int32_t amount, uint32_t reserved); /* width * 4 * height elements */
EFFECTS_API uint32_t EFFECTS_CALL VexoBrightness128(uint32_t width, uint32_t height, Pixel128* pixels, int32_t amount, uint32_t reserved); /* width * 4 * height elements */
/* Multiplies by amount / 255 + 1 (amount / 32767 + 1 for 64). */
EFFECTS_API uint32_t EFFECTS_CALL VexoBlackBrightness32(uint32_t width, uint32_t height, Pixel32* pixels, int32_t amount, uint32_t reserved); /* width * 4 * height elements */
EFFECTS_API uint32_t EFFECTS_CALL VexoBlackBrightness64(uint32_t width, uint32_t height, Pixel64* pixels, int32_t amount, uint32_t reserved); /* width * 4 * height elements */
EFFECTS_API uint32_t EFFECTS_CALL VexoBlackBrightness128(uint32_t width, uint32_t height, Pixel128* pixels, int32_t amount, uint32_t reserved); /* width * 4 * height elements */
/* Stretches about 127 (16383, 0.5) by amount / 255 (amount / 32767 for 64). */
EFFECTS_API uint32_t EFFECTS_CALL VexoContrast32(uint32_t width, uint32_t height, Pixel32* pixels, int32_t amount, uint32_t reserved); /* width * 4 * height elements */
EFFECTS_API uint32_t EFFECTS_CALL VexoContrast64(uint32_t width, uint32_t height, Pixel64* pixels, int32_t amount, uint32_t reserved); /* width * 4 * height elements */
EFFECTS_API uint32_t EFFECTS_CALL VexoContrast128(uint32_t width, uint32_t height, Pixel128* pixels, int32_t amount, uint32_t reserved); /* width * 4 * height elements */
/* Adds amount x sin(amount / 255) (mode 0) or amount x cos(amount / 255) (mode 1). */
EFFECTS_API uint32_t EFFECTS_CALL VexoXposure32(uint32_t width, uint32_t height, Pixel32* pixels, uint8_t mode, int32_t amount, uint32_t reserved); /* width * 4 * height elements */
EFFECTS_API uint32_t EFFECTS_CALL VexoXposure64(uint32_t width, uint32_t height, Pixel64* pixels, uint8_t mode, int32_t amount, uint32_t reserved); /* width * 4 * height elements */
EFFECTS_API uint32_t EFFECTS_CALL VexoXposure128(uint32_t width, uint32_t height, Pixel128* pixels, uint8_t mode, int32_t amount, uint32_t reserved); /* width * 4 * height elements */
/* Multiplies by 2^(stops / 2): two units double the intensity. */
EFFECTS_API uint32_t EFFECTS_CALL Vexofstop32(uint32_t width, uint32_t height, Pixel32* pixels, double stops); /* width * 4 * height elements */
EFFECTS_API uint32_t EFFECTS_CALL Vexofstop64(uint32_t width, uint32_t height, Pixel64* pixels, double stops); /* width * 4 * height elements */
EFFECTS_API uint32_t EFFECTS_CALL Vexofstop128(uint32_t width, uint32_t height, Pixel128* pixels, double stops); /* width * 4 * height elements */
/* gamma is limited to [0, 10]; 1 changes nothing. Gamma raises to 1 / gamma, GammatoHDR to gamma. */
EFFECTS_API uint32_t EFFECTS_CALL VexoGamma32(uint32_t width, uint32_t height, Pixel32* pixels, float gamma); /* width * 4 * height elements */
EFFECTS_API uint32_t EFFECTS_CALL VexoGamma64(uint32_t width, uint32_t height, Pixel64* pixels, float gamma); /* width * 4 * height elements */
EFFECTS_API uint32_t EFFECTS_CALL VexoGamma128(uint32_t width, uint32_t height, Pixel128* pixels, float gamma); /* width * 4 * height elements */
EFFECTS_API uint32_t EFFECTS_CALL VexoGammatoHDR32(uint32_t width, uint32_t height, Pixel32* pixels, float gamma); /* width * 4 * height elements */
EFFECTS_API uint32_t EFFECTS_CALL VexoGammatoHDR64(uint32_t width, uint32_t height, Pixel64* pixels, float gamma); /* width * 4 * height elements */
EFFECTS_API uint32_t EFFECTS_CALL VexoGammatoHDR128(uint32_t width, uint32_t height, Pixel128* pixels, float gamma); /* width * 4 * height elements */
/* Multiplies by 2 - percentage: 1 keeps, 0 doubles, 2 blackens. */
EFFECTS_API uint32_t EFFECTS_CALL VexoAdjustLevelPrecentage32(uint32_t width, uint32_t height, Pixel32* pixels, float percentage); /* width * 4 * height elements */
EFFECTS_API uint32_t EFFECTS_CALL VexoAdjustLevelPrecentage64(uint32_t width, uint32_t height, Pixel64* pixels, float percentage); /* width * 4 * height elements */
EFFECTS_API uint32_t EFFECTS_CALL VexoAdjustLevelPrecentage128(uint32_t width, uint32_t height, Pixel128* pixels, float percentage); /* width * 4 * height elements */
/* Walks height rows of width pixels; returns at once for amount 0 or height 0.
 * The 32 and 64 members multiply every chosen element below full by 1 + amount. */
EFFECTS_API uint32_t EFFECTS_CALL VexoAdjustSine32(uint32_t width, uint32_t height, Pixel32* pixels, float amount, int32_t channel);
EFFECTS_API uint32_t EFFECTS_CALL VexoAdjustSine64(uint32_t width, uint32_t height, Pixel64* pixels, float amount, int32_t channel);
EFFECTS_API uint32_t EFFECTS_CALL VexoAdjustSine128(uint32_t width, uint32_t height, Pixel128* pixels, float amount, int32_t channel);

/* The ElementCount exports visit ((elementCount - 1) >> 2) + 1 pixels and
 * return at once for a count below 1. */

/* Input points come blue, green, red, output points red, green, blue, each
 * with the high point first. */
EFFECTS_API uint32_t EFFECTS_CALL VexoAdjustLevels32(int32_t elementCount, Pixel32* pixels, int32_t blueInHigh, int32_t blueInLow, int32_t greenInHigh, int32_t greenInLow, int32_t redInHigh, int32_t redInLow, float gamma, float curveAmount, float redOutHigh, float redOutLow, float greenOutHigh, float greenOutLow, float blueOutHigh, float blueOutLow, int32_t channel);
EFFECTS_API uint32_t EFFECTS_CALL VexoAdjustLevels64(int32_t elementCount, Pixel64* pixels, int32_t blueInHigh, int32_t blueInLow, int32_t greenInHigh, int32_t greenInLow, int32_t redInHigh, int32_t redInLow, float gamma, float curveAmount, float redOutHigh, float redOutLow, float greenOutHigh, float greenOutLow, float blueOutHigh, float blueOutLow, int32_t channel);
EFFECTS_API uint32_t EFFECTS_CALL VexoAdjustLevels128(int32_t elementCount, Pixel128* pixels, int32_t blueInHigh, int32_t blueInLow, int32_t greenInHigh, int32_t greenInLow, int32_t redInHigh, int32_t redInLow, float gamma, float curveAmount, float redOutHigh, float redOutLow, float greenOutHigh, float greenOutLow, float blueOutHigh, float blueOutLow, int32_t channel);
/* Keeps each pixel's largest elements (mode 1) or their complements (mode 2). */
EFFECTS_API uint32_t EFFECTS_CALL VexoEqualizer32(int32_t elementCount, Pixel32* pixels, int32_t mode, int32_t channel);
EFFECTS_API uint32_t EFFECTS_CALL VexoEqualizer64(int32_t elementCount, Pixel64* pixels, int32_t mode, int32_t channel);
EFFECTS_API uint32_t EFFECTS_CALL VexoEqualizer128(int32_t elementCount, Pixel128* pixels, int32_t mode, int32_t channel);
/* Multiplies by the whole number amount / 100 + 1. */
EFFECTS_API uint32_t EFFECTS_CALL VexoDodge32(int32_t elementCount, Pixel32* pixels, int32_t amount);
EFFECTS_API uint32_t EFFECTS_CALL VexoDodge64(int32_t elementCount, Pixel64* pixels, int32_t amount);
EFFECTS_API uint32_t EFFECTS_CALL VexoDodge128(int32_t elementCount, Pixel128* pixels, int32_t amount);

EFFECTS_EXTERN_C_END
#endif
