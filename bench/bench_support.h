// Shared by the benchmark programs: layers to work on, the copy yardstick and
// the naming that scripts/bench turns into the table of docs/performance.md.
//
// Every case is named "<family>/<layout>/<side>" (layout 32, 64 or 128; side
// the picture's width and height: 64, 1024 and 4096). The yardstick "copy/<layout>/<side>" is a
// plain copy of a layer of the same layout and size, measured in the same
// run; scripts/bench reports each case as a ratio to it. OpenCV's nearest
// equivalent of a family is registered as "opencv:<family>/<layout>/<side>"
// with the operation in its label, and reported in the same row.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "effects/effects.h"

namespace bench {

// 64 x 64 shows what a call costs beside its pixels (the goal there: no
// slower than the plain forms).
inline constexpr int32_t kSides[] = {64, 1024, 4096};

// One element from 24 random bits, in the layout's range and never 0 (so no
// pixel is skipped for a zero mask).
inline uint8_t element(uint32_t v, uint8_t*) { return static_cast<uint8_t>(v | 1); }
inline uint16_t element(uint32_t v, uint16_t*) { return static_cast<uint16_t>(v % 32767 + 1); }
inline float element(uint32_t v, float*) { return static_cast<float>(v % 1000 + 1) / 1000.0f; }

// A side x side layer with every element varying.
template <class P>
std::vector<P> layer(int32_t side, uint32_t seed = 12345) {
  std::vector<P> v(static_cast<size_t>(side) * static_cast<size_t>(side));
  uint32_t s = seed;
  using E = decltype(P{}.blue);
  auto next = [&s] { s = s * 1103515245u + 12345u; return element(s >> 8, static_cast<E*>(nullptr)); };
  for (auto& p : v) { p.blue = next(); p.green = next(); p.red = next(); p.mask = next(); }
  return v;
}

template <class P> constexpr const char* layoutName();
template <> constexpr const char* layoutName<Pixel32>() { return "32"; }
template <> constexpr const char* layoutName<Pixel64>() { return "64"; }
template <> constexpr const char* layoutName<Pixel128>() { return "128"; }

inline std::string caseName(const std::string& family, const char* layout, int32_t side) {
  return family + "/" + layout + "/" + std::to_string(side);
}

// A case that runs `work` on one layer over and over. The exports work in
// place and restoring the layer would add a copy to every measurement, so the
// same buffer is reused; a family whose repeated application would drift into
// a trivial picture (all black, all white) registers a raw case instead and
// restores its input with the timer paused.
template <class P>
void registerCase(const std::string& family, int32_t side,
                  std::function<void(int32_t side, std::vector<P>& pixels)> work) {
  benchmark::RegisterBenchmark(caseName(family, layoutName<P>(), side).c_str(),
                               [side, work](benchmark::State& state) {
                                 auto px = layer<P>(side);
                                 for (auto _ : state) {
                                   work(side, px);
                                   benchmark::DoNotOptimize(px.data());
                                   benchmark::ClobberMemory();
                                 }
                               })
      ->Unit(benchmark::kMillisecond);
}

// The same for every side.
template <class P>
void registerCase(const std::string& family, std::function<void(int32_t, std::vector<P>&)> work) {
  for (int32_t side : kSides) registerCase<P>(family, side, work);
}

// A case whose repeated application would drift into a trivial picture (a
// threshold, a clamp, a power that runs everything to white): the layer is
// restored before each call with the timer paused.
template <class P>
void registerRestoring(const std::string& family, std::function<void(int32_t side, P* pixels)> work) {
  for (int32_t side : kSides) {
    benchmark::RegisterBenchmark(caseName(family, layoutName<P>(), side).c_str(),
                                 [side, work](benchmark::State& state) {
                                   const auto original = layer<P>(side);
                                   auto px = original;
                                   for (auto _ : state) {
                                     state.PauseTiming();
                                     std::memcpy(px.data(), original.data(), px.size() * sizeof(P));
                                     state.ResumeTiming();
                                     work(side, px.data());
                                     benchmark::DoNotOptimize(px.data());
                                     benchmark::ClobberMemory();
                                   }
                                 })
        ->Unit(benchmark::kMillisecond);
  }
}

// Registers a raw case (its own set-up) under the naming convention.
inline void registerRaw(const std::string& name, std::function<void(benchmark::State&)> fn,
                        const std::string& label = "") {
  benchmark::RegisterBenchmark(name.c_str(), [fn, label](benchmark::State& state) {
    if (!label.empty()) state.SetLabel(label);
    fn(state);
  })->Unit(benchmark::kMillisecond);
}

// Runs a list of registrations before main: `static bench::Registration r([] { ... });`
struct Registration {
  explicit Registration(void (*f)()) { f(); }
};

}  // namespace bench
