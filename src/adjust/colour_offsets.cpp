// Colour adjustments that add to or overwrite single elements: additive and
// sine-shaped offsets, the wrapping constant tint, the web palette, grey and
// the aged-photo tint.
#include <cmath>
#include <type_traits>

#include "adjust/colour.h"
#include "adjust/maps_simd.h"
#include "core/crmath.h"
#include "core/element_map.h"
#include "core/fpenv.h"
#include "core/layout.h"
#include "core/numeric.h"
#include "core/picture.h"
#include "core/scratch.h"

namespace effects {
namespace {

// ----------------------------------------------------------- additive offsets

// The integer layouts add in 32-bit arithmetic and clamp to 0..full; the
// float one adds delta / 255 and does not clamp.
template <class L>
struct Offset {
  static constexpr bool cheap = true;
  int32_t delta;
  typename L::Element operator()(typename L::Element c) const { return clampStore<L>(wrapAdd(c, delta)); }
};

template <class L>
void addOffsets(int32_t width, int32_t height, typename L::Pixel* px, int32_t redDelta,
                int32_t greenDelta, int32_t blueDelta) {
  using P = typename L::Pixel;
  const FloatEnvironment env;
  const auto pic = packedPicture(width, height, px);
  if constexpr (!L::integer) {
    const double dr = redDelta * k255, dg = greenDelta * k255, db = blueDelta * k255;
    forEachPixel(pic, [=](P& p) {
      p.red = static_cast<float>(p.red + dr);
      p.green = static_cast<float>(p.green + dg);
      p.blue = static_cast<float>(p.blue + db);
    });
  } else {
    const Offset<L> red{redDelta}, green{greenDelta}, blue{blueDelta};
    size_t i = 0;
    if constexpr (std::is_same_v<L, Layout64>)
      i = maps::sse2::offsets64(pic.data(), pic.pixelCount(), blueDelta, greenDelta, redDelta);
    maps::each<L>(pic.data() + i, pic.pixelCount() - i, blue, green, red);
  }
}

// --------------------------------------------------------------- sine offsets

// c + sin(c / full) x amount in double (the sine of radians, so at most
// sin(1) of the amount), truncated and clamped. The float member takes the
// sine of the value itself and the amount over 255, without a clamp.
template <class L>
struct SineOffset {
  double amount;
  // sin(c / full) for every element value, where the call made that table
  // (the three channels' maps share it); null: the sine is taken here.
  const double* sines = nullptr;
  typename L::Element operator()(typename L::Element c) const {
    const double v = c;
    return truncClamp<L>(v + (sines ? sines[c] : crmath::sin(v * L::unit)) * amount);
  }
};

template <class L>
void sineOffsets(int32_t width, int32_t height, typename L::Pixel* px, int32_t redAmount,
                 int32_t greenAmount, int32_t blueAmount) {
  using P = typename L::Pixel;
  const FloatEnvironment env;
  const auto pic = packedPicture(width, height, px);
  if constexpr (!L::integer) {
    const double ar = redAmount * k255, ag = greenAmount * k255, ab = blueAmount * k255;
    auto shift = [](float c, double a) {
      const double v = c;
      return static_cast<float>(v + crmath::sin(v) * a);
    };
    forEachPixel(pic, [=](P& p) {
      p.red = shift(p.red, ar);
      p.green = shift(p.green, ag);
      p.blue = shift(p.blue, ab);
    });
  } else {
    // 16 bits: where the maps go through tables, their 196,608 entries need
    // only 65,536 distinct sines, taken once into a table of their own.
    const double* sines = nullptr;
    if constexpr (std::is_same_v<L, Layout64>) {
      if (maps::worthTables(pic.pixelCount(), 3, 65536)) {
        auto* t = static_cast<double*>(scratchBytes(65536 * sizeof(double), ScratchSlot::Third));
        if (t != nullptr)
          for (uint32_t c = 0; c < 65536; ++c) t[c] = crmath::sin(static_cast<double>(c) * L::unit);
        sines = t;
      }
    }
    const SineOffset<L> red{static_cast<double>(redAmount), sines}, green{static_cast<double>(greenAmount), sines},
        blue{static_cast<double>(blueAmount), sines};
    maps::each<L>(pic.data(), pic.pixelCount(), blue, green, red);
  }
}

// ------------------------------------------------------------- constant tint

// The add values are added in the element's own width: 8-bit and 16-bit sums
// wrap around (250 + 10 gives 4), which is what gives this effect its look.
// The float member adds add / 255 without a bound.
template <class L, class A>
void constantTint(int32_t n, typename L::Pixel* px, A redAdd, A greenAdd, A blueAdd,
                  int32_t channel) {
  using P = typename L::Pixel;
  using E = typename L::Element;
  const Channels ch = Channels::of(channel);
  const FloatEnvironment env;
  if constexpr (!L::integer) {
    const double ar = redAdd * k255, ag = greenAdd * k255, ab = blueAdd * k255;
    forEachPixel(n, px, [=](P& p) {
      if (ch.red) p.red = static_cast<float>(p.red + ar);
      if (ch.green) p.green = static_cast<float>(p.green + ag);
      if (ch.blue) p.blue = static_cast<float>(p.blue + ab);
    });
  } else {
    auto wrapping = [](A add) {
      return maps::cheap([add](E c) { return static_cast<E>(c + add); });
    };
    const auto red = wrapping(ch.red ? redAdd : A{0}), green = wrapping(ch.green ? greenAdd : A{0}),
               blue = wrapping(ch.blue ? blueAdd : A{0});
    maps::each<L>(px, pixelsForCount<typename L::Pixel>(n), blue, green, red);
  }
}

// ---------------------------------------------------------------- web palette

// Every colour element becomes 0 or 51. Red and blue then pass the steps of a
// six-level palette, but those test the 0 or 51 just stored and so never
// fire: the picture is left with the two levels, and that is the effect.
template <class L>
struct WebLevel {
  static constexpr bool cheap = true;
  typename L::Element operator()(typename L::Element c) const { return compared<L>(c) < 26 ? 0 : 51; }
};
// The steps after the level, for red and blue. The 16-bit chain has no 77
// step and compares signed values.
template <class L>
struct WebSteps {
  static constexpr bool cheap = true;
  typename L::Element operator()(typename L::Element c) const {
    typename L::Compare v = compared<L>(WebLevel<L>{}(c));
    if constexpr (sizeof(c) == 1) {
      if (v > 77) v = 102;
    }
    if (v > 128) v = 153;
    if (v > 179) v = 204;
    if (v > 230) v = 255;
    return static_cast<typename L::Element>(v);
  }
};

template <class L>
void webColour(int32_t n, typename L::Pixel* px) {
  const WebSteps<L> steps;
  maps::each<L>(px, pixelsForCount<typename L::Pixel>(n), steps, WebLevel<L>{}, steps);
}

// ----------------------------------------------------------------------- grey

// Equal weights, not a luminance: the integer average (truncated), or the
// float sum times 0.33333334f.
template <class L>
void grey(int32_t n, typename L::Pixel* px, int32_t channel) {
  const FloatEnvironment env;
  using P = typename L::Pixel;
  using E = typename L::Element;
  const Channels ch = Channels::of(channel);
  if constexpr (std::is_same_v<L, Layout32>) {
    // As 32-bit words, four at a time: the sum of at most 765 times 43691,
    // shifted by 17, is the sum divided by 3; the average goes to the chosen
    // bytes.
    const uint32_t put = (ch.blue ? 0xFFu : 0u) | (ch.green ? 0xFF00u : 0u) | (ch.red ? 0xFF0000u : 0u);
    const uint32_t spread = (ch.blue ? 1u : 0u) | (ch.green ? 0x100u : 0u) | (ch.red ? 0x10000u : 0u);
    colour::wordWalk(n, px, [put, spread](auto v) {
      const auto avg = ((colour::byteAt(v, 0) + colour::byteAt(v, 8) + colour::byteAt(v, 16)) * 43691u) >> 17;
      return (v & ~put) | (avg * spread);
    });
  } else {
    forEachPixel(n, px, [ch](P& p) {
      E avg;
      if constexpr (!L::integer) {
        avg = (p.green + p.blue + p.red) * 0.33333334f;
      } else {
        avg = static_cast<E>((p.blue + p.green + p.red) / 3);
      }
      if (ch.red) p.red = avg;
      if (ch.green) p.green = avg;
      if (ch.blue) p.blue = avg;
    });
  }
}

// ------------------------------------------------------------------ aged photo

// Red and green gain a fixed amount (79 and 41 on the 8-bit scale); blue
// never changes.
template <class L>
void agedPhoto(int32_t n, typename L::Pixel* px, int32_t channel) {
  using P = typename L::Pixel;
  using E = typename L::Element;
  const Channels ch = Channels::of(channel);
  if (!ch.red && !ch.green) return;
  const FloatEnvironment env;
  if constexpr (!L::integer) {
    forEachPixel(n, px, [ch](P& p) {
      if (ch.red) p.red = static_cast<float>(p.red + 0.30979338);
      if (ch.green) p.green = static_cast<float>(p.green + 0.1607715);
    });
  } else {
    // 79 and 41 on the 8-bit scale; times 32767 / 255, truncated, on the
    // 16-bit scale. An unchosen channel gains 0.
    const int32_t addRed = !ch.red ? 0 : fullInt<L> == 255 ? 79 : 10151;
    const int32_t addGreen = !ch.green ? 0 : fullInt<L> == 255 ? 41 : 5268;
    auto gain = [](int32_t add) {
      return maps::cheap(
          [add](E c) { return add == 0 ? c : static_cast<E>(c + add > fullInt<L> ? fullInt<L> : c + add); });
    };
    maps::each<L>(px, pixelsForCount<typename L::Pixel>(n), maps::Unchanged{}, gain(addGreen), gain(addRed));
  }
}

}  // namespace
}  // namespace effects

using namespace effects;

extern "C" {

EFFECTS_API uint32_t EFFECTS_CALL VexoAdjust1Colors32(int32_t w, int32_t h, Pixel32* px, int32_t r, int32_t g, int32_t b) { addOffsets<Layout32>(w, h, px, r, g, b); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoAdjust1Colors64(int32_t w, int32_t h, Pixel64* px, int32_t r, int32_t g, int32_t b) { addOffsets<Layout64>(w, h, px, r, g, b); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoAdjust1Colors128(int32_t w, int32_t h, Pixel128* px, int32_t r, int32_t g, int32_t b) { addOffsets<Layout128>(w, h, px, r, g, b); return 0; }

EFFECTS_API uint32_t EFFECTS_CALL VexoAdjust0Colors32(int32_t w, int32_t h, Pixel32* px, int32_t r, int32_t g, int32_t b) { sineOffsets<Layout32>(w, h, px, r, g, b); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoAdjust0Colors64(int32_t w, int32_t h, Pixel64* px, int32_t r, int32_t g, int32_t b) { sineOffsets<Layout64>(w, h, px, r, g, b); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoAdjust0Colors128(int32_t w, int32_t h, Pixel128* px, int32_t r, int32_t g, int32_t b) { sineOffsets<Layout128>(w, h, px, r, g, b); return 0; }

EFFECTS_API uint32_t EFFECTS_CALL VexoCustomBacterial32(int32_t n, Pixel32* px, uint8_t r, uint8_t g, uint8_t b, int32_t channel) { constantTint<Layout32>(n, px, r, g, b, channel); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoCustomBacterial64(int32_t n, Pixel64* px, uint16_t r, uint16_t g, uint16_t b, int32_t channel) { constantTint<Layout64>(n, px, r, g, b, channel); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoCustomBacterial128(int32_t n, Pixel128* px, int32_t r, int32_t g, int32_t b, int32_t channel) { constantTint<Layout128>(n, px, r, g, b, channel); return 0; }

EFFECTS_API uint32_t EFFECTS_CALL VexoWebColour32(int32_t n, Pixel32* px) { webColour<Layout32>(n, px); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoWebColour64(int32_t n, Pixel64* px) { webColour<Layout64>(n, px); return 0; }

EFFECTS_API uint32_t EFFECTS_CALL VexoGrayScale32(int32_t n, Pixel32* px, int32_t channel) { grey<Layout32>(n, px, channel); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoGrayScale64(int32_t n, Pixel64* px, int32_t channel) { grey<Layout64>(n, px, channel); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoGrayScale128(int32_t n, Pixel128* px, int32_t channel) { grey<Layout128>(n, px, channel); return 0; }

EFFECTS_API uint32_t EFFECTS_CALL VexoAgedPhoto32(int32_t n, Pixel32* px, int32_t channel) { agedPhoto<Layout32>(n, px, channel); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoAgedPhoto64(int32_t n, Pixel64* px, int32_t channel) { agedPhoto<Layout64>(n, px, channel); return 0; }
EFFECTS_API uint32_t EFFECTS_CALL VexoAgedPhoto128(int32_t n, Pixel128* px, int32_t channel) { agedPhoto<Layout128>(n, px, channel); return 0; }

}  // extern "C"
