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
// 16 and saves it as OUTDIR/source.hdr. Exports from other families are
// looked up by name at run time; a missing one is reported and the host does
// that step itself (or skips it, for the adjustment and the histogram).
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "effects/effects.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif
#ifdef EFFECTS_HAVE_PNG
#include <png.h>
#endif

namespace {

void* findExport(const char* name) {
#ifdef _WIN32
  return reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("Effects.dll"), name));
#else
  return dlsym(RTLD_DEFAULT, name);
#endif
}

template <class Fn>
Fn optionalExport(const char* name) {
  Fn f = reinterpret_cast<Fn>(findExport(name));
  std::printf("  %-32s %s\n", name, f ? "found" : "not in this build");
  return f;
}

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

#ifdef EFFECTS_HAVE_PNG
bool writePng(const std::string& path, int32_t width, int32_t height, const std::vector<Pixel32>& px) {
  std::FILE* f = std::fopen(path.c_str(), "wb");
  if (!f) return false;
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  if (setjmp(png_jmpbuf(png))) {
    png_destroy_write_struct(&png, &info);
    std::fclose(f);
    return false;
  }
  png_init_io(png, f);
  png_set_IHDR(png, info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height), 8, PNG_COLOR_TYPE_RGB,
               PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_write_info(png, info);
  std::vector<png_byte> row(static_cast<size_t>(width) * 3);
  for (int32_t y = 0; y < height; ++y) {
    for (int32_t x = 0; x < width; ++x) {
      const Pixel32& p = px[static_cast<size_t>(y) * width + x];
      row[3 * x] = p.red;
      row[3 * x + 1] = p.green;
      row[3 * x + 2] = p.blue;
    }
    png_write_row(png, row.data());
  }
  png_write_end(png, nullptr);
  png_destroy_write_struct(&png, &info);
  std::fclose(f);
  return true;
}
#endif

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
  std::printf("loaded %s\nexports from other families:\n", input.c_str());

  using ToLayer = int32_t(EFFECTS_CALL*)(int32_t, int32_t, Pixel128*, float*);
  using Exposure = int32_t(EFFECTS_CALL*)(int32_t, int32_t, Pixel128*, uint8_t, int32_t, int32_t);
  using Histogram = int32_t(EFFECTS_CALL*)(int32_t, Pixel128*, float*, float*, float*, float*, float*);
  using To32 = int32_t(EFFECTS_CALL*)(int32_t, Pixel32*, Pixel128*);
  const auto toLayer = optionalExport<ToLayer>("Convert128BIT_3to4ChannelsFast");
  const auto exposure = optionalExport<Exposure>("VexoXposure128");
  const auto histogram = optionalExport<Histogram>("Histogram128Fast");
  const auto to32 = optionalExport<To32>("Convert128to32Fast");

  // 2. Float RGB to a Pixel128 layer, fully selected.
  std::vector<Pixel128> layer(n);
  if (toLayer) {
    toLayer(width, height, layer.data(), rgb.data());
  } else {
    for (size_t i = 0; i < n; ++i) layer[i] = {rgb[3 * i + 2], rgb[3 * i + 1], rgb[3 * i], 0.0f};
  }
  VexoClearMask128(elementCount, layer.data());

  // 3. An adjustment in place, then the histogram.
  if (exposure) {
    exposure(width, height, layer.data(), 0, 40, 0);
    std::printf("exposure: sine, amount 40\n");
  }
  if (histogram) {
    std::vector<float> bins(256, 0.0f);
    float lo = 0, hi = 0, loNonZero = 0, sum = 0;
    histogram(elementCount, layer.data(), bins.data(), &lo, &hi, &loNonZero, &sum);
    int fullest = 0;
    for (int i = 1; i < 256; ++i)
      if (bins[i] > bins[fullest]) fullest = i;
    std::printf("histogram: fullest bin %d (%g pixels), %g pixels in bin 255\n", fullest, bins[fullest], bins[255]);
  }

  // 4. Save as .hdr and as VXL layer files, and the 8-bit picture as PNG.
  std::vector<float> scratch(n * 3);
  const std::string hdrOut = out + "/road.hdr", vxlOut = out + "/road128.vxl", vxl32Out = out + "/road32.vxl";
  RGBE_WriteHeader_128(hdrOut.c_str(), width, height, layer.data(), scratch.data());
  VexoSaveVXLFile128(vxlOut.c_str(), width, height, 128, 1, layer.data());
  std::vector<Pixel32> picture(n);
  if (plugin && CallToneMapping(plugin, reinterpret_cast<intptr_t>(layer.data()), reinterpret_cast<intptr_t>(picture.data()),
                                width, height, 100) == 0) {
    std::printf("tone-mapped through %s\n", plugin);
  } else if (to32) {
    to32(elementCount, picture.data(), layer.data());
  } else {
    // The host's own stand-in: clamp to 0..1, then x 255, rounded.
    auto byte = [](float v) { return static_cast<uint8_t>(v >= 1.0f ? 255 : v > 0.0f ? std::lround(v * 255.0f) : 0); };
    for (size_t i = 0; i < n; ++i)
      picture[i] = {byte(layer[i].blue), byte(layer[i].green), byte(layer[i].red), byte(layer[i].mask)};
  }
  VexoSaveVXLFile32(vxl32Out.c_str(), width, height, 32, 1, picture.data());
  std::printf("wrote %s\nwrote %s\nwrote %s\n", hdrOut.c_str(), vxlOut.c_str(), vxl32Out.c_str());
#ifdef EFFECTS_HAVE_PNG
  const std::string pngOut = out + "/road.png";
  if (!writePng(pngOut, width, height, picture)) {
    std::fprintf(stderr, "hdr_road: could not write %s\n", pngOut.c_str());
    return 1;
  }
  std::printf("wrote %s\n", pngOut.c_str());
#endif
  return 0;
}
