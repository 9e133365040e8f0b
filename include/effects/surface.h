/* Device contexts and bitmaps off Windows. Include effects/effects.h.
 *
 * On Windows the exports that draw or read pictures take a real HDC and
 * HBITMAP. Elsewhere the library brings its own small stand-in for GDI, and a
 * device context and a bitmap are plain structures that the host owns:
 *
 *   uint8_t pixels[W * H * 4];                   // 32 bits per pixel
 *   EffectsBitmap bitmap = { W, H, pixels };      // row 0 is the top row
 *   EffectsDeviceContext dc = { &bitmap };        // "selects" the bitmap
 *   Vexo32AdvancedDIB(&dc, x, y, w, h, dst, src, 100, 0);
 *   // what was presented is now in pixels: pixel (x, y) at byte
 *   // (y * W + x) * 4, in the order blue, green, red, fourth byte.
 *
 * The stand-in follows GDI's rules for what the library uses: a picture handed
 * to the device context is clipped to the selected bitmap, bottom-up (positive
 * height) and top-down (negative height) pictures land the same way up, only
 * the scan lines handed over are drawn, and a 32-bit picture carries its
 * fourth byte along. A null device context, or one with no bitmap, accepts the
 * call and presents nothing. Reading a bitmap back through the device-context
 * exports gives 24- or 32-bit rows padded to 4 bytes, bottom-up for a
 * positive height, and a point outside the bitmap reads as CLR_INVALID
 * (0xFFFFFFFF).
 *
 * The library keeps no pointer to either structure after a call returns.
 */
#ifndef EFFECTS_SURFACE_H
#define EFFECTS_SURFACE_H
#include "effects/effects.h"
EFFECTS_EXTERN_C_BEGIN

#if !defined(_WIN32)
/* A 32-bit picture: width x height pixels of 4 bytes (blue, green, red and a
 * fourth byte), rows of width x 4 bytes, top row first. */
typedef struct EffectsBitmap {
  int32_t width;
  int32_t height;
  uint8_t* bits;
} EffectsBitmap;

/* A device context: the bitmap that drawing lands on (may be null). */
typedef struct EffectsDeviceContext {
  EffectsBitmap* bitmap;
} EffectsDeviceContext;
#endif

EFFECTS_EXTERN_C_END
#endif
