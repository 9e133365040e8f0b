// Free rotation: the inverse mapping from a target pixel to a position in
// the source, and the bilinear sampler that reads the source there. Both are
// written over the pixel type, so the device-context form runs them on
// 24-bit rows.
//
// Precision: the angle's cosine and sine are double (correctly rounded, see
// core/crmath.h); the source position is formed in double and rounded to
// single precision; from there everything is single precision: the +2
// offsets, the weights and their products, and the per-tap accumulation.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "core/crmath.h"
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
    crmath::sinCos(r, &s_, &c_);
  }

  Position operator()(int32_t x, int32_t y) const {
    const double dx = x - tx_, dy = y - ty_;
    return {static_cast<float>(dx * c_ - dy * s_ + hx_), static_cast<float>(dx * s_ + dy * c_ + hy_)};
  }

#if defined(__SSE2__)
  // The positions of target pixels x .. x + 3 of row y (x + 3 must not
  // overflow), two lanes of double at a time with the same operations.
  void positions4(int32_t x, int32_t y, __m128& fx, __m128& fy) const {
    const double dy = y - ty_;
    const __m128d c = _mm_set1_pd(c_), s = _mm_set1_pd(s_), hx = _mm_set1_pd(hx_), hy = _mm_set1_pd(hy_);
    const __m128d dyS = _mm_set1_pd(dy * s_), dyC = _mm_set1_pd(dy * c_);
    const __m128d d01 = _mm_setr_pd(x - tx_, x + 1 - tx_), d23 = _mm_setr_pd(x + 2 - tx_, x + 3 - tx_);
    auto column = [&](__m128d dx) { return _mm_cvtpd_ps(_mm_add_pd(_mm_sub_pd(_mm_mul_pd(dx, c), dyS), hx)); };
    auto row = [&](__m128d dx) { return _mm_cvtpd_ps(_mm_add_pd(_mm_add_pd(_mm_mul_pd(dx, s), dyC), hy)); };
    fx = _mm_movelh_ps(column(d01), column(d23));
    fy = _mm_movelh_ps(row(d01), row(d23));
  }
#endif

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

  Taps(int64_t left, int64_t upper, float upperLeft, float upperRight, float lowerLeft, float lowerRight)
      : left(left), upper(upper), upperLeft(upperLeft), upperRight(upperRight), lowerLeft(lowerLeft),
        lowerRight(lowerRight) {}
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
// The four elements of a pixel in the four lanes of a vector. Every lane
// performs the same single-precision multiply, add and truncation as the
// plain sum, so the results are the same bits.
namespace detail {

template <class P>
struct Lanes;

template <class P>
  requires LayoutOf<P>::integer
struct IntegerLanes {
  using Sum = __m128i;
  static Sum zero() { return _mm_setzero_si128(); }
  static Sum add(Sum sum, const P& p, float w) {
    return _mm_cvttps_epi32(_mm_add_ps(_mm_mul_ps(Lanes<P>::widen(p), _mm_set1_ps(w)), _mm_cvtepi32_ps(sum)));
  }
};

template <>
struct Lanes<Pixel32> : IntegerLanes<Pixel32> {
  static __m128 widen(const Pixel32& p) {
    int32_t bits;
    std::memcpy(&bits, &p, 4);
    const __m128i zero = _mm_setzero_si128();
    return _mm_cvtepi32_ps(_mm_unpacklo_epi16(_mm_unpacklo_epi8(_mm_cvtsi32_si128(bits), zero), zero));
  }
  // Limit to 0..255: the signed pack, then the unsigned one.
  static Pixel32 result(Sum sum) {
    const __m128i words = _mm_packs_epi32(sum, sum);
    const int32_t bits = _mm_cvtsi128_si32(_mm_packus_epi16(words, words));
    Pixel32 p;
    std::memcpy(&p, &bits, 4);
    return p;
  }
};

template <>
struct Lanes<Pixel64> : IntegerLanes<Pixel64> {
  static __m128 widen(const Pixel64& p) {
    return _mm_cvtepi32_ps(_mm_unpacklo_epi16(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(&p)), _mm_setzero_si128()));
  }
  // Limit to 0..32767: the signed pack saturates at 32767, the max at 0.
  static Pixel64 result(Sum sum) {
    Pixel64 p;
    _mm_storel_epi64(reinterpret_cast<__m128i*>(&p), _mm_max_epi16(_mm_packs_epi32(sum, sum), _mm_setzero_si128()));
    return p;
  }
};

template <>
struct Lanes<Pixel128> {
  using Sum = __m128;
  static Sum zero() { return _mm_setzero_ps(); }
  static Sum add(Sum sum, const Pixel128& p, float w) {
    return _mm_add_ps(_mm_mul_ps(_mm_loadu_ps(&p.blue), _mm_set1_ps(w)), sum);
  }
  static Pixel128 result(Sum sum) {
    Pixel128 p;
    _mm_storeu_ps(&p.blue, sum);
    return p;
  }
};

template <class P>
concept HasLanes = requires { typename Lanes<P>::Sum; };

}  // namespace detail

// The taps of four neighbouring target pixels at once: the same
// single-precision operations as Taps, lane by lane (cvttps2dq gives the
// most negative integer for NaN and out-of-range values, as truncToInt32
// does), and which lanes have all four taps inside the source.
struct Taps4 {
  alignas(16) int32_t X[4], Y[4];
  alignas(16) float ul[4], ur[4], ll[4], lr[4];
  int inside;  // bit i: lane i's taps all lie inside

  Taps4(const Rotation& map, int32_t x, int32_t y, int32_t sourceWidth, int32_t sourceHeight) {
    __m128 fx, fy;
    map.positions4(x, y, fx, fy);
    const __m128 two = _mm_set1_ps(2.0f), one = _mm_set1_ps(1.0f);
    const __m128i oneI = _mm_set1_epi32(1);
    const __m128 gx = _mm_add_ps(fx, two), gy = _mm_add_ps(fy, two);
    const __m128i cx = _mm_cvttps_epi32(gx), cy = _mm_cvttps_epi32(gy);
    const __m128 wl = _mm_sub_ps(_mm_cvtepi32_ps(_mm_add_epi32(cx, oneI)), gx), wr = _mm_sub_ps(one, wl);
    const __m128 wu = _mm_sub_ps(_mm_cvtepi32_ps(_mm_add_epi32(cy, oneI)), gy), wd = _mm_sub_ps(one, wu);
    _mm_store_si128(reinterpret_cast<__m128i*>(X), cx);
    _mm_store_si128(reinterpret_cast<__m128i*>(Y), cy);
    _mm_store_ps(ul, _mm_mul_ps(wl, wu));
    _mm_store_ps(ur, _mm_mul_ps(wr, wu));
    _mm_store_ps(ll, _mm_mul_ps(wl, wd));
    _mm_store_ps(lr, _mm_mul_ps(wr, wd));
    // Inside: 2 <= X <= sourceWidth and 2 <= Y <= sourceHeight.
    const __m128i lowX = _mm_cmpgt_epi32(cx, oneI), highX = _mm_cmpgt_epi32(cx, _mm_set1_epi32(sourceWidth));
    const __m128i lowY = _mm_cmpgt_epi32(cy, oneI), highY = _mm_cmpgt_epi32(cy, _mm_set1_epi32(sourceHeight));
    const __m128i in = _mm_andnot_si128(_mm_or_si128(highX, highY), _mm_and_si128(lowX, lowY));
    inside = _mm_movemask_ps(_mm_castsi128_ps(in));
  }
  Taps lane(int i) const { return Taps(int64_t{X[i]} - 2, int64_t{Y[i]} - 2, ul[i], ur[i], ll[i], lr[i]); }
};

// One inside sample in vector lanes.
template <class P>
inline P sampleInsideLanes(const Picture<const P>& source, const Taps& t) {
  using Lanes = detail::Lanes<P>;
  const P* upper = source.row(static_cast<int32_t>(t.upper)) + t.left;
  const P* lower = source.row(static_cast<int32_t>(t.upper + 1)) + t.left;
  typename Lanes::Sum sum = Lanes::zero();
  sum = Lanes::add(sum, upper[0], t.upperLeft);
  sum = Lanes::add(sum, upper[1], t.upperRight);
  sum = Lanes::add(sum, lower[0], t.lowerLeft);
  sum = Lanes::add(sum, lower[1], t.lowerRight);
  return Lanes::result(sum);
}

// Four inside samples at once: their chains of dependent operations run
// side by side instead of one after the other.
template <class P>
inline void sampleInsideLanes(const Picture<const P>& source, const Taps4& t, P* out) {
  using Lanes = detail::Lanes<P>;
  const ptrdiff_t down = source.offset(0, 1);
  const P* upper[4];
  typename Lanes::Sum sum[4];
  for (int i = 0; i < 4; ++i) {
    upper[i] = source.row(t.Y[i] - 2) + (t.X[i] - 2);
    sum[i] = Lanes::zero();
  }
  for (int i = 0; i < 4; ++i) sum[i] = Lanes::add(sum[i], upper[i][0], t.ul[i]);
  for (int i = 0; i < 4; ++i) sum[i] = Lanes::add(sum[i], upper[i][1], t.ur[i]);
  for (int i = 0; i < 4; ++i) sum[i] = Lanes::add(sum[i], neighbour(upper[i], down), t.ll[i]);
  for (int i = 0; i < 4; ++i) sum[i] = Lanes::add(sum[i], neighbour(upper[i] + 1, down), t.lr[i]);
  for (int i = 0; i < 4; ++i) out[i] = Lanes::result(sum[i]);
}
#endif

// Target pixels [x0, x1) of row y. The plain form tests every tap; the
// fast one (Fast = true) works out four pixels' taps at once and samples
// them in vector lanes when they all lie inside.
template <bool Fast, class P>
void rotateSpan(const Picture<const P>& source, const Rotation& map, P* row, int32_t y, int32_t x0, int32_t x1) {
  const int64_t lastLeft = int64_t{source.width()} - 2, lastUpper = int64_t{source.height()} - 2;
  int32_t x = x0;
#if defined(__SSE2__)
  if constexpr (Fast && detail::HasLanes<P>) {
    for (; x1 - x >= 4; x += 4) {
      const Taps4 t4(map, x, y, source.width(), source.height());
      if (t4.inside == 0xF) {
        sampleInsideLanes(source, t4, row + x);
        continue;
      }
      for (int32_t i = 0; i < 4; ++i) {
        const Taps t = t4.lane(i);
        row[x + i] = (t4.inside >> i & 1) ? sampleInsideLanes(source, t) : sampleBilinear(source, t);
      }
    }
  }
#endif
  for (; x < x1; ++x) {
    const Taps t(map(x, y));
    const bool inside = t.left >= 0 && t.left <= lastLeft && t.upper >= 0 && t.upper <= lastUpper;
    row[x] = inside ? sampleBilinearInside(source, t) : sampleBilinear(source, t);
  }
}

// Rotates `source` into `target`: every target pixel is written, every
// element, from the bilinear sample at its inverse-mapped position. Target
// pixels do not depend on one another, so the fast form walks the target in
// 32 x 32 blocks: a row of a block then reads source rows that the block's
// previous rows have just brought into the cache, where a whole target row
// would cross a new source row every few pixels at most angles. The tests
// run the plain form against the fast one.
template <bool Fast, class P>
void rotateInto(const Picture<const P>& source, const Picture<P>& target, const Rotation& map) {
  if (source.empty()) return;
  const int32_t width = target.width(), height = target.height();
  if constexpr (!Fast) {
    forEachRow(target, [&](P* row, int32_t y) { rotateSpan<false>(source, map, row, y, 0, width); });
  } else {
    constexpr int32_t block = 32;
    for (int32_t y0 = 0; y0 < height; y0 += std::min(block, height - y0))
      for (int32_t x0 = 0; x0 < width; x0 += std::min(block, width - x0)) {
        const int32_t y1 = y0 + std::min(block, height - y0), x1 = x0 + std::min(block, width - x0);
        for (int32_t y = y0; y < y1; ++y) rotateSpan<true>(source, map, target.row(y), y, x0, x1);
      }
  }
}

template <class P>
void rotate(const Picture<const P>& source, const Picture<P>& target, float angle) {
  const Rotation map(source.width(), source.height(), target.width(), target.height(), angle);
  rotateInto<true>(source, target, map);
}

}  // namespace effects::geometry
