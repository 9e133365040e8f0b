// Sharpening: the diagonal difference boost (on the colours or on the mask)
// and the unsharp mask.
#include "filters/sharpen.h"

#include "core/dispatch.h"
#include "core/fpenv.h"
#include <cstring>

#include "filters/neighbourhood.h"

namespace effects::filters {

// v = P + (P - Q) x amount with Q the pixel up and to the left, already
// sharpened (feed-forward). The integer layouts truncate the product and
// clamp the sum; the float layout stores the double result unclamped.
template <class L, Which W>
void sharpen(const Picture<typename L::Pixel>& pic, double amount) {
  using P = typename L::Pixel;
  using E = typename L::Element;
  if (pic.height() < 3) return;
  const ptrdiff_t upLeft = pic.offset(-1, -1);
  feedForwardInterior(pic, 1, [&](P& p, int32_t, int32_t) {
    E* e = elementsOf(&p);
    const E* q = elementsOf(&neighbour(&p, upLeft));
    for (unsigned i = 0; i < 4; ++i) {
      if (!writes<P, W>(i)) continue;
      if constexpr (L::integer) {
        const int32_t d = static_cast<int32_t>(e[i]) - static_cast<int32_t>(q[i]);
        e[i] = clampStore<L>(wrapAdd(e[i], truncToInt32(d * amount)));
      } else {
        e[i] = static_cast<float>(e[i] + (e[i] - q[i]) * amount);
      }
    }
  });
}

namespace {

// v = P x (1 + amount) - blurred x amount, truncated and clamped in the
// integer layouts, in double stored as float in the float layout.
template <class L>
inline typename L::Element unsharp(typename L::Element p, SumOf<L> blurred, double amount) {
  const double v = p * (1.0 + amount) - blurred * amount;
  if constexpr (L::integer) return truncClamp<L>(v);
  else return static_cast<float>(v);
}

#if defined(__SSE2__)
// The integer combine of one row, two lanes of doubles at a time. The
// blurred value is the sum's quotient by the count: with sums below 2^25 and
// counts 9 .. 441, sum x (1 / count) in double lies within 1e-9 of the true
// quotient, which is at least 1 / 441 below the next integer, so adding 1e-6
// and truncating gives it exactly. cvttpd gives the most negative integer
// for what does not fit, as truncToInt32 does, and the saturating packs
// clamp to 0 .. full.
template <class L>
inline void unsharpRowFast(typename L::Pixel* row, const int32_t* sums, int32_t width, int32_t count, double amount) {
  using P = typename L::Pixel;
  const __m128d inverse = _mm_set1_pd(1.0 / count), nudge = _mm_set1_pd(1e-6);
  const __m128d up = _mm_set1_pd(1.0 + amount), down = _mm_set1_pd(amount);
  const __m128i zero = _mm_setzero_si128();
  for (int32_t x = 0; x < width; ++x) {
    const __m128i s = loadLanes(sums + laneIndex(x));
    const __m128i p = pixelLanes(&row[x]);
    const auto lane = [&](__m128i sum, __m128i px) {
      const __m128d blurred = _mm_cvtepi32_pd(_mm_cvttpd_epi32(_mm_add_pd(_mm_mul_pd(_mm_cvtepi32_pd(sum), inverse), nudge)));
      return _mm_cvttpd_epi32(_mm_sub_pd(_mm_mul_pd(_mm_cvtepi32_pd(px), up), _mm_mul_pd(blurred, down)));
    };
    const __m128i v = _mm_unpacklo_epi64(lane(s, p), lane(_mm_unpackhi_epi64(s, s), _mm_unpackhi_epi64(p, p)));
    const __m128i narrow = _mm_packs_epi32(v, v);
    P out;
    if constexpr (std::is_same_v<P, Pixel32>) {
      const int32_t bits = _mm_cvtsi128_si32(_mm_packus_epi16(narrow, narrow));
      std::memcpy(&out, &bits, 4);
    } else {
      _mm_storel_epi64(reinterpret_cast<__m128i*>(&out), _mm_max_epi16(narrow, zero));
    }
    out.mask = row[x].mask;
    row[x] = out;
  }
}
#endif

template <class L, int32_t R>
bool unsharpRadius(const Picture<typename L::Pixel>& pic, double amount) {
  using P = typename L::Pixel;
  constexpr int32_t count = (2 * R + 1) * (2 * R + 1);
  const int32_t w = pic.width(), h = pic.height();
  // The blur reads the entry picture: rows above the current one come from
  // the kept rows, so each row is combined and written as soon as its blur
  // is known.
  EntryRows<P> entry(pic, R + 1, ScratchSlot::First);
  if (!entry.ok()) return false;
  // The blurred value is the sum divided by the count: truncating in the
  // integer layouts, a single-precision division in the float layout.
  const auto combine = [amount](P& p, const Sum3<L>& s) {
    p.blue = unsharp<L>(p.blue, s.blue / count, amount);
    p.green = unsharp<L>(p.green, s.green / count, amount);
    p.red = unsharp<L>(p.red, s.red / count, amount);
  };
  if constexpr (L::integer) {
    EntryBoxSums<L> box(w, h, R, ScratchSlot::Second);
    if (!box.ok()) return false;
    for (int32_t y = 0; y < h; ++y) {
      entry.enter(y);
      const int32_t* sums = box.beginRow(y, entry);
      P* row = pic.row(y);
#if defined(__SSE2__)
      unsharpRowFast<L>(row, sums, w, count, amount);
      continue;
#endif
      for (int32_t x = 0; x < w; ++x) {
        Sum3<L> s;
        s.blue = sums[laneIndex(x)];
        s.green = sums[laneIndex(x) + 1];
        s.red = sums[laneIndex(x) + 2];
        combine(row[x], s);
      }
    }
  } else {
    const auto rowOf = [&entry](int32_t yy) { return entry.row(yy); };
    const auto all = [](const P& s) -> const P& { return s; };
    for (int32_t y = 0; y < h; ++y) {
      entry.enter(y);
      P* row = pic.row(y);
      int32_t x = 0;
#if defined(__SSE2__)
      // Away from the edges, four neighbouring pixels' sums at once: each is
      // still added in the box's order, a pixel's four elements in one
      // vector, but the four chains of additions run side by side. The sums
      // read the kept entry rows, so the results written into the picture's
      // row do not disturb them.
      if (y >= R && y < h - R) {
        const P* rows[2 * R + 1];
        for (int32_t j = 0; j <= 2 * R; ++j) rows[j] = entry.row(y - R + j);
        for (; x < R && x < w; ++x) combine(row[x], boxSum<L>(rowOf, w, h, x, y, R, row[x], all));
        for (; x < w - R - 3; x += 4) {  // not x + 3 < w - R: x + 3 can pass INT32_MAX
          __m128 acc[4] = {_mm_setzero_ps(), _mm_setzero_ps(), _mm_setzero_ps(), _mm_setzero_ps()};
          for (int32_t j = 0; j <= 2 * R; ++j) {
            const float* r = &rows[j][x - R].blue;
            for (int32_t dx = 0; dx <= 2 * R; ++dx)
              for (int k = 0; k < 4; ++k) acc[k] = _mm_add_ps(acc[k], _mm_loadu_ps(r + 4 * (dx + k)));
          }
          for (int k = 0; k < 4; ++k) {
            alignas(16) float sum[4];
            _mm_store_ps(sum, acc[k]);
            Sum3<L> s3;
            s3.blue = sum[0];
            s3.green = sum[1];
            s3.red = sum[2];
            combine(row[x + k], s3);
          }
        }
      }
#endif
      for (; x < w; ++x) combine(row[x], boxSum<L>(rowOf, w, h, x, y, R, row[x], all));
    }
  }
  return true;
}

}  // namespace

template <class L>
bool unsharpMask(const Picture<typename L::Pixel>& pic, int32_t radius, double amount) {
  if (pic.empty() || radius < 1 || amount < 0.0) return true;
  if (amount > 10.0) amount = 10.0;
  bool ok = true;
  withValue<1, 10>(radius > 10 ? 10 : radius, [&](auto r) { ok = unsharpRadius<L, r()>(pic, amount); });
  return ok;
}

template void sharpen<Layout32, Which::Colour>(const Picture<Pixel32>&, double);
template void sharpen<Layout64, Which::Colour>(const Picture<Pixel64>&, double);
template void sharpen<Layout128, Which::Colour>(const Picture<Pixel128>&, double);
template void sharpen<Layout32, Which::Mask>(const Picture<Pixel32>&, double);
template void sharpen<Layout64, Which::Mask>(const Picture<Pixel64>&, double);
template void sharpen<Layout128, Which::Mask>(const Picture<Pixel128>&, double);
template bool unsharpMask<Layout32>(const Picture<Pixel32>&, int32_t, double);
template bool unsharpMask<Layout64>(const Picture<Pixel64>&, int32_t, double);
template bool unsharpMask<Layout128>(const Picture<Pixel128>&, int32_t, double);

}  // namespace effects::filters

using namespace effects;
using namespace effects::filters;

extern "C" {

EFFECTS_API int32_t EFFECTS_CALL VexoSharpen32(int32_t width, int32_t height, Pixel32* pixels, double amount) { const FloatEnvironment env; sharpen<Layout32, Which::Colour>(packedPicture(width, height, pixels), amount); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoSharpen64(int32_t width, int32_t height, Pixel64* pixels, double amount) { const FloatEnvironment env; sharpen<Layout64, Which::Colour>(packedPicture(width, height, pixels), amount); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoSharpen128(int32_t width, int32_t height, Pixel128* pixels, double amount) { const FloatEnvironment env; sharpen<Layout128, Which::Colour>(packedPicture(width, height, pixels), amount); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoSharpenMask32(int32_t width, int32_t height, Pixel32* pixels, double amount) { const FloatEnvironment env; sharpen<Layout32, Which::Mask>(packedPicture(width, height, pixels), amount); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoSharpenMask64(int32_t width, int32_t height, Pixel64* pixels, double amount) { const FloatEnvironment env; sharpen<Layout64, Which::Mask>(packedPicture(width, height, pixels), amount); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoSharpenMask128(int32_t width, int32_t height, Pixel128* pixels, double amount) { const FloatEnvironment env; sharpen<Layout128, Which::Mask>(packedPicture(width, height, pixels), amount); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoUnsharpMask32(int32_t width, int32_t height, Pixel32* pixels, int32_t radius, double amount) { const FloatEnvironment env; unsharpMask<Layout32>(packedPicture(width, height, pixels), radius, amount); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoUnsharpMask64(int32_t width, int32_t height, Pixel64* pixels, int32_t radius, double amount) { const FloatEnvironment env; unsharpMask<Layout64>(packedPicture(width, height, pixels), radius, amount); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoUnsharpMask128(int32_t width, int32_t height, Pixel128* pixels, int32_t radius, double amount) { const FloatEnvironment env; unsharpMask<Layout128>(packedPicture(width, height, pixels), radius, amount); return 0; }

}  // extern "C"
