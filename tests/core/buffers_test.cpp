#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "effects/effects.h"
#include "support/pictures.h"

using namespace effects::test;

namespace {

// One pixel through an export that takes only (elementCount, pixels), with
// the export's answer checked on the way.
template <class P>
P after(int32_t(EFFECTS_CALL* op)(int32_t, P*), P p, int32_t result = 0) {
  EXPECT_EQ(op(4, &p), result);
  return p;
}

}  // namespace

// Red is element 2 and blue element 0; the mask is never touched, and an
// unknown selector touches nothing.
TEST(Invert, SelectorsAndPerLayoutArithmetic) {
  struct Case { int32_t selector; Pixel32 expected; };
  const Pixel32 start{10, 20, 30, 40};
  for (Case c : {Case{1, {245, 235, 225, 40}}, Case{2, {10, 20, 225, 40}}, Case{3, {10, 235, 30, 40}},
                 Case{4, {245, 20, 30, 40}}, Case{0, start}, Case{5, start}}) {
    Pixel32 p = start;
    EXPECT_EQ(VexoInvert32(4, &p, c.selector), 0);
    EXPECT_EQ(p, c.expected) << "selector " << c.selector;
  }
  // 16 bits subtract from 32767 and wrap; float does not clamp.
  Pixel64 w{0, 32767, 40000, 5};
  VexoInvert64(4, &w, 1);
  EXPECT_EQ(w, (Pixel64{32767, 0, 58303, 5}));  // 32767 - 40000 modulo 65536
  Pixel128 f{0.25f, 0.0f, 2.5f, 0.75f};
  EXPECT_EQ(VexoInvert128(4, &f, 2), 0);
  EXPECT_EQ(f, (Pixel128{0.25f, 0.0f, -1.5f, 0.75f}));
}

// The pixel count rule shared by every whole-buffer export: ((n - 1) >> 2) + 1
// pixels. The fill also shows the argument order of the new picture: red,
// green, blue, mask.
TEST(ElementCount, PartialLastPixel) {
  struct Case { int32_t count; size_t touched; };
  for (Case c : {Case{5, 2}, Case{8, 2}}) {
    std::vector<Pixel32> px(3, Pixel32{1, 2, 3, 4});
    auto expected = px;
    std::fill_n(expected.begin(), c.touched, Pixel32{30, 20, 10, 40});
    EXPECT_EQ(VexoNewPicture32(c.count, px.data(), 10, 20, 30, 40), 0);
    EXPECT_EQ(px, expected) << "count " << c.count;
  }
}

// Full is 255, 32767 and 1.0; the mask becomes a grey image (the float one
// copied bit for bit), and these exports answer 1, also when they return early.
TEST(Masks, MaskUtilities) {
  EXPECT_EQ(after(VexoInvertMask32, Pixel32{1, 2, 3, 200}), (Pixel32{1, 2, 3, 55}));
  EXPECT_EQ(after(VexoInvertMask64, Pixel64{1, 2, 3, 0}), (Pixel64{1, 2, 3, 32767}));
  EXPECT_EQ(after(VexoClearMask128, Pixel128{1, 2, 3, 4}), (Pixel128{1, 2, 3, 1.0f}));
  EXPECT_EQ(after(VexoBlankMask32, Pixel32{1, 2, 3, 4}), (Pixel32{1, 2, 3, 0}));
  EXPECT_EQ(Vexo32MasktoImageDIB(0, nullptr), 1);
  EXPECT_EQ(after(Vexo32MasktoImageDIB, Pixel32{10, 20, 30, 200}, 1), (Pixel32{200, 200, 200, 200}));
  EXPECT_EQ(after(Vexo128MasktoImageDIB, Pixel128{1, 2, 3, -0.0f}, 1), (Pixel128{-0.0f, -0.0f, -0.0f, -0.0f}));
}

// The colour arguments come red, green, blue (the reverse of memory order),
// and are stored without clamping.
TEST(NewPicture, WideLayoutsKeepTheArgumentOrder) {
  Pixel64 b{};
  Pixel128 c{};
  EXPECT_EQ(VexoNewPicture64(4, &b, 1, 2, 40000, 4), 0);
  EXPECT_EQ(VexoNewPicture128(4, &c, 2.5f, -1.0f, 0.125f, -0.0f), 0);
  EXPECT_EQ(b, (Pixel64{40000, 2, 1, 4}));
  EXPECT_EQ(c, (Pixel128{0.125f, -1.0f, 2.5f, -0.0f}));
}
