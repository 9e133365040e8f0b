// The three pixel layouts and the walks that every whole-buffer export shares.
#pragma once

#include <cstdint>
#include <cstddef>
#include <cstring>
#include <type_traits>

#include "effects/effects.h"

namespace effects {

struct Layout32 {
  using Pixel = Pixel32;
  using Element = uint8_t;
  static constexpr Element full = 255;
};
struct Layout64 {
  using Pixel = Pixel64;
  using Element = uint16_t;
  static constexpr Element full = 32767;
};
struct Layout128 {
  using Pixel = Pixel128;
  using Element = float;
  static constexpr float full = 1.0f;
};

static_assert(sizeof(Pixel32) == 4 && sizeof(Pixel64) == 8 && sizeof(Pixel128) == 16,
              "pixels are four packed elements");

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
