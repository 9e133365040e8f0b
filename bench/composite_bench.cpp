// Layer compositing: one layer composited onto a canvas of the same size in
// several modes, the repaint paths that also fill the display picture (no
// device: the hand-off itself is the system's), the mask painting, and the
// block transfers.
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

// The non-Direct composite of an equal-sized destination, with its display
// picture (the 8-bit destination is its own picture).
template <class P, class F>
void advanced(F fn) {
  for (int32_t side : bench::kSides) {
    bench::registerRaw(bench::caseName("composite-advanced", bench::layoutName<P>(), side), [=](benchmark::State& state) {
      const auto src = bench::layer<P>(side, 1);
      auto dst = bench::layer<P>(side, 2);
      std::vector<Pixel32> display(src.size());
      for (auto _ : state) {
        fn(dst.data(), src.data(), display.data(), side);
        benchmark::DoNotOptimize(dst.data());
        benchmark::ClobberMemory();
      }
    });
  }
}

// Painting a layer mask: mode 2 (add) with its display bytes.
template <class P, class F>
void maskPaint(F fn) {
  for (int32_t side : bench::kSides) {
    bench::registerRaw(bench::caseName("mask-paint", bench::layoutName<P>(), side), [=](benchmark::State& state) {
      const auto src = bench::layer<P>(side, 1);
      const auto original = bench::layer<P>(side, 2);
      auto canvas = original;
      std::vector<Pixel32> display(src.size());
      for (auto _ : state) {
        state.PauseTiming();
        canvas = original;  // mode 2 saturates the mask within a few calls
        state.ResumeTiming();
        fn(nullptr, 0, 0, side, side, display.data(), src.data(), canvas.data(), side, side, 70, 2);
        benchmark::DoNotOptimize(canvas.data());
        benchmark::ClobberMemory();
      }
    });
  }
}

// A region pasted into (or cut out of) a canvas of the same size.
template <class P, class F>
void transfer(const char* family, F fn) {
  for (int32_t side : bench::kSides) {
    bench::registerRaw(bench::caseName(family, bench::layoutName<P>(), side), [=](benchmark::State& state) {
      auto a = bench::layer<P>(side, 1);
      auto b = bench::layer<P>(side, 2);
      for (auto _ : state) {
        fn(0, 0, side, side, a.data(), b.data(), side, side);
        benchmark::DoNotOptimize(b.data());
        benchmark::ClobberMemory();
      }
    });
  }
}

// Two equal buffers merged through the source mask.
template <class P, class F>
void regional(F fn) {
  for (int32_t side : bench::kSides) {
    bench::registerRaw(bench::caseName("regional", bench::layoutName<P>(), side), [=](benchmark::State& state) {
      const auto src = bench::layer<P>(side, 1);
      auto dst = bench::layer<P>(side, 2);
      for (auto _ : state) {
        fn(side * side * 4, src.data(), dst.data());
        benchmark::DoNotOptimize(dst.data());
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
  composite<Pixel32>("composite-darken", 1, Vexo32DirectDIB);
  composite<Pixel64>("composite-darken", 1, Vexo64DirectDIB);
  composite<Pixel128>("composite-darken", 1, Vexo128DirectDIB);
  composite<Pixel32>("composite-overlay", 6, Vexo32DirectDIB);
  composite<Pixel64>("composite-overlay", 6, Vexo64DirectDIB);
  composite<Pixel128>("composite-overlay", 6, Vexo128DirectDIB);
  composite<Pixel32>("composite-red", 9, Vexo32DirectDIB);
  composite<Pixel64>("composite-red", 9, Vexo64DirectDIB);
  composite<Pixel128>("composite-red", 9, Vexo128DirectDIB);
  composite<Pixel32>("composite-add", 15, Vexo32DirectDIB);
  composite<Pixel64>("composite-add", 15, Vexo64DirectDIB);
  composite<Pixel128>("composite-add", 15, Vexo128DirectDIB);
  compositeAndShow<Pixel32>(Vexo32AdvancedDirectDIB);
  compositeAndShow<Pixel64>(Vexo64AdvancedDirectDIB);
  compositeAndShow<Pixel128>(Vexo128AdvancedDirectDIB);
  advanced<Pixel32>([](Pixel32* d, const Pixel32* s, Pixel32*, int32_t n) { Vexo32AdvancedDIB(nullptr, 0, 0, n, n, d, s, 70, 0); });
  advanced<Pixel64>([](Pixel64* d, const Pixel64* s, Pixel32* o, int32_t n) { Vexo64AdvancedDIB(nullptr, 0, 0, n, n, d, s, o, 70, 0); });
  advanced<Pixel128>([](Pixel128* d, const Pixel128* s, Pixel32* o, int32_t n) { Vexo128AdvancedDIB(nullptr, 0, 0, n, n, d, s, o, 70, 0); });
  maskPaint<Pixel32>(Vexo32AdvancedMaskDIB);
  maskPaint<Pixel64>(Vexo64AdvancedMaskDIB);
  maskPaint<Pixel128>(Vexo128AdvancedMaskDIB);
  transfer<Pixel32>("paste", Vexo32DirectBitBltDIB);
  transfer<Pixel64>("paste", Vexo64DirectBitBltDIB);
  transfer<Pixel128>("paste", Vexo128DirectBitBltDIB);
  transfer<Pixel32>("cut-flip", Vexo32BitBltFlipDIB);
  transfer<Pixel64>("cut-flip", Vexo64BitBltFlipDIB);
  transfer<Pixel128>("cut-flip", Vexo128BitBltFlipDIB);
  regional<Pixel32>(Vexo32DirectDrawRegional);
  regional<Pixel64>(Vexo64DirectDrawRegional);
  regional<Pixel128>(Vexo128DirectDrawRegional);
  transfer<Pixel32>("direct-mask", [](int32_t x, int32_t y, int32_t w, int32_t h, Pixel32* s, Pixel32* c, int32_t cw, int32_t ch) {
    Vexo32DirectMaskDIB(x, y, w, h, s, c, cw, ch, 70, 0);
  });
#if defined(EFFECTS_BENCH_OPENCV)
  addWeighted<Pixel32>(CV_8UC4);
  addWeighted<Pixel64>(CV_16UC4);
  addWeighted<Pixel128>(CV_32FC4);
#endif
});

}  // namespace
