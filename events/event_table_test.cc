// PrintEventHeader and DisplayEvent in process, on records built in memory.
#include "events/event_table.h"

#include <gtest/gtest.h>

#include <iostream>
#include <sstream>
#include <string>

#include "events/expected_event_table.h"
#include "testing/stream_capture.h"

namespace {

// Collects what the code under test writes to standard output.
class OutputCapture : public StreamCapture {
 public:
  OutputCapture() : StreamCapture(std::cout) {}
};

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
  OutputCapture capture;
  PrintEventHeader(0);
  PrintEventHeader(1);
  PrintEventHeader(42);
  EXPECT_EQ(std::string(kGibHeading) + kBytesHeading + kBytesHeading, capture.Text());
}

TEST(EventTableInProcess, RowOfDefaultValuesInBothModes) {
  ::setenv("TZ", "UTC", 1);
  OutputCapture capture;
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
  OutputCapture capture;
  DisplayEvent(event, 0);
  const std::string row = DefaultRow("q");
  EXPECT_EQ(row.substr(0, row.size() - 1) + std::string(20, ' ') + "  \n", capture.Text());
}

TEST(EventTableInProcess, SizeNotationStaysSetAfterARow) {
  OutputCapture capture;
  DisplayEvent(Event("a"), 0);
  EXPECT_TRUE(std::cout.flags() & std::ios::fixed);
  EXPECT_EQ(3, std::cout.precision());
  DisplayEvent(Event("a"), 1);
  EXPECT_EQ(0, std::cout.precision());
}

}  // namespace
