// The road of a high-dynamic-range picture through the library, as a host
// takes it: load an .hdr file into float RGB, turn it into a Pixel128 layer,
// adjust it, measure its histogram, and save it as .hdr, as a VXL layer file
// and (8 bits) as a PNG.
//
//   hdr_road OUTDIR [INPUT.hdr|- [PLUGIN]]
//
// With a tone-mapping plug-in (for instance tm_simple from the test build),
// the 8-bit picture comes from CallToneMapping(plug-in, source layer,
// 8-bit picture, width, height, exposure in hundredths) instead of the plain
// conversion.
// Without an input it first makes a 160 x 96 picture with values up to about
// 16 and saves it as OUTDIR/source.hdr. Unlike demo_host, this host links
// the library, as a host built against the header does.
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "effects/effects.h"
#include "host_support.h"

namespace {

// The size from an .hdr header's "-Y height +X width" line.
bool hdrSize(const std::string& path, int32_t& width, int32_t& height) {
  std::FILE* f = std::fopen(path.c_str(), "rb");
  if (!f) return false;
  char line[256];
  bool found = false;
  while (!found && std::fgets(line, sizeof line, f)) found = std::sscanf(line, "-Y %d +X %d", &height, &width) == 2;
  std::fclose(f);
  return found && width > 0 && height > 0 && width <= 65536 && height <= 65536;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2 || argc > 4) {
    std::fprintf(stderr, "usage: hdr_road OUTDIR [INPUT.hdr|- [PLUGIN]]\n");
    return 2;
  }
  const std::string out = argv[1];
  const bool make = argc < 3 || std::strcmp(argv[2], "-") == 0;
  const std::string input = make ? out + "/source.hdr" : argv[2];
  const char* plugin = argc == 4 ? argv[3] : nullptr;
  std::filesystem::create_directories(out);
  int32_t width = 160, height = 96;

  if (make) {
    // A sky that brightens to about 16 at the top, a sun disc, a dark ground.
    std::vector<Pixel128> made(static_cast<size_t>(width) * height);
    for (int32_t y = 0; y < height; ++y)
      for (int32_t x = 0; x < width; ++x) {
        const float sky = std::exp2(4.0f * (1.0f - static_cast<float>(y) / (height * 0.6f)));
        const float dx = static_cast<float>(x - 110), dy = static_cast<float>(y - 25);
        const bool sun = dx * dx + dy * dy < 120.0f;
        Pixel128& p = made[static_cast<size_t>(y) * width + x];
        if (y > height * 0.6f) {
          p = {0.02f, 0.05f + 0.001f * static_cast<float>(x % 17), 0.03f, 1.0f};
        } else {
          p = {sky * 0.9f, sky * 0.6f, sky * 0.35f, 1.0f};
          if (sun) p = {40.0f, 60.0f, 64.0f, 1.0f};
        }
      }
    std::vector<float> scratch(made.size() * 3);
    RGBE_WriteHeader_128(input.c_str(), width, height, made.data(), scratch.data());
    std::printf("made %s (%d x %d)\n", input.c_str(), width, height);
  } else if (!hdrSize(input, width, height)) {
    std::fprintf(stderr, "hdr_road: no usable size line in %s\n", input.c_str());
    return 1;
  }

  // 1. Load into float red, green, blue.
  const size_t n = static_cast<size_t>(width) * height;
  const int32_t elementCount = static_cast<int32_t>(n * 4);
  std::vector<float> rgb(n * 3, 0.0f);
  RGBE_LoadHDR(input.c_str(), rgb.data(), width, height);
  std::printf("loaded %s\n", input.c_str());

  // 2. Float RGB to a Pixel128 layer, fully selected.
  std::vector<Pixel128> layer(n);
  Convert128BIT_3to4ChannelsFast(width, height, layer.data(), rgb.data());
  VexoClearMask128(elementCount, layer.data());

  // 3. An adjustment in place, then the histogram.
  VexoXposure128(static_cast<uint32_t>(width), static_cast<uint32_t>(height), layer.data(), 0, 40, 0);
  std::printf("exposure: sine, amount 40\n");
  std::vector<float> bins(256, 0.0f);
  float lo = 0, hi = 0, loNonZero = 0, sum = 0;
  Histogram128Fast(elementCount, layer.data(), bins.data(), &lo, &hi, &loNonZero, &sum);
  int fullest = 0;
  for (int i = 1; i < 256; ++i)
    if (bins[i] > bins[fullest]) fullest = i;
  std::printf("histogram: fullest bin %d (%g pixels), %g pixels in bin 255\n", fullest, bins[fullest], bins[255]);

  // 4. Save as .hdr and as VXL layer files, and the 8-bit picture as PNG.
  std::vector<float> scratch(n * 3);
  const std::string hdrOut = out + "/road.hdr", vxlOut = out + "/road128.vxl", vxl32Out = out + "/road32.vxl";
  RGBE_WriteHeader_128(hdrOut.c_str(), width, height, layer.data(), scratch.data());
  VexoSaveVXLFile128(vxlOut.c_str(), width, height, 128, 1, layer.data());
  std::vector<Pixel32> picture(n);
  if (plugin && CallToneMapping(plugin, reinterpret_cast<intptr_t>(layer.data()), reinterpret_cast<intptr_t>(picture.data()),
                                width, height, 100) == 0) {
    std::printf("tone-mapped through %s\n", plugin);
  } else {
    Convert128to32Fast(elementCount, picture.data(), layer.data());
  }
  VexoSaveVXLFile32(vxl32Out.c_str(), width, height, 32, 1, picture.data());
  std::printf("wrote %s\nwrote %s\nwrote %s\n", hdrOut.c_str(), vxlOut.c_str(), vxl32Out.c_str());
  host::Picture32 shown(width, height);
  shown.pixels = picture;
  host::writePng(out + "/road.png", shown);
  std::printf("wrote %s/road.png\n", out.c_str());
  return 0;
}
