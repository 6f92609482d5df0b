// Fuzzes the -a language. The input is one or more arguments separated by
// newlines, applied in turn to one record as repeated -a options are.
#include <cstddef>
#include <cstdint>
#include <string>

#include "analysis/analysis_options.h"
#include "fuzz/fuzz_input.h"

namespace {

void ApplyOne(const std::string& original, AnalysisOptions& options) {
  const AnalysisOptions before = options;
  std::string argument = original;
  const bool understood = ProcessAnalysisOptions(argument, options);
  // Parsing only removes text: what is left was part of the argument.
  Require(original.find(argument) != std::string::npos);
  Require(!understood || argument.empty());
  Require(understood || (!argument.empty() && argument.find_first_of("sdz") != 0));
  // Flags are only ever set, never cleared.
  Require(!before.disk || options.disk);
  Require(!before.split || options.split);
  // Without a "z" the size limit is left alone.
  Require(original.find('z') != std::string::npos || options.maxPartSize == before.maxPartSize);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string input(reinterpret_cast<const char*>(data), size);
  AnalysisOptions options;
  ForEachLine(input, [&options](const std::string& argument) { ApplyOne(argument, options); });
  return 0;
}
