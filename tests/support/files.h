// Whole-file reads for the tests.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace effects::test {

// The bytes of a file; empty when it cannot be read.
inline std::vector<uint8_t> fileBytes(const std::string& path) {
  std::vector<uint8_t> out;
  if (std::FILE* f = std::fopen(path.c_str(), "rb")) {
    uint8_t buf[4096];
    size_t got;
    while ((got = std::fread(buf, 1, sizeof buf, f)) > 0) out.insert(out.end(), buf, buf + got);
    std::fclose(f);
  }
  return out;
}

}  // namespace effects::test
