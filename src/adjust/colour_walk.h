// Walks and constants shared by the colour adjustments.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "core/layout.h"

namespace effects::colour {

// 1/255 and 1/32767 in double precision.
inline constexpr double k255 = 0.00392156862745098;
inline constexpr double k32767 = 3.051850947599719e-5;

// Visits a width x height picture row by row (rows of width pixels, packed).
// A width or height below 1 visits nothing.
template <class P, class F>
inline void forEachRowPixel(int32_t width, int32_t height, P* pixels, F&& f) {
  if (width < 1 || height < 1) return;
  const size_t w = static_cast<size_t>(width);
  const size_t h = static_cast<size_t>(height);
  for (size_t y = 0; y < h; ++y) {
    P* row = pixels + y * w;
    for (size_t x = 0; x < w; ++x) f(row[x]);
  }
}

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
