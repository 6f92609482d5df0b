// Stand-in programs run in the recorder sandbox by their command lines.
#ifndef TESTING_SIM_PROGRAM_FIXTURE_H_
#define TESTING_SIM_PROGRAM_FIXTURE_H_

#include <string>

#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"
#include "testing/sim_options_fixture.h"

// Runs `line` (its words split at single spaces) on a fresh disk.
inline RunResult RunLine(const std::string& line) {
  RecorderDisk disk;
  return RunInSandbox(disk, Words(line));
}

// Runs the shell script `script` on a fresh disk.
inline RunResult RunScript(const std::string& script) {
  RecorderDisk disk;
  return RunInSandbox(disk, {"sh", "-c", script});
}

// How a stand-in program refuses a command line: the line saying why, and
// its help, on standard error; status 2.
inline RunResult Refused(const std::string& why, const char* help) {
  return {"", why + "\n" + help, 2};
}

#endif  // TESTING_SIM_PROGRAM_FIXTURE_H_
