// Runs every file of the malformed-file corpus (tests/data/rgbe, made by
// make_corpus.py, expectations in cases.txt) through RGBE_LoadHDR and through
// the header parser plus the stream reader, and checks messages, results and
// how far the data was filled.
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "effects/effects.h"
#include "hdr/hdr_files.h"
#include "hdr/rgbe_codec.h"

using namespace effects::test;

namespace {

struct Case {
  std::string name;
  int32_t width, height, headerResult;
  std::string message;  // "-", "read", or a format error text
  std::string reader;   // result, or "-" when the header failed mid-file
  std::string filled;   // pixels filled, or "-" likewise
};

std::vector<Case> loadCases() {
  std::vector<Case> cases;
  std::ifstream in(std::string(EFFECTS_TEST_DATA_DIR) + "/rgbe/cases.txt");
  std::string comment;
  std::getline(in, comment);
  for (Case c; in >> c.name >> c.width >> c.height >> c.headerResult >> c.message >> c.reader >> c.filled;) {
    for (char& ch : c.message) if (ch == '_') ch = ' ';
    cases.push_back(c);
  }
  return cases;
}

// The corpus files' pixel k, as make_corpus.py writes it.
void corpusPixel(int k, uint8_t q[4]) {
  q[0] = static_cast<uint8_t>((k / 5) * 3 % 256);
  q[1] = static_cast<uint8_t>((k * 7 + 1) % 256);
  q[2] = static_cast<uint8_t>(k % 40 < 30 ? 200 : k % 256);
  q[3] = static_cast<uint8_t>(120 + (k / 8) % 16);
}

void expectFilled(const std::vector<float>& data, int filled) {
  for (int k = 0; k < static_cast<int>(data.size() / 3); ++k) {
    uint8_t q[4];
    float want[3];
    corpusPixel(k, q);
    expectedDecode(q, want);
    for (int i = 0; i < 3; ++i) {
      if (k < filled) ASSERT_EQ(data[3 * k + i], want[i]) << "pixel " << k;
      else ASSERT_TRUE(isSentinel(data[3 * k + i])) << "pixel " << k << " written";
    }
  }
}

void expectMessage(const Case& c, const std::string& err) {
  if (c.message == "-") {
    EXPECT_EQ(err, "");
  } else if (c.message == "read") {
    EXPECT_EQ(err.rfind("RGBE read error: ", 0), 0u) << err;
    EXPECT_EQ(err.find('\n'), err.size() - 1) << err;
  } else {
    EXPECT_EQ(err, "RGBE bad file format: " + c.message + "\n");
  }
}

TEST(RgbeCorpus, EveryFileGivesItsResultsAndMessages) {
  const auto cases = loadCases();
  ASSERT_GE(cases.size(), 30u);
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const std::string path = std::string(EFFECTS_TEST_DATA_DIR) + "/rgbe/" + c.name;
    const size_t floats = static_cast<size_t>(c.width) * c.height * 3;

    // The host's entry point: always 0, the parser's message, the data.
    std::vector<float> loaded(floats, sentinel());
    testing::internal::CaptureStderr();
    EXPECT_EQ(RGBE_LoadHDR(path.c_str(), loaded.data(), c.width, c.height), 0);
    expectMessage(c, testing::internal::GetCapturedStderr());

    // The same in two steps: the parser on the file, then the stream reader
    // on the bytes after the header, which must read alike.
    std::FILE* f = std::fopen(path.c_str(), "rb");
    ASSERT_NE(f, nullptr);
    int32_t w = 0, h = 0;
    testing::internal::CaptureStderr();
    EXPECT_EQ(effects::rgbe::readHeader(f, &w, &h), c.headerResult);
    testing::internal::GetCapturedStderr();
    const long at = std::ftell(f);
    std::fclose(f);
    const auto bytes = fileBytes(path);
    std::vector<float> streamed(floats, sentinel());
    EffectsStream s{bytes.data(), bytes.size(), static_cast<size_t>(at)};
    const int32_t result = RGBE_ReadPixels_RLE(&s, streamed.data(), c.width, c.height);
    EXPECT_LE(s.position, bytes.size());
    EXPECT_EQ(loaded, streamed);
    if (c.reader == "-") continue;
    EXPECT_EQ(result, std::stoi(c.reader));
    expectFilled(streamed, std::stoi(c.filled));
  }
}

}  // namespace
