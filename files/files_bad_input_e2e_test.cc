// Bad input to the files listing, on both access paths: every byte value in
// the argument, very long arguments, patterns that match nothing, rows with
// NULLs, negative or oversized numbers, states and types outside their
// enumerations, and stores whose statements fail. None of it may crash the
// tool or change the store.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "files/files_e2e_fixture.h"
#include "testing/expected_start_up.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

namespace {

using namespace files_e2e;

class FilesBadInput : public ::testing::TestWithParam<AccessPath> {
 protected:
  void SetUp() override { sample_.Exec(SampleFiles()); }

  bool Daemon() const { return GetParam() == AccessPath::kDaemon; }

  // Runs db and checks that it changed nothing in the store.
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

  RecorderDisk sample_;
};

// The listing of the sample store for a one-byte argument from a fresh record.
std::string ListingForByte(char byte) {
  const std::vector<std::string> all = ByNumber();
  if (byte >= '1' && byte <= '5') return Listing({all[static_cast<size_t>(byte - '1')]});
  if (byte == '0' || (byte >= '6' && byte <= '9')) return Listing({});
  if (byte == '?') return Listing({all.begin(), all.begin() + 5});
  if (byte == 'a' || byte == 'c') return Listing({kRow3, kRow205});
  if (byte == 'f') return Listing({kRow12, kRow5, kRow4, kRow209, kRow20, kRow1234});
  if (byte == 'k') return Listing({kRow1, kRow2, kRow200});
  if (byte == 'r') return Listing({all.rbegin(), all.rend()});
  if (byte == 't') return Listing(ByStartTick());
  // "*", "l" and "n" list everything by number, and so does every byte that
  // is not understood ("s" included: no stream digit follows it).
  return Listing(all);
}

TEST_P(FilesBadInput, EveryByteValueAsTheWholeArgument) {
  std::vector<std::string> arguments;
  std::string expected;
  for (int value = 1; value < 256; ++value) {
    arguments.push_back(std::string(1, static_cast<char>(value)));
    expected += ListingForByte(static_cast<char>(value));
  }
  EXPECT_RUN(RunEach(arguments), expected, "", 0);
}

TEST_P(FilesBadInput, EveryByteValueAfterAValidPrefix) {
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

TEST_P(FilesBadInput, LongArgumentsOfLetters) {
  // The second argument changes nothing, so it lists the current files again.
  EXPECT_RUN(Run({"-f", std::string(100000, 'c'), "-f", std::string(100000, 'x')}),
             Listing({kRow3, kRow205}) + Listing({kRow3, kRow205}), "", 0);
}

TEST_P(FilesBadInput, LongArgumentStoppedEarly) {
  EXPECT_RUN(Run({"-f", "s3" + std::string(99998, '3')}), Listing({kRow209}), "", 0);
}

TEST_P(FilesBadInput, LongNumberPattern) {
  // The store refuses a LIKE pattern this long when it evaluates it: directly
  // both statements fail while stepping; the daemon answers both as failed.
  EXPECT_RUN(Run({"-f", std::string(100000, '1')}), Listing({}),
             Daemon() ? ""
                      : "stmt Error: \n"
                        "could not free statement, leaking memory\n"
                        "could not free statement, leaking memory\n",
             0);
}

TEST_P(FilesBadInput, LongWildcardPatternOfAcceptableLength) {
  EXPECT_RUN(Run({"-f", std::string(20000, '*') + "12" + std::string(20000, '*')}),
             Listing({kRow12, kRow1234}), "", 0);
}

TEST_P(FilesBadInput, PatternsThatMatchNothing) {
  EXPECT_RUN(Run({"-f", "0", "-f", "99999999999999999999", "-f", "?????", "-f", "12?"}),
             Listing({}) + Listing({}) + Listing({}) + Listing({}), "", 0);
}

TEST_P(FilesBadInput, QuoteNeverReachesTheSql) {
  EXPECT_RUN(Run({"-f", "1' or '1'='1", "-f", "n;drop table streamfiles"}),
             Listing({kRow1}) + Listing({kRow1}), "", 0);
}

TEST_P(FilesBadInput, RowsWithNullsNegativesAndOversizedNumbers) {
  RecorderDisk disk;
  disk.Exec(
      "insert into streamfiles (number) values (7);"
      "insert into streamfiles values (-5, -1, -1, -1, -2, -1, -1, -1, -1, -1, -1);"
      "insert into streamfiles values (8, 4294967297, 0, 1099511627776, 4294967296, 4294967296, "
      "4294967300, 0, 9, 4294967396, 1);"
      "insert into streamfiles values (9, 'two', 2, 1.9, '12', 'x', 60, 8, 10, 'abc', '1');");
  EXPECT_RUN(
      Run(disk, {"-f", "*"}),
      Listing({
          "4294967291  4294967295   Invalid  4294967295  02/07/06 06:28:15  06:28:15  4294967295  4294967294  4294967295  4294967295  Invalid  \n",
          "     7       0  Free             0  01/01/70 00:00:00  00:00:00           0           0     0     0  Init  \n",
          "     8       1  Free           100  01/01/70 00:00:00  00:00:04           0           0     0     9  Norm  \n",
          "     9       0  UsedFree         0  01/01/70 00:00:00  00:01:00           1          12     8    10  Norm  \n",
      }),
      "", 0);
}

TEST_P(FilesBadInput, NullsNeverMatchTheCurrentOrStateFilters) {
  RecorderDisk disk;
  disk.Exec("insert into streamfiles (number) values (7);");
  EXPECT_RUN(Run(disk, {"-f", "c", "-f", "n", "-f", "s0"}), Listing({}) + Listing({}) + Listing({}),
             "", 0);
}

TEST_P(FilesBadInput, StatesAndTypesOutsideTheirEnumerations) {
  RecorderDisk disk;
  disk.Exec(
      File(1).State(7).Ticks(10, 20).Times(0, 0).Chain(0, 2).Size(100).Type(kWiped).Insert() +
      File(2).State(4).Ticks(20, 30).Times(0, 0).Chain(1, 3).Size(200).Type(4).Insert() +
      File(3).State(kUsedFree).Ticks(30, 40).Times(0, 0).Chain(2, 4).Size(300).Type(255).Insert() +
      File(4).State(4294967295).Ticks(40, 50).Times(0, 0).Chain(3, 5).Size(400).Type(~0u).Insert());
  const std::string row3 =
      "     3       0  UsedFree       300  01/01/70 00:00:00  00:00:00          30          40     2     4  Invalid  \n";
  EXPECT_RUN(
      Run(disk, {"-f", "*", "-f", "fkat"}),
      Listing({
          "     1       0   Invalid       100  01/01/70 00:00:00  00:00:00          10          20     0     2  Wiped  \n",
          "     2       0   Invalid       200  01/01/70 00:00:00  00:00:00          20          30     1     3  Invalid  \n",
          row3,
          "     4       0   Invalid       400  01/01/70 00:00:00  00:00:00          40          50     3     5  Invalid  \n",
      }) + Listing({row3}),
      "", 0);
}

TEST_P(FilesBadInput, StoreWithoutTheTable) {
  RecorderDisk disk(RecorderDisk::Store::kEmptyDatabase);
  EXPECT_RUN(
      Run(disk, {"-f", "s2"}), Listing({}),
      Daemon()
          ? ""
          : std::string(kNoFileSizesLine) +
                "unable to prepare: select count(*) from streamfiles where  number like '%' and stream=2 order by starttick ascunable to prepare: select * from streamfiles where  number like '%' and stream=2 order by starttick asc",
      0);
}

TEST_P(FilesBadInput, RowThatFailsWhileStepping) {
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
  if (Daemon()) {
    EXPECT_RUN(Run(disk, {"-f", "*"}), Listing({}, 4), "", 0);
    return;
  }
  EXPECT_RUN(
      Run(disk, {"-f", "*"}),
      Listing(
          {"     1       0  Free           100  01/01/70 00:00:00  00:00:00          10          20     0     0  Norm  \n",
           "     2       0  Free           200  01/01/70 00:00:00  00:00:00          20          30     0     0  Norm  \n"},
          4),
      "main:Error initializing file sizes from the database:\n"
      "could not free statement, leaking memory\n"
      "stmt Error: \n"
      "could not free statement, leaking memory\n",
      0);
}

INSTANTIATE_TEST_SUITE_P(BothPaths, FilesBadInput, BothAccessPaths(), PathName);

}  // namespace
