// The status table (-s) and the table counts (-t) on the direct path.
#include <gtest/gtest.h>

#include <string>

#include "testing/expected_start_up.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

namespace {

const char* const kHeading = kTablesHeading;

TEST(TableCounts, ListsEveryTableWithItsRows) {
  RecorderDisk disk;
  disk.Exec(EventRow{"a"}.Insert() + EventRow{"b"}.Insert() + FileRow().Insert() +
            "insert into status values ('version', '1');");
  const RunResult r = RunDb(disk, {"-t"});
  EXPECT_RUN(r,
             std::string(kHeading) +
                 "events             2\n"
                 "streamfiles        1\n"
                 "status             1\n"
                 "\n",
             "", 0);
}

TEST(TableCounts, StoreWithNoTablesPrintsHeadingOnly) {
  RecorderDisk disk(RecorderDisk::Store::kEmptyDatabase);
  const RunResult r = RunDb(disk, {"-t"});
  // Start-up could not read the stream file sizes of a store without tables.
  EXPECT_RUN(r, std::string(kHeading) + "\n", kNoFileSizesLine, 0);
}

TEST(TableCounts, TwiceOnOneCommandLinePrintsTheReportTwice) {
  RecorderDisk disk;
  const std::string report = std::string(kHeading) +
                             "events             0\n"
                             "streamfiles        0\n"
                             "status             0\n"
                             "\n";
  const RunResult r = RunDb(disk, {"-t", "-t"});
  EXPECT_EQ(report + report, r.out);
  EXPECT_EQ(0, r.status);
}

TEST(TableCounts, NamesOfTwelveAndThirteenCharacters) {
  RecorderDisk disk(RecorderDisk::Store::kEmptyDatabase);
  disk.Exec(
      "create table streamfiles(number, size);"
      "create table twelve_chars(a); insert into twelve_chars values (1);"
      "create table thirteen_char(a); insert into thirteen_char values (1), (2);");
  const RunResult r = RunDb(disk, {"-t"});
  EXPECT_EQ(std::string(kHeading) +
                "streamfiles        0\n"
                "twelve_chars       1\n"
                "thirteen_char       2\n"
                "\n",
            r.out);
  EXPECT_EQ("", r.err);
}

TEST(TableCounts, CountWiderThanItsFieldPushesRight) {
  RecorderDisk disk;
  disk.Exec(
      "with recursive n(i) as (select 1 union all select i + 1 from n where i < 12345) "
      "insert into status select 'key' || i, i from n;");
  const RunResult r = RunDb(disk, {"-t"});
  EXPECT_EQ(std::string(kHeading) +
                "events             0\n"
                "streamfiles        0\n"
                "status          12345\n"
                "\n",
            r.out);
}

TEST(TableCounts, TableWhoseCountCannotBePreparedShowsZero) {
  RecorderDisk disk(RecorderDisk::Store::kEmptyDatabase);
  disk.Exec(
      "create table streamfiles(number, size);"
      "create table \"odd name\"(a); insert into \"odd name\" values (1);");
  const RunResult r = RunDb(disk, {"-t"});
  EXPECT_EQ(std::string(kHeading) +
                "streamfiles        0\n"
                "odd name           0\n"
                "\n",
            r.out);
  EXPECT_EQ("unable to prepare: select count(*) from odd nameError getting count for odd name\n",
            r.err);
}

TEST(TableCounts, ReportChangesNothing) {
  RecorderDisk disk;
  disk.Exec(EventRow{"a"}.Insert() + FileRow().Insert());
  const std::string before = disk.Dump();
  RunDb(disk, {"-t", "-s"});
  EXPECT_EQ(before, disk.Dump());
}

TEST(Status, ShowsTheStatusTableThroughSql) {
  RecorderDisk disk;
  disk.Exec("insert into status values ('version', '4.2'), ('disk', 'ok');");
  const RunResult r = RunDb(disk, {"-s"});
  EXPECT_RUN(r, "name|value\nversion|4.2\ndisk|ok\n", "", 0);
}

TEST(Status, EachOccurrenceRunsSqlAgainInOrder) {
  RecorderDisk disk;
  disk.Exec("insert into status values ('version', '4.2');");
  const RunResult r = RunDb(disk, {"-s", "-t", "-s"});
  EXPECT_EQ(std::string("name|value\nversion|4.2\n") + kHeading +
                "events             0\n"
                "streamfiles        0\n"
                "status             1\n"
                "\n"
                "name|value\n"
                "version|4.2\n",
            r.out);
}

TEST(Status, WithoutSqlCommandDbPrintsNothingOfItsOwn) {
  RecorderDisk disk;
  const RunResult r =
      RunInSandbox(disk, {"env", "PATH=/usr/bin:/bin", BinDir() + "/db", "-s", "-s"});
  EXPECT_RUN(r, "", "sh: 1: sql: not found\nsh: 1: sql: not found\n", 0);
}

TEST(Status, MissingStatusTableIsSqlsOwnMessage) {
  RecorderDisk disk(RecorderDisk::Store::kEmptyDatabase);
  disk.Exec("create table streamfiles(number, size);");
  const RunResult r = RunDb(disk, {"-s"});
  EXPECT_EQ("", r.out);
  EXPECT_NE(std::string::npos, r.err.find("no such table: status"));
  EXPECT_EQ(0, r.status);
}

}  // namespace
