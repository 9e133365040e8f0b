// Dilation, erosion, their mask forms and the contour.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "filters/filter_checks.h"
#include "filters/sharpen.h"

namespace effects::test {
namespace {

using filters::Reduce;
using filters::Which;

TEST(FilterMorphology, DilationAboveThePictureAboveErosion) {
  const int32_t w = 11, h = 9;
  const auto entry = pattern<Pixel32>(size_t(w * h), 4);
  auto d = entry, e = entry, c = entry, dm = entry, em = entry;
  VexoDilater32(w, h, d.data());
  VexoEroder32(w, h, e.data());
  VexoCContour32(w, h, c.data());
  VexoDilaterMask32(w, h, dm.data());
  VexoEroderMask32(w, h, em.data());
  for (size_t i = 0; i < entry.size(); ++i) {
    const int32_t x = int32_t(i) % w, y = int32_t(i) / w;
    const bool border = x == 0 || y == 0 || x == w - 1 || y == h - 1;
    for (unsigned k = 0; k < 3; ++k) {
      const uint8_t v = (&entry[i].blue)[k], hi = (&d[i].blue)[k], lo = (&e[i].blue)[k];
      EXPECT_TRUE(hi >= v && v >= lo && (!border || hi == v)) << x << "," << y;
      EXPECT_EQ((&c[i].blue)[k], border ? v : uint8_t(v - lo));
    }
    EXPECT_TRUE(dm[i].mask >= entry[i].mask && em[i].mask <= entry[i].mask);
  }
}

TEST(FilterMorphology, TheLowerRightCellIsNotPartOfTheNeighbourhood) {
  // A bright pixel spreads to the seven cells whose neighbourhood holds it:
  // not to the one up and to its left.
  std::vector<Pixel32> px(5 * 5, Pixel32{0, 0, 0, 0});
  px[2 * 5 + 2] = Pixel32{200, 100, 50, 0};
  VexoDilater32(5, 5, px.data());
  for (int32_t y = 0; y < 5; ++y)
    for (int32_t x = 0; x < 5; ++x) {
      const bool lit = x >= 1 && x <= 3 && y >= 1 && y <= 3 && !(x == 1 && y == 1);
      EXPECT_EQ(px[size_t(y * 5 + x)], lit ? (Pixel32{200, 100, 50, 0}) : (Pixel32{0, 0, 0, 0})) << x << "," << y;
    }
}

TEST(FilterMorphology, SmallPicturesAndFlatOnes) {
  for (const auto& [w, h] : std::vector<std::pair<uint32_t, uint32_t>>{{9, 2}, {2, 9}, {1, 5}}) {
    auto px = pattern<Pixel32>(w * h, 2), entry = px;
    VexoDilater32(w, h, px.data());
    VexoEroderMask32(w, h, px.data());
    EXPECT_EQ(px, entry) << w << "x" << h;
  }
  std::vector<Pixel32> flat(4 * 4, Pixel32{90, 80, 70, 60});
  VexoCContour32(4, 4, flat.data());
  for (int32_t i : {5, 6, 9, 10}) EXPECT_EQ(flat[size_t(i)], (Pixel32{0, 0, 0, 60}));
  EXPECT_EQ(flat[0], (Pixel32{90, 80, 70, 60}));
  // Sizes beyond the signed range are not pictures: nothing is read.
  EXPECT_EQ(VexoDilater32(0x80000000u, 3, nullptr), 0u);
}

TEST(FilterMorphology, LayoutDifferences) {
  // Floats: erosion starts at 1.0, so HDR values are capped; the contour of
  // a flat HDR picture keeps what lies above 1.0.
  std::vector<Pixel128> hdr(3 * 3, Pixel128{4.0f, 4.0f, 0.5f, 4.0f});
  auto contour = hdr;
  VexoEroder128(3, 3, hdr.data());
  EXPECT_EQ(hdr[4], (Pixel128{1.0f, 1.0f, 0.5f, 4.0f}));
  VexoCContour128(3, 3, contour.data());
  EXPECT_EQ(contour[4], (Pixel128{3.0f, 3.0f, 0.0f, 4.0f}));

  // Negative floats count as 0 for the dilation; a not-a-number never wins.
  const float nan = std::numeric_limits<float>::quiet_NaN();
  std::vector<Pixel128> f(3 * 3, Pixel128{-2.0f, nan, 0.25f, 0});
  f[4] = Pixel128{-1.0f, nan, nan, 0};
  auto g = f;
  VexoDilater128(3, 3, f.data());
  EXPECT_EQ(f[4], (Pixel128{0.0f, 0.0f, 0.25f, 0}));
  VexoEroder128(3, 3, g.data());
  EXPECT_EQ(g[4], (Pixel128{-2.0f, 1.0f, 0.25f, 0}));

  // Of equal values the first in the order stays: -0.0 in the upper left
  // cell is the erosion, +0.0 after it does not replace it.
  std::vector<Pixel128> z(3 * 3, Pixel128{0.0f, 0.0f, 0.0f, 0});
  z[0].blue = -0.0f;
  VexoEroder128(3, 3, z.data());
  EXPECT_EQ(bitsOf(z[4].blue), 0x80000000u);

  // 16-bit elements compare as signed values: 40000 is below 0.
  std::vector<Pixel64> s(3 * 3, Pixel64{100, 100, 100, 100});
  s[1] = Pixel64{40000, 40000, 40000, 40000};
  auto t = s;
  VexoDilater64(3, 3, s.data());
  EXPECT_EQ(s[4], (Pixel64{100, 100, 100, 100}));
  VexoEroderMask64(3, 3, t.data());
  EXPECT_EQ(t[4], (Pixel64{100, 100, 100, 40000}));
}

// The fast rows against the plain ones, on random pictures of odd sizes in
// every layout and family.
// The vector rows against the plain ones, on random pictures of odd sizes
// in every layout and family: 16-bit values across the whole range (the
// signed comparison), floats with signed zeros, not-a-numbers and HDR.
template <class L, class Make>
void expectFastRowsArePlain(Make make) {
  const int32_t sizes[][2] = {{3, 3}, {4, 3}, {3, 7}, {17, 5}, {33, 9}, {70, 4}};
  const auto one = [&](auto reduce, auto which) {
    for (const auto& s : sizes) {
      auto a = make(size_t(s[0] * s[1])), b = a;
      filters::morphology<L, which(), reduce()>(packedPicture(s[0], s[1], a.data()));
      filters::morphologyReference<L, which(), reduce()>(packedPicture(s[0], s[1], b.data()));
      EXPECT_TRUE(sameBytes(a, b)) << s[0] << "x" << s[1] << " " << int(reduce()) << " " << int(which());
    }
  };
  using M = std::integral_constant<Reduce, Reduce::Maximum>;
  using N = std::integral_constant<Reduce, Reduce::Minimum>;
  using C = std::integral_constant<Which, Which::Colour>;
  using K = std::integral_constant<Which, Which::Mask>;
  one(M{}, C{}), one(M{}, K{}), one(N{}, C{}), one(N{}, K{});
  one(std::integral_constant<Reduce, Reduce::Contour>{}, C{});
}

TEST(FilterMorphology, FastRowsMatchThePlainOnes) {
  uint32_t seed = 1;
  expectFastRowsArePlain<Layout32>([&](size_t n) { return pattern<Pixel32>(n, seed++); });
  expectFastRowsArePlain<Layout64>([&](size_t n) {
    auto v = pattern<Pixel64>(n, seed++);
    for (size_t i = 0; i < v.size(); i += 3) v[i].blue = uint16_t(v[i].blue * 2 + 1), v[i].mask = uint16_t(v[i].mask * 2);
    return v;
  });
  expectFastRowsArePlain<Layout128>([&](size_t n) {
    auto v = pattern<Pixel128>(n, seed++);
    for (size_t i = 0; i < v.size(); i += 5) v[i].green = -0.0f, v[i].red = std::numeric_limits<float>::quiet_NaN();
    for (size_t i = 2; i < v.size(); i += 7) v[i].blue = 0.0f, v[i].mask = 3.0f;
    return v;
  });
}

}  // namespace
}  // namespace effects::test
