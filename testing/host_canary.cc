#include "testing/host_canary.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdio>
#include <cstdlib>

#include "testing/scratch_dir.h"
#include "testing/shell.h"

const char kCanaryText[] = "canary: left alone\n";

Canary::Canary(const std::string& parent) {
  folder_ = MakeFolderBelow(parent, "hostile-canary", 0777);
  if (folder_.empty()) {
    return;
  }
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
