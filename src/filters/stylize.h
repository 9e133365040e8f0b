// Pieces shared by the stylize families: colour sums, channel writes, clamped
// additions and the scaled random draw.
#pragma once

#include <cstdint>
#include <type_traits>

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

// min(v + step, last) for 0 <= step, without passing the 32-bit range.
inline int32_t stepUpTo(int32_t v, int32_t step, int32_t last) { return v > last - step ? last : v + step; }

// e + amount in 64-bit arithmetic, clamped to 0..full.
template <class L>
inline typename L::Element addClamped(typename L::Element e, int64_t amount) {
  return clampStore<L>(static_cast<int64_t>(e) + amount);
}

// One draw scaled to 0..1 by 1/32767 in double precision (a draw of 32767
// gives exactly 1.0).
inline double unitDraw(platform::RandomDraws& draws) { return draws.next() * k32767; }

}  // namespace effects::stylize

namespace effects::stylize {

// ------------------------------------------------------------------------
// The plain forms of the families that also have vector forms
// (filters/stylize_simd.h); the tests hold the vector forms to these.

// Halftone and custom halftone: the dark step, then the bright step on the
// sum taken again. The float sum is compared with double limits in double
// precision.
template <class L, class Limit>
inline void halftonePixel(typename L::Pixel& p, Limit dark, Limit bright, Channels ch) {
  using E = typename L::Element;
  if (colourSum<L>(p) <= dark) setChosen(p, ch, E(0));
  if (colourSum<L>(p) > bright) setChosen(p, ch, L::full);
}

// One element of the three-zone posterize, decided on its value at entry.
template <class L, class Limit>
inline typename L::Element threeZones(typename L::Element e, Limit low, Limit high) {
  const auto v = compared<L>(e);
  if (v < low) return 0;
  if (v > high) return L::full;
  return e;
}
template <class L, class Limit>
inline void polarPixel(typename L::Pixel& p, Limit low, Limit high, Channels ch) {
  if (ch.blue) p.blue = threeZones<L>(p.blue, low, high);
  if (ch.green) p.green = threeZones<L>(p.green, low, high);
  if (ch.red) p.red = threeZones<L>(p.red, low, high);
}

// The thatch's two additions. The float member's first pass adds the 16-bit
// amounts unscaled, so its even rows go far above 1.0; only its second pass
// is on the float scale.
template <class L>
inline void thatchRowPass(typename L::Pixel& p) {
  if constexpr (std::is_same_v<L, Layout32>) {
    p.red = addClamped<L>(p.red, 79);
    p.green = addClamped<L>(p.green, 41);
  } else if constexpr (std::is_same_v<L, Layout64>) {
    p.red = addClamped<L>(p.red, 10151);
    p.green = addClamped<L>(p.green, 5268);
  } else {
    p.red = static_cast<float>(p.red + 10151.0);
    p.green = static_cast<float>(p.green + 5268.0);
  }
}
template <class L>
inline void thatchColumnPass(typename L::Pixel& p) {
  if constexpr (L::integer) {
    thatchRowPass<L>(p);
  } else {
    p.red = static_cast<float>(p.red + 0.3097933896908475);
    p.green = static_cast<float>(p.green + 0.16077150791955322);
  }
}
// Pass 1 on the even rows, then pass 2 on the even columns of every row.
template <class L>
void thatchPlain(const Picture<typename L::Pixel>& pic) {
  using P = typename L::Pixel;
  for (int64_t y = 0; y < pic.height(); y += 2) {
    P* r = pic.row(static_cast<int32_t>(y));
    for (int32_t x = 0; x < pic.width(); ++x) thatchRowPass<L>(r[x]);
  }
  forEachRow(pic, [&](P* r, int32_t) {
    for (int64_t x = 0; x < pic.width(); x += 2) thatchColumnPass<L>(r[x]);
  });
}

// The bacterial cast's additions: bytes that wrap modulo 256, 16-bit values
// clamped at 32767, floats added in double precision. A channel whose amount
// is 0 is not written at all (so a float -0.0 and a 16-bit value above 32767
// stay as they are).
template <class L, class Amount>
inline void castPixel(typename L::Pixel& p, Amount red, Amount green, Amount blue) {
  auto add = [](auto& e, Amount a) {
    if (a == 0) return;
    if constexpr (std::is_same_v<L, Layout32>) e = static_cast<uint8_t>(e + a);
    else if constexpr (L::integer) e = addClamped<L>(e, a);
    else e = static_cast<float>(e + a);
  };
  add(p.red, red);
  add(p.green, green);
  add(p.blue, blue);
}

}  // namespace effects::stylize
