// Every export against hostile arguments, from the export table: element
// counts, widths and heights at and beyond their limits (products that pass
// 32 bits, sizes whose buffer cannot exist), channel selectors and modes out
// of range, NaN, infinities and huge floats, placements far outside the
// picture, null pointers where a buffer is needed, and file names that are
// folders or lead nowhere. Each export starts from its first row of the
// checksum table (parameters known to be sensible) and one or two arguments
// change at a time.
//
// What a call must leave behind:
//  - always: no crash, no access outside its buffers (they end at guard pages,
//    and the sanitizers watch), no hang (a watchdog names the call);
//  - sizes that describe no pixel: every buffer as it was;
//  - a null pointer where a buffer is needed, a size whose buffer cannot exist
//    in this address space, or a file name that cannot be written or read:
//    every buffer, device bitmap and folder as it was, no file written, and
//    the export's failure value where it has one.
//
// Calls whose buffers are many gigabytes (an element count of INT32_MAX, a
// picture of 2^32 pixels) are reserved address space, not memory; they walk
// billions of pixels, so only the full pass runs them.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "core/scratch.h"
#include "support/export_call.h"

#if !defined(_WIN32)
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace effects::test::hostile {

// ------------------------------------------------------------------ cases

struct Case {
  std::string text;      // the call, in export_call.h's form
  bool invalid = false;  // a needed pointer is null, or a file name leads nowhere
  bool placed = false;   // a huge canvas with the region near a corner: a short walk
};

// A plain value for a parameter of an export without a checksum row yet
// ("" leaves it to the call's defaults).
inline const char* syntheticValue(const Param& p) {
  switch (p.role) {
    case Role::Count: return "60";
    case Role::Width: return "5";
    case Role::Height: return "3";
    case Role::Channel: return "1";
    case Role::Device: case Role::Bitmap: return "@surface:8x6";
    case Role::Path: return "@out";
    case Role::Reserved: return p.type != Type::F32Ptr ? "0" : "";
    case Role::Pixels: return "";
    case Role::Buffer: return p.type == Type::StreamPtr ? "@data:rgbe/good_rle.hdr" : "";
    case Role::Value: return (p.type == Type::F32 || p.type == Type::F64) ? "0.5" : p.type == Type::U8 ? "128" : "1";
  }
  return "";
}

// Plain arguments for an export without a checksum row yet.
inline CallText syntheticRow(const table::Export& e) {
  CallText c;
  c.name = e.name;
  for (int i = 0; i < e.paramCount(); ++i) {
    const char* v = syntheticValue(e.params[i]);
    if (*v != '\0') c.values[e.params[i].name] = v;
  }
  return c;
}

inline const std::vector<std::string>& countValues() {
  static const std::vector<std::string> v = {"-2147483648", "-4", "-1", "0", "1", "2", "3",
                                             "4", "5", "6", "7", "2147483647"};
  return v;
}
inline const std::vector<std::string>& sizeValues() {
  static const std::vector<std::string> v = {"-2147483648", "-1", "0", "1", "2", "3", "7", "2147483647"};
  return v;
}
// Width and height together: negative pairs whose product is positive or
// wraps to 0 in 32 bits; a byte count past any address space; and pictures
// past the 32-bit limits that a 64-bit host can hold: the element count
// width * 4 * height past INT32_MAX (2^29 pixels), the pixel count past
// INT32_MAX (2^31), a row of INT32_MAX pixels, a column of INT32_MAX rows.
// (On a 32-bit host none of those can exist.)
inline const std::vector<std::pair<std::string, std::string>>& sizePairs() {
  static const std::vector<std::pair<std::string, std::string>> v = {
      {"-1", "-1"}, {"-2147483648", "-1"}, {"-1", "-2147483648"}, {"-2147483648", "-2147483648"},
      {"-65536", "-65536"}, {"2147483647", "2147483647"}, {"16384", "32769"}, {"46341", "46341"},
      {"2147483647", "1"}, {"1", "2147483647"}};
  return v;
}

// Arguments that ask for an amount of work (draws, lines, drops): the export
// does all of it, so their largest values would only measure patience. Their
// hostile values stop at the cap given here. A new export whose sweep does
// not return in time names the argument to add.
struct WorkCap {
  const char* exportPrefix;
  const char* param;
  int64_t cap;
};
inline constexpr WorkCap kWorkCaps[] = {
    {"VexoPixelNoise", "count", 256},  // count x count draws
    {"VexoAgedLines", "horizontalLines", 65536},
    {"VexoAgedLines", "verticalLines", 65536},
    {"VexoRainDrops", "drops", 65536},
    {"VexoMotionBlur", "distance", 65536},  // 2 x distance + 1 samples a pixel
    {"VexoZoomBlur", "strength", 65536},    // up to strength / 2 samples a pixel
    {"VexoRadialBlur", "spread", 4096},     // 2 x spread + 1 sines and cosines a pixel
    {"VexoBlooming", "passes", 4096},       // softenings until one changes nothing
};

// Pointer arguments an export never looks at, so a null one is not invalid.
inline bool unused(const std::string& exportName, const std::string& param) {
  return exportName == "Histogram128Fast" && param == "minimumNonZero";
}

inline std::vector<std::string> valuesOf(const Param& p) {
  switch (p.role) {
    case Role::Count: return countValues();
    case Role::Width: case Role::Height: return sizeValues();
    case Role::Channel: return {"-2147483648", "-1", "0", "5", "6", "255", "2147483647"};
    case Role::Reserved:
      if (p.type == Type::F32Ptr) return {"@null"};
      return {"-2147483648", "-1", "2147483647"};
    case Role::Value: break;
    default: return {};
  }
  switch (p.type) {
    case Type::I32:
      return {"-2147483648", "-2147483647", "-65536", "-256", "-1", "0", "1", "2",
              "255", "256", "32767", "32768", "65535", "65536", "2147483647"};
    case Type::U32: return {"0", "1", "0xffffff", "0x7fffffff", "0x80000000", "0xffffffff"};
    case Type::U8: return {"0", "1", "127", "128", "254", "255"};
    case Type::U16: return {"0", "1", "32767", "32768", "65535"};
    case Type::F32: case Type::F64: {
      std::vector<std::string> v = {"nan", "inf", "-inf", "1e30", "-1e30", "3.4028234663852886e38",
                                    "-3.4028234663852886e38", "1.4e-45", "-0", "2147483648", "-2147483904"};
      if (p.type == Type::F64) { v.push_back("1e300"); v.push_back("-1e300"); }
      return v;
    }
    default: return {};  // plug-in values are passed through, not interpreted
  }
}

inline bool isPointer(const Param& p) {
  switch (p.type) {
    case Type::Pixel32Ptr: case Type::Pixel64Ptr: case Type::Pixel128Ptr: case Type::U8Ptr:
    case Type::U16Ptr: case Type::F32Ptr: case Type::Text: case Type::StreamPtr: case Type::Handle:
      return true;
    default: return false;
  }
}

// A null device context (or bitmap) is documented as accepted, and a
// reserved pointer is not looked at: those nulls are not invalid.
inline bool nullIsInvalid(const Param& p) {
  return p.role != Role::Device && p.role != Role::Bitmap && p.role != Role::Reserved;
}

// The width / height pairs of an export: "width"/"height" and every
// "<name>Width"/"<name>Height".
inline std::vector<std::pair<std::string, std::string>> sizePairsOf(const table::Export& e) {
  std::vector<std::pair<std::string, std::string>> pairs;
  for (int i = 0; i < e.paramCount(); ++i) {
    const std::string n = e.params[i].name;
    if (e.params[i].role != Role::Width) continue;
    const std::string h = n == "width" ? "height" : n.substr(0, n.size() - 5) + "Height";
    if (e.find(h) >= 0) pairs.emplace_back(n, h);
  }
  return pairs;
}

inline std::string textOf(const CallText& c) {
  std::string s = c.name;
  for (const auto& [k, v] : c.values) s += " " + k + "=" + v;
  return s;
}

inline std::vector<Case> casesFor(const table::Export& e, const CallText& base) {
  std::vector<Case> out;
  auto add = [&](const std::map<std::string, std::string>& changes, bool invalid = false, bool placed = false) {
    CallText c = base;
    for (const auto& [k, v] : changes) c.values[k] = v;
    out.push_back({textOf(c), invalid, placed});
  };
  // One argument at a time. A lone width or height of INT32_MAX times the
  // other of the row would walk tens of billions of pixels: the pairs above
  // reach the same limits with fewer.
  for (int i = 0; i < e.paramCount(); ++i) {
    const Param& p = e.params[i];
    std::vector<std::string> values = valuesOf(p);
    if (e.size == table::SizeRule::Picture && (p.role == Role::Width || p.role == Role::Height))
      std::erase(values, "2147483647");
    for (const WorkCap& w : kWorkCaps) {
      if (std::string(e.name).rfind(w.exportPrefix, 0) != 0 || p.name != std::string(w.param)) continue;
      std::erase_if(values, [&](const std::string& v) { return std::stoll(v, nullptr, 0) > w.cap; });
      values.push_back(std::to_string(w.cap));
    }
    for (const std::string& v : values) add({{p.name, v}});
    if (isPointer(p) && p.role != Role::Reserved)
      add({{p.name, "@null"}}, nullIsInvalid(p) && !unused(e.name, p.name));
    if (p.role == Role::Path) {
      for (const char* v : {"", "@missing", "@dir"}) add({{p.name, v}}, true);
      if (std::string(p.name) == "pluginPath") add({{p.name, "@data:rgbe/good_rle.hdr"}}, true);
    }
    if (p.type == Type::StreamPtr) add({{p.name, "@nullbytes"}}, true);
  }
  // Every size at once, and each width / height pair.
  std::vector<std::string> sizes;
  for (int i = 0; i < e.paramCount(); ++i)
    if (e.params[i].role == Role::Count || e.params[i].role == Role::Width || e.params[i].role == Role::Height)
      sizes.push_back(e.params[i].name);
  if (sizes.size() > 1) {
    for (const std::string& v : sizeValues()) {
      std::map<std::string, std::string> all;
      for (const auto& s : sizes) all[s] = v;
      add(all);
    }
  }
  for (const auto& [w, h] : sizePairsOf(e))
    for (const auto& [wv, hv] : sizePairs()) add({{w, wv}, {h, hv}});
  // A canvas past 2^31 pixels with the region at its far corner and before
  // its first pixel: offsets into it pass 32 bits, but only the region is
  // walked.
  if (e.find("canvasWidth") >= 0 && e.find("canvasHeight") >= 0 && e.find("x") >= 0 && e.find("y") >= 0) {
    for (const char* at : {"46338", "-5"})
      add({{"canvasWidth", "46341"}, {"canvasHeight", "46341"}, {"x", at}, {"y", at}}, false, true);
  }
  // Placements far outside on both axes at once.
  if (e.find("x") >= 0 && e.find("y") >= 0) {
    for (const char* at : {"-2147483648", "2147483647", "2147483640"}) add({{"x", at}, {"y", at}});
  }
  return out;
}

// The result an export gives when it cannot do what was asked, for the
// exports that have one.
inline std::optional<int64_t> failureValue(const std::string& name) {
  if (name.rfind("RGBE_WriteHeader_", 0) == 0 || name.rfind("VexoSaveVXLFile", 0) == 0) return -1;
  if (name == "RGBE_ReadPixels_RLE" || name.rfind("CallToneMapping", 0) == 0) return 1;
  return std::nullopt;
}

// The statistics outputs are reset on entry, before any size is looked at.
inline bool resetOnEntry(const std::string& name) {
  return name == "minimum" || name == "maximum" || name == "minimumNonZero" || name == "sum";
}

// ---------------------------------------------------------------- watchdog

// Names the call that runs too long, or that makes the process grow past
// `memoryLimit` bytes of its own memory, and ends the process: a hang or a
// runaway allocation must not take the machine with it.
class Watchdog {
 public:
  Watchdog(std::chrono::seconds limit, uint64_t memoryLimit) : limit_(limit), memoryLimit_(memoryLimit) {
    thread_ = std::thread([this] { watch(); });
  }
  ~Watchdog() {
    stop_ = true;
    thread_.join();
  }
  Watchdog(const Watchdog&) = delete;
  Watchdog& operator=(const Watchdog&) = delete;

  void begin(const std::string& what) {
    std::lock_guard<std::mutex> lock(mutex_);
    current_ = what;
    started_ = std::chrono::steady_clock::now();
    busy_ = true;
  }
  void end() {
    std::lock_guard<std::mutex> lock(mutex_);
    busy_ = false;
  }

  // The process's own (anonymous) resident memory in bytes; 0 where unknown.
  static uint64_t ownMemory() {
#if defined(__linux__)
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
      if (line.rfind("RssAnon:", 0) == 0) return std::stoull(line.substr(8)) * 1024u;
#endif
    return 0;
  }

 private:
  // A plain sleep rather than a timed wait on a condition variable: under
  // Wine the mingw-w64 thread library's timed wait sometimes never returned,
  // and the join at the end hung.
  void watch() {
    while (!stop_) {
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
      std::lock_guard<std::mutex> lock(mutex_);
      if (!busy_) continue;
      const auto took = std::chrono::steady_clock::now() - started_;
      const uint64_t memory = ownMemory();
      if (took > limit_ || memory > memoryLimit_) {
        std::fprintf(stderr, "hostile: %s %s\n", current_.c_str(),
                     took > limit_ ? "did not return in time" : "grew past the memory limit");
        std::fflush(stderr);
        std::abort();
      }
    }
  }

  std::chrono::seconds limit_;
  uint64_t memoryLimit_;
  std::mutex mutex_;
  std::thread thread_;
  std::string current_;
  std::chrono::steady_clock::time_point started_;
  bool busy_ = false;
  std::atomic<bool> stop_{false};
};

// ------------------------------------------------------------------ runner

struct Tally {
  long run = 0;       // calls made
  long deferred = 0;  // long calls left to the full pass
  long skipped = 0;   // calls this platform cannot set up (a reservation it cannot make)
  std::vector<std::string> failures;
};

// Scratch pictures above this size fail during the long calls, as they
// would where memory runs out (the export then changes nothing).
inline constexpr size_t kLongCallScratch = size_t(256) << 20;

inline std::vector<std::vector<uint8_t>> snapshot(const PreparedCall& call) {
  std::vector<std::vector<uint8_t>> out;
  for (const auto& b : call.buffers()) {
    if (b->reserved()) out.emplace_back();
    else out.emplace_back(b->data(), b->data() + b->size());
  }
  return out;
}

inline std::vector<std::string> folderContents(const std::string& folder) {
  std::vector<std::string> names;
  std::error_code ec;
  for (const auto& entry : std::filesystem::directory_iterator(folder, ec))
    names.push_back(entry.path().filename().string());
  return names;
}

inline void runCase(const table::Export& e, const Case& c, bool full, Watchdog& watchdog, Tally& tally) {
  const CallText text = CallText::parse(c.text);
  std::unique_ptr<PreparedCall> call;
  try {
    call = std::make_unique<PreparedCall>(e, text, full || c.placed ? UINT64_MAX : kReserveAbove);
  } catch (const BufferTooLarge&) {
    ++tally.deferred;
    return;
  } catch (const std::exception&) {
    ++tally.skipped;
    return;
  }
  const bool long_ = call->reservedBuffers();
  const bool invalid = c.invalid || call->impossibleSizes();
  const bool empty = call->emptySizes();
  const auto before = snapshot(*call);
  const auto surfaces = call->surfacePixels();

  // EFFECTS_HOSTILE_TRACE names each call before it runs (to find one that
  // brings the whole process down).
  static const bool trace = std::getenv("EFFECTS_HOSTILE_TRACE") != nullptr;
  if (trace) std::fprintf(stderr, "hostile: calling %s\n", c.text.c_str());
  watchdog.begin(c.text);
  Result result;
  {
    ScratchLimit limit(long_ ? kLongCallScratch : SIZE_MAX);
    result = call->run();
  }
  watchdog.end();
  ++tally.run;
  if (!invalid && !empty) return;

  auto fail = [&](const std::string& what) { tally.failures.push_back(c.text + ": " + what); };
  const auto after = snapshot(*call);
  for (size_t b = 0; b < before.size(); ++b) {
    const std::string& name = call->buffers()[b]->name;
    if (!resetOnEntry(name) && before[b] != after[b]) fail("changed " + name);
  }
  if (!invalid) return;
  if (call->surfacePixels() != surfaces) fail("changed a device bitmap");
  for (const auto& f : call->outputs())
    if (std::filesystem::exists(f)) fail("wrote " + f);
  for (const auto& folder : call->folders())
    if (folderContents(folder) != std::vector<std::string>{"dir"}) fail("left files in " + folder);
  if (const auto failure = failureValue(e.name); failure && result.i != *failure)
    fail("returned " + std::to_string(result.i) + ", not " + std::to_string(*failure));
}

// runCase in a child process, so that a crash is reported and the sweep
// goes on (for finding every fault at once; POSIX only).
inline void runCaseIsolated(const table::Export& e, const Case& c, bool full, std::chrono::seconds limit,
                            Watchdog& watchdog, Tally& tally) {
#if defined(_WIN32)
  (void)limit;
  runCase(e, c, full, watchdog, tally);
#else
  std::fflush(nullptr);
  int channel[2];
  if (pipe(channel) != 0) return runCase(e, c, full, watchdog, tally);
  const pid_t child = fork();
  if (child == 0) {
    close(channel[0]);
    Watchdog own(limit, uint64_t(4) << 30);
    Tally mine;
    runCase(e, c, full, own, mine);
    std::string report = std::to_string(mine.run) + " " + std::to_string(mine.deferred) + " " +
                         std::to_string(mine.skipped) + "\n";
    for (const auto& f : mine.failures) report += f + "\n";
    (void)!write(channel[1], report.data(), report.size());
    _exit(0);
  }
  close(channel[1]);
  watchdog.begin(c.text);
  std::string report;
  char buf[4096];
  for (ssize_t n; (n = read(channel[0], buf, sizeof buf)) > 0;) report.append(buf, static_cast<size_t>(n));
  close(channel[0]);
  int status = 0;
  waitpid(child, &status, 0);
  watchdog.end();
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    ++tally.run;
    tally.failures.push_back(c.text + ": ended abnormally (" +
                             (WIFSIGNALED(status) ? "signal " + std::to_string(WTERMSIG(status))
                                                  : "exit " + std::to_string(WEXITSTATUS(status))) +
                             "; its messages are above)");
    return;
  }
  std::istringstream in(report);
  long run = 0, deferred = 0, skipped = 0;
  in >> run >> deferred >> skipped;
  tally.run += run;
  tally.deferred += deferred;
  tally.skipped += skipped;
  std::string line;
  std::getline(in, line);
  while (std::getline(in, line)) tally.failures.push_back(line);
#endif
}

// Every case of every export in the table (those named by `only`, a prefix,
// when it is not empty; of those, every `parts`-th from the `part`-th, so that
// several processes can share the pass, and none before table index `from`,
// so that a pass can be taken up where one stopped); `isolated` runs each in
// a child process.
inline Tally runAll(bool full, std::chrono::seconds limit, const std::string& only = "", bool isolated = false,
                    unsigned part = 0, unsigned parts = 1, size_t from = 0) {
  // Isolated calls watch themselves; this one only guards against a child
  // that cannot end.
  Watchdog watchdog(isolated ? limit + std::chrono::seconds(60) : limit, uint64_t(4) << 30);
  const auto rows = firstChecksumRows();
  Tally tally;
  for (size_t index = 0; index < std::size(table::kExports); ++index) {
    const table::Export& e = table::kExports[index];
    if (index < from || index % parts != part) continue;
    if (!only.empty() && std::string(e.name).rfind(only, 0) != 0) continue;
    const auto row = rows.find(e.name);
    const CallText base = row != rows.end() ? row->second : syntheticRow(e);
    // The full pass takes hours: say where it is.
    if (isolated) std::printf("  at %zu %s (%ld calls so far)\n", index, e.name, tally.run), std::fflush(stdout);
    for (const Case& c : casesFor(e, base)) {
      const size_t failed = tally.failures.size();
      if (isolated) runCaseIsolated(e, c, full, limit, watchdog, tally);
      else runCase(e, c, full, watchdog, tally);
      // A pass of hours says what failed as it happens, not only at its end.
      if (isolated)
        for (size_t f = failed; f < tally.failures.size(); ++f) std::printf("  failed: %s\n", tally.failures[f].c_str());
    }
  }
  return tally;
}

}  // namespace effects::test::hostile
