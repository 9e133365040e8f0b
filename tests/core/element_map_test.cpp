// The table walks of core/element_map.h against the plain map: the word
// tables, the AVX-512 byte permutes where this processor has them, and the
// maxima the levels take between their passes.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "core/element_map.h"
#include "core/pixel_rows.h"
#include "support/fast_paths.h"

using namespace effects;
using namespace effects::test;

TEST(ElementMapWalks, EveryFormGivesThePlainMap) {
  maps::detail::ByteTables t;
  for (uint32_t v = 0; v < 256; ++v) {
    t.bytes[0][v] = uint8_t(v * 37u + 11);  // blue, green and red each a permutation of its own
    t.bytes[1][v] = uint8_t(255 - v);
    t.bytes[2][v] = uint8_t(v ^ 0xA5u);
  }
  t.finish();
  auto blue = [&](uint8_t c) { return t.bytes[0][c]; };
  auto green = [&](uint8_t c) { return t.bytes[1][c]; };
  auto red = [&](uint8_t c) { return t.bytes[2][c]; };
  for (size_t n : {1u, 15u, 16u, 1003u}) {
    SCOPED_TRACE(n);
    const auto in = varied<Pixel32>(n);
    auto want = in;
    maps::eachPlain(want.data(), n, blue, green, red);
    auto words = in;
    maps::detail::lookup(words.data(), n, t.words[0], t.words[1], t.words[2]);
    EXPECT_EQ(words, want);
    auto walked = in;
    t(walked.data(), n);
    EXPECT_EQ(walked, want);
#if EFFECTS_WIDE
    if (cpu::vbmi()) {
      auto permuted = in;
      const size_t done = maps::detail::lookupPermuted(permuted.data(), n, t.bytes[0], t.bytes[1], t.bytes[2]);
      EXPECT_EQ(done, n - n % 16);
      maps::eachPlain(permuted.data() + done, n - done, blue, green, red);
      EXPECT_EQ(permuted, want);
    }
#endif
  }
}

TEST(ElementMapWalks, MaximaCompareUnsigned) {
  for (size_t n : {1u, 3u, 1001u}) {
    const auto a = varied<Pixel32>(n);
    auto b = varied<Pixel64>(n);
    b[n / 2].green = 0x8000;  // the largest unsigned word, the smallest signed one
    maps::Maxima ma, mb;
    ma(a.data(), n);
    mb(b.data(), n);
    int32_t want[2][3] = {};
    for (size_t i = 0; i < n; ++i) {
      want[0][0] = std::max<int32_t>(want[0][0], a[i].blue), want[1][0] = std::max<int32_t>(want[1][0], b[i].blue);
      want[0][1] = std::max<int32_t>(want[0][1], a[i].green), want[1][1] = std::max<int32_t>(want[1][1], b[i].green);
      want[0][2] = std::max<int32_t>(want[0][2], a[i].red), want[1][2] = std::max<int32_t>(want[1][2], b[i].red);
    }
    for (int c = 0; c < 3; ++c) {
      EXPECT_EQ(ma.of[c], want[0][c]) << n << " channel " << c;
      EXPECT_EQ(mb.of[c], want[1][c]) << n << " channel " << c;
    }
  }
}

// The 24-bit row helpers: every length up to a few wide steps, the wide
// forms' tails, a canary past each row, and the same bytes as the plain forms.
TEST(PixelRows, WideFormsGiveThePlainBytesAndStayInTheRow) {
  uint8_t table[256];
  for (uint32_t v = 0; v < 256; ++v) table[v] = uint8_t(v * 151u + 29);
  for (size_t n = 0; n <= 70; ++n) {
    SCOPED_TRACE(n);
    const auto px = varied<Pixel32>(n + 1, uint32_t(n) + 3);
    std::vector<uint8_t> narrow(4 * n + 8), plainNarrow(4 * n + 8, 0xEE), wide(4 * n + 8), plainWide(4 * n + 8, 0xEE);
    std::fill(narrow.begin(), narrow.end(), 0xEE);
    std::fill(wide.begin(), wide.end(), 0xEE);
    rows::narrow24(reinterpret_cast<const uint8_t*>(px.data()), narrow.data(), n);
    rows::detail::narrowPlain(reinterpret_cast<const uint8_t*>(px.data()), plainNarrow.data(), n);
    EXPECT_EQ(narrow, plainNarrow);
    for (size_t i = 0; i < n; ++i) {
      EXPECT_EQ(narrow[3 * i], px[i].blue);
      EXPECT_EQ(narrow[3 * i + 2], px[i].red);
    }
    EXPECT_EQ(narrow[3 * n], 0xEE);
    const std::vector<uint8_t> packed(narrow.begin(), narrow.begin() + 3 * n);  // exactly the row: reads past it show
    rows::widen24(packed.data(), wide.data(), n);
    rows::detail::widenPlain(packed.data(), plainWide.data(), n);
    EXPECT_EQ(wide, plainWide);
    for (size_t i = 0; i < n; ++i) {
      EXPECT_EQ(wide[4 * i + 1], px[i].green);
      EXPECT_EQ(wide[4 * i + 3], 0);
    }
    EXPECT_EQ(wide[4 * n], 0xEE);
    std::vector<uint8_t> mapped = packed, want = packed;
    for (auto& b : want) b = table[b];
    rows::mapBytes(mapped.data(), mapped.size(), table);
    EXPECT_EQ(mapped, want);
  }
}
