// Paged requests. The tool asks for a long list a page at a time, with texts
// that differ only in their offset: "QUERY limit 1000 offset 0", then
// "... offset 1000", and so on. Run afresh, every page makes SQLite step
// again through all the rows before its offset, so n rows cost about
// n * n / 2000 steps (200 pages of stream files took seconds). The cursor
// keeps a statement of QUERY alone and, when the next request asks for the
// page right after the last one answered, steps it on instead.
//
// The kept statement yields exactly the rows each page's own text would. It
// is only opened when both texts are single read-only statements that SQLite
// plans alike, with no temporary b-tree (a sort, DISTINCT or GROUP BY that no
// index gives): the rows then come in the order of one and the same scan,
// which LIMIT and OFFSET only count off. While it is open it holds the
// store's read lock, so it is dropped as soon as its rows run out, and by the
// service on any request but the next page.
#ifndef SIM_STREAM_MGR_PAGE_CURSOR_H_
#define SIM_STREAM_MGR_PAGE_CURSOR_H_

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "recorder/host/ipc_protocol.h"
#include "store/sql_statement.h"

// A page request's text: QUERY + " limit " + LIMIT + " offset " + OFFSET.
struct PagedText {
  std::string query;
  uint64_t limit = 0;
  uint64_t offset = 0;
};

// Splits `sql` when it ends in " limit L offset N" (lower case, single
// blanks, plain digits, as the tool writes it) after a query that holds no
// comment; false otherwise.
bool SplitPagedText(const std::string& sql, PagedText& paged);

class PageCursor {
 public:
  // True when `sql`, a request of `kind`, asks for the page right after the
  // one this cursor answered last.
  bool Continues(HostIpc::Kind kind, const std::string& sql) const;

  // Opens the cursor for `sql` when it asks for the first page (offset 0) of
  // a query that can be stepped on as described above; false otherwise.
  bool Open(sqlite3* database, HostIpc::Kind kind, const std::string& sql);

  // Steps the next page into `records`; false when a step fails. The cursor
  // is dropped when the rows ran out or a step failed.
  template <typename Record, typename Load>
  bool NextPage(std::vector<Record>& records, Load load) {
    for (uint64_t row = 0; row < paged_.limit; ++row) {
      if (statement_->Step() != kStepRow) {
        const bool done = statement_->resultCode == kStepDone;
        Drop();
        return done;
      }
      records.push_back(load(*statement_));
    }
    paged_.offset += paged_.limit;
    return true;
  }

  void Drop() { statement_.reset(); }
  bool IsOpen() const { return statement_ != nullptr; }

 private:
  std::unique_ptr<SQLStatement> statement_;
  HostIpc::Kind kind_ = HostIpc::kEvents;
  PagedText paged_;  // the query, its page size and the offset of the next page
};

#endif  // SIM_STREAM_MGR_PAGE_CURSOR_H_
