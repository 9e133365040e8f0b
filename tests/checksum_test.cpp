// The checksum table: one or more seeded calls of every export, each with the
// hash of everything the call leaves behind (its result, every buffer, every
// file written and every device bitmap). Any change to any export's bytes
// fails here with the export's name and the line of the table.
//
// tests/data/checksums.txt holds the rows: "<call> : <hash>" (see
// support/export_call.h for the call's text), tests/data/sweeps.txt the
// exhaustive ones. To record hashes after an intended change, run with
// EFFECTS_RECORD_CHECKSUMS=<path> (or EFFECTS_RECORD_SWEEPS=<path>): the table
// is written there with every hash recomputed.
#include <gtest/gtest.h>

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <set>
#include <string>

#include "support/export_call.h"

namespace effects::test {
namespace {

struct Row {
  int line;
  std::string call;  // the text before " : "
  std::string hash;  // 16 hex digits, or "?" when not recorded yet
};

std::vector<std::string> tableLines(const char* file = "checksums.txt") {
  std::ifstream in(dataPath(file));
  std::vector<std::string> lines;
  for (std::string s; std::getline(in, s);) lines.push_back(s);
  return lines;
}

Row rowOf(const std::string& s, int line) {
  const auto colon = s.rfind(" : ");
  if (colon == std::string::npos) return {line, s, "?"};
  return {line, s.substr(0, colon), s.substr(colon + 3)};
}

std::string hexOf(uint64_t h) {
  char buf[17];
  std::snprintf(buf, sizeof buf, "%016" PRIx64, h);
  return buf;
}

// Runs one row; returns the hash, or an error message in `error`.
std::string hashOf(const std::string& call, std::string* error) {
  try {
    const CallText text = CallText::parse(call);
    const table::Export* e = table::findExport(text.name);
    if (e == nullptr) return "";  // an export this platform does not have
    PreparedCall prepared(*e, text);
    return hexOf(prepared.hash(prepared.run()));
  } catch (const std::exception& ex) {
    *error = ex.what();
    return "";
  }
}

bool isRow(const std::string& s) { return !s.empty() && s[0] != '#'; }

void expectRecordedHashes(const char* file, const char* recordVariable) {
  const auto lines = tableLines(file);
  ASSERT_FALSE(lines.empty()) << "no table at " << dataPath(file);
  const char* record = std::getenv(recordVariable);
  std::ofstream out;
  if (record) out.open(record);
  for (size_t i = 0; i < lines.size(); ++i) {
    if (!isRow(lines[i])) {
      if (record) out << lines[i] << '\n';
      continue;
    }
    const Row row = rowOf(lines[i], static_cast<int>(i + 1));
    std::string error;
    const std::string got = hashOf(row.call, &error);
    EXPECT_TRUE(error.empty()) << "line " << row.line << ": " << error;
    if (record) {
      out << row.call << " : " << (got.empty() ? row.hash : got) << '\n';
    } else if (!got.empty()) {
      EXPECT_EQ(got, row.hash) << "line " << row.line << ": " << row.call;
    }
  }
}

TEST(Checksums, EveryRowGivesItsRecordedHash) { expectRecordedHashes("checksums.txt", "EFFECTS_RECORD_CHECKSUMS"); }

// Exhaustive 8-bit sweeps (fill=sweep) where a family's domain fits in 2^24
// inputs: every colour triple through the colour adjustments, every
// (target, source, mask) triple through the 8-bit blend modes. Slow without
// optimisation, so the sanitizer run leaves them out.
TEST(Sweeps, EveryRowGivesItsRecordedHash) { expectRecordedHashes("sweeps.txt", "EFFECTS_RECORD_SWEEPS"); }

TEST(Checksums, EveryExportHasARow) {
  std::set<std::string> covered;
  for (const auto& s : tableLines())
    if (isRow(s)) covered.insert(CallText::parse(rowOf(s, 0).call).name);
  for (const auto& e : table::kExports) EXPECT_TRUE(covered.count(e.name)) << e.name << " has no row";
}

}  // namespace
}  // namespace effects::test
