// Mask utilities, colour inversion and the fill of a new picture: single
// passes over an ElementCount buffer, one template per family, each a vector
// form over whole vectors and the plain form of core/buffers.h over the rest.
#include "core/buffers.h"

#include "core/fpenv.h"
#include "core/layout.h"
#include "core/picture.h"
#include "core/simd.h"

namespace effects {
namespace {

using namespace buffers;

// The vector form over whole vectors, then the plain form on the rest. A
// float pixel fills a vector alone, so where only one of its elements
// changes (one channel inverted, the mask set or inverted) the plain form,
// which touches that element only, is the faster one: `vectors` says false.
template <class P, class Vector, class Plain>
void walk(int32_t n, P* px, Vector&& vector, const Plain& plain, bool vectors = true) {
  const size_t count = pixelsForCount<P>(n);
  if (px == nullptr || count == 0) return;
  const FloatEnvironment env;
  for (size_t i = vectors ? simd::inPlace(px, count, vector) : 0; i < count; ++i) plain(px[i]);
}

// Whether a float walk changes a single element of each pixel.
inline bool oneElement(const Channels& c) { return int{c.blue} + int{c.green} + int{c.red} == 1; }

#if defined(__SSE2__)
// x inverted in the lanes of `lanes` (bytes, words or floats by layout).
inline __m128i invertLanes(__m128i x, __m128i lanes, const Pixel32*) { return _mm_xor_si128(x, lanes); }
inline __m128i invertLanes(__m128i x, __m128i lanes, const Pixel64*) {
  return simd::select(lanes, _mm_sub_epi16(_mm_set1_epi16(32767), x), x);
}
inline __m128i invertLanes(__m128i x, __m128i lanes, const Pixel128*) {
  const __m128 f = _mm_castsi128_ps(x);
  return _mm_castps_si128(simd::select(_mm_castsi128_ps(lanes), _mm_sub_ps(_mm_set1_ps(1.0f), f), f));
}

// Each pixel's mask in all four of its elements.
inline __m128i maskEverywhere(__m128i x, const Pixel32*) {
  __m128i m = _mm_srli_epi32(x, 24);
  m = _mm_or_si128(m, _mm_slli_epi32(m, 8));
  return _mm_or_si128(m, _mm_slli_epi32(m, 16));
}
inline __m128i maskEverywhere(__m128i x, const Pixel64*) {
  return _mm_shufflehi_epi16(_mm_shufflelo_epi16(x, 0xFF), 0xFF);
}
inline __m128i maskEverywhere(__m128i x, const Pixel128*) { return _mm_shuffle_epi32(x, 0xFF); }

// A vector of whole pixels, all `p`.
template <class P>
inline __m128i repeated(const P& p) {
  P four[16 / sizeof(P)];
  for (auto& q : four) q = p;
  return simd::load(four);
}
#endif

template <class L>
void invert(int32_t n, typename L::Pixel* px, int32_t channel) {
  using P = typename L::Pixel;
  const Channels c = Channels::of(channel);
  if (!c.any()) return;
#if defined(__SSE2__)
  const __m128i lanes = simd::chosenLanes(c, px);
  walk(n, px, [lanes](__m128i x) { return invertLanes(x, lanes, static_cast<P*>(nullptr)); }, Invert<P>{c},
       L::integer || !oneElement(c));
#else
  walk(n, px, 0, Invert<P>{c});
#endif
}

template <class L>
void invertMask(int32_t n, typename L::Pixel* px) {
  using P = typename L::Pixel;
#if defined(__SSE2__)
  const __m128i lanes = simd::maskLanes(px);
  walk(n, px, [lanes](__m128i x) { return invertLanes(x, lanes, static_cast<P*>(nullptr)); }, InvertMask<P>{},
       L::integer);
#else
  walk(n, px, 0, InvertMask<P>{});
#endif
}

template <class L>
void setMask(int32_t n, typename L::Pixel* px, typename L::Element value) {
  using P = typename L::Pixel;
#if defined(__SSE2__)
  const __m128i lanes = simd::maskLanes(px), values = repeated(P{0, 0, 0, value});
  walk(n, px, [lanes, values](__m128i x) { return simd::select(lanes, values, x); }, SetMask<P>{value},
       L::integer);
#else
  walk(n, px, 0, SetMask<P>{value});
#endif
}

template <class L>
void maskToImage(int32_t n, typename L::Pixel* px) {
  using P = typename L::Pixel;
#if defined(__SSE2__)
  walk(n, px, [](__m128i x) { return maskEverywhere(x, static_cast<P*>(nullptr)); }, MaskToImage<P>{});
#else
  walk(n, px, 0, MaskToImage<P>{});
#endif
}

template <class L>
void newPicture(int32_t n, typename L::Pixel* px, typename L::Element red,
                typename L::Element green, typename L::Element blue, typename L::Element mask) {
  using P = typename L::Pixel;
  const P fill{blue, green, red, mask};
#if defined(__SSE2__)
  const __m128i all = repeated(fill);
  walk(n, px, [all](__m128i) { return all; }, Fill<P>{fill});
#else
  walk(n, px, 0, Fill<P>{fill});
#endif
}

}  // namespace
}  // namespace effects

using namespace effects;

extern "C" {

EFFECTS_API int32_t EFFECTS_CALL VexoInvert32(int32_t n, Pixel32* px, int32_t channel) { invert<Layout32>(n, px, channel); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoInvert64(int32_t n, Pixel64* px, int32_t channel) { invert<Layout64>(n, px, channel); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoInvert128(int32_t n, Pixel128* px, int32_t channel) { invert<Layout128>(n, px, channel); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoInvertMask32(int32_t n, Pixel32* px) { invertMask<Layout32>(n, px); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoInvertMask64(int32_t n, Pixel64* px) { invertMask<Layout64>(n, px); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoInvertMask128(int32_t n, Pixel128* px) { invertMask<Layout128>(n, px); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoClearMask32(int32_t n, Pixel32* px) { setMask<Layout32>(n, px, Layout32::full); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoClearMask64(int32_t n, Pixel64* px) { setMask<Layout64>(n, px, Layout64::full); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoClearMask128(int32_t n, Pixel128* px) { setMask<Layout128>(n, px, Layout128::full); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoBlankMask32(int32_t n, Pixel32* px) { setMask<Layout32>(n, px, 0); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoBlankMask64(int32_t n, Pixel64* px) { setMask<Layout64>(n, px, 0); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoBlankMask128(int32_t n, Pixel128* px) { setMask<Layout128>(n, px, 0.0f); return 0; }

EFFECTS_API int32_t EFFECTS_CALL Vexo32MasktoImageDIB(int32_t n, Pixel32* px) { maskToImage<Layout32>(n, px); return 1; }
EFFECTS_API int32_t EFFECTS_CALL Vexo64MasktoImageDIB(int32_t n, Pixel64* px) { maskToImage<Layout64>(n, px); return 1; }
EFFECTS_API int32_t EFFECTS_CALL Vexo128MasktoImageDIB(int32_t n, Pixel128* px) { maskToImage<Layout128>(n, px); return 1; }

EFFECTS_API int32_t EFFECTS_CALL VexoNewPicture32(int32_t n, Pixel32* px, uint8_t r, uint8_t g, uint8_t b, uint8_t m) { newPicture<Layout32>(n, px, r, g, b, m); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoNewPicture64(int32_t n, Pixel64* px, uint16_t r, uint16_t g, uint16_t b, uint16_t m) { newPicture<Layout64>(n, px, r, g, b, m); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoNewPicture128(int32_t n, Pixel128* px, float r, float g, float b, float m) { newPicture<Layout128>(n, px, r, g, b, m); return 0; }

}  // extern "C"
