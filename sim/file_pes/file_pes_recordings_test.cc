// filePes on recordings made with ffmpeg (sim/testdata/make-test-streams),
// point by point. Every expected report in sim/testdata/reports/ was written
// by sim/testdata/derive-truth from ffprobe's packet positions, key flags and
// time stamps and its own reading of the PCRs and tables, not by filePes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "sim/file_pes/file_pes.h"
#include "testing/run_result.h"

namespace {

std::string TestData(const std::string& relative) {
  return std::string(DB_SOURCE_DIR) + "/sim/testdata/" + relative;
}

// Every recording there is, by name.
std::vector<std::string> RecordingNames() {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(TestData("recordings"))) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

class Recordings : public ::testing::TestWithParam<std::string> {};

TEST_P(Recordings, JudgedAsTheTruthSays) {
  std::ifstream in(TestData("reports/") + GetParam() + ".txt");
  std::ostringstream report;
  report << in.rdbuf();
  ASSERT_NE("", report.str()) << "no report of " << GetParam();
  std::ostringstream out;
  const int status = AnalyzeStreamFile(TestData("recordings/" + GetParam()).c_str(), out);
  EXPECT_RUN((RunResult{out.str(), "", status}), report.str(), "",
             report.str().find("FAIL") == std::string::npos ? 0 : 1);
}

std::string Name(const ::testing::TestParamInfo<std::string>& info) {
  std::string name;
  for (const char c : info.param) {
    name += std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
  }
  return name;
}

INSTANTIATE_TEST_SUITE_P(FromFfmpeg, Recordings, ::testing::ValuesIn(RecordingNames()), Name);

}  // namespace
