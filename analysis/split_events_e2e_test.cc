// db -a s and -a sz<nn> end to end, on the database file and through the daemon.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "analysis/analysis_e2e_fixture.h"
#include "analysis/expected_split_report.h"
#include "testing/case_tables.h"
#include "testing/expected_start_up.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

namespace {

using namespace analysis_e2e;
using split_report::GroupCase;
using split_report::Passing;
using split_report::ReportOfG;

// 2^31 - 1: the largest offset a segment can have.
constexpr long long kMaxOffset = 2147483647;

// The groups whose report the report code gives in memory, stored and
// reported by db.
class SplitGroups : public CasesOnBothPaths<GroupCase> {};

TEST_P(SplitGroups, AsStored) {
  RecorderDisk disk;
  int reid = 0;
  for (const split_report::StoredPart& p : Param().parts) {
    disk.Exec(SplitPart("p" + std::to_string(++reid), p.groupId, static_cast<int>(p.part),
                        static_cast<int>(p.totalParts), p.startTick, p.stopTick)
                  .Insert());
  }
  const unsigned limit = Param().sizeLimit;
  EXPECT_RUN(RunDb(disk, Path(), {"-a", limit == 0 ? "s" : "sz" + std::to_string(limit)}),
             Param().report + "\n", "", 0);
}

INSTANTIATE_TEST_SUITE_P(BothPaths, SplitGroups, OnBothPaths(split_report::kGroupCases),
                         CaseOnPathName<GroupCase>);

class SplitEvents : public BothPaths {
 protected:
  // Group G of one part, r1.
  void SetUp() override { disk_.Exec(SplitPart("r1", "G", 1, 1, 0, 100).Insert()); }
  RunResult Run(const std::string& argument) { return RunDb(disk_, GetParam(), {"-a", argument}); }
  RecorderDisk disk_;
};

TEST_P(SplitEvents, EventsThatAreNotSplitAreNotReported) {
  RecorderDisk disk;
  disk.Exec(EventRow("plain-1").Insert() + EventRow("plain-2").Insert());
  EXPECT_RUN(RunDb(disk, GetParam(), {"-a", "s"}), "\n", "", 0);
}

TEST_P(SplitEvents, SampleGroupWithOverlapFailureAndSizes) {
  RecorderDisk disk;
  disk.Exec(SplitPart("r1", "G", 1, 3, 100, 200).Insert() +
            SplitPart("r2", "G", 2, 3, 196, 300).Insert() +
            SplitPart("r3", "G", 3, 3, 294, 304).Insert());
  for (const char* reid : {"r1", "r2", "r3"}) Stage(disk, reid, {Segment(0, 0)}, 4096);
  EXPECT_RUN(RunDb(disk, GetParam(), {"-a", "sz2"}),
             "Checking groupId 'G':\n"
             "  Checking 2-second overlap...FAIL\n"
             "    Part 3 doesn't have 2-second overlap:  ticks = 6\n"
             "  Verify last part >= 2 sec...PASS\n"
             "  Checking totalParts.........PASS\n"
             "  Verify part sizes <  2 GB...PASS\n"
             "\n",
             "", 0);
}

TEST_P(SplitEvents, WithoutALimitMetadataIsNeverRead) {
  // Reading this description would print a message.
  disk_.WriteFile("connectionmgr/r1.xml", "<not xml");
  disk_.WriteFile("connectionmgr/r1.mtd", "");
  for (const char* argument : {"s", "sz0", "sz"}) {
    EXPECT_RUN(Run(argument), ReportOfG(), "", 0) << argument;
  }
}

TEST_P(SplitEvents, SizeMessagesGoToStandardErrorWithoutLineEnd) {
  disk_.WriteFile("connectionmgr/r1.xml", "<not xml");
  disk_.WriteFile("connectionmgr/r1.mtd", "");
  // The .mtd alone is 0 bytes: a part of size 0 fails.
  EXPECT_RUN(Run("sz1"), ReportOfG("  Verify part sizes <  1 GB...FAIL\n"),
             "Failed to load XML file: /mnt/hd/connectionmgr/r1.xml", 0);
}

TEST_P(SplitEvents, PartOfExactlyTheLimitFails) {
  RecorderDisk disk;
  disk.Exec(SplitPart("big", "BIG", 1, 1, 0, 100).Insert() +
            SplitPart("fit", "FIT", 1, 1, 0, 100).Insert());
  // 5 x 2^30 bytes exactly, and one byte less.
  Stage(disk, "big", {Segment(0, kMaxOffset), Segment(0, kMaxOffset), Segment(0, 1073741824)}, 2);
  Stage(disk, "fit", {Segment(0, kMaxOffset), Segment(0, kMaxOffset), Segment(0, 1073741824)}, 1);
  EXPECT_RUN(RunDb(disk, GetParam(), {"-a", "sz5"}),
             Passing("BIG") + "  Verify part sizes <  5 GB...FAIL\n" + Passing("FIT") +
                 "  Verify part sizes <  5 GB...PASS\n\n",
             "", 0);
}

TEST_P(SplitEvents, PartThatIsNotStagedFailsSilently) {
  RecorderDisk disk;
  disk.Exec(SplitPart("r1", "G", 1, 2, 0, 100).Insert() +
            SplitPart("r2", "G", 2, 2, 96, 200).Insert());
  Stage(disk, "r1", {Segment(0, 0)});
  disk.WriteFile("connectionmgr/r2.xml", "<recording-event/>");  // no .mtd: not staged
  EXPECT_RUN(RunDb(disk, GetParam(), {"-a", "sz5"}),
             ReportOfG("  Verify part sizes <  5 GB...FAIL\n"), "", 0);
}

TEST_P(SplitEvents, StagedPartOfSizeZeroFails) {
  Stage(disk_, "r1", {}, 0);
  EXPECT_RUN(Run("sz5"), ReportOfG("  Verify part sizes <  5 GB...FAIL\n"), "", 0);
}

TEST_P(SplitEvents, NegativeSizeReadsAsHugeAndFails) {
  Stage(disk_, "r1", {Segment(5000, 1000)}, 0);  // adds -4000 bytes
  EXPECT_RUN(Run("sz4294967295"), ReportOfG("  Verify part sizes < 4294967295 GB...FAIL\n"), "", 0);
}

TEST_P(SplitEvents, LimitWiderThanItsFieldPushesTheText) {
  Stage(disk_, "r1", {Segment(0, 0)}, 10);
  EXPECT_RUN(Run("sz100"), ReportOfG("  Verify part sizes < 100 GB...PASS\n"), "", 0);
}

TEST_P(SplitEvents, LimitBeyond32BitsSaturates) {
  Stage(disk_, "r1", {Segment(0, 0)}, 10);
  for (const char* argument : {"sz99999999999", "sz18446744073709551616999"}) {
    EXPECT_RUN(Run(argument), ReportOfG("  Verify part sizes < 4294967295 GB...PASS\n"), "", 0)
        << argument;
  }
}

TEST_P(SplitEvents, ReportChangesNothing) {
  disk_.Exec(EventRow("plain").Insert() + FileRow().Insert());
  Stage(disk_, "r1", {Segment(0, 0)});
  const std::string before = disk_.Dump();
  const std::string xml = disk_.ReadFile("connectionmgr/r1.xml");
  const std::string report = ReportOfG("  Verify part sizes <  3 GB...PASS\n");
  EXPECT_RUN(RunDb(disk_, GetParam(), {"-a", "sz3", "-a", "s"}), report + report, "", 0);
  EXPECT_EQ(before, disk_.Dump());
  EXPECT_EQ(xml, disk_.ReadFile("connectionmgr/r1.xml"));
}

INSTANTIATE_TEST_SUITE_P(BothPaths, SplitEvents, BothAccessPaths(), PathName);

TEST(SplitEventsDirect, StoreThatCannotBeOpenedReportsAndPrintsTheEmptyReport) {
  RecorderDisk disk(RecorderDisk::Store::kNone);
  EXPECT_RUN(RunDb(disk, {"-a", "s"}), "\n",
             std::string("error opening sqlite3\n") + kNoFileSizesLine +
                 "unable to prepare: select * from events",
             14);
}

TEST(SplitEventsDirect, StoreWithoutEventsTable) {
  RecorderDisk disk(RecorderDisk::Store::kEmptyDatabase);
  EXPECT_RUN(RunDb(disk, {"-a", "s"}), "\n",
             std::string(kNoFileSizesLine) + "unable to prepare: select * from events", 0);
}

// The events of a store whose second row fails while it is read: abs() of
// the smallest 64-bit integer is an error at that step.
const char kFailingSecondRow[] =
    "drop table events;"
    "create table raw (reid text, x integer);"
    "insert into raw values ('r1', 1), ('r2', -9223372036854775808);"
    "create view events as select reid, 'G' as groupId, abs(x) as part, 1 as totalparts,"
    " 0 as starttick, 100 as stoptick from raw;";

TEST(SplitEventsDirect, StepErrorKeepsTheEventsReadSoFar) {
  RecorderDisk disk;
  disk.Exec(kFailingSecondRow);
  EXPECT_RUN(RunDb(disk, {"-a", "s"}), ReportOfG(), "could not free statement, leaking memory\n",
             0);
}

TEST(SplitEventsDaemon, StepErrorInTheDaemonGivesAnEmptyReport) {
  RecorderDisk disk;
  disk.Exec(kFailingSecondRow);
  EXPECT_RUN(RunDb(disk, AccessPath::kDaemon, {"-a", "s"}), "\n", "", 0);
}

// Runs db -a s through the daemon with `streamMgrArgs` on a store of group G.
RunResult RunThroughTheDaemon(const RecorderDisk& disk, const std::string& streamMgrArgs) {
  disk.Exec(SplitPart("r1", "G", 1, 1, 0, 100).Insert());
  SandboxOptions options;
  options.streamMgrArgs = streamMgrArgs;
  return RunDb(disk, AccessPath::kDaemon, {"-a", "s"}, options);
}

TEST(SplitEventsDaemon, FailedRequestGivesAnEmptyReport) {
  RecorderDisk disk;
  EXPECT_RUN(RunThroughTheDaemon(disk, "--fail-requests"), "\n", "", 0);
}

TEST(SplitEventsDaemon, QueryGoesToTheDaemon) {
  RecorderDisk disk;
  EXPECT_RUN(RunThroughTheDaemon(disk, "--log /mnt/hd/requests.log"), ReportOfG(), "", 0);
  EXPECT_EQ("events\tselect * from events\n", disk.ReadFile("requests.log"));
}

}  // namespace
