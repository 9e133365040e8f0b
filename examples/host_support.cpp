#include "host_support.h"

#include <png.h>

#include <cstdio>
#include <memory>

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace host {

Library::Library(const std::string& fileName) {
#ifdef _WIN32
  handle_ = reinterpret_cast<void*>(LoadLibraryA(fileName.c_str()));
  if (!handle_) throw std::runtime_error("cannot load " + fileName);
#else
  handle_ = dlopen(fileName.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!handle_) throw std::runtime_error(std::string("cannot load ") + fileName + ": " + dlerror());
#endif
}

Library::~Library() {
#ifdef _WIN32
  if (handle_) FreeLibrary(static_cast<HMODULE>(handle_));
#else
  if (handle_) dlclose(handle_);
#endif
}

bool Library::has(const char* name) const {
#ifdef _WIN32
  return GetProcAddress(static_cast<HMODULE>(handle_), name) != nullptr;
#else
  return dlsym(handle_, name) != nullptr;
#endif
}

void* Library::symbol(const char* name) const {
#ifdef _WIN32
  void* p = reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle_), name));
#else
  void* p = dlsym(handle_, name);
#endif
  if (!p) throw std::runtime_error(std::string("the library has no export ") + name);
  return p;
}

void writePng(const std::string& path, const Picture32& picture, bool withAlpha) {
  std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "wb"), &std::fclose);
  if (!file) throw std::runtime_error("cannot write " + path);
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png ? png_create_info_struct(png) : nullptr;
  if (!png || !info) throw std::runtime_error("libpng could not start");
  if (setjmp(png_jmpbuf(png))) {
    png_destroy_write_struct(&png, &info);
    throw std::runtime_error("libpng failed writing " + path);
  }
  png_init_io(png, file.get());
  png_set_IHDR(png, info, static_cast<png_uint_32>(picture.width), static_cast<png_uint_32>(picture.height), 8,
               PNG_COLOR_TYPE_RGBA, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_write_info(png, info);
  std::vector<png_byte> row(static_cast<size_t>(picture.width) * 4);
  for (int y = 0; y < picture.height; ++y) {
    for (int x = 0; x < picture.width; ++x) {
      const Pixel32& p = picture.pixels[static_cast<size_t>(y) * picture.width + x];
      png_byte* o = &row[static_cast<size_t>(x) * 4];
      o[0] = p.red; o[1] = p.green; o[2] = p.blue; o[3] = withAlpha ? p.mask : 255;
    }
    png_write_row(png, row.data());
  }
  png_write_end(png, nullptr);
  png_destroy_write_struct(&png, &info);
}

}  // namespace host
