#include "analysis/analysis_options.h"

#include <cstdlib>

namespace {

constexpr char kDigits[] = "0123456789";

// The recorder's unsigned long is 32 bits wide, so a longer number stops at
// the largest 32-bit value there; do the same on a 64-bit host.
uint32_t PartSizeFrom(const char* digits) {
  const unsigned long value = std::strtoul(digits, nullptr, 10);
  return value > 4294967295UL ? 4294967295U : static_cast<uint32_t>(value);
}

}  // namespace

bool ProcessAnalysisOptions(std::string& argument, AnalysisOptions& options) {
  // Characters are consumed from the front; `used` counts them so that the
  // text is shortened once at the end instead of once per character.
  size_t used = 0;
  // The first "z" either finds no digit at all or cuts the text at the first
  // one, so no later "z" can find a digit: searching once keeps long
  // arguments linear.
  bool digitsMayFollow = true;
  bool accepted = true;
  while (used < argument.size()) {
    const char letter = argument[used];
    if (letter == 's') {
      options.split = true;
    } else if (letter == 'd') {
      options.disk = true;
    } else if (letter == 'z') {
      if (digitsMayFollow) {
        digitsMayFollow = false;
        const size_t digit = argument.find_first_of(kDigits, used);
        if (digit != std::string::npos) {
          options.maxPartSize = PartSizeFrom(argument.c_str() + digit);
          // The number and everything after it are dropped.
          argument.erase(digit);
        }
      }
    } else {
      accepted = false;
      break;
    }
    ++used;
  }
  argument.erase(0, used);
  return accepted;
}
