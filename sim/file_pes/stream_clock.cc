#include "sim/file_pes/stream_clock.h"

int64_t ClockDistance(uint64_t from, uint64_t to) {
  const uint64_t forward = (to - from) & kClockMask;
  const uint64_t half = (kClockMask + 1) / 2;
  return forward < half ? static_cast<int64_t>(forward)
                        : static_cast<int64_t>(forward) - static_cast<int64_t>(kClockMask + 1);
}

int64_t StreamClock::OnPcr(uint64_t base, bool flagged, bool& jumped, ClockJump& jump) {
  base &= kClockMask;
  jumped = false;
  if (!started_) {
    started_ = true;
    lastBase_ = base;
    // Start the line at the first PCR's own value, so a stream without
    // discontinuities keeps its clock's numbers until the wrap.
    last_ = static_cast<int64_t>(base);
    first_ = last_;
    return last_;
  }
  const uint64_t step = (base - lastBase_) & kClockMask;
  if (flagged || step > kLargestPcrStep) {
    jumped = true;
    jump.flagged = flagged;
    jump.before = lastBase_;
    jump.after = base;
    jump.assumedGap = lastStep_;
    last_ += lastStep_;
  } else {
    lastStep_ = static_cast<int64_t>(step);
    last_ += lastStep_;
  }
  lastBase_ = base;
  return last_;
}

int64_t StreamClock::Place(uint64_t stamp) const {
  return last_ + ClockDistance(lastBase_, stamp & kClockMask);
}
