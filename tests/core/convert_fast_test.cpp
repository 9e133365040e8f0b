// The vector forms of the float-to-integer conversions against the plain
// per-pixel forms (a single pixel is always converted by the plain form):
// odd sizes, NaN, infinities, the 8-bit thresholds and rounding ties, values
// beyond the 32-bit range of x * 32767.
#include <gtest/gtest.h>

#include <vector>

#include "support/fast_paths.h"

using namespace effects::test;

namespace {

template <class D>
void expectPerPixel(int32_t(EFFECTS_CALL* convert)(int32_t, D*, const Pixel128*)) {
  for (size_t n : {1u, 3u, 6u, 1003u}) {
    const auto in = varied<Pixel128>(n);
    std::vector<D> got(n), want(n);
    EXPECT_EQ(convert(static_cast<int32_t>(4 * n), got.data(), in.data()), static_cast<int32_t>(4 * n));
    for (size_t i = 0; i < n; ++i) convert(4, &want[i], &in[i]);
    EXPECT_EQ(got, want) << n;
  }
}

}  // namespace

TEST(ConvertVectorForms, FloatToIntegerAgainstOnePixelAtATime) {
  expectPerPixel(Convert128to32Fast);
  expectPerPixel(Convert128to64Fast);
}

// The black point: the darkest colour value (never above 0, NaN never
// winning) subtracted from the colour elements, not from the mask.
TEST(ConvertVectorForms, BlackPointLockAgainstThePlainConversion) {
  for (size_t n : {1u, 5u, 1003u}) {
    auto in = varied<Pixel128>(n);
    float black = 0.0f;
    for (const auto& p : in)
      for (float v : {p.blue, p.green, p.red})
        if (v < black) black = v;
    std::vector<Pixel32> got(n), want(n);
    Convert128to32Lock(static_cast<int32_t>(4 * n), got.data(), in.data());
    for (size_t i = 0; i < n; ++i) {
      const Pixel128 shifted{in[i].blue - black, in[i].green - black, in[i].red - black, in[i].mask};
      Convert128to32Fast(4, &want[i], &shifted);
    }
    EXPECT_EQ(got, want) << n << " black " << black;
  }
}
