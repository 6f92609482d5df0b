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

// Another process's transaction on the store, held from construction to
// destruction and then rolled back, so that it changes nothing.
class StoreLock {
 public:
  enum class Kind {
    kWriting,    // a write in progress: readers go on, other writers are refused
    kExclusive,  // committing: readers are refused as well
  };
  StoreLock(const RecorderDisk& disk, Kind kind);
  ~StoreLock();
  StoreLock(const StoreLock&) = delete;
  StoreLock& operator=(const StoreLock&) = delete;

  bool Held() const { return held_; }

 private:
  sqlite3* database_ = nullptr;
  bool held_ = false;
};

// What db prints directly when the store refuses `-d ID --deleteall`: each
// failed step is also what finalising its statement reports.
inline std::string DeletionsRefused(const std::string& id) {
  return "  Error deleting event or groupId:  id = " + id +
         "\n"
         "could not free statement, leaking memory\n"
         "  Error deleting all events\n"
         "could not free statement, leaking memory\n";
}

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
