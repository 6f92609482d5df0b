// The files listing (-f) end to end, on both access paths: the examples of the
// usage text, every letter, options carried from one -f to the next, failures
// of the argument, long and hostile arguments, odd rows, empty results and
// the limit. None of it may crash the tool or change the store.
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "files/files_e2e_fixture.h"
#include "testing/case_tables.h"
#include "testing/expected_start_up.h"
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

std::string Twice(const std::string& text) { return text + text; }

// Files whose states and types lie outside their enumerations, but for the
// state of file 3, which is kUsedFreeOfType255.
std::string OddStatesAndTypes() {
  std::string sql;
  for (File file : {File(1).State(7).Ticks(10, 20).Chain(0, 2).Size(100).Type(kWiped),
                    File(2).State(4).Ticks(20, 30).Chain(1, 3).Size(200).Type(4),
                    File(3).State(kUsedFree).Ticks(30, 40).Chain(2, 4).Size(300).Type(255),
                    File(4).State(4294967295).Ticks(40, 50).Chain(3, 5).Size(400).Type(~0u)}) {
    sql += file.Times(0, 0).Insert();
  }
  return sql;
}

const char kUsedFreeOfType255[] =
    "     3       0  UsedFree       300  01/01/70 00:00:00  00:00:00          30          40     2     4  Invalid  \n";

const ListingCase kListings[] = {
    // The examples of the usage text.
    {"AllFilesReverseByNumber", {"-f", "*r"}, AllReversed()},
    {"Files200To209ReverseByStartTick", {"-f", "20?tr"}, Listing({kRow205, kRow200, kRow209})},
    {"FreeFilesOfStreamZero", {"-f", "s0f"}, Listing({kRow5, kRow4})},
    {"ChainOfStreamTwo", {"-f", "s2"}, Listing({kRow20, kRow1234})},
    {"LongOptionName", {"--files", "s2"}, Listing({kRow20, kRow1234})},
    {"LongOptionNameWithEquals", {"--files=s2"}, Listing({kRow20, kRow1234})},
    // The letters and the examples of the argument language.
    {"CurrentFilesByStartTick", {"-f", "c"}, Listing({kRow3, kRow205})},
    {"KeptFilesByStartTick", {"-f", "k"}, Listing({kRow1, kRow2, kRow200})},
    {"AllocatedFilesByNumberNotByStartTick", {"-f", "a"}, Listing({kRow3, kRow205})},
    {"FreeByStartTick", {"-f", "f"}, Listing({kRow12, kRow5, kRow4, kRow209, kRow20, kRow1234})},
    {"LastOfNumberAndTickWinsNumber", {"-f", "tn"}, Listing(ByNumber())},
    {"LastOfNumberAndTickWinsTick", {"-f", "nt"}, Listing(ByStartTick())},
    {"NumberPattern", {"-f", "12"}, Listing({kRow12})},
    {"NumberPatternWithStar", {"-f", "1*"}, Listing({kRow1, kRow12, kRow1234})},
    {"NumberPatternWithBothWildcards", {"-f", "2*0?"}, Listing({kRow200, kRow205, kRow209})},
    {"ThreeQuestionMarksMatch3Digits", {"-f", "???"}, Listing({kRow200, kRow205, kRow209})},
    {"StarAloneListsEverythingByNumber", {"-f", "*"}, Listing(ByNumber())},
    {"AllStatesLimitedByStartTick", {"-f", "fkal"}, Listing(ByStartTick())},
    {"EmptyArgumentListsWithTheRecordAsItIs", {"-f", ""}, Listing(ByNumber())},
    {"EmptyArgumentKeepsTheRecord", {"-f", "s2", "-f", ""}, Twice(Listing({kRow20, kRow1234}))},
    // A second -f starts from what the first left.
    {"SecondOptionKeepsStreamAndFilterAndChangesTheSort",
     {"-f", "s0f", "-f", "n"},
     Listing({kRow5, kRow4}) + Listing({kRow4, kRow5})},
    // A limit added later still lists stream 0's free files by start tick.
    {"SecondOptionAddsALimit", {"-f", "s0f", "-f", "l"}, Twice(Listing({kRow5, kRow4}))},
    {"CurrentIgnoresAnEarlierPattern",
     {"-f", "12", "-f", "c"},
     Listing({kRow12}) + Listing({kRow3, kRow205})},
    {"ReverseStays", {"-f", "r", "-f", "s2"}, AllReversed() + Listing({kRow1234, kRow20})},
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
    {"BadStreamKeepsTheEarlierOne", {"-f", "s2", "-f", "s9"}, Twice(Listing({kRow20, kRow1234}))},
    {"WildcardAfterALetterIsNotANumberPart", {"-f", "r*"}, AllReversed()},
    // The quote is a character not understood: it stops the argument there.
    {"QuoteNeverReachesTheSql",
     {"-f", "1' or '1'='1", "-f", "n;drop table streamfiles"},
     Twice(Listing({kRow1}))},
    // Long arguments: the second changes nothing, so it lists the current
    // files again.
    {"LongArgumentsOfLetters",
     {"-f", std::string(100000, 'c'), "-f", std::string(100000, 'x')},
     Twice(Listing({kRow3, kRow205}))},
    {"LongArgumentStoppedEarly", {"-f", "s3" + std::string(99998, '3')}, Listing({kRow209})},
    {"LongWildcardPattern",
     {"-f", std::string(20000, '*') + "12" + std::string(20000, '*')},
     Listing({kRow12, kRow1234})},
    // Empty results and the limit.
    {"NoMatchingRows", {"-f", "999"}, Listing({})},
    {"PatternsThatMatchNothing",
     {"-f", "0", "-f", "99999999999999999999", "-f", "?????", "-f", "12?"},
     Twice(Twice(Listing({})))},
    {"NoKeptFileInStreamThree", {"-f", "s3k"}, std::string(kHeading) + "\n0 items\n\n"},
    {"LimitWithFewerRowsShowsThemAll", {"-f", "kl"}, Listing({kRow1, kRow2, kRow200})},
    {"EmptyTable", {"-f", "*"}, Listing({}), ""},
    {"NullsNeverMatchTheCurrentOrStateFilters",
     {"-f", "c", "-f", "n", "-f", "s0"},
     Twice(Listing({})) + Listing({}),
     "insert into streamfiles (number) values (7);"},
    {"LimitShows20OfAll", {"-f", "l"}, Listing(GeneratedRows(1, 20), 35), GeneratedFiles(35)},
    {"LimitReversedShowsLast20",
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
    // NULLs, negative and oversized numbers, and values of other types.
    {"RowsWithNullsNegativesAndOversizedNumbers",
     {"-f", "*"},
     Listing({
         "4294967291  4294967295   Invalid  4294967295  02/07/06 06:28:15  06:28:15  4294967295  4294967294  4294967295  4294967295  Invalid  \n",
         "     7       0  Free             0  01/01/70 00:00:00  00:00:00           0           0     0     0  Init  \n",
         "     8       1  Free           100  01/01/70 00:00:00  00:00:04           0           0     0     9  Norm  \n",
         "     9       0  UsedFree         0  01/01/70 00:00:00  00:01:00           1          12     8    10  Norm  \n",
     }),
     "insert into streamfiles (number) values (7);"
     "insert into streamfiles values (-5, -1, -1, -1, -2, -1, -1, -1, -1, -1, -1);"
     "insert into streamfiles values (8, 4294967297, 0, 1099511627776, 4294967296, 4294967296, 4294967300, 0, 9, 4294967396, 1);"
     "insert into streamfiles values (9, 'two', 2, 1.9, '12', 'x', 60, 8, 10, 'abc', '1');"},
    {"StatesAndTypesOutsideTheirEnumerations",
     {"-f", "*", "-f", "fkat"},
     Listing({
         "     1       0   Invalid       100  01/01/70 00:00:00  00:00:00          10          20     0     2  Wiped  \n",
         "     2       0   Invalid       200  01/01/70 00:00:00  00:00:00          20          30     1     3  Invalid  \n",
         kUsedFreeOfType255,
         "     4       0   Invalid       400  01/01/70 00:00:00  00:00:00          40          50     3     5  Invalid  \n",
     }) + Listing({kUsedFreeOfType255}),
     OddStatesAndTypes()},
};

class FilesTable : public ::testing::TestWithParam<AccessPath> {
 protected:
  void SetUp() override { sample_.Exec(SampleFiles()); }

  bool Daemon() const { return GetParam() == AccessPath::kDaemon; }

  RunResult Run(const std::vector<std::string>& args) { return Run(sample_, args); }
  RunResult Run(const RecorderDisk& disk, const std::vector<std::string>& args) {
    return RunUnchanged(disk, GetParam(), args);
  }

  // Runs db -f once for every argument, all in one sandbox so that the daemon
  // starts only once; each run starts from a fresh record.
  RunResult RunEach(const std::vector<std::string>& arguments) {
    std::vector<std::string> command = {"sh", "-c", "for a in \"$@\"; do db -f \"$a\"; done", "sh"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    SandboxOptions options;
    options.streamMgr = Daemon();
    const std::string before = sample_.Dump();
    const RunResult r = RunInSandbox(sample_, command, options);
    EXPECT_EQ(before, sample_.Dump());
    return r;
  }

  std::string Usage(const std::string& message = "") {
    return ExpectedUsage("db", Daemon(), message);
  }

  RecorderDisk sample_;
};

class FilesListings : public CasesOnBothPaths<ListingCase> {};

TEST_P(FilesListings, Run) {
  RecorderDisk disk;
  disk.Exec(Param().store);
  EXPECT_RUN(RunUnchanged(disk, Path(), Param().args), Param().out, "", 0);
}

INSTANTIATE_TEST_SUITE_P(BothPaths, FilesListings, OnBothPaths(kListings),
                         CaseOnPathName<ListingCase>);

TEST_P(FilesTable, RecordSurvivesOtherOptionsBetween) {
  // Stream 2 from the first -f still applies: no kept file is in stream 2.
  EXPECT_RUN(Run({"-f", "s2", "-h", "-f", "k"}),
             Listing({kRow20, kRow1234}) + Usage() + Listing({}), "", 0);
}

TEST_P(FilesTable, MissingArgumentIsAnUnknownOption) {
  EXPECT_RUN(Run({"-f"}), Usage("Error: unknown option specified"),
             "db: option requires an argument -- 'f'\n", 0);
}

// Bad input: every byte value in the argument, a pattern too long for the
// store, and stores whose statements fail.
// The listing of the sample store for a one-byte argument from a fresh record.
std::string ListingForByte(char byte) {
  const std::vector<std::string> all = ByNumber();
  if (byte >= '1' && byte <= '5') return Listing({all[static_cast<size_t>(byte - '1')]});
  if (byte == '0' || (byte >= '6' && byte <= '9')) return Listing({});
  if (byte == '?') return Listing({all.begin(), all.begin() + 5});
  if (byte == 'a' || byte == 'c') return Listing({kRow3, kRow205});
  if (byte == 'f') return Listing({kRow12, kRow5, kRow4, kRow209, kRow20, kRow1234});
  if (byte == 'k') return Listing({kRow1, kRow2, kRow200});
  if (byte == 'r') return AllReversed();
  if (byte == 't') return Listing(ByStartTick());
  // "*", "l" and "n" list everything by number, and so does every byte that
  // is not understood ("s" included: no stream digit follows it).
  return Listing(all);
}

TEST_P(FilesTable, EveryByteValueAsTheWholeArgument) {
  std::vector<std::string> arguments;
  std::string expected;
  for (int value = 1; value < 256; ++value) {
    arguments.push_back(std::string(1, static_cast<char>(value)));
    expected += ListingForByte(static_cast<char>(value));
  }
  EXPECT_RUN(RunEach(arguments), expected, "", 0);
}

TEST_P(FilesTable, EveryByteValueAfterAValidPrefix) {
  // "s2" applies whatever follows it; a byte that is a letter may add to it.
  std::vector<std::string> arguments;
  std::string expected;
  for (int value = 1; value < 256; ++value) {
    const char byte = static_cast<char>(value);
    arguments.push_back(std::string("s2") + byte);
    if (byte == 'a' || byte == 'c' || byte == 'k') {
      expected += Listing({});
    } else {
      expected += byte == 'r' ? Listing({kRow1234, kRow20}) : Listing({kRow20, kRow1234});
    }
  }
  EXPECT_RUN(RunEach(arguments), expected, "", 0);
}

TEST_P(FilesTable, LongNumberPattern) {
  // The store refuses a LIKE pattern this long when it evaluates it: directly
  // both statements fail while stepping; the daemon answers both as failed.
  EXPECT_RUN(Run({"-f", std::string(100000, '1')}), Listing({}),
             Daemon() ? ""
                      : "stmt Error: \n"
                        "could not free statement, leaking memory\n"
                        "could not free statement, leaking memory\n",
             0);
}

TEST_P(FilesTable, StoreWithoutTheTable) {
  RecorderDisk disk(RecorderDisk::Store::kEmptyDatabase);
  EXPECT_RUN(
      Run(disk, {"-f", "s2"}), Listing({}),
      Daemon()
          ? ""
          : std::string(kNoFileSizesLine) +
                "unable to prepare: select count(*) from streamfiles where  number like '%' and stream=2 order by starttick ascunable to prepare: select * from streamfiles where  number like '%' and stream=2 order by starttick asc",
      0);
}

TEST_P(FilesTable, RowThatFailsWhileStepping) {
  RecorderDisk disk(RecorderDisk::Store::kEmptyDatabase);
  // The third row's size overflows when it is computed, so stepping fails
  // there; counting does not compute sizes.
  disk.Exec(
      "create table stored(number integer primary key, stream, state, starttick, stoptick, "
      "starttime, stoptime, previous, next, size, type);"
      "insert into stored values (1, 0, 0, 10, 20, 0, 0, 0, 0, 100, 1), "
      "(2, 0, 0, 20, 30, 0, 0, 0, 0, 200, 1), (3, 0, 0, 30, 40, 0, 0, 0, 0, 300, 1), "
      "(4, 0, 0, 40, 50, 0, 0, 0, 0, 400, 1);"
      "create view streamfiles as select number, stream, state, starttick, stoptick, starttime, "
      "stoptime, previous, next, case when number = 3 then abs(-9223372036854775808) else size "
      "end as size, type from stored;");
  // The daemon answers the failed request with no rows at all.
  const std::vector<std::string> rows = {
      "     1       0  Free           100  01/01/70 00:00:00  00:00:00          10          20     0     0  Norm  \n",
      "     2       0  Free           200  01/01/70 00:00:00  00:00:00          20          30     0     0  Norm  \n"};
  EXPECT_RUN(Run(disk, {"-f", "*"}), Listing(Daemon() ? std::vector<std::string>() : rows, 4),
             Daemon() ? ""
                      : "main:Error initializing file sizes from the database:\n"
                        "could not free statement, leaking memory\n"
                        "stmt Error: \n"
                        "could not free statement, leaking memory\n",
             0);
}

INSTANTIATE_TEST_SUITE_P(BothPaths, FilesTable, BothAccessPaths(), PathName);

}  // namespace
