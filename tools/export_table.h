// The export table: every export of the library with its parameters and a
// way to call it with run-time values. The entries are generated from the
// public headers by scripts/gen-exports (tools/export_table.inc); test
// drivers and the command-line tool are written against this table, so a new
// export reaches them by its declaration alone.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>

#include "effects/effects.h"

namespace effects::table {

// The C types of parameters and results.
enum class Type {
  Void, I32, U32, U8, U16, IPtr, F32, F64,
  Pixel32Ptr, Pixel64Ptr, Pixel128Ptr, U8Ptr, U16Ptr, F32Ptr, Text, StreamPtr, Handle
};

// What a parameter is for, from its name and type: an element count, a
// width or height, a pixel buffer, another buffer, a device context or
// bitmap, a file name, a channel selector, an ignored value, or a plain value.
enum class Role { Count, Width, Height, Pixels, Buffer, Device, Bitmap, Path, Channel, Reserved, Value };

enum class Platforms { All, Posix };

// How the size parameters describe the pictures: an element count, a signed
// width x height, the width * 4 * height product formed in 32-bit arithmetic,
// a width x height picture turned in place (it comes back height x width), or
// no size at all.
enum class SizeRule { None, Count, Picture, Wrapped, Turned };

// What a pointer parameter holds: a picture of 4-element pixels, a buffer
// of `elements` samples a pixel (3-channel rows, RGBE), a fixed number of
// elements (a histogram, one statistic), or something the table cannot size.
enum class Kind : uint8_t { None, Picture, Samples, Fixed, Unknown };
// Whether the export reads it, writes it (maybe reading it first) or only
// uses it as scratch; for file names, whether it reads or writes the file.
enum class Use : uint8_t { None, In, Out, Scratch };
// Element order of a picture or sample buffer.
enum class Order : uint8_t { None, Bgra, Rgb, Bgr, Rgbe };

struct Shape {
  Kind kind;
  Use use;
  Order order;
  uint16_t elements;  // per pixel (Picture, Samples) or in all (Fixed)
  int8_t width;       // index of the size parameters: width and height,
  int8_t height;      // or the element count in `width` and -1; else -1
};

struct Param {
  const char* name;
  Type type;
  Role role;
  bool isConst;  // a pointer the export only reads
  Shape shape;
};

// One argument value: integers and pointers travel in `i`/`p`, floating-point
// values in `d`; as<T>() converts to the declared type.
struct Arg {
  int64_t i = 0;
  double d = 0.0;
  void* p = nullptr;

  template <class T>
  T as() const {
    if constexpr (std::is_pointer_v<T>) {
      return static_cast<T>(p);
    } else if constexpr (std::is_floating_point_v<T>) {
      return static_cast<T>(d);
    } else {
      // Integers keep their low bits, as a C caller's conversion would.
      return static_cast<T>(static_cast<uint64_t>(i));
    }
  }
};

// What an export returned: nothing, an integer (widened) or a double.
struct Result {
  enum Kind { None, Integer, Real } kind = None;
  int64_t i = 0;
  double d = 0.0;

  template <class T>
  static Result of(T v) {
    Result r;
    if constexpr (std::is_floating_point_v<T>) {
      r.kind = Real;
      r.d = v;
    } else {
      r.kind = Integer;
      r.i = static_cast<int64_t>(v);
    }
    return r;
  }
};

inline constexpr int kMaxParams = 20;

struct Export {
  const char* name;
  Type result;
  int layout;  // 32, 64 or 128 when the export works on one pixel layout, else 0
  Platforms platforms;
  SizeRule size;
  const char* header;
  const char* family;  // the name without its layout (VexoGamma for VexoGamma32), or ""
  const char* help;    // the header comment above the declaration
  Param params[kMaxParams];
  Result (*call)(const Arg* args);

  int paramCount() const {
    int n = 0;
    while (n < kMaxParams && params[n].name != nullptr) ++n;
    return n;
  }
  // The index of the parameter called `name`, or -1.
  int find(std::string_view name) const {
    for (int i = 0; i < paramCount(); ++i)
      if (name == params[i].name) return i;
    return -1;
  }
};

inline const Export kExports[] = {
#include "export_table.inc"
};

inline const Export* findExport(std::string_view name) {
  for (const Export& e : kExports)
    if (name == e.name) return &e;
  return nullptr;
}

}  // namespace effects::table
