// The bridge against real plug-in libraries built beside the tests
// (tests/plugins): tm_record writes what it receives into the record its
// first argument points to, tm_options_only lacks the tone-mapping entry
// point, tm_simple maps Pixel128 to Pixel32.
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

TEST(ToneMapping, FiveArgumentsArriveUnchangedAndThePluginIsReleased) {
  const std::string path = pluginPath("tm_record");
  intptr_t record[6] = {};
  const intptr_t rec = reinterpret_cast<intptr_t>(record);
  const intptr_t values[4] = {-1, INTPTR_MAX, 0, static_cast<intptr_t>(0x12345678)};
  testing::internal::CaptureStdout();
  // The entry point returns -7: the bridge still reports 0.
  EXPECT_EQ(CallToneMapping(path.c_str(), rec, values[0], values[1], values[2], values[3]), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(record[0], 5);
  EXPECT_EQ(record[1], rec);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(record[2 + i], values[i]) << i;
  EXPECT_FALSE(isLoaded(path));

  intptr_t options[2] = {};
  testing::internal::CaptureStdout();
  EXPECT_EQ(CallToneMappingOptions(path.c_str(), reinterpret_cast<intptr_t>(options)), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(options[0], 1);
  EXPECT_EQ(options[1], reinterpret_cast<intptr_t>(options));
  EXPECT_FALSE(isLoaded(path));
}

TEST(ToneMapping, MissingEntryPointReportsAndLeavesThePluginLoaded) {
  const std::string path = pluginPath("tm_options_only");
  ASSERT_FALSE(isLoaded(path));
  intptr_t record[6] = {};
  testing::internal::CaptureStdout();
  EXPECT_EQ(CallToneMappingOptions(path.c_str(), reinterpret_cast<intptr_t>(record)), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(record[0], 11);
  EXPECT_FALSE(isLoaded(path));

  record[0] = 0;
  testing::internal::CaptureStdout();
  EXPECT_EQ(CallToneMapping(path.c_str(), reinterpret_cast<intptr_t>(record), 1, 2, 3, 4), 1);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), kMessage);
  EXPECT_EQ(record[0], 0);
  EXPECT_TRUE(isLoaded(path));
}

TEST(ToneMapping, MissingLibraryReports) {
  const std::string path = pluginPath("no_such_plugin");
  testing::internal::CaptureStdout();
  EXPECT_EQ(CallToneMapping(path.c_str(), 0, 0, 0, 0, 0), 1);
  EXPECT_EQ(CallToneMappingOptions(path.c_str(), 0), 1);
  EXPECT_EQ(CallToneMappingOptions("", 0), 1);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), kMessage + kMessage + kMessage);
}

TEST(ToneMapping, APluginMapsAPictureThroughTheBridge) {
  const std::string path = pluginPath("tm_simple");
  std::vector<Pixel128> source{{0.0f, 1.0f, 3.0f, 1.0f}, {1e9f, -2.0f, 0.25f, 0.5f}};
  std::vector<Pixel32> target(2, Pixel32{1, 2, 3, 4});
  EXPECT_EQ(CallToneMapping(path.c_str(), reinterpret_cast<intptr_t>(source.data()),
                            reinterpret_cast<intptr_t>(target.data()), 2, 1, 100), 0);
  // x / (1 + x): 0 -> 0, 1 -> 0.5, 3 -> 0.75, huge -> 1, negative -> 0, 0.25 -> 0.2.
  EXPECT_EQ(target[0].blue, 0); EXPECT_EQ(target[0].green, 128); EXPECT_EQ(target[0].red, 191);
  EXPECT_EQ(target[0].mask, 255);
  EXPECT_EQ(target[1].blue, 255); EXPECT_EQ(target[1].green, 0); EXPECT_EQ(target[1].red, 51);
  EXPECT_EQ(target[1].mask, 128);
  int32_t used = 0;
  EXPECT_EQ(CallToneMappingOptions(path.c_str(), reinterpret_cast<intptr_t>(&used)), 0);
  EXPECT_EQ(used, 1);
}

}  // namespace
