// One program clock read from its PCRs and laid out as one continuous line
// of 90 kHz ticks, across the 33-bit wrap and across discontinuities.
//
// A discontinuity is a PCR flagged with the discontinuity indicator, or one
// that steps back or more than kLargestPcrStep forward: recordings continued
// in a new file after a restart and joined byte for byte restart their clock
// without the flag. Nothing in the stream says how much time the join lost,
// so the clock is taken to run on: the first PCR after a discontinuity is
// placed one PCR interval (the one before it) after the last PCR before it.
#ifndef SIM_FILE_PES_STREAM_CLOCK_H_
#define SIM_FILE_PES_STREAM_CLOCK_H_

#include <cstdint>

#include "sim/file_pes/ts_packet.h"

// PCRs of a running clock come far more often than this.
constexpr uint64_t kLargestPcrStep = 2 * kClockHz;

struct ClockJump {
  bool flagged = false;  // by the discontinuity indicator
  uint64_t before = 0;   // the last PCR base of the old clock
  uint64_t after = 0;    // the first of the new one
  int64_t assumedGap = 0;
};

class StreamClock {
 public:
  // Places a PCR on the line and returns its place; fills `jump` and
  // returns true in `jumped` when it begins a new clock.
  int64_t OnPcr(uint64_t base, bool flagged, bool& jumped, ClockJump& jump);
  // Places a time stamp of the current clock (a PTS) on the line: it lies
  // within 2^32 ticks before or after the latest PCR.
  int64_t Place(uint64_t stamp) const;
  bool Started() const { return started_; }
  // The place of the first PCR.
  int64_t First() const { return first_; }

 private:
  bool started_ = false;
  uint64_t lastBase_ = 0;
  int64_t last_ = 0;
  int64_t first_ = 0;
  int64_t lastStep_ = 0;
};

// The signed distance from `from` to `to` on a 33-bit clock.
int64_t ClockDistance(uint64_t from, uint64_t to);

#endif  // SIM_FILE_PES_STREAM_CLOCK_H_
