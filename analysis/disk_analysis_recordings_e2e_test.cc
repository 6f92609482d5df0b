// db -a d with the built StreamMgrCli and filePes on a disk whose streams/
// holds recordings made with ffmpeg (sim/testdata/make-test-streams): each
// file passes or shows its failures as its report in sim/testdata/reports/
// says, which sim/testdata/derive-truth derived from ffprobe's packets and
// its own reading of the PCRs.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "analysis/analysis_e2e_fixture.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

namespace {

// Stream files 1 to 10, in this order.
const char* const kFiles[] = {
    "h264-open-gop.ts", "h264-joined.ts", "two-videos.ts", "two-programs.ts", "h264-no-rai.ts",
    "h264-192.m2ts",    "mpeg2-204.ts",   "h264-torn.ts",  "mpeg2-gop12.ts",  "h265-no-rai.ts",
};
std::string ReadTestData(const std::string& relative) {
  std::ifstream in(std::string(DB_SOURCE_DIR) + "/sim/testdata/" + relative, std::ios::binary);
  std::ostringstream content;
  content << in.rdbuf();
  return content.str();
}

// What db shows of filePes's report on a file: PASS when nothing failed, and
// otherwise every line from the first that holds FAIL on.
std::string Shown(const std::string& report) {
  const size_t fail = report.find("FAIL");
  if (fail == std::string::npos) return "PASS\n";
  const size_t lineEnd = report.rfind('\n', fail);
  return report.substr(lineEnd == std::string::npos ? 0 : lineEnd + 1);
}

// The whole report of -a d.
std::string ExpectedReport() {
  std::string text = "File count = 10\n";
  int number = 0;
  for (const char* name : kFiles) {
    const std::string ts = std::to_string(++number) + ".ts";
    text += " Checking " + ts + ":  extracting.../mnt/hd/" + ts + "  checking..." +
            Shown(ReadTestData("reports/" + std::string(name) + ".txt"));
  }
  return text + "\n";
}

class Recordings : public ::testing::TestWithParam<AccessPath> {
 protected:
  void SetUp() override {
    disk_.Exec(analysis_e2e::FileRows(1, 10));
    int number = 0;
    for (const char* name : kFiles) {
      ++number;
      const std::string content = ReadTestData("recordings/" + std::string(name));
      ASSERT_FALSE(content.empty()) << name;
      disk_.WriteFile("streams/" + std::to_string(number) + ".ts", content);
    }
  }
  RecorderDisk disk_;
};

TEST_P(Recordings, EachFileIsJudgedAsTheTruthSays) {
  EXPECT_RUN(RunDb(disk_, GetParam(), {"-a", "d"}), ExpectedReport(), "", 0);
  for (int n = 1; n <= 10; ++n) {
    EXPECT_FALSE(disk_.Exists(std::to_string(n) + ".ts")) << n;
    EXPECT_TRUE(disk_.Exists("streams/" + std::to_string(n) + ".ts")) << n;
  }
}

INSTANTIATE_TEST_SUITE_P(BothPaths, Recordings, BothAccessPaths(), PathName);

}  // namespace
