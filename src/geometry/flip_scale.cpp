// Flips, mirrors, the quarter turn and nearest-neighbour scaling. Every one
// is a pixel move and behaves the same in the three layouts; only the
// scale's colour addition depends on the element type.
#include <algorithm>
#include <cstring>

#include "core/fpenv.h"
#include "core/numeric.h"
#include "core/picture.h"
#include "core/scratch.h"
#include "geometry/transform.h"

namespace effects {
namespace {

using namespace geometry;

// Row y and row (height - 1 - y) change places: the picture upside down.
template <class P>
void verticalFlip(int32_t width, int32_t height, P* pixels) {
  const auto pic = packedPicture(width, height, pixels);
  const size_t bytes = static_cast<size_t>(pic.width()) * sizeof(P);
  for (int32_t y = 0, z = pic.height() - 1; y < z; ++y, --z) swapBytes(pic.row(y), pic.row(z), bytes);
}

template <class P>
void horizontalFlip(int32_t width, int32_t height, P* pixels) {
  const auto pic = packedPicture(width, height, pixels);
  forEachRow(pic, [&pic](P* row, int32_t) { reverseInPlace(row, static_cast<size_t>(pic.width())); });
}

// Copying row (height - 1 - y) into row y from the top down: the bottom half
// reads back rows that were just given its own content, so only the top
// half changes and no copy of the picture is needed.
template <class P>
void verticalMirror(int32_t width, int32_t height, P* pixels) {
  const auto pic = packedPicture(width, height, pixels);
  const size_t bytes = static_cast<size_t>(pic.width()) * sizeof(P);
  for (int32_t y = 0, z = pic.height() - 1; y < z; ++y, --z) std::memcpy(pic.row(y), pic.row(z), bytes);
}

// The same within each row: the left half becomes the reflection of the
// right half.
template <class P>
void horizontalMirror(int32_t width, int32_t height, P* pixels) {
  const auto pic = packedPicture(width, height, pixels);
  const size_t half = static_cast<size_t>(pic.width()) / 2, rest = static_cast<size_t>(pic.width()) - half;
  forEachRow(pic, [=](P* row, int32_t) { reverseCopy(row, row + rest, half); });
}

// A square picture is transposed in place; any other goes through a scratch
// block and back.
template <class P>
void quarterTurn(int32_t width, int32_t height, P* pixels) {
  const auto pic = packedPicture(width, height, pixels);
  if (pic.empty()) return;
  if (width == height) {
    transposeSquareInPlace(pixels, width);
    return;
  }
  const auto block = scratchPicture<P>(height, width, ScratchSlot::First);
  if (block.empty()) return;
  transposeInto(static_cast<const P*>(pixels), width, height, block.data());
  std::memcpy(pixels, block.data(), pic.byteCount());
}

// Nearest neighbour by truncation, ratios and products in single precision.
// The column of every target x is worked out once, into a scratch table.
template <class P>
void scale(int32_t sourceWidth, int32_t sourceHeight, const P* source, int32_t targetWidth, int32_t targetHeight,
           P* target) {
  const auto from = packedPicture(sourceWidth, sourceHeight, source);
  const auto to = packedPicture(targetWidth, targetHeight, target);
  if (from.empty() || to.empty()) return;
  const float ry = static_cast<float>(sourceHeight) / static_cast<float>(targetHeight);
  const float rx = static_cast<float>(sourceWidth) / static_cast<float>(targetWidth);
  auto* columns = static_cast<int32_t*>(
      scratchBytes(static_cast<size_t>(targetWidth) * sizeof(int32_t), ScratchSlot::First));
  if (columns == nullptr) return;
  for (int32_t x = 0; x < targetWidth; ++x)
    columns[x] = clampTo(truncToInt32(static_cast<float>(x) * rx), 0, sourceWidth - 1);
  forEachRow(to, [&](P* row, int32_t y) {
    const int32_t sy = clampTo(truncToInt32(static_cast<float>(y) * ry), 0, sourceHeight - 1);
    scaleRow(row, from.row(sy), columns, targetWidth);
  });
}

}  // namespace
}  // namespace effects

using namespace effects;

extern "C" {
EFFECTS_API int32_t EFFECTS_CALL VexoVerticalFlip32(int32_t width, int32_t height, Pixel32* pixels, int32_t) { const FloatEnvironment env; verticalFlip(width, height, pixels); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoVerticalFlip64(int32_t width, int32_t height, Pixel64* pixels, int32_t) { const FloatEnvironment env; verticalFlip(width, height, pixels); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoVerticalFlip128(int32_t width, int32_t height, Pixel128* pixels, int32_t) { const FloatEnvironment env; verticalFlip(width, height, pixels); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoHorizontalFlip32(int32_t width, int32_t height, Pixel32* pixels, int32_t) { const FloatEnvironment env; horizontalFlip(width, height, pixels); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoHorizontalFlip64(int32_t width, int32_t height, Pixel64* pixels, int32_t) { const FloatEnvironment env; horizontalFlip(width, height, pixels); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoHorizontalFlip128(int32_t width, int32_t height, Pixel128* pixels, int32_t) { const FloatEnvironment env; horizontalFlip(width, height, pixels); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoVerticalMirror32(int32_t width, int32_t height, Pixel32* pixels, int32_t) { const FloatEnvironment env; verticalMirror(width, height, pixels); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoVerticalMirror64(int32_t width, int32_t height, Pixel64* pixels, int32_t) { const FloatEnvironment env; verticalMirror(width, height, pixels); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoVerticalMirror128(int32_t width, int32_t height, Pixel128* pixels, int32_t) { const FloatEnvironment env; verticalMirror(width, height, pixels); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoHorizontalMirror32(int32_t width, int32_t height, Pixel32* pixels, int32_t) { const FloatEnvironment env; horizontalMirror(width, height, pixels); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoHorizontalMirror64(int32_t width, int32_t height, Pixel64* pixels, int32_t) { const FloatEnvironment env; horizontalMirror(width, height, pixels); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoHorizontalMirror128(int32_t width, int32_t height, Pixel128* pixels, int32_t) { const FloatEnvironment env; horizontalMirror(width, height, pixels); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoRotate90_32(int32_t width, int32_t height, Pixel32* pixels) { const FloatEnvironment env; quarterTurn(width, height, pixels); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoRotate90_64(int32_t width, int32_t height, Pixel64* pixels) { const FloatEnvironment env; quarterTurn(width, height, pixels); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoRotate90_128(int32_t width, int32_t height, Pixel128* pixels) { const FloatEnvironment env; quarterTurn(width, height, pixels); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoScale32(int32_t sourceWidth, int32_t sourceHeight, const Pixel32* source, int32_t targetWidth, int32_t targetHeight, Pixel32* target) { const FloatEnvironment env; scale(sourceWidth, sourceHeight, source, targetWidth, targetHeight, target); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoScale64(int32_t sourceWidth, int32_t sourceHeight, const Pixel64* source, int32_t targetWidth, int32_t targetHeight, Pixel64* target) { const FloatEnvironment env; scale(sourceWidth, sourceHeight, source, targetWidth, targetHeight, target); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoScale128(int32_t sourceWidth, int32_t sourceHeight, const Pixel128* source, int32_t targetWidth, int32_t targetHeight, Pixel128* target) { const FloatEnvironment env; scale(sourceWidth, sourceHeight, source, targetWidth, targetHeight, target); return 0; }
}
