// The recorder's commands missing from PATH: the shell says so on standard
// error, db goes on as if the command had printed nothing, and the store is
// left as it was.
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "faults/fault_helpers.h"
#include "sim/file_pes/ts_builder.h"
#include "testing/faults_case_tables.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

namespace {

// The report of -a d when both files pass, or no analyser says otherwise.
const char kBothPass[] =
    "File count = 2\n"
    " Checking 1.ts:  extracting.../mnt/hd/1.ts  checking...PASS\n"
    " Checking 2.ts:  extracting.../mnt/hd/2.ts  checking...PASS\n"
    "\n";

struct Missing {
  const char* name;
  const char* command;
  std::vector<std::string> args;
  std::string out;
  int notFound;        // how many times the shell says the command is missing
  bool extractedStay;  // the extracted 1.ts and 2.ts are left on the disk
};
void PrintTo(const Missing& c, std::ostream* out) { *out << c.name; }

const Missing kCases[] = {
    {"WithoutSqlTheStatusTableIsMissing", "sql", {"-s", "-s"}, "", 2, false},
    // No extracted name: standard output fails for the rest of the run.
    {"WithoutStreamMgrCliNoFileIsExtractedAndOutputStops",
     "StreamMgrCli",
     {"-a", "d", "-t"},
     "File count = 2\n Checking 1.ts:  extracting...",
     2,
     false},
    {"WithoutFilePesEveryFilePassesAndIsRemoved", "filePes", {"-a", "d"}, kBothPass, 2, false},
    {"WithoutRmTheExtractedFilesStay", "rm", {"-a", "d"}, kBothPass, 2, true},
};

// Two stream files with sound contents, ready to be extracted.
class TwoStreamFiles {
 protected:
  TwoStreamFiles() {
    FileRow two;
    two.number = 2;
    disk_.Exec(FileRow().Insert() + two.Insert());
    disk_.WriteFile("streams/1.ts", MakeStream(StreamShape()));
    disk_.WriteFile("streams/2.ts", MakeStream(StreamShape()));
  }
  // Runs db with a PATH of links to every program it runs but `missing`;
  // the run must leave the store as it was.
  RunResult RunWithout(AccessPath path, const std::string& missing,
                       const std::vector<std::string>& args) {
    std::vector<std::string> programs;
    for (const std::string& program :
         {std::string("sql"), std::string("StreamMgrCli"), std::string("filePes"),
          faults::SystemProgram("rm"), faults::SystemProgram("pidof"),
          faults::SystemProgram("sqlite3")}) {
      if (program.substr(program.rfind('/') + 1) != missing) programs.push_back(program);
    }
    const std::string before = disk_.Dump();
    RunResult r =
        faults::RunDbWithPath(disk_, path, faults::LinkFolder(disk_, "path", programs), args);
    EXPECT_EQ(before, disk_.Dump());
    return r;
  }
  RecorderDisk disk_;
};

class MissingCommands : public TwoStreamFiles,
                        public ::testing::TestWithParam<CaseOnPath<Missing>> {};

TEST_P(MissingCommands, AreAsIfTheyPrintedNothing) {
  const Missing& c = std::get<0>(GetParam());
  std::string err;
  for (int i = 0; i < c.notFound; ++i) err += "sh: 1: " + std::string(c.command) + ": not found\n";
  EXPECT_RUN(RunWithout(std::get<1>(GetParam()), c.command, c.args), c.out, err, 0);
  EXPECT_EQ(c.extractedStay, disk_.Exists("1.ts"));
  EXPECT_EQ(c.extractedStay, disk_.Exists("2.ts"));
}

INSTANTIATE_TEST_SUITE_P(Faults, MissingCommands, OnBothPaths(kCases), CaseOnPathName<Missing>);

class MissingSql : public TwoStreamFiles, public ::testing::TestWithParam<AccessPath> {};

TEST_P(MissingSql, LeavesTheNullFieldsWarningAlone) {
  disk_.Exec(EventRow("r1").Insert() + "update events set totalparts = NULL;");
  const RunResult r = RunWithout(GetParam(), "sql", {"-e"});
  // Part of the output on purpose: the heading and row are the event
  // table's; only the block after it is checked here.
  const std::string block =
      "\n\n    WARNING!  Some critical fields are NULL!  (affected reid's shown below):\n\n\n";
  ASSERT_GE(r.out.size(), block.size());
  EXPECT_EQ(block, r.out.substr(r.out.size() - block.size()));
  EXPECT_RUN(r, r.out, "sh: 1: sql: not found\n", 0);
}

INSTANTIATE_TEST_SUITE_P(Faults, MissingSql, BothAccessPaths(), PathName);

}  // namespace
