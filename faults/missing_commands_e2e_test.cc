// The recorder's commands missing from PATH: the shell says so on standard
// error, db goes on as if the command had printed nothing, and the store is
// left as it was.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "faults/fault_helpers.h"
#include "sim/file_pes/ts_builder.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

namespace {

using faults::LinkFolder;
using faults::SystemProgram;

// The report of -a d when both files pass, or no analyser says otherwise.
const char kBothPass[] =
    "File count = 2\n"
    " Checking 1.ts:  extracting.../mnt/hd/1.ts  checking...PASS\n"
    " Checking 2.ts:  extracting.../mnt/hd/2.ts  checking...PASS\n"
    "\n";

class MissingCommands : public ::testing::TestWithParam<AccessPath> {
 protected:
  // Two stream files with sound contents, ready to be extracted.
  void SetUp() override {
    FileRow two;
    two.number = 2;
    disk_.Exec(FileRow().Insert() + two.Insert());
    disk_.WriteFile("streams/1.ts", MakeStream(StreamShape()));
    disk_.WriteFile("streams/2.ts", MakeStream(StreamShape()));
    before_ = disk_.Dump();
  }
  // Runs db with a PATH of links to every program it runs but `missing`.
  RunResult RunWithout(const std::string& missing, const std::vector<std::string>& args) {
    std::vector<std::string> programs;
    for (const std::string& program :
         {std::string("sql"), std::string("StreamMgrCli"), std::string("filePes"),
          SystemProgram("rm"), SystemProgram("pidof"), SystemProgram("sqlite3")}) {
      if (program.substr(program.rfind('/') + 1) != missing) programs.push_back(program);
    }
    return faults::RunDbWithPath(disk_, GetParam(), LinkFolder(disk_, "path", programs), args);
  }
  RecorderDisk disk_;
  std::string before_;
};

TEST_P(MissingCommands, WithoutSqlTheStatusTableIsMissing) {
  const RunResult r = RunWithout("sql", {"-s", "-s"});
  EXPECT_RUN(r, "", "sh: 1: sql: not found\nsh: 1: sql: not found\n", 0);
  EXPECT_EQ(before_, disk_.Dump());
}

TEST_P(MissingCommands, WithoutSqlTheNullFieldsWarningStandsAlone) {
  EventRow row("r1");
  disk_.Exec(row.Insert() + "update events set totalparts = NULL;");
  const std::string before = disk_.Dump();
  const RunResult r = RunWithout("sql", {"-e"});
  // The heading and row are the event table's; only the block after it is
  // checked here.
  const std::string block =
      "\n\n    WARNING!  Some critical fields are NULL!  (affected reid's shown below):\n\n\n";
  ASSERT_GE(r.out.size(), block.size());
  EXPECT_EQ(block, r.out.substr(r.out.size() - block.size()));
  EXPECT_EQ("sh: 1: sql: not found\n", r.err);
  EXPECT_EQ(0, r.status);
  EXPECT_EQ(before, disk_.Dump());
}

TEST_P(MissingCommands, WithoutStreamMgrCliNoFileIsExtractedAndOutputStops) {
  const RunResult r = RunWithout("StreamMgrCli", {"-a", "d", "-t"});
  // No extracted name: standard output fails for the rest of the run.
  EXPECT_RUN(r, "File count = 2\n Checking 1.ts:  extracting...",
             "sh: 1: StreamMgrCli: not found\nsh: 1: StreamMgrCli: not found\n", 0);
  EXPECT_FALSE(disk_.Exists("1.ts"));
  EXPECT_FALSE(disk_.Exists("2.ts"));
  EXPECT_EQ(before_, disk_.Dump());
}

TEST_P(MissingCommands, WithoutFilePesEveryFilePassesAndIsRemoved) {
  const RunResult r = RunWithout("filePes", {"-a", "d"});
  EXPECT_RUN(r, kBothPass, "sh: 1: filePes: not found\nsh: 1: filePes: not found\n", 0);
  EXPECT_FALSE(disk_.Exists("1.ts"));
  EXPECT_FALSE(disk_.Exists("2.ts"));
  EXPECT_EQ(before_, disk_.Dump());
}

TEST_P(MissingCommands, WithoutRmTheExtractedFilesStay) {
  const RunResult r = RunWithout("rm", {"-a", "d"});
  EXPECT_RUN(r, kBothPass, "sh: 1: rm: not found\nsh: 1: rm: not found\n", 0);
  EXPECT_TRUE(disk_.Exists("1.ts"));
  EXPECT_TRUE(disk_.Exists("2.ts"));
  EXPECT_EQ(before_, disk_.Dump());
}

INSTANTIATE_TEST_SUITE_P(Faults, MissingCommands, BothAccessPaths(), PathName);

}  // namespace
