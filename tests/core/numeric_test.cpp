#include "core/numeric.h"

#include <gtest/gtest.h>

#include <limits>

using namespace effects;

namespace {
const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInf = std::numeric_limits<double>::infinity();
}

// Nearest with ties to even into 16 bits; a result out of range and NaN give
// -32768. The byte and word forms keep the low bits of that result.
TEST(Numeric, RoundToSixteenBitsAndItsLowBits) {
  struct Case { double v; int16_t rounded; uint8_t lowByte; };
  for (Case c : {Case{0.5, 0, 0}, Case{1.5, 2, 2}, Case{2.5, 2, 2}, Case{-0.5, 0, 0}, Case{-1.5, -2, 254},
                 Case{-1.0, -1, 255}, Case{127.5, 128, 128}, Case{255.4, 255, 255}, Case{256.0, 256, 0},
                 Case{32767.4, 32767, 255}, Case{32767.5, -32768, 0}, Case{-32768.5, -32768, 0},
                 Case{-32769.0, -32768, 0}, Case{1e9, -32768, 0}, Case{kNaN, -32768, 0}, Case{kInf, -32768, 0}}) {
    EXPECT_EQ(roundToInt16(c.v), c.rounded) << c.v;
    EXPECT_EQ(roundLowWord(c.v), static_cast<uint16_t>(c.rounded)) << c.v;
    EXPECT_EQ(roundLowByte(c.v), c.lowByte) << c.v;
  }
}

// Out of range and NaN give INT32_MIN, rounding and truncating alike.
TEST(Numeric, RoundAndTruncateToThirtyTwoBits) {
  struct Case { double v; int32_t rounded, truncated; };
  for (Case c : {Case{2.5, 2, 2}, Case{3.5, 4, 3}, Case{-2.9, -3, -2}, Case{2147483647.4, INT32_MAX, INT32_MAX},
                 Case{2147483647.5, INT32_MIN, INT32_MAX}, Case{2147483648.0, INT32_MIN, INT32_MIN},
                 Case{-2147483648.4, INT32_MIN, INT32_MIN}, Case{-2147483648.9, INT32_MIN, INT32_MIN},
                 Case{-kInf, INT32_MIN, INT32_MIN}, Case{kNaN, INT32_MIN, INT32_MIN}}) {
    EXPECT_EQ(roundToInt32(c.v), c.rounded) << c.v;
    EXPECT_EQ(truncToInt32(c.v), c.truncated) << c.v;
  }
}

// Above 254 is 255 and below 1 is 0, both thresholds exclusive; ties to even
// in between. (Q8 through the conversions pins the rest.)
TEST(Numeric, QuantiserThresholdsAndTies) {
  struct Case { double v; uint8_t bin; };
  for (Case c : {Case{254.0, 254}, Case{254.01, 255}, Case{1.0, 1}, Case{0.99, 0}, Case{2.5, 2}, Case{3.5, 4}}) {
    EXPECT_EQ(quantize255(c.v), c.bin) << c.v;
  }
}

// Signed 32-bit arithmetic that wraps instead of overflowing (UBSan watches).
TEST(Numeric, WrappingArithmetic) {
  EXPECT_EQ(wrapAdd(INT32_MAX, 1), INT32_MIN);
  EXPECT_EQ(wrapSub(INT32_MIN, 1), INT32_MAX);
  EXPECT_EQ(wrapMul(65536, 65536), 0);
  EXPECT_EQ(divTrunc(-7, 2), -3);
  EXPECT_EQ(divTrunc(7, -2), -3);
  EXPECT_EQ(divTrunc(INT32_MIN, -1), INT32_MIN);
  EXPECT_EQ(divTrunc(5, 0), 0);
}
