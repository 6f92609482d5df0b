// db: maintenance and diagnostic tool for the recorder's stream store.
#include <cstdio>

#include "cli/dispatch.h"
#include "cli/start_up.h"
#include "cli/usage.h"

int main(int argc, char** argv) {
  FILE* probe = ProbeForDaemon();
  if (argc < 2) {
    PrintUsage(argv[0], nullptr);
    return 0;
  }
  const int exitStatus = RunOptionLoop(argc, argv, StartUp());
  if (probe != nullptr) {
    pclose(probe);
  }
  return exitStatus;
}
