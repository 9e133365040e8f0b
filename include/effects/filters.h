/* Blurs, sharpening and edge filters, morphology. Include effects/effects.h.
 *
 * Every filter works on one whole picture: `width` pixels by `height` rows,
 * packed without gaps, row 0 first, changed in place. A width or height
 * below 1 changes nothing. Filters never read or write outside the
 * width x height pixels, also for one-pixel-wide or one-row pictures. Results
 * that become integers are truncated toward zero. Where a filter needs
 * scratch memory and cannot have it, it changes nothing and returns 0.
 *
 * Neighbours past the last row or column are pulled back onto it; a
 * neighbour before the first row or column is the pixel itself. Filters
 * marked "in place" rewrite the picture in raster order and read what they
 * have already written above and to the left of a pixel (that smear is part
 * of the effect); the others read the picture as it was at the call. */
#ifndef EFFECTS_FILTERS_H
#define EFFECTS_FILTERS_H
#include "effects/effects.h"
EFFECTS_EXTERN_C_BEGIN

/* 3x3 soften of blue, green, red and mask (PostBlur) or of the mask alone
 * (PostBlurMask), from cascaded pair averages (the 1 2 1 / 2 4 2 / 1 2 1
 * kernel up to the truncation of each halving): the corners and sides use
 * only the neighbours they have. The pair average is Blending's: 8-bit
 * values halve with truncation (white becomes 254), 16-bit values also lose
 * bit 7 of each half (32767 becomes 32510), floats average in double
 * precision. A one-pixel-wide or one-row picture reads the pixel itself
 * where its missing column or row would be. Returns 0. */
EFFECTS_API int32_t EFFECTS_CALL VexoPostBlur32(int32_t width, int32_t height, Pixel32* pixels);
EFFECTS_API int32_t EFFECTS_CALL VexoPostBlur64(int32_t width, int32_t height, Pixel64* pixels);
EFFECTS_API int32_t EFFECTS_CALL VexoPostBlur128(int32_t width, int32_t height, Pixel128* pixels);
EFFECTS_API int32_t EFFECTS_CALL VexoPostBlurMask32(int32_t width, int32_t height, Pixel32* pixels);
EFFECTS_API int32_t EFFECTS_CALL VexoPostBlurMask64(int32_t width, int32_t height, Pixel64* pixels);
EFFECTS_API int32_t EFFECTS_CALL VexoPostBlurMask128(int32_t width, int32_t height, Pixel128* pixels);

/* In place: each pixel becomes the average of blue, green and red over a 7x7
 * box when its brightness (B + G + R) / 3 is above 127 (16383; 0.5 for
 * floats, where brightness is (B + G + R) x 0.33333334f), over a 3x3 box
 * otherwise. Integer layouts divide by 49 or 9 with truncation; floats sum in
 * single precision, row by row, and multiply by the double constants
 * 0.020408163 or 0.11111111. The mask is not touched. Returns 0. */
EFFECTS_API int32_t EFFECTS_CALL VexoGlowBlur32(int32_t width, int32_t height, Pixel32* pixels);
EFFECTS_API int32_t EFFECTS_CALL VexoGlowBlur64(int32_t width, int32_t height, Pixel64* pixels);
EFFECTS_API int32_t EFFECTS_CALL VexoGlowBlur128(int32_t width, int32_t height, Pixel128* pixels);

/* In place: box blur of blue, green and red over (2 radius + 1)^2 samples,
 * radius 1..10 (above 10 acts as 10, below 1 changes nothing), always
 * divided by the full count (floats: times 1/count in single precision).
 * With useThreshold nonzero, a sample whose brightness lies outside
 * c - threshold .. c + threshold (c the pixel's own brightness, bounds
 * included and formed without overflow) counts as the pixel itself; for
 * floats the threshold is compared on the 0..1 scale, so 1 or more admits
 * every sample of a picture in 0..1. The mask is not touched. Returns 0. */
EFFECTS_API int32_t EFFECTS_CALL VexoMatteBlur32(int32_t width, int32_t height, Pixel32* pixels, int32_t radius, int32_t threshold, int32_t useThreshold);
EFFECTS_API int32_t EFFECTS_CALL VexoMatteBlur64(int32_t width, int32_t height, Pixel64* pixels, int32_t radius, int32_t threshold, int32_t useThreshold);
EFFECTS_API int32_t EFFECTS_CALL VexoMatteBlur128(int32_t width, int32_t height, Pixel128* pixels, int32_t radius, int32_t threshold, int32_t useThreshold);

/* Average of all four elements over 2 distance + 1 samples along the angle
 * (degrees; exactly 0 is taken as 0.0001), each sample position truncated
 * toward zero and clamped to the picture. The truncation matters: at a
 * small angle the samples before the pixel come from the row above. Integer
 * layouts divide by 2 distance + 1; floats multiply by 1 / (2 distance) in
 * single precision, one less than the sample count, so they come out
 * brighter. A negative distance takes no samples: 0 in the integer layouts,
 * -0.0 for floats. Floats at distance 0 (a division by zero) keep the
 * picture as it is. Returns 0. */
EFFECTS_API int32_t EFFECTS_CALL VexoMotionBlur32(int32_t width, int32_t height, Pixel32* pixels, double angle, int32_t distance);
EFFECTS_API int32_t EFFECTS_CALL VexoMotionBlur64(int32_t width, int32_t height, Pixel64* pixels, double angle, int32_t distance);
EFFECTS_API int32_t EFFECTS_CALL VexoMotionBlur128(int32_t width, int32_t height, Pixel128* pixels, double angle, int32_t distance);

/* Average of all four elements along the line from each pixel toward the
 * centre (width / 2, height / 2): strength x r / diagonal samples one pixel
 * apart (strength below 1 acts as 1), divided by trunc(length + 1), one more
 * than the samples when the length is whole (a slight darkening). Floats
 * multiply by the single-precision reciprocal. The centre pixel is kept.
 * Returns 0. */
EFFECTS_API int32_t EFFECTS_CALL VexoZoomBlur32(int32_t width, int32_t height, Pixel32* pixels, int32_t strength);
EFFECTS_API int32_t EFFECTS_CALL VexoZoomBlur64(int32_t width, int32_t height, Pixel64* pixels, int32_t strength);
EFFECTS_API int32_t EFFECTS_CALL VexoZoomBlur128(int32_t width, int32_t height, Pixel128* pixels, int32_t strength);

/* Average of all four elements over 2 spread + 1 samples on the circle
 * through each pixel about the centre, one degree (0.01745329 rad) apart
 * (spread below 1 acts as 1). Floats multiply by the single-precision
 * reciprocal of the count. Returns 0. */
EFFECTS_API int32_t EFFECTS_CALL VexoRadialBlur32(int32_t width, int32_t height, Pixel32* pixels, int32_t spread);
EFFECTS_API int32_t EFFECTS_CALL VexoRadialBlur64(int32_t width, int32_t height, Pixel64* pixels, int32_t spread);
EFFECTS_API int32_t EFFECTS_CALL VexoRadialBlur128(int32_t width, int32_t height, Pixel128* pixels, int32_t spread);

/* Glow from near-white pixels: a map is full where any colour is above 250
 * (32000; 1.0 or more for floats) and 0 elsewhere, softened `passes` times
 * with the 3x3 soften (none for passes below 1), then added to blue, green
 * and red where it is above 0, clamped at full in the integer layouts and
 * unclamped for floats. The mask is not touched. Once a pass leaves the map
 * as it was, the remaining passes are skipped (they could change nothing).
 * Returns 0. */
EFFECTS_API int32_t EFFECTS_CALL VexoBlooming32(int32_t width, int32_t height, Pixel32* pixels, int32_t passes);
EFFECTS_API int32_t EFFECTS_CALL VexoBlooming64(int32_t width, int32_t height, Pixel64* pixels, int32_t passes);
EFFECTS_API int32_t EFFECTS_CALL VexoBlooming128(int32_t width, int32_t height, Pixel128* pixels, int32_t passes);

/* In place, rows and columns 1 .. size - 2 (nothing below 3 rows): each
 * colour (Sharpen) or the mask (SharpenMask) becomes P + (P - Q) x amount,
 * Q the pixel up and to the left as already sharpened. Integer layouts
 * truncate the product toward zero and clamp the sum to 0..full; floats are
 * stored unclamped. Returns 0. */
EFFECTS_API int32_t EFFECTS_CALL VexoSharpen32(int32_t width, int32_t height, Pixel32* pixels, double amount);
EFFECTS_API int32_t EFFECTS_CALL VexoSharpen64(int32_t width, int32_t height, Pixel64* pixels, double amount);
EFFECTS_API int32_t EFFECTS_CALL VexoSharpen128(int32_t width, int32_t height, Pixel128* pixels, double amount);
EFFECTS_API int32_t EFFECTS_CALL VexoSharpenMask32(int32_t width, int32_t height, Pixel32* pixels, double amount);
EFFECTS_API int32_t EFFECTS_CALL VexoSharpenMask64(int32_t width, int32_t height, Pixel64* pixels, double amount);
EFFECTS_API int32_t EFFECTS_CALL VexoSharpenMask128(int32_t width, int32_t height, Pixel128* pixels, double amount);

/* Each colour becomes P x (1 + amount) - blurred x amount, blurred the
 * (2 radius + 1)^2 box average of the picture at the call (radius above 10
 * acts as 10; floats divide the single-precision sum by the count),
 * truncated and clamped to 0..full in the integer layouts, unclamped for
 * floats. amount above 10 acts as 10. radius below 1 or amount below 0
 * changes nothing. The mask keeps its values. Returns 0. */
EFFECTS_API int32_t EFFECTS_CALL VexoUnsharpMask32(int32_t width, int32_t height, Pixel32* pixels, int32_t radius, double amount);
EFFECTS_API int32_t EFFECTS_CALL VexoUnsharpMask64(int32_t width, int32_t height, Pixel64* pixels, int32_t radius, double amount);
EFFECTS_API int32_t EFFECTS_CALL VexoUnsharpMask128(int32_t width, int32_t height, Pixel128* pixels, int32_t radius, double amount);

/* Grey relief, every pixel: with Q the pixel one down and one right (the
 * pixel itself on the last row and column), d = (P - Q) x depth + 128
 * (16384; 0.5 for floats) per colour and B = G = R = (|dR| + |dG| + |dB|) / 3,
 * clamped to 0..full in the integer layouts (32-bit arithmetic that wraps
 * for a depth large enough to overflow it); floats form d in double from the
 * single-precision product and take the sum times 0.33333334, unclamped. A
 * flat picture becomes 128 (16384, 0.5). The mask is not touched. Returns 0. */
EFFECTS_API int32_t EFFECTS_CALL VexoEmboss32(int32_t width, int32_t height, Pixel32* pixels, int32_t depth);
EFFECTS_API int32_t EFFECTS_CALL VexoEmboss64(int32_t width, int32_t height, Pixel64* pixels, int32_t depth);
EFFECTS_API int32_t EFFECTS_CALL VexoEmboss128(int32_t width, int32_t height, Pixel128* pixels, int32_t depth);

/* Gradient magnitude per colour, every pixel, in place: s = (P - V)^2 +
 * (P - H)^2 with V the pixel `step` rows down and H `step` columns right.
 * Integer layouts shift s left by the low five bits of gain (in 32 bits; a
 * result with the top bit set counts as 0), take the square root truncated
 * and clamp to 0..full; floats take sqrt(s x gain), gain itself and not a
 * power of 2. Neon writes the magnitude, FindEdges its complement (full - v,
 * or 1.0 - v unclamped): flat areas become black under Neon and white under
 * FindEdges. A negative step reads up and to the left, pixels this call has
 * already rewritten; where that is before the first row or column it reads
 * the pixel itself. The mask is not touched. Returns 0. */
EFFECTS_API int32_t EFFECTS_CALL VexoFindEdges32(int32_t width, int32_t height, Pixel32* pixels, int32_t gain, int32_t step);
EFFECTS_API int32_t EFFECTS_CALL VexoFindEdges64(int32_t width, int32_t height, Pixel64* pixels, int32_t gain, int32_t step);
EFFECTS_API int32_t EFFECTS_CALL VexoFindEdges128(int32_t width, int32_t height, Pixel128* pixels, int32_t gain, int32_t step);
EFFECTS_API int32_t EFFECTS_CALL VexoNeon32(int32_t width, int32_t height, Pixel32* pixels, int32_t gain, int32_t step);
EFFECTS_API int32_t EFFECTS_CALL VexoNeon64(int32_t width, int32_t height, Pixel64* pixels, int32_t gain, int32_t step);
EFFECTS_API int32_t EFFECTS_CALL VexoNeon128(int32_t width, int32_t height, Pixel128* pixels, int32_t gain, int32_t step);

/* For P in rows and columns 1 .. size - 2 (nothing below 3 rows) and Q the
 * pixel up and to the left: |P + (P - Q) x factor| per colour, written into
 * Q's place, so the picture moves one pixel up and to the left and the last
 * two rows and columns keep their values. Integer layouts take anything
 * above full (and the overflow of 32-bit arithmetic) as full; floats use the
 * same formula in single precision, unclamped. The mask is not touched.
 * Returns 0. */
EFFECTS_API int32_t EFFECTS_CALL VexoLining32(int32_t width, int32_t height, Pixel32* pixels, int32_t redFactor, int32_t greenFactor, int32_t blueFactor);
EFFECTS_API int32_t EFFECTS_CALL VexoLining64(int32_t width, int32_t height, Pixel64* pixels, int32_t redFactor, int32_t greenFactor, int32_t blueFactor);
EFFECTS_API int32_t EFFECTS_CALL VexoLining128(int32_t width, int32_t height, Pixel128* pixels, int32_t redFactor, int32_t greenFactor, int32_t blueFactor);

/* Morphology over the eight cells of the 3x3 square around a pixel without
 * its lower right cell (so a bright pixel spreads to seven neighbours, not to
 * the one up and to its left), read from the picture at the call. Only rows
 * and columns 1 .. size - 2 change; a picture of fewer than three rows or
 * columns is kept. Dilater: maximum from 0 (negative values count as 0);
 * Eroder: minimum from full, so floats are capped at 1.0; CContour: the
 * pixel minus its erosion. The colour forms write blue, green and red, the
 * Mask forms the mask alone. 16-bit elements compare as signed values;
 * float comparisons never take a not-a-number. Sizes above 2^31 - 1 change
 * nothing. Return 0. */
EFFECTS_API uint32_t EFFECTS_CALL VexoDilater32(uint32_t width, uint32_t height, Pixel32* pixels);
EFFECTS_API uint32_t EFFECTS_CALL VexoDilater64(uint32_t width, uint32_t height, Pixel64* pixels);
EFFECTS_API uint32_t EFFECTS_CALL VexoDilater128(uint32_t width, uint32_t height, Pixel128* pixels);
EFFECTS_API uint32_t EFFECTS_CALL VexoDilaterMask32(uint32_t width, uint32_t height, Pixel32* pixels);
EFFECTS_API uint32_t EFFECTS_CALL VexoDilaterMask64(uint32_t width, uint32_t height, Pixel64* pixels);
EFFECTS_API uint32_t EFFECTS_CALL VexoDilaterMask128(uint32_t width, uint32_t height, Pixel128* pixels);
EFFECTS_API uint32_t EFFECTS_CALL VexoEroder32(uint32_t width, uint32_t height, Pixel32* pixels);
EFFECTS_API uint32_t EFFECTS_CALL VexoEroder64(uint32_t width, uint32_t height, Pixel64* pixels);
EFFECTS_API uint32_t EFFECTS_CALL VexoEroder128(uint32_t width, uint32_t height, Pixel128* pixels);
EFFECTS_API uint32_t EFFECTS_CALL VexoEroderMask32(uint32_t width, uint32_t height, Pixel32* pixels);
EFFECTS_API uint32_t EFFECTS_CALL VexoEroderMask64(uint32_t width, uint32_t height, Pixel64* pixels);
EFFECTS_API uint32_t EFFECTS_CALL VexoEroderMask128(uint32_t width, uint32_t height, Pixel128* pixels);
EFFECTS_API uint32_t EFFECTS_CALL VexoCContour32(uint32_t width, uint32_t height, Pixel32* pixels);
EFFECTS_API uint32_t EFFECTS_CALL VexoCContour64(uint32_t width, uint32_t height, Pixel64* pixels);
EFFECTS_API uint32_t EFFECTS_CALL VexoCContour128(uint32_t width, uint32_t height, Pixel128* pixels);

EFFECTS_EXTERN_C_END
#endif
