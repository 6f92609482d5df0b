// The event listings -e/-E, -r/-R, -p/-P and -u end to end on both access paths.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "events/expected_event_table.h"
#include "testing/expected_usage.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

namespace {

class EventSelections : public ::testing::TestWithParam<AccessPath> {
 protected:
  RunResult Run(const std::vector<std::string>& args, SandboxOptions options = {}) {
    return RunDb(disk_, GetParam(), args, options);
  }
  bool Direct() const { return GetParam() == AccessPath::kDirect; }
  RecorderDisk disk_;
};

INSTANTIATE_TEST_SUITE_P(Paths, EventSelections, BothAccessPaths(), PathName);

TEST_P(EventSelections, EmptyTablePrintsOnlyTheHeadings) {
  const RunResult r = Run({"-e", "-E", "-p", "-P", "-u"});
  EXPECT_RUN(r,
             std::string(kGibHeading) + kBytesHeading + kGibHeading + kBytesHeading + kGibHeading,
             "", 0);
}

TEST_P(EventSelections, EventsListsEveryRowInStoreOrder) {
  disk_.Exec(EventRow{"b"}.Insert() + EventRow{"a"}.Insert() + EventRow{"c"}.Insert());
  const RunResult r = Run({"--events"});
  EXPECT_EQ(kGibHeading + DefaultRow("b") + DefaultRow("a") + DefaultRow("c"), r.out);
  EXPECT_EQ("", r.err);
  const RunResult bytes = Run({"-E"});
  EXPECT_EQ(kBytesHeading + DefaultRow("b", true) + DefaultRow("a", true) + DefaultRow("c", true),
            bytes.out);
}

TEST_P(EventSelections, HelpThenEventsPrintsTheUsageThenTheListing) {
  disk_.Exec(EventRow{"a"}.Insert());
  const RunResult r = Run({"-h", "-e"});
  EXPECT_RUN(r, ExpectedUsage("db", !Direct()) + kGibHeading + DefaultRow("a"), "", 0);
}

TEST_P(EventSelections, EventsTwiceListsTwice) {
  disk_.Exec(EventRow{"a"}.Insert() + EventRow{"b"}.Insert());
  const RunResult r = Run({"-e", "-e"});
  const std::string listing = kGibHeading + DefaultRow("a") + DefaultRow("b");
  EXPECT_RUN(r, listing + listing, "", 0);
}

TEST_P(EventSelections, NullCriticalFieldIsWarnedOfAfterTheRows) {
  disk_.Exec(EventRow{"a"}.Insert() + EventRow{"n"}.Insert() +
             "update events set totalparts = NULL where reid = 'n';");
  const std::string store = disk_.Dump();
  const RunResult r = Run({"-e"});
  EXPECT_EQ(kGibHeading + DefaultRow("a") + DefaultRow("n") + kNullWarning +
                "reid|splitstate|totalfiles|groupId|part|totalparts\n"
                "n|1|1||0|\n"
                "\n",
            r.out);
  EXPECT_EQ("", r.err);
  EXPECT_EQ(store, disk_.Dump());
}

TEST_P(EventSelections, EveryCriticalColumnIsChecked) {
  const std::vector<std::string> columns = {"streamstate", "totalfiles", "groupId", "part",
                                            "totalparts"};
  for (const std::string& column : columns) {
    disk_.Exec(EventRow{column}.Insert() + "update events set " + column +
               " = NULL where reid = " + Quote(column) + ";");
  }
  disk_.Exec(EventRow{"fine"}.Insert() + "update events set state = NULL where reid = 'fine';");
  const RunResult r = Run({"-E"});
  const size_t warning = r.out.find(kNullWarning);
  ASSERT_NE(std::string::npos, warning) << r.out;
  EXPECT_EQ(std::string(kNullWarning) +
                "reid|splitstate|totalfiles|groupId|part|totalparts\n"
                "streamstate|1|1||0|0\n"
                "totalfiles|1|||0|0\n"
                "groupId|1|1||0|0\n"
                "part|1|1|||0\n"
                "totalparts|1|1||0|\n"
                "\n",
            r.out.substr(warning));
}

TEST_P(EventSelections, NoWarningWithoutNullFields) {
  disk_.Exec(EventRow{"a"}.Insert() + "update events set answers = NULL, description = NULL;");
  const RunResult r = Run({"-e"});
  EXPECT_EQ(kGibHeading + DefaultRow("a"), r.out);
}

TEST(EventSelectionsDirect, WarningIsPrintedEvenWithoutTheSqlCommand) {
  RecorderDisk disk;
  disk.Exec(EventRow{"n"}.Insert() + "update events set part = NULL;");
  // pidof and sh stay reachable; the recorder's sql command does not.
  const RunResult r = RunInSandbox(disk, {"env", "PATH=/usr/bin:/bin", BinDir() + "/db", "-e"});
  EXPECT_RUN(r, kGibHeading + DefaultRow("n") + kNullWarning + "\n", "sh: 1: sql: not found\n", 0);
}

TEST_P(EventSelections, UnreadableNullCountIsReportedOnTheDirectPathOnly) {
  // A table without streamstate: rows still load, the count cannot be prepared.
  RecorderDisk disk(RecorderDisk::Store::kEmptyDatabase);
  disk.Exec(
      "create table streamfiles (number integer primary key, size integer);"
      "create table events (reid text primary key, state integer, totalfiles integer);"
      "insert into events values ('old', 2, NULL);");
  const RunResult r = RunDb(disk, GetParam(), {"-e"});
  EXPECT_EQ(
      std::string(kGibHeading) +
          "old                           Recording   NotChecked      0  01/01/70 00:00:00  00:00:00           0           0           0  r r   N      0                                  0    0    N  0.000                    NA  \n",
      r.out);
  if (Direct()) {
    EXPECT_EQ(
        "unable to prepare: select count(*) from events where streamstate is NULL or totalfiles is NULL or groupid is NULL or part is NULL or totalparts is NULL: error getting file stats\n",
        r.err);
  } else {
    EXPECT_EQ("", r.err);
  }
}

TEST_P(EventSelections, UnknownIdentifierIsNotFound) {
  disk_.Exec(EventRow{"a"}.Insert());
  const RunResult r = Run({"-r", "nope", "--reid=also-not", "-R", "A"});
  EXPECT_EQ(
      "\n"
      "NOT FOUND: nope\n"
      "\n"
      "\n"
      "NOT FOUND: also-not\n"
      "\n"
      "\n"
      "NOT FOUND: A\n"
      "\n",
      r.out);
  EXPECT_EQ("", r.err);
}

// Three parts of one group, an event whose reid is the group's id, and an
// event of another group.
void StoreGroup(const RecorderDisk& disk) {
  std::string sql;
  for (int part = 1; part <= 3; ++part) {
    EventRow row{"p" + std::to_string(part)};
    row.splitState = 3;
    row.groupId = "G1";
    row.part = part;
    row.totalParts = 3;
    sql += row.Insert();
  }
  EventRow other{"other"};
  other.groupId = "G2";
  disk.Exec(sql + EventRow{"G1"}.Insert() + other.Insert());
}

const char kP1[] =
    "p1                            RecordCmpl  AlreadySpl    100  01/02/24 03:04:05  03:05:45           0        1000        1200  r r   N      1  G1                              1    3    N  0.000                    NA  \n";
const char kP2[] =
    "p2                            RecordCmpl  AlreadySpl    100  01/02/24 03:04:05  03:05:45           0        1000        1200  r r   N      1  G1                              2    3    N  0.000                    NA  \n";
const char kP3[] =
    "p3                            RecordCmpl  AlreadySpl    100  01/02/24 03:04:05  03:05:45           0        1000        1200  r r   N      1  G1                              3    3    N  0.000                    NA  \n";

TEST_P(EventSelections, GroupIdListsTheWholeGroup) {
  StoreGroup(disk_);
  const RunResult r = Run({"-r", "G1"});
  // Directly, every row is followed by an empty line; over IPC it is not.
  const std::string gap = Direct() ? "\n" : "";
  EXPECT_EQ(kGibHeading + (kP1 + gap) + kP2 + gap + kP3 + gap + DefaultRow("G1") + gap, r.out);
  EXPECT_EQ("", r.err);
}

TEST_P(EventSelections, ReidListsOneEventInBytes) {
  StoreGroup(disk_);
  const RunResult r = Run({"-R", "p2"});
  EXPECT_EQ(
      std::string(kBytesHeading) +
          "p2                            RecordCmpl  AlreadySpl    100  01/02/24 03:04:05  03:05:45           0        1000        1200  r r   N      1  G1                              2    3    N            0                    NA  \n" +
          (Direct() ? "\n" : ""),
      r.out);
}

TEST_P(EventSelections, QuoteInTheIdentifierBreaksTheStatement) {
  disk_.Exec(EventRow{"it's"}.Insert());
  const std::string store = disk_.Dump();
  const RunResult r = Run({"-r", "it's"});
  EXPECT_EQ("\nNOT FOUND: it's\n\n", r.out);
  if (Direct()) {
    EXPECT_EQ("unable to prepare: select * from events where reid='it's' or groupId='it's'", r.err);
  } else {
    // The daemon cannot run the text either; its answer is simply empty.
    EXPECT_EQ("", r.err);
  }
  EXPECT_EQ(store, disk_.Dump());
}

TEST_P(EventSelections, IdentifierIsNotAnInjectionPoint) {
  StoreGroup(disk_);
  const std::string store = disk_.Dump();
  const RunResult r = Run({"-r", "x'; delete from events; select '"});
  EXPECT_EQ("\nNOT FOUND: x'; delete from events; select '\n\n", r.out);
  EXPECT_EQ(store, disk_.Dump());
}

void StoreSplitCandidates(const RecorderDisk& disk) {
  EventRow split{"split3"};  // already split: listed although part and total are 0
  split.splitState = 3;
  EventRow part{"part2"};
  part.part = 2;
  EventRow total{"tot2"};
  total.totalParts = 2;
  EventRow unchecked{"unchecked"};
  unchecked.splitState = 0;
  EventRow pending{"pending"};
  pending.splitState = 2;
  disk.Exec(split.Insert() + EventRow{"plain"}.Insert() + part.Insert() + unchecked.Insert() +
            total.Insert() + pending.Insert());
}

TEST_P(EventSelections, SplitListsSplitEventsAndParts) {
  StoreSplitCandidates(disk_);
  const RunResult r = Run({"--split"});
  EXPECT_EQ(
      std::string(kGibHeading) +
          "split3                        RecordCmpl  AlreadySpl    100  01/02/24 03:04:05  03:05:45           0        1000        1200  r r   N      1                                  0    0    N  0.000                    NA  \n"
          "part2                         RecordCmpl  NotNeeded     100  01/02/24 03:04:05  03:05:45           0        1000        1200  r r   N      1                                  2    0    N  0.000                    NA  \n"
          "tot2                          RecordCmpl  NotNeeded     100  01/02/24 03:04:05  03:05:45           0        1000        1200  r r   N      1                                  0    2    N  0.000                    NA  \n",
      r.out);
  EXPECT_EQ("", r.err);
}

TEST_P(EventSelections, UpperCaseSplitShowsBytes) {
  StoreSplitCandidates(disk_);
  const RunResult r = Run({"-P"});
  EXPECT_EQ(
      std::string(kBytesHeading) +
          "split3                        RecordCmpl  AlreadySpl    100  01/02/24 03:04:05  03:05:45           0        1000        1200  r r   N      1                                  0    0    N            0                    NA  \n"
          "part2                         RecordCmpl  NotNeeded     100  01/02/24 03:04:05  03:05:45           0        1000        1200  r r   N      1                                  2    0    N            0                    NA  \n"
          "tot2                          RecordCmpl  NotNeeded     100  01/02/24 03:04:05  03:05:45           0        1000        1200  r r   N      1                                  0    2    N            0                    NA  \n",
      r.out);
}

TEST_P(EventSelections, UntransferredListsEveryOtherStateInGibibytes) {
  std::string sql;
  for (int state : {0, 1, 2, 3, 9}) {
    EventRow row{"s" + std::to_string(state)};
    row.state = state;
    sql += row.Insert();
  }
  disk_.Exec(sql);
  // -u keeps gibibytes even right after a listing in bytes.
  const RunResult r = Run({"-E", "--un"});
  const std::string untransferred =
      std::string(kGibHeading) +
      "s0                            RecordCmpl  NotNeeded     100  01/02/24 03:04:05  03:05:45           0        1000        1200  r r   N      1                                  0    0    N  0.000                    NA  \n"
      "s2                            Recording   NotNeeded     100  01/02/24 03:04:05  03:05:45           0        1000        1200  r r   N      1                                  0    0    N  0.000                    NA  \n"
      "s3                            InPost      NotNeeded     100  01/02/24 03:04:05  03:05:45           0        1000        1200  r r   N      1                                  0    0    N  0.000                    NA  \n"
      "s9                               Invalid  NotNeeded     100  01/02/24 03:04:05  03:05:45           0        1000        1200  r r   N      1                                  0    0    N  0.000                    NA  \n";
  ASSERT_GT(r.out.size(), untransferred.size());
  EXPECT_EQ(untransferred, r.out.substr(r.out.size() - untransferred.size()));
  EXPECT_EQ("", r.err);
}

// A store whose events are a view that fails while the row of "bad" is read.
void StoreFailingOnRow(const RecorderDisk& disk) {
  disk.Exec(EventRow{"a"}.Insert() + EventRow{"bad"}.Insert() + EventRow{"c"}.Insert() +
            "alter table events rename to stored;"
            "create view events as select *, case when reid = 'bad' "
            "then abs(-9223372036854775807 - 1) else 0 end as boom from stored;");
}

TEST_P(EventSelections, FailingStepStopsTheListing) {
  StoreFailingOnRow(disk_);
  const RunResult r = Run({"-p", "-e"});
  if (Direct()) {
    // The rows before the failure stand; finalising reports the step's error.
    EXPECT_EQ(std::string(kGibHeading) + kGibHeading + DefaultRow("a"), r.out);
    EXPECT_EQ("stmt Error: could not free statement, leaking memory\n", r.err);
  } else {
    // The daemon answers a failed query with an empty list.
    EXPECT_EQ(std::string(kGibHeading) + kGibHeading, r.out);
    EXPECT_EQ("", r.err);
  }
}

TEST_P(EventSelections, FailingStepBeforeAnyRowIsNotFound) {
  StoreFailingOnRow(disk_);
  const RunResult r = Run({"-r", "bad"});
  EXPECT_EQ("\nNOT FOUND: bad\n\n", r.out);
  EXPECT_EQ(Direct() ? "stmt Error: could not free statement, leaking memory\n" : "", r.err);
}

TEST_P(EventSelections, OptionsRunInTheOrderGiven) {
  StoreGroup(disk_);
  const RunResult r = Run({"-r", "p1", "-r", "missing", "-R", "p3"});
  const std::string gap = Direct() ? "\n" : "";
  EXPECT_EQ(
      kGibHeading + (kP1 + gap) + "\nNOT FOUND: missing\n\n" + kBytesHeading +
          "p3                            RecordCmpl  AlreadySpl    100  01/02/24 03:04:05  03:05:45           0        1000        1200  r r   N      1  G1                              3    3    N            0                    NA  \n" +
          gap,
      r.out);
}

TEST_P(EventSelections, ManyRowsAreAllListed) {
  disk_.Exec(
      "with recursive n(i) as (select 1 union all select i + 1 from n where i < 3000) "
      "insert into events (reid, state, splitstate, streamstate, totalfiles, groupId, part, "
      "totalparts) select 'r' || i, 0, 1, 0, 1, '', 0, 0 from n;");
  const RunResult r = Run({"-u"});
  size_t lines = 0;
  for (char c : r.out) lines += c == '\n';
  EXPECT_EQ(3u + 3000u, lines);
  EXPECT_EQ(0u, r.out.find(kGibHeading));
  EXPECT_NE(std::string::npos, r.out.find("\nr3000  "));
  EXPECT_EQ("", r.err);
}

}  // namespace
