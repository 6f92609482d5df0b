#include "faults/fault_helpers.h"
#include "recorder/recorder_places.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <sstream>

namespace faults {

PendingWrite::PendingWrite(const RecorderDisk& disk) {
  EXPECT_EQ(SQLITE_OK, sqlite3_open(disk.StorePath().c_str(), &database_)) << disk.StorePath();
  // The change stays in this process; the file is only locked against
  // other writers.
  EXPECT_EQ(SQLITE_OK,
            sqlite3_exec(database_, "begin immediate; update events set state = state + 100",
                         nullptr, nullptr, nullptr))
      << sqlite3_errmsg(database_);
}

PendingWrite::~PendingWrite() {
  sqlite3_exec(database_, "rollback", nullptr, nullptr, nullptr);
  sqlite3_close(database_);
}

RunResult RunDbWithPath(const RecorderDisk& disk, AccessPath path, const std::string& search,
                        const std::vector<std::string>& args, SandboxOptions options) {
  options.streamMgr = path == AccessPath::kDaemon;
  std::vector<std::string> command = {"env", "PATH=" + search, BinDir() + "/db"};
  command.insert(command.end(), args.begin(), args.end());
  return RunInSandbox(disk, command, options);
}

std::string LinkFolder(const RecorderDisk& disk, const std::string& name,
                       const std::vector<std::string>& programs) {
  const std::string folder = disk.Path() + "/" + name;
  mkdir(folder.c_str(), 0755);
  for (const std::string& program : programs) {
    const bool absolute = !program.empty() && program[0] == '/';
    const std::string target = absolute ? program : BinDir() + "/" + program;
    const std::string link = folder + "/" + target.substr(target.rfind('/') + 1);
    EXPECT_EQ(0, symlink(target.c_str(), link.c_str())) << link;
  }
  return std::string(Recorder::kDisk) + "/" + name;
}

std::string SystemProgram(const std::string& name) {
  const char* path = std::getenv("PATH");
  std::istringstream folders(path != nullptr ? path : "/usr/bin:/bin");
  std::string folder;
  while (std::getline(folders, folder, ':')) {
    const std::string candidate = folder + "/" + name;
    if (!folder.empty() && access(candidate.c_str(), X_OK) == 0) return candidate;
  }
  ADD_FAILURE() << name << " is not on PATH";
  return "/usr/bin/" + name;
}

}  // namespace faults
