// The effects command end to end, in-process: files in, files out, the
// messages and exit statuses of its failures, chains and batches.
#include <cstring>
#include <fstream>
#include <functional>

#include "cli/files.h"
#include "effects/effects.h"
#include "tool_support.h"

namespace effects::cli::test {
namespace {

class ToolRun : public ToolTest {
 protected:
  // A 5 x 3 8-bit picture with distinct elements and a partial mask.
  Image sample(int32_t w = 5, int32_t h = 3) const {
    Image im(w, h, Depth::P32);
    for (size_t i = 0; i < im.bytes.size(); ++i) im.bytes[i] = static_cast<uint8_t>(i * 37 + 11);
    return im;
  }
  std::string save(const std::string& name, const Image& im) const {
    writePicture(path(name), im, {});
    return path(name);
  }
  std::vector<uint8_t> bytes(const std::string& name) const {
    std::ifstream f(path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(f), {}};
  }
  // The pixels of a VXL file: the buffer as the export left it.
  std::vector<uint8_t> vxlPixels(const std::string& name) const {
    auto b = bytes(name);
    return b.size() < 16 ? b : std::vector<uint8_t>(b.begin() + 16, b.end());
  }
};

// The tool's result equals the export called directly on the picture in
// its layout (the VXL output file holds the buffer exactly).
TEST_F(ToolRun, ResultsEqualDirectCalls) {
  struct Case {
    std::vector<std::string> args;
    Depth layout;
    std::function<void(Image&)> call;
  } cases[] = {
      {{"VexoGamma32", "--gamma", "2.2"}, Depth::P32,
       [](Image& im) { VexoGamma32(im.width, im.height, im.as<Pixel32>(), 2.2f); }},
      {{"VexoGamma", "--gamma", "0.45"}, Depth::P32,
       [](Image& im) { VexoGamma32(im.width, im.height, im.as<Pixel32>(), 0.45f); }},
      {{"VexoInvert64", "--channel", "2"}, Depth::P64,
       [](Image& im) { VexoInvert64(static_cast<int32_t>(im.pixels() * 4), im.as<Pixel64>(), 2); }},
      {{"VexoHue128", "--hue", "-40"}, Depth::P128,
       [](Image& im) { VexoHue128(im.width, im.height, im.as<Pixel128>(), -40); }},
      {{"Vexofstop128", "--stops", "1.5"}, Depth::P128,
       [](Image& im) { Vexofstop128(im.width, im.height, im.as<Pixel128>(), 1.5); }},
      {{"VexoRedEyeRemover64", "--threshold", "100"}, Depth::P64,
       [](Image& im) { VexoRedEyeRemover64(im.width, im.height, im.as<Pixel64>(), 0, 100); }},
      {{"VexoNewPicture32", "--red", "10", "--green", "20", "--blue", "0x1e", "--mask", "40"}, Depth::P32,
       [](Image& im) { VexoNewPicture32(static_cast<int32_t>(im.pixels() * 4), im.as<Pixel32>(), 10, 20, 30, 40); }},
      {{"VexoPixelNoise32", "--count", "9", "--redNoise", "50", "--greenNoise", "50", "--blueNoise", "50"}, Depth::P32,
       [](Image& im) {
         EffectsSeedRandom(1);
         VexoPixelNoise32(im.width, im.height, im.as<Pixel32>(), 9, 50, 50, 50);
       }},
  };
  const std::string in = save("in.png", sample());
  for (const auto& c : cases) {
    std::vector<std::string> args{"run", c.args[0], in, path("out.vxl")};
    args.insert(args.end(), c.args.begin() + 1, c.args.end());
    const auto r = run(args);
    ASSERT_EQ(r.status, 0) << c.args[0] << ": " << r.err;
    Image expected = convert(sample(), c.layout);
    c.call(expected);
    EXPECT_EQ(vxlPixels("out.vxl"), expected.bytes) << c.args[0];
  }
}

TEST_F(ToolRun, PngInExactPngOut) {
  const std::string in = save("in.png", sample(2, 2));
  ASSERT_EQ(run({"run", "VexoInvert32", in, path("out.png"), "--channel", "1"}).status, 0);
  const Image out = readPicture(path("out.png")).image;
  const Image src = sample(2, 2);
  for (size_t i = 0; i < src.bytes.size(); ++i)
    EXPECT_EQ(out.bytes[i], i % 4 == 3 ? src.bytes[i] : 255 - src.bytes[i]) << i;
  // A 16-bit picture runs the 64 member of a family and comes back in 16 bits.
  save("wide.png", convert(sample(2, 2), Depth::W16));
  ASSERT_EQ(run({"run", "VexoInvert", path("wide.png"), path("wide-out.png"), "--channel", "1"}).status, 0);
  const Loaded wide = readPicture(path("wide-out.png"));
  EXPECT_EQ(wide.bits, 16);
  EXPECT_EQ(convert(wide.image, Depth::P32).bytes, out.bytes);
}

TEST_F(ToolRun, SecondPicturesAndTargets) {
  Image canvas = sample(5, 3), layer = sample(2, 2);
  for (auto& b : layer.bytes) b = static_cast<uint8_t>(b ^ 0x5a);
  save("canvas.png", canvas);
  save("layer.png", layer);
  // The layer copied into the canvas at (2, 1): blue, green and red only.
  ASSERT_EQ(run({"run", "Vexo32DirectBitBltDIB", path("layer.png"), path("out.png"), "--canvas", path("canvas.png"),
                 "--x", "2", "--y", "1"}).status, 0);
  Image expected = canvas;
  for (int y = 0; y < 2; ++y)
    for (int x = 0; x < 2; ++x)
      std::memcpy(&expected.bytes[((y + 1) * 5 + x + 2) * 4], &layer.bytes[(y * 2 + x) * 4], 3);
  EXPECT_EQ(readPicture(path("out.png")).image.bytes, expected.bytes);
  // A region cut out of the canvas: its size is given, the canvas's comes from the file.
  ASSERT_EQ(run({"run", "Vexo32BitBltDIB", path("canvas.png"), path("region.png"), "--x", "1", "--y", "1", "--width",
                 "3", "--height", "2"}).status, 0);
  const Image region = readPicture(path("region.png")).image;
  ASSERT_EQ(region.width, 3);
  ASSERT_EQ(region.height, 2);
  // Colours only: the blank region's mask stays 0.
  for (int y = 0; y < 2; ++y)
    for (int x = 0; x < 3; ++x) {
      EXPECT_EQ(0, std::memcmp(&region.bytes[(y * 3 + x) * 4], &canvas.bytes[((y + 1) * 5 + x + 1) * 4], 3));
      EXPECT_EQ(region.bytes[(y * 3 + x) * 4 + 3], 0);
    }
}

TEST_F(ToolRun, ChainsAndMeasurements) {
  const std::string in = save("in.png", sample());
  ASSERT_EQ(run({"run", "VexoInvert32", in, path("twice.png"), "then", "VexoInvert64"}).status, 0);
  EXPECT_EQ(convert(readPicture(path("twice.png")).image, Depth::P32).bytes, sample().bytes);
  // A chain that ends in a measurement prints it and needs no output file.
  const auto r = run({"run", "VexoBlankMask32", in, "then", "DynamicRange32Fast"});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_NE(r.out.find("\nminimum "), std::string::npos) << r.out;
  // Each byte is halved before the sum: 0x000101 + 0x010100.
  EXPECT_EQ(run({"run", "Blending", "--a", "0x10203", "--b", "0x30201"}).out, "result 66049\n");
  // A file the library reads: RGBE_LoadHDR at the size the caller gives.
  save("in.hdr", convert(sample(), Depth::P128));
  ASSERT_EQ(run({"run", "RGBE_LoadHDR", path("load.vxl"), "--fileName", path("in.hdr"), "--width", "5", "--height",
                 "3"}).status, 0);
  EXPECT_EQ(vxlPixels("load.vxl"), readPicture(path("in.hdr")).image.bytes);
}

TEST_F(ToolRun, FailuresSayWhatAndLeaveNoOutput) {
  const std::string in = save("in.png", sample());
  std::ofstream(path("bad.png")) << "garbage";
  const std::string out = path("out.png");
  struct Case {
    std::vector<std::string> args;
    int status;
    const char* message;
  } cases[] = {
      {{"run", "VexoGama32", in, out}, 2, "no export called VexoGama32"},
      {{"run", "VexoGamma32", in, out}, 2, "missing --gamma"},
      {{"run", "VexoGamma32", in, out, "--gamma", "2.2x"}, 2, "'2.2x' is not a number"},
      {{"run", "VexoGamma32", in, out, "--gama", "2"}, 2, "has no parameter 'gama'"},
      {{"run", "VexoNewPicture32", in, out, "--red", "256", "--green", "0", "--blue", "0", "--mask", "0"}, 2,
       "256 is out of range for uint8_t"},
      {{"run", "VexoGamma32", in, out, "--gamma", "1", "--width", "3"}, 2, "--width comes from the picture"},
      {{"run", "VexoGamma32", in, "--gamma", "1"}, 2, "expected IN OUT, got 1 file name"},
      {{"run", "Vexo32DirectDIB", in, out, "--x", "0", "--y", "0", "--opacity", "5", "--mode", "0", "--canvas",
        path("none.png")}, 1, "none.png: no such file"},
      {{"run", "Vexo32AdvancedDIB", in, out}, 2, "device context"},
      {{"run", "VexoGamma32", path("bad.png"), out, "--gamma", "1"}, 1, "bad.png: not a PNG file"},
      {{"run", "VexoGamma32", path("nothing.png"), out, "--gamma", "1"}, 1, "nothing.png: no such file"},
      {{"run", "VexoGamma32", in, path("out.jpg"), "--gamma", "1"}, 1, "unknown picture format"},
      {{"run", "VexoGamma32", in, path("missing/out.png"), "--gamma", "1"}, 1, "missing/out.png"},
      {{"run", "RGBE_WriteHeader_32", in, path("x.hdr"), "then", "VexoGamma32"}, 2, "must be the last step"},
      {{"run", "VexoGamma32", in, out, "--gamma", "1", "then"}, 2, "'then' must be followed"},
      {{"frobnicate"}, 2, "unknown command"},
  };
  for (const auto& c : cases) {
    const auto r = run(c.args);
    EXPECT_EQ(r.status, c.status) << c.message;
    EXPECT_NE(r.err.find(c.message), std::string::npos) << r.err;
    EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
    EXPECT_EQ(listing(), (std::vector<std::string>{"bad.png", "in.png"})) << c.message;
  }
}

TEST_F(ToolRun, BatchesFinishTheGoodFilesAndNameTheBadOnes) {
  fs::create_directories(path("more"));
  save("a.png", sample());
  save("more/b.png", sample(3, 4));
  save("more/c.png", sample(1, 1));
  std::ofstream(path("more/bad.png")) << "garbage";
  const std::vector<std::string> noise{"--count", "20", "--redNoise", "90", "--greenNoise", "9", "--blueNoise", "40"};
  std::vector<std::string> args{"run", "VexoPixelNoise32", "--out-dir", path("out"), "--jobs", "2", path("a.png"),
                                path("more")};
  args.insert(args.end(), noise.begin(), noise.end());
  const auto r = run(args);
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.err.find("bad.png: not a PNG file"), std::string::npos) << r.err;
  EXPECT_NE(r.err.find("1 of 4 files failed"), std::string::npos) << r.err;
  EXPECT_EQ(r.err.find("files/s"), std::string::npos) << "no progress line when not on a terminal";
  // Each file as a single run gives: the random draws start afresh per file.
  for (const char* name : {"a.png", "more/b.png", "more/c.png"}) {
    std::vector<std::string> one{"run", "VexoPixelNoise32", path(name), path("single.png")};
    one.insert(one.end(), noise.begin(), noise.end());
    ASSERT_EQ(run(one).status, 0);
    EXPECT_EQ(bytes("out/" + fs::path(name).filename().string()), bytes("single.png")) << name;
  }
  EXPECT_FALSE(fs::exists(path("out/bad.png")));
  EXPECT_EQ(run({"run", "VexoInvert32", "--out-dir", path("more"), path("more")}).status, 2);
}

TEST_F(ToolRun, ListAndHelpComeFromTheHeaders) {
  const auto all = run({"list"});
  EXPECT_EQ(all.status, 0);
  EXPECT_NE(all.out.find("VexoGamma128(uint32_t width, uint32_t height, Pixel128* pixels, float gamma) -> uint32_t\n"),
            std::string::npos);
  EXPECT_NE(all.out.find("Vexo32AdvancedDIB(void* hdc"), std::string::npos);
  const auto some = run({"list", "vexoinvert??"});
  EXPECT_EQ(some.out, "VexoInvert32(int32_t elementCount, Pixel32* pixels, int32_t channel) -> int32_t\n"
                      "VexoInvert64(int32_t elementCount, Pixel64* pixels, int32_t channel) -> int32_t\n");
  EXPECT_EQ(run({"list", "Gamma"}).out.find("VexoInvert"), std::string::npos);
  const auto help = run({"help", "VexoDirectDIB"});
  EXPECT_EQ(help.status, 0);
  EXPECT_NE(help.out.find("Vexo32DirectDIB("), std::string::npos);
  EXPECT_NE(help.out.find("return -1 for opacity 0"), std::string::npos) << help.out;
  EXPECT_NE(help.out.find("effects run Vexo32DirectDIB IN OUT --x VALUE"), std::string::npos) << help.out;
  EXPECT_EQ(run({"help", "NoSuchThing"}).status, 2);
}

}  // namespace
}  // namespace effects::cli::test
