// Which analysis -a runs, end to end: the shared record, the dispatch rule
// (disk wins over split) and arguments that run nothing.
#include <gtest/gtest.h>

#include <string>

#include "analysis/analysis_e2e_fixture.h"
#include "testing/expected_usage.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

namespace {

using analysis_e2e::BothPaths;
using analysis_e2e::Fake;
using analysis_e2e::RunWithFakes;
using analysis_e2e::Segment;
using analysis_e2e::SplitPart;
using analysis_e2e::Stage;

const char kDiskReport[] =
    "File count = 1\n"
    " Checking 1.ts:  extracting...one.ts  checking...PASS\n"
    "\n";

std::string SplitReport(const std::string& sizeLine = "") {
  return "Checking groupId 'G':\n"
         "  Checking 2-second overlap...PASS\n"
         "  Verify last part >= 2 sec...PASS\n"
         "  Checking totalParts.........PASS\n" +
         sizeLine + "\n";
}

class AnalysisOptionsE2e : public BothPaths {
 protected:
  void SetUp() override {
    disk_.Exec(SplitPart("r1", "G", 1, 1, 0, 100).Insert() + FileRow().Insert());
    Stage(disk_, "r1", {Segment(0, 0)});
    Fake(disk_, "StreamMgrCli", "echo data > /mnt/hd/$2.ts\necho 'copied: one.ts'\n");
    Fake(disk_, "filePes", "");
  }
  RunResult Run(const std::vector<std::string>& args) {
    return RunWithFakes(disk_, GetParam(), args);
  }
  RecorderDisk disk_;
};

TEST_P(AnalysisOptionsE2e, DiskRunsTheDiskAnalysisOnly) {
  for (const char* argument : {"d", "ds", "sd", "dz5", "sz5d"}) {
    const RunResult r = Run({"-a", argument});
    // "sz5d" loses its d with the digits: it runs the split verification.
    const std::string expected = std::string(argument) == "sz5d"
                                     ? SplitReport("  Verify part sizes <  5 GB...PASS\n")
                                     : kDiskReport;
    EXPECT_RUN(r, expected, "", 0) << argument;
  }
}

TEST_P(AnalysisOptionsE2e, SplitWithAndWithoutALimit) {
  EXPECT_EQ(SplitReport(), Run({"-a", "s"}).out);
  EXPECT_EQ(SplitReport("  Verify part sizes < 20 GB...PASS\n"), Run({"-a", "sz20"}).out);
  EXPECT_EQ(SplitReport("  Verify part sizes < 20 GB...PASS\n"), Run({"-a", "zs20"}).out);
  EXPECT_EQ(SplitReport(), Run({"-a", "sz"}).out);
}

TEST_P(AnalysisOptionsE2e, LimitCarriesOverToTheNextOption) {
  const RunResult r = Run({"-a", "sz7", "-a", "sz", "-a", "z0", "-a", "s"});
  const std::string limited = SplitReport("  Verify part sizes <  7 GB...PASS\n");
  // "z0" alone runs the split verification again, since split stays set.
  EXPECT_EQ(limited + limited + SplitReport() + SplitReport(), r.out);
}

TEST_P(AnalysisOptionsE2e, ArgumentsThatRunNothing) {
  for (const char* argument : {"z20", "q", "x", "", "z", "S", "D", "20", "-"}) {
    const RunResult r = Run({"-a", argument});
    EXPECT_RUN(r, "", "", 0) << argument;
  }
}

TEST_P(AnalysisOptionsE2e, StoredNumberWaitsForALaterSplit) {
  EXPECT_EQ(SplitReport("  Verify part sizes < 20 GB...PASS\n"), Run({"-a", "z20", "-a", "s"}).out);
}

TEST_P(AnalysisOptionsE2e, UnknownCharacterKeepsEarlierFlags) {
  EXPECT_EQ(SplitReport(), Run({"-a", "s?"}).out);
  EXPECT_EQ(kDiskReport, Run({"-a", "d20"}).out);
  EXPECT_EQ("", Run({"-a", "?s"}).out);
}

TEST_P(AnalysisOptionsE2e, SplitThenDiskRunsBoth) {
  const RunResult r = Run({"-a", "s", "-a", "d"});
  EXPECT_EQ(SplitReport() + kDiskReport, r.out);
  // Once disk is set, every later -a runs the disk analysis.
  EXPECT_EQ(kDiskReport + std::string(kDiskReport), Run({"-a", "d", "-a", "s"}).out);
}

TEST_P(AnalysisOptionsE2e, LongFormsOfTheOption) {
  EXPECT_EQ(SplitReport(), Run({"--analyze", "s"}).out);
  EXPECT_EQ(SplitReport(), Run({"--analyze=s"}).out);
  EXPECT_EQ(SplitReport(), Run({"--an=s"}).out);
  EXPECT_EQ(SplitReport(), Run({"-as"}).out);
}

TEST_P(AnalysisOptionsE2e, MissingArgumentIsAnUnknownOption) {
  const RunResult r = Run({"-a"});
  EXPECT_RUN(r,
             ExpectedUsage(BinDir() + "/db", GetParam() == AccessPath::kDaemon,
                           "Error: unknown option specified"),
             BinDir() + "/db: option requires an argument -- 'a'\n", 0);
}

INSTANTIATE_TEST_SUITE_P(BothPaths, AnalysisOptionsE2e, BothAccessPaths(), PathName);

}  // namespace
