// What db prints about deletions (-d, --deleteall), written out once for
// every test that deletes.
#ifndef MAINTENANCE_EXPECTED_DELETION_H_
#define MAINTENANCE_EXPECTED_DELETION_H_

#include <string>

#include "testing/faults_case_tables.h"

// -d ID that deleted `count` events, on either path.
inline std::string Deleted(int count, const std::string& id) {
  return "  Successfully deleted " + std::to_string(count) + (count == 1 ? " event" : " events") +
         ":  id = " + id + "\n";
}

// --deleteall that deleted `count` events: the daemon's count is of what it
// did delete, and always plural.
inline PathText DeletedAll(int count) {
  return {"  Successfully deleted all " + std::to_string(count) + " events\n",
          "  Successfully deleted " + std::to_string(count) + " events\n"};
}

inline PathText NotFound(const std::string& id) {
  return {"  Event or groupId not found:  id = " + id + "\n",
          "  Event or groupId not found: " + id + "\n"};
}

const char kNoEventsFound[] = "  No events found...no action taken.\n";

// The daemon refused to delete one event.
inline std::string FailedToDelete(const std::string& reid, const std::string& groupId = "") {
  return "  Failed to delete event:  reid= " + reid + "  groupId= " + groupId + "\n";
}

// Directly, a delete whose step failed; finalising it reports it as leaked.
inline std::string DeleteByIdFailed(const std::string& id) {
  return "  Error deleting event or groupId:  id = " + id +
         "\n"
         "could not free statement, leaking memory\n";
}
const char kDeleteAllFailed[] =
    "  Error deleting all events\n"
    "could not free statement, leaking memory\n";

// Directly, a statement that SQLite would not prepare: the tool's line runs
// on from the statement wrapper's own.
inline std::string NotPrepared(const std::string& sql, int code) {
  return "unable to prepare: " + sql + "stmt Error: " + std::to_string(code) + "  sql='" + sql +
         "'\n";
}

// The count of -d ID, as it reaches SQLite.
inline std::string CountById(const std::string& id) {
  return "select count(*) from events where reid='" + id + "' or groupId='" + id + "'";
}

#endif  // MAINTENANCE_EXPECTED_DELETION_H_
