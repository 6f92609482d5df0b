// The store held by another writer while db lists or deletes: the tool
// reports what SQLite refuses, never waits for ever, and changes nothing.
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <tuple>
#include <vector>

#include "events/expected_event_table.h"
#include "faults/fault_helpers.h"
#include "maintenance/expected_deletion.h"
#include "testing/expected_start_up.h"
#include "testing/faults_case_tables.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"
#include "testing/store_lock.h"

namespace {

struct Locked {
  const char* name;
  bool committing;  // the writer commits, which refuses readers too; else it writes
  std::vector<std::string> args;
  PathText out;
  PathText err;
};
void PrintTo(const Locked& c, std::ostream* out) { *out << c.name; }
Locked Case(const char* name, bool committing, const std::vector<std::string>& args,
            const PathText& out, const PathText& err) {
  return {name, committing, args, out, err};
}

const Locked kCases[] = {
    // The daemon's query fails in the same way, and a failed request is an
    // empty list: nothing is reported on that path.
    Case(
        "ListingWhileAnotherWriterCommitsShowsNoRows", true, {"-e"}, kGibHeading,
        {kNoFileSizesLine +
             std::string(
                 "unable to prepare: select * from eventsunable to prepare: select count(*) from events where streamstate is NULL or totalfiles is NULL or groupid is NULL or part is NULL or totalparts is NULL: error getting file stats\n"),
         ""}),
    Case("ListingWhileAnotherWriterWritesShowsTheCommittedRows", false, {"-e"},
         kGibHeading + DefaultRow("r1") + DefaultRow("r2"), ""),
    Case("DeletionWhileAnotherWriterCommitsDeletesNothing", true, {"-d", "r1", "--deleteall"}, "",
         {kNoFileSizesLine + NotPrepared(CountById("r1"), 5) +
              NotPrepared("select count(*) from events", 5),
          NotFound("r1").daemon + kNoEventsFound}),
    Case("DeletionWhileAnotherWriterWritesIsRefusedAndDeletesNothing", false,
         {"-d", "r1", "--deleteall"}, PathText("", Deleted(0, "r1") + DeletedAll(0).daemon),
         {DeleteByIdFailed("r1") + kDeleteAllFailed,
          FailedToDelete("r1") + FailedToDelete("r1") + FailedToDelete("r2")}),
};

class LockedStore : public ::testing::TestWithParam<CaseOnPath<Locked>> {
 protected:
  void SetUp() override { disk_.Exec(EventRow("r1").Insert() + EventRow("r2").Insert()); }
  RunResult RunWhileHeld(const Locked& c, AccessPath path) {
    if (c.committing) {
      StoreLock lock(disk_.StorePath());
      return RunDb(disk_, path, c.args);
    }
    faults::PendingWrite write(disk_);
    return RunDb(disk_, path, c.args);
  }
  RecorderDisk disk_;
};

TEST_P(LockedStore, ChangesNothing) {
  const Locked& c = std::get<0>(GetParam());
  const AccessPath path = std::get<1>(GetParam());
  const std::string before = disk_.Dump();
  EXPECT_RUN(RunWhileHeld(c, path), c.out.On(path), c.err.On(path), 0);
  EXPECT_EQ(before, disk_.Dump());
}

INSTANTIATE_TEST_SUITE_P(Faults, LockedStore, OnBothPaths(kCases), CaseOnPathName<Locked>);

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

}  // namespace
