// Which analysis -a runs, end to end: the shared record, the dispatch rule
// (disk wins over split) and arguments that run nothing.
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "analysis/analysis_e2e_fixture.h"
#include "analysis/expected_split_report.h"
#include "testing/case_tables.h"
#include "testing/expected_usage.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

namespace {

using namespace analysis_e2e;
using split_report::ReportOfG;

const std::string kDisk = OneFilePasses("one.ts");
const std::string kSplit = ReportOfG();
const std::string kLimit5 = ReportOfG("  Verify part sizes <  5 GB...PASS\n");
const std::string kLimit7 = ReportOfG("  Verify part sizes <  7 GB...PASS\n");
const std::string kLimit20 = ReportOfG("  Verify part sizes < 20 GB...PASS\n");

struct OptionRun {
  const char* name;
  std::vector<std::string> args;
  std::string out;
};

void PrintTo(const OptionRun& run, std::ostream* out) { *out << run.name; }

const OptionRun kRuns[] = {
    {"Disk", {"-a", "d"}, kDisk},
    {"DiskBeforeSplit", {"-a", "ds"}, kDisk},
    {"DiskAfterSplit", {"-a", "sd"}, kDisk},
    {"DiskWithALimit", {"-a", "dz5"}, kDisk},
    // The d goes with everything after the digits: split verification runs.
    {"DiskAfterTheLimitIsLost", {"-a", "sz5d"}, kLimit5},
    {"Split", {"-a", "s"}, kSplit},
    {"SplitWithALimit", {"-a", "sz20"}, kLimit20},
    {"LimitLetterBeforeSplit", {"-a", "zs20"}, kLimit20},
    {"LimitWithoutDigits", {"-a", "sz"}, kSplit},
    // "z0" alone runs the split verification again, since split stays set.
    {"LimitCarriesOverToTheNextOption",
     {"-a", "sz7", "-a", "sz", "-a", "z0", "-a", "s"},
     kLimit7 + kLimit7 + kSplit + kSplit},
    {"StoredNumberWaitsForALaterSplit", {"-a", "z20", "-a", "s"}, kLimit20},
    {"UnknownCharacterAfterSplit", {"-a", "s?"}, kSplit},
    {"DigitsAfterDisk", {"-a", "d20"}, kDisk},
    {"UnknownCharacterFirst", {"-a", "?s"}, ""},
    {"SplitThenDiskRunsBoth", {"-a", "s", "-a", "d"}, kSplit + kDisk},
    // Once disk is set, every later -a runs the disk analysis.
    {"DiskThenSplitRunsDiskTwice", {"-a", "d", "-a", "s"}, kDisk + kDisk},
    {"LongOption", {"--analyze", "s"}, kSplit},
    {"LongOptionWithEquals", {"--analyze=s"}, kSplit},
    {"AbbreviatedLongOption", {"--an=s"}, kSplit},
    {"ArgumentJoinedToTheOption", {"-as"}, kSplit},
};

// Group G of one staged part, one stream file and tools that pass it.
void Prepare(const RecorderDisk& disk) {
  disk.Exec(SplitPart("r1", "G", 1, 1, 0, 100).Insert() + FileRow().Insert());
  Stage(disk, "r1", {Segment(0, 0)});
  Fake(disk, "StreamMgrCli", kLeaveCopy + "echo 'copied: one.ts'\n");
  Fake(disk, "filePes", "");
}

class AnalysisOptionsE2e : public CasesOnBothPaths<OptionRun> {};

TEST_P(AnalysisOptionsE2e, Run) {
  RecorderDisk disk;
  Prepare(disk);
  EXPECT_RUN(RunWithFakes(disk, Path(), Param().args), Param().out, "", 0);
}

INSTANTIATE_TEST_SUITE_P(BothPaths, AnalysisOptionsE2e, OnBothPaths(kRuns),
                         CaseOnPathName<OptionRun>);

class AnalysisOptionsOnPath : public BothPaths {
 protected:
  void SetUp() override { Prepare(disk_); }
  RecorderDisk disk_;
};

TEST_P(AnalysisOptionsOnPath, ArgumentsThatRunNothing) {
  for (const char* argument : {"z20", "q", "x", "", "z", "S", "D", "20", "-"}) {
    EXPECT_RUN(RunWithFakes(disk_, GetParam(), {"-a", argument}), "", "", 0) << argument;
  }
}

TEST_P(AnalysisOptionsOnPath, MissingArgumentIsAnUnknownOption) {
  EXPECT_RUN(RunWithFakes(disk_, GetParam(), {"-a"}),
             ExpectedUsage(BinDir() + "/db", GetParam() == AccessPath::kDaemon,
                           "Error: unknown option specified"),
             BinDir() + "/db: option requires an argument -- 'a'\n", 0);
}

INSTANTIATE_TEST_SUITE_P(BothPaths, AnalysisOptionsOnPath, BothAccessPaths(), PathName);

}  // namespace
