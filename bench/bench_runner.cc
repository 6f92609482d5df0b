// Runs one command several times and prints the median wall time in seconds
// and the peak resident memory in KiB of the command and its descendants.
//
//   bench_runner [--repeat N] [--setup SHELL-COMMAND] -- COMMAND [ARG...]
//
// The setup command runs before every repetition and is not timed; the
// command's standard output goes to /dev/null.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

int main(int argc, char** argv) {
  int repeat = 5;
  std::string setup;
  int i = 1;
  for (; i < argc; ++i) {
    const std::string word = argv[i];
    if (word == "--repeat" && i + 1 < argc) {
      repeat = std::max(1, std::atoi(argv[++i]));
    } else if (word == "--setup" && i + 1 < argc) {
      setup = argv[++i];
    } else if (word == "--") {
      ++i;
      break;
    } else {
      std::fprintf(stderr, "usage: bench_runner [--repeat N] [--setup CMD] -- COMMAND...\n");
      return 2;
    }
  }
  if (i >= argc) return 2;
  std::vector<double> seconds;
  long peakKib = 0;
  for (int run = 0; run < repeat; ++run) {
    if (!setup.empty() && std::system(setup.c_str()) != 0) {
      std::fprintf(stderr, "bench_runner: setup failed: %s\n", setup.c_str());
      return 1;
    }
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = fork();
    if (child == 0) {
      const int null = open("/dev/null", O_WRONLY);
      dup2(null, 1);
      execvp(argv[i], argv + i);
      _exit(127);
    }
    int status = 0;
    struct rusage usage {};
    wait4(child, &status, 0, &usage);
    const auto stop = std::chrono::steady_clock::now();
    seconds.push_back(std::chrono::duration<double>(stop - start).count());
    peakKib = std::max(peakKib, usage.ru_maxrss);
    if (!WIFEXITED(status) || WEXITSTATUS(status) == 127) {
      std::fprintf(stderr, "bench_runner: command failed\n");
      return 1;
    }
  }
  std::sort(seconds.begin(), seconds.end());
  std::printf("%.4f %ld\n", seconds[seconds.size() / 2], peakKib);
  return 0;
}
