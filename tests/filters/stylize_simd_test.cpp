// The exports that run vector forms against the plain per-pixel forms they
// stand for, over every 8-bit colour or byte and every 16-bit value.
#include <gtest/gtest.h>

#include <vector>

#include "filters/stylize.h"
#include "filters/stylize_simd.h"
#include "support/pictures.h"

using namespace effects;
using namespace effects::test;
using stylize::halftonePixel;

namespace {

// Every `step`-th (blue, green, red), the low bits varied too.
std::vector<Pixel32> colours(uint32_t step) {
  std::vector<Pixel32> v((1u << 24) / step);
  for (uint32_t k = 0; k < v.size(); ++k) {
    const uint32_t i = k * step + k % step;
    v[k] = Pixel32{uint8_t(i), uint8_t(i >> 8), uint8_t(i >> 16), uint8_t(i * 7)};
  }
  return v;
}

// Every 16-bit value in each element in turn, the others varying; 591 rows
// of 333 pixels, so rows end between vectors.
std::vector<Pixel64> words() {
  std::vector<Pixel64> v(333 * 591);
  for (uint32_t i = 0; i < v.size(); ++i) {
    const uint16_t a = uint16_t(i), b = uint16_t(i * 40503u), c = uint16_t(i * 9973u + 17);
    v[i] = i < 65536 ? Pixel64{a, b, c, uint16_t(i ^ 0x8000)} : i < 131072 ? Pixel64{c, a, b, a} : Pixel64{b, c, a, 40000};
  }
  return v;
}

// The export on `in` against the plain form on every pixel of it.
template <class P, class Export, class Plain>
void expectPlain(const std::vector<P>& in, std::vector<P>& got, std::vector<P>& want, Export run, Plain plain) {
  got = in, want = in;  // reused buffers: fresh pages cost more than the work
  run(got.data(), static_cast<int32_t>(in.size()));
  for (auto& p : want) plain(p);
  EXPECT_TRUE(sameBytes(got, want));
}

}  // namespace

TEST(StylizeVectorForms, Thresholds) {
#if defined(__SSE2__)
  std::vector<Pixel32> seven(7);
  EXPECT_EQ(stylize::sse2::halftone32(seven.data(), 7, 200, 200, Channels::of(1)), 4u);  // the vectors do run
#endif
  const int32_t dark[3] = {200, 383, 500}, bright[3] = {200, 382, 500}, sum64[3] = {8566, 16404, 21416};
  const int32_t low64[4] = {6424, 9637, 16383, 25699}, high64[4] = {25699, 19274, 16383, 25699};
  std::vector<Pixel32> got, want;
  // Every colour through the unequal level on red; every 16th through the rest.
  const auto all = colours(1), some = colours(16);
  expectPlain(all, got, want, [](Pixel32* p, int32_t n) { VexoHalftone32(4 * n, p, 2, 2); },
              [&](Pixel32& p) { halftonePixel<Layout32>(p, 383, 382, Channels::of(2)); });
  for (int32_t level = 1; level <= 3; ++level)
    for (int32_t channel = 1; channel <= 4; ++channel) {
      SCOPED_TRACE(testing::Message() << "level " << level << ", channel " << channel);
      expectPlain(some, got, want, [=](Pixel32* p, int32_t n) { VexoHalftone32(4 * n, p, level, channel); },
                  [&](Pixel32& p) { halftonePixel<Layout32>(p, dark[level - 1], bright[level - 1], Channels::of(channel)); });
    }
  for (int32_t limit : {INT32_MIN, -1, 0, 381, 765, INT32_MAX}) {
    expectPlain(some, got, want, [=](Pixel32* p, int32_t n) { VexoCustomHalftone32(4 * n, p, limit, 1); },
                [&](Pixel32& p) { halftonePixel<Layout32>(p, limit, limit, Channels::of(1)); });
  }
  const auto w = words();
  std::vector<Pixel64> got64, want64;
  for (int32_t channel = 1; channel <= 4; ++channel) {
    const Channels ch = Channels::of(channel);
    for (int32_t level = 1; level <= 4; ++level) {
      SCOPED_TRACE(testing::Message() << "16 bits, level " << level << ", channel " << channel);
      if (level < 4)
        expectPlain(w, got64, want64, [=](Pixel64* p, int32_t n) { VexoHalftone64(4 * n, p, level, channel); },
                    [&](Pixel64& p) { halftonePixel<Layout64>(p, sum64[level - 1], sum64[level - 1], ch); });
      expectPlain(w, got64, want64, [=](Pixel64* p, int32_t n) { VexoPolarPass64(4 * n, p, level, channel); },
                  [&](Pixel64& p) { stylize::polarPixel<Layout64>(p, low64[level - 1], high64[level - 1], ch); });
    }
  }
  for (int32_t limit : {-70000, -1, 30000, 200000})
    expectPlain(w, got64, want64, [=](Pixel64* p, int32_t n) { VexoCustomHalftone64(4 * n, p, limit, 1); },
                [&](Pixel64& p) { halftonePixel<Layout64>(p, limit, limit, Channels::of(1)); });
}

TEST(StylizeVectorForms, PosterizeCastsAndThatch) {
  std::vector<Pixel32> bytes(257 * 3), got, want;  // every byte in every element
  for (uint32_t i = 0; i < bytes.size(); ++i) bytes[i] = Pixel32{uint8_t(i), uint8_t(i * 3 + 1), uint8_t(i * 7 + 2), uint8_t(i * 5)};
  const auto w = words();
  std::vector<Pixel64> got64, want64;
  const uint8_t a32[3] = {0, 41, 79};
  const uint16_t a64[3] = {0, 5268, 10151};
  const int shares[6][3] = {{2, 1, 0}, {2, 0, 1}, {0, 1, 2}, {1, 0, 2}, {0, 2, 1}, {1, 2, 0}};
  const int32_t low[4] = {50, 75, 127, 200}, high[4] = {200, 150, 128, 200};
  for (int32_t level = 1; level <= 4; ++level)
    for (int32_t channel = 1; channel <= 4; ++channel)
      expectPlain(bytes, got, want, [=](Pixel32* p, int32_t n) { VexoPolarPass32(4 * n, p, level, channel); },
                  [&](Pixel32& p) { stylize::polarPixel<Layout32>(p, low[level - 1], high[level - 1], Channels::of(channel)); });
  for (int32_t mode = 1; mode <= 6; ++mode)
    for (int32_t channel = 1; channel <= 4; ++channel) {
      SCOPED_TRACE(testing::Message() << "mode " << mode << ", channel " << channel);
      const Channels ch = Channels::of(channel);
      const int r = ch.red ? shares[mode - 1][0] : 0, g = ch.green ? shares[mode - 1][1] : 0;
      const int b = ch.blue ? shares[mode - 1][2] : 0;
      expectPlain(bytes, got, want, [=](Pixel32* p, int32_t n) { VexoBacterial32(257, n / 257, p, mode, channel); },
                  [&](Pixel32& p) { stylize::castPixel<Layout32>(p, a32[r], a32[g], a32[b]); });
      expectPlain(w, got64, want64, [=](Pixel64* p, int32_t n) { VexoBacterial64(333, n / 333, p, mode, channel); },
                  [&](Pixel64& p) { stylize::castPixel<Layout64>(p, a64[r], a64[g], a64[b]); });
    }
  for (int32_t width : {1, 2, 5, 257}) {
    const int32_t height = static_cast<int32_t>(bytes.size()) / width;
    auto a = bytes, b = bytes;
    std::vector<Pixel64> c(w.begin(), w.begin() + width * height), d = c;
    VexoThachet32(width, height, a.data(), 0);
    VexoThachet64(width, height, c.data(), 0);
    stylize::thatchPlain<Layout32>(packedPicture(width, height, b.data()));
    stylize::thatchPlain<Layout64>(packedPicture(width, height, d.data()));
    EXPECT_TRUE(sameBytes(a, b) && sameBytes(c, d)) << "width " << width;
  }
}
