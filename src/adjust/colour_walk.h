// Walks and constants shared by the colour adjustments.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "core/layout.h"

namespace effects::colour {

// Calls f(std::integral_constant<int, value>{}) when First <= value <= Last,
// so that a per-call choice (a filter, an order, a sector) is made once and
// each case gets its own loop; any other value calls nothing.
template <int First, int Last, class F>
inline void dispatch(int32_t value, F&& f) {
  if constexpr (First <= Last) {
    if (value == First) {
      f(std::integral_constant<int, First>{});
    } else {
      dispatch<First + 1, Last>(value, f);
    }
  }
}

// The red, green and blue bytes of a packed colour (red in bits 0-7).
struct PackedColour {
  int32_t red, green, blue;
  static constexpr PackedColour of(uint32_t c) {
    return {static_cast<int32_t>(c & 0xFFu), static_cast<int32_t>((c >> 8) & 0xFFu),
            static_cast<int32_t>((c >> 16) & 0xFFu)};
  }
};

}  // namespace effects::colour
