// The store on a read-only mount, or a file the user may not write: listings
// work, deletions are refused with the tool's messages, and nothing changes.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "events/expected_event_table.h"
#include "maintenance/expected_deletion.h"
#include "testing/expected_start_up.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"
#include "testing/shell.h"

namespace {

class ReadOnlyStore : public ::testing::TestWithParam<AccessPath> {
 protected:
  void SetUp() override {
    disk_.Exec(EventRow("r1").Insert() + EventRow("r2").Insert());
    before_ = disk_.Dump();
  }
  RecorderDisk disk_;
  std::string before_;
};

TEST_F(ReadOnlyStore, ReadOnlyMountListsAndRefusesDeletionsDirectly) {
  const RunResult r =
      RunShell(disk_, AccessPath::kDirect,
               "mount -o remount,ro,bind /mnt/hd && exec db -e -d r1 --deleteall -t");
  // SQLite opens a store it cannot write read-only; only the deletions fail,
  // at their step, which is also what finalising them reports.
  EXPECT_RUN(r,
             kGibHeading + DefaultRow("r1") + DefaultRow("r2") + kTablesHeading +
                 "events             2\n"
                 "streamfiles        0\n"
                 "status             0\n"
                 "\n",
             DeleteByIdFailed("r1") + kDeleteAllFailed, 0);
  EXPECT_EQ(before_, disk_.Dump());
}

TEST_P(ReadOnlyStore, StoreTheUserMayNotWriteIsListedButNotDeletedFrom) {
  // Neither the store nor its folder (where SQLite keeps its journal) can be
  // written by a user who does not own them.
  chmod(disk_.StorePath().c_str(), 0444);
  chmod((disk_.Path() + "/streammgr").c_str(), 0555);
  SandboxOptions options;
  options.unprivileged = true;
  const RunResult r = RunDb(disk_, GetParam(), {"-r", "r2", "-d", "r2", "--deleteall"}, options);
  // The daemon cannot delete either, and says so for every event.
  const PathText deletions = {"\n", Deleted(0, "r2") + DeletedAll(0).daemon};
  const PathText refusals = {DeleteByIdFailed("r2") + kDeleteAllFailed,
                             FailedToDelete("r2") + FailedToDelete("r1") + FailedToDelete("r2")};
  EXPECT_RUN(r, kGibHeading + DefaultRow("r2") + deletions.On(GetParam()), refusals.On(GetParam()),
             0);
  EXPECT_EQ(before_, disk_.Dump());
}

INSTANTIATE_TEST_SUITE_P(Faults, ReadOnlyStore, BothAccessPaths(), PathName);

}  // namespace
