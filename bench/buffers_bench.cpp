// Mask utilities, inversion and the fill of a new picture: the cheapest
// exports, so their ratio to a copy shows the walk's own cost.
#include "bench_support.h"

#if defined(EFFECTS_BENCH_OPENCV)
#include <opencv2/core.hpp>
#endif

namespace {

template <class P, class F>
void repeated(const char* family, F fn) {
  bench::registerCase<P>(family, [fn](int32_t side, std::vector<P>& px) { fn(side * side * 4, px.data()); });
}

#define EACH_LAYOUT(family, fn, ...)                                                          \
  repeated<Pixel32>(family, [](int32_t n, Pixel32* p) { fn##32(n, p __VA_ARGS__); });        \
  repeated<Pixel64>(family, [](int32_t n, Pixel64* p) { fn##64(n, p __VA_ARGS__); });        \
  repeated<Pixel128>(family, [](int32_t n, Pixel128* p) { fn##128(n, p __VA_ARGS__); })

bench::Registration cases([] {
  EACH_LAYOUT("invert", VexoInvert, , 1);
  EACH_LAYOUT("invert-red", VexoInvert, , 2);
  EACH_LAYOUT("invert-mask", VexoInvertMask);
  EACH_LAYOUT("clear-mask", VexoClearMask);
  repeated<Pixel32>("mask-to-image", [](int32_t n, Pixel32* p) { Vexo32MasktoImageDIB(n, p); });
  repeated<Pixel64>("mask-to-image", [](int32_t n, Pixel64* p) { Vexo64MasktoImageDIB(n, p); });
  repeated<Pixel128>("mask-to-image", [](int32_t n, Pixel128* p) { Vexo128MasktoImageDIB(n, p); });
  repeated<Pixel32>("new-picture", [](int32_t n, Pixel32* p) { VexoNewPicture32(n, p, 10, 20, 30, 255); });
  repeated<Pixel64>("new-picture", [](int32_t n, Pixel64* p) { VexoNewPicture64(n, p, 10, 20, 30, 32767); });
  repeated<Pixel128>("new-picture", [](int32_t n, Pixel128* p) { VexoNewPicture128(n, p, 0.1f, 0.2f, 0.3f, 1.0f); });
#if defined(EFFECTS_BENCH_OPENCV)
  for (int32_t side : bench::kSides) {
    bench::registerRaw(bench::caseName("opencv:invert", "32", side),
                       [=](benchmark::State& state) {
                         auto a = bench::layer<Pixel32>(side);
                         cv::Mat m(side, side, CV_8UC4, a.data());
                         for (auto _ : state) {
                           cv::bitwise_not(m, m);
                           benchmark::ClobberMemory();
                         }
                       },
                       "cv::bitwise_not");
  }
#endif
});

}  // namespace
