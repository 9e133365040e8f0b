// The vector forms of the float-to-integer and 3-channel conversions
// against the plain per-pixel forms (a single pixel is always converted by
// the plain form):
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

// The 3-channel conversions taken a run of pixels at a time (vectors or
// 64-bit words) against the same export on each pixel alone: lengths that
// leave every possible tail, every 16-bit blue word of the 48-bit import, and
// the tricky floats (NaN, infinities, rounding ties) of the float triples.
TEST(ConvertVectorForms, ThreeChannelRunsAgainstOnePixelAtATime) {
  for (int32_t n : {1, 7, 8, 9, 15, 1003, 65536}) {
    SCOPED_TRACE(n);
    const auto px = varied<Pixel32>(static_cast<size_t>(n));
    std::vector<uint8_t> got(3 * n + 1, 0xA5), want = got;
    Convert32BIT_4to3ChannelsFast(n, 1, px.data(), got.data());
    for (int32_t i = 0; i < n; ++i) Convert32BIT_4to3ChannelsFast(1, 1, &px[i], &want[3 * i]);
    ASSERT_EQ(got, want);

    std::vector<uint16_t> rgb(3 * n);
    for (int32_t i = 0; i < 3 * n; ++i) rgb[i] = static_cast<uint16_t>(i % 3 == 2 ? i / 3 : i * 40503u);
    auto wide = varied<Pixel64>(static_cast<size_t>(n)), wideWant = wide;  // the masks must stay
    Convert16BITto15BITFast(n, 1, rgb.data(), wide.data());
    for (int32_t i = 0; i < n; ++i) Convert16BITto15BITFast(1, 1, &rgb[3 * i], &wideWant[i]);
    ASSERT_EQ(wide, wideWant);

    const auto& tricky = trickyFloats();
    const auto floats = varied<Pixel128>(static_cast<size_t>(n));
    std::vector<float> bgr(3 * n);
    for (int32_t i = 0; i < 3 * n; ++i)
      bgr[i] = i % 2 ? tricky[i % tricky.size()] : (&floats[i / 3].blue)[i % 3] * 1.5f;
    std::vector<Pixel64> fromFloat(n), fromFloatWant(n);
    Convertfloat3xto64(n, 1, fromFloat.data(), bgr.data());
    for (int32_t i = 0; i < n; ++i) Convertfloat3xto64(1, 1, &fromFloatWant[i], &bgr[3 * i]);
    ASSERT_EQ(fromFloat, fromFloatWant);
  }
}
