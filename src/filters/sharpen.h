// The sharpening, edge and morphology families' implementations, for the
// exports and the tests.
#pragma once

#include <cstdint>

#include "filters/neighbourhood.h"

namespace effects::filters {

// Diagonal difference boost of the elements W (colour or mask), feed-forward.
template <class L, Which W>
void sharpen(const Picture<typename L::Pixel>& pic, double amount);

// Box-blur based unsharp mask of blue, green and red; the mask is kept.
template <class L>
bool unsharpMask(const Picture<typename L::Pixel>& pic, int32_t radius, double amount);

// Gradient magnitude (Complement: its complement) against the pixels `step`
// down and right; the integer layouts use SSE2 rows where the build has them
// (Fast) and the step reads ahead.
template <class L, bool Complement, bool Fast>
void edges(const Picture<typename L::Pixel>& pic, int32_t gain, int32_t step);

// The 3x3 morphology (eight cells: the lower right one is not part of it).
enum class Reduce { Maximum, Minimum, Contour };
template <class L, Which W, Reduce R>
bool morphology(const Picture<typename L::Pixel>& pic);
template <class L, Which W, Reduce R>
bool morphologyReference(const Picture<typename L::Pixel>& pic);

}  // namespace effects::filters
