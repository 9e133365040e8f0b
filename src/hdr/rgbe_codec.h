// The RGBE pixel codecs and the readers shared by the file loader, the stream
// export, the tests and the fuzz targets.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstdio>

#include "core/numeric.h"
#include "core/picture.h"
#include "core/rgbe.h"
#include "effects/effects.h"

namespace effects::rgbe {

// The shared scale of one float triple: v is the largest of r, g, b (red
// first; only a strictly greater value replaces it). Returns false when the
// pixel is black (v < 1e-32). Otherwise v = f x 2^e with f in [0.5, 1) and
// s = f x 256 / v, which is 2^(8 - e) for every finite v. Infinity and NaN
// give e = 0 and a NaN scale, so their mantissas come out as 0 and the
// exponent byte as 128.
inline bool sharedScale(float r, float g, float b, double& s, int& e) {
  float v = r;
  if (g > v) v = g;
  if (b > v) v = b;
  if (v < 1e-32) return false;
  e = 0;
  const double f = std::isfinite(v) ? std::frexp(v, &e) : static_cast<double>(v);
  s = f * 256 / v;
  return true;
}

// The file encoder: mantissas truncated toward zero, low byte kept.
inline void encodeTruncating(float r, float g, float b, uint8_t out[4]) {
  double s;
  int e;
  if (!sharedScale(r, g, b, s, e)) {
    out[0] = out[1] = out[2] = out[3] = 0;
    return;
  }
  out[0] = static_cast<uint8_t>(static_cast<uint32_t>(truncToInt32(r * s)));
  out[1] = static_cast<uint8_t>(static_cast<uint32_t>(truncToInt32(g * s)));
  out[2] = static_cast<uint8_t>(static_cast<uint32_t>(truncToInt32(b * s)));
  out[3] = static_cast<uint8_t>(e + 128);
}

// The memory encoder: mantissas rounded to nearest (ties to even), low byte
// kept, so 255.5 and above wrap to 0. That wrap is intended.
inline void encodeRounding(float r, float g, float b, uint8_t out[4]) {
  double s;
  int e;
  if (!sharedScale(r, g, b, s, e)) {
    out[0] = out[1] = out[2] = out[3] = 0;
    return;
  }
  out[0] = roundLowByte(r * s);
  out[1] = roundLowByte(g * s);
  out[2] = roundLowByte(b * s);
  out[3] = static_cast<uint8_t>(e + 128);
}

// The file decoder: (m + 0.5) x 2^(e - 136) in double, stored as float; an
// exponent byte of 0 is black. The half step centres each value in its
// mantissa interval, so decoding is deliberately not the encoders' inverse.
inline void decode(const uint8_t in[4], float out[3]) {
  if (in[3] == 0) {
    out[0] = out[1] = out[2] = 0.0f;
    return;
  }
  const double scale = rgbeScale(in[3]);
  out[0] = static_cast<float>((in[0] + 0.5) * scale);
  out[1] = static_cast<float>((in[1] + 0.5) * scale);
  out[2] = static_cast<float>((in[2] + 0.5) * scale);
}

// The header: the "#?" line, lines up to the blank one (one of them must be
// the exact FORMAT line), then "-Y <height> +X <width>". Problems are printed
// to the standard error stream and give -1; success gives 0 and the size.
int32_t readHeader(std::FILE* file, int32_t* width, int32_t* height);

// Scans a size line as "-Y %d +X %d" would: returns how many numbers were
// converted (0, 1 or 2). Numbers beyond 32 bits saturate.
int scanSizeLine(const char* line, int32_t* height, int32_t* width);

// The scanline readers over a buffered file and over the library's stream.
int32_t readScanlines(std::FILE* file, float* data, int32_t width, int32_t height);
int32_t readScanlines(EffectsStream& stream, float* data, int32_t width, int32_t height);

}  // namespace effects::rgbe
