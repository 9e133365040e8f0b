/* Layer compositing, direct drawing and block transfer. Include effects/effects.h.
 *
 * opacity is a percentage (0..100); an opacity of 0 returns -1 and touches
 * nothing. mode is one of the seventeen blend modes below. The source's mask
 * element is its per-pixel coverage: pixels with mask 0 are left alone.
 * hdc is an HDC on Windows and an EffectsDeviceContext* elsewhere (see
 * effects/surface.h); a null hdc composites as usual and presents nothing.
 */
#ifndef EFFECTS_COMPOSITE_H
#define EFFECTS_COMPOSITE_H
#include "effects/effects.h"
#include "effects/surface.h"
EFFECTS_EXTERN_C_BEGIN

enum {
  EFFECTS_BLEND_NORMAL = 0,
  EFFECTS_BLEND_DARKEN = 1,
  EFFECTS_BLEND_LIGHTEN = 2,
  EFFECTS_BLEND_DIFFERENCE = 3,
  EFFECTS_BLEND_MULTIPLY = 4,
  EFFECTS_BLEND_SCREEN = 5,
  EFFECTS_BLEND_OVERLAY = 6,
  EFFECTS_BLEND_HARD_LIGHT = 7,
  EFFECTS_BLEND_PIN_LIGHT = 8,
  EFFECTS_BLEND_RED_FROM_SOURCE = 9,
  EFFECTS_BLEND_GREEN_FROM_SOURCE = 10,
  EFFECTS_BLEND_BLUE_FROM_SOURCE = 11,
  EFFECTS_BLEND_RED_FROM_INVERTED_SOURCE = 12,
  EFFECTS_BLEND_GREEN_FROM_INVERTED_SOURCE = 13,
  EFFECTS_BLEND_BLUE_FROM_INVERTED_SOURCE = 14,
  EFFECTS_BLEND_ADD = 15,
  EFFECTS_BLEND_SUBTRACT = 16
};

/* Source and destination of equal size (width x height), composited pixel
 * for pixel, then shown at (x, y) on hdc: the 8-bit destination itself, or
 * the 8-bit display picture that the 16-bit and float members fill. Return 1
 * (an unknown mode changes no pixel but still presents). The Flip member
 * reads the source upside down. */
EFFECTS_API int32_t EFFECTS_CALL Vexo32AdvancedDIB(void* hdc, int32_t x, int32_t y, int32_t width, int32_t height, Pixel32* destination, const Pixel32* source, uint8_t opacity, int32_t mode);
EFFECTS_API int32_t EFFECTS_CALL Vexo32AdvancedFlipDIB(void* hdc, int32_t x, int32_t y, int32_t width, int32_t height, Pixel32* destination, const Pixel32* source, uint8_t opacity, int32_t mode);
EFFECTS_API int32_t EFFECTS_CALL Vexo64AdvancedDIB(void* hdc, int32_t x, int32_t y, int32_t width, int32_t height, Pixel64* destination, const Pixel64* source, Pixel32* display, uint8_t opacity, int32_t mode);
EFFECTS_API int32_t EFFECTS_CALL Vexo128AdvancedDIB(void* hdc, int32_t x, int32_t y, int32_t width, int32_t height, Pixel128* destination, const Pixel128* source, Pixel32* display, uint8_t opacity, int32_t mode);

/* The width x height source placed with its top-left pixel at (x, y) on a
 * canvasWidth x canvasHeight canvas, clipped to it, composited, and its
 * bottom-up display picture (width x height) shown at (x, y). Return 1, or 0
 * (nothing done) for a mode outside 0..16. */
EFFECTS_API int32_t EFFECTS_CALL Vexo32AdvancedDirectDIB(void* hdc, int32_t x, int32_t y, int32_t width, int32_t height, Pixel32* display, const Pixel32* source, Pixel32* canvas, int32_t canvasWidth, int32_t canvasHeight, uint8_t opacity, int32_t mode);
EFFECTS_API int32_t EFFECTS_CALL Vexo64AdvancedDirectDIB(void* hdc, int32_t x, int32_t y, int32_t width, int32_t height, Pixel32* display, const Pixel64* source, Pixel64* canvas, int32_t canvasWidth, int32_t canvasHeight, uint8_t opacity, int32_t mode);
EFFECTS_API int32_t EFFECTS_CALL Vexo128AdvancedDirectDIB(void* hdc, int32_t x, int32_t y, int32_t width, int32_t height, Pixel32* display, const Pixel128* source, Pixel128* canvas, int32_t canvasWidth, int32_t canvasHeight, uint8_t opacity, int32_t mode);

/* As the Direct members, but only the canvas mask changes: mode 2 adds the
 * source mask (squared, weighted by opacity), mode 1 erases it. The display's
 * fourth byte shows the canvas mask. Return 1. */
EFFECTS_API int32_t EFFECTS_CALL Vexo32AdvancedMaskDIB(void* hdc, int32_t x, int32_t y, int32_t width, int32_t height, Pixel32* display, const Pixel32* source, Pixel32* canvas, int32_t canvasWidth, int32_t canvasHeight, uint8_t opacity, int32_t mode);
EFFECTS_API int32_t EFFECTS_CALL Vexo64AdvancedMaskDIB(void* hdc, int32_t x, int32_t y, int32_t width, int32_t height, Pixel32* display, const Pixel64* source, Pixel64* canvas, int32_t canvasWidth, int32_t canvasHeight, uint8_t opacity, int32_t mode);
EFFECTS_API int32_t EFFECTS_CALL Vexo128AdvancedMaskDIB(void* hdc, int32_t x, int32_t y, int32_t width, int32_t height, Pixel32* display, const Pixel128* source, Pixel128* canvas, int32_t canvasWidth, int32_t canvasHeight, uint8_t opacity, int32_t mode);

/* Averages: per byte of blue, green and red (rounded down, fourth byte 0),
 * and of two floats in double precision. */
EFFECTS_API int32_t EFFECTS_CALL Blending(uint32_t a, uint32_t b);
EFFECTS_API double EFFECTS_CALL Blending128(float a, float b);

/* Without a device: the region (width x height) at (x, y) on the canvas,
 * clipped to it. All return 1 (also when nothing is covered); the DirectDIB
 * members return -1 for opacity 0 and change nothing for an unknown mode. */
EFFECTS_API int32_t EFFECTS_CALL Vexo32DirectDIB(int32_t x, int32_t y, int32_t width, int32_t height, const Pixel32* source, Pixel32* canvas, int32_t canvasWidth, int32_t canvasHeight, int32_t opacity, int32_t mode);
EFFECTS_API int32_t EFFECTS_CALL Vexo64DirectDIB(int32_t x, int32_t y, int32_t width, int32_t height, const Pixel64* source, Pixel64* canvas, int32_t canvasWidth, int32_t canvasHeight, int32_t opacity, int32_t mode);
EFFECTS_API int32_t EFFECTS_CALL Vexo128DirectDIB(int32_t x, int32_t y, int32_t width, int32_t height, const Pixel128* source, Pixel128* canvas, int32_t canvasWidth, int32_t canvasHeight, int32_t opacity, int32_t mode);

/* Region into canvas: blue, green, red (Mask members: all four elements),
 * copied as they are; Flip members read the region upside down. */
EFFECTS_API int32_t EFFECTS_CALL Vexo32DirectBitBltDIB(int32_t x, int32_t y, int32_t width, int32_t height, const Pixel32* source, Pixel32* canvas, int32_t canvasWidth, int32_t canvasHeight);
EFFECTS_API int32_t EFFECTS_CALL Vexo64DirectBitBltDIB(int32_t x, int32_t y, int32_t width, int32_t height, const Pixel64* source, Pixel64* canvas, int32_t canvasWidth, int32_t canvasHeight);
EFFECTS_API int32_t EFFECTS_CALL Vexo128DirectBitBltDIB(int32_t x, int32_t y, int32_t width, int32_t height, const Pixel128* source, Pixel128* canvas, int32_t canvasWidth, int32_t canvasHeight);
EFFECTS_API int32_t EFFECTS_CALL Vexo32DirectBitBltMaskDIB(int32_t x, int32_t y, int32_t width, int32_t height, const Pixel32* source, Pixel32* canvas, int32_t canvasWidth, int32_t canvasHeight);
EFFECTS_API int32_t EFFECTS_CALL Vexo64DirectBitBltMaskDIB(int32_t x, int32_t y, int32_t width, int32_t height, const Pixel64* source, Pixel64* canvas, int32_t canvasWidth, int32_t canvasHeight);
EFFECTS_API int32_t EFFECTS_CALL Vexo128DirectBitBltMaskDIB(int32_t x, int32_t y, int32_t width, int32_t height, const Pixel128* source, Pixel128* canvas, int32_t canvasWidth, int32_t canvasHeight);
EFFECTS_API int32_t EFFECTS_CALL Vexo32DirectBitBltFlipDIB(int32_t x, int32_t y, int32_t width, int32_t height, const Pixel32* source, Pixel32* canvas, int32_t canvasWidth, int32_t canvasHeight);
EFFECTS_API int32_t EFFECTS_CALL Vexo64DirectBitBltFlipDIB(int32_t x, int32_t y, int32_t width, int32_t height, const Pixel64* source, Pixel64* canvas, int32_t canvasWidth, int32_t canvasHeight);
EFFECTS_API int32_t EFFECTS_CALL Vexo128DirectBitBltFlipDIB(int32_t x, int32_t y, int32_t width, int32_t height, const Pixel128* source, Pixel128* canvas, int32_t canvasWidth, int32_t canvasHeight);
EFFECTS_API int32_t EFFECTS_CALL Vexo32DirectBitBltFlipMaskDIB(int32_t x, int32_t y, int32_t width, int32_t height, const Pixel32* source, Pixel32* canvas, int32_t canvasWidth, int32_t canvasHeight);
EFFECTS_API int32_t EFFECTS_CALL Vexo64DirectBitBltFlipMaskDIB(int32_t x, int32_t y, int32_t width, int32_t height, const Pixel64* source, Pixel64* canvas, int32_t canvasWidth, int32_t canvasHeight);
EFFECTS_API int32_t EFFECTS_CALL Vexo128DirectBitBltFlipMaskDIB(int32_t x, int32_t y, int32_t width, int32_t height, const Pixel128* source, Pixel128* canvas, int32_t canvasWidth, int32_t canvasHeight);

/* Canvas into region (the reverse direction); region pixels outside the
 * canvas are left as they are. */
EFFECTS_API int32_t EFFECTS_CALL Vexo32BitBltDIB(int32_t x, int32_t y, int32_t width, int32_t height, Pixel32* region, const Pixel32* canvas, int32_t canvasWidth, int32_t canvasHeight);
EFFECTS_API int32_t EFFECTS_CALL Vexo64BitBltDIB(int32_t x, int32_t y, int32_t width, int32_t height, Pixel64* region, const Pixel64* canvas, int32_t canvasWidth, int32_t canvasHeight);
EFFECTS_API int32_t EFFECTS_CALL Vexo128BitBltDIB(int32_t x, int32_t y, int32_t width, int32_t height, Pixel128* region, const Pixel128* canvas, int32_t canvasWidth, int32_t canvasHeight);
EFFECTS_API int32_t EFFECTS_CALL Vexo32BitBltFlipDIB(int32_t x, int32_t y, int32_t width, int32_t height, Pixel32* region, const Pixel32* canvas, int32_t canvasWidth, int32_t canvasHeight);
EFFECTS_API int32_t EFFECTS_CALL Vexo64BitBltFlipDIB(int32_t x, int32_t y, int32_t width, int32_t height, Pixel64* region, const Pixel64* canvas, int32_t canvasWidth, int32_t canvasHeight);
EFFECTS_API int32_t EFFECTS_CALL Vexo128BitBltFlipDIB(int32_t x, int32_t y, int32_t width, int32_t height, Pixel128* region, const Pixel128* canvas, int32_t canvasWidth, int32_t canvasHeight);
EFFECTS_API int32_t EFFECTS_CALL Vexo32BitBltFlipMaskDIB(int32_t x, int32_t y, int32_t width, int32_t height, Pixel32* region, const Pixel32* canvas, int32_t canvasWidth, int32_t canvasHeight);
EFFECTS_API int32_t EFFECTS_CALL Vexo64BitBltFlipMaskDIB(int32_t x, int32_t y, int32_t width, int32_t height, Pixel64* region, const Pixel64* canvas, int32_t canvasWidth, int32_t canvasHeight);
EFFECTS_API int32_t EFFECTS_CALL Vexo128BitBltFlipMaskDIB(int32_t x, int32_t y, int32_t width, int32_t height, Pixel128* region, const Pixel128* canvas, int32_t canvasWidth, int32_t canvasHeight);

/* Two buffers of the same size (elementCount as for the whole-buffer
 * operations): blue, green and red of the destination move toward the source
 * by its mask. Return 1. */
EFFECTS_API int32_t EFFECTS_CALL Vexo32DirectDrawRegional(int32_t elementCount, const Pixel32* source, Pixel32* destination);
EFFECTS_API int32_t EFFECTS_CALL Vexo64DirectDrawRegional(int32_t elementCount, const Pixel64* source, Pixel64* destination);
EFFECTS_API int32_t EFFECTS_CALL Vexo128DirectDrawRegional(int32_t elementCount, const Pixel128* source, Pixel128* destination);

/* The canvas mask moves toward the region's mask by opacity; the tenth
 * argument is not used. */
EFFECTS_API int32_t EFFECTS_CALL Vexo32DirectMaskDIB(int32_t x, int32_t y, int32_t width, int32_t height, const Pixel32* source, Pixel32* canvas, int32_t canvasWidth, int32_t canvasHeight, int32_t opacity, int32_t unused);

EFFECTS_EXTERN_C_END
#endif
