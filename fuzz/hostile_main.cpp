// The full hostile-argument pass (tests/support/hostile.h): every export with
// every hostile argument, the long calls over gigabytes of reserved address
// space included, each call in a child process so that one crash does not
// hide the next. Built with clang's sanitizers by the fuzz preset and run by
// scripts/fuzz-long.
//
//   hostile_full [--seconds N] [--only PREFIX] [--part K/N] [--from INDEX]
//
// --part K/N takes every N-th export from the K-th (0 <= K < N), so N
// processes share the pass; --from INDEX starts at that index of the export
// table (the progress lines give each export's index), to take up a pass
// where it was stopped.
//
// Prints every failure and a summary line; exits 1 when anything failed.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "support/hostile.h"

int main(int argc, char** argv) {
  int seconds = 3600;
  std::string only;
  unsigned part = 0, parts = 1;
  size_t from = 0;
  for (int i = 1; i + 1 < argc; i += 2) {
    const std::string flag = argv[i];
    if (flag == "--seconds") seconds = std::atoi(argv[i + 1]);
    else if (flag == "--only") only = argv[i + 1];
    else if (flag == "--part" && std::sscanf(argv[i + 1], "%u/%u", &part, &parts) != 2) parts = 0;
    else if (flag == "--from") from = std::strtoul(argv[i + 1], nullptr, 10);
  }
  if (parts == 0 || part >= parts) {
    std::fprintf(stderr, "hostile_full: --part takes K/N with 0 <= K < N\n");
    return 2;
  }
  using namespace effects::test::hostile;
  const auto started = std::chrono::steady_clock::now();
  const Tally tally = runAll(true, std::chrono::seconds(seconds), only, true, part, parts, from);
  const auto took = std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - started);
  for (const auto& f : tally.failures) std::printf("FAILED %s\n", f.c_str());
  if (parts > 1 || from > 0) std::printf("hostile: part %u of %u, from export %zu\n", part + 1, parts, from);
  std::printf("hostile: %zu exports, %ld calls (long ones included), %ld failed, %ld not possible here, %llds\n",
              std::size(effects::table::kExports), tally.run, static_cast<long>(tally.failures.size()),
              tally.skipped, static_cast<long long>(took.count()));
  return tally.failures.empty() ? 0 : 1;
}
