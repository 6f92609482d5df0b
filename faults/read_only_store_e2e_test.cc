// The store on a read-only mount, or a file the user may not write: listings
// work, deletions are refused with the tool's messages, and nothing changes.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "events/expected_event_table.h"
#include "faults/fault_helpers.h"
#include "testing/expected_start_up.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"
#include "testing/shell.h"

namespace {

using faults::DeletionsRefused;

class ReadOnlyStore : public ::testing::TestWithParam<AccessPath> {
 protected:
  void SetUp() override {
    disk_.Exec(EventRow("r1").Insert() + EventRow("r2").Insert());
    before_ = disk_.Dump();
  }
  // Neither the store nor its folder (where SQLite keeps its journal) can be
  // written by a user who does not own them.
  void WriteProtect() {
    chmod(disk_.StorePath().c_str(), 0444);
    chmod((disk_.Path() + "/streammgr").c_str(), 0555);
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
             DeletionsRefused("r1"), 0);
  EXPECT_EQ(before_, disk_.Dump());
}

TEST_P(ReadOnlyStore, StoreTheUserMayNotWriteIsListedButNotDeletedFrom) {
  WriteProtect();
  SandboxOptions options;
  options.unprivileged = true;
  const RunResult r = RunDb(disk_, GetParam(), {"-r", "r2", "-d", "r2", "--deleteall"}, options);
  if (GetParam() == AccessPath::kDirect) {
    EXPECT_RUN(r, kGibHeading + DefaultRow("r2") + "\n", DeletionsRefused("r2"), 0);
  } else {
    // The daemon cannot delete either, and says so for every event.
    EXPECT_RUN(r,
               kGibHeading + DefaultRow("r2") +
                   "  Successfully deleted 0 events:  id = r2\n"
                   "  Successfully deleted 0 events\n",
               "  Failed to delete event:  reid= r2  groupId= \n"
               "  Failed to delete event:  reid= r1  groupId= \n"
               "  Failed to delete event:  reid= r2  groupId= \n",
               0);
  }
  EXPECT_EQ(before_, disk_.Dump());
}

INSTANTIATE_TEST_SUITE_P(Faults, ReadOnlyStore, BothAccessPaths(), PathName);

}  // namespace
