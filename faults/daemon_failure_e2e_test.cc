// The daemons failing db. StreamMgr dying or garbling its answers: what was
// answered is shown, the rest is missing, nothing hangs, and the store keeps
// every row that no successful deletion removed. ConfigMP answering slowly,
// late or with garbage: every row is still printed, with the setting when it
// came in time and "NA" when it did not.
#include <gtest/gtest.h>

#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "events/expected_event_table.h"
#include "files/files_e2e_fixture.h"
#include "maintenance/expected_deletion.h"
#include "maintenance/expected_table_counts.h"
#include "testing/case_tables.h"
#include "testing/expected_start_up.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"
#include "testing/shell.h"

namespace {

using files_e2e::GeneratedFiles;
using files_e2e::Listing;

// -t when no count request is answered.
const std::string& kUnansweredCounts = kZeroCounts;

SandboxOptions Daemon(const std::string& streamMgrArgs, const std::string& configMpArgs = "") {
  SandboxOptions options;
  options.streamMgrArgs = streamMgrArgs;
  options.configMp = !configMpArgs.empty();
  options.configMpArgs = configMpArgs;
  return options;
}

struct Failure {
  const char* name;
  std::string sql;
  std::vector<std::string> args;
  const char* daemonArgs;
  RunResult expected;
  std::string left;  // the rows left, as SQL; none when the store keeps them all
};
void PrintTo(const Failure& c, std::ostream* out) { *out << c.name; }
Failure Case(const char* name, const std::string& sql, const std::vector<std::string>& args,
             const char* daemonArgs, const RunResult& expected, const std::string& left = "") {
  return {name, sql, args, daemonArgs, expected, left};
}

const Failure kFailures[] = {
    // Request 1 is the count, request 2 the first page of 1000 rows.
    Case("DaemonDyingAfterTheFirstPageEndsTheListingThere", GeneratedFiles(2500), {"-f", "*", "-t"},
         "--die-after 2",
         {Listing(files_e2e::GeneratedRows(1, 1000), 2500) + kUnansweredCounts, "", 0}),
    // Request 1 lists the events, request 2 deletes r1; then the daemon is
    // gone.
    Case("DaemonDyingDuringADeletionKeepsTheEventsItDidNotDelete",
         EventRow("r1").Insert() + EventRow("r2").Insert() + EventRow("r3").Insert(),
         {"--deleteall", "-e"}, "--die-after 2",
         {DeletedAll(1).daemon + kGibHeading, FailedToDelete("r2") + FailedToDelete("r3"), 0},
         EventRow("r2").Insert() + EventRow("r3").Insert()),
    Case("GarbledAnswersReadAsFailedRequests", EventRow("r1").Insert() + GeneratedFiles(3),
         {"-e", "-f", "*", "-d", "r1", "-t"}, "--garbage",
         {kGibHeading + Listing({}, 0) + kUnansweredCounts, NotFound("r1").daemon, 0}),
    Case("DaemonWithoutEndpointEndsTheToolBeforeAnyOption", EventRow("r1").Insert(),
         {"--deleteall"}, "--no-ipc", {"", "Error initializing the ipc connection\n", 1}),
};

class DaemonFailure : public ::testing::TestWithParam<Failure> {};

TEST_P(DaemonFailure, ShowsWhatWasAnswered) {
  const Failure& c = GetParam();
  RecorderDisk disk;
  disk.Exec(c.sql);
  RecorderDisk expected;
  expected.Exec(c.left.empty() ? c.sql : c.left);
  EXPECT_RUN(RunDb(disk, AccessPath::kDaemon, c.args, Daemon(c.daemonArgs)), c.expected);
  EXPECT_EQ(expected.Dump(), disk.Dump());
}

INSTANTIATE_TEST_SUITE_P(Faults, DaemonFailure, ::testing::ValuesIn(kFailures), CaseName<Failure>);

TEST(DaemonKilled, WhileARequestIsOutstanding) {
  RecorderDisk disk;
  disk.Exec(GeneratedFiles(2500));
  const std::string before = disk.Dump();
  // The count request is logged when it arrives and answered 20 s later; the
  // daemon is killed in between.
  RunResult r =
      RunShell(disk, AccessPath::kDaemon,
               "db -f '*' -t & "
               "until grep -q '^count' /mnt/hd/requests.log 2>/dev/null; do sleep 0.05; done; "
               "kill -KILL $(pidof StreamMgr); wait $!",
               Daemon("--delay-ms 20000 --log /mnt/hd/requests.log"));
  // The sandbox's shell reports the simulator it started as killed; that
  // line is the sandbox's, not db's.
  std::istringstream lines(r.err);
  r.err.clear();
  for (std::string line; std::getline(lines, line);) {
    if (line.find("recorder-sandbox: line ") == std::string::npos) r.err += line + "\n";
  }
  EXPECT_RUN(r, Listing({}, 0) + kUnansweredCounts, "", 0);
  EXPECT_EQ(before, disk.Dump());
}

// DefaultRow with `hours` in place of "NA" in the hours column.
std::string RowWithHours(const std::string& reid, const std::string& hours) {
  std::string row = DefaultRow(reid);
  const std::string unavailable = std::string(18, ' ') + "NA  \n";
  return row.replace(row.rfind(unavailable), unavailable.size(),
                     std::string(20 - hours.size(), ' ') + hours + "  \n");
}

class SlowConfig : public ::testing::TestWithParam<AccessPath> {
 protected:
  void SetUp() override { disk_.Exec(EventRow("r1").Insert() + EventRow("r2").Insert()); }
  RecorderDisk disk_;
};

TEST_P(SlowConfig, SlowAnswersStillShowTheSetting) {
  EXPECT_RUN(RunDb(disk_, GetParam(), {"-e"}, Daemon("", "--delay-ms 300")),
             kGibHeading + RowWithHours("r1", "Disabled") + RowWithHours("r2", "Disabled"), "", 0);
}

TEST_P(SlowConfig, GarbledAnswersShowNotAvailable) {
  EXPECT_RUN(RunDb(disk_, GetParam(), {"-e"}, Daemon("", "--garbage")),
             kGibHeading + DefaultRow("r1") + DefaultRow("r2"), "", 0);
}

INSTANTIATE_TEST_SUITE_P(Faults, SlowConfig, BothAccessPaths(), PathName);

// The client waits 30 s for the settings; an answer later than that counts as
// none. One event keeps the wait to one time-out.
TEST(SlowConfigTimeOut, AnswerLaterThanTheClientWaitsShowsNotAvailable) {
  RecorderDisk disk;
  disk.Exec(EventRow("r1").Insert());
  EXPECT_RUN(RunDb(disk, AccessPath::kDirect, {"-e"}, Daemon("", "--delay-ms 31000")),
             kGibHeading + DefaultRow("r1"), "", 0);
}

}  // namespace
