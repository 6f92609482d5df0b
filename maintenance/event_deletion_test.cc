// The direct path of the deletion handlers on a store of their own, with the
// standard streams captured.
#include "maintenance/event_deletion.h"

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string>

#include "cli/tool_context.h"
#include "testing/stream_capture.h"

namespace {

class EventDeletionDirectTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char name[] = "/tmp/deletion.XXXXXX";
    const int fd = mkstemp(name);
    ASSERT_GE(fd, 0);
    close(fd);
    path_ = name;
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
    unlink(path_.c_str());
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

  sqlite3* database_ = nullptr;
  std::string path_;
  StreamCapture out_{std::cout};
  StreamCapture err_{std::cerr};
};

TEST_F(EventDeletionDirectTest, OneEventIsSingular) {
  DeleteEventsById("42");
  EXPECT_EQ("  Successfully deleted 1 event:  id = 42\n", out_.Text());
  EXPECT_EQ("", err_.Text());
  EXPECT_EQ("G1-a G1-b G1-c 7 ", Reids());
}

TEST_F(EventDeletionDirectTest, GroupIsPluralAndCommitted) {
  DeleteEventsById("G1");
  EXPECT_EQ("  Successfully deleted 3 events:  id = G1\n", out_.Text());
  EXPECT_EQ("", err_.Text());
  EXPECT_EQ("42 7 ", Reids());
}

TEST_F(EventDeletionDirectTest, NotFoundHasTheIdLabel) {
  DeleteEventsById("99");
  EXPECT_EQ("", out_.Text());
  EXPECT_EQ("  Event or groupId not found:  id = 99\n", err_.Text());
  EXPECT_EQ("42 G1-a G1-b G1-c 7 ", Reids());
}

TEST_F(EventDeletionDirectTest, AllEventsCountsWhatItFound) {
  DeleteAllEvents();
  EXPECT_EQ("  Successfully deleted all 5 events\n", out_.Text());
  EXPECT_EQ("", err_.Text());
  EXPECT_EQ("", Reids());
}

TEST_F(EventDeletionDirectTest, AllOnEmptyTable) {
  Exec("delete from events");
  DeleteAllEvents();
  EXPECT_EQ("", out_.Text());
  EXPECT_EQ("  No events found...no action taken.\n", err_.Text());
}

TEST_F(EventDeletionDirectTest, CountThatCannotBePreparedMakesOneJoinedLine) {
  DeleteEventsById("x'y");
  const std::string sql = "select count(*) from events where reid='x'y' or groupId='x'y'";
  EXPECT_EQ("unable to prepare: " + sql + "stmt Error: 1  sql='" + sql + "'\n", err_.Text());
  EXPECT_EQ("", out_.Text());
  EXPECT_EQ("42 G1-a G1-b G1-c 7 ", Reids());
}

TEST_F(EventDeletionDirectTest, MissingTableMakesOneJoinedLineForAll) {
  Exec("drop table events");
  DeleteAllEvents();
  EXPECT_EQ(
      "unable to prepare: select count(*) from eventsstmt Error: 1  sql='select count(*) from events'\n",
      err_.Text());
  EXPECT_EQ("", out_.Text());
}

TEST_F(EventDeletionDirectTest, DeleteThatCannotBePreparedMakesOneJoinedLine) {
  // A view can be counted but not deleted from.
  Exec("alter table events rename to stored; create view events as select * from stored");
  DeleteEventsById("42");
  const std::string sql = "delete from events where reid='42' or groupId='42'";
  EXPECT_EQ("unable to prepare: " + sql + "stmt Error: 1  sql='" + sql + "'\n", err_.Text());
  EXPECT_EQ("", out_.Text());
}

TEST_F(EventDeletionDirectTest, CountWithoutARowIsReportedAndItsStatementLeaks) {
  // The view fails while it is stepped, so the count yields no row and the
  // failed step makes finalising report the statement as leaked.
  Exec(
      "alter table events rename to stored;"
      "create view events as select * from stored where abs(-9223372036854775807 - 1)");
  DeleteEventsById("42");
  EXPECT_EQ(
      ": error getting count of events to delete using 'select count(*) from events where reid='42' or groupId='42''\n"
      "could not free statement, leaking memory\n",
      err_.Text());
  EXPECT_EQ("", out_.Text());
}

TEST_F(EventDeletionDirectTest, DeleteAbortedByTriggerKeepsEveryRow) {
  Exec("create trigger keep before delete on events begin select raise(abort, 'kept'); end;");
  DeleteAllEvents();
  EXPECT_EQ("", out_.Text());
  EXPECT_EQ("  Error deleting all events\ncould not free statement, leaking memory\n", err_.Text());
  EXPECT_EQ("42 G1-a G1-b G1-c 7 ", Reids());
}

TEST_F(EventDeletionDirectTest, DeleteByIdFailingOnAConstraintKeepsEveryRow) {
  Exec(
      "create trigger clash after delete on events begin insert into status values ('version', "
      "'2'); end;");
  DeleteEventsById("G1");
  EXPECT_EQ("", out_.Text());
  EXPECT_EQ(
      "  Error deleting event or groupId:  id = G1\ncould not free statement, leaking memory\n",
      err_.Text());
  EXPECT_EQ("42 G1-a G1-b G1-c 7 ", Reids());
}

TEST_F(EventDeletionDirectTest, IdMatchingAReidAndAGroupDeletesBoth) {
  Exec("insert into events values ('G1', '')");
  DeleteEventsById("G1");
  EXPECT_EQ("  Successfully deleted 4 events:  id = G1\n", out_.Text());
  EXPECT_EQ("42 7 ", Reids());
}

}  // namespace
