// One prepared SQLite statement, finalised when it goes out of scope. The
// caller steps the handle itself and keeps each step's result in resultCode.
#ifndef STORE_SQL_STATEMENT_H_
#define STORE_SQL_STATEMENT_H_

#include <sqlite3.h>

#include <string>

constexpr int kStepRow = SQLITE_ROW;    // 100
constexpr int kStepDone = SQLITE_DONE;  // 101

class SQLStatement {
 public:
  // Prepares `sql`; on failure writes "unable to prepare: " and the SQL to
  // standard error with no line end, so the caller's message continues it.
  SQLStatement(sqlite3* database, std::string sql);
  ~SQLStatement();
  SQLStatement(const SQLStatement&) = delete;
  SQLStatement& operator=(const SQLStatement&) = delete;

  // Steps once and keeps the result in resultCode.
  int Step() { return resultCode = sqlite3_step(handle); }

  sqlite3_stmt* handle = nullptr;
  int resultCode = 0;
  bool prepared = false;
};

#endif  // STORE_SQL_STATEMENT_H_
