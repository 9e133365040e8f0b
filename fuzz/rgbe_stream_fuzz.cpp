// The exported scanline reader with a size taken from the first three bytes
// (width 0..32999 around both flat-reading limits, height 0..7), over the
// rest of the input, into a buffer of exactly width x height pixels.
//
// The buffer is allocated without being filled: the reader writes only what
// the (short) input lets it, and value-initialising up to 2.7 MB per run
// (a loop instrumented for coverage) once took four fifths of the time.
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "hdr/rgbe_codec.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 3) return 0;
  const int32_t width = ((data[0] << 8) | data[1]) % 33000;
  const int32_t height = data[2] % 8;
  const std::unique_ptr<float[]> pixels(new float[static_cast<size_t>(width) * static_cast<size_t>(height) * 3]);
  EffectsStream s{data + 3, size - 3, 0};
  const int32_t result = RGBE_ReadPixels_RLE(&s, pixels.get(), width, height);
  if ((result != 0 && result != 1) || s.position > s.size) std::abort();
  return 0;
}
