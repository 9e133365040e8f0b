// Helpers shared by the tonal adjustment families: the per-layout scales and
// the stores that turn a computed value back into an element.
#pragma once

#include <cmath>
#include <cstdint>
#include <type_traits>

#include "core/layout.h"
#include "core/numeric.h"

namespace effects::tonal {

// pi and 1/180 exactly as the sine curves write them.
inline constexpr double kPi = 3.141592653589793;
inline constexpr double kOneOver180 = 0.005555555555555556;

// The integer layouts' full value (255 or 32767) and reciprocal.
template <class L>
inline constexpr int32_t top = is32<L> ? 255 : 32767;
template <class L>
inline constexpr double kTop = is32<L> ? k255 : k32767;

// Rounds to nearest, ties to even, through a signed 16-bit value and keeps
// the element's width of it: the low byte for 8 bits, all 16 for 16 bits.
template <class L>
inline typename L::Element storeRounded(double v) {
  if constexpr (is32<L>) return roundLowByte(v);
  else return roundLowWord(v);
}

// The same rounding for an extended-precision value, rounded once (going
// through double first could round a near-half value twice).
inline int16_t roundToInt16(long double v) {
  const long double r = std::nearbyint(v);
  if (!(r >= -32768.0L && r <= 32767.0L)) return INT16_MIN;
  return static_cast<int16_t>(r);
}

template <class L>
inline typename L::Element storeRounded(long double v) {
  return static_cast<typename L::Element>(static_cast<uint16_t>(roundToInt16(v)));
}

// Stores the low bits of an integer result, as a narrowing store does.
template <class L>
inline typename L::Element storeLow(int32_t v) {
  return static_cast<typename L::Element>(static_cast<uint32_t>(v));
}

// Visits the width x height pixels of a picture given by its size: the
// element count width * 4 * height is formed in 32-bit arithmetic, and
// nothing happens when it is below 1.
template <class P, class F>
inline void forEachPixelOf(uint32_t width, uint32_t height, P* pixels, F&& f) {
  forEachPixel(elementsOf(width, height), pixels, static_cast<F&&>(f));
}

}  // namespace effects::tonal
