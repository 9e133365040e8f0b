// The bridge against real plug-in libraries built beside the tests
// (tests/plugins): tm_record writes what it receives into the record its
// first argument points to, tm_options_only lacks the tone-mapping entry
// point.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "effects/effects.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace {

std::string pluginPath(const std::string& name) {
#ifdef _WIN32
  char exe[MAX_PATH];
  const DWORD n = GetModuleFileNameA(nullptr, exe, MAX_PATH);
  std::string dir(exe, n);
  return dir.substr(0, dir.find_last_of("\\/") + 1) + name + ".dll";
#else
  return std::string(EFFECTS_PLUGIN_DIR) + "/" + name + EFFECTS_PLUGIN_SUFFIX;
#endif
}

bool isLoaded(const std::string& path) {
#ifdef _WIN32
  return GetModuleHandleA(path.c_str()) != nullptr;
#else
  void* h = dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD);
  if (h) dlclose(h);
  return h != nullptr;
#endif
}

const std::string kMessage = "Couldn't load plugin.\n";

// Calls `call` with standard output captured; returns what it printed.
template <class Call>
std::string printed(Call call) {
  testing::internal::CaptureStdout();
  call();
  return testing::internal::GetCapturedStdout();
}

TEST(ToneMapping, ArgumentsArriveUnchangedAndThePluginIsReleased) {
  const std::string path = pluginPath("tm_record");
  intptr_t record[6] = {};
  const intptr_t rec = reinterpret_cast<intptr_t>(record);
  // The entry points return -7 and 1: the bridge reports 0 all the same.
  EXPECT_EQ(printed([&] { EXPECT_EQ(CallToneMapping(path.c_str(), rec, -1, INTPTR_MAX, 0, 0x12345678), 0); }), "");
  EXPECT_EQ(std::vector<intptr_t>(record, record + 6),
            (std::vector<intptr_t>{5, rec, -1, INTPTR_MAX, 0, 0x12345678}));
  EXPECT_FALSE(isLoaded(path));

  EXPECT_EQ(printed([&] { EXPECT_EQ(CallToneMappingOptions(path.c_str(), rec + sizeof(intptr_t)), 0); }), "");
  EXPECT_EQ(record[1], 1);
  EXPECT_EQ(record[2], rec + static_cast<intptr_t>(sizeof(intptr_t)));
  EXPECT_FALSE(isLoaded(path));
}

TEST(ToneMapping, MissingPluginOrEntryPointReports) {
  const std::string path = pluginPath("tm_options_only");
  ASSERT_FALSE(isLoaded(path));
  intptr_t record[2] = {};
  const intptr_t rec = reinterpret_cast<intptr_t>(record);
  EXPECT_EQ(printed([&] { EXPECT_EQ(CallToneMapping(path.c_str(), rec, 1, 2, 3, 4), 1); }), kMessage);
  EXPECT_EQ(record[0], 0);
  // A plug-in found without its entry point is not released.
  EXPECT_TRUE(isLoaded(path));

  const std::string missing = pluginPath("no_such_plugin");
  EXPECT_EQ(printed([&] { EXPECT_EQ(CallToneMapping(missing.c_str(), 0, 0, 0, 0, 0), 1); }), kMessage);
  EXPECT_EQ(printed([&] { EXPECT_EQ(CallToneMappingOptions(missing.c_str(), 0), 1); }), kMessage);
}

}  // namespace
