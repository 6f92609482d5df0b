// Runs a command inside tools/recorder-sandbox on a test disk and captures
// its standard output, standard error and exit status.
#ifndef TESTING_RUN_IN_SANDBOX_H_
#define TESTING_RUN_IN_SANDBOX_H_

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "testing/recorder_disk.h"
#include "testing/run_result.h"

struct SandboxOptions {
  bool streamMgr = false;
  std::string streamMgrArgs;  // e.g. "--log /mnt/hd/requests.log"
  bool configMp = false;
  std::string configMpArgs;              // e.g. "--reexport-hours 24"
  std::vector<std::string> environment;  // extra NAME=VALUE entries
  std::string input;                     // fed to standard input
  bool unprivileged = false;             // run the sandbox as user nobody
  std::vector<std::string> sandboxArgs;  // more options of the sandbox, e.g. --ro DIR
  // A command that runs the sandbox's command line given as its arguments,
  // e.g. one that mounts the disk read-only in a mount namespace first.
  std::vector<std::string> prefix;
  std::string diskDir;  // DISK_DIR of the sandbox, when not the disk's own folder
  int timeoutSeconds = 90;
};

// The two ways the tool reaches the store.
enum class AccessPath { kDirect, kDaemon };
const char* AccessPathName(AccessPath path);
// Lets GoogleTest name parameterised cases by their access path.
inline void PrintTo(AccessPath path, std::ostream* out) { *out << AccessPathName(path); }
// Both access paths, and the names of their instances, for tests that run
// on each: INSTANTIATE_TEST_SUITE_P(Prefix, Suite, BothAccessPaths(), PathName).
inline auto BothAccessPaths() {
  return ::testing::Values(AccessPath::kDirect, AccessPath::kDaemon);
}
inline std::string PathName(const ::testing::TestParamInfo<AccessPath>& info) {
  return AccessPathName(info.param);
}

// Runs `command` (first word looked up on the sandbox's PATH) with TZ=UTC.
RunResult RunInSandbox(const RecorderDisk& disk, const std::vector<std::string>& command,
                       const SandboxOptions& options = SandboxOptions());

// Runs db with `args`.
RunResult RunDb(const RecorderDisk& disk, const std::vector<std::string>& args,
                const SandboxOptions& options = SandboxOptions());

// Runs db with `args` on the given access path: with the StreamMgr simulator
// running for kDaemon (its extra arguments in `options.streamMgrArgs`).
RunResult RunDb(const RecorderDisk& disk, AccessPath path, const std::vector<std::string>& args,
                SandboxOptions options = SandboxOptions());

// Directory of the built programs.
std::string BinDir();

#endif  // TESTING_RUN_IN_SANDBOX_H_
