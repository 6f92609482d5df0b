// Bad input to the files listing, on both access paths: every byte value in
// the argument, a pattern too long for the store, and stores whose statements
// fail. None of it may crash the tool or change the store.
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
