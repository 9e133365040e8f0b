// The vector forms of the saturations and the 8-bit hue wheel against their plain
// per-pixel forms: every fifth colour at the settings where the arithmetic is
// at its ends, every 31st (the low bits varied too) at the others. (The
// exhaustive sweeps of the checksum table run every colour through three
// saturations and fourteen hues as well.)
#include <gtest/gtest.h>

#include <vector>

#include "adjust/colour.h"
#include "adjust/colour_simd.h"
#include "core/dispatch.h"
#include "support/fast_paths.h"

using namespace effects;
using namespace effects::colour;
using namespace effects::test;

namespace {

// Every `step`-th (blue, green, red) with varied masks, in rows of 4099
// pixels (so the vectors leave a tail in each call).
std::vector<Pixel32> colours(uint32_t step) {
  std::vector<Pixel32> v((1u << 24) / step / 4099 * 4099 + 3);
  for (uint32_t k = 0; k < v.size(); ++k) {
    const uint32_t i = (k * step + k % step) & 0xFFFFFFu;
    v[k] = Pixel32{uint8_t(i), uint8_t(i >> 8), uint8_t(i >> 16), uint8_t(i * 7)};
  }
  return v;
}

}  // namespace

TEST(ColourVectorForms, SaturationAgainstThePlainForm) {
  const auto all = colours(5), some = colours(31);
  for (int32_t amount : {-254, 1, 257, 512}) {  // s = 1, 256, 512, 767
    SCOPED_TRACE(amount);
    expectPlain(all, [=](Pixel32* p, int32_t n) { VexoSaturation32(4 * n, p, amount); }, Saturate32{amount + 255});
  }
  for (int32_t amount : {-200, -1, 80, 300}) {
    SCOPED_TRACE(amount);
    expectPlain(some, [=](Pixel32* p, int32_t n) { VexoSaturation32(4 * n, p, amount); }, Saturate32{amount + 255});
  }
}

#if defined(__SSE2__)
// Where the processor has AVX2 the export takes that form, so the SSE2 form
// is held to the plain one directly too.
TEST(ColourVectorForms, SseSaturationAgainstThePlainForm) {
  const auto some = colours(31);
  for (int32_t s : {1, 256, 767, 100}) {
    auto got = some, want = some;
    const size_t n = got.size(), done = colour::sse2::saturate32(got.data(), n, s);
    for (size_t i = done; i < n; ++i) Saturate32{s}(got[i]);
    for (auto& p : want) Saturate32{s}(p);
    EXPECT_EQ(got, want) << s;
  }
}
#endif

// 16 bits: random pixels over the whole 16-bit range, and every combination
// of the values where the average, the wrapping products and the clamp turn
// (the pictures' lengths leave tails for the plain form).
TEST(ColourVectorForms, Saturation64AgainstThePlainForm) {
  auto in = varied<Pixel64>(20011);
  const uint16_t edges[] = {0, 1, 2, 3, 32766, 32767, 32768, 32769, 43690, 65533, 65534, 65535};
  for (uint16_t b : edges)
    for (uint16_t g : edges)
      for (uint16_t r : edges) in.push_back(Pixel64{b, g, r, uint16_t(b ^ g ^ r)});
  for (int32_t amount : {-32766, -32765, -16384, -1, 1, 2, 16384, 32767, 32768, 49151, 65533, 65534}) {
    SCOPED_TRACE(amount);
    expectPlain(in, [=](Pixel64* p, int32_t n) { VexoSaturation64(4 * n, p, amount); }, Saturate64{amount + 32767});
#if defined(__SSE2__)
    auto got = in, want = in;
    const size_t n = got.size(), done = colour::sse2::saturate64(got.data(), n, amount + 32767);
    for (size_t i = done; i < n; ++i) Saturate64{amount + 32767}(got[i]);
    for (auto& p : want) Saturate64{amount + 32767}(p);
    ASSERT_EQ(got, want);
#endif
  }
}

TEST(ColourVectorForms, HueAgainstThePlainForm) {
  const auto some = colours(31);
  // Each sector with a weight of 0, one in between and the largest.
  for (int32_t hue : {0, 1, 30, 49, 50, 77, 99, 100, 120, 149, 150, 175, 199, 200, 222, 249, 250, 280, 299, 300, 333, 349, 350}) {
    SCOPED_TRACE(hue);
    const HueStep step = hueStep(hue);
    withValue<0, 6>(step.sector, [&](auto sector) {
      expectPlain(some, [=](Pixel32* p, int32_t n) { VexoHue32(n, 1, p, hue); },
                  RotateHue<decltype(sector)::value, Pixel32, Mix32>{Mix32{step.weight}});
    });
  }
}

TEST(ColourVectorForms, Hue64AgainstThePlainForm) {
  auto in = varied<Pixel64>(4099);
  const uint16_t edges[] = {0, 1, 254, 255, 256, 32767, 32768, 65279, 65534, 65535};
  for (uint16_t b : edges)
    for (uint16_t g : edges)
      for (uint16_t r : edges) in.push_back(Pixel64{b, g, r, uint16_t(b + 3 * g + 7 * r)});
  for (int32_t hue = 0; hue <= 350; hue += 7) {
    SCOPED_TRACE(hue);
    const HueStep step = hueStep(hue);
    withValue<0, 6>(step.sector, [&](auto sector) {
      constexpr int S = decltype(sector)::value;
      const RotateHue<S, Pixel64, Mix64> plain{Mix64{step.weight << 7}};
      expectPlain(in, [=](Pixel64* p, int32_t n) { VexoHue64(n, 1, p, hue); }, plain);
#if defined(__SSE2__)
      auto got = in, want = in;
      const size_t n = got.size(), done = colour::sse2::hue64<S>(got.data(), n, step.weight);
      for (size_t i = done; i < n; ++i) plain(got[i]);
      for (auto& p : want) plain(p);
      ASSERT_EQ(got, want);
#endif
    });
  }
}

// The 8-bit filters, copies, swaps and grey run as operations on 32-bit words, four
// at a time; the 16-bit members, element by element, do the same arithmetic
// on the same values, so they are the plain form to hold them to.
TEST(ColourVectorForms, RearrangementsAgainstTheElementForms) {
  const auto in = varied<Pixel32>(1003);
  std::vector<Pixel64> wide;
  for (const auto& p : in) wide.push_back(Pixel64{p.blue, p.green, p.red, p.mask});
  const int32_t n = static_cast<int32_t>(4 * in.size());
  auto check = [&](const char* what, int32_t which, auto narrowCall, auto wideCall) {
    auto got = in;
    auto want = wide;
    narrowCall(n, got.data(), which);
    wideCall(n, want.data(), which);
    for (size_t i = 0; i < in.size(); ++i)
      ASSERT_EQ(got[i], (Pixel32{uint8_t(want[i].blue), uint8_t(want[i].green), uint8_t(want[i].red), uint8_t(want[i].mask)}))
          << what << " " << which << " at " << i;
  };
  for (int32_t f = 0; f <= 7; ++f) check("filter", f, VexoColorFilter32, VexoColorFilter64);
  for (int32_t c = 0; c <= 5; ++c) check("copy", c, VexoRGBChannelFilter32, VexoRGBChannelFilter64);
  for (int32_t o = 0; o <= 6; ++o) check("swap", o, VexoColorSwitch32, VexoColorSwitch64);
  for (int32_t c = 0; c <= 5; ++c) check("grey", c, VexoGrayScale32, VexoGrayScale64);
}
