// The files listing while StreamMgr runs: the requests it sends (one blank or
// two after "where", paging in requests of 1000 rows) and the live size of
// the file being written.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "files/files_e2e_fixture.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

namespace {

using namespace files_e2e;

SandboxOptions Logged(const std::string& extra = "") {
  SandboxOptions options;
  options.streamMgrArgs = "--log /mnt/hd/requests.log" + extra;
  return options;
}

const char kAllByNumber[] = " number like '%' order by number asc";

std::string CountRequest(const std::string& condition) {
  return "count\tselect count(*) from streamfiles where" + condition + "\n";
}

std::string SingleRequest(const std::string& condition) {
  return "files\tselect * from streamfiles where " + condition + "\n";
}

std::string PageRequest(const std::string& condition, unsigned offset) {
  return "files\tselect * from streamfiles where" + condition + " limit 1000 offset " +
         std::to_string(offset) + "\n";
}

struct PagingCase {
  int files;
  std::vector<unsigned> offsets;  // empty: one request without paging
};

class FilesPaging : public ::testing::TestWithParam<PagingCase> {};

TEST_P(FilesPaging, RequestsAndRows) {
  RecorderDisk disk;
  disk.Exec(GeneratedFiles(GetParam().files));
  const RunResult r = RunDb(disk, AccessPath::kDaemon, {"-f", "*"}, Logged());
  const unsigned files = static_cast<unsigned>(GetParam().files);
  EXPECT_RUN(r, Listing(GeneratedRows(1, files)), "", 0);
  std::string requests = CountRequest(kAllByNumber);
  if (GetParam().offsets.empty()) {
    requests += SingleRequest(kAllByNumber);
  }
  for (unsigned offset : GetParam().offsets) {
    requests += PageRequest(kAllByNumber, offset);
  }
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
  const RunResult direct = RunDb(disk, AccessPath::kDirect, {"-f", "tr"});
  const RunResult daemon = RunDb(disk, AccessPath::kDaemon, {"-f", "tr"});
  std::vector<std::string> rows = GeneratedRows(1, 2001);
  EXPECT_EQ(Listing(std::vector<std::string>(rows.rbegin(), rows.rend())), direct.out);
  EXPECT_EQ(direct.out, daemon.out);
  EXPECT_EQ("", direct.err);
  EXPECT_EQ("", daemon.err);
}

TEST(FilesDaemon, LimitIsNeverPaged) {
  RecorderDisk disk;
  disk.Exec(GeneratedFiles(2001));
  const RunResult r = RunDb(disk, AccessPath::kDaemon, {"-f", "l"}, Logged());
  EXPECT_EQ(Listing(GeneratedRows(1, 20), 2001), r.out);
  const std::string condition = " number like '%' order by number asc limit 20";
  EXPECT_EQ(CountRequest(condition) + SingleRequest(condition), disk.ReadFile("requests.log"));
}

TEST(FilesDaemon, PagedConditionKeepsFiltersAndOrder) {
  RecorderDisk disk;
  disk.Exec(GeneratedFiles(1500));
  const RunResult r = RunDb(disk, AccessPath::kDaemon, {"-f", "s0fr"}, Logged());
  std::vector<std::string> rows = GeneratedRows(1, 1500);
  EXPECT_EQ(Listing(std::vector<std::string>(rows.rbegin(), rows.rend())), r.out);
  const std::string condition =
      " number like '%' and stream=0 and ( state=0 or state=2) order by starttick desc";
  EXPECT_EQ(CountRequest(condition) + PageRequest(condition, 0) + PageRequest(condition, 1000),
            disk.ReadFile("requests.log"));
}

TEST(FilesDaemon, RequestsOfTheUsageExamples) {
  RecorderDisk disk;
  disk.Exec(SampleFiles());
  const RunResult r = RunDb(disk, AccessPath::kDaemon,
                            {"-f", "*r", "-f", "20?tr", "-f", "s0f", "-f", "s2"}, Logged());
  EXPECT_EQ("", r.err);
  const std::string first = " number like '%' order by number desc";
  const std::string second = " number like '20_' order by starttick desc";
  // The record carries on: the pattern, the reverse and the free filter stay.
  const std::string third =
      " number like '20_' and stream=0 and ( state=0 or state=2) order by starttick desc";
  const std::string fourth =
      " number like '20_' and stream=2 and ( state=0 or state=2) order by starttick desc";
  EXPECT_EQ(CountRequest(first) + SingleRequest(first) + CountRequest(second) +
                SingleRequest(second) + CountRequest(third) + SingleRequest(third) +
                CountRequest(fourth) + SingleRequest(fourth),
            disk.ReadFile("requests.log"));
}

TEST(FilesDaemon, CurrentRequest) {
  RecorderDisk disk;
  disk.Exec(SampleFiles());
  const RunResult r = RunDb(disk, AccessPath::kDaemon, {"-f", "c"}, Logged());
  EXPECT_EQ(Listing({kRow3, kRow205}), r.out);
  const std::string condition = " next=0 and previous!=0 order by starttick asc";
  EXPECT_EQ(CountRequest(condition) + SingleRequest(condition), disk.ReadFile("requests.log"));
}

// The last file of a chain is being written: its size comes from stream file
// access while the daemon runs.
TEST(FilesDaemon, LiveSizeOfTheLastFileOfEachChain) {
  RecorderDisk disk;
  disk.Exec(SampleFiles());
  const RunResult r = RunDb(disk, AccessPath::kDaemon, {"-f", "s0"},
                            Logged(" --live-size 3=55555555 --live-size 1=1 --live-size 4=4444"));
  // File 1 has a successor, so the table's size stands; 4 is a chain of one.
  const char row3[] =
      "     3       0  Allocatd  55555555  01/02/24 03:14:05  03:14:55        2196        2300     2     0  Norm  \n";
  const char row4[] =
      "     4       0  UsedFree      4444  01/01/24 23:00:00  23:01:40         100         200     0     0  Norm  \n";
  EXPECT_EQ(Listing({kRow5, row4, kRow1, kRow2, row3}), r.out);
  EXPECT_EQ("", r.err);
}

TEST(FilesDaemon, LiveSizeWiderThanItsColumn) {
  RecorderDisk disk;
  disk.Exec(SampleFiles());
  const RunResult r =
      RunDb(disk, AccessPath::kDaemon, {"-f", "c"}, Logged(" --live-size 205=4294967295"));
  const char row205[] =
      "   205       1  Allocatd  4294967295  01/02/24 03:30:00  03:30:50        5396        5500   200     0  Bkgd  \n";
  EXPECT_EQ(Listing({kRow3, row205}), r.out);
}

TEST(FilesDaemon, WithoutTheDaemonTheTableSizeIsShown) {
  RecorderDisk disk;
  disk.Exec(SampleFiles());
  const RunResult r = RunDb(disk, AccessPath::kDirect, {"-f", "c"});
  EXPECT_EQ(Listing({kRow3, kRow205}), r.out);
}

TEST(FilesDaemon, FailedRequestsShowNoRowsAndACountOfZero) {
  RecorderDisk disk;
  disk.Exec(SampleFiles());
  const std::string before = disk.Dump();
  const RunResult r =
      RunDb(disk, AccessPath::kDaemon, {"-f", "*", "-f", "c"}, Logged(" --fail-requests"));
  EXPECT_RUN(r, Listing({}) + Listing({}), "", 0);
  EXPECT_EQ(before, disk.Dump());
}

}  // namespace
