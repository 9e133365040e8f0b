#include "cli/files.h"

#include <png.h>

#include <algorithm>
#include <atomic>
#include <cctype>
#include <cerrno>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <vector>

#include "effects/effects.h"

#if defined(_WIN32)
#include <process.h>
#define EFFECTS_GETPID _getpid
#else
#include <unistd.h>
#define EFFECTS_GETPID getpid
#endif

namespace effects::cli {

namespace fs = std::filesystem;

namespace {

struct FileCloser {
  void operator()(std::FILE* f) const { std::fclose(f); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

File openFile(const std::string& path, const char* mode) {
  File f(std::fopen(path.c_str(), mode));
  if (!f) throw std::runtime_error(path + ": " + std::strerror(errno));
  return f;
}

std::string lower(std::string s) {
  std::transform(s.begin(), s.end(), s.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return s;
}

// libpng reports errors by longjmp; the message is kept here and the C++
// objects live outside the function that calls setjmp.
struct PngError {
  char message[200] = "";
};

void pngError(png_structp png, png_const_charp message) {
  auto* e = static_cast<PngError*>(png_get_error_ptr(png));
  std::snprintf(e->message, sizeof e->message, "%s", message);
  png_longjmp(png, 1);
}
void pngWarning(png_structp, png_const_charp) {}

struct PngRead {
  png_structp png = nullptr;
  png_infop info = nullptr;
  ~PngRead() { png_destroy_read_struct(&png, &info, nullptr); }
};

// Reads the header (first call, rows == nullptr) or the rows; false on an
// error, with the message in `error`.
bool pngReadStep(PngRead& r, std::FILE* file, PngError& error, png_uint_32* w, png_uint_32* h, int* bits,
                 bool* alpha, png_bytepp rows) {
  if (setjmp(png_jmpbuf(r.png))) return false;
  if (!rows) {
    png_init_io(r.png, file);
    png_read_info(r.png, r.info);
    const int type = png_get_color_type(r.png, r.info);
    *bits = png_get_bit_depth(r.png, r.info) == 16 ? 16 : 8;
    *alpha = (type & PNG_COLOR_MASK_ALPHA) != 0 || png_get_valid(r.png, r.info, PNG_INFO_tRNS);
    *w = png_get_image_width(r.png, r.info);
    *h = png_get_image_height(r.png, r.info);
    // Everything becomes blue, green, red, alpha in the file's depth (8 or
    // 16), 16-bit samples in the machine's byte order.
    png_set_expand(r.png);
    png_set_gray_to_rgb(r.png);
    png_set_filler(r.png, *bits == 16 ? 0xffff : 0xff, PNG_FILLER_AFTER);
    png_set_bgr(r.png);
    if (*bits == 16) png_set_swap(r.png);
    png_set_interlace_handling(r.png);
    png_read_update_info(r.png, r.info);
    (void)error;
    return true;
  }
  png_read_image(r.png, rows);
  png_read_end(r.png, nullptr);
  return true;
}

Loaded readPng(const std::string& path) {
  File file = openFile(path, "rb");
  uint8_t signature[8] = {};
  if (std::fread(signature, 1, 8, file.get()) != 8 || png_sig_cmp(signature, 0, 8) != 0)
    throw std::runtime_error(path + ": not a PNG file");
  PngError error;
  PngRead r;
  r.png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &error, pngError, pngWarning);
  if (!r.png || !(r.info = png_create_info_struct(r.png))) throw std::runtime_error("libpng could not start");
  png_set_sig_bytes(r.png, 8);
  png_uint_32 w = 0, h = 0;
  int bits = 8;
  bool alpha = false;
  if (!pngReadStep(r, file.get(), error, &w, &h, &bits, &alpha, nullptr))
    throw std::runtime_error(path + ": corrupt PNG file (" + error.message + ")");
  checkSize(w, h, path);
  Loaded out;
  out.bits = bits;
  out.alpha = alpha;
  out.image = Image(static_cast<int32_t>(w), static_cast<int32_t>(h), bits == 16 ? Depth::W16 : Depth::P32);
  const size_t stride = static_cast<size_t>(w) * 4 * (bits / 8);
  if (png_get_rowbytes(r.png, r.info) != stride) throw std::runtime_error(path + ": unexpected PNG row layout");
  std::vector<png_bytep> rows(h);
  for (png_uint_32 y = 0; y < h; ++y) rows[y] = out.image.bytes.data() + y * stride;
  if (!pngReadStep(r, file.get(), error, &w, &h, &bits, &alpha, rows.data()))
    throw std::runtime_error(path + ": corrupt PNG file (" + error.message + ")");
  return out;
}

struct PngWrite {
  png_structp png = nullptr;
  png_infop info = nullptr;
  ~PngWrite() { png_destroy_write_struct(&png, &info); }
};

bool pngWriteAll(PngWrite& w, std::FILE* file, const Image& im, int bits, bool alpha, png_bytepp rows) {
  if (setjmp(png_jmpbuf(w.png))) return false;
  png_init_io(w.png, file);
  png_set_IHDR(w.png, w.info, static_cast<png_uint_32>(im.width), static_cast<png_uint_32>(im.height), bits,
               alpha ? PNG_COLOR_TYPE_RGBA : PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
               PNG_FILTER_TYPE_DEFAULT);
  png_write_info(w.png, w.info);
  png_set_bgr(w.png);
  if (bits == 16) png_set_swap(w.png);
  if (!alpha) png_set_filler(w.png, 0, PNG_FILLER_AFTER);  // drops the fourth element
  png_write_image(w.png, rows);
  png_write_end(w.png, nullptr);
  return true;
}

void writePng(const std::string& path, const Image& image, const WriteOptions& options) {
  int bits = options.pngBits ? options.pngBits : image.depth == Depth::P32 ? 8 : 16;
  const Image im = convert(image, bits == 8 ? Depth::P32 : Depth::W16);
  const bool alpha = options.alpha || !im.opaque();
  File file = openFile(path, "wb");
  PngError error;
  PngWrite w;
  w.png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &error, pngError, pngWarning);
  if (!w.png || !(w.info = png_create_info_struct(w.png))) throw std::runtime_error("libpng could not start");
  const size_t stride = static_cast<size_t>(im.width) * 4 * (bits / 8);
  std::vector<png_bytep> rows(static_cast<size_t>(im.height));
  for (size_t y = 0; y < rows.size(); ++y) rows[y] = const_cast<uint8_t*>(im.bytes.data()) + y * stride;
  if (!pngWriteAll(w, file.get(), im, bits, alpha, rows.data()))
    throw std::runtime_error(path + ": " + error.message);
  if (std::fflush(file.get()) != 0 || std::ferror(file.get()))
    throw std::runtime_error(path + ": " + std::strerror(errno));
  if (std::fclose(file.release()) != 0) throw std::runtime_error(path + ": " + std::strerror(errno));
}

// .hdr: the header is checked here (the library's reader takes the size
// from its caller), the pixels are read by RGBE_ReadPixels_RLE from memory.
Loaded readHdr(const std::string& path) {
  std::vector<uint8_t> bytes;
  {
    File file = openFile(path, "rb");
    uint8_t buf[65536];
    size_t got;
    while ((got = std::fread(buf, 1, sizeof buf, file.get())) > 0) bytes.insert(bytes.end(), buf, buf + got);
    if (std::ferror(file.get())) throw std::runtime_error(path + ": read error");
  }
  auto bad = [&](const std::string& why) { return std::runtime_error(path + ": not a Radiance picture (" + why + ")"); };
  size_t pos = 0;
  auto line = [&](std::string& out) {
    if (pos >= bytes.size()) return false;
    const auto* end = std::find(bytes.data() + pos, bytes.data() + bytes.size(), uint8_t('\n'));
    out.assign(reinterpret_cast<const char*>(bytes.data() + pos), reinterpret_cast<const char*>(end));
    pos = static_cast<size_t>(end - bytes.data()) + 1;
    return true;
  };
  std::string text;
  if (!line(text) || text.rfind("#?", 0) != 0) throw bad("no #? signature");
  bool format = false;
  for (;;) {
    if (!line(text)) throw bad("the header does not end");
    if (text.empty()) break;
    if (text.rfind("FORMAT=", 0) == 0) {
      if (text != "FORMAT=32-bit_rle_rgbe") throw bad(text);
      format = true;
    }
  }
  if (!format) throw bad("no FORMAT line");
  if (!line(text)) throw bad("no size line");
  long long h = 0, w = 0;
  char tail = 0;
  if (std::sscanf(text.c_str(), "-Y %lld +X %lld%c", &h, &w, &tail) != 2)
    throw bad("size line '" + text + "' is not -Y height +X width");
  checkSize(w, h, path);
  const auto width = static_cast<int32_t>(w), height = static_cast<int32_t>(h);
  const size_t pixels = static_cast<size_t>(width) * static_cast<size_t>(height);
  std::vector<float> rgb(pixels * 3);
  EffectsStream stream{bytes.data(), bytes.size(), pos};
  const int32_t r = RGBE_ReadPixels_RLE(&stream, rgb.data(), width, height);
  // 1 also means "the scanlines were flat": then all pixels must have come.
  if (r != 0 && stream.position - pos != pixels * 4) throw std::runtime_error(path + ": truncated or corrupt pixel data");
  Loaded out;
  out.bits = 32;
  out.image = Image(width, height, Depth::P128);
  Convert128BIT_3to4ChannelsFast(width, height, out.image.as<Pixel128>(), rgb.data());
  VexoClearMask128(static_cast<int32_t>(pixels * 4), out.image.as<Pixel128>());
  return out;
}

int64_t fileSize(const std::string& path) {
  std::error_code ec;
  const auto n = fs::file_size(path, ec);
  return ec ? -1 : static_cast<int64_t>(n);
}

void writeHdr(const std::string& path, const Image& image) {
  const Image im = image.depth == Depth::W16 ? convert(image, Depth::P64) : image;
  std::vector<float> scratch(im.pixels() * 3);
  switch (im.depth) {
    case Depth::P32: RGBE_WriteHeader_32(path.c_str(), im.width, im.height, im.as<Pixel32>(), scratch.data()); break;
    case Depth::P64: RGBE_WriteHeader_64(path.c_str(), im.width, im.height, im.as<Pixel64>(), scratch.data()); break;
    default: RGBE_WriteHeader_128(path.c_str(), im.width, im.height, im.as<Pixel128>(), scratch.data()); break;
  }
  // The writer reports nothing: a short file is how a failure shows.
  // The pixels follow the size line.
  const std::string sizeLine = "\n-Y " + std::to_string(im.height) + " +X " + std::to_string(im.width) + "\n";
  std::string head(512, '\0');
  if (File f{std::fopen(path.c_str(), "rb")}) head.resize(std::fread(head.data(), 1, head.size(), f.get()));
  const size_t at = head.find(sizeLine);
  if (at == std::string::npos ||
      fileSize(path) != static_cast<int64_t>(at + sizeLine.size() + im.pixels() * 4))
    throw std::runtime_error(path + ": could not write the file");
}

void writeVxl(const std::string& path, const Image& image) {
  const Image im = image.depth == Depth::W16 ? convert(image, Depth::P64) : image;
  switch (im.depth) {
    case Depth::P32: VexoSaveVXLFile32(path.c_str(), im.width, im.height, 0, 0, im.as<Pixel32>()); break;
    case Depth::P64: VexoSaveVXLFile64(path.c_str(), im.width, im.height, 0, 0, im.as<Pixel64>()); break;
    default: VexoSaveVXLFile128(path.c_str(), im.width, im.height, 0, 0, im.as<Pixel128>()); break;
  }
  const int64_t expected = static_cast<int64_t>(16 + im.pixels() * 4 * elementBytes(im.depth));
  if (fileSize(path) != expected) throw std::runtime_error(path + ": could not write the file");
}

}  // namespace

Format formatOf(const std::string& path) {
  const std::string ext = lower(fs::path(path).extension().string());
  if (ext == ".png") return Format::Png;
  if (ext == ".hdr") return Format::Hdr;
  if (ext == ".vxl") return Format::Vxl;
  throw std::runtime_error(path + ": unknown picture format (use .png, .hdr or .vxl)");
}

Loaded readPicture(const std::string& path) {
  std::error_code ec;
  if (!fs::is_regular_file(path, ec)) throw std::runtime_error(path + ": no such file");
  switch (formatOf(path)) {
    case Format::Png: return readPng(path);
    case Format::Hdr: return readHdr(path);
    default: throw std::runtime_error(path + ": VXL files can be written, not read");
  }
}

void checkFolder(const std::string& path) {
  const fs::path folder = fs::path(path).parent_path();
  std::error_code ec;
  if (!folder.empty() && !fs::is_directory(folder, ec)) throw std::runtime_error(path + ": no such folder");
}

void writePicture(const std::string& path, const Image& image, const WriteOptions& options) {
  const Format format = formatOf(path);
  checkFolder(path);
  const std::string temp = temporaryBeside(path);
  try {
    if (format == Format::Png) writePng(temp, image, options);
    else if (format == Format::Hdr) writeHdr(temp, image);
    else writeVxl(temp, image);
  } catch (...) {
    std::remove(temp.c_str());
    throw;
  }
  commit(temp, path);
}

std::string temporaryBeside(const std::string& path) {
  static std::atomic<unsigned> counter{0};
  const fs::path p(path);
  // Keeps the extension: the library's writers do not care, people do.
  return (p.parent_path() / ("." + p.stem().string() + ".tmp" + std::to_string(EFFECTS_GETPID()) + "-" +
                             std::to_string(counter++) + p.extension().string()))
      .string();
}

void commit(const std::string& from, const std::string& to) {
  std::error_code ec;
  fs::rename(from, to, ec);
  if (ec) {
    std::remove(from.c_str());
    throw std::runtime_error(to + ": " + ec.message());
  }
}

}  // namespace effects::cli
