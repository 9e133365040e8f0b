// The filter families, each on a layer of each layout, beside OpenCV's
// nearest equivalents: the 3x3 soften against a 3x3 Gaussian blur, the matte
// blur against a box blur of the same size, dilation and erosion against
// their 3x3 forms, the unsharp mask against a box blur and a weighted sum,
// and the edge filters against Sobel derivatives in x and y.
#include "bench_support.h"

#if defined(EFFECTS_BENCH_OPENCV)
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

namespace {

template <class P>
using Work = std::function<void(int32_t side, std::vector<P>& pixels)>;

// Families whose cost depends on the picture (the glow blur's box, the
// matte blur's threshold, blooming's map) start every run from the same
// layer; the copy back is not timed.
template <class P>
void restoring(const std::string& family, Work<P> work) {
  for (int32_t side : bench::kSides) {
    bench::registerRaw(bench::caseName(family, bench::layoutName<P>(), side), [side, work](benchmark::State& state) {
      const auto entry = bench::layer<P>(side);
      auto px = entry;
      for (auto _ : state) {
        work(side, px);
        benchmark::DoNotOptimize(px.data());
        benchmark::ClobberMemory();
        state.PauseTiming();
        px = entry;
        state.ResumeTiming();
      }
    });
  }
}

template <class P, class F, class... A>
Work<P> run(F f, A... a) {
  return [f, a...](int32_t side, std::vector<P>& px) { f(side, side, px.data(), a...); };
}

template <class P, class F>
Work<P> runMorph(F f) {
  return [f](int32_t side, std::vector<P>& px) { f(uint32_t(side), uint32_t(side), px.data()); };
}

struct Families {
  template <class P, class Fn>
  static void of(Fn fns) {
    bench::registerCase<P>("soften", run<P>(fns.postBlur));
    bench::registerCase<P>("soften-mask", run<P>(fns.postBlurMask));
    restoring<P>("glow-blur", run<P>(fns.glowBlur));
    bench::registerCase<P>("matte-blur", run<P>(fns.matteBlur, 5, 0, 0));
    restoring<P>("matte-blur-threshold", run<P>(fns.matteBlur, 5, fns.threshold, 1));
    bench::registerCase<P>("motion-blur", run<P>(fns.motionBlur, 30.0, 5));
    bench::registerCase<P>("zoom-blur", run<P>(fns.zoomBlur, 10));
    bench::registerCase<P>("radial-blur", run<P>(fns.radialBlur, 2));
    restoring<P>("blooming", run<P>(fns.blooming, 3));
    bench::registerCase<P>("sharpen", run<P>(fns.sharpen, 0.5));
    bench::registerCase<P>("sharpen-mask", run<P>(fns.sharpenMask, 0.5));
    bench::registerCase<P>("unsharp-mask", run<P>(fns.unsharpMask, 2, 1.0));
    bench::registerCase<P>("emboss", run<P>(fns.emboss, 2));
    bench::registerCase<P>("find-edges", run<P>(fns.findEdges, 1, 1));
    bench::registerCase<P>("neon", run<P>(fns.neon, 1, 1));
    bench::registerCase<P>("lining", run<P>(fns.lining, 1, 1, 1));
    bench::registerCase<P>("dilate", runMorph<P>(fns.dilater));
    bench::registerCase<P>("dilate-mask", runMorph<P>(fns.dilaterMask));
    bench::registerCase<P>("erode", runMorph<P>(fns.eroder));
    bench::registerCase<P>("erode-mask", runMorph<P>(fns.eroderMask));
    bench::registerCase<P>("contour", runMorph<P>(fns.contour));
  }
};

#define FILTER_FUNCTIONS(N, T)                                                                              \
  struct {                                                                                                  \
    decltype(&VexoPostBlur##N) postBlur = VexoPostBlur##N, postBlurMask = VexoPostBlurMask##N,              \
                               glowBlur = VexoGlowBlur##N;                                                  \
    decltype(&VexoMatteBlur##N) matteBlur = VexoMatteBlur##N;                                               \
    int32_t threshold = T;                                                                                  \
    decltype(&VexoMotionBlur##N) motionBlur = VexoMotionBlur##N;                                            \
    decltype(&VexoZoomBlur##N) zoomBlur = VexoZoomBlur##N, radialBlur = VexoRadialBlur##N,                  \
                               blooming = VexoBlooming##N, emboss = VexoEmboss##N;                          \
    decltype(&VexoSharpen##N) sharpen = VexoSharpen##N, sharpenMask = VexoSharpenMask##N;                   \
    decltype(&VexoUnsharpMask##N) unsharpMask = VexoUnsharpMask##N;                                         \
    decltype(&VexoNeon##N) findEdges = VexoFindEdges##N, neon = VexoNeon##N;                                \
    decltype(&VexoLining##N) lining = VexoLining##N;                                                        \
    decltype(&VexoDilater##N) dilater = VexoDilater##N, dilaterMask = VexoDilaterMask##N,                   \
                              eroder = VexoEroder##N, eroderMask = VexoEroderMask##N,                       \
                              contour = VexoCContour##N;                                                    \
  }

#if defined(EFFECTS_BENCH_OPENCV)
// An OpenCV operation from one layer into a second picture of the same type.
template <class P>
void opencv(const std::string& family, int type, const std::string& label, std::function<void(const cv::Mat&, cv::Mat&)> op) {
  for (int32_t side : bench::kSides) {
    bench::registerRaw(bench::caseName("opencv:" + family, bench::layoutName<P>(), side),
                       [=](benchmark::State& state) {
                         auto px = bench::layer<P>(side);
                         cv::Mat src(side, side, type, px.data()), dst(side, side, type);
                         for (auto _ : state) {
                           op(src, dst);
                           benchmark::DoNotOptimize(dst.data);
                           benchmark::ClobberMemory();
                         }
                       },
                       label);
  }
}

template <class P>
void opencvFamilies(int type) {
  opencv<P>("soften", type, "cv::GaussianBlur 3x3", [](const cv::Mat& s, cv::Mat& d) { cv::GaussianBlur(s, d, cv::Size(3, 3), 0); });
  opencv<P>("matte-blur", type, "cv::blur 11x11", [](const cv::Mat& s, cv::Mat& d) { cv::blur(s, d, cv::Size(11, 11)); });
  opencv<P>("dilate", type, "cv::dilate 3x3", [](const cv::Mat& s, cv::Mat& d) { cv::dilate(s, d, cv::Mat()); });
  opencv<P>("erode", type, "cv::erode 3x3", [](const cv::Mat& s, cv::Mat& d) { cv::erode(s, d, cv::Mat()); });
  opencv<P>("unsharp-mask", type, "cv::blur 5x5 + cv::addWeighted", [](const cv::Mat& s, cv::Mat& d) {
    cv::blur(s, d, cv::Size(5, 5));
    cv::addWeighted(s, 2.0, d, -1.0, 0.0, d);
  });
  const auto sobel = [](const cv::Mat& s, cv::Mat& d) {
    thread_local cv::Mat dy;
    cv::Sobel(s, d, -1, 1, 0);
    cv::Sobel(s, dy, -1, 0, 1);
  };
  opencv<P>("find-edges", type, "cv::Sobel dx, dy", sobel);
  opencv<P>("neon", type, "cv::Sobel dx, dy", sobel);
}
#endif

bench::Registration cases([] {
  using F32 = FILTER_FUNCTIONS(32, 40);
  using F64 = FILTER_FUNCTIONS(64, 5000);
  using F128 = FILTER_FUNCTIONS(128, 0);
  Families::of<Pixel32>(F32{});
  Families::of<Pixel64>(F64{});
  Families::of<Pixel128>(F128{});
#if defined(EFFECTS_BENCH_OPENCV)
  opencvFamilies<Pixel32>(CV_8UC4);
  opencvFamilies<Pixel64>(CV_16UC4);
  opencvFamilies<Pixel128>(CV_32FC4);
#endif
});

}  // namespace
