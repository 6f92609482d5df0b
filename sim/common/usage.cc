#include "sim/common/usage.h"

#include <cstdio>
#include <cstring>

int UsageStatus(const char* program, bool parsed, const std::string& error, bool help,
                const char* helpText) {
  if (help) {
    std::fputs(helpText, stdout);
    return 0;
  }
  if (!parsed) {
    std::fprintf(stderr, "%s: %s\n%s", program, error.c_str(), helpText);
    return 2;
  }
  return -1;
}

bool IsHelp(const char* word) {
  return std::strcmp(word, "--help") == 0 || std::strcmp(word, "-h") == 0;
}
