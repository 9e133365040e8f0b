// The bitmap exports on the stand-in's surfaces (off Windows): a mask
// composite through an array, and in-place adjustments and warps. Each call
// reads the bitmap as 24-bit rows and writes it back, so the figures include
// those two copies, as they include GDI's on Windows.
#include "bench_support.h"

#if !defined(_WIN32)
#include "effects/surface.h"

namespace {

struct Surface {
  std::vector<Pixel32> pixels;
  EffectsBitmap bitmap;
  EffectsDeviceContext dc;
  explicit Surface(int32_t side)
      : pixels(bench::layer<Pixel32>(side)), bitmap{side, side, reinterpret_cast<uint8_t*>(pixels.data())},
        dc{&bitmap} {}
};

void onBitmap(const char* family, int32_t (*run)(Surface&, const uint8_t* mask)) {
  for (int32_t side : bench::kSides) {
    bench::registerRaw(bench::caseName(family, "32", side), [=](benchmark::State& state) {
      Surface s(side);
      const auto maskPixels = bench::layer<Pixel32>(side, 3);
      const auto* mask = reinterpret_cast<const uint8_t*>(maskPixels.data());  // more than the 24-bit rows need
      for (auto _ : state) {
        benchmark::DoNotOptimize(run(s, mask));
        benchmark::ClobberMemory();
      }
    });
  }
}

const bench::Registration registration([] {
  onBitmap("bitmap-mask-composite", [](Surface& s, const uint8_t* m) {
    return VexoMaskArrayColor(&s.dc, &s.bitmap, m, 0x00336699u, 70, 0);
  });
  onBitmap("bitmap-saturation", [](Surface& s, const uint8_t*) { return VexoSaturation(&s.dc, &s.bitmap, 40); });
  onBitmap("bitmap-gamma", [](Surface& s, const uint8_t*) { return VexoGamma(&s.dc, &s.bitmap, 1.2f); });
  onBitmap("bitmap-anti-alias", [](Surface& s, const uint8_t*) { return VexoAntiAlias(&s.dc, &s.bitmap); });
  onBitmap("bitmap-swirl", [](Surface& s, const uint8_t*) { return VexoSwirl(&s.dc, &s.bitmap, 90); });
});

}  // namespace
#endif
