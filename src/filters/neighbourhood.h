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

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

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

// Sliding box sums of the integer layouts, a row at a time. The sum around
// (x, y) splits into
//   - the samples before the first row or column, each the pixel itself:
//     nCentre x P;
//   - the column sums V[c] over the box's rows (the last row counted again
//     for each row past it), added over the box's columns (the last column
//     counted again for each column past it).
// V slides down from row to row and the window of V slides along the row, so
// a pixel costs the same for every radius. V and the sums keep four lanes a
// column, one per element; the mask's lane is summed too and never read.

// Where column c's four lanes start. Formed in size_t: 4 * c in 32 bits
// passes INT32_MAX from column 2^29 on, and rows can be that wide.
inline size_t laneIndex(int32_t c) { return 4 * static_cast<size_t>(c); }

// Adds k times the elements of a row of pixels to the lanes.
template <class P>
inline void addRow(int32_t* lanes, const P* row, int32_t width, int32_t k) {
  static_assert(kElements<P> == 4, "four lanes a pixel");
  const auto* e = elementsOf(row);
  const size_t n = 4 * static_cast<size_t>(width);
  for (size_t i = 0; i < n; ++i) lanes[i] += k * static_cast<int32_t>(e[i]);
}

#if defined(__SSE2__)
// One pixel's four elements as four 32-bit lanes.
inline __m128i pixelLanes(const Pixel32* p) {
  int32_t bits;
  std::memcpy(&bits, p, 4);
  const __m128i zero = _mm_setzero_si128();
  return _mm_unpacklo_epi16(_mm_unpacklo_epi8(_mm_cvtsi32_si128(bits), zero), zero);
}
inline __m128i pixelLanes(const Pixel64* p) {
  return _mm_unpacklo_epi16(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)), _mm_setzero_si128());
}
inline __m128i loadLanes(const int32_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
inline void storeLanes(int32_t* p, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
#endif

// V moving down a row: V += added - removed, each a row of pixels (removed
// may be null) and, when not null, `changes` (4 lanes a pixel).
template <class P>
inline void slideColumns(int32_t* v, const int32_t* changes, const P* added, const P* removed, int32_t width) {
#if defined(__SSE2__)
  if constexpr (std::is_same_v<P, Pixel32> || std::is_same_v<P, Pixel64>) {
    for (int32_t c = 0; c < width; ++c) {
      __m128i t = _mm_add_epi32(loadLanes(v + laneIndex(c)), pixelLanes(added + c));
      if (removed) t = _mm_sub_epi32(t, pixelLanes(removed + c));
      if (changes) t = _mm_add_epi32(t, loadLanes(changes + laneIndex(c)));
      storeLanes(v + laneIndex(c), t);
    }
    return;
  }
#endif
  addRow(v, added, width, 1);
  if (removed) addRow(v, removed, width, -1);
  if (changes)
    for (size_t i = 0; i < 4 * static_cast<size_t>(width); ++i) v[i] += changes[i];
}

// Row y's box sums (4 lanes a pixel) from its column sums V and its pixels.
template <class P>
inline void boxRow(int32_t* sums, const int32_t* v, const P* row, int32_t width, int32_t y, int32_t r) {
#if defined(__SSE2__)
  // Away from the edges (rows from r on, columns r .. width - 1 - r) a sum is
  // the window of V alone.
  if (y >= r && width > 2 * r) {
    const auto edge = [&](int32_t x0, int32_t x1, __m128i& window) {
      for (int32_t x = x0; x < x1; ++x) {
        const int32_t colsBefore = r > x ? r - x : 0;
        const int32_t colsPast = r > width - 1 - x ? r - (width - 1 - x) : 0;
        const int32_t n = (2 * r + 1) * colsBefore;
        const auto* p = elementsOf(&row[x]);
        const int32_t* last = v + laneIndex(width - 1);
        alignas(16) int32_t w[4];
        _mm_store_si128(reinterpret_cast<__m128i*>(w), window);
        for (int j = 0; j < 4; ++j) sums[laneIndex(x) + j] = w[j] + colsPast * last[j] + n * static_cast<int32_t>(p[j]);
        if (x - r >= 0) window = _mm_sub_epi32(window, loadLanes(v + laneIndex(x - r)));
        if (r < width - 1 - x) window = _mm_add_epi32(window, loadLanes(v + laneIndex(x + 1 + r)));
      }
    };
    __m128i window = _mm_setzero_si128();
    for (int32_t c = 0; c <= r; ++c) window = _mm_add_epi32(window, loadLanes(v + laneIndex(c)));
    edge(0, r, window);
    for (int32_t x = r; x < width - r - 1; ++x) {
      storeLanes(sums + laneIndex(x), window);
      window = _mm_add_epi32(_mm_sub_epi32(window, loadLanes(v + laneIndex(x - r))), loadLanes(v + laneIndex(x + 1 + r)));
    }
    edge(width - r - 1, width, window);
    return;
  }
#endif
  const int32_t n = 2 * r + 1;
  const int32_t rowsBefore = r > y ? r - y : 0;
  const int32_t* last = v + laneIndex(width - 1);
  int32_t window[4] = {};
  for (int32_t c = 0; c <= r && c < width; ++c)
    for (int j = 0; j < 4; ++j) window[j] += v[laneIndex(c) + j];
  for (int32_t x = 0; x < width; ++x) {
    const int32_t colsBefore = r > x ? r - x : 0;
    const int32_t colsPast = r > width - 1 - x ? r - (width - 1 - x) : 0;
    const int32_t nCentre = rowsBefore * n + (n - rowsBefore) * colsBefore;
    const auto* p = elementsOf(&row[x]);
    int32_t* s = sums + laneIndex(x);
    for (int j = 0; j < 4; ++j) s[j] = window[j] + colsPast * last[j] + nCentre * static_cast<int32_t>(p[j]);
    const int32_t* out = x - r >= 0 ? v + laneIndex(x - r) : nullptr;
    const int32_t* in = r < width - 1 - x ? v + laneIndex(x + 1 + r) : nullptr;
    for (int j = 0; j < 4; ++j) window[j] += (in ? in[j] : 0) - (out ? out[j] : 0);
  }
}

// Column sums and box sums in scratch: V and one row of sums.
template <class L>
class BoxLanes {
 public:
  bool ok() const { return v_ != nullptr || width_ == 0; }

 protected:
  BoxLanes(int32_t width, int32_t height, int32_t r, ScratchSlot slot) : width_(width), height_(height), r_(r) {
    if (width < 1) return;
    void* p = scratchBytes(2 * 4 * sizeof(int32_t) * static_cast<size_t>(width), slot);
    if (p == nullptr) return;
    v_ = static_cast<int32_t*>(p);
    sums_ = v_ + 4 * static_cast<size_t>(width);
  }
  // V of row 0: the rows 0 .. r, pulled back past the last.
  template <class RowOf>
  void firstColumns(RowOf&& rowOf) {
    std::memset(v_, 0, 4 * sizeof(int32_t) * static_cast<size_t>(width_));
    for (int32_t j = 0; j <= r_; ++j)
      slideColumns<typename L::Pixel>(v_, nullptr, rowOf(j < height_ - 1 ? j : height_ - 1), nullptr, width_);
  }
  // The row that enters the box moving down to row y, and the one that
  // leaves it (null when none does).
  int32_t entering(int32_t y) const { return r_ < height_ - 1 - y ? y + r_ : height_ - 1; }
  int32_t leaving(int32_t y) const { return y - 1 - r_; }

  int32_t width_, height_, r_;
  int32_t* v_ = nullptr;
  int32_t* sums_ = nullptr;
};

// For a walk that reads the entry picture through EntryRows keeping at least
// r + 1 rows above the current one.
template <class L>
class EntryBoxSums : public BoxLanes<L> {
  using Base = BoxLanes<L>;
  using Pixel = typename L::Pixel;

 public:
  EntryBoxSums(int32_t width, int32_t height, int32_t r, ScratchSlot slot) : Base(width, height, r, slot) {}

  // The box sums of row y, 4 lanes a pixel.
  const int32_t* beginRow(int32_t y, const EntryRows<Pixel>& entry) {
    const auto rowOf = [&entry](int32_t j) { return entry.row(j); };
    if (y == 0) {
      this->firstColumns(rowOf);
    } else {
      const int32_t out = this->leaving(y);
      slideColumns(this->v_, nullptr, entry.row(this->entering(y)), out >= 0 ? entry.row(out) : nullptr, this->width_);
    }
    boxRow(this->sums_, this->v_, entry.row(y), this->width_, y, this->r_);
    return this->sums_;
  }
};

// For a feed-forward walk over `pic`: rewritten in place in raster order, so
// that the rows above the current one hold their final values, the current
// row its final values left of the pixel and its entry values from the pixel
// on, and the rows below their entry values.
//
// beginRow gives each pixel's box sum as if nothing in its row had been
// rewritten yet; the walk adds k times the changes (after - before) of the
// pixels of the row already rewritten inside the box, which are the r pixels
// before it, k being how often the row counts in the box: 1,
// or r + 1 on the last row (the rows past it pulled back onto it). Moving
// down, V takes in the previous row's changes, drops the row leaving the box
// (final) and adds the row entering it (still at its entry values).
template <class L>
class FeedForwardBoxSums : public BoxLanes<L> {
  using Base = BoxLanes<L>;
  using Pixel = typename L::Pixel;

 public:
  FeedForwardBoxSums(const Picture<Pixel>& pic, int32_t r, ScratchSlot slot)
      : Base(pic.width(), pic.height(), r, slot), pic_(pic) {}

  // The sums of row y before its rewriting, 4 lanes a pixel; `changes` holds
  // the changes of row y - 1 (4 lanes a pixel, unused for row 0).
  const int32_t* beginRow(int32_t y, const int32_t* changes) {
    const int32_t w = this->width_;
    if (y == 0) {
      this->firstColumns([this](int32_t j) { return pic_.row(j); });
    } else {
      const int32_t out = this->leaving(y);
      slideColumns(this->v_, changes, pic_.row(this->entering(y)), out >= 0 ? pic_.row(out) : nullptr, w);
    }
    k_ = y == this->height_ - 1 ? this->r_ + 1 : 1;
    boxRow(this->sums_, this->v_, pic_.row(y), w, y, this->r_);
    return this->sums_;
  }
  int32_t rowWeight() const { return k_; }

 private:
  Picture<Pixel> pic_;
  int32_t k_ = 1;
};

}  // namespace effects::filters
