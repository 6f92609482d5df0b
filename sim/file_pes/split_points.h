// The split-point check of a transport stream.
//
// Model: every packet that carries a PCR is a point where the recorder may
// cut the stream. The video is the first PID on which a PES with a video
// stream id (0xE0-0xEF) begins; each of its PES packets is one frame, timed
// by its PTS, and a frame whose first packet has the random access indicator
// set is a key frame. A split point
//   A) is playable within 2 seconds when a key frame begins at or after it
//      with a PTS at most 2 seconds after the split point's PCR, and
//   B) is on a frame boundary when its packet is the first packet of a frame.
#ifndef SIM_FILE_PES_SPLIT_POINTS_H_
#define SIM_FILE_PES_SPLIT_POINTS_H_

#include <cstdint>
#include <optional>
#include <vector>

#include "sim/file_pes/ts_packet.h"

// Longest wait for a key frame, in 90 kHz ticks.
constexpr uint64_t kPlayableWithin = 2 * kClockHz;

struct SplitPoint {
  uint64_t packet = 0;  // index of the packet in the stream
  uint64_t pcrBase = 0;
  bool onFrameBoundary = false;
  // PTS of the first key frame at or after the split point minus its PCR,
  // modulo 2^33; none when no key frame follows.
  std::optional<uint64_t> keyFrameDelay;
  bool Playable() const { return keyFrameDelay && *keyFrameDelay <= kPlayableWithin; }
  bool Passes() const { return onFrameBoundary && Playable(); }
};

// Collects what the check needs, one packet at a time, so a file of any size
// is read once and never held whole.
class SplitPointScanner {
 public:
  void Add(const TsPacket& packet);
  // The split points of the packets added so far, in stream order.
  std::vector<SplitPoint> Result() const;

 private:
  struct Frame {
    uint64_t packet;
    uint16_t pid;
    bool key;
    std::optional<uint64_t> pts;
  };
  uint64_t packets_ = 0;
  std::vector<SplitPoint> points_;
  std::vector<Frame> videoStarts_;  // video PES starts on any PID
};

#endif  // SIM_FILE_PES_SPLIT_POINTS_H_
