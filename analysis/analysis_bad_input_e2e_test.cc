// Bad input to -a: arguments of every byte value and of great length, and
// recorder tools that are missing, silent, or print lines too long or unended.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "analysis/analysis_e2e_fixture.h"
#include "analysis/expected_split_report.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

namespace {

using namespace analysis_e2e;

const std::string kSplitReport = split_report::Passing("G") + "\n";

const std::string kPasses = OneFilePasses("stream1.ts");

class AnalysisBadInput : public BothPaths {
 protected:
  void SetUp() override {
    disk_.Exec(SplitPart("r1", "G", 1, 1, 0, 100).Insert() + FileRow().Insert());
  }
  RunResult Run(const std::vector<std::string>& args, bool withBuiltTools = true) {
    return RunWithFakes(disk_, GetParam(), args, SandboxOptions(), withBuiltTools);
  }
  // Runs -a d with these scripted tools.
  RunResult Analyse(const std::string& extractor, const std::string& analyser) {
    Fake(disk_, "StreamMgrCli", extractor);
    Fake(disk_, "filePes", analyser);
    return Run({"-a", "d"});
  }
  RecorderDisk disk_;
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
  EXPECT_RUN(Run({"-a", all}), kSplitReport, "", 0);
}

TEST_P(AnalysisBadInput, HundredThousandCharacters) {
  EXPECT_RUN(Run({"-a", std::string(100000, 's')}), kSplitReport, "", 0);
  // No digits: every z is accepted, then the s.
  EXPECT_RUN(Run({"-a", std::string(99999, 'z') + "s"}), kSplitReport, "", 0);
  EXPECT_RUN(Run({"-a", "s" + std::string(100000, '#')}), kSplitReport, "", 0);
  EXPECT_RUN(Run({"-a", "sz" + std::string(100000, '7')}),
             split_report::Passing("G") + "  Verify part sizes < 4294967295 GB...FAIL\n\n", "", 0);
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
  EXPECT_RUN(r, kPasses, r.err, 0);
  EXPECT_NE(std::string::npos, r.err.find("filePes: not found")) << r.err;
  EXPECT_FALSE(disk_.Exists("1.ts"));
}

TEST_P(AnalysisBadInput, SilentToolsPassOrSilence) {
  EXPECT_RUN(Analyse("echo data > /mnt/hd/$2.ts\n", ""), kExtracting, "", 0);
  EXPECT_RUN(Analyse(kExtractor, "exit 3\n"), kPasses, "", 0);
  EXPECT_FALSE(disk_.Exists("1.ts"));
}

TEST_P(AnalysisBadInput, LongCopiedLineIsReadInPiecesOf1023) {
  // "copied: " and 2000 characters: the first piece holds the marker and the
  // first 1015 characters, less the last one; the rest of the line is ignored.
  std::string name;
  for (int i = 0; i < 2000; ++i) name += static_cast<char>('a' + i % 26);
  EXPECT_RUN(Analyse("echo data > /mnt/hd/$2.ts\necho 'copied: " + name + "'\n", ""),
             OneFilePasses(name.substr(0, 1014)), "", 0);
  EXPECT_FALSE(disk_.Exists("1.ts"));
}

TEST_P(AnalysisBadInput, MarkerAcrossAPieceBoundaryIsNotSeen) {
  // The marker starts 4 characters before the end of the first piece.
  EXPECT_RUN(
      Analyse("echo data > /mnt/hd/$2.ts\necho '" + std::string(1019, '.') + "copied: x.ts'\n", ""),
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
      Analyse("echo data > /mnt/hd/$2.ts\nprintf \"copied: s$2.tsX\"\n",
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
  EXPECT_RUN(Analyse("echo data > /mnt/hd/$2.ts\nprintf 'copied: ab\\000cd\\n'\n",
                     "printf 'FAIL \\001\\377\\000hidden\\n'\n"),
             "File count = 1\n"
             " Checking 1.ts:  extracting...a  checking...FAIL \x01\xff\n",
             "", 0);
  EXPECT_FALSE(disk_.Exists("1.ts"));
}

TEST_P(AnalysisBadInput, ExtractorNamesAreShownAsTheyAre) {
  EXPECT_RUN(
      Analyse(
          "echo data > /mnt/hd/$2.ts\nprintf '%s\\n' 'copied: $(rm -rf /mnt/hd) ; `x` \"q\" \\'\n",
          ""),
      OneFilePasses("$(rm -rf /mnt/hd) ; `x` \"q\" \\"), "", 0);
  EXPECT_TRUE(disk_.Exists("streammgr/stream.db"));
}

INSTANTIATE_TEST_SUITE_P(BothPaths, AnalysisBadInput, BothAccessPaths(), PathName);

}  // namespace
