// The vector forms of the mask utilities, the inversion and the fill against
// their plain per-pixel forms, on pictures of odd sizes (so the vectors leave
// a tail) over each layout's whole range, NaN and infinities included.
#include <gtest/gtest.h>

#include "core/buffers.h"
#include "support/fast_paths.h"

using namespace effects;
using namespace effects::buffers;
using namespace effects::test;

namespace {

template <class P, class A, class B, class C, class D, class E, class F>
void expectEveryFamily(A invert, B invertMask, C clear, D blank, E toImage, F fill, decltype(P::mask) full, P colour) {
  for (size_t n : {1u, 3u, 7u, 1001u}) {
    SCOPED_TRACE(n);
    const auto in = varied<P>(n);
    for (int32_t channel = 0; channel <= 5; ++channel)
      expectPlain(in, [&](P* p, int32_t k) { invert(4 * k, p, channel); }, Invert<P>{Channels::of(channel)});
    expectPlain(in, [&](P* p, int32_t k) { invertMask(4 * k, p); }, InvertMask<P>{});
    expectPlain(in, [&](P* p, int32_t k) { clear(4 * k, p); }, SetMask<P>{full});
    expectPlain(in, [&](P* p, int32_t k) { blank(4 * k, p); }, SetMask<P>{0});
    expectPlain(in, [&](P* p, int32_t k) { toImage(4 * k, p); }, MaskToImage<P>{});
    expectPlain(in, [&](P* p, int32_t k) { fill(4 * k, p, colour.red, colour.green, colour.blue, colour.mask); },
                Fill<P>{colour});
  }
}

}  // namespace

TEST(BufferVectorForms, AgainstThePlainForms) {
  expectEveryFamily<Pixel32>(VexoInvert32, VexoInvertMask32, VexoClearMask32, VexoBlankMask32, Vexo32MasktoImageDIB,
                             VexoNewPicture32, 255, Pixel32{1, 2, 3, 4});
  expectEveryFamily<Pixel64>(VexoInvert64, VexoInvertMask64, VexoClearMask64, VexoBlankMask64, Vexo64MasktoImageDIB,
                             VexoNewPicture64, 32767, Pixel64{1, 40000, 3, 4});
  expectEveryFamily<Pixel128>(VexoInvert128, VexoInvertMask128, VexoClearMask128, VexoBlankMask128,
                              Vexo128MasktoImageDIB, VexoNewPicture128, 1.0f, Pixel128{-0.0f, 2.5f, 1e-40f, 0.5f});
}
