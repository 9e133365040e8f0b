// Loads the built library the way a host does (by file name, resolving the
// exports by name) and calls through the resolved pointers. Which names the
// library exports is checked from its export table by scripts/check-exports.
#include <gtest/gtest.h>

#include <vector>

#include "effects/effects.h"
#include "platform/dynamic_library.h"

namespace {

using effects::platform::closeLibrary;
using effects::platform::findSymbol;
using effects::platform::openLibrary;

TEST(SharedLibrary, CallsThroughResolvedPointers) {
  void* lib = openLibrary(EFFECTS_LIBRARY_FILE);
  ASSERT_NE(lib, nullptr);
  using NewPicture32 = int32_t(EFFECTS_CALL*)(int32_t, Pixel32*, uint8_t, uint8_t, uint8_t, uint8_t);
  using Invert128 = int32_t(EFFECTS_CALL*)(int32_t, Pixel128*, int32_t);
  auto fill = reinterpret_cast<NewPicture32>(findSymbol(lib, "VexoNewPicture32"));
  auto inv = reinterpret_cast<Invert128>(findSymbol(lib, "VexoInvert128"));
  ASSERT_TRUE(fill && inv);
  std::vector<Pixel32> a(2);
  EXPECT_EQ(fill(8, a.data(), 10, 20, 30, 40), 0);
  EXPECT_EQ(a[1].blue, 30); EXPECT_EQ(a[1].green, 20); EXPECT_EQ(a[1].red, 10); EXPECT_EQ(a[1].mask, 40);
  std::vector<Pixel128> b{{0.25f, 0.5f, 2.5f, 1.0f}};
  EXPECT_EQ(inv(4, b.data(), 1), 0);
  EXPECT_EQ(b[0].red, -1.5f); EXPECT_EQ(b[0].blue, 0.75f);
  closeLibrary(lib);
}

}  // namespace
