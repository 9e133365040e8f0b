// The distortions (each a mapping from geometry/distortions.h run by the
// warp walk), the sphere-reflection brightness scale and the channel ripper.
#include <cstdint>

#include "core/dispatch.h"
#include "core/fpenv.h"
#include "core/numeric.h"
#include "core/picture.h"
#include "geometry/distortions.h"
#include "geometry/warp.h"

namespace effects {
namespace {

using namespace geometry;

template <class P>
void swirl(int32_t width, int32_t height, P* pixels, int32_t includeMask, int32_t twist) {
  warpWithMask(packedPicture(width, height, pixels), Swirl(width, height, twist), includeMask);
}

template <class P>
void twirlEx(int32_t width, int32_t height, P* pixels, int32_t includeMask, int32_t outerTwist, int32_t innerTwist) {
  warpWithMask(packedPicture(width, height, pixels), TwirlEx(width, height, outerTwist, innerTwist), includeMask);
}

template <class P>
void pinch(int32_t width, int32_t height, P* pixels, int32_t includeMask, double amount) {
  if (amount == 0.0) return;
  warpWithMask(packedPicture(width, height, pixels), Pinch(width, height, amount), includeMask);
}

template <class P>
void circularWaves(int32_t width, int32_t height, P* pixels, int32_t amplitude, int32_t frequency) {
  warp<Writes::Colour>(packedPicture(width, height, pixels), CircularWaves(width, height, amplitude, frequency));
}

template <class P>
void circularWavesEx(int32_t width, int32_t height, P* pixels, int32_t amplitude, int32_t frequency) {
  warp<Writes::Colour>(packedPicture(width, height, pixels), CircularWavesEx(width, height, amplitude, frequency));
}

template <class P>
void blockWaves(int32_t width, int32_t height, P* pixels, int32_t amplitude, int32_t frequency, int32_t style) {
  warp<Writes::Colour>(packedPicture(width, height, pixels), BlockWaves(width, height, amplitude, frequency, style));
}

// ------------------------------------------------------- sphere reflection

// c x factor in single precision; the integer layouts limit it from above
// and round to nearest, ties to even, storing the low bits of the 16-bit
// rounding (there is no lower limit).
template <class L>
inline typename L::Element brighten(typename L::Element c, float factor) {
  const float v = c * factor;
  if constexpr (!L::integer) {
    return v;
  } else {
    const float limited = v > static_cast<float>(L::full) ? static_cast<float>(L::full) : v;
    if constexpr (sizeof(typename L::Element) == 1)
      return roundLowByte(limited);
    else
      return roundLowWord(limited);
  }
}

// percent 0 would make the factor infinite (every non-zero element full,
// zero elements NaN); it is taken as no change instead.
template <class P>
void sphereReflection(int32_t width, int32_t height, P* pixels, int32_t percent) {
  using L = LayoutOf<P>;
  if (width < 1 || height < 1 || percent == 0) return;
  const float factor = static_cast<float>(1 / (percent * 0.01));
  forEachPixel(wrappedElementCount(width, height), pixels, [factor](P& p) {
    p.blue = brighten<L>(p.blue, factor);
    p.green = brighten<L>(p.green, factor);
    p.red = brighten<L>(p.red, factor);
  });
}

// ----------------------------------------------------------------- ripper

// Whether v is the chosen one of three: the strict largest (mode 1), the
// strict middle (2) or the strict smallest (3).
template <int32_t Mode, class C>
inline bool chosen(C v, C a, C b) {
  if constexpr (Mode == 1) return v > a && v > b;
  else if constexpr (Mode == 2) return (a < v && v < b) || (b < v && v < a);
  else return v < a && v < b;
}

// Three tests in the order blue, green, red, each on the pixel as it stands
// after the one before (so an element one test cleared cannot win a later
// one), always against the entry blue. An element the channel selector does
// not allow keeps its value, for the later tests as well.
template <class P>
void ripper(int32_t elementCount, P* pixels, int32_t mode, int32_t channel) {
  using L = LayoutOf<P>;
  using E = typename L::Element;
  const Channels ch = Channels::of(channel);
  withValue<1, 3>(mode, [&](auto m) {
    constexpr int32_t M = decltype(m)::value;
    forEachPixel(elementCount, pixels, [ch](P& p) {
      const auto blue = compared<L>(p.blue);
      const E green0 = p.green, red0 = p.red;
      if (chosen<M>(blue, compared<L>(p.green), compared<L>(p.red))) {
        if (ch.red) p.red = 0;
        if (ch.green) p.green = 0;
      }
      if (chosen<M>(compared<L>(p.green), blue, compared<L>(p.red))) {
        if (ch.red) p.red = 0;
        if (ch.green) p.green = green0;
        if (ch.blue) p.blue = 0;
      }
      if (chosen<M>(compared<L>(p.red), compared<L>(p.green), blue)) {
        if (ch.red) p.red = red0;
        if (ch.green) p.green = 0;
        if (ch.blue) p.blue = 0;
      }
    });
  });
}

}  // namespace
}  // namespace effects

using namespace effects;

extern "C" {
EFFECTS_API int32_t EFFECTS_CALL VexoSwirl32(int32_t width, int32_t height, Pixel32* pixels, int32_t includeMask, int32_t twist) { const FloatEnvironment env; swirl(width, height, pixels, includeMask, twist); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoSwirl64(int32_t width, int32_t height, Pixel64* pixels, int32_t includeMask, int32_t twist) { const FloatEnvironment env; swirl(width, height, pixels, includeMask, twist); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoSwirl128(int32_t width, int32_t height, Pixel128* pixels, int32_t includeMask, int32_t twist) { const FloatEnvironment env; swirl(width, height, pixels, includeMask, twist); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoTwirlEx32(int32_t width, int32_t height, Pixel32* pixels, int32_t includeMask, int32_t outerTwist, int32_t innerTwist) { const FloatEnvironment env; twirlEx(width, height, pixels, includeMask, outerTwist, innerTwist); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoTwirlEx64(int32_t width, int32_t height, Pixel64* pixels, int32_t includeMask, int32_t outerTwist, int32_t innerTwist) { const FloatEnvironment env; twirlEx(width, height, pixels, includeMask, outerTwist, innerTwist); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoTwirlEx128(int32_t width, int32_t height, Pixel128* pixels, int32_t includeMask, int32_t outerTwist, int32_t innerTwist) { const FloatEnvironment env; twirlEx(width, height, pixels, includeMask, outerTwist, innerTwist); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoPinch32(int32_t width, int32_t height, Pixel32* pixels, int32_t includeMask, double amount) { const FloatEnvironment env; pinch(width, height, pixels, includeMask, amount); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoPinch64(int32_t width, int32_t height, Pixel64* pixels, int32_t includeMask, double amount) { const FloatEnvironment env; pinch(width, height, pixels, includeMask, amount); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoPinch128(int32_t width, int32_t height, Pixel128* pixels, int32_t includeMask, double amount) { const FloatEnvironment env; pinch(width, height, pixels, includeMask, amount); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoCircularWaves32(int32_t width, int32_t height, Pixel32* pixels, int32_t amplitude, int32_t frequency) { const FloatEnvironment env; circularWaves(width, height, pixels, amplitude, frequency); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoCircularWaves64(int32_t width, int32_t height, Pixel64* pixels, int32_t amplitude, int32_t frequency) { const FloatEnvironment env; circularWaves(width, height, pixels, amplitude, frequency); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoCircularWaves128(int32_t width, int32_t height, Pixel128* pixels, int32_t amplitude, int32_t frequency) { const FloatEnvironment env; circularWaves(width, height, pixels, amplitude, frequency); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoCircularWavesEx32(int32_t width, int32_t height, Pixel32* pixels, int32_t amplitude, int32_t frequency) { const FloatEnvironment env; circularWavesEx(width, height, pixels, amplitude, frequency); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoCircularWavesEx64(int32_t width, int32_t height, Pixel64* pixels, int32_t amplitude, int32_t frequency) { const FloatEnvironment env; circularWavesEx(width, height, pixels, amplitude, frequency); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoCircularWavesEx128(int32_t width, int32_t height, Pixel128* pixels, int32_t amplitude, int32_t frequency) { const FloatEnvironment env; circularWavesEx(width, height, pixels, amplitude, frequency); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoBlockWaves32(int32_t width, int32_t height, Pixel32* pixels, int32_t amplitude, int32_t frequency, int32_t style) { const FloatEnvironment env; blockWaves(width, height, pixels, amplitude, frequency, style); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoBlockWaves64(int32_t width, int32_t height, Pixel64* pixels, int32_t amplitude, int32_t frequency, int32_t style) { const FloatEnvironment env; blockWaves(width, height, pixels, amplitude, frequency, style); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoBlockWaves128(int32_t width, int32_t height, Pixel128* pixels, int32_t amplitude, int32_t frequency, int32_t style) { const FloatEnvironment env; blockWaves(width, height, pixels, amplitude, frequency, style); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoSphereReflection32(int32_t width, int32_t height, Pixel32* pixels, int32_t percent) { const FloatEnvironment env; sphereReflection(width, height, pixels, percent); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoSphereReflection64(int32_t width, int32_t height, Pixel64* pixels, int32_t percent) { const FloatEnvironment env; sphereReflection(width, height, pixels, percent); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoSphereReflection128(int32_t width, int32_t height, Pixel128* pixels, int32_t percent) { const FloatEnvironment env; sphereReflection(width, height, pixels, percent); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoRipper32(int32_t elementCount, Pixel32* pixels, int32_t mode, int32_t channel) { const FloatEnvironment env; ripper(elementCount, pixels, mode, channel); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoRipper64(int32_t elementCount, Pixel64* pixels, int32_t mode, int32_t channel) { const FloatEnvironment env; ripper(elementCount, pixels, mode, channel); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoRipper128(int32_t elementCount, Pixel128* pixels, int32_t mode, int32_t channel) { const FloatEnvironment env; ripper(elementCount, pixels, mode, channel); return 0; }
}
