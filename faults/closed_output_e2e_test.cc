// Standard output closed, or a pipe whose reader stops early: what db cannot
// print is lost, but its work and its exit status are not, and a deletion
// that ran is kept while one that never started deletes nothing.
#include <gtest/gtest.h>

#include <string>

#include "faults/fault_helpers.h"
#include "files/files_e2e_fixture.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"
#include "testing/shell.h"

namespace {

class ClosedOutput : public ::testing::TestWithParam<AccessPath> {
 protected:
  void SetUp() override {
    disk_.Exec(EventRow("r1").Insert() + EventRow("r2").Insert() + files_e2e::GeneratedFiles(2000));
    before_ = disk_.Dump();
    RecorderDisk withoutR1;
    withoutR1.Exec(EventRow("r2").Insert() + files_e2e::GeneratedFiles(2000));
    afterDeletingR1_ = withoutR1.Dump();
  }
  RecorderDisk disk_;
  std::string before_;
  std::string afterDeletingR1_;
};

TEST_P(ClosedOutput, ClosedStandardOutputStillDeletes) {
  const RunResult r = RunShell(disk_, GetParam(), "exec db -e -d r1 -f '*' -t >&-");
  EXPECT_RUN(r, "", "", 0);
  EXPECT_EQ(afterDeletingR1_, disk_.Dump());
}

TEST_P(ClosedOutput, ClosedStandardOutputStillReportsFailures) {
  const RunResult r = RunShell(disk_, GetParam(), "exec db -d nosuch >&-");
  EXPECT_RUN(r, "",
             GetParam() == AccessPath::kDirect ? "  Event or groupId not found:  id = nosuch\n"
                                               : "  Event or groupId not found: nosuch\n",
             0);
  EXPECT_EQ(before_, disk_.Dump());
}

// 2000 rows are far more than a pipe holds, so db is still writing when head
// has gone. A shell leaves SIGPIPE at its default, which ends db at that
// write: the deletion after the listing never runs.
TEST_P(ClosedOutput, ReaderStoppingEarlyEndsTheListing) {
  const RunResult r =
      RunShell(disk_, GetParam(),
               "{ env --default-signal=PIPE db -f '*' -d r2; echo \"db: $?\" >&2; } | head -3");
  // db's own status, 128 + SIGPIPE, is echoed to standard error.
  EXPECT_RUN(r, files_e2e::kHeading, "db: 141\n", 0);
  EXPECT_EQ(before_, disk_.Dump());
}

TEST_P(ClosedOutput, ReaderStoppingEarlyKeepsADeletionThatRanBefore) {
  const RunResult r =
      RunShell(disk_, GetParam(),
               "{ env --default-signal=PIPE db -d r1 -f '*'; echo \"db: $?\" >&2; } | head -1");
  EXPECT_RUN(r, "  Successfully deleted 1 event:  id = r1\n", "db: 141\n", 0);
  EXPECT_EQ(afterDeletingR1_, disk_.Dump());
}

// Started with SIGPIPE ignored, as some supervisors do, db sees its writes
// fail instead: the rest of the output is lost quietly and the later options
// still run.
TEST_P(ClosedOutput, ReaderStoppingEarlyWithSigpipeIgnoredRunsTheLaterOptions) {
  const RunResult r =
      RunShell(disk_, GetParam(),
               "{ env --ignore-signal=PIPE db -f '*' -d r1; echo \"db: $?\" >&2; } | head -3");
  EXPECT_RUN(r, files_e2e::kHeading, "db: 0\n", 0);
  EXPECT_EQ(afterDeletingR1_, disk_.Dump());
}

INSTANTIATE_TEST_SUITE_P(Faults, ClosedOutput, BothAccessPaths(), PathName);

}  // namespace
