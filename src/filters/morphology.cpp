// Greyscale morphology over a 3x3 neighbourhood without its lower right cell:
// dilation, erosion, their forms on the mask alone, and the inner contour.
// Every neighbourhood value is read from the picture as it was at entry; the
// outermost rows and columns keep their values.
#include <limits>

#include "core/fpenv.h"
#include "filters/sharpen.h"
#include "filters/simd.h"

namespace effects::filters {
namespace {

// The reduction of one element over the eight cells, in the order given, from
// the family's starting value (0 for a maximum, full for a minimum). The
// comparisons are plain tests in the layout's comparison type (signed 16-bit
// for Pixel64), so a not-a-number never replaces the running result and of
// two equal values the earlier one stays.
template <class L, Reduce R>
inline typename L::Element reduce(const typename L::Element* const (&cells)[8]) {
  using E = typename L::Element;
  E result = R == Reduce::Maximum ? E(0) : L::full;
  for (const E* c : cells) {
    if constexpr (R == Reduce::Maximum) {
      if (compared<L>(*c) > compared<L>(result)) result = *c;
    } else {
      if (compared<L>(*c) < compared<L>(result)) result = *c;
    }
  }
  return result;
}

// The element's new value: the reduction, or for the contour the element
// minus its erosion (integer subtraction keeping the element's bits, or a
// float subtraction).
template <class L, Reduce R>
inline typename L::Element reduced(typename L::Element self, const typename L::Element* const (&cells)[8]) {
  using E = typename L::Element;
  if constexpr (R == Reduce::Contour) {
    const E low = reduce<L, Reduce::Minimum>(cells);
    if constexpr (L::integer) return static_cast<E>(static_cast<uint32_t>(self) - static_cast<uint32_t>(low));
    else return self - low;
  } else {
    return reduce<L, R>(cells);
  }
}

// Row y of the result, columns 1 .. width - 2, from the entry rows up, mid
// and down.
template <class L, Which W, Reduce R>
inline void morphRowPlain(typename L::Pixel* out, const typename L::Pixel* up, const typename L::Pixel* mid,
                          const typename L::Pixel* down, int32_t width) {
  using P = typename L::Pixel;
  for (int32_t x = 1; x < width - 1; ++x) {
    for (unsigned i = 0; i < 4; ++i) {
      if (!writes<P, W>(i)) continue;
      const typename L::Element* const cells[8] = {
          &elementsOf(&up[x - 1])[i],  &elementsOf(&up[x])[i],  &elementsOf(&up[x + 1])[i],
          &elementsOf(&mid[x - 1])[i], &elementsOf(&mid[x])[i], &elementsOf(&mid[x + 1])[i],
          &elementsOf(&down[x - 1])[i], &elementsOf(&down[x])[i]};
      elementsOf(&out[x])[i] = reduced<L, R>(elementsOf(&mid[x])[i], cells);
    }
  }
}

#if defined(__SSE2__)
// The same a vector of elements at a time: the eight cells folded in the
// same order with the processor's max and min (which give c > r ? c : r and
// c < r ? c : r, signed for 16 bits), the elements W does not write kept.
template <class L, Which W, Reduce R>
inline void morphRowFast(typename L::Pixel* out, const typename L::Pixel* up, const typename L::Pixel* mid,
                         const typename L::Pixel* down, int32_t width) {
  using P = typename L::Pixel;
  using E = typename L::Element;
  using O = simd::Lanes<E>;
  constexpr int32_t S = 4;
  const __m128i mask = simd::elementMask<E>(S, &writes<P, W>);
  const auto start = O::splat(R == Reduce::Maximum ? E(0) : L::full);
  E* o = elementsOf(out);
  const E* u = elementsOf(up);
  const E* m = elementsOf(mid);
  const E* d = elementsOf(down);
  // The elements of columns 1 .. width - 2, counted in ptrdiff_t: a row has
  // up to INT32_MAX pixels, and so more elements than int32_t holds.
  const ptrdiff_t end = static_cast<ptrdiff_t>(width - 1) * S;
  ptrdiff_t i = S;
  for (; i + O::kCount <= end; i += O::kCount) {
    const decltype(start) cells[8] = {O::load(u + i - S), O::load(u + i), O::load(u + i + S),
                                      O::load(m + i - S), O::load(m + i), O::load(m + i + S),
                                      O::load(d + i - S), O::load(d + i)};
    auto r = start;
    for (const auto& c : cells) r = R == Reduce::Maximum ? O::maximum(c, r) : O::minimum(c, r);
    if constexpr (R == Reduce::Contour) r = O::subtract(cells[4], r);
    O::store(o + i, simd::select<E>(mask, r, cells[4]));
  }
  const int32_t x = static_cast<int32_t>(i / S);
  if (x < width - 1) morphRowPlain<L, W, R>(out + x - 1, up + x - 1, mid + x - 1, down + x - 1, width - x + 1);
}
#endif

template <class L, Which W, Reduce R, class RowFn>
bool morphWalk(const Picture<typename L::Pixel>& pic, RowFn&& rowFn) {
  using P = typename L::Pixel;
  if (pic.height() < 3) return true;
  EntryRows<P> entry(pic, 1, ScratchSlot::First);
  if (!entry.ok()) return false;
  if (pic.width() < 3) return true;
  entry.enter(0);
  for (int32_t y = 1; y < pic.height() - 1; ++y) {
    entry.enter(y);
    rowFn(pic.row(y), entry.row(y - 1), entry.row(y), entry.row(y + 1), pic.width());
  }
  return true;
}

}  // namespace

template <class L, Which W, Reduce R>
bool morphologyReference(const Picture<typename L::Pixel>& pic) {
  return morphWalk<L, W, R>(pic, morphRowPlain<L, W, R>);
}

template <class L, Which W, Reduce R>
bool morphology(const Picture<typename L::Pixel>& pic) {
#if defined(__SSE2__)
  return morphWalk<L, W, R>(pic, morphRowFast<L, W, R>);
#else
  return morphWalk<L, W, R>(pic, morphRowPlain<L, W, R>);
#endif
}

#define EFFECTS_MORPHOLOGY(L)                                                                   \
  template bool morphology<L, Which::Colour, Reduce::Maximum>(const Picture<L::Pixel>&);        \
  template bool morphology<L, Which::Mask, Reduce::Maximum>(const Picture<L::Pixel>&);          \
  template bool morphology<L, Which::Colour, Reduce::Minimum>(const Picture<L::Pixel>&);        \
  template bool morphology<L, Which::Mask, Reduce::Minimum>(const Picture<L::Pixel>&);          \
  template bool morphology<L, Which::Colour, Reduce::Contour>(const Picture<L::Pixel>&);        \
  template bool morphologyReference<L, Which::Colour, Reduce::Maximum>(const Picture<L::Pixel>&); \
  template bool morphologyReference<L, Which::Mask, Reduce::Maximum>(const Picture<L::Pixel>&);   \
  template bool morphologyReference<L, Which::Colour, Reduce::Minimum>(const Picture<L::Pixel>&); \
  template bool morphologyReference<L, Which::Mask, Reduce::Minimum>(const Picture<L::Pixel>&);   \
  template bool morphologyReference<L, Which::Colour, Reduce::Contour>(const Picture<L::Pixel>&);
EFFECTS_MORPHOLOGY(Layout32)
EFFECTS_MORPHOLOGY(Layout64)
EFFECTS_MORPHOLOGY(Layout128)
#undef EFFECTS_MORPHOLOGY

namespace {

// The morphology exports take an unsigned width and height; sizes beyond the
// signed 32-bit range cannot be pictures here and change nothing.
template <class L, Which W, Reduce R>
inline uint32_t morph(uint32_t width, uint32_t height, typename L::Pixel* pixels) {
  constexpr uint32_t limit = static_cast<uint32_t>(std::numeric_limits<int32_t>::max());
  if (width <= limit && height <= limit)
    morphology<L, W, R>(packedPicture(static_cast<int32_t>(width), static_cast<int32_t>(height), pixels));
  return 0;
}

}  // namespace
}  // namespace effects::filters

using namespace effects;
using namespace effects::filters;

extern "C" {

EFFECTS_API uint32_t EFFECTS_CALL VexoDilater32(uint32_t width, uint32_t height, Pixel32* pixels) { const FloatEnvironment env; return morph<Layout32, Which::Colour, Reduce::Maximum>(width, height, pixels); }
EFFECTS_API uint32_t EFFECTS_CALL VexoDilater64(uint32_t width, uint32_t height, Pixel64* pixels) { const FloatEnvironment env; return morph<Layout64, Which::Colour, Reduce::Maximum>(width, height, pixels); }
EFFECTS_API uint32_t EFFECTS_CALL VexoDilater128(uint32_t width, uint32_t height, Pixel128* pixels) { const FloatEnvironment env; return morph<Layout128, Which::Colour, Reduce::Maximum>(width, height, pixels); }

EFFECTS_API uint32_t EFFECTS_CALL VexoDilaterMask32(uint32_t width, uint32_t height, Pixel32* pixels) { const FloatEnvironment env; return morph<Layout32, Which::Mask, Reduce::Maximum>(width, height, pixels); }
EFFECTS_API uint32_t EFFECTS_CALL VexoDilaterMask64(uint32_t width, uint32_t height, Pixel64* pixels) { const FloatEnvironment env; return morph<Layout64, Which::Mask, Reduce::Maximum>(width, height, pixels); }
EFFECTS_API uint32_t EFFECTS_CALL VexoDilaterMask128(uint32_t width, uint32_t height, Pixel128* pixels) { const FloatEnvironment env; return morph<Layout128, Which::Mask, Reduce::Maximum>(width, height, pixels); }

EFFECTS_API uint32_t EFFECTS_CALL VexoEroder32(uint32_t width, uint32_t height, Pixel32* pixels) { const FloatEnvironment env; return morph<Layout32, Which::Colour, Reduce::Minimum>(width, height, pixels); }
EFFECTS_API uint32_t EFFECTS_CALL VexoEroder64(uint32_t width, uint32_t height, Pixel64* pixels) { const FloatEnvironment env; return morph<Layout64, Which::Colour, Reduce::Minimum>(width, height, pixels); }
EFFECTS_API uint32_t EFFECTS_CALL VexoEroder128(uint32_t width, uint32_t height, Pixel128* pixels) { const FloatEnvironment env; return morph<Layout128, Which::Colour, Reduce::Minimum>(width, height, pixels); }

EFFECTS_API uint32_t EFFECTS_CALL VexoEroderMask32(uint32_t width, uint32_t height, Pixel32* pixels) { const FloatEnvironment env; return morph<Layout32, Which::Mask, Reduce::Minimum>(width, height, pixels); }
EFFECTS_API uint32_t EFFECTS_CALL VexoEroderMask64(uint32_t width, uint32_t height, Pixel64* pixels) { const FloatEnvironment env; return morph<Layout64, Which::Mask, Reduce::Minimum>(width, height, pixels); }
EFFECTS_API uint32_t EFFECTS_CALL VexoEroderMask128(uint32_t width, uint32_t height, Pixel128* pixels) { const FloatEnvironment env; return morph<Layout128, Which::Mask, Reduce::Minimum>(width, height, pixels); }

EFFECTS_API uint32_t EFFECTS_CALL VexoCContour32(uint32_t width, uint32_t height, Pixel32* pixels) { const FloatEnvironment env; return morph<Layout32, Which::Colour, Reduce::Contour>(width, height, pixels); }
EFFECTS_API uint32_t EFFECTS_CALL VexoCContour64(uint32_t width, uint32_t height, Pixel64* pixels) { const FloatEnvironment env; return morph<Layout64, Which::Colour, Reduce::Contour>(width, height, pixels); }
EFFECTS_API uint32_t EFFECTS_CALL VexoCContour128(uint32_t width, uint32_t height, Pixel128* pixels) { const FloatEnvironment env; return morph<Layout128, Which::Colour, Reduce::Contour>(width, height, pixels); }

}  // extern "C"
