// The RGBE encoders and decoder, the limits of the scanline reader and the
// file writers. Malformed files are the corpus test's job.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "effects/effects.h"
#include "hdr/hdr_files.h"
#include "hdr/rgbe_codec.h"

using namespace effects::test;

namespace {

using Q = std::vector<uint8_t>;

// A written file: the five header lines, then the flat pixels.
Q writtenFile(const std::string& sizeLine, const Q& pixels) {
  Q out = bytesOf("#?RADIANCE\n# Made with 100% Vexocraft HDR\nFORMAT=32-bit_rle_rgbe\n"
                  "EXPOSURE=          1.0000000000000\n\n" + sizeLine);
  out.insert(out.end(), pixels.begin(), pixels.end());
  return out;
}

TEST(RgbeEncode, FileEncoderTruncatesMemoryEncoderRoundsAndWraps) {
  const float inf = std::numeric_limits<float>::infinity();
  const float nan = std::numeric_limits<float>::quiet_NaN();
  struct Case { float r, g, b; Q file, memory; };
  const Case cases[] = {
      {1, 1, 1, {128, 128, 128, 129}, {128, 128, 128, 129}},
      // Below 1e-32 is black; 2^-100 is not.
      {9e-33f, 0, 0, {0, 0, 0, 0}, {0, 0, 0, 0}},
      {std::ldexp(1.0f, -100), 0, 0, {128, 0, 0, 29}, {128, 0, 0, 29}},
      // 0.999 x 256 = 255.744: truncated 255, rounded 256 stored as 0.
      {0.999f, 0, 0, {255, 0, 0, 128}, {0, 0, 0, 128}},
      // 64.5 and 65.5: ties go to even.
      {0.50390625f, 1, 0.51171875f, {64, 128, 65, 129}, {64, 128, 66, 129}},
      // Negative values keep the low byte; all negative is black.
      {-1, 1, 0, {128, 128, 0, 129}, {128, 128, 0, 129}},
      {-5, -1, -2, {0, 0, 0, 0}, {0, 0, 0, 0}},
      // Infinity and NaN as the largest value give a NaN scale.
      {inf, 1, 0, {0, 0, 0, 128}, {0, 0, 0, 128}},
      {nan, 1, 0, {0, 0, 0, 128}, {0, 0, 0, 128}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << c.r << " " << c.g << " " << c.b);
    Q file(4);
    effects::rgbe::encodeTruncating(c.r, c.g, c.b, file.data());
    EXPECT_EQ(file, c.file);
    // Red is element 2; the mask is ignored.
    const Pixel128 px{c.b, c.g, c.r, 7.0f};
    Q memory(4);
    EXPECT_EQ(Convert128toRGBE(4, &px, memory.data()), 4);
    EXPECT_EQ(memory, c.memory);
  }
}

TEST(RgbeEncode, EightBitSourceIsScaledToOne) {
  const std::vector<Pixel32> px{{255, 255, 255, 0}, {0, 0, 128, 255}, {1, 2, 3, 4}, {9, 9, 9, 9}};
  Q out(16, 0xAB);
  EXPECT_EQ(Convert32toRGBE(9, px.data(), out.data()), 9);
  // 255 becomes exactly 1: white is 128, not a wrapped 0. 128/255 x 256 =
  // 128.502 rounds to 129. 3/255 = 0.753 x 2^-6: 3/255 x 2^14 = 192.75
  // rounds to 193. A count of 9 covers three pixels; the fourth stays.
  EXPECT_EQ(out, (Q{128, 128, 128, 129, 129, 0, 0, 128, 193, 129, 64, 122, 0xAB, 0xAB, 0xAB, 0xAB}));
  EXPECT_EQ(Convert32toRGBE(0, px.data(), out.data()), 0);
  EXPECT_EQ(Convert128toRGBE(-4, nullptr, nullptr), -4);
}

// `bytes` through the exported stream reader into a buffer of exactly
// width x height pixels, pre-filled with the sentinel.
struct StreamRead {
  int32_t result;
  std::vector<float> data;
  size_t position;
};
StreamRead readStream(const Q& bytes, int32_t width, int32_t height) {
  const size_t n = width > 0 && height > 0 ? static_cast<size_t>(width) * height : 0;
  StreamRead r{0, std::vector<float>(n * 3, sentinel()), 0};
  EffectsStream s{bytes.data(), bytes.size(), 0};
  r.result = RGBE_ReadPixels_RLE(&s, r.data.data(), width, height);
  r.position = s.position;
  return r;
}

TEST(RgbeDecode, HalfStepCentringAndTheExponentScale) {
  // The exported scale has no special case for 0; the decoder makes it black.
  EXPECT_EQ(ConvertRGBEto128(136), 1.0);
  EXPECT_EQ(ConvertRGBEto128(0), std::ldexp(1.0, -136));
  EXPECT_EQ(ConvertRGBEto128(255), std::ldexp(1.0, 119));
  const auto r = readStream({0, 1, 255, 136, 128, 128, 128, 129, 7, 8, 9, 0, 255, 255, 255, 255}, 4, 1);
  EXPECT_EQ(r.result, 0);
  const float top = static_cast<float>(255.5 * std::ldexp(1.0, 119));
  EXPECT_EQ(r.data, (std::vector<float>{0.5f, 1.5f, 255.5f, 1.00390625f, 1.00390625f, 1.00390625f,
                                        0, 0, 0, top, top, top}));
  EXPECT_EQ(r.position, 16u);
}

TEST(RgbeScanlines, WhichReaderRuns) {
  // A run-length start for width 32767 and nothing after it: the run-length
  // reader stops before writing anything, a flat read decodes the four bytes.
  for (int32_t width : {7, 8, 32767, 32768}) {
    const auto r = readStream({2, 2, 0x7F, 0xFF}, width, 1);
    EXPECT_EQ(r.result, 1);
    EXPECT_EQ(isSentinel(r.data[0]), width >= 8 && width <= 32767) << width;
  }
  // A set top bit in the width's high byte makes the data flat as well.
  const auto topBit = readStream({2, 2, 0x80, 16, 1, 1, 1, 1}, 16, 1);
  EXPECT_EQ(topBit.result, 1);
  EXPECT_EQ(topBit.data[0], static_cast<float>(2.5 * std::ldexp(1.0, -120)));
  EXPECT_EQ(topBit.data[3], static_cast<float>(1.5 * std::ldexp(1.0, -135)));
  EXPECT_TRUE(isSentinel(topBit.data[6]));
  // Two negative sizes are no picture either: nothing is read.
  const auto none = readStream(Q(64, 2), -1, -1);
  EXPECT_TRUE(none.result == 0 && none.position == 0u);
}

TEST(RgbeWrite, EachLayoutGoesThroughTheScratch) {
  const std::string path = scratchPath("small.hdr");
  const std::vector<Pixel32> px8{{0, 0, 255, 9}, {3, 255, 255, 0}};
  std::vector<float> scratch(6, sentinel());
  EXPECT_EQ(RGBE_WriteHeader_32(path.c_str(), 2, 1, px8.data(), scratch.data()), 0);
  // The single-precision 1/255 makes 3 a little more than 3/255 would.
  EXPECT_EQ(scratch, (std::vector<float>{1, 0, 0, 1, 1, 3 * 0.003921569f}));
  EXPECT_EQ(fileBytes(path), writtenFile("-Y 1 +X 2\n", {128, 0, 0, 129, 128, 128, 1, 129}));
  // 16-bit values are scaled by 1/32767 and read as signed: 40000 is
  // negative, so its pixel is black. The second file replaces the first.
  const std::vector<Pixel64> px16{{0, 16384, 32767, 1}, {0, 0, 40000, 0}};
  EXPECT_EQ(RGBE_WriteHeader_64(path.c_str(), 1, 2, px16.data(), scratch.data()), 0);
  EXPECT_EQ(fileBytes(path), writtenFile("-Y 2 +X 1\n", {128, 64, 0, 129, 0, 0, 0, 0}));
  // Floats are copied as they are, above 1 too.
  const std::vector<Pixel128> px128{{0.25f, 0.5f, 1.0f, 9}, {0, 3.0f, 0.1f, 0}};
  EXPECT_EQ(RGBE_WriteHeader_128(path.c_str(), 2, 1, px128.data(), scratch.data()), 0);
  EXPECT_EQ(scratch, (std::vector<float>{1.0f, 0.5f, 0.25f, 0.1f, 3.0f, 0}));
  EXPECT_EQ(fileBytes(path), writtenFile("-Y 1 +X 2\n", {128, 64, 32, 129, 6, 192, 0, 130}));
  // An empty picture gives the header alone, its size line as called.
  RGBE_WriteHeader_128(path.c_str(), 3, -2, nullptr, nullptr);
  EXPECT_EQ(fileBytes(path), writtenFile("-Y -2 +X 3\n", {}));
  std::remove(path.c_str());
}

TEST(RgbeFile, MissingFileReportsAndLeavesDataAlone) {
  std::vector<float> data(3, sentinel());
  testing::internal::CaptureStderr();
  EXPECT_EQ(RGBE_LoadHDR(scratchPath("does_not_exist.hdr").c_str(), data.data(), 1, 1), 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr().rfind("RGBE read error: ", 0), 0u);
  EXPECT_TRUE(isSentinel(data[0]));
}

}  // namespace
