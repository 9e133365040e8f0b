// Shared by the geometry tests: patterned pictures of any layout, the sizes
// every export is run on, and exact comparisons.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "effects/effects.h"
#include "support/pictures.h"

namespace effects::test {

template <class P>
std::vector<P> pattern(size_t n, uint32_t seed = 1) {
  if constexpr (std::is_same_v<P, Pixel32>) return pattern32(n, seed);
  else if constexpr (std::is_same_v<P, Pixel64>) return pattern64(n, seed);
  else return pattern128(n, seed);
}

// A pixel whose four elements all hold v (scaled to the layout).
template <class P>
P grey(int v) {
  using E = decltype(P{}.blue);
  const E e = std::is_floating_point_v<E> ? static_cast<E>(v / 255.0f) : static_cast<E>(v);
  return P{e, e, e, e};
}

struct Size {
  int32_t width, height;
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

using Layouts = ::testing::Types<Pixel32, Pixel64, Pixel128>;

}  // namespace effects::test
