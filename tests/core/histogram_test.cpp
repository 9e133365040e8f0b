#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <utility>
#include <vector>

#include "effects/effects.h"

namespace {

const float kNaN = std::numeric_limits<float>::quiet_NaN();
const float kFloor = static_cast<float>(1e-8);  // the float measures' floor

using Bins = std::vector<std::pair<int, float>>;
using Stats = std::array<float, 4>;  // minimum, maximum, non-zero minimum, sum

// The outputs of a measurement, prefilled with values no export produces so
// a test sees which ones were written. The dynamic range of 8 and 16 bits
// gets minimumNonZero as its reserved output.
struct Measured {
  std::vector<float> histogram = std::vector<float>(256, 0.0f);
  float minimum = -7, maximum = -7, minimumNonZero = 1e30f, sum = -7;

  // A histogram export, with its channel offset where it takes one.
  template <class F, class P, class... Offset>
  int32_t run(F f, int32_t n, const std::vector<P>& px, Offset... offset) {
    return f(n, px.data(), histogram.data(), &minimum, &maximum, &minimumNonZero, &sum, offset...);
  }
  template <class F, class P>
  int32_t range(F f, int32_t n, const std::vector<P>& px) {
    return f(n, px.data(), &minimum, &maximum, &minimumNonZero, &sum);
  }
  Stats stats() const { return {minimum, maximum, minimumNonZero, sum}; }
  // The non-empty bins as (bin, count) pairs.
  Bins bins() const {
    Bins out;
    for (int i = 0; i < 256; ++i) if (histogram[i] != 0.0f) out.emplace_back(i, histogram[i]);
    return out;
  }
};

Pixel32 grey32(uint8_t v) { return Pixel32{v, v, v, 0}; }
Pixel64 grey64(uint16_t v) { return Pixel64{v, v, v, 0}; }

}  // namespace

// The 8- and 16-bit histograms feed the bin number into the statistics, and
// bin 0 never becomes the non-zero minimum.
TEST(Histogram, IntegerLuminanceBinsAndAccumulation) {
  // white, blue 1 (0.0721), grey 100, 254.28 (saturates), grey 254, 1.0094
  std::vector<Pixel32> px{grey32(255), {1, 0, 0, 9}, grey32(100), {255, 254, 255, 0}, grey32(254), {14, 0, 0, 0}};
  Measured m;
  EXPECT_EQ(m.run(Histogram32Fast, 24, px), 24);
  EXPECT_EQ(m.bins(), (Bins{{0, 1}, {1, 1}, {100, 1}, {254, 1}, {255, 2}}));
  EXPECT_EQ(m.stats(), (Stats{0, 255, 1, 865}));
  // A second call adds to the histogram; the statistics start again, except
  // the non-zero minimum, which goes on from what the caller holds.
  m.run(Histogram32Fast, 4, std::vector<Pixel32>{grey32(100)});
  EXPECT_EQ(m.histogram[100], 2.0f);
  EXPECT_EQ(m.stats(), (Stats{100, 100, 1, 100}));

  // 16 bit, read signed and scaled by 1/128: 2.5 -> 2 and 4.5 -> 4 (ties to
  // even), 40000 reads negative -> 0, 255.99 -> 255, 254.0 -> 254.
  std::vector<Pixel64> words{grey64(320), grey64(576), grey64(40000), grey64(32767), grey64(32512)};
  Measured w;
  EXPECT_EQ(w.run(Histogram64Fast, 20, words), 20);
  EXPECT_EQ(w.bins(), (Bins{{0, 1}, {2, 1}, {4, 1}, {254, 1}, {255, 1}}));
  EXPECT_EQ(w.stats(), (Stats{0, 255, 2, 515}));
}

// 127.5 -> 128; red 2.0 alone is 108.375; NaN -> 0. The statistics keep their
// initial values and the non-zero minimum is not touched.
TEST(Histogram, FloatHistogramComputesNoStatistics) {
  std::vector<Pixel128> px{{0.5f, 0.5f, 0.5f, 0}, {0, 0, 2.0f, 0}, {kNaN, 0, 0, 0}, {0, 0, 0, 1}, {1.5f, 1.5f, 1.5f, 0}};
  Measured m;
  EXPECT_EQ(m.run(Histogram128Fast, 20, px), 20);
  EXPECT_EQ(m.bins(), (Bins{{0, 2}, {108, 1}, {128, 1}, {255, 1}}));
  EXPECT_EQ(m.stats(), (Stats{1e10f, 1e-10f, 1e30f, 0}));
}

TEST(Histogram, ChannelHistogramsPerLayout) {
  std::vector<Pixel32> a{{10, 20, 30, 0}, {10, 20, 0, 255}};
  Measured m;
  EXPECT_EQ(m.run(HistogramChannel32Fast, 8, a, 2), 8);
  EXPECT_EQ(m.bins(), (Bins{{0, 1}, {30, 1}}));
  EXPECT_EQ(m.stats(), (Stats{0, 30, 30, 30}));
  m.run(HistogramChannel32Fast, 8, a, 3);
  m.run(HistogramChannel32Fast, 8, a, 6);  // only the two low bits count: 6 is red
  EXPECT_EQ(m.bins(), (Bins{{0, 3}, {30, 2}, {255, 1}}));

  // 16 bit: the element is read unsigned (40000 is 312.5, bin 255).
  std::vector<Pixel64> b{{40000, 0, 0, 0}, {320, 0, 0, 0}, {32513, 0, 0, 0}, {127, 0, 0, 0}};
  Measured w;
  w.run(HistogramChannel64Fast, 16, b, 0);
  EXPECT_EQ(w.bins(), (Bins{{0, 1}, {2, 1}, {255, 2}}));
  EXPECT_EQ(w.stats(), (Stats{0, 255, 2, 512}));

  // Float: the value itself, floored at 1e-8, feeds the statistics.
  std::vector<Pixel128> c{{0, 2.0f, 0, 0}, {0, -1.0f, 0, 0}, {0, 0.5f, 0, 0}, {0, kNaN, 0, 0}};
  Measured f;
  f.run(HistogramChannel128Fast, 16, c, 1);
  EXPECT_EQ(f.bins(), (Bins{{0, 2}, {128, 1}, {255, 1}}));
  EXPECT_EQ(f.stats(), (Stats{kFloor, 2, kFloor, 2.5f}));
}

// The luminance itself, not quantised; the sum is formed in double and stored
// as float at every step. The 8- and 16-bit forms leave their reserved output
// alone; the float form floors at 1e-8 and resets the non-zero minimum.
TEST(DynamicRange, UnquantisedLuminance) {
  Measured m;
  EXPECT_EQ(m.range(DynamicRange32Fast, 12, std::vector<Pixel32>{grey32(255), {255, 2, 0, 0}, {1, 0, 0, 0}}), 12);
  // Summed in float, the last step would give 274.88839721679688.
  EXPECT_EQ(m.stats(), (Stats{static_cast<float>(0.0721), 255, 1e30f, 274.888427734375f}));
  // 16 bit: unsigned and unscaled.
  m.range(DynamicRange64Fast, 8, std::vector<Pixel64>{grey64(40000), grey64(0)});
  EXPECT_EQ(m.stats(), (Stats{0, 40000, 1e30f, 40000}));
  m.minimumNonZero = 0.0f;
  m.range(DynamicRange128Fast, 8, std::vector<Pixel128>{{0, 0, 0, 1}, {2.0f, 2.0f, 2.0f, 1}});
  EXPECT_EQ(m.stats(), (Stats{kFloor, 2, kFloor, 2}));
}

// The statistics are reset before the count is looked at (the non-zero
// minimum only by the float dynamic range); the histogram is never cleared.
TEST(DynamicRange, OutputsAreResetEvenWhenNothingIsMeasured) {
  Measured m;
  m.histogram[3] = 5.0f;
  EXPECT_EQ(m.run(Histogram32Fast, -4, std::vector<Pixel32>{}), -4);
  EXPECT_EQ(m.stats(), (Stats{1e10f, 1e-10f, 1e30f, 0}));
  m.minimum = m.maximum = m.sum = -7;
  EXPECT_EQ(m.run(HistogramChannel128Fast, 0, std::vector<Pixel128>{}, 0), 0);
  EXPECT_EQ(m.stats(), (Stats{1e10f, 1e-10f, 1e30f, 0}));
  EXPECT_EQ(m.bins(), (Bins{{3, 5}}));
  EXPECT_EQ(m.range(DynamicRange128Fast, 0, std::vector<Pixel128>{}), 0);
  EXPECT_EQ(m.stats(), (Stats{1e10f, 1e-10f, 1e10f, 0}));
}
