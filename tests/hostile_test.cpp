// Every export of the table against hostile arguments (support/hostile.h).
// This is the short pass: the calls whose buffers are gigabytes of reserved
// address space, walking billions of pixels, run in the full pass
// (EFFECTS_HOSTILE=full, or fuzz/hostile_main.cpp from scripts/fuzz-long).
// EFFECTS_HOSTILE_ONLY=<prefix> limits the sweep to the exports so named;
// EFFECTS_HOSTILE_ISOLATED=1 runs each call in a child process, so that every
// crash is listed rather than the first ending the run;
// EFFECTS_HOSTILE_SECONDS=<n> is how long one call may take.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "support/hostile.h"

namespace effects::test::hostile {
namespace {
using table::Kind;
using table::Order;
using table::Use;

TEST(Hostile, EveryExportSurvivesEdgeArguments) {
  const char* mode = std::getenv("EFFECTS_HOSTILE");
  const char* only = std::getenv("EFFECTS_HOSTILE_ONLY");
  const bool full = mode != nullptr && std::string(mode) == "full";
  const bool isolated = std::getenv("EFFECTS_HOSTILE_ISOLATED") != nullptr;
  const char* seconds = std::getenv("EFFECTS_HOSTILE_SECONDS");
  const auto limit = std::chrono::seconds(seconds ? std::atoi(seconds) : full ? 3600 : 120);
  const Tally tally = runAll(full, limit, only ? only : "", isolated);
  for (const auto& f : tally.failures) ADD_FAILURE() << f;
  std::printf("hostile: %zu exports, %ld calls, %ld long calls left to the full pass, %ld not possible here\n",
              std::size(table::kExports), tally.run, tally.deferred, tally.skipped);
  if (only == nullptr) {
    EXPECT_GT(tally.run, 40 * static_cast<long>(std::size(table::kExports)));
  }
}

// The checks themselves, on stand-in exports with planted faults: a count
// below 1 that still writes the first pixel, and a writer that reports
// success for a file it could not write.
int32_t writesFirstPixelAlways(int32_t, Pixel32* pixels) {
  if (pixels) pixels[0].blue ^= 1;
  return 0;
}
int32_t claimsSuccess(const char*, int32_t, int32_t, const Pixel32*, float*) { return 0; }

TEST(Hostile, TheChecksCatchPlantedFaults) {
  const table::Export touchy{"PlantedMask32", Type::I32, 32, table::Platforms::All, table::SizeRule::Count, "", "", "",
                             {{"elementCount", Type::I32, Role::Count, false, {Kind::None, Use::None, Order::None, 0, -1, -1}},
                              {"pixels", Type::Pixel32Ptr, Role::Pixels, false, {Kind::Picture, Use::Out, Order::Bgra, 4, 0, -1}}},
                             [](const Arg* a) {
                               return Result::of(writesFirstPixelAlways(a[0].as<int32_t>(), a[1].as<Pixel32*>()));
                             }};
  const table::Export liar{"RGBE_WriteHeader_Planted", Type::I32, 32, table::Platforms::All,
                           table::SizeRule::Picture, "", "", "",
                           {{"fileName", Type::Text, Role::Path, true, {Kind::None, Use::Out, Order::None, 0, -1, -1}}, {"width", Type::I32, Role::Width, false, {Kind::None, Use::None, Order::None, 0, -1, -1}},
                            {"height", Type::I32, Role::Height, false, {Kind::None, Use::None, Order::None, 0, -1, -1}},
                            {"pixels", Type::Pixel32Ptr, Role::Pixels, true, {Kind::Picture, Use::In, Order::Bgra, 4, 1, 2}},
                            {"scratch", Type::F32Ptr, Role::Buffer, false, {Kind::Samples, Use::Scratch, Order::Rgb, 3, 1, 2}}},
                           [](const Arg* a) {
                             return Result::of(claimsSuccess(a[0].as<const char*>(), a[1].as<int32_t>(),
                                                             a[2].as<int32_t>(), a[3].as<const Pixel32*>(),
                                                             a[4].as<float*>()));
                           }};
  Watchdog watchdog(std::chrono::seconds(60), uint64_t(4) << 30);
  Tally tally;
  runCase(touchy, {"PlantedMask32 elementCount=0"}, false, watchdog, tally);
  runCase(touchy, {"PlantedMask32 elementCount=8"}, false, watchdog, tally);
  runCase(liar, {"RGBE_WriteHeader_Planted fileName=@dir width=3 height=2", true}, false, watchdog, tally);
  ASSERT_EQ(tally.failures.size(), 2u);
  EXPECT_NE(tally.failures[0].find("changed pixels"), std::string::npos) << tally.failures[0];
  EXPECT_NE(tally.failures[1].find("returned 0, not -1"), std::string::npos) << tally.failures[1];
}

}  // namespace
}  // namespace effects::test::hostile
