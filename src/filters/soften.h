// The 3x3 soften: cascaded pair averages over a pixel and its eight
// neighbours, read from the picture as it was at entry. It serves the soften
// and mask soften exports, the spread of blooming, and (on 24-bit rows,
// Picture<Pixel24>) the device-context soften.
//
// The nine cases of the soften (corners, sides, interior, tested in the
// order top-left, bottom-left, top-right, bottom-right, left, right, top,
// bottom, interior) all factor into a horizontal average per row and a
// vertical combination of rows:
//   h(row, x) = avg(avg(row[x-1], row[x+1]), row[x])  inside the row,
//               avg(row[1], row[0])                    in column 0,
//               avg(row[x-1], row[x])                  in the last column;
//   result    = avg(h(y), avg(h(y-1), h(y+1)))         inside,
//               avg(h(0), h(1))                        on row 0,
//               avg(h(y), h(y-1))                      on the last row.
// Column 0 wins over the last column and row 0 over the last row, as the
// case order has it. A one-pixel-wide or one-row picture has no column 1 or
// row 1: the read is pulled back onto the picture's last column or row
// (that is, onto the pixel itself), so nothing outside the picture is read.
// The pair average is symmetric, so the order of its arguments is free.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "filters/neighbourhood.h"
#include "filters/simd.h"

namespace effects::filters {

namespace softening {

// Average of the elements i of two pixels, for the elements W writes.
template <class P, Which W>
inline void averageInto(P& out, const P& a, const P& b) {
  using L = LayoutOf<P>;
  auto* o = elementsOf(&out);
  const auto* ea = elementsOf(&a);
  const auto* eb = elementsOf(&b);
  for (unsigned i = 0; i < kElements<P>; ++i)
    if (writes<P, W>(i)) o[i] = pairAverage<L>(ea[i], eb[i]);
}

// The horizontal averages h(row, x) of one row (plain form).
template <class P, Which W>
inline void horizontalPlain(const P* row, P* h, int32_t width) {
  if (width == 1) {
    averageInto<P, W>(h[0], row[0], row[0]);
    return;
  }
  averageInto<P, W>(h[0], row[1], row[0]);
  for (int32_t x = 1; x < width - 1; ++x) {
    P t;
    averageInto<P, W>(t, row[x - 1], row[x + 1]);
    averageInto<P, W>(h[x], t, row[x]);
  }
  averageInto<P, W>(h[width - 1], row[width - 2], row[width - 1]);
}

// Row y of the result from the horizontal averages of rows y-1, y, y+1
// (up is unused on row 0, down on the last row); elements W does not write
// keep the values already in `out`. Returns whether any written element
// changed. Plain form.
template <class P, Which W>
inline bool verticalPlain(P* out, const P* up, const P* mid, const P* down, int32_t width, bool first, bool last) {
  bool changed = false;
  for (int32_t x = 0; x < width; ++x) {
    P r = out[x];
    if (first) {
      averageInto<P, W>(r, mid[x], down[x]);
    } else if (last) {
      averageInto<P, W>(r, mid[x], up[x]);
    } else {
      P t;
      averageInto<P, W>(t, up[x], down[x]);
      averageInto<P, W>(r, mid[x], t);
    }
    const auto* a = elementsOf(&r);
    auto* b = elementsOf(&out[x]);
    for (unsigned i = 0; i < kElements<P>; ++i)
      if (writes<P, W>(i) && !sameElement(a[i], b[i])) {
        changed = true;
        b[i] = a[i];
      }
  }
  return changed;
}

#if defined(__SSE2__)
// The same two steps a vector of elements at a time. Inside a row every
// element is averaged with the same element of the pixels either side, so
// the row is one run of elements; the horizontal averages of the elements W
// does not write are computed too (nobody reads them) and the vertical step
// keeps those elements of the picture as they were.
template <class P, Which W>
inline void horizontalFast(const P* row, P* h, int32_t width) {
  using L = LayoutOf<P>;
  using E = ElementOf<P>;
  using O = simd::Lanes<E>;
  constexpr int32_t S = kElements<P>;
  if (width < 3) return horizontalPlain<P, W>(row, h, width);
  const E* r = elementsOf(row);
  E* o = elementsOf(h);
  // The elements of columns 1 .. width - 2, counted in ptrdiff_t: a row has
  // up to INT32_MAX pixels, and so more elements than int32_t holds.
  const ptrdiff_t end = static_cast<ptrdiff_t>(width - 1) * S;
  ptrdiff_t i = S;
  for (; i + O::kCount <= end; i += O::kCount)
    O::store(o + i, O::average(O::average(O::load(r + i - S), O::load(r + i + S)), O::load(r + i)));
  for (; i < end; ++i) o[i] = pairAverage<L>(pairAverage<L>(r[i - S], r[i + S]), r[i]);
  averageInto<P, W>(h[0], row[1], row[0]);
  averageInto<P, W>(h[width - 1], row[width - 2], row[width - 1]);
}

template <class P, Which W>
inline bool verticalFast(P* out, const P* up, const P* mid, const P* down, int32_t width, bool first, bool last) {
  using L = LayoutOf<P>;
  using E = ElementOf<P>;
  using O = simd::Lanes<E>;
  constexpr int32_t S = kElements<P>;
  // Vectors start on pixel boundaries where S is 4; a 24-bit row writes
  // every element, so there the lanes need not line up with pixels.
  const __m128i mask = simd::elementMask<E>(S, &writes<P, W>);
  E* o = elementsOf(out);
  const E* u = up ? elementsOf(up) : nullptr;
  const E* m = elementsOf(mid);
  const E* d = elementsOf(down);
  const ptrdiff_t end = static_cast<ptrdiff_t>(width) * S;  // past INT32_MAX on the widest rows
  bool changed = false;
  ptrdiff_t i = 0;
  for (; i + O::kCount <= end; i += O::kCount) {
    const auto mv = O::load(m + i);
    const auto r = first ? O::average(mv, O::load(d + i))
                 : last  ? O::average(mv, O::load(u + i))
                         : O::average(mv, O::average(O::load(u + i), O::load(d + i)));
    const auto old = O::load(o + i);
    changed |= simd::anyDiffers<E>(mask, r, old);
    O::store(o + i, simd::select<E>(mask, r, old));
  }
  for (; i < end; ++i) {
    if (!writes<P, W>(static_cast<unsigned>(i % S))) continue;
    const E v = first ? pairAverage<L>(m[i], d[i])
              : last  ? pairAverage<L>(m[i], u[i])
                      : pairAverage<L>(m[i], pairAverage<L>(u[i], d[i]));
    changed |= !sameElement(v, o[i]);
    o[i] = v;
  }
  return changed;
}
#endif

// The fast forms where there are any, the plain ones otherwise.
template <class P, Which W, bool Fast>
inline void horizontal(const P* row, P* h, int32_t width) {
#if defined(__SSE2__)
  if constexpr (Fast) return horizontalFast<P, W>(row, h, width);
#endif
  horizontalPlain<P, W>(row, h, width);
}
template <class P, Which W, bool Fast>
inline bool vertical(P* out, const P* up, const P* mid, const P* down, int32_t width, bool first, bool last) {
#if defined(__SSE2__)
  if constexpr (Fast) return verticalFast<P, W>(out, up, mid, down, width, first, last);
#endif
  return verticalPlain<P, W>(out, up, mid, down, width, first, last);
}

}  // namespace softening

// Softens `pic` in place (elements W only; the others keep their values),
// with the vector forms where the build has them (Fast) or the plain ones,
// reading the picture as it was at entry: the horizontal averages of a row
// are taken before the row is rewritten and kept for the rows after it.
// Returns false (nothing changed) when the three rows of averages cannot be
// had from scratch `slot`; sets *changed when an element changed.
template <Which W, class P, bool Fast = true>
bool soften(const Picture<P>& pic, ScratchSlot slot, bool* changed = nullptr) {
  using namespace softening;
  if (pic.empty()) return true;
  const int32_t w = pic.width(), h = pic.height();
  const Picture<P> hs = scratchPicture<P>(w, 3, slot);
  if (hs.empty()) return false;
  auto hrow = [&hs](int32_t y) { return hs.row(y % 3); };
  bool any = false;
  horizontal<P, W, Fast>(pic.row(0), hrow(0), w);
  if (h > 1) horizontal<P, W, Fast>(pic.row(1), hrow(1), w);
  for (int32_t y = 0; y < h; ++y) {
    if (y > 0 && y + 1 < h) horizontal<P, W, Fast>(pic.row(y + 1), hrow(y + 1), w);
    const P* up = y > 0 ? hrow(y - 1) : nullptr;
    const P* down = hrow(y + 1 < h ? y + 1 : h - 1);
    any |= vertical<P, W, Fast>(pic.row(y), up, hrow(y), down, w, y == 0, y == h - 1);
  }
  if (changed) *changed = any;
  return true;
}

}  // namespace effects::filters
