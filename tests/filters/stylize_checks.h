// Exact conversions between the layouts for the stylize tests (each element
// scaled and rounded, unlike the library's fast conversions), and the check
// that a wide picture brought back to 8 bits is within `steps[i]` of another.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "effects/effects.h"

namespace effects::test {

inline uint16_t to15(uint8_t v) { return static_cast<uint16_t>(std::lround(v * 32767.0 / 255.0)); }
inline float toFloat(uint8_t v) { return static_cast<float>(v / 255.0); }
inline int eight(uint16_t v) { return static_cast<int>(std::lround(v * 255.0 / 32767.0)); }
inline int eight(float v) { return static_cast<int>(std::lround(std::clamp(v * 255.0, 0.0, 255.0))); }

template <class To, class F>
std::vector<To> widen(const std::vector<Pixel32>& a, F f) {
  std::vector<To> out;
  for (const auto& p : a) out.push_back({f(p.blue), f(p.green), f(p.red), f(p.mask)});
  return out;
}
inline std::vector<Pixel64> widen64(const std::vector<Pixel32>& a) { return widen<Pixel64>(a, to15); }
inline std::vector<Pixel128> widen128(const std::vector<Pixel32>& a) { return widen<Pixel128>(a, toFloat); }

// Returns how many elements differ at all.
template <class P>
int expectWithin(const std::vector<P>& wide, const std::vector<Pixel32>& want, const std::vector<int>& steps) {
  int differing = 0;
  for (size_t i = 0; i < want.size(); ++i) {
    const int got[4] = {eight(wide[i].blue), eight(wide[i].green), eight(wide[i].red), eight(wide[i].mask)};
    const int w[4] = {want[i].blue, want[i].green, want[i].red, want[i].mask};
    for (int e = 0; e < 4; ++e) differing += got[e] != w[e];
    for (int e = 0; e < 4; ++e) EXPECT_LE(std::abs(got[e] - w[e]), steps[i]) << "pixel " << i << " element " << e;
  }
  return differing;
}
template <class P>
int expectWithinOneStep(const std::vector<P>& wide, const std::vector<Pixel32>& want) {
  return expectWithin(wide, want, std::vector<int>(want.size(), 1));
}

}  // namespace effects::test
