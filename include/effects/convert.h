/* Conversions between layouts, histograms and dynamic range. Include effects/effects.h. */
#ifndef EFFECTS_CONVERT_H
#define EFFECTS_CONVERT_H
#include "effects/effects.h"
EFFECTS_EXTERN_C_BEGIN

/* Whole-buffer conversions: (elementCount, narrow layout, wide layout), the
 * narrower buffer second whichever way the data flows. ((elementCount - 1)
 * >> 2) + 1 pixels are converted; the result is elementCount (0 for
 * Convert64to32Screen), and a count below 1 touches nothing. */
EFFECTS_API int32_t EFFECTS_CALL Convert64to32Fast(int32_t elementCount, Pixel32* destination, const Pixel64* source);
EFFECTS_API int32_t EFFECTS_CALL Convert64to32Screen(int32_t elementCount, Pixel32* destination, const Pixel64* source);
EFFECTS_API int32_t EFFECTS_CALL Convert32to64Fast(int32_t elementCount, const Pixel32* source, Pixel64* destination);
EFFECTS_API int32_t EFFECTS_CALL Convert32to128Fast(int32_t elementCount, const Pixel32* source, Pixel128* destination);
EFFECTS_API int32_t EFFECTS_CALL Convert64to128Fast(int32_t elementCount, const Pixel64* source, Pixel128* destination);
EFFECTS_API int32_t EFFECTS_CALL Convert128to64Fast(int32_t elementCount, Pixel64* destination, const Pixel128* source);
EFFECTS_API int32_t EFFECTS_CALL Convert128to32Fast(int32_t elementCount, Pixel32* destination, const Pixel128* source);
EFFECTS_API int32_t EFFECTS_CALL Convert128to32Lock(int32_t elementCount, Pixel32* destination, const Pixel128* source);

/* Row conversions to and from 3-channel buffers (red, green, blue; the float
 * triple of Convertfloat3xto64 is blue, green, red): height rows of width
 * pixels, no padding. The result is always 0; reserved is ignored. */
EFFECTS_API int32_t EFFECTS_CALL Convert32BIT_4to3ChannelsFast(int32_t width, int32_t height, const Pixel32* source, uint8_t* rgb24);
EFFECTS_API int32_t EFFECTS_CALL Convert15BITto16BITFast(int32_t width, int32_t height, const Pixel64* source, uint16_t* rgb48);
EFFECTS_API int32_t EFFECTS_CALL Convert16BITto15BITFast(int32_t width, int32_t height, const uint16_t* rgb48, Pixel64* destination);
EFFECTS_API int32_t EFFECTS_CALL Convert32BITto24BITFast(int32_t width, int32_t height, const Pixel128* source, float* rgb);
EFFECTS_API int32_t EFFECTS_CALL Convert128BIT_3to4ChannelsFast(int32_t width, int32_t height, Pixel128* destination, const float* rgb);
EFFECTS_API int32_t EFFECTS_CALL Convertfloat3xto64(int32_t width, int32_t height, Pixel64* destination, const float* bgr);
EFFECTS_API int32_t EFFECTS_CALL Convert128HDRFast(int32_t width, int32_t height, Pixel128* destination, const float* rgb, int32_t reserved);
EFFECTS_API int32_t EFFECTS_CALL Convert128HDRRAWFast(int32_t width, int32_t height, Pixel128* destination, const uint8_t* rgbe, int32_t reserved); /* width * 4 * height elements */

/* Histograms (256 floats, never cleared: calls accumulate) and statistics.
 * On entry minimum = 1e10, maximum = 1e-10 and sum = 0, even for a count
 * below 1; minimumNonZero is reset only by DynamicRange128Fast. The result is
 * elementCount. channelOffset: 0 blue, 1 green, 2 red, 3 mask. */
EFFECTS_API int32_t EFFECTS_CALL Histogram32Fast(int32_t elementCount, const Pixel32* pixels, float* histogram, float* minimum, float* maximum, float* minimumNonZero, float* sum);
EFFECTS_API int32_t EFFECTS_CALL Histogram64Fast(int32_t elementCount, const Pixel64* pixels, float* histogram, float* minimum, float* maximum, float* minimumNonZero, float* sum);
EFFECTS_API int32_t EFFECTS_CALL Histogram128Fast(int32_t elementCount, const Pixel128* pixels, float* histogram, float* minimum, float* maximum, float* minimumNonZero, float* sum);
EFFECTS_API int32_t EFFECTS_CALL HistogramChannel32Fast(int32_t elementCount, const Pixel32* pixels, float* histogram, float* minimum, float* maximum, float* minimumNonZero, float* sum, uint8_t channelOffset);
EFFECTS_API int32_t EFFECTS_CALL HistogramChannel64Fast(int32_t elementCount, const Pixel64* pixels, float* histogram, float* minimum, float* maximum, float* minimumNonZero, float* sum, uint8_t channelOffset);
EFFECTS_API int32_t EFFECTS_CALL HistogramChannel128Fast(int32_t elementCount, const Pixel128* pixels, float* histogram, float* minimum, float* maximum, float* minimumNonZero, float* sum, uint8_t channelOffset);
EFFECTS_API int32_t EFFECTS_CALL DynamicRange32Fast(int32_t elementCount, const Pixel32* pixels, float* minimum, float* maximum, float* reserved, float* sum);
EFFECTS_API int32_t EFFECTS_CALL DynamicRange64Fast(int32_t elementCount, const Pixel64* pixels, float* minimum, float* maximum, float* reserved, float* sum);
EFFECTS_API int32_t EFFECTS_CALL DynamicRange128Fast(int32_t elementCount, const Pixel128* pixels, float* minimum, float* maximum, float* minimumNonZero, float* sum);

EFFECTS_EXTERN_C_END
#endif
