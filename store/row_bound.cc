#include "store/row_bound.h"

#include <sys/stat.h>

#include <limits>
#include <string>

namespace {

uint64_t FileBytes(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && status.st_size > 0
             ? static_cast<uint64_t>(status.st_size)
             : 0;
}

}  // namespace

uint64_t MostRowsStoredIn(sqlite3* database) {
  const char* path = sqlite3_db_filename(database, "main");
  if (path == nullptr || *path == '\0') {
    return std::numeric_limits<uint64_t>::max();
  }
  // A cell of at least four bytes, besides its two-byte place in the page's
  // list of cells; a page written to the log since the last checkpoint may
  // hold rows the store's own copy of it does not.
  return (FileBytes(path) + FileBytes(std::string(path) + "-wal")) / 4;
}

int RowBound::Step(SQLStatement& statement) {
  if (statement.Step() != kStepRow) {
    return statement.resultCode;
  }
  if (rows_ == 0) {
    // Measured once the statement reads: from then on it sees one state of
    // the store, and its files hold at least that state whatever a writer
    // does meanwhile.
    most_ = MostRowsStoredIn(database_);
  }
  if (rows_ >= most_) {
    return statement.resultCode = SQLITE_CORRUPT;
  }
  ++rows_;
  return statement.resultCode;
}
