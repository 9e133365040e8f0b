// Mask compositing on bitmaps, natively against the stand-in and on Windows
// against real GDI (DIB sections and device-dependent bitmaps).
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <utility>
#include <vector>

#include "core/scratch.h"
#include "devicecontext/bitmaps.h"
#include "effects/effects.h"

using namespace effects::test;

namespace {

constexpr int32_t kW = 5, kH = 4;  // rows of 15 bytes padded to 16
constexpr uint32_t kFill = 0x5A112233u, kColour = 0x0040C0E0u;

// What the layer engine makes of each pixel (Vexo32AdvancedDIB with the
// mask's blue byte as the source mask); mode 0 copies the source where
// round(opacity x 2.55) + m > 509.
Words engine(const Words& dest, const Words& source, const Words& mask, int32_t opacity, int32_t mode) {
  auto d = pixelsOf(dest), s = pixelsOf(source);
  for (size_t i = 0; i < s.size(); ++i) s[i].mask = uint8_t(mask[i]);
  Vexo32AdvancedDIB(nullptr, 0, 0, int32_t(d.size()), 1, d.data(), s.data(), uint8_t(opacity), mode);
  Words out = coloursOf(d);
  for (size_t i = 0; i < d.size(); ++i)
    if (mode == 0 && std::nearbyint(opacity * 2.55) + s[i].mask > 509) out[i] = source[i] & 0xFFFFFFu;
  return out;
}
const Words kSolid(kW * kH, word(0x40, 0xC0, 0xE0));  // kColour as a picture

}  // namespace

// The members that write back agree with the layer engine in every mode
// (and an unknown one), source a bitmap or a colour, mask a bitmap (weights
// 0 and 255 among them) or a padded array, on both kinds of bitmap; a small
// picture and one whose rows are composited in several runs with a ragged
// end; opacity 101 copies the fullest weights and blends the rest.
TEST(MaskComposite, BlendsAsTheLayerEngineInEveryMode) {
  for (auto [w, h] : {std::pair{kW, kH}, std::pair{1037, 2}}) {
    const size_t n = size_t(w) * size_t(h);
    const Words dest = randomWords(n, 1), source = randomWords(n, 2);
    Words mask = randomWords(n, 3);
    mask[0] = 0x00FFFF00u, mask[1] = 0xFF;
    const auto maskArray = rows24(w, h, mask, 0xFF);
    const Words solid(n, word(0x40, 0xC0, 0xE0));  // kColour as a picture
    for (auto kind : kSurfaceKinds)
      for (int32_t mode = 0; mode <= 17; ++mode)
        for (int32_t opacity : {100, 37, 101}) {
          auto src = surfaceOf(w, h, source, kind), msk = surfaceOf(w, h, mask, kind);
          auto d1 = surfaceOf(w, h, dest, kind), d2 = surfaceOf(w, h, dest, kind);
          auto d3 = surfaceOf(w, h, dest, kind), d4 = surfaceOf(w, h, dest, kind);
          EXPECT_EQ(VexoMask(d1->dc(), d1->bitmap(), msk->dc(), msk->bitmap(), src->dc(), src->bitmap(), opacity, mode), 1);
          EXPECT_EQ(VexoMaskColor(d2->dc(), d2->bitmap(), msk->dc(), msk->bitmap(), kColour, opacity, mode), 1);
          EXPECT_EQ(VexoMaskArray(d3->dc(), d3->bitmap(), maskArray.data(), src->dc(), src->bitmap(), opacity, mode), 1);
          EXPECT_EQ(VexoMaskArrayColor(d4->dc(), d4->bitmap(), maskArray.data(), kColour, opacity, mode), 1);
          const Words fromSource = engine(dest, source, mask, opacity, mode), fromColour = engine(dest, solid, mask, opacity, mode);
          EXPECT_TRUE(wordsOf(*d1) == fromSource && wordsOf(*d3) == fromSource) << w << " " << mode << " " << opacity;
          EXPECT_TRUE(wordsOf(*d2) == fromColour && wordsOf(*d4) == fromColour) << w << " " << mode << " " << opacity;
        }
  }
}

// One pixel: the COLORREF order, opacity 99, and the comparison with 509
// (only an opacity above 100 tells the copy from the blend).
TEST(MaskComposite, WorkedExamples) {
  const struct { uint32_t dest, colour, mask; int32_t opacity; uint32_t out; } cases[] = {
      {word(10, 20, 30), 0x00FF0000u, 255, 100, word(255, 0, 0)},
      {word(10, 20, 30), 0x000000FFu, 255, 100, word(0, 0, 255)},
      {word(10, 10, 10), 0x00C8C8C8u, 255, 99, word(198, 198, 198)},  // round(10 + 190 x 0.99)
      {word(0, 0, 0), 0x00FFFFFFu, 253, 101, word(255, 255, 255)},    // 258 + 253 > 509: copied
      {word(0, 0, 0), 0x00FFFFFFu, 251, 101, word(254, 254, 254)},    // 509: 255 x 0.9942
  };
  for (const auto& c : cases) {
    auto d = surfaceOf(1, 1, {c.dest}), m = surfaceOf(1, 1, {c.mask});
    EXPECT_EQ(VexoMaskColor(d->dc(), d->bitmap(), m->dc(), m->bitmap(), c.colour, c.opacity, 0), 1);
    EXPECT_EQ(d->at(0, 0), c.out) << c.mask << " " << c.opacity;
  }
}

// The DIB members leave the destination alone and show the composite with
// SetDIBitsToDevice at (1, 1), 3 x 2: the bottom-left of the bottom-up
// picture. The 2x members leave it in pixels; the Pointer member composites
// onto what pixels holds (not the destination), so strokes accumulate.
TEST(MaskComposite, ShowsOnTheOutputAndKeepsThePixels) {
  const Words dest = randomWords(kW * kH, 4), source = randomWords(kW * kH, 5), mask = randomWords(kW * kH, 6);
  const auto maskArray = rows24(kW, kH, mask);
  auto d = surfaceOf(kW, kH, dest), src = surfaceOf(kW, kH, source), msk = surfaceOf(kW, kH, mask);
  const Words fromSource = engine(dest, source, mask, 60, 3), fromColour = engine(dest, kSolid, mask, 60, 3);
  const Words earlier = randomWords(kW * kH, 7), once = engine(earlier, kSolid, mask, 60, 3);
  using Call = std::function<int32_t(void*, uint8_t*)>;
  const struct { Call run; const Words& shown; bool keeps; } cases[] = {
      {[&](void* o, uint8_t*) { return VexoMaskDIB(o, 1, 1, 3, 2, d->dc(), d->bitmap(), msk->dc(), msk->bitmap(), src->dc(), src->bitmap(), 60, 3); }, fromSource, false},
      {[&](void* o, uint8_t*) { return VexoMaskColorDIB(o, 1, 1, 3, 2, d->dc(), d->bitmap(), msk->dc(), msk->bitmap(), kColour, 60, 3); }, fromColour, false},
      {[&](void* o, uint8_t*) { return VexoMaskArrayDIB(o, 1, 1, 3, 2, d->dc(), d->bitmap(), maskArray.data(), src->dc(), src->bitmap(), 60, 3); }, fromSource, false},
      {[&](void* o, uint8_t*) { return VexoMaskArrayColorDIB(o, 1, 1, 3, 2, d->dc(), d->bitmap(), maskArray.data(), kColour, 60, 3); }, fromColour, false},
      {[&](void* o, uint8_t* p) { return VexoMaskArray2xDIB(o, 1, 1, 3, 2, d->dc(), d->bitmap(), p, maskArray.data(), src->dc(), src->bitmap(), 60, 3); }, fromSource, true},
      {[&](void* o, uint8_t* p) { return VexoMaskArray2xColorDIB(o, 1, 1, 3, 2, d->dc(), d->bitmap(), p, maskArray.data(), kColour, 60, 3); }, fromColour, true},
      {[&](void* o, uint8_t* p) { return VexoMaskArray2xColorDIBPointer(o, 1, 1, 3, 2, d->dc(), d->bitmap(), p, maskArray.data(), kColour, 60, 3); }, once, true},
  };
  for (const auto& c : cases) {
    TestSurface out(6, 5, kFill);
    auto pixels = rows24(kW, kH, earlier);
    const auto before = pixels;
    EXPECT_EQ(c.run(out.dc(), pixels.data()), 1);
    for (int32_t y = 1; y < 3; ++y)
      for (int32_t x = 1; x < 4; ++x) EXPECT_EQ(out.at(x, y), c.shown[size_t((y + 1) * kW + x - 1)]) << &c - cases;
    EXPECT_TRUE(out.untouchedOutside(1, 1, 4, 3));
    EXPECT_EQ(pixels, c.keeps ? rows24(kW, kH, c.shown) : before);
  }
  auto pixels = rows24(kW, kH, once);
  TestSurface out(6, 5, kFill);
  VexoMaskArray2xColorDIBPointer(out.dc(), 1, 1, 3, 2, d->dc(), d->bitmap(), pixels.data(), maskArray.data(), kColour, 60, 3);
  EXPECT_EQ(fromRows24(kW, kH, pixels), engine(once, kSolid, mask, 60, 3));
  EXPECT_EQ(wordsOf(*d), dest);
}

// -1 and nothing changed or shown: opacity 0, a bitmap GDI cannot describe,
// a source or mask of another size, no scratch memory.
TEST(MaskComposite, FailuresChangeNothing) {
  const Words dest = randomWords(kW * kH, 8), other = randomWords(kW * kH, 9);
  auto d = surfaceOf(kW, kH, dest), src = surfaceOf(kW, kH, other), wide = surfaceOf(kW + 1, kH, randomWords(24, 1));
  const auto maskArray = rows24(kW, kH, other);
  TestSurface out(4, 4, kFill);
  EXPECT_EQ(VexoMask(d->dc(), d->bitmap(), src->dc(), src->bitmap(), src->dc(), src->bitmap(), 0, 0), -1);
  EXPECT_EQ(VexoMask(d->dc(), nullptr, src->dc(), src->bitmap(), src->dc(), src->bitmap(), 50, 0), -1);
  EXPECT_EQ(VexoMask(d->dc(), d->bitmap(), src->dc(), nullptr, src->dc(), src->bitmap(), 50, 0), -1);
  EXPECT_EQ(VexoMask(d->dc(), d->bitmap(), src->dc(), src->bitmap(), src->dc(), nullptr, 50, 0), -1);
  EXPECT_EQ(VexoMaskColor(d->dc(), d->bitmap(), wide->dc(), wide->bitmap(), 0xFF, 50, 0), -1);
  EXPECT_EQ(VexoMaskArrayDIB(out.dc(), 0, 0, 4, 4, d->dc(), d->bitmap(), maskArray.data(), wide->dc(), wide->bitmap(), 50, 0), -1);
  EXPECT_EQ(VexoMaskArrayColor(d->dc(), d->bitmap(), nullptr, 0xFF, 50, 0), -1);
  {
    effects::ScratchLimit none(0);
    EXPECT_EQ(VexoMaskArrayColor(d->dc(), d->bitmap(), maskArray.data(), 0xFF, 50, 0), -1);
    EXPECT_EQ(VexoMaskColorDIB(out.dc(), 0, 0, 4, 4, d->dc(), d->bitmap(), src->dc(), src->bitmap(), 0xFF, 50, 0), -1);
  }
  EXPECT_EQ(wordsOf(*d), dest);
  EXPECT_TRUE(out.untouched());
}
