#include "files/files_table.h"

#include <cstdint>
#include <iostream>
#include <string>

#include "cli/tool_context.h"
#include "files/file_condition.h"
#include "recorder/stream_db.h"
#include "recorder/stream_mgr_api.h"
#include "store/access_path.h"
#include "store/row_bound.h"
#include "store/sql_statement.h"

namespace {

// Largest answer asked of the daemon in one request when the rows are paged.
constexpr unsigned int kPageRows = 1000;

void DisplayPage(StreamMgrApi::StreamfileRecordListMessage& page) {
  for (StreamMgrApi::StreamfileRecordItem& file : page.items) {
    DisplayFile(file);
  }
}

// Over IPC, a large answer is asked for a page at a time so the daemon never
// has to build more than one page of records; each page is printed and freed
// before the next is requested. Returns the count the daemon reported.
unsigned int ListOverIpc(const FileOptions& options, const std::string& condition) {
  unsigned int count = 0;
  StreamMgrApi::GetCountFromSqlStatement(
      toolContext.ipc, "select count(*) from streamfiles where" + condition, count, kIpcTimeout);
  if (count > kPageRows && !options.limit) {
    // 64 bits, so the offset cannot wrap below a count near the 32-bit limit.
    for (uint64_t offset = 0; count > offset; offset += kPageRows) {
      StreamMgrApi::StreamfileRecordListMessage page;
      StreamMgrApi::GetFilesFromSqlStatement(toolContext.ipc,
                                             "select * from streamfiles where" + condition +
                                                 " limit " + std::to_string(kPageRows) +
                                                 " offset " + std::to_string(offset),
                                             page, kIpcTimeout);
      DisplayPage(page);
    }
    return count;
  }
  StreamMgrApi::StreamfileRecordListMessage files;
  StreamMgrApi::GetFilesFromSqlStatement(
      toolContext.ipc, "select * from streamfiles where " + condition, files, kIpcTimeout);
  DisplayPage(files);
  return count;
}

// Directly, rows are loaded, printed and dropped one at a time. The row
// statement is finalised before the count statement, as both leave scope.
unsigned int ListDirect(const std::string& condition) {
  unsigned int count = 0;
  SQLStatement counter(toolContext.database, "select count(*) from streamfiles where " + condition);
  if (counter.prepared && counter.Step() == kStepRow) {
    count = static_cast<unsigned int>(sqlite3_column_int(counter.handle, 0));
  }
  SQLStatement rows(toolContext.database, "select * from streamfiles where " + condition);
  if (rows.prepared) {
    RowBound bound(toolContext.database);
    while (bound.Step(rows) == kStepRow) {
      StreamMgrApi::StreamfileRecordItem file = StreamDB::LoadFileInfoFromStatement(rows);
      DisplayFile(file);
    }
    if (rows.resultCode != kStepDone) {
      std::cerr << "stmt Error: " << std::endl;
    }
  }
  return count;
}

}  // namespace

void DisplayFiles(FileOptions& options) {
  PrintFileHeading();
  const std::string condition = BuildFileCondition(options);
  const unsigned int count = OverIpc() ? ListOverIpc(options, condition) : ListDirect(condition);
  std::cout << std::endl;
  std::cout << count << " items" << std::endl;
  std::cout << std::endl;
}
