// The event listings -e/-E, -r/-R, -p/-P and -u end to end on both access paths.
#include <string>
#include <vector>

#include "events/event_listing_fixture.h"
#include "testing/expected_usage.h"

namespace {

class EventSelections : public EventListing {};
INSTANTIATE_TEST_SUITE_P(Paths, EventSelections, BothAccessPaths(), PathName);

const char kNullColumns[] = "reid|splitstate|totalfiles|groupId|part|totalparts\n";

// What -r prints for an identifier that matches nothing.
std::string NotFound(const std::string& id) { return "\nNOT FOUND: " + id + "\n\n"; }

std::string NullIn(const std::string& column) { return Event(column, column + " = NULL"); }

// Already split, and listed although part and total are 0; or a part of a
// split; or neither.
const std::string kSplitCandidates =
    Event("split3", "splitstate = 3") + Event("plain") + Event("part2", "part = 2") +
    Event("unchecked", "splitstate = 0") + Event("tot2", "totalparts = 2") +
    Event("pending", "splitstate = 2");

const char kSplitRows[] =
    "split3                        RecordCmpl  AlreadySpl    100  01/02/24 03:04:05  03:05:45           0        1000        1200  r r   N      1                                  0    0    N  0.000                    NA  \n"
    "part2                         RecordCmpl  NotNeeded     100  01/02/24 03:04:05  03:05:45           0        1000        1200  r r   N      1                                  2    0    N  0.000                    NA  \n"
    "tot2                          RecordCmpl  NotNeeded     100  01/02/24 03:04:05  03:05:45           0        1000        1200  r r   N      1                                  0    2    N  0.000                    NA  \n";

const char kManyEvents[] =
    "with recursive n(i) as (select 1 union all select i + 1 from n where i < 3000) "
    "insert into events (reid, state, splitstate, streamstate, totalfiles, groupId, part, "
    "totalparts) select 'r' || i, 0, 1, 0, 1, '', 0, 0 from n;";

std::string ManyRows() {
  std::string rows = kGibHeading;
  for (int i = 1; i <= 3000; ++i) {
    const std::string reid = "r" + std::to_string(i);
    rows +=
        reid + std::string(28 - reid.size(), ' ') +
        "  RecordCmpl  NotNeeded       0  01/01/70 00:00:00  00:00:00           0           0           0  r r   N      1                                  0    0    N  0.000                    NA  \n";
  }
  return rows;
}

TEST(EventSelectionsDirect, WarningIsPrintedEvenWithoutTheSqlCommand) {
  RecorderDisk disk;
  disk.Exec(Event("n", "part = NULL"));
  // pidof and sh stay reachable; the recorder's sql command does not.
  EXPECT_RUN(RunInSandbox(disk, {"env", "PATH=/usr/bin:/bin", BinDir() + "/db", "-e"}),
             kGibHeading + DefaultRow("n") + kNullWarning + "\n", "sh: 1: sql: not found\n", 0);
}

TEST_P(EventSelections, UnreadableNullCountIsReportedOnTheDirectPathOnly) {
  // A table without streamstate: rows still load, the count cannot be prepared.
  RecorderDisk disk(RecorderDisk::Store::kEmptyDatabase);
  disk.Exec(
      "create table streamfiles (number integer primary key, size integer);"
      "create table events (reid text primary key, state integer, totalfiles integer);"
      "insert into events values ('old', 2, NULL);");
  EXPECT_RUN(
      RunDb(disk, GetParam(), {"-e"}),
      std::string(kGibHeading) +
          "old                           Recording   NotChecked      0  01/01/70 00:00:00  00:00:00           0           0           0  r r   N      0                                  0    0    N  0.000                    NA  \n",
      Direct()
          ? "unable to prepare: select count(*) from events where streamstate is NULL or totalfiles is NULL or groupid is NULL or part is NULL or totalparts is NULL: error getting file stats\n"
          : "",
      0);
}

// Three parts of one group, an event whose reid is the group's id, and an
// event of another group.
std::string Group() {
  std::string sql;
  for (const char* part : {"1", "2", "3"}) {
    sql += Event(std::string("p") + part,
                 std::string("splitstate = 3, groupId = 'G1', totalparts = 3, part = ") + part);
  }
  return sql + Event("G1") + Event("other", "groupId = 'G2'");
}

// The rows of the three parts, as -e prints them.
const char kP1[] =
    "p1                            RecordCmpl  AlreadySpl    100  01/02/24 03:04:05  03:05:45           0        1000        1200  r r   N      1  G1                              1    3    N  0.000                    NA  \n";
const char kP2[] =
    "p2                            RecordCmpl  AlreadySpl    100  01/02/24 03:04:05  03:05:45           0        1000        1200  r r   N      1  G1                              2    3    N  0.000                    NA  \n";
const char kP3[] =
    "p3                            RecordCmpl  AlreadySpl    100  01/02/24 03:04:05  03:05:45           0        1000        1200  r r   N      1  G1                              3    3    N  0.000                    NA  \n";

TEST_P(EventSelections, IdentifierIsNotAnInjectionPoint) {
  disk_.Exec(Group());
  const std::string store = disk_.Dump();
  const std::string id = "x'; delete from events; select '";
  EXPECT_RUN(Run({"-r", id}), NotFound(id), "", 0);
  EXPECT_EQ(store, disk_.Dump());
}

TEST_P(EventSelections, UntransferredListsEveryOtherStateInGibibytes) {
  std::string sql;
  for (int state : {0, 1, 2, 3, 9}) {
    sql += Event("s" + std::to_string(state), "state = " + std::to_string(state));
  }
  disk_.Exec(sql);
  // -u keeps gibibytes even right after a listing in bytes; that listing is
  // left to the other tests, and only what -u printed is compared whole.
  const RunResult r = Run({"-E", "--un"});
  const std::string untransferred =
      std::string(kGibHeading) +
      "s0                            RecordCmpl  NotNeeded     100  01/02/24 03:04:05  03:05:45           0        1000        1200  r r   N      1                                  0    0    N  0.000                    NA  \n"
      "s2                            Recording   NotNeeded     100  01/02/24 03:04:05  03:05:45           0        1000        1200  r r   N      1                                  0    0    N  0.000                    NA  \n"
      "s3                            InPost      NotNeeded     100  01/02/24 03:04:05  03:05:45           0        1000        1200  r r   N      1                                  0    0    N  0.000                    NA  \n"
      "s9                               Invalid  NotNeeded     100  01/02/24 03:04:05  03:05:45           0        1000        1200  r r   N      1                                  0    0    N  0.000                    NA  \n";
  ASSERT_GT(r.out.size(), untransferred.size());
  EXPECT_RUN(r, r.out.substr(0, r.out.size() - untransferred.size()) + untransferred, "", 0);
}

// A store whose events are a view that fails while the row of "bad" is read.
const std::string kFailingOnRow =
    Event("a") + Event("bad") + Event("c") +
    "alter table events rename to stored;"
    "create view events as select *, case when reid = 'bad' "
    "then abs(-9223372036854775807 - 1) else 0 end as boom from stored;";

const char kLeak[] = "stmt Error: could not free statement, leaking memory\n";

const ListingCase kListings[] = {
    {"EmptyTablePrintsOnlyTheHeadings", "", "-e -E -p -P -u",
     std::string(kGibHeading) + kBytesHeading + kGibHeading + kBytesHeading + kGibHeading},
    {"EventsListsEveryRowInStoreOrder", Event("b") + Event("a") + Event("c"), "--events",
     kGibHeading + DefaultRow("b") + DefaultRow("a") + DefaultRow("c")},
    {"BytesListEveryRowInStoreOrder", Event("b") + Event("a") + Event("c"), "-E",
     kBytesHeading + InBytes(DefaultRow("b") + DefaultRow("a") + DefaultRow("c"))},
    {"EventsTwiceListsTwice", Event("a") + Event("b"), "-e -e",
     kGibHeading + DefaultRow("a") + DefaultRow("b") + kGibHeading + DefaultRow("a") +
         DefaultRow("b")},
    {"NullCriticalFieldIsWarnedOfAfterTheRows", Event("a") + NullIn("totalparts"), "-e",
     kGibHeading + DefaultRow("a") + DefaultRow("totalparts") + kNullWarning + kNullColumns +
         "totalparts|1|1||0|\n"
         "\n"},
    {"EveryCriticalColumnIsChecked",
     NullIn("streamstate") + NullIn("totalfiles") + NullIn("groupId") + NullIn("part") +
         NullIn("totalparts") + Event("fine", "state = NULL"),
     "-E",
     kBytesHeading + DefaultRow("streamstate", true) +
         "totalfiles                    RecordCmpl  NotNeeded     100  01/02/24 03:04:05  03:05:45           0        1000        1200  r r   N      0                                  0    0    N            0                    NA  \n" +
         DefaultRow("groupId", true) + DefaultRow("part", true) + DefaultRow("totalparts", true) +
         DefaultRow("fine", true) + kNullWarning + kNullColumns +
         "streamstate|1|1||0|0\n"
         "totalfiles|1|||0|0\n"
         "groupId|1|1||0|0\n"
         "part|1|1|||0\n"
         "totalparts|1|1||0|\n"
         "\n"},
    {"NoWarningWithoutNullFields", Event("a", "answers = NULL, description = NULL"), "-e",
     kGibHeading + DefaultRow("a")},
    {"UnknownIdentifierIsNotFound", Event("a"), "-r nope --reid=also-not -R A",
     NotFound("nope") + NotFound("also-not") + NotFound("A")},
    {"SplitListsSplitEventsAndParts", kSplitCandidates, "--split",
     kGibHeading + std::string(kSplitRows)},
    {"UpperCaseSplitShowsBytes", kSplitCandidates, "-P", kBytesHeading + InBytes(kSplitRows)},
    {"ManyRowsAreAllListed", kManyEvents, "-u", ManyRows()},
    {"GroupIdListsTheWholeGroup", Group(), "-r G1",
     kGibHeading + std::string(kP1) + kGap + kP2 + kGap + kP3 + kGap + DefaultRow("G1") + kGap},
    {"ReidListsOneEventInBytes", Group(), "-R p2", kBytesHeading + InBytes(kP2) + kGap},
    {"OptionsRunInTheOrderGiven", Group(), "-r p1 -r missing -R p3",
     kGibHeading + std::string(kP1) + kGap + NotFound("missing") + kBytesHeading + InBytes(kP3) +
         kGap},
    // The daemon cannot run the text either; its answer is simply empty.
    {"QuoteInTheIdentifierBreaksTheStatement",
     Event("it's"),
     "-r it's",
     NotFound("it's"),
     {"unable to prepare: select * from events where reid='it's' or groupId='it's'", ""}},
    {"HelpThenEventsPrintsTheUsageThenTheListing",
     Event("a"),
     "-h -e",
     {ExpectedUsage("db", false) + kGibHeading + DefaultRow("a"),
      ExpectedUsage("db", true) + kGibHeading + DefaultRow("a")}},
    // Directly, the rows before the failure stand and finalising reports the
    // step's error; the daemon answers a failed query with an empty list.
    {"FailingStepStopsTheListing",
     kFailingOnRow,
     "-p -e",
     {std::string(kGibHeading) + kGibHeading + DefaultRow("a"),
      std::string(kGibHeading) + kGibHeading},
     {kLeak, ""}},
    {"FailingStepBeforeAnyRowIsNotFound", kFailingOnRow, "-r bad", NotFound("bad"), {kLeak, ""}},
};

class Listing : public ListingCases {};
TEST_P(Listing, IsPrintedWhole) { ExpectListing(); }
INSTANTIATE_TEST_SUITE_P(Cases, Listing, OnBothPaths(kListings), CaseOnPathName<ListingCase>);

}  // namespace
