// Bitmaps for the tests of the exports on (device context, bitmap) pairs:
// test surfaces holding given pictures (on Windows DIB sections and
// device-dependent bitmaps, both real GDI), and the 24-bit bottom-up rows GDI
// exchanges for them.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/test_surface.h"

namespace effects::test {

// A picture as the surfaces hold it, top row first: blue in the low byte,
// then green, red and the fourth byte.
using Words = std::vector<uint32_t>;

inline Words randomWords(size_t n, uint32_t seed) {
  Words v(n);
  uint32_t s = seed * 2654435761u + 7u;
  for (auto& w : v) {
    s = s * 1103515245u + 12345u;
    w = (s >> 8) ^ (s << 16);
  }
  return v;
}
inline uint32_t word(uint8_t blue, uint8_t green, uint8_t red) { return blue | green << 8 | uint32_t(red) << 16; }
// Without the fourth bytes, which a 24-bit write sets to 0.
inline Words coloursOf(Words v) {
  for (auto& w : v) w &= 0xFFFFFFu;
  return v;
}

inline const TestSurface::Kind kSurfaceKinds[] = {TestSurface::Kind::Section, TestSurface::Kind::DeviceDependent};

inline std::unique_ptr<TestSurface> surfaceOf(int32_t w, int32_t h, const Words& words,
                                              TestSurface::Kind kind = TestSurface::Kind::Section) {
  auto s = std::make_unique<TestSurface>(w, h, 0u, kind);
  s->setAll(words.data());
  return s;
}
inline Words wordsOf(TestSurface& s) {
  Words v;
  for (int32_t y = 0; y < s.height(); ++y)
    for (int32_t x = 0; x < s.width(); ++x) v.push_back(s.at(x, y));
  return v;
}

inline size_t stride24(int32_t w) { return (size_t(w) * 3u + 3u) & ~size_t{3}; }
// Byte i of pixel (x, y) in 24-bit rows, bottom row first.
inline size_t at24(int32_t w, int32_t h, int32_t x, int32_t y) { return size_t(h - 1 - y) * stride24(w) + size_t(x) * 3u; }

inline std::vector<uint8_t> rows24(int32_t w, int32_t h, const Words& words, uint8_t pad = 0) {
  std::vector<uint8_t> rows(stride24(w) * size_t(h), pad);
  for (int32_t y = 0; y < h; ++y)
    for (int32_t x = 0; x < w; ++x)
      for (int i = 0; i < 3; ++i) rows[at24(w, h, x, y) + size_t(i)] = uint8_t(words[size_t(y * w + x)] >> (8 * i));
  return rows;
}
inline Words fromRows24(int32_t w, int32_t h, const std::vector<uint8_t>& rows) {
  Words v;
  for (int32_t y = 0; y < h; ++y)
    for (int32_t x = 0; x < w; ++x) {
      const uint8_t* p = &rows[at24(w, h, x, y)];
      v.push_back(word(p[0], p[1], p[2]));
    }
  return v;
}

// The pixels of a picture as Pixel32 and back (colours only), for the buffer
// exports the bitmap exports are compared with.
inline std::vector<Pixel32> pixelsOf(const Words& words) {
  std::vector<Pixel32> px;
  for (uint32_t w : words) px.push_back({uint8_t(w), uint8_t(w >> 8), uint8_t(w >> 16), uint8_t(w >> 24)});
  return px;
}
inline Words coloursOf(const std::vector<Pixel32>& px) {
  Words v;
  for (const auto& p : px) v.push_back(word(p.blue, p.green, p.red));
  return v;
}

}  // namespace effects::test
