// Helpers shared by the tonal adjustment families: the stores that turn a
// computed value back into an element.
#pragma once

#include <cmath>
#include <cstdint>

#include "core/layout.h"
#include "core/numeric.h"
#include "core/picture.h"

namespace effects::tonal {

// pi and 1/180 exactly as the sine curves write them.
inline constexpr double kPi = 3.141592653589793;
inline constexpr double kOneOver180 = 0.005555555555555556;

// Rounds to nearest, ties to even, through a signed 16-bit value and keeps
// the element's width of it: the low byte for 8 bits, all 16 for 16 bits.
template <class L, class T>
inline typename L::Element storeRounded(T v) {
  static_assert(L::integer);
  return static_cast<typename L::Element>(static_cast<uint16_t>(roundToInt16(v)));
}

// Stores the low bits of an integer result, as a narrowing store does.
template <class L>
inline typename L::Element storeLow(int32_t v) {
  return static_cast<typename L::Element>(static_cast<uint32_t>(v));
}

}  // namespace effects::tonal
