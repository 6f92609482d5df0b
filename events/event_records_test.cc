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
