// Runs shell commands for the tests of what ships with db (groff, bash,
// cmake --install, cpack, dpkg-deb), and the scratch folders they work in.
#ifndef SHIP_SHELL_H_
#define SHIP_SHELL_H_

#include <string>

#include "testing/run_result.h"
#include "testing/scratch_dir.h"

// The same record as a run in the sandbox, so that both compare alike.
using ShellResult = RunResult;

// Runs `command` with /bin/sh and waits for it.
ShellResult RunShell(const std::string& command);

// `text` as one word of a shell command line.
std::string ShellQuote(const std::string& text);

// Where the sources and the build of this tree are.
std::string SourceDir();
std::string BuildDir();

#endif  // SHIP_SHELL_H_
