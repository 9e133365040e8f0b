// The tonal and colour element maps through their per-call tables, against
// the same exports on one pixel at a time: a single pixel never fills a table, so
// there every element goes through the map itself. The pictures hold every
// 8-bit or every 16-bit value (above 32767 included) in each colour element.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <vector>

#include "adjust/tonal.h"
#include "core/element_map.h"
#include "core/scratch.h"
#include "support/pictures.h"

using namespace effects;
using namespace effects::test;

namespace {

// Rows of odd length, so that no walk sees a round number of pixels; pixel i
// holds value i in blue and a different permutation of the values in green
// and red.
constexpr int32_t kWidth8 = 509, kHeight8 = 131, kWidth16 = 257, kHeight16 = 263;

std::vector<Pixel32> everyByte() {
  std::vector<Pixel32> v(kWidth8 * kHeight8);
  for (uint32_t i = 0; i < v.size(); ++i)
    v[i] = Pixel32{uint8_t(i), uint8_t(i * 167u), uint8_t(i * 91u + 5), uint8_t(i * 3u)};
  return v;
}
std::vector<Pixel64> everyWord(size_t n = kWidth16 * kHeight16) {
  std::vector<Pixel64> v(n);
  for (uint32_t i = 0; i < v.size(); ++i)
    v[i] = Pixel64{uint16_t(i), uint16_t(i * 40503u), uint16_t(i * 9973u + 17), uint16_t(i * 3u)};
  return v;
}

template <class P>
using Call = std::function<void(uint32_t width, uint32_t height, P*)>;

// The export on the whole picture against the export on each pixel alone.
template <class P>
void expectPerPixel(const std::vector<P>& in, int32_t width, const std::vector<std::pair<const char*, Call<P>>>& runs) {
  for (const auto& [what, run] : runs) {
    SCOPED_TRACE(what);
    auto got = in, want = in;
    run(static_cast<uint32_t>(width), static_cast<uint32_t>(in.size() / width), got.data());
    for (auto& p : want) run(1, 1, &p);
    ASSERT_EQ(got, want);
  }
}

}  // namespace

TEST(TonalTables, EightBitMapsGiveWhatTheMapGives) {
  using P = Pixel32;
  expectPerPixel<P>(everyByte(), kWidth8, {
      {"brightness -100", [](uint32_t w, uint32_t h, P* p) { VexoBrightness32(w, h, p, -100, 0); }},
      {"brightness 255", [](uint32_t w, uint32_t h, P* p) { VexoBrightness32(w, h, p, 255, 0); }},
      {"brightness beyond the range", [](uint32_t w, uint32_t h, P* p) { VexoBrightness32(w, h, p, -70000, 0); }},
      {"black brightness", [](uint32_t w, uint32_t h, P* p) { VexoBlackBrightness32(w, h, p, 40, 0); }},
      {"black brightness below -255", [](uint32_t w, uint32_t h, P* p) { VexoBlackBrightness32(w, h, p, -400, 0); }},
      {"contrast", [](uint32_t w, uint32_t h, P* p) { VexoContrast32(w, h, p, 128, 0); }},
      {"contrast negative", [](uint32_t w, uint32_t h, P* p) { VexoContrast32(w, h, p, -255, 0); }},
      {"exposure sine", [](uint32_t w, uint32_t h, P* p) { VexoXposure32(w, h, p, 0, 50, 0); }},
      {"exposure cosine", [](uint32_t w, uint32_t h, P* p) { VexoXposure32(w, h, p, 1, -255, 0); }},
      {"exposure other mode", [](uint32_t w, uint32_t h, P* p) { VexoXposure32(w, h, p, 9, 3, 0); }},
      {"fstop", [](uint32_t w, uint32_t h, P* p) { Vexofstop32(w, h, p, 1.0); }},
      {"fstop overflowing", [](uint32_t w, uint32_t h, P* p) { Vexofstop32(w, h, p, 2000.0); }},
      {"gamma 2.2", [](uint32_t w, uint32_t h, P* p) { VexoGamma32(w, h, p, 2.2f); }},
      {"gamma 0", [](uint32_t w, uint32_t h, P* p) { VexoGamma32(w, h, p, 0.0f); }},
      {"gamma 0.3", [](uint32_t w, uint32_t h, P* p) { VexoGamma32(w, h, p, 0.3f); }},
      {"gamma to HDR 2.2", [](uint32_t w, uint32_t h, P* p) { VexoGammatoHDR32(w, h, p, 2.2f); }},
      {"gamma to HDR 0", [](uint32_t w, uint32_t h, P* p) { VexoGammatoHDR32(w, h, p, 0.0f); }},
      {"level percentage", [](uint32_t w, uint32_t h, P* p) { VexoAdjustLevelPrecentage32(w, h, p, 0.8f); }},
      {"level percentage, negative factor", [](uint32_t w, uint32_t h, P* p) { VexoAdjustLevelPrecentage32(w, h, p, 2.5f); }},
      {"sine, all channels", [](uint32_t w, uint32_t h, P* p) { VexoAdjustSine32(w, h, p, 0.5f, 1); }},
      {"sine, red", [](uint32_t w, uint32_t h, P* p) { VexoAdjustSine32(w, h, p, -0.5f, 2); }},
      {"sine, none", [](uint32_t w, uint32_t h, P* p) { VexoAdjustSine32(w, h, p, 0.5f, 0); }},
      {"dodge", [](uint32_t w, uint32_t h, P* p) { VexoDodge32(static_cast<int32_t>(4 * w * h), p, 150); }},
      {"dodge negative", [](uint32_t w, uint32_t h, P* p) { VexoDodge32(static_cast<int32_t>(4 * w * h), p, -250); }},
  });
}

TEST(TonalTables, SixteenBitMapsGiveWhatTheMapGivesAboveTheRangeToo) {
  using P = Pixel64;
  const auto in = everyWord();
  const std::vector<std::pair<const char*, Call<P>>> runs = {
      {"brightness", [](uint32_t w, uint32_t h, P* p) { VexoBrightness64(w, h, p, -12000, 0); }},
      {"brightness lightening", [](uint32_t w, uint32_t h, P* p) { VexoBrightness64(w, h, p, 30000, 0); }},
      {"black brightness", [](uint32_t w, uint32_t h, P* p) { VexoBlackBrightness64(w, h, p, 5000, 0); }},
      {"contrast", [](uint32_t w, uint32_t h, P* p) { VexoContrast64(w, h, p, 20000, 0); }},
      {"exposure", [](uint32_t w, uint32_t h, P* p) { VexoXposure64(w, h, p, 0, 9000, 0); }},
      {"fstop", [](uint32_t w, uint32_t h, P* p) { Vexofstop64(w, h, p, -1.5); }},
      {"gamma", [](uint32_t w, uint32_t h, P* p) { VexoGamma64(w, h, p, 2.2f); }},
      {"gamma to HDR", [](uint32_t w, uint32_t h, P* p) { VexoGammatoHDR64(w, h, p, 0.45f); }},
      {"level percentage", [](uint32_t w, uint32_t h, P* p) { VexoAdjustLevelPrecentage64(w, h, p, 0.6f); }},
      {"sine, green", [](uint32_t w, uint32_t h, P* p) { VexoAdjustSine64(w, h, p, 0.25f, 3); }},
      {"dodge", [](uint32_t w, uint32_t h, P* p) { VexoDodge64(static_cast<int32_t>(4 * w * h), p, 120); }},
      // Factors 0, -1, 65,537 and 21,474,837: products that wrap, are
      // negative, or are large in their upper half.
      {"dodge -100", [](uint32_t w, uint32_t h, P* p) { VexoDodge64(static_cast<int32_t>(4 * w * h), p, -100); }},
      {"dodge -200", [](uint32_t w, uint32_t h, P* p) { VexoDodge64(static_cast<int32_t>(4 * w * h), p, -200); }},
      {"dodge 6553600", [](uint32_t w, uint32_t h, P* p) { VexoDodge64(static_cast<int32_t>(4 * w * h), p, 6553600); }},
      {"dodge INT32_MAX", [](uint32_t w, uint32_t h, P* p) { VexoDodge64(static_cast<int32_t>(4 * w * h), p, INT32_MAX); }},
  };
  expectPerPixel<P>(in, kWidth16, runs);
  // Without the scratch memory for a table, the maps run element by element.
  const ScratchLimit none(0);
  expectPerPixel<P>(in, kWidth16, {runs[6], runs[9]});
}

namespace {

// The levels in their plain form: the first pass element by element, the
// maxima in a separate sweep, the second pass element by element.
template <class L>
void plainLevels(std::vector<typename L::Pixel>& px, const int32_t (&in)[3][2], float g, float curve,
                 const float (&out)[3][2], Channels ch) {
  const tonal::SineFactor<double> factor(curve);
  const tonal::LevelsIn<L> first[3] = {{in[0][0], in[0][1], g, &factor, ch.blue},
                                       {in[1][0], in[1][1], g, &factor, ch.green},
                                       {in[2][0], in[2][1], g, &factor, ch.red}};
  maps::eachPlain(px.data(), px.size(), first[0], first[1], first[2]);
  if (!ch.any()) return;
  int32_t max[3] = {0, 0, 0};
  for (const auto& p : px) {
    max[0] = std::max<int32_t>(max[0], p.blue);
    max[1] = std::max<int32_t>(max[1], p.green);
    max[2] = std::max<int32_t>(max[2], p.red);
  }
  tonal::LevelsOut<L> second[3];
  for (int i = 0; i < 3; ++i) second[i] = {max[i], 1.0 / max[i], out[i][0] - out[i][1], out[i][1]};
  for (auto& p : px) {
    if (ch.blue) p.blue = second[0](p.blue);
    if (ch.green) p.green = second[1](p.green);
    if (ch.red) p.red = second[2](p.red);
  }
}

}  // namespace

TEST(TonalTables, LevelsAgainstTheirPlainPasses) {
  // Input points blue, green, red (high, low); output points red, green, blue.
  const int32_t in8[3][2] = {{240, 10}, {250, 0}, {200, 30}};
  const float out8[3][2] = {{250, 5}, {240, 0}, {255, 10}};  // blue, green, red
  struct Case {
    float gamma, curve;
    int32_t channel;
  };
  const float nan = std::numeric_limits<float>::quiet_NaN();
  for (const Case c : {Case{1.4f, 0.1f, 1}, Case{0.5f, -0.3f, 3}, Case{2.0f, 0.0f, 0}, Case{1.0f, nan, 2}}) {
    SCOPED_TRACE(testing::Message() << "gamma " << c.gamma << ", curve " << c.curve << ", channel " << c.channel);
    auto got = everyByte(), want = got;
    VexoAdjustLevels32(static_cast<int32_t>(4 * got.size()), got.data(), 240, 10, 250, 0, 200, 30, c.gamma, c.curve,
                       255, 10, 240, 0, 250, 5, c.channel);
    plainLevels<Layout32>(want, in8, c.gamma, c.curve, out8, Channels::of(c.channel));
    EXPECT_EQ(got, want);
    // 16 bits: points scaled by 128; a NaN curve leaves 32768 (the rounding's
    // out-of-range value), which is the largest unsigned element.
    const int32_t in16[3][2] = {{30720, 1280}, {32000, 0}, {25600, 3840}};
    const float out16[3][2] = {{32000, 640}, {30720, 0}, {32640, 1280}};
    auto got16 = everyWord(401 * 331), want16 = got16;  // enough for three tables
    VexoAdjustLevels64(static_cast<int32_t>(4 * got16.size()), got16.data(), 30720, 1280, 32000, 0, 25600, 3840,
                       c.gamma, c.curve, 32640, 1280, 30720, 0, 32000, 640, c.channel);
    plainLevels<Layout64>(want16, in16, c.gamma, c.curve, out16, Channels::of(c.channel));
    EXPECT_EQ(got16, want16);
  }
}

// 16 bits, where one walk does both passes when the first pass's tables rise
// with the element: the largest element is then the new maximum. Negative
// low points let the elements above 32767 (negative when compared) through
// to the power, where they round out of range to 32768, above every other
// entry: there the tables fall at 0 and the two passes run.
TEST(TonalTables, SixteenBitLevelsInOneWalkOrTwo) {
  const float out16[3][2] = {{32000, 640}, {30720, 0}, {32640, 1280}};
  const int32_t rising[3][2] = {{30720, 1280}, {32767, 0}, {25600, 3840}};
  const int32_t falling[3][2] = {{30720, -40000}, {32000, 0}, {25600, -1}};
  for (const auto* in : {&rising, &falling})
    for (int32_t channel : {1, 2, 4})
      for (const float gamma : {0.45f, 2.0f}) {
        SCOPED_TRACE(testing::Message() << (in == &rising ? "rising" : "falling") << ", channel " << channel
                                        << ", gamma " << gamma);
        // Also with the elements below 32768 kept under 1001, where the
        // largest new value can come from an element above 32767.
        for (const uint16_t top : {uint16_t(65535), uint16_t(1000)}) {
          auto got = everyWord(401 * 331);
          const auto cut = [top](uint16_t& e) { e = e < 32768 ? uint16_t(e % (top + 1)) : e; };
          for (auto& p : got) cut(p.blue), cut(p.green), cut(p.red);
          auto want = got;
          VexoAdjustLevels64(static_cast<int32_t>(4 * got.size()), got.data(), (*in)[0][0], (*in)[0][1], (*in)[1][0],
                             (*in)[1][1], (*in)[2][0], (*in)[2][1], gamma, 0.2f, 32640, 1280, 30720, 0, 32000, 640,
                             channel);
          plainLevels<Layout64>(want, *in, gamma, 0.2f, out16, Channels::of(channel));
          ASSERT_EQ(got, want) << top;
        }
      }
}

TEST(ColourTables, SixteenBitMapsGiveWhatTheMapGives) {
  using P = Pixel64;
  const auto in = everyWord(401 * 331);  // enough for three tables
  expectPerPixel<P>(in, 401, {
      {"offsets", [](uint32_t w, uint32_t h, P* p) { VexoAdjust1Colors64(w, h, p, 9000, -20000, 70000); }},
      {"offsets wrapping", [](uint32_t w, uint32_t h, P* p) { VexoAdjust1Colors64(w, h, p, INT32_MAX, 1, INT32_MIN); }},
      {"sine offsets", [](uint32_t w, uint32_t h, P* p) { VexoAdjust0Colors64(w, h, p, 3000, -500, 20000); }},
      {"tint", [](uint32_t w, uint32_t h, P* p) { VexoCustomBacterial64(static_cast<int32_t>(4 * w * h), p, 100, 40000, 7, 1); }},
      {"tint, green", [](uint32_t w, uint32_t h, P* p) { VexoCustomBacterial64(static_cast<int32_t>(4 * w * h), p, 100, 40000, 7, 3); }},
      {"web colour", [](uint32_t w, uint32_t h, P* p) { VexoWebColour64(static_cast<int32_t>(4 * w * h), p); }},
      {"aged photo", [](uint32_t w, uint32_t h, P* p) { VexoAgedPhoto64(static_cast<int32_t>(4 * w * h), p, 1); }},
      {"aged photo, red", [](uint32_t w, uint32_t h, P* p) { VexoAgedPhoto64(static_cast<int32_t>(4 * w * h), p, 2); }},
  });
}
