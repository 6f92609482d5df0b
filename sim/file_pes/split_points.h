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
// first packet has the random access indicator set. The codec of a PID is
// the stream type the latest PMT gave it, whenever its frames were first
// met: a PMT may come once, late, and name no PCR PID. A split point
//   A) is playable within 2 seconds when a key frame begins at or after it
//      with a PTS at most 2 seconds after the split point's PCR and at most
//      2 seconds before it, both taken on the continuous line of the split
//      point's own PCR PID (stream_clock.h), and
//   B) is on a frame boundary when the video's next packet with payload from
//      the split point on begins a frame; until the tables are known, when
//      its own packet begins a frame of the video.
#ifndef SIM_FILE_PES_SPLIT_POINTS_H_
#define SIM_FILE_PES_SPLIT_POINTS_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "sim/file_pes/held_items.h"
#include "sim/file_pes/key_frames.h"
#include "sim/file_pes/psi_tables.h"
#include "sim/file_pes/report_item.h"
#include "sim/file_pes/stream_clock.h"
#include "sim/file_pes/ts_packet.h"

// Items held in memory, at most, before the oldest go to a file.
constexpr size_t kHeldInMemory = 4096;

// Reads the stream one packet at a time and hands out the report in stream
// order as soon as each split point is judged, so a file of any size is read
// once and only the points still waiting for their key frame, and the lines
// after them, are held: at most `heldInMemory` in memory, the rest in a
// temporary file (see held_items.h).
class SplitPointScanner {
 public:
  explicit SplitPointScanner(size_t heldInMemory = kHeldInMemory);
  ~SplitPointScanner();
  // The folder of the temporary file (see held_items.h).
  void HoldIn(const std::string& folder) { held_.SetFolder(folder); }
  void Add(const TsPacket& packet);
  // A line about what lies between the packets added so far and the next.
  void AddNote(const std::string& note, bool fails);
  // The stream ended: judge every point still waiting.
  void Finish();
  // The next report lines judged, in stream order; after Finish, call it
  // until it returns none.
  std::vector<ReportItem> TakeReady();
  // Items held in memory (for tests).
  size_t HeldInMemory() const { return pending_.size(); }
  // Finishes and returns the split points not yet taken (for tests).
  std::vector<SplitPoint> Result();

 private:
  struct Track;
  struct Pending {
    ReportItem item;
    int64_t place = 0;  // of the split point on its clock
    bool boundaryKnown = false;
    bool keyKnown = false;
    int16_t track = -1;  // whose key frame it waits for
  };
  void ReadTables(const TsPacket& packet);
  void AddSplitPoint(const TsPacket& packet);
  void AddVideo(const TsPacket& packet, Track& track);
  void CompleteFrame(Track& track);
  struct HeldChain;
  template <typename Judge>
  void JudgeHeld(HeldChain& chain, int64_t HeldItem::*previous, Judge judge);
  Track& TrackOf(uint16_t pid);
  Track& NoVideoYet();
  void AwaitKey(Track& track, uint64_t sequence);
  int64_t KeyDelay(Track& track, uint16_t pcrPid, int64_t place);
  Pending& At(uint64_t sequence) { return pending_[sequence - firstPending_]; }
  void Release();
  bool TakeBackHeld();
  bool HoldFront();

  const size_t heldInMemory_;
  uint64_t packets_ = 0;
  std::array<int16_t, 8192> trackOfPid_;     // index into tracks_, -1 for none
  std::array<VideoCodec, 8192> codecOfPid_;  // from the latest PMT naming it
  std::array<bool, 8192> pmtPid_;
  std::vector<std::unique_ptr<Track>> tracks_;
  std::map<uint16_t, StreamClock> clocks_;  // by PCR PID
  std::map<uint16_t, SectionCollector> sections_;
  // The judged video by PCR PID, from the PMTs.
  std::map<uint16_t, uint16_t> videoOf_;
  std::optional<uint16_t> firstVideo_;  // until tables are known
  // Stands for the first video while none has been seen: the points that
  // wait for it wait here.
  int16_t noVideoYet_ = -1;
  std::deque<Pending> pending_;
  uint64_t firstPending_ = 0;  // sequence number of pending_.front()
  HeldItems held_;             // older than everything in pending_
  bool heldChanged_ = false;   // its front may have become ready
  bool finished_ = false;
  std::vector<ReportItem> ready_;
};

#endif  // SIM_FILE_PES_SPLIT_POINTS_H_
