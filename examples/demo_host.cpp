// A small host: loads the library by file name, makes a picture, runs
// exports on copies of it and writes each result as a PNG.
//   demo_host <path to libEffects.so> <output folder>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "host_support.h"

namespace {

using host::Library;
using host::Picture32;

// A test card: colour ramps, a grey wedge and a round selection in the mask.
Picture32 makeCard(int w, int h) {
  Picture32 pic(w, h);
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w; ++x) {
      Pixel32& p = pic.pixels[static_cast<size_t>(y) * w + x];
      if (y < h * 3 / 4) {
        p.red = static_cast<uint8_t>(255 * x / (w - 1));
        p.green = static_cast<uint8_t>(255 * y / (h * 3 / 4));
        p.blue = static_cast<uint8_t>(255 - 255 * x / (w - 1));
      } else {
        p.red = p.green = p.blue = static_cast<uint8_t>((x * 8 / w) * 255 / 7);
      }
      const double dx = x - w / 2.0, dy = y - h / 2.0;
      const double r = std::sqrt(dx * dx + dy * dy) / (h / 2.5);
      p.mask = static_cast<uint8_t>(r >= 1.0 ? 0 : 255 * (1.0 - r * r));
    }
  }
  return pic;
}

struct Demo {
  const Library& lib;
  std::string out;
  const Picture32& card;
  int written = 0;
  std::vector<Picture32> shown;

  void save(const std::string& name, const Picture32& pic, const std::string& what) {
    host::writePng(out + "/" + name + ".png", pic);
    shown.push_back(pic);
    std::printf("  %-28s %s\n", (name + ".png").c_str(), what.c_str());
    ++written;
  }
  // Runs fn on a copy of the card and saves the result.
  void step(const std::string& name, const std::string& what, const std::function<void(Picture32&)>& fn) {
    Picture32 pic = card;
    fn(pic);
    save(name, pic, what);
  }
};

using Fn1 = int32_t(EFFECTS_CALL*)(int32_t, Pixel32*);
using FnInvert = int32_t(EFFECTS_CALL*)(int32_t, Pixel32*, int32_t);
using FnNew = int32_t(EFFECTS_CALL*)(int32_t, Pixel32*, uint8_t, uint8_t, uint8_t, uint8_t);

void buffers(Demo& d) {
  auto invert = d.lib.get<FnInvert>("VexoInvert32");
  auto maskToImage = d.lib.get<Fn1>("Vexo32MasktoImageDIB");
  auto invertMask = d.lib.get<Fn1>("VexoInvertMask32");
  auto newPicture = d.lib.get<FnNew>("VexoNewPicture32");
  d.step("invert", "VexoInvert32, all channels", [&](Picture32& p) { invert(p.elementCount(), p.pixels.data(), 1); });
  d.step("invert-red", "VexoInvert32, red only", [&](Picture32& p) { invert(p.elementCount(), p.pixels.data(), 2); });
  d.step("mask", "Vexo32MasktoImageDIB: the selection as a grey image", [&](Picture32& p) {
    maskToImage(p.elementCount(), p.pixels.data());
  });
  d.step("mask-inverted", "VexoInvertMask32, then the mask as an image", [&](Picture32& p) {
    invertMask(p.elementCount(), p.pixels.data());
    maskToImage(p.elementCount(), p.pixels.data());
  });
  d.step("new-picture", "VexoNewPicture32(red 255, green 128, blue 0)", [&](Picture32& p) {
    newPicture(p.elementCount(), p.pixels.data(), 255, 128, 0, 255);
  });
}

using FnTo64 = int32_t(EFFECTS_CALL*)(int32_t, const Pixel32*, Pixel64*);
using FnFrom64 = int32_t(EFFECTS_CALL*)(int32_t, Pixel32*, const Pixel64*);
using FnTo128 = int32_t(EFFECTS_CALL*)(int32_t, const Pixel32*, Pixel128*);
using FnFrom128 = int32_t(EFFECTS_CALL*)(int32_t, Pixel32*, const Pixel128*);
using FnHistogram = int32_t(EFFECTS_CALL*)(int32_t, const Pixel32*, float*, float*, float*, float*, float*);

// Counts the elements that differ between two pictures of the same size.
size_t differingElements(const Picture32& a, const Picture32& b) {
  size_t n = 0;
  for (size_t i = 0; i < a.pixels.size(); ++i) {
    const Pixel32 &p = a.pixels[i], &q = b.pixels[i];
    n += (p.blue != q.blue) + (p.green != q.green) + (p.red != q.red) + (p.mask != q.mask);
  }
  return n;
}

void conversions(Demo& d) {
  auto to64 = d.lib.get<FnTo64>("Convert32to64Fast");
  auto from64 = d.lib.get<FnFrom64>("Convert64to32Fast");
  auto to128 = d.lib.get<FnTo128>("Convert32to128Fast");
  auto from128 = d.lib.get<FnFrom128>("Convert128to32Fast");
  const int32_t n = d.card.elementCount();

  std::vector<Pixel64> wide(d.card.pixels.size());
  Picture32 back = d.card;
  to64(n, d.card.pixels.data(), wide.data());
  from64(n, back.pixels.data(), wide.data());
  std::printf("  round trip 8 -> 16 -> 8 bit: %zu of %d elements differ\n", differingElements(d.card, back), n);

  std::vector<Pixel128> hdr(d.card.pixels.size());
  to128(n, d.card.pixels.data(), hdr.data());
  from128(n, back.pixels.data(), hdr.data());
  std::printf("  round trip 8 -> float -> 8 bit: %zu of %d elements differ "
              "(254 comes back as 255: the quantiser saturates above 254)\n",
              differingElements(d.card, back), n);
  d.save("roundtrip-float", back, "Convert32to128Fast then Convert128to32Fast");
}

void histogram(Demo& d) {
  auto hist = d.lib.get<FnHistogram>("Histogram32Fast");
  std::vector<float> bins(256, 0.0f);
  float mn = 0, mx = 0, nz = 1e10f, sum = 0;
  hist(d.card.elementCount(), d.card.pixels.data(), bins.data(), &mn, &mx, &nz, &sum);
  const double pixels = static_cast<double>(d.card.pixels.size());
  std::printf("  luminance histogram of the card: min %.0f, max %.0f, smallest non-zero %.0f, mean %.2f\n", mn, mx,
              nz, sum / pixels);
  std::printf("  16 groups of bins: ");
  const char* shades = " .:-=+*#%@";
  for (int g = 0; g < 16; ++g) {
    double c = 0;
    for (int b = g * 16; b < g * 16 + 16; ++b) c += bins[b];
    std::printf("%c", shades[std::min(9, static_cast<int>(c * 9 * 8 / pixels + 0.5))]);
  }
  std::printf("\n");
}

using FnCount1 = uint32_t(EFFECTS_CALL*)(int32_t, Pixel32*, int32_t);
using FnSize1 = uint32_t(EFFECTS_CALL*)(int32_t, int32_t, Pixel32*, int32_t);
using FnSize0 = uint32_t(EFFECTS_CALL*)(int32_t, int32_t, Pixel32*);
using FnTint = uint32_t(EFFECTS_CALL*)(int32_t, Pixel32*, uint8_t, uint8_t, uint8_t, int32_t);

void colour(Demo& d) {
  auto saturation = d.lib.get<FnCount1>("VexoSaturation32");
  auto hue = d.lib.get<FnSize1>("VexoHue32");
  auto filter = d.lib.get<FnCount1>("VexoColorFilter32");
  auto aged = d.lib.get<FnCount1>("VexoAgedPhoto32");
  auto tint = d.lib.get<FnTint>("VexoCustomBacterial32");
  auto correct = d.lib.get<FnSize0>("VexoAutoColorCorrectionLDC32");
  d.step("saturation-up", "VexoSaturation32(200)", [&](Picture32& p) { saturation(p.elementCount(), p.pixels.data(), 200); });
  d.step("saturation-off", "VexoSaturation32(-255)", [&](Picture32& p) { saturation(p.elementCount(), p.pixels.data(), -255); });
  d.step("hue", "VexoHue32(175)", [&](Picture32& p) { hue(p.width, p.height, p.pixels.data(), 175); });
  d.step("filter-cyan", "VexoColorFilter32(6)", [&](Picture32& p) { filter(p.elementCount(), p.pixels.data(), 6); });
  d.step("aged", "VexoAgedPhoto32", [&](Picture32& p) { aged(p.elementCount(), p.pixels.data(), 1); });
  d.step("tint-wraps", "VexoCustomBacterial32(120, 60, 0): the tint wraps around", [&](Picture32& p) {
    tint(p.elementCount(), p.pixels.data(), 120, 60, 0, 1);
  });
  d.step("auto-correct", "VexoAutoColorCorrectionLDC32 on a darkened card", [&](Picture32& p) {
    for (Pixel32& q : p.pixels) { q.red /= 3; q.green /= 2; q.blue /= 4; }
    correct(p.width, p.height, p.pixels.data());
  });
}

using FnWH = uint32_t(EFFECTS_CALL*)(uint32_t, uint32_t, Pixel32*, int32_t, uint32_t);
using FnXposure = uint32_t(EFFECTS_CALL*)(uint32_t, uint32_t, Pixel32*, uint8_t, int32_t, uint32_t);
using FnWHf = uint32_t(EFFECTS_CALL*)(uint32_t, uint32_t, Pixel32*, float);
using FnSine = uint32_t(EFFECTS_CALL*)(uint32_t, uint32_t, Pixel32*, float, int32_t);
using FnLevels = uint32_t(EFFECTS_CALL*)(int32_t, Pixel32*, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, float,
                                         float, float, float, float, float, float, float, int32_t);
using FnEqualizer = uint32_t(EFFECTS_CALL*)(int32_t, Pixel32*, int32_t, int32_t);

void tonal(Demo& d) {
  auto contrast = d.lib.get<FnWH>("VexoContrast32");
  auto brightness = d.lib.get<FnWH>("VexoBrightness32");
  auto exposure = d.lib.get<FnXposure>("VexoXposure32");
  auto gamma = d.lib.get<FnWHf>("VexoGamma32");
  auto sine = d.lib.get<FnSine>("VexoAdjustSine32");
  auto levels = d.lib.get<FnLevels>("VexoAdjustLevels32");
  auto equalizer = d.lib.get<FnEqualizer>("VexoEqualizer32");
  const auto w = static_cast<uint32_t>(d.card.width), h = static_cast<uint32_t>(d.card.height);
  d.step("brightness", "VexoBrightness32(+60)", [&](Picture32& p) { brightness(w, h, p.pixels.data(), 60, 0); });
  d.step("contrast", "VexoContrast32(128)", [&](Picture32& p) { contrast(w, h, p.pixels.data(), 128, 0); });
  d.step("exposure", "VexoXposure32(sine, 100)", [&](Picture32& p) { exposure(w, h, p.pixels.data(), 0, 100, 0); });
  d.step("gamma", "VexoGamma32(2.2)", [&](Picture32& p) { gamma(w, h, p.pixels.data(), 2.2f); });
  d.step("sine-red", "VexoAdjustSine32(0.3, red)", [&](Picture32& p) { sine(w, h, p.pixels.data(), 0.3f, 2); });
  d.step("levels", "VexoAdjustLevels32: inputs 20..230, gamma 0.8", [&](Picture32& p) {
    levels(p.elementCount(), p.pixels.data(), 230, 20, 230, 20, 230, 20, 0.8f, 0.0f, 255, 0, 255, 0, 255, 0, 1);
  });
  d.step("equalizer", "VexoEqualizer32: each pixel's dominant colour", [&](Picture32& p) {
    equalizer(p.elementCount(), p.pixels.data(), 1, 1);
  });
}

using FnDirect = int32_t(EFFECTS_CALL*)(int32_t, int32_t, int32_t, int32_t, const Pixel32*, Pixel32*, int32_t, int32_t,
                                       int32_t, int32_t);

// A second layer to composite onto: diagonal stripes in two greys.
Picture32 stripes(int w, int h) {
  Picture32 pic(w, h);
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      const uint8_t v = ((x + y) / 16) % 2 ? 200 : 90;
      pic.pixels[static_cast<size_t>(y) * w + x] = Pixel32{v, static_cast<uint8_t>(v - 20), v, 255};
    }
  return pic;
}

void compositing(Demo& d) {
  auto direct = d.lib.get<FnDirect>("Vexo32DirectDIB");
  struct Mode { int32_t mode; int32_t opacity; const char* name; };
  const Mode modes[] = {{0, 70, "normal"}, {2, 100, "lighten"}, {3, 100, "difference"}, {4, 100, "multiply"},
                        {5, 100, "screen"}, {15, 100, "add"}};
  // The card, with its round selection as coverage, placed partly off the
  // canvas so the clipping shows too.
  for (const Mode& m : modes) {
    Picture32 canvas = stripes(d.card.width, d.card.height);
    direct(60, 40, d.card.width, d.card.height, d.card.pixels.data(), canvas.pixels.data(), canvas.width,
           canvas.height, m.opacity, m.mode);
    d.save(std::string("blend-") + m.name, canvas,
           "Vexo32DirectDIB, mode " + std::to_string(m.mode) + ", opacity " + std::to_string(m.opacity));
  }
}

// All results side by side at half size, six to a row.
Picture32 contactSheet(const std::vector<Picture32>& pictures) {
  const int tw = pictures.front().width / 2, th = pictures.front().height / 2, cols = 6, gap = 4;
  const int rows = (static_cast<int>(pictures.size()) + cols - 1) / cols;
  Picture32 sheet(cols * (tw + gap) + gap, rows * (th + gap) + gap);
  for (Pixel32& p : sheet.pixels) p = Pixel32{48, 48, 48, 255};
  for (size_t i = 0; i < pictures.size(); ++i) {
    const int ox = gap + static_cast<int>(i % cols) * (tw + gap), oy = gap + static_cast<int>(i / cols) * (th + gap);
    for (int y = 0; y < th; ++y)
      for (int x = 0; x < tw; ++x)
        sheet.pixels[static_cast<size_t>(oy + y) * sheet.width + ox + x] =
            pictures[i].pixels[static_cast<size_t>(2 * y) * pictures[i].width + 2 * x];
  }
  return sheet;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: %s <library file> <output folder>\n", argv[0]);
    return 2;
  }
  try {
    Library lib(argv[1]);
    const Picture32 card = makeCard(320, 240);
    Demo d{lib, argv[2], card, 0, {}};
    std::printf("writing to %s:\n", argv[2]);
    d.save("card", card, "the test card the others start from");
    buffers(d);
    conversions(d);
    histogram(d);
    tonal(d);
    colour(d);
    compositing(d);
    host::writePng(d.out + "/sheet.png", contactSheet(d.shown));
    std::printf("%d pictures written, all of them side by side in sheet.png\n", d.written);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "demo_host: %s\n", e.what());
    return 1;
  }
  return 0;
}
