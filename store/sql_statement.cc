#include "store/sql_statement.h"

#include <iostream>

// The statement takes its SQL by value, as every caller of the recorder's
// wrapper expects.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
SQLStatement::SQLStatement(sqlite3* database, std::string sql) {  // cppcheck-suppress passedByValue
  resultCode = sqlite3_prepare_v2(database, sql.c_str(), -1, &handle, nullptr);
  if (resultCode != SQLITE_OK) {
    // No line end: the caller's own error text continues this line.
    std::cerr << "unable to prepare: " << sql;
    return;
  }
  prepared = true;
}

SQLStatement::~SQLStatement() {
  if (prepared && sqlite3_finalize(handle) != SQLITE_OK) {
    std::cerr << "could not free statement, leaking memory" << std::endl;
  }
}
