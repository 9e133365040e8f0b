// What a small host needs: load the library by file name, resolve exports by
// name, and write 8-bit pictures as PNG files.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "effects/effects.h"

namespace host {

class Library {
 public:
  explicit Library(const std::string& fileName);
  ~Library();
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  // The export of that name, cast to the caller's function type; throws when
  // the library does not have it.
  template <class F>
  F get(const char* name) const { return reinterpret_cast<F>(symbol(name)); }
  bool has(const char* name) const;

 private:
  void* symbol(const char* name) const;
  void* handle_ = nullptr;
};

struct Picture32 {
  int width = 0, height = 0;
  std::vector<Pixel32> pixels;
  Picture32(int w, int h) : width(w), height(h), pixels(static_cast<size_t>(w) * h) {}
  int32_t elementCount() const { return width * height * 4; }
};

// Writes an 8-bit picture as an RGBA PNG (the mask becomes alpha when
// withAlpha, otherwise the picture is opaque).
void writePng(const std::string& path, const Picture32& picture, bool withAlpha = false);

}  // namespace host
