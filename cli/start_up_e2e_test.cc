// Start-up, option dispatch and exit status, run end to end in the sandbox.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>
#include <vector>

#include "events/expected_event_table.h"
#include "testing/case_tables.h"
#include "testing/cli_words.h"
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
  const char* args;  // separated by blanks
  std::string out;
  std::string err;
  int status;
  void (*prepare)(RecorderDisk& disk) = nullptr;
  bool unprivileged = false;
};

std::ostream& operator<<(std::ostream& out, const StartUpCase& c) { return out << c.name; }

const RecorderDisk::Store kStore = RecorderDisk::Store::kSchema;
const RecorderDisk::Store kNoStore = RecorderDisk::Store::kNone;

const StartUpCase kCases[] = {
    {"NoArgumentsPrintsUsageAndExitsZero", kStore, "", kUsage, "", 0},
    {"HelpThenTablesRunsBoth", kStore, "-h -t", kUsage + kTablesReport, "", 0},
    {"HelpTwicePrintsTheTextTwice", kStore, "-h -h", kUsage + kUsage, "", 0},
    {"UnknownOptionPrintsDiagnosticAndUsageWithMessage", kStore, "-x", kUnknownOptionUsage,
     "db: invalid option -- 'x'\n", 0},
    {"MissingArgumentIsAnUnknownOption", kStore, "-r", kUnknownOptionUsage,
     "db: option requires an argument -- 'r'\n", 0},
    {"UnknownLongOption", kStore, "--bogus -t", kUnknownOptionUsage + kTablesReport,
     "db: unrecognized option '--bogus'\n", 0},
    {"NonOptionWordsAreIgnored", kStore, "stray -t words", kTablesReport, "", 0},
    {"MissingStoreFolderReportsOpenErrorAndExitsWithItsCode", kNoStore, "-t", kEmptyTablesReport,
     kCannotOpenTables, SQLITE_CANTOPEN},
    {"HelpThenEventsAfterAFailedOpenListsAndExitsZero", kNoStore, "-h -e", kUsage + kGibHeading,
     std::string("error opening sqlite3\n") + kNoFileSizesLine +
         "unable to prepare: select * from eventsunable to prepare: select count(*) from events where streamstate is NULL or totalfiles is NULL or groupid is NULL or part is NULL or totalparts is NULL: error getting file stats\n",
     0},
    {"StoreThatIsAFolder", kNoStore, "-t", kEmptyTablesReport, kCannotOpenTables, SQLITE_CANTOPEN,
     [](RecorderDisk& disk) { disk.WriteFile("streammgr/stream.db/inside", "x"); }},
    {"UnreadableStoreForAnUnprivilegedUser", kStore, "-t", kEmptyTablesReport, kCannotOpenTables,
     SQLITE_CANTOPEN, [](RecorderDisk& disk) { chmod(disk.StorePath().c_str(), 0); }, true},
    {"SandboxWorksForAnUnprivilegedUser", kStore, "-t", kTablesReport, "", 0, nullptr, true},
    {"NoArgumentsWithoutAnyStoreStillPrintsUsage", kNoStore, "", kUsage, "", 0},
    {"LongHelpAndUsageAndPrefixes", kStore, "--help --usage --he", kUsage + kUsage + kUsage, "", 0},
    {"LongOptionWithArgumentItDoesNotTake", kStore, "--tables=x", kUnknownOptionUsage,
     "db: option '--tables' doesn't allow an argument\n", 0},
    {"HelpAfterFailedOpenMakesExitStatusZero", kNoStore, "-t -h", kEmptyTablesReport + kUsage,
     kCannotOpenTables, 0},
    {"EmptyStoreFileHasNoTables", kNoStore, "-t", kEmptyTablesReport, kNoFileSizesLine, 0,
     [](RecorderDisk& disk) { disk.WriteFile("streammgr/stream.db", ""); }},
    {"StoreThatIsNotADatabase", kNoStore, "-t", kEmptyTablesReport, kUnreadableTables, 0,
     [](RecorderDisk& disk) { disk.WriteFile("streammgr/stream.db", std::string(4096, 'x')); }},
    {"TruncatedStoreIsReportedNotCrashed", kStore, "-t", kEmptyTablesReport, kUnreadableTables, 0,
     [](RecorderDisk& disk) {
       FileRow file;
       std::string rows;
       for (file.number = 1; file.number <= 2000; ++file.number) rows += file.Insert();
       disk.Exec("begin;" + rows + "commit;");
       const std::string whole = disk.ReadFile("streammgr/stream.db");
       ASSERT_GT(whole.size(), 3 * 4096u);
       disk.WriteFile("streammgr/stream.db", whole.substr(0, 3 * 4096));
     }},
};

// The store file's bytes, or what stands in its place: start-up never
// writes the store, nor makes one where there is none.
std::string StoreState(const RecorderDisk& disk) {
  if (!disk.Exists("streammgr")) return "no folder";
  if (disk.Exists("streammgr/stream.db/inside")) return "a folder";
  return disk.ReadFile("streammgr/stream.db");
}

class StartUpRun : public ::testing::TestWithParam<StartUpCase> {};

TEST_P(StartUpRun, PrintsExactly) {
  const StartUpCase& c = GetParam();
  RecorderDisk disk(c.store);
  if (c.prepare != nullptr) c.prepare(disk);
  const std::string before = StoreState(disk);
  SandboxOptions options;
  options.unprivileged = c.unprivileged;
  EXPECT_RUN(RunDb(disk, Words(c.args), options), c.out, c.err, c.status);
  EXPECT_EQ(before, StoreState(disk));
}

INSTANTIATE_NAMED_CASES(StartUp, StartUpRun, kCases);

TEST(StartUp, ProgramNameIsPrintedAsGiven) {
  RecorderDisk disk;
  EXPECT_RUN(RunInSandbox(disk, {BinDir() + "/db", "-h"}), ExpectedUsage(BinDir() + "/db", false),
             "", 0);
}

TEST(StartUp, AmbiguousLongOptionPrefix) {
  RecorderDisk disk;
  const RunResult r = RunDb(disk, {"--dele"});
  // The parser lists the possibilities as the C library words them: only
  // the start of its message is the tool's.
  EXPECT_EQ(0u, r.err.find("db: option '--dele' is ambiguous; possibilities:")) << r.err;
  EXPECT_RUN(r, kUnknownOptionUsage, r.err, 0);
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
