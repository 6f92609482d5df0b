// Helpers of the fault tests: another writer holding the store and a search
// path with chosen programs.
#ifndef FAULTS_FAULT_HELPERS_H_
#define FAULTS_FAULT_HELPERS_H_

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <string>
#include <vector>

#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

namespace faults {

// Another process writing to the store, its change not yet committed, from
// construction to destruction and then rolled back: readers go on, other
// writers are refused. (testing/store_lock.h holds it the way a commit does.)
class PendingWrite {
 public:
  explicit PendingWrite(const RecorderDisk& disk);
  ~PendingWrite();
  PendingWrite(const PendingWrite&) = delete;
  PendingWrite& operator=(const PendingWrite&) = delete;

 private:
  sqlite3* database_ = nullptr;
};

// Runs the built db with PATH set to exactly `search` inside the sandbox.
RunResult RunDbWithPath(const RecorderDisk& disk, AccessPath path, const std::string& search,
                        const std::vector<std::string>& args,
                        SandboxOptions options = SandboxOptions());

// Makes the folder `name` below the disk with a link to each of `programs`
// (names of built programs, or absolute paths of system ones); returns the
// folder as the sandbox sees it.
std::string LinkFolder(const RecorderDisk& disk, const std::string& name,
                       const std::vector<std::string>& programs);

// Absolute path of a system program, looked up on the test's own PATH.
std::string SystemProgram(const std::string& name);

}  // namespace faults

#endif  // FAULTS_FAULT_HELPERS_H_
