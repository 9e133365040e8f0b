// A host that works on bitmaps rather than buffers, off Windows: it makes
// its pictures as the library's host-owned bitmaps and device contexts
// (effects/surface.h), loads the library by file name, and writes a PNG for
// each step: a mask composite, a colour painted through the same mask, a
// magic-wand fill, and device-context adjustments and warps.
//   bitmap_host <path to libEffects.so> <output folder>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "effects/surface.h"
#include "host_support.h"

namespace {

using host::Library;
using host::Picture32;

// A picture the library can take as a bitmap: its pixels are the bitmap's
// 32-bit rows (blue, green, red, fourth byte), top row first.
struct Bitmap {
  Picture32 picture;
  EffectsBitmap bitmap;
  EffectsDeviceContext dc;
  explicit Bitmap(const Picture32& p) : picture(p) {
    bitmap = EffectsBitmap{picture.width, picture.height, reinterpret_cast<uint8_t*>(picture.pixels.data())};
    dc = EffectsDeviceContext{&bitmap};
  }
  Bitmap(const Bitmap&) = delete;
  Bitmap& operator=(const Bitmap&) = delete;
};

// Colour bands above an eight-step grey wedge: flat regions for the wand.
Picture32 card(int w, int h) {
  Picture32 pic(w, h);
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      Pixel32& p = pic.pixels[static_cast<size_t>(y) * w + x];
      if (y < h * 2 / 3) {
        p.red = static_cast<uint8_t>(255 * x / (w - 1));
        p.green = static_cast<uint8_t>(255 * y / (h * 2 / 3));
        p.blue = static_cast<uint8_t>(((x / 32 + y / 32) % 2) * 160 + 40);
      } else {
        p.red = p.green = p.blue = static_cast<uint8_t>((x * 8 / w) * 255 / 7);
      }
      p.mask = 255;
    }
  return pic;
}

// A round mask: the weight (in blue) falls from 255 at the centre to 0.
Picture32 roundMask(int w, int h) {
  Picture32 pic(w, h);
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      const double dx = x - w / 2.0, dy = y - h / 2.0;
      const double r = std::sqrt(dx * dx + dy * dy) / (h / 2.2);
      pic.pixels[static_cast<size_t>(y) * w + x].blue = static_cast<uint8_t>(r >= 1 ? 0 : 255 * (1 - r * r));
    }
  return pic;
}

Picture32 stripes(int w, int h) {
  Picture32 pic(w, h);
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      const bool on = ((x + y) / 12) % 2 == 0;
      pic.pixels[static_cast<size_t>(y) * w + x] = on ? Pixel32{30, 200, 250, 255} : Pixel32{120, 20, 60, 255};
    }
  return pic;
}

using FnMask = int32_t(EFFECTS_CALL*)(void*, void*, void*, void*, void*, void*, int32_t, int32_t);
using FnMaskColor = int32_t(EFFECTS_CALL*)(void*, void*, void*, void*, uint32_t, int32_t, int32_t);
using FnWand = void(EFFECTS_CALL*)(void*, int32_t, int32_t, int32_t, int32_t, uint32_t, uint32_t, uint32_t);
using FnOne = int32_t(EFFECTS_CALL*)(void*, void*, int32_t);
using FnNone = int32_t(EFFECTS_CALL*)(void*, void*);
using FnRotate = int32_t(EFFECTS_CALL*)(void*, void*, int32_t, int32_t, float);

struct Demo {
  const Library& lib;
  std::string out;
  Picture32 start;
  int written = 0;

  void save(const std::string& name, const Picture32& pic, const std::string& what) {
    host::writePng(out + "/" + name + ".png", pic);
    std::printf("  %-22s %s\n", (name + ".png").c_str(), what.c_str());
    ++written;
  }
};

void maskCompositing(Demo& d) {
  const int w = d.start.width, h = d.start.height;
  Bitmap dest(d.start), source(stripes(w, h)), mask(roundMask(w, h));
  auto composite = d.lib.get<FnMask>("VexoMask");
  composite(&dest.dc, &dest.bitmap, &mask.dc, &mask.bitmap, &source.dc, &source.bitmap, 100, 0);
  d.save("mask-composite", dest.picture, "VexoMask: stripes through a round mask (mode 0, opacity 100)");

  Bitmap painted(d.start);
  auto colour = d.lib.get<FnMaskColor>("VexoMaskColor");
  colour(&painted.dc, &painted.bitmap, &mask.dc, &mask.bitmap, 0x0000A0FF, 80, 5);
  d.save("mask-colour", painted.picture, "VexoMaskColor: orange through the mask (screen, opacity 80)");
}

void magicWand(Demo& d) {
  const int w = d.start.width, h = d.start.height;
  Bitmap pic(d.start);
  auto wand = d.lib.get<FnWand>("VexoMagicWand");
  // the third grey step of the wedge, a flat region
  const int x = w * 5 / 16, y = h * 5 / 6;
  const Pixel32 p = d.start.pixels[static_cast<size_t>(y) * w + x];
  wand(&pic.dc, x, y, w, w, p.red, p.green, p.blue);
  d.save("magic-wand", pic.picture, "VexoMagicWand: one grey step of the wedge filled black");
}

void adjustments(Demo& d) {
  struct Step {
    const char* name;
    const char* what;
    int32_t (*run)(const Library&, Bitmap&);
  };
  const Step steps[] = {
      {"dc-saturation", "VexoSaturation(+180) on the bitmap",
       [](const Library& l, Bitmap& b) { return l.get<FnOne>("VexoSaturation")(&b.dc, &b.bitmap, 180); }},
      {"dc-hue", "VexoHue(120) on the bitmap",
       [](const Library& l, Bitmap& b) { return l.get<FnOne>("VexoHue")(&b.dc, &b.bitmap, 120); }},
      {"dc-web-colour", "VexoWebColour: six levels a channel",
       [](const Library& l, Bitmap& b) { return l.get<FnNone>("VexoWebColour")(&b.dc, &b.bitmap); }},
      {"dc-anti-alias", "VexoAntiAlias: the hard edges softened",
       [](const Library& l, Bitmap& b) { return l.get<FnNone>("VexoAntiAlias")(&b.dc, &b.bitmap); }},
      {"dc-swirl", "VexoSwirl(60) on the bitmap",
       [](const Library& l, Bitmap& b) { return l.get<FnOne>("VexoSwirl")(&b.dc, &b.bitmap, 60); }},
      {"dc-rotate", "VexoRotate2 by 30 degrees, drawn back onto the bitmap",
       [](const Library& l, Bitmap& b) {
         return l.get<FnRotate>("VexoRotate2")(&b.dc, &b.bitmap, b.bitmap.width, b.bitmap.height, 30.0f);
       }},
  };
  for (const Step& s : steps) {
    Bitmap b(d.start);
    const int32_t lines = s.run(d.lib, b);
    d.save(s.name, b.picture, std::string(s.what) + " (" + std::to_string(lines) + " scan lines)");
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: %s <library file> <output folder>\n", argv[0]);
    return 2;
  }
  try {
    Library lib(argv[1]);
    Demo d{lib, argv[2], card(320, 240)};
    std::printf("writing to %s:\n", argv[2]);
    d.save("bitmap", d.start, "the bitmap the others start from");
    maskCompositing(d);
    magicWand(d);
    adjustments(d);
    std::printf("%d pictures written\n", d.written);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "bitmap_host: %s\n", e.what());
    return 1;
  }
  return 0;
}
