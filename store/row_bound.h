// A cap on the rows that stepping one statement may give. A table cannot hold
// more rows than the store's files have room for, yet a damaged store can
// make SQLite give rows without end: a page that several parents name is
// read once per parent, and a chain of such pages multiplies the rows with
// every level. Past the cap, a row loop stops as on any damaged store.
#ifndef STORE_ROW_BOUND_H_
#define STORE_ROW_BOUND_H_

#include <sqlite3.h>

#include <cstdint>

#include "store/sql_statement.h"

// The most rows the files of `database`'s main store can hold: each row
// takes at least four bytes of a page in the store or its write-ahead log.
// No cap (the largest value) for a database without a file.
uint64_t MostRowsStoredIn(sqlite3* database);

class RowBound {
 public:
  explicit RowBound(sqlite3* database) : database_(database) {}

  // Steps `statement` as SQLStatement::Step does. A row beyond the most the
  // store can hold is not given: the step fails with SQLITE_CORRUPT instead,
  // kept in the statement's result code like any other.
  int Step(SQLStatement& statement);

 private:
  sqlite3* database_;
  uint64_t rows_ = 0;
  uint64_t most_ = 0;  // known from the first row on
};

#endif  // STORE_ROW_BOUND_H_
