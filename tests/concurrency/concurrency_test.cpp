// Exports keep no state between calls and no shared scratch value, so calls on
// different buffers may run on different threads at once and each gives what
// it gives alone. The families with state of some kind each get several
// threads at once: the rounding chain, the per-thread random generator, the
// per-thread scratch pictures, plug-in loading and the device-context
// stand-in. The tsan preset runs these under ThreadSanitizer.
#include <gtest/gtest.h>

#include <functional>
#include <latch>
#include <string>
#include <thread>
#include <vector>

#include "effects/effects.h"
#include "platform/test_surface.h"
#include "support/pictures.h"
#include "support/random_draws.h"

using namespace effects::test;

namespace {

constexpr int kSide = 64;
constexpr int32_t kCount = kSide * kSide * 4;
constexpr uint32_t kThreads = 4, kRounds = 12;

// Runs work(t) for t = 1..kThreads, first alone to learn each answer, then on
// kThreads threads at once, kRounds times each; every answer must repeat.
// The threads start together once all exist (the dynamic loader's own
// locking of thread creation against unloading is invisible to
// ThreadSanitizer, so the two are kept apart).
template <class T>
void expectSameOnEveryThread(const std::function<T(uint32_t)>& work) {
  std::vector<T> expected;
  for (uint32_t t = 1; t <= kThreads; ++t) expected.push_back(work(t));
  std::vector<int> mismatches(kThreads, 0);
  std::latch start(kThreads + 1);
  std::vector<std::thread> threads;
  for (uint32_t t = 0; t < kThreads; ++t) {
    threads.emplace_back([t, &work, &expected, &mismatches, &start] {
      start.arrive_and_wait();
      for (uint32_t r = 0; r < kRounds; ++r) mismatches[t] += !(work(t + 1) == expected[t]);
    });
  }
  start.arrive_and_wait();
  for (auto& th : threads) th.join();
  for (uint32_t t = 0; t < kThreads; ++t) EXPECT_EQ(mismatches[t], 0) << "thread " << t;
}

// A chain of rounding-heavy exports over one picture, different per seed.
std::vector<Pixel32> rounding(uint32_t seed) {
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
  expectSameOnEveryThread<std::vector<Pixel32>>(rounding);
}

// Each thread seeds its own sequence and draws it undisturbed by the others.
std::vector<Pixel32> randomFamilies(uint32_t seed) {
  std::vector<Pixel32> picture = pattern<Pixel32>(kSide * kSide, seed);
  seedDraws(seed * 7919u);
  VexoPixelNoise32(kSide, kSide, picture.data(), 40, 90, -60, 30);
  VexoDiffuse32(kSide, kSide, picture.data(), 5, 20, -10, 7);
  VexoAgedLines32(kSide, kSide, picture.data(), 6, 4);
  VexoRainDrops32(kSide, kSide, picture.data(), 25, 4);
  return picture;
}

TEST(Concurrency, RandomFamiliesDrawTheirThreadsOwnSequence) {
  expectSameOnEveryThread<std::vector<Pixel32>>(randomFamilies);
}

// Filters that copy the picture into this thread's scratch memory first.
std::vector<Pixel64> scratchFilters(uint32_t seed) {
  std::vector<Pixel64> picture = pattern<Pixel64>(kSide * kSide, seed);
  VexoOilPaint64(kSide, kSide, picture.data(), 2 + static_cast<int32_t>(seed % 3), 20);
  VexoRoughen64(kSide, kSide, picture.data(), 3, 1 + static_cast<int32_t>(seed % 3));
  return picture;
}

TEST(Concurrency, ScratchPicturesAreEachThreadsOwn) {
  expectSameOnEveryThread<std::vector<Pixel64>>(scratchFilters);
}

// Loading, calling and releasing the same plug-in from every thread at once.
std::vector<Pixel32> toneMapped(uint32_t seed) {
  const std::string plugin = std::string(EFFECTS_PLUGIN_DIR) + "/tm_simple" + EFFECTS_PLUGIN_SUFFIX;
  const std::vector<Pixel128> source = pattern<Pixel128>(kSide * kSide, seed);
  std::vector<Pixel32> out(source.size());
  int32_t options = 0;
  const int32_t called = CallToneMapping(plugin.c_str(), reinterpret_cast<intptr_t>(source.data()),
                                         reinterpret_cast<intptr_t>(out.data()), kSide, kSide, 50 + seed);
  const int32_t asked = CallToneMappingOptions(plugin.c_str(), reinterpret_cast<intptr_t>(&options));
  out.push_back(Pixel32{static_cast<uint8_t>(called), static_cast<uint8_t>(asked), static_cast<uint8_t>(options), 0});
  return out;
}

TEST(Concurrency, PluginsLoadAndUnloadOnEveryThread) {
  const auto alone = toneMapped(1);
  ASSERT_TRUE(alone.back() == (Pixel32{0, 0, 1, 0})) << "the plug-in did not run";
  expectSameOnEveryThread<std::vector<Pixel32>>(toneMapped);
}

// Composites presented to each thread's own device context.
std::vector<uint32_t> presented(uint32_t seed) {
  TestSurface surface(kSide, kSide, 0x10203040u);
  std::vector<Pixel32> canvas = pattern<Pixel32>(kSide * kSide, seed);
  const std::vector<Pixel32> layer = pattern<Pixel32>(20 * 12, seed + 1);
  std::vector<Pixel32> display(20 * 12);
  Vexo32AdvancedDirectDIB(surface.dc(), 5, 7, 20, 12, display.data(), layer.data(), canvas.data(), kSide, kSide,
                          static_cast<uint8_t>(40 + seed), static_cast<int32_t>(seed % 17));
  std::vector<uint32_t> shown;
  for (int32_t y = 0; y < kSide; ++y)
    for (int32_t x = 0; x < kSide; ++x) shown.push_back(surface.at(x, y));
  return shown;
}

TEST(Concurrency, DeviceContextsOnEveryThread) {
  expectSameOnEveryThread<std::vector<uint32_t>>(presented);
}

}  // namespace
