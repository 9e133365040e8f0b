// The adjustment entry points on device-context bitmaps: each reads the
// bitmap as 24-bit rows, changes them and writes them back. Where the
// arithmetic is the 32-bit buffer export's, the rows go through that very
// export; the rest (the table gamma, whole stops, the signed colour mixes,
// the six-level palette and the edge-only smoothing) is this family's own.
#include <cmath>
#include <cstdint>

#include "core/fpenv.h"
#include "core/layout.h"
#include "core/numeric.h"
#include "core/picture.h"
#include "devicecontext/frame.h"
#include "core/dispatch.h"
#include "effects/effects.h"

namespace effects {
namespace {

using devicecontext::adjustBitmap;
using devicecontext::adjustRowsAs32;
using platform::Bitmap;
using platform::DeviceContext;

// In place: the bitmap is read and written back to itself.
template <class F>
int32_t inPlace(DeviceContext dc, Bitmap bm, F&& change) {
  return adjustBitmap(dc, bm, dc, bm, [&](const Picture<Pixel24>& pic) {
    forEachPixel(pic, change);
    return true;
  });
}

// ------------------------------------------------------------------ gamma

int32_t gammaTable(DeviceContext dc, Bitmap bm, float gamma) {
  float g = gamma;
  if (g < 0) g = 0;
  if (g > 10) g = 10;
  const double e = 1.0f / g;  // a float quotient; gamma 0 gives infinity
  uint8_t table[256];
  for (int32_t i = 0; i < 256; ++i) {
    // truncated, not rounded; the low byte of the truncation is stored
    table[i] = static_cast<uint8_t>(static_cast<uint32_t>(truncToInt32(std::pow(i * k255, e) * 255)));
  }
  // One table for blue, green and red: each row is a run of bytes through it.
  return adjustBitmap(dc, bm, dc, bm, [&table](const Picture<Pixel24>& pic) {
    for (int32_t y = 0; y < pic.height(); ++y)
      rows::mapBytes(reinterpret_cast<uint8_t*>(pic.row(y)), 3 * static_cast<size_t>(pic.width()), table);
    return true;
  });
}

// ----------------------------------------------------------- colour filter

// Two bytes read as signed 8-bit values, added, halved toward zero; the low
// byte is kept (so bytes of 128 and above mix as negative numbers).
inline uint8_t signedMix(uint8_t a, uint8_t b) {
  return static_cast<uint8_t>((static_cast<int8_t>(a) + static_cast<int8_t>(b)) / 2);
}

int32_t colourFilter(DeviceContext dcOut, Bitmap bmOut, DeviceContext dcIn, Bitmap bmIn, int32_t filter) {
  if (filter < 4 || filter > 6) {
    return adjustRowsAs32(dcOut, bmOut, dcIn, bmIn,
                          [filter](Pixel32* row, int32_t n) { VexoColorFilter32(n * 4, row, filter); });
  }
  return adjustBitmap(dcOut, bmOut, dcIn, bmIn, [filter](const Picture<Pixel24>& pic) {
    withValue<4, 6>(filter, [&](auto which) {
      forEachPixel(pic, [](Pixel24& p) {
        const uint8_t b = p.blue, g = p.green, r = p.red;
        if constexpr (decltype(which)::value == 4) {
          p.blue = 0; p.green = p.red = signedMix(g, r);
        } else if constexpr (decltype(which)::value == 5) {
          p.green = 0; p.blue = p.red = signedMix(r, b);
        } else {
          p.red = 0; p.blue = p.green = signedMix(g, b);
        }
      });
    });
    return true;
  });
}

// ------------------------------------------------------------- f-stops

int32_t fstop(DeviceContext dc, Bitmap bm, double stops) {
  const double factor = std::pow(2.0, stops);
  return inPlace(dc, bm, [factor](Pixel24& p) {
    p.blue = truncClamp<Layout24>(p.blue * factor);
    p.green = truncClamp<Layout24>(p.green * factor);
    p.red = truncClamp<Layout24>(p.red * factor);
  });
}

// ------------------------------------------------------------- web palette

// Judged on the value before the change, so all six levels occur.
inline uint8_t webLevel(uint8_t c) {
  uint8_t v = c < 26 ? 0 : 51;
  if (c > 77) v = 102;
  if (c > 128) v = 153;
  if (c > 179) v = 204;
  if (c > 230) v = 255;
  return v;
}

// ------------------------------------------------------------- anti-alias

inline uint8_t brightness(const Pixel24& p) { return static_cast<uint8_t>((p.blue + p.green + p.red) / 3); }

inline void brightnessRow(const Pixel24* row, uint8_t* to, int32_t width) {
  for (int32_t x = 0; x < width; ++x) to[x] = brightness(row[x]);
}

// Each interior pixel becomes the mean of its 3 x 3 cells, a cell whose
// brightness is more than 50 away from the pixel's own counting as the cell,
// the others as the pixel itself. In place, in buffer order: the cells of
// the row before and the cell to the left already hold their smoothed
// colours when they are read. The brightness of the rows around the one
// being smoothed is kept in three rows (scratch slot Second), the row being
// smoothed updated pixel by pixel, so each brightness is worked out twice
// rather than nine times. False when there is no memory for them.
bool antiAlias(const Picture<Pixel24>& pic) {
  const int32_t w = pic.width(), h = pic.height();
  if (w < 3 || h < 3) return true;
  auto* levels = static_cast<uint8_t*>(scratchBytes(3 * static_cast<size_t>(w), ScratchSlot::Second));
  if (levels == nullptr) return false;
  uint8_t *above = levels, *here = levels + w, *below = levels + 2 * static_cast<size_t>(w);
  brightnessRow(pic.row(0), above, w);
  brightnessRow(pic.row(1), here, w);
  for (int32_t y = 1; y + 1 < h; ++y) {
    const Pixel24* up = pic.row(y - 1);
    Pixel24* row = pic.row(y);
    const Pixel24* down = pic.row(y + 1);
    brightnessRow(down, below, w);
    for (int32_t x = 1; x + 1 < w; ++x) {
      const Pixel24 own = row[x];
      const int32_t level = here[x];
      int32_t blue = 0, green = 0, red = 0;
      const auto add = [&](const Pixel24& cell, int32_t l) {
        const Pixel24& c = l >= level - 50 && l <= level + 50 ? own : cell;
        blue += c.blue;
        green += c.green;
        red += c.red;
      };
      add(up[x - 1], above[x - 1]), add(up[x], above[x]), add(up[x + 1], above[x + 1]);
      add(row[x - 1], here[x - 1]), add(own, level), add(row[x + 1], here[x + 1]);
      add(down[x - 1], below[x - 1]), add(down[x], below[x]), add(down[x + 1], below[x + 1]);
      row[x] = Pixel24{static_cast<uint8_t>(blue / 9), static_cast<uint8_t>(green / 9), static_cast<uint8_t>(red / 9)};
      here[x] = brightness(row[x]);
    }
    uint8_t* done = above;
    above = here, here = below, below = done;
  }
  return true;
}

}  // namespace
}  // namespace effects

using namespace effects;

extern "C" {

EFFECTS_API int32_t EFFECTS_CALL VexoSaturation(void* hdc, void* hbm, int32_t amount) { const FloatEnvironment env; return adjustRowsAs32(hdc, hbm, hdc, hbm, [amount](Pixel32* row, int32_t n) { VexoSaturation32(n * 4, row, amount); }); }
EFFECTS_API int32_t EFFECTS_CALL VexoHue(void* hdc, void* hbm, int32_t hue) { const FloatEnvironment env; return adjustRowsAs32(hdc, hbm, hdc, hbm, [hue](Pixel32* row, int32_t n) { VexoHue32(n, 1, row, hue); }); }
EFFECTS_API int32_t EFFECTS_CALL VexoInvert(void* hdcDest, void* hbmDest, void* hdcSrc, void* hbmSrc, int32_t channel) { const FloatEnvironment env; return adjustRowsAs32(hdcDest, hbmDest, hdcSrc, hbmSrc, [channel](Pixel32* row, int32_t n) { VexoInvert32(n * 4, row, channel); }); }
EFFECTS_API int32_t EFFECTS_CALL VexoGrayScale(void* hdcDest, void* hbmDest, void* hdcSrc, void* hbmSrc, int32_t channel) { const FloatEnvironment env; return adjustRowsAs32(hdcDest, hbmDest, hdcSrc, hbmSrc, [channel](Pixel32* row, int32_t n) { VexoGrayScale32(n * 4, row, channel); }); }
EFFECTS_API int32_t EFFECTS_CALL VexoRGBChannelFilter(void* hdc, void* hbm, int32_t channel) { const FloatEnvironment env; return adjustRowsAs32(hdc, hbm, hdc, hbm, [channel](Pixel32* row, int32_t n) { VexoRGBChannelFilter32(n * 4, row, channel); }); }
EFFECTS_API int32_t EFFECTS_CALL VexoColorFilter(void* hdcDest, void* hbmDest, void* hdcSrc, void* hbmSrc, int32_t, int32_t filter, int32_t) { const FloatEnvironment env; return colourFilter(hdcDest, hbmDest, hdcSrc, hbmSrc, filter); }
EFFECTS_API int32_t EFFECTS_CALL VexoGamma(void* hdc, void* hbm, float gamma) { const FloatEnvironment env; return gammaTable(hdc, hbm, gamma); }
EFFECTS_API int32_t EFFECTS_CALL Vexofstop(void* hdc, void* hbm, double stops) { const FloatEnvironment env; return fstop(hdc, hbm, stops); }
EFFECTS_API int32_t EFFECTS_CALL VexoWebColour(void* hdc, void* hbm) { const FloatEnvironment env; return inPlace(hdc, hbm, [](Pixel24& p) { p.blue = webLevel(p.blue); p.green = webLevel(p.green); p.red = webLevel(p.red); }); }
EFFECTS_API int32_t EFFECTS_CALL VexoAntiAlias(void* hdc, void* hbm) { const FloatEnvironment env; return adjustBitmap(hdc, hbm, hdc, hbm, [](const Picture<Pixel24>& pic) { return antiAlias(pic); }); }

}  // extern "C"
