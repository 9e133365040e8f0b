// Numeric helpers shared by every family. Results must match the written
// arithmetic to the last bit, so each float-to-integer step says exactly what
// it does, including what it gives for NaN and out-of-range values (where a
// plain C++ conversion would be undefined behaviour).
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace effects {

// 1/255 and 1/32767 in double precision, and the single-precision constants
// some families use instead. Written out as given: 0.003921569f is not
// 1.0f / 255.
inline constexpr double k255 = 0.00392156862745098;
inline constexpr double k32767 = 3.051850947599719e-5;
inline constexpr float k255f = 0.003921569f;
inline constexpr float k32767f = 3.051851e-5f;

// Round to nearest, ties to even (the default floating-point rounding), into
// a signed 32-bit value; NaN and out-of-range give INT32_MIN (the processor's
// "integer indefinite"). On x86 this is one cvtsd2si, which has exactly that
// behaviour; elsewhere the same result is spelled out.
inline int32_t roundToInt32(double v) {
#if defined(__SSE2__)
  return _mm_cvtsd_si32(_mm_set_sd(v));
#else
  const double r = std::nearbyint(v);
  if (!(r >= -2147483648.0 && r <= 2147483647.0)) return INT32_MIN;
  return static_cast<int32_t>(r);
#endif
}

// Round to nearest, ties to even, into a signed 16-bit value. NaN and values
// whose rounded result falls outside -32768..32767 give -32768, as the
// processor's 16-bit store does.
inline int16_t roundToInt16(double v) {
  const int32_t r = roundToInt32(v);
  return (r >= -32768 && r <= 32767) ? static_cast<int16_t>(r) : INT16_MIN;
}

// The same rounding of an extended-precision value, rounded once (going
// through double first could round a near-half value twice).
inline int16_t roundToInt16(long double v) {
  const long double r = std::nearbyint(v);
  if (!(r >= -32768.0L && r <= 32767.0L)) return INT16_MIN;
  return static_cast<int16_t>(r);
}

// Truncate toward zero into a signed 32-bit value; NaN and out-of-range give
// INT32_MIN, as cvttsd2si does. (Written out rather than through the
// intrinsic: compilers fold the intrinsic on a constant NaN to 0.)
inline int32_t truncToInt32(double v) {
  if (!(v > -2147483649.0 && v < 2147483648.0)) return INT32_MIN;
  return static_cast<int32_t>(v);
}

// Low byte of the nearest-even 16-bit rounding: what an 8-bit store of a
// rounded value keeps. Out-of-range values give 0 (the low byte of -32768).
inline uint8_t roundLowByte(double v) {
  return static_cast<uint8_t>(static_cast<uint16_t>(roundToInt16(v)));
}

// The 16 bits of the nearest-even 16-bit rounding, as an unsigned element.
inline uint16_t roundLowWord(double v) {
  return static_cast<uint16_t>(roundToInt16(v));
}

// The bin quantiser on the 0..255 scale: above 254 is 255, below 1 is 0,
// otherwise round to nearest with ties to even. NaN gives 0.
inline uint8_t quantize255(double v) {
  if (v > 254.0) return 255;
  if (v < 1.0) return 0;
  if (v != v) return 0;
  return static_cast<uint8_t>(roundToInt32(v));
}

// Q8, the saturating float-to-8-bit quantiser: v = x * 255 in double; both
// thresholds (254/255 saturates, below 1/255 is black) are intended.
inline uint8_t Q8(double x) { return quantize255(x * 255.0); }

template <class T>
constexpr T clampTo(T v, T lo, T hi) {
  return v < lo ? lo : (v > hi ? hi : v);
}

// Signed 32-bit arithmetic that wraps instead of overflowing.
inline int32_t wrapAdd(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}
inline int32_t wrapSub(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}
inline int32_t wrapMul(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}

// Signed 32-bit division truncating toward zero; the one overflowing case
// (INT32_MIN / -1) gives INT32_MIN instead of trapping, division by zero 0.
inline int32_t divTrunc(int32_t a, int32_t b) {
  if (b == 0) return 0;
  if (b == -1) return wrapSub(0, a);
  return a / b;
}

}  // namespace effects
