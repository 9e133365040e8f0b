/* Mask compositing on device-context bitmaps. Include effects/effects.h.
 *
 * A source bitmap, or one colour, is blended onto a destination bitmap with
 * an opacity (percent), one of the seventeen blend modes of effects/composite.h
 * and a per-pixel weight from a mask: a mask bitmap, or an array the caller
 * lays out as the 24-bit pictures are. Every bitmap is named by a (device
 * context, bitmap) pair (HDC/HBITMAP on Windows, EffectsDeviceContext* /
 * EffectsBitmap* elsewhere, see effects/surface.h) and read through GDI as a
 * 24-bit picture: 3 bytes a pixel (blue, green, red), each row padded to a
 * multiple of 4 bytes, bottom row first; so a 5-pixel-wide picture has rows
 * of 16 bytes. The mask weight of a pixel is the byte at its blue position
 * (a mask bitmap's blue value; in maskArray every third byte of a row, rows
 * padded the same way). Every picture, and the mask array, must have the
 * destination's width and height.
 *
 * Per pixel with mask byte m: m = 0 changes nothing; otherwise the blend
 * mode's 8-bit arithmetic with the weight a = m x opacity / 25500, exactly as
 * Vexo32AdvancedDIB, the colour taking the source's place in every formula.
 * In mode 0 a pixel whose round(opacity x 2.55) + m exceeds 509 (opacity 100
 * and m = 255) takes the source's colour exactly. A mode outside 0..16 changes
 * no pixel, and the picture is still written or shown. color is a COLORREF:
 * red in bits 0-7, green 8-15, blue 16-23.
 *
 * Results: -1 when opacity is 0 (nothing is read), when GDI cannot describe a
 * bitmap, when the last bitmap read cannot be read (the mask bitmap; the
 * source bitmap where the mask is an array; the destination in the colour and
 * array members), when a source or mask bitmap differs in size from the
 * destination, or when there is no memory for the working pictures; nothing
 * is changed or shown then (but a 2x member whose source bitmap fails has
 * already read the destination into pixels). Otherwise 1.
 *
 * The working pictures live in per-thread scratch memory that later calls
 * reuse and that is released when the thread ends, on every path including
 * the failures: nothing is leaked.
 */
#ifndef EFFECTS_MASKCOMPOSITE_H
#define EFFECTS_MASKCOMPOSITE_H
#include "effects/effects.h"
EFFECTS_EXTERN_C_BEGIN

/* The result is written back into the destination bitmap (hdc, bitmap). */
EFFECTS_API int32_t EFFECTS_CALL VexoMask(void* hdc, void* bitmap, void* maskDC, void* maskBitmap, void* sourceDC, void* sourceBitmap, int32_t opacity, int32_t mode);
EFFECTS_API int32_t EFFECTS_CALL VexoMaskColor(void* hdc, void* bitmap, void* maskDC, void* maskBitmap, uint32_t color, int32_t opacity, int32_t mode);
EFFECTS_API int32_t EFFECTS_CALL VexoMaskArray(void* hdc, void* bitmap, const uint8_t* maskArray, void* sourceDC, void* sourceBitmap, int32_t opacity, int32_t mode);
EFFECTS_API int32_t EFFECTS_CALL VexoMaskArrayColor(void* hdc, void* bitmap, const uint8_t* maskArray, uint32_t color, int32_t opacity, int32_t mode);

/* The destination bitmap is left as it is: a composited copy of it is shown
 * on outputDC with SetDIBitsToDevice(outputDC, x, y, width, height, 0, 0, 0,
 * destination height, ...), the whole bottom-up picture as the source of the
 * width x height rectangle drawn at (x, y). */
EFFECTS_API int32_t EFFECTS_CALL VexoMaskDIB(void* outputDC, int32_t x, int32_t y, int32_t width, int32_t height, void* hdc, void* bitmap, void* maskDC, void* maskBitmap, void* sourceDC, void* sourceBitmap, int32_t opacity, int32_t mode);
EFFECTS_API int32_t EFFECTS_CALL VexoMaskColorDIB(void* outputDC, int32_t x, int32_t y, int32_t width, int32_t height, void* hdc, void* bitmap, void* maskDC, void* maskBitmap, uint32_t color, int32_t opacity, int32_t mode);
EFFECTS_API int32_t EFFECTS_CALL VexoMaskArrayDIB(void* outputDC, int32_t x, int32_t y, int32_t width, int32_t height, void* hdc, void* bitmap, const uint8_t* maskArray, void* sourceDC, void* sourceBitmap, int32_t opacity, int32_t mode);
EFFECTS_API int32_t EFFECTS_CALL VexoMaskArrayColorDIB(void* outputDC, int32_t x, int32_t y, int32_t width, int32_t height, void* hdc, void* bitmap, const uint8_t* maskArray, uint32_t color, int32_t opacity, int32_t mode);

/* As the DIB members, but the destination's pixels are read into the
 * caller's pixels buffer (the destination's 24-bit picture: padded rows times
 * its height), composited there and shown from there; the picture stays in
 * pixels for the caller. The Pointer member does not read the destination's
 * pixels at all: it composites onto whatever pixels already holds (an earlier
 * call's result, so that strokes accumulate) and only asks GDI for the
 * destination's size. */
EFFECTS_API int32_t EFFECTS_CALL VexoMaskArray2xDIB(void* outputDC, int32_t x, int32_t y, int32_t width, int32_t height, void* hdc, void* bitmap, uint8_t* pixels, const uint8_t* maskArray, void* sourceDC, void* sourceBitmap, int32_t opacity, int32_t mode);
EFFECTS_API int32_t EFFECTS_CALL VexoMaskArray2xColorDIB(void* outputDC, int32_t x, int32_t y, int32_t width, int32_t height, void* hdc, void* bitmap, uint8_t* pixels, const uint8_t* maskArray, uint32_t color, int32_t opacity, int32_t mode);
EFFECTS_API int32_t EFFECTS_CALL VexoMaskArray2xColorDIBPointer(void* outputDC, int32_t x, int32_t y, int32_t width, int32_t height, void* hdc, void* bitmap, uint8_t* pixels, const uint8_t* maskArray, uint32_t color, int32_t opacity, int32_t mode);

EFFECTS_EXTERN_C_END
#endif
