// Pieces shared by the stylize families: colour sums, channel writes, clamped
// additions and the scaled random draw.
#pragma once

#include <cstdint>

#include "core/layout.h"
#include "core/numeric.h"
#include "core/picture.h"
#include "platform/random.h"

namespace effects::stylize {

// B + G + R as the layout compares it: a signed 32-bit sum of the elements
// (read as signed 16-bit values in the 16-bit layout), or a single-precision
// sum, blue first.
template <class L>
inline auto colourSum(const typename L::Pixel& p) {
  if constexpr (L::integer) {
    return static_cast<int32_t>(compared<L>(p.blue)) + compared<L>(p.green) + compared<L>(p.red);
  } else {
    return p.blue + p.green + p.red;
  }
}

// Writes v into the colour elements a channel selector chose.
template <class P, class E>
inline void setChosen(P& p, Channels ch, E v) {
  if (ch.blue) p.blue = v;
  if (ch.green) p.green = v;
  if (ch.red) p.red = v;
}

inline bool any(Channels ch) { return ch.red || ch.green || ch.blue; }

// e + amount in 64-bit arithmetic, clamped to 0..full.
template <class L>
inline typename L::Element addClamped(typename L::Element e, int64_t amount) {
  return clampStore<L>(static_cast<int64_t>(e) + amount);
}

// One draw scaled to 0..1 by 1/32767 in double precision (a draw of 32767
// gives exactly 1.0).
inline double unitDraw(platform::RandomDraws& draws) { return draws.next() * k32767; }

}  // namespace effects::stylize
