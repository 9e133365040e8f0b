// One 4096 x 4096 layer composited onto a canvas of the same size, in modes 0
// (normal) and 4 (multiply) for each layout, beside a plain copy of the same
// buffer as the yardstick. Run: build/bench/bin/effects_bench
#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "effects/effects.h"

namespace {

constexpr int32_t kSide = 4096;
constexpr size_t kPixels = static_cast<size_t>(kSide) * kSide;

// A layer with every element varying and every mask non-zero, so no pixel is
// skipped.
template <class P, class F>
std::vector<P> layer(F&& element) {
  std::vector<P> v(kPixels);
  uint32_t s = 12345;
  for (auto& p : v) {
    s = s * 1103515245u + 12345u; p.blue = element(s >> 8);
    s = s * 1103515245u + 12345u; p.green = element(s >> 8);
    s = s * 1103515245u + 12345u; p.red = element(s >> 8);
    s = s * 1103515245u + 12345u; p.mask = element(s >> 8);
    if (p.mask == 0) p.mask = element(1);
  }
  return v;
}

std::vector<Pixel32> layer32() { return layer<Pixel32>([](uint32_t v) { return static_cast<uint8_t>(v | 1); }); }
std::vector<Pixel64> layer64() { return layer<Pixel64>([](uint32_t v) { return static_cast<uint16_t>((v % 32767) + 1); }); }
std::vector<Pixel128> layer128() {
  return layer<Pixel128>([](uint32_t v) { return static_cast<float>(v % 1000 + 1) / 1000.0f; });
}

template <class P>
void copyLayer(benchmark::State& state, std::vector<P> (*make)()) {
  const auto src = make();
  std::vector<P> dst(kPixels);
  for (auto _ : state) {
    std::memcpy(dst.data(), src.data(), kPixels * sizeof(P));
    benchmark::DoNotOptimize(dst.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(kPixels * sizeof(P)));
}

template <class P, class F>
void composite(benchmark::State& state, std::vector<P> (*make)(), F fn) {
  const auto src = make();
  auto canvas = make();
  const int32_t mode = static_cast<int32_t>(state.range(0));
  for (auto _ : state) {
    fn(0, 0, kSide, kSide, src.data(), canvas.data(), kSide, kSide, 70, mode);
    benchmark::DoNotOptimize(canvas.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(kPixels * sizeof(P)));
}

void Copy32(benchmark::State& s) { copyLayer(s, layer32); }
void Copy64(benchmark::State& s) { copyLayer(s, layer64); }
void Copy128(benchmark::State& s) { copyLayer(s, layer128); }
void Composite32(benchmark::State& s) { composite(s, layer32, Vexo32DirectDIB); }
void Composite64(benchmark::State& s) { composite(s, layer64, Vexo64DirectDIB); }
void Composite128(benchmark::State& s) { composite(s, layer128, Vexo128DirectDIB); }

// The host's repaint path: composite onto the canvas and fill the display
// picture (no device: the hand-off itself is the system's).
template <class P, class F>
void compositeAndShow(benchmark::State& state, std::vector<P> (*make)(), F fn) {
  const auto src = make();
  auto canvas = make();
  std::vector<Pixel32> display(kPixels);
  for (auto _ : state) {
    fn(nullptr, 0, 0, kSide, kSide, display.data(), src.data(), canvas.data(), kSide, kSide, 70, 0);
    benchmark::DoNotOptimize(display.data());
    benchmark::ClobberMemory();
  }
}
void CompositeAndShow32(benchmark::State& s) { compositeAndShow(s, layer32, Vexo32AdvancedDirectDIB); }
void CompositeAndShow64(benchmark::State& s) { compositeAndShow(s, layer64, Vexo64AdvancedDirectDIB); }
void CompositeAndShow128(benchmark::State& s) { compositeAndShow(s, layer128, Vexo128AdvancedDirectDIB); }

}  // namespace

BENCHMARK(Copy32)->Unit(benchmark::kMillisecond);
BENCHMARK(Composite32)->Arg(0)->Arg(4)->Unit(benchmark::kMillisecond);
BENCHMARK(CompositeAndShow32)->Unit(benchmark::kMillisecond);
BENCHMARK(Copy64)->Unit(benchmark::kMillisecond);
BENCHMARK(Composite64)->Arg(0)->Arg(4)->Unit(benchmark::kMillisecond);
BENCHMARK(CompositeAndShow64)->Unit(benchmark::kMillisecond);
BENCHMARK(Copy128)->Unit(benchmark::kMillisecond);
BENCHMARK(Composite128)->Arg(0)->Arg(4)->Unit(benchmark::kMillisecond);
BENCHMARK(CompositeAndShow128)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
