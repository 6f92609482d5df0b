// The table counts (-t) while StreamMgr runs: the table names still come from
// the database file, every count is one request to the daemon.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <string>
#include <tuple>

#include "maintenance/expected_table_counts.h"
#include "testing/expected_start_up.h"
#include "testing/faults_case_tables.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

namespace {

using Store = RecorderDisk::Store;

const std::string kCountRequests =
    "count\tselect count(*) from events\n"
    "count\tselect count(*) from streamfiles\n"
    "count\tselect count(*) from status\n";

// The daemon's requests, or "" when it logged none.
std::string Log(const RecorderDisk& disk) {
  return disk.Exists("requests.log") ? disk.ReadFile("requests.log") : "";
}

// Directly no daemon is asked.
const TableReport kOnBothPaths[] = {
    Report("SameTableOnEitherPath", Store::kSchema, FilledStore(), {"-t"}, {kFilledCounts, "", 0},
           kCountRequests),
    Report("TwiceOnOneCommandLine", Store::kSchema, FilledStore(), {"-t", "-t"},
           {kFilledCounts + kFilledCounts, "", 0}, kCountRequests + kCountRequests),
};

const TableReport kWithTheDaemon[] = {
    Report("OneCountRequestPerTableInTheFilesOrder", Store::kEmptyDatabase,
           "create table zeta(a); insert into zeta values (1), (2), (3);"
           "create table alpha(a);"
           "create table twelve_chars(a); insert into twelve_chars values (1);"
           "create table thirteen_char(a); insert into thirteen_char values (1), (2);",
           {"-t"},
           {std::string(kTablesHeading) + "zeta               3\n"
                                          "alpha              0\n"
                                          "twelve_chars       1\n"
                                          "thirteen_char       2\n"
                                          "\n",
            "", 0},
           "count\tselect count(*) from zeta\n"
           "count\tselect count(*) from alpha\n"
           "count\tselect count(*) from twelve_chars\n"
           "count\tselect count(*) from thirteen_char\n"),
    Report("CountWiderThanItsFieldPushesRight", Store::kSchema, kWideStatus, {"-t"},
           {kWideCounts, "", 0}, kCountRequests),
    // With the daemon running start-up reads no file sizes, so nothing fails
    // there.
    Report("StoreWithNoTablesSendsNoRequest", Store::kEmptyDatabase, "", {"-t"},
           {std::string(kTablesHeading) + "\n", "", 0}),
    // The names come from the file, the counts from the daemon, which failed
    // them.
    Report("FailingCountsShowZeroWithoutAMessage", Store::kSchema, FilledStore(), {"-t"},
           {kZeroCounts, "", 0}, kCountRequests, "--fail-requests"),
    Report("CountTheDaemonCannotPrepareShowsZeroWithoutAMessage", Store::kSchema,
           FilledStore() + "create table \"two words\"(a); insert into \"two words\" values (1);",
           {"-t"},
           {std::string(kTablesHeading) + "events             2\n"
                                          "streamfiles        1\n"
                                          "status             1\n"
                                          "two words          0\n"
                                          "\n",
            "", 0},
           kCountRequests + "count\tselect count(*) from two words\n"),
    Report("MissingStoreHasNoRowsThoughTheDaemonRuns", Store::kNone, "", {"-t"},
           {std::string(kTablesHeading) + "\n",
            "error opening sqlite3\n"
            "unable to prepare: select tbl_name from sqlite_master where type='table'",
            SQLITE_CANTOPEN}),
    Report("GarbledAnswersShowZero", Store::kSchema, FilledStore(), {"-t"}, {kZeroCounts, "", 0},
           kCountRequests, "--garbage"),
    // The second request killed it; the third found no daemon to ask.
    Report("DaemonDyingMidReportLeavesTheRestAtZero", Store::kSchema, FilledStore(), {"-t"},
           {std::string(kTablesHeading) + "events             2\n"
                                          "streamfiles        0\n"
                                          "status             0\n"
                                          "\n",
            "", 0},
           "count\tselect count(*) from events\n"
           "count\tselect count(*) from streamfiles\n",
           "--die-after 1"),
    Report("SlowDaemonStillCounts", Store::kSchema, FilledStore(), {"-t"}, {kFilledCounts, "", 0},
           kCountRequests, "--delay-ms 100"),
};

class TableCounts : public ::testing::TestWithParam<CaseOnPath<TableReport>> {};

TEST_P(TableCounts, AreAskedOfTheDaemon) {
  const TableReport& c = std::get<0>(GetParam());
  const AccessPath path = std::get<1>(GetParam());
  RecorderDisk disk(c.store);
  if (!c.sql.empty()) disk.Exec(c.sql);
  const std::string before = StoreState(disk);
  SandboxOptions options;
  options.streamMgrArgs = "--log /mnt/hd/requests.log " + c.daemonArgs;
  EXPECT_RUN(RunDb(disk, path, c.args, options), c.expected);
  EXPECT_EQ(path == AccessPath::kDaemon ? c.log : "", Log(disk));
  EXPECT_EQ(before, StoreState(disk));
}

INSTANTIATE_TEST_SUITE_P(Paths, TableCounts, OnBothPaths(kOnBothPaths),
                         CaseOnPathName<TableReport>);
INSTANTIATE_TEST_SUITE_P(Daemon, TableCounts, OverIpcOnly(kWithTheDaemon),
                         CaseOnPathName<TableReport>);

TEST(TableCountsDaemon, StoreThatIsNotADatabaseHasNoRows) {
  RecorderDisk disk(RecorderDisk::Store::kNone);
  disk.WriteFile("streammgr/stream.db", std::string(4096, 'x'));
  const std::string before = StoreState(disk);
  SandboxOptions options;
  options.streamMgrArgs = "--log /mnt/hd/requests.log";
  EXPECT_RUN(RunDb(disk, AccessPath::kDaemon, {"-t"}, options), std::string(kTablesHeading) + "\n",
             "unable to prepare: select tbl_name from sqlite_master where type='table'", 0);
  EXPECT_EQ("", Log(disk));
  EXPECT_EQ(before, StoreState(disk));
}

}  // namespace
