// The `effects` command: list, help and run (one picture, a chain of
// exports, or a batch of files on all cores).
#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace effects::cli {

// Runs the command with its arguments (without the program name); returns
// the exit status: 0 success, 1 a failed run (a file, a picture, any file of
// a batch), 2 a usage error. Messages go to `err`, results to `out`.
int runCommand(const std::vector<std::string>& args, std::FILE* out, std::FILE* err);

}  // namespace effects::cli
