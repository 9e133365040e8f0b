// Colour adjustments that mix or rearrange a pixel's own elements:
// saturation, the hue wheel, colour filters, channel copies and swaps, and the
// replacement of one colour. One template per family over the three layouts.
#include <algorithm>
#include <cstring>
#include <type_traits>

#include "adjust/colour.h"
#include "adjust/colour_simd.h"
#include "core/dispatch.h"
#include "core/fpenv.h"
#include "core/layout.h"
#include "core/numeric.h"
#include "core/picture.h"

namespace effects {
namespace {

using namespace colour;

// ---------------------------------------------------------------- saturation

// The lowest setting of the integer layouts: every colour element becomes the
// pixel's integer average.
template <class P>
void greyToAverage(int32_t n, P* px) {
  forEachPixel(n, px, [](P& p) {
    const auto avg = static_cast<decltype(p.blue)>((p.blue + p.green + p.red) / 3);
    p.blue = p.green = p.red = avg;
  });
}

// 8 bits: the vector form over whole vectors, the plain form on the rest.
void saturation32(int32_t n, Pixel32* px, int32_t amount) {
  const int32_t s = clampTo(amount, -255, 512) + 255;
  if (n < 1 || s == 255 || px == nullptr) return;
  if (s == 0) return greyToAverage(n, px);
  const size_t count = pixelsForCount<Pixel32>(n);
  const Saturate32 plain{s};
  size_t i = 0;
#if EFFECTS_WIDE
  if (cpu::avx2()) i = sse2::saturate32Avx2(px, count, s);
#endif
  for (i += sse2::saturate32(px + i, count - i, s); i < count; ++i) plain(px[i]);
}

// 16 bits: s = amount + 32767 (see Saturate64); the vector forms over whole
// vectors, the plain form on the rest. The vector forms take the average
// through single precision, so the call sets the default floating-point
// environment as the float families do.
void saturation64(int32_t n, Pixel64* px, int32_t amount) {
  const FloatEnvironment env;
  const int32_t s = clampTo(amount, -32767, 65534) + 32767;
  if (s == 32767 || n < 1 || px == nullptr) return;
  if (s == 0) return greyToAverage(n, px);
  const size_t count = pixelsForCount<Pixel64>(n);
  const Saturate64 plain{s};
  size_t i = 0;
#if EFFECTS_WIDE
  if (cpu::avx2()) i = sse2::saturate64Avx2(px, count, s);
#endif
  for (i += sse2::saturate64(px + i, count - i, s); i < count; ++i) plain(px[i]);
}

// Float: the amount keeps the 16-bit layout's range, scaled by 1/255, so the
// float member can push saturation much further than the others. A negative
// factor leaves the picture alone; there is no clamping.
void saturation128(int32_t n, Pixel128* px, int32_t amount) {
  const FloatEnvironment env;
  const double f = clampTo(amount, -32767, 65534) * k255 + 1.0;
  if (f == 1.0 || n < 1 || f < 0.0) return;
  if (f == 0.0) {
    forEachPixel(n, px, [](Pixel128& p) {
      const float avg = (p.blue + p.green + p.red) * 0.33333334f;
      p.blue = p.green = p.red = avg;
    });
    return;
  }
  const double keep = 1.0 - f;
  forEachPixel(n, px, [f, keep](Pixel128& p) {
    const float avg = (p.blue + p.green + p.red) * 0.33333334f;
    auto move = [&](float c) { return static_cast<float>(c * f + keep * avg); };
    p.blue = move(p.blue);
    p.green = move(p.green);
    p.red = move(p.red);
  });
}

// ------------------------------------------------------------------ hue wheel

// 8 bits: the vector form over whole vectors, the plain form on the rest.
// The walk's order does not matter (no pixel reads another).
void hue32(int32_t width, int32_t height, Pixel32* px, int32_t hue) {
  const FloatEnvironment env;
  const HueStep step = hueStep(hue);
  const auto pic = packedPicture(width, height, px);
  const size_t count = pic.pixelCount();
  withValue<0, 6>(step.sector, [&](auto sector) {
    constexpr int S = decltype(sector)::value;
    const RotateHue<S, Pixel32, Mix32> plain{Mix32{step.weight}};
    for (size_t i = sse2::hue32<S>(pic.data(), count, step.weight); i < count; ++i) plain(pic.data()[i]);
  });
}

// 16 bits: the weight shifted left by 7, out of 32640, divided exactly; the
// vector forms over whole vectors, the plain form on the rest.
void hue64(int32_t width, int32_t height, Pixel64* px, int32_t hue) {
  const FloatEnvironment env;
  const HueStep step = hueStep(hue);
  const auto pic = packedPicture(width, height, px);
  const size_t count = pic.pixelCount();
  withValue<0, 6>(step.sector, [&](auto sector) {
    constexpr int S = decltype(sector)::value;
    const RotateHue<S, Pixel64, Mix64> plain{Mix64{step.weight << 7}};
    size_t i = 0;
#if EFFECTS_WIDE
    if (cpu::avx2()) i = sse2::hue64Avx2<S>(pic.data(), count, step.weight);
#endif
    for (i += sse2::hue64<S>(pic.data() + i, count - i, step.weight); i < count; ++i) plain(pic.data()[i]);
  });
}

// Float: the 8-bit weights, divided by 255 (not 256) in single precision.
void hue128(int32_t width, int32_t height, Pixel128* px, int32_t hue) {
  const FloatEnvironment env;
  const HueStep step = hueStep(hue);
  const Mix128 mix{step.weight};
  withValue<0, 6>(step.sector, [&](auto sector) {
    forEachPixel(packedPicture(width, height, px), [&](Pixel128& p) { rotateHue<decltype(sector)::value>(p, mix); });
  });
}

// ------------------------------------- 8-bit rearrangements as word operations

template <int F>
struct FilterWords {
  template <class W>
  W operator()(W v) const {
    if constexpr (F == 1) return v & 0xFFFF0000u;
    else if constexpr (F == 2) return v & 0xFF00FF00u;
    else if constexpr (F == 3) return v & 0xFF0000FFu;
    else if constexpr (F == 4) {
      const W half = (byteAt(v, 8) + byteAt(v, 16)) >> 1;
      return (v & 0xFF000000u) | (half << 8) | (half << 16);
    } else if constexpr (F == 5) {
      const W half = (byteAt(v, 16) + byteAt(v, 0)) >> 1;
      return (v & 0xFF000000u) | half | (half << 16);
    } else {
      const W half = (byteAt(v, 8) + byteAt(v, 0)) >> 1;
      return (v & 0xFF000000u) | half | (half << 8);
    }
  }
};

template <int C>
struct CopyWords {
  template <class W>
  W operator()(W v) const {
    if constexpr (C == 2) return (v & 0xFFFF0000u) | byteAt(v, 16) | (byteAt(v, 16) << 8);
    else if constexpr (C == 3) return (v & 0xFF00FF00u) | byteAt(v, 8) | (byteAt(v, 8) << 16);
    else return (v & 0xFF0000FFu) | (byteAt(v, 0) << 8) | (byteAt(v, 0) << 16);
  }
};

template <int O>
struct SwapWords {
  template <class W>
  W operator()(W v) const {
    if constexpr (O == 1) return (v & 0xFF00FF00u) | byteAt(v, 16) | (byteAt(v, 0) << 16);
    else if constexpr (O == 2) return (v & 0xFF0000FFu) | (byteAt(v, 16) << 8) | (byteAt(v, 8) << 16);
    else if constexpr (O == 3) return (v & 0xFFFF0000u) | byteAt(v, 8) | (byteAt(v, 0) << 8);
    else if constexpr (O == 4) return (v & 0xFF000000u) | byteAt(v, 8) | (byteAt(v, 16) << 8) | (byteAt(v, 0) << 16);
    else return (v & 0xFF000000u) | byteAt(v, 16) | (byteAt(v, 0) << 8) | (byteAt(v, 8) << 16);
  }
};

// -------------------------------------------------------------- colour filter

// The halved sum of two elements; the float member keeps the plain sum, so
// its yellow, magenta and cyan can exceed 1.0.
template <class L>
inline typename L::Element pairOf(typename L::Element a, typename L::Element b) {
  if constexpr (!L::integer) {
    return a + b;
  } else {
    return static_cast<typename L::Element>((a + b) >> 1);
  }
}

template <class L>
void colourFilter(int32_t n, typename L::Pixel* px, int32_t filter) {
  using P = typename L::Pixel;
  using E = typename L::Element;
  const FloatEnvironment env;
  withValue<1, 6>(filter, [&](auto which) {
    constexpr int F = decltype(which)::value;
    if constexpr (std::is_same_v<L, Layout32>) {
      wordWalk(n, px, FilterWords<F>{});
    } else {
      forEachPixel(n, px, [](P& p) {
        const E b = p.blue, g = p.green, r = p.red;
        if constexpr (F == 1) {
          p.blue = 0; p.green = 0;
        } else if constexpr (F == 2) {
          p.blue = 0; p.red = 0;
        } else if constexpr (F == 3) {
          p.green = 0; p.red = 0;
        } else if constexpr (F == 4) {
          p.blue = 0; p.green = p.red = pairOf<L>(g, r);
        } else if constexpr (F == 5) {
          p.green = 0; p.blue = p.red = pairOf<L>(r, b);
        } else {
          p.red = 0; p.blue = p.green = pairOf<L>(g, b);
        }
      });
    }
  });
}

// ------------------------------------------------------ channel copy and swap

template <class L>
void channelCopy(int32_t n, typename L::Pixel* px, int32_t channel) {
  using P = typename L::Pixel;
  withValue<2, 4>(channel, [&](auto which) {
    constexpr int C = decltype(which)::value;
    if constexpr (std::is_same_v<L, Layout32>) {
      wordWalk(n, px, CopyWords<C>{});
    } else {
      forEachPixel(n, px, [](P& p) {
        if constexpr (C == 2) {
          p.blue = p.green = p.red;
        } else if constexpr (C == 3) {
          p.blue = p.red = p.green;
        } else {
          p.green = p.red = p.blue;
        }
      });
    }
  });
}

template <class L>
void channelSwap(int32_t n, typename L::Pixel* px, int32_t order) {
  using P = typename L::Pixel;
  withValue<1, 5>(order, [&](auto which) {
    constexpr int O = decltype(which)::value;
    if constexpr (std::is_same_v<L, Layout32>) {
      wordWalk(n, px, SwapWords<O>{});
    } else {
      forEachPixel(n, px, [](P& p) {
        const auto b = p.blue, g = p.green, r = p.red;
        if constexpr (O == 1) {
          p.blue = r; p.red = b;
        } else if constexpr (O == 2) {
          p.green = r; p.red = g;
        } else if constexpr (O == 3) {
          p.blue = g; p.green = b;
        } else if constexpr (O == 4) {
          p.blue = g; p.green = r; p.red = b;
        } else {
          p.blue = r; p.green = b; p.red = g;
        }
      });
    }
  });
}

// ------------------------------------------------------------- replace colour

// The key, replacement and tolerance in the layout's units: bytes as they are
// (8 bits), bytes times 128 with the tolerance unscaled (16 bits), each
// scaled by 1/255 into single precision (float).
template <class L>
struct ReplaceKey {
  using T = std::conditional_t<L::integer, int32_t, float>;
  T red, green, blue;
  static ReplaceKey of(uint32_t packed) {
    const PackedColour c = PackedColour::of(packed);
    return {unit(c.red), unit(c.green), unit(c.blue)};
  }
  static T unit(int32_t v) {
    if constexpr (!L::integer) return static_cast<float>(v * k255);
    else return v * ((fullInt<L> + 1) / 256);  // 8 bits as they are, 16 bits times 128
  }
};

// key >= c - tolerance and key <= c + tolerance. The integer layouts compute
// the bounds in 32-bit arithmetic, which wraps for extreme tolerances.
template <class T>
inline bool within(T key, T c, T tolerance) {
  if constexpr (std::is_floating_point_v<T>) {
    return key >= c - tolerance && key <= c + tolerance;
  } else {
    return key >= wrapSub(c, tolerance) && key <= wrapAdd(c, tolerance);
  }
}

template <class L>
void replaceColour(int32_t n, typename L::Pixel* px, uint32_t match, uint32_t replacement,
                   int32_t tolerance) {
  const FloatEnvironment env;
  using K = ReplaceKey<L>;
  using T = typename K::T;
  using E = typename L::Element;
  const K key = K::of(match);
  const K to = K::of(replacement);
  T tol;
  if constexpr (!L::integer) {
    tol = static_cast<float>(tolerance * k255);
  } else {
    tol = tolerance;
  }
  forEachPixel(n, px, [&](typename L::Pixel& p) {
    if (!within<T>(key.red, p.red, tol) || !within<T>(key.green, p.green, tol) ||
        !within<T>(key.blue, p.blue, tol))
      return;
    p.red = static_cast<E>(to.red);
    p.green = static_cast<E>(to.green);
    p.blue = static_cast<E>(to.blue);
  });
}

}  // namespace
}  // namespace effects

using namespace effects;

extern "C" {

EFFECTS_API uint32_t EFFECTS_CALL VexoSaturation32(int32_t n, Pixel32* px, int32_t amount) { saturation32(n, px, amount); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoSaturation64(int32_t n, Pixel64* px, int32_t amount) { saturation64(n, px, amount); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoSaturation128(int32_t n, Pixel128* px, int32_t amount) { saturation128(n, px, amount); return 0; }

EFFECTS_API uint32_t EFFECTS_CALL VexoHue32(int32_t w, int32_t h, Pixel32* px, int32_t hue) { hue32(w, h, px, hue); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoHue64(int32_t w, int32_t h, Pixel64* px, int32_t hue) { hue64(w, h, px, hue); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoHue128(int32_t w, int32_t h, Pixel128* px, int32_t hue) { hue128(w, h, px, hue); return 0; }

EFFECTS_API uint32_t EFFECTS_CALL VexoColorFilter32(int32_t n, Pixel32* px, int32_t filter) { colourFilter<Layout32>(n, px, filter); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoColorFilter64(int32_t n, Pixel64* px, int32_t filter) { colourFilter<Layout64>(n, px, filter); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoColorFilter128(int32_t n, Pixel128* px, int32_t filter) { colourFilter<Layout128>(n, px, filter); return 0; }

EFFECTS_API uint32_t EFFECTS_CALL VexoRGBChannelFilter32(int32_t n, Pixel32* px, int32_t channel) { channelCopy<Layout32>(n, px, channel); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoRGBChannelFilter64(int32_t n, Pixel64* px, int32_t channel) { channelCopy<Layout64>(n, px, channel); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoRGBChannelFilter128(int32_t n, Pixel128* px, int32_t channel) { channelCopy<Layout128>(n, px, channel); return 0; }

EFFECTS_API uint32_t EFFECTS_CALL VexoColorSwitch32(int32_t n, Pixel32* px, int32_t order) { channelSwap<Layout32>(n, px, order); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoColorSwitch64(int32_t n, Pixel64* px, int32_t order) { channelSwap<Layout64>(n, px, order); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoColorSwitch128(int32_t n, Pixel128* px, int32_t order) { channelSwap<Layout128>(n, px, order); return 0; }

EFFECTS_API uint32_t EFFECTS_CALL VexoReplaceColor32(int32_t n, Pixel32* px, uint32_t match, uint32_t to, int32_t tolerance) { replaceColour<Layout32>(n, px, match, to, tolerance); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoReplaceColor64(int32_t n, Pixel64* px, uint32_t match, uint32_t to, int32_t tolerance) { replaceColour<Layout64>(n, px, match, to, tolerance); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoReplaceColor128(int32_t n, Pixel128* px, uint32_t match, uint32_t to, int32_t tolerance) { replaceColour<Layout128>(n, px, match, to, tolerance); return 0; }

}  // extern "C"
