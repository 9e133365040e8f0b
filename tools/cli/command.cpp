#include "cli/command.h"

#include <algorithm>
#include <atomic>
#include <cctype>
#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <thread>

#include "cli/files.h"
#include "cli/invocation.h"
#include "export_table.h"

#if defined(_WIN32)
#include <io.h>
#define EFFECTS_ISATTY _isatty
#define EFFECTS_FILENO _fileno
#else
#include <unistd.h>
#define EFFECTS_ISATTY isatty
#define EFFECTS_FILENO fileno
#endif

namespace effects::cli {

namespace fs = std::filesystem;
using table::Export;
using table::Kind;
using table::Param;
using table::Role;
using table::Use;

namespace {

const char* kUsage =
    "usage:\n"
    "  effects list [PATTERN]            the exports (PATTERN: part of a name, or a glob with * and ?)\n"
    "  effects help NAME                 one export: its parameters, how the tool fills them, its notes\n"
    "  effects run NAME [IN] [OUT] [--param value ...] [then NAME [--param value ...] ...]\n"
    "  effects run NAME --out-dir DIR IN... [--param value ...] [then ...]\n"
    "  effects convert IN OUT [--png-depth 8|16]   a picture into another file format\n"
    "\n"
    "IN is a .png (8 or 16 bits; grey, RGB, RGBA, palette) or .hdr file; OUT a .png, .hdr or .vxl\n"
    "file, written under a temporary name and renamed when complete. The picture is converted to\n"
    "each export's layout (full maps to full); sizes, element counts and buffers are filled in.\n"
    "NAME may be a family without its layout (VexoGamma): the member for the picture's layout runs.\n"
    "A second picture an export reads is given as --NAME FILE (--source layer.png); a picture it\n"
    "writes without reading it (a target, a region) starts blank, or from --NAME FILE, sized by\n"
    "its size parameters (default: the size of IN). Measurements are printed.\n"
    "'then' passes the picture on to the next export. With --out-dir each IN (a file, or a folder\n"
    "of .png and .hdr files) is processed on its own, several at once (--jobs N; default: all\n"
    "cores), into DIR under its own name. --png-depth 8|16 sets the depth of PNG output (default:\n"
    "8 for the 8-bit layout and for 8-bit input through the float layout, else 16).\n"
    "Exit status: 0 done, 1 a run failed (in a batch: any file), 2 a usage error.\n";

struct Plan {
  std::vector<Step> steps;
  std::vector<std::string> files;
  std::string outDir;
  unsigned jobs = 0;
  int pngBits = 0;
};

// What a chain needs and makes, from the bindings of its exports.
struct Shape {
  bool needsInput = false;  // some export reads a picture before any makes one
  bool makesPicture = false;
  bool writesFile = false;   // the last export writes the output file itself
  bool printsOnly = false;   // the last export makes neither: OUT is optional
};

Shape shapeOf(const Plan& plan) {
  Shape s;
  bool have = false;
  for (size_t i = 0; i < plan.steps.size(); ++i) {
    const Export& e = resolve(plan.steps[i].name, nullptr);
    if (const std::string why = notCallable(e); !why.empty()) throw UsageError(why);
    const Binding b = bind(e);
    if (b.main >= 0 && !have) s.needsInput = have = true;
    if (b.output >= 0) have = true;
    if (b.outFile >= 0) {
      if (i + 1 != plan.steps.size()) throw UsageError(std::string(e.name) + " writes a file: it must be the last step");
      s.writesFile = true;
    }
    if (i + 1 == plan.steps.size()) s.printsOnly = b.output < 0 && b.outFile < 0;
  }
  s.makesPicture = have;
  return s;
}

Plan parseRun(const std::vector<std::string>& args) {
  Plan plan;
  bool expectName = true;
  for (size_t i = 1; i < args.size(); ++i) {
    const std::string& a = args[i];
    if (expectName) {
      if (a.rfind("--", 0) == 0 || a == "then") throw UsageError("expected an export name, got '" + a + "'");
      plan.steps.push_back(Step{a, {}});
      expectName = false;
      continue;
    }
    if (a == "then") {
      expectName = true;
      continue;
    }
    if (a.rfind("--", 0) == 0 && a.size() > 2) {
      std::string key = a.substr(2), value;
      if (const auto eq = key.find('='); eq != std::string::npos) {
        value = key.substr(eq + 1);
        key.resize(eq);
      } else {
        if (i + 1 >= args.size()) throw UsageError(a + " needs a value");
        value = args[++i];
      }
      if (key == "out-dir") {
        plan.outDir = value;
      } else if (key == "jobs") {
        char* end = nullptr;
        const long n = std::strtol(value.c_str(), &end, 10);
        if (*end || n < 1 || n > 1024) throw UsageError("--jobs: '" + value + "' is not a count of 1..1024");
        plan.jobs = static_cast<unsigned>(n);
      } else if (key == "png-depth") {
        if (value != "8" && value != "16") throw UsageError("--png-depth: '" + value + "' is not 8 or 16");
        plan.pngBits = std::stoi(value);
      } else {
        plan.steps.back().options.emplace_back(key, value);
      }
      continue;
    }
    plan.files.push_back(a);
  }
  if (plan.steps.empty()) throw UsageError("run: which export? (effects list shows them)");
  if (expectName) throw UsageError("'then' must be followed by an export name");
  return plan;
}

// Runs the chain on one picture; returns what the exports printed.
std::string runChain(const Plan& plan, const std::string& in, const std::string& out) {
  // Each picture starts from the library's default random seed, so a file
  // gives the same result alone and in a batch, on any thread.
  if (const Export* seed = table::findExport("EffectsSeedRandom")) {
    table::Arg one;
    one.i = 1;
    seed->call(&one);
  }
  std::optional<Image> current;
  Loaded input;
  if (!in.empty()) {
    input = readPicture(in);
    current = std::move(input.image);
  }
  std::string printed;
  for (const Step& step : plan.steps) {
    const Export& e = resolve(step.name, current ? &*current : nullptr);
    const Binding b = bind(e);
    StepResult r;
    if (b.outFile >= 0) {
      if (out.empty()) throw UsageError(std::string(e.name) + " writes a file: give OUT");
      checkFolder(out);
      const std::string temp = temporaryBeside(out);
      try {
        r = run(e, step, current ? &*current : nullptr, temp);
        std::error_code ec;
        if (!fs::is_regular_file(temp, ec)) throw std::runtime_error(out + ": " + e.name + " wrote no file");
      } catch (...) {
        std::remove(temp.c_str());
        throw;
      }
      commit(temp, out);
    } else {
      r = run(e, step, current ? &*current : nullptr, "");
    }
    if (r.image) current = std::move(r.image);
    printed += r.printed;
  }
  const Shape s = shapeOf(plan);
  if (!out.empty() && !s.writesFile) {
    if (!current) throw UsageError("the exports make no picture to write to " + out);
    WriteOptions w;
    w.alpha = input.alpha;
    w.pngBits = plan.pngBits ? plan.pngBits
                : current->depth == Depth::P32 ? 8
                : current->depth == Depth::P128 && input.bits == 8 ? 8
                                                                   : 16;
    writePicture(out, *current, w);
  }
  return printed;
}

std::vector<std::string> expandInputs(const std::vector<std::string>& files) {
  std::vector<std::string> out;
  for (const auto& f : files) {
    std::error_code ec;
    if (fs::is_directory(f, ec)) {
      std::vector<std::string> found;
      for (const auto& entry : fs::directory_iterator(f, ec)) {
        std::string ext = entry.path().extension().string();
        std::transform(ext.begin(), ext.end(), ext.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        if (entry.is_regular_file() && (ext == ".png" || ext == ".hdr")) found.push_back(entry.path().string());
      }
      std::sort(found.begin(), found.end());
      out.insert(out.end(), found.begin(), found.end());
    } else {
      out.push_back(f);
    }
  }
  return out;
}

std::string seconds(double s) {
  char buf[32];
  if (s < 60) std::snprintf(buf, sizeof buf, "%.0f s", s);
  else std::snprintf(buf, sizeof buf, "%d min %02d s", static_cast<int>(s) / 60, static_cast<int>(s) % 60);
  return buf;
}

int runBatch(const Plan& plan, const Shape& shape, std::FILE* out, std::FILE* err) {
  if (!shape.needsInput) throw UsageError("--out-dir: the exports read no input picture");
  if (shape.printsOnly) throw UsageError("--out-dir: the last export writes no picture");
  const std::vector<std::string> inputs = expandInputs(plan.files);
  if (inputs.empty()) throw UsageError("--out-dir: no input files");
  std::error_code ec;
  fs::create_directories(plan.outDir, ec);
  if (!fs::is_directory(plan.outDir, ec)) throw std::runtime_error(plan.outDir + ": cannot create the folder");
  std::vector<std::string> outputs;
  for (const auto& in : inputs) {
    outputs.push_back((fs::path(plan.outDir) / fs::path(in).filename()).string());
    if (fs::exists(outputs.back(), ec) && fs::equivalent(in, outputs.back(), ec))
      throw UsageError(in + ": the output would replace the input (choose another --out-dir)");
  }

  const size_t total = inputs.size();
  const unsigned jobs = static_cast<unsigned>(
      std::min<size_t>(total, plan.jobs ? plan.jobs : std::max(1u, std::thread::hardware_concurrency())));
  const bool terminal = EFFECTS_ISATTY(EFFECTS_FILENO(err)) != 0;
  std::atomic<size_t> next{0};
  size_t done = 0, failed = 0;
  std::mutex lock;
  std::condition_variable changed;
  bool progressShown = false;
  auto clearProgress = [&] {
    if (progressShown) std::fputs("\r\033[K", err);
    progressShown = false;
  };

  auto worker = [&] {
    for (size_t i; (i = next++) < total;) {
      std::string message, printed;
      try {
        printed = runChain(plan, inputs[i], outputs[i]);
      } catch (const std::exception& ex) {
        message = ex.what();
      }
      std::lock_guard<std::mutex> g(lock);
      clearProgress();
      if (!message.empty()) {
        std::fprintf(err, "effects: %s: %s\n", inputs[i].c_str(), message.c_str());
        ++failed;
      }
      if (!printed.empty()) std::fprintf(out, "%s:\n%s", inputs[i].c_str(), printed.c_str());
      ++done;
      changed.notify_all();
    }
  };
  const auto start = std::chrono::steady_clock::now();
  std::vector<std::thread> threads;
  for (unsigned t = 0; t < jobs; ++t) threads.emplace_back(worker);
  {
    std::unique_lock<std::mutex> g(lock);
    while (done < total) {
      changed.wait_for(g, std::chrono::milliseconds(250));
      if (!terminal || done == total) continue;
      const double elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
      const double rate = elapsed > 0 ? static_cast<double>(done) / elapsed : 0.0;
      std::string left = rate > 0 ? ", " + seconds(static_cast<double>(total - done) / rate) + " left" : "";
      clearProgress();
      std::fprintf(err, "%zu/%zu files, %.1f files/s%s", done, total, rate, left.c_str());
      std::fflush(err);
      progressShown = true;
    }
    clearProgress();
  }
  for (auto& t : threads) t.join();
  if (failed) std::fprintf(err, "effects: %zu of %zu files failed\n", failed, total);
  return failed ? 1 : 0;
}

int runOne(const Plan& plan, const Shape& shape, std::FILE* out) {
  // IN when an export reads a picture first; OUT when the chain makes a
  // picture or a file, optional when the last export only prints.
  const bool wantsOut = shape.makesPicture || shape.writesFile;
  const size_t most = (shape.needsInput ? 1 : 0) + (wantsOut ? 1 : 0);
  const size_t least = most - (wantsOut && shape.printsOnly ? 1 : 0);
  if (plan.files.size() < least || plan.files.size() > most) {
    std::string what = shape.needsInput ? "IN" : "";
    if (wantsOut) what += std::string(what.empty() ? "" : " ") + (least < most ? "[OUT]" : "OUT");
    throw UsageError("expected " + (what.empty() ? std::string("no file names") : what) + ", got " +
                     std::to_string(plan.files.size()) + " file name" + (plan.files.size() == 1 ? "" : "s"));
  }
  const std::string in = shape.needsInput ? plan.files[0] : "";
  const size_t outAt = shape.needsInput ? 1 : 0;
  const std::string outFile = plan.files.size() > outAt ? plan.files[outAt] : "";
  if (!outFile.empty() && !shape.writesFile) formatOf(outFile);  // an unknown format fails before the work
  std::fputs(runChain(plan, in, outFile).c_str(), out);
  return 0;
}

bool globMatch(const char* p, const char* s) {
  for (; *p; ++p, ++s) {
    if (*p == '*') {
      for (const char* t = s;; ++t) {
        if (globMatch(p + 1, t)) return true;
        if (!*t) return false;
      }
    }
    if (!*s || (*p != '?' && std::tolower(static_cast<unsigned char>(*p)) != std::tolower(static_cast<unsigned char>(*s))))
      return false;
  }
  return !*s;
}

bool matches(const std::string& pattern, const Export& e) {
  if (pattern.find_first_of("*?") != std::string::npos) return globMatch(pattern.c_str(), e.name);
  std::string name = e.name, pat = pattern;
  for (auto* s : {&name, &pat})
    std::transform(s->begin(), s->end(), s->begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return name.find(pat) != std::string::npos;
}

std::string signature(const Export& e) {
  std::string s = std::string(e.name) + "(";
  for (int i = 0; i < e.paramCount(); ++i)
    s += std::string(i ? ", " : "") + typeName(e.params[i].type) + " " + e.params[i].name;
  return s + ") -> " + typeName(e.result);
}

int list(const std::vector<std::string>& args, std::FILE* out) {
  if (args.size() > 2) throw UsageError("list takes at most one pattern");
  size_t shown = 0;
  for (const Export& e : table::kExports) {
    if (args.size() == 2 && !matches(args[1], e)) continue;
    std::fprintf(out, "%s%s\n", signature(e).c_str(), notCallable(e).empty() ? "" : "  [not for the tool]");
    ++shown;
  }
  if (args.size() == 2 && shown == 0) throw UsageError("no export matches '" + args[1] + "'");
  return 0;
}

void wrap(std::FILE* out, const std::string& text, const char* indent) {
  size_t col = 0;
  std::string word;
  auto flush = [&] {
    if (word.empty()) return;
    if (col && col + 1 + word.size() > 78) {
      std::fputc('\n', out);
      col = 0;
    }
    if (!col) col = static_cast<size_t>(std::fprintf(out, "%s", indent));
    else col += static_cast<size_t>(std::fprintf(out, " "));
    col += static_cast<size_t>(std::fprintf(out, "%s", word.c_str()));
    word.clear();
  };
  for (char c : text) {
    if (c == ' ') flush();
    else word += c;
  }
  flush();
  if (col) std::fputc('\n', out);
}

std::string sizeOwner(const Export& e, int index) {
  for (int i = 0; i < e.paramCount(); ++i)
    if (e.params[i].shape.width == index || e.params[i].shape.height == index) return e.params[i].name;
  return "";
}

int help(const std::vector<std::string>& args, std::FILE* out) {
  if (args.size() < 2) {
    std::fputs(kUsage, out);
    return 0;
  }
  const Export& e = resolve(args[1], nullptr);
  std::fprintf(out, "%s\n  (effects/%s)\n", signature(e).c_str(), e.header);
  if (*e.help) wrap(out, e.help, "  ");
  if (const std::string why = notCallable(e); !why.empty()) {
    std::fprintf(out, "\n  %s.\n", why.c_str());
    return 0;
  }
  const Binding b = bind(e);
  std::string usage = std::string("effects run ") + e.name + (b.main >= 0 ? " IN" : "") +
                      (b.output >= 0 || b.outFile >= 0 ? " OUT" : "");
  std::fputs("\n  parameters:\n", out);
  for (int i = 0; i < e.paramCount(); ++i) {
    const Param& p = e.params[i];
    std::string how;
    const bool pictureLike = p.shape.kind == Kind::Picture || p.shape.kind == Kind::Samples;
    if (i == b.main) {
      how = i == b.output ? "the picture: IN, changed in place, written to OUT" : "read from IN";
    } else if (pictureLike && p.shape.use == Use::Scratch) {
      how = "scratch, filled in";
    } else if (pictureLike) {
      how = p.shape.use == Use::In ? "--" + std::string(p.name) + " FILE (required)"
                                   : std::string(i == b.output ? "written to OUT; " : "") + "starts as --" + p.name +
                                         " FILE, or blank";
      if (p.shape.use == Use::In) usage += " --" + std::string(p.name) + " FILE";
    } else if (p.shape.kind == Kind::Fixed) {
      how = p.shape.use == Use::Out ? "printed" : "filled in";
    } else if (p.role == Role::Path) {
      how = p.shape.use == Use::Out ? "the file OUT" : "--" + std::string(p.name) + " FILE";
      if (p.shape.use != Use::Out) usage += " --" + std::string(p.name) + " FILE";
    } else if (p.role == Role::Count || p.role == Role::Width || p.role == Role::Height) {
      const std::string owner = sizeOwner(e, i);
      const int ownerIndex = e.find(owner);
      const bool fromPicture = ownerIndex == b.main || (ownerIndex >= 0 && e.params[ownerIndex].shape.use == Use::In);
      how = fromPicture ? "from the picture for '" + owner + "'"
                        : "--" + std::string(p.name) + " VALUE, or from IN; sizes '" + owner + "'";
    } else {
      const auto d = defaultOf(p);
      how = "--" + std::string(p.name) + " VALUE" + (d ? " (default " + *d + ")" : "");
      if (!d) usage += " --" + std::string(p.name) + " VALUE";
    }
    std::fprintf(out, "    %-16s %-12s %s\n", p.name, typeName(p.type), how.c_str());
  }
  if (b.output < 0 && b.outFile < 0) std::fputs("\n  prints its result and measurements.\n", out);
  std::fprintf(out, "\n  %s\n", usage.c_str());
  return 0;
}

int convertFile(const std::vector<std::string>& args) {
  Plan plan;
  for (size_t i = 1; i < args.size(); ++i) {
    if (args[i] == "--png-depth" && i + 1 < args.size()) {
      if (args[i + 1] != "8" && args[i + 1] != "16") throw UsageError("--png-depth: '" + args[i + 1] + "' is not 8 or 16");
      plan.pngBits = std::stoi(args[++i]);
    } else {
      plan.files.push_back(args[i]);
    }
  }
  if (plan.files.size() != 2) throw UsageError("convert: expected IN OUT");
  formatOf(plan.files[1]);
  Loaded in = readPicture(plan.files[0]);
  WriteOptions w;
  w.alpha = in.alpha;
  w.pngBits = plan.pngBits ? plan.pngBits : in.bits == 8 ? 8 : 16;
  writePicture(plan.files[1], in.image, w);
  return 0;
}

}  // namespace

int runCommand(const std::vector<std::string>& args, std::FILE* out, std::FILE* err) {
  try {
    if (args.empty() || args[0] == "--help" || args[0] == "-h") {
      std::fputs(kUsage, args.empty() ? err : out);
      return args.empty() ? 2 : 0;
    }
    if (args[0] == "list") return list(args, out);
    if (args[0] == "convert") return convertFile(args);
    if (args[0] == "help") return help(args, out);
    if (args[0] == "run") {
      const Plan plan = parseRun(args);
      const Shape shape = shapeOf(plan);
      return plan.outDir.empty() ? runOne(plan, shape, out) : runBatch(plan, shape, out, err);
    }
    throw UsageError("unknown command '" + args[0] + "' (list, help or run)");
  } catch (const UsageError& e) {
    std::fprintf(err, "effects: %s\n", e.what());
    return 2;
  } catch (const std::exception& e) {
    std::fprintf(err, "effects: %s\n", e.what());
    return 1;
  }
}

}  // namespace effects::cli
