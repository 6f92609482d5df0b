// A recorder disk, and db run on it by the access path that the case is
// instantiated with, for the end-to-end tests of the event listings.
#ifndef EVENTS_EVENT_LISTING_FIXTURE_H_
#define EVENTS_EVENT_LISTING_FIXTURE_H_

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "events/expected_event_table.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

class EventListing : public ::testing::TestWithParam<AccessPath> {
 protected:
  RunResult Run(const std::vector<std::string>& args, SandboxOptions options = {}) {
    return RunDb(disk_, GetParam(), args, options);
  }
  bool Direct() const { return GetParam() == AccessPath::kDirect; }
  // What follows each row that -r or -R finds: an empty line directly, nothing
  // over IPC.
  std::string Gap() const { return Direct() ? "\n" : ""; }
  RecorderDisk disk_;
};

// SQL that inserts the event `reid` with EventRow's defaults, then gives it
// the `changes`, an SQL assignment list such as "state = 1, part = 2".
inline std::string Event(const std::string& reid, const std::string& changes = "") {
  std::string sql = EventRow{reid}.Insert();
  if (!changes.empty()) {
    sql += "update events set " + changes + " where reid = " + Quote(reid) + ";\n";
  }
  return sql;
}

#endif  // EVENTS_EVENT_LISTING_FIXTURE_H_
