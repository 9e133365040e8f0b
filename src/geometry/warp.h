// The backward-mapping walk of the warps.
//
// A warp is a mapping and this one walk. For every destination pixel the
// mapping gives a source position, already truncated toward zero; the walk
// clamps it into the picture (so positions off the picture repeat the edge
// pixels) and copies the elements the warp writes from a snapshot of the
// picture taken at entry. Elements a warp does not write keep the picture's
// values, exactly as if the warp had written into a copy of the picture and
// copied it back.
//
// A mapping is any object with
//     Source operator()(int32_t x, int32_t y) const
// that depends only on the picture's width and height, never on its pixels,
// so the same mapping runs over every pixel type, the 24-bit device-context
// rows included. A mapping whose column depends only on x and whose row only
// on y may say so (`static constexpr bool separable = true` with
// `column(x)` and `row(y)`); the walk then works each out once per column
// and once per row.
#pragma once

#include <concepts>
#include <cstdint>
#include <type_traits>

#include "core/picture.h"
#include "core/scratch.h"

namespace effects::geometry {

// A source position before clamping. 64-bit, so that a mapping can add its
// centre to the most negative integer (what truncation gives for NaN)
// without overflow; the clamp then takes it to 0.
struct Source {
  int64_t column, row;
};

// Which elements a warp copies from the source position: blue, green and red
// only, or the mask as well.
enum class Writes { Colour, ColourAndMask };

template <Writes W, class P>
inline void copyElements(P& to, const P& from) {
  if constexpr (W == Writes::ColourAndMask) {
    static_assert(LayoutOf<P>::hasMask, "a picture without a mask has only its colour to write");
    to = from;
  } else if constexpr (LayoutOf<P>::hasMask) {
    to.blue = from.blue;
    to.green = from.green;
    to.red = from.red;
  } else {
    to = from;
  }
}

template <class Map>
concept SeparableMapping = requires(const Map& m) {
  requires Map::separable;
  { m.column(int32_t{}) } -> std::same_as<int64_t>;
  { m.row(int32_t{}) } -> std::same_as<int64_t>;
};

inline int32_t clampIndex(int64_t v, int32_t last) {
  return static_cast<int32_t>(v < 0 ? 0 : (v > last ? last : v));
}

// Runs `map` over `pic`. Nothing changes for an empty picture or when the
// snapshot cannot be had. Uses scratch slots First (the snapshot) and, for a
// separable mapping, Second (its column and row indices).
template <Writes W, class P, class Map>
void warp(const Picture<P>& pic, const Map& map) {
  static_assert(!std::is_const_v<P>);
  if (pic.empty()) return;
  const Picture<P> from = scratchCopy(pic, ScratchSlot::First);
  if (from.empty()) return;
  const int32_t w = pic.width(), h = pic.height();
  if constexpr (SeparableMapping<Map>) {
    auto* index = static_cast<int32_t*>(
        scratchBytes((static_cast<size_t>(w) + static_cast<size_t>(h)) * sizeof(int32_t), ScratchSlot::Second));
    if (index == nullptr) return;
    int32_t* columns = index;
    int32_t* rows = index + w;
    for (int32_t x = 0; x < w; ++x) columns[x] = clampIndex(map.column(x), w - 1);
    for (int32_t y = 0; y < h; ++y) rows[y] = clampIndex(map.row(y), h - 1);
    forEachRow(pic, [&](P* to, int32_t y) {
      const P* source = from.row(rows[y]);
      for (int32_t x = 0; x < w; ++x) copyElements<W>(to[x], source[columns[x]]);
    });
  } else {
    forEachXY(pic, [&](P& to, int32_t x, int32_t y) {
      const Source s = map(x, y);
      copyElements<W>(to, from.at(clampIndex(s.column, w - 1), clampIndex(s.row, h - 1)));
    });
  }
}

// The warp with or without the mask, chosen once per call: the mask is
// written only when `includeMask` is exactly 1.
template <class P, class Map>
void warpWithMask(const Picture<P>& pic, const Map& map, int32_t includeMask) {
  if (includeMask == 1)
    warp<Writes::ColourAndMask>(pic, map);
  else
    warp<Writes::Colour>(pic, map);
}

}  // namespace effects::geometry
