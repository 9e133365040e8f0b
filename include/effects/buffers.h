/* Mask utilities, inversion and new pictures. Include effects/effects.h. */
#ifndef EFFECTS_BUFFERS_H
#define EFFECTS_BUFFERS_H
#include "effects/effects.h"
EFFECTS_EXTERN_C_BEGIN

/* elementCount is four times the pixel count; ((elementCount - 1) >> 2) + 1
 * pixels are visited, and a count below 1 returns at once. */
EFFECTS_API int32_t EFFECTS_CALL VexoInvert32(int32_t elementCount, Pixel32* pixels, int32_t channel);
EFFECTS_API int32_t EFFECTS_CALL VexoInvert64(int32_t elementCount, Pixel64* pixels, int32_t channel);
EFFECTS_API int32_t EFFECTS_CALL VexoInvert128(int32_t elementCount, Pixel128* pixels, int32_t channel);
EFFECTS_API int32_t EFFECTS_CALL VexoInvertMask32(int32_t elementCount, Pixel32* pixels);
EFFECTS_API int32_t EFFECTS_CALL VexoInvertMask64(int32_t elementCount, Pixel64* pixels);
EFFECTS_API int32_t EFFECTS_CALL VexoInvertMask128(int32_t elementCount, Pixel128* pixels);
EFFECTS_API int32_t EFFECTS_CALL VexoClearMask32(int32_t elementCount, Pixel32* pixels);
EFFECTS_API int32_t EFFECTS_CALL VexoClearMask64(int32_t elementCount, Pixel64* pixels);
EFFECTS_API int32_t EFFECTS_CALL VexoClearMask128(int32_t elementCount, Pixel128* pixels);
EFFECTS_API int32_t EFFECTS_CALL VexoBlankMask32(int32_t elementCount, Pixel32* pixels);
EFFECTS_API int32_t EFFECTS_CALL VexoBlankMask64(int32_t elementCount, Pixel64* pixels);
EFFECTS_API int32_t EFFECTS_CALL VexoBlankMask128(int32_t elementCount, Pixel128* pixels);
/* Copies each pixel's mask into its blue, green and red; returns 1. */
EFFECTS_API int32_t EFFECTS_CALL Vexo32MasktoImageDIB(int32_t elementCount, Pixel32* pixels);
EFFECTS_API int32_t EFFECTS_CALL Vexo64MasktoImageDIB(int32_t elementCount, Pixel64* pixels);
EFFECTS_API int32_t EFFECTS_CALL Vexo128MasktoImageDIB(int32_t elementCount, Pixel128* pixels);
/* Note the argument order: red, green, blue, mask. */
EFFECTS_API int32_t EFFECTS_CALL VexoNewPicture32(int32_t elementCount, Pixel32* pixels, uint8_t red, uint8_t green, uint8_t blue, uint8_t mask);
EFFECTS_API int32_t EFFECTS_CALL VexoNewPicture64(int32_t elementCount, Pixel64* pixels, uint16_t red, uint16_t green, uint16_t blue, uint16_t mask);
EFFECTS_API int32_t EFFECTS_CALL VexoNewPicture128(int32_t elementCount, Pixel128* pixels, float red, float green, float blue, float mask);

EFFECTS_EXTERN_C_END
#endif
