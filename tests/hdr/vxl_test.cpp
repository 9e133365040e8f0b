#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "effects/effects.h"
#include "hdr/hdr_files.h"
#include "support/pictures.h"

using namespace effects::test;

namespace {

using Bytes = std::vector<uint8_t>;

template <class P>
Bytes rawBytes(const std::vector<P>& px) {
  const auto* b = reinterpret_cast<const uint8_t*>(px.data());
  return Bytes(b, b + px.size() * sizeof(P));
}

TEST(VxlFile, HeaderFieldsInTheirOrderAndWidths) {
  const std::string path = scratchPath("one.vxl");
  std::vector<Pixel32> px{{1, 2, 3, 4}};
  EXPECT_EQ(VexoSaveVXLFile32(path.c_str(), 1, 1, 3, 70000, px.data()), 0);
  // 70000 keeps its low 16 bits, 4464 = 0x1170.
  EXPECT_EQ(fileBytes(path), (Bytes{0xB8, 0x07, 0xE8, 0x03, 0x03, 0x00, 0x70, 0x11, 0x01, 0x00, 0x00, 0x00,
                                    0x01, 0x00, 0x00, 0x00, 1, 2, 3, 4}));
  // Width and height are written whole and unsigned; info values keep 16 bits.
  VexoSaveVXLFile32(path.c_str(), 0, 70000, -1, 0x12345678, px.data());
  EXPECT_EQ(fileBytes(path), (Bytes{0xB8, 0x07, 0xE8, 0x03, 0xFF, 0xFF, 0x78, 0x56, 0x00, 0x00, 0x00, 0x00,
                                    0x70, 0x11, 0x01, 0x00}));
  std::remove(path.c_str());
}

TEST(VxlFile, PixelsFollowAsTheyLieInMemory) {
  const std::string path = scratchPath("pixels.vxl");
  const auto p32 = pattern32(15);
  const auto p64 = pattern64(15);
  const auto p128 = pattern128(4);
  VexoSaveVXLFile32(path.c_str(), 5, 3, 1, 2, p32.data());
  auto got = fileBytes(path);
  ASSERT_EQ(got.size(), 16u + 60u);
  EXPECT_EQ(Bytes(got.begin() + 16, got.end()), rawBytes(p32));
  EXPECT_EQ(got[8], 5); EXPECT_EQ(got[12], 3);
  VexoSaveVXLFile64(path.c_str(), 3, 5, 1, 2, p64.data());
  got = fileBytes(path);
  ASSERT_EQ(got.size(), 16u + 120u);
  EXPECT_EQ(Bytes(got.begin() + 16, got.end()), rawBytes(p64));
  EXPECT_EQ(got[8], 3); EXPECT_EQ(got[12], 5);
  VexoSaveVXLFile128(path.c_str(), 2, 2, 1, 2, p128.data());
  got = fileBytes(path);
  ASSERT_EQ(got.size(), 16u + 64u);
  EXPECT_EQ(Bytes(got.begin() + 16, got.end()), rawBytes(p128));
  std::remove(path.c_str());
}

TEST(VxlFile, EmptyOrNegativeSizesWriteTheHeaderOnly) {
  const std::string path = scratchPath("empty.vxl");
  Pixel128 px{};
  for (auto [w, h] : {std::pair{0, 4}, {4, 0}, {-3, 2}}) {
    VexoSaveVXLFile128(path.c_str(), w, h, 0, 0, &px);
    EXPECT_EQ(fileBytes(path).size(), 16u) << w << "x" << h;
  }
  std::remove(path.c_str());
}

}  // namespace
