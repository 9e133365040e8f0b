// A small host for the interoperability check.
//   rgbe_tool write FILE WIDTH HEIGHT   reads WIDTH x HEIGHT "r g b" triples
//                                       from standard input and saves them
//                                       with RGBE_WriteHeader_128
//   rgbe_tool read FILE WIDTH HEIGHT    loads FILE with RGBE_LoadHDR and
//                                       prints one "r g b" line per pixel
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "effects/effects.h"

int main(int argc, char** argv) {
  if (argc != 5) {
    std::fprintf(stderr, "usage: rgbe_tool write|read FILE WIDTH HEIGHT\n");
    return 2;
  }
  const int32_t width = std::atoi(argv[3]);
  const int32_t height = std::atoi(argv[4]);
  if (width < 1 || height < 1) return 2;
  const size_t n = static_cast<size_t>(width) * static_cast<size_t>(height);
  std::vector<float> rgb(n * 3, 0.0f);
  if (std::strcmp(argv[1], "write") == 0) {
    std::vector<Pixel128> pixels(n);
    for (auto& p : pixels) {
      if (std::scanf("%f %f %f", &p.red, &p.green, &p.blue) != 3) {
        std::fprintf(stderr, "rgbe_tool: expected %zu pixels\n", n);
        return 1;
      }
      p.mask = 1.0f;
    }
    return RGBE_WriteHeader_128(argv[2], width, height, pixels.data(), rgb.data());
  }
  if (std::strcmp(argv[1], "read") == 0) {
    RGBE_LoadHDR(argv[2], rgb.data(), width, height);
    for (size_t i = 0; i < n; ++i) std::printf("%.9g %.9g %.9g\n", rgb[3 * i], rgb[3 * i + 1], rgb[3 * i + 2]);
    return 0;
  }
  return 2;
}
