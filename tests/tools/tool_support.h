// What the tool tests share: a scratch folder per test, PNG files of any
// colour type written with libpng, and the command run in-process with its
// output captured.
#pragma once

#include <gtest/gtest.h>
#include <png.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "cli/command.h"

namespace effects::cli::test {

namespace fs = std::filesystem;

class ToolTest : public ::testing::Test {
 protected:
  void SetUp() override {
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    dir_ = fs::temp_directory_path() / ("effects_tool_" + std::string(info->test_suite_name()) + "_" + info->name());
    fs::remove_all(dir_);
    fs::create_directories(dir_);
  }
  void TearDown() override { fs::remove_all(dir_); }
  std::string path(const std::string& name) const { return (dir_ / name).string(); }
  // The names in the folder, sorted (temporary files included).
  std::vector<std::string> listing() const {
    std::vector<std::string> names;
    for (const auto& e : fs::directory_iterator(dir_)) names.push_back(e.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
  }

  struct Outcome {
    int status;
    std::string out, err;
  };
  static Outcome run(const std::vector<std::string>& args) {
    std::FILE* out = std::tmpfile();
    std::FILE* err = std::tmpfile();
    const int status = runCommand(args, out, err);
    auto text = [](std::FILE* f) {
      std::string s(static_cast<size_t>(std::ftell(f)), '\0');
      std::rewind(f);
      s.resize(std::fread(s.data(), 1, s.size(), f));
      std::fclose(f);
      return s;
    };
    return {status, text(out), text(err)};
  }

  fs::path dir_;
};

// Writes a PNG of any colour type and depth from packed sample rows (as the
// file stores them: big-endian 16-bit samples, sub-byte samples packed).
inline void writeRawPng(const std::string& path, int width, int height, int bits, int colourType,
                        const std::vector<std::vector<uint8_t>>& rows, const std::vector<png_color>& palette = {},
                        const std::vector<uint8_t>& transparency = {}) {
  std::FILE* f = std::fopen(path.c_str(), "wb");
  ASSERT_NE(f, nullptr);
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  png_init_io(png, f);
  png_set_IHDR(png, info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height), bits, colourType,
               PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  if (!palette.empty()) png_set_PLTE(png, info, palette.data(), static_cast<int>(palette.size()));
  if (!transparency.empty())
    png_set_tRNS(png, info, transparency.data(), static_cast<int>(transparency.size()), nullptr);
  png_write_info(png, info);
  for (const auto& r : rows) png_write_row(png, r.data());
  png_write_end(png, nullptr);
  png_destroy_write_struct(&png, &info);
  std::fclose(f);
}

}  // namespace effects::cli::test
