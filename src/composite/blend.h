// The blend engine: the per-layout weight, the seventeen per-element blend
// modes, and the per-pixel step of the layer composites.
//
// The mode arithmetic is a template over the target's and the source's
// colour types: anything with blue, green and red of the layout's element
// type. The layer composites blend a pixel into a pixel; device-context rows
// (Pixel24) and a single constant colour go through the same arithmetic.
// Which pixels are skipped, and any shortcut, is the caller's rule.
//
// The integer layouts keep two deliberate oddities: the multiply and screen
// targets divide by the full value *before* multiplying (so 8-bit multiply
// only keeps d where s = 255 and pulls toward 0 everywhere else), and overlay
// and hard light use those targets without the usual factor 2.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "core/dispatch.h"
#include "core/layout.h"
#include "core/numeric.h"
#include "effects/composite.h"

namespace effects::blend {

inline constexpr int32_t kModeCount = 17;

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

// Modes 15 and 16: the weighted source is rounded first, then added and
// limited to full, or subtracted and limited to 0. Only that one bound
// applies: a negative weight (an opacity below 0) can carry a sum past the
// other, and the store then keeps its low bits. The float layout neither
// rounds nor clamps.
template <class L, class A>
inline typename L::Element addWeighted(typename L::Element d, typename L::Element s, A a, bool subtract) {
  if constexpr (!L::integer) {
    const double w = static_cast<double>(s) * a;
    return static_cast<float>(subtract ? static_cast<double>(d) - w : static_cast<double>(d) + w);
  } else {
    const int64_t q = roundToInt32(static_cast<A>(s) * a);
    const int64_t v = subtract ? std::max<int64_t>(0, d - q) : std::min<int64_t>(fullInt<L>, d + q);
    return static_cast<typename L::Element>(static_cast<uint64_t>(v));
  }
}

// Integer targets of modes 4 and 5: s div M first, then the product.
template <int32_t M>
constexpr int32_t multiplyTarget(int32_t d, int32_t s) { return (s / M) * d; }
template <int32_t M>
constexpr int32_t screenTarget(int32_t d, int32_t s) { return M - ((M - s) / M) * (M - d); }

// The switch points of the integer layouts: overlay and hard light take the
// screen branch at T and above; pin light lightens above T (so at 129 in 8
// bits, not 128).
template <class L>
inline constexpr int32_t kThreshold = fullInt<L> == 255 ? 128 : 16447;

// One colour element under one mode, for the modes that treat blue, green and
// red alike (0..8, 15, 16). Returns the new value of d.
template <class L, int32_t Mode>
inline typename L::Element blendElement(typename L::Element d, typename L::Element s,
                                        typename Weight<L>::Type a) {
  if constexpr (Mode == EFFECTS_BLEND_ADD || Mode == EFFECTS_BLEND_SUBTRACT) {
    return addWeighted<L>(d, s, a, Mode == EFFECTS_BLEND_SUBTRACT);
  } else if constexpr (!L::integer) {
    switch (Mode) {
      case EFFECTS_BLEND_NORMAL: return mix(d, s, a);
      case EFFECTS_BLEND_DARKEN: return d > s ? mix(d, s, a) : d;
      case EFFECTS_BLEND_LIGHTEN: return s > d ? mix(d, s, a) : d;
      case EFFECTS_BLEND_DIFFERENCE: return mix(d, std::fabs(d - s), a);
      case EFFECTS_BLEND_MULTIPLY: return mix(d, d * s, a);
      case EFFECTS_BLEND_SCREEN: return mix(d, 1 - (1 - s) * (1 - d), a);
      case EFFECTS_BLEND_OVERLAY: return mix(d, d < 0.5 ? d * s : 1 - (1 - s) * (1 - d), a);
      case EFFECTS_BLEND_HARD_LIGHT: return mix(d, s < 0.5 ? d * s : 1 - (1 - s) * (1 - d), a);
      case EFFECTS_BLEND_PIN_LIGHT:
        if (s > 0.5) return s > d ? mix(d, s, a) : d;
        return s < d ? mix(d, s, a) : d;
      default: return d;
    }
  } else {
    constexpr int32_t M = fullInt<L>;
    constexpr int32_t T = kThreshold<L>;
    const int32_t di = d, si = s;
    switch (Mode) {
      case EFFECTS_BLEND_NORMAL: return mix(d, si, a);
      case EFFECTS_BLEND_DARKEN: return di > si ? mix(d, si, a) : d;
      case EFFECTS_BLEND_LIGHTEN: return si > di ? mix(d, si, a) : d;
      case EFFECTS_BLEND_DIFFERENCE: return mix(d, di > si ? di - si : si - di, a);
      case EFFECTS_BLEND_MULTIPLY: return mix(d, multiplyTarget<M>(di, si), a);
      case EFFECTS_BLEND_SCREEN: return mix(d, screenTarget<M>(di, si), a);
      case EFFECTS_BLEND_OVERLAY:
        return mix(d, di >= T ? screenTarget<M>(di, si) : multiplyTarget<M>(di, si), a);
      case EFFECTS_BLEND_HARD_LIGHT:
        return mix(d, si >= T ? screenTarget<M>(di, si) : multiplyTarget<M>(di, si), a);
      case EFFECTS_BLEND_PIN_LIGHT:
        if (si > T) return si > di ? mix(d, si, a) : d;
        return si < di ? mix(d, si, a) : d;
      default: return d;
    }
  }
}

// M - s, the target of modes 12 to 14.
template <class L>
inline auto invertedSource(typename L::Element s) {
  if constexpr (!L::integer) return 1 - s;
  else return fullInt<L> - static_cast<int32_t>(s);
}

// Blends the colour of a target (a pixel, a 24-bit row pixel) toward a source
// (a pixel, a constant colour) under a mode fixed at compile time, with the
// arithmetic of layout L. Only blue, green and red change.
template <class L, int32_t Mode, class Target, class Source>
inline void blendColour(Target& d, const Source& s, typename Weight<L>::Type a) {
  switch (Mode) {
    case EFFECTS_BLEND_RED_FROM_SOURCE: d.red = mix(d.red, s.red, a); return;
    case EFFECTS_BLEND_GREEN_FROM_SOURCE: d.green = mix(d.green, s.green, a); return;
    case EFFECTS_BLEND_BLUE_FROM_SOURCE: d.blue = mix(d.blue, s.blue, a); return;
    case EFFECTS_BLEND_RED_FROM_INVERTED_SOURCE: d.red = mix(d.red, invertedSource<L>(s.red), a); return;
    case EFFECTS_BLEND_GREEN_FROM_INVERTED_SOURCE: d.green = mix(d.green, invertedSource<L>(s.green), a); return;
    case EFFECTS_BLEND_BLUE_FROM_INVERTED_SOURCE: d.blue = mix(d.blue, invertedSource<L>(s.blue), a); return;
    default:
      d.blue = blendElement<L, Mode>(d.blue, s.blue, a);
      d.green = blendElement<L, Mode>(d.green, s.green, a);
      d.red = blendElement<L, Mode>(d.red, s.red, a);
  }
}

// The per-pixel step of every layer composite: skip a pixel whose source mask
// is 0, otherwise move its colour toward the mode's target by a = m x k.
// Float mode 0 differs twice: it skips any mask not above 0, and when
// opacity x 0.01 + m is exactly 2.0 it copies the source colour bit for bit.
template <class L, int32_t Mode>
inline void blendPixel(typename L::Pixel& d, const typename L::Pixel& s, const Weight<L>& w) {
  if constexpr (!L::integer && Mode == EFFECTS_BLEND_NORMAL) {
    if (!(s.mask > 0.0f)) return;
    if (w.k + static_cast<double>(s.mask) == 2.0) {
      d.blue = s.blue; d.green = s.green; d.red = s.red;
      return;
    }
  } else {
    if (s.mask == 0) return;
  }
  blendColour<L, Mode>(d, s, w.of(s.mask));
}

// Calls f(std::integral_constant<int32_t, mode>) for a mode in 0..16 so each
// mode runs its own loop; returns false (calling nothing) for any other mode.
template <class F>
inline bool withMode(int32_t mode, F&& f) {
  return withValue<0, kModeCount - 1>(mode, static_cast<F&&>(f));
}

}  // namespace effects::blend
