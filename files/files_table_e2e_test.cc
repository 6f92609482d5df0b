// The files listing (-f) end to end, on both access paths: the examples of the
// usage text, every letter, options carried from one -f to the next, failures
// of the argument, empty results and the limit.
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <tuple>
#include <vector>

#include "files/files_e2e_fixture.h"
#include "testing/expected_usage.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

namespace {

using namespace files_e2e;

// One run of db and the whole standard output it prints.
struct ListingCase {
  const char* name;
  std::vector<std::string> args;
  std::string out;
  std::string store = SampleFiles();  // the rows the run lists
};

void PrintTo(const ListingCase& listing, std::ostream* out) { *out << listing.name; }

// Two allocated files of stream 3, the second one written first.
std::string StreamThreeAllocated() {
  File first(300);
  File second(301);
  first.Stream(3).State(kAllocated).Ticks(10, 20).Times(0, 0).Chain(0, 301).Size(7);
  second.Stream(3).State(kAllocated).Ticks(5, 20).Times(0, 0).Chain(300, 0).Size(8);
  return first.Insert() + second.Insert();
}

std::vector<std::string> Reversed(const std::vector<std::string>& rows) {
  return {rows.rbegin(), rows.rend()};
}

const ListingCase kListings[] = {
    // The examples of the usage text.
    {"AllFilesReverseByNumber", {"-f", "*r"}, AllReversed()},
    {"FilesTwoHundredToTwoHundredNineReverseByStartTick",
     {"-f", "20?tr"},
     Listing({kRow205, kRow200, kRow209})},
    {"FreeFilesOfStreamZero", {"-f", "s0f"}, Listing({kRow5, kRow4})},
    {"ChainOfStreamTwo", {"-f", "s2"}, Listing({kRow20, kRow1234})},
    {"LongOptionName", {"--files", "s2"}, Listing({kRow20, kRow1234})},
    {"LongOptionNameWithEquals", {"--files=s2"}, Listing({kRow20, kRow1234})},
    // The letters and the examples of the argument language.
    {"CurrentFilesByStartTick", {"-f", "c"}, Listing({kRow3, kRow205})},
    {"KeptFilesByStartTick", {"-f", "k"}, Listing({kRow1, kRow2, kRow200})},
    {"AllocatedFilesByNumberNotByStartTick", {"-f", "a"}, Listing({kRow3, kRow205})},
    {"FreeFilesByStartTick",
     {"-f", "f"},
     Listing({kRow12, kRow5, kRow4, kRow209, kRow20, kRow1234})},
    {"LastOfNumberAndTickWinsNumber", {"-f", "tn"}, Listing(ByNumber())},
    {"LastOfNumberAndTickWinsTick", {"-f", "nt"}, Listing(ByStartTick())},
    {"NumberPattern", {"-f", "12"}, Listing({kRow12})},
    {"NumberPatternWithStar", {"-f", "1*"}, Listing({kRow1, kRow12, kRow1234})},
    {"NumberPatternWithBothWildcards", {"-f", "2*0?"}, Listing({kRow200, kRow205, kRow209})},
    {"ThreeQuestionMarksMatchThreeDigitNumbers",
     {"-f", "???"},
     Listing({kRow200, kRow205, kRow209})},
    {"StarAloneListsEverythingByNumber", {"-f", "*"}, Listing(ByNumber())},
    {"AllStatesLimitedByStartTick", {"-f", "fkal"}, Listing(ByStartTick())},
    {"EmptyArgumentListsWithTheRecordAsItIs", {"-f", ""}, Listing(ByNumber())},
    {"EmptyArgumentKeepsTheRecord",
     {"-f", "s2", "-f", ""},
     Listing({kRow20, kRow1234}) + Listing({kRow20, kRow1234})},
    // A second -f starts from what the first left.
    {"SecondOptionKeepsStreamAndFilterAndChangesTheSort",
     {"-f", "s0f", "-f", "n"},
     Listing({kRow5, kRow4}) + Listing({kRow4, kRow5})},
    // A limit added later still lists stream 0's free files by start tick.
    {"SecondOptionAddsALimit",
     {"-f", "s0f", "-f", "l"},
     Listing({kRow5, kRow4}) + Listing({kRow5, kRow4})},
    {"CurrentIgnoresAnEarlierPattern",
     {"-f", "12", "-f", "c"},
     Listing({kRow12}) + Listing({kRow3, kRow205})},
    {"ReverseStaysForLaterOptions",
     {"-f", "r", "-f", "s2"},
     AllReversed() + Listing({kRow1234, kRow20})},
    // Arguments that are not understood: what came before the bad character
    // applies, and the files are listed all the same.
    {"BadCharacterAfterALetterKeepsTheLetter", {"-f", "cx"}, Listing({kRow3, kRow205})},
    {"BadDigitAfterALetterKeepsTheLetter", {"-f", "c5"}, Listing({kRow3, kRow205})},
    {"BadCharacterAloneListsWithTheRecordUnchanged", {"-f", "x"}, Listing(ByNumber())},
    {"DashAloneListsWithTheRecordUnchanged", {"-f", "-"}, Listing(ByNumber())},
    {"UpperCaseLetterListsWithTheRecordUnchanged", {"-f", "S2"}, Listing(ByNumber())},
    {"StreamLetterWithoutAValidDigitChangesNothing", {"-f", "s4"}, Listing(ByNumber())},
    {"StreamLetterAlone", {"-f", "s"}, Listing(ByNumber())},
    {"StreamLetterBeforeALetter", {"-f", "sa"}, Listing(ByNumber())},
    {"BadStreamKeepsTheEarlierStream",
     {"-f", "s2", "-f", "s9"},
     Listing({kRow20, kRow1234}) + Listing({kRow20, kRow1234})},
    {"WildcardAfterALetterIsNotANumberPart", {"-f", "r*"}, AllReversed()},
    // Empty results and the limit.
    {"NoMatchingRows", {"-f", "999"}, Listing({})},
    {"NoKeptFileInStreamThree", {"-f", "s3k"}, std::string(kHeading) + "\n0 items\n\n"},
    {"LimitWithFewerRowsShowsThemAll", {"-f", "kl"}, Listing({kRow1, kRow2, kRow200})},
    {"EmptyTable", {"-f", "*"}, std::string(kHeading) + "\n0 items\n\n", ""},
    {"LimitShowsTwentyRowsAndTheFullCount",
     {"-f", "l"},
     Listing(GeneratedRows(1, 20), 35),
     GeneratedFiles(35)},
    {"LimitWithReverseShowsTheLastTwenty",
     {"-f", "rl"},
     Listing(Reversed(GeneratedRows(16, 35)), 35),
     GeneratedFiles(35)},
    {"StreamThreeAllocatedStillSortsByStartTick",
     {"-f", "s3a"},
     Listing({
         "   301       3  Allocatd         8  01/01/70 00:00:00  00:00:00           5          20   300     0  Norm  \n",
         "   300       3  Allocatd         7  01/01/70 00:00:00  00:00:00          10          20     0   301  Norm  \n",
     }),
     SampleFiles() + StreamThreeAllocated()},
};

class FilesTable : public ::testing::TestWithParam<AccessPath> {
 protected:
  void SetUp() override { disk_.Exec(SampleFiles()); }

  RunResult Run(const std::vector<std::string>& args) {
    return RunUnchanged(disk_, GetParam(), args);
  }

  std::string Usage(const std::string& message = "") {
    return ExpectedUsage("db", GetParam() == AccessPath::kDaemon, message);
  }

  RecorderDisk disk_;
};

class FilesListings : public ::testing::WithParamInterface<std::tuple<AccessPath, ListingCase>>,
                      public ::testing::Test {};

TEST_P(FilesListings, Run) {
  RecorderDisk disk;
  disk.Exec(std::get<1>(GetParam()).store);
  const ListingCase& listing = std::get<1>(GetParam());
  EXPECT_RUN(RunUnchanged(disk, std::get<0>(GetParam()), listing.args), listing.out, "", 0);
}

INSTANTIATE_TEST_SUITE_P(
    BothPaths, FilesListings, ::testing::Combine(BothAccessPaths(), ::testing::ValuesIn(kListings)),
    [](const ::testing::TestParamInfo<std::tuple<AccessPath, ListingCase>>& info) {
      return std::string(std::get<1>(info.param).name) + "_" +
             AccessPathName(std::get<0>(info.param));
    });

TEST_P(FilesTable, RecordSurvivesOtherOptionsBetween) {
  // Stream 2 from the first -f still applies: no kept file is in stream 2.
  EXPECT_RUN(Run({"-f", "s2", "-h", "-f", "k"}),
             Listing({kRow20, kRow1234}) + Usage() + Listing({}), "", 0);
}

TEST_P(FilesTable, MissingArgumentIsAnUnknownOption) {
  EXPECT_RUN(Run({"-f"}), Usage("Error: unknown option specified"),
             "db: option requires an argument -- 'f'\n", 0);
}

INSTANTIATE_TEST_SUITE_P(BothPaths, FilesTable, BothAccessPaths(), PathName);

}  // namespace
