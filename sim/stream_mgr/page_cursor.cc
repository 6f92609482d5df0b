#include "sim/stream_mgr/page_cursor.h"

#include <cstring>
#include <utility>

namespace {

// The number spelled by the digits of `text` from `begin` to `end`; false
// when there are none, anything else, or more than fit comfortably.
bool Digits(const std::string& text, size_t begin, size_t end, uint64_t& value) {
  if (begin >= end || end - begin > 18) return false;
  value = 0;
  for (size_t i = begin; i < end; ++i) {
    if (text[i] < '0' || text[i] > '9') return false;
    value = value * 10 + static_cast<uint64_t>(text[i] - '0');
  }
  return true;
}

// One prepared statement, finalised when it goes; quiet about failures,
// which only mean that no cursor is opened.
struct Prepared {
  Prepared(sqlite3* database, const std::string& sql) {
    const char* tail = nullptr;
    if (sqlite3_prepare_v2(database, sql.c_str(), static_cast<int>(sql.size() + 1), &handle,
                           &tail) != SQLITE_OK) {
      handle = nullptr;
    }
    whole = handle != nullptr && tail != nullptr && *tail == '\0';
  }
  ~Prepared() { sqlite3_finalize(handle); }
  Prepared(const Prepared&) = delete;
  Prepared& operator=(const Prepared&) = delete;

  sqlite3_stmt* handle = nullptr;
  bool whole = false;  // the text was exactly one statement
};

// SQLite's plan for `sql`, one line per step: the step's detail and the
// position of its parent step. False when `sql` is not one read-only
// statement or its plan needs a temporary b-tree.
bool ScanPlan(sqlite3* database, const std::string& sql, std::vector<std::string>& plan) {
  {
    const Prepared statement(database, sql);
    if (!statement.whole || !sqlite3_stmt_readonly(statement.handle)) return false;
  }
  const Prepared explained(database, "explain query plan " + sql);
  if (!explained.whole) return false;
  std::vector<int> ids;
  int step = SQLITE_ROW;
  while ((step = sqlite3_step(explained.handle)) == SQLITE_ROW) {
    const int id = sqlite3_column_int(explained.handle, 0);
    const int parent = sqlite3_column_int(explained.handle, 1);
    const unsigned char* detail = sqlite3_column_text(explained.handle, 3);
    const std::string text = detail == nullptr ? "" : reinterpret_cast<const char*>(detail);
    if (text.find("TEMP B-TREE") != std::string::npos) return false;
    size_t parentPosition = 0;  // 0: the top; otherwise 1 + the parent's position
    for (size_t i = 0; i < ids.size(); ++i) {
      if (ids[i] == parent) parentPosition = i + 1;
    }
    ids.push_back(id);
    plan.push_back(std::to_string(parentPosition) + " " + text);
  }
  return step == SQLITE_DONE && !plan.empty();
}

}  // namespace

bool SplitPagedText(const std::string& sql, PagedText& paged) {
  static const char kLimit[] = " limit ";
  static const char kOffset[] = " offset ";
  const size_t offset = sql.rfind(kOffset);
  if (offset == std::string::npos) return false;
  const size_t limit = sql.rfind(kLimit, offset);
  if (limit == std::string::npos) return false;
  PagedText split;
  if (!Digits(sql, offset + std::strlen(kOffset), sql.size(), split.offset) ||
      !Digits(sql, limit + std::strlen(kLimit), offset, split.limit) || split.limit == 0) {
    return false;
  }
  split.query = sql.substr(0, limit);
  // A comment could hide the page clause from SQLite, or end the query early.
  if (split.query.find("--") != std::string::npos || split.query.find("/*") != std::string::npos) {
    return false;
  }
  paged = std::move(split);
  return true;
}

bool PageCursor::Continues(HostIpc::Kind kind, const std::string& sql) const {
  PagedText next;
  return IsOpen() && kind == kind_ && SplitPagedText(sql, next) && next.limit == paged_.limit &&
         next.offset == paged_.offset && next.query == paged_.query;
}

bool PageCursor::Open(sqlite3* database, HostIpc::Kind kind, const std::string& sql) {
  Drop();
  PagedText paged;
  if (!SplitPagedText(sql, paged) || paged.offset != 0) return false;
  std::vector<std::string> pagePlan;
  std::vector<std::string> queryPlan;
  if (!ScanPlan(database, sql, pagePlan) || !ScanPlan(database, paged.query, queryPlan) ||
      pagePlan != queryPlan) {
    return false;
  }
  auto statement = std::make_unique<SQLStatement>(database, paged.query);
  if (!statement->prepared) return false;
  statement_ = std::move(statement);
  kind_ = kind;
  paged_ = std::move(paged);
  return true;
}
