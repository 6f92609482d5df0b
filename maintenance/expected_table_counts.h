// Stores and their table counts (-t) shared by the tests of the report on
// either access path.
#ifndef MAINTENANCE_EXPECTED_TABLE_COUNTS_H_
#define MAINTENANCE_EXPECTED_TABLE_COUNTS_H_

#include <ostream>
#include <string>
#include <vector>

#include "testing/expected_start_up.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

// Two events, one stream file and one status row.
inline std::string FilledStore() {
  return EventRow("a").Insert() + EventRow("b").Insert() + FileRow().Insert() +
         "insert into status values ('version', '1');";
}
const std::string kFilledCounts = std::string(kTablesHeading) +
                                  "events             2\n"
                                  "streamfiles        1\n"
                                  "status             1\n"
                                  "\n";
const std::string kZeroCounts = std::string(kTablesHeading) +
                                "events             0\n"
                                "streamfiles        0\n"
                                "status             0\n"
                                "\n";

// A status table with more rows than the count's field is wide.
const char kWideStatus[] =
    "with recursive n(i) as (select 1 union all select i + 1 from n where i < 12345) "
    "insert into status select 'key' || i, i from n;";
const std::string kWideCounts = std::string(kTablesHeading) +
                                "events             0\n"
                                "streamfiles        0\n"
                                "status          12345\n"
                                "\n";

// One run of db on a store made for it.
struct TableReport {
  const char* name;
  RecorderDisk::Store store;
  std::string sql;  // run on the store first
  std::vector<std::string> args;
  RunResult expected;
  std::string log;         // the daemon's requests
  std::string daemonArgs;  // more arguments of the simulator
};
inline TableReport Report(const char* name, RecorderDisk::Store store, const std::string& sql,
                          const std::vector<std::string>& args, const RunResult& expected,
                          const std::string& log = "", const std::string& daemonArgs = "") {
  return {name, store, sql, args, expected, log, daemonArgs};
}
inline void PrintTo(const TableReport& report, std::ostream* out) { *out << report.name; }

// The store file, byte for byte, or what stands in its place: a report
// reads the store and must leave it as it was, and make none where there
// was none.
inline std::string StoreState(const RecorderDisk& disk) {
  if (!disk.Exists("streammgr")) return "<no streammgr folder>";
  return disk.Exists("streammgr/stream.db") ? disk.ReadFile("streammgr/stream.db") : "<no store>";
}

#endif  // MAINTENANCE_EXPECTED_TABLE_COUNTS_H_
