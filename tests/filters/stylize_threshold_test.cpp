#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "adjust/adjust_checks.h"

using namespace effects::test;

TEST(StylizeThresholds, Halftones) {
  expectExamples<Pixel32>({
      {"level 2, red: 384 goes bright", ONE(VexoHalftone32(4, p, 2, 2)), {128, 128, 128, 9}, {128, 128, 255, 9}},
      {"level 2, red: 383 goes dark", ONE(VexoHalftone32(4, p, 2, 2)), {127, 128, 128, 9}, {127, 128, 0, 9}},
      {"level 2: 383 with red 0 is still above 382", ONE(VexoHalftone32(4, p, 2, 2)), {255, 128, 0, 9}, {255, 128, 255, 9}},
      {"level 1, all: 200 is dark", ONE(VexoHalftone32(4, p, 1, 1)), {100, 50, 50, 9}, {0, 0, 0, 9}},
      {"level 1, blue: 201 is bright", ONE(VexoHalftone32(4, p, 1, 4)), {100, 50, 51, 9}, {255, 50, 51, 9}},
      {"level 3, green: 500 is dark", ONE(VexoHalftone32(4, p, 3, 3)), {200, 200, 100, 9}, {200, 0, 100, 9}},
      {"level 4", ONE(VexoHalftone32(4, p, 4, 1)), {0, 0, 0, 9}, {0, 0, 0, 9}},
      {"channel 5", ONE(VexoHalftone32(4, p, 1, 5)), {0, 0, 0, 9}, {0, 0, 0, 9}},
      {"mask 51", ONE(VexoHalftoneMask32(4, p)), {1, 2, 3, 51}, {1, 2, 3, 255}},
      {"mask 50", ONE(VexoHalftoneMask32(4, p)), {1, 2, 3, 50}, {1, 2, 3, 0}},
      {"custom: 300 is black", ONE(VexoCustomHalftone32(4, p, 300, 1)), {100, 100, 100, 9}, {0, 0, 0, 9}},
      {"custom: 301 is white", ONE(VexoCustomHalftone32(4, p, 300, 1)), {100, 100, 101, 9}, {255, 255, 255, 9}},
      {"custom: 765", ONE(VexoCustomHalftone32(4, p, 765, 1)), {255, 255, 255, 9}, {0, 0, 0, 9}},
      {"custom: enable 2", ONE(VexoCustomHalftone32(4, p, 765, 2)), {1, 2, 3, 9}, {1, 2, 3, 9}},
  });
  expectExamples<Pixel64>({
      {"level 1: 8566 is dark", ONE(VexoHalftone64(4, p, 1, 1)), {8566, 0, 0, 9}, {0, 0, 0, 9}},
      {"level 1: 8567 is bright", ONE(VexoHalftone64(4, p, 1, 1)), {8567, 0, 0, 9}, {32767, 32767, 32767, 9}},
      {"level 2: one limit", ONE(VexoHalftone64(4, p, 2, 2)), {16404, 0, 0, 9}, {16404, 0, 0, 9}},
      {"signed read: 40000 is dark", ONE(VexoHalftone64(4, p, 3, 1)), {40000, 0, 0, 9}, {0, 0, 0, 9}},
      {"mask 6425", ONE(VexoHalftoneMask64(4, p)), {1, 2, 3, 6425}, {1, 2, 3, 32767}},
      {"mask 40000 reads negative", ONE(VexoHalftoneMask64(4, p)), {1, 2, 3, 40000}, {1, 2, 3, 0}},
      {"custom: 30001", ONE(VexoCustomHalftone64(4, p, 30000, 1)), {10000, 10000, 10001, 9}, {32767, 32767, 32767, 9}},
  });
  expectExamples<Pixel128>({
      {"level 2: 0.5 is dark", ONE(VexoHalftone128(4, p, 2, 1)), {0.5f, 0, 0, 0.5f}, {0, 0, 0, 0.5f}},
      {"level 2: 0.5007 is bright", ONE(VexoHalftone128(4, p, 2, 1)), {0.5f, 0.0007f, 0, 0.5f}, {1, 1, 1, 0.5f}},
      {"level 1: 0.2615, green", ONE(VexoHalftone128(4, p, 1, 3)), {0.2615f, 0, 0, 0.5f}, {0.2615f, 1, 0, 0.5f}},
      {"mask 0.196", ONE(VexoHalftoneMask128(4, p)), {1, 2, 3, 0.196f}, {1, 2, 3, 0}},
      {"mask 0.1961", ONE(VexoHalftoneMask128(4, p)), {1, 2, 3, 0.1961f}, {1, 2, 3, 1}},
      {"mask NaN", ONE(VexoHalftoneMask128(4, p)), {1, 2, 3, NAN}, {1, 2, 3, 0}},
      {"custom: limit 1 on 1.1", ONE(VexoCustomHalftone128(4, p, 1, 1)), {0.5f, 0.3f, 0.3f, 0.5f}, {1, 1, 1, 0.5f}},
  });
}

TEST(StylizeThresholds, PolarPasses) {
  expectExamples<Pixel32>({
      {"polar, level 1", ONE(VexoPolarPass32(4, p, 1, 1)), {40, 127, 201, 9}, {0, 127, 255, 9}},
      {"red 100 / 50: 80", ONE(VexoMultiPolarPass32(4, p, 255, 0, 255, 0, 50, 100)), {80, 80, 80, 9}, {80, 80, 0, 9}},
      {"red 100 / 50: 120", ONE(VexoMultiPolarPass32(4, p, 255, 0, 255, 0, 50, 100)), {120, 120, 120, 9}, {120, 120, 255, 9}},
      // Each channel its own pair: blue (200, 10), green (100, 50), red (-1, 0).
      {"three pairs", ONE(VexoMultiPolarPass32(4, p, 200, 10, 100, 50, -1, 0)), {9, 49, 0, 9}, {0, 0, 255, 9}},
      {"three pairs, above", ONE(VexoMultiPolarPass32(4, p, 200, 10, 100, 50, 300, 0)), {201, 101, 7, 9}, {255, 255, 7, 9}},
  });
  expectExamples<Pixel64>({
      {"polar, level 3", ONE(VexoPolarPass64(4, p, 3, 1)), {16382, 16383, 16384, 9}, {0, 16383, 32767, 9}},
      {"polar, signed read", ONE(VexoPolarPass64(4, p, 1, 2)), {40000, 40000, 40000, 9}, {40000, 40000, 0, 9}},
      // At the defaults the 16-bit member returns before a signed read could
      // turn 40000 into 0.
      {"defaults", ONE(VexoMultiPolarPass64(4, p, 32767, 0, 32767, 0, 32767, 0)), {40000, 1, 2, 9}, {40000, 1, 2, 9}},
      {"signed read", ONE(VexoMultiPolarPass64(4, p, 32767, -20000, 32767, -30000, 32767, 1)), {40000, 40000, 5, 9}, {0, 40000, 5, 9}},
  });
  // The float limits follow the 16-bit grid: level 3's one limit is 16383 /
  // 32767, which no float equals. The float multi pass has no shortcut.
  expectExamples<Pixel128>({
      {"polar, level 3", ONE(VexoPolarPass128(4, p, 3, 1)), {0.4999847f, 0.49998474f, 3, 0.5f}, {0, 1, 1, 0.5f}},
      {"defaults still act", ONE(VexoMultiPolarPass128(4, p, 255, 0, 255, 0, 255, 0)), {-0.5f, 1.5f, 0.5f, 0.5f}, {0, 1, 0.5f, 0.5f}},
      {"limits over 255", ONE(VexoMultiPolarPass128(4, p, 255, 51, 127, 0, 255, 0)), {0.19f, 0.5f, 0.21f, 0.5f}, {0, 1, 0.21f, 0.5f}},
  });
}
