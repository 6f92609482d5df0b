// Runs a shell script and captures what it printed and how it ended: on the
// test's own machine (for the tools that build, install and package db), or
// inside tools/recorder-sandbox on a test disk (for scripts that start, stop
// or race db and its daemons).
#ifndef TESTING_SHELL_H_
#define TESTING_SHELL_H_

#include <string>

#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"
#include "testing/run_result.h"

// Runs `script` with /bin/sh on this machine and waits for it.
RunResult RunShell(const std::string& script);

// Runs `script` with sh -c inside the sandbox on `disk`, with the StreamMgr
// simulator running for kDaemon.
RunResult RunShell(const RecorderDisk& disk, AccessPath path, const std::string& script,
                   SandboxOptions options = SandboxOptions());

// `text` as one word of a shell command line.
std::string ShellQuote(const std::string& text);

#endif  // TESTING_SHELL_H_
