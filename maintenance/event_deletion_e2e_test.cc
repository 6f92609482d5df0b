// Event deletion (-d, --deleteall) run end to end in the sandbox, on the
// database file and through the StreamMgr simulator. After every run the
// whole store is compared with a store built to hold exactly the rows that
// should be left, and the daemon's log with the requests it should have got.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <memory>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "maintenance/expected_deletion.h"
#include "testing/expected_start_up.h"
#include "testing/faults_case_tables.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"
#include "testing/store_lock.h"

namespace {

EventRow Event(const std::string& reid, const std::string& groupId = "", int part = 0,
               int totalParts = 0) {
  EventRow row(reid);
  row.groupId = groupId;
  row.part = part;
  row.totalParts = totalParts;
  return row;
}

// Two unsplit events around a recording split in three parts and, untouched
// by any deletion, rows of the other tables.
std::string StandardStore() {
  FileRow first;
  first.next = 2;
  FileRow second;
  second.number = 2;
  second.previous = 1;
  return first.Insert() + second.Insert() +
         "insert into status values ('version', '4.2.1'), ('diskState', 'mounted');\n" +
         Event("42").Insert() + Event("G1-a", "G1", 1, 3).Insert() +
         Event("G1-b", "G1", 2, 3).Insert() + Event("G1-c", "G1", 3, 3).Insert() +
         Event("7").Insert();
}

// Lists of reids are written with a space between two.
std::vector<std::string> Split(const std::string& reids) {
  std::istringstream words(reids);
  std::vector<std::string> split;
  for (std::string reid; words >> reid;) split.push_back(reid);
  return split;
}
const char kStandard[] = "42 G1-a G1-b G1-c 7";
const char kGroup[] = "G1-a G1-b G1-c";

// The daemon refusing these events, in this order.
std::string Refused(const std::string& reids) {
  std::string lines;
  for (const std::string& reid : Split(reids)) {
    lines += FailedToDelete(reid, reid.rfind("G1-", 0) == 0 ? "G1" : "");
  }
  return lines;
}

// The requests of -d ID (or of --deleteall) that the daemon answered with
// `listed`, which it was then asked to delete.
std::string Deletes(const std::string& listed) {
  std::string log;
  for (const std::string& reid : Split(listed)) log += "delete\t" + reid + "\n";
  return log;
}
std::string Asked(const std::string& id, const std::string& listed) {
  return "events\tselect * from events where reid='" + id + "' or groupId='" + id + "'\n" +
         Deletes(listed);
}
std::string AskedAll(const std::string& listed) {
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

// What keeps the store from being changed while db runs.
enum class Hold {
  kNothing,
  kReadOnly,  // the store file, for user nobody
  kLock,      // another writer's transaction
};

struct Deletion {
  const char* name;
  std::vector<std::string> args;
  PathText out;
  PathText err;
  PathText gone;      // the reids deleted; none: the store is left as it was
  std::string asked;  // the daemon's log
  std::string sql;    // run on the standard store first: more events, or damage
  std::string daemonArgs;
  Hold hold;
  bool thenDelete42;  // then, with nothing in the way, db -d 42 deletes it
};
void PrintTo(const Deletion& deletion, std::ostream* out) { *out << deletion.name; }

Deletion Case(const char* name, const std::vector<std::string>& args, const PathText& out,
              const PathText& err, const PathText& gone, const std::string& asked,
              const std::string& sql = "", const std::string& daemonArgs = "",
              Hold hold = Hold::kNothing, bool thenDelete42 = false) {
  return {name, args, out, err, gone, asked, sql, daemonArgs, hold, thenDelete42};
}

const std::string kLongId(100000, 'L');
const std::string kNonAsciiId = "\xc3\xa9v\xc3\xa9nement-\xe2\x82\xac";  // "événement-€"
const std::string kInvalidUtf8Id = "bad\xff\xfe";
const std::string kLockedCount = kNoFileSizesLine + NotPrepared(CountById("42"), 5) +
                                 NotPrepared("select count(*) from events", 5);

const Deletion kOnBothPaths[] = {
    Case("OneEventById", {"-d", "42"}, Deleted(1, "42"), "", "42", Asked("42", "42")),
    Case("WholeGroupById", {"--delete", "G1"}, Deleted(3, "G1"), "", kGroup, Asked("G1", kGroup)),
    Case("OnePartOfAGroupByItsReid", {"-d", "G1-b"}, Deleted(1, "G1-b"), "", "G1-b",
         Asked("G1-b", "G1-b")),
    Case("NoMatchKeepsEverything", {"-d", "99"}, "", NotFound("99"), "", Asked("99", "")),
    Case("AllEvents", {"--deleteall"}, DeletedAll(5), "", kStandard, AskedAll(kStandard)),
    Case("HandlersGoOnWithTheNextOption", {"-d", "42", "-d", "42", "-d", "G1", "-t"},
         Deleted(1, "42") + Deleted(3, "G1") + TableCounts("   1"), NotFound("42"),
         "42 G1-a G1-b G1-c",
         Asked("42", "42") + Asked("42", "") + Asked("G1", kGroup) + kCountRequests),
    Case("IdMatchingAReidAndAGroupDeletesBoth", {"-d", "G1"}, Deleted(4, "G1"), "",
         "G1-a G1-b G1-c G1", Asked("G1", "G1-a G1-b G1-c G1"), Event("G1").Insert()),
    // Directly the malformed SQL fails to prepare; the daemon cannot run it
    // either, so it lists nothing.
    Case("IdWithASingleQuoteDeletesNothing", {"-d", "4'2"}, "",
         {NotPrepared(CountById("4'2"), 1), NotFound("4'2").daemon}, "", Asked("4'2", "")),
    // The id goes into the condition as typed, and an unsplit event has the
    // empty group id, so an empty id picks every unsplit event and no part.
    Case("EmptyIdSelectsTheEventsOutsideAnyGroup", {"-d", ""}, Deleted(2, ""), "", "42 7",
         Asked("", "42 7")),
    Case("EmptyIdWithOnlySplitEventsFindsNothing", {"-d", ""}, "", NotFound(""), "", Asked("", ""),
         "delete from events where groupId=''"),
    Case("VeryLongId", {"-d", kLongId, "-d", kLongId + "X"}, Deleted(1, kLongId),
         NotFound(kLongId + "X"), kLongId, Asked(kLongId, kLongId) + Asked(kLongId + "X", ""),
         Event(kLongId).Insert()),
    Case("NonAsciiId", {"-d", kNonAsciiId}, Deleted(2, kNonAsciiId), "", kNonAsciiId + " part-1",
         Asked(kNonAsciiId, kNonAsciiId + " part-1"),
         Event(kNonAsciiId).Insert() + Event("part-1", kNonAsciiId, 1, 2).Insert()),
    Case("InvalidUtf8IdIsMatchedByteForByte", {"-d", kInvalidUtf8Id}, "", NotFound(kInvalidUtf8Id),
         "", Asked(kInvalidUtf8Id, "")),
    Case("IdIsNotAPattern", {"-d", "G1%"}, "", NotFound("G1%"), "", Asked("G1%", "")),
    Case("AllThenAllAgainFindsNone", {"--deleteall", "--deleteall"}, DeletedAll(5), kNoEventsFound,
         kStandard, AskedAll(kStandard) + AskedAll("")),
    // The daemon, as nobody, cannot delete either; each refusal is reported.
    Case("ReadOnlyStoreKeepsEveryRowAndStaysReadable", {"-d", "G1", "--deleteall", "-t"},
         PathText("", Deleted(0, "G1") + DeletedAll(0).daemon) + TableCounts("   5"),
         {DeleteByIdFailed("G1") + kDeleteAllFailed, Refused(kGroup) + Refused(kStandard)}, "",
         Asked("G1", kGroup) + AskedAll(kStandard) + kCountRequests, "", "", Hold::kReadOnly),
    // Directly the failed step is what finalising the delete statement
    // reports; the daemon is asked for each event and refuses each.
    Case("AbortingTriggerKeepsEveryRow", {"--deleteall", "-d", "42", "-t"},
         {TableCounts("   5"), DeletedAll(0).daemon + Deleted(0, "42") + TableCounts("   5")},
         {kDeleteAllFailed + DeleteByIdFailed("42"), Refused(kStandard) + Refused("42")}, "",
         AskedAll(kStandard) + Asked("42", "42") + kCountRequests,
         "create trigger keep before delete on events begin select raise(abort, 'kept'); end;"),
    // Deleting an event would add a status row whose name already exists.
    Case(
        "ConstraintFailingInTheDeleteKeepsEveryRow", {"-d", "G1"}, {"", Deleted(0, "G1")},
        {DeleteByIdFailed("G1"), Refused(kGroup)}, "", Asked("G1", kGroup),
        "create trigger clash after delete on events begin insert into status values ('version', old.reid); end;"),
    // Over IPC one request per event: only the refused one stays. Directly
    // one statement for the whole group: it is undone whole.
    Case(
        "TriggerRefusingOneEventOnlyKeepsThatOne", {"-d", "G1"}, {"", Deleted(2, "G1")},
        {DeleteByIdFailed("G1"), Refused("G1-b")}, {"", "G1-a G1-c"}, Asked("G1", kGroup),
        "create trigger keep before delete on events when old.reid='G1-b' begin select raise(abort, 'kept'); end;"),
    Case("StoreLockedByAnotherWriterKeepsEveryRowAndStaysUsable", {"-d", "42", "--deleteall"}, "",
         {kLockedCount, NotFound("42").daemon + kNoEventsFound}, "", Asked("42", "") + AskedAll(""),
         "", "", Hold::kLock, true),
    Case("StoreWithoutAnEventsTable", {"-d", "42", "--deleteall"}, "",
         {NotPrepared(CountById("42"), 1) + NotPrepared("select count(*) from events", 1),
          NotFound("42").daemon + kNoEventsFound},
         "", Asked("42", "") + AskedAll(""), "drop table events"),
    // A view over the rows: counting and listing work, deleting does not.
    Case("EventsThatCanBeListedButNotDeleted", {"-d", "G1"}, {"", Deleted(0, "G1")},
         {NotPrepared("delete from events where reid='G1' or groupId='G1'", 1), Refused(kGroup)},
         "", Asked("G1", kGroup),
         "alter table events rename to kept; create view events as select * from kept"),
    // The view fails at run time, so the count yields no row.
    Case(
        "EventsThatFailWhileCounted", {"-d", "42", "--deleteall"}, "",
        {": error getting count of events to delete using 'select count(*) from events where reid='42' or groupId='42''\n"
         "could not free statement, leaking memory\n"
         ": error getting count of events to delete using 'select count(*) from events'\n"
         "could not free statement, leaking memory\n",
         NotFound("42").daemon + kNoEventsFound},
        "", Asked("42", "") + AskedAll(""),
        "alter table events rename to kept;"
        "create view events as select * from kept where abs(-9223372036854775807 - 1)"),
    Case("AllOnAnEmptyTable", {"--deleteall"}, "", kNoEventsFound, "", AskedAll(""),
         "delete from events"),
    Case("IdOnAnEmptyTable", {"-d", "42"}, "", NotFound("42"), "", Asked("42", ""),
         "delete from events"),
    Case("AllOfOneIsPlural", {"--deleteall"}, DeletedAll(1), "", "42", AskedAll("42"),
         "delete from events where reid <> '42'"),
    Case("AllOfThree", {"--deleteall"}, DeletedAll(3), "", "1 2 3", AskedAll("1 2 3"),
         "delete from events;" + Event("1").Insert() + Event("2").Insert() + Event("3").Insert()),
};

// Only over IPC: the daemon refuses or fails some of the requests.
const Deletion kOverIpc[] = {
    Case("RefusedEventIsReportedAndKept", {"-d", "G1"}, Deleted(2, "G1"), Refused("G1-b"),
         "G1-a G1-c", Asked("G1", kGroup), "", "--refuse-delete G1-b"),
    Case("AllRefusedStillPrintsTheSummary", {"-d", "G1"}, Deleted(0, "G1"), Refused(kGroup), "",
         Asked("G1", kGroup), "", "--refuse-delete G1-a --refuse-delete G1-b --refuse-delete G1-c"),
    Case("OneLeftOfTwoIsSingular", {"-d", "42"}, Deleted(1, "42"), Refused("42"), "9",
         Asked("42", "42 9"), Event("9", "42", 1, 1).Insert(), "--refuse-delete 42"),
    Case("AllWithRefusals", {"--deleteall"}, DeletedAll(3), Refused("G1-a 7"), "42 G1-b G1-c",
         AskedAll(kStandard), "", "--refuse-delete 7 --refuse-delete G1-a"),
    Case("AllRefusedOnDeleteAllSaysZero", {"--deleteall"}, DeletedAll(0), Refused(kStandard), "",
         AskedAll(kStandard), "",
         "--refuse-delete 42 --refuse-delete G1-a --refuse-delete G1-b --refuse-delete G1-c "
         "--refuse-delete 7"),
    Case("DaemonFailingEveryRequestDeletesNothing", {"-d", "G1", "--deleteall", "-d", "42"}, "",
         NotFound("G1").daemon + kNoEventsFound + NotFound("42").daemon, "",
         Asked("G1", "") + AskedAll("") + Asked("42", ""), "", "--fail-requests", Hold::kNothing,
         true),
};

class EventDeletion : public ::testing::TestWithParam<CaseOnPath<Deletion>> {
 protected:
  void SetUp() override { disk_.Exec(StandardStore() + std::get<0>(GetParam()).sql); }
  // The store as it should be once `gone` is deleted from it.
  std::string Without(const std::string& gone) const {
    RecorderDisk expected;
    std::string sql = StandardStore() + std::get<0>(GetParam()).sql + ";\n";
    for (const std::string& reid : Split(gone)) {
      sql += "delete from events where reid = " + Quote(reid) + ";";
    }
    expected.Exec(sql);
    return expected.Dump();
  }
  RecorderDisk disk_;
};

TEST_P(EventDeletion, LeavesTheRowsItShould) {
  const Deletion& c = std::get<0>(GetParam());
  const AccessPath path = std::get<1>(GetParam());
  const std::string before = disk_.Dump();
  SandboxOptions options;
  options.streamMgrArgs = "--log /mnt/hd/requests.log " + c.daemonArgs;
  if (c.hold == Hold::kReadOnly) {
    // The log is made beforehand, so that the daemon, as nobody, can still
    // write it.
    disk_.WriteFile("requests.log", "");
    chmod((disk_.Path() + "/requests.log").c_str(), 0666);
    chmod(disk_.StorePath().c_str(), 0444);
    options.unprivileged = true;
  }
  RunResult r;
  {
    std::unique_ptr<StoreLock> lock;
    if (c.hold == Hold::kLock) lock.reset(new StoreLock(disk_.StorePath()));
    r = RunDb(disk_, path, c.args, options);
  }
  EXPECT_RUN(r, c.out.On(path), c.err.On(path), 0);
  const std::string& gone = c.gone.On(path);
  EXPECT_EQ(gone.empty() ? before : Without(gone), disk_.Dump());
  // Directly no daemon is asked.
  EXPECT_EQ(path == AccessPath::kDaemon ? c.asked : "",
            disk_.Exists("requests.log") ? disk_.ReadFile("requests.log") : "");
  if (c.thenDelete42) {
    EXPECT_RUN(RunDb(disk_, path, {"-d", "42"}), Deleted(1, "42"), "", 0);
    EXPECT_EQ(Without("42"), disk_.Dump());
  }
}

INSTANTIATE_TEST_SUITE_P(BothPaths, EventDeletion, OnBothPaths(kOnBothPaths),
                         CaseOnPathName<Deletion>);
INSTANTIATE_TEST_SUITE_P(OverIpc, EventDeletion, OverIpcOnly(kOverIpc), CaseOnPathName<Deletion>);

}  // namespace
