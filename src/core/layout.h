// The pixel layouts and what each one states about itself: its element type,
// its full value, its unit (the factor that brings an element onto the 0..1
// scale, in double and in single precision), the unit of its strength
// arguments, and the type its elements are compared in. Families read these
// facts instead of testing which layout they were instantiated for.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "core/numeric.h"
#include "effects/effects.h"

namespace effects {

// Three bytes blue, green, red and no mask: one pixel of a 24-bit
// device-independent bitmap row (rows are padded to 4 bytes; see picture.h).
struct Pixel24 {
  uint8_t blue, green, red;
};

struct Layout32 {
  using Pixel = Pixel32;
  using Element = uint8_t;
  using Compare = int32_t;  // bytes compare as themselves
  static constexpr bool integer = true;
  static constexpr bool hasMask = true;
  static constexpr Element full = 255;
  static constexpr double unit = k255;
  static constexpr float unitf = k255f;
  static constexpr double amountUnit = k255;
};
struct Layout64 {
  using Pixel = Pixel64;
  using Element = uint16_t;
  // 15 bits in 16: where a family compares elements it reads them as signed
  // 16-bit values, so a stored value above 32767 counts as negative.
  using Compare = int16_t;
  static constexpr bool integer = true;
  static constexpr bool hasMask = true;
  static constexpr Element full = 32767;
  static constexpr double unit = k32767;
  static constexpr float unitf = k32767f;
  static constexpr double amountUnit = k32767;
};
struct Layout128 {
  using Pixel = Pixel128;
  using Element = float;
  using Compare = float;
  static constexpr bool integer = false;
  static constexpr bool hasMask = true;
  static constexpr float full = 1.0f;
  static constexpr double unit = 1.0;
  static constexpr float unitf = 1.0f;
  // Strength arguments of the float members are on the 0..255 scale, as
  // those of the 8-bit members are; the 16-bit members take 0..32767.
  static constexpr double amountUnit = k255;
};
// The device-context rows: the 8-bit arithmetic without a mask.
struct Layout24 {
  using Pixel = Pixel24;
  using Element = uint8_t;
  using Compare = int32_t;
  static constexpr bool integer = true;
  static constexpr bool hasMask = false;
  static constexpr Element full = 255;
  static constexpr double unit = k255;
  static constexpr float unitf = k255f;
  static constexpr double amountUnit = k255;
};

// The 3-channel buffers exchanged with the file codecs: red, green, blue (or
// blue, green, red where an export says so), packed without a mask.
template <class T>
struct Rgb {
  T red, green, blue;
};
template <class T>
struct Bgr {
  T blue, green, red;
};

static_assert(sizeof(Pixel32) == 4 && sizeof(Pixel64) == 8 && sizeof(Pixel128) == 16 &&
                  sizeof(Pixel24) == 3 && alignof(Pixel24) == 1 && sizeof(Rgb<uint8_t>) == 3 &&
                  sizeof(Rgb<uint16_t>) == 6 && sizeof(Rgb<float>) == 12,
              "pixels are packed elements");

// The layout of a pixel type (const or not).
template <class P> struct LayoutOfPixel;
template <> struct LayoutOfPixel<Pixel32> { using Type = Layout32; };
template <> struct LayoutOfPixel<Pixel64> { using Type = Layout64; };
template <> struct LayoutOfPixel<Pixel128> { using Type = Layout128; };
template <> struct LayoutOfPixel<Pixel24> { using Type = Layout24; };
template <class P>
using LayoutOf = typename LayoutOfPixel<std::remove_const_t<P>>::Type;

// An element read the way its layout compares it (signed 16-bit for Pixel64).
template <class L>
constexpr typename L::Compare compared(typename L::Element e) {
  return static_cast<typename L::Compare>(e);
}

// The integer layouts' full value as an int32_t, for integer arithmetic.
template <class L>
inline constexpr int32_t fullInt = static_cast<int32_t>(L::full);

// Truncate toward zero, then clamp to 0..full: the store of the filters and
// warps in the integer layouts. NaN and values beyond 32 bits truncate to the
// most negative integer (the processor's answer) and so clamp to 0. The float
// layout has no such step; each family states what it does there.
template <class L>
inline typename L::Element truncClamp(double v) {
  static_assert(L::integer, "the float layout stores its values unrounded");
  return static_cast<typename L::Element>(clampTo(truncToInt32(v), 0, fullInt<L>));
}
// Clamp an integer to 0..full and store it.
template <class L>
inline typename L::Element clampStore(int64_t v) {
  static_assert(L::integer, "the float layout does not clamp");
  return static_cast<typename L::Element>(v < 0 ? 0 : (v > fullInt<L> ? fullInt<L> : v));
}

// Element i (0 blue, 1 green, 2 red, 3 mask) of a pixel, chosen at run time
// or, with element<I>(p), at compile time.
template <class P>
inline auto& element(P& p, unsigned i) {
  switch (i & 3u) {
    case 0: return p.blue;
    case 1: return p.green;
    case 2: return p.red;
    default: return p.mask;
  }
}
template <unsigned I, class P>
inline auto& element(P& p) {
  static_assert(I < 4);
  if constexpr (I == 0) return (p.blue);
  else if constexpr (I == 1) return (p.green);
  else if constexpr (I == 2) return (p.red);
  else return (p.mask);
}

// Whether a ChannelSelector touches red, green, blue: 1 all three, 2 red,
// 3 green, 4 blue, anything else none.
struct Channels {
  bool red, green, blue;
  static constexpr Channels of(int32_t selector) {
    return {selector == 1 || selector == 2, selector == 1 || selector == 3,
            selector == 1 || selector == 4};
  }
  constexpr bool any() const { return red || green || blue; }
};

// A colour passed as one 32-bit argument: red in bits 0-7, green in 8-15,
// blue in 16-23 (the top byte is ignored).
struct PackedColour {
  int32_t red, green, blue;
  static constexpr PackedColour of(uint32_t c) {
    return {static_cast<int32_t>(c & 0xFFu), static_cast<int32_t>((c >> 8) & 0xFFu),
            static_cast<int32_t>((c >> 16) & 0xFFu)};
  }
};

}  // namespace effects
