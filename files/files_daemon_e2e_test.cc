// The files listing while StreamMgr runs: the requests it sends (one blank or
// two after "where", paging in requests of 1000 rows) and the live size of
// the file being written.
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "files/files_e2e_fixture.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

namespace {

using namespace files_e2e;

// Runs db with `args` through the daemon, which logs its requests in
// requests.log and takes `extra` arguments; the store stays as it was.
RunResult RunLogged(const RecorderDisk& disk, const std::vector<std::string>& args,
                    const std::string& extra = "") {
  SandboxOptions options;
  options.streamMgrArgs = "--log /mnt/hd/requests.log" + extra;
  return RunUnchanged(disk, AccessPath::kDaemon, args, options);
}

const char kAllByNumber[] = " number like '%' order by number asc";

std::string CountRequest(const std::string& condition) {
  return "count\tselect count(*) from streamfiles where" + condition + "\n";
}

// The count and the one request for all rows, without paging.
std::string Requests(const std::string& condition) {
  return CountRequest(condition) + "files\tselect * from streamfiles where " + condition + "\n";
}

std::string PageRequest(const std::string& condition, unsigned offset) {
  return "files\tselect * from streamfiles where" + condition + " limit 1000 offset " +
         std::to_string(offset) + "\n";
}

struct PagingCase {
  int files;
  std::vector<unsigned> offsets;  // empty: one request without paging
};

void PrintTo(const PagingCase& paging, std::ostream* out) { *out << paging.files << " files"; }

class FilesPaging : public ::testing::TestWithParam<PagingCase> {};

TEST_P(FilesPaging, RequestsAndRows) {
  RecorderDisk disk;
  disk.Exec(GeneratedFiles(GetParam().files));
  const unsigned files = static_cast<unsigned>(GetParam().files);
  EXPECT_RUN(RunLogged(disk, {"-f", "*"}), Listing(GeneratedRows(1, files)), "", 0);
  std::string requests =
      GetParam().offsets.empty() ? Requests(kAllByNumber) : CountRequest(kAllByNumber);
  for (unsigned offset : GetParam().offsets) requests += PageRequest(kAllByNumber, offset);
  EXPECT_EQ(requests, disk.ReadFile("requests.log"));
}

INSTANTIATE_TEST_SUITE_P(Counts, FilesPaging,
                         ::testing::Values(PagingCase{999, {}}, PagingCase{1000, {}},
                                           PagingCase{1001, {0, 1000}}, PagingCase{2000, {0, 1000}},
                                           PagingCase{2001, {0, 1000, 2000}}),
                         [](const ::testing::TestParamInfo<PagingCase>& info) {
                           return "Files" + std::to_string(info.param.files);
                         });

TEST(FilesDaemon, DirectAndDaemonPrintTheSamePagedTable) {
  RecorderDisk disk;
  disk.Exec(GeneratedFiles(2001));
  const std::string listing = Listing(Reversed(GeneratedRows(1, 2001)));
  EXPECT_RUN(RunDb(disk, AccessPath::kDirect, {"-f", "tr"}), listing, "", 0);
  EXPECT_RUN(RunDb(disk, AccessPath::kDaemon, {"-f", "tr"}), listing, "", 0);
}

TEST(FilesDaemon, LimitIsNeverPaged) {
  RecorderDisk disk;
  disk.Exec(GeneratedFiles(2001));
  EXPECT_RUN(RunLogged(disk, {"-f", "l"}), Listing(GeneratedRows(1, 20), 2001), "", 0);
  EXPECT_EQ(Requests(" number like '%' order by number asc limit 20"),
            disk.ReadFile("requests.log"));
}

TEST(FilesDaemon, PagedConditionKeepsFiltersAndOrder) {
  RecorderDisk disk;
  disk.Exec(GeneratedFiles(1500));
  EXPECT_RUN(RunLogged(disk, {"-f", "s0fr"}), Listing(Reversed(GeneratedRows(1, 1500))), "", 0);
  const std::string condition =
      " number like '%' and stream=0 and ( state=0 or state=2) order by starttick desc";
  EXPECT_EQ(CountRequest(condition) + PageRequest(condition, 0) + PageRequest(condition, 1000),
            disk.ReadFile("requests.log"));
}

class FilesDaemonSample : public ::testing::Test {
 protected:
  void SetUp() override { disk_.Exec(SampleFiles()); }
  RecorderDisk disk_;
};

TEST_F(FilesDaemonSample, RequestsOfTheUsageExamples) {
  EXPECT_RUN(RunLogged(disk_, {"-f", "*r", "-f", "20?tr", "-f", "s0f", "-f", "s2"}),
             AllReversed() + Listing({kRow205, kRow200, kRow209}) + Listing({}) + Listing({}), "",
             0);
  // The record carries on: the pattern, the reverse and the free filter stay.
  EXPECT_EQ(
      Requests(" number like '%' order by number desc") +
          Requests(" number like '20_' order by starttick desc") +
          Requests(
              " number like '20_' and stream=0 and ( state=0 or state=2) order by starttick desc") +
          Requests(
              " number like '20_' and stream=2 and ( state=0 or state=2) order by starttick desc"),
      disk_.ReadFile("requests.log"));
}

TEST_F(FilesDaemonSample, CurrentRequest) {
  EXPECT_RUN(RunLogged(disk_, {"-f", "c"}), Listing({kRow3, kRow205}), "", 0);
  EXPECT_EQ(Requests(" next=0 and previous!=0 order by starttick asc"),
            disk_.ReadFile("requests.log"));
}

// The last file of a chain is being written: its size comes from stream file
// access while the daemon runs.
TEST_F(FilesDaemonSample, LiveSizeOfTheLastFileOfEachChain) {
  // File 1 has a successor, so the table's size stands; 4 is a chain of one.
  EXPECT_RUN(
      RunLogged(disk_, {"-f", "s0"}, " --live-size 3=55555555 --live-size 1=1 --live-size 4=4444"),
      Listing({
          kRow5,
          "     4       0  UsedFree      4444  01/01/24 23:00:00  23:01:40         100         200     0     0  Norm  \n",
          kRow1,
          kRow2,
          "     3       0  Allocatd  55555555  01/02/24 03:14:05  03:14:55        2196        2300     2     0  Norm  \n",
      }),
      "", 0);
}

TEST_F(FilesDaemonSample, LiveSizeWiderThanItsColumn) {
  EXPECT_RUN(
      RunLogged(disk_, {"-f", "c"}, " --live-size 205=4294967295"),
      Listing({
          kRow3,
          "   205       1  Allocatd  4294967295  01/02/24 03:30:00  03:30:50        5396        5500   200     0  Bkgd  \n",
      }),
      "", 0);
}

TEST_F(FilesDaemonSample, WithoutTheDaemonTheTableSizeIsShown) {
  EXPECT_RUN(RunDb(disk_, AccessPath::kDirect, {"-f", "c"}), Listing({kRow3, kRow205}), "", 0);
}

TEST_F(FilesDaemonSample, FailedRequestsShowNoRowsAndACountOfZero) {
  EXPECT_RUN(RunLogged(disk_, {"-f", "*", "-f", "c"}, " --fail-requests"),
             Listing({}) + Listing({}), "", 0);
}

}  // namespace
