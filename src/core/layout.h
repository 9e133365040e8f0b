// The three pixel layouts and the walks that every whole-buffer export shares.
#pragma once

#include <cstdint>
#include <cstddef>
#include <cstring>
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
};
struct Layout128 {
  using Pixel = Pixel128;
  using Element = float;
  using Compare = float;
  static constexpr bool integer = false;
  static constexpr bool hasMask = true;
  static constexpr float full = 1.0f;
  static constexpr double unit = 1.0;
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
};

static_assert(sizeof(Pixel32) == 4 && sizeof(Pixel64) == 8 && sizeof(Pixel128) == 16 &&
                  sizeof(Pixel24) == 3 && alignof(Pixel24) == 1,
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


// Element i (0 blue, 1 green, 2 red, 3 mask) of a pixel.
template <class P>
inline auto& element(P& p, unsigned i) {
  switch (i & 3u) {
    case 0: return p.blue;
    case 1: return p.green;
    case 2: return p.red;
    default: return p.mask;
  }
}

// Pixels visited for an element count: ((count - 1) >> 2) + 1 with an
// unsigned shift, so a count that is not a multiple of 4 covers the whole last
// pixel. Only meaningful for count >= 1; callers return before that.
inline uint32_t pixelsFor(int32_t elementCount) {
  return (static_cast<uint32_t>(elementCount - 1) >> 2) + 1u;
}

// Element count of a width x height picture, computed in 32-bit arithmetic
// (wrapping) and read as signed, as the size convention of the width/height
// exports does.
inline int32_t elementsOf(uint32_t width, uint32_t height) {
  return static_cast<int32_t>(width * 4u * height);
}

// Visits every pixel of an ElementCount buffer in order; nothing happens for a
// count below 1.
template <class P, class F>
inline void forEachPixel(int32_t elementCount, P* pixels, F&& f) {
  if (elementCount < 1) return;
  const uint32_t n = pixelsFor(elementCount);
  for (uint32_t i = 0; i < n; ++i) f(pixels[i]);
}

// Visits the pixels of a width x height picture given by its rows (rows of
// width pixels, packed), passing each pixel's index. A width or height below
// 1 visits nothing.
template <class F>
inline void forEachRowIndex(int32_t width, int32_t height, F&& f) {
  if (width < 1 || height < 1) return;
  const size_t w = static_cast<size_t>(width), h = static_cast<size_t>(height);
  for (size_t y = 0; y < h; ++y) {
    const size_t row = y * w;
    for (size_t x = 0; x < w; ++x) f(row + x);
  }
}

template <class P, class F>
inline void forEachRowPixel(int32_t width, int32_t height, P* pixels, F&& f) {
  forEachRowIndex(width, height, [pixels, &f](size_t i) { f(pixels[i]); });
}

// Which layout a template is instantiated for.
template <class L>
inline constexpr bool is32 = std::is_same_v<L, Layout32>;
template <class L>
inline constexpr bool is64 = std::is_same_v<L, Layout64>;
template <class L>
inline constexpr bool is128 = std::is_same_v<L, Layout128>;

// Visits pixel i of two buffers together (a source and a destination of
// possibly different layouts, or a picture and its encoded form), for the
// pixels of an ElementCount; nothing happens for a count below 1.
template <class A, class B, class F>
inline void forEachPixelPair(int32_t elementCount, A* a, B* b, F&& f) {
  if (elementCount < 1) return;
  const uint32_t n = pixelsFor(elementCount);
  for (uint32_t i = 0; i < n; ++i) f(a[i], b[i]);
}

// Visits each pixel's index for an ElementCount (for buffers whose pixels are
// not pixel structures, such as RGBE quadruples).
template <class F>
inline void forEachPixelIndex(int32_t elementCount, F&& f) {
  if (elementCount < 1) return;
  const uint32_t n = pixelsFor(elementCount);
  for (uint32_t i = 0; i < n; ++i) f(i);
}

// Whether a ChannelSelector touches red, green, blue.
struct Channels {
  bool red, green, blue;
  static constexpr Channels of(int32_t selector) {
    return {selector == 1 || selector == 2, selector == 1 || selector == 3,
            selector == 1 || selector == 4};
  }
};

}  // namespace effects
