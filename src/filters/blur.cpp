// The box blurs and the soften: the 3x3 soften and its mask form, the glow
// blur, the matte blur and blooming.
#include "filters/blur.h"

#include <limits>

#include "core/dispatch.h"
#include "core/fpenv.h"
#include "filters/soften.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace effects::filters {

// ---------------------------------------------------------------- box blurs

namespace {

// The divisions of the box blurs: truncating integer division by the count
// in the integer layouts. The float layout's scale is chosen per family.
template <class L, int32_t Count>
inline typename L::Element boxAverage(int32_t sum) {
  return static_cast<typename L::Element>(sum / Count);
}

// The glow blur's float scales, written as the double constants they are.
template <int32_t R>
inline constexpr double kGlowScale = R == 3 ? 0.020408163 : 0.11111111;

// Whether the glow blur takes the 7x7 box for a pixel of brightness b:
// above 127, 16383, 0.5.
template <class L, class B>
inline bool glowsWide(B b) {
  if constexpr (L::integer) return b > fullInt<L> / 2;
  else return b > 0.5f;
}

template <class L, int32_t R>
inline void storeGlow(typename L::Pixel& p, const Sum3<L>& s) {
  constexpr int32_t count = (2 * R + 1) * (2 * R + 1);
  if constexpr (L::integer) {
    p.blue = boxAverage<L, count>(s.blue);
    p.green = boxAverage<L, count>(s.green);
    p.red = boxAverage<L, count>(s.red);
  } else {
    p.blue = static_cast<float>(s.blue * kGlowScale<R>);
    p.green = static_cast<float>(s.green * kGlowScale<R>);
    p.red = static_cast<float>(s.red * kGlowScale<R>);
  }
}

}  // namespace

template <class L>
void glowBlurReference(const Picture<typename L::Pixel>& pic) {
  using P = typename L::Pixel;
  const auto rowOf = [&pic](int32_t y) { return pic.row(y); };
  const auto all = [](const P& s) -> const P& { return s; };
  feedForward(pic, [&](P& p, int32_t x, int32_t y) {
    const P centre = p;
    if (glowsWide<L>(brightness<L>(centre)))
      storeGlow<L, 3>(p, boxSum<L>(rowOf, pic.width(), pic.height(), x, y, 3, centre, all));
    else
      storeGlow<L, 1>(p, boxSum<L>(rowOf, pic.width(), pic.height(), x, y, 1, centre, all));
  });
}

namespace {

// Scratch for one row's changes (after - before), 4 lanes a pixel.
inline int32_t* changeLanes(int32_t width, ScratchSlot slot) {
  return static_cast<int32_t*>(scratchBytes(4 * sizeof(int32_t) * static_cast<size_t>(width), slot));
}

}  // namespace

namespace {

// One row of the sliding glow blur: as the matte blur's row, with the sums
// of both boxes and their own recent changes (the 3 and the 7 pixels before
// x), and the box chosen by the pixel's brightness.
template <class L>
void glowRow(typename L::Pixel* row, int32_t width, const int32_t* narrowSums, int32_t kNarrow,
             const int32_t* wideSums, int32_t kWide, int32_t* changes) {
  using P = typename L::Pixel;
  int32_t n0 = 0, n1 = 0, n2 = 0, w0 = 0, w1 = 0, w2 = 0;
  for (int32_t x = 0; x < width; ++x) {
    const P before = row[x];
    P after = before;
    Sum3<L> s;
    if (glowsWide<L>(brightness<L>(before))) {
      const int32_t* e = wideSums + laneIndex(x);
      s.blue = e[0] + kWide * w0;
      s.green = e[1] + kWide * w1;
      s.red = e[2] + kWide * w2;
      storeGlow<L, 3>(after, s);
    } else {
      const int32_t* e = narrowSums + laneIndex(x);
      s.blue = e[0] + kNarrow * n0;
      s.green = e[1] + kNarrow * n1;
      s.red = e[2] + kNarrow * n2;
      storeGlow<L, 1>(after, s);
    }
    row[x] = after;
    int32_t* c = changes + laneIndex(x);
    c[0] = static_cast<int32_t>(after.blue) - static_cast<int32_t>(before.blue);
    c[1] = static_cast<int32_t>(after.green) - static_cast<int32_t>(before.green);
    c[2] = static_cast<int32_t>(after.red) - static_cast<int32_t>(before.red);
    c[3] = 0;
    n0 += c[0], n1 += c[1], n2 += c[2];
    w0 += c[0], w1 += c[1], w2 += c[2];
    if (x >= 1) {
      const int32_t* o = changes + laneIndex(x - 1);
      n0 -= o[0], n1 -= o[1], n2 -= o[2];
    }
    if (x >= 3) {
      const int32_t* o = changes + laneIndex(x - 3);
      w0 -= o[0], w1 -= o[1], w2 -= o[2];
    }
  }
}

}  // namespace

template <class L>
bool glowBlur(const Picture<typename L::Pixel>& pic) {
  if constexpr (!L::integer) {
    glowBlurReference<L>(pic);
    return true;
  } else {
    if (pic.empty()) return true;
    FeedForwardBoxSums<L> narrow(pic, 1, ScratchSlot::First), wide(pic, 3, ScratchSlot::Second);
    int32_t* changes = changeLanes(pic.width(), ScratchSlot::Third);
    if (!narrow.ok() || !wide.ok() || changes == nullptr) return false;
    for (int32_t y = 0; y < pic.height(); ++y) {
      const int32_t* narrowSums = narrow.beginRow(y, changes);
      const int32_t* wideSums = wide.beginRow(y, changes);
      glowRow<L>(pic.row(y), pic.width(), narrowSums, narrow.rowWeight(), wideSums, wide.rowWeight(), changes);
    }
    return true;
  }
}

namespace {

// The matte blur's divisor: truncating division by the box count in the
// integer layouts, multiplication by 1/count in single precision in the
// float layout.
template <class L, int32_t R>
inline void storeMatte(typename L::Pixel& p, const Sum3<L>& s) {
  constexpr int32_t count = (2 * R + 1) * (2 * R + 1);
  if constexpr (L::integer) {
    p.blue = boxAverage<L, count>(s.blue);
    p.green = boxAverage<L, count>(s.green);
    p.red = boxAverage<L, count>(s.red);
  } else {
    constexpr float scale = 1.0f / static_cast<float>(count);
    p.blue = s.blue * scale;
    p.green = s.green * scale;
    p.red = s.red * scale;
  }
}

// The brightness window c - threshold .. c + threshold (inclusive), formed
// without overflow in the integer layouts (brightness lies in 0 .. 65535, so
// bounds beyond -1 and 65536 are held there, which changes no answer); the
// float layout converts the threshold to float and forms the bounds in single
// precision. Both tests are evaluated (no short circuit): which samples are
// admitted varies too much to branch on. A not-a-number brightness is not
// outside the window.
template <class L>
struct BrightnessWindow {
  using B = decltype(brightness<L>(typename L::Pixel{}));
  B low, high;
  BrightnessWindow(B centre, int32_t threshold) {
    if constexpr (L::integer) {
      low = static_cast<B>(clampTo<int64_t>(static_cast<int64_t>(centre) - threshold, -1, 65536));
      high = static_cast<B>(clampTo<int64_t>(static_cast<int64_t>(centre) + threshold, -1, 65536));
    } else {
      const float t = static_cast<float>(threshold);
      low = centre - t;
      high = centre + t;
    }
  }
  bool admits(B s) const { return !(s < low) & !(s > high); }
};

template <class L, int32_t R>
void matteReference(const Picture<typename L::Pixel>& pic, int32_t threshold, bool useThreshold) {
  using P = typename L::Pixel;
  const auto rowOf = [&pic](int32_t y) { return pic.row(y); };
  feedForward(pic, [&](P& p, int32_t x, int32_t y) {
    const P centre = p;
    const BrightnessWindow<L> window(brightness<L>(centre), threshold);
    const auto take = [&](const P& s) -> const P& {
      return !useThreshold || window.admits(brightness<L>(s)) ? s : centre;
    };
    storeMatte<L, R>(p, boxSum<L>(rowOf, pic.width(), pic.height(), x, y, R, centre, take));
  });
}

// One row of the sliding matte blur. Each pixel's sum is its sum before the
// row was rewritten plus k times the changes of the R pixels before it (d,
// kept in locals: the byte stores may alias any memory, and this loop is the
// chain from pixel to pixel).
template <class L, int32_t R, class K>
void matteRow(typename L::Pixel* row, int32_t width, const int32_t* sums, int32_t* changes, K k) {
  using P = typename L::Pixel;
  int32_t d0 = 0, d1 = 0, d2 = 0;
  for (int32_t x = 0; x < width; ++x) {
    const P before = row[x];
    const int32_t* e = sums + laneIndex(x);
    Sum3<L> s;
    s.blue = e[0] + k * d0;
    s.green = e[1] + k * d1;
    s.red = e[2] + k * d2;
    P after = before;
    storeMatte<L, R>(after, s);
    row[x] = after;
    int32_t* c = changes + laneIndex(x);
    c[0] = static_cast<int32_t>(after.blue) - static_cast<int32_t>(before.blue);
    c[1] = static_cast<int32_t>(after.green) - static_cast<int32_t>(before.green);
    c[2] = static_cast<int32_t>(after.red) - static_cast<int32_t>(before.red);
    c[3] = 0;
    d0 += c[0];
    d1 += c[1];
    d2 += c[2];
    if (x >= R) {
      const int32_t* o = changes + laneIndex(x - R);
      d0 -= o[0];
      d1 -= o[1];
      d2 -= o[2];
    }
  }
}

template <class L, int32_t R>
bool matteSliding(const Picture<typename L::Pixel>& pic) {
  if (pic.empty()) return true;
  FeedForwardBoxSums<L> box(pic, R, ScratchSlot::First);
  int32_t* changes = changeLanes(pic.width(), ScratchSlot::Second);
  if (!box.ok() || changes == nullptr) return false;
  for (int32_t y = 0; y < pic.height(); ++y) {
    const int32_t* sums = box.beginRow(y, changes);
    // Every row but the last counts once in its boxes; a constant weight
    // keeps the multiplication off the chain from pixel to pixel.
    if (box.rowWeight() == 1) matteRow<L, R>(pic.row(y), pic.width(), sums, changes, std::integral_constant<int32_t, 1>{});
    else matteRow<L, R>(pic.row(y), pic.width(), sums, changes, box.rowWeight());
  }
  return true;
}

// The matte blur summing every sample (with its threshold, or in the float
// layout), feed-forward. Each pixel's brightness is kept in a plane that the
// walk updates as it rewrites a pixel, so a sample costs a load and a
// comparison; pixels whose box lies inside the picture skip the edge rule.
// A left-out sample counts as the centre, in its place in the box's order;
// the integer layouts add the samples before the picture (each the centre)
// at the end, as one product.
template <class L, int32_t R, bool Threshold>
bool matteEverySample(const Picture<typename L::Pixel>& pic, int32_t threshold) {
  using P = typename L::Pixel;
  using B = decltype(brightness<L>(P{}));
  if (pic.empty()) return true;
  const int32_t w = pic.width(), h = pic.height();
  const size_t stride = static_cast<size_t>(w);
  B* plane = nullptr;
  if constexpr (Threshold) {
    plane = static_cast<B*>(scratchBytes(sizeof(B) * stride * static_cast<size_t>(h), ScratchSlot::First));
    if (plane == nullptr) return false;
    for (int32_t y = 0; y < h; ++y)
      for (int32_t x = 0; x < w; ++x) plane[y * stride + x] = brightness<L>(pic.at(x, y));
  }
  for (int32_t y = 0; y < h; ++y) {
    P* row = pic.row(y);
    const bool rowsInside = y >= R && y < h - R;  // h - R: y + R could pass INT32_MAX
    for (int32_t x = 0; x < w; ++x) {
      const P centre = row[x];
      const BrightnessWindow<L> window(Threshold ? plane[y * stride + x] : B{}, threshold);
      const auto admits = [&](int32_t sx, int32_t sy) { return !Threshold || window.admits(plane[sy * stride + sx]); };
      Sum3<L> s;
      int32_t left = 0;  // samples before the picture (integer layouts)
      // A left-out sample is the centre. Admission varies from sample to
      // sample, so the sample is selected with a mask, not a branch.
#if defined(__SSE2__)
      __m128 vs = _mm_setzero_ps(), vc = _mm_setzero_ps();
      if constexpr (!L::integer) vc = _mm_loadu_ps(&centre.blue);
#endif
      const auto sample = [&](int32_t sx, int32_t sy, const P& p) {
        const int32_t m = -static_cast<int32_t>(admits(sx, sy));
        if constexpr (L::integer) {
          s.blue += centre.blue + ((p.blue - centre.blue) & m);
          s.green += centre.green + ((p.green - centre.green) & m);
          s.red += centre.red + ((p.red - centre.red) & m);
        } else {
#if defined(__SSE2__)
          const __m128 mask = _mm_castsi128_ps(_mm_set1_epi32(m));
          vs = _mm_add_ps(vs, _mm_or_ps(_mm_and_ps(mask, _mm_loadu_ps(&p.blue)), _mm_andnot_ps(mask, vc)));
#else
          s.add(m ? p : centre);
#endif
        }
      };
      if (rowsInside && x >= R && x < w - R) {
        for (int32_t sy = y - R; sy <= y + R; ++sy) {
          const P* r = pic.row(sy);
          for (int32_t sx = x - R; sx <= x + R; ++sx) sample(sx, sy, r[sx]);
        }
      } else {
        for (int32_t dy = -R; dy <= R; ++dy) {
          const int32_t sy = edgeStep(y, dy, h);
          for (int32_t dx = -R; dx <= R; ++dx) {
            const int32_t sx = edgeStep(x, dx, w);
            if (sy < 0 || sx < 0) {
              if constexpr (L::integer) {
                ++left;
              } else {
#if defined(__SSE2__)
                vs = _mm_add_ps(vs, vc);
#else
                s.add(centre);
#endif
              }
            } else {
              sample(sx, sy, pic.at(sx, sy));
            }
          }
        }
      }
      if constexpr (L::integer) {
        s.blue += left * centre.blue;
        s.green += left * centre.green;
        s.red += left * centre.red;
      } else {
#if defined(__SSE2__)
        alignas(16) float lanes[4];
        _mm_store_ps(lanes, vs);
        s.blue = lanes[0], s.green = lanes[1], s.red = lanes[2];
#endif
      }
      storeMatte<L, R>(row[x], s);
      if constexpr (Threshold) plane[y * stride + x] = brightness<L>(row[x]);
    }
  }
  return true;
}

}  // namespace

template <class L>
void matteBlurReference(const Picture<typename L::Pixel>& pic, int32_t radius, int32_t threshold,
                        int32_t useThreshold) {
  if (radius < 1) return;
  withValue<1, 10>(radius > 10 ? 10 : radius,
                   [&](auto r) { matteReference<L, r()>(pic, threshold, useThreshold != 0); });
}

template <class L>
bool matteBlur(const Picture<typename L::Pixel>& pic, int32_t radius, int32_t threshold, int32_t useThreshold) {
  if (radius < 1) return true;
  bool ok = true;
  withValue<1, 10>(radius > 10 ? 10 : radius, [&](auto r) {
    if constexpr (L::integer) {
      // Brightness lies in 0 .. 3 x full / 3, so a threshold of that much
      // admits every sample, and then the integer sums may slide. A negative
      // threshold admits none: every sample is the centre, whose average is
      // itself.
      if (useThreshold == 0 || threshold >= static_cast<int32_t>(std::numeric_limits<typename L::Element>::max()))
        ok = matteSliding<L, r()>(pic);
      else if (threshold >= 0)
        ok = matteEverySample<L, r(), true>(pic, threshold);
    } else {
      ok = useThreshold != 0 ? matteEverySample<L, r(), true>(pic, threshold) : matteEverySample<L, r(), false>(pic, 0);
    }
  });
  return ok;
}

// ----------------------------------------------------------------- blooming

template <class L>
bool blooming(const Picture<typename L::Pixel>& pic, int32_t passes) {
  using P = typename L::Pixel;
  using E = typename L::Element;
  if (pic.empty()) return true;
  const Picture<P> map = scratchPicture<P>(pic.width(), pic.height(), ScratchSlot::Third);
  if (map.empty()) return false;
  // The bright map: full where any colour is near white, 0 elsewhere; the
  // mask element keeps the picture's.
  for (int32_t y = 0; y < pic.height(); ++y) {
    const P* src = pic.row(y);
    P* m = map.row(y);
    for (int32_t x = 0; x < pic.width(); ++x) {
      const P& s = src[x];
      bool bright;
      if constexpr (L::integer) {
        constexpr int32_t limit = std::is_same_v<E, uint8_t> ? 250 : 32000;
        bright = s.blue > limit || s.green > limit || s.red > limit;
      } else {
        bright = s.blue >= 1.0f || s.green >= 1.0f || s.red >= 1.0f;
      }
      const E v = bright ? L::full : E(0);
      m[x] = P{v, v, v, s.mask};
    }
  }
  // Each pass softens the map; once a pass changes nothing, no later one
  // can, and the rest are skipped.
  for (int32_t i = 0; i < passes; ++i) {
    bool changed = false;
    if (!soften<Which::Colour>(map, ScratchSlot::Fourth, &changed)) return false;
    if (!changed) break;
  }
  for (int32_t y = 0; y < pic.height(); ++y) {
    P* row = pic.row(y);
    const P* m = map.row(y);
    for (int32_t x = 0; x < pic.width(); ++x) {
      E* p = elementsOf(&row[x]);
      const E* add = elementsOf(&m[x]);
      for (unsigned i = 0; i < 3; ++i) {
        if constexpr (L::integer) {
          if (add[i] != 0) p[i] = clampStore<L>(static_cast<int64_t>(p[i]) + add[i]);
        } else {
          if (add[i] > 0.0f) p[i] = p[i] + add[i];
        }
      }
    }
  }
  return true;
}

template bool glowBlur<Layout32>(const Picture<Pixel32>&);
template bool glowBlur<Layout64>(const Picture<Pixel64>&);
template bool glowBlur<Layout128>(const Picture<Pixel128>&);
template void glowBlurReference<Layout32>(const Picture<Pixel32>&);
template void glowBlurReference<Layout64>(const Picture<Pixel64>&);
template bool matteBlur<Layout32>(const Picture<Pixel32>&, int32_t, int32_t, int32_t);
template bool matteBlur<Layout64>(const Picture<Pixel64>&, int32_t, int32_t, int32_t);
template bool matteBlur<Layout128>(const Picture<Pixel128>&, int32_t, int32_t, int32_t);
template void matteBlurReference<Layout32>(const Picture<Pixel32>&, int32_t, int32_t, int32_t);
template void matteBlurReference<Layout64>(const Picture<Pixel64>&, int32_t, int32_t, int32_t);
template void matteBlurReference<Layout128>(const Picture<Pixel128>&, int32_t, int32_t, int32_t);

}  // namespace effects::filters

using namespace effects;
using namespace effects::filters;

extern "C" {

EFFECTS_API int32_t EFFECTS_CALL VexoPostBlur32(int32_t width, int32_t height, Pixel32* pixels) { const FloatEnvironment env; soften<Which::All>(packedPicture(width, height, pixels), ScratchSlot::First); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoPostBlur64(int32_t width, int32_t height, Pixel64* pixels) { const FloatEnvironment env; soften<Which::All>(packedPicture(width, height, pixels), ScratchSlot::First); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoPostBlur128(int32_t width, int32_t height, Pixel128* pixels) { const FloatEnvironment env; soften<Which::All>(packedPicture(width, height, pixels), ScratchSlot::First); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoPostBlurMask32(int32_t width, int32_t height, Pixel32* pixels) { const FloatEnvironment env; soften<Which::Mask>(packedPicture(width, height, pixels), ScratchSlot::First); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoPostBlurMask64(int32_t width, int32_t height, Pixel64* pixels) { const FloatEnvironment env; soften<Which::Mask>(packedPicture(width, height, pixels), ScratchSlot::First); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoPostBlurMask128(int32_t width, int32_t height, Pixel128* pixels) { const FloatEnvironment env; soften<Which::Mask>(packedPicture(width, height, pixels), ScratchSlot::First); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoGlowBlur32(int32_t width, int32_t height, Pixel32* pixels) { const FloatEnvironment env; glowBlur<Layout32>(packedPicture(width, height, pixels)); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoGlowBlur64(int32_t width, int32_t height, Pixel64* pixels) { const FloatEnvironment env; glowBlur<Layout64>(packedPicture(width, height, pixels)); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoGlowBlur128(int32_t width, int32_t height, Pixel128* pixels) { const FloatEnvironment env; glowBlur<Layout128>(packedPicture(width, height, pixels)); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoMatteBlur32(int32_t width, int32_t height, Pixel32* pixels, int32_t radius, int32_t threshold, int32_t useThreshold) { const FloatEnvironment env; matteBlur<Layout32>(packedPicture(width, height, pixels), radius, threshold, useThreshold); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoMatteBlur64(int32_t width, int32_t height, Pixel64* pixels, int32_t radius, int32_t threshold, int32_t useThreshold) { const FloatEnvironment env; matteBlur<Layout64>(packedPicture(width, height, pixels), radius, threshold, useThreshold); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoMatteBlur128(int32_t width, int32_t height, Pixel128* pixels, int32_t radius, int32_t threshold, int32_t useThreshold) { const FloatEnvironment env; matteBlur<Layout128>(packedPicture(width, height, pixels), radius, threshold, useThreshold); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoBlooming32(int32_t width, int32_t height, Pixel32* pixels, int32_t passes) { const FloatEnvironment env; blooming<Layout32>(packedPicture(width, height, pixels), passes); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoBlooming64(int32_t width, int32_t height, Pixel64* pixels, int32_t passes) { const FloatEnvironment env; blooming<Layout64>(packedPicture(width, height, pixels), passes); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoBlooming128(int32_t width, int32_t height, Pixel128* pixels, int32_t passes) { const FloatEnvironment env; blooming<Layout128>(packedPicture(width, height, pixels), passes); return 0; }

}  // extern "C"
