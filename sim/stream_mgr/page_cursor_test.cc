#include "sim/stream_mgr/page_cursor.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

TEST(SplitPagedText, TakesTheTextAsTheToolWritesIt) {
  PagedText paged;
  ASSERT_TRUE(
      SplitPagedText("select * from streamfiles where number like '%' order by number asc "
                     "limit 1000 offset 25000",
                     paged));
  EXPECT_EQ("select * from streamfiles where number like '%' order by number asc", paged.query);
  EXPECT_EQ(1000u, paged.limit);
  EXPECT_EQ(25000u, paged.offset);
}

TEST(SplitPagedText, RefusesAnythingElse) {
  PagedText paged;
  for (const char* sql : {
           "select * from t",
           "select * from t limit 1000",
           "select * from t offset 5",
           "select * from t LIMIT 1000 OFFSET 0",
           "select * from t limit 1000  offset 0",
           "select * from t limit 1000 offset 0 ",
           "select * from t limit 1000 offset 0;",
           "select * from t limit -1 offset 0",
           "select * from t limit 0 offset 0",
           "select * from t limit +5 offset 0",
           "select * from t limit 1000 offset x",
           "select * from t limit 1000 offset 1e3",
           "select * from t limit 1000 offset 9999999999999999999",
           "select * from t -- limit 1000 offset 0",
           "select * from t /* limit 1000 offset 0",
           "select * /* */ from t limit 1000 offset 0",
       }) {
    EXPECT_FALSE(SplitPagedText(sql, paged)) << sql;
  }
}

class PageCursorTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(SQLITE_OK, sqlite3_open(":memory:", &db_));
    Exec(
        "create table t (id integer primary key, v text, w integer);"
        "with recursive n(i) as (select 1 union all select i + 1 from n where i < 2500) "
        "insert into t select i, 'v' || i, i % 7 from n;");
  }
  void TearDown() override {
    cursor_.Drop();
    sqlite3_close(db_);
  }
  void Exec(const std::string& sql) {
    ASSERT_EQ(SQLITE_OK, sqlite3_exec(db_, sql.c_str(), nullptr, nullptr, nullptr)) << sql;
  }
  static std::string Row(SQLStatement& statement) {
    std::string row;
    for (int i = 0; i < sqlite3_column_count(statement.handle); ++i) {
      const unsigned char* text = sqlite3_column_text(statement.handle, i);
      row += (text == nullptr ? "NULL" : reinterpret_cast<const char*>(text)) + std::string("|");
    }
    return row;
  }
  // The rows of `sql` run on its own.
  std::vector<std::string> Afresh(const std::string& sql) {
    std::vector<std::string> rows;
    SQLStatement statement(db_, sql);
    while (statement.prepared && statement.Step() == kStepRow) rows.push_back(Row(statement));
    return rows;
  }
  static std::string Page(const std::string& query, int offset) {
    return query + " limit 1000 offset " + std::to_string(offset);
  }

  sqlite3* db_ = nullptr;
  PageCursor cursor_;
};

TEST_F(PageCursorTest, PagesAreThoseOfTheTextsRunAfresh) {
  for (const std::string query : {"select * from t", "select * from t order by id asc",
                                  "select v, id from t where w like '%3%' order by id desc",
                                  "select * from t where id > 100 union all select * from t",
                                  "select * from t where id in (select id + 3 from t)"}) {
    ASSERT_TRUE(cursor_.Open(db_, HostIpc::kFiles, Page(query, 0))) << query;
    size_t total = 0;
    for (int offset = 0;; offset += 1000) {
      const std::string sql = Page(query, offset);
      if (offset > 0) {
        if (!cursor_.Continues(HostIpc::kFiles, sql)) {
          EXPECT_FALSE(cursor_.IsOpen()) << query << offset;
          EXPECT_TRUE(Afresh(sql).empty()) << query << offset;
          break;
        }
      }
      std::vector<std::string> rows;
      ASSERT_TRUE(cursor_.NextPage(rows, Row));
      EXPECT_EQ(Afresh(sql), rows) << query << " " << offset;
      total += rows.size();
    }
    EXPECT_EQ(Afresh(query).size(), total) << query;
  }
}

TEST_F(PageCursorTest, RowsThatEndWithAFullPageLeaveTheLastPageEmpty) {
  Exec("delete from t where id > 2000");
  ASSERT_TRUE(cursor_.Open(db_, HostIpc::kEvents, Page("select * from t", 0)));
  std::vector<std::string> rows;
  ASSERT_TRUE(cursor_.NextPage(rows, Row));
  ASSERT_TRUE(cursor_.Continues(HostIpc::kEvents, Page("select * from t", 1000)));
  ASSERT_TRUE(cursor_.NextPage(rows, Row));
  EXPECT_EQ(2000u, rows.size());
  ASSERT_TRUE(cursor_.Continues(HostIpc::kEvents, Page("select * from t", 2000)));
  std::vector<std::string> last;
  ASSERT_TRUE(cursor_.NextPage(last, Row));
  EXPECT_TRUE(last.empty());
  EXPECT_FALSE(cursor_.IsOpen());
}

TEST_F(PageCursorTest, OnlyTheNextPageOfTheSameRequestContinues) {
  const std::string query = "select * from t";
  ASSERT_TRUE(cursor_.Open(db_, HostIpc::kFiles, Page(query, 0)));
  std::vector<std::string> rows;
  ASSERT_TRUE(cursor_.NextPage(rows, Row));
  EXPECT_TRUE(cursor_.Continues(HostIpc::kFiles, Page(query, 1000)));
  EXPECT_FALSE(cursor_.Continues(HostIpc::kEvents, Page(query, 1000)));
  EXPECT_FALSE(cursor_.Continues(HostIpc::kFiles, Page(query, 0)));
  EXPECT_FALSE(cursor_.Continues(HostIpc::kFiles, Page(query, 2000)));
  EXPECT_FALSE(cursor_.Continues(HostIpc::kFiles, query + " limit 999 offset 1000"));
  EXPECT_FALSE(cursor_.Continues(HostIpc::kFiles, Page("select * from t ", 1000)));
  EXPECT_FALSE(cursor_.Continues(HostIpc::kFiles, query));
}

TEST_F(PageCursorTest, NotOpenedWhereTheRowsCouldComeInAnotherOrder) {
  for (const std::string query : {
           "select * from t order by w",             // sorted: ties may fall either way
           "select distinct w from t",               // DISTINCT keeps a b-tree
           "select w, count(*) from t group by w",   // so does GROUP BY without an index
           "select * from t union select * from t",  // UNION too
       }) {
    EXPECT_FALSE(cursor_.Open(db_, HostIpc::kFiles, Page(query, 0))) << query;
    EXPECT_FALSE(cursor_.IsOpen()) << query;
  }
}

TEST_F(PageCursorTest, NotOpenedForAnythingButTheFirstPageOfOneReadOnlyQuery) {
  EXPECT_FALSE(cursor_.Open(db_, HostIpc::kFiles, Page("select * from t", 1000)));
  EXPECT_FALSE(cursor_.Open(db_, HostIpc::kFiles, "select * from t"));
  EXPECT_FALSE(cursor_.Open(db_, HostIpc::kFiles, Page("select 1; select * from t", 0)));
  EXPECT_FALSE(cursor_.Open(db_, HostIpc::kFiles, Page("select * from nowhere", 0)));
  EXPECT_FALSE(cursor_.Open(db_, HostIpc::kFiles, Page("delete from t where id > 0", 0)));
  EXPECT_FALSE(cursor_.Open(db_, HostIpc::kFiles, Page("update t set w = 0", 0)));
  EXPECT_EQ(2500u, Afresh("select * from t where w >= 0").size());
  EXPECT_EQ(2500u - 2500u / 7, Afresh("select * from t where w > 0").size());
}

TEST_F(PageCursorTest, DroppedCursorReleasesTheStore) {
  ASSERT_TRUE(cursor_.Open(db_, HostIpc::kFiles, Page("select * from t", 0)));
  std::vector<std::string> rows;
  ASSERT_TRUE(cursor_.NextPage(rows, Row));
  cursor_.Drop();
  EXPECT_FALSE(cursor_.IsOpen());
  // No statement is left pending on the connection.
  EXPECT_EQ(nullptr, sqlite3_next_stmt(db_, nullptr));
}

}  // namespace
