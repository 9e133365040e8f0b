// The VXL layer file: a 16-byte little-endian header, then the pixel buffer
// exactly as it lies in memory.
#include <cstdio>

#include "core/layout.h"
#include "core/numeric.h"
#include "core/picture.h"

namespace effects {
namespace {

void put16(uint8_t* at, uint32_t v) {
  at[0] = static_cast<uint8_t>(v);
  at[1] = static_cast<uint8_t>(v >> 8);
}
void put32(uint8_t* at, uint32_t v) {
  put16(at, v);
  put16(at + 2, v >> 16);
}

template <class L>
void saveVxl(const char* fileName, int32_t width, int32_t height, int32_t info1, int32_t info2,
             const typename L::Pixel* pixels) {
  // A quarter of the element count width * 4 * height, formed in wrapping
  // 32-bit arithmetic: the pixels go out in four pieces of n elements.
  const int32_t n = divTrunc(wrappedElementCount(static_cast<uint32_t>(width), static_cast<uint32_t>(height)), 4);
  std::FILE* f = std::fopen(fileName, "wb");
  if (!f) return;
  // Signatures first, then the caller's two values, then the size: not the
  // order of the arguments.
  uint8_t header[16];
  put16(header, 1976);
  put16(header + 2, 1000);
  put16(header + 4, static_cast<uint32_t>(info1));
  put16(header + 6, static_cast<uint32_t>(info2));
  put32(header + 8, static_cast<uint32_t>(width));
  put32(header + 12, static_cast<uint32_t>(height));
  std::fwrite(header, 1, sizeof header, f);
  if (n > 0) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(pixels);
    const size_t piece = static_cast<size_t>(n) * sizeof(typename L::Element);
    for (int k = 0; k < 4; ++k) std::fwrite(bytes + k * piece, sizeof(typename L::Element), static_cast<size_t>(n), f);
  }
  std::fclose(f);
}

}  // namespace
}  // namespace effects

using namespace effects;

extern "C" {

EFFECTS_API int32_t EFFECTS_CALL VexoSaveVXLFile32(const char* fileName, int32_t width, int32_t height, int32_t info1, int32_t info2, const Pixel32* pixels) { saveVxl<Layout32>(fileName, width, height, info1, info2, pixels); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoSaveVXLFile64(const char* fileName, int32_t width, int32_t height, int32_t info1, int32_t info2, const Pixel64* pixels) { saveVxl<Layout64>(fileName, width, height, info1, info2, pixels); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoSaveVXLFile128(const char* fileName, int32_t width, int32_t height, int32_t info1, int32_t info2, const Pixel128* pixels) { saveVxl<Layout128>(fileName, width, height, info1, info2, pixels); return 0; }

}  // extern "C"
