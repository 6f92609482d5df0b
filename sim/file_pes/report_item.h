// A judged split point and the report line it makes, or a note met between
// split points.
#ifndef SIM_FILE_PES_REPORT_ITEM_H_
#define SIM_FILE_PES_REPORT_ITEM_H_

#include <cstdint>
#include <optional>
#include <string>

#include "sim/file_pes/ts_packet.h"

// Longest wait for a key frame, in 90 kHz ticks.
constexpr int64_t kPlayableWithin = 2 * static_cast<int64_t>(kClockHz);
// A multiplex may deliver a key frame a little after its PTS; a key frame
// further behind its split point's PCR than this comes from a broken
// multiplex or another program's clock.
constexpr int64_t kLateAtMost = 2 * static_cast<int64_t>(kClockHz);

struct SplitPoint {
  uint64_t packet = 0;  // index of the packet in the stream
  uint16_t pcrPid = 0;
  uint64_t pcrBase = 0;
  int64_t time = 0;  // ticks since the first PCR of its clock
  bool onFrameBoundary = false;
  // PTS of the first key frame at or after the split point minus its PCR;
  // negative when the multiplex runs behind. None when no key frame follows.
  std::optional<int64_t> keyFrameDelay;
  bool Late() const { return keyFrameDelay && *keyFrameDelay < -kLateAtMost; }
  bool Playable() const { return keyFrameDelay && !Late() && *keyFrameDelay <= kPlayableWithin; }
  bool Passes() const { return onFrameBoundary && Playable(); }
};

// One line of the report: a split point, or a note met on the way.
struct ReportItem {
  bool isPoint = false;
  SplitPoint point;
  std::string note;
  bool fails = false;  // for a note
};

#endif  // SIM_FILE_PES_REPORT_ITEM_H_
