// Event deletion (-d, --deleteall) run end to end in the sandbox, on the
// database file and through the StreamMgr simulator. After every run the
// whole store is compared with a store built to hold exactly the rows that
// should be left, and the daemon's log with the requests it should have got.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <ostream>
#include <string>
#include <tuple>
#include <vector>

#include "maintenance/expected_deletion.h"
#include "testing/expected_start_up.h"
#include "testing/faults_case_tables.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"
#include "testing/store_lock.h"

namespace {

using Reids = std::vector<std::string>;

EventRow Event(const std::string& reid, const std::string& groupId = "", int part = 0,
               int totalParts = 0) {
  EventRow row(reid);
  row.groupId = groupId;
  row.part = part;
  row.totalParts = totalParts;
  return row;
}

// Two unsplit events around a recording split in three parts, then `more`.
std::vector<EventRow> StandardEvents(const std::vector<EventRow>& more = {}) {
  std::vector<EventRow> events = {Event("42"), Event("G1-a", "G1", 1, 3), Event("G1-b", "G1", 2, 3),
                                  Event("G1-c", "G1", 3, 3), Event("7")};
  events.insert(events.end(), more.begin(), more.end());
  return events;
}
const Reids kStandard = {"42", "G1-a", "G1-b", "G1-c", "7"};
const Reids kGroup = {"G1-a", "G1-b", "G1-c"};

// The events and, untouched by any deletion, rows of the other tables.
void Fill(const RecorderDisk& disk, const std::vector<EventRow>& events, const Reids& gone = {}) {
  FileRow first;
  first.next = 2;
  FileRow second;
  second.number = 2;
  second.previous = 1;
  std::string sql = "begin;\n" + first.Insert() + second.Insert() +
                    "insert into status values ('version', '4.2.1'), ('diskState', 'mounted');\n";
  for (const EventRow& event : events) {
    if (std::find(gone.begin(), gone.end(), event.reid) == gone.end()) sql += event.Insert();
  }
  disk.Exec(sql + "commit;\n");
}

std::string DumpWithout(const std::vector<EventRow>& events, const Reids& gone) {
  RecorderDisk expected;
  Fill(expected, events, gone);
  return expected.Dump();
}

// The daemon refusing these events, in this order.
std::string Refused(const Reids& reids) {
  std::string lines;
  for (const std::string& reid : reids) {
    lines += FailedToDelete(reid, reid.rfind("G1-", 0) == 0 ? "G1" : "");
  }
  return lines;
}

// The requests of -d ID (or of --deleteall) that the daemon answered with
// `listed`, which it was then asked to delete.
std::string Deletes(const Reids& listed) {
  std::string log;
  for (const std::string& reid : listed) log += "delete\t" + reid + "\n";
  return log;
}
std::string Asked(const std::string& id, const Reids& listed) {
  return "events\tselect * from events where reid='" + id + "' or groupId='" + id + "'\n" +
         Deletes(listed);
}
std::string AskedAll(const Reids& listed) {
  return "events\tselect * from events\n" + Deletes(listed);
}
const char kCountRequests[] =
    "count\tselect count(*) from events\n"
    "count\tselect count(*) from streamfiles\n"
    "count\tselect count(*) from status\n";

// The -t report of the test stores, with the events count as printed.
std::string TableCounts(const std::string& events) {
  return std::string(kTablesHeading) + "events          " + events +
         "\n"
         "streamfiles        2\n"
         "status             2\n"
         "\n";
}

// A disk with the events of the test, and db run on it with the simulator
// logging every request it gets.
class DeletionDisk {
 protected:
  RunResult RunOn(AccessPath path, const std::vector<std::string>& args,
                  SandboxOptions options = SandboxOptions()) {
    options.streamMgrArgs = "--log /mnt/hd/requests.log " + options.streamMgrArgs;
    return RunDb(disk_, path, args, options);
  }
  // Over IPC the requests the daemon got; directly, that no daemon was asked.
  void ExpectAsked(AccessPath path, const std::string& log) const {
    if (path == AccessPath::kDaemon) {
      EXPECT_EQ(log, disk_.ReadFile("requests.log"));
    } else {
      EXPECT_FALSE(disk_.Exists("requests.log"));
    }
  }
  RecorderDisk disk_;
};

struct Deletion {
  const char* name;
  std::vector<std::string> args;
  PathText out;
  PathText err;
  Reids gone;            // the events deleted; none: the store is left as it was
  std::string asked;     // the daemon's log
  std::string sql = "";  // run on the store before db, to damage or guard it
  std::vector<EventRow> events = StandardEvents();
  std::string daemonArgs = "";
};
void PrintTo(const Deletion& deletion, std::ostream* out) { *out << deletion.name; }

const std::string kLongId(100000, 'L');
const std::string kNonAsciiId = "\xc3\xa9v\xc3\xa9nement-\xe2\x82\xac";  // "événement-€"
const std::string kInvalidUtf8Id = "bad\xff\xfe";

const Deletion kOnBothPaths[] = {
    {"OneEventById", {"-d", "42"}, Deleted(1, "42"), "", {"42"}, Asked("42", {"42"})},
    {"WholeGroupById", {"--delete", "G1"}, Deleted(3, "G1"), "", kGroup, Asked("G1", kGroup)},
    {"OnePartOfAGroupByItsReid",
     {"-d", "G1-b"},
     Deleted(1, "G1-b"),
     "",
     {"G1-b"},
     Asked("G1-b", {"G1-b"})},
    {"NoMatchKeepsEverything", {"-d", "99"}, "", NotFound("99"), {}, Asked("99", {})},
    {"AllEvents", {"--deleteall"}, DeletedAll(5), "", kStandard, AskedAll(kStandard)},
    {"HandlersGoOnWithTheNextOption",
     {"-d", "42", "-d", "42", "-d", "G1", "-t"},
     Deleted(1, "42") + Deleted(3, "G1") + TableCounts("   1"),
     NotFound("42"),
     {"42", "G1-a", "G1-b", "G1-c"},
     Asked("42", {"42"}) + Asked("42", {}) + Asked("G1", kGroup) + kCountRequests},
    {"IdMatchingAReidAndAGroupDeletesBoth",
     {"-d", "G1"},
     Deleted(4, "G1"),
     "",
     {"G1-a", "G1-b", "G1-c", "G1"},
     Asked("G1", {"G1-a", "G1-b", "G1-c", "G1"}),
     "",
     StandardEvents({Event("G1")})},
    // Directly the malformed SQL fails to prepare; the daemon cannot run it
    // either, so it lists nothing.
    {"IdWithASingleQuoteDeletesNothing",
     {"-d", "4'2"},
     "",
     {NotPrepared(CountById("4'2"), 1), NotFound("4'2").daemon},
     {},
     Asked("4'2", {})},
    // The id goes into the condition as typed, and an unsplit event has the
    // empty group id, so an empty id picks every unsplit event and no part.
    {"EmptyIdSelectsTheEventsOutsideAnyGroup",
     {"-d", ""},
     Deleted(2, ""),
     "",
     {"42", "7"},
     Asked("", {"42", "7"})},
    {"EmptyIdWithOnlySplitEventsFindsNothing",
     {"-d", ""},
     "",
     NotFound(""),
     {},
     Asked("", {}),
     "delete from events where groupId=''"},
    {"VeryLongId",
     {"-d", kLongId, "-d", kLongId + "X"},
     Deleted(1, kLongId),
     NotFound(kLongId + "X"),
     {kLongId},
     Asked(kLongId, {kLongId}) + Asked(kLongId + "X", {}),
     "",
     StandardEvents({Event(kLongId)})},
    {"NonAsciiId",
     {"-d", kNonAsciiId},
     Deleted(2, kNonAsciiId),
     "",
     {kNonAsciiId, "part-1"},
     Asked(kNonAsciiId, {kNonAsciiId, "part-1"}),
     "",
     StandardEvents({Event(kNonAsciiId), Event("part-1", kNonAsciiId, 1, 2)})},
    {"InvalidUtf8IdIsMatchedByteForByte",
     {"-d", kInvalidUtf8Id},
     "",
     NotFound(kInvalidUtf8Id),
     {},
     Asked(kInvalidUtf8Id, {})},
    {"IdIsNotAPattern", {"-d", "G1%"}, "", NotFound("G1%"), {}, Asked("G1%", {})},
    {"AllThenAllAgainFindsNone",
     {"--deleteall", "--deleteall"},
     DeletedAll(5),
     kNoEventsFound,
     kStandard,
     AskedAll(kStandard) + AskedAll({})},
    // Directly the failed step is what finalising the delete statement
    // reports; the daemon is asked for each event and refuses each.
    {"AbortingTriggerKeepsEveryRow",
     {"--deleteall", "-d", "42", "-t"},
     {TableCounts("   5"), DeletedAll(0).daemon + Deleted(0, "42") + TableCounts("   5")},
     {kDeleteAllFailed + DeleteByIdFailed("42"), Refused(kStandard) + Refused({"42"})},
     {},
     AskedAll(kStandard) + Asked("42", {"42"}) + kCountRequests,
     "create trigger keep before delete on events begin select raise(abort, 'kept'); end;"},
    // Deleting an event would add a status row whose name already exists.
    {"ConstraintFailingInTheDeleteKeepsEveryRow",
     {"-d", "G1"},
     {"", Deleted(0, "G1")},
     {DeleteByIdFailed("G1"), Refused(kGroup)},
     {},
     Asked("G1", kGroup),
     "create trigger clash after delete on events begin insert into status values ('version', old.reid); end;"},
    {"StoreWithoutAnEventsTable",
     {"-d", "42", "--deleteall"},
     "",
     {NotPrepared(CountById("42"), 1) + NotPrepared("select count(*) from events", 1),
      NotFound("42").daemon + kNoEventsFound},
     {},
     Asked("42", {}) + AskedAll({}),
     "drop table events"},
    // A view over the rows: counting and listing work, deleting does not.
    {"EventsThatCanBeListedButNotDeleted",
     {"-d", "G1"},
     {"", Deleted(0, "G1")},
     {NotPrepared("delete from events where reid='G1' or groupId='G1'", 1), Refused(kGroup)},
     {},
     Asked("G1", kGroup),
     "alter table events rename to kept; create view events as select * from kept"},
    // The view fails at run time, so the count yields no row.
    {"EventsThatFailWhileCounted",
     {"-d", "42", "--deleteall"},
     "",
     {": error getting count of events to delete using 'select count(*) from events where reid='42' or groupId='42''\n"
      "could not free statement, leaking memory\n"
      ": error getting count of events to delete using 'select count(*) from events'\n"
      "could not free statement, leaking memory\n",
      NotFound("42").daemon + kNoEventsFound},
     {},
     Asked("42", {}) + AskedAll({}),
     "alter table events rename to kept;"
     "create view events as select * from kept where abs(-9223372036854775807 - 1)"},
    {"AllOnAnEmptyTable", {"--deleteall"}, "", kNoEventsFound, {}, AskedAll({}), "", {}},
    {"IdOnAnEmptyTable", {"-d", "42"}, "", NotFound("42"), {}, Asked("42", {}), "", {}},
    {"AllOfOneIsPlural",
     {"--deleteall"},
     DeletedAll(1),
     "",
     {"42"},
     AskedAll({"42"}),
     "",
     {Event("42")}},
    {"AllOfThree",
     {"--deleteall"},
     DeletedAll(3),
     "",
     {"1", "2", "3"},
     AskedAll({"1", "2", "3"}),
     "",
     {Event("1"), Event("2"), Event("3")}},
};

// Only over IPC: the daemon refuses some of the deletions.
const Deletion kOverIpc[] = {
    {"RefusedEventIsReportedAndKept",
     {"-d", "G1"},
     Deleted(2, "G1"),
     Refused({"G1-b"}),
     {"G1-a", "G1-c"},
     Asked("G1", kGroup),
     "",
     StandardEvents(),
     "--refuse-delete G1-b"},
    {"AllRefusedStillPrintsTheSummary",
     {"-d", "G1"},
     Deleted(0, "G1"),
     Refused(kGroup),
     {},
     Asked("G1", kGroup),
     "",
     StandardEvents(),
     "--refuse-delete G1-a --refuse-delete G1-b --refuse-delete G1-c"},
    {"OneLeftOfTwoIsSingular",
     {"-d", "42"},
     Deleted(1, "42"),
     Refused({"42"}),
     {"9"},
     Asked("42", {"42", "9"}),
     "",
     StandardEvents({Event("9", "42", 1, 1)}),
     "--refuse-delete 42"},
    {"AllWithRefusals",
     {"--deleteall"},
     DeletedAll(3),
     Refused({"G1-a", "7"}),
     {"42", "G1-b", "G1-c"},
     AskedAll(kStandard),
     "",
     StandardEvents(),
     "--refuse-delete 7 --refuse-delete G1-a"},
    {"AllRefusedOnDeleteAllSaysZero",
     {"--deleteall"},
     DeletedAll(0),
     Refused(kStandard),
     {},
     AskedAll(kStandard),
     "",
     StandardEvents(),
     "--refuse-delete 42 --refuse-delete G1-a --refuse-delete G1-b --refuse-delete G1-c "
     "--refuse-delete 7"},
};

class EventDeletion : public DeletionDisk, public ::testing::TestWithParam<CaseOnPath<Deletion>> {};

TEST_P(EventDeletion, LeavesTheRowsItShould) {
  const Deletion& c = std::get<0>(GetParam());
  const AccessPath path = std::get<1>(GetParam());
  Fill(disk_, c.events);
  if (!c.sql.empty()) disk_.Exec(c.sql);
  const std::string before = disk_.Dump();
  SandboxOptions options;
  options.streamMgrArgs = c.daemonArgs;
  EXPECT_RUN(RunOn(path, c.args, options), c.out.On(path), c.err.On(path), 0);
  EXPECT_EQ(c.gone.empty() ? before : DumpWithout(c.events, c.gone), disk_.Dump());
  ExpectAsked(path, c.asked);
}

INSTANTIATE_TEST_SUITE_P(BothPaths, EventDeletion, OnBothPaths(kOnBothPaths),
                         CaseOnPathName<Deletion>);
INSTANTIATE_TEST_SUITE_P(OverIpc, EventDeletion, OverIpcOnly(kOverIpc), CaseOnPathName<Deletion>);

// The standard events, for runs that need more than one command line.
class StandardDeletion : public DeletionDisk, public ::testing::TestWithParam<AccessPath> {
 protected:
  void SetUp() override {
    Fill(disk_, StandardEvents());
    before_ = disk_.Dump();
  }
  RunResult Run(const std::vector<std::string>& args, SandboxOptions options = SandboxOptions()) {
    return RunOn(GetParam(), args, options);
  }
  void ExpectStoreWithout(const Reids& gone) const {
    EXPECT_EQ(DumpWithout(StandardEvents(), gone), disk_.Dump());
  }
  std::string before_;
};

TEST_P(StandardDeletion, ReadOnlyStoreKeepsEveryRowAndStaysReadable) {
  // Created beforehand, so that the daemon, as nobody, can still log.
  disk_.WriteFile("requests.log", "");
  chmod((disk_.Path() + "/requests.log").c_str(), 0666);
  chmod(disk_.StorePath().c_str(), 0444);
  SandboxOptions options;
  options.unprivileged = true;
  // The daemon cannot delete either; each refusal is reported.
  const PathText out = PathText("", Deleted(0, "G1") + DeletedAll(0).daemon) + TableCounts("   5");
  const PathText err = {DeleteByIdFailed("G1") + kDeleteAllFailed,
                        Refused(kGroup) + Refused(kStandard)};
  EXPECT_RUN(Run({"-d", "G1", "--deleteall", "-t"}, options), out.On(GetParam()),
             err.On(GetParam()), 0);
  EXPECT_EQ(before_, disk_.Dump());
}

TEST_P(StandardDeletion, TriggerRefusingOneEventOnlyKeepsThatOne) {
  disk_.Exec(
      "create trigger keep before delete on events when old.reid='G1-b' "
      "begin select raise(abort, 'kept'); end;");
  const RunResult r = Run({"-d", "G1"});
  if (GetParam() == AccessPath::kDaemon) {
    // One request per event: only the refused one stays.
    EXPECT_RUN(r, Deleted(2, "G1"), Refused({"G1-b"}), 0);
    ExpectStoreWithout({"G1-a", "G1-c"});
  } else {
    // One statement for the whole group: it is undone whole.
    EXPECT_RUN(r, "", DeleteByIdFailed("G1"), 0);
    EXPECT_EQ(before_, disk_.Dump());
  }
}

TEST_P(StandardDeletion, StoreLockedByAnotherWriterKeepsEveryRowAndStaysUsable) {
  RunResult locked;
  {
    StoreLock writer(disk_.StorePath());
    locked = Run({"-d", "42", "--deleteall"});
  }
  const PathText err = {kNoFileSizesLine + NotPrepared(CountById("42"), 5) +
                            NotPrepared("select count(*) from events", 5),
                        NotFound("42").daemon + kNoEventsFound};
  EXPECT_RUN(locked, "", err.On(GetParam()), 0);
  EXPECT_EQ(before_, disk_.Dump());
  // Once the other writer is done the same deletion goes through.
  EXPECT_RUN(RunDb(disk_, GetParam(), {"-d", "42"}), Deleted(1, "42"), "", 0);
  ExpectStoreWithout({"42"});
}

INSTANTIATE_TEST_SUITE_P(BothPaths, StandardDeletion, BothAccessPaths(), PathName);

class DaemonDeletion : public StandardDeletion {};

TEST_P(DaemonDeletion, DaemonFailingEveryRequestDeletesNothing) {
  SandboxOptions options;
  options.streamMgrArgs = "--fail-requests";
  EXPECT_RUN(Run({"-d", "G1", "--deleteall", "-d", "42"}, options), "",
             NotFound("G1").daemon + kNoEventsFound + NotFound("42").daemon, 0);
  EXPECT_EQ(before_, disk_.Dump());
  // The store is still whole for a daemon that works.
  EXPECT_RUN(RunDb(disk_, AccessPath::kDaemon, {"-d", "42"}), Deleted(1, "42"), "", 0);
  ExpectStoreWithout({"42"});
}

INSTANTIATE_TEST_SUITE_P(OverIpc, DaemonDeletion, ::testing::Values(AccessPath::kDaemon), PathName);

}  // namespace
