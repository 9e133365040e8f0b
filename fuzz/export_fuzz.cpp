// Random calls of any export of the table: the input chooses the export, its
// sizes (mostly small, sometimes at the edges), every value (small ranges,
// edge values, raw bits, NaN and infinities), null pointers and unusable
// file names, the fill and the seed. Buffers are sized from the arguments and
// end at guard pages, as in the tests.
//
// Besides the sanitizers, each call is checked for:
//  - the same result twice (for one input in four, as the input chooses):
//    the call is made on two identical sets of buffers, with this thread's
//    scratch memory scribbled over with different bytes before each, so an
//    export that reads memory it never wrote (or anything but its
//    arguments) gives itself away;
//  - sizes that describe no pixel: every buffer as it was;
//  - a null pointer where a buffer is needed, a size whose buffer cannot
//    exist, a file name that leads nowhere: every buffer as it was, and the
//    export's failure value where it has one.
// Calls that would need buffers above a megabyte are skipped (the hostile
// pass covers the large sizes).
#include <fuzzer/FuzzedDataProvider.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "core/scratch.h"
#include "support/files.h"
#include "support/hostile.h"

namespace {

using namespace effects;
using namespace effects::test;

std::vector<std::string> dataFiles;  // the RGBE corpus, for readers and streams
constexpr uint64_t kLargestBuffer = uint64_t(1) << 20;

template <class T, size_t N>
T pick(FuzzedDataProvider& in, const T (&values)[N]) {
  return values[in.ConsumeIntegralInRange<size_t>(0, N - 1)];
}

std::string sizeText(FuzzedDataProvider& in) {
  static const char* const edges[] = {"-2147483648", "-65536", "-1", "0", "2147483647", "46341", "65536"};
  switch (in.ConsumeIntegralInRange(0, 15)) {
    case 0: return pick(in, edges);
    case 1: case 2: return std::to_string(in.ConsumeIntegralInRange(25, 80));
    default: return std::to_string(in.ConsumeIntegralInRange(-3, 24));
  }
}

std::string countText(FuzzedDataProvider& in) {
  static const char* const edges[] = {"-2147483648", "-4", "-1", "0"};
  if (in.ConsumeIntegralInRange(0, 15) == 0) return pick(in, edges);
  return std::to_string(in.ConsumeIntegralInRange(-8, 4 * 24 * 24));
}

std::string integerText(FuzzedDataProvider& in, Type type) {
  static const char* const edges[] = {"-2147483648", "-2147483647", "-65536", "-256", "-1", "0", "1",
                                      "255", "256", "32767", "32768", "65535", "65536", "2147483647"};
  switch (type) {
    case Type::U8: return std::to_string(in.ConsumeIntegral<uint8_t>());
    case Type::U16: return std::to_string(in.ConsumeIntegral<uint16_t>());
    case Type::U32: return std::to_string(in.ConsumeIntegral<uint32_t>());
    default: break;
  }
  switch (in.ConsumeIntegralInRange(0, 3)) {
    case 0: return pick(in, edges);
    case 1: return std::to_string(in.ConsumeIntegral<int32_t>());
    default: return std::to_string(in.ConsumeIntegralInRange(-300, 33000));
  }
}

std::string realText(FuzzedDataProvider& in) {
  static const char* const specials[] = {"nan", "inf", "-inf", "1e30", "-1e30", "3.4028234663852886e38",
                                         "1.4e-45", "-0", "2147483648", "-2147483904"};
  double v;
  switch (in.ConsumeIntegralInRange(0, 7)) {
    case 0: return pick(in, specials);
    case 1: {
      const uint32_t bits = in.ConsumeIntegral<uint32_t>();
      float f;
      std::memcpy(&f, &bits, 4);
      if (f != f) return "nan";
      v = f;
      break;
    }
    default: v = in.ConsumeFloatingPointInRange(-2.0, 300.0);
  }
  char text[40];
  std::snprintf(text, sizeof text, "%.17g", v);
  return text;
}

// Why a call cannot do what it asks: a buffer it needs is null (which only
// matters when the sizes ask for pixels), or its file or stream is unusable.
struct Unusable {
  bool nullBuffer = false;
  bool badSource = false;
};

// The argument text of one parameter.
std::string argumentText(FuzzedDataProvider& in, const table::Export& e, const Param& p, Unusable& why) {
  if (hostile::isPointer(p) && p.role != Role::Reserved && in.ConsumeIntegralInRange(0, 31) == 0) {
    if (p.role == Role::Path || p.type == Type::StreamPtr) why.badSource = true;
    else if (hostile::nullIsInvalid(p) && !hostile::unused(e.name, p.name)) why.nullBuffer = true;
    return "@null";
  }
  switch (p.role) {
    case Role::Count: return countText(in);
    case Role::Width: case Role::Height: return sizeText(in);
    case Role::Channel: return in.ConsumeBool() ? std::to_string(in.ConsumeIntegralInRange(-1, 6)) : integerText(in, p.type);
    case Role::Device: case Role::Bitmap:
      return "@surface:" + std::to_string(in.ConsumeIntegralInRange(1, 24)) + "x" +
             std::to_string(in.ConsumeIntegralInRange(1, 24));
    case Role::Path: {
      const std::string name = e.name;
      switch (in.ConsumeIntegralInRange(0, 7)) {
        case 0: why.badSource = true; return pick(in, {"@dir", "@missing", ""});
        default:
          if (name.rfind("RGBE_Load", 0) == 0 || p.name == std::string("pluginPath"))
            return "@data:rgbe/" + dataFiles[in.ConsumeIntegralInRange<size_t>(0, dataFiles.size() - 1)];
          return "@out";
      }
    }
    case Role::Reserved: return p.type == Type::F32Ptr ? "" : integerText(in, p.type);
    case Role::Pixels: return "";
    case Role::Buffer:
      if (p.type != Type::StreamPtr) return "";
      if (in.ConsumeIntegralInRange(0, 15) == 0) {
        why.badSource = true;
        return "@nullbytes";
      }
      return "@data:rgbe/" + dataFiles[in.ConsumeIntegralInRange<size_t>(0, dataFiles.size() - 1)];
    case Role::Value: break;
  }
  if (p.type == Type::F32 || p.type == Type::F64) return realText(in);
  if (p.type == Type::IPtr) return "0";  // passed through to a plug-in: nothing to vary
  // Amounts of work stay small here: the hostile pass tries the large ones.
  std::string v = integerText(in, p.type);
  for (const hostile::WorkCap& w : hostile::kWorkCaps)
    if (std::string(e.name).rfind(w.exportPrefix, 0) == 0 && p.name == std::string(w.param) && std::stoll(v) > 64)
      v = std::to_string(in.ConsumeIntegralInRange(0, 64));
  return v;
}

// Fills this thread's scratch memory with `byte`, so that what an export
// reads there without writing it first differs between two runs.
void scribble(uint8_t byte) {
  constexpr size_t kBytes = size_t(64) << 10;
  for (unsigned s = 0; s < kScratchSlots; ++s)
    if (void* p = scratchBytes(kBytes, static_cast<ScratchSlot>(s))) std::memset(p, byte, kBytes);
}

// Whether two calls left the same result, buffers, files and device bitmaps.
bool sameOutcome(const PreparedCall& a, const Result& ra, const PreparedCall& b, const Result& rb) {
  if (ra.kind != rb.kind || ra.i != rb.i || std::memcmp(&ra.d, &rb.d, sizeof ra.d) != 0) return false;
  if (hostile::snapshot(a) != hostile::snapshot(b) || a.surfacePixels() != b.surfacePixels()) return false;
  for (size_t k = 0; k < a.outputs().size(); ++k)
    if (fileBytes(a.outputs()[k]) != fileBytes(b.outputs()[k])) return false;
  return true;
}

// Findings go to a copy of the error stream taken at start-up, which
// -close_fd_mask=2 (silencing the library's parser messages) leaves open.
std::FILE* findings = stderr;

[[noreturn]] void finding(const std::string& call, const std::string& what) {
  std::fprintf(findings, "export_fuzz: %s: %s\n", call.c_str(), what.c_str());
  std::fflush(findings);
  std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  if (std::FILE* copy = fdopen(dup(2), "w")) findings = copy;
  for (const auto& entry : std::filesystem::directory_iterator(dataPath("rgbe")))
    if (entry.path().extension() == ".hdr") dataFiles.push_back(entry.path().filename().string());
  std::sort(dataFiles.begin(), dataFiles.end());
  if (dataFiles.empty()) dataFiles.push_back("missing.hdr");
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  const table::Export& e = table::kExports[in.ConsumeIntegralInRange<size_t>(0, std::size(table::kExports) - 1)];
  CallText text;
  text.name = e.name;
  Unusable why;
  for (int i = 0; i < e.paramCount(); ++i) {
    const std::string v = argumentText(in, e, e.params[i], why);
    if (!v.empty() || e.params[i].role == Role::Path) text.values[e.params[i].name] = v;
    // The buffers the table cannot size are a device bitmap's 24-bit
    // picture: room for the largest surface made here (24 x 24, rows padded
    // to 72 bytes). A smaller one would be the caller's fault, not a finding.
    if (e.params[i].shape.kind == table::Kind::Unknown && v != "@null")
      text.values[std::string(e.params[i].name) + ".count"] = std::to_string(72 * 24);
  }
  text.values["fill"] = pick(in, {"default", "wide", "dark"});
  text.values["seed"] = std::to_string(in.ConsumeIntegral<uint16_t>());
  text.text = hostile::textOf(text);
  const bool twice = in.ConsumeIntegralInRange(0, 3) == 0;

  std::unique_ptr<PreparedCall> first, second;
  try {
    first = std::make_unique<PreparedCall>(e, text, kLargestBuffer);
    if (twice) second = std::make_unique<PreparedCall>(e, text, kLargestBuffer);
  } catch (const std::exception&) {
    return 0;  // a call this harness does not set up
  }
  const bool empty = first->emptySizes();
  const bool invalid = (why.nullBuffer && !empty) || first->impossibleSizes();
  const auto before = hostile::snapshot(*first);

  scribble(0x5A);
  const Result a = first->run();
  if (twice) {
    scribble(0xA5);
    const Result b = second->run();
    if (!sameOutcome(*first, a, *second, b)) finding(text.text, "two identical calls gave different results");
  }

  if (empty || invalid) {
    const auto after = hostile::snapshot(*first);
    for (size_t k = 0; k < before.size(); ++k)
      if (!hostile::resetOnEntry(first->buffers()[k]->name) && before[k] != after[k])
        finding(text.text, "changed " + first->buffers()[k]->name);
  }
  if (invalid || why.badSource) {
    if (const auto failure = hostile::failureValue(e.name); failure && a.i != *failure)
      finding(text.text, "returned " + std::to_string(a.i) + ", not " + std::to_string(*failure));
  }
  return 0;
}
