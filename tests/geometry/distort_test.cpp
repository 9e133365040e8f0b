// Distortions, the sphere-reflection brightness scale and the channel ripper.
// Where a warp's result hangs on the last bit of a sine or an arctangent (a
// position that should be whole comes out a hair short and truncates down),
// the tests allow one pixel, since maths libraries differ in that bit.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "geometry/distortions.h"
#include "geometry/geometry_checks.h"

using namespace effects::test;
namespace g = effects::geometry;

namespace {

template <class P>
using Run = std::function<void(int32_t w, int32_t h, P* px)>;

template <class P>
class Distort : public ::testing::Test {};
TYPED_TEST_SUITE(Distort, Layouts);

// Every warp on every size (exact buffers, so ASan sees any stray access):
// without includeMask = 1 the mask is never written, and every colour comes
// from some pixel of the picture.
TYPED_TEST(Distort, WarpsStayInThePictureAndKeepTheMask) {
  using P = TypeParam;
  using A = Api<P>;
  const Run<P> warps[] = {
      [](int32_t w, int32_t h, P* p) { A::swirl(w, h, p, 0, 40); },
      [](int32_t w, int32_t h, P* p) { A::swirl(w, h, p, 2, 0); },
      [](int32_t w, int32_t h, P* p) { A::twirl(w, h, p, -1, 3, -5); },
      [](int32_t w, int32_t h, P* p) { A::pinch(w, h, p, 0, 300.0); },
      [](int32_t w, int32_t h, P* p) { A::pinch(w, h, p, 0, -300.0); },
      [](int32_t w, int32_t h, P* p) { A::waves(w, h, p, 3, 40); },
      [](int32_t w, int32_t h, P* p) { A::wavesEx(w, h, p, 9, 40); },
      [](int32_t w, int32_t h, P* p) { A::blocks(w, h, p, 2, 50, 0); },
      [](int32_t w, int32_t h, P* p) { A::blocks(w, h, p, 2, 2147483647, 1); },
  };
  auto colour = [](const P& p) { return std::string(reinterpret_cast<const char*>(&p), 3 * sizeof p.blue); };
  for (const Size s : kSizes)
    for (size_t k = 0; k < std::size(warps); ++k) {
      SCOPED_TRACE(::testing::Message() << "warp " << k << ", " << s.width << " x " << s.height);
      const auto in = pattern<P>(s.pixels());
      std::set<std::string> colours;
      for (const P& p : in) colours.insert(colour(p));
      auto px = in;
      warps[k](s.width, s.height, px.data());
      for (size_t i = 0; i < px.size(); ++i) {
        ASSERT_EQ(std::memcmp(&px[i].mask, &in[i].mask, sizeof px[i].mask), 0) << i;
        ASSERT_EQ(colours.count(colour(px[i])), 1u) << i;
      }
    }
  // twist 0 fills the circle (all of an odd picture) with the first pixel,
  // and includeMask 1 moves the mask with it.
  const auto in = pattern<P>(35);
  auto px = in;
  A::swirl(5, 7, px.data(), 1, 0);
  expectSamePixels(px, std::vector<P>(35, in[0]));
}

TYPED_TEST(Distort, NeutralParametersChangeNothing) {
  using P = TypeParam;
  using A = Api<P>;
  const auto in = pattern<P>(63);
  const Run<P> neutral[] = {
      [](int32_t w, int32_t h, P* p) { A::pinch(w, h, p, 1, 0.0); },
      [](int32_t w, int32_t h, P* p) { A::waves(w, h, p, 0, 33); },
      [](int32_t w, int32_t h, P* p) { A::waves(w, h, p, -4, 33); },
      [](int32_t w, int32_t h, P* p) { A::wavesEx(w, h, p, 1, 33); },
      [](int32_t w, int32_t h, P* p) { A::blocks(w, h, p, 0, 33, 1); },
      [](int32_t w, int32_t h, P* p) { A::sphere(w, h, p, 100); },
      [](int32_t w, int32_t h, P* p) { A::sphere(w, h, p, 0); },
      [](int32_t w, int32_t h, P* p) { A::ripper(w * h * 4, p, 4, 1); },
      [](int32_t w, int32_t h, P* p) { A::ripper(w * h * 4, p, 1, 0); },
  };
  for (const Run<P>& run : neutral) {
    auto px = in;
    run(9, 7, px.data());
    expectSamePixels(px, in);
  }
}

TYPED_TEST(Distort, WavesWithoutFrequencyShiftRowsAndRepeatTheEdge) {
  // Frequency 0 (or negative) gives sin 0 = 0 and cos 0 = 1: every colour
  // comes from `amplitude` rows below, clamped to the last row.
  using P = TypeParam;
  const auto in = pattern<P>(20);
  std::vector<P> want = in;
  for (int32_t i = 0; i < 20; ++i) {
    const P& from = in[std::min(i + 8, 16 + i % 4)];
    want[i].blue = from.blue, want[i].green = from.green, want[i].red = from.red;
  }
  auto waves = in, blocks = in;
  Api<P>::waves(4, 5, waves.data(), 2, -7);
  Api<P>::blocks(4, 5, blocks.data(), 2, 0, 0);
  expectSamePixels(waves, want);
  expectSamePixels(blocks, want);
  // Block waves: an odd style, by its signed remainder, whether 3 or -1.
  auto a = in, b = in, c = in;
  Api<P>::blocks(5, 4, a.data(), 2, 30, 3);
  Api<P>::blocks(5, 4, b.data(), 2, 30, -1);
  Api<P>::blocks(5, 4, c.data(), 2, 30, -2);
  expectSamePixels(a, b);
  EXPECT_TRUE(differ(a, c));
}

// --------------------------------------------------- the mappings' shapes

TEST(Distort, SwirlCentreStaysAndALightTwistMirrorsLeftToRight) {
  for (const Size s : {Size{9, 9}, Size{8, 6}, Size{1, 5}}) {
    const int32_t cx = s.width / 2, cy = s.height / 2;
    for (int32_t twist : {1, -1, 7, 255, 1000}) {
      const auto c = g::Swirl(s.width, s.height, twist)(cx, cy);
      EXPECT_TRUE(c.column == cx && c.row == cy) << twist;
    }
    const g::Swirl light(s.width, s.height, 255);
    for (int32_t y = 0; y < s.height; ++y)
      for (int32_t x = 0; x < s.width; ++x) {
        const auto p = light(x, y);
        if (std::hypot(cx - x, cy - y) >= std::hypot(s.width, s.height) / 2) continue;
        EXPECT_LE(std::abs(p.column - (2 * cx - x)), 1) << x << "," << y;
        EXPECT_LE(std::abs(p.row - y), 1) << x << "," << y;
      }
  }
}

TEST(Distort, BulgeSamplesInwardPinchOutwardAndTheRestStays) {
  const int32_t cx = 10, cy = 7, disc = 7;
  const g::Pinch bulge(21, 15, 500.0), pinch(21, 15, -500.0);
  int inward = 0, outward = 0;
  for (int32_t y = 0; y < 15; ++y)
    for (int32_t x = 0; x < 21; ++x) {
      const double r = std::hypot(x - cx, y - cy);
      const auto b = bulge(x, y), p = pinch(x, y);
      const double rb = std::hypot(double(b.column - cx), double(b.row - cy));
      const double rp = std::hypot(double(p.column - cx), double(p.row - cy));
      if (r > disc) {
        EXPECT_TRUE(b.column == x && b.row == y && p.column == x && p.row == y);
      } else {
        EXPECT_LE(rb, r + 1e-9);   // truncation only shortens the offsets
        EXPECT_GE(rp, r - 1.5);
        inward += rb < r - 1;
        outward += rp > r;
      }
    }
  EXPECT_GT(inward, 20);
  EXPECT_GT(outward, 20);
}

// ------------------------------------------ sphere reflection and ripper

TEST(Distort, SphereReflectionScalesClampsAndRoundsToEven) {
  std::vector<Pixel32> p32{{200, 100, 3, 9}, {0, 255, 128, 200}}, half{{5, 7, 1, 9}}, negative{{100, 0, 1, 9}};
  VexoSphereReflection32(2, 1, p32.data(), 50);
  VexoSphereReflection32(1, 1, half.data(), 200);       // 2.5 -> 2, 3.5 -> 4, 0.5 -> 0
  VexoSphereReflection32(1, 1, negative.data(), -100);  // no lower limit: -100 keeps its low byte
  expectSamePixels(p32, {{255, 200, 6, 9}, {0, 255, 255, 200}});
  EXPECT_EQ(half[0], (Pixel32{2, 4, 0, 9}));
  EXPECT_EQ(negative[0], (Pixel32{156, 0, 255, 9}));
  std::vector<Pixel64> p64{{20000, 100, 1, 5}};
  std::vector<Pixel128> p128{{2.0f, 0.5f, -1.0f, 0.25f}};
  VexoSphereReflection64(1, 1, p64.data(), 50);
  VexoSphereReflection128(1, 1, p128.data(), 50);
  EXPECT_EQ(p64[0], (Pixel64{32767, 200, 2, 5}));
  EXPECT_EQ(p128[0], (Pixel128{4.0f, 1.0f, -2.0f, 0.25f}));
}

TEST(Distort, RipperKeepsTheChosenChannelInTestOrder) {
  struct Case {
    Pixel32 in;
    int32_t mode, channel;
    Pixel32 out;
  };
  const Case cases[] = {
      {{10, 200, 100, 7}, 1, 1, {0, 200, 0, 7}},
      {{10, 200, 100, 7}, 3, 1, {10, 0, 0, 7}},
      {{10, 200, 100, 7}, 2, 1, {0, 0, 100, 7}},
      {{100, 100, 50, 7}, 1, 1, {100, 100, 50, 7}},  // no strict largest
      {{200, 10, 100, 7}, 1, 2, {200, 10, 0, 7}},    // red only
      {{200, 10, 100, 7}, 1, 4, {200, 10, 100, 7}},  // blue wins, but only blue may change
      {{50, 60, 100, 7}, 1, 3, {50, 0, 100, 7}},     // red wins, green only
      // Red alone may be written: the blue test clears red, which then wins
      // the smallest test against the green that was kept and is restored.
      {{10, 200, 100, 7}, 3, 2, {10, 200, 100, 7}},
  };
  for (const Case& c : cases) {
    std::vector<Pixel32> px{c.in};
    VexoRipper32(4, px.data(), c.mode, c.channel);
    EXPECT_EQ(px[0], c.out) << "mode " << c.mode << " channel " << c.channel;
  }
  std::vector<Pixel64> p64{{40000, 10, 20, 7}};  // compared signed: 40000 is below 0
  std::vector<Pixel128> p128{{0.5f, -1.0f, 2.0f, 7}};
  std::vector<Pixel32> three(3, Pixel32{10, 200, 100, 7});
  VexoRipper64(4, p64.data(), 3, 1);
  VexoRipper128(4, p128.data(), 2, 1);
  VexoRipper32(5, three.data(), 1, 1);  // 5 elements: two pixels
  EXPECT_EQ(p64[0], (Pixel64{40000, 0, 0, 7}));
  EXPECT_EQ(p128[0], (Pixel128{0.5f, 0, 0, 7}));
  expectSamePixels(three, {{0, 200, 0, 7}, {0, 200, 0, 7}, {10, 200, 100, 7}});
}

}  // namespace
