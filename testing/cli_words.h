// A command line written as one string, for tables of cases.
#ifndef TESTING_CLI_WORDS_H_
#define TESTING_CLI_WORDS_H_

#include <iterator>
#include <sstream>
#include <string>
#include <vector>

// The words of `line`, separated by blanks.
inline std::vector<std::string> Words(const std::string& line) {
  std::istringstream in(line);
  return {std::istream_iterator<std::string>(in), std::istream_iterator<std::string>()};
}

#endif  // TESTING_CLI_WORDS_H_
