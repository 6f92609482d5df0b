// The store overwritten with garbage after start-up, between two options:
// the handlers that follow report SQLite's refusal and write nothing back.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "events/expected_event_table.h"
#include "faults/fault_helpers.h"
#include "files/files_e2e_fixture.h"
#include "testing/expected_start_up.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

namespace {

class ReplacedStore : public ::testing::TestWithParam<AccessPath> {
 protected:
  void SetUp() override {
    disk_.Exec(EventRow("r1").Insert());
    // -s runs the recorder's sql command; this one overwrites the store in
    // place instead, as a failing disk or a stray process might.
    disk_.WriteFile("fakes/sql",
                    "#!/bin/sh\n"
                    "head -c 8192 /dev/zero | tr '\\0' x > /mnt/hd/streammgr/stream.db\n");
    chmod((disk_.Path() + "/fakes/sql").c_str(), 0755);
  }
  RunResult Run(const std::vector<std::string>& args) {
    return faults::RunDbWithPath(disk_, GetParam(), "/mnt/hd/fakes:" + BinDir() + ":/usr/bin:/bin",
                                 args);
  }
  static std::string Garbage() { return std::string(8192, 'x'); }
  bool Direct() const { return GetParam() == AccessPath::kDirect; }
  RecorderDisk disk_;
};

TEST_P(ReplacedStore, ListingAfterTheStoreWasReplaced) {
  const RunResult r = Run({"-e", "-s", "-e", "-f", "*", "-t"});
  // Directly, statements prepared on the schema read at start-up fail at
  // their first step, which is also what finalising them reports. The daemon
  // read no schema before, so its failures are empty answers, and only the
  // table list, always read from the file, fails to prepare.
  const std::string err =
      Direct() ? "stmt Error: could not free statement, leaking memory\n"
                 ": error getting file stats\n"
                 "could not free statement, leaking memory\n"
                 "stmt Error: \n"
                 "could not free statement, leaking memory\n"
                 "could not free statement, leaking memory\n"
                 "stmt Error: could not free statement, leaking memory\n"
               : "unable to prepare: select tbl_name from sqlite_master where type='table'";
  EXPECT_RUN(r,
             kGibHeading + DefaultRow("r1") + kGibHeading + files_e2e::Listing({}, 0) +
                 kTablesHeading + "\n",
             err, 0);
  EXPECT_EQ(Garbage(), disk_.ReadFile("streammgr/stream.db"));
}

TEST_P(ReplacedStore, DeletionAfterTheStoreWasReplaced) {
  EXPECT_RUN(Run({"-s", "-d", "r1", "--deleteall"}), "",
             Direct()
                 ? ": error getting count of events to delete using "
                   "'select count(*) from events where reid='r1' or groupId='r1''\n"
                   "could not free statement, leaking memory\n"
                   ": error getting count of events to delete using 'select count(*) from events'\n"
                   "could not free statement, leaking memory\n"
                 : "  Event or groupId not found: r1\n"
                   "  No events found...no action taken.\n",
             0);
  EXPECT_EQ(Garbage(), disk_.ReadFile("streammgr/stream.db"));
}

INSTANTIATE_TEST_SUITE_P(Faults, ReplacedStore, BothAccessPaths(), PathName);

}  // namespace
