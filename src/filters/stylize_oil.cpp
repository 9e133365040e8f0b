// Oil paint: every pixel takes the mean colour of the most common brightness
// level around it, which flattens a picture into strokes of even colour while
// keeping the edges between them.
//
// The neighbourhood is the square of side 2 x brushSize + 1 around the pixel,
// cut at the picture's edges. A pixel's level is (B + G + R) x levels / 766 on
// the 8-bit scale (levels equal slices of the 766 possible sums); the most
// common level wins, the darker one on a tie; the colour is the mean of the
// pixels of that level, rounded half up. The colour is 8 bits a channel in
// every layout (one packed 32-bit value), so the three members paint the same
// picture.
//
// The histograms slide (filters/stylize_oil.h): a pixel costs two strip
// updates, one strip of counts in and one out, a scan of the counts and the
// gathering of one level's sums, instead of a histogram of the whole square.
#include <algorithm>
#include <cstdint>
#include <cstring>

#include "core/fpenv.h"
#include "core/scratch.h"
#include "filters/stylize.h"
#include "filters/stylize_oil.h"

namespace effects {
namespace {

using namespace stylize;

// An element on the 8-bit scale: the byte itself; the top eight of the 16-bit
// layout's fifteen bits (the library's 16 -> 8 bit narrowing, so a picture
// widened from 8 bits reads back exactly); the float value times 255,
// rounded to nearest, with everything beyond 0..1 at the ends.
inline uint8_t eightBit(uint8_t e) { return e; }
inline uint8_t eightBit(uint16_t e) { return static_cast<uint8_t>(std::min(e >> 7, 255)); }
inline uint8_t eightBit(float e) {
  const double v = e * 255.0;
  if (!(v > 0.0)) return 0;
  if (v >= 255.0) return 255;
  return static_cast<uint8_t>(roundToInt32(v));
}

// And back: round(v x 32767 / 255) for 16 bits (255 is full, 32767), v / 255
// for float.
template <class L>
inline typename L::Element fromEightBit(uint32_t v) {
  if constexpr (std::is_same_v<L, Layout32>) return static_cast<uint8_t>(v);
  else if constexpr (std::is_same_v<L, Layout64>) return static_cast<uint16_t>((v * 32767u + 127u) / 255u);
  else return static_cast<float>(v * k255);
}

template <class L>
void oilPaint(int32_t width, int32_t height, typename L::Pixel* px, int32_t brushSize, int32_t levels) {
  using P = typename L::Pixel;
  const int32_t brush = clampTo(brushSize, 1, 5);
  const uint32_t bins = static_cast<uint32_t>(clampTo(levels, 10, 255));
  const auto pic = packedPicture(width, height, px);
  if (pic.empty()) return;
  // The picture at entry on the 8-bit scale, each pixel's level in its mask
  // byte (the kernel never reads a mask), and the strip histograms.
  const size_t w = static_cast<size_t>(width), stride = (bins + 15) / 16 * 16;
  if (w > SIZE_MAX / (bins * sizeof(uint64_t))) return;
  const auto source = scratchPicture<Pixel32>(width, height, ScratchSlot::First);
  auto* counts = static_cast<uint8_t*>(scratchBytes(oil::Strips::countBytes(w, stride), ScratchSlot::Second));
  auto* sums = static_cast<uint64_t*>(scratchBytes(oil::Strips::sumBytes(w, bins), ScratchSlot::Third));
  if (source.empty() || counts == nullptr || sums == nullptr) return;
  uint8_t levelOf[766];
  for (uint32_t s = 0; s < 766; ++s) levelOf[s] = static_cast<uint8_t>(s * bins / 766);
  forEachRow(pic, [&](const P* r, int32_t y) {
    Pixel32* out = source.row(y);
    for (int32_t x = 0; x < width; ++x) {
      const uint8_t b = eightBit(r[x].blue), g = eightBit(r[x].green), red = eightBit(r[x].red);
      out[x] = Pixel32{b, g, red, levelOf[b + g + red]};
    }
  });
  // The strips start with the rows the brush covers at row 0.
  oil::Strips strips(counts, sums, w, stride, bins);
  for (int32_t v = 0; v <= std::min(brush, height - 1); ++v) {
    const Pixel32* r = source.row(v);
    for (size_t x = 0; x < w; ++x) strips.add(x, r[x]);
  }
  alignas(16) uint8_t square[256];
  for (int32_t y = 0; y < height; ++y) {
    // Down one row: the row above the brush leaves, the one below enters.
    if (y > 0) {
      if (const int32_t leaving = y - brush - 1; leaving >= 0) {
        const Pixel32* r = source.row(leaving);
        for (size_t x = 0; x < w; ++x) strips.remove(x, r[x]);
      }
      if (y < height - brush) {
        const Pixel32* r = source.row(y + brush);
        for (size_t x = 0; x < w; ++x) strips.add(x, r[x]);
      }
    }
    std::memset(square, 0, sizeof square);
    for (int32_t x = 0; x <= std::min(brush, width - 1); ++x) oil::addCounts(square, strips.counts(x), stride);
    P* row = pic.row(y);
    for (int32_t x = 0; x < width; ++x) {
      if (x > 0) {
        if (const int32_t leaving = x - brush - 1; leaving >= 0)
          oil::subtractCounts(square, strips.counts(leaving), stride);
        if (x < width - brush) oil::addCounts(square, strips.counts(x + brush), stride);
      }
      const uint32_t best = oil::firstLargest(square, bins);
      const uint64_t* levelSums = strips.sums(best);
      uint64_t colourSums = 0;
      for (int32_t u = std::max(x - brush, 0); u <= stepUpTo(x, brush, width - 1); ++u) colourSums += levelSums[u];
      const uint32_t colour = oil::meanColour(colourSums, square[best]);
      row[x].red = fromEightBit<L>(colour & 0xFFu);
      row[x].green = fromEightBit<L>((colour >> 8) & 0xFFu);
      row[x].blue = fromEightBit<L>((colour >> 16) & 0xFFu);
    }
  }
}

}  // namespace
}  // namespace effects

using namespace effects;

extern "C" {

EFFECTS_API int32_t EFFECTS_CALL VexoOilPaint32(int32_t w, int32_t h, Pixel32* px, int32_t brushSize, int32_t levels) { const FloatEnvironment env; oilPaint<Layout32>(w, h, px, brushSize, levels); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoOilPaint64(int32_t w, int32_t h, Pixel64* px, int32_t brushSize, int32_t levels) { const FloatEnvironment env; oilPaint<Layout64>(w, h, px, brushSize, levels); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoOilPaint128(int32_t w, int32_t h, Pixel128* px, int32_t brushSize, int32_t levels) { const FloatEnvironment env; oilPaint<Layout128>(w, h, px, brushSize, levels); return 0; }

}  // extern "C"
