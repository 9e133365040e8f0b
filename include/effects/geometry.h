/* Flips, mirrors, quarter turns, scaling, free rotation, skew and distortions. Include effects/effects.h. */
#ifndef EFFECTS_GEOMETRY_H
#define EFFECTS_GEOMETRY_H
#include "effects/effects.h"
EFFECTS_EXTERN_C_BEGIN

/* Pictures are width x height pixels, rows packed, row 0 first. Every export
 * returns 0. A width or height below 1 (any of the four sizes where there are
 * two pictures) changes nothing; no export reads or writes outside
 * width x height pixels of a buffer. All four elements of a pixel move
 * together unless stated otherwise. */

/* Flips reverse the picture: VerticalFlip the order of the rows,
 * HorizontalFlip the pixels within every row. Mirrors make it symmetric,
 * copying in place first row (first column) first from the far end:
 * VerticalMirror leaves the top half the reflection of the bottom half and
 * the bottom half unchanged; HorizontalMirror does the same with the left
 * half from the right half. An odd middle row or column stays. `reserved` is
 * ignored. */
EFFECTS_API int32_t EFFECTS_CALL VexoVerticalFlip32(int32_t width, int32_t height, Pixel32* pixels, int32_t reserved);
EFFECTS_API int32_t EFFECTS_CALL VexoVerticalFlip64(int32_t width, int32_t height, Pixel64* pixels, int32_t reserved);
EFFECTS_API int32_t EFFECTS_CALL VexoVerticalFlip128(int32_t width, int32_t height, Pixel128* pixels, int32_t reserved);
EFFECTS_API int32_t EFFECTS_CALL VexoHorizontalFlip32(int32_t width, int32_t height, Pixel32* pixels, int32_t reserved);
EFFECTS_API int32_t EFFECTS_CALL VexoHorizontalFlip64(int32_t width, int32_t height, Pixel64* pixels, int32_t reserved);
EFFECTS_API int32_t EFFECTS_CALL VexoHorizontalFlip128(int32_t width, int32_t height, Pixel128* pixels, int32_t reserved);
EFFECTS_API int32_t EFFECTS_CALL VexoVerticalMirror32(int32_t width, int32_t height, Pixel32* pixels, int32_t reserved);
EFFECTS_API int32_t EFFECTS_CALL VexoVerticalMirror64(int32_t width, int32_t height, Pixel64* pixels, int32_t reserved);
EFFECTS_API int32_t EFFECTS_CALL VexoVerticalMirror128(int32_t width, int32_t height, Pixel128* pixels, int32_t reserved);
EFFECTS_API int32_t EFFECTS_CALL VexoHorizontalMirror32(int32_t width, int32_t height, Pixel32* pixels, int32_t reserved);
EFFECTS_API int32_t EFFECTS_CALL VexoHorizontalMirror64(int32_t width, int32_t height, Pixel64* pixels, int32_t reserved);
EFFECTS_API int32_t EFFECTS_CALL VexoHorizontalMirror128(int32_t width, int32_t height, Pixel128* pixels, int32_t reserved);

/* Quarter turn in place: source pixel (x, y) goes to element (x * height + y)
 * * 4, so the caller then reads the buffer as height pixels wide and width
 * rows high (row y of the result is column y of the picture). The working
 * block is the library's per-thread scratch memory, kept for reuse by later
 * calls on that thread and released when the thread ends; when it cannot be
 * had, the picture is left unchanged. */
EFFECTS_API int32_t EFFECTS_CALL VexoRotate90_32(int32_t width, int32_t height, Pixel32* pixels); /* result: height x width */
EFFECTS_API int32_t EFFECTS_CALL VexoRotate90_64(int32_t width, int32_t height, Pixel64* pixels); /* result: height x width */
EFFECTS_API int32_t EFFECTS_CALL VexoRotate90_128(int32_t width, int32_t height, Pixel128* pixels); /* result: height x width */

/* Nearest-neighbour scale of source into target. Target row y reads source
 * row trunc(y * (sourceHeight / targetHeight)) and column
 * trunc(x * (sourceWidth / targetWidth)), ratios and products in single
 * precision, limited to the last row and column. Blue, green and red are
 * ADDED to the target's (8- and 16-bit sums wrap), the mask is replaced: a
 * plain scale needs a target whose colour is 0. */
EFFECTS_API int32_t EFFECTS_CALL VexoScale32(int32_t sourceWidth, int32_t sourceHeight, const Pixel32* source, int32_t targetWidth, int32_t targetHeight, Pixel32* target);
EFFECTS_API int32_t EFFECTS_CALL VexoScale64(int32_t sourceWidth, int32_t sourceHeight, const Pixel64* source, int32_t targetWidth, int32_t targetHeight, Pixel64* target);
EFFECTS_API int32_t EFFECTS_CALL VexoScale128(int32_t sourceWidth, int32_t sourceHeight, const Pixel128* source, int32_t targetWidth, int32_t targetHeight, Pixel128* target);

/* Rotation by `angle` degrees about the centres (size / 2, truncated) of
 * source and target, resampled bilinearly; the target is written completely.
 * A positive angle is taken as 360 - angle and a negative one as its
 * magnitude (so 90 and -90 turn opposite ways, 450 acts as -90); degrees
 * become radians with pi taken as 3.1415, so 180 is not an exact half turn.
 * The angle's cosine and sine are computed in double precision, the source
 * position in double rounded to single, the weights and sums in single.
 * 32 and 64 truncate the sum after each of the four taps and limit it to
 * 0..255 (0..32767); 128 keeps float sums. Taps outside the source count as
 * 0 in every element: the background is transparent black and the edges
 * fade into it. A NaN angle gives a transparent black target. */
EFFECTS_API int32_t EFFECTS_CALL VexoRotate32(int32_t sourceWidth, int32_t sourceHeight, const Pixel32* source, int32_t targetWidth, int32_t targetHeight, Pixel32* target, float angle);
EFFECTS_API int32_t EFFECTS_CALL VexoRotate64(int32_t sourceWidth, int32_t sourceHeight, const Pixel64* source, int32_t targetWidth, int32_t targetHeight, Pixel64* target, float angle);
EFFECTS_API int32_t EFFECTS_CALL VexoRotate128(int32_t sourceWidth, int32_t sourceHeight, const Pixel128* source, int32_t targetWidth, int32_t targetHeight, Pixel128* target, float angle);

/* Skew: every source pixel (all four elements) is splatted into the target,
 * which is not cleared (hand in a zeroed target for a plain skew). With
 * verticalPercent exactly 0 the skew is horizontal: row y moves right by
 * y * horizontalPercent / 100 pixels; otherwise it is vertical: column x moves
 * down by x * verticalPercent / 100 and horizontalPercent is ignored. The
 * position is formed in double and kept as a float. A whole position copies
 * the pixel; a fractional one adds it to two neighbours weighted by the
 * fraction (single precision, truncated, capped at 255 or 32767 from above;
 * 128 is not capped). Target pixels are addressed as row * targetWidth +
 * column, so a column past the right edge lands at the start of the next
 * row. Writes that would fall outside the target are dropped; a right-hand
 * pair is also skipped when it would end on the target's last pixel. */
EFFECTS_API int32_t EFFECTS_CALL VexoSkew32(int32_t sourceWidth, int32_t sourceHeight, int32_t targetWidth, int32_t targetHeight, const Pixel32* source, Pixel32* target, float verticalPercent, float horizontalPercent);
EFFECTS_API int32_t EFFECTS_CALL VexoSkew64(int32_t sourceWidth, int32_t sourceHeight, int32_t targetWidth, int32_t targetHeight, const Pixel64* source, Pixel64* target, float verticalPercent, float horizontalPercent);
EFFECTS_API int32_t EFFECTS_CALL VexoSkew128(int32_t sourceWidth, int32_t sourceHeight, int32_t targetWidth, int32_t targetHeight, const Pixel128* source, Pixel128* target, float verticalPercent, float horizontalPercent);

/* The distortions map every pixel back to one source position about the
 * centre (width / 2, height / 2, truncated: right of and below the middle
 * for even sizes), truncate it toward zero, clamp it into the picture (so the
 * edges repeat) and copy that pixel's blue, green and red, and its mask when
 * `includeMask` is exactly 1. Elements a distortion does not write keep
 * their values. Degrees are converted with 0.017453292519943295. */

/* Swirl inside the circle of radius sqrt(width^2 + height^2) / 2; `twist` is
 * limited to -255..255, smaller magnitudes twist harder. A barely twisted
 * disc shows the picture mirrored left to right. Pixels outside the circle
 * (the corner pixel (0, 0) for even sizes) keep their values. twist 0 gives
 * every pixel of the circle the first pixel of the picture. */
EFFECTS_API int32_t EFFECTS_CALL VexoSwirl32(int32_t width, int32_t height, Pixel32* pixels, int32_t includeMask, int32_t twist);
EFFECTS_API int32_t EFFECTS_CALL VexoSwirl64(int32_t width, int32_t height, Pixel64* pixels, int32_t includeMask, int32_t twist);
EFFECTS_API int32_t EFFECTS_CALL VexoSwirl128(int32_t width, int32_t height, Pixel128* pixels, int32_t includeMask, int32_t twist);
/* Twirl by an angle that blends from innerTwist x pi/8 at the centre toward
 * outerTwist x pi/8 at the length of the diagonal. With both 0 the position
 * is the pixel's own up to rounding: a pixel whose computed position falls a
 * hair short of its own column or row takes its neighbour's values. */
EFFECTS_API int32_t EFFECTS_CALL VexoTwirlEx32(int32_t width, int32_t height, Pixel32* pixels, int32_t includeMask, int32_t outerTwist, int32_t innerTwist);
EFFECTS_API int32_t EFFECTS_CALL VexoTwirlEx64(int32_t width, int32_t height, Pixel64* pixels, int32_t includeMask, int32_t outerTwist, int32_t innerTwist);
EFFECTS_API int32_t EFFECTS_CALL VexoTwirlEx128(int32_t width, int32_t height, Pixel128* pixels, int32_t includeMask, int32_t outerTwist, int32_t innerTwist);
/* Bulge (amount > 0) or pinch (amount < 0) inside the inscribed disc of
 * radius min(width, height) / 2; pixels outside it keep their values.
 * amount 0 changes nothing. The radial map degenerates where
 * 1 + |amount| / 1000 x radius rounds to 1 (a radius of 0, on a picture 1
 * pixel wide or high, or a vanishing amount): the disc then takes the
 * centre pixel (tiny positive amount) or the first pixel (tiny negative
 * amount, NaN, or a radius of 0). */
EFFECTS_API int32_t EFFECTS_CALL VexoPinch32(int32_t width, int32_t height, Pixel32* pixels, int32_t includeMask, double amount);
EFFECTS_API int32_t EFFECTS_CALL VexoPinch64(int32_t width, int32_t height, Pixel64* pixels, int32_t includeMask, double amount);
EFFECTS_API int32_t EFFECTS_CALL VexoPinch128(int32_t width, int32_t height, Pixel128* pixels, int32_t includeMask, double amount);
/* Circular waves: blue, green and red come from (x + amplitude sin a,
 * y + amplitude cos a) with a = r x frequency degrees, r the distance from
 * the centre; the mask stays. Negative amplitude or frequency acts as 0. */
EFFECTS_API int32_t EFFECTS_CALL VexoCircularWaves32(int32_t width, int32_t height, Pixel32* pixels, int32_t amplitude, int32_t frequency);
EFFECTS_API int32_t EFFECTS_CALL VexoCircularWaves64(int32_t width, int32_t height, Pixel64* pixels, int32_t amplitude, int32_t frequency);
EFFECTS_API int32_t EFFECTS_CALL VexoCircularWaves128(int32_t width, int32_t height, Pixel128* pixels, int32_t amplitude, int32_t frequency);
/* The same with the amplitude growing from 0 at the centre: the local
 * amplitude is the whole part of amplitude x r / sqrt(width^2 + height^2),
 * so an amplitude of 1 changes nothing. The mask stays. */
EFFECTS_API int32_t EFFECTS_CALL VexoCircularWavesEx32(int32_t width, int32_t height, Pixel32* pixels, int32_t amplitude, int32_t frequency);
EFFECTS_API int32_t EFFECTS_CALL VexoCircularWavesEx64(int32_t width, int32_t height, Pixel64* pixels, int32_t amplitude, int32_t frequency);
EFFECTS_API int32_t EFFECTS_CALL VexoCircularWavesEx128(int32_t width, int32_t height, Pixel128* pixels, int32_t amplitude, int32_t frequency);
/* Block waves: the column moves by amplitude sin(phase x frequency degrees)
 * of the column alone, the row by amplitude cos(...) of the row alone. An
 * even `style` measures the phase from the centre, an odd one (by its
 * signed remainder: -1 is odd) from the first pixel; the integer phase
 * products wrap in 32 bits. The mask stays. */
EFFECTS_API int32_t EFFECTS_CALL VexoBlockWaves32(int32_t width, int32_t height, Pixel32* pixels, int32_t amplitude, int32_t frequency, int32_t style);
EFFECTS_API int32_t EFFECTS_CALL VexoBlockWaves64(int32_t width, int32_t height, Pixel64* pixels, int32_t amplitude, int32_t frequency, int32_t style);
EFFECTS_API int32_t EFFECTS_CALL VexoBlockWaves128(int32_t width, int32_t height, Pixel128* pixels, int32_t amplitude, int32_t frequency, int32_t style);

/* Brightness scale by 100 / percent over the pixels of width * 4 * height
 * elements (32-bit arithmetic; nothing when width or height is below 1):
 * the factor is formed in double and kept as a float, each of blue, green
 * and red is multiplied in single precision; 32 and 64 limit the product
 * from above only, at 255 (32767), and round to nearest, ties to even (a
 * negative product, from a negative percent, keeps the low bits of its
 * 16-bit rounding); 128 is not limited. The mask stays. percent 100 changes
 * nothing, 50 doubles; percent 0 (an infinite factor) changes nothing. */
EFFECTS_API int32_t EFFECTS_CALL VexoSphereReflection32(int32_t width, int32_t height, Pixel32* pixels, int32_t percent);
EFFECTS_API int32_t EFFECTS_CALL VexoSphereReflection64(int32_t width, int32_t height, Pixel64* pixels, int32_t percent);
EFFECTS_API int32_t EFFECTS_CALL VexoSphereReflection128(int32_t width, int32_t height, Pixel128* pixels, int32_t percent);

/* Channel ripper over ((elementCount - 1) >> 2) + 1 pixels (none below 1):
 * mode 1 keeps the strictly largest colour element of each pixel, 2 the
 * strictly middle one, 3 the strictly smallest, clearing the other two;
 * ties and other modes change nothing. The blue, green and red tests run in
 * that order on the pixel as it stands, against the entry blue; `channel`
 * (1 all, 2 red, 3 green, 4 blue, other values none) limits which elements
 * are written, and an element that may not be written keeps its value in
 * the later tests too. 64 compares as signed 16-bit values. */
EFFECTS_API int32_t EFFECTS_CALL VexoRipper32(int32_t elementCount, Pixel32* pixels, int32_t mode, int32_t channel);
EFFECTS_API int32_t EFFECTS_CALL VexoRipper64(int32_t elementCount, Pixel64* pixels, int32_t mode, int32_t channel);
EFFECTS_API int32_t EFFECTS_CALL VexoRipper128(int32_t elementCount, Pixel128* pixels, int32_t mode, int32_t channel);

EFFECTS_EXTERN_C_END
#endif
