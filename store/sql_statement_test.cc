#include "store/sql_statement.h"

#include "store/store_fixture.h"

namespace {

using SQLStatementTest = TableTest;

TEST_F(SQLStatementTest, PreparedStatementStepsRowsThenDone) {
  {
    SQLStatement statement(database_, "select a from t order by a");
    EXPECT_EQ(std::make_pair(true, 0), std::make_pair(statement.prepared, statement.resultCode));
    EXPECT_EQ((std::vector<int>{1, 2, 3, kStepDone}),
              Stepped(statement, [&] { return statement.Step(); }));
  }
  EXPECT_EQ("", err_.Text());
}

TEST_F(SQLStatementTest, QueryWithNoRowsStepsStraightToDone) {
  SQLStatement statement(database_, "select a from t where a > 5");
  EXPECT_EQ(101, statement.Step());
}

TEST_F(SQLStatementTest, FailedPreparationWritesTextWithoutLineEnd) {
  {
    SQLStatement statement(database_, "select nonsense from nowhere");
    EXPECT_EQ(std::make_tuple(false, SQLITE_ERROR, nullptr),
              std::make_tuple(statement.prepared, statement.resultCode, statement.handle));
  }
  // Destroying a statement that was never prepared writes nothing more.
  EXPECT_EQ("unable to prepare: select nonsense from nowhere", err_.Text());
}

TEST_F(SQLStatementTest, FinalizingAfterFailedStepReportsLeak) {
  Exec("create trigger no before delete on t begin select raise(abort, 'kept'); end;");
  {
    SQLStatement statement(database_, "delete from t");
    EXPECT_TRUE(statement.prepared);
    EXPECT_NE(kStepDone, statement.Step());
  }
  EXPECT_EQ("could not free statement, leaking memory\n", err_.Text());
}

}  // namespace
