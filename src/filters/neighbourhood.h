// What the neighbourhood filters share: the edge rule, the two ways a filter
// reads its neighbours, the brightness measure and the pair average of each
// layout, and box sums (a plain reference, and the exact sliding forms of the
// integer layouts).
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "core/layout.h"
#include "core/picture.h"
#include "core/scratch.h"

namespace effects::filters {

// ------------------------------------------------------------------ elements

template <class P>
using ElementOf = typename LayoutOf<P>::Element;

// Elements in a pixel: 4, or 3 for the 24-bit device-context rows.
template <class P>
inline constexpr unsigned kElements = sizeof(P) / sizeof(ElementOf<P>);

// A pixel (or a row of them) as its run of elements.
template <class P>
inline auto* elementsOf(P* p) {
  using E = std::conditional_t<std::is_const_v<P>, const ElementOf<P>, ElementOf<P>>;
  return reinterpret_cast<E*>(p);
}

// Which elements a filter computes and writes. Pixel24 has no mask, so there
// All means blue, green and red.
enum class Which { Colour, Mask, All };

template <class P, Which W>
constexpr bool writes(unsigned element) {
  static_assert(W != Which::Mask || LayoutOf<P>::hasMask, "this layout has no mask");
  if constexpr (W == Which::Mask) return element == 3;
  else if constexpr (W == Which::Colour) return element < 3;
  else return element < kElements<P>;
}

// Element-wise equality, floats bit for bit.
template <class E>
inline bool sameElement(E a, E b) {
  if constexpr (std::is_floating_point_v<E>) return std::memcmp(&a, &b, sizeof a) == 0;
  else return a == b;
}

// ----------------------------------------------------------------- edge rule
//
// A step d from p (0 <= p < n) in one dimension lands on p + d. Past the far
// edge it is pulled back to n - 1; before the near edge (a negative
// coordinate) there is no pixel, and the filter takes the centre pixel
// itself for that sample. edgeStep gives -1 there.
inline int32_t edgeStep(int32_t p, int32_t d, int32_t n) {
  if (d > n - 1 - p) return n - 1;
  return d < -p ? -1 : p + d;
}

// The pixel that the step (dx, dy) from (x, y) reads under the edge rule.
template <class P>
inline P& sampleAt(const Picture<P>& pic, int32_t x, int32_t y, int32_t dx, int32_t dy) {
  const int32_t sx = edgeStep(x, dx, pic.width()), sy = edgeStep(y, dy, pic.height());
  return (sx < 0 || sy < 0) ? pic.at(x, y) : pic.at(sx, sy);
}

// ------------------------------------------------------------- reading kinds
//
// Every filter reads its neighbours in one of two ways, and names it at the
// call:
//
//  - From the entry picture: every read sees the picture as it was when the
//    call began. The results are kept aside (in a scratch picture, or in the
//    few rows a row-by-row walk still needs) until no read can meet them:
//    `fromEntryIntoScratch`, `EntryRows`.
//  - Feed-forward: the filter rewrites the caller's picture in place in
//    raster order, and a read above or to the left of the pixel sees what the
//    walk has already written there; the smear this gives is part of those
//    effects: `feedForward`.

// Feed-forward: f(pixel, x, y) computes pixel (x, y) reading `pic` itself and
// writes it before the walk moves on, row 0 first, left to right.
template <class P, class F>
inline void feedForward(const Picture<P>& pic, F&& f) {
  forEachXY(pic, static_cast<F&&>(f));
}

// Feed-forward over the pixels at least `margin` from every edge, in raster
// order: f(pixel, x, y).
template <class P, class F>
inline void feedForwardInterior(const Picture<P>& pic, int32_t margin, F&& f) {
  forEachInterior(pic, margin, static_cast<F&&>(f));
}

// From the entry picture through a scratch output: f(entry, x, y) returns
// pixel (x, y) computed from `entry`, the untouched picture; the results are
// copied over the picture at the end. False (and nothing changed) when the
// scratch picture cannot be had.
template <class P, class F>
inline bool fromEntryIntoScratch(const Picture<P>& pic, ScratchSlot slot, F&& f) {
  if (pic.empty()) return true;
  const Picture<P> out = scratchPicture<P>(pic.width(), pic.height(), slot);
  if (out.empty()) return false;
  const Picture<const P> entry = pic;
  for (int32_t y = 0; y < pic.height(); ++y) {
    P* o = out.row(y);
    for (int32_t x = 0; x < pic.width(); ++x) o[x] = f(entry, x, y);
  }
  for (int32_t y = 0; y < pic.height(); ++y)
    std::memcpy(pic.row(y), out.row(y), static_cast<size_t>(pic.width()) * sizeof(P));
  return true;
}

// From the entry picture, for a walk that rewrites the picture row by row,
// row 0 first: keeps the entry values of the current row and of the `above`
// rows before it, while the rows below the current one are still untouched in
// the picture itself. So a filter that reads `above` rows up and any number
// of rows down reads the entry picture without a copy of the whole of it.
template <class P>
class EntryRows {
 public:
  EntryRows(const Picture<P>& pic, int32_t above, ScratchSlot slot)
      : pic_(pic),
        keep_(above + 1 < pic.height() ? above + 1 : pic.height()),
        rows_(scratchPicture<P>(pic.width(), keep_, slot)) {}

  // False when the rows cannot be kept (the filter then changes nothing).
  bool ok() const { return pic_.empty() || !rows_.empty(); }

  // Keeps row y as it is now. Call it for y = 0, 1, 2, ... in turn, before
  // the walk writes anything into row y.
  void enter(int32_t y) {
    std::memcpy(rows_.row(y % keep_), pic_.row(y), static_cast<size_t>(pic_.width()) * sizeof(P));
    current_ = y;
  }

  // Row yy as it was at entry: a kept row up to the current one (no further
  // back than `above` rows), the picture's own row below it.
  const P* row(int32_t yy) const { return yy <= current_ ? rows_.row(yy % keep_) : pic_.row(yy); }

 private:
  Picture<P> pic_;
  int32_t keep_;
  Picture<P> rows_;
  int32_t current_ = -1;
};

// ------------------------------------------------------- per-layout measures

// Brightness: (B + G + R) / 3 truncated in the integer layouts, (B + G + R) x
// 0.33333334 in single precision in the float layout.
template <class L>
inline auto brightness(const typename L::Pixel& p) {
  if constexpr (L::integer) {
    return (static_cast<int32_t>(p.blue) + static_cast<int32_t>(p.green) + static_cast<int32_t>(p.red)) / 3;
  } else {
    return (p.blue + p.green + p.red) * 0.33333334f;
  }
}

// The pair average of the soften and blooming, the arithmetic of the exported
// Blending and Blending128. The integer layouts halve through the byte-wise
// mask 0x7F7F7F: for bytes that is floor(a/2) + floor(b/2); a 16-bit value
// also loses bit 7 of its half (32767 and 32767 average to 32510), which the
// 16-bit soften keeps on purpose. The float layout averages in double
// precision and stores the result as a float.
template <class L>
inline typename L::Element pairAverage(typename L::Element a, typename L::Element b) {
  if constexpr (L::integer) {
    return static_cast<typename L::Element>(((static_cast<uint32_t>(a) >> 1) & 0x7F7F7Fu) +
                                            ((static_cast<uint32_t>(b) >> 1) & 0x7F7F7Fu));
  } else {
    return static_cast<float>((static_cast<double>(a) + static_cast<double>(b)) * 0.5);
  }
}

// ------------------------------------------------------------------ box sums
//
// The box filters sum blue, green and red over the (2r + 1)^2 samples around
// a pixel, each sample under the edge rule, and divide by the full count. The
// float layout adds in the box's raster order (dy outer, dx inner) into
// single-precision sums; that order is part of its result, so its sums are
// only ever formed that way. Integer sums do not depend on the order, and the
// sliding forms below give the same sums at a cost independent of r.

template <class L>
using SumOf = std::conditional_t<L::integer, int32_t, float>;

template <class L>
struct Sum3 {
  SumOf<L> blue = 0, green = 0, red = 0;
  void add(const typename L::Pixel& p) {
    blue += p.blue;
    green += p.green;
    red += p.red;
  }
};

// Reference box sum around (x, y) of a width x height picture: rowOf(yy)
// gives the row the filter reads for row yy; take(sample) gives the pixel
// that counts for a sample (the matte blur's threshold puts the centre in its
// place); a sample before the near edge is the centre itself.
template <class L, class RowOf, class Take>
inline Sum3<L> boxSum(RowOf&& rowOf, int32_t width, int32_t height, int32_t x, int32_t y, int32_t r,
                      const typename L::Pixel& centre, Take&& take) {
  Sum3<L> s;
  for (int32_t dy = -r; dy <= r; ++dy) {
    const int32_t sy = edgeStep(y, dy, height);
    const typename L::Pixel* row = sy < 0 ? nullptr : rowOf(sy);
    for (int32_t dx = -r; dx <= r; ++dx) {
      const int32_t sx = edgeStep(x, dx, width);
      s.add(row == nullptr || sx < 0 ? centre : take(row[sx]));
    }
  }
  return s;
}

// Sliding box sums of the integer layouts, for one row at a time. The sum
// around (x, y) is split into
//   - the samples before the near edge, each the centre pixel: nCentre x P;
//   - the column sums V[c] over the box's rows (pulled back past the last
//     row), added over the box's columns (pulled back past the last column).
// V is kept per column and the window of V slides along the row, so a pixel
// costs the same for every radius. Subclasses keep V up to date.
template <class L>
class SlidingBox {
 public:
  using Pixel = typename L::Pixel;
  bool ok() const { return column_ != nullptr || width_ == 0; }

  // The box sum for pixel x of the current row, whose centre is `centre`.
  Sum3<L> at(int32_t x, const Pixel& centre) const {
    const int32_t colsBefore = r_ > x ? r_ - x : 0;
    const int32_t colsPast = r_ > width_ - 1 - x ? r_ - (width_ - 1 - x) : 0;
    const int32_t nCentre = rowsBefore_ * (2 * r_ + 1) + (2 * r_ + 1 - rowsBefore_) * colsBefore;
    const int32_t* last = column_ + 4 * (width_ - 1);
    Sum3<L> s;
    s.blue = window_[0] + colsPast * last[0] + nCentre * centre.blue;
    s.green = window_[1] + colsPast * last[1] + nCentre * centre.green;
    s.red = window_[2] + colsPast * last[2] + nCentre * centre.red;
    return s;
  }

  // Moves the window from pixel x to pixel x + 1.
  void slide(int32_t x) {
    if (x - r_ >= 0) addColumn(x - r_, -1);
    if (r_ < width_ - 1 - x) addColumn(x + 1 + r_, 1);
  }

 protected:
  SlidingBox(int32_t width, int32_t r, size_t arrays, ScratchSlot slot) : width_(width), r_(r) {
    if (width < 1) return;
    void* p = scratchBytes(arrays * 4 * sizeof(int32_t) * static_cast<size_t>(width), slot);
    if (p == nullptr) return;
    column_ = static_cast<int32_t*>(p);
  }
  int32_t* array(size_t i) const { return column_ + i * 4 * static_cast<size_t>(width_); }

  // Starts the window at pixel 0 of row y once V holds that row's sums.
  void startRow(int32_t y) {
    rowsBefore_ = r_ > y ? r_ - y : 0;
    window_[0] = window_[1] = window_[2] = 0;
    const int32_t last = r_ < width_ - 1 ? r_ : width_ - 1;
    for (int32_t c = 0; c <= last; ++c) addColumn(c, 1);
  }
  void addColumn(int32_t c, int32_t sign) {
    const int32_t* v = column_ + 4 * c;
    window_[0] += sign * v[0];
    window_[1] += sign * v[1];
    window_[2] += sign * v[2];
  }

  int32_t width_, r_;
  int32_t* column_ = nullptr;  // V, 4 lanes a column (the fourth unused)
  int32_t window_[3] = {};
  int32_t rowsBefore_ = 0;
};

// Adds (sign 1) or removes (sign -1) k times the colour of each pixel of a
// row to per-column lanes.
template <class P>
inline void addRow(int32_t* lanes, const P* row, int32_t width, int32_t k) {
  for (int32_t c = 0; c < width; ++c) {
    lanes[4 * c] += k * static_cast<int32_t>(row[c].blue);
    lanes[4 * c + 1] += k * static_cast<int32_t>(row[c].green);
    lanes[4 * c + 2] += k * static_cast<int32_t>(row[c].red);
  }
}

// Sliding sums for a walk that reads the entry picture (through EntryRows
// that keep at least r + 1 rows above the current one).
template <class L>
class EntryBoxSums : public SlidingBox<L> {
  using Base = SlidingBox<L>;

 public:
  EntryBoxSums(int32_t width, int32_t height, int32_t r, ScratchSlot slot)
      : Base(width, r, 1, slot), height_(height) {}

  // Row y's column sums: V[c] over the entry rows max(0, y - r) .. y + r,
  // the last row counted again for each row past it.
  void beginRow(int32_t y, const EntryRows<typename L::Pixel>& entry) {
    const int32_t w = this->width_, r = this->r_;
    if (y == 0) {
      std::memset(this->column_, 0, 4 * sizeof(int32_t) * static_cast<size_t>(w));
      for (int32_t j = 0; j <= r; ++j) addRow(this->column_, entry.row(j < height_ - 1 ? j : height_ - 1), w, 1);
    } else {
      addRow(this->column_, entry.row(r < height_ - 1 - y ? y + r : height_ - 1), w, 1);
      if (y - 1 - r >= 0) addRow(this->column_, entry.row(y - 1 - r), w, -1);
    }
    this->startRow(y);
  }

 private:
  int32_t height_;
};

// Sliding sums for a feed-forward walk over `pic` (rewritten in place in
// raster order): the rows above the current one hold their final values, the
// current row its final values left of the pixel and its entry values from
// the pixel on, the rows below their entry values. V[c] is kept as
//   A[c] (rows above, final) + k x row y[c] + B[c] (rows below, entry)
// where k is 1, or r + 1 on the last row (whose rows below are pulled back
// onto itself, so B is empty there). Each rewritten pixel updates V and the
// window with k times its change.
template <class L>
class FeedForwardBoxSums : public SlidingBox<L> {
  using Base = SlidingBox<L>;
  using Pixel = typename L::Pixel;

 public:
  FeedForwardBoxSums(const Picture<Pixel>& pic, int32_t r, ScratchSlot slot)
      : Base(pic.width(), r, 3, slot), pic_(pic) {}

  void beginRow(int32_t y) {
    const int32_t w = this->width_, h = pic_.height(), r = this->r_;
    int32_t* above = this->array(1);
    int32_t* below = this->array(2);
    const size_t bytes = 4 * sizeof(int32_t) * static_cast<size_t>(w);
    if (y == 0) {
      std::memset(above, 0, bytes);
      std::memset(below, 0, bytes);
      if (h > 1)
        for (int32_t j = 1; j <= r; ++j) addRow(below, pic_.row(j < h - 1 ? j : h - 1), w, 1);
    } else {
      addRow(above, pic_.row(y - 1), w, 1);
      if (y - 1 - r >= 0) addRow(above, pic_.row(y - 1 - r), w, -1);
      if (y < h - 1) {
        addRow(below, pic_.row(r < h - 1 - y ? y + r : h - 1), w, 1);
        addRow(below, pic_.row(y), w, -1);
      }
    }
    k_ = y == h - 1 ? r + 1 : 1;
    int32_t* v = this->column_;
    std::memcpy(v, above, bytes);
    addRow(v, pic_.row(y), w, k_);
    if (y < h - 1)
      for (size_t i = 0; i < 4 * static_cast<size_t>(w); ++i) v[i] += below[i];
    this->startRow(y);
  }

  // Pixel x of the current row was rewritten from `before` to `after`;
  // moves on to pixel x + 1.
  void advance(int32_t x, const Pixel& before, const Pixel& after) {
    const int32_t d[3] = {k_ * (static_cast<int32_t>(after.blue) - static_cast<int32_t>(before.blue)),
                          k_ * (static_cast<int32_t>(after.green) - static_cast<int32_t>(before.green)),
                          k_ * (static_cast<int32_t>(after.red) - static_cast<int32_t>(before.red))};
    int32_t* v = this->column_ + 4 * x;
    for (int i = 0; i < 3; ++i) {
      v[i] += d[i];
      this->window_[i] += d[i];
    }
    this->slide(x);
  }

 private:
  Picture<Pixel> pic_;
  int32_t k_ = 1;
};

}  // namespace effects::filters
