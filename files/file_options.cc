#include "files/file_options.h"

#include <cstring>

namespace {

// Characters of the number part: digits and the two wildcards.
const char kNumberCharacters[] = "?*0123456789";

bool IsNumberCharacter(char c) { return c != '\0' && std::strchr(kNumberCharacters, c) != nullptr; }

// "?" and "*" are the shell-friendly spellings of SQL LIKE's "_" and "%".
std::string LikePattern(const std::string& numberPart) {
  std::string pattern = numberPart;
  for (char& c : pattern) {
    if (c == '?') {
      c = '_';
    }
  }
  for (char& c : pattern) {
    if (c == '*') {
      c = '%';
    }
  }
  return pattern;
}

// Sets a filter that lists its files in start tick order.
bool ShowByStartTick(bool& filter, FileOptions& options) {
  filter = true;
  options.sortByStartTick = true;
  return true;
}

// Applies one letter; false when the letter is not part of the language. For
// "s" the letter has been removed already and `argument` starts at its digit.
bool ApplyLetter(char letter, std::string& argument, FileOptions& options) {
  switch (letter) {
    case 'a':
      // Unlike c, f and k, "a" leaves the sort by start tick alone.
      options.showAllocated = true;
      options.sortByNumber = true;
      return true;
    case 'c':
      return ShowByStartTick(options.showCurrent, options);
    case 'f':
      return ShowByStartTick(options.showFree, options);
    case 'k':
      return ShowByStartTick(options.showKept, options);
    case 'l':
      options.limit = true;
      return true;
    case 'n':
    case 't':
      // The last of the two sorts named wins.
      options.sortByStartTick = letter == 't';
      options.sortByNumber = letter == 'n';
      return true;
    case 'r':
      options.reverse = true;
      return true;
    case 's':
      if (argument.empty() || argument[0] < '0' || argument[0] > '3') {
        return false;
      }
      options.stream = static_cast<uint32_t>(argument[0] - '0');
      options.sortByStartTick = true;
      return true;
    default:
      return false;
  }
}

}  // namespace

bool ProcessFileDisplayOptions(std::string& argument, FileOptions& options) {
  if (argument.empty()) {
    return true;
  }
  if (IsNumberCharacter(argument[0])) {
    size_t length = 0;
    while (length < argument.size() && IsNumberCharacter(argument[length])) {
      ++length;
    }
    options.numberPattern = LikePattern(argument.substr(0, length));
    argument.erase(0, length);
    options.sortByNumber = true;
  }
  while (!argument.empty()) {
    const char letter = argument[0];
    if (letter == 's') {
      // The "s" is consumed even when no valid stream digit follows it.
      argument.erase(0, 1);
    }
    if (!ApplyLetter(letter, argument, options)) {
      return false;
    }
    argument.erase(0, 1);
  }
  return true;
}
