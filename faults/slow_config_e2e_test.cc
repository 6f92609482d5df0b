// ConfigMP answering slowly, late or with garbage: every row is still
// printed, with the setting when it came in time and "NA" when it did not.
#include <gtest/gtest.h>

#include <string>

#include "events/expected_event_table.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

namespace {

// DefaultRow with `hours` in place of "NA" in the hours column.
std::string RowWithHours(const std::string& reid, const std::string& hours) {
  std::string row = DefaultRow(reid);
  const std::string unavailable = std::string(18, ' ') + "NA  \n";
  const size_t at = row.rfind(unavailable);
  return row.replace(at, unavailable.size(), std::string(20 - hours.size(), ' ') + hours + "  \n");
}

SandboxOptions ConfigMp(const std::string& arguments) {
  SandboxOptions options;
  options.configMp = true;
  options.configMpArgs = arguments;
  return options;
}

class SlowConfig : public ::testing::TestWithParam<AccessPath> {
 protected:
  void SetUp() override { disk_.Exec(EventRow("r1").Insert() + EventRow("r2").Insert()); }
  RecorderDisk disk_;
};

TEST_P(SlowConfig, SlowAnswersStillShowTheSetting) {
  EXPECT_RUN(RunDb(disk_, GetParam(), {"-e"}, ConfigMp("--delay-ms 300")),
             kGibHeading + RowWithHours("r1", "Disabled") + RowWithHours("r2", "Disabled"), "", 0);
}

TEST_P(SlowConfig, GarbledAnswersShowNotAvailable) {
  EXPECT_RUN(RunDb(disk_, GetParam(), {"-e"}, ConfigMp("--garbage")),
             kGibHeading + DefaultRow("r1") + DefaultRow("r2"), "", 0);
}

INSTANTIATE_TEST_SUITE_P(Faults, SlowConfig, BothAccessPaths(), PathName);

// The client waits 30 s for the settings; an answer later than that counts as
// none. One event keeps the wait to one time-out.
TEST(SlowConfigTimeOut, AnswerLaterThanTheClientWaitsShowsNotAvailable) {
  RecorderDisk disk;
  disk.Exec(EventRow("r1").Insert());
  EXPECT_RUN(RunDb(disk, AccessPath::kDirect, {"-e"}, ConfigMp("--delay-ms 31000")),
             kGibHeading + DefaultRow("r1"), "", 0);
}

}  // namespace
