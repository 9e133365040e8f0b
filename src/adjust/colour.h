// The plain per-pixel forms of the colour mixes: saturation and the hue
// wheel. colour.cpp runs the vector forms of adjust/colour_simd.h over whole
// vectors and these over the rest; the tests hold the vector forms to these.
// And the walk of the 8-bit rearrangements as 32-bit word operations.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "core/layout.h"
#include "core/numeric.h"
#include "core/picture.h"

namespace effects::colour {

// 8 bits: s = amount + 255 in 1..767 (not 255); each element moves away from
// (or toward) the pixel's integer average. The weights sum to 255 but the
// result is shifted by 8, so the slight darkening is part of the effect.
struct Saturate32 {
  int32_t s;
  void operator()(Pixel32& p) const {
    const int32_t keep = 255 - s;
    const int32_t avg = (p.blue + p.green + p.red) / 3;
    auto move = [&](int32_t c) { return static_cast<uint8_t>(clampTo((keep * avg + c * s) >> 8, 0, 255)); };
    p.blue = move(p.blue);
    p.green = move(p.green);
    p.red = move(p.red);
  }
};

// 16 bits: s = amount + 32767 in 1..98301 (not 32767), divided by 32767 in
// signed 32-bit arithmetic. The products are 32-bit and wrap for the
// strongest settings on very unbalanced pixels, as the 32-bit arithmetic
// does; the clamp then decides.
struct Saturate64 {
  int32_t s;
  void operator()(Pixel64& p) const {
    const int32_t keep = 32767 - s;
    const int32_t avg = (p.blue + p.green + p.red) / 3;
    auto move = [&](int32_t c) {
      const int32_t q = divTrunc(wrapAdd(wrapMul(c, s), wrapMul(keep, avg)), 32767);
      return static_cast<uint16_t>(clampTo(q, 0, 32767));
    };
    p.blue = move(p.blue);
    p.green = move(p.green);
    p.red = move(p.red);
  }
};

struct HueStep {
  int32_t sector;  // 0..6
  int32_t weight;  // 0..255
};

// Seven sectors of 50. The last two sectors use 5.11 instead of 5.12 so that
// hue 350 gives a weight of exactly 255 (and the picture back unchanged).
inline HueStep hueStep(int32_t hue) {
  const int32_t h = clampTo(hue, 0, 350);
  const int32_t sector = std::min(h / 50, 6);
  const double factor = sector <= 4 ? 5.12 : 5.11;
  return {sector, truncToInt32((h - 50 * sector) * factor)};
}

// The sector's rearrangement; every right-hand side reads the elements as
// they were before the pixel was touched.
template <int Sector, class P, class Mix>
inline void rotateHue(P& p, const Mix& mix) {
  const auto b = p.blue, g = p.green, r = p.red;
  if constexpr (Sector == 0) {
    p.green = mix(g, r);
  } else if constexpr (Sector == 1) {
    p.green = r; p.red = mix(r, b);
  } else if constexpr (Sector == 2) {
    p.blue = mix(b, r); p.green = r; p.red = b;
  } else if constexpr (Sector == 3) {
    p.blue = r; p.green = mix(r, b); p.red = b;
  } else if constexpr (Sector == 4) {
    p.blue = r; p.green = b; p.red = mix(b, r);
  } else if constexpr (Sector == 5) {
    p.blue = mix(r, b); p.green = b; p.red = r;
  } else {
    p.green = mix(b, g);
  }
}

// The mixes a -> z by a weight w of 0..255: 8 bits out of 255, shifted by 8;
// 16 bits with the weight shifted left by 7, out of 32640, divided exactly;
// float divided by 255 (not 256) in single precision. A weight of 0 keeps a,
// full weight gives z.
struct Mix32 {
  int32_t w;
  uint8_t operator()(int32_t a, int32_t z) const {
    if (w == 0) return static_cast<uint8_t>(a);
    if (w == 255) return static_cast<uint8_t>(z);
    return static_cast<uint8_t>(((255 - w) * a + w * z) >> 8);
  }
};
struct Mix64 {
  int32_t w;  // already shifted by 7
  uint16_t operator()(int32_t a, int32_t z) const {
    if (w == 0) return static_cast<uint16_t>(a);
    if (w == 32640) return static_cast<uint16_t>(z);
    return static_cast<uint16_t>(((32640 - w) * a + w * z) / 32640);
  }
};
struct Mix128 {
  int32_t w;
  float operator()(float a, float z) const {
    if (w == 0) return a;
    if (w == 255) return z;
    return (static_cast<float>(255 - w) * a + static_cast<float>(w) * z) * 0.003921569f;
  }
};

template <int Sector, class P, class Mix>
struct RotateHue {
  Mix mix;
  void operator()(P& p) const { rotateHue<Sector>(p, mix); }
};

// An 8-bit pixel read as a little-endian 32-bit word has blue in bits 0-7,
// green in 8-15, red in 16-23 and the mask in 24-31. The filters, copies and
// swaps below are written for such words once and run on four words at a time
// (a vector of the compiler's vector extension) and on single words for the
// rest: the same operations either way.
using Words = uint32_t __attribute__((vector_size(16)));

template <class Op>
inline void wordWalk(int32_t n, Pixel32* px, Op op) {
  const size_t count = pixelsForCount<Pixel32>(n);
  if (px == nullptr) return;
  size_t i = 0;
  for (; i + 4 <= count; i += 4) {
    Words v;
    std::memcpy(&v, px + i, 16);
    v = op(v);
    std::memcpy(px + i, &v, 16);
  }
  for (; i < count; ++i) {
    uint32_t w;
    std::memcpy(&w, px + i, 4);
    w = op(w);
    std::memcpy(px + i, &w, 4);
  }
}

template <class W>
inline W byteAt(W v, int shift) {
  return (v >> shift) & 0xFFu;
}

}  // namespace effects::colour
