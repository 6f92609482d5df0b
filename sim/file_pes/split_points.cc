#include "sim/file_pes/split_points.h"

#include <algorithm>
#include <iomanip>
#include <sstream>

namespace {

bool BeginsFrame(const TsPacket& packet) {
  return packet.pesStart && IsVideoStream(packet.streamId);
}

double Seconds(int64_t ticks) { return static_cast<double>(ticks) / static_cast<double>(kClockHz); }

std::string JumpNote(const ClockJump& jump, uint64_t packet, uint16_t pid, int64_t time) {
  std::ostringstream note;
  note << std::fixed << std::setprecision(3) << "note clock discontinuity at packet " << packet
       << " (" << Seconds(time) << " s) on PID " << pid << ", "
       << (jump.flagged ? "flagged" : "not flagged") << ": the PCR goes from "
       << Seconds(static_cast<int64_t>(jump.before)) << " s to "
       << Seconds(static_cast<int64_t>(jump.after)) << " s; the clock is taken to run on "
       << Seconds(jump.assumedGap) << " s after the previous PCR";
  return note.str();
}

}  // namespace

struct SplitPointScanner::Track {
  uint16_t pid = 0;
  uint16_t clockPid = 0;
  PictureScanner pictures;
  bool inFrame = false;
  uint64_t frameStart = 0;
  bool frameRandomAccess = false;
  std::optional<int64_t> framePlace;
  std::deque<uint64_t> awaitingKey;  // sequence numbers of pending points
  std::vector<uint64_t> awaitingBoundary;
};

SplitPointScanner::SplitPointScanner() {
  trackOfPid_.fill(-1);
  pmtPid_.fill(false);
}

SplitPointScanner::~SplitPointScanner() = default;

void SplitPointScanner::Add(const TsPacket& packet) {
  if (!packet.synced) {
    ++packets_;
    return;
  }
  if (packet.pid == 0 || pmtPid_[packet.pid]) {
    ReadTables(packet);
  }
  if (packet.hasPcr) {
    AddSplitPoint(packet);
  }
  if (!firstVideo_ && BeginsFrame(packet)) {
    firstVideo_ = packet.pid;
    if (!awaitingVideo_.empty()) {
      Track& track = TrackOf(packet.pid, At(awaitingVideo_.front()).item.point.pcrPid);
      track.awaitingKey.insert(track.awaitingKey.end(), awaitingVideo_.begin(),
                               awaitingVideo_.end());
      std::sort(track.awaitingKey.begin(), track.awaitingKey.end());
      awaitingVideo_.clear();
    }
  }
  const int16_t track = trackOfPid_[packet.pid];
  if (track >= 0) {
    AddVideo(packet, *tracks_[static_cast<size_t>(track)]);
  }
  ++packets_;
  Release();
}

void SplitPointScanner::ReadTables(const TsPacket& packet) {
  SectionCollector& collector = sections_[packet.pid];
  if (!collector.Add(packet)) {
    return;
  }
  const std::vector<uint8_t>& section = collector.Section();
  if (packet.pid == 0) {
    std::vector<ProgramEntry> programs;
    if (ParsePat(section.data(), section.size(), programs)) {
      for (const ProgramEntry& entry : programs) {
        pmtPid_[entry.pmtPid] = entry.pmtPid != 0;
      }
    }
    return;
  }
  ProgramMap map;
  if (!ParsePmt(section.data(), section.size(), map)) {
    return;
  }
  std::optional<Judged> judged;
  for (const ElementaryStream& stream : map.streams) {
    const VideoCodec codec = CodecOfStreamType(stream.streamType);
    if (codec == VideoCodec::kNone) {
      continue;
    }
    if (!judged || stream.pid == map.pcrPid) {
      judged = Judged{stream.pid, codec};
    }
    if (stream.pid == map.pcrPid) {
      break;
    }
  }
  if (judged) {
    judgedBy_[map.pcrPid] = *judged;
    const int16_t track = trackOfPid_[judged->videoPid];
    if (track >= 0) {
      tracks_[static_cast<size_t>(track)]->pictures.SetCodec(judged->codec);
    }
  }
}

SplitPointScanner::Track& SplitPointScanner::TrackOf(uint16_t pid, uint16_t clockPid) {
  int16_t& index = trackOfPid_[pid];
  if (index < 0) {
    index = static_cast<int16_t>(tracks_.size());
    tracks_.push_back(std::make_unique<Track>());
    tracks_.back()->pid = pid;
    tracks_.back()->clockPid = clockPid;
  }
  return *tracks_[static_cast<size_t>(index)];
}

void SplitPointScanner::AddSplitPoint(const TsPacket& packet) {
  StreamClock& clock = clocks_[packet.pid];
  bool jumped = false;
  ClockJump jump;
  const int64_t place = clock.OnPcr(packet.pcrBase, packet.discontinuity, jumped, jump);
  if (jumped) {
    AddNote(JumpNote(jump, packets_, packet.pid, place - clock.First()), false);
  }
  const uint64_t sequence = firstPending_ + pending_.size();
  pending_.emplace_back();
  Pending& pending = pending_.back();
  pending.item.isPoint = true;
  pending.place = place;
  SplitPoint& point = pending.item.point;
  point.packet = packets_;
  point.pcrPid = packet.pid;
  point.pcrBase = packet.pcrBase;
  point.time = place - clock.First();

  const auto judged = judgedBy_.find(packet.pid);
  if (judged != judgedBy_.end()) {
    Track& track = TrackOf(judged->second.videoPid, packet.pid);
    track.pictures.SetCodec(judged->second.codec);
    if (packet.pid == track.pid && packet.payload != nullptr) {
      pending.boundaryKnown = true;
      point.onFrameBoundary = BeginsFrame(packet);
    } else {
      track.awaitingBoundary.push_back(sequence);
    }
    track.awaitingKey.push_back(sequence);
    return;
  }
  // No tables name this PCR: the packet itself must begin a frame of the
  // first video.
  pending.boundaryKnown = true;
  point.onFrameBoundary = BeginsFrame(packet) && (!firstVideo_ || *firstVideo_ == packet.pid);
  if (firstVideo_) {
    TrackOf(*firstVideo_, packet.pid).awaitingKey.push_back(sequence);
  } else {
    awaitingVideo_.push_back(sequence);
  }
}

void SplitPointScanner::AddVideo(const TsPacket& packet, Track& track) {
  if (packet.payload == nullptr) {
    return;
  }
  for (const uint64_t sequence : track.awaitingBoundary) {
    At(sequence).boundaryKnown = true;
    At(sequence).item.point.onFrameBoundary = BeginsFrame(packet);
  }
  track.awaitingBoundary.clear();
  if (BeginsFrame(packet)) {
    CompleteFrame(track);
    track.inFrame = true;
    track.frameStart = packets_;
    track.frameRandomAccess = packet.randomAccess;
    track.framePlace.reset();
    const auto clock = clocks_.find(track.clockPid);
    if (packet.hasPts && clock != clocks_.end()) {
      track.framePlace = clock->second.Place(packet.pts);
    }
    track.pictures.StartFrame();
  }
  if (track.inFrame && packet.dataOffset < packet.payloadSize) {
    track.pictures.Feed(packet.payload + packet.dataOffset, packet.payloadSize - packet.dataOffset);
  }
}

void SplitPointScanner::CompleteFrame(Track& track) {
  if (!track.inFrame) {
    return;
  }
  track.inFrame = false;
  const FrameKind kind = track.pictures.Kind();
  const bool key = kind == FrameKind::kUnknown ? track.frameRandomAccess : kind == FrameKind::kKey;
  if (!key || !track.framePlace) {
    return;
  }
  while (!track.awaitingKey.empty()) {
    Pending& pending = At(track.awaitingKey.front());
    if (pending.item.point.packet > track.frameStart) {
      break;
    }
    pending.keyKnown = true;
    pending.item.point.keyFrameDelay = *track.framePlace - pending.place;
    track.awaitingKey.pop_front();
  }
}

void SplitPointScanner::AddNote(const std::string& note, bool fails) {
  pending_.emplace_back();
  Pending& pending = pending_.back();
  pending.item.note = note;
  pending.item.fails = fails;
  pending.boundaryKnown = true;
  pending.keyKnown = true;
  Release();
}

void SplitPointScanner::Release() {
  while (!pending_.empty() && pending_.front().boundaryKnown && pending_.front().keyKnown) {
    ready_.push_back(std::move(pending_.front().item));
    pending_.pop_front();
    ++firstPending_;
  }
}

void SplitPointScanner::Finish() {
  for (const std::unique_ptr<Track>& track : tracks_) {
    CompleteFrame(*track);
    track->awaitingKey.clear();
    track->awaitingBoundary.clear();
  }
  awaitingVideo_.clear();
  for (Pending& pending : pending_) {
    pending.boundaryKnown = true;
    pending.keyKnown = true;
  }
  Release();
}

std::vector<ReportItem> SplitPointScanner::TakeReady() {
  std::vector<ReportItem> items;
  items.swap(ready_);
  return items;
}

std::vector<SplitPoint> SplitPointScanner::Result() {
  Finish();
  std::vector<SplitPoint> points;
  for (const ReportItem& item : TakeReady()) {
    if (item.isPoint) {
      points.push_back(item.point);
    }
  }
  return points;
}
