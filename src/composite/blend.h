// The blend engine: the per-layout weight, the seventeen per-element blend
// modes and the dispatch that picks one mode per call. Every compositing
// export (layers onto canvases, block merges, and the GDI mask compositing)
// goes through here, so the arithmetic lives in one place.
//
// The integer layouts keep two deliberate oddities: the multiply and screen
// targets divide by the full value *before* multiplying (so 8-bit multiply
// only keeps d where s = 255 and pulls toward 0 everywhere else), and overlay
// and hard light use those targets without the usual factor 2.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "core/layout.h"
#include "core/numeric.h"

namespace effects::blend {

inline constexpr int32_t kModeCount = 17;

enum Mode : int32_t {
  Normal = 0, Darken, Lighten, Difference, Multiply, Screen, Overlay, HardLight, PinLight,
  RedFromSource, GreenFromSource, BlueFromSource,
  RedFromInvertedSource, GreenFromInvertedSource, BlueFromInvertedSource,
  Add, Subtract
};

// The weight of a pixel: a = source mask x k, with k fixed per call.
// 8 bits: k = opacity / 25500 as the single-precision 3.92156862e-5 (percent to
// fraction and the 0..255 mask to 0..1 in one factor); a is single precision.
// 16 bits: k = opacity x 3.051850947599e-7 (1 / (100 x 32767)) in double.
// Float: k = opacity x 0.01 in double; a = m x k in double.
template <class L> struct Weight;
template <> struct Weight<Layout32> {
  using Type = float;
  float k;
  explicit Weight(int32_t opacity) : k(static_cast<float>(opacity) * 3.92156862e-5f) {}
  float of(uint8_t m) const { return static_cast<float>(m) * k; }
};
template <> struct Weight<Layout64> {
  using Type = double;
  double k;
  explicit Weight(int32_t opacity) : k(static_cast<double>(opacity) * 3.051850947599e-7) {}
  double of(uint16_t m) const { return static_cast<double>(m) * k; }
};
template <> struct Weight<Layout128> {
  using Type = double;
  double k;
  explicit Weight(int32_t opacity) : k(static_cast<double>(opacity) * 0.01) {}
  double of(float m) const { return static_cast<double>(m) * k; }
};

// d + (t - d) x a, stored in the layout. The integer layouts round to nearest
// with ties to even and keep the low bits of the result, as an integer store
// of an out-of-range value does (only reachable with an opacity above 100);
// the float layout stores the sum unrounded and unclamped.
inline uint8_t mix(uint8_t d, int32_t t, float a) {
  return roundLowByte(static_cast<float>(d) + static_cast<float>(t - d) * a);
}
inline uint16_t mix(uint16_t d, int32_t t, double a) {
  return roundLowWord(static_cast<double>(d) + static_cast<double>(t - d) * a);
}
inline float mix(float d, float t, double a) {
  return static_cast<float>(static_cast<double>(d) + static_cast<double>(t - d) * a);
}

// Modes 15 and 16: the weighted source is rounded first, then added or
// subtracted and clamped to 0..M. The float layout neither rounds nor clamps.
template <class E, class A>
inline E addWeighted(E d, E s, A a, bool subtract) {
  if constexpr (std::is_same_v<E, float>) {
    const double w = static_cast<double>(s) * a;
    return static_cast<float>(subtract ? static_cast<double>(d) - w : static_cast<double>(d) + w);
  } else {
    constexpr int64_t M = std::is_same_v<E, uint8_t> ? 255 : 32767;
    const int64_t q = roundToInt32(static_cast<A>(s) * a);
    const int64_t v = subtract ? std::max<int64_t>(0, d - q) : std::min<int64_t>(M, d + q);
    return static_cast<E>(static_cast<uint64_t>(v));
  }
}

// Integer targets of modes 4 and 5: s div M first, then the product.
template <int32_t M>
constexpr int32_t multiplyTarget(int32_t d, int32_t s) { return (s / M) * d; }
template <int32_t M>
constexpr int32_t screenTarget(int32_t d, int32_t s) { return M - ((M - s) / M) * (M - d); }

// One colour element under one mode, for the modes that treat blue, green and
// red alike (0..8, 15, 16). Returns the new value of d.
template <class L, int32_t Mode_>
inline typename L::Element blendElement(typename L::Element d, typename L::Element s,
                                        typename Weight<L>::Type a) {
  using E = typename L::Element;
  if constexpr (Mode_ == Add || Mode_ == Subtract) {
    return addWeighted<E>(d, s, a, Mode_ == Subtract);
  } else if constexpr (std::is_same_v<E, float>) {
    switch (Mode_) {
      case Normal: return mix(d, s, a);
      case Darken: return d > s ? mix(d, s, a) : d;
      case Lighten: return s > d ? mix(d, s, a) : d;
      case Difference: return mix(d, std::fabs(d - s), a);
      case Multiply: return mix(d, d * s, a);
      case Screen: return mix(d, 1 - (1 - s) * (1 - d), a);
      case Overlay: return mix(d, d < 0.5 ? d * s : 1 - (1 - s) * (1 - d), a);
      case HardLight: return mix(d, s < 0.5 ? d * s : 1 - (1 - s) * (1 - d), a);
      case PinLight:
        if (s > 0.5) return s > d ? mix(d, s, a) : d;
        return s < d ? mix(d, s, a) : d;
      default: return d;
    }
  } else {
    constexpr int32_t M = L::full;
    // The switch points: overlay and hard light take the screen branch at T
    // and above; pin light lightens above P (so at 129 in 8 bits, not 128).
    constexpr int32_t T = std::is_same_v<L, Layout32> ? 128 : 16447;
    constexpr int32_t P = T;
    const int32_t di = d, si = s;
    switch (Mode_) {
      case Normal: return mix(d, si, a);
      case Darken: return di > si ? mix(d, si, a) : d;
      case Lighten: return si > di ? mix(d, si, a) : d;
      case Difference: return mix(d, di > si ? di - si : si - di, a);
      case Multiply: return mix(d, multiplyTarget<M>(di, si), a);
      case Screen: return mix(d, screenTarget<M>(di, si), a);
      case Overlay:
        return mix(d, di >= T ? screenTarget<M>(di, si) : multiplyTarget<M>(di, si), a);
      case HardLight:
        return mix(d, si >= T ? screenTarget<M>(di, si) : multiplyTarget<M>(di, si), a);
      case PinLight:
        if (si > P) return si > di ? mix(d, si, a) : d;
        return si < di ? mix(d, si, a) : d;
      default: return d;
    }
  }
}

// M - s, the target of modes 12 to 14.
template <class L>
inline auto invertedSource(typename L::Element s) {
  if constexpr (std::is_same_v<L, Layout128>) return 1 - s;
  else return static_cast<int32_t>(L::full) - static_cast<int32_t>(s);
}

// Blends the colour of one pixel under a mode fixed at compile time; the mask
// element of d is never changed. The caller has already skipped pixels whose
// source mask is 0.
template <class L, int32_t Mode_>
inline void blendColour(typename L::Pixel& d, const typename L::Pixel& s,
                        typename Weight<L>::Type a) {
  switch (Mode_) {
    case RedFromSource: d.red = mix(d.red, s.red, a); return;
    case GreenFromSource: d.green = mix(d.green, s.green, a); return;
    case BlueFromSource: d.blue = mix(d.blue, s.blue, a); return;
    case RedFromInvertedSource: d.red = mix(d.red, invertedSource<L>(s.red), a); return;
    case GreenFromInvertedSource: d.green = mix(d.green, invertedSource<L>(s.green), a); return;
    case BlueFromInvertedSource: d.blue = mix(d.blue, invertedSource<L>(s.blue), a); return;
    default:
      d.blue = blendElement<L, Mode_>(d.blue, s.blue, a);
      d.green = blendElement<L, Mode_>(d.green, s.green, a);
      d.red = blendElement<L, Mode_>(d.red, s.red, a);
  }
}

// The per-pixel step of every layer composite: skip a pixel whose source mask
// is 0, otherwise move its colour toward the mode's target by a = m x k.
// Float mode 0 differs twice: it skips any mask not above 0, and when
// opacity x 0.01 + m is exactly 2.0 it copies the source colour bit for bit.
template <class L, int32_t Mode_>
inline void blendPixel(typename L::Pixel& d, const typename L::Pixel& s, const Weight<L>& w) {
  if constexpr (std::is_same_v<L, Layout128> && Mode_ == Normal) {
    if (!(s.mask > 0.0f)) return;
    if (w.k + static_cast<double>(s.mask) == 2.0) {
      d.blue = s.blue; d.green = s.green; d.red = s.red;
      return;
    }
  } else {
    if (s.mask == 0) return;
  }
  blendColour<L, Mode_>(d, s, w.of(s.mask));
}

// Calls f(std::integral_constant<int32_t, mode>) for a mode in 0..16 so each
// mode runs its own loop; returns false (calling nothing) for any other mode.
template <class F>
inline bool withMode(int32_t mode, F&& f) {
  switch (mode) {
#define EFFECTS_BLEND_CASE(m) \
    case m: f(std::integral_constant<int32_t, m>{}); return true;
    EFFECTS_BLEND_CASE(0) EFFECTS_BLEND_CASE(1) EFFECTS_BLEND_CASE(2) EFFECTS_BLEND_CASE(3)
    EFFECTS_BLEND_CASE(4) EFFECTS_BLEND_CASE(5) EFFECTS_BLEND_CASE(6) EFFECTS_BLEND_CASE(7)
    EFFECTS_BLEND_CASE(8) EFFECTS_BLEND_CASE(9) EFFECTS_BLEND_CASE(10) EFFECTS_BLEND_CASE(11)
    EFFECTS_BLEND_CASE(12) EFFECTS_BLEND_CASE(13) EFFECTS_BLEND_CASE(14) EFFECTS_BLEND_CASE(15)
    EFFECTS_BLEND_CASE(16)
#undef EFFECTS_BLEND_CASE
    default: return false;
  }
}

}  // namespace effects::blend
