#include <gtest/gtest.h>

#include <vector>

#include "effects/effects.h"
#include "support/pictures.h"

using namespace effects::test;

TEST(Invert, EightBitComplementPerSelector) {
  auto px = pattern32(3);
  const auto before = px;
  EXPECT_EQ(VexoInvert32(12, px.data(), 2), 0);
  for (size_t i = 0; i < px.size(); ++i) {
    EXPECT_EQ(px[i].red, 255 - before[i].red);
    EXPECT_EQ(px[i].green, before[i].green);
    EXPECT_EQ(px[i].blue, before[i].blue);
    EXPECT_EQ(px[i].mask, before[i].mask);
  }
  px = before;
  VexoInvert32(12, px.data(), 3);
  EXPECT_EQ(px[1].green, 255 - before[1].green);
  EXPECT_EQ(px[1].red, before[1].red);
  px = before;
  VexoInvert32(12, px.data(), 4);
  EXPECT_EQ(px[2].blue, 255 - before[2].blue);
  EXPECT_EQ(px[2].green, before[2].green);
  px = before;
  VexoInvert32(12, px.data(), 1);
  for (size_t i = 0; i < px.size(); ++i) {
    EXPECT_EQ(px[i].blue, 255 - before[i].blue);
    EXPECT_EQ(px[i].green, 255 - before[i].green);
    EXPECT_EQ(px[i].red, 255 - before[i].red);
    EXPECT_EQ(px[i].mask, before[i].mask);
  }
}

TEST(Invert, UnknownSelectorsTouchNothing) {
  for (int32_t sel : {0, 5, -1, 1000}) {
    auto a = pattern32(4); const auto a0 = a;
    auto b = pattern64(4); const auto b0 = b;
    auto c = pattern128(4); const auto c0 = c;
    EXPECT_EQ(VexoInvert32(16, a.data(), sel), 0);
    EXPECT_EQ(VexoInvert64(16, b.data(), sel), 0);
    EXPECT_EQ(VexoInvert128(16, c.data(), sel), 0);
    EXPECT_TRUE(sameBytes(a, a0)) << sel;
    EXPECT_TRUE(sameBytes(b, b0)) << sel;
    EXPECT_TRUE(sameBytes(c, c0)) << sel;
  }
}

TEST(Invert, SixteenBitSubtractsFrom32767AndWraps) {
  std::vector<Pixel64> px{{0, 32767, 40000, 5}};
  VexoInvert64(4, px.data(), 1);
  EXPECT_EQ(px[0].blue, 32767);
  EXPECT_EQ(px[0].green, 0);
  EXPECT_EQ(px[0].red, static_cast<uint16_t>(32767 - 40000));  // wraps modulo 65536
  EXPECT_EQ(px[0].mask, 5);
  auto twice = pattern64(7); const auto orig = twice;
  VexoInvert64(28, twice.data(), 1);
  VexoInvert64(28, twice.data(), 1);
  EXPECT_TRUE(sameBytes(twice, orig));
}

TEST(Invert, FloatHasNoClamp) {
  std::vector<Pixel128> px{{0.25f, 0.0f, 2.5f, 0.75f}};
  VexoInvert128(4, px.data(), 2);
  EXPECT_EQ(px[0].red, -1.5f);
  EXPECT_EQ(px[0].blue, 0.25f);
  EXPECT_EQ(px[0].mask, 0.75f);
  VexoInvert128(4, px.data(), 4);
  EXPECT_EQ(px[0].blue, 0.75f);
}

// The pixel count rule shared by every whole-buffer export: ((n - 1) >> 2) + 1
// pixels, nothing for n < 1, and never a pixel beyond.
TEST(ElementCount, PartialLastPixelAndNonPositiveCounts) {
  struct Case { int32_t count; size_t touched; };
  for (Case c : {Case{5, 2}, Case{4, 1}, Case{1, 1}, Case{8, 2}, Case{9, 3}, Case{0, 0}, Case{-4, 0},
                 Case{INT32_MIN, 0}}) {
    std::vector<Pixel32> px(4, Pixel32{1, 2, 3, 4});
    VexoNewPicture32(c.count, px.data(), 10, 20, 30, 40);
    for (size_t i = 0; i < px.size(); ++i) {
      const bool filled = px[i].blue == 30;
      EXPECT_EQ(filled, i < c.touched) << "count " << c.count << " pixel " << i;
    }
    std::vector<Pixel128> f(4, Pixel128{0.5f, 0.5f, 0.5f, 0.5f});
    EXPECT_EQ(Vexo128MasktoImageDIB(c.count, f.data()), 1);
    VexoBlankMask128(c.count, f.data());
    for (size_t i = 0; i < f.size(); ++i) EXPECT_EQ(f[i].mask == 0.0f, i < c.touched) << c.count;
  }
}

TEST(Masks, ClearBlankInvert) {
  auto a = pattern32(3); auto b = pattern64(3); auto c = pattern128(3);
  const auto a0 = a; const auto b0 = b; const auto c0 = c;
  VexoClearMask32(12, a.data()); VexoClearMask64(12, b.data()); VexoClearMask128(12, c.data());
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(a[i].mask, 255); EXPECT_EQ(b[i].mask, 32767); EXPECT_EQ(c[i].mask, 1.0f);
    EXPECT_EQ(a[i].red, a0[i].red); EXPECT_EQ(b[i].green, b0[i].green); EXPECT_EQ(bitsOf(c[i].blue), bitsOf(c0[i].blue));
  }
  VexoBlankMask32(12, a.data()); VexoBlankMask64(12, b.data()); VexoBlankMask128(12, c.data());
  for (int i = 0; i < 3; ++i) { EXPECT_EQ(a[i].mask, 0); EXPECT_EQ(b[i].mask, 0); EXPECT_EQ(c[i].mask, 0.0f); }
  VexoInvertMask32(12, a.data()); VexoInvertMask64(12, b.data()); VexoInvertMask128(12, c.data());
  for (int i = 0; i < 3; ++i) { EXPECT_EQ(a[i].mask, 255); EXPECT_EQ(b[i].mask, 32767); EXPECT_EQ(c[i].mask, 1.0f); }
  std::vector<Pixel32> p{{1, 2, 3, 200}};
  VexoInvertMask32(4, p.data());
  EXPECT_EQ(p[0].mask, 55);
  EXPECT_EQ(p[0].red, 3);
  std::vector<Pixel128> q{{0, 0, 0, 0.25f}};
  VexoInvertMask128(4, q.data());
  EXPECT_EQ(q[0].mask, 0.75f);
}

TEST(Masks, MaskBecomesGreyImage) {
  std::vector<Pixel32> a{{10, 20, 30, 200}};
  EXPECT_EQ(Vexo32MasktoImageDIB(4, a.data()), 1);
  EXPECT_EQ(a[0].blue, 200); EXPECT_EQ(a[0].green, 200); EXPECT_EQ(a[0].red, 200); EXPECT_EQ(a[0].mask, 200);
  std::vector<Pixel64> b{{10, 20, 30, 40000}};
  EXPECT_EQ(Vexo64MasktoImageDIB(4, b.data()), 1);
  EXPECT_EQ(b[0].blue, 40000); EXPECT_EQ(b[0].red, 40000);
  std::vector<Pixel128> c{{0, 0, 0, -0.0f}};  // the mask is copied bit for bit
  EXPECT_EQ(Vexo128MasktoImageDIB(4, c.data()), 1);
  EXPECT_EQ(bitsOf(c[0].red), 0x80000000u);
  EXPECT_EQ(Vexo32MasktoImageDIB(0, a.data()), 1);  // early return still answers 1
}

TEST(NewPicture, ArgumentsComeRedGreenBlueMask) {
  std::vector<Pixel32> a(2);
  EXPECT_EQ(VexoNewPicture32(8, a.data(), 255, 0, 0, 255), 0);
  for (auto& p : a) { EXPECT_EQ(p.blue, 0); EXPECT_EQ(p.green, 0); EXPECT_EQ(p.red, 255); EXPECT_EQ(p.mask, 255); }
  std::vector<Pixel64> b(1);
  VexoNewPicture64(4, b.data(), 1, 2, 40000, 4);  // no clamping
  EXPECT_EQ(b[0].blue, 40000); EXPECT_EQ(b[0].green, 2); EXPECT_EQ(b[0].red, 1); EXPECT_EQ(b[0].mask, 4);
  std::vector<Pixel128> c(1);
  VexoNewPicture128(4, c.data(), 2.5f, -1.0f, 0.125f, 1.0f);
  EXPECT_EQ(c[0].blue, 0.125f); EXPECT_EQ(c[0].green, -1.0f); EXPECT_EQ(c[0].red, 2.5f); EXPECT_EQ(c[0].mask, 1.0f);
}
