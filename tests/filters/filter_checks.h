// Shared by the filter tests: every filter export as a table row, and
// picture helpers.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "effects/effects.h"
#include "support/pictures.h"

namespace effects::test {

// Which elements an export may change.
enum Changes : unsigned { kColour = 7u, kMask = 8u, kAll = 15u };

// One export with fixed parameters, run on a width x height picture of its
// layout. `scratch` says whether it needs scratch memory (and so must change
// nothing when it cannot have it).
struct FilterCase {
  std::string name;
  int layout;  // 32, 64, 128
  unsigned changes;
  bool scratch;
  std::function<void(int32_t width, int32_t height, void* pixels)> run;
};

#define FILTER3(name, changes, scratch, ...)                                                                        \
  FilterCase{#name "32", 32, changes, scratch, [](int32_t w, int32_t h, void* p) { name##32(w, h, static_cast<Pixel32*>(p) __VA_ARGS__); }},  \
  FilterCase{#name "64", 64, changes, scratch, [](int32_t w, int32_t h, void* p) { name##64(w, h, static_cast<Pixel64*>(p) __VA_ARGS__); }},  \
  FilterCase{#name "128", 128, changes, scratch, [](int32_t w, int32_t h, void* p) { name##128(w, h, static_cast<Pixel128*>(p) __VA_ARGS__); }}
#define MORPH3(name, changes)                                                                                      \
  FilterCase{#name "32", 32, changes, true, [](int32_t w, int32_t h, void* p) { name##32(uint32_t(w), uint32_t(h), static_cast<Pixel32*>(p)); }},  \
  FilterCase{#name "64", 64, changes, true, [](int32_t w, int32_t h, void* p) { name##64(uint32_t(w), uint32_t(h), static_cast<Pixel64*>(p)); }},  \
  FilterCase{#name "128", 128, changes, true, [](int32_t w, int32_t h, void* p) { name##128(uint32_t(w), uint32_t(h), static_cast<Pixel128*>(p)); }}

// Every filter export, with parameters that make it change something on a
// varied picture (and reach its edge cases on small ones).
inline std::vector<FilterCase> allFilters() {
  return {
      FILTER3(VexoPostBlur, kAll, true), FILTER3(VexoPostBlurMask, kMask, true),
      FilterCase{"VexoGlowBlur32", 32, kColour, true, [](int32_t w, int32_t h, void* p) { VexoGlowBlur32(w, h, static_cast<Pixel32*>(p)); }},
      FilterCase{"VexoGlowBlur64", 64, kColour, true, [](int32_t w, int32_t h, void* p) { VexoGlowBlur64(w, h, static_cast<Pixel64*>(p)); }},
      FilterCase{"VexoGlowBlur128", 128, kColour, false, [](int32_t w, int32_t h, void* p) { VexoGlowBlur128(w, h, static_cast<Pixel128*>(p)); }},
      FilterCase{"VexoMatteBlur32", 32, kColour, true, [](int32_t w, int32_t h, void* p) { VexoMatteBlur32(w, h, static_cast<Pixel32*>(p), 4, 0, 0); }},
      FilterCase{"VexoMatteBlur64", 64, kColour, true, [](int32_t w, int32_t h, void* p) { VexoMatteBlur64(w, h, static_cast<Pixel64*>(p), 4, 0, 0); }},
      FilterCase{"VexoMatteBlur128", 128, kColour, false, [](int32_t w, int32_t h, void* p) { VexoMatteBlur128(w, h, static_cast<Pixel128*>(p), 4, 0, 0); }},
      FilterCase{"VexoMatteBlur32/threshold", 32, kColour, true, [](int32_t w, int32_t h, void* p) { VexoMatteBlur32(w, h, static_cast<Pixel32*>(p), 3, 60, 1); }},
      FilterCase{"VexoMatteBlur64/threshold", 64, kColour, true, [](int32_t w, int32_t h, void* p) { VexoMatteBlur64(w, h, static_cast<Pixel64*>(p), 3, 8000, 1); }},
      FilterCase{"VexoMatteBlur128/threshold", 128, kColour, true, [](int32_t w, int32_t h, void* p) { VexoMatteBlur128(w, h, static_cast<Pixel128*>(p), 3, 0, 1); }},
      FILTER3(VexoMotionBlur, kAll, true, , 30.0, 3), FILTER3(VexoMotionBlur, kAll, true, , -200.0, 2),
      FILTER3(VexoZoomBlur, kAll, true, , 6), FILTER3(VexoRadialBlur, kAll, true, , 4),
      FILTER3(VexoBlooming, kColour, true, , 2),
      FILTER3(VexoSharpen, kColour, false, , 1.5), FILTER3(VexoSharpenMask, kMask, false, , -0.75),
      FILTER3(VexoUnsharpMask, kColour, true, , 2, 1.25),
      FILTER3(VexoEmboss, kColour, false, , 3),
      FILTER3(VexoFindEdges, kColour, false, , 1, 1), FILTER3(VexoFindEdges, kColour, false, , 2, -2),
      FILTER3(VexoNeon, kColour, false, , 0, 2), FILTER3(VexoNeon, kColour, false, , 3, 40),
      FILTER3(VexoLining, kColour, false, , 2, -3, 5),
      MORPH3(VexoDilater, kColour), MORPH3(VexoDilaterMask, kMask), MORPH3(VexoEroder, kColour),
      MORPH3(VexoEroderMask, kMask), MORPH3(VexoCContour, kColour),
  };
}

// A picture of the layout's pixels as raw storage of exactly w x h pixels.
struct AnyPicture {
  int layout;
  std::vector<Pixel32> p32;
  std::vector<Pixel64> p64;
  std::vector<Pixel128> p128;
  AnyPicture(int layout, size_t n, uint32_t seed) : layout(layout) {
    if (layout == 32) p32 = pattern<Pixel32>(n, seed);
    if (layout == 64) p64 = pattern<Pixel64>(n, seed);
    if (layout == 128) p128 = pattern<Pixel128>(n, seed);
  }
  void* data() { return layout == 32 ? static_cast<void*>(p32.data()) : layout == 64 ? static_cast<void*>(p64.data()) : static_cast<void*>(p128.data()); }
  bool operator==(const AnyPicture& o) const {
    return layout == o.layout && (layout == 32 ? sameBytes(p32, o.p32) : layout == 64 ? sameBytes(p64, o.p64) : sameBytes(p128, o.p128));
  }
  // Whether element i of some pixel differs from `o`.
  bool elementChanged(const AnyPicture& o, unsigned i) const {
    auto differs = [i](const auto& a, const auto& b) {
      for (size_t k = 0; k < a.size(); ++k) {
        const auto* x = &a[k].blue;
        const auto* y = &b[k].blue;
        if (std::memcmp(x + i, y + i, sizeof *x) != 0) return true;
      }
      return false;
    };
    return differs(p32, o.p32) || differs(p64, o.p64) || differs(p128, o.p128);
  }
};

}  // namespace effects::test
