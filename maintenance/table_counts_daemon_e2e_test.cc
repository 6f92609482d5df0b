// The table counts (-t) while StreamMgr runs: the table names still come from
// the database file, every count is one request to the daemon.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <string>

#include "testing/expected_start_up.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

namespace {

const char* const kHeading = kTablesHeading;

const char kCountRequests[] =
    "count\tselect count(*) from events\n"
    "count\tselect count(*) from streamfiles\n"
    "count\tselect count(*) from status\n";

// The daemon with a request log, plus `args`.
SandboxOptions Daemon(const std::string& args = "") {
  SandboxOptions options;
  options.streamMgrArgs = "--log /mnt/hd/requests.log " + args;
  return options;
}

std::string Log(const RecorderDisk& disk) {
  return disk.Exists("requests.log") ? disk.ReadFile("requests.log") : "";
}

void FillStore(const RecorderDisk& disk) {
  disk.Exec(EventRow{"a"}.Insert() + EventRow{"b"}.Insert() + FileRow().Insert() +
            "insert into status values ('version', '1');");
}

const char kFilledReport[] =
    "events             2\n"
    "streamfiles        1\n"
    "status             1\n"
    "\n";

const char kZeroReport[] =
    "events             0\n"
    "streamfiles        0\n"
    "status             0\n"
    "\n";

class TableCountsBothPaths : public testing::TestWithParam<AccessPath> {};

TEST_P(TableCountsBothPaths, SameTableOnEitherPath) {
  RecorderDisk disk;
  FillStore(disk);
  const std::string before = disk.Dump();
  const RunResult r = RunDb(disk, GetParam(), {"-t"}, Daemon());
  EXPECT_RUN(r, std::string(kHeading) + kFilledReport, "", 0);
  EXPECT_EQ(GetParam() == AccessPath::kDaemon ? kCountRequests : "", Log(disk));
  EXPECT_EQ(before, disk.Dump());
}

TEST_P(TableCountsBothPaths, TwiceOnOneCommandLine) {
  RecorderDisk disk;
  FillStore(disk);
  const RunResult r = RunDb(disk, GetParam(), {"-t", "-t"}, Daemon());
  const std::string report = std::string(kHeading) + kFilledReport;
  EXPECT_EQ(report + report, r.out);
  EXPECT_EQ("", r.err);
  EXPECT_EQ(GetParam() == AccessPath::kDaemon ? std::string(kCountRequests) + kCountRequests : "",
            Log(disk));
}

INSTANTIATE_TEST_SUITE_P(Paths, TableCountsBothPaths, BothAccessPaths(),
                         testing::PrintToStringParamName());

TEST(TableCountsDaemon, OneCountRequestPerTableInTheFilesOrder) {
  RecorderDisk disk(RecorderDisk::Store::kEmptyDatabase);
  disk.Exec(
      "create table zeta(a); insert into zeta values (1), (2), (3);"
      "create table alpha(a);"
      "create table twelve_chars(a); insert into twelve_chars values (1);"
      "create table thirteen_char(a); insert into thirteen_char values (1), (2);");
  const RunResult r = RunDb(disk, AccessPath::kDaemon, {"-t"}, Daemon());
  EXPECT_EQ(std::string(kHeading) +
                "zeta               3\n"
                "alpha              0\n"
                "twelve_chars       1\n"
                "thirteen_char       2\n"
                "\n",
            r.out);
  EXPECT_EQ("", r.err);
  EXPECT_EQ(
      "count\tselect count(*) from zeta\n"
      "count\tselect count(*) from alpha\n"
      "count\tselect count(*) from twelve_chars\n"
      "count\tselect count(*) from thirteen_char\n",
      Log(disk));
}

TEST(TableCountsDaemon, CountWiderThanItsFieldPushesRight) {
  RecorderDisk disk;
  disk.Exec(
      "with recursive n(i) as (select 1 union all select i + 1 from n where i < 12345) "
      "insert into status select 'key' || i, i from n;");
  const RunResult r = RunDb(disk, AccessPath::kDaemon, {"-t"}, Daemon());
  EXPECT_EQ(std::string(kHeading) +
                "events             0\n"
                "streamfiles        0\n"
                "status          12345\n"
                "\n",
            r.out);
}

TEST(TableCountsDaemon, StoreWithNoTablesSendsNoRequest) {
  // With the daemon running start-up reads no file sizes, so nothing fails there.
  RecorderDisk disk(RecorderDisk::Store::kEmptyDatabase);
  const RunResult r = RunDb(disk, AccessPath::kDaemon, {"-t"}, Daemon());
  EXPECT_RUN(r, std::string(kHeading) + "\n", "", 0);
  EXPECT_EQ("", Log(disk));
}

TEST(TableCountsDaemon, FailingCountsShowZeroWithoutAMessage) {
  RecorderDisk disk;
  FillStore(disk);
  const std::string before = disk.Dump();
  const RunResult r = RunDb(disk, AccessPath::kDaemon, {"-t"}, Daemon("--fail-requests"));
  // The names come from the file, the counts from the daemon, which failed them.
  EXPECT_RUN(r, std::string(kHeading) + kZeroReport, "", 0);
  EXPECT_EQ(kCountRequests, Log(disk));
  EXPECT_EQ(before, disk.Dump());
}

TEST(TableCountsDaemon, CountTheDaemonCannotPrepareShowsZeroWithoutAMessage) {
  RecorderDisk disk;
  FillStore(disk);
  disk.Exec("create table \"two words\"(a); insert into \"two words\" values (1);");
  const RunResult r = RunDb(disk, AccessPath::kDaemon, {"-t"}, Daemon());
  EXPECT_EQ(std::string(kHeading) +
                "events             2\n"
                "streamfiles        1\n"
                "status             1\n"
                "two words          0\n"
                "\n",
            r.out);
  EXPECT_EQ("", r.err);
  EXPECT_EQ(std::string(kCountRequests) + "count\tselect count(*) from two words\n", Log(disk));
}

TEST(TableCountsDaemon, MissingStoreHasNoRowsThoughTheDaemonRuns) {
  RecorderDisk disk(RecorderDisk::Store::kNone);
  const RunResult r = RunDb(disk, AccessPath::kDaemon, {"-t"}, Daemon());
  EXPECT_RUN(r, std::string(kHeading) + "\n",
             "error opening sqlite3\n"
             "unable to prepare: select tbl_name from sqlite_master where type='table'",
             SQLITE_CANTOPEN);
  EXPECT_EQ("", Log(disk));
  EXPECT_FALSE(disk.Exists("streammgr"));
}

TEST(TableCountsDaemon, StoreThatIsNotADatabaseHasNoRows) {
  RecorderDisk disk(RecorderDisk::Store::kNone);
  const std::string garbage(4096, 'x');
  disk.WriteFile("streammgr/stream.db", garbage);
  const RunResult r = RunDb(disk, AccessPath::kDaemon, {"-t"}, Daemon());
  EXPECT_RUN(r, std::string(kHeading) + "\n",
             "unable to prepare: select tbl_name from sqlite_master where type='table'", 0);
  EXPECT_EQ("", Log(disk));
  EXPECT_EQ(garbage, disk.ReadFile("streammgr/stream.db"));
}

TEST(TableCountsDaemon, GarbledAnswersShowZero) {
  RecorderDisk disk;
  FillStore(disk);
  const RunResult r = RunDb(disk, AccessPath::kDaemon, {"-t"}, Daemon("--garbage"));
  EXPECT_RUN(r, std::string(kHeading) + kZeroReport, "", 0);
  EXPECT_EQ(kCountRequests, Log(disk));
}

TEST(TableCountsDaemon, DaemonDyingMidReportLeavesTheRestAtZero) {
  RecorderDisk disk;
  FillStore(disk);
  const RunResult r = RunDb(disk, AccessPath::kDaemon, {"-t"}, Daemon("--die-after 1"));
  EXPECT_RUN(r,
             std::string(kHeading) +
                 "events             2\n"
                 "streamfiles        0\n"
                 "status             0\n"
                 "\n",
             "", 0);
  // The second request killed it; the third found no daemon to ask.
  EXPECT_EQ(
      "count\tselect count(*) from events\n"
      "count\tselect count(*) from streamfiles\n",
      Log(disk));
}

TEST(TableCountsDaemon, SlowDaemonStillCounts) {
  RecorderDisk disk;
  FillStore(disk);
  const RunResult r = RunDb(disk, AccessPath::kDaemon, {"-t"}, Daemon("--delay-ms 100"));
  EXPECT_EQ(std::string(kHeading) + kFilledReport, r.out);
  EXPECT_EQ("", r.err);
}

}  // namespace
