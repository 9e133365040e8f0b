// The frame of the exports that adjust a device-context bitmap: describe the
// source bitmap (-1 when GDI cannot), read it as 24-bit rows (0 when it
// cannot be read, or there is no memory to read it into), change the rows,
// write them to the destination bitmap (the same one for the in-place
// exports) and return the scan lines read.
#pragma once

#include <cstdint>

#include "core/layout.h"
#include "core/picture.h"
#include "core/pixel_rows.h"
#include "core/scratch.h"
#include "platform/dib24.h"

namespace effects::devicecontext {

using platform::Bitmap;
using platform::DeviceContext;
using platform::Dib24;

// The order of the rows handed over: as GDI delivers them for the bitmap's
// height (bottom row first), or top row first, as the picture is seen.
enum class Rows { AsDelivered, TopDown };

// The frame in full: `change(picture)` gets the rows in the order asked for
// and returns false when it could not work (no memory for its own buffers):
// then nothing is written and the result is 0. The picture lives in scratch
// slot `slot`.
template <class F>
int32_t adjustBitmap(DeviceContext dcOut, Bitmap bmOut, DeviceContext dcIn, Bitmap bmIn, F&& change,
                     Rows order = Rows::AsDelivered, ScratchSlot slot = ScratchSlot::First) {
  Dib24 dib(dcIn, bmIn);
  if (!dib.described()) return -1;
  if (order == Rows::TopDown) dib.topDown();
  uint8_t* bits = dib.scratch(slot);
  if (bits == nullptr) return 0;
  const int32_t lines = dib.read(bits);
  if (lines == 0) return 0;
  if (!change(dib.picture(bits))) return 0;
  dib.write(dcOut, bmOut, bits);
  return lines;
}

// Widens a 24-bit row to 32-bit pixels (mask 0) and back.
inline void widen(const Pixel24* from, Pixel32* to, int32_t width) {
  rows::widen24(reinterpret_cast<const uint8_t*>(from), reinterpret_cast<uint8_t*>(to),
                width < 0 ? 0u : static_cast<size_t>(width));
}
inline void narrow(const Pixel32* from, Pixel24* to, int32_t width) {
  rows::narrow24(reinterpret_cast<const uint8_t*>(from), reinterpret_cast<uint8_t*>(to),
                 width < 0 ? 0u : static_cast<size_t>(width));
}

// The frame around a 32-bit buffer export's own loop, for the per-pixel
// adjustments: each row is widened, a run of at most kRun pixels at a time,
// into a buffer (scratch slot Second), handed to `change(pixels, count)` and
// narrowed back, so the device-context export and the buffer export run the
// very same arithmetic (and an element count of 4 x count stays far inside
// 32 bits).
inline constexpr int32_t kRun = 4096;

template <class F>
int32_t adjustRowsAs32(DeviceContext dcOut, Bitmap bmOut, DeviceContext dcIn, Bitmap bmIn, F&& change) {
  return adjustBitmap(dcOut, bmOut, dcIn, bmIn, [&](const Picture<Pixel24>& pic) {
    const int32_t most = pic.width() < kRun ? pic.width() : kRun;
    auto* run = static_cast<Pixel32*>(scratchBytes(static_cast<size_t>(most) * sizeof(Pixel32), ScratchSlot::Second));
    if (run == nullptr) return false;
    for (int32_t y = 0; y < pic.height(); ++y) {
      Pixel24* row = pic.row(y);
      for (int64_t x = 0; x < pic.width(); x += most) {
        const auto count = static_cast<int32_t>(pic.width() - x < most ? pic.width() - x : most);
        widen(row + x, run, count);
        change(run, count);
        narrow(run, row + x, count);
      }
    }
    return true;
  });
}

}  // namespace effects::devicecontext
