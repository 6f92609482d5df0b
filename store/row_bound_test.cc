#include "store/row_bound.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <iostream>
#include <limits>
#include <string>

#include "testing/scratch_dir.h"
#include "testing/stream_capture.h"

namespace {

class RowBoundTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(SQLITE_OK, sqlite3_open(path_.c_str(), &database_));
    Exec("create table t(a); insert into t values (1), (2), (3);");
  }
  void TearDown() override { sqlite3_close(database_); }
  void Exec(const std::string& sql) {
    ASSERT_EQ(SQLITE_OK, sqlite3_exec(database_, sql.c_str(), nullptr, nullptr, nullptr)) << sql;
  }
  uint64_t Bytes(const std::string& path) const {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 ? static_cast<uint64_t>(status.st_size) : 0;
  }

  ScratchDir folder_{"row-bound"};
  std::string path_ = folder_.Path() + "/store.db";
  sqlite3* database_ = nullptr;
  StreamCapture err_{std::cerr};
};

TEST_F(RowBoundTest, MostRowsIsAQuarterOfTheStoresBytes) {
  EXPECT_EQ(Bytes(path_) / 4, MostRowsStoredIn(database_));
}

TEST_F(RowBoundTest, WriteAheadLogCountsToo) {
  Exec("pragma journal_mode = wal; insert into t values (4);");
  ASSERT_GT(Bytes(path_ + "-wal"), 0u);
  EXPECT_EQ((Bytes(path_) + Bytes(path_ + "-wal")) / 4, MostRowsStoredIn(database_));
}

TEST(RowBound, DatabaseWithoutAFileHasNoCap) {
  sqlite3* database = nullptr;
  ASSERT_EQ(SQLITE_OK, sqlite3_open(":memory:", &database));
  EXPECT_EQ(std::numeric_limits<uint64_t>::max(), MostRowsStoredIn(database));
  sqlite3_close(database);
}

TEST_F(RowBoundTest, TableStepsToItsEndAsUnbounded) {
  {
    SQLStatement statement(database_, "select a from t");
    RowBound bound(database_);
    EXPECT_EQ(kStepRow, bound.Step(statement));
    EXPECT_EQ(1, sqlite3_column_int(statement.handle, 0));
    EXPECT_EQ(kStepRow, bound.Step(statement));
    EXPECT_EQ(kStepRow, bound.Step(statement));
    EXPECT_EQ(kStepDone, bound.Step(statement));
    EXPECT_EQ(kStepDone, statement.resultCode);
  }
  EXPECT_EQ("", err_.Text());
}

TEST_F(RowBoundTest, FailedStepIsPassedOn) {
  SQLStatement statement(database_, "select abs(-9223372036854775807 - 1)");
  RowBound bound(database_);
  EXPECT_EQ(SQLITE_ERROR, bound.Step(statement));
  EXPECT_EQ(SQLITE_ERROR, statement.resultCode);
}

// A query that never runs out of rows stands for a store that SQLite keeps
// answering: the loop ends after the most rows the file can hold.
TEST_F(RowBoundTest, EndlessRowsStopAtTheCapAsACorruptStore) {
  const uint64_t most = MostRowsStoredIn(database_);
  SQLStatement statement(
      database_, "with recursive n(i) as (select 1 union all select i + 1 from n) select i from n");
  RowBound bound(database_);
  uint64_t rows = 0;
  while (bound.Step(statement) == kStepRow) {
    ++rows;
    ASSERT_LE(rows, most);
  }
  EXPECT_EQ(most, rows);
  EXPECT_EQ(SQLITE_CORRUPT, statement.resultCode);
  EXPECT_EQ(static_cast<int64_t>(most) + 1, sqlite3_column_int64(statement.handle, 0));
}

}  // namespace
