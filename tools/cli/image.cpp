#include "cli/image.h"

#include <cmath>
#include <cstring>
#include <stdexcept>

#include "effects/effects.h"

namespace effects::cli {

size_t elementBytes(Depth d) {
  switch (d) {
    case Depth::P32: return 1;
    case Depth::P128: return 4;
    default: return 2;
  }
}

double fullOf(Depth d) {
  switch (d) {
    case Depth::P32: return 255.0;
    case Depth::P64: return 32767.0;
    case Depth::W16: return 65535.0;
    default: return 1.0;
  }
}

int layoutOf(Depth d) {
  switch (d) {
    case Depth::P32: return 32;
    case Depth::P128: return 128;
    default: return 64;
  }
}

Depth depthOfLayout(int layout) {
  return layout == 32 ? Depth::P32 : layout == 64 ? Depth::P64 : Depth::P128;
}

Image::Image(int32_t w, int32_t h, Depth d) : width(w), height(h), depth(d) {
  bytes.assign(pixels() * 4 * elementBytes(d), 0);
}

void checkSize(int64_t width, int64_t height, const std::string& what) {
  if (width < 1 || height < 1)
    throw std::runtime_error(what + ": a picture needs at least one pixel (" + std::to_string(width) + "x" +
                             std::to_string(height) + ")");
  if (width * height > INT32_MAX / 4)
    throw std::runtime_error(what + ": " + std::to_string(width) + "x" + std::to_string(height) +
                             " is too large (the exports take at most 536870911 pixels)");
}

namespace {

// Element i of a picture as a double, and storing one back.
double load(const Image& im, size_t i) {
  switch (im.depth) {
    case Depth::P32: return im.bytes[i];
    case Depth::P128: { float f; std::memcpy(&f, &im.bytes[i * 4], 4); return f; }
    default: {
      uint16_t v;
      std::memcpy(&v, &im.bytes[i * 2], 2);
      return im.depth == Depth::P64 && v > 32767 ? 32767.0 : v;
    }
  }
}

void store(Image& im, size_t i, double v) {
  if (im.depth == Depth::P128) {
    const float f = static_cast<float>(v);
    std::memcpy(&im.bytes[i * 4], &f, 4);
    return;
  }
  if (im.depth == Depth::P32) {
    im.bytes[i] = static_cast<uint8_t>(v);
  } else {
    const auto w = static_cast<uint16_t>(v);
    std::memcpy(&im.bytes[i * 2], &w, 2);
  }
}

}  // namespace

Image convert(const Image& image, Depth to) {
  if (image.depth == to) return image;
  Image out(image.width, image.height, to);
  const size_t n = image.pixels() * 4;
  const double from = fullOf(image.depth), full = fullOf(to);
  const bool fromFloat = image.depth == Depth::P128, toFloat = to == Depth::P128;
  for (size_t i = 0; i < n; ++i) {
    const double v = load(image, i);
    if (toFloat) {
      store(out, i, v / from);
    } else if (fromFloat) {
      const double c = std::isnan(v) ? 0.0 : v < 0.0 ? 0.0 : v > 1.0 ? 1.0 : v;
      store(out, i, std::nearbyint(c * full));
    } else {
      // The full values are odd, so v * full / from is never halfway.
      store(out, i, std::nearbyint(v * full / from));
    }
  }
  return out;
}

bool Image::opaque() const {
  const size_t n = pixels();
  const double full = fullOf(depth);
  for (size_t p = 0; p < n; ++p)
    if (load(*this, p * 4 + 3) != full) return false;
  return true;
}

namespace {

size_t sampleBytes(SampleType t) { return t == SampleType::U8 ? 1 : t == SampleType::U16 ? 2 : 4; }
Depth depthOfSamples(SampleType t) {
  return t == SampleType::U8 ? Depth::P32 : t == SampleType::U16 ? Depth::W16 : Depth::P128;
}

}  // namespace

std::vector<uint8_t> toSamples(const Image& image, SampleType type, SampleOrder order) {
  const size_t n = image.pixels();
  if (order == SampleOrder::Rgbe) {
    const Image f = convert(image, Depth::P128);
    std::vector<uint8_t> out(n * 4);
    // The element count fits: checkSize bounds every picture.
    Convert128toRGBE(static_cast<int32_t>(n * 4), f.as<Pixel128>(), out.data());
    return out;
  }
  const Image im = convert(image, depthOfSamples(type));
  const size_t e = sampleBytes(type);
  std::vector<uint8_t> out(n * 3 * e);
  for (size_t p = 0; p < n; ++p) {
    const uint8_t* px = &im.bytes[p * 4 * e];
    uint8_t* s = &out[p * 3 * e];
    // Pixels are blue, green, red; RGB samples reverse that.
    for (size_t c = 0; c < 3; ++c) {
      const size_t from = order == SampleOrder::Bgr ? c : 2 - c;
      std::memcpy(s + c * e, px + from * e, e);
    }
  }
  return out;
}

Image fromSamples(const uint8_t* samples, int32_t width, int32_t height, SampleType type, SampleOrder order) {
  if (order == SampleOrder::Rgbe) {
    Image out(width, height, Depth::P128);
    auto* px = out.as<Pixel128>();
    for (size_t p = 0; p < out.pixels(); ++p) {
      const uint8_t* q = samples + p * 4;
      const double scale = q[3] == 0 ? 0.0 : ConvertRGBEto128(q[3]);
      px[p] = Pixel128{static_cast<float>((q[2] + 0.5) * scale), static_cast<float>((q[1] + 0.5) * scale),
                       static_cast<float>((q[0] + 0.5) * scale), 1.0f};
    }
    return out;
  }
  const Depth d = depthOfSamples(type);
  Image out(width, height, d);
  const size_t e = sampleBytes(type);
  for (size_t p = 0; p < out.pixels(); ++p) {
    uint8_t* px = &out.bytes[p * 4 * e];
    const uint8_t* s = samples + p * 3 * e;
    for (size_t c = 0; c < 3; ++c) {
      const size_t to = order == SampleOrder::Bgr ? c : 2 - c;
      std::memcpy(px + to * e, s + c * e, e);
    }
    store(out, p * 4 + 3, fullOf(d));
  }
  return out;
}

}  // namespace effects::cli
