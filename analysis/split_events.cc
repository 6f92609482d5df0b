#include "analysis/split_events.h"

#include <iostream>
#include <string>
#include <utility>
#include <vector>

#include "analysis/split_group_report.h"
#include "cli/tool_context.h"
#include "recorder/stream_db.h"
#include "recorder/stream_mgr_api.h"
#include "store/access_path.h"
#include "store/row_bound.h"
#include "store/sql_statement.h"

namespace {

using StreamMgrApi::EventRecordItem;

// Every event, in the order the store returns them. On the direct path a
// failing statement leaves the events read so far; its own messages say why.
std::vector<EventRecordItem> AllEvents() {
  const std::string sql = "select * from events";
  if (OverIpc()) {
    StreamMgrApi::EventRecordListMessage list;
    StreamMgrApi::GetEventsFromSqlStatement(toolContext.ipc, sql, list, kIpcTimeout);
    return std::move(list.items);
  }
  std::vector<EventRecordItem> events;
  SQLStatement statement(toolContext.database, sql);
  if (statement.resultCode != SQLITE_OK) {
    return events;
  }
  RowBound bound(toolContext.database);
  while (bound.Step(statement) == kStepRow) {
    events.push_back(StreamDB::LoadEventInfoFromStatement(statement));
  }
  return events;
}

}  // namespace

void AnalyzeSplitEvents(const AnalysisOptions& options) {
  ReportSplitGroups(AllEvents(), options.maxPartSize, std::cout);
}
