// Mask compositing on device-context bitmaps: a source bitmap or one colour
// blended onto a destination bitmap through a mask bitmap or a mask array,
// with the 8-bit blend engine on 24-bit working pictures. The result goes
// back into the destination bitmap, to an output device context, or into the
// caller's pixels buffer and the output device context.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "composite/blend.h"
#include "composite/blend_simd.h"
#include "core/fpenv.h"
#include "core/layout.h"
#include "core/numeric.h"
#include "core/picture.h"
#include "core/pixel_rows.h"
#include "core/scratch.h"
#include "effects/maskcomposite.h"
#include "platform/dib24.h"

namespace effects {
namespace {

using platform::Bitmap;
using platform::DeviceContext;
using platform::Dib24;

// Where the source colour of each pixel comes from: a bitmap (read into a
// working picture) or one COLORREF colour.
struct FromBitmap {
  DeviceContext dc;
  Bitmap bitmap;
};
struct FromColour {
  uint32_t color;
};
// Where the mask byte of each pixel comes from: a bitmap or the caller's array.
struct MaskFromBitmap {
  DeviceContext dc;
  Bitmap bitmap;
};
struct MaskFromArray {
  const uint8_t* bytes;
};

// What becomes of the composited picture.
enum class Kind {
  Bitmap,   // written back into the destination bitmap
  Device,   // a scratch copy shown on the output device context
  Pixels,   // composited in the caller's buffer (read from the destination), shown
  Pointer,  // composited onto what the caller's buffer holds, shown
};
struct Output {
  Kind kind;
  DeviceContext dc = nullptr;
  int32_t x = 0, y = 0, width = 0, height = 0;
  uint8_t* pixels = nullptr;
};

Pixel24 colourOf(uint32_t colorref) {
  return Pixel24{static_cast<uint8_t>(colorref >> 16), static_cast<uint8_t>(colorref >> 8),
                 static_cast<uint8_t>(colorref)};
}

// The pixels of a row are composited in runs of this many, widened into
// 32-bit pixels on the stack, so the rows of the layer composite do the
// blending: the destination is the canvas, the source colour with the mask
// byte as its mask the source.
constexpr size_t kRun = 512;

// Composites under a mode fixed at compile time. All buffers share the
// destination's row stride, so one byte offset names the same pixel in each.
// `sourceRun(y, x, n, to)` gives the source colours of n pixels of row y
// from x as 32-bit pixels (their mask bytes are then set here).
template <int32_t Mode, class SourceRun>
void compositeRows(const Picture<Pixel24>& dest, const uint8_t* mask, SourceRun sourceRun, int32_t opacity) {
  const blend::Weight<Layout32> weight(opacity);
  // Mode 0 copies the source exactly where round(opacity x 2.55) + m > 509,
  // compared so on purpose (opacity 100 with a full mask, in range). The
  // blend runs on every pixel with a mask above 0; those it should have
  // copied are then given the source colour.
  const int32_t shortcutBase = roundToInt32(static_cast<double>(opacity) * 2.55);
  bool copies[256] = {};
  bool anyCopies = false;
  if constexpr (Mode == EFFECTS_BLEND_NORMAL) {
    for (int32_t m = 1; m < 256; ++m) anyCopies |= copies[m] = wrapAdd(shortcutBase, m) > 509;
  }
  Pixel32 canvas[kRun], source[kRun];
  const auto width = static_cast<size_t>(dest.width());
  for (int32_t y = 0; y < dest.height(); ++y) {
    auto* d = reinterpret_cast<uint8_t*>(dest.row(y));
    const uint8_t* m = mask + static_cast<ptrdiff_t>(y) * dest.stride();
    for (size_t x = 0; x < width; x += kRun) {
      const size_t n = width - x < kRun ? width - x : kRun;
      rows::widen24(d + 3 * x, reinterpret_cast<uint8_t*>(canvas), n);
      sourceRun(y, x, n, source);
      for (size_t i = 0; i < n; ++i) source[i].mask = m[3 * (x + i)];
      blend::sse2::blendRow<Layout32, Mode>(canvas, source, n, weight);
      if (anyCopies) {
        for (size_t i = 0; i < n; ++i)
          if (copies[source[i].mask]) canvas[i] = source[i];
      }
      rows::narrow24(reinterpret_cast<const uint8_t*>(canvas), d + 3 * x, n);
    }
  }
}

template <class SourceRun>
void composite(const Picture<Pixel24>& dest, const uint8_t* mask, SourceRun sourceRun, int32_t opacity,
               int32_t mode) {
  blend::withMode(mode, [&](auto m) { compositeRows<decltype(m)::value>(dest, mask, sourceRun, opacity); });
}

// Reads a source or mask bitmap into a scratch slot, after the destination
// `dest`. Null when GDI cannot describe it, when its size differs from the
// destination's, when there is no memory, or (when `checked`, for the last
// bitmap read) when its pixels cannot be read.
const uint8_t* readAlongside(const Dib24& dest, DeviceContext dc, Bitmap bitmap, ScratchSlot slot, bool checked) {
  Dib24 dib(dc, bitmap);
  if (!dib.described() || !dib.sameSize(dest)) return nullptr;
  uint8_t* bits = dib.scratch(slot);
  if (bits == nullptr) return nullptr;
  const int32_t read = dib.read(bits);
  return checked && read == 0 ? nullptr : bits;
}

template <class Source, class Mask>
int32_t maskComposite(DeviceContext hdc, Bitmap bitmap, const Mask& mask, const Source& source, int32_t opacity,
                      int32_t mode, const Output& out) {
  constexpr bool sourceIsBitmap = std::is_same_v<Source, FromBitmap>;
  constexpr bool maskIsBitmap = std::is_same_v<Mask, MaskFromBitmap>;
  if (opacity == 0) return -1;
  // A null mask array has no mask to read: nothing is touched.
  if constexpr (!maskIsBitmap) {
    if (mask.bytes == nullptr) return -1;
  }

  // The destination first; its pixel read is checked only when it is the
  // last bitmap read.
  Dib24 dest(hdc, bitmap);
  if (!dest.described()) return -1;
  uint8_t* bits = out.kind == Kind::Bitmap || out.kind == Kind::Device ? dest.scratch(ScratchSlot::First) : out.pixels;
  if (bits == nullptr || dest.bytes() == 0) return -1;
  if (out.kind != Kind::Pointer) {
    const int32_t read = dest.read(bits);
    if (!sourceIsBitmap && !maskIsBitmap && read == 0) return -1;
  }

  // Then the source, then the mask.
  const uint8_t* sourceBits = nullptr;
  if constexpr (sourceIsBitmap) {
    sourceBits = readAlongside(dest, source.dc, source.bitmap, ScratchSlot::Second, !maskIsBitmap);
    if (sourceBits == nullptr) return -1;
  }
  const uint8_t* maskBits;
  if constexpr (maskIsBitmap) {
    maskBits = readAlongside(dest, mask.dc, mask.bitmap, ScratchSlot::Third, true);
    if (maskBits == nullptr) return -1;
  } else {
    maskBits = mask.bytes;
  }

  const Picture<Pixel24> picture = dest.picture(bits);
  if constexpr (sourceIsBitmap) {
    const ptrdiff_t stride = picture.stride();
    composite(picture, maskBits,
              [sourceBits, stride](int32_t y, size_t x, size_t n, Pixel32* to) {
                rows::widen24(sourceBits + static_cast<ptrdiff_t>(y) * stride + 3 * x, reinterpret_cast<uint8_t*>(to), n);
              },
              opacity, mode);
  } else {
    const Pixel24 c = colourOf(source.color);
    const Pixel32 colour{c.blue, c.green, c.red, 0};
    composite(picture, maskBits,
              [&colour](int32_t, size_t, size_t n, Pixel32* to) { std::fill(to, to + n, colour); }, opacity, mode);
  }

  if (out.kind == Kind::Bitmap) dest.write(hdc, bitmap, bits);
  else dest.present(out.dc, out.x, out.y, out.width, out.height, bits);
  return 1;
}

Output toDevice(Kind kind, DeviceContext dc, int32_t x, int32_t y, int32_t width, int32_t height,
                uint8_t* pixels = nullptr) {
  return Output{kind, dc, x, y, width, height, pixels};
}

}  // namespace
}  // namespace effects

using namespace effects;

extern "C" {

EFFECTS_API int32_t EFFECTS_CALL VexoMask(void* hdc, void* bitmap, void* maskDC, void* maskBitmap, void* sourceDC, void* sourceBitmap, int32_t opacity, int32_t mode) { const FloatEnvironment env; return maskComposite(hdc, bitmap, MaskFromBitmap{maskDC, maskBitmap}, FromBitmap{sourceDC, sourceBitmap}, opacity, mode, Output{Kind::Bitmap}); }
EFFECTS_API int32_t EFFECTS_CALL VexoMaskColor(void* hdc, void* bitmap, void* maskDC, void* maskBitmap, uint32_t color, int32_t opacity, int32_t mode) { const FloatEnvironment env; return maskComposite(hdc, bitmap, MaskFromBitmap{maskDC, maskBitmap}, FromColour{color}, opacity, mode, Output{Kind::Bitmap}); }
EFFECTS_API int32_t EFFECTS_CALL VexoMaskArray(void* hdc, void* bitmap, const uint8_t* maskArray, void* sourceDC, void* sourceBitmap, int32_t opacity, int32_t mode) { const FloatEnvironment env; return maskComposite(hdc, bitmap, MaskFromArray{maskArray}, FromBitmap{sourceDC, sourceBitmap}, opacity, mode, Output{Kind::Bitmap}); }
EFFECTS_API int32_t EFFECTS_CALL VexoMaskArrayColor(void* hdc, void* bitmap, const uint8_t* maskArray, uint32_t color, int32_t opacity, int32_t mode) { const FloatEnvironment env; return maskComposite(hdc, bitmap, MaskFromArray{maskArray}, FromColour{color}, opacity, mode, Output{Kind::Bitmap}); }

EFFECTS_API int32_t EFFECTS_CALL VexoMaskDIB(void* outputDC, int32_t x, int32_t y, int32_t width, int32_t height, void* hdc, void* bitmap, void* maskDC, void* maskBitmap, void* sourceDC, void* sourceBitmap, int32_t opacity, int32_t mode) { const FloatEnvironment env; return maskComposite(hdc, bitmap, MaskFromBitmap{maskDC, maskBitmap}, FromBitmap{sourceDC, sourceBitmap}, opacity, mode, toDevice(Kind::Device, outputDC, x, y, width, height)); }
EFFECTS_API int32_t EFFECTS_CALL VexoMaskColorDIB(void* outputDC, int32_t x, int32_t y, int32_t width, int32_t height, void* hdc, void* bitmap, void* maskDC, void* maskBitmap, uint32_t color, int32_t opacity, int32_t mode) { const FloatEnvironment env; return maskComposite(hdc, bitmap, MaskFromBitmap{maskDC, maskBitmap}, FromColour{color}, opacity, mode, toDevice(Kind::Device, outputDC, x, y, width, height)); }
EFFECTS_API int32_t EFFECTS_CALL VexoMaskArrayDIB(void* outputDC, int32_t x, int32_t y, int32_t width, int32_t height, void* hdc, void* bitmap, const uint8_t* maskArray, void* sourceDC, void* sourceBitmap, int32_t opacity, int32_t mode) { const FloatEnvironment env; return maskComposite(hdc, bitmap, MaskFromArray{maskArray}, FromBitmap{sourceDC, sourceBitmap}, opacity, mode, toDevice(Kind::Device, outputDC, x, y, width, height)); }
EFFECTS_API int32_t EFFECTS_CALL VexoMaskArrayColorDIB(void* outputDC, int32_t x, int32_t y, int32_t width, int32_t height, void* hdc, void* bitmap, const uint8_t* maskArray, uint32_t color, int32_t opacity, int32_t mode) { const FloatEnvironment env; return maskComposite(hdc, bitmap, MaskFromArray{maskArray}, FromColour{color}, opacity, mode, toDevice(Kind::Device, outputDC, x, y, width, height)); }

EFFECTS_API int32_t EFFECTS_CALL VexoMaskArray2xDIB(void* outputDC, int32_t x, int32_t y, int32_t width, int32_t height, void* hdc, void* bitmap, uint8_t* pixels, const uint8_t* maskArray, void* sourceDC, void* sourceBitmap, int32_t opacity, int32_t mode) { const FloatEnvironment env; return maskComposite(hdc, bitmap, MaskFromArray{maskArray}, FromBitmap{sourceDC, sourceBitmap}, opacity, mode, toDevice(Kind::Pixels, outputDC, x, y, width, height, pixels)); }
EFFECTS_API int32_t EFFECTS_CALL VexoMaskArray2xColorDIB(void* outputDC, int32_t x, int32_t y, int32_t width, int32_t height, void* hdc, void* bitmap, uint8_t* pixels, const uint8_t* maskArray, uint32_t color, int32_t opacity, int32_t mode) { const FloatEnvironment env; return maskComposite(hdc, bitmap, MaskFromArray{maskArray}, FromColour{color}, opacity, mode, toDevice(Kind::Pixels, outputDC, x, y, width, height, pixels)); }
EFFECTS_API int32_t EFFECTS_CALL VexoMaskArray2xColorDIBPointer(void* outputDC, int32_t x, int32_t y, int32_t width, int32_t height, void* hdc, void* bitmap, uint8_t* pixels, const uint8_t* maskArray, uint32_t color, int32_t opacity, int32_t mode) { const FloatEnvironment env; return maskComposite(hdc, bitmap, MaskFromArray{maskArray}, FromColour{color}, opacity, mode, toDevice(Kind::Pointer, outputDC, x, y, width, height, pixels)); }

}  // extern "C"
