#include "testing/disk_manifest.h"

#include <gtest/gtest.h>

#include "testing/shell.h"

std::string DiskManifest(const std::string& folder) {
  const RunResult r = RunShell("cd " + ShellQuote(folder) +
                               " && find . -printf '%p %y %s %m %U:%G %T@ %C@ %l\\n' | sort && "
                               "find . -type f -exec md5sum {} + | sort");
  if (r.status != 0 || !r.err.empty()) {
    ADD_FAILURE() << "cannot list " << folder << ": " << r.err;
  }
  return r.out;
}
