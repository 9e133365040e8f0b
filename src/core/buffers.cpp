// Mask utilities, colour inversion and the fill of a new picture: single
// passes over an ElementCount buffer, one template per family.
#include "core/layout.h"
#include "core/picture.h"

namespace effects {
namespace {

// 8 bits: the bitwise complement. 16 bits: 32767 - x in 16-bit arithmetic,
// so a value above 32767 wraps. Float: 1.0 - x, no clamping.
inline uint8_t inverted(uint8_t x) { return static_cast<uint8_t>(~x); }
inline uint16_t inverted(uint16_t x) { return static_cast<uint16_t>(32767u - x); }
inline float inverted(float x) { return 1.0f - x; }

template <class L>
void invert(int32_t n, typename L::Pixel* px, int32_t channel) {
  const Channels c = Channels::of(channel);
  forEachPixel(n, px, [c](typename L::Pixel& p) {
    if (c.red) p.red = inverted(p.red);
    if (c.green) p.green = inverted(p.green);
    if (c.blue) p.blue = inverted(p.blue);
  });
}

template <class L>
void invertMask(int32_t n, typename L::Pixel* px) {
  forEachPixel(n, px, [](typename L::Pixel& p) { p.mask = inverted(p.mask); });
}

template <class L>
void setMask(int32_t n, typename L::Pixel* px, typename L::Element value) {
  forEachPixel(n, px, [value](typename L::Pixel& p) { p.mask = value; });
}

template <class L>
void maskToImage(int32_t n, typename L::Pixel* px) {
  forEachPixel(n, px, [](typename L::Pixel& p) { p.blue = p.green = p.red = p.mask; });
}

template <class L>
void newPicture(int32_t n, typename L::Pixel* px, typename L::Element red,
                typename L::Element green, typename L::Element blue, typename L::Element mask) {
  const typename L::Pixel fill{blue, green, red, mask};
  forEachPixel(n, px, [&fill](typename L::Pixel& p) { p = fill; });
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
