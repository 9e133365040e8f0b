// Geometry: flips and mirrors, the quarter turn, nearest-neighbour scaling
// (a quarter-size source enlarged to the side), free rotation by 30 degrees
// and the swirl, each beside OpenCV's nearest equivalent: cv::flip,
// cv::rotate, cv::resize (nearest), cv::warpAffine (bilinear) and cv::remap
// (nearest, with the swirl's map computed beforehand).
#include "bench_support.h"

#include "geometry/distortions.h"

#if defined(EFFECTS_BENCH_OPENCV)
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

namespace {

constexpr int32_t kTwist = 50;
constexpr float kAngle = 30.0f;

template <class P, class F>
void inPlace(const char* family, F fn) {
  bench::registerCase<P>(family, [fn](int32_t side, std::vector<P>& px) { fn(side, side, px.data()); });
}

template <class P, class F>
void twoPictures(const char* family, int32_t sourceDivisor, F fn) {
  for (int32_t side : bench::kSides)
    bench::registerRaw(bench::caseName(family, bench::layoutName<P>(), side), [=](benchmark::State& state) {
      const int32_t from = side / sourceDivisor;
      const auto src = bench::layer<P>(from, 1);
      std::vector<P> dst(static_cast<size_t>(side) * side);
      for (auto _ : state) {
        fn(from, src.data(), side, dst.data());
        benchmark::DoNotOptimize(dst.data());
        benchmark::ClobberMemory();
      }
    });
}

template <class P>
struct Api;
#define GEOMETRY_BENCH_API(N)                                                          \
  template <>                                                                          \
  struct Api<Pixel##N> {                                                               \
    static void cases() {                                                              \
      inPlace<Pixel##N>("flip-vertical", [](int32_t w, int32_t h, Pixel##N* p) { VexoVerticalFlip##N(w, h, p, 0); }); \
      inPlace<Pixel##N>("flip-horizontal", [](int32_t w, int32_t h, Pixel##N* p) { VexoHorizontalFlip##N(w, h, p, 0); }); \
      inPlace<Pixel##N>("mirror-vertical", [](int32_t w, int32_t h, Pixel##N* p) { VexoVerticalMirror##N(w, h, p, 0); }); \
      inPlace<Pixel##N>("mirror-horizontal", [](int32_t w, int32_t h, Pixel##N* p) { VexoHorizontalMirror##N(w, h, p, 0); }); \
      inPlace<Pixel##N>("quarter-turn", [](int32_t w, int32_t h, Pixel##N* p) { VexoRotate90_##N(w, h, p); }); \
      inPlace<Pixel##N>("swirl", [](int32_t w, int32_t h, Pixel##N* p) { VexoSwirl##N(w, h, p, 1, kTwist); }); \
      twoPictures<Pixel##N>("scale", 2, [](int32_t from, const Pixel##N* s, int32_t to, Pixel##N* t) { \
        VexoScale##N(from, from, s, to, to, t); });                                    \
      twoPictures<Pixel##N>("rotate", 1, [](int32_t from, const Pixel##N* s, int32_t to, Pixel##N* t) { \
        VexoRotate##N(from, from, s, to, to, t, kAngle); });                           \
    }                                                                                  \
  };
GEOMETRY_BENCH_API(32)
GEOMETRY_BENCH_API(64)
GEOMETRY_BENCH_API(128)

#if defined(EFFECTS_BENCH_OPENCV)
template <class P>
int cvType() {
  if constexpr (std::is_same_v<P, Pixel32>) return CV_8UC4;
  else if constexpr (std::is_same_v<P, Pixel64>) return CV_16UC4;
  else return CV_32FC4;
}

// f(source, destination, side) on a side x side layer (source side /
// sourceDivisor), both as cv::Mat over plain buffers.
template <class P, class F>
void opencv(const char* family, const char* label, int32_t sourceDivisor, F f) {
  for (int32_t side : bench::kSides)
    bench::registerRaw(bench::caseName(std::string("opencv:") + family, bench::layoutName<P>(), side),
                       [=](benchmark::State& state) {
                         const int32_t from = side / sourceDivisor;
                         auto src = bench::layer<P>(from, 1);
                         std::vector<P> dst(static_cast<size_t>(side) * side);
                         cv::Mat s(from, from, cvType<P>(), src.data()), d(side, side, cvType<P>(), dst.data());
                         f(s, d, side, state);
                       },
                       label);
}

template <class P>
void opencvCases() {
  auto simple = [](auto op) {
    return [op](cv::Mat& s, cv::Mat& d, int32_t, benchmark::State& state) {
      for (auto _ : state) {
        op(s, d);
        benchmark::ClobberMemory();
      }
    };
  };
  opencv<P>("flip-vertical", "cv::flip(0)", 1, simple([](cv::Mat& s, cv::Mat& d) { cv::flip(s, d, 0); }));
  opencv<P>("flip-horizontal", "cv::flip(1)", 1, simple([](cv::Mat& s, cv::Mat& d) { cv::flip(s, d, 1); }));
  opencv<P>("quarter-turn", "cv::rotate(90)", 1,
            simple([](cv::Mat& s, cv::Mat& d) { cv::rotate(s, d, cv::ROTATE_90_CLOCKWISE); }));
  opencv<P>("scale", "cv::resize(nearest)", 2, [](cv::Mat& s, cv::Mat& d, int32_t side, benchmark::State& state) {
    for (auto _ : state) {
      cv::resize(s, d, cv::Size(side, side), 0, 0, cv::INTER_NEAREST);
      benchmark::ClobberMemory();
    }
  });
  opencv<P>("rotate", "cv::warpAffine(linear)", 1, [](cv::Mat& s, cv::Mat& d, int32_t side, benchmark::State& state) {
    const cv::Mat m = cv::getRotationMatrix2D(cv::Point2f(side / 2.0f, side / 2.0f), kAngle, 1.0);
    for (auto _ : state) {
      cv::warpAffine(s, d, m, d.size(), cv::INTER_LINEAR, cv::BORDER_CONSTANT);
      benchmark::ClobberMemory();
    }
  });
  opencv<P>("swirl", "cv::remap(nearest, precomputed map)", 1,
            [](cv::Mat& s, cv::Mat& d, int32_t side, benchmark::State& state) {
              cv::Mat mx(side, side, CV_32FC1), my(side, side, CV_32FC1);
              const effects::geometry::Swirl map(side, side, kTwist);
              for (int32_t y = 0; y < side; ++y)
                for (int32_t x = 0; x < side; ++x) {
                  const auto p = map(x, y);
                  mx.at<float>(y, x) = static_cast<float>(std::clamp<int64_t>(p.column, 0, side - 1));
                  my.at<float>(y, x) = static_cast<float>(std::clamp<int64_t>(p.row, 0, side - 1));
                }
              for (auto _ : state) {
                cv::remap(s, d, mx, my, cv::INTER_NEAREST);
                benchmark::ClobberMemory();
              }
            });
}
#endif

bench::Registration cases([] {
  Api<Pixel32>::cases();
  Api<Pixel64>::cases();
  Api<Pixel128>::cases();
#if defined(EFFECTS_BENCH_OPENCV)
  opencvCases<Pixel32>();
  opencvCases<Pixel64>();
  opencvCases<Pixel128>();
#endif
});

}  // namespace
