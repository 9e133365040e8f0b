#include <gtest/gtest.h>

#include <vector>

#include "adjust/adjust_checks.h"

using namespace effects::test;

namespace {

// A width x height picture of one pixel, with some pixels set.
template <class P>
struct Sketch {
  int32_t width, height;
  std::vector<P> px;
  Sketch(int32_t w, int32_t h, P fill) : width(w), height(h), px(static_cast<size_t>(w) * h, fill) {}
  P& at(int32_t x, int32_t y) { return px[static_cast<size_t>(y) * width + x]; }
};

}  // namespace

TEST(StylizeThatch, BlackTwoByTwo) {
  Sketch<Pixel32> a(2, 2, {0, 0, 0, 7});
  VexoThachet32(2, 2, a.px.data(), 12345);
  expectPixels(a.px, {{0, 82, 158, 7}, {0, 41, 79, 7}, {0, 41, 79, 7}, {0, 0, 0, 7}});
  Sketch<Pixel64> b(2, 2, {0, 0, 0, 7});
  VexoThachet64(2, 2, b.px.data(), 0);
  expectPixels(b.px, {{0, 10536, 20302, 7}, {0, 5268, 10151, 7}, {0, 5268, 10151, 7}, {0, 0, 0, 7}});
  // The float member's even rows get the 16-bit amounts unscaled; its even
  // columns the amounts over 32767.
  Sketch<Pixel128> c(2, 2, {0, 0, 0, 0.5f});
  VexoThachet128(2, 2, c.px.data(), 0);
  expectPixels(c.px, {{0, 5268.16064453125f, 10151.3095703125f, 0.5f},
                      {0, 5268.0f, 10151.0f, 0.5f},
                      {0, 0.16077150404453278f, 0.3097933828830719f, 0.5f},
                      {0, 0, 0, 0.5f}});
}

TEST(StylizeThatch, CapsAndEmptySizes) {
  expectExamples<Pixel32>({
      {"capped twice", ONE(VexoThachet32(1, 1, p, 0)), {9, 200, 200, 7}, {9, 255, 255, 7}},
      {"height 0", ONE(VexoThachet32(1, 0, p, 0)), {9, 200, 200, 7}, {9, 200, 200, 7}},
  });
  expectExamples<Pixel64>({{"capped", ONE(VexoThachet64(1, 1, p, 0)), {9, 30000, 1, 7}, {9, 32767, 20303, 7}}});
}

TEST(StylizeBacterial, ModesAndChannels) {
  expectExamples<Pixel32>({
      {"mode 1 wraps", ONE(VexoBacterial32(1, 1, p, 1, 1)), {0, 230, 200, 7}, {0, 15, 23, 7}},
      {"mode 1, blue only", ONE(VexoBacterial32(1, 1, p, 1, 4)), {0, 230, 200, 7}, {0, 230, 200, 7}},
      {"mode 1, red only", ONE(VexoBacterial32(1, 1, p, 1, 2)), {10, 20, 30, 7}, {10, 20, 109, 7}},
      {"mode 2", ONE(VexoBacterial32(1, 1, p, 2, 1)), {10, 20, 30, 7}, {51, 20, 109, 7}},
      {"mode 3", ONE(VexoBacterial32(1, 1, p, 3, 1)), {10, 20, 30, 7}, {89, 61, 30, 7}},
      {"mode 4", ONE(VexoBacterial32(1, 1, p, 4, 1)), {10, 20, 30, 7}, {89, 20, 71, 7}},
      {"mode 5", ONE(VexoBacterial32(1, 1, p, 5, 1)), {10, 20, 30, 7}, {51, 99, 30, 7}},
      {"mode 6", ONE(VexoBacterial32(1, 1, p, 6, 1)), {10, 20, 30, 7}, {10, 99, 71, 7}},
      {"mode 6, green only", ONE(VexoBacterial32(1, 1, p, 6, 3)), {10, 20, 30, 7}, {10, 99, 30, 7}},
      {"mode 7", ONE(VexoBacterial32(1, 1, p, 7, 1)), {10, 20, 30, 7}, {10, 20, 30, 7}},
  });
  // The 16-bit member clamps and leaves a channel without an addition alone.
  expectExamples<Pixel64>({
      {"mode 1", ONE(VexoBacterial64(1, 1, p, 1, 1)), {40000, 30000, 100, 7}, {40000, 32767, 10251, 7}},
  });
  expectExamples<Pixel128>({
      {"mode 1, unclamped", ONE(VexoBacterial128(1, 1, p, 1, 1)), {-0.0f, 0.5f, 0.9f, 0.5f},
       {-0.0f, 0.6607714891433716f, 1.2097933292388916f, 0.5f}},
  });
}

TEST(StylizePixelizer, EverySecondPixelOfEverySecondRow) {
  Sketch<Pixel32> a(3, 3, {100, 100, 100, 7});
  VexoPixelizer32(3, 3, a.px.data(), 10, -110, 300);
  const Pixel32 on{255, 0, 110, 7}, off{100, 100, 100, 7};
  expectPixels(a.px, {on, off, on, off, off, off, on, off, on});
  // Unscaled in 16 bits, over 255 and unclamped in float.
  expectExamples<Pixel64>({{"16 bits", ONE(VexoPixelizer64(1, 1, p, 10, -200, 300)), {100, 100, 100, 7}, {400, 0, 110, 7}}});
  expectExamples<Pixel128>({{"float", ONE(VexoPixelizer128(1, 1, p, 10, -10, 300)), {0.5f, 0.5f, 0.5f, 0.5f},
                             {1.6764706373214722f, 0.46078431606292725f, 0.5392156839370728f, 0.5f}}});
}

TEST(StylizeMonitor, EvenRowsCopiedDown) {
  Sketch<Pixel32> a(2, 3, {0, 0, 0, 0});
  for (int i = 0; i < 6; ++i) a.px[i] = Pixel32{uint8_t(10 * i), uint8_t(10 * i + 1), uint8_t(10 * i + 2), uint8_t(i)};
  VexoMonitor32(2, 3, a.px.data());
  // Row 1 takes row 0's colour and keeps its mask; row 2 has no row below.
  expectPixels(a.px, {{0, 1, 2, 0}, {10, 11, 12, 1}, {0, 1, 2, 2}, {10, 11, 12, 3}, {40, 41, 42, 4}, {50, 51, 52, 5}});
  std::vector<Pixel128> one{{1, 2, 3, 4}};
  VexoMonitor128(1, 1, one.data());
  expectPixels(one, {{1, 2, 3, 4}});
}

TEST(StylizeDigitalDisplay, ThirdColumnsRowsAndBoth) {
  const Pixel32 grey{90, 200, 90, 7}, lit{0, 255, 0, 7};
  Sketch<Pixel32> columns(4, 2, grey), rows(2, 4, grey), both(4, 4, grey);
  VexoDigitalDisplay332(4, 2, columns.px.data());
  VexoDigitalDisplay432(2, 4, rows.px.data());
  VexoDigitalDisplay532(4, 4, both.px.data());
  expectPixels(columns.px, {lit, grey, grey, lit, lit, grey, grey, lit});
  expectPixels(rows.px, {lit, lit, grey, grey, grey, grey, lit, lit});
  for (int32_t y = 0; y < 4; ++y)
    for (int32_t x = 0; x < 4; ++x) EXPECT_EQ(both.at(x, y), (x % 3 == 0 && y % 3 == 0) ? lit : grey) << x << ',' << y;
  expectExamples<Pixel32>({{"black", ONE(VexoDigitalDisplay332(1, 1, p)), {0, 0, 0, 7}, {0, 150, 0, 7}}});
  expectExamples<Pixel64>({{"16 bits", ONE(VexoDigitalDisplay464(1, 1, p)), {5, 20000, 5, 7}, {0, 32767, 0, 7}},
                           {"16 bits, black", ONE(VexoDigitalDisplay564(1, 1, p)), {5, 0, 5, 7}, {0, 19274, 0, 7}}});
  expectExamples<Pixel128>({{"float, unclamped", ONE(VexoDigitalDisplay3128(1, 1, p)), {0.5f, 0.9f, 0.5f, 0.5f},
                             {0.0f, 1.4882137775421143f, 0.0f, 0.5f}}});
}

TEST(StylizeGoggles, GhostCompoundsAlongTheDiagonal) {
  // (3, 3) averages (0, 0) with (6, 6); then (6, 6) averages the new (3, 3)
  // with (9, 9): the ghost of (0, 0) reaches (6, 6) at a quarter.
  Sketch<Pixel32> a(10, 10, {0, 77, 0, 9});
  a.at(0, 0) = {100, 77, 200, 9};
  Vexo3DGoggles32(10, 10, a.px.data());
  Sketch<Pixel32> want(10, 10, {0, 77, 0, 9});
  want.at(0, 0) = {100, 77, 200, 9};
  want.at(3, 3) = {50, 77, 100, 9};
  want.at(6, 6) = {25, 77, 50, 9};
  expectPixels(a.px, want.px);

  Sketch<Pixel128> f(7, 7, {0, 0.5f, 0, 0.5f});
  f.at(0, 0).red = 1.0f;
  f.at(6, 6).red = 0.25f;
  Vexo3DGoggles128(7, 7, f.px.data());
  EXPECT_EQ(f.at(3, 3), (Pixel128{0, 0.5f, 0.625f, 0.5f}));
  // Below 7 x 7 nothing happens.
  for (auto [w, h] : {std::pair{6, 7}, std::pair{7, 6}}) {
    Sketch<Pixel64> s(w, h, {0, 0, 0, 0});
    s.at(0, 0).red = 1000;
    const auto before = s.px;
    Vexo3DGoggles64(w, h, s.px.data());
    EXPECT_TRUE(sameBytes(s.px, before)) << w << 'x' << h;
  }
}

TEST(StylizeDoubleVision, PartnerFifteenToTheRightAtItsEntryValue) {
  Sketch<Pixel32> a(31, 1, {0, 0, 0, 9});
  a.at(15, 0) = {100, 100, 100, 9};
  a.at(30, 0) = {200, 201, 255, 9};
  VexoDoubleVision32(31, 1, a.px.data());
  EXPECT_EQ(a.at(0, 0), (Pixel32{50, 50, 50, 9}));
  EXPECT_EQ(a.at(15, 0), (Pixel32{150, 150, 177, 9}));
  EXPECT_EQ(a.at(16, 0), (Pixel32{0, 0, 0, 9}));  // the last 15 stay
  EXPECT_EQ(a.at(30, 0), (Pixel32{200, 201, 255, 9}));
  std::vector<Pixel128> f(16, Pixel128{0.25f, 0, 0, 0.5f});
  f[15] = Pixel128{0.5f, 1, 3, 0};
  VexoDoubleVision128(16, 1, f.data());
  EXPECT_EQ(f[0], (Pixel128{0.375f, 0.5f, 1.5f, 0.5f}));
  std::vector<Pixel64> narrow(15, Pixel64{1, 2, 3, 4});
  narrow[14].red = 999;
  const auto before = narrow;
  VexoDoubleVision64(15, 1, narrow.data());
  EXPECT_TRUE(sameBytes(narrow, before));
}

TEST(StylizeRoughen, ReliefAgainstTheRewrittenUpperLeft) {
  Sketch<Pixel32> a(3, 3, {0, 0, 0, 9});
  const uint8_t red[9] = {10, 20, 30, 40, 50, 60, 70, 80, 90};
  for (int i = 0; i < 9; ++i) a.px[i].red = red[i];
  auto b = a;
  // c' = (c - p) + c: (2, 2) reads (1, 1) as already rewritten (90), not 50.
  VexoRoughen32(3, 3, a.px.data(), 1, 1);
  const uint8_t want[9] = {10, 20, 30, 40, 90, 100, 70, 120, 90};
  for (int i = 0; i < 9; ++i) EXPECT_EQ(a.px[i].red, want[i]) << i;
  VexoRoughen32(3, 3, b.px.data(), 10, 1);
  EXPECT_EQ(b.at(2, 1).red, 255);  // (60 - 20) x 10 + 60
  EXPECT_EQ(b.at(2, 2).red, 0);    // (90 - 255) x 10 + 90
  // Divisor 2 halves every pixel off row 0 and column 0; 0 changes nothing.
  for (int32_t divisor : {1, 2, 0, -1}) {
    Sketch<Pixel32> s(3, 2, {0, 0, 0, 0});
    for (int i = 0; i < 6; ++i) s.px[i] = Pixel32{uint8_t(41 * i), uint8_t(41 * i + 1), 255, uint8_t(i)};
    auto expected = s.px;
    if (divisor == 2)
      for (int i : {4, 5}) expected[i] = Pixel32{uint8_t(41 * i / 2), uint8_t((41 * i + 1) / 2), 127, uint8_t(i)};
    if (divisor == -1)
      for (int i : {4, 5}) expected[i] = Pixel32{0, 0, 0, uint8_t(i)};
    VexoRoughen32(3, 2, s.px.data(), 0, divisor);
    SCOPED_TRACE(divisor);
    expectPixels(s.px, expected);
  }
  // The 16-bit member clamps to 0..255 too, and reads signed.
  std::vector<Pixel64> w{{0, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}, {1000, 40000, 200, 5}};
  VexoRoughen64(2, 2, w.data(), 0, 1);
  EXPECT_EQ(w[3], (Pixel64{255, 0, 200, 5}));
  // Float: (c - p) x amount + c x (1 / divisor) in single precision.
  std::vector<Pixel128> f{{0.25f, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}, {0.5f, -1.0f, 9.0f, 0.5f}};
  VexoRoughen128(2, 2, f.data(), 2, 3);
  EXPECT_EQ(f[3], (Pixel128{0.6666666865348816f, -2.3333333f, 21.0f, 0.5f}));
}
