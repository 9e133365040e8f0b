// Sharpening and the unsharp mask.
#include <gtest/gtest.h>

#include <vector>

#include "filters/filter_checks.h"
#include "filters/neighbourhood.h"

namespace effects::test {
namespace {

Pixel32 grey(uint8_t v, uint8_t mask = 0) { return Pixel32{v, v, v, mask}; }

TEST(FilterSharpen, FeedsForwardFromThePixelUpAndLeft) {
  // (2, 2) reads (1, 1) as already sharpened: 150 + (150 - 200) = 100, not
  // the 200 that the entry value 100 would give.
  std::vector<Pixel32> px(16, grey(0, 5));
  px[5] = grey(100, 5);
  px[10] = grey(150, 5);
  VexoSharpen32(4, 4, px.data(), 1.0);
  std::vector<Pixel32> want(16, grey(0, 5));
  want[5] = grey(200, 5);
  want[10] = grey(100, 5);
  EXPECT_EQ(px, want);
}

TEST(FilterSharpen, TruncatesTheProductAndClamps) {
  const double cases[][4] = {  // Q, P, amount, result
      {100, 50, 0.31, 35},      // 50 + trunc(-15.5)
      {50, 100, 0.5, 125}, {0, 200, 1.0, 255}, {200, 10, 1.0, 0}, {7, 9, 0.0, 9}};
  for (const auto& c : cases) {
    std::vector<Pixel32> px(9, grey(0));
    px[0] = grey(uint8_t(c[0]));
    px[4] = grey(uint8_t(c[1]), 77);
    VexoSharpen32(3, 3, px.data(), c[2]);
    EXPECT_EQ(px[4], grey(uint8_t(c[3]), 77)) << c[1] << " " << c[2];
  }
  std::vector<Pixel64> p64(9);
  p64[4] = Pixel64{30000, 1000, 0, 0};
  VexoSharpen64(3, 3, p64.data(), 1.0);
  EXPECT_EQ(p64[4], (Pixel64{32767, 2000, 0, 0}));
  std::vector<Pixel128> f(9);
  f[0] = Pixel128{0.5f, 0, 0, 0};
  f[4] = Pixel128{1.0f, 0, 0, 0};
  VexoSharpen128(3, 3, f.data(), 2.0);
  EXPECT_EQ(f[4], (Pixel128{2.0f, 0, 0, 0}));  // unclamped
}

TEST(FilterSharpen, LeavesBordersAndSmallPicturesAlone) {
  const auto entry = pattern<Pixel32>(6 * 5, 3);
  auto px = entry;
  VexoSharpen32(6, 5, px.data(), 2.0);
  for (int32_t y = 0; y < 5; ++y)
    for (int32_t x = 0; x < 6; ++x)
      if (x == 0 || y == 0 || x == 5 || y == 4) {
        EXPECT_EQ(px[size_t(y * 6 + x)], entry[size_t(y * 6 + x)]);
      }
  auto two = pattern<Pixel32>(6 * 2, 3), twoEntry = two;
  VexoSharpen32(6, 2, two.data(), 2.0);
  VexoSharpenMask32(6, 2, two.data(), 2.0);
  EXPECT_EQ(two, twoEntry);
}

TEST(FilterSharpenMask, SharpensTheMaskAlone) {
  std::vector<Pixel32> px(9, Pixel32{1, 2, 3, 40});
  px[4] = Pixel32{9, 9, 9, 100};
  VexoSharpenMask32(3, 3, px.data(), 0.5);
  EXPECT_EQ(px[4], (Pixel32{9, 9, 9, 130}));
}

TEST(FilterUnsharpMask, WorkedExample) {
  // Row 0, 90, 0 with radius 1: the box around the middle holds 3 samples
  // before the picture (the pixel), its row and the row below pulled back:
  // (3 x 90 + 90 + 90) / 9 = 50, so 90 x 2 - 50 = 130; the sides blur to 20
  // and go below 0.
  std::vector<Pixel32> px{grey(0, 1), grey(90, 2), grey(0, 3)};
  VexoUnsharpMask32(3, 1, px.data(), 1, 1.0);
  EXPECT_EQ(px, (std::vector<Pixel32>{grey(0, 1), grey(130, 2), grey(0, 3)}));
  px = {grey(0, 1), grey(90, 2), grey(0, 3)};
  VexoUnsharpMask32(3, 1, px.data(), 1, 0.5);
  EXPECT_EQ(px[1], grey(110, 2));
}

TEST(FilterUnsharpMask, LimitsAndParametersThatChangeNothing) {
  const auto entry = pattern<Pixel32>(9 * 8, 6);
  auto run = [&](int32_t radius, double amount) {
    auto px = entry;
    VexoUnsharpMask32(9, 8, px.data(), radius, amount);
    return px;
  };
  EXPECT_EQ(run(3, 0.0), entry);
  EXPECT_EQ(run(0, 2.0), entry);
  EXPECT_EQ(run(3, -0.5), entry);
  EXPECT_EQ(run(30, 2.0), run(10, 2.0));
  EXPECT_EQ(run(3, 25.0), run(3, 10.0));
  EXPECT_NE(run(3, 2.0), entry);
}

// The unsharp mask written plainly: blur every pixel from a copy of the
// picture, then combine.
template <class L>
std::vector<typename L::Pixel> plainUnsharp(std::vector<typename L::Pixel> px, int32_t w, int32_t h, int32_t r,
                                            double amount) {
  using P = typename L::Pixel;
  const std::vector<P> entry = px;
  const auto rowOf = [&](int32_t y) { return entry.data() + y * w; };
  const int32_t count = (2 * r + 1) * (2 * r + 1);
  for (int32_t y = 0; y < h; ++y)
    for (int32_t x = 0; x < w; ++x) {
      P& p = px[size_t(y * w + x)];
      const auto s = filters::boxSum<L>(rowOf, w, h, x, y, r, p, [](const P& q) -> const P& { return q; });
      const auto f = [&](auto e, auto sum) {
        const double v = e * (1.0 + amount) - (sum / count) * amount;
        if constexpr (L::integer) return truncClamp<L>(v);
        else return static_cast<float>(v);
      };
      p = P{f(p.blue, s.blue), f(p.green, s.green), f(p.red, s.red), p.mask};
    }
  return px;
}

TEST(FilterUnsharpMask, MatchesThePlainFormInEveryLayout) {
  // Every radius (so every count of the exact division), amounts up to the
  // limit, sizes below and above the box, values where the clamps act.
  const int32_t sizes[][2] = {{1, 12}, {12, 1}, {2, 2}, {37, 11}, {23, 25}};
  for (int32_t r = 1; r <= 10; ++r) {
    for (double amount : {0.001, 1.75, 10.0}) {
      const auto& s = sizes[r % 5];
      SCOPED_TRACE(testing::Message() << s[0] << "x" << s[1] << " radius " << r << " amount " << amount);
      const size_t n = size_t(s[0] * s[1]);
      auto a = pattern<Pixel32>(n, uint32_t(r));
      for (size_t i = 0; i < n; i += 7) a[i] = Pixel32{255, 0, 255, 1};
      const auto wa = plainUnsharp<Layout32>(a, s[0], s[1], r, amount);
      VexoUnsharpMask32(s[0], s[1], a.data(), r, amount);
      EXPECT_EQ(a, wa);
      auto b = pattern<Pixel64>(n, uint32_t(r));
      for (size_t i = 0; i < n; i += 5) b[i] = Pixel64{32767, 0, 1, 2};
      const auto wb = plainUnsharp<Layout64>(b, s[0], s[1], r, amount);
      VexoUnsharpMask64(s[0], s[1], b.data(), r, amount);
      EXPECT_EQ(b, wb);
      auto c = pattern<Pixel128>(n, uint32_t(r));
      const auto wc = plainUnsharp<Layout128>(c, s[0], s[1], r, amount);
      VexoUnsharpMask128(s[0], s[1], c.data(), r, amount);
      EXPECT_TRUE(sameBytes(c, wc));
    }
  }
}

}  // namespace
}  // namespace effects::test
