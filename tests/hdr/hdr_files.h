// File helpers for the HDR tests: scratch paths, whole-file reads, and the
// float sentinel that marks buffer elements a reader must not have written.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "support/files.h"

namespace effects::test {

inline std::string scratchPath(const std::string& name) {
  return (std::filesystem::temp_directory_path() / ("effects_hdr_" + name)).string();
}


inline std::vector<uint8_t> bytesOf(const std::string& s) { return {s.begin(), s.end()}; }

// Marks buffer elements a reader must not have written: the decoder never
// gives a negative value.
inline float sentinel() { return -1.0f; }
inline bool isSentinel(float f) { return f == -1.0f; }

// What the file decoder gives for one RGBE quadruple.
inline void expectedDecode(const uint8_t q[4], float out[3]) {
  for (int c = 0; c < 3; ++c)
    out[c] = q[3] == 0 ? 0.0f : static_cast<float>((q[c] + 0.5) * std::ldexp(1.0, q[3] - 136));
}

}  // namespace effects::test
