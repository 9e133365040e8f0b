// effects: every export of the library from the command line.
#include <cstdio>
#include <string>
#include <vector>

#include "cli/command.h"

int main(int argc, char** argv) {
  std::vector<std::string> args(argv + 1, argv + argc);
  return effects::cli::runCommand(args, stdout, stderr);
}
