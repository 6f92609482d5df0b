// db -a s and -a sz<nn> end to end, on the database file and through the daemon.
#include <gtest/gtest.h>

#include <string>

#include "analysis/analysis_e2e_fixture.h"
#include "testing/expected_start_up.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

namespace {

using analysis_e2e::BothPaths;
using analysis_e2e::Segment;
using analysis_e2e::SplitPart;
using analysis_e2e::Stage;

// 2^31 - 1: the largest offset a segment can have.
constexpr long long kMaxOffset = 2147483647;

std::string Passing(const std::string& groupId) {
  return "Checking groupId '" + groupId +
         "':\n"
         "  Checking 2-second overlap...PASS\n"
         "  Verify last part >= 2 sec...PASS\n"
         "  Checking totalParts.........PASS\n";
}

class SplitEvents : public BothPaths {};

TEST_P(SplitEvents, EmptyStorePrintsOneEmptyLine) {
  RecorderDisk disk;
  const RunResult r = RunDb(disk, GetParam(), {"-a", "s"});
  EXPECT_RUN(r, "\n", "", 0);
}

TEST_P(SplitEvents, EventsThatAreNotSplitAreNotReported) {
  RecorderDisk disk;
  disk.Exec(EventRow("plain-1").Insert() + EventRow("plain-2").Insert());
  const RunResult r = RunDb(disk, GetParam(), {"-a", "s"});
  EXPECT_EQ("\n", r.out);
  EXPECT_EQ("", r.err);
}

TEST_P(SplitEvents, SampleGroupWithOverlapFailureAndSizes) {
  RecorderDisk disk;
  disk.Exec(SplitPart("r1", "G", 1, 3, 100, 200).Insert() +
            SplitPart("r2", "G", 2, 3, 196, 300).Insert() +
            SplitPart("r3", "G", 3, 3, 294, 304).Insert());
  for (const char* reid : {"r1", "r2", "r3"}) Stage(disk, reid, {Segment(0, 0)}, 4096);
  const RunResult r = RunDb(disk, GetParam(), {"-a", "sz2"});
  EXPECT_RUN(r,
             "Checking groupId 'G':\n"
             "  Checking 2-second overlap...FAIL\n"
             "    Part 3 doesn't have 2-second overlap:  ticks = 6\n"
             "  Verify last part >= 2 sec...PASS\n"
             "  Checking totalParts.........PASS\n"
             "  Verify part sizes <  2 GB...PASS\n"
             "\n",
             "", 0);
}

TEST_P(SplitEvents, GroupsAreReportedInGroupIdOrder) {
  RecorderDisk disk;
  disk.Exec(SplitPart("b1", "B", 1, 1, 0, 10).Insert() + EventRow("plain").Insert() +
            SplitPart("a1", "A", 1, 1, 50, 60).Insert());
  const RunResult r = RunDb(disk, GetParam(), {"-a", "s"});
  EXPECT_EQ(Passing("A") + Passing("B") + "\n", r.out);
}

TEST_P(SplitEvents, PartsAreComparedInQueryOrder) {
  RecorderDisk disk;
  disk.Exec(SplitPart("r2", "G", 2, 2, 196, 300).Insert() +
            SplitPart("r1", "G", 1, 2, 100, 200).Insert());
  const RunResult r = RunDb(disk, GetParam(), {"-a", "s"});
  EXPECT_EQ(
      "Checking groupId 'G':\n"
      "  Checking 2-second overlap...FAIL\n"
      "    Part 1 doesn't have 2-second overlap:  ticks = 200\n"
      "  Verify last part >= 2 sec...PASS\n"
      "  Checking totalParts.........PASS\n"
      "\n",
      r.out);
}

TEST_P(SplitEvents, DuplicatedPartPassesTotalParts) {
  RecorderDisk disk;
  disk.Exec(SplitPart("r1", "G", 1, 3, 0, 100).Insert() +
            SplitPart("r2", "G", 2, 3, 96, 200).Insert() +
            SplitPart("r2b", "G", 2, 3, 196, 300).Insert() +
            SplitPart("r3", "G", 3, 3, 296, 400).Insert());
  const RunResult r = RunDb(disk, GetParam(), {"-a", "s"});
  EXPECT_EQ(Passing("G") + "\n", r.out);
}

TEST_P(SplitEvents, MissingPartFailsTotalParts) {
  RecorderDisk disk;
  disk.Exec(SplitPart("r1", "G", 1, 2, 0, 100).Insert() +
            SplitPart("r3", "G", 3, 2, 96, 200).Insert());
  const RunResult r = RunDb(disk, GetParam(), {"-a", "s"});
  EXPECT_EQ(
      "Checking groupId 'G':\n"
      "  Checking 2-second overlap...PASS\n"
      "  Verify last part >= 2 sec...PASS\n"
      "  Checking totalParts.........FAIL:  expectedTotalParts=2  actualUniquePartNums=2  lastPartNum=3\n"
      "\n",
      r.out);
}

TEST_P(SplitEvents, ShortAndWrappedLastParts) {
  RecorderDisk disk;
  // S: the last part lasts 3 ticks. W: the last part stops below its start.
  disk.Exec(
      SplitPart("s1", "S", 1, 2, 0, 100).Insert() + SplitPart("s2", "S", 2, 2, 96, 99).Insert() +
      SplitPart("w1", "W", 1, 2, 0, 100).Insert() + SplitPart("w2", "W", 2, 2, 96, 50).Insert());
  const RunResult r = RunDb(disk, GetParam(), {"-a", "s"});
  EXPECT_EQ(
      "Checking groupId 'S':\n"
      "  Checking 2-second overlap...PASS\n"
      "  Verify last part >= 2 sec...FAIL\n"
      "  Checking totalParts.........PASS\n" +
          Passing("W") + "\n",
      r.out);
}

TEST_P(SplitEvents, TicksAreUnsigned32Bit) {
  RecorderDisk disk;
  // A stored -1 is 4294967295; the overlap wraps past zero.
  disk.Exec(SplitPart("r1", "G", 1, 2, 4294967000LL, 2).Insert() +
            SplitPart("r2", "G", 2, 2, -2, 40).Insert());
  const RunResult r = RunDb(disk, GetParam(), {"-a", "s"});
  EXPECT_EQ(Passing("G") + "\n", r.out);
}

TEST_P(SplitEvents, SinglePartGroupPassesTheOverlap) {
  RecorderDisk disk;
  disk.Exec(SplitPart("r1", "G", 1, 1, 7, 100).Insert());
  const RunResult r = RunDb(disk, GetParam(), {"-a", "s"});
  EXPECT_EQ(Passing("G") + "\n", r.out);
}

TEST_P(SplitEvents, WithoutALimitMetadataIsNeverRead) {
  RecorderDisk disk;
  disk.Exec(SplitPart("r1", "G", 1, 1, 0, 100).Insert());
  // Reading this description would print a message.
  disk.WriteFile("connectionmgr/r1.xml", "<not xml");
  disk.WriteFile("connectionmgr/r1.mtd", "");
  for (const char* argument : {"s", "sz0", "sz"}) {
    const RunResult r = RunDb(disk, GetParam(), {"-a", argument});
    EXPECT_EQ(Passing("G") + "\n", r.out) << argument;
    EXPECT_EQ("", r.err) << argument;
  }
}

TEST_P(SplitEvents, SizeMessagesGoToStandardErrorWithoutLineEnd) {
  RecorderDisk disk;
  disk.Exec(SplitPart("r1", "G", 1, 1, 0, 100).Insert());
  disk.WriteFile("connectionmgr/r1.xml", "<not xml");
  disk.WriteFile("connectionmgr/r1.mtd", "");
  const RunResult r = RunDb(disk, GetParam(), {"-a", "sz1"});
  // The .mtd alone is 0 bytes: a part of size 0 fails.
  EXPECT_EQ(Passing("G") + "  Verify part sizes <  1 GB...FAIL\n\n", r.out);
  EXPECT_EQ("Failed to load XML file: /mnt/hd/connectionmgr/r1.xml", r.err);
}

TEST_P(SplitEvents, PartOfExactlyTheLimitFails) {
  RecorderDisk disk;
  disk.Exec(SplitPart("big", "BIG", 1, 1, 0, 100).Insert() +
            SplitPart("fit", "FIT", 1, 1, 0, 100).Insert());
  // 5 x 2^30 bytes exactly, and one byte less.
  Stage(disk, "big", {Segment(0, kMaxOffset), Segment(0, kMaxOffset), Segment(0, 1073741824)}, 2);
  Stage(disk, "fit", {Segment(0, kMaxOffset), Segment(0, kMaxOffset), Segment(0, 1073741824)}, 1);
  const RunResult r = RunDb(disk, GetParam(), {"-a", "sz5"});
  EXPECT_EQ(Passing("BIG") + "  Verify part sizes <  5 GB...FAIL\n" + Passing("FIT") +
                "  Verify part sizes <  5 GB...PASS\n\n",
            r.out);
  EXPECT_EQ("", r.err);
}

TEST_P(SplitEvents, StagedPartOfSizeZeroFails) {
  RecorderDisk disk;
  disk.Exec(SplitPart("r1", "G", 1, 1, 0, 100).Insert());
  Stage(disk, "r1", {}, 0);
  const RunResult r = RunDb(disk, GetParam(), {"-a", "sz5"});
  EXPECT_EQ(Passing("G") + "  Verify part sizes <  5 GB...FAIL\n\n", r.out);
  EXPECT_EQ("", r.err);
}

TEST_P(SplitEvents, PartThatIsNotStagedFailsSilently) {
  RecorderDisk disk;
  disk.Exec(SplitPart("r1", "G", 1, 2, 0, 100).Insert() +
            SplitPart("r2", "G", 2, 2, 96, 200).Insert());
  Stage(disk, "r1", {Segment(0, 0)});
  disk.WriteFile("connectionmgr/r2.xml", "<recording-event/>");  // no .mtd: not staged
  const RunResult r = RunDb(disk, GetParam(), {"-a", "sz5"});
  EXPECT_EQ(Passing("G") + "  Verify part sizes <  5 GB...FAIL\n\n", r.out);
  EXPECT_EQ("", r.err);
}

TEST_P(SplitEvents, NegativeSizeReadsAsHugeAndFails) {
  RecorderDisk disk;
  disk.Exec(SplitPart("r1", "G", 1, 1, 0, 100).Insert());
  Stage(disk, "r1", {Segment(5000, 1000)}, 0);  // adds -4000 bytes
  const RunResult r = RunDb(disk, GetParam(), {"-a", "sz4294967295"});
  EXPECT_EQ(Passing("G") + "  Verify part sizes < 4294967295 GB...FAIL\n\n", r.out);
}

TEST_P(SplitEvents, LimitWiderThanItsFieldPushesTheText) {
  RecorderDisk disk;
  disk.Exec(SplitPart("r1", "G", 1, 1, 0, 100).Insert());
  Stage(disk, "r1", {Segment(0, 0)}, 10);
  const RunResult r = RunDb(disk, GetParam(), {"-a", "sz100"});
  EXPECT_EQ(Passing("G") + "  Verify part sizes < 100 GB...PASS\n\n", r.out);
}

TEST_P(SplitEvents, LimitBeyond32BitsSaturates) {
  RecorderDisk disk;
  disk.Exec(SplitPart("r1", "G", 1, 1, 0, 100).Insert());
  Stage(disk, "r1", {Segment(0, 0)}, 10);
  for (const char* argument : {"sz99999999999", "sz18446744073709551616999"}) {
    const RunResult r = RunDb(disk, GetParam(), {"-a", argument});
    EXPECT_EQ(Passing("G") + "  Verify part sizes < 4294967295 GB...PASS\n\n", r.out) << argument;
  }
}

TEST_P(SplitEvents, ReportChangesNothing) {
  RecorderDisk disk;
  disk.Exec(SplitPart("r1", "G", 1, 2, 0, 100).Insert() +
            SplitPart("r2", "G", 2, 2, 90, 200).Insert() + EventRow("plain").Insert() +
            FileRow().Insert());
  Stage(disk, "r1", {Segment(0, 0)});
  const std::string before = disk.Dump();
  const std::string xml = disk.ReadFile("connectionmgr/r1.xml");
  const RunResult r = RunDb(disk, GetParam(), {"-a", "sz3", "-a", "s"});
  EXPECT_EQ(0, r.status);
  EXPECT_EQ(before, disk.Dump());
  EXPECT_EQ(xml, disk.ReadFile("connectionmgr/r1.xml"));
}

TEST_P(SplitEvents, GroupIdsWithQuotesAndOtherBytes) {
  RecorderDisk disk;
  const std::string odd = "it's \xc3\xa9 \"q\"";
  disk.Exec(SplitPart("r1", odd, 1, 1, 0, 100).Insert());
  const RunResult r = RunDb(disk, GetParam(), {"-a", "s"});
  EXPECT_EQ(Passing(odd) + "\n", r.out);
}

INSTANTIATE_TEST_SUITE_P(BothPaths, SplitEvents, BothAccessPaths(), PathName);

TEST(SplitEventsDirect, StoreThatCannotBeOpenedReportsAndPrintsTheEmptyReport) {
  RecorderDisk disk(RecorderDisk::Store::kNone);
  const RunResult r = RunDb(disk, {"-a", "s"});
  EXPECT_EQ("\n", r.out);
  EXPECT_EQ(std::string("error opening sqlite3\n") + kNoFileSizesLine +
                "unable to prepare: select * from events",
            r.err);
}

TEST(SplitEventsDirect, StoreWithoutEventsTable) {
  RecorderDisk disk(RecorderDisk::Store::kEmptyDatabase);
  const RunResult r = RunDb(disk, {"-a", "s"});
  EXPECT_RUN(r, "\n", std::string(kNoFileSizesLine) + "unable to prepare: select * from events", 0);
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
  const RunResult r = RunDb(disk, {"-a", "s"});
  EXPECT_RUN(r, Passing("G") + "\n", "could not free statement, leaking memory\n", 0);
}

TEST(SplitEventsDaemon, StepErrorInTheDaemonGivesAnEmptyReport) {
  RecorderDisk disk;
  disk.Exec(kFailingSecondRow);
  const RunResult r = RunDb(disk, AccessPath::kDaemon, {"-a", "s"});
  EXPECT_EQ("\n", r.out);
  EXPECT_EQ("", r.err);
}

TEST(SplitEventsDaemon, FailedRequestGivesAnEmptyReport) {
  RecorderDisk disk;
  disk.Exec(SplitPart("r1", "G", 1, 1, 0, 100).Insert());
  SandboxOptions options;
  options.streamMgrArgs = "--fail-requests";
  const RunResult r = RunDb(disk, AccessPath::kDaemon, {"-a", "s"}, options);
  EXPECT_RUN(r, "\n", "", 0);
}

TEST(SplitEventsDaemon, QueryGoesToTheDaemon) {
  RecorderDisk disk;
  disk.Exec(SplitPart("r1", "G", 1, 1, 0, 100).Insert());
  SandboxOptions options;
  options.streamMgrArgs = "--log /mnt/hd/requests.log";
  const RunResult r = RunDb(disk, AccessPath::kDaemon, {"-a", "s"}, options);
  EXPECT_EQ(Passing("G") + "\n", r.out);
  EXPECT_EQ("events\tselect * from events\n", disk.ReadFile("requests.log"));
}

}  // namespace
