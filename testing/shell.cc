#include "testing/shell.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <fstream>
#include <sstream>

#include "testing/scratch_dir.h"

RunResult RunShell(const std::string& script) {
  RunResult result;
  ScratchDir scratch;
  // popen gives standard output only; standard error goes to a file.
  const std::string errPath = scratch.Path() + "/err";
  FILE* pipe = popen(("{ " + script + "\n} 2> " + ShellQuote(errPath)).c_str(), "r");
  if (pipe == nullptr) {
    ADD_FAILURE() << "cannot run: " << script;
    return result;
  }
  char buffer[65536];
  size_t n;
  while ((n = fread(buffer, 1, sizeof buffer, pipe)) > 0) {
    result.out.append(buffer, n);
  }
  const int status = pclose(pipe);
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  std::ostringstream err;
  err << std::ifstream(errPath, std::ios::binary).rdbuf();
  result.err = err.str();
  return result;
}

RunResult RunShell(const RecorderDisk& disk, AccessPath path, const std::string& script,
                   SandboxOptions options) {
  options.streamMgr = path == AccessPath::kDaemon;
  return RunInSandbox(disk, {"sh", "-c", script}, options);
}

std::string ShellQuote(const std::string& text) {
  std::string quoted = "'";
  for (char c : text) {
    quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  }
  return quoted + "'";
}
