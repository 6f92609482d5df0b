// The store held by another writer while db lists or deletes: the tool
// reports what SQLite refuses, never waits for ever, and changes nothing.
#include <gtest/gtest.h>

#include <string>

#include "events/expected_event_table.h"
#include "faults/fault_helpers.h"
#include "testing/expected_start_up.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

namespace {

using faults::DeletionsRefused;
using faults::StoreLock;

const char* const kStartUpRefused = kNoFileSizesLine;

class LockedStore : public ::testing::TestWithParam<AccessPath> {
 protected:
  void SetUp() override {
    disk_.Exec(EventRow("r1").Insert() + EventRow("r2").Insert());
    before_ = disk_.Dump();
  }
  bool Direct() const { return GetParam() == AccessPath::kDirect; }
  RecorderDisk disk_;
  std::string before_;
};

TEST_P(LockedStore, ListingWhileAnotherWriterCommitsShowsNoRows) {
  RunResult r;
  {
    StoreLock lock(disk_, StoreLock::Kind::kExclusive);
    ASSERT_TRUE(lock.Held());
    r = RunDb(disk_, GetParam(), {"-e"});
  }
  // The daemon's query fails in the same way, and a failed request is an
  // empty list: nothing is reported on that path.
  const std::string err =
      Direct()
          ? std::string(kStartUpRefused) +
                "unable to prepare: select * from eventsunable to prepare: select count(*) from events where streamstate is NULL or totalfiles is NULL or groupid is NULL or part is NULL or totalparts is NULL: error getting file stats\n"
          : "";
  EXPECT_RUN(r, kGibHeading, err, 0);
  EXPECT_EQ(before_, disk_.Dump());
}

TEST_P(LockedStore, ListingWhileAnotherWriterWritesShowsTheCommittedRows) {
  RunResult r;
  {
    StoreLock lock(disk_, StoreLock::Kind::kWriting);
    ASSERT_TRUE(lock.Held());
    r = RunDb(disk_, GetParam(), {"-e"});
  }
  EXPECT_RUN(r, kGibHeading + DefaultRow("r1") + DefaultRow("r2"), "", 0);
  EXPECT_EQ(before_, disk_.Dump());
}

TEST_P(LockedStore, DeletionWhileAnotherWriterCommitsDeletesNothing) {
  RunResult r;
  {
    StoreLock lock(disk_, StoreLock::Kind::kExclusive);
    ASSERT_TRUE(lock.Held());
    r = RunDb(disk_, GetParam(), {"-d", "r1", "--deleteall"});
  }
  const std::string byId = "select count(*) from events where reid='r1' or groupId='r1'";
  const std::string err =
      Direct()
          ? std::string(kStartUpRefused) + "unable to prepare: " + byId + "stmt Error: 5  sql='" +
                byId +
                "'\n"
                "unable to prepare: select count(*) from eventsstmt Error: 5  sql='select count(*) from events'\n"
          : "  Event or groupId not found: r1\n"
            "  No events found...no action taken.\n";
  EXPECT_RUN(r, "", err, 0);
  EXPECT_EQ(before_, disk_.Dump());
}

TEST_P(LockedStore, DeletionWhileAnotherWriterWritesIsRefusedAndDeletesNothing) {
  RunResult r;
  {
    StoreLock lock(disk_, StoreLock::Kind::kWriting);
    ASSERT_TRUE(lock.Held());
    r = RunDb(disk_, GetParam(), {"-d", "r1", "--deleteall"});
  }
  if (Direct()) {
    EXPECT_RUN(r, "", DeletionsRefused("r1"), 0);
  } else {
    EXPECT_RUN(r,
               "  Successfully deleted 0 events:  id = r1\n"
               "  Successfully deleted 0 events\n",
               "  Failed to delete event:  reid= r1  groupId= \n"
               "  Failed to delete event:  reid= r1  groupId= \n"
               "  Failed to delete event:  reid= r2  groupId= \n",
               0);
  }
  EXPECT_EQ(before_, disk_.Dump());
}

TEST_P(LockedStore, TheStoreIsUsableAgainOnceTheWriterIsDone) {
  {
    StoreLock lock(disk_, StoreLock::Kind::kExclusive);
    ASSERT_TRUE(lock.Held());
    RunDb(disk_, GetParam(), {"-e"});
  }
  const RunResult r = RunDb(disk_, GetParam(), {"-d", "r1", "-e"});
  EXPECT_RUN(
      r, "  Successfully deleted 1 event:  id = r1\n" + std::string(kGibHeading) + DefaultRow("r2"),
      "", 0);
}

INSTANTIATE_TEST_SUITE_P(Faults, LockedStore, BothAccessPaths(), PathName);

}  // namespace
