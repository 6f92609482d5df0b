#include "store/row_count.h"

#include <iostream>

#include "cli/tool_context.h"
#include "recorder/stream_mgr_api.h"
#include "store/access_path.h"
#include "store/sql_statement.h"

unsigned int CountRows(const std::string& table) {
  unsigned int count = 0;
  const std::string sql = "select count(*) from " + table;
  if (OverIpc()) {
    StreamMgrApi::GetCountFromSqlStatement(toolContext.ipc, sql, count, kIpcTimeout);
    return count;
  }
  SQLStatement statement(toolContext.database, sql);
  if (statement.resultCode != SQLITE_OK) {
    // Continues the line the statement wrapper left open.
    std::cerr << "Error getting count for " << table << std::endl;
    return count;
  }
  if (statement.Step() == kStepRow) {
    count = static_cast<unsigned int>(sqlite3_column_int(statement.handle, 0));
  }
  return count;
}
