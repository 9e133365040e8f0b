// The blurs along a path: motion (a line at an angle), zoom (the line to the
// centre) and radial (an arc about the centre). Each reads the picture at
// entry and collects its results in a scratch picture, so the order in which
// the pixels are visited does not matter; they are visited in raster order.
#include <cmath>
#include <cstdint>

#include "core/fpenv.h"
#include "filters/angles.h"
#include "filters/neighbourhood.h"

namespace effects::filters {
namespace {

// The sum of all four elements over a path's samples: exact 64-bit integers
// in the integer layouts (no path is long enough to overflow them), single
// precision in the float layout, in the path's order.
template <class L>
struct Sum4 {
  using S = std::conditional_t<L::integer, int64_t, float>;
  S e[4] = {};
  void add(const typename L::Pixel& p) {
    e[0] += p.blue;
    e[1] += p.green;
    e[2] += p.red;
    e[3] += p.mask;
  }
  // Truncating division by the sample count (integer layouts).
  typename L::Pixel dividedBy(int64_t count) const {
    using E = typename L::Element;
    return {static_cast<E>(e[0] / count), static_cast<E>(e[1] / count), static_cast<E>(e[2] / count),
            static_cast<E>(e[3] / count)};
  }
  // Multiplication by a single-precision scale (float layout).
  typename L::Pixel scaledBy(float k) const { return {e[0] * k, e[1] * k, e[2] * k, e[3] * k}; }
};

// A sample coordinate: truncated toward zero, then clamped to 0 .. n - 1.
inline int32_t clampedCoordinate(double v, int32_t n) { return clampTo(truncToInt32(v), 0, n - 1); }

// The centre of the zoom and radial blurs and a pixel's place about it.
struct Polar {
  double r, theta;
  static Polar of(int32_t cx, int32_t cy, int32_t x, int32_t y) {
    const double dx = static_cast<double>(cx) - x, dy = static_cast<double>(cy) - y;
    return {std::sqrt(dx * dx + dy * dy), arcTangent2(dy, dx)};
  }
};

}  // namespace

template <class L>
bool motionBlur(const Picture<typename L::Pixel>& pic, double angle, int32_t distance) {
  using P = typename L::Pixel;
  // The float member divides by 2 x distance, which is 0 here: it keeps the
  // picture as it is instead.
  if (!L::integer && distance == 0) return true;
  if (angle == 0.0) angle = 0.0001;
  const double theta = 6.283185307179586 / (360.0 / angle);
  const CosSin direction = cosineAndSine(theta);
  const double c = direction.c, s = direction.s;
  const int32_t w = pic.width(), h = pic.height();
  const double last = distance;
  return fromEntryIntoScratch(pic, ScratchSlot::First, [&](const Picture<const P>& entry, int32_t x, int32_t y) {
    Sum4<L> sum;
    for (double t = -last; t <= last; t += 1.0)
      sum.add(entry.at(clampedCoordinate(c * t + x, w), clampedCoordinate(s * t + y, h)));
    if constexpr (L::integer) return sum.dividedBy(2 * static_cast<int64_t>(distance) + 1);
    else return sum.scaledBy(1.0f / (2.0f * static_cast<float>(distance)));
  });
}

template <class L>
bool zoomBlur(const Picture<typename L::Pixel>& pic, int32_t strength) {
  using P = typename L::Pixel;
  const int32_t w = pic.width(), h = pic.height();
  const int32_t cx = w / 2, cy = h / 2;
  const double k = strength < 1 ? 1 : strength;
  const double inverseDiagonal = 1.0 / std::sqrt(static_cast<double>(w) * w + static_cast<double>(h) * h);
  return fromEntryIntoScratch(pic, ScratchSlot::First, [&](const Picture<const P>& entry, int32_t x, int32_t y) {
    const Polar at = Polar::of(cx, cy, x, y);
    const double length = k * at.r * inverseDiagonal;
    if (!(length > 0)) return entry.at(x, y);
    const auto [c, s] = cosineAndSine(at.theta);
    Sum4<L> sum;
    for (int64_t t = 0; t < length; ++t) {
      const double along = at.r - static_cast<double>(t);
      sum.add(entry.at(clampedCoordinate(cx - along * c, w), clampedCoordinate(cy - along * s, h)));
    }
    // One more than the samples when the length is whole: the slight
    // darkening is part of the effect.
    const int32_t divisor = truncToInt32(length + 1.0);
    if constexpr (L::integer) return sum.dividedBy(divisor);
    else return sum.scaledBy(1.0f / static_cast<float>(divisor));
  });
}

template <class L>
bool radialBlur(const Picture<typename L::Pixel>& pic, int32_t spread) {
  using P = typename L::Pixel;
  const int32_t w = pic.width(), h = pic.height();
  const int32_t cx = w / 2, cy = h / 2;
  const int32_t n = spread < 1 ? 1 : spread;
  const int64_t count = 2 * static_cast<int64_t>(n) + 1;
  return fromEntryIntoScratch(pic, ScratchSlot::First, [&](const Picture<const P>& entry, int32_t x, int32_t y) {
    const Polar at = Polar::of(cx, cy, x, y);
    Sum4<L> sum;
    for (int64_t i = -static_cast<int64_t>(n); i <= n; ++i) {
      // One degree as the truncated constant 0.01745329.
      const double theta = at.theta + static_cast<double>(i) * 0.01745329;
      const auto [c, s] = cosineAndSine(theta);
      sum.add(entry.at(clampedCoordinate(cx - at.r * c, w), clampedCoordinate(cy - at.r * s, h)));
    }
    if constexpr (L::integer) return sum.dividedBy(count);
    else return sum.scaledBy(1.0f / static_cast<float>(count));
  });
}

}  // namespace effects::filters

using namespace effects;
using namespace effects::filters;

extern "C" {

EFFECTS_API int32_t EFFECTS_CALL VexoMotionBlur32(int32_t width, int32_t height, Pixel32* pixels, double angle, int32_t distance) { const FloatEnvironment env; motionBlur<Layout32>(packedPicture(width, height, pixels), angle, distance); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoMotionBlur64(int32_t width, int32_t height, Pixel64* pixels, double angle, int32_t distance) { const FloatEnvironment env; motionBlur<Layout64>(packedPicture(width, height, pixels), angle, distance); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoMotionBlur128(int32_t width, int32_t height, Pixel128* pixels, double angle, int32_t distance) { const FloatEnvironment env; motionBlur<Layout128>(packedPicture(width, height, pixels), angle, distance); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoZoomBlur32(int32_t width, int32_t height, Pixel32* pixels, int32_t strength) { const FloatEnvironment env; zoomBlur<Layout32>(packedPicture(width, height, pixels), strength); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoZoomBlur64(int32_t width, int32_t height, Pixel64* pixels, int32_t strength) { const FloatEnvironment env; zoomBlur<Layout64>(packedPicture(width, height, pixels), strength); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoZoomBlur128(int32_t width, int32_t height, Pixel128* pixels, int32_t strength) { const FloatEnvironment env; zoomBlur<Layout128>(packedPicture(width, height, pixels), strength); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoRadialBlur32(int32_t width, int32_t height, Pixel32* pixels, int32_t spread) { const FloatEnvironment env; radialBlur<Layout32>(packedPicture(width, height, pixels), spread); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoRadialBlur64(int32_t width, int32_t height, Pixel64* pixels, int32_t spread) { const FloatEnvironment env; radialBlur<Layout64>(packedPicture(width, height, pixels), spread); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoRadialBlur128(int32_t width, int32_t height, Pixel128* pixels, int32_t spread) { const FloatEnvironment env; radialBlur<Layout128>(packedPicture(width, height, pixels), spread); return 0; }

}  // extern "C"
