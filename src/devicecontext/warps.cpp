// The device-context forms of the 3 x 3 soften, the warps and the rotation:
// the bitmap is read top row first as a 24-bit picture and goes through the
// buffer exports' own soften, mappings and bilinear sampler, which are
// written over the pixel type (filters/soften.h, geometry/distortions.h,
// geometry/rotation.h). The soften and the warps take scratch slots First and
// Second, so the picture lives in Third (and the rotation's target in
// Fourth).
#include <cstdint>

#include "core/fpenv.h"
#include "core/picture.h"
#include "core/scratch.h"
#include "devicecontext/frame.h"
#include "effects/devicecontext.h"
#include "filters/soften.h"
#include "geometry/distortions.h"
#include "geometry/rotation.h"
#include "platform/dib24.h"
#include "platform/gdi.h"

namespace effects {
namespace {

using devicecontext::adjustBitmap;
using devicecontext::Rows;
using platform::Bitmap;
using platform::DeviceContext;

// In place, top row first, in slot Third.
template <class F>
int32_t onPicture(DeviceContext dc, Bitmap bm, F&& change) {
  return adjustBitmap(dc, bm, dc, bm, change, Rows::TopDown, ScratchSlot::Third);
}

// A warp of the colours under `Map` (made for the picture's size). The walk
// changes nothing when it cannot have its snapshot (slot First) or, for a
// separable mapping, its indices (slot Second); both are asked for first, so
// that case reports 0 and writes nothing.
template <class Map, class... Args>
int32_t warpBitmap(DeviceContext dc, Bitmap bm, Args... args) {
  return onPicture(dc, bm, [&](const Picture<Pixel24>& pic) {
    if (scratchBytes(pic.byteCount(), ScratchSlot::First) == nullptr) return false;
    if constexpr (geometry::SeparableMapping<Map>) {
      const size_t indices = (static_cast<size_t>(pic.width()) + static_cast<size_t>(pic.height())) * sizeof(int32_t);
      if (scratchBytes(indices, ScratchSlot::Second) == nullptr) return false;
    }
    geometry::warp<geometry::Writes::Colour>(pic, Map(pic.width(), pic.height(), args...));
    return true;
  });
}

int32_t soften(DeviceContext dc, Bitmap bm) {
  return onPicture(dc, bm, [](const Picture<Pixel24>& pic) {
    return filters::soften<filters::Which::All>(pic, ScratchSlot::First);
  });
}

// The rotated picture goes onto a compatible bitmap in a memory device
// context, then onto hdc's bitmap at (0, 0). The bitmap is made before the
// rotation is worked out: a target size GDI cannot give a bitmap ends the
// call at once instead of after the whole rotation.
class Canvas {
 public:
  Canvas(DeviceContext dc, int32_t width, int32_t height) : dc_(dc) {
    memory_ = platform::createCompatibleDC(dc);
    if (memory_ == nullptr) return;
    bitmap_ = platform::createCompatibleBitmap(dc, width, height);
    if (bitmap_ != nullptr) previous_ = platform::selectBitmap(memory_, bitmap_);
  }
  ~Canvas() {
    if (bitmap_ != nullptr) {
      platform::selectBitmap(memory_, previous_);
      platform::deleteObject(bitmap_);
    }
    if (memory_ != nullptr) platform::deleteDC(memory_);
  }
  Canvas(const Canvas&) = delete;
  Canvas& operator=(const Canvas&) = delete;

  bool ready() const { return bitmap_ != nullptr; }

  void draw(const Picture<Pixel24>& target) {
    platform::BitmapHeader h{};
    h.biSize = 40;
    h.biWidth = target.width();
    h.biHeight = -target.height();  // top row first
    h.biPlanes = 1;
    h.biBitCount = 24;
    h.biCompression = platform::kRgb;
    const auto w = static_cast<uint32_t>(target.width()), lines = static_cast<uint32_t>(target.height());
    platform::setDIBitsToDevice(memory_, 0, 0, w, lines, 0, 0, 0, lines, target.data(), &h, platform::kRgbColours);
    platform::bitBlt(dc_, 0, 0, target.width(), target.height(), memory_, 0, 0);
  }

 private:
  DeviceContext dc_;
  DeviceContext memory_ = nullptr;
  Bitmap bitmap_ = nullptr;
  Bitmap previous_ = nullptr;
};

int32_t rotate(DeviceContext dc, Bitmap bm, int32_t targetWidth, int32_t targetHeight, float angle) {
  platform::Dib24 dib(dc, bm);
  if (!dib.described()) return -1;
  dib.topDown();
  uint8_t* bits = dib.scratch(ScratchSlot::Third);
  if (bits == nullptr) return 0;
  const int32_t lines = dib.read(bits);
  if (lines == 0) return 0;
  if (targetWidth < 1 || targetHeight < 1) return lines;  // nothing to draw

  const size_t rowBytes = Picture<Pixel24>::paddedRowBytes(targetWidth);
  if (rowBytes == 0 || !sizeFits(targetWidth, targetHeight, rowBytes)) return 0;
  // GDI keeps a bitmap's byte size in 32 bits: a target of more than
  // INT32_MAX bytes at 32 bits a pixel is refused here (some GDI versions
  // accept the bitmap and then fail while drawing into it).
  if (static_cast<uint64_t>(targetWidth) * 4u * static_cast<uint64_t>(targetHeight) > static_cast<uint64_t>(INT32_MAX))
    return 0;
  Canvas canvas(dc, targetWidth, targetHeight);
  if (!canvas.ready()) return 0;
  void* targetBits = scratchBytes(rowBytes * static_cast<size_t>(targetHeight), ScratchSlot::Fourth);
  if (targetBits == nullptr) return 0;
  const auto target = Picture<Pixel24>::paddedRows(targetWidth, targetHeight, targetBits);
  geometry::rotate(Picture<const Pixel24>(dib.picture(bits)), target, angle);
  canvas.draw(target);
  return lines;
}

}  // namespace
}  // namespace effects

using namespace effects;

extern "C" {

EFFECTS_API int32_t EFFECTS_CALL VexoPostBlur(void* hdc, void* hbm) { const FloatEnvironment env; return soften(hdc, hbm); }
EFFECTS_API int32_t EFFECTS_CALL VexoSwirl(void* hdc, void* hbm, int32_t twist) { const FloatEnvironment env; return warpBitmap<geometry::Swirl>(hdc, hbm, twist); }
EFFECTS_API int32_t EFFECTS_CALL VexoTwirl(void* hdc, void* hbm, int32_t twist) { const FloatEnvironment env; return warpBitmap<geometry::TwirlEx>(hdc, hbm, twist, twist); }
EFFECTS_API int32_t EFFECTS_CALL VexoTwirlEx(void* hdc, void* hbm, int32_t outerTwist, int32_t innerTwist) { const FloatEnvironment env; return warpBitmap<geometry::TwirlEx>(hdc, hbm, outerTwist, innerTwist); }
EFFECTS_API int32_t EFFECTS_CALL VexoBlockWaves(void* hdc, void* hbm, int32_t amplitude, int32_t frequency, int32_t style) { const FloatEnvironment env; return warpBitmap<geometry::BlockWaves>(hdc, hbm, amplitude, frequency, style); }
EFFECTS_API int32_t EFFECTS_CALL VexoCircularWavesEx(void* hdc, void* hbm, int32_t amplitude, int32_t frequency) { const FloatEnvironment env; return warpBitmap<geometry::CircularWavesEx>(hdc, hbm, amplitude, frequency); }
EFFECTS_API int32_t EFFECTS_CALL VexoRotate2(void* hdc, void* hbm, int32_t targetWidth, int32_t targetHeight, float angle) { const FloatEnvironment env; return rotate(hdc, hbm, targetWidth, targetHeight, angle); }

}  // extern "C"
