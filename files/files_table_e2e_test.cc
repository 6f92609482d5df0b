// The files listing (-f) end to end, on both access paths: the examples of the
// usage text, every letter, options carried from one -f to the next, failures
// of the argument, empty results and the limit.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "files/files_e2e_fixture.h"
#include "testing/expected_usage.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

namespace {

using namespace files_e2e;

class FilesTable : public ::testing::TestWithParam<AccessPath> {
 protected:
  void SetUp() override { disk_.Exec(SampleFiles()); }

  // Runs db and checks that the listing changed nothing in the store.
  RunResult Run(const std::vector<std::string>& args) {
    const std::string before = disk_.Dump();
    const RunResult r = RunDb(disk_, GetParam(), args);
    EXPECT_EQ(before, disk_.Dump());
    return r;
  }

  void ExpectListing(const std::vector<std::string>& args, const std::string& out) {
    const RunResult r = Run(args);
    EXPECT_RUN(r, out, "", 0);
  }

  RecorderDisk disk_;
};

// The examples of the usage text.
TEST_P(FilesTable, AllFilesReverseByNumber) {
  ExpectListing({"-f", "*r"}, Listing({kRow1234, kRow209, kRow205, kRow200, kRow20, kRow12, kRow5,
                                       kRow4, kRow3, kRow2, kRow1}));
}

TEST_P(FilesTable, FilesTwoHundredToTwoHundredNineReverseByStartTick) {
  ExpectListing({"-f", "20?tr"}, Listing({kRow205, kRow200, kRow209}));
}

TEST_P(FilesTable, FreeFilesOfStreamZero) { ExpectListing({"-f", "s0f"}, Listing({kRow5, kRow4})); }

TEST_P(FilesTable, ChainOfStreamTwo) { ExpectListing({"-f", "s2"}, Listing({kRow20, kRow1234})); }

TEST_P(FilesTable, LongOptionName) {
  ExpectListing({"--files", "s2"}, Listing({kRow20, kRow1234}));
  ExpectListing({"--files=s2"}, Listing({kRow20, kRow1234}));
}

// The letters and the examples of the argument language.
TEST_P(FilesTable, CurrentFilesByStartTick) {
  ExpectListing({"-f", "c"}, Listing({kRow3, kRow205}));
}

TEST_P(FilesTable, KeptFilesByStartTick) {
  ExpectListing({"-f", "k"}, Listing({kRow1, kRow2, kRow200}));
}

TEST_P(FilesTable, AllocatedFilesByNumberNotByStartTick) {
  ExpectListing({"-f", "a"}, Listing({kRow3, kRow205}));
}

TEST_P(FilesTable, FreeFilesByStartTick) {
  ExpectListing({"-f", "f"}, Listing({kRow12, kRow5, kRow4, kRow209, kRow20, kRow1234}));
}

TEST_P(FilesTable, LastOfNumberAndTickWins) {
  ExpectListing({"-f", "tn"}, Listing(ByNumber()));
  ExpectListing({"-f", "nt"}, Listing(ByStartTick()));
}

TEST_P(FilesTable, NumberPattern) {
  ExpectListing({"-f", "12"}, Listing({kRow12}));
  ExpectListing({"-f", "1*"}, Listing({kRow1, kRow12, kRow1234}));
  ExpectListing({"-f", "2*0?"}, Listing({kRow200, kRow205, kRow209}));
}

TEST_P(FilesTable, ThreeQuestionMarksMatchThreeDigitNumbers) {
  ExpectListing({"-f", "???"}, Listing({kRow200, kRow205, kRow209}));
}

TEST_P(FilesTable, StarAloneListsEverythingByNumber) {
  ExpectListing({"-f", "*"}, Listing(ByNumber()));
}

TEST_P(FilesTable, AllStatesLimitedByStartTick) {
  ExpectListing({"-f", "fkal"}, Listing(ByStartTick()));
}

TEST_P(FilesTable, StreamThreeAllocatedStillSortsByStartTick) {
  disk_.Exec(Row(300, 3, 1, 10, 20, 0, 0, 0, 301, 7, 1).Insert() +
             Row(301, 3, 1, 5, 20, 0, 0, 300, 0, 8, 1).Insert());
  const char row301[] =
      "   301       3  Allocatd         8  01/01/70 00:00:00  00:00:00           5          20   300     0  Norm  \n";
  const char row300[] =
      "   300       3  Allocatd         7  01/01/70 00:00:00  00:00:00          10          20     0   301  Norm  \n";
  ExpectListing({"-f", "s3a"}, Listing({row301, row300}));
}

TEST_P(FilesTable, EmptyArgumentListsWithTheRecordAsItIs) {
  ExpectListing({"-f", ""}, Listing(ByNumber()));
  ExpectListing({"-f", "s2", "-f", ""}, Listing({kRow20, kRow1234}) + Listing({kRow20, kRow1234}));
}

// A second -f starts from what the first left.
TEST_P(FilesTable, SecondOptionKeepsStreamAndFilterAndChangesTheSort) {
  ExpectListing({"-f", "s0f", "-f", "n"}, Listing({kRow5, kRow4}) + Listing({kRow4, kRow5}));
  // A limit added later still lists stream 0's free files by start tick.
  ExpectListing({"-f", "s0f", "-f", "l"}, Listing({kRow5, kRow4}) + Listing({kRow5, kRow4}));
}

TEST_P(FilesTable, CurrentIgnoresAnEarlierPattern) {
  ExpectListing({"-f", "12", "-f", "c"}, Listing({kRow12}) + Listing({kRow3, kRow205}));
}

TEST_P(FilesTable, ReverseStaysForLaterOptions) {
  ExpectListing({"-f", "r", "-f", "s2"}, Listing({kRow1234, kRow209, kRow205, kRow200, kRow20,
                                                  kRow12, kRow5, kRow4, kRow3, kRow2, kRow1}) +
                                             Listing({kRow1234, kRow20}));
}

TEST_P(FilesTable, RecordSurvivesOtherOptionsBetween) {
  // Stream 2 from the first -f still applies: no kept file is in stream 2.
  ExpectListing({"-f", "s2", "-h", "-f", "k"},
                Listing({kRow20, kRow1234}) +
                    ExpectedUsage("db", GetParam() == AccessPath::kDaemon) + Listing({}));
}

// Arguments that are not understood: what came before the bad character
// applies, and the files are listed all the same.
TEST_P(FilesTable, BadCharacterAfterALetterKeepsTheLetter) {
  ExpectListing({"-f", "cx"}, Listing({kRow3, kRow205}));
  ExpectListing({"-f", "c5"}, Listing({kRow3, kRow205}));
}

TEST_P(FilesTable, BadCharacterAloneListsWithTheRecordUnchanged) {
  ExpectListing({"-f", "x"}, Listing(ByNumber()));
  ExpectListing({"-f", "-"}, Listing(ByNumber()));
  ExpectListing({"-f", "S2"}, Listing(ByNumber()));
}

TEST_P(FilesTable, StreamLetterWithoutAValidDigitChangesNothing) {
  ExpectListing({"-f", "s4"}, Listing(ByNumber()));
  ExpectListing({"-f", "s"}, Listing(ByNumber()));
  ExpectListing({"-f", "sa"}, Listing(ByNumber()));
  ExpectListing({"-f", "s2", "-f", "s9"},
                Listing({kRow20, kRow1234}) + Listing({kRow20, kRow1234}));
}

TEST_P(FilesTable, WildcardAfterALetterIsNotANumberPart) {
  ExpectListing({"-f", "r*"}, Listing({kRow1234, kRow209, kRow205, kRow200, kRow20, kRow12, kRow5,
                                       kRow4, kRow3, kRow2, kRow1}));
}

TEST_P(FilesTable, MissingArgumentIsAnUnknownOption) {
  const RunResult r = Run({"-f"});
  EXPECT_RUN(
      r, ExpectedUsage("db", GetParam() == AccessPath::kDaemon, "Error: unknown option specified"),
      "db: option requires an argument -- 'f'\n", 0);
}

// Empty results and the limit.
TEST_P(FilesTable, NoMatchingRows) {
  ExpectListing({"-f", "999"}, Listing({}));
  ExpectListing({"-f", "s3k"}, std::string(kHeading) + "\n0 items\n\n");
}

TEST_P(FilesTable, EmptyTable) {
  RecorderDisk empty;
  const RunResult r = RunDb(empty, GetParam(), {"-f", "*"});
  EXPECT_RUN(r, std::string(kHeading) + "\n0 items\n\n", "", 0);
}

TEST_P(FilesTable, LimitShowsTwentyRowsAndTheFullCount) {
  RecorderDisk big;
  big.Exec(GeneratedFiles(35));
  const RunResult r = RunDb(big, GetParam(), {"-f", "l"});
  EXPECT_RUN(r, Listing(GeneratedRows(1, 20), 35), "", 0);
}

TEST_P(FilesTable, LimitWithReverseShowsTheLastTwenty) {
  RecorderDisk big;
  big.Exec(GeneratedFiles(35));
  std::vector<std::string> rows = GeneratedRows(16, 35);
  const std::vector<std::string> reversed(rows.rbegin(), rows.rend());
  const RunResult r = RunDb(big, GetParam(), {"-f", "rl"});
  EXPECT_EQ(Listing(reversed, 35), r.out);
  EXPECT_EQ("", r.err);
}

TEST_P(FilesTable, LimitWithFewerRowsShowsThemAll) {
  ExpectListing({"-f", "kl"}, Listing({kRow1, kRow2, kRow200}));
}

INSTANTIATE_TEST_SUITE_P(BothPaths, FilesTable, BothAccessPaths(), PathName);

}  // namespace
