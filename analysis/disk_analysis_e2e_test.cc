// db -a d end to end with scripted StreamMgrCli and filePes, on the database
// file and through the daemon, and bad input to -a.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "analysis/analysis_e2e_fixture.h"
#include "analysis/expected_split_report.h"
#include "testing/expected_start_up.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

namespace {

using namespace analysis_e2e;
using split_report::ReportOfG;

// Stream files numbered 10, 20, ...: the analysis numbers them 1 to count.
void AddFiles(const RecorderDisk& disk, int count) { disk.Exec(FileRows(10, 10 * count, 10)); }

// An analyser that logs its call and finds nothing wrong.
const char kCleanAnalyser[] =
    "echo \"a $2\" >> /mnt/hd/calls.log\n"
    "echo \"split point 1 ok\"\n";

const std::string kOneFilePasses = OneFilePasses("stream1.ts");

// A disk of `files` stream files and the two scripted tools.
class DiskAnalysis : public BothPaths {
 protected:
  void Tools(int files, const std::string& extractor,
             const std::string& analyser = kCleanAnalyser) {
    AddFiles(disk_, files);
    FakeTools(extractor, analyser);
  }
  void FakeTools(const std::string& extractor, const std::string& analyser) {
    Fake(disk_, "StreamMgrCli", extractor);
    Fake(disk_, "filePes", analyser);
  }
  RunResult Run(const std::vector<std::string>& args = {"-a", "d"}, bool withBuiltTools = true) {
    return RunWithFakes(disk_, GetParam(), args, SandboxOptions(), withBuiltTools);
  }
  // Runs -a d with an extractor that left no copy: the system's rm, in words
  // of its own, complains that /mnt/hd/1.ts is missing, so the run is
  // compared without its standard error, which need only name the copy.
  void ExpectWithoutCopy(const std::string& out) {
    const RunResult r = Run();
    EXPECT_NE(std::string::npos, r.err.find("/mnt/hd/1.ts")) << r.err;
    EXPECT_RUN(r, out, r.err, 0);
  }
  RecorderDisk disk_;
};

TEST_P(DiskAnalysis, ChecksFilesOneToCountInOrderAndRemovesEach) {
  Tools(3, kExtractor);
  EXPECT_RUN(Run(),
             "File count = 3\n"
             " Checking 1.ts:  extracting...stream1.ts  checking...PASS\n"
             " Checking 2.ts:  extracting...stream2.ts  checking...PASS\n"
             " Checking 3.ts:  extracting...stream3.ts  checking...PASS\n"
             "\n",
             "", 0);
  EXPECT_EQ("x 1\na /mnt/hd/1.ts\nx 2\na /mnt/hd/2.ts\nx 3\na /mnt/hd/3.ts\n",
            disk_.ReadFile("calls.log"));
  for (const char* name : {"1.ts", "2.ts", "3.ts", "10.ts"}) EXPECT_FALSE(disk_.Exists(name));
}

TEST_P(DiskAnalysis, NoStreamFiles) {
  Tools(0, kExtractor);
  EXPECT_RUN(Run(), "File count = 0\n\n", "", 0);
  EXPECT_FALSE(disk_.Exists("calls.log"));
}

TEST_P(DiskAnalysis, OutputIsShownFromTheFirstFailLineOn) {
  Tools(2, kExtractor,
        "if [ \"$2\" = /mnt/hd/1.ts ]; then\n"
        "  echo 'line 1'; echo 'line 2'; echo 'line 3'\n"
        "  echo 'line 4 FAIL here'; echo 'line 5'; echo 'line 6 FAIL again'\n"
        "fi\n");
  EXPECT_RUN(Run(),
             "File count = 2\n"
             " Checking 1.ts:  extracting...stream1.ts  checking...line 4 FAIL here\n"
             "line 5\n"
             "line 6 FAIL again\n"
             " Checking 2.ts:  extracting...stream2.ts  checking...PASS\n"
             "\n",
             "", 0);
  EXPECT_FALSE(disk_.Exists("1.ts"));
}

TEST_P(DiskAnalysis, FailIsCaseSensitive) {
  Tools(1, kExtractor, "echo 'split point 1: fail'\necho 'Fail'\n");
  EXPECT_RUN(Run(), kOneFilePasses, "", 0);
}

TEST_P(DiskAnalysis, LastCopiedLineNamesTheFile) {
  Tools(1, "echo 'copied: first.ts'\necho 'something else'\necho 'now copied: second.ts'\n", "");
  ExpectWithoutCopy(OneFilePasses("second.ts"));
}

TEST_P(DiskAnalysis, CopiedLineWithoutLineEndLosesItsLastCharacter) {
  Tools(1, "printf 'copied: name.ts'\n", "");
  ExpectWithoutCopy(OneFilePasses("name.t"));
}

TEST_P(DiskAnalysis, FileWithoutANameSilencesTheRestOfTheRun) {
  Tools(3,
        "echo \"x $2\" >> /mnt/hd/calls.log\n"
        "echo data > /mnt/hd/$2.ts\n"
        "[ \"$2\" = 2 ] && echo 'no marker here' || echo \"copied: stream$2.ts\"\n");
  // -t prints nothing afterwards; -s runs sql, which still writes.
  EXPECT_RUN(Run({"-a", "d", "-t", "-s"}),
             "File count = 3\n"
             " Checking 1.ts:  extracting...stream1.ts  checking...PASS\n"
             " Checking 2.ts:  extracting...",
             "", 0);
  // File 2 is neither analysed nor removed; file 3 is both.
  EXPECT_EQ("x 1\na /mnt/hd/1.ts\nx 2\nx 3\na /mnt/hd/3.ts\n", disk_.ReadFile("calls.log"));
  EXPECT_FALSE(disk_.Exists("1.ts"));
  EXPECT_TRUE(disk_.Exists("2.ts"));
  EXPECT_FALSE(disk_.Exists("3.ts"));
}

TEST_P(DiskAnalysis, LaterCommandsStillWriteAfterTheSilence) {
  disk_.Exec("insert into status values ('version', '4.2.1');");
  Tools(1, "echo 'copied: '\n");  // nothing after the marker
  EXPECT_RUN(Run({"-a", "d", "-s", "-e"}),
             "File count = 1\n"
             " Checking 1.ts:  extracting...name|value\n"
             "version|4.2.1\n",
             "", 0);
}

TEST_P(DiskAnalysis, ExtractedNameIsOnlyShown) {
  Tools(1,
        "echo data > /mnt/hd/$2.ts\n"
        "echo data > /mnt/hd/elsewhere.ts\n"
        "echo 'copied: /mnt/hd/elsewhere.ts'\n",
        "echo \"$@\" > /mnt/hd/analysed\n");
  EXPECT_RUN(Run(), OneFilePasses("/mnt/hd/elsewhere.ts"), "", 0);
  EXPECT_EQ("-a /mnt/hd/1.ts\n", disk_.ReadFile("analysed"));
  EXPECT_FALSE(disk_.Exists("1.ts"));
  EXPECT_TRUE(disk_.Exists("elsewhere.ts"));
}

TEST_P(DiskAnalysis, RepeatedOptionRunsAgain) {
  Tools(1, kExtractor);
  EXPECT_RUN(Run({"-a", "d", "-a", "d"}), kOneFilePasses + kOneFilePasses, "", 0);
}

TEST_P(DiskAnalysis, AnalysisChangesNoRow) {
  disk_.Exec(EventRow("e1").Insert());
  Tools(2, kExtractor, "echo FAIL\n");
  const std::string before = disk_.Dump();
  EXPECT_RUN(Run(),
             "File count = 2\n"
             " Checking 1.ts:  extracting...stream1.ts  checking...FAIL\n"
             " Checking 2.ts:  extracting...stream2.ts  checking...FAIL\n"
             "\n",
             "", 0);
  EXPECT_EQ(before, disk_.Dump());
}

INSTANTIATE_TEST_SUITE_P(BothPaths, DiskAnalysis, BothAccessPaths(), PathName);

// Bad input to -a: arguments of every byte value and of great length, and
// recorder tools that are missing, silent, or print lines too long or
// unended; on a disk of group G of one part and one stream file.
class AnalysisBadInput : public DiskAnalysis {
 protected:
  void SetUp() override {
    disk_.Exec(SplitPart("r1", "G", 1, 1, 0, 100).Insert() + FileRow().Insert());
  }
  // Runs -a d with these scripted tools.
  RunResult Analyse(const std::string& extractor, const std::string& analyser = "") {
    FakeTools(extractor, analyser);
    return Run();
  }
};

TEST_P(AnalysisBadInput, EveryOtherByteValueRunsNothing) {
  // One -a per byte value (a command line cannot hold a zero byte), in one
  // run: none of them sets a flag, so nothing is printed.
  std::vector<std::string> args;
  for (int value = 1; value < 256; ++value) {
    const char c = static_cast<char>(value);
    if (c == 's' || c == 'd' || c == 'z') continue;
    args.push_back("-a");
    args.push_back(std::string(1, c) + "sd");
  }
  const std::string before = disk_.Dump();
  EXPECT_RUN(Run(args), "", "", 0);
  EXPECT_EQ(before, disk_.Dump());
}

TEST_P(AnalysisBadInput, EveryByteValueInOneArgument) {
  std::string all = "s";
  for (int value = 1; value < 256; ++value) all += static_cast<char>(value);
  // s is read, then byte 1 stops the parse.
  EXPECT_RUN(Run({"-a", all}), ReportOfG(), "", 0);
}

TEST_P(AnalysisBadInput, HundredThousandCharacters) {
  EXPECT_RUN(Run({"-a", std::string(100000, 's')}), ReportOfG(), "", 0);
  // No digits: every z is accepted, then the s.
  EXPECT_RUN(Run({"-a", std::string(99999, 'z') + "s"}), ReportOfG(), "", 0);
  EXPECT_RUN(Run({"-a", "s" + std::string(100000, '#')}), ReportOfG(), "", 0);
  EXPECT_RUN(Run({"-a", "sz" + std::string(100000, '7')}),
             ReportOfG("  Verify part sizes < 4294967295 GB...FAIL\n"), "", 0);
}

// The shell's own message for a missing program differs from one system to
// the next: these runs are compared without their standard error, which need
// only name the program.
TEST_P(AnalysisBadInput, MissingExtractorSilencesTheRun) {
  // Neither the fakes nor the built tools are on PATH.
  const RunResult r = Run({"-a", "d"}, false);
  EXPECT_RUN(r, kExtracting, r.err, 0);
  EXPECT_NE(std::string::npos, r.err.find("StreamMgrCli: not found")) << r.err;
}

TEST_P(AnalysisBadInput, MissingAnalyserPassesAndTheCopyIsRemoved) {
  Fake(disk_, "StreamMgrCli", kExtractor);
  const RunResult r = Run({"-a", "d"}, false);
  EXPECT_RUN(r, kOneFilePasses, r.err, 0);
  EXPECT_NE(std::string::npos, r.err.find("filePes: not found")) << r.err;
  EXPECT_FALSE(disk_.Exists("1.ts"));
}

TEST_P(AnalysisBadInput, SilentToolsPassOrSilence) {
  EXPECT_RUN(Analyse(kLeaveCopy), kExtracting, "", 0);
  EXPECT_RUN(Analyse(kExtractor, "exit 3\n"), kOneFilePasses, "", 0);
  EXPECT_FALSE(disk_.Exists("1.ts"));
}

TEST_P(AnalysisBadInput, LongCopiedLineIsReadInPiecesOf1023) {
  // "copied: " and 2000 characters: the first piece holds the marker and the
  // first 1015 characters, less the last one; the rest of the line is ignored.
  std::string name;
  for (int i = 0; i < 2000; ++i) name += static_cast<char>('a' + i % 26);
  EXPECT_RUN(Analyse(kLeaveCopy + "echo 'copied: " + name + "'\n"),
             OneFilePasses(name.substr(0, 1014)), "", 0);
  EXPECT_FALSE(disk_.Exists("1.ts"));
}

TEST_P(AnalysisBadInput, MarkerAcrossAPieceBoundaryIsNotSeen) {
  // The marker starts 4 characters before the end of the first piece.
  EXPECT_RUN(Analyse(kLeaveCopy + "echo '" + std::string(1019, '.') + "copied: x.ts'\n"),
             kExtracting, "", 0);
}

TEST_P(AnalysisBadInput, LongAnalyserLineIsShownFromThePieceThatHoldsFail) {
  // 3000 characters with FAIL at 2000: the first piece (1023 characters) is
  // dropped, the second holds FAIL and is shown with everything after it.
  std::string line(3000, '-');
  line.replace(2000, 4, "FAIL");
  EXPECT_RUN(
      Analyse(kExtractor, "echo '" + line + "'\necho after\n"),
      kExtracting + std::string("stream1.ts  checking...") + line.substr(1023) + "\nafter\n\n", "",
      0);
  EXPECT_FALSE(disk_.Exists("1.ts"));
}

TEST_P(AnalysisBadInput, UnendedLinesRunOn) {
  disk_.Exec(FileRows(2, 2));
  EXPECT_RUN(
      Analyse(kLeaveCopy + "printf \"copied: s$2.tsX\"\n",
              "[ \"$2\" = /mnt/hd/1.ts ] && printf 'FAIL unended'\nexit 0\n"),
      "File count = 2\n"
      " Checking 1.ts:  extracting...s1.ts  checking...FAIL unended Checking 2.ts:  extracting...s2.ts  checking...PASS\n"
      "\n",
      "", 0);
  EXPECT_FALSE(disk_.Exists("1.ts"));
  EXPECT_FALSE(disk_.Exists("2.ts"));
}

TEST_P(AnalysisBadInput, ZeroBytesAndOtherBytesInToolOutput) {
  // A zero byte ends the text as the tool's C strings see it. The analyser's
  // line ends at its zero byte; the final line end follows.
  EXPECT_RUN(Analyse(kLeaveCopy + "printf 'copied: ab\\000cd\\n'\n",
                     "printf 'FAIL \\001\\377\\000hidden\\n'\n"),
             "File count = 1\n"
             " Checking 1.ts:  extracting...a  checking...FAIL \x01\xff\n",
             "", 0);
  EXPECT_FALSE(disk_.Exists("1.ts"));
}

TEST_P(AnalysisBadInput, ExtractorNamesAreShownAsTheyAre) {
  EXPECT_RUN(Analyse(kLeaveCopy + "printf '%s\\n' 'copied: $(rm -rf /mnt/hd) ; `x` \"q\" \\'\n"),
             OneFilePasses("$(rm -rf /mnt/hd) ; `x` \"q\" \\"), "", 0);
  EXPECT_TRUE(disk_.Exists("streammgr/stream.db"));
}

INSTANTIATE_TEST_SUITE_P(BothPaths, AnalysisBadInput, BothAccessPaths(), PathName);

TEST(DiskAnalysisDirect, CountThatCannotBePreparedChecksNothing) {
  RecorderDisk disk(RecorderDisk::Store::kEmptyDatabase);
  Fake(disk, "StreamMgrCli", kExtractor);
  EXPECT_RUN(
      RunWithFakes(disk, AccessPath::kDirect, {"-a", "d"}), "File count = 0\n\n",
      std::string(kNoFileSizesLine) +
          "unable to prepare: select count(*) from streamfilesError getting count for streamfiles\n",
      0);
  EXPECT_FALSE(disk.Exists("calls.log"));
}

// Runs db -a d through the daemon with `streamMgrArgs` on `files` stream files.
RunResult RunThroughTheDaemon(const RecorderDisk& disk, int files,
                              const std::string& streamMgrArgs) {
  AddFiles(disk, files);
  Fake(disk, "StreamMgrCli", kExtractor);
  Fake(disk, "filePes", kCleanAnalyser);
  SandboxOptions options;
  options.streamMgrArgs = streamMgrArgs;
  return RunWithFakes(disk, AccessPath::kDaemon, {"-a", "d"}, options);
}

TEST(DiskAnalysisDaemon, FailedCountRequestChecksNothing) {
  RecorderDisk disk;
  EXPECT_RUN(RunThroughTheDaemon(disk, 2, "--fail-requests"), "File count = 0\n\n", "", 0);
  EXPECT_FALSE(disk.Exists("calls.log"));
}

TEST(DiskAnalysisDaemon, CountGoesToTheDaemon) {
  RecorderDisk disk;
  EXPECT_RUN(RunThroughTheDaemon(disk, 1, "--log /mnt/hd/requests.log"), kOneFilePasses, "", 0);
  EXPECT_EQ("count\tselect count(*) from streamfiles\n", disk.ReadFile("requests.log"));
}

}  // namespace
