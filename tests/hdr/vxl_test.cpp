#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "effects/effects.h"
#include "hdr/hdr_files.h"

using namespace effects::test;

namespace {

using Bytes = std::vector<uint8_t>;

uint32_t le32(const Bytes& b, size_t at) {
  return b[at] | b[at + 1] << 8 | b[at + 2] << 16 | static_cast<uint32_t>(b[at + 3]) << 24;
}

TEST(VxlFile, HeaderFieldsInTheirOrderAndWidths) {
  const std::string path = scratchPath("header.vxl");
  const Pixel32 px{1, 2, 3, 4};
  EXPECT_EQ(VexoSaveVXLFile32(path.c_str(), 1, 1, 3, 70000, &px), 0);
  // 70000 keeps its low 16 bits, 4464 = 0x1170.
  EXPECT_EQ(fileBytes(path), (Bytes{0xB8, 0x07, 0xE8, 0x03, 0x03, 0x00, 0x70, 0x11,
                                    0x01, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 1, 2, 3, 4}));
  // A size without pixels writes the header only, sizes whole and unsigned.
  for (auto [w, h] : {std::pair{0, 70000}, {70000, 0}, {-3, 2}}) {
    VexoSaveVXLFile128(path.c_str(), w, h, -1, 0x12345678, nullptr);
    const auto got = fileBytes(path);
    ASSERT_EQ(got.size(), 16u) << w << "x" << h;
    EXPECT_EQ(Bytes(got.begin() + 4, got.begin() + 8), (Bytes{0xFF, 0xFF, 0x78, 0x56}));
    EXPECT_EQ(le32(got, 8), static_cast<uint32_t>(w));
    EXPECT_EQ(le32(got, 12), static_cast<uint32_t>(h));
  }
  std::remove(path.c_str());
}

}  // namespace
