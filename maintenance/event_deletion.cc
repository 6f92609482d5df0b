#include "maintenance/event_deletion.h"

#include <functional>
#include <iostream>
#include <string>

#include "cli/tool_context.h"
#include "recorder/event_record.h"
#include "recorder/stream_mgr_api.h"
#include "store/access_path.h"
#include "store/sql_statement.h"

namespace {

const char kNoEvents[] = "  No events found...no action taken.";

// The condition that picks an event by its reid together with every part of
// the split group of that id. The id goes in exactly as typed.
std::string IdCondition(const std::string& id) {
  return " where reid='" + id + "' or groupId='" + id + "'";
}

// True when the statement was prepared. Otherwise the error line continues
// the one the statement wrapper left open, so the pair reads as one line.
bool Prepared(const SQLStatement& statement, const std::string& sql) {
  if (statement.resultCode == SQLITE_OK) {
    return true;
  }
  std::cerr << "stmt Error: " << statement.resultCode << "  sql='" << sql << "'" << std::endl;
  return false;
}

// Steps a count query once; false (after saying so) when it yields no row.
bool CountRow(SQLStatement& count, const std::string& sql) {
  if (count.Step() == kStepRow) {
    return true;
  }
  std::cerr << ": error getting count of events to delete using '" << sql << "'" << std::endl;
  return false;
}

// Asks the daemon for the events the condition picks, then has it delete them
// one reid at a time; a refusal is reported and the rest go on. Returns false
// (after writing `notFound`) when the daemon listed none, else true with the
// number it deleted in `deleted`.
bool DeleteOverIpc(const std::string& condition, const std::string& notFound,
                   unsigned int& deleted) {
  StreamMgrApi::EventRecordListMessage events;
  StreamMgrApi::GetEventsFromSqlStatement(toolContext.ipc, "select * from events" + condition,
                                          events, kIpcTimeout);
  if (events.items.empty()) {
    std::cerr << notFound << std::endl;
    return false;
  }
  deleted = static_cast<unsigned int>(events.items.size());
  for (const StreamMgrApi::EventRecordItem& event : events.items) {
    if (!StreamMgrApi::DeleteEvent(event.reid.GetValue(), toolContext.ipc)) {
      std::cerr << "  Failed to delete event:  reid= " << event.reid.GetValue()
                << "  groupId= " << event.groupId.GetValue() << std::endl;
      --deleted;
    }
  }
  return true;
}

// What a direct deletion says when nothing matches, when it deleted the
// count it found, and when the delete failed.
struct DirectMessages {
  std::string notFound;
  std::function<void(unsigned int)> printDeleted;
  std::string failed;
};

// Counts the events the condition picks, then deletes them with one
// statement. The count statement stays open until the delete has run; both
// are locals, so both are finalised on every way out, after the messages
// written here.
void CountThenDelete(const std::string& condition, const DirectMessages& messages) {
  const std::string countSql = "select count(*) from events" + condition;
  SQLStatement count(toolContext.database, countSql);
  if (!Prepared(count, countSql) || !CountRow(count, countSql)) {
    return;
  }
  const unsigned int found = static_cast<unsigned int>(sqlite3_column_int(count.handle, 0));
  if (found == 0) {
    std::cerr << messages.notFound << std::endl;
    return;
  }
  const std::string deleteSql = "delete from events" + condition;
  SQLStatement remove(toolContext.database, deleteSql);
  if (!Prepared(remove, deleteSql)) {
    return;
  }
  if (remove.Step() == kStepDone) {
    // The number found before the delete, not the rows it changed.
    messages.printDeleted(found);
  } else {
    std::cerr << messages.failed << std::endl;
  }
}

void PrintDeletedById(unsigned int deleted, const std::string& id) {
  std::cout << "  Successfully deleted " << deleted << " event" << (deleted == 1 ? "" : "s")
            << ":  id = " << id << std::endl;
}

}  // namespace

void DeleteEventsById(const std::string& id) {
  if (OverIpc()) {
    unsigned int deleted = 0;
    if (DeleteOverIpc(IdCondition(id), "  Event or groupId not found: " + id, deleted)) {
      PrintDeletedById(deleted, id);
    }
  } else {
    CountThenDelete(IdCondition(id), {"  Event or groupId not found:  id = " + id,
                                      [&id](unsigned int found) { PrintDeletedById(found, id); },
                                      "  Error deleting event or groupId:  id = " + id});
  }
}

void DeleteAllEvents() {
  if (OverIpc()) {
    unsigned int deleted = 0;
    // Always the plural here, even for one event or none left.
    if (DeleteOverIpc("", kNoEvents, deleted)) {
      std::cout << "  Successfully deleted " << deleted << " events" << std::endl;
    }
  } else {
    CountThenDelete("", {kNoEvents,
                         [](unsigned int found) {
                           std::cout << "  Successfully deleted all " << found << " events"
                                     << std::endl;
                         },
                         "  Error deleting all events"});
  }
}
