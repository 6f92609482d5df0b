// What a stand-in program's option parser makes of a command line, as text.
#ifndef TESTING_SIM_OPTIONS_FIXTURE_H_
#define TESTING_SIM_OPTIONS_FIXTURE_H_

#include <algorithm>
#include <string>
#include <vector>

#include "testing/sim_command_line.h"

// The words of `line` split at each single space: "--log " is two words,
// the second empty.
inline std::vector<std::string> Words(const std::string& line) {
  std::vector<std::string> words;
  for (size_t at = 0; at < line.size();) {
    const size_t space = std::min(line.find(' ', at), line.size());
    words.push_back(line.substr(at, space - at));
    if (space + 1 == line.size()) words.push_back("");
    at = space + 1;
  }
  return words;
}

// The options `parse` reads from `words`, as `describe` writes them; or
// "refused" (with "without a message" when it gave no reason).
template <typename Options>
std::string Parsed(bool (*parse)(int, char**, Options&, std::string&),
                   std::string (*describe)(const Options&), const std::vector<std::string>& words) {
  Options options;
  std::string error;
  if (ParseWords(parse, words, options, error)) return describe(options);
  return error.empty() ? "refused without a message" : "refused";
}

#endif  // TESTING_SIM_OPTIONS_FIXTURE_H_
