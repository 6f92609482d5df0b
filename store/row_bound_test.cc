#include "store/row_bound.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <limits>
#include <string>

#include "store/store_fixture.h"

namespace {

using RowBoundTest = TableTest;

uint64_t Bytes(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 ? static_cast<uint64_t>(status.st_size) : 0;
}

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
    EXPECT_EQ((std::vector<int>{1, 2, 3, kStepDone}),
              Stepped(statement, [&] { return bound.Step(statement); }));
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
