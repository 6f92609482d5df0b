// The continuous clock across wraps and discontinuities.
#include "sim/file_pes/stream_clock.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// Where the clock places a PCR, counted from its first one; and the jump
// it took there, if any.
std::string Pcr(StreamClock& clock, uint64_t base, bool flagged = false) {
  bool jumped = false;
  ClockJump jump;
  const int64_t place = clock.OnPcr(base, flagged, jumped, jump);
  std::string text = "at " + std::to_string(place - clock.First());
  if (!jumped) return text;
  return text + " after a" + (jump.flagged ? " flagged" : "n unflagged") + " jump from " +
         std::to_string(jump.before) + " to " + std::to_string(jump.after) + ", taken as " +
         std::to_string(jump.assumedGap);
}

TEST(StreamClock, RunsOnAcrossThe33BitWrap) {
  StreamClock clock;
  const uint64_t start = kClockMask + 1 - 36000;  // 0.4 s before the wrap
  EXPECT_EQ("at 0", Pcr(clock, start));
  EXPECT_EQ(static_cast<int64_t>(start), clock.First());
  EXPECT_EQ("at 45000", Pcr(clock, 9000));  // 0.5 s later, past zero
  // A PTS just before the wrap, read after it, lies behind the PCR.
  EXPECT_EQ(-18000, clock.Place(kClockMask + 1 - 9000) - (clock.First() + 45000));
  EXPECT_EQ(9000, clock.Place(18000) - (clock.First() + 45000));
}

TEST(StreamClock, StepBackIsADiscontinuity) {
  StreamClock clock;
  Pcr(clock, 900000);
  Pcr(clock, 936000);  // PCRs 0.4 s apart
  EXPECT_EQ("at 72000 after an unflagged jump from 936000 to 63000, taken as 36000",
            Pcr(clock, 63000));
  // The new clock's time stamps follow it.
  EXPECT_EQ(9000, clock.Place(72000) - (clock.First() + 72000));
  EXPECT_EQ("at 108000", Pcr(clock, 99000));
}

// The largest step taken as running on is 2 s (180000 ticks).
TEST(StreamClock, LongStepForwardIsADiscontinuity) {
  ASSERT_EQ(180000u, kLargestPcrStep);
  StreamClock clock;
  Pcr(clock, 0);
  Pcr(clock, 90000);
  EXPECT_EQ("at 270000", Pcr(clock, 270000));
  EXPECT_EQ("at 450000 after an unflagged jump from 270000 to 450001, taken as 180000",
            Pcr(clock, 450001));
}

TEST(StreamClock, FlaggedDiscontinuity) {
  StreamClock clock;
  Pcr(clock, 500000);
  Pcr(clock, 509000);
  // A small step, but flagged.
  EXPECT_EQ("at 18000 after a flagged jump from 509000 to 512000, taken as 9000",
            Pcr(clock, 512000, true));
}

TEST(StreamClock, SignedDistance) {
  EXPECT_EQ(5, ClockDistance(10, 15));
  EXPECT_EQ(-5, ClockDistance(15, 10));
  EXPECT_EQ(10, ClockDistance(kClockMask - 4, 5));
  EXPECT_EQ(-10, ClockDistance(5, kClockMask - 4));
}

}  // namespace
