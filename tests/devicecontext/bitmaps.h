// Bitmaps for the tests of the exports on (device context, bitmap) pairs:
// test surfaces (real GDI on Windows, DIB sections and device-dependent
// bitmaps alike; the stand-in elsewhere) filled with given pictures, and the
// 24-bit bottom-up rows GDI exchanges for them.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/test_surface.h"

namespace effects::test {

// A picture as the surfaces hold it: top row first, one word a pixel, blue in
// the low byte, then green, red and the fourth byte.
using Words = std::vector<uint32_t>;

inline Words randomWords(size_t n, uint32_t seed) {
  Words v(n);
  uint32_t s = seed * 2654435761u + 7u;
  for (auto& w : v) {
    s = s * 1103515245u + 12345u;
    const uint32_t lo = s >> 8;
    s = s * 1103515245u + 12345u;
    w = (lo & 0xFFFFFFu) | ((s >> 16) << 24);
  }
  return v;
}

inline uint32_t colourOf(uint32_t word) { return word & 0xFFFFFFu; }
inline uint32_t word(uint8_t blue, uint8_t green, uint8_t red) {
  return uint32_t{blue} | (uint32_t{green} << 8) | (uint32_t{red} << 16);
}

inline const TestSurface::Kind kSurfaceKinds[] = {TestSurface::Kind::Section, TestSurface::Kind::DeviceDependent};

inline std::unique_ptr<TestSurface> surfaceOf(int32_t width, int32_t height, const Words& words,
                                              TestSurface::Kind kind = TestSurface::Kind::Section) {
  auto s = std::make_unique<TestSurface>(width, height, 0u, kind);
  s->setAll(words.data());
  return s;
}

inline Words wordsOf(TestSurface& s) {
  Words v;
  for (int32_t y = 0; y < s.height(); ++y)
    for (int32_t x = 0; x < s.width(); ++x) v.push_back(s.at(x, y));
  return v;
}

// Without the fourth bytes, which a 24-bit write sets to 0.
inline Words coloursOf(const Words& words) {
  Words v(words);
  for (auto& w : v) w = colourOf(w);
  return v;
}

inline size_t stride24(int32_t width) { return (size_t(width) * 3u + 3u) & ~size_t{3}; }

// The 24-bit rows of a picture, bottom row first, padding bytes `pad`.
inline std::vector<uint8_t> rows24(int32_t width, int32_t height, const Words& words, uint8_t pad = 0) {
  std::vector<uint8_t> rows(stride24(width) * size_t(height), pad);
  for (int32_t y = 0; y < height; ++y)
    for (int32_t x = 0; x < width; ++x) {
      const uint32_t w = words[size_t(y) * size_t(width) + size_t(x)];
      uint8_t* p = &rows[size_t(height - 1 - y) * stride24(width) + size_t(x) * 3u];
      p[0] = uint8_t(w), p[1] = uint8_t(w >> 8), p[2] = uint8_t(w >> 16);
    }
  return rows;
}

inline Words fromRows24(int32_t width, int32_t height, const std::vector<uint8_t>& rows) {
  Words v(size_t(width) * size_t(height));
  for (int32_t y = 0; y < height; ++y)
    for (int32_t x = 0; x < width; ++x) {
      const uint8_t* p = &rows[size_t(height - 1 - y) * stride24(width) + size_t(x) * 3u];
      v[size_t(y) * size_t(width) + size_t(x)] = word(p[0], p[1], p[2]);
    }
  return v;
}

}  // namespace effects::test
