// A picture as the command-line tool holds it between files and exports:
// width x height pixels of four elements (blue, green, red, mask) in one of
// the library's three layouts, or as the 16-bit samples of a 16-bit PNG file
// (full = 65535) so that such a file reaches a 48-bit buffer unchanged.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace effects::cli {

enum class Depth { P32, P64, P128, W16 };

// Bytes of one element, the full value, and the export layout (32, 64 or
// 128; 64 for W16, which converts to the 15-bit layout).
size_t elementBytes(Depth d);
double fullOf(Depth d);
int layoutOf(Depth d);
Depth depthOfLayout(int layout);

struct Image {
  int32_t width = 0, height = 0;
  Depth depth = Depth::P32;
  std::vector<uint8_t> bytes;  // width * height * 4 elements

  Image() = default;
  Image(int32_t w, int32_t h, Depth d);
  size_t pixels() const { return static_cast<size_t>(width) * static_cast<size_t>(height); }
  template <class T>
  T* as() { return reinterpret_cast<T*>(bytes.data()); }
  template <class T>
  const T* as() const { return reinterpret_cast<const T*>(bytes.data()); }
  // Every mask element is full.
  bool opaque() const;
};

// The largest picture the exports can take: its element count
// (width * height * 4) must fit a signed 32-bit value.
void checkSize(int64_t width, int64_t height, const std::string& what);

// The same picture in another depth. Integer elements scale by the ratio of
// the full values, rounded to nearest; integers become floats as e / full;
// floats become integers clamped to 0..1 first (NaN gives 0), then
// e * full rounded to nearest, ties to even. A 15-bit element above 32767
// counts as 32767.
Image convert(const Image& image, Depth to);

// 3-channel (red, green, blue; blue, green, red for Order Bgr) or RGBE
// samples: to and from a picture. U8 samples go with the 8-bit layout, U16
// with 16-bit file samples, float with the float layout; RGBE goes through
// the library's encoder (Convert128toRGBE) and file decoder ((m + 0.5) x
// 2^(e - 136)). Pictures made from samples are fully selected.
enum class SampleType { U8, U16, F32 };
enum class SampleOrder { Rgb, Bgr, Rgbe };
std::vector<uint8_t> toSamples(const Image& image, SampleType type, SampleOrder order);
Image fromSamples(const uint8_t* samples, int32_t width, int32_t height, SampleType type, SampleOrder order);

}  // namespace effects::cli
