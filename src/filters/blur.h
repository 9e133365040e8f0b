// The blur families' implementations, for the exports and the tests.
#pragma once

#include <cstdint>

#include "core/picture.h"

namespace effects::filters {

// Brightness-dependent box blur, feed-forward. The integer layouts slide
// their sums; the Reference form sums every box sample.
template <class L>
bool glowBlur(const Picture<typename L::Pixel>& pic);
template <class L>
void glowBlurReference(const Picture<typename L::Pixel>& pic);

// Box blur of radius 1..10 with an optional brightness threshold,
// feed-forward. The integer layouts slide their sums where every sample
// counts; the Reference form sums every box sample.
template <class L>
bool matteBlur(const Picture<typename L::Pixel>& pic, int32_t radius, int32_t threshold, int32_t useThreshold);
template <class L>
void matteBlurReference(const Picture<typename L::Pixel>& pic, int32_t radius, int32_t threshold,
                        int32_t useThreshold);

template <class L>
bool blooming(const Picture<typename L::Pixel>& pic, int32_t passes);

}  // namespace effects::filters
