// The command line handling the stand-in programs share.
#ifndef SIM_COMMON_USAGE_H_
#define SIM_COMMON_USAGE_H_

#include <string>

// What a program does before its work: with `help` it prints `helpText` and
// returns 0; when the command line did not parse it prints "PROGRAM: ERROR"
// and the help on standard error and returns 2; otherwise it returns -1 and
// the program goes on.
int UsageStatus(const char* program, bool parsed, const std::string& error, bool help,
                const char* helpText);

// UsageStatus for the command line as `parse` reads it into `options`.
template <typename Options>
int ParsedUsageStatus(const char* program, int argc, char** argv,
                      bool (*parse)(int, char**, Options&, std::string&), const char* helpText,
                      Options& options) {
  std::string error;
  const bool parsed = parse(argc, argv, options, error);
  return UsageStatus(program, parsed, error, parsed && options.help, helpText);
}

// Whether `word` asks for the help.
bool IsHelp(const char* word);

#endif  // SIM_COMMON_USAGE_H_
