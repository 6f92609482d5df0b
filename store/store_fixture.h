// What the store tests share: stores, and the things a disk from the field
// may hold where a store or another file belongs. Each maker puts its thing at
// `path` and gives the path to open, or "" when it could not make it.
#ifndef STORE_STORE_FIXTURE_H_
#define STORE_STORE_FIXTURE_H_

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <iostream>
#include <string>
#include <vector>

#include "store/sql_statement.h"
#include "testing/scratch_dir.h"
#include "testing/store_folder_listing.h"
#include "testing/stream_capture.h"

using Maker = std::string (*)(const std::string& path);

inline std::string Made(int result, const std::string& path) { return result == 0 ? path : ""; }

inline std::string Missing(const std::string& path) { return path; }
inline std::string Fifo(const std::string& path) { return Made(mkfifo(path.c_str(), 0666), path); }
inline std::string Socket(const std::string& p) { return Made(mknod(p.c_str(), S_IFSOCK, 0), p); }
inline std::string Folder(const std::string& path) { return Made(mkdir(path.c_str(), 0755), path); }
inline std::string Device(const std::string&) { return "/dev/null"; }

// A link at `path` to what `make` puts at `path`-target.
template <Maker make>
std::string LinkTo(const std::string& path) {
  const std::string target = make(path + "-target");
  return target.empty() ? "" : Made(symlink(target.c_str(), path.c_str()), path);
}

// A thing made where a file belongs, and what opening it gives.
struct Opening {
  const char* name;
  Maker make;
  const char* opened;
  int flags = 0;  // added to those of opening a store
};

inline int Exec(sqlite3* database, const std::string& sql) {
  return sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr);
}

// A store holding a table t of 1, 2 and 3.
inline std::string Store(const std::string& path) {
  sqlite3* database = nullptr;
  const bool made = sqlite3_open(path.c_str(), &database) == SQLITE_OK &&
                    Exec(database, "create table t(a); insert into t values (1), (2), (3);") == 0;
  sqlite3_close(database);
  return made ? path : "";
}

// A Store in a folder of the test's own, open, and what the code under test
// writes to standard error.
class TableTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_NE("", Store(path_));
    ASSERT_EQ(SQLITE_OK, sqlite3_open(path_.c_str(), &database_));
  }
  void TearDown() override { sqlite3_close(database_); }
  void Exec(const std::string& sql) { ASSERT_EQ(SQLITE_OK, ::Exec(database_, sql)) << sql; }

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

#endif  // STORE_STORE_FIXTURE_H_
