// The vector forms of the layer composite (SSE2 and, where this processor has
// it, AVX2) against blend::blendPixel, the plain per-pixel form, in every
// mode: every 8-bit (target, source) pair under several masks, 16-bit
// elements over the whole 16-bit range and at the edges of its divisions,
// floats with NaN, infinities and odd masks, masks of 0, and opacities that
// carry results beyond the layout's range and beyond 16 bits (the Direct
// exports take any int32).
#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "composite/blend_simd.h"
#include "core/cpu.h"
#include "support/fast_paths.h"

using namespace effects;
using namespace effects::test;

namespace {

// `form` over whole vectors of a copy of `canvas`, the plain form on the rest.
template <class L, int32_t Mode, class Form>
std::vector<typename L::Pixel> withForm(const std::vector<typename L::Pixel>& canvas,
                                        const std::vector<typename L::Pixel>& source, const blend::Weight<L>& w,
                                        Form form) {
  auto out = canvas;
  for (size_t i = form(out.data(), source.data(), out.size()); i < out.size(); ++i)
    blend::blendPixel<L, Mode>(out[i], source[i], w);
  return out;
}

// Floats bit for bit, except that any NaN equals any NaN: where both
// operands of an addition are NaN (a NaN canvas value and a target made from
// it), which one comes out depends on the order the compiler puts the
// operands in, in the plain form as much as in the vector form.
bool sameUpToNaNs(const std::vector<Pixel128>& a, const std::vector<Pixel128>& b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i)
    for (int c = 0; c < 4; ++c) {
      const float x = (&a[i].blue)[c], y = (&b[i].blue)[c];
      if (!(x != x && y != y) && bitsOf(x) != bitsOf(y)) return false;
    }
  return true;
}

template <class L>
void expectEveryForm(const std::vector<typename L::Pixel>& canvas, const std::vector<typename L::Pixel>& source,
                     int32_t opacity) {
  using P = typename L::Pixel;
  const blend::Weight<L> w(opacity);
  for (int32_t mode = 0; mode < blend::kModeCount; ++mode) {
    SCOPED_TRACE(testing::Message() << "opacity " << opacity << ", mode " << mode);
    blend::withMode(mode, [&](auto m) {
      constexpr int32_t M = decltype(m)::value;
      const auto want = withForm<L, M>(canvas, source, w, [](P*, const P*, size_t) { return size_t{0}; });
      auto got = canvas;
      const int32_t n = static_cast<int32_t>(got.size());
      if constexpr (L::integer && sizeof(P) == 4) {
        EXPECT_EQ(Vexo32DirectDIB(0, 0, n, 1, source.data(), got.data(), n, 1, opacity, mode), 1);
        EXPECT_EQ(got, want);
#if defined(__SSE2__)
        EXPECT_EQ((withForm<L, M>(canvas, source, w, [&](P* c, const P* s, size_t k) {
                    return blend::sse2::row<M, false>(c, s, k, w.k);
                  })), want);
        if (blend::sse2::narrow(w)) {
          EXPECT_EQ((withForm<L, M>(canvas, source, w, [&](P* c, const P* s, size_t k) {
                      return blend::sse2::row<M, true>(c, s, k, w.k);
                    })), want);
        }
#endif
#if EFFECTS_WIDE
        if (cpu::avx2()) {
          EXPECT_EQ((withForm<L, M>(canvas, source, w, [&](P* c, const P* s, size_t k) {
                      return blend::avx2::row<M, false>(c, s, k, w.k);
                    })), want);
          if (blend::sse2::narrow(w)) {
            EXPECT_EQ((withForm<L, M>(canvas, source, w, [&](P* c, const P* s, size_t k) {
                        return blend::avx2::row<M, true>(c, s, k, w.k);
                      })), want);
          }
        }
#endif
      } else if constexpr (!L::integer) {
        EXPECT_EQ(Vexo128DirectDIB(0, 0, n, 1, source.data(), got.data(), n, 1, opacity, mode), 1);
        EXPECT_TRUE(sameUpToNaNs(got, want));
#if defined(__SSE2__)
        EXPECT_TRUE(sameUpToNaNs(withForm<L, M>(canvas, source, w, [&](P* c, const P* s, size_t k) {
                                   return blend::sse2::row<M>(c, s, k, w.k);
                                 }),
                                 want));
#endif
#if EFFECTS_WIDE
        if (cpu::avx2()) {
          EXPECT_TRUE(sameUpToNaNs(withForm<L, M>(canvas, source, w, [&](P* c, const P* s, size_t k) {
                                     return blend::avx2::row<M>(c, s, k, w.k);
                                   }),
                                   want));
        }
#endif
      } else {
        EXPECT_EQ(Vexo64DirectDIB(0, 0, n, 1, source.data(), got.data(), n, 1, opacity, mode), 1);
        EXPECT_EQ(got, want);
#if EFFECTS_WIDE
        if (cpu::avx2()) {
          EXPECT_EQ((withForm<L, M>(canvas, source, w, [&](P* c, const P* s, size_t k) {
                      return blend::avx2::row<M>(c, s, k, w.k);
                    })), want);
        }
#endif
      }
    });
  }
}

}  // namespace

TEST(BlendVectorForms, EightBitEveryPairAgainstThePlainForm) {
  // Every (target, source) pair in blue, green and red (permuted), under the
  // masks 0, 1, 128 and 255; three pixels more, for a tail.
  std::vector<Pixel32> canvas(4 * 65536 + 3), source(canvas.size());
  const uint8_t masks[4] = {0, 1, 128, 255};
  for (uint32_t i = 0; i < canvas.size(); ++i) {
    const uint8_t d = uint8_t(i), s = uint8_t(i >> 8), m = masks[(i >> 16) & 3];
    canvas[i] = Pixel32{d, uint8_t(s * 7u), uint8_t(255 - d), uint8_t(i * 5u)};
    source[i] = Pixel32{s, uint8_t(d * 3u), uint8_t(s ^ 0x5Au), m};
  }
  for (int32_t opacity : {70, 100}) expectEveryForm<Layout32>(canvas, source, opacity);
  const auto c = varied<Pixel32>(1003, 4), s = varied<Pixel32>(1003, 3);
  for (int32_t opacity : {1, 255, -70, 400, 100000, INT32_MAX}) expectEveryForm<Layout32>(c, s, opacity);
}

TEST(BlendVectorForms, SixteenBitAgainstThePlainForm) {
  auto source = varied<Pixel64>(1003, 3);
  for (size_t i = 0; i < source.size(); i += 5) source[i].mask = 0;
  const auto canvas = varied<Pixel64>(1003, 4);
  for (int32_t opacity : {1, 70, 100, 255, -70, 400, 100000, INT32_MAX})
    expectEveryForm<Layout64>(canvas, source, opacity);
  // The values outside the layout where the divisions by 32767 give 2 and -1.
  const std::vector<uint16_t> edges = {0, 1, 16446, 16447, 16448, 32766, 32767, 32768, 65533, 65534, 65535};
  std::vector<Pixel64> s, c;
  for (uint16_t d : edges)
    for (uint16_t e : edges) {
      c.push_back(Pixel64{d, e, d, 9});
      s.push_back(Pixel64{e, d, e, 20000});
    }
  expectEveryForm<Layout64>(c, s, 80);
}

TEST(BlendVectorForms, FloatAgainstThePlainForm) {
  auto source = varied<Pixel128>(1003, 3);
  const auto canvas = varied<Pixel128>(1003, 4);
  // Masks of 0, -0, 1 (with opacity 100 the copy shortcut of mode 0), 0.5,
  // negative ones and NaN (skipped by mode 0 only) beside the varied ones.
  const float masks[7] = {0.0f, -0.0f, 1.0f, 0.5f, -0.25f, std::numeric_limits<float>::quiet_NaN(), 2.0f};
  for (size_t i = 0; i < source.size(); i += 3) source[i].mask = masks[i % 7];
  for (int32_t opacity : {1, 70, 100, 255, -70, 100000}) expectEveryForm<Layout128>(canvas, source, opacity);
}
