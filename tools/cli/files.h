// Picture files: PNG (libpng; 1- to 16-bit grey, RGB, palette, with or
// without alpha) in and out, Radiance .hdr in and out through the library's
// RGBE exports, and the VXL layer file out through its layer-file export.
// Every writer writes a temporary file beside the target and renames it into
// place, so a failed write never leaves a half-written file.
#pragma once

#include <string>

#include "cli/image.h"

namespace effects::cli {

struct Loaded {
  Image image;
  bool alpha = false;  // the file has an alpha channel (or transparency)
  int bits = 8;        // 8 or 16 for PNG, 32 for .hdr
};

enum class Format { Png, Hdr, Vxl };

// The format of a file name from its extension (.png, .hdr, .vxl; any case);
// throws for anything else.
Format formatOf(const std::string& path);

// Reads a PNG or .hdr file: 8-bit (and smaller) PNG as the 8-bit layout,
// 16-bit PNG as 16-bit samples, .hdr as the float layout (mask full).
Loaded readPicture(const std::string& path);

struct WriteOptions {
  int pngBits = 0;      // 8 or 16; 0: 8 for the 8-bit layout, else 16
  bool alpha = false;   // write the mask as alpha even if every pixel is opaque
};

// Writes the picture; the format follows the extension. PNG gets an alpha
// channel when options.alpha or when some mask element is not full.
void writePicture(const std::string& path, const Image& image, const WriteOptions& options);

// Throws when the folder `path` would be written into does not exist.
void checkFolder(const std::string& path);
// A temporary name beside `path` for a file that is renamed into place.
std::string temporaryBeside(const std::string& path);
// Renames `from` to `to`, replacing `to`; removes `from` and throws on failure.
void commit(const std::string& from, const std::string& to);

}  // namespace effects::cli
