// The edge filters: emboss, find edges and neon (gradient magnitude and its
// complement) and lining. All rewrite the picture in place in raster order.
#include <cmath>
#include <cstring>

#include "core/fpenv.h"
#include "filters/neighbourhood.h"
#include "filters/sharpen.h"

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

namespace {

// One pixel's new colours from its entry value p and its neighbours v
// (down) and h (right).
template <class L, bool Complement>
inline void edgePixel(typename L::Pixel& p, const typename L::Pixel& v, const typename L::Pixel& h, unsigned shift,
                      float k) {
  using E = typename L::Element;
  E* e = elementsOf(&p);
  const E* ev = elementsOf(&v);
  const E* eh = elementsOf(&h);
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
}

#if defined(__SSE2__)
// Pixels 0 .. count - 1 of a row, whose right neighbours lie `step` on
// (inside the row) and whose neighbours below are in `down`; all are read
// before any is written, a vector at a time, with the same arithmetic.
// Bytes: a sum past 255^2 clamps to 255 whatever its root, and below that
// the sum is an exact float whose single-precision root truncates to the
// integer root (for a non-square below 2^16 the root is at least 1/512 under
// the next integer); 16-bit elements take the root in double. The squares
// come from madd of 16-bit differences, so 16-bit pixels with a value above
// 32767 (outside the layout) go the plain way.
template <class L, bool Complement>
inline void edgeRowFast(typename L::Pixel* row, const typename L::Pixel* down, int32_t count, int32_t step,
                        unsigned shift) {
  using P = typename L::Pixel;
  const __m128i shiftBy = _mm_cvtsi32_si128(static_cast<int>(shift));
  const __m128i full = _mm_set1_epi32(fullInt<L>);
  for (int32_t x = 0; x < count; ++x) {
    const __m128i p = pixelLanes(&row[x]), v = pixelLanes(&down[x]), h = pixelLanes(&row[x + step]);
    if constexpr (std::is_same_v<P, Pixel64>) {
      if (_mm_movemask_epi8(_mm_cmpgt_epi32(_mm_or_si128(_mm_or_si128(p, v), h), _mm_set1_epi32(32767))) != 0) {
        edgePixel<L, Complement>(row[x], down[x], row[x + step], shift, 0.0f);
        continue;
      }
    }
    // Lanes (dv, dh) as 16-bit pairs: madd gives dv^2 + dh^2 per element.
    const __m128i dv = _mm_sub_epi32(p, v), dh = _mm_sub_epi32(p, h);
    const __m128i pairs = _mm_or_si128(_mm_and_si128(dv, _mm_set1_epi32(0xFFFF)), _mm_slli_epi32(dh, 16));
    const __m128i shifted = _mm_sll_epi32(_mm_madd_epi16(pairs, pairs), shiftBy);
    __m128i magnitude;
    if constexpr (std::is_same_v<P, Pixel32>) {
      const __m128 s = _mm_min_ps(_mm_cvtepi32_ps(shifted), _mm_set1_ps(65025.0f));
      magnitude = _mm_cvttps_epi32(_mm_sqrt_ps(s));
    } else {
      const __m128d low = _mm_sqrt_pd(_mm_cvtepi32_pd(shifted));
      const __m128d high = _mm_sqrt_pd(_mm_cvtepi32_pd(_mm_unpackhi_epi64(shifted, shifted)));
      magnitude = _mm_unpacklo_epi64(_mm_cvttpd_epi32(low), _mm_cvttpd_epi32(high));
    }
    // Clamp to 0 .. full: the most negative integer (a negative sum's root)
    // and anything below 0 give 0.
    __m128i m = _mm_packs_epi32(magnitude, magnitude);
    m = _mm_max_epi16(m, _mm_setzero_si128());
    m = _mm_min_epi16(m, _mm_packs_epi32(full, full));
    if constexpr (Complement) m = _mm_sub_epi16(_mm_packs_epi32(full, full), m);
    P out;
    if constexpr (std::is_same_v<P, Pixel32>) {
      const int32_t bits = _mm_cvtsi128_si32(_mm_packus_epi16(m, m));
      std::memcpy(&out, &bits, 4);
    } else {
      _mm_storel_epi64(reinterpret_cast<__m128i*>(&out), m);
    }
    out.mask = row[x].mask;
    row[x] = out;
  }
}
#endif

}  // namespace

// The gradient magnitude against the pixels `step` rows down and `step`
// columns right (pulled back at the far edges). A negative step reads up and
// left, where this walk has already written; before the picture's first row
// or column the pixel itself is read, a difference of 0.
template <class L, bool Complement, bool Fast>
void edges(const Picture<typename L::Pixel>& pic, int32_t gain, int32_t step) {
  using P = typename L::Pixel;
  const unsigned shift = static_cast<unsigned>(gain) & 31u;
  const float k = static_cast<float>(gain);
#if defined(__SSE2__)
  if constexpr (Fast && L::integer) {
    // With a step of 0 or more every read lies ahead of the walk (or is the
    // pixel itself), so each row goes through vectors up to the columns
    // whose right neighbour is pulled back.
    if (step >= 0) {
      const int32_t w = pic.width(), h = pic.height();
      const int32_t inside = step < w ? w - step : 0;
      for (int32_t y = 0; y < h; ++y) {
        P* row = pic.row(y);
        const P* down = pic.row(edgeStep(y, step, h));
        edgeRowFast<L, Complement>(row, down, inside, step, shift);
        for (int32_t x = inside; x < w; ++x) {
          const P v = down[x], right = row[edgeStep(x, step, w)];
          edgePixel<L, Complement>(row[x], v, right, shift, k);
        }
      }
      return;
    }
  }
#endif
  feedForward(pic, [&](P& p, int32_t x, int32_t y) {
    const P v = sampleAt(pic, x, y, 0, step);
    const P hz = sampleAt(pic, x, y, step, 0);
    edgePixel<L, Complement>(p, v, hz, shift, k);
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

template void edges<Layout32, true, false>(const Picture<Pixel32>&, int32_t, int32_t);
template void edges<Layout32, false, false>(const Picture<Pixel32>&, int32_t, int32_t);
template void edges<Layout64, true, false>(const Picture<Pixel64>&, int32_t, int32_t);
template void edges<Layout64, false, false>(const Picture<Pixel64>&, int32_t, int32_t);
template void edges<Layout32, true, true>(const Picture<Pixel32>&, int32_t, int32_t);
template void edges<Layout32, false, true>(const Picture<Pixel32>&, int32_t, int32_t);
template void edges<Layout64, true, true>(const Picture<Pixel64>&, int32_t, int32_t);
template void edges<Layout64, false, true>(const Picture<Pixel64>&, int32_t, int32_t);

}  // namespace effects::filters

using namespace effects;
using namespace effects::filters;

extern "C" {

EFFECTS_API int32_t EFFECTS_CALL VexoEmboss32(int32_t width, int32_t height, Pixel32* pixels, int32_t depth) { const FloatEnvironment env; emboss<Layout32>(packedPicture(width, height, pixels), depth); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoEmboss64(int32_t width, int32_t height, Pixel64* pixels, int32_t depth) { const FloatEnvironment env; emboss<Layout64>(packedPicture(width, height, pixels), depth); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoEmboss128(int32_t width, int32_t height, Pixel128* pixels, int32_t depth) { const FloatEnvironment env; emboss<Layout128>(packedPicture(width, height, pixels), depth); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoFindEdges32(int32_t width, int32_t height, Pixel32* pixels, int32_t gain, int32_t step) { const FloatEnvironment env; edges<Layout32, true, true>(packedPicture(width, height, pixels), gain, step); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoFindEdges64(int32_t width, int32_t height, Pixel64* pixels, int32_t gain, int32_t step) { const FloatEnvironment env; edges<Layout64, true, true>(packedPicture(width, height, pixels), gain, step); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoFindEdges128(int32_t width, int32_t height, Pixel128* pixels, int32_t gain, int32_t step) { const FloatEnvironment env; edges<Layout128, true, true>(packedPicture(width, height, pixels), gain, step); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoNeon32(int32_t width, int32_t height, Pixel32* pixels, int32_t gain, int32_t step) { const FloatEnvironment env; edges<Layout32, false, true>(packedPicture(width, height, pixels), gain, step); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoNeon64(int32_t width, int32_t height, Pixel64* pixels, int32_t gain, int32_t step) { const FloatEnvironment env; edges<Layout64, false, true>(packedPicture(width, height, pixels), gain, step); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoNeon128(int32_t width, int32_t height, Pixel128* pixels, int32_t gain, int32_t step) { const FloatEnvironment env; edges<Layout128, false, true>(packedPicture(width, height, pixels), gain, step); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoLining32(int32_t width, int32_t height, Pixel32* pixels, int32_t redFactor, int32_t greenFactor, int32_t blueFactor) { const FloatEnvironment env; lining<Layout32>(packedPicture(width, height, pixels), redFactor, greenFactor, blueFactor); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoLining64(int32_t width, int32_t height, Pixel64* pixels, int32_t redFactor, int32_t greenFactor, int32_t blueFactor) { const FloatEnvironment env; lining<Layout64>(packedPicture(width, height, pixels), redFactor, greenFactor, blueFactor); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoLining128(int32_t width, int32_t height, Pixel128* pixels, int32_t redFactor, int32_t greenFactor, int32_t blueFactor) { const FloatEnvironment env; lining<Layout128>(packedPicture(width, height, pixels), redFactor, greenFactor, blueFactor); return 0; }

}  // extern "C"
