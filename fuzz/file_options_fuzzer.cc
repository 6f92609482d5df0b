// Fuzzes the -f language and the SQL condition built from it. The input is
// one or more arguments separated by newlines, applied in turn to one record
// as repeated -f options are; then the condition is built from the record.
#include <cstddef>
#include <cstdint>
#include <string>

#include "files/file_condition.h"
#include "files/file_options.h"
#include "fuzz/fuzz_input.h"

namespace {

bool EndsWith(const std::string& text, const std::string& suffix) {
  return text.size() >= suffix.size() &&
         text.compare(text.size() - suffix.size(), suffix.size(), suffix) == 0;
}

// The pattern only ever holds digits and the two LIKE wildcards: nothing that
// could end the quoted SQL text it is put into.
bool IsSafePattern(const std::string& pattern) {
  return pattern.find_first_not_of("0123456789_%") == std::string::npos;
}

void ApplyOne(const std::string& original, FileOptions& options) {
  std::string argument = original;
  const bool understood = ProcessFileDisplayOptions(argument, options);
  // What is left is always the unread end of the argument.
  Require(EndsWith(original, argument));
  Require(!understood || argument.empty());
  Require(IsSafePattern(options.numberPattern));
  Require(options.stream <= 3 || options.stream == kAllStreams);

  const std::string condition = BuildFileCondition(options);
  Require(!condition.empty() && condition[0] == ' ');
  Require(condition.find(" order by ") != std::string::npos);
  // The only quotes are the pair around the pattern.
  size_t quotes = 0;
  for (char c : condition) quotes += c == '\'' ? 1 : 0;
  Require(quotes == (options.showCurrent ? 0u : 2u));
  Require(EndsWith(condition, " limit 20") == options.limit);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string input(reinterpret_cast<const char*>(data), size);
  FileOptions options;
  ForEachLine(input, [&options](const std::string& argument) { ApplyOne(argument, options); });

  // The builder on records the parser cannot make: any pattern, any stream.
  FileOptions arbitrary;
  arbitrary.numberPattern = input;
  arbitrary.stream = size >= 4 ? static_cast<uint32_t>(data[0] | data[1] << 8 | data[2] << 16 |
                                                       static_cast<uint32_t>(data[3]) << 24)
                               : kAllStreams;
  const uint8_t flags = size > 4 ? data[4] : 0;
  arbitrary.showCurrent = flags & 1;
  arbitrary.showAllocated = flags & 2;
  arbitrary.showFree = flags & 4;
  arbitrary.showKept = flags & 8;
  arbitrary.limit = flags & 16;
  arbitrary.sortByStartTick = flags & 32;
  arbitrary.sortByNumber = flags & 64;
  arbitrary.reverse = flags & 128;
  const std::string condition = BuildFileCondition(arbitrary);
  Require(!condition.empty() && condition[0] == ' ');
  Require(arbitrary.showCurrent || input.empty() ||
          condition.find(" number like '" + input + "'") == 0);
  return 0;
}
