// Pictures and checks for the differential tests of the fast paths: an
// export (which takes its vector or table form over most of a picture) against
// the plain per-pixel form on every pixel.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "support/pictures.h"

namespace effects::test {

// Float values that trip conversions and roundings: NaN, infinities, signed
// zeros, denormals, the ends of the float range, values just around the
// 8-bit thresholds and rounding ties of x * 255, negatives.
inline const std::vector<float>& trickyFloats() {
  static const std::vector<float> v = [] {
    const float inf = std::numeric_limits<float>::infinity();
    std::vector<float> t = {std::numeric_limits<float>::quiet_NaN(), -std::numeric_limits<float>::quiet_NaN(),
                            inf, -inf, 0.0f, -0.0f, std::numeric_limits<float>::denorm_min(),
                            -std::numeric_limits<float>::denorm_min(), std::numeric_limits<float>::min(),
                            std::numeric_limits<float>::max(), -std::numeric_limits<float>::max(), 1.0f, -1.0f,
                            0.5f, 2.0f, 65537.0f, 1e10f, -1e10f, 254.0f / 255, 1.0f / 255, 0.99999f, 1e-8f, 1e-7f};
    for (int k = 0; k < 256; ++k) {
      const float x = (k + 0.5f) / 255.0f;  // near the ties of x * 255
      t.push_back(x);
      t.push_back(std::nextafter(x, 0.0f));
      t.push_back(std::nextafter(x, 2.0f));
    }
    return t;
  }();
  return v;
}

// n pixels of varied contents over each layout's whole range: all bytes, all
// 16-bit words (above 32767 too), and floats mixing the tricky values with
// values in -0.5..2.5.
template <class P>
std::vector<P> varied(size_t n, uint32_t seed = 7) {
  std::vector<P> v(n);
  uint32_t s = seed;
  auto next = [&s] { return s = s * 1103515245u + 12345u; };
  const auto& tricky = trickyFloats();
  for (auto& p : v) {
    for (auto* e : {&p.blue, &p.green, &p.red, &p.mask}) {
      const uint32_t r = next();
      using E = std::remove_reference_t<decltype(*e)>;
      if constexpr (sizeof(E) == 1) *e = static_cast<E>(r >> 24);
      else if constexpr (sizeof(E) == 2) *e = static_cast<E>(r >> 16);
      else *e = (r >> 28) < 5 ? tricky[(r >> 8) % tricky.size()] : static_cast<float>((r >> 8) % 30001) / 10000.0f - 0.5f;
    }
  }
  return v;
}

// run(pixels, count) against plain(pixel) on every pixel of `in`.
template <class P, class Run, class Plain>
void expectPlain(const std::vector<P>& in, Run run, Plain plain) {
  auto got = in, want = in;
  run(got.data(), static_cast<int32_t>(got.size()));
  for (auto& p : want) plain(p);
  ASSERT_EQ(got, want);
}

}  // namespace effects::test
