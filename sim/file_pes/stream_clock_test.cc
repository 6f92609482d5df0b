// The continuous clock across wraps and discontinuities.
#include "sim/file_pes/stream_clock.h"

#include <gtest/gtest.h>

namespace {

struct Placed {
  int64_t place;
  bool jumped;
  ClockJump jump;
};

Placed Pcr(StreamClock& clock, uint64_t base, bool flagged = false) {
  Placed placed{0, false, ClockJump()};
  placed.place = clock.OnPcr(base, flagged, placed.jumped, placed.jump);
  return placed;
}

TEST(StreamClock, RunsOnAcrossThe33BitWrap) {
  StreamClock clock;
  const uint64_t start = kClockMask + 1 - 36000;  // 0.4 s before the wrap
  EXPECT_EQ(static_cast<int64_t>(start), Pcr(clock, start).place);
  const Placed after = Pcr(clock, 9000);  // 0.5 s later, past zero
  EXPECT_FALSE(after.jumped);
  EXPECT_EQ(45000, after.place - clock.First());
  // A PTS just before the wrap, read after it, lies behind the PCR.
  EXPECT_EQ(-18000, clock.Place(kClockMask + 1 - 9000) - after.place);
  EXPECT_EQ(9000, clock.Place(18000) - after.place);
}

TEST(StreamClock, StepBackIsADiscontinuity) {
  StreamClock clock;
  Pcr(clock, 900000);
  Pcr(clock, 936000);  // PCRs 0.4 s apart
  const Placed joined = Pcr(clock, 63000);
  ASSERT_TRUE(joined.jumped);
  EXPECT_FALSE(joined.jump.flagged);
  EXPECT_EQ(936000u, joined.jump.before);
  EXPECT_EQ(63000u, joined.jump.after);
  EXPECT_EQ(36000, joined.jump.assumedGap);
  EXPECT_EQ(72000, joined.place - clock.First());
  // The new clock's time stamps follow it.
  EXPECT_EQ(9000, clock.Place(72000) - joined.place);
  EXPECT_FALSE(Pcr(clock, 99000).jumped);
}

TEST(StreamClock, LongStepForwardIsADiscontinuity) {
  StreamClock clock;
  Pcr(clock, 0);
  Pcr(clock, 90000);
  EXPECT_FALSE(Pcr(clock, 90000 + kLargestPcrStep).jumped);  // exactly 2 s: still running
  const Placed far = Pcr(clock, 90000 + 2 * kLargestPcrStep + 1);
  EXPECT_TRUE(far.jumped);
  EXPECT_EQ(static_cast<int64_t>(90000 + 2 * kLargestPcrStep), far.place);
}

TEST(StreamClock, FlaggedDiscontinuity) {
  StreamClock clock;
  Pcr(clock, 500000);
  Pcr(clock, 509000);
  const Placed flagged = Pcr(clock, 512000, true);  // small step, but flagged
  EXPECT_TRUE(flagged.jumped);
  EXPECT_TRUE(flagged.jump.flagged);
  EXPECT_EQ(518000, flagged.place);
}

TEST(StreamClock, SignedDistance) {
  EXPECT_EQ(5, ClockDistance(10, 15));
  EXPECT_EQ(-5, ClockDistance(15, 10));
  EXPECT_EQ(10, ClockDistance(kClockMask - 4, 5));
  EXPECT_EQ(-10, ClockDistance(5, kClockMask - 4));
}

}  // namespace
