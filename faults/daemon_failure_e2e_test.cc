// StreamMgr dying or garbling its answers while db talks to it: what was
// answered is shown, the rest is missing, nothing hangs, and the store keeps
// every row that no successful deletion removed.
#include <gtest/gtest.h>

#include <string>

#include "events/expected_event_table.h"
#include "faults/fault_helpers.h"
#include "files/files_e2e_fixture.h"
#include "testing/expected_start_up.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"
#include "testing/shell.h"

namespace {

using files_e2e::GeneratedFiles;
using files_e2e::GeneratedRows;
using files_e2e::Listing;

// Counts of the three tables as -t shows them when no count request is
// answered.
const std::string kUnansweredCounts = std::string(kTablesHeading) +
                                      "events             0\n"
                                      "streamfiles        0\n"
                                      "status             0\n"
                                      "\n";

// The sandbox's shell reports the simulator it started as killed; that line
// is the sandbox's, not db's.
std::string WithoutSandboxNotices(const std::string& err) {
  std::string kept;
  size_t start = 0;
  while (start < err.size()) {
    size_t end = err.find('\n', start);
    end = end == std::string::npos ? err.size() : end + 1;
    const std::string line = err.substr(start, end - start);
    if (line.find("recorder-sandbox: line ") == std::string::npos) kept += line;
    start = end;
  }
  return kept;
}

SandboxOptions Daemon(const std::string& arguments) {
  SandboxOptions options;
  options.streamMgrArgs = arguments;
  return options;
}

TEST(DaemonFailure, DaemonDyingAfterTheFirstPageEndsTheListingThere) {
  RecorderDisk disk;
  disk.Exec(GeneratedFiles(2500));
  const std::string before = disk.Dump();
  // Request 1 is the count, request 2 the first page of 1000 rows.
  const RunResult r = RunDb(disk, AccessPath::kDaemon, {"-f", "*", "-t"}, Daemon("--die-after 2"));
  EXPECT_RUN(r, Listing(GeneratedRows(1, 1000), 2500) + kUnansweredCounts, "", 0);
  EXPECT_EQ(before, disk.Dump());
}

TEST(DaemonFailure, DaemonKilledWhileARequestIsOutstanding) {
  RecorderDisk disk;
  disk.Exec(GeneratedFiles(2500));
  const std::string before = disk.Dump();
  // The count request is logged when it arrives and answered 20 s later; the
  // daemon is killed in between.
  const RunResult r =
      RunShell(disk, AccessPath::kDaemon,
               "db -f '*' -t & "
               "until grep -q '^count' /mnt/hd/requests.log 2>/dev/null; do sleep 0.05; done; "
               "kill -KILL $(pidof StreamMgr); wait $!",
               Daemon("--delay-ms 20000 --log /mnt/hd/requests.log"));
  EXPECT_EQ(Listing({}, 0) + kUnansweredCounts, r.out);
  EXPECT_EQ("", WithoutSandboxNotices(r.err));
  EXPECT_EQ(0, r.status);
  EXPECT_EQ(before, disk.Dump());
}

TEST(DaemonFailure, DaemonDyingDuringADeletionKeepsTheEventsItDidNotDelete) {
  RecorderDisk disk;
  disk.Exec(EventRow("r1").Insert() + EventRow("r2").Insert() + EventRow("r3").Insert());
  RecorderDisk expected;
  expected.Exec(EventRow("r2").Insert() + EventRow("r3").Insert());
  // Request 1 lists the events, request 2 deletes r1; then the daemon is gone.
  const RunResult r =
      RunDb(disk, AccessPath::kDaemon, {"--deleteall", "-e"}, Daemon("--die-after 2"));
  EXPECT_RUN(r, "  Successfully deleted 1 events\n" + std::string(kGibHeading),
             "  Failed to delete event:  reid= r2  groupId= \n"
             "  Failed to delete event:  reid= r3  groupId= \n",
             0);
  EXPECT_EQ(expected.Dump(), disk.Dump());
}

TEST(DaemonFailure, GarbledAnswersReadAsFailedRequests) {
  RecorderDisk disk;
  disk.Exec(EventRow("r1").Insert() + GeneratedFiles(3));
  const std::string before = disk.Dump();
  const RunResult r =
      RunDb(disk, AccessPath::kDaemon, {"-e", "-f", "*", "-d", "r1", "-t"}, Daemon("--garbage"));
  EXPECT_RUN(r, kGibHeading + Listing({}, 0) + kUnansweredCounts,
             "  Event or groupId not found: r1\n", 0);
  EXPECT_EQ(before, disk.Dump());
}

TEST(DaemonFailure, DaemonWithoutEndpointEndsTheToolBeforeAnyOption) {
  RecorderDisk disk;
  disk.Exec(EventRow("r1").Insert());
  const std::string before = disk.Dump();
  const RunResult r = RunDb(disk, AccessPath::kDaemon, {"--deleteall"}, Daemon("--no-ipc"));
  EXPECT_RUN(r, "", "Error initializing the ipc connection\n", 1);
  EXPECT_EQ(before, disk.Dump());
}

}  // namespace
