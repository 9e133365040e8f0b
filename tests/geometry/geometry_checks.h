// Shared by the geometry tests: the exports of one layout by name, the sizes
// every export is run on, and exact comparisons.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "effects/effects.h"
#include "support/pictures.h"

namespace effects::test {

template <class P> struct Api;
#define GEOMETRY_API(N)                                                                           \
  template <> struct Api<Pixel##N> {                                                              \
    static constexpr auto verticalFlip = VexoVerticalFlip##N, horizontalFlip = VexoHorizontalFlip##N; \
    static constexpr auto verticalMirror = VexoVerticalMirror##N, horizontalMirror = VexoHorizontalMirror##N; \
    static constexpr auto quarterTurn = VexoRotate90_##N;                                         \
    static constexpr auto scale = VexoScale##N, rotate = VexoRotate##N, skew = VexoSkew##N;      \
    static constexpr auto swirl = VexoSwirl##N, twirl = VexoTwirlEx##N, pinch = VexoPinch##N;    \
    static constexpr auto waves = VexoCircularWaves##N, wavesEx = VexoCircularWavesEx##N;         \
    static constexpr auto blocks = VexoBlockWaves##N, sphere = VexoSphereReflection##N;           \
    static constexpr auto ripper = VexoRipper##N;                                                 \
  };
GEOMETRY_API(32)
GEOMETRY_API(64)
GEOMETRY_API(128)
#undef GEOMETRY_API

struct Size {
  int32_t width, height;
  size_t pixels() const { return static_cast<size_t>(width) * static_cast<size_t>(height); }
};
// One pixel, one row, one column, even, odd, and sizes that leave remainders
// after the vector and tile widths of the fast paths.
inline const Size kSizes[] = {{1, 1}, {1, 7}, {9, 1}, {2, 2}, {3, 5}, {5, 3}, {7, 7}, {8, 8}, {17, 6}, {6, 17}, {70, 70}, {67, 33}};

template <class P>
void expectSamePixels(const std::vector<P>& got, const std::vector<P>& want) {
  ASSERT_EQ(got.size(), want.size());
  for (size_t i = 0; i < got.size(); ++i)
    if (std::memcmp(&got[i], &want[i], sizeof(P)) != 0) {
      ADD_FAILURE() << "first difference at pixel " << i << ": got " << ::testing::PrintToString(got[i])
                    << ", want " << ::testing::PrintToString(want[i]);
      return;
    }
}

template <class P>
bool differ(const std::vector<P>& a, const std::vector<P>& b) {
  return a.size() != b.size() || std::memcmp(a.data(), b.data(), a.size() * sizeof(P)) != 0;
}

using Layouts = ::testing::Types<Pixel32, Pixel64, Pixel128>;

}  // namespace effects::test
