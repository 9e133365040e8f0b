// A host may call with its own floating-point settings. Every export gives
// the same bytes whatever the host has set: every row of the checksum table
// is run with flush-to-zero, denormals-are-zero and unmasked exceptions (and
// on x87 53-bit precision and rounding down), and also rounding up where the
// export takes no floating-point argument (the test's own conversion of such
// an argument would round up too), and must give its recorded hash; the
// host's settings are back afterwards.
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <set>
#include <string>

#include "support/export_call.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace effects::test {
namespace {

#if defined(__SSE2__) && (defined(__i386__) || defined(__x86_64__))

constexpr uint32_t kHostileCsr = 0x9940;   // FTZ, DAZ, invalid/zero/overflow unmasked
constexpr uint32_t kRoundUp = 0x4000;      // and rounding toward +infinity
constexpr uint16_t kHostileX87 = 0x0672;  // 53-bit precision, round down, invalid/zero/overflow unmasked

uint16_t x87() {
  uint16_t cw;
  __asm__ __volatile__("fnstcw %0" : "=m"(cw));
  return cw;
}
void setX87(uint16_t cw) {
  __asm__ __volatile__("fnclex\n\tfldcw %0" : : "m"(cw));
}

// Runs f under the hostile settings and puts the defaults back; returns the
// settings found on return (before they are put back).
template <class F>
std::pair<uint32_t, uint16_t> hostile(uint32_t settings, F&& f) {
  const uint32_t csr = _mm_getcsr();
  const uint16_t cw = x87();
  _mm_setcsr(settings);
  setX87(kHostileX87);
  f();
  const std::pair<uint32_t, uint16_t> after{_mm_getcsr(), x87()};
  setX87(cw);
  _mm_setcsr(csr & ~0x3Fu);
  return after;
}

TEST(HostFloatSettings, ChecksumRowsUnchanged) {
  std::ifstream in(dataPath("checksums.txt"));
  int rows = 0;
  for (std::string line; std::getline(in, line);) {
    if (line.empty() || line[0] == '#') continue;
    const auto colon = line.rfind(" : ");
    ASSERT_NE(colon, std::string::npos) << line;
    const CallText text = CallText::parse(line.substr(0, colon));
    const table::Export* e = table::findExport(text.name);
    if (e == nullptr) continue;
    bool floatArguments = e->result == table::Type::F32 || e->result == table::Type::F64;
    for (int i = 0; i < e->paramCount(); ++i)
      floatArguments |= e->params[i].type == table::Type::F32 || e->params[i].type == table::Type::F64;
    for (uint32_t settings : {kHostileCsr, kHostileCsr | kRoundUp}) {
      if (floatArguments && settings != kHostileCsr) continue;
      PreparedCall call(*e, text);
      Result r{};
      const auto after = hostile(settings, [&] { r = call.run(); });
      char hash[17];
      std::snprintf(hash, sizeof hash, "%016llx", static_cast<unsigned long long>(call.hash(r)));
      EXPECT_EQ(hash, line.substr(colon + 3)) << line << " (MXCSR " << std::hex << settings << ")";
      EXPECT_EQ(after.first & ~0x3Fu, settings) << "the host's MXCSR is not back after " << text.name;
      EXPECT_EQ(after.second & 0x0F3F, kHostileX87 & 0x0F3F) << "the host's x87 control word is not back after " << text.name;
    }
    ++rows;
  }
  EXPECT_GT(rows, 300);
}

#endif

}  // namespace
}  // namespace effects::test
