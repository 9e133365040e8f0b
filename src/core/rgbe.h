// The RGBE pixel and its exponent scale, shared by the RGBE import conversion and the
// exported ConvertRGBEto128: 2^(e - 136), i.e. 2^(e - 128) / 256 for an 8-bit
// mantissa. An exponent byte of 0 is not special here: it gives 2^-136.
#pragma once

#include <cmath>
#include <cstdint>

namespace effects {

// One RGBE pixel: red, green and blue mantissas and their shared exponent.
struct RgbeQuad {
  uint8_t red, green, blue, exponent;
};
static_assert(sizeof(RgbeQuad) == 4);

inline double rgbeScale(uint8_t exponent) { return std::ldexp(1.0, static_cast<int>(exponent) - 136); }

}  // namespace effects
