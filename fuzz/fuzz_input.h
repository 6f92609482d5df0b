// What every fuzz target shares: a check that stops the run as a finding,
// and the split of one input into the arguments of repeated options.
#ifndef FUZZ_FUZZ_INPUT_H_
#define FUZZ_FUZZ_INPUT_H_

#include <cstdlib>
#include <string>

// A broken invariant is a finding like a crash: abort, so libFuzzer keeps
// the input.
inline void Require(bool condition) {
  if (!condition) std::abort();
}

// Calls `apply` with each newline-separated piece of `input`, in order: one
// piece per option on a command line that repeats the option.
template <typename Apply>
void ForEachLine(const std::string& input, Apply apply) {
  size_t start = 0;
  for (;;) {
    const size_t end = input.find('\n', start);
    apply(input.substr(start, end == std::string::npos ? std::string::npos : end - start));
    if (end == std::string::npos) return;
    start = end + 1;
  }
}

#endif  // FUZZ_FUZZ_INPUT_H_
