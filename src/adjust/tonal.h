// Helpers shared by the tonal adjustment families: the stores that turn a
// computed value back into an element, and the element maps of the integer
// layouts. Each map is a function of one element's value alone, built once
// per call from the call's arguments; core/element_map.h applies it to the
// pixels (through a table where that pays).
#pragma once

#include <cmath>
#include <cstdint>
#include <type_traits>

#include "core/crmath.h"
#include "core/layout.h"
#include "core/numeric.h"
#include "core/picture.h"

namespace effects::tonal {

// pi and 1/180 exactly as the sine curves write them.
inline constexpr double kPi = 3.141592653589793;
inline constexpr double kOneOver180 = 0.005555555555555556;

// Rounds to nearest, ties to even, through a signed 16-bit value and keeps
// the element's width of it: the low byte for 8 bits, all 16 for 16 bits.
template <class L, class T>
inline typename L::Element storeRounded(T v) {
  static_assert(L::integer);
  return static_cast<typename L::Element>(static_cast<uint16_t>(roundToInt16(v)));
}

// Stores the low bits of an integer result, as a narrowing store does.
template <class L>
inline typename L::Element storeLow(int32_t v) {
  return static_cast<typename L::Element>(static_cast<uint32_t>(v));
}

// Limits to [0, full] and rounds; a NaN passes both limits and rounds to
// the out-of-range value.
template <class L, class T>
typename L::Element clampRound(T v) {
  if (v > static_cast<T>(L::full)) v = static_cast<T>(L::full);
  if (v < 0) v = 0;
  return storeRounded<L>(v);
}

// The factor sin(q x pi x (1/180)) + amount + 1 of the sine curves, with q the
// element's integer quotient by the full value. q is 0 below full and 1 at
// full, so those two factors are worked out once; other quotients (only
// values outside the layout's range give them) are worked out as they come.
template <class T>
class SineFactor {
 public:
  explicit SineFactor(float amount) : amount_(amount), at0_(compute(0)), at1_(compute(1)) {}
  T operator()(int32_t q) const { return q == 0 ? at0_ : q == 1 ? at1_ : compute(q); }

 private:
  T compute(int32_t q) const {
    const T x = static_cast<T>(q) * static_cast<T>(kPi) * static_cast<T>(kOneOver180);
    if constexpr (std::is_same_v<T, double>) return crmath::sin(x) + amount_ + 1;
    else return std::sin(x) + amount_ + 1;
  }
  T amount_;
  T at0_, at1_;
};

// ------------------------------------------------- element maps, integer layouts

// Darkening scales toward black, lightening scales the distance to white,
// with truncating division; the low bits are stored without a clamp (the
// amount range keeps them in range). amount is not 0.
template <class L>
struct Brightness {
  using E = typename L::Element;
  static constexpr int32_t t = fullInt<L>;
  bool darken;
  int32_t m;
  explicit Brightness(int32_t amount) : darken(amount < 0), m(amount < 0 ? wrapAdd(t, amount) : wrapSub(t, amount)) {}
  E operator()(E c) const {
    if (darken) return storeLow<L>(wrapMul(c, m) / t);
    return storeLow<L>(wrapSub(t, wrapMul(t - c, m) / t));
  }
};

// c x factor in single precision, limited to full from above, then to 0,
// then rounded.
template <class L>
struct BlackBrightness {
  using E = typename L::Element;
  float factor;
  explicit BlackBrightness(int32_t amount) : factor(amount * L::unitf + 1) {}
  E operator()(E c) const {
    float v = c * factor;
    if (v > static_cast<float>(L::full)) v = static_cast<float>(L::full);
    if (v < 0) v = 0;
    return storeRounded<L>(static_cast<double>(v));
  }
};

// Stretch about a pivot of 127 (16383): one below the true middle, which is
// what the hosts' pictures were made with. Single precision, truncated.
template <class L>
struct Contrast {
  using E = typename L::Element;
  static constexpr int32_t pivot = fullInt<L> / 2;
  float k;
  explicit Contrast(int32_t amount) : k(static_cast<float>(amount * L::amountUnit)) {}
  E operator()(E c) const { return truncClamp<L>(static_cast<float>(c - pivot) * k + static_cast<float>(c)); }
};

// One offset added in single precision and truncated.
template <class L>
struct Exposure {
  using E = typename L::Element;
  float offset;
  E operator()(E c) const { return truncClamp<L>(static_cast<float>(c) + offset); }
};

// c x 2^(stops / 2) in double, truncated.
template <class L>
struct Fstop {
  using E = typename L::Element;
  double factor;
  E operator()(E c) const { return truncClamp<L>(c * factor); }
};

// round(pow(c / full, e) x full) in double.
template <class L>
struct Gamma {
  using E = typename L::Element;
  double e;
  E operator()(E c) const { return storeRounded<L>(std::pow(c * L::unit, e) * fullInt<L>); }
};

// c x factor limited to full from above only: a negative product keeps the
// low bits of its rounding.
template <class L>
struct LevelPercentage {
  using E = typename L::Element;
  float factor;
  E operator()(E c) const {
    float v = c * factor;
    if (v > static_cast<float>(L::full)) v = static_cast<float>(L::full);
    return storeRounded<L>(static_cast<double>(v));
  }
};

// The whole factor amount / 100 + 1, limited to full from above only.
template <class L>
struct Dodge {
  using E = typename L::Element;
  static constexpr bool cheap = true;
  int32_t factor;
  E operator()(E c) const {
    const int32_t v = wrapMul(c, factor);
    return storeLow<L>(v > fullInt<L> ? fullInt<L> : v);
  }
};

// The sine curve in extended precision: a chosen element is multiplied by its
// factor, an unchosen one only clamped and rounded.
template <class L>
struct SineCurve {
  using E = typename L::Element;
  const SineFactor<long double>* factor;
  bool chosen;
  E operator()(E c) const {
    const long double v = chosen ? c * (*factor)(c / fullInt<L>) : static_cast<long double>(c);
    return clampRound<L>(v);
  }
};

// The first pass of the levels on one channel: the input points (no
// stretching: below the low point is black, above the high point full, the
// 16-bit element read as signed), gamma, and on a chosen channel the sine
// curve; then clamped and rounded.
template <class L>
struct LevelsIn {
  using E = typename L::Element;
  static constexpr int32_t t = fullInt<L>;
  int32_t inHigh, inLow;
  double gamma;
  const SineFactor<double>* factor;
  bool chosen;
  E operator()(E e) const { return output(powered(input(e), gamma)); }

  // The three steps apart, so that a table fill can take each power once
  // for all three channels (they share gamma).
  int32_t input(E e) const {
    int32_t c = compared<L>(e);
    if (c < inLow) c = 0;
    if (c > inHigh) c = t;
    return c;
  }
  static int32_t powered(int32_t c, double gamma) { return roundToInt16(std::pow(c * L::unit, gamma) * t); }
  E output(int32_t c) const {
    const double v = chosen ? c * (*factor)(c / t) : c;
    return clampRound<L>(v);
  }
};

// The output points' scale of an element against its channel's maximum: the
// 8-bit levels multiply by the reciprocal of the maximum, the 16-bit levels
// divide by it. The two differ in the last bit for some values, and each
// layout keeps its own form.
inline double ofMaximum(uint8_t e, int32_t, double reciprocal) { return e * reciprocal; }
inline double ofMaximum(uint16_t e, int32_t max, double) { return e / static_cast<double>(max); }

// The second pass on a chosen channel: 0..maximum onto the output points.
template <class L>
struct LevelsOut {
  using E = typename L::Element;
  int32_t max;
  double reciprocal;
  double range;
  float outLow;
  E operator()(E e) const { return clampRound<L>(ofMaximum(e, max, reciprocal) * range + outLow); }
};

}  // namespace effects::tonal
