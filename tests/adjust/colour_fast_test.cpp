// The vector forms of the 8-bit saturation and hue wheel against their plain
// per-pixel forms: every colour at the settings where the arithmetic is at its
// ends, every seventh colour (the low bits varied too) at the others.
#include <gtest/gtest.h>

#include <vector>

#include "adjust/colour.h"
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
  const auto all = colours(1), some = colours(7);
  for (int32_t amount : {-254, 1, 257, 512}) {  // s = 1, 256, 512, 767
    SCOPED_TRACE(amount);
    expectPlain(all, [=](Pixel32* p, int32_t n) { VexoSaturation32(4 * n, p, amount); }, Saturate32{amount + 255});
  }
  for (int32_t amount : {-200, -1, 80, 300}) {
    SCOPED_TRACE(amount);
    expectPlain(some, [=](Pixel32* p, int32_t n) { VexoSaturation32(4 * n, p, amount); }, Saturate32{amount + 255});
  }
}

TEST(ColourVectorForms, HueAgainstThePlainForm) {
  const auto some = colours(7);
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
