// Stylize effects: the per-pixel families (halftone, polar pass, bacterial
// cast, thatch) and the oil paint, beside a 5 x 5 box blur as the yardstick
// of a neighbourhood filter.
#include "bench_support.h"

#if defined(EFFECTS_BENCH_OPENCV)
#include <opencv2/imgproc.hpp>
#endif

namespace {

// Thresholds and saturating additions drive a picture to black and white
// within a few calls, after which every branch is predictable: these cases
// restore the layer before each call, with the timer paused.
template <class P, class F>
void restoring(const char* family, F fn) {
  for (int32_t side : bench::kSides) {
    bench::registerRaw(bench::caseName(family, bench::layoutName<P>(), side), [=](benchmark::State& state) {
      const auto original = bench::layer<P>(side);
      auto px = original;
      for (auto _ : state) {
        state.PauseTiming();
        px = original;
        state.ResumeTiming();
        fn(side, px.data());
        benchmark::DoNotOptimize(px.data());
        benchmark::ClobberMemory();
      }
    });
  }
}

// The bacterial cast wraps around (8 bits) or saturates slowly: a plain
// repeated case.
template <class P, class F>
void repeated(const char* family, F fn) {
  bench::registerCase<P>(family, [fn](int32_t side, std::vector<P>& px) { fn(side, px.data()); });
}

#if defined(EFFECTS_BENCH_OPENCV)
template <class P>
void boxBlur(int type) {
  for (int32_t side : bench::kSides) {
    bench::registerRaw(bench::caseName("opencv:oil-paint", bench::layoutName<P>(), side),
                       [=](benchmark::State& state) {
                         auto a = bench::layer<P>(side, 1), b = a;
                         cv::Mat ma(side, side, type, a.data()), mb(side, side, type, b.data());
                         for (auto _ : state) {
                           cv::blur(ma, mb, cv::Size(5, 5));
                           benchmark::ClobberMemory();
                         }
                       },
                       "cv::blur 5x5");
  }
}
#endif

bench::Registration cases([] {
  restoring<Pixel32>("halftone", [](int32_t s, Pixel32* p) { VexoHalftone32(s * s * 4, p, 2, 1); });
  restoring<Pixel64>("halftone", [](int32_t s, Pixel64* p) { VexoHalftone64(s * s * 4, p, 2, 1); });
  restoring<Pixel128>("halftone", [](int32_t s, Pixel128* p) { VexoHalftone128(s * s * 4, p, 2, 1); });
  restoring<Pixel32>("polar-pass", [](int32_t s, Pixel32* p) { VexoPolarPass32(s * s * 4, p, 2, 1); });
  restoring<Pixel64>("polar-pass", [](int32_t s, Pixel64* p) { VexoPolarPass64(s * s * 4, p, 2, 1); });
  restoring<Pixel128>("polar-pass", [](int32_t s, Pixel128* p) { VexoPolarPass128(s * s * 4, p, 2, 1); });
  repeated<Pixel32>("bacterial", [](int32_t s, Pixel32* p) { VexoBacterial32(s, s, p, 1, 1); });
  repeated<Pixel64>("bacterial", [](int32_t s, Pixel64* p) { VexoBacterial64(s, s, p, 1, 1); });
  repeated<Pixel128>("bacterial", [](int32_t s, Pixel128* p) { VexoBacterial128(s, s, p, 1, 1); });
  restoring<Pixel32>("thatch", [](int32_t s, Pixel32* p) { VexoThachet32(s, s, p, 0); });
  restoring<Pixel64>("thatch", [](int32_t s, Pixel64* p) { VexoThachet64(s, s, p, 0); });
  restoring<Pixel128>("thatch", [](int32_t s, Pixel128* p) { VexoThachet128(s, s, p, 0); });
  // A 5 x 5 brush with 20 levels, the usual setting, and the largest brush
  // with the finest levels.
  restoring<Pixel32>("oil-paint", [](int32_t s, Pixel32* p) { VexoOilPaint32(s, s, p, 2, 20); });
  restoring<Pixel64>("oil-paint", [](int32_t s, Pixel64* p) { VexoOilPaint64(s, s, p, 2, 20); });
  restoring<Pixel128>("oil-paint", [](int32_t s, Pixel128* p) { VexoOilPaint128(s, s, p, 2, 20); });
  restoring<Pixel32>("oil-paint-5x255", [](int32_t s, Pixel32* p) { VexoOilPaint32(s, s, p, 5, 255); });
#if defined(EFFECTS_BENCH_OPENCV)
  boxBlur<Pixel32>(CV_8UC4);
  boxBlur<Pixel64>(CV_16UC4);
  boxBlur<Pixel128>(CV_32FC4);
#endif
});

}  // namespace
