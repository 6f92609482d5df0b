// The status table (-s) and the table counts (-t) on the direct path; each
// run leaves the store as it was.
#include <gtest/gtest.h>

#include <string>

#include "maintenance/expected_table_counts.h"
#include "testing/expected_start_up.h"
#include "testing/faults_case_tables.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

namespace {

using Store = RecorderDisk::Store;

const TableReport kReports[] = {
    Report("ListsEveryTableWithItsRows", Store::kSchema, FilledStore(), {"-t"},
           {kFilledCounts, "", 0}),
    // Start-up could not read the stream file sizes of a store without tables.
    Report("StoreWithNoTablesPrintsHeadingOnly", Store::kEmptyDatabase, "", {"-t"},
           {std::string(kTablesHeading) + "\n", kNoFileSizesLine, 0}),
    Report("TwiceOnOneCommandLinePrintsTheReportTwice", Store::kSchema, "", {"-t", "-t"},
           {kZeroCounts + kZeroCounts, "", 0}),
    Report("NamesOfTwelveAndThirteenCharacters", Store::kEmptyDatabase,
           "create table streamfiles(number, size);"
           "create table twelve_chars(a); insert into twelve_chars values (1);"
           "create table thirteen_char(a); insert into thirteen_char values (1), (2);",
           {"-t"},
           {std::string(kTablesHeading) + "streamfiles        0\n"
                                          "twelve_chars       1\n"
                                          "thirteen_char       2\n"
                                          "\n",
            "", 0}),
    Report("CountWiderThanItsFieldPushesRight", Store::kSchema, kWideStatus, {"-t"},
           {kWideCounts, "", 0}),
    Report(
        "TableWhoseCountCannotBePreparedShowsZero", Store::kEmptyDatabase,
        "create table streamfiles(number, size);"
        "create table \"odd name\"(a); insert into \"odd name\" values (1);",
        {"-t"},
        {std::string(kTablesHeading) + "streamfiles        0\n"
                                       "odd name           0\n"
                                       "\n",
         "unable to prepare: select count(*) from odd nameError getting count for odd name\n", 0}),
    // sql prints nothing for an empty status table.
    Report("ReportChangesNothing", Store::kSchema, EventRow("a").Insert() + FileRow().Insert(),
           {"-t", "-s"},
           {std::string(kTablesHeading) + "events             1\n"
                                          "streamfiles        1\n"
                                          "status             0\n"
                                          "\n",
            "", 0}),
    Report("ShowsTheStatusTableThroughSql", Store::kSchema,
           "insert into status values ('version', '4.2'), ('disk', 'ok');", {"-s"},
           {"name|value\nversion|4.2\ndisk|ok\n", "", 0}),
    Report("EachOccurrenceRunsSqlAgainInOrder", Store::kSchema,
           "insert into status values ('version', '4.2');", {"-s", "-t", "-s"},
           {"name|value\n"
            "version|4.2\n" +
                std::string(kTablesHeading) +
                "events             0\n"
                "streamfiles        0\n"
                "status             1\n"
                "\n"
                "name|value\n"
                "version|4.2\n",
            "", 0}),
};

class Report : public ::testing::TestWithParam<TableReport> {};

TEST_P(Report, IsPrinted) {
  RecorderDisk disk(GetParam().store);
  if (!GetParam().sql.empty()) disk.Exec(GetParam().sql);
  const std::string before = StoreState(disk);
  EXPECT_RUN(RunDb(disk, GetParam().args), GetParam().expected);
  EXPECT_EQ(before, StoreState(disk));
}

INSTANTIATE_TEST_SUITE_P(Direct, Report, ::testing::ValuesIn(kReports), CaseName<TableReport>);

TEST(Status, WithoutSqlCommandDbPrintsNothingOfItsOwn) {
  RecorderDisk disk;
  EXPECT_RUN(RunInSandbox(disk, {"env", "PATH=/usr/bin:/bin", BinDir() + "/db", "-s", "-s"}), "",
             "sh: 1: sql: not found\nsh: 1: sql: not found\n", 0);
}

TEST(Status, MissingStatusTableIsSqlsOwnMessage) {
  RecorderDisk disk(RecorderDisk::Store::kEmptyDatabase);
  disk.Exec("create table streamfiles(number, size);");
  const RunResult r = RunDb(disk, {"-s"});
  // Part of standard error on purpose: the rest is sql's own wording.
  EXPECT_NE(std::string::npos, r.err.find("no such table: status"));
  EXPECT_RUN(r, "", r.err, 0);
}

}  // namespace
