// Shared by the stylize tests: exact conversions between the layouts (each
// element scaled and rounded, unlike the library's fast conversions) and the
// comparison of a picture with the 8-bit picture it should match.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

#include "effects/effects.h"
#include "support/pictures.h"

namespace effects::test {

inline uint16_t to15(uint8_t v) { return static_cast<uint16_t>(std::lround(v * 32767.0 / 255.0)); }
inline uint8_t from15(uint16_t v) { return static_cast<uint8_t>(std::lround(v * 255.0 / 32767.0)); }
inline float toFloat(uint8_t v) { return static_cast<float>(v / 255.0); }
inline uint8_t fromFloat(float v) { return static_cast<uint8_t>(std::lround(std::clamp(v * 255.0, 0.0, 255.0))); }

inline std::vector<Pixel64> widen64(const std::vector<Pixel32>& a) {
  std::vector<Pixel64> out;
  for (const auto& p : a) out.push_back({to15(p.blue), to15(p.green), to15(p.red), to15(p.mask)});
  return out;
}
inline std::vector<Pixel128> widen128(const std::vector<Pixel32>& a) {
  std::vector<Pixel128> out;
  for (const auto& p : a) out.push_back({toFloat(p.blue), toFloat(p.green), toFloat(p.red), toFloat(p.mask)});
  return out;
}
inline Pixel32 narrow(const Pixel64& p) { return {from15(p.blue), from15(p.green), from15(p.red), from15(p.mask)}; }
inline Pixel32 narrow(const Pixel128& p) {
  return {fromFloat(p.blue), fromFloat(p.green), fromFloat(p.red), fromFloat(p.mask)};
}

// Every element of `wide`, brought back to 8 bits, within one step of `want`;
// counts the pixels that differ at all, so a test can also ask for exactness.
template <class P>
int expectWithinOneStep(const std::vector<P>& wide, const std::vector<Pixel32>& want) {
  EXPECT_EQ(wide.size(), want.size());
  int differing = 0;
  for (size_t i = 0; i < std::min(wide.size(), want.size()); ++i) {
    const Pixel32 got = narrow(wide[i]);
    const int d = std::max({std::abs(got.blue - want[i].blue), std::abs(got.green - want[i].green),
                            std::abs(got.red - want[i].red), std::abs(got.mask - want[i].mask)});
    differing += d != 0;
    EXPECT_LE(d, 1) << "pixel " << i << ": got " << +got.blue << ' ' << +got.green << ' ' << +got.red << ' '
                    << +got.mask << ", want " << +want[i].blue << ' ' << +want[i].green << ' ' << +want[i].red
                    << ' ' << +want[i].mask;
  }
  return differing;
}

}  // namespace effects::test
