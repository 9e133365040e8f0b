// The blur families: worked examples, the quirks that are part of them, and
// the soften against its nine cases written out.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "filters/filter_checks.h"
#include "filters/soften.h"

namespace effects::test {
namespace {

using filters::pairAverage;

// The soften's nine cases as written: corners, sides and interior in their
// order, reads past the far edge of a one-pixel-wide or one-row picture
// pulled back onto it.
template <class P>
P softenCase(const Picture<const P>& src, int32_t x, int32_t y, unsigned elements) {
  using L = LayoutOf<P>;
  const int32_t w = src.width(), h = src.height();
  P out = src.at(x, y);
  for (unsigned i = 0; i < filters::kElements<P>; ++i) {
    if (!(elements & (1u << i))) continue;
    const auto v = [&](int32_t dx, int32_t dy) {
      const int32_t sx = x + dx > w - 1 ? w - 1 : x + dx, sy = y + dy > h - 1 ? h - 1 : y + dy;
      return filters::elementsOf(&src.at(sx, sy))[i];
    };
    const auto avg = [](auto a, auto b) { return pairAverage<L>(a, b); };
    const auto W = [&] { return v(-1, 0); }, E = [&] { return v(1, 0); }, C = [&] { return v(0, 0); };
    const auto N = [&] { return v(0, -1); }, NW = [&] { return v(-1, -1); }, NE = [&] { return v(1, -1); };
    const auto S = [&] { return v(0, 1); }, SW = [&] { return v(-1, 1); }, SE = [&] { return v(1, 1); };
    typename L::Element r;
    if (x == 0 && y == 0) r = avg(avg(E(), C()), avg(SE(), S()));
    else if (x == 0 && y == h - 1) r = avg(avg(E(), C()), avg(NE(), N()));
    else if (x == w - 1 && y == 0) r = avg(avg(W(), C()), avg(SW(), S()));
    else if (x == w - 1 && y == h - 1) r = avg(avg(W(), C()), avg(NW(), N()));
    else if (x == 0) r = avg(avg(E(), C()), avg(avg(NE(), N()), avg(SE(), S())));
    else if (x == w - 1) r = avg(avg(W(), C()), avg(avg(NW(), N()), avg(SW(), S())));
    else if (y == 0) r = avg(avg(avg(W(), E()), C()), avg(avg(SW(), SE()), S()));
    else if (y == h - 1) r = avg(avg(avg(W(), E()), C()), avg(avg(NW(), NE()), N()));
    else r = avg(avg(avg(W(), E()), C()), avg(avg(avg(NW(), NE()), N()), avg(avg(SW(), SE()), S())));
    filters::elementsOf(&out)[i] = r;
  }
  return out;
}

template <class P, class Run>
void expectSoftenFollowsItsCases(std::vector<P> px, int32_t w, int32_t h, Run run, unsigned elements) {
  const std::vector<P> entry = px;
  run(w, h, px.data());
  const auto src = packedPicture(w, h, entry.data());
  for (int32_t y = 0; y < h; ++y)
    for (int32_t x = 0; x < w; ++x)
      ASSERT_EQ(px[size_t(y * w + x)], softenCase(src, x, y, elements)) << w << "x" << h << " at " << x << "," << y;
}

const int32_t kSoftenSizes[][2] = {{1, 1}, {1, 6}, {6, 1}, {2, 2}, {2, 3}, {3, 2}, {3, 3}, {8, 5}, {17, 9}, {37, 4}, {64, 3}, {3, 40}};

TEST(FilterSoften, FollowsItsNineCasesInEveryLayout) {
  for (const auto& s : kSoftenSizes) {
    const size_t n = size_t(s[0] * s[1]);
    expectSoftenFollowsItsCases(pattern<Pixel32>(n, 1), s[0], s[1], [](int32_t w, int32_t h, Pixel32* p) { VexoPostBlur32(w, h, p); }, 15);
    expectSoftenFollowsItsCases(pattern<Pixel64>(n, 2), s[0], s[1], [](int32_t w, int32_t h, Pixel64* p) { VexoPostBlur64(w, h, p); }, 15);
    expectSoftenFollowsItsCases(pattern<Pixel128>(n, 3), s[0], s[1], [](int32_t w, int32_t h, Pixel128* p) { VexoPostBlur128(w, h, p); }, 15);
    expectSoftenFollowsItsCases(pattern<Pixel32>(n, 4), s[0], s[1], [](int32_t w, int32_t h, Pixel32* p) { VexoPostBlurMask32(w, h, p); }, 8);
    expectSoftenFollowsItsCases(pattern<Pixel64>(n, 5), s[0], s[1], [](int32_t w, int32_t h, Pixel64* p) { VexoPostBlurMask64(w, h, p); }, 8);
    expectSoftenFollowsItsCases(pattern<Pixel128>(n, 6), s[0], s[1], [](int32_t w, int32_t h, Pixel128* p) { VexoPostBlurMask128(w, h, p); }, 8);
  }
}

TEST(FilterSoften, WhiteLosesTheHalvingsBitsAndThenStays) {
  std::vector<Pixel32> w32(12, Pixel32{255, 255, 255, 255});
  std::vector<Pixel64> w64(12, Pixel64{32767, 32767, 32767, 32767});
  for (int pass = 0; pass < 2; ++pass) {
    VexoPostBlur32(4, 3, w32.data());
    VexoPostBlur64(4, 3, w64.data());
    EXPECT_EQ(w32, std::vector<Pixel32>(12, Pixel32{254, 254, 254, 254}));
    EXPECT_EQ(w64, std::vector<Pixel64>(12, Pixel64{32510, 32510, 32510, 32510}));  // bit 7 of each half lost
  }
}

TEST(FilterSoften, WorksOnPaddedDeviceContextRows) {
  // 23 pixels of 3 bytes: rows of 69 bytes padded to 72; the padding stays.
  std::vector<uint8_t> bits(72 * 4);
  for (size_t i = 0; i < bits.size(); ++i) bits[i] = uint8_t(i * 37 + 11);
  auto entry = bits;
  const Picture<const Pixel24> src = Picture<Pixel24>::paddedRows(23, 4, entry.data());
  const auto dst = Picture<Pixel24>::paddedRows(23, 4, bits.data());
  ASSERT_TRUE(filters::soften<filters::Which::All>(dst, ScratchSlot::First));
  for (int32_t y = 0; y < 4; ++y) {
    for (int32_t x = 0; x < 23; ++x) {
      const Pixel24 want = softenCase(src, x, y, 7);
      EXPECT_EQ(std::memcmp(&dst.at(x, y), &want, 3), 0) << x << "," << y;
    }
    for (size_t k = 69; k < 72; ++k) EXPECT_EQ(bits[size_t(y) * 72 + k], entry[size_t(y) * 72 + k]);
  }
}

TEST(FilterSoften, SaysWhetherAnythingChanged) {
  // Blooming stops on this; the nine-case test above holds the vector form
  // to the written cases.
  std::vector<Pixel32> fixed(40 * 3, Pixel32{254, 0, 254, 9}), moved = pattern<Pixel32>(40 * 3, 2);
  bool a = true, b = false;
  ASSERT_TRUE(filters::soften<filters::Which::Colour>(packedPicture(40, 3, fixed.data()), ScratchSlot::First, &a));
  ASSERT_TRUE(filters::soften<filters::Which::Colour>(packedPicture(40, 3, moved.data()), ScratchSlot::First, &b));
  EXPECT_FALSE(a);
  EXPECT_TRUE(b);
}

TEST(FilterGlowBlur, ChoosesTheWideBoxAboveBrightness127) {
  // Pixel (0, 0) is visited first; the white pixel (3, 3) lies in its 7x7 box
  // but not in its 3x3 box. Of the 3x3 box 5 samples are before the picture
  // (the pixel itself), of the 7x7 box 33: 6 x 127 / 9 and (34 x 128 + 255) / 49.
  for (const auto& [grey, want] : std::vector<std::pair<uint8_t, uint8_t>>{{127, 84}, {128, 94}}) {
    std::vector<Pixel32> px(25);
    px[0] = Pixel32{grey, grey, grey, 9};
    px[18] = Pixel32{255, 255, 255, 0};
    VexoGlowBlur32(5, 5, px.data());
    EXPECT_EQ(px[0], (Pixel32{want, want, want, 9})) << int(grey);
  }
}

TEST(FilterMatteBlur, FeedsForwardItsOwnResults) {
  // One row 90, 0, 0, radius 1: pixel 0 is (7 x 90 + 2 x 0) / 9 = 70; pixel 1
  // then reads that 70 twice (its own row and the row below, pulled back)
  // and gives 140 / 9 = 15, where a copy of the picture would give 20.
  std::vector<Pixel32> px{{90, 90, 90, 1}, {0, 0, 0, 2}, {0, 0, 0, 3}};
  VexoMatteBlur32(3, 1, px.data(), 1, 0, 0);
  EXPECT_EQ(px, (std::vector<Pixel32>{{70, 70, 70, 1}, {15, 15, 15, 2}, {3, 3, 3, 3}}));
}

TEST(FilterMatteBlur, RadiusLimitsAndThresholds) {
  const auto entry = pattern<Pixel32>(11 * 9, 4);
  auto run = [&](int32_t radius, int32_t threshold, int32_t use) {
    auto px = entry;
    VexoMatteBlur32(11, 9, px.data(), radius, threshold, use);
    return px;
  };
  EXPECT_EQ(run(25, 0, 0), run(10, 0, 0));
  EXPECT_EQ(run(0, 0, 0), entry);
  EXPECT_EQ(run(3, -1, 1), entry);              // admits no sample: each pixel keeps itself
  EXPECT_EQ(run(3, INT32_MAX, 1), run(3, 0, 0));  // admits every sample (bounds without overflow)
  EXPECT_NE(run(3, 40, 1), run(3, 0, 0));
  EXPECT_EQ(run(3, 40, 0), run(3, 0, 0));       // the threshold only counts when asked for
  // Brightness 10 and 100: at threshold 89 the other pixel counts as the
  // pixel itself, at 90 it counts.
  for (const auto& [threshold, want] : std::vector<std::pair<int32_t, uint8_t>>{{89, 10}, {90, (7 * 10 + 2 * 100) / 9}}) {
    std::vector<Pixel32> two{{10, 10, 10, 0}, {100, 100, 100, 0}};
    VexoMatteBlur32(2, 1, two.data(), 1, threshold, 1);
    EXPECT_EQ(two[0].red, want) << threshold;
  }
  // Floats: an integer threshold of 1 admits every sample of a 0..1 picture.
  auto f = pattern<Pixel128>(7 * 5, 2);
  for (auto& p : f) p = Pixel128{std::fabs(p.blue) / 2, std::fabs(p.green) / 2, std::fabs(p.red) / 2, p.mask};
  auto g = f;
  VexoMatteBlur128(7, 5, f.data(), 2, 1, 1);
  VexoMatteBlur128(7, 5, g.data(), 2, 0, 0);
  EXPECT_TRUE(sameBytes(f, g));
}

TEST(FilterMotionBlur, DistanceZeroAndNegative) {
  const auto e32 = pattern<Pixel32>(6 * 5, 1);
  const auto e128 = pattern<Pixel128>(6 * 5, 1);
  auto p32 = e32;
  auto p128 = e128;
  VexoMotionBlur32(6, 5, p32.data(), 37.0, 0);
  VexoMotionBlur128(6, 5, p128.data(), 37.0, 0);  // would divide by zero: kept
  EXPECT_EQ(p32, e32);
  EXPECT_TRUE(sameBytes(p128, e128));
  VexoMotionBlur32(6, 5, p32.data(), 37.0, -4);
  VexoMotionBlur128(6, 5, p128.data(), 37.0, -4);  // 0 x 1 / (2 x -4)
  EXPECT_EQ(p32, std::vector<Pixel32>(30, Pixel32{0, 0, 0, 0}));
  for (const auto& p : p128) EXPECT_EQ(bitsOf(p.mask), 0x80000000u);
}

TEST(FilterMotionBlur, AngleZeroIsAlmostHorizontal) {
  // At 0.0001 degrees, cos is just below 1 and sin just above 0: with
  // truncation, t = -1 samples (x - 1, y - 1), t = 0 and t = 1 the pixel
  // itself.
  std::vector<Pixel32> px(5 * 3);
  px[1 * 5 + 2] = Pixel32{30, 60, 90, 120};
  px[0 * 5 + 1] = Pixel32{3, 6, 9, 12};
  VexoMotionBlur32(5, 3, px.data(), 0.0, 1);
  EXPECT_EQ(px[1 * 5 + 2], (Pixel32{21, 42, 63, 84}));  // (3 + 2 x 30) / 3 ...
}

TEST(FilterMotionBlur, FloatsDivideByOneLessThanTheSamples) {
  std::vector<Pixel128> px(3, Pixel128{0.5f, 0.5f, 0.5f, 1.0f});
  VexoMotionBlur128(3, 1, px.data(), 0.0, 1);
  for (const auto& p : px) EXPECT_EQ(p, (Pixel128{0.75f, 0.75f, 0.75f, 1.5f}));  // 3 samples x 1/2
}

TEST(FilterZoomBlur, KeepsTheCentreAndDarkensWholeLengths) {
  // 6 x 8: the diagonal is 10. Pixel (3, 0) lies 4 above the centre (3, 4);
  // strength 5 gives the whole length 2: samples t = 0 and 1, divisor 3.
  // cos(pi/2) is a little above 0, so t = 0 lands one column left.
  std::vector<Pixel32> px = pattern<Pixel32>(6 * 8, 5);
  const auto entry = px;
  VexoZoomBlur32(6, 8, px.data(), 5);
  EXPECT_EQ(px[4 * 6 + 3], entry[4 * 6 + 3]);
  const Pixel32 a = entry[0 * 6 + 2], b = entry[1 * 6 + 3];
  EXPECT_EQ(px[0 * 6 + 3], (Pixel32{uint8_t((a.blue + b.blue) / 3), uint8_t((a.green + b.green) / 3),
                                    uint8_t((a.red + b.red) / 3), uint8_t((a.mask + b.mask) / 3)}));
}

TEST(FilterRadialBlur, KeepsTheCentreAndAveragesAlongTheArc) {
  std::vector<Pixel64> px = pattern<Pixel64>(9 * 9, 2);
  const auto entry = px;
  VexoRadialBlur64(9, 9, px.data(), 3);
  EXPECT_EQ(px[4 * 9 + 4], entry[4 * 9 + 4]);
  // A flat picture stays flat (the mask too).
  std::vector<Pixel64> flat(9 * 7, Pixel64{100, 200, 300, 400});
  VexoRadialBlur64(9, 7, flat.data(), 20);
  for (const auto& p : flat) EXPECT_EQ(p, (Pixel64{100, 200, 300, 400}));
}

TEST(FilterBlooming, MapsNearWhiteAndAddsTheSoftenedMap) {
  // No pass: near-white pixels become white, the others keep their values.
  std::vector<Pixel32> px{{251, 0, 10, 7}, {250, 250, 250, 7}, {0, 0, 255, 7}};
  VexoBlooming32(3, 1, px.data(), 0);
  EXPECT_EQ(px, (std::vector<Pixel32>{{255, 255, 255, 7}, {250, 250, 250, 7}, {255, 255, 255, 7}}));
  // One pass over an all-bright 16-bit map adds 32510 (bit 7 lost).
  std::vector<Pixel64> p64(6, Pixel64{32767, 0, 100, 5});
  VexoBlooming64(3, 2, p64.data(), 1);
  EXPECT_EQ(p64, std::vector<Pixel64>(6, Pixel64{32767, 32510, 32610, 5}));
  // Floats at 1.0 or more count as bright, and the sum is not clamped.
  std::vector<Pixel128> f(4, Pixel128{1.0f, 0.0f, 0.5f, 0.25f});
  VexoBlooming128(2, 2, f.data(), 3);
  EXPECT_EQ(f, std::vector<Pixel128>(4, Pixel128{2.0f, 1.0f, 1.5f, 0.25f}));
  // A spot spreads; a huge count ends once the map stops changing, with the
  // result of any larger count.
  std::vector<Pixel32> spot(9 * 9, Pixel32{10, 10, 10, 0});
  spot[40] = Pixel32{255, 255, 255, 0};
  auto many = spot, more = spot;
  VexoBlooming32(9, 9, spot.data(), 3);
  EXPECT_GT(spot[41].red, 10);
  VexoBlooming32(9, 9, many.data(), 2000);
  VexoBlooming32(9, 9, more.data(), INT32_MAX);
  EXPECT_EQ(many, more);
}

}  // namespace
}  // namespace effects::test
