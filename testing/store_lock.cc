#include "testing/store_lock.h"

#include <gtest/gtest.h>

StoreLock::StoreLock(const std::string& storePath) {
  EXPECT_EQ(SQLITE_OK, sqlite3_open(storePath.c_str(), &writer_)) << storePath;
  EXPECT_EQ(SQLITE_OK, sqlite3_exec(writer_, "begin exclusive", nullptr, nullptr, nullptr))
      << sqlite3_errmsg(writer_);
}

StoreLock::~StoreLock() {
  sqlite3_exec(writer_, "rollback", nullptr, nullptr, nullptr);
  sqlite3_close(writer_);
}
