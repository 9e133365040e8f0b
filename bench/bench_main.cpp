// The benchmark program: every *_bench.cpp registers its cases; this file
// adds the copy yardsticks and runs them all on one thread.
// Run through scripts/bench, or: build/bench/bin/effects_bench --benchmark_filter=...
#include "bench_support.h"

#if defined(EFFECTS_BENCH_OPENCV)
#include <opencv2/core.hpp>
#endif

namespace {

template <class P>
void copies() {
  for (int32_t side : bench::kSides) {
    bench::registerRaw(bench::caseName("copy", bench::layoutName<P>(), side), [side](benchmark::State& state) {
      const auto src = bench::layer<P>(side);
      std::vector<P> dst(src.size());
      for (auto _ : state) {
        std::memcpy(dst.data(), src.data(), src.size() * sizeof(P));
        benchmark::DoNotOptimize(dst.data());
        benchmark::ClobberMemory();
      }
    });
  }
}

bench::Registration yardsticks([] {
  copies<Pixel32>();
  copies<Pixel64>();
  copies<Pixel128>();
});

}  // namespace

int main(int argc, char** argv) {
#if defined(EFFECTS_BENCH_OPENCV)
  cv::setNumThreads(1);  // the library runs on the caller's one thread
#endif
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
