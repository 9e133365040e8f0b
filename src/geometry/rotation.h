// Free rotation: the inverse mapping from a target pixel to a position in
// the source, and the bilinear sampler that reads the source there. Both are
// written over the pixel type, so the device-context form runs them on
// 24-bit rows.
//
// Precision: the angle's cosine and sine are double; the source position is
// formed in double and rounded to single precision; from there everything is
// single precision: the +2 offsets, the weights and their products, and the
// per-tap accumulation.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "core/numeric.h"
#include "core/picture.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace effects::geometry {

// A position in the source, in pixels.
struct Position {
  float x, y;
};

// The inverse mapping of the rotation. A positive angle becomes 360 - angle
// and a negative one its magnitude, so positive and negative angles turn in
// opposite directions and 450 acts as -90. The degree constant is
// 3.1415 / 180, not pi / 180: a half turn is short by about 9.3e-5 radians.
class Rotation {
 public:
  Rotation(int32_t sourceWidth, int32_t sourceHeight, int32_t targetWidth, int32_t targetHeight, float angle)
      : hx_(sourceWidth / 2), hy_(sourceHeight / 2), tx_(targetWidth / 2), ty_(targetHeight / 2) {
    float a = angle;
    if (a > 0) a = 360 - std::fabs(a);
    if (a < 0) a = std::fabs(a);
    const double r = a * 0.01745277777777778;
    c_ = std::cos(r);
    s_ = std::sin(r);
  }

  Position operator()(int32_t x, int32_t y) const {
    const double dx = x - tx_, dy = y - ty_;
    return {static_cast<float>(dx * c_ - dy * s_ + hx_), static_cast<float>(dx * s_ + dy * c_ + hy_)};
  }

  double cosine() const { return c_; }
  double sine() const { return s_; }

 private:
  int32_t hx_, hy_, tx_, ty_;
  double c_, s_;
};

// The four taps around a position: columns left and left + 1, rows upper and
// upper + 1, with their weights. The position is offset by 2 before
// truncation, so truncation acts as a floor down to -2; further left or up
// every tap lies outside the picture anyway.
struct Taps {
  int64_t left, upper;
  float upperLeft, upperRight, lowerLeft, lowerRight;

  explicit Taps(Position p) {
    const float gx = p.x + 2.0f, gy = p.y + 2.0f;
    const int32_t X = truncToInt32(gx), Y = truncToInt32(gy);
    const float wl = static_cast<float>(X + 1) - gx, wr = 1 - wl;
    const float wu = static_cast<float>(Y + 1) - gy, wd = 1 - wu;
    left = int64_t{X} - 2;
    upper = int64_t{Y} - 2;
    upperLeft = wl * wu;
    upperRight = wr * wu;
    lowerLeft = wl * wd;
    lowerRight = wr * wd;
  }
};

namespace detail {

// One element's running sum. The integer layouts truncate after every tap
// (sum = trunc(sample x weight + sum), all in single precision); the float
// layout keeps a float sum.
template <class E>
inline void accumulate(std::conditional_t<std::is_floating_point_v<E>, float, int32_t>& sum, E sample, float w) {
  if constexpr (std::is_floating_point_v<E>)
    sum = sample * w + sum;
  else
    sum = truncToInt32(static_cast<float>(sample) * w + static_cast<float>(sum));
}

template <class P>
struct Sums {
  using L = LayoutOf<P>;
  using S = std::conditional_t<L::integer, int32_t, float>;
  S blue{}, green{}, red{}, mask{};

  void add(const P& p, float w) {
    accumulate(blue, p.blue, w);
    accumulate(green, p.green, w);
    accumulate(red, p.red, w);
    if constexpr (L::hasMask) accumulate(mask, p.mask, w);
  }
  // The integer layouts limit each sum to full (and, though no weight in the
  // picture is negative, to 0 from below); the float layout stores its sums.
  P result() const {
    P p{};
    auto store = [](S v) {
      if constexpr (L::integer) return clampStore<L>(v); else return v;
    };
    p.blue = store(blue);
    p.green = store(green);
    p.red = store(red);
    if constexpr (L::hasMask) p.mask = store(mask);
    return p;
  }
};

}  // namespace detail

// The bilinear sample at `t`: the taps in the order upper-left, upper-right,
// lower-left, lower-right; a tap outside the picture contributes nothing, so
// the background is 0 in every element and the edges fade into it.
template <class P>
P sampleBilinear(const Picture<const P>& source, const Taps& t) {
  detail::Sums<P> sum;
  const int64_t right = t.left + 1, lower = t.upper + 1;
  const bool leftIn = t.left >= 0 && t.left < source.width();
  const bool rightIn = right >= 0 && right < source.width();
  if (t.upper >= 0 && t.upper < source.height()) {
    const P* row = source.row(static_cast<int32_t>(t.upper));
    if (leftIn) sum.add(row[t.left], t.upperLeft);
    if (rightIn) sum.add(row[right], t.upperRight);
  }
  if (lower >= 0 && lower < source.height()) {
    const P* row = source.row(static_cast<int32_t>(lower));
    if (leftIn) sum.add(row[t.left], t.lowerLeft);
    if (rightIn) sum.add(row[right], t.lowerRight);
  }
  return sum.result();
}

// The same sample when all four taps are known to lie inside the picture.
template <class P>
P sampleBilinearInside(const Picture<const P>& source, const Taps& t) {
  detail::Sums<P> sum;
  const P* upper = source.row(static_cast<int32_t>(t.upper)) + t.left;
  const P* lower = source.row(static_cast<int32_t>(t.upper + 1)) + t.left;
  sum.add(upper[0], t.upperLeft);
  sum.add(upper[1], t.upperRight);
  sum.add(lower[0], t.lowerLeft);
  sum.add(lower[1], t.lowerRight);
  return sum.result();
}

#if defined(__SSE2__)
// The four elements of a pixel at once. Every lane performs the same single
// precision multiply, add and truncation as the plain sum, so the results
// are the same bits.
namespace detail {

inline __m128i accumulate4(__m128i sum, __m128 sample, float w) {
  return _mm_cvttps_epi32(_mm_add_ps(_mm_mul_ps(sample, _mm_set1_ps(w)), _mm_cvtepi32_ps(sum)));
}
inline __m128 widen(const Pixel32& p) {
  int32_t bits;
  std::memcpy(&bits, &p, 4);
  const __m128i zero = _mm_setzero_si128();
  return _mm_cvtepi32_ps(_mm_unpacklo_epi16(_mm_unpacklo_epi8(_mm_cvtsi32_si128(bits), zero), zero));
}
inline __m128 widen(const Pixel64& p) {
  return _mm_cvtepi32_ps(_mm_unpacklo_epi16(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(&p)), _mm_setzero_si128()));
}

}  // namespace detail

inline Pixel32 sampleBilinearInsideSse2(const Picture<const Pixel32>& source, const Taps& t) {
  const Pixel32* upper = source.row(static_cast<int32_t>(t.upper)) + t.left;
  const Pixel32* lower = source.row(static_cast<int32_t>(t.upper + 1)) + t.left;
  __m128i sum = _mm_setzero_si128();
  sum = detail::accumulate4(sum, detail::widen(upper[0]), t.upperLeft);
  sum = detail::accumulate4(sum, detail::widen(upper[1]), t.upperRight);
  sum = detail::accumulate4(sum, detail::widen(lower[0]), t.lowerLeft);
  sum = detail::accumulate4(sum, detail::widen(lower[1]), t.lowerRight);
  const __m128i words = _mm_packs_epi32(sum, sum);
  Pixel32 p;
  const int32_t bits = _mm_cvtsi128_si32(_mm_packus_epi16(words, words));
  std::memcpy(&p, &bits, 4);
  return p;
}

inline Pixel64 sampleBilinearInsideSse2(const Picture<const Pixel64>& source, const Taps& t) {
  const Pixel64* upper = source.row(static_cast<int32_t>(t.upper)) + t.left;
  const Pixel64* lower = source.row(static_cast<int32_t>(t.upper + 1)) + t.left;
  __m128i sum = _mm_setzero_si128();
  sum = detail::accumulate4(sum, detail::widen(upper[0]), t.upperLeft);
  sum = detail::accumulate4(sum, detail::widen(upper[1]), t.upperRight);
  sum = detail::accumulate4(sum, detail::widen(lower[0]), t.lowerLeft);
  sum = detail::accumulate4(sum, detail::widen(lower[1]), t.lowerRight);
  // Limit to 0..32767: the signed pack saturates at 32767, the max at 0.
  const __m128i words = _mm_max_epi16(_mm_packs_epi32(sum, sum), _mm_setzero_si128());
  Pixel64 p;
  _mm_storel_epi64(reinterpret_cast<__m128i*>(&p), words);
  return p;
}

inline Pixel128 sampleBilinearInsideSse2(const Picture<const Pixel128>& source, const Taps& t) {
  const float* upper = &source.row(static_cast<int32_t>(t.upper))[t.left].blue;
  const float* lower = &source.row(static_cast<int32_t>(t.upper + 1))[t.left].blue;
  __m128 sum = _mm_setzero_ps();
  sum = _mm_add_ps(_mm_mul_ps(_mm_loadu_ps(upper), _mm_set1_ps(t.upperLeft)), sum);
  sum = _mm_add_ps(_mm_mul_ps(_mm_loadu_ps(upper + 4), _mm_set1_ps(t.upperRight)), sum);
  sum = _mm_add_ps(_mm_mul_ps(_mm_loadu_ps(lower), _mm_set1_ps(t.lowerLeft)), sum);
  sum = _mm_add_ps(_mm_mul_ps(_mm_loadu_ps(lower + 4), _mm_set1_ps(t.lowerRight)), sum);
  Pixel128 p;
  _mm_storeu_ps(&p.blue, sum);
  return p;
}
#endif

// The fastest exact form of the inside sample for a pixel type.
template <class P>
inline P sampleInside(const Picture<const P>& source, const Taps& t) {
#if defined(__SSE2__)
  if constexpr (requires { sampleBilinearInsideSse2(source, t); }) return sampleBilinearInsideSse2(source, t);
  else
#endif
    return sampleBilinearInside(source, t);
}

// Rotates `source` into `target`: every target pixel is written, every
// element, from the bilinear sample at its inverse-mapped position.
// `inside` picks the sampler for pixels whose four taps lie in the source
// (the tests run the plain one against the fast one).
template <class P, class Inside>
void rotateInto(const Picture<const P>& source, const Picture<P>& target, const Rotation& map, Inside inside) {
  if (source.empty()) return;
  const int64_t lastLeft = int64_t{source.width()} - 2, lastUpper = int64_t{source.height()} - 2;
  forEachXY(target, [&](P& to, int32_t x, int32_t y) {
    const Taps t(map(x, y));
    if (t.left >= 0 && t.left <= lastLeft && t.upper >= 0 && t.upper <= lastUpper)
      to = inside(source, t);
    else
      to = sampleBilinear(source, t);
  });
}

template <class P>
void rotate(const Picture<const P>& source, const Picture<P>& target, float angle) {
  const Rotation map(source.width(), source.height(), target.width(), target.height(), angle);
  rotateInto(source, target, map, [](const Picture<const P>& s, const Taps& t) { return sampleInside(s, t); });
}

}  // namespace effects::geometry
