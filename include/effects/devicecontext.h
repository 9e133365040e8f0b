/* Selection, fill and the device-context entry points. Include effects/effects.h.
 *
 * A device context and a bitmap are an HDC and an HBITMAP on Windows and an
 * EffectsDeviceContext* and an EffectsBitmap* elsewhere (see
 * effects/surface.h). The exports that take a (device context, bitmap) pair
 * read the bitmap through GDI as a 24-bit picture (rows of blue, green, red
 * bytes padded to 4 bytes, bottom row first; no mask), change it, and write
 * it back with SetDIBits: to the same bitmap for the in-place exports
 * (hdc, hbm), to another for the source-to-destination ones (hdcDest, hbmDest,
 * hdcSrc, hbmSrc; the picture keeps the source's size, and GDI places it on
 * the destination as SetDIBits does). Their result is -1 when GDI cannot
 * describe the (source) bitmap, 0 when its pixels cannot be read or there is
 * no memory to read them into (nothing is written then), and otherwise the
 * number of scan lines read. Written pixels get a fourth byte of 0 on a 32-bit
 * bitmap, as GDI gives any 24-bit picture. A colour passed as one value is a
 * COLORREF: red in bits 0-7, green 8-15, blue 16-23.
 */
#ifndef EFFECTS_DEVICECONTEXT_H
#define EFFECTS_DEVICECONTEXT_H
#include "effects/effects.h"
EFFECTS_EXTERN_C_BEGIN

/* ---------------------------------------------------------------- selection */

/* Four-way flood fill on the bitmap selected into hdc: from (x, y), every
 * pixel whose colour is exactly (red, green, blue) is painted black
 * (SetPixelV(hdc, x, y, 0)), visiting right, down, left, then up; x is bounded
 * above by both limitX and limitX2 and below by 0, y only below by 0. Two
 * bounds keep the fill finite where the plain walk would not end: a pixel
 * already painted by this call is not entered again (a black target would
 * otherwise match forever), and a point outside the bitmap (where GetPixel
 * answers CLR_INVALID) never matches (a white target would otherwise run on
 * below the bitmap). So the fill visits each pixel of the bitmap at most once
 * and paints at most all of them; its pending steps are kept on the heap (12
 * bytes per painted pixel at most, and one bit per pixel of the rows it
 * reaches), not on the call stack. Should that memory run out, the fill stops
 * where it is. */
EFFECTS_API void EFFECTS_CALL VexoMagicWand(void* hdc, int32_t x, int32_t y, int32_t limitX, int32_t limitX2, uint32_t red, uint32_t green, uint32_t blue);

/* Paint bucket without connectivity: every pixel's red, green, blue (as
 * channel selects: 1 all, 2 red, 3 green, 4 blue) becomes colour's byte; the
 * 16-bit member stores byte x 128 (so 255 gives 32640), the float one
 * byte x 1/255 in single precision; the mask is untouched. Return 0. */
EFFECTS_API int32_t EFFECTS_CALL VexoBucket32(int32_t elementCount, Pixel32* pixels, uint32_t colour, int32_t channel);
EFFECTS_API int32_t EFFECTS_CALL VexoBucket64(int32_t elementCount, Pixel64* pixels, uint32_t colour, int32_t channel);
EFFECTS_API int32_t EFFECTS_CALL VexoBucket128(int32_t elementCount, Pixel128* pixels, uint32_t colour, int32_t channel);
/* The same fill on the source bitmap's picture, written to the destination. */
EFFECTS_API int32_t EFFECTS_CALL VexoBucket(void* hdcDest, void* hbmDest, void* hdcSrc, void* hbmSrc, uint32_t colour, int32_t channel);

/* Writes every pixel's mask from its colour (low = strong match). With t the
 * tolerance: mode 0 gives full if blue or green exceeds t, else full - red
 * (pure red gives 0); mode 1 keys on green (full if blue or red exceeds t),
 * mode 2 on blue (full if green or red exceeds t); mode 3 gives, where every
 * channel lies within t of (red, green, blue), the mean of the three absolute
 * differences (integer division by 3; the float member multiplies by
 * 0.33333334f), else full; any other mode writes 0. The 16-bit member takes
 * t and the colour unscaled and compares elements as signed 16-bit values;
 * the float member scales t and the colour by 1/255. The integer members
 * form the bounds and differences in wrapping 32-bit arithmetic and store
 * the low bits of the mean. Return 0. */
EFFECTS_API int32_t EFFECTS_CALL VexoColorMask32(int32_t width, int32_t height, Pixel32* pixels, int32_t mode, int32_t tolerance, int32_t red, int32_t green, int32_t blue);
EFFECTS_API int32_t EFFECTS_CALL VexoColorMask64(int32_t width, int32_t height, Pixel64* pixels, int32_t mode, int32_t tolerance, int32_t red, int32_t green, int32_t blue);
EFFECTS_API int32_t EFFECTS_CALL VexoColorMask128(int32_t width, int32_t height, Pixel128* pixels, int32_t mode, int32_t tolerance, int32_t red, int32_t green, int32_t blue);

/* Darkens to a quarter (blue, green, red shifted right by 2) every pixel
 * outside the inclusive rectangle left..right x top..bottom; the mask is
 * untouched. Return 0. */
EFFECTS_API int32_t EFFECTS_CALL VexoCropPreview32(int32_t width, int32_t height, Pixel32* pixels, int32_t left, int32_t top, int32_t right, int32_t bottom);

/* Makes the destination white with the size of the source: a white 24-bit
 * picture of the source's size is written to it. Returns -1 when GDI cannot
 * describe the source (or there is no memory for the picture), otherwise what
 * GDI's description of the source returned (its scan lines). */
EFFECTS_API int32_t EFFECTS_CALL VexoWhiteCanvas(void* hdcDest, void* hbmDest, void* hdcSrc, void* hbmSrc);

/* ---------------------------------------------------------- adjustments */

/* The 32-bit buffer exports' arithmetic on the bitmap's pixels:
 * VexoSaturation32, VexoHue32, VexoInvert32, VexoGrayScale32 and
 * VexoRGBChannelFilter32 exactly. */
EFFECTS_API int32_t EFFECTS_CALL VexoSaturation(void* hdc, void* hbm, int32_t amount);
EFFECTS_API int32_t EFFECTS_CALL VexoHue(void* hdc, void* hbm, int32_t hue);
EFFECTS_API int32_t EFFECTS_CALL VexoInvert(void* hdcDest, void* hbmDest, void* hdcSrc, void* hbmSrc, int32_t channel);
EFFECTS_API int32_t EFFECTS_CALL VexoGrayScale(void* hdcDest, void* hbmDest, void* hdcSrc, void* hbmSrc, int32_t channel);
EFFECTS_API int32_t EFFECTS_CALL VexoRGBChannelFilter(void* hdc, void* hbm, int32_t channel);

/* Colour filters 1-3 as VexoColorFilter32 (red, green or blue alone); 4-6
 * mix their two bytes as signed 8-bit values: (a + b) / 2 truncated toward
 * zero, low byte stored, so red 200 and green 50 give 253. Other filters
 * change nothing (the picture is still written). reserved and reserved2 are
 * ignored. */
EFFECTS_API int32_t EFFECTS_CALL VexoColorFilter(void* hdcDest, void* hbmDest, void* hdcSrc, void* hbmSrc, int32_t reserved, int32_t filter, int32_t reserved2);

/* Gamma through a table: gamma limited to 0..10, entry i = trunc(pow(i / 255,
 * 1 / gamma) x 255), also at gamma 1. */
EFFECTS_API int32_t EFFECTS_CALL VexoGamma(void* hdc, void* hbm, float gamma);
/* Whole stops: each channel times 2^stops, truncated and limited to 0..255. */
EFFECTS_API int32_t EFFECTS_CALL Vexofstop(void* hdc, void* hbm, double stops);
/* Six-level web palette: 0-25 -> 0, 26-77 -> 51, 78-128 -> 102,
 * 129-179 -> 153, 180-230 -> 204, 231-255 -> 255. */
EFFECTS_API int32_t EFFECTS_CALL VexoWebColour(void* hdc, void* hbm);
/* Edge-only smoothing of the interior pixels, in buffer order (bottom row
 * first) and in place, so cells already smoothed feed later ones: each of the
 * nine cells of the 3 x 3 square contributes the pixel's own colour when its
 * brightness (b + g + r) / 3 lies within 50 of the pixel's, else its own
 * colour; the sums are divided by 9. Pictures under 3 x 3 are unchanged. */
EFFECTS_API int32_t EFFECTS_CALL VexoAntiAlias(void* hdc, void* hbm);

/* ------------------------------------------- filters and warps on bitmaps */

/* The device-context forms of the soften, the warps and the rotation. Their
 * parameters (a choice of this library; the 32-bit stdcall argument size in
 * brackets) are the bitmap's device context and handle, then those of the
 * 32-bit buffer export in the same order and types, less what a 24-bit
 * picture has no use for (its size, the buffers, includeMask). Each reads the
 * bitmap top row first and works with the buffer export's arithmetic on the
 * picture as it is seen, so the same picture gives the same colours either
 * way (the centre of a warp, the direction of a turn); the result is written
 * back in place. Results as above (-1, 0 or the scan lines read).
 *
 *   VexoPostBlur(hdc, hbm) [8]: the 3 x 3 soften of VexoPostBlur32.
 *   VexoSwirl(hdc, hbm, twist) [12]: VexoSwirl32.
 *   VexoTwirl(hdc, hbm, twist) [12]: VexoTwirlEx32 with twist for both rings.
 *   VexoTwirlEx(hdc, hbm, outerTwist, innerTwist) [16]: VexoTwirlEx32.
 *   VexoBlockWaves(hdc, hbm, amplitude, frequency, style) [20]: VexoBlockWaves32.
 *   VexoCircularWavesEx(hdc, hbm, amplitude, frequency) [16]: VexoCircularWavesEx32.
 *   VexoRotate2(hdc, hbm, targetWidth, targetHeight, angle) [20]: the bitmap
 *     rotated as VexoRotate32 rotates it into a targetWidth x targetHeight
 *     picture (black outside the turned picture), which is drawn at (0, 0) on
 *     the bitmap selected into hdc (the same bitmap, when hbm is selected
 *     there, clipped to it) through a compatible device context and bitmap:
 *     SetDIBitsToDevice onto those, then BitBlt onto hdc. A target size below
 *     1 draws nothing. 0 (nothing drawn) also when GDI cannot make the
 *     compatible device context or bitmap, and for a target of more than
 *     INT32_MAX bytes at 32 bits a pixel. */
EFFECTS_API int32_t EFFECTS_CALL VexoPostBlur(void* hdc, void* hbm);
EFFECTS_API int32_t EFFECTS_CALL VexoSwirl(void* hdc, void* hbm, int32_t twist);
EFFECTS_API int32_t EFFECTS_CALL VexoTwirl(void* hdc, void* hbm, int32_t twist);
EFFECTS_API int32_t EFFECTS_CALL VexoTwirlEx(void* hdc, void* hbm, int32_t outerTwist, int32_t innerTwist);
EFFECTS_API int32_t EFFECTS_CALL VexoBlockWaves(void* hdc, void* hbm, int32_t amplitude, int32_t frequency, int32_t style);
EFFECTS_API int32_t EFFECTS_CALL VexoCircularWavesEx(void* hdc, void* hbm, int32_t amplitude, int32_t frequency);
EFFECTS_API int32_t EFFECTS_CALL VexoRotate2(void* hdc, void* hbm, int32_t targetWidth, int32_t targetHeight, float angle);

EFFECTS_EXTERN_C_END
#endif
