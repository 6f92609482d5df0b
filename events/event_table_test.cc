// PrintEventHeader and DisplayEvent in process, on records built in memory.
#include "events/event_table.h"

#include <gtest/gtest.h>

#include <iostream>
#include <sstream>
#include <string>

#include "events/expected_event_table.h"
#include "testing/stream_capture.h"

namespace {

// An unstaged event: there is no recorder disk in this process, so no
// metadata, and no configuration service ("NA").
StreamMgrApi::EventRecordItem Event(const std::string& reid) {
  StreamMgrApi::EventRecordItem event;
  event.reid.SetValue(reid);
  event.splitState = StreamMgrApi::SPLIT_NOT_NEEDED;
  event.startTick.SetValue(1000);
  event.startTime.SetValue(1704164645);
  event.stopTick.SetValue(1200);
  event.stopTime.SetValue(1704164745);
  event.totalFiles.SetValue(1);
  return event;
}

TEST(EventTableInProcess, HeadingsOfBothSizeModes) {
  const StreamCapture capture(std::cout);
  PrintEventHeader(0);
  PrintEventHeader(1);
  PrintEventHeader(42);
  EXPECT_EQ(std::string(kGibHeading) + kBytesHeading + kBytesHeading, capture.Text());
}

TEST(EventTableInProcess, RowOfDefaultValuesInBothModes) {
  ::setenv("TZ", "UTC", 1);
  const StreamCapture capture(std::cout);
  DisplayEvent(Event("a"), 0);
  DisplayEvent(Event("b"), 7);
  EXPECT_EQ(DefaultRow("a") + DefaultRow("b", true), capture.Text());
}

TEST(EventTableInProcess, FirstAnswerOnlyEvenWhenItIsEmpty) {
  ::setenv("TZ", "UTC", 1);
  StreamMgrApi::EventRecordItem event = Event("q");
  StreamMgrApi::EventAnswerItem first;
  first.question.SetValue("Q1");
  StreamMgrApi::EventAnswerItem second;
  second.answer.SetValue("A2");
  event.answers.entries = {first, second};
  const StreamCapture capture(std::cout);
  DisplayEvent(event, 0);
  const std::string row = DefaultRow("q");
  EXPECT_EQ(row.substr(0, row.size() - 1) + std::string(20, ' ') + "  \n", capture.Text());
}

TEST(EventTableInProcess, SizeNotationStaysSetAfterARow) {
  const StreamCapture capture(std::cout);
  DisplayEvent(Event("a"), 0);
  EXPECT_TRUE(std::cout.flags() & std::ios::fixed);
  EXPECT_EQ(3, std::cout.precision());
  DisplayEvent(Event("a"), 1);
  EXPECT_EQ(0, std::cout.precision());
}

TEST(EventTableInProcess, HeadingsAndCellsStandOverTheirRules) {
  ::setenv("TZ", "UTC", 1);
  for (unsigned flag : {0u, 1u}) {
    const StreamCapture capture(std::cout);
    PrintEventHeader(flag);
    DisplayEvent(Event(std::string(28, 'r')), flag);
    std::istringstream lines(capture.Text());
    std::string blank, heading, rule, row;
    std::getline(std::getline(std::getline(std::getline(lines, blank), heading), rule), row);
    // The row of an event without answers ends before the Answer1 column.
    ASSERT_EQ(rule.size() - 22, row.size()) << flag;
    for (size_t at = rule.find("  "); at < row.size(); at = rule.find("  ", at + 2)) {
      EXPECT_EQ("  ", heading.substr(at, 2)) << flag << " at " << at;
      EXPECT_EQ("  ", row.substr(at, 2)) << flag << " at " << at;
    }
  }
}

}  // namespace
