// Tonal and colour adjustments: one case per family and layout, each at a
// typical setting. The layer is restored before every call (most of these
// drift toward black or white when applied over and over). Strength
// arguments of the 16-bit members are on the 0..32767 scale: `u` is 128
// there and 1 elsewhere.
#include "bench_support.h"

#if defined(EFFECTS_BENCH_OPENCV)
#include <opencv2/core.hpp>
#endif

namespace {

// The same call on the three layouts: fn32, fn64 and fn128 with the same
// arguments (which may use s, the side, p, the pixels, and u).
#define EACH_LAYOUT(family, fn, ...)                                                          \
  bench::registerRestoring<Pixel32>(family, [](int32_t s, Pixel32* p) {                       \
    [[maybe_unused]] constexpr int32_t u = 1;                                                 \
    fn##32(__VA_ARGS__);                                                                      \
  });                                                                                         \
  bench::registerRestoring<Pixel64>(family, [](int32_t s, Pixel64* p) {                       \
    [[maybe_unused]] constexpr int32_t u = 128;                                               \
    fn##64(__VA_ARGS__);                                                                      \
  });                                                                                         \
  bench::registerRestoring<Pixel128>(family, [](int32_t s, Pixel128* p) {                     \
    [[maybe_unused]] constexpr int32_t u = 1;                                                 \
    fn##128(__VA_ARGS__);                                                                     \
  })

#if defined(EFFECTS_BENCH_OPENCV)
// OpenCV on a layer of the same layout and size, restored like the cases.
template <class P>
void opencv(const char* family, int type, const char* label, std::function<void(cv::Mat&)> fn) {
  for (int32_t side : bench::kSides) {
    bench::registerRaw(bench::caseName(std::string("opencv:") + family, bench::layoutName<P>(), side),
                       [=](benchmark::State& state) {
                         const auto original = bench::layer<P>(side);
                         auto px = original;
                         cv::Mat m(side, side, type, px.data());
                         for (auto _ : state) {
                           state.PauseTiming();
                           std::memcpy(px.data(), original.data(), px.size() * sizeof(P));
                           state.ResumeTiming();
                           fn(m);
                           benchmark::ClobberMemory();
                         }
                       },
                       label);
  }
}
#endif

bench::Registration tonal([] {
  EACH_LAYOUT("brightness", VexoBrightness, s, s, p, 60 * u, 0);
  EACH_LAYOUT("black-brightness", VexoBlackBrightness, s, s, p, 40 * u, 0);
  EACH_LAYOUT("contrast", VexoContrast, s, s, p, 60 * u, 0);
  EACH_LAYOUT("exposure", VexoXposure, s, s, p, 0, 50 * u, 0);
  EACH_LAYOUT("fstop", Vexofstop, s, s, p, 1.0);
  EACH_LAYOUT("gamma", VexoGamma, s, s, p, 2.2f);
  EACH_LAYOUT("gamma-to-hdr", VexoGammatoHDR, s, s, p, 2.2f);
  EACH_LAYOUT("level-percentage", VexoAdjustLevelPrecentage, s, s, p, 0.8f);
  EACH_LAYOUT("sine-curve", VexoAdjustSine, s, s, p, 0.3f, 1);
  EACH_LAYOUT("levels", VexoAdjustLevels, s * s * 4, p, 240 * u, 10 * u, 250 * u, 5 * u, 230 * u, 20 * u, 1.4f, 0.1f,
              250.0f * u, 5.0f * u, 240.0f * u, 0.0f, 255.0f * u, 10.0f * u, 1);
  EACH_LAYOUT("equalizer", VexoEqualizer, s * s * 4, p, 1, 1);
  EACH_LAYOUT("dodge", VexoDodge, s * s * 4, p, 150);
});

bench::Registration colour([] {
  EACH_LAYOUT("saturation", VexoSaturation, s * s * 4, p, 80 * u);
  EACH_LAYOUT("hue", VexoHue, s, s, p, 120);
  EACH_LAYOUT("colour-filter", VexoColorFilter, s * s * 4, p, 4);
  EACH_LAYOUT("channel-copy", VexoRGBChannelFilter, s * s * 4, p, 3);
  EACH_LAYOUT("colour-switch", VexoColorSwitch, s * s * 4, p, 4);
  EACH_LAYOUT("replace-colour", VexoReplaceColor, s * s * 4, p, 0x406080, 0x102030, 40 * u);
  EACH_LAYOUT("colour-offsets", VexoAdjust1Colors, s, s, p, 20 * u, -10 * u, 5 * u);
  EACH_LAYOUT("sine-offsets", VexoAdjust0Colors, s, s, p, 20 * u, -10 * u, 5 * u);
  EACH_LAYOUT("tint", VexoCustomBacterial, s * s * 4, p, 20, 10, 5, 1);
  EACH_LAYOUT("grey", VexoGrayScale, s * s * 4, p, 1);
  EACH_LAYOUT("aged-photo", VexoAgedPhoto, s * s * 4, p, 1);
  EACH_LAYOUT("red-eye", VexoRedEyeRemover, s, s, p, 0, 120 * u);
  bench::registerRestoring<Pixel32>("web-colour", [](int32_t s, Pixel32* p) { VexoWebColour32(s * s * 4, p); });
  bench::registerRestoring<Pixel64>("web-colour", [](int32_t s, Pixel64* p) { VexoWebColour64(s * s * 4, p); });
  bench::registerRestoring<Pixel32>("auto-colour", [](int32_t s, Pixel32* p) { VexoAutoColorCorrectionLDC32(s, s, p); });
  bench::registerRestoring<Pixel128>("range-invert",
                                     [](int32_t s, Pixel128* p) { VexoVariableRangeInvert128(s * s * 4, p, 1); });
#if defined(EFFECTS_BENCH_OPENCV)
  // A linear map per element, saturated: the nearest equivalent of brightness.
  opencv<Pixel32>("brightness", CV_8UC4, "Mat::convertTo(alpha, beta)",
                  [](cv::Mat& m) { m.convertTo(m, -1, 0.765, 60.0); });
  // A 256-entry table, the nearest equivalent of an 8-bit element map.
  opencv<Pixel32>("gamma", CV_8UC4, "cv::LUT", [](cv::Mat& m) {
    static const cv::Mat table = [] {
      cv::Mat t(1, 256, CV_8U);
      for (int i = 0; i < 256; ++i) t.at<uint8_t>(i) = cv::saturate_cast<uint8_t>(std::pow(i / 255.0, 1 / 2.2) * 255);
      return t;
    }();
    cv::LUT(m, table, m);
  });
  opencv<Pixel128>("gamma", CV_32FC4, "cv::pow", [](cv::Mat& m) { cv::pow(m, 1 / 2.2, m); });
  opencv<Pixel128>("gamma-to-hdr", CV_32FC4, "cv::pow", [](cv::Mat& m) { cv::pow(m, 2.2, m); });
#endif
});

}  // namespace
