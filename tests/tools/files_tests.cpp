// Pictures in and out of files, and between the layouts.
#include <cmath>
#include <cstring>
#include <fstream>
#include <limits>

#include "cli/files.h"
#include "effects/effects.h"
#include "support/pictures.h"
#include "tool_support.h"

namespace effects::cli::test {
namespace {

Image picture(int32_t w, int32_t h, Depth d, uint32_t seed) {
  Image im(w, h, d);
  const double full = fullOf(d);
  for (size_t i = 0; i < im.pixels() * 4; ++i) {
    seed = seed * 1103515245u + 12345u;
    const double v = (seed >> 8) % 1000 / 999.0;
    if (d == Depth::P128) {
      const float f = static_cast<float>(v);
      std::memcpy(&im.bytes[i * 4], &f, 4);
    } else if (d == Depth::P32) {
      im.bytes[i] = static_cast<uint8_t>(std::lround(v * full));
    } else {
      const auto w16 = static_cast<uint16_t>(std::lround(v * full));
      std::memcpy(&im.bytes[i * 2], &w16, 2);
    }
  }
  return im;
}

TEST(ToolImage, IntegerDepthsRoundTripThroughFinerOnes) {
  for (Depth coarse : {Depth::P32, Depth::P64}) {
    for (Depth fine : {Depth::P64, Depth::W16, Depth::P128}) {
      if (elementBytes(fine) < elementBytes(coarse) || fine == coarse) continue;
      const Image a = picture(7, 3, coarse, 3);
      EXPECT_EQ(convert(convert(a, fine), coarse).bytes, a.bytes) << int(coarse) << " via " << int(fine);
    }
  }
}

TEST(ToolImage, FullMapsToFullAndFloatsAreClampedAndRounded) {
  Image f(1, 2, Depth::P128);
  const float in[8] = {1.0f, 0.5f, 2.5f, -1.0f, std::numeric_limits<float>::quiet_NaN(), 0.501960784f, 0.0f, 1.0f};
  std::memcpy(f.bytes.data(), in, sizeof in);
  const Image b = convert(f, Depth::P32);
  // 0.5 x 255 = 127.5 ties to even; 128/255 comes back as 128.
  EXPECT_EQ(b.bytes, (std::vector<uint8_t>{255, 128, 255, 0, 0, 128, 0, 255}));
  Image full(1, 1, Depth::P32);
  full.bytes = {255, 0, 255, 255};
  const Image w = convert(full, Depth::P64);
  EXPECT_EQ(w.as<Pixel64>()[0], (Pixel64{32767, 0, 32767, 32767}));
  EXPECT_TRUE(full.opaque());
  EXPECT_FALSE(b.opaque());
}

TEST(ToolImage, SamplesReverseTheColourOrder) {
  Image im(2, 1, Depth::P32);
  im.bytes = {1, 2, 3, 4, 5, 6, 7, 8};
  EXPECT_EQ(toSamples(im, SampleType::U8, SampleOrder::Rgb), (std::vector<uint8_t>{3, 2, 1, 7, 6, 5}));
  const auto bgr = toSamples(im, SampleType::F32, SampleOrder::Bgr);
  ASSERT_EQ(bgr.size(), 24u);
  float first;
  std::memcpy(&first, bgr.data(), 4);
  EXPECT_EQ(first, static_cast<float>(1 / 255.0));
  const Image back = fromSamples(toSamples(im, SampleType::U8, SampleOrder::Rgb).data(), 2, 1, SampleType::U8,
                                 SampleOrder::Rgb);
  EXPECT_EQ(back.bytes, (std::vector<uint8_t>{1, 2, 3, 255, 5, 6, 7, 255}));
  // RGBE: 1.0 encodes as 128, 128, 128, 129 and decodes to 1.00390625.
  Image one(1, 1, Depth::P128);
  const float ones[4] = {1, 1, 1, 1};
  std::memcpy(one.bytes.data(), ones, 16);
  const auto rgbe = toSamples(one, SampleType::U8, SampleOrder::Rgbe);
  EXPECT_EQ(rgbe, (std::vector<uint8_t>{128, 128, 128, 129}));
  EXPECT_EQ(fromSamples(rgbe.data(), 1, 1, SampleType::U8, SampleOrder::Rgbe).as<Pixel128>()[0],
            (Pixel128{1.00390625f, 1.00390625f, 1.00390625f, 1.0f}));
}

class ToolFiles : public ToolTest {};

TEST_F(ToolFiles, PngRoundTripsIn8And16Bits) {
  for (Depth d : {Depth::P32, Depth::W16}) {
    for (bool opaque : {true, false}) {
      Image im = picture(5, 3, d, 9);
      if (opaque)
        for (size_t p = 0; p < im.pixels(); ++p) {
          if (d == Depth::P32) im.bytes[p * 4 + 3] = 255;
          else { const uint16_t f = 65535; std::memcpy(&im.bytes[(p * 4 + 3) * 2], &f, 2); }
        }
      writePicture(path("a.png"), im, {});
      const Loaded back = readPicture(path("a.png"));
      EXPECT_EQ(back.image.depth, d);
      EXPECT_EQ(back.bits, d == Depth::P32 ? 8 : 16);
      EXPECT_EQ(back.alpha, !opaque);
      EXPECT_EQ(back.image.bytes, im.bytes);
    }
  }
  EXPECT_EQ(listing(), std::vector<std::string>{"a.png"});
}

TEST_F(ToolFiles, EveryPngColourTypeBecomesBlueGreenRedMask) {
  // One pixel, value 0x80 grey / (0x10, 0x20, 0x30) colour, in every form.
  const png_color palette[2] = {{0, 0, 0}, {0x30, 0x20, 0x10}};
  struct Case {
    const char* what;
    int bits, type;
    std::vector<uint8_t> row;
    Pixel32 expected;
    bool paletteAndAlpha = false;
  } cases[] = {
      {"grey 8", 8, PNG_COLOR_TYPE_GRAY, {0x80}, {0x80, 0x80, 0x80, 255}},
      {"grey 1", 1, PNG_COLOR_TYPE_GRAY, {0x80}, {255, 255, 255, 255}},
      {"grey alpha", 8, PNG_COLOR_TYPE_GRAY_ALPHA, {0x80, 0x40}, {0x80, 0x80, 0x80, 0x40}},
      {"rgb", 8, PNG_COLOR_TYPE_RGB, {0x10, 0x20, 0x30}, {0x30, 0x20, 0x10, 255}},
      {"palette with transparency", 8, PNG_COLOR_TYPE_PALETTE, {1}, {0x10, 0x20, 0x30, 0x77}, true},
  };
  for (const auto& c : cases) {
    writeRawPng(path("p.png"), 1, 1, c.bits, c.type, {c.row}, c.paletteAndAlpha ? std::vector<png_color>(palette, palette + 2) : std::vector<png_color>{},
                c.paletteAndAlpha ? std::vector<uint8_t>{0, 0x77} : std::vector<uint8_t>{});
    const Loaded l = readPicture(path("p.png"));
    ASSERT_EQ(l.image.depth, Depth::P32) << c.what;
    EXPECT_EQ(l.image.as<Pixel32>()[0], c.expected) << c.what;
  }
  // 16-bit grey keeps all its bits.
  writeRawPng(path("g.png"), 1, 1, 16, PNG_COLOR_TYPE_GRAY, {{0x12, 0x34}});
  const Loaded g = readPicture(path("g.png"));
  ASSERT_EQ(g.image.depth, Depth::W16);
  EXPECT_EQ(g.image.as<uint16_t>()[0], 0x1234);
  EXPECT_EQ(g.image.as<uint16_t>()[3], 0xffff);
}

TEST_F(ToolFiles, HdrAndVxlGoThroughTheLibrarysWriters) {
  Image im = picture(9, 2, Depth::P128, 5);  // width 9: the reader's run-length path
  writePicture(path("a.hdr"), im, {});
  const Loaded back = readPicture(path("a.hdr"));
  ASSERT_EQ(back.image.depth, Depth::P128);
  ASSERT_EQ(back.image.width, 9);
  // The same floats the library's own load gives, mask full.
  std::vector<float> rgb(9 * 2 * 3);
  RGBE_LoadHDR(path("a.hdr").c_str(), rgb.data(), 9, 2);
  for (size_t p = 0; p < 18; ++p) {
    const Pixel128 px = back.image.as<Pixel128>()[p];
    EXPECT_EQ(px, (Pixel128{rgb[p * 3 + 2], rgb[p * 3 + 1], rgb[p * 3], 1.0f})) << p;
  }
  const Image small = picture(1, 1, Depth::P32, 2);
  writePicture(path("a.vxl"), small, {});
  std::ifstream f(path("a.vxl"), std::ios::binary);
  const std::vector<uint8_t> bytes{std::istreambuf_iterator<char>(f), {}};
  std::vector<uint8_t> expected{0xB8, 0x07, 0xE8, 0x03, 0, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0};
  expected.insert(expected.end(), small.bytes.begin(), small.bytes.end());
  EXPECT_EQ(bytes, expected);
}

TEST_F(ToolFiles, BadFilesFailWithTheirNameAndLeaveNothing) {
  std::ofstream(path("junk.png")) << "not a png";
  std::ofstream(path("cut.hdr")) << "#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y 4 +X 4\n\x01\x02";
  std::ofstream(path("plus.hdr")) << "#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n+Y 4 +X 4\n";
  writePicture(path("short.png"), picture(40, 40, Depth::P32, 4), {});
  fs::resize_file(path("short.png"), fs::file_size(path("short.png")) / 2);
  for (const char* name : {"junk.png", "cut.hdr", "plus.hdr", "short.png", "missing.png", "x.vxl"}) {
    try {
      readPicture(path(name));
      ADD_FAILURE() << name << " was read";
    } catch (const std::runtime_error& e) {
      EXPECT_NE(std::string(e.what()).find(name), std::string::npos) << e.what();
    }
  }
  EXPECT_THROW(writePicture(path("no/such/folder/a.png"), picture(1, 1, Depth::P32, 1), {}), std::runtime_error);
  EXPECT_THROW(writePicture(path("a.jpg"), picture(1, 1, Depth::P32, 1), {}), std::runtime_error);
  EXPECT_EQ(listing(), (std::vector<std::string>{"cut.hdr", "junk.png", "plus.hdr", "short.png"}));
}

}  // namespace
}  // namespace effects::cli::test
