// Rows of events become records by column name, whatever the table's shape.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <string>

#include "recorder/stream_db.h"
#include "store/sql_statement.h"

namespace {

class EventRecords : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(SQLITE_OK, sqlite3_open(":memory:", &database_)); }
  void TearDown() override { sqlite3_close(database_); }

  // Loads the first row that `sql` selects.
  StreamMgrApi::EventRecordItem Load(const std::string& sql) {
    SQLStatement statement(database_, sql);
    EXPECT_TRUE(statement.prepared) << sql;
    EXPECT_EQ(SQLITE_ROW, statement.Step()) << sql;
    return StreamDB::LoadEventInfoFromStatement(statement);
  }

  void Exec(const char* sql) {
    ASSERT_EQ(SQLITE_OK, sqlite3_exec(database_, sql, nullptr, nullptr, nullptr)) << sql;
  }

  sqlite3* database_ = nullptr;
};

TEST_F(EventRecords, EveryColumnTheTableShows) {
  const StreamMgrApi::EventRecordItem e = Load(
      "select 'r1' as reid, 1 as state, 3 as splitstate, 1 as crcode1, 3 as crcode2, "
      "10 as starttick, 1704164645 as starttime, 1704168245 as exporttime, 20 as stoptick, "
      "1704164745 as stoptime, 1 as background, 4 as totalfiles, 'G' as groupId, 2 as part, "
      "3 as totalparts, '[[\"Q1\",\"A1\"],[\"Q2\",\"A2\"]]' as answers");
  EXPECT_EQ("r1", e.reid.GetValue());
  EXPECT_EQ(StreamMgrApi::EVENT_TRANSFERRED, e.state);
  EXPECT_EQ(StreamMgrApi::SPLIT_ALREADY_SPLIT, e.splitState);
  EXPECT_EQ(StreamMgrApi::CR_CODE_C, e.crCode1);
  EXPECT_EQ(StreamMgrApi::CR_CODE_K, e.crCode2);
  EXPECT_EQ(10u, e.startTick.GetValue());
  EXPECT_EQ(1704164645, e.startTime.GetValue());
  EXPECT_EQ(1704168245, e.exportTime.GetValue());
  EXPECT_EQ(20u, e.stopTick.GetValue());
  EXPECT_EQ(1704164745, e.stopTime.GetValue());
  EXPECT_TRUE(e.background.GetValue());
  EXPECT_EQ(4u, e.totalFiles.GetValue());
  EXPECT_EQ("G", e.groupId.GetValue());
  EXPECT_EQ(2u, e.part.GetValue());
  EXPECT_EQ(3u, e.totalParts.GetValue());
  ASSERT_EQ(2u, e.answers.entries.size());
  EXPECT_EQ("Q1", e.answers.entries[0].question.GetValue());
  EXPECT_EQ("A1", e.answers.entries[0].answer.GetValue());
  EXPECT_EQ("A2", e.answers.entries[1].answer.GetValue());
}

TEST_F(EventRecords, NamesMatchWithoutRegardToCaseAndOrder) {
  const StreamMgrApi::EventRecordItem e =
      Load("select 'x' as unknown, 5 as PART, 'g' as GROUPID, 'r' as ReId");
  EXPECT_EQ("r", e.reid.GetValue());
  EXPECT_EQ("g", e.groupId.GetValue());
  EXPECT_EQ(5u, e.part.GetValue());
}

TEST_F(EventRecords, EachStatementLoadsByItsOwnColumnsWhereverSQLitePlacesIt) {
  // Each statement may well reuse the memory of the one before it.
  for (int i = 0; i < 3; ++i) {
    const StreamMgrApi::EventRecordItem first = Load("select 'r' as reid, 5 as part");
    EXPECT_EQ("r", first.reid.GetValue());
    EXPECT_EQ(5u, first.part.GetValue());
    const StreamMgrApi::EventRecordItem second = Load("select 'g' as groupid, 'q' as reid");
    EXPECT_EQ("q", second.reid.GetValue());
    EXPECT_EQ("g", second.groupId.GetValue());
    EXPECT_EQ(0u, second.part.GetValue());
  }
}

TEST_F(EventRecords, AStatementCompiledAfreshLoadsByItsNewColumns) {
  Exec("create table t (reid, part); insert into t values ('r', 5)");
  SQLStatement statement(database_, "select * from t");
  ASSERT_EQ(SQLITE_ROW, statement.Step());
  EXPECT_EQ(5u, StreamDB::LoadEventInfoFromStatement(statement).part.GetValue());
  ASSERT_EQ(SQLITE_DONE, statement.Step());
  // Stepping on runs the statement again, compiled for the table as it now is.
  Exec("alter table t rename column part to totalparts");
  ASSERT_EQ(SQLITE_ROW, statement.Step());
  const StreamMgrApi::EventRecordItem e = StreamDB::LoadEventInfoFromStatement(statement);
  EXPECT_EQ(0u, e.part.GetValue());
  EXPECT_EQ(5u, e.totalParts.GetValue());
}

TEST_F(EventRecords, AStatementRunAgainAndAnExplainWhereItWasLoadTheirOwnRows) {
  Exec("create table t (reid, part); insert into t values ('r', 5), ('s', 6)");
  for (int i = 0; i < 3; ++i) {
    {
      SQLStatement statement(database_, "select * from t");
      for (int run = 0; run < 2; ++run) {
        ASSERT_EQ(SQLITE_ROW, statement.Step());
        EXPECT_EQ("r", StreamDB::LoadEventInfoFromStatement(statement).reid.GetValue());
        ASSERT_EQ(SQLITE_ROW, statement.Step());
        EXPECT_EQ(6u, StreamDB::LoadEventInfoFromStatement(statement).part.GetValue());
        ASSERT_EQ(SQLITE_DONE, statement.Step());
      }
    }
    // Rows of another shape, from a statement that does not count its runs.
    SQLStatement explain(database_, "explain select * from t");
    ASSERT_EQ(SQLITE_ROW, explain.Step());
    const StreamMgrApi::EventRecordItem e = StreamDB::LoadEventInfoFromStatement(explain);
    EXPECT_EQ("", e.reid.GetValue());
    EXPECT_EQ(0u, e.part.GetValue());
  }
}

TEST_F(EventRecords, EveryRowOfAStatementLoadsAsItWouldAlone) {
  // Integer columns holding NULL, text, and values at and past the 32-bit
  // and 64-bit limits, each row loaded from one statement over all of them
  // and again from a statement that selects that row alone.
  const char* const values[] = {"NULL",
                                "'12abc'",
                                "'none'",
                                "''",
                                "-1",
                                "0",
                                "2147483647",
                                "2147483648",
                                "4294967295",
                                "4294967296",
                                "-2147483648",
                                "-2147483649",
                                "9223372036854775807",
                                "(-9223372036854775807 - 1)",
                                "1.5e300",
                                "X'3132'",
                                "' 42'",
                                "'0x10'"};
  std::string all;
  for (const char* value : values) {
    const std::string row = std::string("select 'r' as reid, ") + value + " as state, " + value +
                            " as starttime, " + value + " as exporttime, " + value +
                            " as stoptick, " + value + " as part, " + value + " as crcode1";
    all += (all.empty() ? "" : " union all ") + row;
  }
  SQLStatement statement(database_, all);
  ASSERT_TRUE(statement.prepared);
  for (const char* value : values) {
    ASSERT_EQ(SQLITE_ROW, statement.Step()) << value;
    const StreamMgrApi::EventRecordItem many = StreamDB::LoadEventInfoFromStatement(statement);
    const StreamMgrApi::EventRecordItem alone =
        Load(std::string("select 'r' as reid, ") + value + " as state, " + value +
             " as starttime, " + value + " as exporttime, " + value + " as stoptick, " + value +
             " as part, " + value + " as crcode1");
    EXPECT_EQ(alone.state, many.state) << value;
    EXPECT_EQ(alone.startTime.GetValue(), many.startTime.GetValue()) << value;
    EXPECT_EQ(alone.exportTime.GetValue(), many.exportTime.GetValue()) << value;
    EXPECT_EQ(alone.stopTick.GetValue(), many.stopTick.GetValue()) << value;
    EXPECT_EQ(alone.part.GetValue(), many.part.GetValue()) << value;
    EXPECT_EQ(alone.crCode1, many.crCode1) << value;
  }
  EXPECT_EQ(SQLITE_DONE, statement.Step());
}

TEST_F(EventRecords, NullAndMissingColumnsReadAsZeroOrEmpty) {
  const StreamMgrApi::EventRecordItem e =
      Load("select NULL as reid, NULL as state, NULL as starttime, NULL as answers");
  EXPECT_EQ("", e.reid.GetValue());
  EXPECT_EQ(StreamMgrApi::EVENT_RECORD_COMPLETE, e.state);
  EXPECT_EQ(0, e.startTime.GetValue());
  EXPECT_EQ(0u, e.totalParts.GetValue());
  EXPECT_EQ("", e.groupId.GetValue());
  EXPECT_TRUE(e.answers.entries.empty());
}

TEST_F(EventRecords, TextInIntegerColumnsAndWideIntegers) {
  const StreamMgrApi::EventRecordItem e = Load(
      "select '12abc' as starttick, 'none' as part, -1 as totalfiles, 4294967301 as stoptick, "
      "-5 as exporttime, 9 as state");
  EXPECT_EQ(12u, e.startTick.GetValue());
  EXPECT_EQ(0u, e.part.GetValue());
  EXPECT_EQ(4294967295u, e.totalFiles.GetValue());
  EXPECT_EQ(5u, e.stopTick.GetValue());
  EXPECT_EQ(-5, e.exportTime.GetValue());
  EXPECT_EQ(9u, static_cast<uint32_t>(e.state));
}

TEST_F(EventRecords, AnswersThatAreNotPairsOfText) {
  EXPECT_TRUE(Load("select '' as answers").answers.entries.empty());
  EXPECT_TRUE(Load("select '[]' as answers").answers.entries.empty());
  EXPECT_TRUE(Load("select 'not json' as answers").answers.entries.empty());
  EXPECT_TRUE(Load("select '{\"a\":[\"b\",\"c\"]}' as answers").answers.entries.empty());
  const StreamMgrApi::EventRecordItem numbers = Load("select '[[1,2.5],[\"q\"]]' as answers");
  ASSERT_EQ(2u, numbers.answers.entries.size());
  EXPECT_EQ("2.5", numbers.answers.entries[0].answer.GetValue());
  EXPECT_EQ("", numbers.answers.entries[1].answer.GetValue());
}

}  // namespace
