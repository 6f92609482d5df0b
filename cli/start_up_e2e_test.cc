// Start-up, option dispatch and exit status, run end to end in the sandbox.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>
#include <vector>

#include "events/expected_event_table.h"
#include "testing/expected_start_up.h"
#include "testing/expected_usage.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"
#include "testing/store_lock.h"

namespace {

const std::string kTablesReport = std::string(kTablesHeading) +
                                  "events             0\n"
                                  "streamfiles        0\n"
                                  "status             0\n"
                                  "\n";

const std::string kEmptyTablesReport = std::string(kTablesHeading) + "\n";

const std::string kUsage = ExpectedUsage("db", false);
const std::string kUnknownOptionUsage =
    ExpectedUsage("db", false, "Error: unknown option specified");

// Start-up could not open the store, and -t found no tables.
const std::string kCannotOpenTables =
    std::string("error opening sqlite3\n") + kNoFileSizesLine +
    "unable to prepare: select tbl_name from sqlite_master where type='table'";
// The store opened, but -t could not read its tables.
const std::string kUnreadableTables =
    std::string(kNoFileSizesLine) +
    "unable to prepare: select tbl_name from sqlite_master where type='table'";

// One run of db on a disk made as the case says, compared whole.
struct StartUpCase {
  const char* name;
  RecorderDisk::Store store;
  std::vector<std::string> args;
  RunResult expected;
  bool unprivileged = false;
  void (*prepare)(RecorderDisk& disk) = nullptr;
};

std::ostream& operator<<(std::ostream& out, const StartUpCase& c) { return out << c.name; }

const RecorderDisk::Store kStore = RecorderDisk::Store::kSchema;
const RecorderDisk::Store kNoStore = RecorderDisk::Store::kNone;

const StartUpCase kCases[] = {
    {"NoArgumentsPrintsUsageAndExitsZero", kStore, {}, {kUsage, "", 0}},
    {"HelpThenTablesRunsBoth", kStore, {"-h", "-t"}, {kUsage + kTablesReport, "", 0}},
    {"HelpTwicePrintsTheTextTwice", kStore, {"-h", "-h"}, {kUsage + kUsage, "", 0}},
    {"UnknownOptionPrintsDiagnosticAndUsageWithMessage",
     kStore,
     {"-x"},
     {kUnknownOptionUsage, "db: invalid option -- 'x'\n", 0}},
    {"MissingArgumentIsAnUnknownOption",
     kStore,
     {"-r"},
     {kUnknownOptionUsage, "db: option requires an argument -- 'r'\n", 0}},
    {"UnknownLongOption",
     kStore,
     {"--bogus", "-t"},
     {kUnknownOptionUsage + kTablesReport, "db: unrecognized option '--bogus'\n", 0}},
    {"NonOptionWordsAreIgnored", kStore, {"stray", "-t", "words"}, {kTablesReport, "", 0}},
    {"MissingStoreFolderReportsOpenErrorAndExitsWithItsCode",
     kNoStore,
     {"-t"},
     {kEmptyTablesReport, kCannotOpenTables, SQLITE_CANTOPEN}},
    {"HelpThenEventsAfterAFailedOpenListsAndExitsZero",
     kNoStore,
     {"-h", "-e"},
     {kUsage + kGibHeading,
      std::string("error opening sqlite3\n") + kNoFileSizesLine +
          "unable to prepare: select * from eventsunable to prepare: select count(*) from events where streamstate is NULL or totalfiles is NULL or groupid is NULL or part is NULL or totalparts is NULL: error getting file stats\n",
      0}},
    {"StoreThatIsAFolder",
     kNoStore,
     {"-t"},
     {kEmptyTablesReport, kCannotOpenTables, SQLITE_CANTOPEN},
     false,
     [](RecorderDisk& disk) { disk.WriteFile("streammgr/stream.db/inside", "x"); }},
    {"UnreadableStoreForAnUnprivilegedUser",
     kStore,
     {"-t"},
     {kEmptyTablesReport, kCannotOpenTables, SQLITE_CANTOPEN},
     true,
     [](RecorderDisk& disk) { chmod(disk.StorePath().c_str(), 0); }},
    {"SandboxWorksForAnUnprivilegedUser", kStore, {"-t"}, {kTablesReport, "", 0}, true},
};

class StartUpRun : public ::testing::TestWithParam<StartUpCase> {};

TEST_P(StartUpRun, PrintsExactly) {
  const StartUpCase& c = GetParam();
  RecorderDisk disk(c.store);
  if (c.prepare != nullptr) c.prepare(disk);
  SandboxOptions options;
  options.unprivileged = c.unprivileged;
  EXPECT_RUN(RunDb(disk, c.args, options), c.expected);
}

INSTANTIATE_TEST_SUITE_P(StartUp, StartUpRun, ::testing::ValuesIn(kCases),
                         [](const ::testing::TestParamInfo<StartUpCase>& info) {
                           return std::string(info.param.name);
                         });

TEST(StartUp, NoArgumentsWithoutAnyStoreStillPrintsUsage) {
  RecorderDisk disk(RecorderDisk::Store::kNone);
  EXPECT_RUN(RunDb(disk, {}), kUsage, "", 0);
  // Nothing was opened, so nothing was created.
  EXPECT_FALSE(disk.Exists("streammgr"));
}

TEST(StartUp, ProgramNameIsPrintedAsGiven) {
  RecorderDisk disk;
  const RunResult r = RunInSandbox(disk, {BinDir() + "/db", "-h"});
  EXPECT_EQ(ExpectedUsage(BinDir() + "/db", false), r.out);
  EXPECT_EQ(0, r.status);
}

TEST(StartUp, LongHelpAndUsageAndPrefixes) {
  RecorderDisk disk;
  const RunResult r = RunDb(disk, {"--help", "--usage", "--he"});
  EXPECT_EQ(kUsage + kUsage + kUsage, r.out);
  EXPECT_EQ(0, r.status);
}

TEST(StartUp, AmbiguousLongOptionPrefix) {
  RecorderDisk disk;
  const RunResult r = RunDb(disk, {"--dele"});
  EXPECT_EQ(kUnknownOptionUsage, r.out);
  EXPECT_EQ(0u, r.err.find("db: option '--dele' is ambiguous; possibilities:"));
  EXPECT_EQ(0, r.status);
}

TEST(StartUp, LongOptionWithArgumentItDoesNotTake) {
  RecorderDisk disk;
  const RunResult r = RunDb(disk, {"--tables=x"});
  EXPECT_EQ(kUnknownOptionUsage, r.out);
  EXPECT_EQ("db: option '--tables' doesn't allow an argument\n", r.err);
}

TEST(StartUp, HelpAfterFailedOpenMakesExitStatusZero) {
  RecorderDisk disk(RecorderDisk::Store::kNone);
  const RunResult r = RunDb(disk, {"-t", "-h"});
  EXPECT_EQ(kEmptyTablesReport + kUsage, r.out);
  EXPECT_EQ(0, r.status);
}

TEST(StartUp, EmptyStoreFileHasNoTables) {
  RecorderDisk disk(RecorderDisk::Store::kNone);
  disk.WriteFile("streammgr/stream.db", "");
  EXPECT_RUN(RunDb(disk, {"-t"}), kEmptyTablesReport, kNoFileSizesLine, 0);
  EXPECT_EQ("", disk.ReadFile("streammgr/stream.db"));
}

TEST(StartUp, StoreThatIsNotADatabase) {
  RecorderDisk disk(RecorderDisk::Store::kNone);
  const std::string garbage(4096, 'x');
  disk.WriteFile("streammgr/stream.db", garbage);
  EXPECT_RUN(RunDb(disk, {"-t"}), kEmptyTablesReport, kUnreadableTables, 0);
  EXPECT_EQ(garbage, disk.ReadFile("streammgr/stream.db"));
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
  EXPECT_RUN(RunDb(disk, {"-t"}), kEmptyTablesReport, kUnreadableTables, 0);
  EXPECT_EQ(whole.substr(0, 3 * 4096), disk.ReadFile("streammgr/stream.db"));
}

TEST(StartUp, StoreLockedByAnotherWriter) {
  RecorderDisk disk;
  disk.Exec(FileRow().Insert());
  const std::string before = disk.Dump();
  {
    StoreLock writer(disk.StorePath());
    EXPECT_RUN(RunDb(disk, {"-t"}), kEmptyTablesReport, kUnreadableTables, 0);
  }
  EXPECT_EQ(before, disk.Dump());
}

}  // namespace
