// Standard output closed, or a pipe whose reader stops early: what db cannot
// print is lost, but its work and its exit status are not, and a deletion
// that ran is kept while one that never started deletes nothing.
#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "files/files_e2e_fixture.h"
#include "maintenance/expected_deletion.h"
#include "testing/faults_case_tables.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"
#include "testing/shell.h"

namespace {

struct Closed {
  const char* name;
  const char* script;
  std::string out;
  PathText err;
  bool deletesR1;  // else the store is left as it was
};
void PrintTo(const Closed& c, std::ostream* out) { *out << c.name; }

// db's own status, 128 + SIGPIPE, is echoed to standard error.
const Closed kCases[] = {
    {"ClosedStandardOutputStillDeletes", "exec db -e -d r1 -f '*' -t >&-", "", "", true},
    {"ClosedStandardOutputStillReportsFailures", "exec db -d nosuch >&-", "", NotFound("nosuch"),
     false},
    // 2000 rows are far more than a pipe holds, so db is still writing when
    // head has gone. A shell leaves SIGPIPE at its default, which ends db at
    // that write: the deletion after the listing never runs.
    {"ReaderStoppingEarlyEndsTheListing",
     "{ env --default-signal=PIPE db -f '*' -d r2; echo \"db: $?\" >&2; } | head -3",
     files_e2e::kHeading, "db: 141\n", false},
    {"ReaderStoppingEarlyKeepsADeletionThatRanBefore",
     "{ env --default-signal=PIPE db -d r1 -f '*'; echo \"db: $?\" >&2; } | head -1",
     Deleted(1, "r1"), "db: 141\n", true},
    // Started with SIGPIPE ignored, as some supervisors do, db sees its
    // writes fail instead: the rest of the output is lost quietly and the
    // later options still run.
    {"ReaderStoppingEarlyWithSigpipeIgnoredRunsTheLaterOptions",
     "{ env --ignore-signal=PIPE db -f '*' -d r1; echo \"db: $?\" >&2; } | head -3",
     files_e2e::kHeading, "db: 0\n", true},
};

class ClosedOutput : public ::testing::TestWithParam<CaseOnPath<Closed>> {};

TEST_P(ClosedOutput, KeepsTheWorkDone) {
  const Closed& c = std::get<0>(GetParam());
  const AccessPath path = std::get<1>(GetParam());
  RecorderDisk disk;
  disk.Exec(EventRow("r1").Insert() + EventRow("r2").Insert() + files_e2e::GeneratedFiles(2000));
  RecorderDisk withoutR1;
  withoutR1.Exec(EventRow("r2").Insert() + files_e2e::GeneratedFiles(2000));
  const std::string after = c.deletesR1 ? withoutR1.Dump() : disk.Dump();
  EXPECT_RUN(RunShell(disk, path, c.script), c.out, c.err.On(path), 0);
  EXPECT_EQ(after, disk.Dump());
}

INSTANTIATE_TEST_SUITE_P(Faults, ClosedOutput, OnBothPaths(kCases), CaseOnPathName<Closed>);

}  // namespace
