// The store held by another writer while db lists or deletes, on a read-only
// mount, or a file the user may not write: the tool reports what SQLite
// refuses, never waits for ever, and changes nothing.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <ostream>
#include <string>
#include <tuple>
#include <vector>

#include "events/expected_event_table.h"
#include "faults/fault_helpers.h"
#include "maintenance/expected_deletion.h"
#include "testing/case_tables.h"
#include "testing/expected_start_up.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"
#include "testing/shell.h"
#include "testing/store_lock.h"

namespace {

enum class Hold {
  kCommit,        // another writer commits, which refuses readers too
  kWrite,         // another writer's change is not yet committed
  kReadOnlyFile,  // the store and its folder, for user nobody
};

struct Held {
  const char* name;
  Hold hold;
  std::vector<std::string> args;
  PathText out;
  PathText err;
};
void PrintTo(const Held& c, std::ostream* out) { *out << c.name; }
Held Case(const char* name, Hold hold, const std::vector<std::string>& args, const PathText& out,
          const PathText& err) {
  return {name, hold, args, out, err};
}

const Held kCases[] = {
    // The daemon's query fails in the same way, and a failed request is an
    // empty list: nothing is reported on that path.
    Case(
        "ListingWhileAnotherWriterCommitsShowsNoRows", Hold::kCommit, {"-e"}, kGibHeading,
        {kNoFileSizesLine +
             std::string(
                 "unable to prepare: select * from eventsunable to prepare: select count(*) from events where streamstate is NULL or totalfiles is NULL or groupid is NULL or part is NULL or totalparts is NULL: error getting file stats\n"),
         ""}),
    Case("ListingWhileAnotherWriterWritesShowsTheCommittedRows", Hold::kWrite, {"-e"},
         kGibHeading + DefaultRow("r1") + DefaultRow("r2"), ""),
    Case("DeletionWhileAnotherWriterCommitsDeletesNothing", Hold::kCommit,
         {"-d", "r1", "--deleteall"}, "",
         {kNoFileSizesLine + NotPrepared(CountById("r1"), 5) + NotPrepared(kCountAll, 5),
          NotFound("r1").daemon + kNoEventsFound}),
    Case("DeletionWhileAnotherWriterWritesIsRefusedAndDeletesNothing", Hold::kWrite,
         {"-d", "r1", "--deleteall"}, PathText("", Deleted(0, "r1") + DeletedAll(0).daemon),
         {DeleteByIdFailed("r1") + kDeleteAllFailed,
          FailedToDelete("r1") + FailedToDelete("r1") + FailedToDelete("r2")}),
    // The daemon cannot delete either, and says so for every event.
    Case("StoreTheUserMayNotWriteIsListedButNotDeletedFrom", Hold::kReadOnlyFile,
         {"-r", "r2", "-d", "r2", "--deleteall"},
         {kGibHeading + DefaultRow("r2") + "\n",
          kGibHeading + DefaultRow("r2") + Deleted(0, "r2") + DeletedAll(0).daemon},
         {DeleteByIdFailed("r2") + kDeleteAllFailed,
          FailedToDelete("r2") + FailedToDelete("r1") + FailedToDelete("r2")}),
};

class HeldStore : public ::testing::TestWithParam<CaseOnPath<Held>> {
 protected:
  void SetUp() override { disk_.Exec(EventRow("r1").Insert() + EventRow("r2").Insert()); }
  RunResult RunWhileHeld(const Held& c, AccessPath path) {
    if (c.hold == Hold::kCommit) {
      StoreLock lock(disk_.StorePath());
      return RunDb(disk_, path, c.args);
    }
    if (c.hold == Hold::kWrite) {
      faults::PendingWrite write(disk_);
      return RunDb(disk_, path, c.args);
    }
    // Neither the store nor its folder (where SQLite keeps its journal) can
    // be written by a user who does not own them.
    chmod(disk_.StorePath().c_str(), 0444);
    chmod((disk_.Path() + "/streammgr").c_str(), 0555);
    SandboxOptions options;
    options.unprivileged = true;
    return RunDb(disk_, path, c.args, options);
  }
  RecorderDisk disk_;
};

TEST_P(HeldStore, ChangesNothing) {
  const Held& c = std::get<0>(GetParam());
  const AccessPath path = std::get<1>(GetParam());
  const std::string before = disk_.Dump();
  EXPECT_RUN(RunWhileHeld(c, path), c.out.On(path), c.err.On(path), 0);
  EXPECT_EQ(before, disk_.Dump());
}

INSTANTIATE_TEST_SUITE_P(Faults, HeldStore, OnBothPaths(kCases), CaseOnPathName<Held>);

class StoreOnceLocked : public ::testing::TestWithParam<AccessPath> {};

TEST_P(StoreOnceLocked, IsUsableAgainOnceTheWriterIsDone) {
  RecorderDisk disk;
  disk.Exec(EventRow("r1").Insert() + EventRow("r2").Insert());
  {
    StoreLock lock(disk.StorePath());
    RunDb(disk, GetParam(), {"-e"});
  }
  EXPECT_RUN(RunDb(disk, GetParam(), {"-d", "r1", "-e"}),
             Deleted(1, "r1") + kGibHeading + DefaultRow("r2"), "", 0);
}

INSTANTIATE_TEST_SUITE_P(Faults, StoreOnceLocked, BothAccessPaths(), PathName);

// SQLite opens a store it cannot write read-only; only the deletions fail,
// at their step, which is also what finalising them reports.
TEST(ReadOnlyMount, ListsAndRefusesDeletionsDirectly) {
  RecorderDisk disk;
  disk.Exec(EventRow("r1").Insert() + EventRow("r2").Insert());
  const std::string before = disk.Dump();
  EXPECT_RUN(RunShell(disk, AccessPath::kDirect,
                      "mount -o remount,ro,bind /mnt/hd && exec db -e -d r1 --deleteall -t"),
             kGibHeading + DefaultRow("r1") + DefaultRow("r2") + kTablesHeading +
                 "events             2\n"
                 "streamfiles        0\n"
                 "status             0\n"
                 "\n",
             DeleteByIdFailed("r1") + kDeleteAllFailed, 0);
  EXPECT_EQ(before, disk.Dump());
}

}  // namespace
