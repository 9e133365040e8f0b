// Exports keep no state between calls and no shared scratch value, so calls on
// different buffers may run on different threads at once and each gives what
// it gives alone.
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "effects/effects.h"
#include "support/pictures.h"

using namespace effects::test;

namespace {

constexpr int kSide = 64;
constexpr int32_t kCount = kSide * kSide * 4;

// A chain of rounding-heavy exports over one picture, different per seed.
std::vector<Pixel32> process(uint32_t seed) {
  std::vector<Pixel32> picture = pattern<Pixel32>(kSide * kSide, seed);
  std::vector<Pixel32> layer = pattern<Pixel32>(kSide * kSide, seed + 1000);
  std::vector<Pixel128> wide(picture.size());
  Convert32to128Fast(kCount, picture.data(), wide.data());
  VexoGamma128(kSide, kSide, wide.data(), 1.0f + static_cast<float>(seed % 7) * 0.1f);
  Convert128to32Fast(kCount, picture.data(), wide.data());
  VexoContrast32(kSide, kSide, picture.data(), static_cast<int32_t>(seed % 200) - 100, 0);
  VexoHue32(kSide, kSide, picture.data(), static_cast<int32_t>(seed * 37 % 351));
  Vexo32DirectDIB(3, -2, kSide, kSide, layer.data(), picture.data(), kSide, kSide, 70, static_cast<int32_t>(seed % 17));
  return picture;
}

TEST(Concurrency, SimultaneousCallsGiveTheirSingleThreadedResults) {
  constexpr uint32_t kThreads = 4, kRounds = 25;
  std::vector<std::vector<Pixel32>> expected;
  for (uint32_t t = 0; t < kThreads; ++t) expected.push_back(process(t + 1));
  std::vector<int> mismatches(kThreads, 0);
  std::vector<std::thread> threads;
  for (uint32_t t = 0; t < kThreads; ++t) {
    threads.emplace_back([t, &expected, &mismatches] {
      for (uint32_t r = 0; r < kRounds; ++r) mismatches[t] += process(t + 1) != expected[t];
    });
  }
  for (auto& th : threads) th.join();
  for (uint32_t t = 0; t < kThreads; ++t) EXPECT_EQ(mismatches[t], 0) << "thread " << t;
}

}  // namespace
