// The in-memory RGBE encoders in bulk (SSE2 or AVX2 vectors over whole
// vectors of pixels) against the encoder one pixel at a time, which is
// always the plain form.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "hdr/rgbe_codec.h"
#include "support/fast_paths.h"

using namespace effects::test;

namespace {

template <class P>
void expectPerPixel(int32_t(EFFECTS_CALL* encode)(int32_t, const P*, uint8_t*), const std::vector<P>& in) {
  const size_t n = in.size();
  std::vector<uint8_t> got(4 * n), want(4 * n);
  EXPECT_EQ(encode(static_cast<int32_t>(4 * n), in.data(), got.data()), static_cast<int32_t>(4 * n));
  for (size_t i = 0; i < n; ++i) encode(4, &in[i], want.data() + 4 * i);
  EXPECT_TRUE(got == want) << n;
}

}  // namespace

TEST(RgbeEncoderForms, FloatPixelsAgainstOneAtATime) {
  for (size_t n : {1u, 7u, 4001u}) expectPerPixel(Convert128toRGBE, varied<Pixel128>(n));
  // Largest elements across the whole float range, with tiny and negative
  // partners; the black limit 1e-32 on both sides.
  std::vector<Pixel128> edges;
  for (float v : {1e-32f, std::nextafter(1e-32f, 0.0f), std::nextafter(1e-32f, 1.0f), 1e-30f, 0.999999f, 1.0f,
                  255.5f / 256, 3e38f, 1.2e-38f})
    for (float w : {0.0f, -0.0f, -1.0f, -3e38f, 1e-45f, 0.5f})
      edges.push_back(Pixel128{w, v, w, 0.0f}), edges.push_back(Pixel128{v, w, -w, 1.0f});
  expectPerPixel(Convert128toRGBE, edges);
}

TEST(RgbeEncoderForms, EightBitPixelsAgainstOneAtATime) {
  // Every 7th colour (all of them sharing each largest element; a count that
  // leaves a tail), and a small picture.
  std::vector<Pixel32> colours((1u << 24) / 7);
  for (uint32_t k = 0; k < colours.size(); ++k) {
    const uint32_t i = k * 7;
    colours[k] = Pixel32{uint8_t(i), uint8_t(i >> 8), uint8_t(i >> 16), uint8_t(k)};
  }
  expectPerPixel(Convert32toRGBE, colours);
  expectPerPixel(Convert32toRGBE, varied<Pixel32>(1000));
#if defined(__SSE2__)
  // Where the export takes the AVX2 form, the SSE2 one directly too.
  std::vector<effects::RgbeQuad> got(colours.size());
  const size_t done = effects::rgbe::encodeRoundingVectors(colours.data(), colours.size(), got.data());
  ASSERT_GT(done, colours.size() - 4);
  for (size_t i = 0; i < done; ++i) {
    effects::RgbeQuad want;
    Convert32toRGBE(4, &colours[i], reinterpret_cast<uint8_t*>(&want));
    ASSERT_EQ(std::memcmp(&got[i], &want, 4), 0) << i;
  }
#endif
}
