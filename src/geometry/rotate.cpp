// Free rotation (inverse mapping, bilinear) and the skew (forward splat).
#include <algorithm>
#include <cmath>
#include <cstdint>

#include "core/fpenv.h"
#include "core/numeric.h"
#include "core/picture.h"
#include "geometry/rotation.h"

namespace effects {
namespace {

using namespace geometry;

template <class P>
void rotateExport(int32_t sourceWidth, int32_t sourceHeight, const P* source, int32_t targetWidth,
                  int32_t targetHeight, P* target, float angle) {
  rotate(packedPicture(sourceWidth, sourceHeight, source), packedPicture(targetWidth, targetHeight, target), angle);
}

// ------------------------------------------------------------------- skew

// One element of the splat: target + source x weight in single precision.
// The integer layouts truncate and cap from above only, keeping the low bits
// of what is left; the float layout stores the sum.
template <class L, class E>
inline E splatElement(E to, E from, float w) {
  const float sum = static_cast<float>(to) + static_cast<float>(from) * w;
  if constexpr (L::integer)
    return static_cast<E>(static_cast<uint32_t>(std::min(truncToInt32(sum), fullInt<L>)));
  else
    return sum;
}

// The target as the skew addresses it: one run of pixels, index
// row * targetWidth + column. Writes outside it are dropped.
template <class P>
class SplatTarget {
 public:
  SplatTarget(P* pixels, int64_t count) : pixels_(pixels), count_(count) {}
  int64_t count() const { return count_; }
  void copy(int64_t i, const P& s) const {
    if (inside(i)) pixels_[i] = s;
  }
  void add(int64_t i, const P& s, float w) const {
    if (!inside(i)) return;
    using L = LayoutOf<P>;
    P& t = pixels_[i];
    t.blue = splatElement<L>(t.blue, s.blue, w);
    t.green = splatElement<L>(t.green, s.green, w);
    t.red = splatElement<L>(t.red, s.red, w);
    t.mask = splatElement<L>(t.mask, s.mask, w);
  }

 private:
  bool inside(int64_t i) const { return i >= 0 && i < count_; }
  P* pixels_;
  int64_t count_;
};

// The fractional part of a position and its whole part, truncated toward
// zero: f = pos - i in single precision, negative for negative positions.
struct Split {
  int32_t whole;
  float fraction;
  explicit Split(float pos) : whole(truncToInt32(pos)), fraction(pos - static_cast<float>(whole)) {}
};

// Row y shifts by y x percent / 100. A negative fraction splits toward the
// left neighbour; a positive one toward the right neighbour, but only while
// that pair ends before the last pixel of the target (so the last pixel
// never takes a right-hand share).
template <class P>
void skewHorizontal(const Picture<const P>& source, const SplatTarget<P>& to, int32_t targetWidth, float percent) {
  forEachXY(source, [&](const P& s, int32_t x, int32_t y) {
    const Split pos(static_cast<float>(y * static_cast<double>(percent) * 0.01 + x));
    const int64_t i = int64_t{y} * targetWidth + pos.whole;
    const float f = pos.fraction;
    if (f == 0) {
      to.copy(i, s);
    } else if (f > 0) {
      if (i < to.count() - 2) {
        to.add(i, s, 1 - f);
        to.add(i + 1, s, f);
      }
    } else {
      to.add(i, s, 1 - std::fabs(f));
      to.add(i - 1, s, std::fabs(f));
    }
  });
}

// Column x shifts down by x x percent / 100; nothing is written for a pixel
// whose target index is negative, and a positive fraction needs the row
// below inside the target.
template <class P>
void skewVertical(const Picture<const P>& source, const SplatTarget<P>& to, int32_t targetWidth, float percent) {
  forEachXY(source, [&](const P& s, int32_t x, int32_t y) {
    const Split pos(static_cast<float>(x * static_cast<double>(percent) * 0.01 + y));
    const int64_t i = int64_t{pos.whole} * targetWidth + x;
    const float f = pos.fraction;
    if (i < 0) return;
    if (f == 0) {
      to.copy(i, s);
    } else if (f > 0) {
      if (i + targetWidth < to.count()) {
        to.add(i, s, 1 - f);
        to.add(i + targetWidth, s, f);
      }
    } else {
      to.add(i, s, 1 - std::fabs(f));
      to.add(i - targetWidth, s, std::fabs(f));
    }
  });
}

template <class P>
void skew(int32_t sourceWidth, int32_t sourceHeight, int32_t targetWidth, int32_t targetHeight, const P* source,
          P* target, float verticalPercent, float horizontalPercent) {
  const auto from = packedPicture(sourceWidth, sourceHeight, source);
  const auto to = packedPicture(targetWidth, targetHeight, target);
  if (from.empty() || to.empty()) return;
  const SplatTarget<P> splat(target, static_cast<int64_t>(to.pixelCount()));
  if (verticalPercent == 0.0f)
    skewHorizontal(from, splat, targetWidth, horizontalPercent);
  else
    skewVertical(from, splat, targetWidth, verticalPercent);
}

}  // namespace
}  // namespace effects

using namespace effects;

extern "C" {
EFFECTS_API int32_t EFFECTS_CALL VexoRotate32(int32_t sourceWidth, int32_t sourceHeight, const Pixel32* source, int32_t targetWidth, int32_t targetHeight, Pixel32* target, float angle) { const FloatEnvironment env; rotateExport(sourceWidth, sourceHeight, source, targetWidth, targetHeight, target, angle); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoRotate64(int32_t sourceWidth, int32_t sourceHeight, const Pixel64* source, int32_t targetWidth, int32_t targetHeight, Pixel64* target, float angle) { const FloatEnvironment env; rotateExport(sourceWidth, sourceHeight, source, targetWidth, targetHeight, target, angle); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoRotate128(int32_t sourceWidth, int32_t sourceHeight, const Pixel128* source, int32_t targetWidth, int32_t targetHeight, Pixel128* target, float angle) { const FloatEnvironment env; rotateExport(sourceWidth, sourceHeight, source, targetWidth, targetHeight, target, angle); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoSkew32(int32_t sourceWidth, int32_t sourceHeight, int32_t targetWidth, int32_t targetHeight, const Pixel32* source, Pixel32* target, float verticalPercent, float horizontalPercent) { const FloatEnvironment env; skew(sourceWidth, sourceHeight, targetWidth, targetHeight, source, target, verticalPercent, horizontalPercent); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoSkew64(int32_t sourceWidth, int32_t sourceHeight, int32_t targetWidth, int32_t targetHeight, const Pixel64* source, Pixel64* target, float verticalPercent, float horizontalPercent) { const FloatEnvironment env; skew(sourceWidth, sourceHeight, targetWidth, targetHeight, source, target, verticalPercent, horizontalPercent); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoSkew128(int32_t sourceWidth, int32_t sourceHeight, int32_t targetWidth, int32_t targetHeight, const Pixel128* source, Pixel128* target, float verticalPercent, float horizontalPercent) { const FloatEnvironment env; skew(sourceWidth, sourceHeight, targetWidth, targetHeight, source, target, verticalPercent, horizontalPercent); return 0; }
}
