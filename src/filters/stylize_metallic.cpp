// Polished metal: the picture's brightness folded into light and dark bands,
// as a chrome surface mirrors its surroundings, with an embossed sheen from
// the brightness steps. The result is grey; the mask stays.
//
// Everything is plain double arithmetic (+, -, x, floor) on integer inputs,
// which every build computes alike, and both layouts run the same formula on
// their own scale.
#include <algorithm>
#include <cmath>

#include "core/fpenv.h"
#include "core/scratch.h"
#include "filters/stylize.h"

namespace effects {
namespace {

// The luminance 0.2125 R + 0.7154 G + 0.0721 B, times 10000: exact in
// integers (below 10000 x 32767 < 2^31).
template <class P>
inline int32_t luminance10000(const P& p) {
  return 2125 * static_cast<int32_t>(p.red) + 7154 * static_cast<int32_t>(p.green) +
         721 * static_cast<int32_t>(p.blue);
}

// Folds y (0..1) into 2 x bands - 1 swings of a triangle wave: 0 stays 0 and
// 1 stays 1, and each band between goes up and down once more.
inline double chrome(double y, int32_t bands) {
  const double g = y * (2 * bands - 1);
  const double phase = g - 2.0 * std::floor(g * 0.5);  // g modulo 2, in 0..2
  return 1.0 - std::fabs(phase - 1.0);
}

template <class L>
void metallic(int32_t width, int32_t height, typename L::Pixel* px, int32_t bands, int32_t sheen) {
  using P = typename L::Pixel;
  using E = typename L::Element;
  const auto pic = packedPicture(width, height, px);
  if (pic.empty()) return;
  const int32_t swings = clampTo(bands, 1, 8);
  const double relief = clampTo(sheen, 0, 100) * 0.04;
  // Every pixel's luminance first: the relief reads the neighbours as they
  // were.
  auto* lum = static_cast<int32_t*>(scratchBytes(pic.pixelCount() * sizeof(int32_t), ScratchSlot::First));
  if (lum == nullptr) return;
  const size_t w = static_cast<size_t>(width);
  auto at = [lum, w](int32_t x, int32_t y) { return lum[static_cast<size_t>(y) * w + static_cast<size_t>(x)]; };
  forEachXY(pic, [&](const P& p, int32_t x, int32_t y) { lum[static_cast<size_t>(y) * w + static_cast<size_t>(x)] = luminance10000(p); });
  const double scale = 1.0 / (10000.0 * L::full);
  constexpr double full = L::full;
  forEachXY(pic, [&](P& p, int32_t x, int32_t y) {
    // The step from the lower-right neighbour to the upper-left one, with
    // neighbours past an edge pulled back onto it.
    const int32_t upperLeft = at(std::max(x - 1, 0), std::max(y - 1, 0));
    const int32_t lowerRight = at(std::min(x + 1, width - 1), std::min(y + 1, height - 1));
    double v = chrome(at(x, y) * scale, swings) + (upperLeft - lowerRight) * scale * relief;
    v = clampTo(v, 0.0, 1.0);
    const E e = static_cast<E>(roundToInt32(v * full));
    p.blue = p.green = p.red = e;
  });
}

}  // namespace
}  // namespace effects

using namespace effects;

extern "C" {

EFFECTS_API int32_t EFFECTS_CALL VexoMetallic32(int32_t w, int32_t h, Pixel32* px, int32_t bands, int32_t sheen) { const FloatEnvironment env; metallic<Layout32>(w, h, px, bands, sheen); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoMetallic64(int32_t w, int32_t h, Pixel64* px, int32_t bands, int32_t sheen) { const FloatEnvironment env; metallic<Layout64>(w, h, px, bands, sheen); return 0; }

}  // extern "C"
