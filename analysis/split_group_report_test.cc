// The split group report over events given in memory.
#include "analysis/split_group_report.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace {

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

std::string Passing(const std::string& groupId) {
  return "Checking groupId '" + groupId +
         "':\n"
         "  Checking 2-second overlap...PASS\n"
         "  Verify last part >= 2 sec...PASS\n"
         "  Checking totalParts.........PASS\n";
}

TEST(SplitGroupReport, NoEventsPrintsOneEmptyLine) { EXPECT_EQ("\n", Report({})); }

TEST(SplitGroupReport, EventsWithoutGroupAreNotReported) {
  EXPECT_EQ("\n", Report({Part("", 0, 0, 10, 20), Part("", 0, 0, 30, 40)}));
}

TEST(SplitGroupReport, ThreeGoodParts) {
  EXPECT_EQ(Passing("G") + "\n", Report({Part("G", 1, 3, 100, 200), Part("G", 2, 3, 196, 300),
                                         Part("G", 3, 3, 296, 310)}));
}

TEST(SplitGroupReport, SampleOfTheOverlapFailure) {
  // Part 3 starts 6 ticks before part 2 stops.
  EXPECT_EQ(
      "Checking groupId 'G':\n"
      "  Checking 2-second overlap...FAIL\n"
      "    Part 3 doesn't have 2-second overlap:  ticks = 6\n"
      "  Verify last part >= 2 sec...PASS\n"
      "  Checking totalParts.........PASS\n"
      "\n",
      Report({Part("G", 1, 3, 100, 200), Part("G", 2, 3, 196, 300), Part("G", 3, 3, 294, 304)}));
}

TEST(SplitGroupReport, EveryFailingPartHasItsLineUnderOneFail) {
  EXPECT_EQ(
      "Checking groupId 'G':\n"
      "  Checking 2-second overlap...FAIL\n"
      "    Part 2 doesn't have 2-second overlap:  ticks = -10\n"
      "    Part 3 doesn't have 2-second overlap:  ticks = 0\n"
      "  Verify last part >= 2 sec...PASS\n"
      "  Checking totalParts.........PASS\n"
      "\n",
      Report({Part("G", 1, 3, 100, 200), Part("G", 2, 3, 210, 300), Part("G", 3, 3, 300, 400)}));
}

TEST(SplitGroupReport, OverlapIsComparedWithWrapAround) {
  // The previous part stops at tick 2, so the next must start at 2 - 4,
  // which wraps to 4294967294.
  EXPECT_EQ(Passing("G") + "\n",
            Report({Part("G", 1, 2, 4294967000u, 2), Part("G", 2, 2, 4294967294u, 20)}));
  // The difference is printed signed.
  EXPECT_EQ(
      "Checking groupId 'G':\n"
      "  Checking 2-second overlap...FAIL\n"
      "    Part 2 doesn't have 2-second overlap:  ticks = -2147483648\n"
      "  Verify last part >= 2 sec...PASS\n"
      "  Checking totalParts.........PASS\n"
      "\n",
      Report({Part("G", 1, 2, 0, 0), Part("G", 2, 2, 2147483648u, 2147483700u)}));
}

TEST(SplitGroupReport, GroupsAreOrderedByGroupIdBytes) {
  EXPECT_EQ(Passing("A") + Passing("B") + Passing("a") + "\n",
            Report({Part("B", 1, 1, 0, 10), Part("a", 1, 1, 0, 10), Part("", 0, 0, 0, 1),
                    Part("A", 1, 1, 0, 10)}));
  // Bytes above 127 sort after ASCII letters.
  EXPECT_EQ(Passing("z") + Passing("\xc3\xa9") + "\n",
            Report({Part("\xc3\xa9", 1, 1, 0, 10), Part("z", 1, 1, 0, 10)}));
}

TEST(SplitGroupReport, PartsStayInQueryOrder) {
  // Stored as 2 then 1: part 1 is compared with part 2.
  EXPECT_EQ(
      "Checking groupId 'G':\n"
      "  Checking 2-second overlap...FAIL\n"
      "    Part 1 doesn't have 2-second overlap:  ticks = 200\n"
      "  Verify last part >= 2 sec...PASS\n"
      "  Checking totalParts.........PASS\n"
      "\n",
      Report({Part("G", 2, 2, 196, 300), Part("G", 1, 2, 100, 200)}));
}

TEST(SplitGroupReport, PartsOfOneGroupNeedNotBeAdjacent) {
  EXPECT_EQ(Passing("A") + Passing("B") + "\n",
            Report({Part("A", 1, 2, 0, 100), Part("B", 1, 1, 0, 10), Part("", 0, 0, 0, 0),
                    Part("A", 2, 2, 96, 200)}));
}

TEST(SplitGroupReport, DuplicatedPartPassesTotalParts) {
  EXPECT_EQ(Passing("G") + "\n", Report({Part("G", 1, 3, 0, 100), Part("G", 2, 3, 96, 200),
                                         Part("G", 2, 3, 196, 300), Part("G", 3, 3, 296, 400)}));
}

TEST(SplitGroupReport, MissingPartFailsTotalParts) {
  EXPECT_EQ(
      "Checking groupId 'G':\n"
      "  Checking 2-second overlap...PASS\n"
      "  Verify last part >= 2 sec...PASS\n"
      "  Checking totalParts.........FAIL:  expectedTotalParts=2  actualUniquePartNums=2  lastPartNum=3\n"
      "\n",
      Report({Part("G", 1, 2, 0, 100), Part("G", 3, 2, 96, 200)}));
}

TEST(SplitGroupReport, ExpectedTotalComesFromTheFirstPart) {
  EXPECT_EQ(
      "Checking groupId 'G':\n"
      "  Checking 2-second overlap...PASS\n"
      "  Verify last part >= 2 sec...PASS\n"
      "  Checking totalParts.........FAIL:  expectedTotalParts=3  actualUniquePartNums=2  lastPartNum=2\n"
      "\n",
      Report({Part("G", 1, 3, 0, 100), Part("G", 2, 2, 96, 200)}));
}

TEST(SplitGroupReport, ShortLastPartFails) {
  const std::string expected =
      "Checking groupId 'G':\n"
      "  Checking 2-second overlap...PASS\n"
      "  Verify last part >= 2 sec...FAIL\n"
      "  Checking totalParts.........PASS\n"
      "\n";
  EXPECT_EQ(expected, Report({Part("G", 1, 2, 0, 100), Part("G", 2, 2, 96, 99)}));
  EXPECT_EQ(expected, Report({Part("G", 1, 2, 0, 100), Part("G", 2, 2, 96, 96)}));
  // Four ticks are two seconds: long enough.
  EXPECT_EQ(Passing("G") + "\n", Report({Part("G", 1, 2, 0, 100), Part("G", 2, 2, 96, 100)}));
}

TEST(SplitGroupReport, LastPartIsJudgedByItsOwnTotal) {
  // Part 1 names itself the last of one part and lasts 2 ticks.
  EXPECT_EQ(
      "Checking groupId 'G':\n"
      "  Checking 2-second overlap...PASS\n"
      "  Verify last part >= 2 sec...FAIL\n"
      "  Checking totalParts.........FAIL:  expectedTotalParts=1  actualUniquePartNums=2  lastPartNum=2\n"
      "\n",
      Report({Part("G", 1, 1, 0, 2), Part("G", 2, 5, 4294967294u, 100)}));
}

TEST(SplitGroupReport, LastPartStoppingBeforeItStartsPasses) {
  EXPECT_EQ(Passing("G") + "\n", Report({Part("G", 1, 2, 0, 100), Part("G", 2, 2, 96, 50)}));
}

TEST(SplitGroupReport, GroupWithoutALastPartPassesThatCheck) {
  EXPECT_EQ(
      "Checking groupId 'G':\n"
      "  Checking 2-second overlap...PASS\n"
      "  Verify last part >= 2 sec...PASS\n"
      "  Checking totalParts.........FAIL:  expectedTotalParts=3  actualUniquePartNums=1  lastPartNum=1\n"
      "\n",
      Report({Part("G", 1, 3, 0, 1)}));
}

TEST(SplitGroupReport, SinglePartGroupPassesTheOverlap) {
  EXPECT_EQ(Passing("G") + "\n", Report({Part("G", 1, 1, 7, 100)}));
}

TEST(SplitGroupReport, PartsThatAreNotStagedFailTheSizeCheck) {
  EXPECT_EQ(
      "Checking groupId 'G':\n"
      "  Checking 2-second overlap...PASS\n"
      "  Verify last part >= 2 sec...PASS\n"
      "  Checking totalParts.........PASS\n"
      "  Verify part sizes <  5 GB...FAIL\n"
      "\n",
      Report({Part("G", 1, 1, 0, 100)}, 5));
}

TEST(SplitGroupReport, SizeLimitFieldIsAMinimumOfTwoAndRightAligned) {
  std::ostringstream out;
  out << std::left;  // as an earlier report may have left it
  ReportSplitGroups({Part("G", 1, 1, 0, 100)}, 100, out);
  EXPECT_NE(std::string::npos, out.str().find("\n  Verify part sizes < 100 GB...FAIL\n"));
  std::ostringstream left;
  left << std::left;
  ReportSplitGroups({Part("G", 1, 1, 0, 100)}, 7, left);
  EXPECT_NE(std::string::npos, left.str().find("\n  Verify part sizes <  7 GB...FAIL\n"));
  EXPECT_NE(std::string::npos, Report({Part("G", 1, 1, 0, 100)}, 4294967295u)
                                   .find("\n  Verify part sizes < 4294967295 GB...FAIL\n"));
}

TEST(SplitGroupReport, NoSizeLineWithoutALimit) {
  EXPECT_EQ(std::string::npos, Report({Part("G", 1, 1, 0, 100)}, 0).find("sizes"));
}

TEST(SplitGroupReport, ManyGroups) {
  std::vector<EventRecordItem> events;
  for (int group = 0; group < 10000; ++group) {
    const std::string id = "G" + std::to_string(group);
    events.push_back(Part(id, 1, 3, 0, 100));
    events.push_back(Part(id, 2, 3, 96, 200));
    events.push_back(Part(id, 3, 3, 196, 300));
  }
  const std::string report = Report(events);
  size_t groups = 0;
  for (size_t at = report.find("Checking groupId"); at != std::string::npos;
       at = report.find("Checking groupId", at + 1)) {
    ++groups;
  }
  EXPECT_EQ(10000u, groups);
  EXPECT_EQ(std::string::npos, report.find("FAIL"));
  EXPECT_EQ(0u, report.find(Passing("G0") + Passing("G1") + Passing("G10") + Passing("G100")));
}

}  // namespace
