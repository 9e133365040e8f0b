// The plain per-pixel forms of the mask utilities, the inversion and the fill
// of a new picture; buffers.cpp runs vector forms of the same operations over
// whole vectors and these over the rest.
#pragma once

#include "core/layout.h"

namespace effects::buffers {

// 8 bits: the bitwise complement. 16 bits: 32767 - x in 16-bit arithmetic,
// so a value above 32767 wraps. Float: 1.0 - x, no clamping.
inline uint8_t inverted(uint8_t x) { return static_cast<uint8_t>(~x); }
inline uint16_t inverted(uint16_t x) { return static_cast<uint16_t>(32767u - x); }
inline float inverted(float x) { return 1.0f - x; }

template <class P>
struct Invert {
  Channels c;
  void operator()(P& p) const {
    if (c.red) p.red = inverted(p.red);
    if (c.green) p.green = inverted(p.green);
    if (c.blue) p.blue = inverted(p.blue);
  }
};

template <class P>
struct InvertMask {
  void operator()(P& p) const { p.mask = inverted(p.mask); }
};

template <class P>
struct SetMask {
  decltype(P::mask) value;
  void operator()(P& p) const { p.mask = value; }
};

template <class P>
struct MaskToImage {
  void operator()(P& p) const { p.blue = p.green = p.red = p.mask; }
};

template <class P>
struct Fill {
  P colour;
  void operator()(P& p) const { p = colour; }
};

}  // namespace effects::buffers
