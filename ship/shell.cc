#include "ship/shell.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

ShellResult RunShell(const std::string& command) {
  ShellResult result;
  ScratchDir scratch;
  const std::string errPath = scratch.Path() + "/err";
  FILE* pipe = popen(("{ " + command + "\n} 2> " + ShellQuote(errPath)).c_str(), "r");
  if (pipe == nullptr) {
    ADD_FAILURE() << "cannot run: " << command;
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

std::string ShellQuote(const std::string& text) {
  std::string quoted = "'";
  for (char c : text) {
    quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  }
  return quoted + "'";
}

std::string SourceDir() { return DB_SOURCE_DIR; }
std::string BuildDir() { return DB_BUILD_DIR; }
