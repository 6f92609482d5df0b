// The split-point check of a transport stream.
//
// Model: every packet that carries a PCR is a point where the recorder may
// cut the stream. It is judged against the video of the program whose PCR
// PID it is (from the PAT and PMT): the video PID that carries the PCR, or,
// when the PCR travels on a PID of its own, the program's first video. Until
// the tables have been seen (a file cut out of a longer recording), the
// video is the first PID on which a PES with a video stream id (0xE0-0xEF)
// begins. Each PES of the video is one frame, timed by its PTS. A frame is a
// key frame when its first picture is one (see key_frames.h); where the
// codec is not known from the PMT or the picture cannot be read, when its
// first packet has the random access indicator set. A split point
//   A) is playable within 2 seconds when a key frame begins at or after it
//      with a PTS at most 2 seconds after the split point's PCR, times taken
//      on the continuous clock of stream_clock.h, and
//   B) is on a frame boundary when the video's next packet with payload from
//      the split point on begins a frame; until the tables are known, when
//      its own packet begins a frame of the video.
#ifndef SIM_FILE_PES_SPLIT_POINTS_H_
#define SIM_FILE_PES_SPLIT_POINTS_H_

#include <array>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "sim/file_pes/key_frames.h"
#include "sim/file_pes/psi_tables.h"
#include "sim/file_pes/stream_clock.h"
#include "sim/file_pes/ts_packet.h"

// Longest wait for a key frame, in 90 kHz ticks.
constexpr int64_t kPlayableWithin = 2 * static_cast<int64_t>(kClockHz);

struct SplitPoint {
  uint64_t packet = 0;  // index of the packet in the stream
  uint16_t pcrPid = 0;
  uint64_t pcrBase = 0;
  int64_t time = 0;  // ticks since the first PCR of its clock
  bool onFrameBoundary = false;
  // PTS of the first key frame at or after the split point minus its PCR;
  // negative when the multiplex runs behind. None when no key frame follows.
  std::optional<int64_t> keyFrameDelay;
  bool Playable() const { return keyFrameDelay && *keyFrameDelay <= kPlayableWithin; }
  bool Passes() const { return onFrameBoundary && Playable(); }
};

// One line of the report: a split point, or a note met on the way.
struct ReportItem {
  bool isPoint = false;
  SplitPoint point;
  std::string note;
  bool fails = false;  // for a note
};

// Reads the stream one packet at a time and hands out the report in stream
// order as soon as each split point is judged, so a file of any size is read
// once and only the points still waiting for their key frame are held.
class SplitPointScanner {
 public:
  SplitPointScanner();
  ~SplitPointScanner();
  void Add(const TsPacket& packet);
  // A line about what lies between the packets added so far and the next.
  void AddNote(const std::string& note, bool fails);
  // The stream ended: judge every point still waiting.
  void Finish();
  // The report lines judged since the last call, in stream order.
  std::vector<ReportItem> TakeReady();
  // Finishes and returns the split points not yet taken (for tests).
  std::vector<SplitPoint> Result();

 private:
  struct Track;
  struct Pending {
    ReportItem item;
    int64_t place = 0;  // of the split point on its clock
    bool boundaryKnown = false;
    bool keyKnown = false;
  };
  void ReadTables(const TsPacket& packet);
  void AddSplitPoint(const TsPacket& packet);
  void AddVideo(const TsPacket& packet, Track& track);
  void CompleteFrame(Track& track);
  Track& TrackOf(uint16_t pid, uint16_t clockPid);
  Pending& At(uint64_t sequence) { return pending_[sequence - firstPending_]; }
  void Release();

  uint64_t packets_ = 0;
  std::array<int16_t, 8192> trackOfPid_;  // index into tracks_, -1 for none
  std::array<bool, 8192> pmtPid_;
  std::vector<std::unique_ptr<Track>> tracks_;
  std::map<uint16_t, StreamClock> clocks_;  // by PCR PID
  std::map<uint16_t, SectionCollector> sections_;
  // Judged video and its codec by PCR PID, from the PMTs.
  struct Judged {
    uint16_t videoPid;
    VideoCodec codec;
  };
  std::map<uint16_t, Judged> judgedBy_;
  std::optional<uint16_t> firstVideo_;   // until tables are known
  std::vector<uint64_t> awaitingVideo_;  // points seen before any video
  std::deque<Pending> pending_;
  uint64_t firstPending_ = 0;  // sequence number of pending_.front()
  std::vector<ReportItem> ready_;
};

#endif  // SIM_FILE_PES_SPLIT_POINTS_H_
