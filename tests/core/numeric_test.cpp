#include "core/numeric.h"

#include <gtest/gtest.h>

#include <limits>

using namespace effects;

namespace {
const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInf = std::numeric_limits<double>::infinity();
}

TEST(Numeric, RoundToInt16TiesToEvenAndOutOfRange) {
  EXPECT_EQ(roundToInt16(0.5), 0);
  EXPECT_EQ(roundToInt16(1.5), 2);
  EXPECT_EQ(roundToInt16(2.5), 2);
  EXPECT_EQ(roundToInt16(-0.5), 0);
  EXPECT_EQ(roundToInt16(-1.5), -2);
  EXPECT_EQ(roundToInt16(32767.4), 32767);
  EXPECT_EQ(roundToInt16(32767.5), -32768);  // rounds to 32768: out of range
  EXPECT_EQ(roundToInt16(-32768.5), -32768);  // ties to even stays in range
  EXPECT_EQ(roundToInt16(-32769.0), -32768);
  EXPECT_EQ(roundToInt16(1e9), -32768);
  EXPECT_EQ(roundToInt16(kNaN), -32768);
  EXPECT_EQ(roundToInt16(kInf), -32768);
}

TEST(Numeric, LowByteAndWordOfTheRounding) {
  EXPECT_EQ(roundLowByte(255.4), 255);
  EXPECT_EQ(roundLowByte(256.0), 0);     // low byte of 256
  EXPECT_EQ(roundLowByte(-1.0), 255);    // low byte of -1
  EXPECT_EQ(roundLowByte(127.5), 128);
  EXPECT_EQ(roundLowByte(40000.0), 0);   // -32768 has low byte 0
  EXPECT_EQ(roundLowWord(-1.0), 65535);
  EXPECT_EQ(roundLowWord(32767.0), 32767);
  EXPECT_EQ(roundLowWord(32768.0), 32768);  // -32768 as an unsigned word
}

TEST(Numeric, RoundAndTruncateToInt32) {
  EXPECT_EQ(roundToInt32(2.5), 2);
  EXPECT_EQ(roundToInt32(3.5), 4);
  EXPECT_EQ(roundToInt32(-2147483648.4), INT32_MIN);
  EXPECT_EQ(roundToInt32(2147483647.4), INT32_MAX);
  EXPECT_EQ(roundToInt32(2147483647.5), INT32_MIN);
  EXPECT_EQ(roundToInt32(kNaN), INT32_MIN);
  EXPECT_EQ(truncToInt32(2.9), 2);
  EXPECT_EQ(truncToInt32(-2.9), -2);
  EXPECT_EQ(truncToInt32(2147483647.9), INT32_MAX);
  EXPECT_EQ(truncToInt32(-2147483648.9), INT32_MIN);
  EXPECT_EQ(truncToInt32(2147483648.0), INT32_MIN);
  EXPECT_EQ(truncToInt32(-kInf), INT32_MIN);
  EXPECT_EQ(truncToInt32(kNaN), INT32_MIN);
  EXPECT_EQ(truncToInt16Wrap(65537.7), 1);
  EXPECT_EQ(truncToInt16Wrap(-1.5), -1);
}

TEST(Numeric, Q8ThresholdsAndTies) {
  EXPECT_EQ(Q8(0.9970), 255);                // 254.24 saturates
  EXPECT_EQ(quantize255(254.0), 254);        // exactly 254 is not above 254
  EXPECT_EQ(Q8(0.003), 0);                   // 0.765 is below 1
  EXPECT_EQ(quantize255(1.0), 1);           // exactly 1 is not below 1
  EXPECT_EQ(Q8(0.5), 128);                   // 127.5 ties to even
  EXPECT_EQ(quantize255(2.5), 2);            // ties to even, down and up
  EXPECT_EQ(quantize255(3.5), 4);
  EXPECT_EQ(Q8(2.0), 255);
  EXPECT_EQ(Q8(-1.0), 0);
  EXPECT_EQ(Q8(kNaN), 0);
  EXPECT_EQ(quantize255(254.5), 255);
  EXPECT_EQ(quantize255(0.0721), 0);
}

TEST(Numeric, ClampsAndWrappingArithmetic) {
  EXPECT_EQ(clampTo(300, 0, 255), 255);
  EXPECT_EQ(clampTo(-3, 0, 255), 0);
  EXPECT_EQ(clampTo(0.5f, 0.0f, 1.0f), 0.5f);
  EXPECT_EQ(wrapAdd(INT32_MAX, 1), INT32_MIN);
  EXPECT_EQ(wrapSub(INT32_MIN, 1), INT32_MAX);
  EXPECT_EQ(wrapMul(65536, 65536), 0);
  EXPECT_EQ(divTrunc(-7, 2), -3);
  EXPECT_EQ(divTrunc(7, -2), -3);
  EXPECT_EQ(divTrunc(INT32_MIN, -1), INT32_MIN);
}
