#include "cli/invocation.h"

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <limits>
#include <map>
#include <utility>

#include "cli/files.h"

namespace effects::cli {

using table::Export;
using table::Kind;
using table::Param;
using table::Role;
using table::Type;
using table::Use;

const char* typeName(Type t) {
  switch (t) {
    case Type::Void: return "void";
    case Type::I32: return "int32_t";
    case Type::U32: return "uint32_t";
    case Type::U8: return "uint8_t";
    case Type::U16: return "uint16_t";
    case Type::IPtr: return "intptr_t";
    case Type::F32: return "float";
    case Type::F64: return "double";
    case Type::Pixel32Ptr: return "Pixel32*";
    case Type::Pixel64Ptr: return "Pixel64*";
    case Type::Pixel128Ptr: return "Pixel128*";
    case Type::U8Ptr: return "uint8_t*";
    case Type::U16Ptr: return "uint16_t*";
    case Type::F32Ptr: return "float*";
    case Type::Text: return "const char*";
    case Type::StreamPtr: return "EffectsStream*";
    case Type::Handle: return "void*";
  }
  return "?";
}

namespace {

bool isPictureLike(const Param& p) { return p.shape.kind == Kind::Picture || p.shape.kind == Kind::Samples; }

int layoutOfType(Type t) { return t == Type::Pixel32Ptr ? 32 : t == Type::Pixel64Ptr ? 64 : 128; }

SampleType sampleType(Type t) {
  return t == Type::U8Ptr ? SampleType::U8 : t == Type::U16Ptr ? SampleType::U16 : SampleType::F32;
}
SampleOrder sampleOrder(const Param& p) {
  return p.shape.order == table::Order::Bgr ? SampleOrder::Bgr
         : p.shape.order == table::Order::Rgbe ? SampleOrder::Rgbe
                                               : SampleOrder::Rgb;
}
size_t scalarBytes(Type t) { return t == Type::U8Ptr ? 1 : t == Type::U16Ptr ? 2 : 4; }

// A whole-string integer in [lo, hi]: decimal, or hexadecimal after 0x.
int64_t parseInteger(const std::string& option, const std::string& text, int64_t lo, int64_t hi, Type t) {
  const char* s = text.c_str();
  const bool negative = *s == '-';
  const char* digits = negative || *s == '+' ? s + 1 : s;
  const int base = (digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X')) ? 16 : 10;
  char* end = nullptr;
  errno = 0;
  const long long v = std::strtoll(s, &end, base);
  if (text.empty() || *end != '\0' || std::isspace(static_cast<unsigned char>(*s)))
    throw UsageError("--" + option + ": '" + text + "' is not an integer");
  if (errno == ERANGE || v < lo || v > hi)
    throw UsageError("--" + option + ": " + text + " is out of range for " + typeName(t) + " (" + std::to_string(lo) +
                     ".." + std::to_string(hi) + ")");
  return v;
}

double parseReal(const std::string& option, const std::string& text) {
  char* end = nullptr;
  const double v = std::strtod(text.c_str(), &end);
  if (text.empty() || *end != '\0' || std::isspace(static_cast<unsigned char>(text[0])))
    throw UsageError("--" + option + ": '" + text + "' is not a number");
  return v;
}

void setValue(table::Arg& a, const Param& p, const std::string& text) {
  switch (p.type) {
    case Type::F32: case Type::F64: a.d = parseReal(p.name, text); return;
    case Type::U8: a.i = parseInteger(p.name, text, 0, 255, p.type); return;
    case Type::U16: a.i = parseInteger(p.name, text, 0, 65535, p.type); return;
    case Type::U32: a.i = parseInteger(p.name, text, 0, UINT32_MAX, p.type); return;
    case Type::IPtr:
      a.i = parseInteger(p.name, text, std::numeric_limits<intptr_t>::min(), std::numeric_limits<intptr_t>::max(),
                         p.type);
      return;
    default: a.i = parseInteger(p.name, text, INT32_MIN, INT32_MAX, p.type); return;
  }
}

}  // namespace

std::optional<std::string> defaultOf(const Param& p) {
  if (p.role == Role::Reserved) return std::string("0");
  if (p.role == Role::Channel) return std::string("1");
  return std::nullopt;
}

std::string notCallable(const Export& e) {
  for (int i = 0; i < e.paramCount(); ++i) {
    const Param& p = e.params[i];
    if (p.role == Role::Device || p.role == Role::Bitmap)
      return std::string(e.name) + " draws on a device context ('" + p.name +
             "'); the tool runs the exports that work on buffers";
    if (p.type == Type::StreamPtr)
      return std::string(e.name) + " reads from a stream ('" + p.name + "'); read .hdr files with RGBE_LoadHDR";
    if (p.shape.kind == Kind::Unknown)
      return std::string(e.name) + ": the tool does not know the size of its buffer '" + p.name + "'";
  }
  return "";
}

Binding bind(const Export& e) {
  Binding b;
  const int n = e.paramCount();
  for (int i = 0; i < n && b.main < 0; ++i)
    if (isPictureLike(e.params[i]) && e.params[i].shape.use == Use::In) b.main = i;
  for (int i = 0; i < n && b.main < 0; ++i)
    if (e.params[i].shape.kind == Kind::Picture && e.params[i].shape.use == Use::Out) b.main = i;
  for (int i = 0; i < n && b.output < 0; ++i)
    if (isPictureLike(e.params[i]) && e.params[i].shape.use == Use::Out) b.output = i;
  for (int i = 0; i < n && b.outFile < 0; ++i)
    if (e.params[i].role == Role::Path && e.params[i].shape.use == Use::Out) b.outFile = i;
  return b;
}

const Export& resolve(const std::string& name, const Image* current) {
  // A family's name can also be an export on device-context bitmaps
  // (VexoInvert, VexoGamma); the tool runs pictures, so there the name means
  // the family.
  const Export* exact = table::findExport(name);
  if (exact && notCallable(*exact).empty()) return *exact;
  const int layout = current ? layoutOf(current->depth) : 32;
  const Export* member = nullptr;
  bool family = false;
  for (const Export& e : table::kExports) {
    if (name != e.family) continue;
    family = true;
    if (e.layout == layout) member = &e;
  }
  if (member) return *member;
  if (exact) return *exact;  // not callable: running it says why
  if (family) throw UsageError(name + " has no member for the " + std::to_string(layout) + "-bit layout");
  throw UsageError("no export called " + name + " (effects list shows them)");
}

StepResult run(const Export& e, const Step& step, const Image* current, const std::string& outFile) {
  if (const std::string why = notCallable(e); !why.empty()) throw UsageError(why);
  const Binding b = bind(e);
  const int n = e.paramCount();
  const std::string who = e.name;

  std::map<std::string, std::string> options;
  for (const auto& [k, v] : step.options) {
    if (e.find(k) < 0) {
      std::string names;
      for (int i = 0; i < n; ++i) names += std::string(names.empty() ? "" : ", ") + e.params[i].name;
      throw UsageError(who + " has no parameter '" + k + "' (its parameters: " + (names.empty() ? "none" : names) + ")");
    }
    if (!options.emplace(k, v).second) throw UsageError(who + ": --" + k + " is given twice");
  }

  // The pictures that come from files or from the current picture.
  std::vector<std::optional<Image>> images(static_cast<size_t>(n));
  if (b.main >= 0) {
    if (!current) throw UsageError(who + " needs an input picture");
    images[static_cast<size_t>(b.main)] = *current;
  }
  for (int i = 0; i < n; ++i) {
    const Param& p = e.params[i];
    if (!isPictureLike(p) || p.shape.use == Use::Scratch || i == b.main) continue;
    auto it = options.find(p.name);
    if (it != options.end()) {
      images[static_cast<size_t>(i)] = readPicture(it->second).image;
      options.erase(it);
    } else if (p.shape.use == Use::In) {
      throw UsageError(who + " reads a second picture: give it as --" + std::string(p.name) + " FILE");
    }
  }

  // Size parameters: from the pictures that have one, else from the options,
  // else the size of the main picture.
  std::vector<std::optional<int64_t>> sizes(static_cast<size_t>(n));
  std::vector<std::string> sizeFrom(static_cast<size_t>(n));
  auto setSize = [&](int index, int64_t v, const std::string& from) {
    auto& s = sizes[static_cast<size_t>(index)];
    if (s && *s != v)
      throw std::runtime_error(who + ": the pictures for '" + e.params[index].name + "' differ in size (" + from +
                               " and " + sizeFrom[static_cast<size_t>(index)] + ")");
    s = v;
    sizeFrom[static_cast<size_t>(index)] = from;
  };
  for (int i = 0; i < n; ++i) {
    const auto& im = images[static_cast<size_t>(i)];
    if (!im) continue;
    const auto& sh = e.params[i].shape;
    const std::string from = std::string("the picture for '") + e.params[i].name + "'";
    if (sh.height >= 0) {
      setSize(sh.width, im->width, from);
      setSize(sh.height, im->height, from);
    } else if (sh.width >= 0) {
      setSize(sh.width, static_cast<int64_t>(im->pixels()) * 4, from);
    }
  }
  const Image* mainImage = b.main >= 0 ? &*images[static_cast<size_t>(b.main)] : nullptr;
  std::vector<table::Arg> args(static_cast<size_t>(n));
  for (int i = 0; i < n; ++i) {
    const Param& p = e.params[i];
    if (p.role != Role::Count && p.role != Role::Width && p.role != Role::Height) continue;
    auto it = options.find(p.name);
    if (sizes[static_cast<size_t>(i)]) {
      if (it != options.end())
        throw UsageError(who + ": --" + std::string(p.name) + " comes from " + sizeFrom[static_cast<size_t>(i)] +
                         " and cannot be given");
    } else if (it != options.end()) {
      table::Arg a;
      setValue(a, p, it->second);
      sizes[static_cast<size_t>(i)] = a.i;
      options.erase(it);
    } else if (mainImage) {
      sizes[static_cast<size_t>(i)] = p.role == Role::Width    ? mainImage->width
                                      : p.role == Role::Height ? mainImage->height
                                                               : static_cast<int64_t>(mainImage->pixels()) * 4;
    } else {
      throw UsageError(who + ": missing --" + std::string(p.name) + " (" + typeName(p.type) + ")");
    }
    args[static_cast<size_t>(i)].i = *sizes[static_cast<size_t>(i)];
  }

  // Buffers.
  std::vector<std::vector<uint8_t>> storage(static_cast<size_t>(n));
  std::vector<std::pair<int32_t, int32_t>> dims(static_cast<size_t>(n));
  std::vector<std::string> texts(static_cast<size_t>(n));
  for (int i = 0; i < n; ++i) {
    const Param& p = e.params[i];
    auto& a = args[static_cast<size_t>(i)];
    auto& buf = storage[static_cast<size_t>(i)];
    const auto& sh = p.shape;
    if (isPictureLike(p)) {
      int64_t w, h;
      if (sh.height >= 0) {
        w = *sizes[static_cast<size_t>(sh.width)];
        h = *sizes[static_cast<size_t>(sh.height)];
      } else {
        const int64_t count = *sizes[static_cast<size_t>(sh.width)];
        const int64_t px = count < 1 ? 0 : ((count - 1) >> 2) + 1;
        w = mainImage && static_cast<int64_t>(mainImage->pixels()) == px ? mainImage->width : px;
        h = mainImage && static_cast<int64_t>(mainImage->pixels()) == px ? mainImage->height : 1;
      }
      checkSize(w, h, who + " '" + p.name + "'");
      dims[static_cast<size_t>(i)] = {static_cast<int32_t>(w), static_cast<int32_t>(h)};
      const auto& im = images[static_cast<size_t>(i)];
      if (sh.kind == Kind::Picture) {
        const Depth d = depthOfLayout(layoutOfType(p.type));
        buf = im ? convert(*im, d).bytes : Image(static_cast<int32_t>(w), static_cast<int32_t>(h), d).bytes;
      } else {
        const size_t bytes = static_cast<size_t>(w * h) * sh.elements * scalarBytes(p.type);
        buf = im ? toSamples(*im, sampleType(p.type), sampleOrder(p)) : std::vector<uint8_t>(bytes, 0);
      }
      a.p = buf.data();
    } else if (sh.kind == Kind::Fixed) {
      buf.assign(sh.elements * scalarBytes(p.type), 0);
      a.p = buf.data();
    } else if (p.role == Role::Path) {
      if (sh.use == Use::Out) {
        texts[static_cast<size_t>(i)] = outFile;
      } else {
        auto it = options.find(p.name);
        if (it == options.end()) throw UsageError(who + ": missing --" + std::string(p.name) + " FILE");
        std::error_code ec;
        if (!std::filesystem::is_regular_file(it->second, ec)) throw std::runtime_error(it->second + ": no such file");
        texts[static_cast<size_t>(i)] = it->second;
        options.erase(it);
      }
      a.p = texts[static_cast<size_t>(i)].data();
    } else if (p.role != Role::Count && p.role != Role::Width && p.role != Role::Height) {
      auto it = options.find(p.name);
      const auto fallback = defaultOf(p);
      if (it == options.end() && !fallback)
        throw UsageError(who + ": missing --" + std::string(p.name) + " (" + typeName(p.type) + ")");
      setValue(a, p, it == options.end() ? *fallback : it->second);
      if (it != options.end()) options.erase(it);
    }
  }

  if (!options.empty())
    throw UsageError(who + ": --" + options.begin()->first + " is filled in by the tool and cannot be given");

  const table::Result r = e.call(args.data());

  StepResult out;
  if (b.output >= 0) {
    const Param& p = e.params[b.output];
    auto [w, h] = dims[static_cast<size_t>(b.output)];
    if (e.size == table::SizeRule::Turned) std::swap(w, h);  // turned in place
    const auto& buf = storage[static_cast<size_t>(b.output)];
    if (p.shape.kind == Kind::Picture) {
      Image im(w, h, depthOfLayout(layoutOfType(p.type)));
      std::memcpy(im.bytes.data(), buf.data(), im.bytes.size());
      out.image = std::move(im);
    } else {
      out.image = fromSamples(buf.data(), w, h, sampleType(p.type), sampleOrder(p));
    }
    return out;
  }
  if (b.outFile >= 0) return out;
  char line[64];
  if (r.kind == table::Result::Integer) std::snprintf(line, sizeof line, "result %lld\n", static_cast<long long>(r.i));
  else if (r.kind == table::Result::Real) std::snprintf(line, sizeof line, "result %.17g\n", r.d);
  else line[0] = '\0';
  out.printed = line;
  for (int i = 0; i < n; ++i) {
    const Param& p = e.params[i];
    if (p.shape.kind != Kind::Fixed || p.shape.use != Use::Out) continue;
    out.printed += p.name;
    const auto& buf = storage[static_cast<size_t>(i)];
    for (size_t k = 0; k < p.shape.elements; ++k) {
      if (p.type == Type::F32Ptr) {
        float f;
        std::memcpy(&f, buf.data() + k * 4, 4);
        std::snprintf(line, sizeof line, " %.9g", static_cast<double>(f));
      } else if (p.type == Type::U16Ptr) {
        uint16_t v;
        std::memcpy(&v, buf.data() + k * 2, 2);
        std::snprintf(line, sizeof line, " %u", static_cast<unsigned>(v));
      } else {
        std::snprintf(line, sizeof line, " %u", static_cast<unsigned>(buf[k]));
      }
      out.printed += line;
    }
    out.printed += "\n";
  }
  return out;
}

}  // namespace effects::cli
