#include "store/sql_statement.h"
#include "testing/stream_capture.h"

#include <gtest/gtest.h>

#include <iostream>
#include <sstream>

namespace {

class SQLStatementTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(SQLITE_OK, sqlite3_open(":memory:", &db_));
    ASSERT_EQ(SQLITE_OK, sqlite3_exec(db_, "create table t(a); insert into t values(1),(2);",
                                      nullptr, nullptr, nullptr));
  }
  void TearDown() override { sqlite3_close(db_); }
  sqlite3* db_ = nullptr;
  StreamCapture err_{std::cerr};
};

TEST_F(SQLStatementTest, PreparedStatementStepsRowsThenDone) {
  {
    SQLStatement statement(db_, "select a from t order by a");
    EXPECT_TRUE(statement.prepared);
    EXPECT_EQ(0, statement.resultCode);
    EXPECT_EQ(kStepRow, statement.Step());
    EXPECT_EQ(1, sqlite3_column_int(statement.handle, 0));
    EXPECT_EQ(kStepRow, statement.Step());
    EXPECT_EQ(kStepDone, statement.Step());
  }
  EXPECT_EQ("", err_.Text());
}

TEST_F(SQLStatementTest, QueryWithNoRowsStepsStraightToDone) {
  SQLStatement statement(db_, "select a from t where a > 5");
  EXPECT_EQ(101, statement.Step());
}

TEST_F(SQLStatementTest, FailedPreparationWritesTextWithoutLineEnd) {
  {
    SQLStatement statement(db_, "select nonsense from nowhere");
    EXPECT_FALSE(statement.prepared);
    EXPECT_EQ(SQLITE_ERROR, statement.resultCode);
    EXPECT_EQ(nullptr, statement.handle);
  }
  // Destroying a statement that was never prepared writes nothing more.
  EXPECT_EQ("unable to prepare: select nonsense from nowhere", err_.Text());
}

TEST_F(SQLStatementTest, FinalizingAfterFailedStepReportsLeak) {
  ASSERT_EQ(SQLITE_OK, sqlite3_exec(db_,
                                    "create table u(a not null); create trigger no before delete "
                                    "on t begin select raise(abort, 'kept'); end;",
                                    nullptr, nullptr, nullptr));
  {
    SQLStatement statement(db_, "delete from t");
    EXPECT_TRUE(statement.prepared);
    EXPECT_NE(kStepDone, statement.Step());
  }
  EXPECT_EQ("could not free statement, leaking memory\n", err_.Text());
}

}  // namespace
