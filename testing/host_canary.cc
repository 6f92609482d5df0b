#include "testing/host_canary.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdio>
#include <cstdlib>

#include "testing/shell.h"

const char kCanaryText[] = "canary: left alone\n";

Canary::Canary(const std::string& parent) {
  std::string pattern = parent + "/hostile-canary.XXXXXX";
  if (mkdtemp(&pattern[0]) == nullptr) {
    ADD_FAILURE() << "cannot make a canary folder below " << parent;
    return;
  }
  folder_ = pattern;
  chmod(folder_.c_str(), 0777);
  FILE* file = std::fopen(File().c_str(), "w");
  if (file != nullptr) {
    std::fputs(kCanaryText, file);
    std::fclose(file);
  }
  chmod(File().c_str(), 0666);
}

Canary::~Canary() {
  if (!folder_.empty() && std::system(("rm -rf '" + folder_ + "'").c_str()) != 0) {
    // Nothing to do about it but leave the folder behind.
  }
}

std::string Canary::State() const {
  return RunShell("cd '" + folder_ + "' && ls -A && cat victim").out;
}
