// Calling any export from a line of text: the parameters come from
// `name=value` pairs, and every buffer the export takes is allocated to the
// size its other arguments imply and filled from a seed. The checksum table
// and the argument drivers build their calls through here, so a new export
// needs no code of its own.
//
// Values:
//   name=12, name=-3, name=0x7f, name=2.5   integers and floating-point values
//   name=@out                               a file name the export writes (read back)
//   name=@data:rgbe/good_rle.hdr            a file of the test data
//   name=@plugin:tm_simple                  a plug-in built beside the tests
//   name=@buf:pixel32:15                    a buffer of 15 elements of a type
//                                           (pixel32, pixel64, pixel128, u8, u16,
//                                           i32, f32) passed as a pointer value
//   stream=@data:rgbe/x.hdr                 a stream positioned after the header
//   stream=@nullbytes                       a stream of 64 bytes at a null address
//   hdc=@surface:40x30                      a device context with a bitmap
//                                           (on Windows a 32-bit DIB section)
//   hdc=@surface:40x30/3                    3 greys only, evenly spaced: blue,
//                                           green, red 0, 127 or 254 (/2: 0, 255)
//   hdc=@ddb:40x30                          the same with a bitmap of the
//                                           screen's format (on Windows)
//   bitmap=@hdc                             the bitmap of the surface made for
//                                           hdc (or its device context)
//   name=@null                              a null pointer (any pointer parameter)
//   fileName=@dir, fileName=@missing        an existing folder; a file in a folder
//                                           that does not exist
// Buffer sizes follow the export's size parameters; `name.count=N` sets a
// buffer's element count. A buffer whose size cannot exist in this address
// space gets one element and is marked impossible; one above kReserveAbove
// bytes is reserved (GuardedBytes::reserved), not filled. `fill=wide` fills 16-bit buffers over the whole
// 16-bit range and float buffers with extreme and special values as well;
// `fill=dark` keeps every element in the lowest quarter of its range.
// `fill=sweep` makes the 8-bit pictures an exhaustive sweep: pixel i of a
// picture holds blue i & 255, green (i >> 8) & 255, red (i >> 16) & 255 and
// mask i & 255, and of the picture called `source` blue (i >> 8) & 255,
// green (i >> 16) & 255, red i & 255 and mask (i >> 16) & 255; so over 2^24
// pixels every colour triple occurs, and every (target, source, mask) triple
// meets in the blue elements.
#pragma once

#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <limits>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "effects/effects.h"
#include "platform/test_surface.h"
#include "support/files.h"
#include "support/guarded.h"
#include "support/random_draws.h"
#include "export_table.h"

namespace effects::test {

using table::Arg;
using table::Export;
using table::Param;
using table::Result;
using table::Role;
using table::Type;

// A call's text: the export's name and its name=value pairs.
struct CallText {
  std::string name;
  std::map<std::string, std::string> values;
  std::string text;  // as written, for messages

  static CallText parse(const std::string& line) {
    CallText c;
    c.text = line;
    std::istringstream in(line);
    in >> c.name;
    std::string kv;
    while (in >> kv) {
      const auto eq = kv.find('=');
      if (eq == std::string::npos) throw std::runtime_error("expected name=value, got '" + kv + "'");
      c.values[kv.substr(0, eq)] = kv.substr(eq + 1);
    }
    return c;
  }
  bool has(const std::string& k) const { return values.count(k) != 0; }
  const std::string& at(const std::string& k) const {
    auto it = values.find(k);
    if (it == values.end()) throw std::runtime_error("missing value for '" + k + "'");
    return it->second;
  }
};

// Deterministic fill values.
class Filler {
 public:
  enum Kind { Default, Wide, Dark };
  Filler(uint32_t seed, Kind kind) : s_(seed * 2654435761u + 1u), kind_(kind) {}
  uint32_t next() {
    s_ = s_ * 1103515245u + 12345u;
    return s_ >> 8;
  }
  uint8_t byte() { return static_cast<uint8_t>(kind_ == Dark ? next() % 64u : next()); }
  uint16_t word() {
    return static_cast<uint16_t>(kind_ == Wide ? next() : next() % (kind_ == Dark ? 8192u : 32768u));
  }
  float real() {
    const uint32_t v = next();
    if (kind_ == Dark) return static_cast<float>(v % 251u) / 1000.0f;
    if (kind_ == Wide) {
      switch (v % 16u) {
        case 0: return std::numeric_limits<float>::quiet_NaN();
        case 1: return std::numeric_limits<float>::infinity();
        case 2: return -std::numeric_limits<float>::infinity();
        case 3: return 1e30f;
        case 4: return -0.0f;
        case 5: return 1e-40f;
        default: return static_cast<float>((v >> 4) % 40001u) / 1000.0f - 20.0f;
      }
    }
    return static_cast<float>(v % 2001u) / 1000.0f - 0.25f;
  }

 private:
  uint32_t s_;
  Kind kind_;
};

// A buffer owned by a call, with its element type for filling. Its memory
// ends where the buffer ends, followed by a page that faults on any access.
struct Buffer {
  std::string name;
  Type element;  // U8, U16, F32, I32 or a pixel pointer type
  GuardedBytes memory;
  bool impossible = false;  // stands in for a buffer that cannot exist
  bool reserved() const { return memory.aliased(); }
  uint8_t* data() const { return memory.data(); }
  size_t size() const { return memory.size(); }
};

inline size_t elementBytes(Type t) {
  switch (t) {
    case Type::Pixel32Ptr: return sizeof(Pixel32);
    case Type::Pixel64Ptr: return sizeof(Pixel64);
    case Type::Pixel128Ptr: return sizeof(Pixel128);
    case Type::U16Ptr: case Type::U16: return 2;
    case Type::F32Ptr: case Type::F32: case Type::I32: return 4;
    default: return 1;
  }
}

inline void fill(Buffer& b, Filler& f) {
  auto* p = b.data();
  const size_t n = b.size();
  switch (b.element) {
    case Type::Pixel32Ptr: case Type::U8Ptr: case Type::U8: case Type::I32:
      for (size_t i = 0; i < n; ++i) p[i] = f.byte();
      break;
    case Type::Pixel64Ptr: case Type::U16Ptr: case Type::U16:
      for (size_t i = 0; i + 2 <= n; i += 2) { const uint16_t w = f.word(); std::memcpy(p + i, &w, 2); }
      break;
    default:
      for (size_t i = 0; i + 4 <= n; i += 4) { const float v = f.real(); std::memcpy(p + i, &v, 4); }
  }
}

// Elements per pixel of the non-pixel buffers, by name; 0 for a fixed size.
inline size_t perPixel(const std::string& name, size_t* fixed) {
  *fixed = 0;
  if (name == "rgb24" || name == "rgb48" || name == "rgb" || name == "bgr" || name == "data" || name == "scratch")
    return 3;
  if (name == "rgbe") return 4;
  if (name == "histogram") { *fixed = 256; return 0; }
  *fixed = 1;
  return 0;
}

// Buffers above this many bytes are reserved rather than allocated and filled.
inline constexpr uint64_t kReserveAbove = uint64_t(256) << 20;

// a x b, or UINT64_MAX when that does not fit.
inline uint64_t productOrMax(uint64_t a, uint64_t b) {
  return (a != 0 && b > UINT64_MAX / a) ? UINT64_MAX : a * b;
}

// A file name no other call of any process makes: the process number and a
// count (addresses repeat from run to run, and a crashed run leaves its files).
inline std::string uniqueName() {
  static std::atomic<unsigned> made{0};
#if defined(_WIN32)
  const long process = static_cast<long>(GetCurrentProcessId());
#else
  const long process = static_cast<long>(getpid());
#endif
  return "effects_call_" + std::to_string(process) + "_" + std::to_string(made++);
}

inline std::string dataPath(const std::string& rel) { return std::string(EFFECTS_TEST_DATA_DIR) + "/" + rel; }


// Thrown while preparing a call that needs a buffer larger than the caller
// allows.
struct BufferTooLarge : std::runtime_error {
  BufferTooLarge() : std::runtime_error("the call needs a larger buffer than allowed") {}
};

// One prepared call: the arguments and everything they point to.
class PreparedCall {
 public:
  // A buffer of more than `largest` bytes (that can exist) makes the
  // constructor throw BufferTooLarge.
  PreparedCall(const Export& e, const CallText& text, uint64_t largest = UINT64_MAX)
      : export_(e), text_(text), largest_(largest) {
    const std::string kind = text.has("fill") ? text.at("fill") : "default";
    if (kind != "default" && kind != "wide" && kind != "dark" && kind != "sweep")
      throw std::runtime_error("unknown fill " + kind);
    sweep_ = kind == "sweep";
    seed_ = text.has("seed") ? static_cast<uint32_t>(std::stoul(text.at("seed"))) : 1u;
    Filler filler(seed_,
                  kind == "wide" ? Filler::Wide : kind == "dark" ? Filler::Dark : Filler::Default);
    const int n = e.paramCount();
    args_.resize(static_cast<size_t>(n));
    try {
      for (int i = 0; i < n; ++i) prepare(e.params[i], args_[static_cast<size_t>(i)], filler);
    } catch (...) {
      removeFiles();  // the destructor does not run for a constructor that throws
      throw;
    }
    for (const auto& kv : text.values) {
      const std::string base = kv.first.substr(0, kv.first.find('.'));
      if (base != "seed" && base != "fill" && e.find(base) < 0)
        throw std::runtime_error(std::string(e.name) + " has no parameter '" + base + "'");
    }
  }
  ~PreparedCall() { removeFiles(); }
  PreparedCall(const PreparedCall&) = delete;
  PreparedCall& operator=(const PreparedCall&) = delete;

  // Seeds this thread's random draws with the row's seed first, so the
  // random families give the same picture every time.
  Result run() {
    seedDraws(seed_);
    return export_.call(args_.data());
  }

  // An FNV-1a style hash, eight bytes a step (little-endian words, then the
  // tail bytes), over the result, every buffer, every file written and every
  // device bitmap, in parameter order.
  uint64_t hash(const Result& r) {
    uint64_t h = 1469598103934665603ull;
    auto mix = [&h](const void* data, size_t n) {
      const auto* b = static_cast<const uint8_t*>(data);
      size_t i = 0;
      for (; i + 8 <= n; i += 8) {
        uint64_t w = 0;
        for (int k = 0; k < 8; ++k) w |= static_cast<uint64_t>(b[i + k]) << (8 * k);
        h ^= w;
        h *= 1099511628211ull;
      }
      for (; i < n; ++i) { h ^= b[i]; h *= 1099511628211ull; }
    };
    mix(&r.kind, 1);
    if (r.kind == Result::Integer) mix(&r.i, 8);
    if (r.kind == Result::Real) mix(&r.d, 8);
    for (const auto& b : buffers_) mix(b->data(), b->size());
    for (const auto& f : outputs_) { const auto bytes = fileBytes(f); mix(bytes.data(), bytes.size()); }
    for (const auto& s : surfaces_) {
      for (int32_t y = 0; y < s.height; ++y)
        for (int32_t x = 0; x < s.width; ++x) { const uint32_t v = s.surface->at(x, y); mix(&v, 4); }
    }
    return h;
  }

  const std::vector<std::unique_ptr<Buffer>>& buffers() const { return buffers_; }
  const Export& target() const { return export_; }

 private:
  void removeFiles() {
    for (const auto& f : outputs_) std::remove(f.c_str());
    std::error_code ignored;
    for (const auto& d : folders_) std::filesystem::remove_all(d, ignored);
  }

  int64_t integer(const std::string& name) const {
    const int i = export_.find(name);
    if (i < 0) throw std::runtime_error("no parameter " + name);
    return std::stoll(text_.at(name), nullptr, 0);
  }
  bool hasParam(const char* name) const { return export_.find(name) >= 0; }

  // A width or height as the export receives it: the low 32 bits, signed;
  // an unsigned one above INT32_MAX is no size that can exist (0).
  int64_t sizeValue(const std::string& name) const {
    const auto v = static_cast<uint32_t>(static_cast<uint64_t>(integer(name)));
    if (export_.params[export_.find(name)].type == Type::U32) return v > uint32_t(INT32_MAX) ? 0 : v;
    return static_cast<int32_t>(v);
  }

  // Pixels of the buffer `name` from the export's size parameters (UINT64_MAX
  // when the count does not fit 64 bits).
  uint64_t pixelsOf(const std::string& name) const {
    if (text_.has(name + ".count")) return std::stoull(text_.at(name + ".count"));
    auto product = [](int64_t w, int64_t h) -> uint64_t {
      return (w < 1 || h < 1) ? 0 : productOrMax(uint64_t(w), uint64_t(h));
    };
    const std::string w = name + "Width", h = name + "Height";
    if (hasParam(w.c_str()) && hasParam(h.c_str())) return product(sizeValue(w), sizeValue(h));
    if (export_.size == table::SizeRule::Wrapped) return wrappedPixels();
    if (hasParam("width") && hasParam("height")) return product(sizeValue("width"), sizeValue("height"));
    if (hasParam("elementCount")) {
      const int64_t c = static_cast<int32_t>(integer("elementCount"));
      return c < 1 ? 0 : (static_cast<uint32_t>(c - 1) >> 2) + 1;
    }
    throw std::runtime_error("cannot size buffer " + name);
  }

  // The pixels of the wrapping width * 4 * height element count.
  size_t wrappedPixels() const {
    const auto count = static_cast<int32_t>(static_cast<uint32_t>(integer("width")) * 4u *
                                            static_cast<uint32_t>(integer("height")));
    return count < 1 ? 0 : (static_cast<uint32_t>(count - 1) >> 2) + 1;
  }

 public:
  // Whether a buffer the sizes imply cannot exist in this address space.
  bool impossibleSizes() const {
    for (const auto& b : buffers_)
      if (b->impossible) return true;
    return false;
  }
  // Whether a buffer is a reservation of many gigabytes (a long walk).
  bool reservedBuffers() const {
    for (const auto& b : buffers_)
      if (b->reserved()) return true;
    return false;
  }
  // The files the call writes (`@out`), in parameter order.
  const std::vector<std::string>& outputs() const { return outputs_; }
  // The folders made for `@dir` and `@missing`: each holds only "dir".
  const std::vector<std::string>& folders() const { return folders_; }
  // Every pixel of every device bitmap, in parameter order.
  std::vector<uint32_t> surfacePixels() const {
    std::vector<uint32_t> out;
    for (const auto& s : surfaces_)
      for (int32_t y = 0; y < s.height; ++y)
        for (int32_t x = 0; x < s.width; ++x) out.push_back(s.surface->at(x, y));
    return out;
  }

  // Whether the call's sizes describe no pixel at all.
  bool emptySizes() const {
    switch (export_.size) {
      case table::SizeRule::Wrapped: return wrappedPixels() == 0;
      case table::SizeRule::None: return false;
      default:
        // The exports on (device context, bitmap) pairs take their picture
        // from the bitmap; a width and height there only place what is shown.
        for (int i = 0; i < export_.paramCount(); ++i)
          if (export_.params[i].role == Role::Bitmap) return false;
        for (const auto& b : buffers_) {
          size_t fixed;
          const bool sized = b->element == Type::Pixel32Ptr || b->element == Type::Pixel64Ptr ||
                             b->element == Type::Pixel128Ptr || perPixel(b->name, &fixed) != 0;
          if (sized && pixelsOf(b->name) != 0) return false;
        }
        return true;
    }
  }

 private:
  Buffer& newBuffer(const std::string& name, Type element, uint64_t count, Filler& f) {
    auto b = std::make_unique<Buffer>();
    b->name = name;
    b->element = element;
    const uint64_t bytes = productOrMax(std::max<uint64_t>(count, 1), elementBytes(element));
    if (bytes > uint64_t(PTRDIFF_MAX)) {
      b->impossible = true;
      b->memory = GuardedBytes(elementBytes(element));
    } else if (bytes > largest_) {
      throw BufferTooLarge();
    } else if (bytes > kReserveAbove) {
      b->memory = GuardedBytes::reserved(static_cast<size_t>(bytes));
    } else {
      b->memory = GuardedBytes(static_cast<size_t>(bytes));
    }
    if (b->reserved()) {
      // left as it is: filling would touch every page
    } else if (sweep_ && element == Type::Pixel32Ptr) {
      sweepFill(*b);
    } else {
      fill(*b, f);
    }
    buffers_.push_back(std::move(b));
    return *buffers_.back();
  }

  static void sweepFill(Buffer& b) {
    const bool source = b.name == "source";
    auto* px = reinterpret_cast<Pixel32*>(b.data());
    const uint32_t n = static_cast<uint32_t>(b.size() / sizeof(Pixel32));
    for (uint32_t i = 0; i < n; ++i) {
      const auto lo = static_cast<uint8_t>(i), mid = static_cast<uint8_t>(i >> 8), hi = static_cast<uint8_t>(i >> 16);
      px[i] = source ? Pixel32{mid, hi, lo, hi} : Pixel32{lo, mid, hi, lo};
    }
  }

  static Type typeNamed(const std::string& t) {
    static const std::map<std::string, Type> types = {
        {"pixel32", Type::Pixel32Ptr}, {"pixel64", Type::Pixel64Ptr}, {"pixel128", Type::Pixel128Ptr},
        {"u8", Type::U8}, {"u16", Type::U16}, {"i32", Type::I32}, {"f32", Type::F32}};
    auto it = types.find(t);
    if (it == types.end()) throw std::runtime_error("unknown buffer type " + t);
    return it->second;
  }

  void prepare(const Param& p, Arg& a, Filler& f) {
    const std::string name = p.name;
    const std::string value = text_.has(name) ? text_.at(name) : "";
    if (value == "@null") {
      a.p = nullptr;
      return;
    }
    if (value.rfind("@buf:", 0) == 0) {
      const auto colon = value.find(':', 5);
      Buffer& b = newBuffer(name, typeNamed(value.substr(5, colon - 5)), std::stoul(value.substr(colon + 1)), f);
      a.p = b.data();
      a.i = static_cast<int64_t>(reinterpret_cast<intptr_t>(a.p));
      return;
    }
    switch (p.type) {
      case Type::Pixel32Ptr: case Type::Pixel64Ptr: case Type::Pixel128Ptr:
        a.p = newBuffer(name, p.type, pixelsOf(name), f).data();
        return;
      case Type::U8Ptr: case Type::U16Ptr: case Type::F32Ptr: {
        size_t fixed;
        const size_t per = perPixel(name, &fixed);
        uint64_t count = fixed;
        if (text_.has(name + ".count")) count = std::stoull(text_.at(name + ".count"));
        else if (per) count = productOrMax(per, pixelsOf(name));
        a.p = newBuffer(name, p.type, count, f).data();
        return;
      }
      case Type::Text: {
        std::string path;
        if (value == "@out") {
          path = (std::filesystem::temp_directory_path() /
                  (uniqueName() + "_" + name)).string();
          std::remove(path.c_str());
          outputs_.push_back(path);
        } else if (value.rfind("@data:", 0) == 0) {
          path = dataPath(value.substr(6));
        } else if (value == "@dir" || value == "@missing") {
          path = (std::filesystem::temp_directory_path() /
                  (uniqueName() + "_" + name)).string();
          std::filesystem::create_directories(path + "/dir");
          folders_.push_back(path);
          path += value == "@dir" ? "/dir" : "/missing/file";
        } else if (value.rfind("@plugin:", 0) == 0) {
          path = std::string(EFFECTS_PLUGIN_DIR) + "/" + value.substr(8) + EFFECTS_PLUGIN_SUFFIX;
        } else {
          path = value;
        }
        texts_.push_back(std::make_unique<std::string>(path));
        a.p = const_cast<char*>(texts_.back()->c_str());
        return;
      }
      case Type::StreamPtr: {
        if (value == "@nullbytes") {
          stream_ = EffectsStream{nullptr, 64, 0};
          a.p = &stream_;
          return;
        }
        if (value.rfind("@data:", 0) != 0) throw std::runtime_error("stream wants @data:file");
        const auto file = fileBytes(dataPath(value.substr(6)));
        auto b = std::make_unique<Buffer>();
        b->name = name;
        b->element = Type::U8;
        b->memory = GuardedBytes(file.size());
        if (!file.empty()) std::memcpy(b->data(), file.data(), file.size());
        // The reader starts after the header's size line.
        const std::string bytes(file.begin(), file.end());
        const auto size = bytes.find("\n-Y ");
        const auto eol = size == std::string::npos ? std::string::npos : bytes.find('\n', size + 1);
        stream_ = EffectsStream{b->data(), b->size(), eol == std::string::npos ? 0 : eol + 1};
        streamBytes_ = std::move(b);
        a.p = &stream_;
        return;
      }
      case Type::Handle: {
        // @name: the surface made for parameter `name` (a device context and
        // its bitmap are paired so)
        for (const auto& made : surfaces_) {
          if (value == "@" + made.name) {
            a.p = p.role == Role::Bitmap ? made.surface->bitmap() : made.surface->dc();
            return;
          }
        }
        const bool ddb = value.rfind("@ddb:", 0) == 0;
        if (value.rfind("@surface:", 0) != 0 && !ddb) { a.p = nullptr; return; }
        const size_t at = ddb ? 5 : 9;
        const auto x = value.find('x', at);
        const auto slash = value.find('/', x);
        Surface s;
        s.name = name;
        s.width = std::stoi(value.substr(at, x - at));
        s.height = std::stoi(value.substr(x + 1, slash == std::string::npos ? std::string::npos : slash - x - 1));
        const uint32_t levels = slash == std::string::npos ? 0u : static_cast<uint32_t>(std::stoul(value.substr(slash + 1)));
        s.surface = std::make_unique<TestSurface>(s.width, s.height, 0x10203040u,
                                                  ddb ? TestSurface::Kind::DeviceDependent : TestSurface::Kind::Section);
        std::vector<uint32_t> pixels(static_cast<size_t>(s.width) * static_cast<size_t>(s.height));
        for (uint32_t& v : pixels) {
          v = f.next();
          if (levels) v = (v % levels) * (levels > 1 ? 255u / (levels - 1u) : 0u) * 0x010101u;
          v |= f.next() << 24;
        }
        s.surface->setAll(pixels.data());
        a.p = p.role == Role::Bitmap ? s.surface->bitmap() : s.surface->dc();
        surfaces_.push_back(std::move(s));
        return;
      }
      default:
        break;
    }
    if (value.empty()) {
      if (p.role == Role::Reserved) return;
      throw std::runtime_error("missing value for '" + name + "'");
    }
    if (p.type == Type::F32 || p.type == Type::F64) {
      a.d = value == "nan" ? std::numeric_limits<double>::quiet_NaN()
            : value == "inf" ? std::numeric_limits<double>::infinity()
            : value == "-inf" ? -std::numeric_limits<double>::infinity()
                              : std::stod(value);
    } else {
      a.i = std::stoll(value, nullptr, 0);
    }
  }

  struct Surface {
    std::string name;
    int32_t width = 0, height = 0;
    std::unique_ptr<TestSurface> surface;
  };

  const Export& export_;
  const CallText& text_;
  std::vector<Arg> args_;
  std::vector<std::unique_ptr<Buffer>> buffers_;
  std::vector<std::unique_ptr<std::string>> texts_;
  std::vector<std::string> outputs_;
  std::vector<std::string> folders_;  // made for @dir and @missing
  std::vector<Surface> surfaces_;
  bool sweep_ = false;
  uint64_t largest_ = UINT64_MAX;
  uint32_t seed_ = 1;
  EffectsStream stream_{};
  std::unique_ptr<Buffer> streamBytes_;
};

// The first checksum row of every export: parameters known to be sensible.
inline std::map<std::string, CallText> firstChecksumRows() {
  std::map<std::string, CallText> rows;
  std::ifstream in(dataPath("checksums.txt"));
  for (std::string s; std::getline(in, s);) {
    if (s.empty() || s[0] == '#') continue;
    const CallText c = CallText::parse(s.substr(0, s.rfind(" : ")));
    rows.emplace(c.name, c);
  }
  return rows;
}

}  // namespace effects::test
