// Mask compositing on bitmaps, natively against the stand-in and on Windows
// against real GDI (DIB sections and device-dependent bitmaps).
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "core/scratch.h"
#include "devicecontext/bitmaps.h"
#include "effects/effects.h"

using namespace effects::test;

namespace {

constexpr int32_t kW = 5, kH = 3;  // rows of 15 bytes padded to 16
constexpr uint32_t kFill = 0x5A112233u;

// What the layer engine makes of each pixel: the destination's colour moved
// toward the source's with the source mask m (the blue byte of `mask`), as
// Vexo32AdvancedDIB composites; mode 0 copies the source where
// round(opacity x 2.55) + m > 509.
Words engine(const Words& dest, const Words& source, const Words& mask, int32_t opacity, int32_t mode) {
  std::vector<Pixel32> d, s;
  for (size_t i = 0; i < dest.size(); ++i) {
    d.push_back({uint8_t(dest[i]), uint8_t(dest[i] >> 8), uint8_t(dest[i] >> 16), 0});
    s.push_back({uint8_t(source[i]), uint8_t(source[i] >> 8), uint8_t(source[i] >> 16), uint8_t(mask[i])});
  }
  Vexo32AdvancedDIB(nullptr, 0, 0, int32_t(d.size()), 1, d.data(), s.data(), uint8_t(opacity), mode);
  Words out;
  for (size_t i = 0; i < d.size(); ++i) {
    const bool copy = mode == 0 && std::nearbyint(opacity * 2.55) + s[i].mask > 509;
    out.push_back(copy ? colourOf(source[i]) : word(d[i].blue, d[i].green, d[i].red));
  }
  return out;
}

// Masks with every kind of weight: 0, 255 and values between, and green and
// red bytes that must not count.
Words maskWords(uint32_t seed) {
  Words m = randomWords(kW * kH, seed);
  m[0] = 0x00FFFF00u;   // blue 0: no weight
  m[1] = 0x000000FFu;   // full weight
  m[2] = 0xFFFFFF00u;
  m[7] = 0x000000FFu;
  return m;
}

Words solid(uint32_t colorref) {
  return Words(kW * kH, word(uint8_t(colorref >> 16), uint8_t(colorref >> 8), uint8_t(colorref)));
}

}  // namespace

// The four members that write back into the destination bitmap agree with
// the layer engine in every mode (and an unknown one), whichever the source
// (bitmap or colour) and the mask (bitmap or padded array), on both kinds of
// bitmap.
TEST(MaskComposite, BlendsAsTheLayerEngineInEveryMode) {
  const Words dest = randomWords(kW * kH, 1), source = randomWords(kW * kH, 2), mask = maskWords(3);
  const uint32_t colour = 0x0040C0E0u;
  auto maskArray = rows24(kW, kH, mask, 0xFF);
  for (auto kind : kSurfaceKinds) {
    for (int32_t mode = 0; mode <= 17; ++mode) {
      for (int32_t opacity : {100, 37}) {
        auto d1 = surfaceOf(kW, kH, dest, kind), d2 = surfaceOf(kW, kH, dest, kind);
        auto d3 = surfaceOf(kW, kH, dest, kind), d4 = surfaceOf(kW, kH, dest, kind);
        auto src = surfaceOf(kW, kH, source, kind), msk = surfaceOf(kW, kH, mask, kind);
        EXPECT_EQ(VexoMask(d1->dc(), d1->bitmap(), msk->dc(), msk->bitmap(), src->dc(), src->bitmap(), opacity, mode), 1);
        EXPECT_EQ(VexoMaskColor(d2->dc(), d2->bitmap(), msk->dc(), msk->bitmap(), colour, opacity, mode), 1);
        EXPECT_EQ(VexoMaskArray(d3->dc(), d3->bitmap(), maskArray.data(), src->dc(), src->bitmap(), opacity, mode), 1);
        EXPECT_EQ(VexoMaskArrayColor(d4->dc(), d4->bitmap(), maskArray.data(), colour, opacity, mode), 1);
        const Words fromSource = engine(dest, source, mask, opacity, mode);
        const Words fromColour = engine(dest, solid(colour), mask, opacity, mode);
        EXPECT_EQ(wordsOf(*d1), fromSource) << "mode " << mode << " opacity " << opacity;
        EXPECT_EQ(wordsOf(*d2), fromColour) << "mode " << mode << " opacity " << opacity;
        EXPECT_EQ(wordsOf(*d3), fromSource) << "mode " << mode << " opacity " << opacity;
        EXPECT_EQ(wordsOf(*d4), fromColour) << "mode " << mode << " opacity " << opacity;
      }
    }
  }
}

// One pixel, exact values: the COLORREF order, the shortcut's comparison
// with 509 (only an opacity above 100 tells it from the blend), an opacity of
// 99, multiply by a colour byte of 254.
TEST(MaskComposite, WorkedExamples) {
  const struct {
    const char* what;
    uint32_t dest, colour, mask;
    int32_t opacity, mode;
    uint32_t out;
  } cases[] = {
      {"blue colour", word(10, 20, 30), 0x00FF0000u, 255, 100, 0, word(255, 0, 0)},
      {"red colour", word(10, 20, 30), 0x000000FFu, 255, 100, 0, word(0, 0, 255)},
      {"opacity 99: round(10 + 190 x 0.99)", word(10, 10, 10), 0x00C8C8C8u, 255, 99, 0, word(198, 198, 198)},
      {"above 509: copied", word(0, 0, 0), 0x00FFFFFFu, 253, 101, 0, word(255, 255, 255)},
      {"509 itself: blended, a = 0.9942", word(0, 0, 0), 0x00FFFFFFu, 251, 101, 0, word(254, 254, 254)},
      {"multiply by 254 pulls to 0", word(200, 200, 200), 0x00FEFEFEu, 255, 100, 4, word(0, 0, 0)},
      {"mask 0: unchanged", word(1, 2, 3), 0x00FFFFFFu, 0, 100, 0, word(1, 2, 3)},
  };
  for (const auto& c : cases) {
    auto d = surfaceOf(1, 1, {c.dest});
    auto m = surfaceOf(1, 1, {c.mask});
    EXPECT_EQ(VexoMaskColor(d->dc(), d->bitmap(), m->dc(), m->bitmap(), c.colour, c.opacity, c.mode), 1) << c.what;
    EXPECT_EQ(d->at(0, 0), c.out) << c.what;
  }
}

// The DIB members leave the destination alone and show the composite at
// (x, y): a width x height rectangle from the bottom-left of the bottom-up
// picture. The 2x members leave the composite in pixels as 24-bit rows; the
// Pointer member composites onto what pixels holds, so strokes accumulate.
TEST(MaskComposite, ShowsOnTheOutputAndKeepsThePixels) {
  const int32_t h = 4;
  const Words dest = randomWords(kW * h, 4), source = randomWords(kW * h, 5), mask = randomWords(kW * h, 6);
  const auto maskArray = rows24(kW, h, mask);
  const uint32_t colour = 0x00302010u;
  const Words fromSource = engine(dest, source, mask, 60, 3), fromColour = engine(dest, Words(kW * h, 0x102030u), mask, 60, 3);
  auto d = surfaceOf(kW, h, dest), src = surfaceOf(kW, h, source), msk = surfaceOf(kW, h, mask);
  // (x, y) shows picture pixel (x - 1, y + 1): the bottom two rows, 3 wide
  auto expectShown = [&](TestSurface& out, const Words& picture, const char* what) {
    for (int32_t y = 1; y < 3; ++y)
      for (int32_t x = 1; x < 4; ++x) EXPECT_EQ(out.at(x, y), picture[size_t(y + 1) * kW + size_t(x - 1)]) << what;
    EXPECT_TRUE(out.untouchedOutside(1, 1, 4, 3)) << what;
  };
  {
    TestSurface out(6, 5, kFill);
    EXPECT_EQ(VexoMaskDIB(out.dc(), 1, 1, 3, 2, d->dc(), d->bitmap(), msk->dc(), msk->bitmap(), src->dc(), src->bitmap(), 60, 3), 1);
    expectShown(out, fromSource, "VexoMaskDIB");
  }
  {
    TestSurface out(6, 5, kFill);
    EXPECT_EQ(VexoMaskColorDIB(out.dc(), 1, 1, 3, 2, d->dc(), d->bitmap(), msk->dc(), msk->bitmap(), colour, 60, 3), 1);
    expectShown(out, fromColour, "VexoMaskColorDIB");
  }
  {
    TestSurface out(6, 5, kFill);
    EXPECT_EQ(VexoMaskArrayDIB(out.dc(), 1, 1, 3, 2, d->dc(), d->bitmap(), maskArray.data(), src->dc(), src->bitmap(), 60, 3), 1);
    expectShown(out, fromSource, "VexoMaskArrayDIB");
  }
  {
    TestSurface out(6, 5, kFill);
    EXPECT_EQ(VexoMaskArrayColorDIB(out.dc(), 1, 1, 3, 2, d->dc(), d->bitmap(), maskArray.data(), colour, 60, 3), 1);
    expectShown(out, fromColour, "VexoMaskArrayColorDIB");
  }
  {
    TestSurface out(6, 5, kFill);
    std::vector<uint8_t> pixels(stride24(kW) * h, 0xEE);
    EXPECT_EQ(VexoMaskArray2xDIB(out.dc(), 1, 1, 3, 2, d->dc(), d->bitmap(), pixels.data(), maskArray.data(), src->dc(), src->bitmap(), 60, 3), 1);
    EXPECT_EQ(fromRows24(kW, h, pixels), fromSource);
    expectShown(out, fromSource, "VexoMaskArray2xDIB");
  }
  {
    TestSurface out(6, 5, kFill);
    std::vector<uint8_t> pixels(stride24(kW) * h, 0xEE);
    EXPECT_EQ(VexoMaskArray2xColorDIB(out.dc(), 1, 1, 3, 2, d->dc(), d->bitmap(), pixels.data(), maskArray.data(), colour, 60, 3), 1);
    EXPECT_EQ(fromRows24(kW, h, pixels), fromColour);
    expectShown(out, fromColour, "VexoMaskArray2xColorDIB");
  }
  EXPECT_EQ(wordsOf(*d), dest);  // none of them changed the destination
  {
    // the destination's pixels are not read: the strokes go onto `earlier`
    const Words earlier = randomWords(kW * h, 7);
    std::vector<uint8_t> pixels = rows24(kW, h, earlier);
    TestSurface out(6, 5, kFill);
    const Words once = engine(earlier, Words(kW * h, 0x102030u), mask, 60, 3);
    EXPECT_EQ(VexoMaskArray2xColorDIBPointer(out.dc(), 1, 1, 3, 2, d->dc(), d->bitmap(), pixels.data(), maskArray.data(), colour, 60, 3), 1);
    EXPECT_EQ(fromRows24(kW, h, pixels), once);
    EXPECT_EQ(VexoMaskArray2xColorDIBPointer(out.dc(), 1, 1, 3, 2, d->dc(), d->bitmap(), pixels.data(), maskArray.data(), colour, 60, 3), 1);
    const Words twice = engine(once, Words(kW * h, 0x102030u), mask, 60, 3);
    EXPECT_EQ(fromRows24(kW, h, pixels), twice);
    expectShown(out, twice, "VexoMaskArray2xColorDIBPointer");
  }
}

// -1 and nothing changed or shown: opacity 0, a bitmap GDI cannot describe
// (any of the three), a source or mask of another size, no scratch memory.
TEST(MaskComposite, FailuresChangeNothing) {
  const Words dest = randomWords(kW * kH, 8), other = randomWords(kW * kH, 9);
  auto d = surfaceOf(kW, kH, dest), src = surfaceOf(kW, kH, other), msk = surfaceOf(kW, kH, other);
  auto wide = surfaceOf(kW + 1, kH, randomWords((kW + 1) * kH, 10)), tall = surfaceOf(kW, kH + 1, randomWords(kW * (kH + 1), 11));
  const auto maskArray = rows24(kW, kH, other);
  TestSurface out(4, 4, kFill);
  std::vector<uint8_t> pixels(stride24(kW) * kH, 0xEE);
  const auto pixelsBefore = pixels;
  EXPECT_EQ(VexoMask(d->dc(), d->bitmap(), msk->dc(), msk->bitmap(), src->dc(), src->bitmap(), 0, 0), -1);
  EXPECT_EQ(VexoMaskArray2xColorDIB(out.dc(), 0, 0, 4, 4, d->dc(), d->bitmap(), pixels.data(), maskArray.data(), 0xFF, 0, 0), -1);
  EXPECT_EQ(pixels, pixelsBefore);
  EXPECT_EQ(VexoMask(d->dc(), nullptr, msk->dc(), msk->bitmap(), src->dc(), src->bitmap(), 50, 0), -1);
  EXPECT_EQ(VexoMask(d->dc(), d->bitmap(), msk->dc(), nullptr, src->dc(), src->bitmap(), 50, 0), -1);
  EXPECT_EQ(VexoMask(d->dc(), d->bitmap(), msk->dc(), msk->bitmap(), src->dc(), nullptr, 50, 0), -1);
  EXPECT_EQ(VexoMaskArrayDIB(out.dc(), 0, 0, 4, 4, d->dc(), d->bitmap(), maskArray.data(), src->dc(), nullptr, 50, 0), -1);
  EXPECT_EQ(VexoMask(d->dc(), d->bitmap(), msk->dc(), msk->bitmap(), wide->dc(), wide->bitmap(), 50, 0), -1);
  EXPECT_EQ(VexoMaskColor(d->dc(), d->bitmap(), tall->dc(), tall->bitmap(), 0xFF, 50, 0), -1);
  EXPECT_EQ(VexoMaskArray2xDIB(out.dc(), 0, 0, 4, 4, d->dc(), d->bitmap(), pixels.data(), maskArray.data(), wide->dc(), wide->bitmap(), 50, 0), -1);
  {
    effects::ScratchLimit none(0);
    EXPECT_EQ(VexoMaskArrayColor(d->dc(), d->bitmap(), maskArray.data(), 0xFF, 50, 0), -1);
    EXPECT_EQ(VexoMaskColorDIB(out.dc(), 0, 0, 4, 4, d->dc(), d->bitmap(), msk->dc(), msk->bitmap(), 0xFF, 50, 0), -1);
  }
  EXPECT_EQ(wordsOf(*d), dest);
  EXPECT_TRUE(out.untouched());
  // the 2x member had read the destination into pixels when the source failed
  EXPECT_EQ(fromRows24(kW, kH, pixels), coloursOf(dest));
}
