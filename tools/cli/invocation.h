// Calling one export from the command line: which picture the input file
// fills, which picture or file is the output, and every other argument from
// the step's --name value options, with sizes, element counts and buffers
// filled in from the pictures. Driven by the export table alone.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "cli/image.h"
#include "export_table.h"

namespace effects::cli {

// A usage error (unknown export, bad option): exit status 2. Other failures
// (files, pictures) are std::runtime_error: exit status 1.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// An export and the --name value options given to it.
struct Step {
  std::string name;
  std::vector<std::pair<std::string, std::string>> options;
};

// How the tool binds an export's parameters (indices into its parameters):
//  main    the picture the input file (or the previous step's picture)
//          fills: the first picture the export only reads, else the first
//          picture it writes in place; -1 when it takes no picture.
//  output  the picture that becomes the result: the first picture or
//          3-channel buffer it writes; -1 when there is none.
//  outFile the file name the export writes (the output file), or -1.
struct Binding {
  int main = -1;
  int output = -1;
  int outFile = -1;
  bool hasPicture() const { return output >= 0; }
};

// Why the tool cannot call an export (a device context, a stream, a buffer
// of unknown size), or "" when it can.
std::string notCallable(const table::Export& e);
Binding bind(const table::Export& e);

// The export called `name`, or the member of the family `name` (VexoGamma)
// for the layout of `current` (the 8-bit layout when there is none).
const table::Export& resolve(const std::string& name, const Image* current);

struct StepResult {
  std::optional<Image> image;  // the picture the export wrote
  std::string printed;         // the result and measurements, for exports that write no picture
};

// Calls the export. `current` fills the main picture; `outFile` is where an
// export that writes a file writes it.
StepResult run(const table::Export& e, const Step& step, const Image* current, const std::string& outFile);

// The default of a value parameter the tool fills in when it is not given
// (reserved: 0, channel: 1 = all colour elements), if it has one.
std::optional<std::string> defaultOf(const table::Param& p);
// The C name of a parameter type.
const char* typeName(table::Type t);

}  // namespace effects::cli
