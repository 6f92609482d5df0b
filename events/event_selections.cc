#include "events/event_selections.h"

#include <cstdlib>
#include <functional>
#include <iostream>
#include <sstream>
#include <string>

#include "cli/tool_context.h"
#include "events/event_table.h"
#include "recorder/event_record.h"
#include "recorder/recorder_places.h"
#include "recorder/stream_db.h"
#include "recorder/stream_mgr_api.h"
#include "store/access_path.h"
#include "store/row_bound.h"
#include "store/sql_statement.h"

namespace {

using StreamMgrApi::EventRecordItem;

// Hands every event that `sql` selects to `show`, in the store's order, and
// returns how many there were. Over IPC the daemon answers the whole list at
// once; directly, each row is loaded, shown and dropped before the next step.
size_t ForEachEvent(const std::string& sql,
                    const std::function<void(const EventRecordItem&)>& show) {
  if (OverIpc()) {
    StreamMgrApi::EventRecordListMessage list;
    StreamMgrApi::GetEventsFromSqlStatement(toolContext.ipc, sql, list, kIpcTimeout);
    for (const EventRecordItem& event : list.items) {
      show(event);
    }
    return list.items.size();
  }
  size_t count = 0;
  SQLStatement statement(toolContext.database, sql);
  if (!statement.prepared) {
    return count;
  }
  RowBound bound(toolContext.database);
  while (bound.Step(statement) == kStepRow) {
    show(StreamDB::LoadEventInfoFromStatement(statement));
    ++count;
  }
  if (statement.resultCode != kStepDone) {
    std::cerr << "stmt Error: ";
  }
  return count;
}

void ListEvents(const std::string& sql, unsigned flag) {
  ForEachEvent(sql, [flag](const EventRecordItem& event) { DisplayEvent(event, flag); });
}

// How many events have a critical column left NULL (-e/-E warn of them).
unsigned int CountEventsWithNullFields() {
  const std::string sql =
      std::string(
          "select count(*) from events where streamstate is NULL or totalfiles is NULL or ") +
      "groupid is NULL or part is NULL or totalparts is NULL";
  unsigned int count = 0;
  if (OverIpc()) {
    StreamMgrApi::GetCountFromSqlStatement(toolContext.ipc, sql, count, kIpcTimeout);
    return count;
  }
  SQLStatement statement(toolContext.database, sql);
  if (!statement.prepared || statement.Step() != kStepRow) {
    std::cerr << ": error getting file stats" << std::endl;
    return count;
  }
  return static_cast<unsigned int>(sqlite3_column_int(statement.handle, 0));
}

void WarnOfNullFields() {
  std::cout << std::endl << std::endl;
  std::cout << "    WARNING!  Some critical fields are NULL!  (affected reid's shown below):"
            << std::endl
            << std::endl;
  // The recorder's sql tool lists the affected events; it writes straight to
  // the terminal, so everything before it must be out first.
  std::cout.flush();
  std::system((std::string(Recorder::kSqlCommand) +
               "'select reid,splitstate,totalfiles,groupid,part,totalparts from events where "
               "streamstate is NULL or totalfiles is NULL or groupid is NULL or part is NULL or "
               "totalparts is NULL'")
                  .c_str());
  std::cout << std::endl;
}

}  // namespace

void DisplayEvents(unsigned flag) {
  PrintEventHeader(flag);
  ListEvents("select * from events", flag);
  if (CountEventsWithNullFields() != 0) {
    WarnOfNullFields();
  }
}

void DisplayEventsById(const std::string& id, unsigned flag) {
  // The argument goes in as it is: a quote in it breaks the statement, which
  // then reports itself and finds nothing.
  std::ostringstream sql;
  sql << "select * from events where reid='" << id << "' or groupId='" << id << "'";
  const bool direct = !OverIpc();
  bool first = true;
  const size_t found = ForEachEvent(sql.str(), [&](const EventRecordItem& event) {
    if (first) {
      PrintEventHeader(flag);
      first = false;
    }
    DisplayEvent(event, flag);
    if (direct) {
      std::cout << std::endl;
    }
  });
  if (found == 0) {
    std::cout << std::endl << "NOT FOUND: " << id << std::endl << std::endl;
  }
}

void DisplaySplitEvents(unsigned flag) {
  std::ostringstream sql;
  sql << "select * from events where splitstate=" << StreamMgrApi::SPLIT_ALREADY_SPLIT
      << " or part>0 or totalparts>0";
  PrintEventHeader(flag);
  ListEvents(sql.str(), flag);
}

void DisplayUntransferredEvents() {
  std::ostringstream sql;
  sql << "select * from events where state!=" << StreamMgrApi::EVENT_TRANSFERRED;
  PrintEventHeader(0);
  ListEvents(sql.str(), 0);
}
