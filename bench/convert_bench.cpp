// Conversions, histograms and the in-memory RGBE encoders. A conversion is
// reported under its wider layout, against a copy of a buffer of that size.
#include "bench_support.h"

#if defined(EFFECTS_BENCH_OPENCV)
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

namespace {

// A conversion from a layer of S to a buffer of D (pixels or 3-channel
// elements, `perPixel` of them a pixel), reported under layout L.
template <class L, class S, class D, class F>
void conversion(const char* family, size_t perPixel, F fn) {
  for (int32_t side : bench::kSides) {
    bench::registerRaw(bench::caseName(family, bench::layoutName<L>(), side), [=](benchmark::State& state) {
      const auto src = bench::layer<S>(side, 1);
      std::vector<D> dst(static_cast<size_t>(side) * static_cast<size_t>(side) * perPixel);
      for (auto _ : state) {
        fn(side, src.data(), dst.data());
        benchmark::DoNotOptimize(dst.data());
        benchmark::ClobberMemory();
      }
    });
  }
}

// 3-channel source buffers: the colour elements of a layer, red first.
template <class E, class P>
std::vector<E> threeChannels(int32_t side) {
  const auto px = bench::layer<P>(side, 3);
  std::vector<E> v;
  v.reserve(px.size() * 3);
  for (const auto& p : px) { v.push_back(p.red); v.push_back(p.green); v.push_back(p.blue); }
  return v;
}

template <class L, class S, class D, class F>
void fromThreeChannels(const char* family, F fn) {
  for (int32_t side : bench::kSides) {
    bench::registerRaw(bench::caseName(family, bench::layoutName<L>(), side), [=](benchmark::State& state) {
      const auto src = threeChannels<S, L>(side);
      auto dst = bench::layer<D>(side, 1);
      for (auto _ : state) {
        fn(side, src.data(), dst.data());
        benchmark::DoNotOptimize(dst.data());
        benchmark::ClobberMemory();
      }
    });
  }
}

template <class P, class F>
void measurement(const char* family, F fn) {
  for (int32_t side : bench::kSides) {
    bench::registerRaw(bench::caseName(family, bench::layoutName<P>(), side), [=](benchmark::State& state) {
      const auto px = bench::layer<P>(side, 1);
      float histogram[256] = {}, mn, mx, nz = 1e10f, sum;
      for (auto _ : state) {
        fn(side * side * 4, px.data(), histogram, &mn, &mx, &nz, &sum);
        benchmark::DoNotOptimize(histogram);
        benchmark::ClobberMemory();
      }
    });
  }
}

bench::Registration conversions([] {
  conversion<Pixel64, Pixel64, Pixel32>("convert-64-to-32", 1, [](int32_t s, const Pixel64* a, Pixel32* b) { Convert64to32Fast(s * s * 4, b, a); });
  conversion<Pixel64, Pixel32, Pixel64>("convert-32-to-64", 1, [](int32_t s, const Pixel32* a, Pixel64* b) { Convert32to64Fast(s * s * 4, a, b); });
  conversion<Pixel128, Pixel32, Pixel128>("convert-32-to-128", 1, [](int32_t s, const Pixel32* a, Pixel128* b) { Convert32to128Fast(s * s * 4, a, b); });
  conversion<Pixel128, Pixel64, Pixel128>("convert-64-to-128", 1, [](int32_t s, const Pixel64* a, Pixel128* b) { Convert64to128Fast(s * s * 4, a, b); });
  conversion<Pixel128, Pixel128, Pixel64>("convert-128-to-64", 1, [](int32_t s, const Pixel128* a, Pixel64* b) { Convert128to64Fast(s * s * 4, b, a); });
  conversion<Pixel128, Pixel128, Pixel32>("convert-128-to-32", 1, [](int32_t s, const Pixel128* a, Pixel32* b) { Convert128to32Fast(s * s * 4, b, a); });
  conversion<Pixel128, Pixel128, Pixel32>("convert-128-to-32-lock", 1, [](int32_t s, const Pixel128* a, Pixel32* b) { Convert128to32Lock(s * s * 4, b, a); });
  conversion<Pixel32, Pixel32, uint8_t>("to-rgb24", 3, [](int32_t s, const Pixel32* a, uint8_t* b) { Convert32BIT_4to3ChannelsFast(s, s, a, b); });
  conversion<Pixel64, Pixel64, uint16_t>("to-rgb48", 3, [](int32_t s, const Pixel64* a, uint16_t* b) { Convert15BITto16BITFast(s, s, a, b); });
  conversion<Pixel128, Pixel128, float>("to-rgb-float", 3, [](int32_t s, const Pixel128* a, float* b) { Convert32BITto24BITFast(s, s, a, b); });
  fromThreeChannels<Pixel64, uint16_t, Pixel64>("from-rgb48", [](int32_t s, const uint16_t* a, Pixel64* b) { Convert16BITto15BITFast(s, s, a, b); });
  fromThreeChannels<Pixel128, float, Pixel128>("from-rgb-float", [](int32_t s, const float* a, Pixel128* b) { Convert128BIT_3to4ChannelsFast(s, s, b, a); });
  fromThreeChannels<Pixel128, float, Pixel64>("float3-to-64", [](int32_t s, const float* a, Pixel64* b) { Convertfloat3xto64(s, s, b, a); });
  fromThreeChannels<Pixel128, float, Pixel128>("hdr-gamma", [](int32_t s, const float* a, Pixel128* b) { Convert128HDRFast(s, s, b, a, 0); });
  conversion<Pixel128, Pixel32, Pixel128>("rgbe-import", 1, [](int32_t s, const Pixel32* a, Pixel128* b) {
    Convert128HDRRAWFast(s, s, b, reinterpret_cast<const uint8_t*>(a), 0);
  });
  conversion<Pixel128, Pixel128, uint32_t>("rgbe-encode", 1, [](int32_t s, const Pixel128* a, uint32_t* b) {
    Convert128toRGBE(s * s * 4, a, reinterpret_cast<uint8_t*>(b));
  });
  conversion<Pixel32, Pixel32, uint32_t>("rgbe-encode", 1, [](int32_t s, const Pixel32* a, uint32_t* b) {
    Convert32toRGBE(s * s * 4, a, reinterpret_cast<uint8_t*>(b));
  });
#if defined(EFFECTS_BENCH_OPENCV)
  for (int32_t side : bench::kSides) {
    bench::registerRaw(bench::caseName("opencv:convert-32-to-128", "128", side), [=](benchmark::State& state) {
      auto a = bench::layer<Pixel32>(side, 1);
      std::vector<Pixel128> b(a.size());
      cv::Mat ma(side, side, CV_8UC4, a.data()), mb(side, side, CV_32FC4, b.data());
      for (auto _ : state) {
        ma.convertTo(mb, CV_32F, 1 / 255.0);
        benchmark::ClobberMemory();
      }
    }, "Mat::convertTo");
    bench::registerRaw(bench::caseName("opencv:convert-128-to-32", "128", side), [=](benchmark::State& state) {
      auto a = bench::layer<Pixel128>(side, 1);
      std::vector<Pixel32> b(a.size());
      cv::Mat ma(side, side, CV_32FC4, a.data()), mb(side, side, CV_8UC4, b.data());
      for (auto _ : state) {
        ma.convertTo(mb, CV_8U, 255.0);
        benchmark::ClobberMemory();
      }
    }, "Mat::convertTo");
  }
#endif
});

bench::Registration histograms([] {
  measurement<Pixel32>("histogram", Histogram32Fast);
  measurement<Pixel64>("histogram", Histogram64Fast);
  measurement<Pixel128>("histogram", Histogram128Fast);
  auto green = [](auto fn) {
    return [fn](int32_t n, const auto* p, float* h, float* a, float* b, float* c, float* d) { fn(n, p, h, a, b, c, d, 1); };
  };
  measurement<Pixel32>("histogram-channel", green(HistogramChannel32Fast));
  measurement<Pixel64>("histogram-channel", green(HistogramChannel64Fast));
  measurement<Pixel128>("histogram-channel", green(HistogramChannel128Fast));
  auto range = [](auto fn) {
    return [fn](int32_t n, const auto* p, float*, float* a, float* b, float* c, float* d) { fn(n, p, a, b, c, d); };
  };
  measurement<Pixel32>("dynamic-range", range(DynamicRange32Fast));
  measurement<Pixel64>("dynamic-range", range(DynamicRange64Fast));
  measurement<Pixel128>("dynamic-range", range(DynamicRange128Fast));
#if defined(EFFECTS_BENCH_OPENCV)
  for (int32_t side : bench::kSides) {
    bench::registerRaw(bench::caseName("opencv:histogram", "32", side), [=](benchmark::State& state) {
      auto a = bench::layer<Pixel32>(side, 1);
      cv::Mat m(side, side, CV_8UC4, a.data()), hist;
      const int channels[] = {1}, bins[] = {256};
      const float range[] = {0, 256};
      const float* ranges[] = {range};
      for (auto _ : state) {
        cv::calcHist(&m, 1, channels, cv::Mat(), hist, 1, bins, ranges);
        benchmark::ClobberMemory();
      }
    }, "cv::calcHist, one channel");
  }
#endif
});

}  // namespace
