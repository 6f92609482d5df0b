// Start-up, option dispatch and exit status, run end to end in the sandbox.
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include "events/expected_event_table.h"
#include "testing/expected_usage.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

namespace {

const char kTablesReport[] =
    "\n"
    "Table Name    Entries\n"
    "============  =======\n"
    "events             0\n"
    "streamfiles        0\n"
    "status             0\n"
    "\n";

const char kEmptyTablesReport[] =
    "\n"
    "Table Name    Entries\n"
    "============  =======\n"
    "\n";

TEST(StartUp, NoArgumentsPrintsUsageAndExitsZero) {
  RecorderDisk disk;
  const RunResult r = RunDb(disk, {});
  EXPECT_EQ(ExpectedUsage("db", false), r.out);
  EXPECT_EQ("", r.err);
  EXPECT_EQ(0, r.status);
}

TEST(StartUp, NoArgumentsWithoutAnyStoreStillPrintsUsage) {
  RecorderDisk disk(RecorderDisk::Store::kNone);
  const RunResult r = RunDb(disk, {});
  EXPECT_EQ(ExpectedUsage("db", false), r.out);
  EXPECT_EQ("", r.err);
  EXPECT_EQ(0, r.status);
  // Nothing was opened, so nothing was created.
  EXPECT_FALSE(disk.Exists("streammgr"));
}

TEST(StartUp, ProgramNameIsPrintedAsGiven) {
  RecorderDisk disk;
  const RunResult r = RunInSandbox(disk, {BinDir() + "/db", "-h"});
  EXPECT_EQ(ExpectedUsage(BinDir() + "/db", false), r.out);
  EXPECT_EQ(0, r.status);
}

TEST(StartUp, HelpThenTablesRunsBoth) {
  RecorderDisk disk;
  const RunResult r = RunDb(disk, {"-h", "-t"});
  EXPECT_EQ(ExpectedUsage("db", false) + kTablesReport, r.out);
  EXPECT_EQ("", r.err);
  EXPECT_EQ(0, r.status);
}

TEST(StartUp, LongHelpAndUsageAndPrefixes) {
  RecorderDisk disk;
  const RunResult r = RunDb(disk, {"--help", "--usage", "--he"});
  EXPECT_EQ(ExpectedUsage("db", false) + ExpectedUsage("db", false) + ExpectedUsage("db", false),
            r.out);
  EXPECT_EQ(0, r.status);
}

TEST(StartUp, HelpTwicePrintsTheTextTwice) {
  RecorderDisk disk;
  const RunResult r = RunDb(disk, {"-h", "-h"});
  EXPECT_EQ(ExpectedUsage("db", false) + ExpectedUsage("db", false), r.out);
  EXPECT_EQ("", r.err);
  EXPECT_EQ(0, r.status);
}

TEST(StartUp, UnknownOptionPrintsDiagnosticAndUsageWithMessage) {
  RecorderDisk disk;
  const RunResult r = RunDb(disk, {"-x"});
  EXPECT_EQ(ExpectedUsage("db", false, "Error: unknown option specified"), r.out);
  EXPECT_EQ("db: invalid option -- 'x'\n", r.err);
  EXPECT_EQ(0, r.status);
}

TEST(StartUp, MissingArgumentIsAnUnknownOption) {
  RecorderDisk disk;
  const RunResult r = RunDb(disk, {"-r"});
  EXPECT_EQ(ExpectedUsage("db", false, "Error: unknown option specified"), r.out);
  EXPECT_EQ("db: option requires an argument -- 'r'\n", r.err);
  EXPECT_EQ(0, r.status);
}

TEST(StartUp, UnknownLongOption) {
  RecorderDisk disk;
  const RunResult r = RunDb(disk, {"--bogus", "-t"});
  EXPECT_EQ(ExpectedUsage("db", false, "Error: unknown option specified") + kTablesReport, r.out);
  EXPECT_EQ("db: unrecognized option '--bogus'\n", r.err);
  EXPECT_EQ(0, r.status);
}

TEST(StartUp, AmbiguousLongOptionPrefix) {
  RecorderDisk disk;
  const RunResult r = RunDb(disk, {"--dele"});
  EXPECT_EQ(ExpectedUsage("db", false, "Error: unknown option specified"), r.out);
  EXPECT_EQ(0u, r.err.find("db: option '--dele' is ambiguous; possibilities:"));
  EXPECT_EQ(0, r.status);
}

TEST(StartUp, LongOptionWithArgumentItDoesNotTake) {
  RecorderDisk disk;
  const RunResult r = RunDb(disk, {"--tables=x"});
  EXPECT_EQ(ExpectedUsage("db", false, "Error: unknown option specified"), r.out);
  EXPECT_EQ("db: option '--tables' doesn't allow an argument\n", r.err);
}

TEST(StartUp, NonOptionWordsAreIgnored) {
  RecorderDisk disk;
  const RunResult r = RunDb(disk, {"stray", "-t", "words"});
  EXPECT_EQ(kTablesReport, r.out);
  EXPECT_EQ("", r.err);
  EXPECT_EQ(0, r.status);
}

TEST(StartUp, MissingStoreFolderReportsOpenErrorAndExitsWithItsCode) {
  RecorderDisk disk(RecorderDisk::Store::kNone);
  const RunResult r = RunDb(disk, {"-t"});
  EXPECT_EQ(kEmptyTablesReport, r.out);
  EXPECT_EQ(
      "error opening sqlite3\n"
      "unable to prepare: select number, size from streamfilesmainunable to access database\n"
      "unable to prepare: select tbl_name from sqlite_master where type='table'",
      r.err);
  EXPECT_EQ(SQLITE_CANTOPEN, r.status);
}

TEST(StartUp, HelpAfterFailedOpenMakesExitStatusZero) {
  RecorderDisk disk(RecorderDisk::Store::kNone);
  const RunResult r = RunDb(disk, {"-t", "-h"});
  EXPECT_EQ(std::string(kEmptyTablesReport) + ExpectedUsage("db", false), r.out);
  EXPECT_EQ(0, r.status);
}

TEST(StartUp, HelpThenEventsAfterAFailedOpenListsAndExitsZero) {
  RecorderDisk disk(RecorderDisk::Store::kNone);
  const RunResult r = RunDb(disk, {"-h", "-e"});
  EXPECT_EQ(ExpectedUsage("db", false) + kGibHeading, r.out);
  EXPECT_EQ(
      "error opening sqlite3\n"
      "unable to prepare: select number, size from streamfilesmainunable to access database\n"
      "unable to prepare: select * from events"
      "unable to prepare: select count(*) from events where streamstate is NULL or totalfiles is "
      "NULL or groupid is NULL or part is NULL or totalparts is NULL: error getting file stats\n",
      r.err);
  EXPECT_EQ(0, r.status);
}

TEST(StartUp, EmptyStoreFileHasNoTables) {
  RecorderDisk disk(RecorderDisk::Store::kNone);
  disk.WriteFile("streammgr/stream.db", "");
  const RunResult r = RunDb(disk, {"-t"});
  EXPECT_EQ(kEmptyTablesReport, r.out);
  EXPECT_EQ(
      "unable to prepare: select number, size from streamfilesmainunable to access database\n",
      r.err);
  EXPECT_EQ(0, r.status);
  EXPECT_EQ("", disk.ReadFile("streammgr/stream.db"));
}

TEST(StartUp, StoreThatIsNotADatabase) {
  RecorderDisk disk(RecorderDisk::Store::kNone);
  const std::string garbage(4096, 'x');
  disk.WriteFile("streammgr/stream.db", garbage);
  const RunResult r = RunDb(disk, {"-t"});
  EXPECT_EQ(kEmptyTablesReport, r.out);
  EXPECT_EQ(
      "unable to prepare: select number, size from streamfilesmainunable to access database\n"
      "unable to prepare: select tbl_name from sqlite_master where type='table'",
      r.err);
  EXPECT_EQ(0, r.status);
  EXPECT_EQ(garbage, disk.ReadFile("streammgr/stream.db"));
}

TEST(StartUp, StoreThatIsAFolder) {
  RecorderDisk disk(RecorderDisk::Store::kNone);
  disk.WriteFile("streammgr/stream.db/inside", "x");
  const RunResult r = RunDb(disk, {"-t"});
  EXPECT_EQ(kEmptyTablesReport, r.out);
  EXPECT_EQ(
      "error opening sqlite3\n"
      "unable to prepare: select number, size from streamfilesmainunable to access database\n"
      "unable to prepare: select tbl_name from sqlite_master where type='table'",
      r.err);
  EXPECT_EQ(SQLITE_CANTOPEN, r.status);
}

TEST(StartUp, TruncatedStoreIsReportedNotCrashed) {
  RecorderDisk disk;
  std::string rows;
  for (int i = 1; i <= 2000; ++i) {
    FileRow file;
    file.number = i;
    rows += file.Insert();
  }
  disk.Exec("begin;" + rows + "commit;");
  const std::string whole = disk.ReadFile("streammgr/stream.db");
  ASSERT_GT(whole.size(), 3 * 4096u);
  disk.WriteFile("streammgr/stream.db", whole.substr(0, 3 * 4096));
  const RunResult r = RunDb(disk, {"-t"});
  EXPECT_EQ(kEmptyTablesReport, r.out);
  EXPECT_EQ(
      "unable to prepare: select number, size from streamfilesmainunable to access database\n"
      "unable to prepare: select tbl_name from sqlite_master where type='table'",
      r.err);
  EXPECT_EQ(0, r.status);
  EXPECT_EQ(whole.substr(0, 3 * 4096), disk.ReadFile("streammgr/stream.db"));
}

TEST(StartUp, UnreadableStoreForAnUnprivilegedUser) {
  RecorderDisk disk;
  chmod(disk.StorePath().c_str(), 0);
  SandboxOptions options;
  options.unprivileged = true;
  const RunResult r = RunDb(disk, {"-t"}, options);
  EXPECT_EQ(kEmptyTablesReport, r.out);
  EXPECT_EQ(
      "error opening sqlite3\n"
      "unable to prepare: select number, size from streamfilesmainunable to access database\n"
      "unable to prepare: select tbl_name from sqlite_master where type='table'",
      r.err);
  EXPECT_EQ(SQLITE_CANTOPEN, r.status);
}

TEST(StartUp, SandboxWorksForAnUnprivilegedUser) {
  RecorderDisk disk;
  SandboxOptions options;
  options.unprivileged = true;
  const RunResult r = RunDb(disk, {"-t"}, options);
  EXPECT_EQ(kTablesReport, r.out);
  EXPECT_EQ("", r.err);
  EXPECT_EQ(0, r.status);
}

TEST(StartUp, StoreLockedByAnotherWriter) {
  RecorderDisk disk;
  disk.Exec(FileRow().Insert());
  const std::string before = disk.Dump();
  sqlite3* writer = nullptr;
  ASSERT_EQ(SQLITE_OK, sqlite3_open(disk.StorePath().c_str(), &writer));
  ASSERT_EQ(SQLITE_OK, sqlite3_exec(writer, "begin exclusive", nullptr, nullptr, nullptr));
  const RunResult r = RunDb(disk, {"-t"});
  sqlite3_exec(writer, "rollback", nullptr, nullptr, nullptr);
  sqlite3_close(writer);
  EXPECT_EQ(kEmptyTablesReport, r.out);
  EXPECT_EQ(
      "unable to prepare: select number, size from streamfilesmainunable to access database\n"
      "unable to prepare: select tbl_name from sqlite_master where type='table'",
      r.err);
  EXPECT_EQ(0, r.status);
  EXPECT_EQ(before, disk.Dump());
}

}  // namespace
