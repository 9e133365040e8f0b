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
EFFECTS_API int32_t EFFECTS_CALL VexoRotate90_32(int32_t width, int32_t height, Pixel32* pixels);
EFFECTS_API int32_t EFFECTS_CALL VexoRotate90_64(int32_t width, int32_t height, Pixel64* pixels);
EFFECTS_API int32_t EFFECTS_CALL VexoRotate90_128(int32_t width, int32_t height, Pixel128* pixels);

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

EFFECTS_EXTERN_C_END
#endif
