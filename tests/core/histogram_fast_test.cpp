// The counted histograms (bins counted in integers, the histogram and the
// statistics worked out from the counts) against the per-pixel walk they
// stand for: each pixel's bin (the sum of a one-pixel call) adds 1.0f to the
// histogram and goes into the statistics in pixel order.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "support/fast_paths.h"

using namespace effects::test;

namespace {

// Starting values a caller may leave in the histogram: counts that reach 2^24
// (where adding 1.0f stops changing them), values past it, fractions, NaN.
std::vector<float> startingHistogram() {
  const float specials[] = {0.0f, -0.0f, 0.5f, 16777200.0f, 16777216.0f, 16777218.0f, 33554436.0f, -5.0f, 1e30f,
                            std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN(), 0.1f};
  std::vector<float> h(256);
  for (size_t b = 0; b < h.size(); ++b) h[b] = specials[b % 12];
  return h;
}

template <class P, class Call>
void expectCountedWalk(const std::vector<P>& px, Call call) {
  const int32_t n = static_cast<int32_t>(px.size());
  auto got = startingHistogram(), want = got;
  float mn, mx, nz = 100.5f, sum;
  EXPECT_EQ(call(4 * n, px.data(), got.data(), &mn, &mx, &nz, &sum), 4 * n);
  float wantMin = 1e10f, wantMax = 1e-10f, wantNz = 100.5f, wantSum = 0.0f;
  std::vector<float> scratch(256);
  for (const P& p : px) {
    float a, b, c = 0, bin;
    call(4, &p, scratch.data(), &a, &b, &c, &bin);
    want[static_cast<size_t>(bin)] += 1.0f;
    if (bin < wantMin) wantMin = bin;
    if (bin < wantNz && bin != 0) wantNz = bin;
    if (bin > wantMax) wantMax = bin;
    wantSum = wantSum + bin;
  }
  for (int b = 0; b < 256; ++b)
    EXPECT_EQ(effects::test::bitsOf(got[b]), effects::test::bitsOf(want[b])) << "bin " << b << ": " << got[b] << " " << want[b];
  EXPECT_EQ(mn, wantMin);
  EXPECT_EQ(mx, wantMax);
  EXPECT_EQ(nz, wantNz);
  EXPECT_EQ(bitsOf(sum), bitsOf(wantSum));
}

}  // namespace

TEST(HistogramCounting, AgainstThePerPixelWalk) {
  for (size_t n : {1u, 7u, 1003u, 40001u}) {
    SCOPED_TRACE(n);
    const auto a = varied<Pixel32>(n), dark = std::vector<Pixel32>(n, Pixel32{0, 0, 1, 0});
    const auto b = varied<Pixel64>(n);
    expectCountedWalk(a, Histogram32Fast);
    expectCountedWalk(dark, Histogram32Fast);  // bin 0 only: no non-zero minimum, maximum stays 1e-10
    expectCountedWalk(b, Histogram64Fast);
    for (uint8_t offset : {0, 1, 2, 3, 6}) {
      auto channel = [offset](auto n4, auto p, auto h, auto x, auto y, auto z, auto s) {
        return HistogramChannel32Fast(n4, p, h, x, y, z, s, offset);
      };
      auto channel64 = [offset](auto n4, auto p, auto h, auto x, auto y, auto z, auto s) {
        return HistogramChannel64Fast(n4, p, h, x, y, z, s, offset);
      };
      expectCountedWalk(a, channel);
      expectCountedWalk(b, channel64);
    }
  }
}
