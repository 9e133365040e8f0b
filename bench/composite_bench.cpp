// Layer compositing: one layer composited onto a canvas of the same size in
// modes 0 (normal) and 4 (multiply), and the repaint path that also fills the
// display picture (no device: the hand-off itself is the system's).
#include "bench_support.h"

#if defined(EFFECTS_BENCH_OPENCV)
#include <opencv2/core.hpp>
#endif

namespace {

template <class P, class F>
void composite(const char* family, int32_t mode, F fn) {
  for (int32_t side : bench::kSides) {
    bench::registerRaw(bench::caseName(family, bench::layoutName<P>(), side), [=](benchmark::State& state) {
      const auto src = bench::layer<P>(side, 1);
      auto canvas = bench::layer<P>(side, 2);
      for (auto _ : state) {
        fn(0, 0, side, side, src.data(), canvas.data(), side, side, 70, mode);
        benchmark::DoNotOptimize(canvas.data());
        benchmark::ClobberMemory();
      }
    });
  }
}

template <class P, class F>
void compositeAndShow(F fn) {
  for (int32_t side : bench::kSides) {
    bench::registerRaw(bench::caseName("composite-and-show", bench::layoutName<P>(), side), [=](benchmark::State& state) {
      const auto src = bench::layer<P>(side, 1);
      auto canvas = bench::layer<P>(side, 2);
      std::vector<Pixel32> display(src.size());
      for (auto _ : state) {
        fn(nullptr, 0, 0, side, side, display.data(), src.data(), canvas.data(), side, side, 70, 0);
        benchmark::DoNotOptimize(display.data());
        benchmark::ClobberMemory();
      }
    });
  }
}

#if defined(EFFECTS_BENCH_OPENCV)
// cv::addWeighted of two layers: the nearest equivalent of mode 0 at a
// uniform weight.
template <class P>
void addWeighted(int type) {
  for (int32_t side : bench::kSides) {
    bench::registerRaw(bench::caseName("opencv:composite-normal", bench::layoutName<P>(), side),
                       [=](benchmark::State& state) {
                         auto a = bench::layer<P>(side, 1), b = bench::layer<P>(side, 2);
                         cv::Mat ma(side, side, type, a.data()), mb(side, side, type, b.data());
                         for (auto _ : state) {
                           cv::addWeighted(ma, 0.7, mb, 0.3, 0.0, mb);
                           benchmark::ClobberMemory();
                         }
                       },
                       "cv::addWeighted");
  }
}
#endif

bench::Registration cases([] {
  composite<Pixel32>("composite-normal", 0, Vexo32DirectDIB);
  composite<Pixel64>("composite-normal", 0, Vexo64DirectDIB);
  composite<Pixel128>("composite-normal", 0, Vexo128DirectDIB);
  composite<Pixel32>("composite-multiply", 4, Vexo32DirectDIB);
  composite<Pixel64>("composite-multiply", 4, Vexo64DirectDIB);
  composite<Pixel128>("composite-multiply", 4, Vexo128DirectDIB);
  compositeAndShow<Pixel32>(Vexo32AdvancedDirectDIB);
  compositeAndShow<Pixel64>(Vexo64AdvancedDirectDIB);
  compositeAndShow<Pixel128>(Vexo128AdvancedDirectDIB);
#if defined(EFFECTS_BENCH_OPENCV)
  addWeighted<Pixel32>(CV_8UC4);
  addWeighted<Pixel64>(CV_16UC4);
  addWeighted<Pixel128>(CV_32FC4);
#endif
});

}  // namespace
