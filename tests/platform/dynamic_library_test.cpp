#include "platform/dynamic_library.h"

#include <gtest/gtest.h>

using namespace effects::platform;

// A plug-in path that names nothing fails on every platform; it never opens
// the host program itself.
TEST(DynamicLibrary, EmptyOrNullNameFails) {
  EXPECT_EQ(openLibrary(""), nullptr);
  EXPECT_EQ(openLibrary(nullptr), nullptr);
  EXPECT_EQ(openLibrary("no_such_library_anywhere"), nullptr);
}
