#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "effects/effects.h"
#include "hdr/hdr_files.h"
#include "hdr/rgbe_codec.h"
#include "support/pictures.h"

using namespace effects::test;

namespace {

const std::string kHeader =
    "#?RADIANCE\n# Made with 100% Vexocraft HDR\nFORMAT=32-bit_rle_rgbe\n"
    "EXPOSURE=          1.0000000000000\n\n";

std::vector<uint8_t> rgbeOf128(std::vector<Pixel128> px) {
  std::vector<uint8_t> out(px.size() * 4, 0xAB);
  EXPECT_EQ(Convert128toRGBE(static_cast<int32_t>(px.size() * 4), px.data(), out.data()),
            static_cast<int32_t>(px.size() * 4));
  return out;
}

std::vector<uint8_t> fileEncode(float r, float g, float b) {
  std::vector<uint8_t> q(4);
  effects::rgbe::encodeTruncating(r, g, b, q.data());
  return q;
}

using Q = std::vector<uint8_t>;

TEST(RgbeEncode, WorkedValues) {
  // Black, white, and element order (red is element 2, blue element 0).
  EXPECT_EQ(rgbeOf128({{0, 0, 0, 1}}), (Q{0, 0, 0, 0}));
  EXPECT_EQ(rgbeOf128({{1, 1, 1, 0}}), (Q{128, 128, 128, 129}));
  EXPECT_EQ(fileEncode(1, 1, 1), (Q{128, 128, 128, 129}));
  EXPECT_EQ(rgbeOf128({{0.25f, 0.5f, 1.0f, 7.0f}}), (Q{128, 64, 32, 129}));
  EXPECT_EQ(rgbeOf128({{0, 0, 1000.0f, 0}}), (Q{250, 0, 0, 138}));
  // Below 1e-32 is black; just above it is not.
  EXPECT_EQ(rgbeOf128({{0, 0, 9e-33f, 0}}), (Q{0, 0, 0, 0}));
  EXPECT_EQ(rgbeOf128({{0, 0, std::ldexp(1.0f, -100), 0}}), (Q{128, 0, 0, 128 - 99}));
}

TEST(RgbeEncode, MemoryEncoderRoundsAndWrapsTheFileEncoderTruncates) {
  // 0.999 x 256 = 255.744: rounds to 256, stored as its low byte 0.
  EXPECT_EQ(rgbeOf128({{0, 0, 0.999f, 0}}), (Q{0, 0, 0, 128}));
  EXPECT_EQ(fileEncode(0.999f, 0, 0), (Q{255, 0, 0, 128}));
  // 0.7 with 1.0 as the largest: 89.6 rounds to 90, truncates to 89.
  EXPECT_EQ(rgbeOf128({{0.7f, 0, 1, 0}}), (Q{128, 0, 90, 129}));
  EXPECT_EQ(fileEncode(1, 0, 0.7f), (Q{128, 0, 89, 129}));
  // Ties go to even: red 64.5 -> 64, blue 65.5 -> 66; truncation gives 64, 65.
  EXPECT_EQ(rgbeOf128({{0.51171875f, 1, 0.50390625f, 0}}), (Q{64, 128, 66, 129}));
  EXPECT_EQ(fileEncode(0.50390625f, 1, 0.51171875f), (Q{64, 128, 65, 129}));
}

TEST(RgbeEncode, NegativeAndNonFiniteValuesKeepTheLowByte) {
  // -1 against a largest value of 1: -128 truncated and rounded alike.
  EXPECT_EQ(fileEncode(-1, 1, 0), (Q{128, 128, 0, 129}));
  EXPECT_EQ(rgbeOf128({{0, 1, -1, 0}}), (Q{128, 128, 0, 129}));
  // All negative: the largest is below 1e-32, so black.
  EXPECT_EQ(fileEncode(-5, -1, -2), (Q{0, 0, 0, 0}));
  const float inf = std::numeric_limits<float>::infinity();
  const float nan = std::numeric_limits<float>::quiet_NaN();
  EXPECT_EQ(fileEncode(inf, 1, 0), (Q{0, 0, 0, 128}));
  EXPECT_EQ(fileEncode(nan, 1, 0), (Q{0, 0, 0, 128}));
  EXPECT_EQ(rgbeOf128({{0, 0, inf, 0}}), (Q{0, 0, 0, 128}));
  // A value far below the largest truncates to 0; one far outside the byte
  // (only possible when negative) keeps the low byte of the integer.
  EXPECT_EQ(fileEncode(1e-20f, 0, 1), (Q{0, 0, 128, 129}));
  EXPECT_EQ(fileEncode(-1e30f, 0, 1), (Q{0, 0, 128, 129}));
}

TEST(RgbeEncode, EightBitSourceScalesInDoubleThenSingle) {
  std::vector<Pixel32> px{{255, 255, 255, 0}, {0, 0, 128, 255}, {1, 2, 3, 4}, {9, 9, 9, 9}};
  std::vector<uint8_t> out(16, 0xAB);
  // 255/255 in double is just below 1 but becomes 1.0f: white is 128, not 0.
  EXPECT_EQ(Convert32toRGBE(9, px.data(), out.data()), 9);
  EXPECT_EQ(Q(out.begin(), out.begin() + 4), (Q{128, 128, 128, 129}));
  // 128/255 x 256 = 128.50196 rounds to 129.
  EXPECT_EQ(Q(out.begin() + 4, out.begin() + 8), (Q{129, 0, 0, 128}));
  // 3/255: largest 0.01176 = 0.7529 x 2^-6; 3/255 x 2^14 = 192.75 -> 193.
  EXPECT_EQ(Q(out.begin() + 8, out.begin() + 12), (Q{193, 129, 64, 122}));
  // A count of 9 covers three pixels; the fourth stays as it was.
  EXPECT_EQ(out[12], 0xAB);
  EXPECT_EQ(Convert32toRGBE(0, px.data(), out.data()), 0);
  EXPECT_EQ(Convert128toRGBE(-4, nullptr, nullptr), -4);
}

TEST(RgbeScale, PowersOfTwoAroundTheBias) {
  EXPECT_EQ(ConvertRGBEto128(136), 1.0);
  EXPECT_EQ(ConvertRGBEto128(137), 2.0);
  EXPECT_EQ(ConvertRGBEto128(128), 1.0 / 256);
  EXPECT_EQ(ConvertRGBEto128(0), std::ldexp(1.0, -136));
  EXPECT_EQ(ConvertRGBEto128(255), std::ldexp(1.0, 119));
}

// Reads `bytes` through the exported stream reader into a buffer of exactly
// width x height pixels (AddressSanitizer catches any write past it).
struct StreamRead {
  int32_t result;
  std::vector<float> data;
  size_t position;
};
StreamRead readStream(const std::vector<uint8_t>& bytes, int32_t width, int32_t height) {
  const size_t n = width > 0 && height > 0 ? static_cast<size_t>(width) * height : 0;
  StreamRead r{0, std::vector<float>(n * 3, sentinel()), 0};
  EffectsStream s{bytes.data(), bytes.size(), 0};
  r.result = RGBE_ReadPixels_RLE(&s, r.data.data(), width, height);
  r.position = s.position;
  return r;
}

TEST(RgbeDecode, HalfStepCentringAndBlackExponent) {
  const auto r = readStream({0, 1, 255, 136, 128, 128, 128, 129, 7, 8, 9, 0, 0, 0, 0, 0, 255, 255, 255, 255}, 5, 1);
  EXPECT_EQ(r.result, 0);
  const std::vector<float> expected{0.5f, 1.5f, 255.5f, 1.00390625f, 1.00390625f, 1.00390625f,
                                    0, 0, 0, 0, 0, 0,
                                    static_cast<float>(255.5 * std::ldexp(1.0, 119)),
                                    static_cast<float>(255.5 * std::ldexp(1.0, 119)),
                                    static_cast<float>(255.5 * std::ldexp(1.0, 119))};
  EXPECT_EQ(r.data, expected);
  EXPECT_EQ(r.position, 20u);
}

// A run-length scanline: the four planes given as (count, value, literals...)
// codes, already encoded.
std::vector<uint8_t> scanline(int width, const std::vector<std::vector<uint8_t>>& planes) {
  std::vector<uint8_t> out{2, 2, static_cast<uint8_t>(width >> 8), static_cast<uint8_t>(width & 255)};
  for (const auto& p : planes) out.insert(out.end(), p.begin(), p.end());
  return out;
}

TEST(RgbeScanlines, RunsAndLiteralsFillThePlanes) {
  // Width 8: red = run of 8 x 10; green = literal 0..7; blue = run 3 x 4 then
  // literal 5 bytes; exponent = run of 8 x 137.
  const auto bytes = scanline(8, {{128 + 8, 10},
                                  {8, 0, 1, 2, 3, 4, 5, 6, 7},
                                  {128 + 3, 4, 5, 20, 21, 22, 23, 24},
                                  {128 + 8, 137}});
  const auto r = readStream(bytes, 8, 1);
  ASSERT_EQ(r.result, 0);
  EXPECT_EQ(r.position, bytes.size());
  const float blue[8] = {4, 4, 4, 20, 21, 22, 23, 24};
  for (int x = 0; x < 8; ++x) {
    EXPECT_EQ(r.data[3 * x], 21.0f) << x;  // (10 + 0.5) x 2
    EXPECT_EQ(r.data[3 * x + 1], (x + 0.5f) * 2) << x;
    EXPECT_EQ(r.data[3 * x + 2], (blue[x] + 0.5f) * 2) << x;
  }
}

TEST(RgbeScanlines, CountOf128IsALiteralAndZeroLengthRunsFail) {
  std::vector<uint8_t> literal{128};
  for (int i = 0; i < 128; ++i) literal.push_back(static_cast<uint8_t>(i));
  const auto ok = readStream(scanline(128, {literal, literal, literal, {128 + 127, 136, 1, 136}}), 128, 1);
  ASSERT_EQ(ok.result, 0);
  EXPECT_EQ(ok.data[3 * 127], 127.5f);
  EXPECT_EQ(ok.data[3 * 100 + 2], 100.5f);
  // A run of length 0 (count 128 read as a run would be) is refused only as a
  // literal of zero; 0 itself and counts beyond the room left fail.
  for (const std::vector<uint8_t>& bad : {std::vector<uint8_t>{0, 1}, std::vector<uint8_t>{9, 1, 2, 3, 4, 5, 6, 7, 8, 9},
                                          std::vector<uint8_t>{128 + 9, 1}, std::vector<uint8_t>{128 + 4, 1, 128 + 5, 2}}) {
    const auto r = readStream(scanline(8, {bad, {128 + 8, 1}, {128 + 8, 1}, {128 + 8, 1}}), 8, 1);
    EXPECT_EQ(r.result, 1);
    for (float f : r.data) EXPECT_TRUE(isSentinel(f));
  }
}

// A picture whose pixel k is (k, 2k, 255 - k, 130): flat, or run-length
// scanlines made of literals.
std::vector<uint8_t> picturePixel(int k) {
  return {static_cast<uint8_t>(k), static_cast<uint8_t>(2 * k), static_cast<uint8_t>(255 - k), 130};
}
std::vector<uint8_t> flatPicture(int width, int height) {
  std::vector<uint8_t> out;
  for (int k = 0; k < width * height; ++k) {
    const auto p = picturePixel(k);
    out.insert(out.end(), p.begin(), p.end());
  }
  return out;
}
std::vector<uint8_t> rlePicture(int width, int height) {
  std::vector<uint8_t> out;
  for (int y = 0; y < height; ++y) {
    std::vector<std::vector<uint8_t>> planes(4);
    for (int c = 0; c < 4; ++c) {
      for (int x = 0; x < width; ++x) {
        if (x % 128 == 0) planes[c].push_back(static_cast<uint8_t>(std::min(128, width - x)));
        planes[c].push_back(picturePixel(y * width + x)[c]);
      }
    }
    const auto s = scanline(width, planes);
    out.insert(out.end(), s.begin(), s.end());
  }
  return out;
}
void expectPicture(const std::vector<float>& data, int filled) {
  for (int k = 0; k < static_cast<int>(data.size() / 3); ++k) {
    float want[3];
    const auto q = picturePixel(k);
    expectedDecode(q.data(), want);
    for (int c = 0; c < 3; ++c) {
      if (k < filled) {
        EXPECT_EQ(data[3 * k + c], want[c]) << k;
      } else {
        EXPECT_TRUE(isSentinel(data[3 * k + c])) << k;
      }
    }
  }
}

// (Flat files of width 16 and 7, flat data after a first run-length
// scanline and width mismatches are in the corpus.)
TEST(RgbeScanlines, WidthLimitsOfTheRunLengthReader) {
  // Widths outside 8..32767 are read flat, and that is success.
  auto r = readStream(flatPicture(32768, 1), 32768, 1);
  EXPECT_EQ(r.result, 0);
  expectPicture(r.data, 32768);
  r = readStream(rlePicture(32767, 1), 32767, 1);
  EXPECT_EQ(r.result, 0);
  expectPicture(r.data, 32767);
  // A width of 7 on run-length data reads its bytes as pixels.
  r = readStream(rlePicture(8, 1), 7, 1);
  EXPECT_EQ(r.result, 0);
  EXPECT_EQ(r.data[0], static_cast<float>(2.5 * std::ldexp(1.0, -136 + 8)));
  // The top bit of the width's high byte makes a scanline flat too.
  auto topBit = flatPicture(16, 1);
  topBit[0] = 2; topBit[1] = 2; topBit[2] = 0x80; topBit[3] = 16;
  r = readStream(topBit, 16, 1);
  EXPECT_EQ(r.result, 1);
  EXPECT_EQ(r.data[0], static_cast<float>(2.5 * std::ldexp(1.0, -120)));
}

TEST(RgbeScanlines, SizesBelowOneReadNothing) {
  for (auto [w, h] : {std::pair{0, 5}, {16, 0}, {16, -3}, {-1, -1}, {7, 0}}) {
    const auto r = readStream(flatPicture(16, 2), w, h);
    EXPECT_EQ(r.result, 0) << w << "x" << h;
    EXPECT_EQ(r.position, 0u);
  }
}

TEST(RgbeScanlines, EndOfDataAtEveryByteKeepsWholeScanlinesOnly) {
  const auto rle = rlePicture(9, 3);
  const size_t perLine = rle.size() / 3;
  for (size_t cut = 0; cut < rle.size(); ++cut) {
    const auto r = readStream(std::vector<uint8_t>(rle.begin(), rle.begin() + cut), 9, 3);
    EXPECT_EQ(r.result, 1) << cut;
    expectPicture(r.data, static_cast<int>(cut / perLine) * 9);
  }
  const auto flat = flatPicture(5, 3);
  for (size_t cut = 0; cut < flat.size(); ++cut) {
    const auto r = readStream(std::vector<uint8_t>(flat.begin(), flat.begin() + cut), 5, 3);
    EXPECT_EQ(r.result, 1) << cut;
    expectPicture(r.data, static_cast<int>(cut / 4));
  }
}

TEST(RgbeHeader, SizeLineScansLikeTheFormattedReader) {
  int32_t h = -9, w = -9;
  EXPECT_EQ(effects::rgbe::scanSizeLine("-Y 3 +X 16\n", &h, &w), 2);
  EXPECT_EQ(h, 3); EXPECT_EQ(w, 16);
  EXPECT_EQ(effects::rgbe::scanSizeLine("-Y  -4\t+X +17 trailing", &h, &w), 2);
  EXPECT_EQ(h, -4); EXPECT_EQ(w, 17);
  EXPECT_EQ(effects::rgbe::scanSizeLine("-Y99999999999 +X 1", &h, &w), 2);
  EXPECT_EQ(h, INT32_MAX);
  EXPECT_EQ(effects::rgbe::scanSizeLine("-Y 3 -X 16", &h, &w), 1);
  EXPECT_EQ(effects::rgbe::scanSizeLine("-Y 3 +X", &h, &w), 1);
  EXPECT_EQ(effects::rgbe::scanSizeLine("+Y 3 +X 16", &h, &w), 0);
  EXPECT_EQ(effects::rgbe::scanSizeLine(" -Y 3 +X 16", &h, &w), 0);
  EXPECT_EQ(effects::rgbe::scanSizeLine("-Y x +X 16", &h, &w), 0);
  EXPECT_EQ(effects::rgbe::scanSizeLine("", &h, &w), 0);
}

TEST(RgbeWrite, TwoPixelFileIsTheHeaderAndEightBytes) {
  const std::string path = scratchPath("two.hdr");
  std::vector<Pixel32> px{{0, 0, 255, 9}, {255, 255, 255, 0}};
  std::vector<float> scratch(6, sentinel());
  EXPECT_EQ(RGBE_WriteHeader_32(path.c_str(), 2, 1, px.data(), scratch.data()), 0);
  auto expected = bytesOf(kHeader + "-Y 1 +X 2\n");
  // 255 x 0.003921569f is a hair above 1: still 128 with exponent 129.
  for (uint8_t b : {128, 0, 0, 129, 128, 128, 128, 129}) expected.push_back(b);
  EXPECT_EQ(fileBytes(path), expected);
  const float one = 255 * 0.003921569f;
  EXPECT_EQ(scratch, (std::vector<float>{one, 0, 0, one, one, one}));
  // Writing again replaces the file rather than appending to it.
  RGBE_WriteHeader_32(path.c_str(), 2, 1, px.data(), scratch.data());
  EXPECT_EQ(fileBytes(path), expected);
  std::remove(path.c_str());
}

TEST(RgbeWrite, SixteenBitValuesAreReadAsSigned) {
  const std::string path = scratchPath("sixteen.hdr");
  std::vector<Pixel64> px{{0, 16384, 32767, 1}, {0, 0, 40000, 0}};
  std::vector<float> scratch(6);
  RGBE_WriteHeader_64(path.c_str(), 1, 2, px.data(), scratch.data());
  EXPECT_EQ(scratch[0], static_cast<float>(32767 * 3.051850947599719e-5));
  EXPECT_EQ(scratch[1], static_cast<float>(16384 * 3.051850947599719e-5));
  EXPECT_EQ(scratch[3], static_cast<float>(-25536 * 3.051850947599719e-5));  // 40000 as signed
  const auto bytes = fileBytes(path);
  const auto head = bytesOf(kHeader + "-Y 2 +X 1\n");
  ASSERT_EQ(bytes.size(), head.size() + 8);
  // 32767 / 32767 rounds to 1.0f in the scratch; a negative largest value is black.
  EXPECT_EQ(Q(bytes.begin() + head.size(), bytes.end()), (Q{128, 64, 0, 129, 0, 0, 0, 0}));
  std::remove(path.c_str());
}

TEST(RgbeWrite, EmptyPictureWritesTheHeaderOnly) {
  const std::string path = scratchPath("empty.hdr");
  Pixel128 px{1, 1, 1, 1};
  float scratch[3] = {sentinel(), sentinel(), sentinel()};
  RGBE_WriteHeader_128(path.c_str(), 0, 7, &px, scratch);
  EXPECT_EQ(fileBytes(path), bytesOf(kHeader + "-Y 7 +X 0\n"));
  RGBE_WriteHeader_128(path.c_str(), 3, -2, &px, scratch);
  EXPECT_EQ(fileBytes(path), bytesOf(kHeader + "-Y -2 +X 3\n"));
  EXPECT_TRUE(isSentinel(scratch[0]));
  std::remove(path.c_str());
}

TEST(RgbeFile, SaveThenLoadStaysWithinHalfAMantissaStep) {
  const std::string path = scratchPath("roundtrip.hdr");
  const int w = 13, h = 5;
  auto px = pattern128(w * h, 7);
  for (auto& p : px) { p.red *= 40.0f; p.blue = std::fabs(p.blue); }
  std::vector<float> scratch(w * h * 3), loaded(w * h * 3, sentinel());
  RGBE_WriteHeader_128(path.c_str(), w, h, px.data(), scratch.data());
  testing::internal::CaptureStderr();
  EXPECT_EQ(RGBE_LoadHDR(path.c_str(), loaded.data(), w, h), 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  for (int i = 0; i < w * h; ++i) {
    const float src[3] = {px[i].red, px[i].green, px[i].blue};
    const float largest = std::max({src[0], src[1], src[2]});
    if (largest < 1e-32f) continue;
    int e;
    std::frexp(largest, &e);
    const double step = std::ldexp(1.0, e - 8);
    for (int c = 0; c < 3; ++c) {
      if (src[c] < 0) continue;  // negative values wrap; nothing to compare
      EXPECT_LE(std::fabs(loaded[3 * i + c] - src[c]), step / 2 * 1.000001) << i << " " << c;
    }
  }
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
