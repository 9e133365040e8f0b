// The exports that run vector forms against the plain forms they replace,
// over every 8-bit input and every 16-bit element value.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "filters/stylize.h"
#include "filters/stylize_simd.h"
#include "support/pictures.h"

using namespace effects;
using namespace effects::test;

namespace {

// Every (blue, green, red) once, with a varying mask; or every `step`-th of
// them, the low bits varied too.
std::vector<Pixel32> everyColour(uint32_t step = 1) {
  std::vector<Pixel32> v((1u << 24) / step);
  for (uint32_t k = 0; k < v.size(); ++k) {
    const uint32_t i = k * step + k % step;
    v[k] = Pixel32{uint8_t(i), uint8_t(i >> 8), uint8_t(i >> 16), uint8_t(i * 7)};
  }
  return v;
}

// Every 16-bit value in each element in turn (the others varying), as a
// picture 333 pixels wide so rows end between vectors.
std::vector<Pixel64> everyWord() {
  std::vector<Pixel64> v(65536 * 3);
  for (uint32_t i = 0; i < 65536; ++i) {
    const uint16_t a = uint16_t(i), b = uint16_t(i * 40503u), c = uint16_t(i * 9973u + 17);
    v[i] = Pixel64{a, b, c, uint16_t(i ^ 0x8000)};
    v[65536 + i] = Pixel64{c, a, b, uint16_t(i)};
    v[131072 + i] = Pixel64{b, c, a, 40000};
  }
  return v;
}

template <class P, class Plain>
std::vector<P> plainly(std::vector<P> v, Plain plain) {
  for (auto& p : v) plain(p);
  return v;
}

}  // namespace

TEST(StylizeVectorForms, RunWholeVectors) {
#if defined(__SSE2__)
  std::vector<Pixel32> a(7);
  std::vector<Pixel64> b(7);
  EXPECT_EQ(stylize::sse2::halftone32(a.data(), 7, 200, 200, Channels::of(1)), 4u);
  EXPECT_EQ(stylize::sse2::polarPass64(b.data(), 7, 1, 2, Channels::of(1)), 6u);
#else
  GTEST_SKIP() << "no SSE2 in this build";
#endif
}

// Every colour through level 2 on red (the unequal pair, and the recounted
// sum of a single channel); every 16th colour through the other settings.
TEST(StylizeVectorForms, HalftoneOverEveryColour) {
  const int32_t dark[3] = {200, 383, 500}, bright[3] = {200, 382, 500};
  for (uint32_t step : {1u, 16u}) {
    const auto colours = everyColour(step);
    const int32_t n = static_cast<int32_t>(colours.size()) * 4;
    auto px = colours, want = colours;  // reused: fresh pages cost more than the work
    auto check = [&](auto call, auto plain, const char* what, int32_t a, int32_t b) {
      px = colours, want = colours;
      call(px.data());
      for (auto& p : want) plain(p);
      EXPECT_TRUE(sameBytes(px, want)) << what << ' ' << a << ", " << b << ", step " << step;
    };
    for (int32_t level = 1; level <= 3; ++level) {
      for (int32_t channel = 1; channel <= 4; ++channel) {
        if ((step == 1) != (level == 2 && channel == 2)) continue;
        const Channels ch = Channels::of(channel);
        check([&](Pixel32* p) { VexoHalftone32(n, p, level, channel); },
              [&](Pixel32& p) { stylize::halftonePixel<Layout32>(p, dark[level - 1], bright[level - 1], ch); },
              "level, channel", level, channel);
      }
    }
    if (step == 1) continue;
    for (int32_t limit : {INT32_MIN, -1, 0, 381, 765, INT32_MAX}) {
      check([&](Pixel32* p) { VexoCustomHalftone32(n, p, limit, 1); },
            [&](Pixel32& p) { stylize::halftonePixel<Layout32>(p, limit, limit, Channels::of(1)); }, "limit", limit, 1);
    }
  }
}

TEST(StylizeVectorForms, SixteenBitThresholdsOverEveryWord) {
  const auto words = everyWord();
  const int32_t n = static_cast<int32_t>(words.size()) * 4;
  const int32_t sums[3] = {8566, 16404, 21416};
  const int32_t low[4] = {6424, 9637, 16383, 25699}, high[4] = {25699, 19274, 16383, 25699};
  for (int32_t channel = 1; channel <= 4; ++channel) {
    const Channels ch = Channels::of(channel);
    for (int32_t level = 1; level <= 3; ++level) {
      auto px = words;
      VexoHalftone64(n, px.data(), level, channel);
      EXPECT_TRUE(sameBytes(px, plainly(words, [&](Pixel64& p) {
        stylize::halftonePixel<Layout64>(p, sums[level - 1], sums[level - 1], ch);
      }))) << "halftone level " << level << ", channel " << channel;
    }
    for (int32_t level = 1; level <= 4; ++level) {
      auto px = words;
      VexoPolarPass64(n, px.data(), level, channel);
      EXPECT_TRUE(sameBytes(px, plainly(words, [&](Pixel64& p) {
        stylize::polarPixel<Layout64>(p, low[level - 1], high[level - 1], ch);
      }))) << "polar level " << level << ", channel " << channel;
    }
  }
  for (int32_t limit : {-70000, -1, 30000, 98301, 200000}) {
    auto px = words;
    VexoCustomHalftone64(n, px.data(), limit, 1);
    EXPECT_TRUE(sameBytes(px, plainly(words, [&](Pixel64& p) {
      stylize::halftonePixel<Layout64>(p, limit, limit, Channels::of(1));
    }))) << "limit " << limit;
  }
}

TEST(StylizeVectorForms, CastsAndThatchOverEveryValue) {
  // 8 bits: every byte in every element, 257 pixels to a row.
  std::vector<Pixel32> bytes(257 * 3);
  for (uint32_t i = 0; i < bytes.size(); ++i)
    bytes[i] = Pixel32{uint8_t(i), uint8_t(i * 3 + 1), uint8_t(i * 7 + 2), uint8_t(i * 5)};
  const auto words = everyWord();
  const uint8_t amount32[3] = {0, 41, 79};
  const uint16_t amount64[3] = {0, 5268, 10151};
  const int32_t shares[6][3] = {{2, 1, 0}, {2, 0, 1}, {0, 1, 2}, {1, 0, 2}, {0, 2, 1}, {1, 2, 0}};
  for (int32_t mode = 1; mode <= 6; ++mode) {
    for (int32_t channel = 1; channel <= 4; ++channel) {
      const Channels ch = Channels::of(channel);
      const int32_t* s = shares[mode - 1];
      const int r = ch.red ? s[0] : 0, g = ch.green ? s[1] : 0, b = ch.blue ? s[2] : 0;
      auto a = bytes;
      VexoBacterial32(257, 3, a.data(), mode, channel);
      EXPECT_TRUE(sameBytes(a, plainly(bytes, [&](Pixel32& p) {
        stylize::castPixel<Layout32>(p, amount32[r], amount32[g], amount32[b]);
      }))) << "mode " << mode << ", channel " << channel;
      auto w = words;
      VexoBacterial64(333, static_cast<int32_t>(words.size() / 333), w.data(), mode, channel);
      const size_t covered = words.size() / 333 * 333;
      auto want = plainly(words, [&](Pixel64& p) {
        stylize::castPixel<Layout64>(p, amount64[r], amount64[g], amount64[b]);
      });
      std::copy(words.begin() + static_cast<ptrdiff_t>(covered), words.end(), want.begin() + static_cast<ptrdiff_t>(covered));
      EXPECT_TRUE(sameBytes(w, want)) << "mode " << mode << ", channel " << channel;
    }
  }
  for (int32_t width : {1, 2, 5, 257}) {
    const int32_t height = static_cast<int32_t>(bytes.size()) / width;
    auto a = bytes, b = bytes;
    VexoThachet32(width, height, a.data(), 0);
    stylize::thatchPlain<Layout32>(packedPicture(width, height, b.data()));
    EXPECT_TRUE(sameBytes(a, b)) << "width " << width;
    auto c = words, d = words;
    VexoThachet64(width, height, c.data(), 0);
    stylize::thatchPlain<Layout64>(packedPicture(width, height, d.data()));
    EXPECT_TRUE(sameBytes(c, d)) << "width " << width;
  }
}
