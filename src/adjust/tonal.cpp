// Tonal adjustments that map each colour element on its own: brightness,
// black brightness, contrast, exposure, f-stops, gamma and level percentage.
// One template per family; the layouts differ in scale, in clamping (the
// float layout does not clamp) and in how a result becomes an element.
#include <cmath>

#include "adjust/tonal.h"
#include "core/crmath.h"
#include "core/element_map.h"
#include "core/fpenv.h"
#include "core/pow.h"

namespace effects {
namespace {

using namespace tonal;

// These exports visit the pixels of width * 4 * height elements, the product
// formed in 32-bit arithmetic.
template <class P>
inline size_t wrappedPixels(uint32_t width, uint32_t height) {
  return pixelsForCount<P>(wrappedElementCount(width, height));
}

// One map for blue, green and red: through a table in the integer layouts
// where that pays (core/element_map.h), element by element otherwise. The
// callers hold the float environment from their first statement on.
template <class L, class F>
void mapColours(uint32_t width, uint32_t height, typename L::Pixel* px, const F& f) {
  maps::all<L>(px, wrappedPixels<typename L::Pixel>(width, height), f);
}

// Darkening scales toward black, lightening scales the distance to white.
template <class L>
void brightness(uint32_t w, uint32_t h, typename L::Pixel* px, int32_t amount) {
  if (amount == 0) return;
  const FloatEnvironment env;
  if constexpr (!L::integer) {
    const float f = static_cast<float>(amount * k255);
    if (amount < 0) {
      const float m = 1 + f;
      mapColours<L>(w, h, px, [m](float c) { return c * m; });
    } else {
      const float m = 1 - f;
      mapColours<L>(w, h, px, [m](float c) { return 1 - (1 - c) * m; });
    }
  } else {
    mapColours<L>(w, h, px, Brightness<L>(amount));
  }
}

// A plain multiplication by amount/255 + 1 with the single-precision
// reciprocal; the integer layouts clamp before rounding.
template <class L>
void blackBrightness(uint32_t w, uint32_t h, typename L::Pixel* px, int32_t amount) {
  if (amount == 0) return;
  const FloatEnvironment env;
  if constexpr (!L::integer) {
    const float factor = amount * k255f + 1;
    mapColours<L>(w, h, px, [factor](float c) { return c * factor; });
  } else {
    mapColours<L>(w, h, px, BlackBrightness<L>(amount));
  }
}

// Stretch about a pivot of 127 (16383, 0.5).
template <class L>
void contrast(uint32_t w, uint32_t h, typename L::Pixel* px, int32_t amount) {
  const FloatEnvironment env;
  if constexpr (!L::integer) {
    const float k = static_cast<float>(amount * L::amountUnit);
    mapColours<L>(w, h, px, [k](float c) { return static_cast<float>((c - 0.5) * k + c); });
  } else {
    mapColours<L>(w, h, px, Contrast<L>(amount));
  }
}

// Adds one offset, amount x sin(amount/255) or amount x cos(amount/255); the
// float layout uses amount/255 for both factors. Unknown modes leave the
// integer layouts clamped and the float layout as it was.
template <class L>
void exposure(uint32_t w, uint32_t h, typename L::Pixel* px, uint8_t mode, int32_t amount) {
  if (amount == 0) return;
  const FloatEnvironment env;
  const double a = amount;
  if constexpr (!L::integer) {
    if (mode > 1) return;
    const double f = a * k255;
    const double offset = mode == 0 ? crmath::sin(f) * f : crmath::cos(f) * f;
    mapColours<L>(w, h, px, [offset](float c) { return static_cast<float>(c + offset); });
  } else {
    const double x = a * L::unit;
    const float offset = mode == 0   ? static_cast<float>(crmath::sin(x) * a)
                         : mode == 1 ? static_cast<float>(crmath::cos(x) * a)
                                     : 0.0f;
    mapColours<L>(w, h, px, Exposure<L>{offset});
  }
}

// Two units of stops double the intensity.
template <class L>
void fstop(uint32_t w, uint32_t h, typename L::Pixel* px, double stops) {
  const FloatEnvironment env;
  if (stops == 0.0) return;
  const double factor = std::pow(2.0, 0.5 * stops);
  if constexpr (!L::integer) {
    mapColours<L>(w, h, px, [factor](float c) { return static_cast<float>(c * factor); });
  } else {
    mapColours<L>(w, h, px, Fstop<L>{factor});
  }
}

// pow(c, e) on the 0..1 scale with gamma limited to [0, 10]; the plain gamma
// raises to 1/gamma, the HDR one to gamma itself.
template <class L, bool towardHdr>
void gamma(uint32_t w, uint32_t h, typename L::Pixel* px, float gamma) {
  const FloatEnvironment env;
  float g = gamma;
  if (g < 0) g = 0;
  if (g > 10) g = 10;
  if (g == 1.0f) return;
  const double e = towardHdr ? g : 1.0f / g;
  if constexpr (!L::integer) {
    fastpow::powColours(px, wrappedPixels<Pixel128>(w, h), e);
  } else {
    mapColours<L>(w, h, px, Gamma<L>{e});
  }
}

// Multiplies by 2 - percentage. Only the upper bound applies: a negative
// product keeps the low bits of its rounding.
template <class L>
void levelPercentage(uint32_t w, uint32_t h, typename L::Pixel* px, float percentage) {
  const FloatEnvironment env;
  const float factor = 2 - percentage;
  if constexpr (!L::integer) {
    mapColours<L>(w, h, px, [factor](float c) { return c * factor; });
  } else {
    mapColours<L>(w, h, px, LevelPercentage<L>{factor});
  }
}

}  // namespace
}  // namespace effects

using namespace effects;

extern "C" {

EFFECTS_API uint32_t EFFECTS_CALL VexoBrightness32(uint32_t w, uint32_t h, Pixel32* px, int32_t amount, uint32_t) { brightness<Layout32>(w, h, px, amount); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoBrightness64(uint32_t w, uint32_t h, Pixel64* px, int32_t amount, uint32_t) { brightness<Layout64>(w, h, px, amount); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoBrightness128(uint32_t w, uint32_t h, Pixel128* px, int32_t amount, uint32_t) { brightness<Layout128>(w, h, px, amount); return 0; }

EFFECTS_API uint32_t EFFECTS_CALL VexoBlackBrightness32(uint32_t w, uint32_t h, Pixel32* px, int32_t amount, uint32_t) { blackBrightness<Layout32>(w, h, px, amount); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoBlackBrightness64(uint32_t w, uint32_t h, Pixel64* px, int32_t amount, uint32_t) { blackBrightness<Layout64>(w, h, px, amount); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoBlackBrightness128(uint32_t w, uint32_t h, Pixel128* px, int32_t amount, uint32_t) { blackBrightness<Layout128>(w, h, px, amount); return 0; }

EFFECTS_API uint32_t EFFECTS_CALL VexoContrast32(uint32_t w, uint32_t h, Pixel32* px, int32_t amount, uint32_t) { contrast<Layout32>(w, h, px, amount); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoContrast64(uint32_t w, uint32_t h, Pixel64* px, int32_t amount, uint32_t) { contrast<Layout64>(w, h, px, amount); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoContrast128(uint32_t w, uint32_t h, Pixel128* px, int32_t amount, uint32_t) { contrast<Layout128>(w, h, px, amount); return 0; }

EFFECTS_API uint32_t EFFECTS_CALL VexoXposure32(uint32_t w, uint32_t h, Pixel32* px, uint8_t mode, int32_t amount, uint32_t) { exposure<Layout32>(w, h, px, mode, amount); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoXposure64(uint32_t w, uint32_t h, Pixel64* px, uint8_t mode, int32_t amount, uint32_t) { exposure<Layout64>(w, h, px, mode, amount); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoXposure128(uint32_t w, uint32_t h, Pixel128* px, uint8_t mode, int32_t amount, uint32_t) { exposure<Layout128>(w, h, px, mode, amount); return 0; }

EFFECTS_API uint32_t EFFECTS_CALL Vexofstop32(uint32_t w, uint32_t h, Pixel32* px, double stops) { fstop<Layout32>(w, h, px, stops); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL Vexofstop64(uint32_t w, uint32_t h, Pixel64* px, double stops) { fstop<Layout64>(w, h, px, stops); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL Vexofstop128(uint32_t w, uint32_t h, Pixel128* px, double stops) { fstop<Layout128>(w, h, px, stops); return 0; }

EFFECTS_API uint32_t EFFECTS_CALL VexoGamma32(uint32_t w, uint32_t h, Pixel32* px, float g) { gamma<Layout32, false>(w, h, px, g); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoGamma64(uint32_t w, uint32_t h, Pixel64* px, float g) { gamma<Layout64, false>(w, h, px, g); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoGamma128(uint32_t w, uint32_t h, Pixel128* px, float g) { gamma<Layout128, false>(w, h, px, g); return 0; }

EFFECTS_API uint32_t EFFECTS_CALL VexoGammatoHDR32(uint32_t w, uint32_t h, Pixel32* px, float g) { gamma<Layout32, true>(w, h, px, g); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoGammatoHDR64(uint32_t w, uint32_t h, Pixel64* px, float g) { gamma<Layout64, true>(w, h, px, g); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoGammatoHDR128(uint32_t w, uint32_t h, Pixel128* px, float g) { gamma<Layout128, true>(w, h, px, g); return 0; }

EFFECTS_API uint32_t EFFECTS_CALL VexoAdjustLevelPrecentage32(uint32_t w, uint32_t h, Pixel32* px, float percentage) { levelPercentage<Layout32>(w, h, px, percentage); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoAdjustLevelPrecentage64(uint32_t w, uint32_t h, Pixel64* px, float percentage) { levelPercentage<Layout64>(w, h, px, percentage); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoAdjustLevelPrecentage128(uint32_t w, uint32_t h, Pixel128* px, float percentage) { levelPercentage<Layout128>(w, h, px, percentage); return 0; }

}  // extern "C"
