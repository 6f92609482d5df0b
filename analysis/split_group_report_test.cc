// The split group report over events given in memory.
#include "analysis/split_group_report.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "analysis/expected_split_report.h"
#include "testing/case_tables.h"

namespace {

using split_report::GroupCase;
using split_report::Passing;
using StreamMgrApi::EventRecordItem;

EventRecordItem Part(const std::string& groupId, uint32_t part, uint32_t totalParts,
                     uint32_t startTick, uint32_t stopTick) {
  EventRecordItem event;
  // Such reids have no metadata anywhere, so these parts are never staged.
  event.reid.SetValue("no-such-event-" + groupId + "-" + std::to_string(part));
  event.groupId.SetValue(groupId);
  event.part.SetValue(part);
  event.totalParts.SetValue(totalParts);
  event.startTick.SetValue(startTick);
  event.stopTick.SetValue(stopTick);
  return event;
}

std::string Report(const std::vector<EventRecordItem>& events, uint32_t maxPartSize = 0) {
  std::ostringstream out;
  ReportSplitGroups(events, maxPartSize, out);
  return out.str();
}

class SplitGroupReport : public ::testing::TestWithParam<GroupCase> {};

TEST_P(SplitGroupReport, OfTheStoredParts) {
  std::vector<EventRecordItem> events;
  for (const split_report::StoredPart& p : GetParam().parts) {
    // The store's ticks are read as 32-bit unsigned numbers.
    events.push_back(Part(p.groupId, static_cast<uint32_t>(p.part),
                          static_cast<uint32_t>(p.totalParts), static_cast<uint32_t>(p.startTick),
                          static_cast<uint32_t>(p.stopTick)));
  }
  EXPECT_EQ(GetParam().report + "\n", Report(events, GetParam().sizeLimit));
}

INSTANTIATE_TEST_SUITE_P(Groups, SplitGroupReport, ::testing::ValuesIn(split_report::kGroupCases),
                         CaseName<GroupCase>);

TEST(SplitGroupReportSizes, SizeLimitFieldIsAMinimumOfTwoAndRightAligned) {
  const std::pair<uint32_t, const char*> limits[] = {
      {100, "  Verify part sizes < 100 GB...FAIL\n"},
      {7, "  Verify part sizes <  7 GB...FAIL\n"},
      {4294967295u, "  Verify part sizes < 4294967295 GB...FAIL\n"}};
  for (const auto& [limit, line] : limits) {
    std::ostringstream out;
    out << std::left;  // as an earlier report may have left it
    ReportSplitGroups({Part("G", 1, 1, 0, 100)}, limit, out);
    EXPECT_EQ(split_report::ReportOfG(line), out.str());
  }
}

TEST(SplitGroupReportSizes, NoSizeLineWithoutALimit) {
  EXPECT_EQ(split_report::ReportOfG(), Report({Part("G", 1, 1, 0, 100)}, 0));
}

// Ten thousand groups that pass, reported in byte order of their ids.
TEST(SplitGroupReportSizes, ManyGroups) {
  std::vector<EventRecordItem> events;
  std::vector<std::string> ids;
  for (int group = 0; group < 10000; ++group) {
    ids.push_back("G" + std::to_string(group));
    events.push_back(Part(ids.back(), 1, 3, 0, 100));
    events.push_back(Part(ids.back(), 2, 3, 96, 200));
    events.push_back(Part(ids.back(), 3, 3, 196, 300));
  }
  std::sort(ids.begin(), ids.end());
  std::string expected;
  for (const std::string& id : ids) expected += Passing(id);
  EXPECT_EQ(expected + "\n", Report(events));
}

}  // namespace
