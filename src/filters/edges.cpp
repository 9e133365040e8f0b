// The edge filters: emboss, find edges and neon (gradient magnitude and its
// complement) and lining. All rewrite the picture in place in raster order.
#include <cmath>

#include "filters/neighbourhood.h"

namespace effects::filters {
namespace {

// |v| in wrapping 32-bit arithmetic: the most negative value stays negative.
inline int32_t wrapAbs(int32_t v) { return v < 0 ? wrapSub(0, v) : v; }

}  // namespace

// Grey relief against the pixel one down and one right (pulled back at the
// far edges, so it still holds its entry value when read). The integer
// layouts work in wrapping 32-bit arithmetic, as a depth large enough to
// overflow it does; the float layout forms d in double from the single
// precision difference times the depth.
template <class L>
void emboss(const Picture<typename L::Pixel>& pic, int32_t depth) {
  using P = typename L::Pixel;
  using E = typename L::Element;
  const int32_t w = pic.width(), h = pic.height();
  feedForward(pic, [&](P& p, int32_t x, int32_t y) {
    const P q = pic.at(edgeStep(x, 1, w), edgeStep(y, 1, h));
    E grey;
    if constexpr (L::integer) {
      constexpr int32_t middle = fullInt<L> / 2 + 1;  // 128, 16384
      const auto d = [&](E a, E b) {
        return wrapAbs(wrapAdd(wrapMul(static_cast<int32_t>(a) - static_cast<int32_t>(b), depth), middle));
      };
      const int32_t sum = wrapAdd(wrapAdd(d(p.red, q.red), d(p.green, q.green)), d(p.blue, q.blue));
      grey = clampStore<L>(divTrunc(sum, 3));
    } else {
      const float k = static_cast<float>(depth);
      const auto d = [k](float a, float b) { return std::fabs((a - b) * k + 0.5); };
      grey = static_cast<float>((d(p.red, q.red) + d(p.green, q.green) + d(p.blue, q.blue)) * 0.33333334);
    }
    p.blue = p.green = p.red = grey;
  });
}

// The gradient magnitude against the pixels `step` rows down and `step`
// columns right (pulled back at the far edges). A negative step reads up and
// left, where this walk has already written; before the picture's first row
// or column the pixel itself is read, a difference of 0.
template <class L, bool Complement>
void edges(const Picture<typename L::Pixel>& pic, int32_t gain, int32_t step) {
  using P = typename L::Pixel;
  using E = typename L::Element;
  const unsigned shift = static_cast<unsigned>(gain) & 31u;
  const float k = static_cast<float>(gain);
  feedForward(pic, [&](P& p, int32_t x, int32_t y) {
    const P v = sampleAt(pic, x, y, 0, step);
    const P hz = sampleAt(pic, x, y, step, 0);
    E* e = elementsOf(&p);
    const E* ev = elementsOf(&v);
    const E* eh = elementsOf(&hz);
    for (unsigned i = 0; i < 3; ++i) {
      if constexpr (L::integer) {
        // The squares are summed in 32 bits and shifted by the low five bits
        // of the gain; a result whose top bit is set reads as negative, and
        // its root (not a number) truncates to the most negative integer and
        // clamps to 0.
        const int64_t dv = static_cast<int64_t>(e[i]) - ev[i], dh = static_cast<int64_t>(e[i]) - eh[i];
        const uint32_t s = static_cast<uint32_t>(dv * dv) + static_cast<uint32_t>(dh * dh);
        const int32_t shifted = static_cast<int32_t>(s << shift);
        const int32_t magnitude = clampTo(truncToInt32(std::sqrt(static_cast<double>(shifted))), 0, fullInt<L>);
        e[i] = static_cast<E>(Complement ? fullInt<L> - magnitude : magnitude);
      } else {
        // The float layout scales by the gain itself, not by 2 to its power.
        const float dv = e[i] - ev[i], dh = e[i] - eh[i];
        const double root = std::sqrt(static_cast<double>((dv * dv + dh * dh) * k));
        e[i] = static_cast<float>(Complement ? 1.0 - root : root);
      }
    }
  });
}

// v = |P + (P - Q) x factor| per colour with Q the pixel up and to the left,
// written into Q's place: the result lands one pixel up and to the left, and
// P and Q both still hold their entry values when read. The integer layouts
// work in wrapping 32-bit arithmetic and take any result above full, or the
// negative |v| of an overflow, as full; the float layout does not clamp.
template <class L>
void lining(const Picture<typename L::Pixel>& pic, int32_t redFactor, int32_t greenFactor, int32_t blueFactor) {
  using P = typename L::Pixel;
  using E = typename L::Element;
  if (pic.height() < 3) return;
  const ptrdiff_t upLeft = pic.offset(-1, -1);
  const int32_t factor[3] = {blueFactor, greenFactor, redFactor};
  feedForwardInterior(pic, 1, [&](P& p, int32_t, int32_t) {
    const E* e = elementsOf(&p);
    E* q = elementsOf(&neighbour(&p, upLeft));
    for (unsigned i = 0; i < 3; ++i) {
      if constexpr (L::integer) {
        const int32_t pi = e[i];
        const int32_t v = wrapAbs(wrapAdd(pi, wrapMul(pi - static_cast<int32_t>(q[i]), factor[i])));
        q[i] = static_cast<E>(v < 0 || v > fullInt<L> ? fullInt<L> : v);
      } else {
        q[i] = std::fabs(e[i] + (e[i] - q[i]) * static_cast<float>(factor[i]));
      }
    }
  });
}

}  // namespace effects::filters

using namespace effects;
using namespace effects::filters;

extern "C" {

EFFECTS_API int32_t EFFECTS_CALL VexoEmboss32(int32_t width, int32_t height, Pixel32* pixels, int32_t depth) { emboss<Layout32>(packedPicture(width, height, pixels), depth); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoEmboss64(int32_t width, int32_t height, Pixel64* pixels, int32_t depth) { emboss<Layout64>(packedPicture(width, height, pixels), depth); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoEmboss128(int32_t width, int32_t height, Pixel128* pixels, int32_t depth) { emboss<Layout128>(packedPicture(width, height, pixels), depth); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoFindEdges32(int32_t width, int32_t height, Pixel32* pixels, int32_t gain, int32_t step) { edges<Layout32, true>(packedPicture(width, height, pixels), gain, step); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoFindEdges64(int32_t width, int32_t height, Pixel64* pixels, int32_t gain, int32_t step) { edges<Layout64, true>(packedPicture(width, height, pixels), gain, step); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoFindEdges128(int32_t width, int32_t height, Pixel128* pixels, int32_t gain, int32_t step) { edges<Layout128, true>(packedPicture(width, height, pixels), gain, step); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoNeon32(int32_t width, int32_t height, Pixel32* pixels, int32_t gain, int32_t step) { edges<Layout32, false>(packedPicture(width, height, pixels), gain, step); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoNeon64(int32_t width, int32_t height, Pixel64* pixels, int32_t gain, int32_t step) { edges<Layout64, false>(packedPicture(width, height, pixels), gain, step); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoNeon128(int32_t width, int32_t height, Pixel128* pixels, int32_t gain, int32_t step) { edges<Layout128, false>(packedPicture(width, height, pixels), gain, step); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoLining32(int32_t width, int32_t height, Pixel32* pixels, int32_t redFactor, int32_t greenFactor, int32_t blueFactor) { lining<Layout32>(packedPicture(width, height, pixels), redFactor, greenFactor, blueFactor); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoLining64(int32_t width, int32_t height, Pixel64* pixels, int32_t redFactor, int32_t greenFactor, int32_t blueFactor) { lining<Layout64>(packedPicture(width, height, pixels), redFactor, greenFactor, blueFactor); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoLining128(int32_t width, int32_t height, Pixel128* pixels, int32_t redFactor, int32_t greenFactor, int32_t blueFactor) { lining<Layout128>(packedPicture(width, height, pixels), redFactor, greenFactor, blueFactor); return 0; }

}  // extern "C"
