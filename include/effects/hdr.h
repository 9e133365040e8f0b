/* Radiance RGBE files, the VXL layer file and tone-mapping plug-ins. Include effects/effects.h. */
#ifndef EFFECTS_HDR_H
#define EFFECTS_HDR_H
#include <stddef.h>
#include "effects/effects.h"
EFFECTS_EXTERN_C_BEGIN

/* The byte stream RGBE_ReadPixels_RLE reads: `size` bytes at `bytes`, read
 * from `position` on. The host loads the file (or part of it) and sets
 * `position` to the first byte after the header's size line; the reader
 * advances `position` past every byte it consumes. */
typedef struct EffectsStream {
  const uint8_t* bytes;
  size_t size;
  size_t position;
} EffectsStream;

/* Writers: the whole file (five header lines, then width x height flat RGBE
 * pixels). `scratch` receives the picture as float red, green, blue
 * (width x height x 3 floats). Return 0; open and write failures are not
 * reported. A width or height below 1 writes the header only. */
EFFECTS_API int32_t EFFECTS_CALL RGBE_WriteHeader_32(const char* fileName, int32_t width, int32_t height, const Pixel32* pixels, float* scratch);
EFFECTS_API int32_t EFFECTS_CALL RGBE_WriteHeader_64(const char* fileName, int32_t width, int32_t height, const Pixel64* pixels, float* scratch);
EFFECTS_API int32_t EFFECTS_CALL RGBE_WriteHeader_128(const char* fileName, int32_t width, int32_t height, const Pixel128* pixels, float* scratch);
/* Reads width x height pixels (the caller's size, not the header's) into
 * `data` as float red, green, blue; header problems go to the standard error
 * stream. Returns 0. */
EFFECTS_API int32_t EFFECTS_CALL RGBE_LoadHDR(const char* fileName, float* data, int32_t width, int32_t height);
/* Run-length (or flat) scanlines from `stream`: 0 on success, 1 on a failure
 * or when the data turned out to be flat. Never writes past width x height
 * x 3 floats. */
EFFECTS_API int32_t EFFECTS_CALL RGBE_ReadPixels_RLE(EffectsStream* stream, float* data, int32_t width, int32_t height);
/* In-memory encoders: one red, green, blue, exponent quadruple per pixel,
 * mantissas rounded to nearest (a mantissa of 256 is stored as 0). Return
 * elementCount. */
EFFECTS_API int32_t EFFECTS_CALL Convert128toRGBE(int32_t elementCount, const Pixel128* pixels, uint8_t* rgbe);
EFFECTS_API int32_t EFFECTS_CALL Convert32toRGBE(int32_t elementCount, const Pixel32* pixels, uint8_t* rgbe);
/* 2^(exponent - 136): the scale of an RGBE mantissa. */
EFFECTS_API double EFFECTS_CALL ConvertRGBEto128(uint8_t exponent);

/* Tone-mapping plug-ins: a shared library exporting, undecorated and with the
 * library's calling convention,
 *   int32_t ToneMapping128to32(intptr_t, intptr_t, intptr_t, intptr_t, intptr_t);
 *   int32_t TMOptionsUsed(intptr_t);
 * Each call loads the plug-in, calls the entry point with the values as given
 * (their meaning is agreed between host and plug-in) and unloads it. Returns
 * 0 when the entry point was called (whatever it returned), else prints
 * "Couldn't load plugin." to standard output and returns 1; a plug-in found
 * without its entry point stays loaded. */
EFFECTS_API int32_t EFFECTS_CALL CallToneMapping(const char* pluginPath, intptr_t arg1, intptr_t arg2, intptr_t arg3, intptr_t arg4, intptr_t arg5);
EFFECTS_API int32_t EFFECTS_CALL CallToneMappingOptions(const char* pluginPath, intptr_t arg1);

/* The VXL layer file: a 16-byte little-endian header (1976, 1000, the low 16
 * bits of info1 and info2, then width and height as 32-bit values) followed
 * by the pixels exactly as they lie in memory. Return 0. */
EFFECTS_API int32_t EFFECTS_CALL VexoSaveVXLFile32(const char* fileName, int32_t width, int32_t height, int32_t info1, int32_t info2, const Pixel32* pixels); /* width * 4 * height elements */
EFFECTS_API int32_t EFFECTS_CALL VexoSaveVXLFile64(const char* fileName, int32_t width, int32_t height, int32_t info1, int32_t info2, const Pixel64* pixels); /* width * 4 * height elements */
EFFECTS_API int32_t EFFECTS_CALL VexoSaveVXLFile128(const char* fileName, int32_t width, int32_t height, int32_t info1, int32_t info2, const Pixel128* pixels); /* width * 4 * height elements */

EFFECTS_EXTERN_C_END
#endif
