// What the flush after every row costs: writes the same lines to standard
// output through std::cout with std::endl (newline and flush, as the tool's
// listings do), with '\n' alone, and with std::endl after
// std::ios::sync_with_stdio(false), and prints the median time of each.
//
//   flush_cost [--lines N] [--width BYTES] [--repeat N] > /dev/null
//
// The figures go to standard error, so standard output can be /dev/null or a
// pipe, as in a listing.
#include <unistd.h>

#include <sys/wait.h>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

namespace {

enum class Mode { kEndl, kNewline, kEndlUnsynced };

// Writes the lines in a child process, so each mode starts from a fresh stream.
double Run(Mode mode, long lines, const std::string& line) {
  std::cout.flush();
  const auto start = std::chrono::steady_clock::now();
  const pid_t child = fork();
  if (child == 0) {
    if (mode == Mode::kEndlUnsynced) std::ios::sync_with_stdio(false);
    for (long i = 0; i < lines; ++i) {
      if (mode == Mode::kNewline) {
        std::cout << line << '\n';
      } else {
        std::cout << line << std::endl;
      }
    }
    std::cout.flush();
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
  long lines = 200000;
  long width = 105;  // a files row
  int repeat = 5;
  for (int i = 1; i + 1 < argc; i += 2) {
    const long value = std::strtol(argv[i + 1], nullptr, 10);
    if (std::strcmp(argv[i], "--lines") == 0) {
      lines = value;
    } else if (std::strcmp(argv[i], "--width") == 0) {
      width = value;
    } else if (std::strcmp(argv[i], "--repeat") == 0) {
      repeat = static_cast<int>(std::max(1L, value));
    }
  }
  const std::string line(static_cast<size_t>(std::max(0L, width)), 'x');
  const char* names[] = {"std::endl", "'\\n'", "std::endl, unsynced"};
  double seconds[3];
  for (int mode = 0; mode < 3; ++mode) {
    std::vector<double> runs;
    for (int r = 0; r < repeat; ++r) runs.push_back(Run(static_cast<Mode>(mode), lines, line));
    seconds[mode] = Median(runs);
  }
  for (int mode = 0; mode < 3; ++mode) {
    std::fprintf(stderr, "%ld lines of %ld bytes, %-20s %.4f s (%.2f us per line)\n", lines, width,
                 names[mode], seconds[mode], seconds[mode] / static_cast<double>(lines) * 1e6);
  }
  return 0;
}
