// What every filter export shares: any size from 1 x 1 up stays inside the
// buffer (run under AddressSanitizer with buffers of exactly the picture's
// size), sizes below 1 change nothing, each export changes only the elements
// its family writes, and a scratch request that fails changes nothing.
#include <gtest/gtest.h>

#include "core/scratch.h"
#include "filters/filter_checks.h"

namespace effects::test {
namespace {

const int32_t kSizes[][2] = {{1, 1}, {1, 7}, {7, 1}, {2, 2}, {2, 5}, {5, 2}, {3, 3}, {4, 3}, {9, 7}, {16, 11}};

TEST(FilterFrame, EverySizeStaysInsideThePictureAndChangesOnlyItsElements) {
  for (const auto& c : allFilters()) {
    for (const auto& s : kSizes) {
      SCOPED_TRACE(c.name + " " + std::to_string(s[0]) + "x" + std::to_string(s[1]));
      const size_t n = size_t(s[0]) * size_t(s[1]);
      AnyPicture pic(c.layout, n, 7), before = pic;
      c.run(s[0], s[1], pic.data());
      // The parameters make every export change a picture this large.
      if (s[0] * s[1] > 60) {
        EXPECT_FALSE(pic == before);
      }
      for (unsigned i = 0; i < 4; ++i) {
        if (!(c.changes & (1u << i))) {
          EXPECT_FALSE(pic.elementChanged(before, i)) << "element " << i;
        }
      }
    }
  }
}

TEST(FilterFrame, SizesBelowOneChangeNothing) {
  const int32_t sizes[][2] = {{0, 0}, {0, 5}, {5, 0}, {-1, 3}, {3, -1}, {INT32_MIN, 2}};
  for (const auto& c : allFilters()) {
    for (const auto& s : sizes) {
      SCOPED_TRACE(c.name + " " + std::to_string(s[0]) + "x" + std::to_string(s[1]));
      AnyPicture pic(c.layout, 1, 3), before = pic;
      c.run(s[0], s[1], pic.data());
      EXPECT_TRUE(pic == before);
    }
  }
}

// Under any limit on scratch memory an export either has all it needs and
// gives its normal result, or changes nothing.
TEST(FilterFrame, AFailedScratchRequestChangesNothing) {
  const size_t limits[] = {0, 64, 200, 500, 1200, 3000, 8000};
  for (const auto& c : allFilters()) {
    AnyPicture normal(c.layout, 9 * 7, 5);
    const AnyPicture entry = normal;
    c.run(9, 7, normal.data());
    bool failedOnce = false;
    for (size_t limit : limits) {
      SCOPED_TRACE(c.name + " limit " + std::to_string(limit));
      AnyPicture pic = entry;
      {
        ScratchLimit guard(limit);
        c.run(9, 7, pic.data());
      }
      EXPECT_TRUE(pic == entry || pic == normal);
      failedOnce |= pic == entry;
    }
    EXPECT_EQ(failedOnce, c.scratch) << c.name;
  }
}

}  // namespace
}  // namespace effects::test
