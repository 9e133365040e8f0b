// The random effects: pixel noise, diffuse specks, aged-film scratches and
// rain drops. Each draws from the calling thread's sequence in a fixed order
// (platform/random.h), so the same seed gives the same picture. An empty
// picture returns before the first draw.
#include <algorithm>
#include <cmath>

#include "core/fpenv.h"
#include "core/scratch.h"
#include "filters/stylize.h"

namespace effects {
namespace {

using namespace stylize;
using platform::RandomDraws;

// --------------------------------------------------------------- pixel noise

// count x count times: the row is drawn first, then the column, then one draw
// each for blue, green and red. Since a draw of 32767 scales to exactly 1.0,
// the last row and column are reached only by that draw. The noise only adds:
// a negative amount darkens.
template <class L>
void pixelNoise(int32_t width, int32_t height, typename L::Pixel* px, int32_t count, int32_t redNoise,
                int32_t greenNoise, int32_t blueNoise) {
  const auto pic = packedPicture(width, height, px);
  if (count < 1 || pic.empty()) return;
  RandomDraws draws;
  const double lastRow = height - 1, lastColumn = width - 1;
  // The float member scales each amount by 1/255 as well and does not clamp.
  auto noisy = [&draws](auto e, int32_t amount) {
    if constexpr (L::integer) return truncClamp<L>(unitDraw(draws) * amount + e);
    else return static_cast<float>(unitDraw(draws) * amount * k255 + e);
  };
  for (int32_t i = 0; i < count; ++i) {
    for (int32_t j = 0; j < count; ++j) {
      const int32_t y = truncToInt32(unitDraw(draws) * lastRow);
      const int32_t x = truncToInt32(unitDraw(draws) * lastColumn);
      auto& p = pic.at(x, y);
      const auto b = noisy(p.blue, blueNoise);
      const auto g = noisy(p.green, greenNoise);
      const auto r = noisy(p.red, redNoise);
      p.blue = b;
      p.green = g;
      p.red = r;
    }
  }
}

// --------------------------------------------------------------------- diffuse

// For each pixel of the even rows: two draws, the distance down first, then
// the distance right. The speck lands at pixel index (y + dy) x width + (x +
// dx) with no column bound, so one past the right edge wraps onto a following
// row; an index outside the picture is skipped (the draws are made anyway).
template <class L>
void diffuse(int32_t width, int32_t height, typename L::Pixel* px, int32_t spread, int32_t redAdd,
             int32_t greenAdd, int32_t blueAdd) {
  using P = typename L::Pixel;
  const auto pic = packedPicture(width, height, px);
  if (pic.empty()) return;
  RandomDraws draws;
  const int64_t pixels = static_cast<int64_t>(pic.pixelCount());
  const double r = redAdd * k255, g = greenAdd * k255, b = blueAdd * k255;
  auto speck = [=](P& p) {
    if constexpr (L::integer) {
      p.blue = addClamped<L>(p.blue, blueAdd);
      p.green = addClamped<L>(p.green, greenAdd);
      p.red = addClamped<L>(p.red, redAdd);
    } else {
      p.blue = static_cast<float>(p.blue + b);
      p.green = static_cast<float>(p.green + g);
      p.red = static_cast<float>(p.red + r);
    }
  };
  for (int64_t y = 0; y < height; y += 2) {
    for (int32_t x = 0; x < width; ++x) {
      const int32_t dy = truncToInt32(unitDraw(draws) * spread);
      const int32_t dx = truncToInt32(unitDraw(draws) * spread);
      const int64_t i = (y + dy) * width + (static_cast<int64_t>(x) + dx);
      if (i >= 0 && i < pixels) speck(px[i]);
    }
  }
}

// ------------------------------------------------------------------ aged lines

// Positions are rounded to nearest even through a signed 16-bit value, as the
// darkened elements are. A vertical scratch at column `width` runs down the
// first column one row lower, and a horizontal one at row `height` lies past
// the picture: their draws are made, their writes outside the buffer are not.
template <class L>
void agedLines(int32_t width, int32_t height, typename L::Pixel* px, int32_t verticalLines,
               int32_t horizontalLines) {
  using P = typename L::Pixel;
  const auto pic = packedPicture(width, height, px);
  if (pic.empty()) return;
  RandomDraws draws;
  const int64_t pixels = static_cast<int64_t>(pic.pixelCount());
  auto scaled = [](auto e, double k) {
    if constexpr (std::is_same_v<L, Layout32>) return roundLowByte(e * k);
    else if constexpr (std::is_same_v<L, Layout64>) return roundLowWord(e * k);
    else return static_cast<float>(e * k);
  };
  // One fresh draw per pixel, then red, green and blue.
  auto darken = [&](int64_t i) {
    const double k = unitDraw(draws);
    if (i < 0 || i >= pixels) return;
    P& p = px[i];
    p.red = scaled(p.red, k);
    p.green = scaled(p.green, k);
    p.blue = scaled(p.blue, k);
  };
  for (int32_t n = 0; n < verticalLines; ++n) {
    const int32_t column = roundToInt16(unitDraw(draws) * width);
    for (int32_t y = 1; y < height; ++y) darken(static_cast<int64_t>(y) * width + column);
  }
  for (int32_t n = 0; n < horizontalLines; ++n) {
    const int64_t row = roundToInt16(unitDraw(draws) * height);
    for (int32_t x = 1; x < width; ++x) darken(row * width + x);
  }
}

// ------------------------------------------------------------------ rain drops

// floor(sqrt(n)) for 0 <= n < 2^31: the square root is exact in IEEE
// arithmetic, and the adjustments make the floor certain.
inline int32_t isqrt(int32_t n) {
  int32_t s = static_cast<int32_t>(std::sqrt(static_cast<double>(n)));
  while (s > 0 && s * s > n) --s;
  while ((s + 1) * (s + 1) <= n) ++s;
  return s;
}

// One drop of radius r centred at (cx, cy). `under` receives the square of
// the picture beneath the drop first, so the lens reads the picture as it
// was. All arithmetic is integer: the same drop in the 8-bit and 16-bit
// layouts differs only by the scale of full.
template <class L>
void drawDrop(const Picture<typename L::Pixel>& pic, const Picture<typename L::Pixel>& under, int32_t cx,
              int32_t cy, int32_t r) {
  using E = typename L::Element;
  const int32_t x0 = std::max(cx - r, 0), x1 = stepUpTo(cx, r, pic.width() - 1);
  const int32_t y0 = std::max(cy - r, 0), y1 = stepUpTo(cy, r, pic.height() - 1);
  for (int32_t y = y0; y <= y1; ++y)
    for (int32_t x = x0; x <= x1; ++x) under.at(x - cx + r, y - cy + r) = pic.at(x, y);
  const int32_t rr = r * r, spot = r / 3, spotR = r / 4;
  for (int32_t y = y0; y <= y1; ++y) {
    for (int32_t x = x0; x <= x1; ++x) {
      const int32_t dx = x - cx, dy = y - cy, d2 = dx * dx + dy * dy;
      if (d2 > rr) continue;
      // The dome's height over this point: where it is high (the middle) the
      // lens reads close to its centre and magnifies; at the rim it reads the
      // pixel itself, so the drop joins the picture without a seam. The
      // source lies between the centre and this pixel, so inside `under`.
      const int32_t h = isqrt(rr - d2);
      const auto& s = under.at(dx * (r - h) / r + r, dy * (r - h) / r + r);
      // Light from the upper left: up to +-22 % across the drop, and a
      // quarter darker on the outer quarter of the lower-right half.
      const int32_t toLight = -(dx + dy);
      int32_t gain = 256 + toLight * 40 / r;
      if (toLight < 0 && 16 * d2 >= 9 * rr) gain = gain * 3 / 4;
      // The highlight: a spot a third of the way to the upper left, 5/8 of
      // the way to white.
      const int32_t hx = dx + spot, hy = dy + spot;
      const int32_t white = hx * hx + hy * hy <= spotR * spotR ? 160 : 0;
      auto lit = [gain, white](E e) {
        constexpr int32_t full = fullInt<L>;
        int32_t v = std::min<int32_t>((e * gain + 128) >> 8, full);
        v += ((full - v) * white + 128) >> 8;
        return static_cast<E>(v);
      };
      auto& p = pic.at(x, y);
      p.blue = lit(s.blue);
      p.green = lit(s.green);
      p.red = lit(s.red);
    }
  }
}

// Three draws a drop: centre column, centre row, radius.
template <class L>
void rainDrops(int32_t width, int32_t height, typename L::Pixel* px, int32_t drops, int32_t radius) {
  using P = typename L::Pixel;
  const auto pic = packedPicture(width, height, px);
  if (drops < 1 || pic.empty()) return;
  const int32_t largest = clampTo(radius, 1, 64);
  const auto under = scratchPicture<P>(2 * largest + 1, 2 * largest + 1, ScratchSlot::First);
  if (under.empty()) return;
  RandomDraws draws;
  const double lastRow = height - 1, lastColumn = width - 1, spread = largest - 1;
  for (int32_t i = 0; i < drops; ++i) {
    const int32_t cx = truncToInt32(unitDraw(draws) * lastColumn);
    const int32_t cy = truncToInt32(unitDraw(draws) * lastRow);
    const int32_t r = 1 + truncToInt32(unitDraw(draws) * spread);
    drawDrop<L>(pic, under, cx, cy, r);
  }
}

}  // namespace
}  // namespace effects

using namespace effects;

extern "C" {

EFFECTS_API int32_t EFFECTS_CALL VexoPixelNoise32(int32_t w, int32_t h, Pixel32* px, int32_t count, int32_t r, int32_t g, int32_t b) { const FloatEnvironment env; pixelNoise<Layout32>(w, h, px, count, r, g, b); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoPixelNoise64(int32_t w, int32_t h, Pixel64* px, int32_t count, int32_t r, int32_t g, int32_t b) { const FloatEnvironment env; pixelNoise<Layout64>(w, h, px, count, r, g, b); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoPixelNoise128(int32_t w, int32_t h, Pixel128* px, int32_t count, int32_t r, int32_t g, int32_t b) { const FloatEnvironment env; pixelNoise<Layout128>(w, h, px, count, r, g, b); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoDiffuse32(int32_t w, int32_t h, Pixel32* px, int32_t spread, int32_t r, int32_t g, int32_t b) { const FloatEnvironment env; diffuse<Layout32>(w, h, px, spread, r, g, b); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoDiffuse64(int32_t w, int32_t h, Pixel64* px, int32_t spread, int32_t r, int32_t g, int32_t b) { const FloatEnvironment env; diffuse<Layout64>(w, h, px, spread, r, g, b); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoDiffuse128(int32_t w, int32_t h, Pixel128* px, int32_t spread, int32_t r, int32_t g, int32_t b) { const FloatEnvironment env; diffuse<Layout128>(w, h, px, spread, r, g, b); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoAgedLines32(int32_t w, int32_t h, Pixel32* px, int32_t vertical, int32_t horizontal) { const FloatEnvironment env; agedLines<Layout32>(w, h, px, vertical, horizontal); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoAgedLines64(int32_t w, int32_t h, Pixel64* px, int32_t vertical, int32_t horizontal) { const FloatEnvironment env; agedLines<Layout64>(w, h, px, vertical, horizontal); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoAgedLines128(int32_t w, int32_t h, Pixel128* px, int32_t vertical, int32_t horizontal) { const FloatEnvironment env; agedLines<Layout128>(w, h, px, vertical, horizontal); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoRainDrops32(int32_t w, int32_t h, Pixel32* px, int32_t drops, int32_t radius) { const FloatEnvironment env; rainDrops<Layout32>(w, h, px, drops, radius); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoRainDrops64(int32_t w, int32_t h, Pixel64* px, int32_t drops, int32_t radius) { const FloatEnvironment env; rainDrops<Layout64>(w, h, px, drops, radius); return 0; }

}  // extern "C"
