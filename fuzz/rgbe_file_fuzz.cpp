// A whole file as RGBE_LoadHDR reads it: the header parser on a stream, then
// the scanline reader with the parsed size (bounded), into a buffer of
// exactly that size. The same bytes after the header then go through the
// exported stream reader, which must fill the buffer identically.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "hdr/rgbe_codec.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  std::FILE* f = fmemopen(const_cast<uint8_t*>(data), size, "rb");
  if (!f) return 0;
  int32_t width = 0, height = 0;
  const int32_t parsed = effects::rgbe::readHeader(f, &width, &height);
  if (parsed != 0 || width < 1 || height < 1 || width > 40000 || static_cast<int64_t>(width) * height > 65536) {
    width = 16;
    height = 4;
  }
  const long at = std::ftell(f);
  const size_t floats = static_cast<size_t>(width) * static_cast<size_t>(height) * 3;
  std::vector<float> fromFile(floats, -1.0f), fromStream(floats, -1.0f);
  const int32_t r1 = effects::rgbe::readScanlines(f, fromFile.data(), width, height);
  std::fclose(f);
  if (at < 0 || static_cast<size_t>(at) > size) std::abort();
  EffectsStream s{data, size, static_cast<size_t>(at)};
  const int32_t r2 = RGBE_ReadPixels_RLE(&s, fromStream.data(), width, height);
  if (r1 != r2 || (r1 != 0 && r1 != 1) || s.position > size) std::abort();
  if (std::memcmp(fromFile.data(), fromStream.data(), floats * sizeof(float)) != 0) std::abort();
  return 0;
}
