// Element maps: adjustments whose new element depends on that element's
// value alone (gamma, levels, brightness, contrast, exposure, ...), applied to
// blue, green and red, each colour element with a map of its own or all three
// with one.
//
// In the integer layouts an element has only 256 (8 bits) or 65,536 (16
// bits, values above 32767 included) possible values. When a picture has
// enough elements, each map is evaluated once per possible value into a table
// and the pixels go through the table: every entry is the map itself, so the
// result is the same as evaluating the map on every element. The 8-bit
// tables live on the stack; the 16-bit ones (128 KiB a map) in this thread's
// scratch slot Fourth, which no family that uses element maps takes for
// anything else. A picture below the size where filling the tables costs
// more than it saves, a failed scratch request, and the float layout take the
// plain form: the map evaluated on every element.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "core/cpu.h"
#include "core/layout.h"
#include "core/scratch.h"
#include "core/simd.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace effects::maps {

static_assert(std::endian::native == std::endian::little, "the table walks read pixels as little-endian words");

// The plain form: each colour element through its map, pixel by pixel. The
// mask is neither read nor written.
template <class P, class FB, class FG, class FR>
inline void eachPlain(P* px, size_t n, const FB& blue, const FG& green, const FR& red) {
  for (size_t i = 0; i < n; ++i) {
    P& p = px[i];
    p.blue = blue(p.blue);
    p.green = green(p.green);
    p.red = red(p.red);
  }
}

// A map a 16-bit table does not pay for: a few integer operations an element
// cost less than a load from a 128 KiB table. Such maps state `cheap`; the
// 8-bit tables (one load from 256 bytes) pay for every map.
template <class F, class = void>
struct IsCheap : std::false_type {};
template <class F>
struct IsCheap<F, std::void_t<decltype(F::cheap)>> : std::bool_constant<F::cheap> {};

// Marks a map (a lambda, say) as cheap.
template <class F>
struct Cheap : F {
  static constexpr bool cheap = true;
};
template <class F>
Cheap<F> cheap(F f) {
  return Cheap<F>{f};
}

// An element left as it is (for the channels a call does not touch).
struct Unchanged {
  static constexpr bool cheap = true;
  template <class E>
  E operator()(E e) const { return e; }
};

// A hook called after each block of pixels is mapped, with the block: the
// levels find each channel's new maximum there while the block is still in
// the cache. The default does nothing.
struct NoHook {
  template <class P>
  void operator()(const P*, size_t) const {}
};

// A hook that keeps the largest blue, green and red (compared unsigned) of
// the pixels it is shown.
struct Maxima {
  int32_t of[3] = {0, 0, 0};

  void operator()(const Pixel32* px, size_t n) {
    size_t i = 0;
#if defined(__SSE2__)
    if (n >= 4) {
      __m128i m = _mm_setzero_si128();
      for (; i + 4 <= n; i += 4) m = _mm_max_epu8(m, _mm_loadu_si128(reinterpret_cast<const __m128i*>(px + i)));
      alignas(16) uint8_t b[16];
      _mm_store_si128(reinterpret_cast<__m128i*>(b), m);
      for (unsigned k = 0; k < 16; k += 4)
        for (unsigned c = 0; c < 3; ++c) keep(c, b[k + c]);
    }
#endif
    for (; i < n; ++i) keep(0, px[i].blue), keep(1, px[i].green), keep(2, px[i].red);
  }

  void operator()(const Pixel64* px, size_t n) {
    size_t i = 0;
#if defined(__SSE2__)
    if (n >= 2) {
      // Unsigned 16-bit maxima through the signed instruction, the top bit
      // flipped on the way in and out.
      const __m128i flip = _mm_set1_epi16(-32768);
      __m128i m = flip;
      for (; i + 2 <= n; i += 2)
        m = _mm_max_epi16(m, _mm_xor_si128(flip, _mm_loadu_si128(reinterpret_cast<const __m128i*>(px + i))));
      alignas(16) uint16_t w[8];
      _mm_store_si128(reinterpret_cast<__m128i*>(w), _mm_xor_si128(m, flip));
      for (unsigned k = 0; k < 8; k += 4)
        for (unsigned c = 0; c < 3; ++c) keep(c, w[k + c]);
    }
#endif
    for (; i < n; ++i) keep(0, px[i].blue), keep(1, px[i].green), keep(2, px[i].red);
  }

 private:
  void keep(unsigned c, int32_t v) {
    if (v > of[c]) of[c] = v;
  }
};

// The element of each colour channel with the largest value read as signed
// 16 bits (the order the 16-bit maps compare elements in), over n >= 1
// pixels.
inline void signedMaxima(const Pixel64* px, size_t n, uint16_t (&of)[3]) {
  int32_t m[3] = {INT16_MIN, INT16_MIN, INT16_MIN};
  size_t i = 0;
#if defined(__SSE2__)
  if (n >= 2) {
    __m128i v = _mm_set1_epi16(INT16_MIN);
    for (; i + 2 <= n; i += 2) v = _mm_max_epi16(v, _mm_loadu_si128(reinterpret_cast<const __m128i*>(px + i)));
    alignas(16) int16_t w[8];
    _mm_store_si128(reinterpret_cast<__m128i*>(w), v);
    for (unsigned k = 0; k < 8; k += 4)
      for (unsigned c = 0; c < 3; ++c) m[c] = w[k + c] > m[c] ? w[k + c] : m[c];
  }
#endif
  for (; i < n; ++i) {
    const int16_t e[3] = {static_cast<int16_t>(px[i].blue), static_cast<int16_t>(px[i].green),
                          static_cast<int16_t>(px[i].red)};
    for (unsigned c = 0; c < 3; ++c) m[c] = e[c] > m[c] ? e[c] : m[c];
  }
  for (unsigned c = 0; c < 3; ++c) of[c] = static_cast<uint16_t>(m[c]);
}

// Pixels are mapped in blocks of this many, so a hook sees them in the cache.
inline constexpr size_t kBlock = 2048;

// Whether `elements` colour elements are worth `tables` tables of `entries`
// values each: the tables are filled when there are at least twice as many
// elements as entries to fill.
inline bool worthTables(size_t pixels, size_t tables, size_t entries) {
  return pixels * 3 >= 2 * tables * entries;
}

namespace detail {

// 8 bits: one 32-bit word a pixel; the tables hold each new byte already in
// its place in the word.
inline void lookup(Pixel32* px, size_t n, const uint32_t* blue, const uint32_t* green, const uint32_t* red) {
  for (size_t i = 0; i < n; ++i) {
    uint32_t v;
    std::memcpy(&v, px + i, 4);
    v = (v & 0xFF000000u) | blue[v & 0xFFu] | green[(v >> 8) & 0xFFu] | red[(v >> 16) & 0xFFu];
    std::memcpy(px + i, &v, 4);
  }
}

#if EFFECTS_WIDE
// 8 bits with the AVX-512 byte permutes: sixteen pixels a step, each table
// held in four registers; two two-register permutes pick by the low seven
// bits of an element and its top bit picks between them. Returns the pixels
// done.
EFFECTS_TARGET_VBMI inline size_t lookupPermuted(Pixel32* px, size_t n, const uint8_t* blue, const uint8_t* green,
                                                 const uint8_t* red) {
  struct Table {
    __m512i a, b, c, d;
    EFFECTS_TARGET_VBMI explicit Table(const uint8_t* t)
        : a(_mm512_loadu_si512(t)), b(_mm512_loadu_si512(t + 64)), c(_mm512_loadu_si512(t + 128)),
          d(_mm512_loadu_si512(t + 192)) {}
    EFFECTS_TARGET_VBMI __m512i operator()(__m512i v, __mmask64 high) const {
      return _mm512_mask_blend_epi8(high, _mm512_permutex2var_epi8(a, v, b), _mm512_permutex2var_epi8(c, v, d));
    }
  };
  const Table tb(blue), tg(green), tr(red);
  const __mmask64 blueLanes = 0x1111111111111111ull, greenLanes = blueLanes << 1, redLanes = blueLanes << 2;
  size_t i = 0;
  for (; i + 16 <= n; i += 16) {
    __m512i v = _mm512_loadu_si512(px + i);
    const __mmask64 high = _mm512_movepi8_mask(v);
    v = _mm512_mask_blend_epi8(blueLanes, v, tb(v, high));
    v = _mm512_mask_blend_epi8(greenLanes, v, tg(v, high));
    v = _mm512_mask_blend_epi8(redLanes, v, tr(v, high));
    _mm512_storeu_si512(px + i, v);
  }
  return i;
}
#endif

// 16 bits: one table of 65,536 words per colour element.
inline void lookup(Pixel64* px, size_t n, const uint16_t* blue, const uint16_t* green, const uint16_t* red) {
  // A pixel is read and written as one 64-bit word (blue in the low bits):
  // one load and one store a pixel beside the three table loads. The pixels
  // ahead are asked for explicitly: a quarter less time on pictures beyond
  // the caches.
  for (size_t i = 0; i < n; ++i) {
    if ((i & 7) == 0) simd::prefetchAhead(px + i);
    uint64_t p;
    std::memcpy(&p, px + i, 8);
    const uint64_t q = blue[p & 0xFFFFu] | (uint64_t{green[(p >> 16) & 0xFFFFu]} << 16) |
                       (uint64_t{red[(p >> 32) & 0xFFFFu]} << 32) | (p & 0xFFFF000000000000u);
    std::memcpy(px + i, &q, 8);
  }
}

}  // namespace detail

// 16 bits: the pixels through three filled tables of 65,536 entries.
inline void lookup(Pixel64* px, size_t n, const uint16_t* blue, const uint16_t* green, const uint16_t* red) {
  detail::lookup(px, n, blue, green, red);
}

namespace detail {

// The three 8-bit tables: as bytes for the permutes, as words with each new
// byte in its place for the one-load-an-element walk.
struct ByteTables {
  alignas(64) uint8_t bytes[3][256];
  uint32_t words[3][256];

  void finish() {
    for (uint32_t c = 0; c < 3; ++c)
      for (uint32_t v = 0; v < 256; ++v) words[c][v] = static_cast<uint32_t>(bytes[c][v]) << (8 * c);
  }
  // The byte permutes where the processor has them, the words for the rest.
  void operator()(Pixel32* px, size_t n) const {
    size_t i = 0;
#if EFFECTS_WIDE
    if (cpu::vbmi()) i = lookupPermuted(px, n, bytes[0], bytes[1], bytes[2]);
#endif
    lookup(px + i, n - i, words[0], words[1], words[2]);
  }
};

template <class Hook>
inline void lookupBlocks(Pixel32* px, size_t n, const ByteTables& tables, Hook& hook) {
  if constexpr (std::is_same_v<std::remove_cv_t<Hook>, NoHook>) {
    tables(px, n);
  } else {
    for (size_t i = 0; i < n; i += kBlock) {
      const size_t m = n - i < kBlock ? n - i : kBlock;
      tables(px + i, m);
      hook(px + i, m);
    }
  }
}

template <class Hook>
inline void lookupBlocks(Pixel64* px, size_t n, const uint16_t* blue, const uint16_t* green, const uint16_t* red,
                         Hook& hook) {
  for (size_t i = 0; i < n; i += kBlock) {
    const size_t m = n - i < kBlock ? n - i : kBlock;
    lookup(px + i, m, blue, green, red);
    hook(px + i, m);
  }
}

template <class P, class FB, class FG, class FR, class Hook>
inline void plainBlocks(P* px, size_t n, const FB& blue, const FG& green, const FR& red, Hook& hook) {
  for (size_t i = 0; i < n; i += kBlock) {
    const size_t m = n - i < kBlock ? n - i : kBlock;
    eachPlain(px + i, m, blue, green, red);
    hook(px + i, m);
  }
}

// Whether two maps are the same object: one table then serves both.
template <class A, class B>
inline bool same(const A& a, const B& b) {
  if constexpr (std::is_same_v<A, B>) return &a == &b;
  else return false;
}

}  // namespace detail

// Maps blue, green and red of n pixels through their maps (which may be the
// same object: then one table serves all three).
template <class L, class FB, class FG, class FR, class Hook = NoHook>
void each(typename L::Pixel* px, size_t n, const FB& blue, const FG& green, const FR& red, Hook&& hook = {}) {
  using E = typename L::Element;
  if (px == nullptr || n == 0) return;
  if constexpr (L::integer && sizeof(E) == 1) {
    const bool sameGreen = detail::same(blue, green), sameRed = detail::same(blue, red);
    const size_t distinct = 1 + !sameGreen + !sameRed;
    if (worthTables(n, distinct, 256)) {
      detail::ByteTables t;
      for (uint32_t v = 0; v < 256; ++v) {
        const E e = static_cast<E>(v);
        t.bytes[0][v] = blue(e);
        t.bytes[1][v] = sameGreen ? t.bytes[0][v] : green(e);
        t.bytes[2][v] = sameRed ? t.bytes[0][v] : red(e);
      }
      t.finish();
      detail::lookupBlocks(px, n, t, hook);
      return;
    }
  } else if constexpr (L::integer && sizeof(E) == 2) {
    const bool sameGreen = detail::same(blue, green), sameRed = detail::same(blue, red);
    const size_t distinct = 1 + !sameGreen + !(sameRed || detail::same(green, red));
    constexpr bool allCheap = IsCheap<FB>::value && IsCheap<FG>::value && IsCheap<FR>::value;
    if (!allCheap && worthTables(n, distinct, 65536)) {
      auto* t = static_cast<E*>(scratchBytes(distinct * 65536 * sizeof(E), ScratchSlot::Fourth));
      if (t != nullptr) {
        E* tb = t;
        E* tg = sameGreen ? tb : t + 65536;
        E* tr = sameRed ? tb : detail::same(green, red) ? tg : t + (distinct - 1) * 65536;
        for (uint32_t v = 0; v < 65536; ++v) tb[v] = blue(static_cast<E>(v));
        if (tg != tb)
          for (uint32_t v = 0; v < 65536; ++v) tg[v] = green(static_cast<E>(v));
        if (tr != tb && tr != tg)
          for (uint32_t v = 0; v < 65536; ++v) tr[v] = red(static_cast<E>(v));
        detail::lookupBlocks(px, n, tb, tg, tr, hook);
        return;
      }
    }
  }
  detail::plainBlocks(px, n, blue, green, red, hook);
}

// One map for all three colour elements.
template <class L, class F, class Hook = NoHook>
void all(typename L::Pixel* px, size_t n, const F& f, Hook&& hook = {}) {
  each<L>(px, n, f, f, f, static_cast<Hook&&>(hook));
}

}  // namespace effects::maps
