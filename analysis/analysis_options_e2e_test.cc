// Which analysis -a runs, end to end: the shared record, the dispatch rule
// (disk wins over split) and arguments that run nothing.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "analysis/analysis_e2e_fixture.h"
#include "analysis/expected_split_report.h"
#include "testing/expected_usage.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

namespace {

using analysis_e2e::Fake;
using analysis_e2e::RunWithFakes;
using analysis_e2e::Segment;
using analysis_e2e::SplitPart;
using analysis_e2e::Stage;

const std::string kDiskReport = analysis_e2e::OneFilePasses("one.ts");

// The report of group G, with the line of a size check when one is made.
std::string SplitReport(const std::string& sizeLine = "") {
  return split_report::Passing("G") + sizeLine + "\n";
}

const std::string kSplitReport = SplitReport();
const std::string kLimit5 = SplitReport("  Verify part sizes <  5 GB...PASS\n");
const std::string kLimit7 = SplitReport("  Verify part sizes <  7 GB...PASS\n");
const std::string kLimit20 = SplitReport("  Verify part sizes < 20 GB...PASS\n");

class AnalysisOptionsE2e : public analysis_e2e::BothPaths {
 protected:
  // Group G of one staged part, one stream file and tools that pass it.
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
  for (const char* argument : {"d", "ds", "sd", "dz5"}) {
    EXPECT_RUN(Run({"-a", argument}), kDiskReport, "", 0) << argument;
  }
  // "sz5d" loses its d with the digits: it runs the split verification.
  EXPECT_RUN(Run({"-a", "sz5d"}), kLimit5, "", 0);
}

TEST_P(AnalysisOptionsE2e, SplitWithAndWithoutALimit) {
  EXPECT_RUN(Run({"-a", "s"}), kSplitReport, "", 0);
  EXPECT_RUN(Run({"-a", "sz20"}), kLimit20, "", 0);
  EXPECT_RUN(Run({"-a", "zs20"}), kLimit20, "", 0);
  EXPECT_RUN(Run({"-a", "sz"}), kSplitReport, "", 0);
}

TEST_P(AnalysisOptionsE2e, LimitCarriesOverToTheNextOption) {
  // "z0" alone runs the split verification again, since split stays set.
  EXPECT_RUN(Run({"-a", "sz7", "-a", "sz", "-a", "z0", "-a", "s"}),
             kLimit7 + kLimit7 + kSplitReport + kSplitReport, "", 0);
}

TEST_P(AnalysisOptionsE2e, ArgumentsThatRunNothing) {
  for (const char* argument : {"z20", "q", "x", "", "z", "S", "D", "20", "-"}) {
    EXPECT_RUN(Run({"-a", argument}), "", "", 0) << argument;
  }
}

TEST_P(AnalysisOptionsE2e, StoredNumberWaitsForALaterSplit) {
  EXPECT_RUN(Run({"-a", "z20", "-a", "s"}), kLimit20, "", 0);
}

TEST_P(AnalysisOptionsE2e, UnknownCharacterKeepsEarlierFlags) {
  EXPECT_RUN(Run({"-a", "s?"}), kSplitReport, "", 0);
  EXPECT_RUN(Run({"-a", "d20"}), kDiskReport, "", 0);
  EXPECT_RUN(Run({"-a", "?s"}), "", "", 0);
}

TEST_P(AnalysisOptionsE2e, SplitThenDiskRunsBoth) {
  EXPECT_RUN(Run({"-a", "s", "-a", "d"}), kSplitReport + kDiskReport, "", 0);
  // Once disk is set, every later -a runs the disk analysis.
  EXPECT_RUN(Run({"-a", "d", "-a", "s"}), kDiskReport + kDiskReport, "", 0);
}

TEST_P(AnalysisOptionsE2e, LongFormsOfTheOption) {
  for (const std::vector<std::string>& args : std::vector<std::vector<std::string>>{
           {"--analyze", "s"}, {"--analyze=s"}, {"--an=s"}, {"-as"}}) {
    EXPECT_RUN(Run(args), kSplitReport, "", 0) << args[0];
  }
}

TEST_P(AnalysisOptionsE2e, MissingArgumentIsAnUnknownOption) {
  EXPECT_RUN(Run({"-a"}),
             ExpectedUsage(BinDir() + "/db", GetParam() == AccessPath::kDaemon,
                           "Error: unknown option specified"),
             BinDir() + "/db: option requires an argument -- 'a'\n", 0);
}

INSTANTIATE_TEST_SUITE_P(BothPaths, AnalysisOptionsE2e, BothAccessPaths(), PathName);

}  // namespace
