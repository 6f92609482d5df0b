// db -a d end to end with scripted StreamMgrCli and filePes, on the database
// file and through the daemon.
#include <gtest/gtest.h>

#include <string>

#include "analysis/analysis_e2e_fixture.h"
#include "testing/expected_start_up.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

namespace {

using analysis_e2e::BothPaths;
using analysis_e2e::Fake;
using analysis_e2e::RunWithFakes;

// Stream files numbered 10, 20, ...: the analysis numbers them 1 to count.
void AddFiles(const RecorderDisk& disk, int count) {
  std::string sql;
  for (int i = 1; i <= count; ++i) {
    FileRow row;
    row.number = 10 * i;
    sql += row.Insert();
  }
  disk.Exec(sql);
}

// An extractor that leaves /mnt/hd/N.ts, logs its call and names the copy.
const char kExtractor[] =
    "echo \"x $2\" >> /mnt/hd/calls.log\n"
    "echo data > /mnt/hd/$2.ts\n"
    "echo \"extracting stream file $2\"\n"
    "echo \"copied: stream$2.ts\"\n";

// An analyser that logs its call and finds nothing wrong.
const char kCleanAnalyser[] =
    "echo \"a $2\" >> /mnt/hd/calls.log\n"
    "echo \"split point 1 ok\"\n";

class DiskAnalysis : public BothPaths {};

TEST_P(DiskAnalysis, ChecksFilesOneToCountInOrderAndRemovesEach) {
  RecorderDisk disk;
  AddFiles(disk, 3);
  Fake(disk, "StreamMgrCli", kExtractor);
  Fake(disk, "filePes", kCleanAnalyser);
  const RunResult r = RunWithFakes(disk, GetParam(), {"-a", "d"});
  EXPECT_RUN(r,
             "File count = 3\n"
             " Checking 1.ts:  extracting...stream1.ts  checking...PASS\n"
             " Checking 2.ts:  extracting...stream2.ts  checking...PASS\n"
             " Checking 3.ts:  extracting...stream3.ts  checking...PASS\n"
             "\n",
             "", 0);
  EXPECT_EQ(
      "x 1\n"
      "a /mnt/hd/1.ts\n"
      "x 2\n"
      "a /mnt/hd/2.ts\n"
      "x 3\n"
      "a /mnt/hd/3.ts\n",
      disk.ReadFile("calls.log"));
  for (const char* name : {"1.ts", "2.ts", "3.ts", "10.ts"}) EXPECT_FALSE(disk.Exists(name));
}

TEST_P(DiskAnalysis, NoStreamFiles) {
  RecorderDisk disk;
  Fake(disk, "StreamMgrCli", kExtractor);
  const RunResult r = RunWithFakes(disk, GetParam(), {"-a", "d"});
  EXPECT_EQ("File count = 0\n\n", r.out);
  EXPECT_EQ("", r.err);
  EXPECT_FALSE(disk.Exists("calls.log"));
}

TEST_P(DiskAnalysis, OutputIsShownFromTheFirstFailLineOn) {
  RecorderDisk disk;
  AddFiles(disk, 2);
  Fake(disk, "StreamMgrCli", kExtractor);
  Fake(disk, "filePes",
       "if [ \"$2\" = /mnt/hd/1.ts ]; then\n"
       "  echo 'line 1'; echo 'line 2'; echo 'line 3'\n"
       "  echo 'line 4 FAIL here'; echo 'line 5'; echo 'line 6 FAIL again'\n"
       "fi\n");
  const RunResult r = RunWithFakes(disk, GetParam(), {"-a", "d"});
  EXPECT_EQ(
      "File count = 2\n"
      " Checking 1.ts:  extracting...stream1.ts  checking...line 4 FAIL here\n"
      "line 5\n"
      "line 6 FAIL again\n"
      " Checking 2.ts:  extracting...stream2.ts  checking...PASS\n"
      "\n",
      r.out);
  EXPECT_FALSE(disk.Exists("1.ts"));
}

TEST_P(DiskAnalysis, FailIsCaseSensitive) {
  RecorderDisk disk;
  AddFiles(disk, 1);
  Fake(disk, "StreamMgrCli", kExtractor);
  Fake(disk, "filePes", "echo 'split point 1: fail'\necho 'Fail'\n");
  const RunResult r = RunWithFakes(disk, GetParam(), {"-a", "d"});
  EXPECT_EQ(
      "File count = 1\n"
      " Checking 1.ts:  extracting...stream1.ts  checking...PASS\n"
      "\n",
      r.out);
}

TEST_P(DiskAnalysis, LastCopiedLineNamesTheFile) {
  RecorderDisk disk;
  AddFiles(disk, 1);
  Fake(disk, "StreamMgrCli",
       "echo 'copied: first.ts'\necho 'something else'\necho 'now copied: second.ts'\n");
  Fake(disk, "filePes", "");
  const RunResult r = RunWithFakes(disk, GetParam(), {"-a", "d"});
  EXPECT_EQ(
      "File count = 1\n"
      " Checking 1.ts:  extracting...second.ts  checking...PASS\n"
      "\n",
      r.out);
}

TEST_P(DiskAnalysis, CopiedLineWithoutLineEndLosesItsLastCharacter) {
  RecorderDisk disk;
  AddFiles(disk, 1);
  Fake(disk, "StreamMgrCli", "printf 'copied: name.ts'\n");
  Fake(disk, "filePes", "");
  const RunResult r = RunWithFakes(disk, GetParam(), {"-a", "d"});
  EXPECT_EQ(
      "File count = 1\n"
      " Checking 1.ts:  extracting...name.t  checking...PASS\n"
      "\n",
      r.out);
}

TEST_P(DiskAnalysis, FileWithoutANameSilencesTheRestOfTheRun) {
  RecorderDisk disk;
  AddFiles(disk, 3);
  Fake(disk, "StreamMgrCli",
       "echo \"x $2\" >> /mnt/hd/calls.log\n"
       "echo data > /mnt/hd/$2.ts\n"
       "[ \"$2\" = 2 ] && echo 'no marker here' || echo \"copied: stream$2.ts\"\n");
  Fake(disk, "filePes", kCleanAnalyser);
  // -t prints nothing afterwards; -s runs sql, which still writes.
  const RunResult r = RunWithFakes(disk, GetParam(), {"-a", "d", "-t", "-s"});
  EXPECT_RUN(r,
             "File count = 3\n"
             " Checking 1.ts:  extracting...stream1.ts  checking...PASS\n"
             " Checking 2.ts:  extracting...",
             "", 0);
  // File 2 is neither analysed nor removed; file 3 is both.
  EXPECT_EQ("x 1\na /mnt/hd/1.ts\nx 2\nx 3\na /mnt/hd/3.ts\n", disk.ReadFile("calls.log"));
  EXPECT_FALSE(disk.Exists("1.ts"));
  EXPECT_TRUE(disk.Exists("2.ts"));
  EXPECT_FALSE(disk.Exists("3.ts"));
}

TEST_P(DiskAnalysis, LaterCommandsStillWriteAfterTheSilence) {
  RecorderDisk disk;
  AddFiles(disk, 1);
  disk.Exec("insert into status values ('version', '4.2.1');");
  Fake(disk, "StreamMgrCli", "echo 'copied: '\n");  // nothing after the marker
  const RunResult r = RunWithFakes(disk, GetParam(), {"-a", "d", "-s", "-e"});
  EXPECT_EQ(
      "File count = 1\n"
      " Checking 1.ts:  extracting...name|value\n"
      "version|4.2.1\n",
      r.out);
}

TEST_P(DiskAnalysis, ExtractedNameIsOnlyShown) {
  RecorderDisk disk;
  AddFiles(disk, 1);
  Fake(disk, "StreamMgrCli",
       "echo data > /mnt/hd/$2.ts\n"
       "echo data > /mnt/hd/elsewhere.ts\n"
       "echo 'copied: /mnt/hd/elsewhere.ts'\n");
  Fake(disk, "filePes", "echo \"$@\" > /mnt/hd/analysed\n");
  const RunResult r = RunWithFakes(disk, GetParam(), {"-a", "d"});
  EXPECT_EQ(
      "File count = 1\n"
      " Checking 1.ts:  extracting.../mnt/hd/elsewhere.ts  checking...PASS\n"
      "\n",
      r.out);
  EXPECT_EQ("-a /mnt/hd/1.ts\n", disk.ReadFile("analysed"));
  EXPECT_FALSE(disk.Exists("1.ts"));
  EXPECT_TRUE(disk.Exists("elsewhere.ts"));
}

TEST_P(DiskAnalysis, RepeatedOptionRunsAgain) {
  RecorderDisk disk;
  AddFiles(disk, 1);
  Fake(disk, "StreamMgrCli", kExtractor);
  Fake(disk, "filePes", kCleanAnalyser);
  const RunResult r = RunWithFakes(disk, GetParam(), {"-a", "d", "-a", "d"});
  const std::string once =
      "File count = 1\n"
      " Checking 1.ts:  extracting...stream1.ts  checking...PASS\n"
      "\n";
  EXPECT_EQ(once + once, r.out);
}

TEST_P(DiskAnalysis, AnalysisChangesNoRow) {
  RecorderDisk disk;
  AddFiles(disk, 2);
  disk.Exec(EventRow("e1").Insert());
  Fake(disk, "StreamMgrCli", kExtractor);
  Fake(disk, "filePes", "echo FAIL\n");
  const std::string before = disk.Dump();
  const RunResult r = RunWithFakes(disk, GetParam(), {"-a", "d"});
  EXPECT_EQ(
      "File count = 2\n"
      " Checking 1.ts:  extracting...stream1.ts  checking...FAIL\n"
      " Checking 2.ts:  extracting...stream2.ts  checking...FAIL\n"
      "\n",
      r.out);
  EXPECT_EQ(before, disk.Dump());
}

INSTANTIATE_TEST_SUITE_P(BothPaths, DiskAnalysis, BothAccessPaths(), PathName);

TEST(DiskAnalysisDirect, CountThatCannotBePreparedChecksNothing) {
  RecorderDisk disk(RecorderDisk::Store::kEmptyDatabase);
  Fake(disk, "StreamMgrCli", kExtractor);
  const RunResult r = RunWithFakes(disk, AccessPath::kDirect, {"-a", "d"});
  EXPECT_RUN(
      r, "File count = 0\n\n",
      std::string(kNoFileSizesLine) +
          "unable to prepare: select count(*) from streamfilesError getting count for streamfiles\n",
      0);
  EXPECT_FALSE(disk.Exists("calls.log"));
}

TEST(DiskAnalysisDaemon, FailedCountRequestChecksNothing) {
  RecorderDisk disk;
  AddFiles(disk, 2);
  Fake(disk, "StreamMgrCli", kExtractor);
  SandboxOptions options;
  options.streamMgrArgs = "--fail-requests";
  const RunResult r = RunWithFakes(disk, AccessPath::kDaemon, {"-a", "d"}, options);
  EXPECT_EQ("File count = 0\n\n", r.out);
  EXPECT_EQ("", r.err);
  EXPECT_FALSE(disk.Exists("calls.log"));
}

TEST(DiskAnalysisDaemon, CountGoesToTheDaemon) {
  RecorderDisk disk;
  AddFiles(disk, 1);
  Fake(disk, "StreamMgrCli", kExtractor);
  Fake(disk, "filePes", kCleanAnalyser);
  SandboxOptions options;
  options.streamMgrArgs = "--log /mnt/hd/requests.log";
  const RunResult r = RunWithFakes(disk, AccessPath::kDaemon, {"-a", "d"}, options);
  EXPECT_EQ(
      "File count = 1\n"
      " Checking 1.ts:  extracting...stream1.ts  checking...PASS\n"
      "\n",
      r.out);
  EXPECT_EQ("count\tselect count(*) from streamfiles\n", disk.ReadFile("requests.log"));
}

}  // namespace
