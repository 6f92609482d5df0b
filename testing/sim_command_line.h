// Runs a stand-in program's option parser on words as its command line.
#ifndef TESTING_SIM_COMMAND_LINE_H_
#define TESTING_SIM_COMMAND_LINE_H_

#include <string>
#include <vector>

// `parse(argc, argv, options, error)` on PROGRAM followed by `words`.
template <typename Options>
bool ParseWords(bool (*parse)(int, char**, Options&, std::string&), std::vector<std::string> words,
                Options& options, std::string& error) {
  words.insert(words.begin(), "program");
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(&word[0]);
  argv.push_back(nullptr);
  return parse(static_cast<int>(words.size()), argv.data(), options, error);
}

#endif  // TESTING_SIM_COMMAND_LINE_H_
