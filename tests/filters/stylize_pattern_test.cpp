#include <gtest/gtest.h>

#include <vector>

#include "adjust/adjust_checks.h"

using namespace effects::test;

namespace {
template <class P>
std::vector<P> run(std::vector<P> px, void (*f)(P*)) {
  f(px.data());
  return px;
}
}  // namespace

TEST(StylizePatterns, Thatch) {
  // Black 2 x 2: (0, 0) gets both additions, (1, 1) none.
  EXPECT_TRUE(sameBytes(run<Pixel32>(std::vector<Pixel32>(4, {0, 0, 0, 7}), [](Pixel32* p) { VexoThachet32(2, 2, p, 12345); }),
               {{0, 82, 158, 7}, {0, 41, 79, 7}, {0, 41, 79, 7}, {0, 0, 0, 7}}));
  EXPECT_TRUE(sameBytes(run<Pixel64>(std::vector<Pixel64>(2, {0, 30000, 1, 7}), [](Pixel64* p) { VexoThachet64(1, 2, p, 0); }),
               {{0, 32767, 20303, 7}, {0, 32767, 10152, 7}}));
  // The float member's even rows get the 16-bit amounts unscaled.
  EXPECT_TRUE(sameBytes(run<Pixel128>(std::vector<Pixel128>(4, {0, 0, 0, 0.5f}), [](Pixel128* p) { VexoThachet128(2, 2, p, 0); }),
               {{0, 5268.16064453125f, 10151.3095703125f, 0.5f}, {0, 5268, 10151, 0.5f},
                {0, 0.16077150404453278f, 0.3097933828830719f, 0.5f}, {0, 0, 0, 0.5f}}));
}

TEST(StylizePatterns, BacterialPixelizerDisplays) {
  expectExamples<Pixel32>({
      {"cast 1 wraps", ONE(VexoBacterial32(1, 1, p, 1, 1)), {0, 230, 200, 7}, {0, 15, 23, 7}},
      {"cast 1 on blue", ONE(VexoBacterial32(1, 1, p, 1, 4)), {0, 230, 200, 7}, {0, 230, 200, 7}},
      {"cast 2", ONE(VexoBacterial32(1, 1, p, 2, 1)), {10, 20, 30, 7}, {51, 20, 109, 7}},
      {"cast 3", ONE(VexoBacterial32(1, 1, p, 3, 1)), {10, 20, 30, 7}, {89, 61, 30, 7}},
      {"cast 4", ONE(VexoBacterial32(1, 1, p, 4, 1)), {10, 20, 30, 7}, {89, 20, 71, 7}},
      {"cast 5", ONE(VexoBacterial32(1, 1, p, 5, 1)), {10, 20, 30, 7}, {51, 99, 30, 7}},
      {"cast 6 on green", ONE(VexoBacterial32(1, 1, p, 6, 3)), {10, 20, 30, 7}, {10, 99, 30, 7}},
      {"cast 7", ONE(VexoBacterial32(1, 1, p, 7, 1)), {10, 20, 30, 7}, {10, 20, 30, 7}},
      {"offsets clamp", ONE(VexoPixelizer32(1, 1, p, 10, -110, 300)), {100, 100, 100, 7}, {255, 0, 110, 7}},
      {"phosphor", ONE(VexoDigitalDisplay332(1, 1, p)), {90, 200, 90, 7}, {0, 255, 0, 7}},
  });
  // 16 bits: a channel without an addition is not written (40000 stays).
  expectExamples<Pixel64>({
      {"cast 1", ONE(VexoBacterial64(1, 1, p, 1, 1)), {40000, 30000, 100, 7}, {40000, 32767, 10251, 7}},
      {"offsets unscaled", ONE(VexoPixelizer64(1, 1, p, 10, -200, 300)), {100, 100, 100, 7}, {400, 0, 110, 7}},
      {"phosphor", ONE(VexoDigitalDisplay564(1, 1, p)), {5, 0, 5, 7}, {0, 19274, 0, 7}},
  });
  expectExamples<Pixel128>({
      {"cast 1, -0 kept", ONE(VexoBacterial128(1, 1, p, 1, 1)), {-0.0f, 0.5f, 0.9f, 0.5f}, {-0.0f, 0.6607714891433716f, 1.2097933292388916f, 0.5f}},
      {"offsets over 255", ONE(VexoPixelizer128(1, 1, p, 10, -10, 300)), {0.5f, 0.5f, 0.5f, 0.5f}, {1.6764706373214722f, 0.46078431606292725f, 0.5392156839370728f, 0.5f}},
      {"phosphor", ONE(VexoDigitalDisplay4128(1, 1, p)), {0.5f, 0.9f, 0.5f, 0.5f}, {0, 1.4882137775421143f, 0, 0.5f}},
  });
  // Which pixels: the grid of even rows and columns; every third column, row,
  // or both; scan lines copied down (colour only) where a row below exists.
  const Pixel32 g{90, 200, 90, 7}, d{0, 255, 0, 7}, o{255, 255, 255, 7};
  EXPECT_TRUE(sameBytes(run<Pixel32>(std::vector<Pixel32>(9, g), [](Pixel32* p) { VexoPixelizer32(3, 3, p, 99, 99, 99); }),
               {{189, 255, 189, 7}, g, {189, 255, 189, 7}, g, g, g, {189, 255, 189, 7}, g, {189, 255, 189, 7}}));
  EXPECT_TRUE(sameBytes(run<Pixel32>(std::vector<Pixel32>(8, g), [](Pixel32* p) { VexoDigitalDisplay332(4, 2, p); }), {d, g, g, d, d, g, g, d}));
  EXPECT_TRUE(sameBytes(run<Pixel32>(std::vector<Pixel32>(8, g), [](Pixel32* p) { VexoDigitalDisplay432(2, 4, p); }), {d, d, g, g, g, g, d, d}));
  EXPECT_TRUE(sameBytes(run<Pixel32>(std::vector<Pixel32>(16, g), [](Pixel32* p) { VexoDigitalDisplay532(4, 4, p); }),
               {d, g, g, d, g, g, g, g, g, g, g, g, d, g, g, d}));
  EXPECT_TRUE(sameBytes(run<Pixel32>({o, o, g, g, g, g}, [](Pixel32* p) { VexoMonitor32(2, 3, p); }), {o, o, o, o, g, g}));
}

TEST(StylizePatterns, Ghosts) {
  // (3, 3) averages (0, 0) with (6, 6); (6, 6) then averages the new (3, 3)
  // with (9, 9): the ghost of (0, 0) reaches (6, 6) at a quarter.
  std::vector<Pixel32> a(100, Pixel32{0, 77, 0, 9}), want = a;
  a[0] = want[0] = {100, 77, 200, 9};
  want[33] = {50, 77, 100, 9}, want[66] = {25, 77, 50, 9};
  Vexo3DGoggles32(10, 10, a.data());
  EXPECT_TRUE(sameBytes(a, want));
  std::vector<Pixel128> f(49, Pixel128{0, 0.5f, 0, 0.5f});
  f[0].red = 1.0f, f[48].red = 0.25f;
  Vexo3DGoggles128(7, 7, f.data());
  EXPECT_EQ(f[24], (Pixel128{0, 0.5f, 0.625f, 0.5f}));
  for (auto [w, h] : {std::pair{6, 7}, std::pair{7, 6}}) {  // too small: nothing happens
    std::vector<Pixel64> s(42, Pixel64{0, 0, 0, 0}), before = s;
    s[0].red = before[0].red = 1000;
    Vexo3DGoggles64(w, h, s.data());
    EXPECT_TRUE(sameBytes(s, before));
  }
  // Double vision reads the partner 15 to the right at its entry value.
  std::vector<Pixel32> row(31, Pixel32{0, 0, 0, 9});
  row[15] = {100, 100, 100, 9}, row[30] = {200, 201, 255, 9};
  VexoDoubleVision32(31, 1, row.data());
  EXPECT_EQ(row[0], (Pixel32{50, 50, 50, 9}));
  EXPECT_EQ(row[15], (Pixel32{150, 150, 177, 9}));
  EXPECT_EQ(row[16], (Pixel32{0, 0, 0, 9}));
  std::vector<Pixel128> wide(16, Pixel128{0.25f, 0, 0, 0.5f});
  wide[15] = {0.5f, 1, 3, 0};
  VexoDoubleVision128(16, 1, wide.data());
  EXPECT_EQ(wide[0], (Pixel128{0.375f, 0.5f, 1.5f, 0.5f}));
}

TEST(StylizePatterns, Roughen) {
  // c' = (c - p) x 1 + c / 1: (2, 2) reads (1, 1) as rewritten (90), not 50.
  std::vector<Pixel32> a(9);
  for (int i = 0; i < 9; ++i) a[i] = Pixel32{0, 0, uint8_t(10 * i + 10), 9};
  auto b = a;
  VexoRoughen32(3, 3, a.data(), 1, 1);
  const int want[9] = {10, 20, 30, 40, 90, 100, 70, 120, 90};
  for (int i = 0; i < 9; ++i) EXPECT_EQ(a[i].red, want[i]) << i;
  VexoRoughen32(3, 3, b.data(), 10, 1);  // (60 - 20) x 10 + 60, then (90 - 255) x 10 + 90
  EXPECT_EQ(b[5].red, 255);
  EXPECT_EQ(b[8].red, 0);
  for (int32_t divisor : {1, 2, 0, -1}) {  // only (1, 1) is off row 0 and column 0
    std::vector<Pixel32> s(4, Pixel32{201, 100, 7, 5});
    VexoRoughen32(2, 2, s.data(), 0, divisor);
    const Pixel32 half = divisor == 2 ? Pixel32{100, 50, 3, 5} : divisor == -1 ? Pixel32{0, 0, 0, 5} : s[0];
    EXPECT_TRUE(sameBytes(s, {s[0], s[0], s[0], half}));
  }
  // 16 bits: read signed, clamped to 0..255 all the same. Float: (c - p) x
  // amount + c x (1 / divisor) in single precision.
  std::vector<Pixel64> w{{0, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}, {1000, 40000, 200, 5}};
  VexoRoughen64(2, 2, w.data(), 0, 1);
  EXPECT_EQ(w[3], (Pixel64{255, 0, 200, 5}));
  std::vector<Pixel128> f{{0.25f, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}, {0.5f, -1.0f, 9.0f, 0.5f}};
  VexoRoughen128(2, 2, f.data(), 2, 3);
  EXPECT_EQ(f[3], (Pixel128{0.6666666865348816f, -2.3333333f, 21.0f, 0.5f}));
}
