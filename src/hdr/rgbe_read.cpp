// Reading RGBE files: the header parser, the new-style run-length scanline
// reader with its flat fallback, and the flat reader.
#include <cctype>
#include <cstring>
#include <vector>

#include "core/fpenv.h"
#include "hdr/rgbe_codec.h"

namespace effects::rgbe {
namespace {

constexpr int kLineSize = 128;  // lines of at most 127 characters per read

int32_t readError() {
  std::perror("RGBE read error");
  return -1;
}

int32_t formatError(const char* what) {
  std::fprintf(stderr, "RGBE bad file format: %s\n", what);
  return -1;
}

// Byte sources for the scanline reader. read() fills all n bytes or fails;
// a short read consumes what was there, as a buffered file read does.
struct FileSource {
  std::FILE* file;
  bool read(uint8_t* to, size_t n) { return std::fread(to, 1, n, file) == n; }
};

struct StreamSource {
  EffectsStream& stream;
  bool read(uint8_t* to, size_t n) {
    const size_t left = stream.position < stream.size ? stream.size - stream.position : 0;
    if (left < n) {
      stream.position = stream.size > stream.position ? stream.size : stream.position;
      return false;
    }
    std::memcpy(to, stream.bytes + stream.position, n);
    stream.position += n;
    return true;
  }
};

template <class Source>
int32_t readFlat(Source& src, float* data, int64_t count) {
  for (int64_t i = 0; i < count; ++i) {
    uint8_t q[4];
    if (!src.read(q, 4)) return 1;
    decode(q, data + 3 * i);
  }
  return 0;
}

// One plane of a run-length scanline: (count, value) codes until `width`
// bytes are filled. Runs are count - 128 copies (1..room); literals are
// count bytes (1..room) whose first is the code's second byte.
template <class Source>
bool readPlane(Source& src, uint8_t* plane, int32_t width) {
  int32_t at = 0;
  while (at < width) {
    uint8_t code[2];
    if (!src.read(code, 2)) return false;
    const int32_t room = width - at;
    if (code[0] > 128) {
      const int32_t run = code[0] - 128;
      if (run > room) return false;
      std::memset(plane + at, code[1], static_cast<size_t>(run));
      at += run;
    } else {
      const int32_t count = code[0];
      if (count == 0 || count > room) return false;
      plane[at] = code[1];
      if (count > 1 && !src.read(plane + at + 1, static_cast<size_t>(count - 1))) return false;
      at += count;
    }
  }
  return true;
}

// The pixels of a width x height float RGB picture, counted in 64 bits: 0 for
// a size below 1, -1 for a picture whose buffer cannot exist here.
int64_t floatPixels(int32_t width, int32_t height) {
  if (width < 1 || height < 1) return 0;
  if (pixelsOf<Rgb<float>>(width, height) == 0) return -1;
  return static_cast<int64_t>(width) * height;
}

template <class Source>
int32_t readScanlinesFrom(Source& src, float* data, int32_t width, int32_t height) {
  // Without a destination that can hold the picture nothing is read.
  const int64_t pixels = floatPixels(width, height);
  if (pixels < 0 || (pixels > 0 && data == nullptr)) return 1;
  if (width < 8 || width > 32767) return readFlat(src, data, pixels);
  std::vector<uint8_t> planes;  // red, green, blue, exponent: width bytes each
  for (int32_t y = 0; y < height; ++y) {
    float* row = data + static_cast<int64_t>(y) * width * 3;
    uint8_t start[4];
    if (!src.read(start, 4)) return 1;
    if (start[0] != 2 || start[1] != 2 || (start[2] & 0x80) != 0) {
      // Not run-length encoded: these four bytes are the first pixel and the
      // rest of the picture follows flat. The data is read, but the result
      // says the scanlines were not what was expected.
      decode(start, row);
      readFlat(src, row + 3, static_cast<int64_t>(width) * (height - y) - 1);
      return 1;
    }
    if (((start[2] << 8) | start[3]) != width) return 1;
    if (planes.empty()) planes.resize(static_cast<size_t>(width) * 4);
    for (int c = 0; c < 4; ++c)
      if (!readPlane(src, planes.data() + static_cast<size_t>(c) * width, width)) return 1;
    const uint8_t* r = planes.data();
    const uint8_t* g = r + width;
    const uint8_t* b = g + width;
    const uint8_t* e = b + width;
    for (int32_t x = 0; x < width; ++x) {
      const uint8_t q[4] = {r[x], g[x], b[x], e[x]};
      decode(q, row + 3 * x);
    }
  }
  return 0;
}

// One "%d" of scanf: optional blanks, an optional sign, at least one digit.
bool scanInt(const char*& p, int32_t* out) {
  while (std::isspace(static_cast<unsigned char>(*p))) ++p;
  const char* q = p;
  bool negative = false;
  if (*q == '+' || *q == '-') negative = (*q++ == '-');
  if (!std::isdigit(static_cast<unsigned char>(*q))) return false;
  int64_t v = 0;
  while (std::isdigit(static_cast<unsigned char>(*q))) {
    if (v <= INT32_MAX) v = v * 10 + (*q - '0');
    ++q;
  }
  if (negative) v = -v;
  *out = static_cast<int32_t>(clampTo<int64_t>(v, INT32_MIN, INT32_MAX));
  p = q;
  return true;
}

}  // namespace

int scanSizeLine(const char* line, int32_t* height, int32_t* width) {
  // "-Y %d +X %d": literals must match exactly, a blank matches any run of
  // white space (none included).
  const char* p = line;
  auto literal = [&p](char c) { return *p == c ? (++p, true) : false; };
  auto blanks = [&p] { while (std::isspace(static_cast<unsigned char>(*p))) ++p; };
  if (!literal('-') || !literal('Y')) return 0;
  blanks();
  if (!scanInt(p, height)) return 0;
  blanks();
  if (!literal('+') || !literal('X')) return 1;
  blanks();
  return scanInt(p, width) ? 2 : 1;
}

bool sizeFitsHost(int32_t width, int32_t height) {
  if (width < 1 || height < 1) return true;  // nothing to hold
  const uint64_t bytes = static_cast<uint64_t>(width) * static_cast<uint64_t>(height) * sizeof(Rgb<float>);
  return bytes <= kMaxPictureBytes;
}

int32_t readHeader(std::FILE* file, int32_t* width, int32_t* height) {
  char line[kLineSize];
  if (!std::fgets(line, kLineSize, file)) return readError();
  if (line[0] != '#' || line[1] != '?') return formatError("bad initial token");
  bool formatFound = false;
  for (;;) {
    if (!std::fgets(line, kLineSize, file)) return readError();
    if (line[0] == '\0' || line[0] == '\n') break;
    if (std::strcmp(line, "FORMAT=32-bit_rle_rgbe\n") == 0) formatFound = true;
  }
  if (!formatFound) return formatError("no FORMAT specifier found");
  if (!std::fgets(line, kLineSize, file)) return readError();
  if (scanSizeLine(line, height, width) < 2) return formatError("missing image size specifier");
  if (!sizeFitsHost(*width, *height)) return formatError("image size too large for this host");
  return 0;
}

int32_t readScanlines(std::FILE* file, float* data, int32_t width, int32_t height) {
  FileSource src{file};
  return readScanlinesFrom(src, data, width, height);
}

int32_t readScanlines(EffectsStream& stream, float* data, int32_t width, int32_t height) {
  if (stream.bytes == nullptr && stream.size > 0) return 1;  // no bytes where some are promised
  StreamSource src{stream};
  return readScanlinesFrom(src, data, width, height);
}

}  // namespace effects::rgbe

using namespace effects;

extern "C" {

EFFECTS_API int32_t EFFECTS_CALL RGBE_LoadHDR(const char* fileName, float* data, int32_t width, int32_t height) {
  const FloatEnvironment env;
  // No file name, or no destination for a picture of this size: nothing to do.
  if (fileName == nullptr || (width >= 1 && height >= 1 && (data == nullptr || pixelsOf<Rgb<float>>(width, height) == 0)))
    return 0;
  std::FILE* file = std::fopen(fileName, "rb");
  if (!file) { std::perror("RGBE read error"); return 0; }
  int32_t fileWidth = 0, fileHeight = 0;
  rgbe::readHeader(file, &fileWidth, &fileHeight);  // the caller's size is the one used
  rgbe::readScanlines(file, data, width, height);
  std::fclose(file);
  return 0;
}

EFFECTS_API int32_t EFFECTS_CALL RGBE_ReadPixels_RLE(EffectsStream* stream, float* data, int32_t width, int32_t height) { const FloatEnvironment env; return stream ? rgbe::readScanlines(*stream, data, width, height) : 1; }

EFFECTS_API double EFFECTS_CALL ConvertRGBEto128(uint8_t exponent) { const FloatEnvironment env; return rgbeScale(exponent); }

}  // extern "C"
