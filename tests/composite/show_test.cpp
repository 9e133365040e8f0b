// The display rows of the compositing exports in their vector forms against
// the per-pixel forms: 16-bit values above 32767, floats that trip Q8 and the
// clamped rounding (NaN, infinities, ties of x * 255, the thresholds).
#include <gtest/gtest.h>

#include <vector>

#include "composite/show.h"
#include "support/fast_paths.h"

using namespace effects;
using namespace effects::composite;
using namespace effects::test;

namespace {

template <class P, class Row, class Pixel>
void expectRows(Row row, Pixel pixel) {
  for (size_t n : {1u, 5u, 1003u}) {
    const auto in = varied<P>(n);
    auto got = varied<Pixel32>(n, 9), want = got;
    row(in.data(), got.data(), n);
    for (size_t i = 0; i < n; ++i) pixel(in[i], want[i]);
    EXPECT_EQ(got, want) << n;
  }
}

}  // namespace

TEST(ShowRows, VectorFormsAgainstThePixelForms) {
  expectRows<Pixel32>([](const Pixel32* c, Pixel32* d, size_t n) { showRow(c, d, n); },
                      [](const Pixel32& c, Pixel32& d) { d.blue = c.blue, d.green = c.green, d.red = c.red; });
  expectRows<Pixel64>([](const Pixel64* c, Pixel32* d, size_t n) { showRow(c, d, n); },
                      [](const Pixel64& c, Pixel32& d) { d.blue = shown(c.blue), d.green = shown(c.green), d.red = shown(c.red); });
  expectRows<Pixel128>([](const Pixel128* c, Pixel32* d, size_t n) { showRow<true, false>(c, d, n); },
                       [](const Pixel128& c, Pixel32& d) { d.blue = Q8(c.blue), d.green = Q8(c.green), d.red = Q8(c.red); });
  expectRows<Pixel128>([](const Pixel128* c, Pixel32* d, size_t n) { showRow<true, true>(c, d, n); },
                       [](const Pixel128& c, Pixel32& d) { d = {Q8(c.blue), Q8(c.green), Q8(c.red), Q8(c.mask)}; });
  expectRows<Pixel128>([](const Pixel128* c, Pixel32* d, size_t n) { showRow<false, false>(c, d, n); },
                       [](const Pixel128& c, Pixel32& d) {
                         d.blue = shownClamped(c.blue), d.green = shownClamped(c.green), d.red = shownClamped(c.red);
                       });
}

// Q8's thresholds as float comparisons: x * 255 (exact in double) below 1 is
// x below kQ8Low, above 254 is x above kQ8High.
TEST(ShowRows, QuantiserThresholds) {
  EXPECT_GE(static_cast<double>(convert::kQ8Low) * 255.0, 1.0);
  EXPECT_LT(static_cast<double>(std::nextafter(convert::kQ8Low, 0.0f)) * 255.0, 1.0);
  EXPECT_LE(static_cast<double>(convert::kQ8High) * 255.0, 254.0);
  EXPECT_GT(static_cast<double>(std::nextafter(convert::kQ8High, 2.0f)) * 255.0, 254.0);
}
