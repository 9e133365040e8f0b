/* Device contexts and bitmaps off Windows. Include effects/effects.h.
 *
 * On Windows the exports that draw or read pictures take a real HDC and
 * HBITMAP. Elsewhere the library brings its own small stand-in for GDI, and a
 * device context and a bitmap are plain structures that the host owns. A
 * bitmap is 32 bits a pixel, top row first; a device context "selects" a
 * bitmap by pointing at it:
 *
 *   uint8_t pixels[W * H * 4];                   // 32 bits per pixel
 *   EffectsBitmap bitmap = { W, H, pixels };      // row 0 is the top row
 *   EffectsDeviceContext dc = { &bitmap };        // "selects" the bitmap
 *
 * Where an export takes a device context only (hdc, outputDC) it draws on, or
 * reads single pixels of, the bitmap selected into it:
 *
 *   Vexo32AdvancedDIB(&dc, x, y, w, h, dst, src, 100, 0);
 *   // what was presented is now in pixels: pixel (x, y) at byte
 *   // (y * W + x) * 4, in the order blue, green, red, fourth byte.
 *
 * Where it takes a (device context, bitmap) pair (hdc and bitmap or hbm,
 * sourceDC and sourceBitmap, ...) it reads and writes that bitmap itself; the
 * device context must be non-null but need not select it (GDI's rule):
 *
 *   EffectsBitmap mask = { W, H, maskPixels };
 *   EffectsDeviceContext maskDC = { &mask };
 *   VexoMask(&dc, &bitmap, &maskDC, &mask, &dc, &source, 100, 0);
 *   VexoSaturation(&dc, &bitmap, 100);
 *   // the results are in pixels, as above; nothing else is kept.
 *
 * To read a bitmap back, read its pixels: they are the bitmap. A bitmap
 * written through the exports gets a fourth byte of 0 in every pixel written
 * (they write 24-bit pictures), as a real 32-bit bitmap does.
 *
 * The stand-in follows GDI's rules for what the library uses: a picture handed
 * to a device context is clipped to the selected bitmap, bottom-up (positive
 * height) and top-down (negative height) pictures land the same way up, only
 * the scan lines handed over are drawn, and a 32-bit picture carries its
 * fourth byte along. A null device context, or one with no bitmap, accepts a
 * drawing call and presents nothing. A bitmap is described as 32 bits a pixel
 * and read back as 24- or 32-bit rows padded to 4 bytes, bottom-up for a
 * positive height; a null bitmap, or one with a null `bits` or a width or
 * height below 1, cannot be described or read (the exports report that as
 * GDI's failure). A point outside the bitmap reads as CLR_INVALID
 * (0xFFFFFFFF).
 *
 * The library keeps no pointer to either structure after a call returns. The
 * device contexts and bitmaps that an export makes for itself (the rotation
 * entry point draws through one) are released before it returns.
 */
#ifndef EFFECTS_SURFACE_H
#define EFFECTS_SURFACE_H
#include "effects/effects.h"
EFFECTS_EXTERN_C_BEGIN

/* (The library's own tests also build the stand-in on Windows, where they
 * compare it with real GDI; EFFECTS_MEMORY_SURFACES declares the structures
 * there.) */
#if !defined(_WIN32) || defined(EFFECTS_MEMORY_SURFACES)
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
