// Colour corrections that look beyond one pixel's own value: red-eye
// removal, the automatic colour correction and the inversion against the
// picture's own maximum.
#include <cmath>
#include <cstddef>

#include "core/crmath.h"
#include "core/fpenv.h"
#include "core/layout.h"
#include "core/numeric.h"
#include "core/picture.h"
#include "core/scratch.h"

namespace effects {
namespace {

// ------------------------------------------------------------ red-eye removal

// A pixel whose red is at least its blue and green, with blue and green both
// at or below the threshold, gets red = the mean of blue and green. Row 0 and
// column 0 are never examined: the walk starts at (1, 1).
template <class L>
void redEye(int32_t width, int32_t height, typename L::Pixel* px, int32_t threshold) {
  const FloatEnvironment env;
  using P = typename L::Pixel;
  using E = typename L::Element;
  const auto pic = packedPicture(width, height, px);
  auto walk = [&](auto&& f) { forEachInterior(pic, 1, 1, 0, 0, [&f](P& p, int32_t, int32_t) { f(p); }); };
  if constexpr (!L::integer) {
    const double t = threshold * k255;
    walk([t](P& p) {
      if (p.red >= p.blue && p.red >= p.green && p.blue <= t && p.green <= t)
        p.red = static_cast<float>((p.blue + p.green) * 0.5);
    });
  } else {
    walk([threshold](P& p) {
      const int32_t b = p.blue, g = p.green, r = p.red;
      if (r >= b && r >= g && b <= threshold && g <= threshold) p.red = static_cast<E>((g + b) >> 1);
    });
  }
}

// --------------------------------------------------- automatic colour correction

struct ChannelStats {
  double max = 0.0;
  double min = 1e20;
  double sum = 0.0;
  void add(double v) {
    if (v > max) max = v;
    if (v < min) min = v;
    sum += v;
  }
};

// Channels whose mid-range is well above their mean (a dark channel: ratio
// above 2) are lifted along 1 - e^(-k x / max). The mean divides by N - 1
// rather than N, which moves the threshold; results depend on it. Values
// come from a copy of the input, so every channel reads the picture as it
// was; without memory for the copy nothing changes.
void autoColourCorrection(int32_t width, int32_t height, Pixel32* px) {
  const FloatEnvironment env;
  const auto copy = scratchCopy(packedPicture(width, height, px), ScratchSlot::First);
  if (copy.empty()) return;
  const size_t n = copy.pixelCount();
  const Pixel32* source = copy.data();

  ChannelStats red, green, blue;
  for (size_t i = 0; i < n; ++i) {
    red.add(source[i].red);
    green.add(source[i].green);
    blue.add(source[i].blue);
  }
  // A single pixel has no N - 1 to divide by: its mean is infinite or
  // undefined, so no ratio exceeds 2 and nothing changes.
  if (n < 2) return;
  const double divisor = static_cast<double>(n - 1);
  auto ratioOf = [divisor](const ChannelStats& s) { return 0.5 * (s.max + s.min) / (s.sum / divisor); };

  constexpr double pi = 3.141592653589793;
  constexpr double log2e = 1.4426950408889634;
  auto correct = [&](const ChannelStats& s, uint8_t Pixel32::* element) {
    const double ratio = ratioOf(s);
    if (!(ratio > 2.0)) return;
    const double max = s.max;
    for (size_t i = 0; i < n; ++i) {
      const double x = source[i].*element;
      const double y = -(ratio + crmath::sin(x / max * pi / 180.0)) * x / max;
      px[i].*element = roundLowByte(255.0 * (1.0 - std::exp2(y * log2e)));
    }
  };
  correct(red, &Pixel32::red);
  correct(green, &Pixel32::green);
  correct(blue, &Pixel32::blue);
}

// ------------------------------------------------------------ range inversion

// Two passes: the largest blue, green or red anywhere (from 0.0), then
// c' = M - c on the chosen channels.
void rangeInvert128(int32_t n, Pixel128* px, int32_t channel) {
  const FloatEnvironment env;
  if (n < 1) return;
  float m = 0.0f;
  forEachPixel(n, px, [&m](const Pixel128& p) {
    if (p.blue > m) m = p.blue;
    if (p.green > m) m = p.green;
    if (p.red > m) m = p.red;
  });
  const Channels ch = Channels::of(channel);
  forEachPixel(n, px, [m, ch](Pixel128& p) {
    if (ch.red) p.red = m - p.red;
    if (ch.green) p.green = m - p.green;
    if (ch.blue) p.blue = m - p.blue;
  });
}

}  // namespace
}  // namespace effects

using namespace effects;

extern "C" {

EFFECTS_API uint32_t EFFECTS_CALL VexoRedEyeRemover32(int32_t w, int32_t h, Pixel32* px, int32_t, int32_t threshold) { redEye<Layout32>(w, h, px, threshold); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoRedEyeRemover64(int32_t w, int32_t h, Pixel64* px, int32_t, int32_t threshold) { redEye<Layout64>(w, h, px, threshold); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoRedEyeRemover128(int32_t w, int32_t h, Pixel128* px, int32_t, int32_t threshold) { redEye<Layout128>(w, h, px, threshold); return 0; }

EFFECTS_API uint32_t EFFECTS_CALL VexoAutoColorCorrectionLDC32(int32_t w, int32_t h, Pixel32* px) { autoColourCorrection(w, h, px); return 0; }

EFFECTS_API uint32_t EFFECTS_CALL VexoVariableRangeInvert128(int32_t n, Pixel128* px, int32_t channel) { rangeInvert128(n, px, channel); return 0; }

}  // extern "C"
