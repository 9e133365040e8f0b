#include <gtest/gtest.h>

#include <limits>
#include <utility>
#include <vector>

#include "effects/effects.h"
#include "support/pictures.h"

using namespace effects::test;

namespace {

const float kNaN = std::numeric_limits<float>::quiet_NaN();

// Outputs of one measurement, prefilled with values no export produces so a
// test sees which ones were written.
struct Measured {
  std::vector<float> histogram = std::vector<float>(256, 0.0f);
  float minimum = -7, maximum = -7, minimumNonZero = 1e30f, sum = -7;

  // The histogram as (bin, count) pairs of its non-empty bins.
  std::vector<std::pair<int, float>> bins() const {
    std::vector<std::pair<int, float>> out;
    for (int i = 0; i < 256; ++i) if (histogram[i] != 0.0f) out.emplace_back(i, histogram[i]);
    return out;
  }
};

using Bins = std::vector<std::pair<int, float>>;

Pixel32 grey32(uint8_t v) { return Pixel32{v, v, v, 0}; }
Pixel64 grey64(uint16_t v) { return Pixel64{v, v, v, 0}; }

}  // namespace

TEST(Histogram, LuminanceBinsOfEightBitPixels) {
  // white, blue 1 (0.0721), grey 100, 254.28 (saturates), grey 254, 1.0094
  std::vector<Pixel32> px{grey32(255), {1, 0, 0, 9}, grey32(100), {255, 254, 255, 0}, grey32(254), {14, 0, 0, 0}};
  Measured m;
  EXPECT_EQ(Histogram32Fast(24, px.data(), m.histogram.data(), &m.minimum, &m.maximum, &m.minimumNonZero, &m.sum), 24);
  EXPECT_EQ(m.bins(), (Bins{{0, 1}, {1, 1}, {100, 1}, {254, 1}, {255, 2}}));
  EXPECT_EQ(m.minimum, 0.0f); EXPECT_EQ(m.maximum, 255.0f);
  EXPECT_EQ(m.minimumNonZero, 1.0f);  // bin 0 never counts as the non-zero minimum
  EXPECT_EQ(m.sum, 865.0f);
  // A second call adds to the histogram; the statistics start again, except
  // the non-zero minimum, which goes on from what the caller holds.
  std::vector<Pixel32> grey{grey32(100)};
  Histogram32Fast(4, grey.data(), m.histogram.data(), &m.minimum, &m.maximum, &m.minimumNonZero, &m.sum);
  EXPECT_EQ(m.histogram[100], 2.0f);
  EXPECT_EQ(m.minimum, 100.0f); EXPECT_EQ(m.maximum, 100.0f); EXPECT_EQ(m.sum, 100.0f);
  EXPECT_EQ(m.minimumNonZero, 1.0f);
}

TEST(Histogram, SixteenBitLuminanceIsSignedAndRoundsToEven) {
  std::vector<Pixel64> px{grey64(320), grey64(576), grey64(40000), grey64(32767), grey64(32512)};
  Measured m;
  EXPECT_EQ(Histogram64Fast(20, px.data(), m.histogram.data(), &m.minimum, &m.maximum, &m.minimumNonZero, &m.sum), 20);
  // 2.5 -> 2, 4.5 -> 4, 40000 reads negative -> 0, 255.99 -> 255, 254.0 -> 254
  EXPECT_EQ(m.bins(), (Bins{{0, 1}, {2, 1}, {4, 1}, {254, 1}, {255, 1}}));
  EXPECT_EQ(m.minimum, 0.0f); EXPECT_EQ(m.maximum, 255.0f); EXPECT_EQ(m.minimumNonZero, 2.0f); EXPECT_EQ(m.sum, 515.0f);
}

TEST(Histogram, FloatHistogramComputesNoStatistics) {
  std::vector<Pixel128> px{{0.5f, 0.5f, 0.5f, 0}, {0, 0, 2.0f, 0}, {kNaN, 0, 0, 0}, {0, 0, 0, 1}, {1.5f, 1.5f, 1.5f, 0}};
  Measured m;
  m.minimumNonZero = 42.0f;
  EXPECT_EQ(Histogram128Fast(20, px.data(), m.histogram.data(), &m.minimum, &m.maximum, &m.minimumNonZero, &m.sum), 20);
  // 127.5 -> 128 (ties to even); red 2.0 alone is 108.375; NaN -> 0
  EXPECT_EQ(m.bins(), (Bins{{0, 2}, {108, 1}, {128, 1}, {255, 1}}));
  EXPECT_EQ(m.minimum, 1e10f); EXPECT_EQ(bitsOf(m.maximum), bitsOf(1e-10f)); EXPECT_EQ(m.sum, 0.0f);
  EXPECT_EQ(m.minimumNonZero, 42.0f);
}

TEST(Histogram, ChannelHistogramsPerLayout) {
  std::vector<Pixel32> a{{10, 20, 30, 0}, {10, 20, 0, 255}};
  Measured m;
  EXPECT_EQ(HistogramChannel32Fast(8, a.data(), m.histogram.data(), &m.minimum, &m.maximum, &m.minimumNonZero, &m.sum, 2), 8);
  EXPECT_EQ(m.bins(), (Bins{{0, 1}, {30, 1}}));
  EXPECT_EQ(m.minimum, 0.0f); EXPECT_EQ(m.maximum, 30.0f); EXPECT_EQ(m.minimumNonZero, 30.0f); EXPECT_EQ(m.sum, 30.0f);
  HistogramChannel32Fast(8, a.data(), m.histogram.data(), &m.minimum, &m.maximum, &m.minimumNonZero, &m.sum, 3);
  EXPECT_EQ(m.bins(), (Bins{{0, 2}, {30, 1}, {255, 1}}));
  HistogramChannel32Fast(8, a.data(), m.histogram.data(), &m.minimum, &m.maximum, &m.minimumNonZero, &m.sum, 6);
  EXPECT_EQ(m.bins(), (Bins{{0, 3}, {30, 2}, {255, 1}}));  // only the two low bits count: 6 is red

  // 16 bit: the element is read unsigned (40000 is 312.5, bin 255).
  std::vector<Pixel64> b{{40000, 0, 0, 0}, {320, 0, 0, 0}, {32513, 0, 0, 0}, {127, 0, 0, 0}};
  Measured w;
  HistogramChannel64Fast(16, b.data(), w.histogram.data(), &w.minimum, &w.maximum, &w.minimumNonZero, &w.sum, 0);
  EXPECT_EQ(w.bins(), (Bins{{0, 1}, {2, 1}, {255, 2}}));
  EXPECT_EQ(w.minimum, 0.0f); EXPECT_EQ(w.maximum, 255.0f); EXPECT_EQ(w.minimumNonZero, 2.0f); EXPECT_EQ(w.sum, 512.0f);

  // Float: the value itself (floored at 1e-8) feeds the statistics.
  std::vector<Pixel128> c{{0, 2.0f, 0, 0}, {0, -1.0f, 0, 0}, {0, 0.5f, 0, 0}, {0, kNaN, 0, 0}};
  Measured f;
  HistogramChannel128Fast(16, c.data(), f.histogram.data(), &f.minimum, &f.maximum, &f.minimumNonZero, &f.sum, 1);
  EXPECT_EQ(f.bins(), (Bins{{0, 2}, {128, 1}, {255, 1}}));
  EXPECT_EQ(f.maximum, 2.0f); EXPECT_EQ(f.minimum, static_cast<float>(1e-8)); EXPECT_EQ(f.minimumNonZero, f.minimum);
  EXPECT_EQ(f.sum, 2.5f);
}

TEST(DynamicRange, UnquantisedLuminance) {
  std::vector<Pixel32> a{grey32(255), {1, 0, 0, 0}, {255, 254, 255, 0}};
  Measured m;
  float reserved = 7.0f;
  EXPECT_EQ(DynamicRange32Fast(12, a.data(), &m.minimum, &m.maximum, &reserved, &m.sum), 12);
  EXPECT_EQ(m.minimum, static_cast<float>(0.0721)); EXPECT_EQ(m.maximum, 255.0f);
  EXPECT_EQ(m.sum, 509.356689453125f);  // accumulated in double, stored as float each step
  EXPECT_EQ(reserved, 7.0f);

  std::vector<Pixel64> b{grey64(40000), grey64(0)};  // unsigned and unscaled here
  DynamicRange64Fast(8, b.data(), &m.minimum, &m.maximum, &reserved, &m.sum);
  EXPECT_EQ(m.minimum, 0.0f); EXPECT_EQ(m.maximum, 40000.0f); EXPECT_EQ(m.sum, 40000.0f); EXPECT_EQ(reserved, 7.0f);

  std::vector<Pixel128> c{{0, 0, 0, 1}, {2.0f, 2.0f, 2.0f, 1}};
  m.minimumNonZero = 0.0f;
  DynamicRange128Fast(8, c.data(), &m.minimum, &m.maximum, &m.minimumNonZero, &m.sum);
  EXPECT_EQ(m.minimum, static_cast<float>(1e-8)); EXPECT_EQ(m.minimumNonZero, m.minimum);
  EXPECT_EQ(m.maximum, 2.0f); EXPECT_EQ(m.sum, 2.0f);
}

TEST(DynamicRange, OutputsAreResetEvenWhenNothingIsMeasured) {
  std::vector<Pixel32> a{grey32(50)};
  Measured m;
  m.histogram[3] = 5.0f;
  EXPECT_EQ(Histogram32Fast(0, a.data(), m.histogram.data(), &m.minimum, &m.maximum, &m.minimumNonZero, &m.sum), 0);
  EXPECT_EQ(m.minimum, 1e10f); EXPECT_EQ(bitsOf(m.maximum), bitsOf(1e-10f)); EXPECT_EQ(m.sum, 0.0f);
  EXPECT_EQ(m.minimumNonZero, 1e30f);
  EXPECT_EQ(m.bins(), (Bins{{3, 5}}));
  Measured c;
  EXPECT_EQ(HistogramChannel128Fast(-4, nullptr, c.histogram.data(), &c.minimum, &c.maximum, &c.minimumNonZero, &c.sum, 0), -4);
  EXPECT_EQ(c.minimum, 1e10f); EXPECT_EQ(c.minimumNonZero, 1e30f);
  Measured d;
  EXPECT_EQ(DynamicRange128Fast(0, nullptr, &d.minimum, &d.maximum, &d.minimumNonZero, &d.sum), 0);
  EXPECT_EQ(d.minimum, 1e10f); EXPECT_EQ(d.minimumNonZero, 1e10f); EXPECT_EQ(bitsOf(d.maximum), bitsOf(1e-10f)); EXPECT_EQ(d.sum, 0.0f);
  // A partial count measures the whole last pixel.
  std::vector<Pixel32> two{grey32(10), grey32(20), grey32(30)};
  Measured p;
  DynamicRange32Fast(5, two.data(), &p.minimum, &p.maximum, nullptr, &p.sum);
  EXPECT_EQ(p.maximum, 20.0f);
}
