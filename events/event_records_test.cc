// Rows of events become records by column name, whatever the table's shape.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <sstream>
#include <string>
#include <vector>

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

// A record as one line, in the order of the table's columns: reid, state,
// split state, the two codes, start tick and time, export time, stop tick and
// time, background, files, group, part, total parts, then each answer as
// question=answer.
std::string Fields(const StreamMgrApi::EventRecordItem& e) {
  std::ostringstream line;
  line << e.reid.GetValue() << ' ' << e.state << ' ' << e.splitState << ' ' << e.crCode1 << ' '
       << e.crCode2 << ' ' << e.startTick.GetValue() << ' ' << e.startTime.GetValue() << ' '
       << e.exportTime.GetValue() << ' ' << e.stopTick.GetValue() << ' ' << e.stopTime.GetValue()
       << ' ' << e.background.GetValue() << ' ' << e.totalFiles.GetValue() << ' '
       << e.groupId.GetValue() << ' ' << e.part.GetValue() << ' ' << e.totalParts.GetValue();
  for (const StreamMgrApi::EventAnswerItem& answer : e.answers.entries) {
    line << ' ' << answer.question.GetValue() << '=' << answer.answer.GetValue();
  }
  return line.str();
}

TEST_F(EventRecords, EveryColumnTheTableShows) {
  EXPECT_EQ(
      "r1 1 3 1 3 10 1704164645 1704168245 20 1704164745 1 4 G 2 3 Q1=A1 Q2=A2",
      Fields(Load("select 'r1' as reid, 1 as state, 3 as splitstate, 1 as crcode1, 3 as crcode2, "
                  "10 as starttick, 1704164645 as starttime, 1704168245 as exporttime, "
                  "20 as stoptick, 1704164745 as stoptime, 1 as background, 4 as totalfiles, "
                  "'G' as groupId, 2 as part, 3 as totalparts, "
                  "'[[\"Q1\",\"A1\"],[\"Q2\",\"A2\"]]' as answers")));
}

TEST_F(EventRecords, NamesMatchWithoutRegardToCaseAndOrder) {
  EXPECT_EQ("r 0 0 0 0 0 0 0 0 0 0 0 g 5 0",
            Fields(Load("select 'x' as unknown, 5 as PART, 'g' as GROUPID, 'r' as ReId")));
}

TEST_F(EventRecords, EachStatementLoadsByItsOwnColumnsWhereverSQLitePlacesIt) {
  // Each statement may well reuse the memory of the one before it.
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ("r 0 0 0 0 0 0 0 0 0 0 0  5 0", Fields(Load("select 'r' as reid, 5 as part")));
    EXPECT_EQ("q 0 0 0 0 0 0 0 0 0 0 0 g 0 0", Fields(Load("select 'g' as groupid, 'q' as reid")));
  }
}

// Steps `statement` to its next row and loads it; fails the test when there
// is none.
std::string NextRow(SQLStatement& statement) {
  EXPECT_EQ(SQLITE_ROW, statement.Step());
  return Fields(StreamDB::LoadEventInfoFromStatement(statement));
}

TEST_F(EventRecords, AStatementCompiledAfreshLoadsByItsNewColumns) {
  Exec("create table t (reid, part); insert into t values ('r', 5)");
  SQLStatement statement(database_, "select * from t");
  EXPECT_EQ("r 0 0 0 0 0 0 0 0 0 0 0  5 0", NextRow(statement));
  ASSERT_EQ(SQLITE_DONE, statement.Step());
  // Stepping on runs the statement again, compiled for the table as it now is.
  Exec("alter table t rename column part to totalparts");
  EXPECT_EQ("r 0 0 0 0 0 0 0 0 0 0 0  0 5", NextRow(statement));
}

TEST_F(EventRecords, AStatementRunAgainAndAnExplainWhereItWasLoadTheirOwnRows) {
  Exec("create table t (reid, part); insert into t values ('r', 5), ('s', 6)");
  for (int i = 0; i < 3; ++i) {
    {
      SQLStatement statement(database_, "select * from t");
      for (int run = 0; run < 2; ++run) {
        EXPECT_EQ("r 0 0 0 0 0 0 0 0 0 0 0  5 0", NextRow(statement));
        EXPECT_EQ("s 0 0 0 0 0 0 0 0 0 0 0  6 0", NextRow(statement));
        ASSERT_EQ(SQLITE_DONE, statement.Step());
      }
    }
    // Rows of another shape, from a statement that does not count its runs.
    SQLStatement explain(database_, "explain select * from t");
    const std::string row = NextRow(explain);
    EXPECT_EQ(0u, row.find(" 0 ")) << row;                 // no reid
    EXPECT_EQ(" 0 0", row.substr(row.size() - 4)) << row;  // nor parts
  }
}

// A row with `value` in the integer columns state, starttime, exporttime,
// stoptick, part and crcode1.
std::string Row(const std::string& value) {
  return "select 'r' as reid, " + value + " as state, " + value + " as starttime, " + value +
         " as exporttime, " + value + " as stoptick, " + value + " as part, " + value +
         " as crcode1";
}

TEST_F(EventRecords, EveryRowOfAStatementLoadsAsItWouldAlone) {
  // Integer columns holding NULL, text, and values at and past the 32-bit
  // and 64-bit limits, each row loaded from one statement over all of them
  // and again from a statement that selects that row alone.
  std::vector<std::string> values;
  std::istringstream texts(
      "NULL|'12abc'|'none'|''|-1|0|2147483647|2147483648|4294967295|4294967296|-2147483648|"
      "-2147483649|9223372036854775807|(-9223372036854775807 - 1)|1.5e300|X'3132'|' 42'|'0x10'");
  for (std::string text; std::getline(texts, text, '|');) values.push_back(text);
  std::string all;
  for (const std::string& value : values) {
    all += (all.empty() ? "" : " union all ") + Row(value);
  }
  SQLStatement statement(database_, all);
  ASSERT_TRUE(statement.prepared);
  for (const std::string& value : values) {
    EXPECT_EQ(Fields(Load(Row(value))), NextRow(statement)) << value;
  }
  EXPECT_EQ(SQLITE_DONE, statement.Step());
}

TEST_F(EventRecords, NullAndMissingColumnsReadAsZeroOrEmpty) {
  EXPECT_EQ(" 0 0 0 0 0 0 0 0 0 0 0  0 0",
            Fields(Load("select NULL as reid, NULL as state, NULL as starttime, NULL as answers")));
}

TEST_F(EventRecords, TextInIntegerColumnsAndWideIntegers) {
  EXPECT_EQ(" 9 0 0 0 12 0 -5 5 0 0 4294967295  0 0",
            Fields(Load("select '12abc' as starttick, 'none' as part, -1 as totalfiles, "
                        "4294967301 as stoptick, -5 as exporttime, 9 as state")));
}

TEST_F(EventRecords, AnswersThatAreNotPairsOfText) {
  for (const char* answers : {"''", "'[]'", "'not json'", "'{\"a\":[\"b\",\"c\"]}'"}) {
    EXPECT_TRUE(Load(std::string("select ") + answers + " as answers").answers.entries.empty())
        << answers;
  }
  EXPECT_EQ(" 0 0 0 0 0 0 0 0 0 0 0  0 0 1=2.5 q=",
            Fields(Load("select '[[1,2.5],[\"q\"]]' as answers")));
}

}  // namespace
