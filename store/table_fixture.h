// A store in a folder of the test's own holding a table t of 1, 2 and 3, and
// what the code under test writes to standard error.
#ifndef STORE_TABLE_FIXTURE_H_
#define STORE_TABLE_FIXTURE_H_

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <iostream>
#include <string>
#include <vector>

#include "store/sql_statement.h"
#include "testing/scratch_dir.h"
#include "testing/stream_capture.h"

class TableTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(SQLITE_OK, sqlite3_open(path_.c_str(), &database_));
    Exec("create table t(a); insert into t values (1), (2), (3);");
  }
  void TearDown() override { sqlite3_close(database_); }
  void Exec(const std::string& sql) {
    ASSERT_EQ(SQLITE_OK, sqlite3_exec(database_, sql.c_str(), nullptr, nullptr, nullptr)) << sql;
  }

  ScratchDir folder_{"db-table"};
  std::string path_ = folder_.Path() + "/store.db";
  sqlite3* database_ = nullptr;
  StreamCapture err_{std::cerr};
};

// Steps `statement` by `step` as long as rows come: the first column of each
// row, then the result code that ended the rows.
template <typename Step>
std::vector<int> Stepped(const SQLStatement& statement, Step step) {
  std::vector<int> steps;
  for (int code = step();; code = step()) {
    steps.push_back(code == kStepRow ? sqlite3_column_int(statement.handle, 0) : code);
    if (code != kStepRow) return steps;
  }
}

#endif  // STORE_TABLE_FIXTURE_H_
