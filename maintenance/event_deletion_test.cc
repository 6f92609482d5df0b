// The direct path of the deletion handlers on a store of their own, with the
// standard streams captured.
#include "maintenance/event_deletion.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <iostream>
#include <ostream>
#include <string>

#include "cli/tool_context.h"
#include "maintenance/expected_deletion.h"
#include "testing/faults_case_tables.h"
#include "testing/scratch_dir.h"
#include "testing/stream_capture.h"

namespace {

struct Case {
  const char* name;
  std::string sql;  // run on the store first
  const char* id;   // -d ID, or --deleteall for none
  std::string out;
  std::string err;
  const char* left;  // the reids left in order; null when not looked at
};
void PrintTo(const Case& c, std::ostream* out) { *out << c.name; }

const char kAll[] = "42 G1-a G1-b G1-c 7 ";
const char kStored[] =
    "alter table events rename to stored; create view events as select * from stored";

const Case kCases[] = {
    {"OneEventIsSingular", "", "42", Deleted(1, "42"), "", "G1-a G1-b G1-c 7 "},
    {"GroupIsPluralAndCommitted", "", "G1", Deleted(3, "G1"), "", "42 7 "},
    {"NotFoundHasTheIdLabel", "", "99", "", NotFound("99").direct, kAll},
    {"AllEventsCountsWhatItFound", "", nullptr, DeletedAll(5).direct, "", ""},
    {"AllOnEmptyTable", "delete from events", nullptr, "", kNoEventsFound, nullptr},
    {"CountThatCannotBePreparedMakesOneJoinedLine", "", "x'y", "", NotPrepared(CountById("x'y"), 1),
     kAll},
    {"MissingTableMakesOneJoinedLineForAll", "drop table events", nullptr, "",
     NotPrepared("select count(*) from events", 1), nullptr},
    // A view can be counted but not deleted from.
    {"DeleteThatCannotBePreparedMakesOneJoinedLine", kStored, "42", "",
     NotPrepared("delete from events where reid='42' or groupId='42'", 1), nullptr},
    // The view fails while it is stepped, so the count yields no row and the
    // failed step makes finalising report the statement as leaked.
    {"CountWithoutARowIsReportedAndItsStatementLeaks",
     std::string(kStored) + " where abs(-9223372036854775807 - 1)", "42", "",
     ": error getting count of events to delete using 'select count(*) from events where reid='42' or groupId='42''\n"
     "could not free statement, leaking memory\n",
     nullptr},
    {"DeleteAbortedByTriggerKeepsEveryRow",
     "create trigger keep before delete on events begin select raise(abort, 'kept'); end;", nullptr,
     "", kDeleteAllFailed, kAll},
    {"DeleteByIdFailingOnAConstraintKeepsEveryRow",
     "create trigger clash after delete on events begin insert into status values ('version', '2'); end;",
     "G1", "", DeleteByIdFailed("G1"), kAll},
    {"IdMatchingAReidAndAGroupDeletesBoth", "insert into events values ('G1', '')", "G1",
     Deleted(4, "G1"), "", "42 7 "},
};

class EventDeletionDirectTest : public ::testing::TestWithParam<Case> {
 protected:
  void SetUp() override {
    ASSERT_EQ(SQLITE_OK, sqlite3_open(path_.c_str(), &database_));
    Exec(
        "create table events (reid text primary key, groupId text);"
        "insert into events values ('42', ''), ('G1-a', 'G1'), ('G1-b', 'G1'), ('G1-c', 'G1'),"
        " ('7', '');"
        "create table status (name text primary key, value text);"
        "insert into status values ('version', '1');");
    toolContext.database = database_;
    toolContext.running = false;
  }
  void TearDown() override {
    toolContext.database = nullptr;
    sqlite3_close(database_);
  }
  void Exec(const std::string& sql) {
    ASSERT_EQ(SQLITE_OK, sqlite3_exec(database_, sql.c_str(), nullptr, nullptr, nullptr)) << sql;
  }
  // The reids left, in order, as another connection sees them: a deletion
  // only counts once it is committed.
  std::string Reids() const {
    sqlite3* other = nullptr;
    sqlite3_open_v2(path_.c_str(), &other, SQLITE_OPEN_READONLY, nullptr);
    sqlite3_stmt* rows = nullptr;
    sqlite3_prepare_v2(other, "select reid from events order by rowid", -1, &rows, nullptr);
    std::string reids;
    while (rows != nullptr && sqlite3_step(rows) == SQLITE_ROW) {
      reids += std::string(reinterpret_cast<const char*>(sqlite3_column_text(rows, 0))) + " ";
    }
    sqlite3_finalize(rows);
    sqlite3_close(other);
    return reids;
  }

  ScratchDir folder_{"deletion"};
  const std::string path_ = folder_.Path() + "/stream.db";
  sqlite3* database_ = nullptr;
  StreamCapture out_{std::cout};
  StreamCapture err_{std::cerr};
};

TEST_P(EventDeletionDirectTest, SaysWhatItDeleted) {
  const Case& c = GetParam();
  if (!c.sql.empty()) Exec(c.sql);
  if (c.id != nullptr) {
    DeleteEventsById(c.id);
  } else {
    DeleteAllEvents();
  }
  EXPECT_EQ(c.out, out_.Text());
  EXPECT_EQ(c.err, err_.Text());
  if (c.left != nullptr) {
    EXPECT_EQ(c.left, Reids());
  }
}

INSTANTIATE_TEST_SUITE_P(Direct, EventDeletionDirectTest, ::testing::ValuesIn(kCases),
                         CaseName<Case>);

}  // namespace
