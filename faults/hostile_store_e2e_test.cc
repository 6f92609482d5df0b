// Stores that no recorder writes. Rows that a damaged or hand-edited store
// may hold, with values of the wrong type, out of range, huge or deeply
// nested: db lists them as its records read them, never crashes, and changes
// nothing. The store overwritten with garbage after start-up, between two
// options: the handlers that follow report SQLite's refusal and write
// nothing back.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>
#include <vector>

#include "events/expected_event_table.h"
#include "faults/fault_helpers.h"
#include "files/files_e2e_fixture.h"
#include "maintenance/expected_deletion.h"
#include "maintenance/expected_table_counts.h"
#include "testing/expected_start_up.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

namespace {

class HostileRows : public ::testing::TestWithParam<AccessPath> {
 protected:
  RunResult ListEvents(const std::string& sql) {
    disk_.Exec(sql);
    const std::string before = disk_.Dump();
    const RunResult r = RunDb(disk_, GetParam(), {"-e", "-p", "-u"});
    EXPECT_EQ(before, disk_.Dump());
    return r;
  }
  RecorderDisk disk_;
};

TEST_P(HostileRows, ValuesOfTheWrongTypeReadAsTheirRecordsReadThem) {
  // Text in number columns reads as 0, a blob in the reid as its bytes, a
  // real is cut to its whole part.
  const RunResult r = ListEvents(EventRow("r1").Insert() +
                                 "update events set state = 'busy', part = 2.9, "
                                 "totalparts = x'00', starttick = -1.5 where reid = 'r1';");
  // Part of the output on purpose: that the row is listed, whatever its
  // records made of the values.
  EXPECT_NE(std::string::npos, r.out.find("r1 "));
  EXPECT_RUN(r, r.out, "", 0);
}

TEST_P(HostileRows, AHugeReidIsPrintedWhole) {
  const std::string reid(200000, 'r');
  EXPECT_RUN(ListEvents(EventRow(reid).Insert()),
             kGibHeading + DefaultRow(reid) + kGibHeading + kGibHeading + DefaultRow(reid), "", 0);
}

// The answers column is JSON that the row loader parses. Nested this deep it
// once overflowed the stack while the first answer was turned back into text,
// on both paths (the simulator uses the same loader, and died); values nested
// deeper than an answer can be are now dropped while parsing.
TEST_P(HostileRows, DeeplyNestedAnswersAreRead) {
  const int depth = 300000;
  const RunResult r =
      ListEvents(EventRow("r1").Insert() + "update events set answers = '[" +
                 std::string(depth, '[') + std::string(depth, ']') + "]' where reid = 'r1';");
  // The first entry is there, but its answer was nested too deep to keep: an
  // empty answer column.
  std::string row = DefaultRow("r1");
  row.insert(row.size() - 1, std::string(20, ' ') + "  ");
  EXPECT_RUN(r, kGibHeading + row + kGibHeading + kGibHeading + row, "", 0);
}

INSTANTIATE_TEST_SUITE_P(Faults, HostileRows, BothAccessPaths(), PathName);

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
  // Runs db, which must leave the garbage as it is.
  void ExpectRun(const std::vector<std::string>& args, const std::string& out,
                 const PathText& err) {
    EXPECT_RUN(faults::RunDbWithPath(disk_, GetParam(),
                                     "/mnt/hd/fakes:" + BinDir() + ":/usr/bin:/bin", args),
               out, err.On(GetParam()), 0);
    EXPECT_EQ(std::string(8192, 'x'), disk_.ReadFile("streammgr/stream.db"));
  }
  RecorderDisk disk_;
};

// Directly, statements prepared on the schema read at start-up fail at their
// first step, which is also what finalising them reports. The daemon read no
// schema before, so its failures are empty answers, and only the table list,
// always read from the file, fails to prepare.
TEST_P(ReplacedStore, ListingAfterTheStoreWasReplaced) {
  ExpectRun({"-e", "-s", "-e", "-f", "*", "-t"},
            kGibHeading + DefaultRow("r1") + kGibHeading + files_e2e::Listing({}, 0) +
                kTablesHeading + "\n",
            {"stmt Error: could not free statement, leaking memory\n"
             ": error getting file stats\n"
             "could not free statement, leaking memory\n"
             "stmt Error: \n"
             "could not free statement, leaking memory\n"
             "could not free statement, leaking memory\n"
             "stmt Error: could not free statement, leaking memory\n",
             kNoTableList});
}

TEST_P(ReplacedStore, DeletionAfterTheStoreWasReplaced) {
  ExpectRun({"-s", "-d", "r1", "--deleteall"}, "",
            {CountFailed(CountById("r1")) + CountFailed(kCountAll),
             NotFound("r1").daemon + kNoEventsFound});
}

INSTANTIATE_TEST_SUITE_P(Faults, ReplacedStore, BothAccessPaths(), PathName);

}  // namespace
