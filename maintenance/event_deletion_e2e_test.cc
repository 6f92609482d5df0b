// Event deletion (-d, --deleteall) run end to end in the sandbox, on the
// database file and through the StreamMgr simulator. After every run the
// whole store is compared with a store built to hold exactly the rows that
// should be left.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <set>
#include <string>
#include <vector>

#include "testing/expected_start_up.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"
#include "testing/store_lock.h"

namespace {

EventRow Event(const std::string& reid, const std::string& groupId = "", int part = 0,
               int totalParts = 0) {
  EventRow row;
  row.reid = reid;
  row.groupId = groupId;
  row.part = part;
  row.totalParts = totalParts;
  return row;
}

// Two unsplit events around a recording split in three parts.
std::vector<EventRow> StandardEvents() {
  return {Event("42"), Event("G1-a", "G1", 1, 3), Event("G1-b", "G1", 2, 3),
          Event("G1-c", "G1", 3, 3), Event("7")};
}

// Rows of the other tables, which no deletion may touch.
std::string OtherRows() {
  FileRow first;
  first.number = 1;
  first.next = 2;
  FileRow second;
  second.number = 2;
  second.previous = 1;
  return first.Insert() + second.Insert() +
         "insert into status values ('version', '4.2.1'), ('diskState', 'mounted');\n";
}

void Fill(const RecorderDisk& disk, const std::vector<EventRow>& events,
          const std::set<std::string>& left_out = {}) {
  std::string sql = "begin;\n" + OtherRows();
  for (const EventRow& event : events) {
    if (left_out.count(event.reid) == 0) sql += event.Insert();
  }
  disk.Exec(sql + "commit;\n");
}

// The dump of a store that holds everything but the named events.
std::string DumpWithout(const std::vector<EventRow>& events, const std::set<std::string>& gone) {
  RecorderDisk expected;
  Fill(expected, events, gone);
  return expected.Dump();
}

class DeletionTest : public ::testing::Test {
 protected:
  void Prepare(AccessPath path, std::vector<EventRow> events = StandardEvents()) {
    path_ = path;
    events_ = std::move(events);
    Fill(disk_, events_);
    before_ = disk_.Dump();
    ASSERT_EQ(DumpWithout(events_, {}), before_);
  }

  bool Daemon() const { return path_ == AccessPath::kDaemon; }
  const char* ByPath(const char* direct, const char* daemon) const {
    return Daemon() ? daemon : direct;
  }

  // Runs db on this test's path; the simulator logs every request it gets.
  RunResult Run(const std::vector<std::string>& args, SandboxOptions options = SandboxOptions()) {
    options.streamMgrArgs = "--log /mnt/hd/requests.log " + options.streamMgrArgs;
    return RunDb(disk_, path_, args, options);
  }

  void ExpectStoreWithout(const std::set<std::string>& gone) const {
    EXPECT_EQ(DumpWithout(events_, gone), disk_.Dump());
  }
  void ExpectStoreUnchanged() const { EXPECT_EQ(before_, disk_.Dump()); }

  // The lines that report the daemon refusing these events, in this order.
  std::string Refused(const std::vector<std::string>& reids) const {
    std::string lines;
    for (const std::string& reid : reids) {
      for (const EventRow& event : events_) {
        if (event.reid == reid) {
          lines +=
              "  Failed to delete event:  reid= " + reid + "  groupId= " + event.groupId + "\n";
        }
      }
    }
    return lines;
  }

  // Over IPC the requests the daemon got; directly, that no daemon was asked.
  void ExpectRequests(const std::string& log) const {
    if (Daemon()) {
      EXPECT_EQ(log, disk_.ReadFile("requests.log"));
    } else {
      EXPECT_FALSE(disk_.Exists("requests.log"));
    }
  }

  AccessPath path_ = AccessPath::kDirect;
  RecorderDisk disk_;
  std::vector<EventRow> events_;
  std::string before_;
};

std::string EventsRequest(const std::string& id) {
  return "events\tselect * from events where reid='" + id + "' or groupId='" + id + "'\n";
}

const char kAllEventsRequest[] = "events\tselect * from events\n";

std::string DeleteRequests(const std::vector<std::string>& reids) {
  std::string log;
  for (const std::string& reid : reids) log += "delete\t" + reid + "\n";
  return log;
}

// Directly, a delete of group G1 whose step fails; finalising the failed
// statement reports it as leaked.
const char kGroupDeleteFailed[] =
    "  Error deleting event or groupId:  id = G1\n"
    "could not free statement, leaking memory\n";

// The -t report of the test stores, with the events count as printed.
std::string TableCounts(const std::string& events) {
  return std::string(kTablesHeading) + "events          " + events +
         "\n"
         "streamfiles        2\n"
         "status             2\n"
         "\n";
}

// ---------------------------------------------------------------------------
// Both paths.

class EventDeletion : public DeletionTest, public ::testing::WithParamInterface<AccessPath> {
 protected:
  void SetUp() override { Prepare(GetParam()); }
};

TEST_P(EventDeletion, OneEventById) {
  const RunResult r = Run({"-d", "42"});
  EXPECT_RUN(r, "  Successfully deleted 1 event:  id = 42\n", "", 0);
  ExpectStoreWithout({"42"});
  ExpectRequests(EventsRequest("42") + DeleteRequests({"42"}));
}

TEST_P(EventDeletion, WholeGroupById) {
  const RunResult r = Run({"--delete", "G1"});
  EXPECT_RUN(r, "  Successfully deleted 3 events:  id = G1\n", "", 0);
  ExpectStoreWithout({"G1-a", "G1-b", "G1-c"});
  ExpectRequests(EventsRequest("G1") + DeleteRequests({"G1-a", "G1-b", "G1-c"}));
}

TEST_P(EventDeletion, OnePartOfAGroupByItsReid) {
  const RunResult r = Run({"-d", "G1-b"});
  EXPECT_EQ("  Successfully deleted 1 event:  id = G1-b\n", r.out);
  EXPECT_EQ("", r.err);
  ExpectStoreWithout({"G1-b"});
  ExpectRequests(EventsRequest("G1-b") + DeleteRequests({"G1-b"}));
}

TEST_P(EventDeletion, NoMatchKeepsEverything) {
  const RunResult r = Run({"-d", "99"});
  EXPECT_RUN(
      r, "",
      ByPath("  Event or groupId not found:  id = 99\n", "  Event or groupId not found: 99\n"), 0);
  ExpectStoreUnchanged();
  ExpectRequests(EventsRequest("99"));
}

TEST_P(EventDeletion, AllEvents) {
  const RunResult r = Run({"--deleteall"});
  EXPECT_RUN(r,
             ByPath("  Successfully deleted all 5 events\n", "  Successfully deleted 5 events\n"),
             "", 0);
  ExpectStoreWithout({"42", "G1-a", "G1-b", "G1-c", "7"});
  ExpectRequests(kAllEventsRequest + DeleteRequests({"42", "G1-a", "G1-b", "G1-c", "7"}));
}

TEST_P(EventDeletion, HandlersGoOnWithTheNextOption) {
  const RunResult r = Run({"-d", "42", "-d", "42", "-d", "G1", "-t"});
  EXPECT_RUN(
      r,
      "  Successfully deleted 1 event:  id = 42\n"
      "  Successfully deleted 3 events:  id = G1\n" +
          TableCounts("   1"),
      ByPath("  Event or groupId not found:  id = 42\n", "  Event or groupId not found: 42\n"), 0);
  ExpectStoreWithout({"42", "G1-a", "G1-b", "G1-c"});
}

TEST_P(EventDeletion, IdMatchingAReidAndAGroupDeletesBoth) {
  disk_.Exec(Event("G1").Insert());
  events_.push_back(Event("G1"));
  const RunResult r = Run({"-d", "G1"});
  EXPECT_EQ("  Successfully deleted 4 events:  id = G1\n", r.out);
  EXPECT_EQ("", r.err);
  ExpectStoreWithout({"G1-a", "G1-b", "G1-c", "G1"});
  ExpectRequests(EventsRequest("G1") + DeleteRequests({"G1-a", "G1-b", "G1-c", "G1"}));
}

TEST_P(EventDeletion, IdWithASingleQuoteDeletesNothing) {
  const RunResult r = Run({"-d", "4'2"});
  const std::string count = "select count(*) from events where reid='4'2' or groupId='4'2'";
  // Directly the malformed SQL fails to prepare; the daemon cannot run it
  // either, so it lists nothing.
  EXPECT_RUN(r, "",
             Daemon() ? std::string("  Event or groupId not found: 4'2\n")
                      : "unable to prepare: " + count + "stmt Error: 1  sql='" + count + "'\n",
             0);
  ExpectStoreUnchanged();
  ExpectRequests(EventsRequest("4'2"));
}

TEST_P(EventDeletion, EmptyIdSelectsTheEventsOutsideAnyGroup) {
  // The id goes into the condition as typed, and an unsplit event has the
  // empty group id, so an empty id picks every unsplit event and no part.
  const RunResult r = Run({"-d", ""});
  EXPECT_RUN(r, "  Successfully deleted 2 events:  id = \n", "", 0);
  ExpectStoreWithout({"42", "7"});
  ExpectRequests(EventsRequest("") + DeleteRequests({"42", "7"}));
}

TEST_P(EventDeletion, EmptyIdWithOnlySplitEventsFindsNothing) {
  disk_.Exec("delete from events where groupId=''");
  before_ = disk_.Dump();
  const RunResult r = Run({"-d", ""});
  EXPECT_EQ("", r.out);
  EXPECT_EQ(ByPath("  Event or groupId not found:  id = \n", "  Event or groupId not found: \n"),
            r.err);
  ExpectStoreUnchanged();
}

TEST_P(EventDeletion, VeryLongId) {
  const std::string id(100000, 'L');
  disk_.Exec(Event(id).Insert());
  events_.push_back(Event(id));
  const RunResult r = Run({"-d", id, "-d", id + "X"});
  EXPECT_RUN(r, "  Successfully deleted 1 event:  id = " + id + "\n",
             std::string(
                 ByPath("  Event or groupId not found:  id = ", "  Event or groupId not found: ")) +
                 id + "X\n",
             0);
  ExpectStoreWithout({id});
  ExpectRequests(EventsRequest(id) + DeleteRequests({id}) + EventsRequest(id + "X"));
}

TEST_P(EventDeletion, NonAsciiId) {
  const std::string id = "\xc3\xa9v\xc3\xa9nement-\xe2\x82\xac";  // "événement-€" in UTF-8
  disk_.Exec(Event(id).Insert() + Event("part-1", id, 1, 2).Insert());
  events_.push_back(Event(id));
  events_.push_back(Event("part-1", id, 1, 2));
  const RunResult r = Run({"-d", id});
  EXPECT_EQ("  Successfully deleted 2 events:  id = " + id + "\n", r.out);
  EXPECT_EQ("", r.err);
  ExpectStoreWithout({id, "part-1"});
  ExpectRequests(EventsRequest(id) + DeleteRequests({id, "part-1"}));
}

TEST_P(EventDeletion, InvalidUtf8IdIsMatchedByteForByte) {
  const std::string id = "bad\xff\xfe";
  const RunResult r = Run({"-d", id});
  EXPECT_EQ("", r.out);
  EXPECT_EQ(std::string(
                ByPath("  Event or groupId not found:  id = ", "  Event or groupId not found: ")) +
                id + "\n",
            r.err);
  ExpectStoreUnchanged();
}

TEST_P(EventDeletion, IdIsNotAPattern) {
  const RunResult r = Run({"-d", "G1%"});
  EXPECT_EQ(
      ByPath("  Event or groupId not found:  id = G1%\n", "  Event or groupId not found: G1%\n"),
      r.err);
  ExpectStoreUnchanged();
}

TEST_P(EventDeletion, AllThenAllAgainFindsNone) {
  const RunResult r = Run({"--deleteall", "--deleteall"});
  EXPECT_EQ(ByPath("  Successfully deleted all 5 events\n", "  Successfully deleted 5 events\n"),
            r.out);
  EXPECT_EQ("  No events found...no action taken.\n", r.err);
  ExpectStoreWithout({"42", "G1-a", "G1-b", "G1-c", "7"});
}

TEST_P(EventDeletion, ReadOnlyStoreKeepsEveryRowAndStaysReadable) {
  // Created beforehand, so that the daemon, as nobody, can still log.
  disk_.WriteFile("requests.log", "");
  chmod((disk_.Path() + "/requests.log").c_str(), 0666);
  chmod(disk_.StorePath().c_str(), 0444);
  SandboxOptions options;
  options.unprivileged = true;
  const RunResult r = Run({"-d", "G1", "--deleteall", "-t"}, options);
  const std::string tables = TableCounts("   5");
  if (Daemon()) {
    // The daemon cannot delete either; each refusal is reported.
    EXPECT_RUN(r,
               std::string("  Successfully deleted 0 events:  id = G1\n") +
                   "  Successfully deleted 0 events\n" + tables,
               Refused({"G1-a", "G1-b", "G1-c", "42", "G1-a", "G1-b", "G1-c", "7"}), 0);
  } else {
    EXPECT_RUN(r, tables,
               "  Error deleting event or groupId:  id = G1\n"
               "could not free statement, leaking memory\n"
               "  Error deleting all events\n"
               "could not free statement, leaking memory\n",
               0);
  }
  ExpectStoreUnchanged();
}

TEST_P(EventDeletion, AbortingTriggerKeepsEveryRow) {
  disk_.Exec("create trigger keep before delete on events begin select raise(abort, 'kept'); end;");
  const RunResult r = Run({"--deleteall", "-d", "42", "-t"});
  const std::string tables = TableCounts("   5");
  if (Daemon()) {
    EXPECT_RUN(
        r, "  Successfully deleted 0 events\n  Successfully deleted 0 events:  id = 42\n" + tables,
        Refused({"42", "G1-a", "G1-b", "G1-c", "7", "42"}), 0);
    ExpectRequests(kAllEventsRequest + DeleteRequests({"42", "G1-a", "G1-b", "G1-c", "7"}) +
                   EventsRequest("42") + DeleteRequests({"42"}) +
                   "count\tselect count(*) from events\n"
                   "count\tselect count(*) from streamfiles\n"
                   "count\tselect count(*) from status\n");
  } else {
    // The failed step is what finalising the delete statement reports.
    EXPECT_RUN(r, tables,
               "  Error deleting all events\n"
               "could not free statement, leaking memory\n"
               "  Error deleting event or groupId:  id = 42\n"
               "could not free statement, leaking memory\n",
               0);
  }
  ExpectStoreUnchanged();
}

TEST_P(EventDeletion, ConstraintFailingInTheDeleteKeepsEveryRow) {
  // Deleting an event would add a status row whose name already exists.
  disk_.Exec(
      "create trigger clash after delete on events begin "
      "insert into status values ('version', old.reid); end;");
  const RunResult r = Run({"-d", "G1"});
  if (Daemon()) {
    EXPECT_RUN(r, "  Successfully deleted 0 events:  id = G1\n", Refused({"G1-a", "G1-b", "G1-c"}),
               0);
  } else {
    EXPECT_RUN(r, "", kGroupDeleteFailed, 0);
  }
  ExpectStoreUnchanged();
}

TEST_P(EventDeletion, TriggerRefusingOneEventOnlyKeepsThatOne) {
  disk_.Exec(
      "create trigger keep before delete on events when old.reid='G1-b' "
      "begin select raise(abort, 'kept'); end;");
  const RunResult r = Run({"-d", "G1"});
  if (Daemon()) {
    // One request per event: only the refused one stays.
    EXPECT_EQ("  Successfully deleted 2 events:  id = G1\n", r.out);
    EXPECT_EQ(Refused({"G1-b"}), r.err);
    ExpectStoreWithout({"G1-a", "G1-c"});
  } else {
    // One statement for the whole group: it is undone whole.
    EXPECT_EQ("", r.out);
    EXPECT_EQ(kGroupDeleteFailed, r.err);
    ExpectStoreUnchanged();
  }
}

TEST_P(EventDeletion, StoreLockedByAnotherWriterKeepsEveryRowAndStaysUsable) {
  RunResult locked;
  {
    StoreLock writer(disk_.StorePath());
    locked = Run({"-d", "42", "--deleteall"});
  }
  if (Daemon()) {
    EXPECT_RUN(locked, "",
               "  Event or groupId not found: 42\n  No events found...no action taken.\n", 0);
  } else {
    const std::string count = "select count(*) from events where reid='42' or groupId='42'";
    EXPECT_RUN(
        locked, "",
        std::string(kNoFileSizesLine) + "unable to prepare: " + count + "stmt Error: 5  sql='" +
            count +
            "'\n"
            "unable to prepare: select count(*) from eventsstmt Error: 5  sql='select count(*) from events'\n",
        0);
  }
  ExpectStoreUnchanged();

  // Once the other writer is done the same deletion goes through.
  const RunResult unlocked = RunDb(disk_, path_, {"-d", "42"});
  EXPECT_EQ("  Successfully deleted 1 event:  id = 42\n", unlocked.out);
  EXPECT_EQ("", unlocked.err);
  ExpectStoreWithout({"42"});
}

TEST_P(EventDeletion, StoreWithoutAnEventsTable) {
  disk_.Exec("drop table events");
  before_ = disk_.Dump();
  const RunResult r = Run({"-d", "42", "--deleteall"});
  const std::string count = "select count(*) from events where reid='42' or groupId='42'";
  const std::string err =
      Daemon()
          ? std::string(
                "  Event or groupId not found: 42\n"
                "  No events found...no action taken.\n")
          : "unable to prepare: " + count + "stmt Error: 1  sql='" + count +
                "'\n"
                "unable to prepare: select count(*) from eventsstmt Error: 1  sql='select count(*) from events'\n";
  EXPECT_RUN(r, "", err, 0);
  ExpectStoreUnchanged();
  ExpectRequests(EventsRequest("42") + kAllEventsRequest);
}

TEST_P(EventDeletion, EventsThatCanBeListedButNotDeleted) {
  // A view over the rows: counting and listing work, deleting does not.
  disk_.Exec("alter table events rename to kept; create view events as select * from kept");
  before_ = disk_.Dump();
  const RunResult r = Run({"-d", "G1"});
  if (Daemon()) {
    EXPECT_EQ("  Successfully deleted 0 events:  id = G1\n", r.out);
    EXPECT_EQ(Refused({"G1-a", "G1-b", "G1-c"}), r.err);
  } else {
    const std::string remove = "delete from events where reid='G1' or groupId='G1'";
    EXPECT_RUN(r, "", "unable to prepare: " + remove + "stmt Error: 1  sql='" + remove + "'\n", 0);
  }
  ExpectStoreUnchanged();
}

TEST_P(EventDeletion, EventsThatFailWhileCounted) {
  // The view fails at run time, so the count yields no row.
  disk_.Exec(
      "alter table events rename to kept;"
      "create view events as select * from kept where abs(-9223372036854775807 - 1)");
  before_ = disk_.Dump();
  const RunResult r = Run({"-d", "42", "--deleteall"});
  EXPECT_RUN(
      r, "",
      ByPath(": error getting count of events to delete using 'select count(*) from events "
             "where reid='42' or groupId='42''\n"
             "could not free statement, leaking memory\n"
             ": error getting count of events to delete using 'select count(*) from events'\n"
             "could not free statement, leaking memory\n",
             "  Event or groupId not found: 42\n"
             "  No events found...no action taken.\n"),
      0);
  ExpectStoreUnchanged();
}

class EventDeletionOfNothing : public DeletionTest,
                               public ::testing::WithParamInterface<AccessPath> {
 protected:
  void SetUp() override { Prepare(GetParam(), {}); }
};

TEST_P(EventDeletionOfNothing, AllOnAnEmptyTable) {
  const RunResult r = Run({"--deleteall"});
  EXPECT_RUN(r, "", "  No events found...no action taken.\n", 0);
  ExpectStoreUnchanged();
  ExpectRequests(kAllEventsRequest);
}

TEST_P(EventDeletionOfNothing, IdOnAnEmptyTable) {
  const RunResult r = Run({"-d", "42"});
  EXPECT_EQ("", r.out);
  EXPECT_EQ(
      ByPath("  Event or groupId not found:  id = 42\n", "  Event or groupId not found: 42\n"),
      r.err);
  ExpectStoreUnchanged();
  ExpectRequests(EventsRequest("42"));
}

class EventDeletionOfOne : public DeletionTest, public ::testing::WithParamInterface<AccessPath> {
 protected:
  void SetUp() override { Prepare(GetParam(), {Event("42")}); }
};

TEST_P(EventDeletionOfOne, AllIsAlwaysPlural) {
  const RunResult r = Run({"--deleteall"});
  EXPECT_EQ(ByPath("  Successfully deleted all 1 events\n", "  Successfully deleted 1 events\n"),
            r.out);
  EXPECT_EQ("", r.err);
  ExpectStoreWithout({"42"});
  ExpectRequests(kAllEventsRequest + DeleteRequests({"42"}));
}

class EventDeletionOfThree : public DeletionTest, public ::testing::WithParamInterface<AccessPath> {
 protected:
  void SetUp() override { Prepare(GetParam(), {Event("1"), Event("2"), Event("3")}); }
};

TEST_P(EventDeletionOfThree, AllEvents) {
  const RunResult r = Run({"--deleteall"});
  EXPECT_EQ(ByPath("  Successfully deleted all 3 events\n", "  Successfully deleted 3 events\n"),
            r.out);
  EXPECT_EQ("", r.err);
  ExpectStoreWithout({"1", "2", "3"});
  ExpectRequests(kAllEventsRequest + DeleteRequests({"1", "2", "3"}));
}

const auto kBothPaths = BothAccessPaths();
INSTANTIATE_TEST_SUITE_P(BothPaths, EventDeletion, kBothPaths, PathName);
INSTANTIATE_TEST_SUITE_P(BothPaths, EventDeletionOfNothing, kBothPaths, PathName);
INSTANTIATE_TEST_SUITE_P(BothPaths, EventDeletionOfOne, kBothPaths, PathName);
INSTANTIATE_TEST_SUITE_P(BothPaths, EventDeletionOfThree, kBothPaths, PathName);

// ---------------------------------------------------------------------------
// Only over IPC: the daemon refuses or fails requests.

class EventDeletionOverIpc : public DeletionTest {
 protected:
  void SetUp() override { Prepare(AccessPath::kDaemon); }
};

TEST_F(EventDeletionOverIpc, RefusedEventIsReportedAndKept) {
  SandboxOptions options;
  options.streamMgrArgs = "--refuse-delete G1-b";
  const RunResult r = Run({"-d", "G1"}, options);
  EXPECT_RUN(r, "  Successfully deleted 2 events:  id = G1\n", Refused({"G1-b"}), 0);
  ExpectStoreWithout({"G1-a", "G1-c"});
  ExpectRequests(EventsRequest("G1") + DeleteRequests({"G1-a", "G1-b", "G1-c"}));
}

TEST_F(EventDeletionOverIpc, AllRefusedStillPrintsTheSummary) {
  SandboxOptions options;
  options.streamMgrArgs = "--refuse-delete G1-a --refuse-delete G1-b --refuse-delete G1-c";
  const RunResult r = Run({"-d", "G1"}, options);
  EXPECT_EQ("  Successfully deleted 0 events:  id = G1\n", r.out);
  EXPECT_EQ(Refused({"G1-a", "G1-b", "G1-c"}), r.err);
  ExpectStoreUnchanged();
  ExpectRequests(EventsRequest("G1") + DeleteRequests({"G1-a", "G1-b", "G1-c"}));
}

TEST_F(EventDeletionOverIpc, OneLeftOfTwoIsSingular) {
  SandboxOptions options;
  options.streamMgrArgs = "--refuse-delete 42";
  disk_.Exec(Event("9", "42", 1, 1).Insert());
  events_.push_back(Event("9", "42", 1, 1));
  const RunResult r = Run({"-d", "42"}, options);
  EXPECT_EQ("  Successfully deleted 1 event:  id = 42\n", r.out);
  EXPECT_EQ(Refused({"42"}), r.err);
  ExpectStoreWithout({"9"});
}

TEST_F(EventDeletionOverIpc, AllWithRefusals) {
  SandboxOptions options;
  options.streamMgrArgs = "--refuse-delete 7 --refuse-delete G1-a";
  const RunResult r = Run({"--deleteall"}, options);
  EXPECT_EQ("  Successfully deleted 3 events\n", r.out);
  EXPECT_EQ(Refused({"G1-a", "7"}), r.err);
  ExpectStoreWithout({"42", "G1-b", "G1-c"});
  ExpectRequests(kAllEventsRequest + DeleteRequests({"42", "G1-a", "G1-b", "G1-c", "7"}));
}

TEST_F(EventDeletionOverIpc, AllRefusedOnDeleteAllSaysZero) {
  SandboxOptions options;
  options.streamMgrArgs =
      "--refuse-delete 42 --refuse-delete G1-a --refuse-delete G1-b --refuse-delete G1-c "
      "--refuse-delete 7";
  const RunResult r = Run({"--deleteall"}, options);
  EXPECT_EQ("  Successfully deleted 0 events\n", r.out);
  EXPECT_EQ(Refused({"42", "G1-a", "G1-b", "G1-c", "7"}), r.err);
  ExpectStoreUnchanged();
}

TEST_F(EventDeletionOverIpc, DaemonFailingEveryRequestDeletesNothing) {
  SandboxOptions options;
  options.streamMgrArgs = "--fail-requests";
  const RunResult r = Run({"-d", "G1", "--deleteall", "-d", "42"}, options);
  EXPECT_RUN(r, "",
             "  Event or groupId not found: G1\n"
             "  No events found...no action taken.\n"
             "  Event or groupId not found: 42\n",
             0);
  ExpectStoreUnchanged();
  // The store is still whole for a daemon that works.
  const RunResult after = RunDb(disk_, AccessPath::kDaemon, {"-d", "42"});
  EXPECT_EQ("  Successfully deleted 1 event:  id = 42\n", after.out);
  ExpectStoreWithout({"42"});
}

}  // namespace
