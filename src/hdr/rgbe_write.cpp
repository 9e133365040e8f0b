// Writing RGBE files from the three layouts, and the in-memory encoders.
#include "core/fpenv.h"
#include "core/layout.h"
#include "core/picture.h"
#include "core/rgbe.h"
#include "hdr/rgbe_codec.h"
#include "platform/replacing_file.h"

namespace effects {
namespace {

// One picture element as the float the file encoder takes: 8-bit values
// times 1/255 in single precision, 16-bit values read as signed and times
// 1/32767 in double (stored as float), floats as they are.
inline float scratchValue(uint8_t v) { return v * k255f; }
inline float scratchValue(uint16_t v) { return static_cast<float>(static_cast<int16_t>(v) * k32767); }
inline float scratchValue(float v) { return v; }

// The whole file goes to a temporary file beside fileName, which replaces it
// only once every byte is written: 0 then, -1 when anything failed (an
// existing file stays as it was). A picture the sizes ask for without its
// pixels or its scratch room, or no file name, is refused before anything is
// touched.
template <class L>
int32_t writeFile(const char* fileName, int32_t width, int32_t height, const typename L::Pixel* pixels,
                  float* scratch) {
  const auto picture = packedPicture(width, height, pixels);
  const auto floats = packedPicture(width, height, reinterpret_cast<Rgb<float>*>(scratch));
  const bool hasPixels = width >= 1 && height >= 1;
  if (fileName == nullptr || (hasPixels && (picture.empty() || floats.empty()))) return -1;
  platform::ReplacingFile out(fileName);
  if (!out.ok()) return -1;

  out.print("#?%s\n", "RADIANCE");
  out.print("#%s\n", " Made with 100% Vexocraft HDR");
  out.print("FORMAT=32-bit_rle_rgbe\n");
  out.print("EXPOSURE=          1.0000000000000\n\n");
  out.print("-Y %d +X %d\n", height, width);

  forEachPixelPair(picture, floats, [](const typename L::Pixel& p, Rgb<float>& f) {
    f = {scratchValue(p.red), scratchValue(p.green), scratchValue(p.blue)};
  });

  // Flat pixels, although the header names the run-length format: readers
  // of the format take a scanline that does not start with 2, 2 as flat.
  uint8_t chunk[4096];
  size_t used = 0;
  forEachPixel(floats, [&](const Rgb<float>& v) {
    rgbe::encodeTruncating(v.red, v.green, v.blue, chunk + used);
    used += 4;
    if (used == sizeof chunk) {
      out.write(chunk, used);
      used = 0;
    }
  });
  out.write(chunk, used);
  return out.commit();
}

// Red is element 2, green 1, blue 0; the mask is ignored. 8-bit values are
// scaled by 1/255 in double and handed to the encoder as floats, so 255
// becomes exactly 1.0f (rgbe_codec.h).
template <class L>
void toRgbe(int32_t elementCount, const typename L::Pixel* pixels, uint8_t* rgbe) {
  const size_t n = pixelsForCount<typename L::Pixel>(elementCount);
  if (pixels == nullptr || rgbe == nullptr || n == 0) return;
  const FloatEnvironment env;
  rgbe::encodeRounding(pixels, n, reinterpret_cast<RgbeQuad*>(rgbe));
}

}  // namespace
}  // namespace effects

using namespace effects;

extern "C" {

EFFECTS_API int32_t EFFECTS_CALL RGBE_WriteHeader_32(const char* fileName, int32_t width, int32_t height, const Pixel32* pixels, float* scratch) { const FloatEnvironment env; return writeFile<Layout32>(fileName, width, height, pixels, scratch); }
EFFECTS_API int32_t EFFECTS_CALL RGBE_WriteHeader_64(const char* fileName, int32_t width, int32_t height, const Pixel64* pixels, float* scratch) { const FloatEnvironment env; return writeFile<Layout64>(fileName, width, height, pixels, scratch); }
EFFECTS_API int32_t EFFECTS_CALL RGBE_WriteHeader_128(const char* fileName, int32_t width, int32_t height, const Pixel128* pixels, float* scratch) { const FloatEnvironment env; return writeFile<Layout128>(fileName, width, height, pixels, scratch); }

EFFECTS_API int32_t EFFECTS_CALL Convert128toRGBE(int32_t n, const Pixel128* pixels, uint8_t* rgbe) { const FloatEnvironment env; toRgbe<Layout128>(n, pixels, rgbe); return n; }
EFFECTS_API int32_t EFFECTS_CALL Convert32toRGBE(int32_t n, const Pixel32* pixels, uint8_t* rgbe) { const FloatEnvironment env; toRgbe<Layout32>(n, pixels, rgbe); return n; }

}  // extern "C"
