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

// Points moved to held_ that still wait for the same event, linked newest
// first: the oldest and newest of them, -1 for none. Older points of the
// chain may have been taken back already and are never read again.
struct SplitPointScanner::HeldChain {
  int64_t first = -1;
  int64_t last = -1;
  bool Empty() const { return last < 0; }
  void Link(int64_t offset) {
    first = first < 0 ? offset : first;
    last = offset;
  }
};

struct SplitPointScanner::Track {
  uint16_t pid = 0;
  int16_t index = 0;
  PictureScanner pictures;
  bool inFrame = false;
  uint64_t frameStart = 0;
  bool frameRandomAccess = false;
  std::optional<uint64_t> framePts;
  // The frame's PTS on the clock of each PCR PID whose points wait for it:
  // every split point is measured on its own clock.
  std::vector<std::pair<uint16_t, int64_t>> framePlaces;
  std::map<uint16_t, uint64_t> waitingOnClock;  // points waiting, by PCR PID
  std::deque<uint64_t> awaitingKey;             // sequence numbers of pending points
  std::deque<uint64_t> awaitingBoundary;
  // The held points waiting for a key frame (one chain more for those that
  // waited before any video was seen), and for the next packet.
  std::vector<HeldChain> heldForKey;
  HeldChain heldForBoundary;
};

SplitPointScanner::SplitPointScanner(size_t heldInMemory)
    : heldInMemory_(heldInMemory > 0 ? heldInMemory : 1) {
  trackOfPid_.fill(-1);
  codecOfPid_.fill(VideoCodec::kNone);
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
    if (noVideoYet_ >= 0) {
      // The points that waited for any video wait for this one.
      Track& waiting = *tracks_[static_cast<size_t>(noVideoYet_)];
      Track& track = TrackOf(packet.pid);
      for (const uint64_t sequence : waiting.awaitingKey) {
        At(sequence).track = track.index;
        track.awaitingKey.push_back(sequence);
      }
      std::sort(track.awaitingKey.begin(), track.awaitingKey.end());
      for (const auto& clock : waiting.waitingOnClock) {
        track.waitingOnClock[clock.first] += clock.second;
      }
      for (const HeldChain& chain : waiting.heldForKey) {
        track.heldForKey.push_back(chain);
      }
      waiting.awaitingKey.clear();
      waiting.waitingOnClock.clear();
      waiting.heldForKey.clear();
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
  std::optional<uint16_t> judged;
  for (const ElementaryStream& stream : map.streams) {
    const VideoCodec codec = CodecOfStreamType(stream.streamType);
    if (codec == VideoCodec::kNone) {
      continue;
    }
    // Frames of this PID met before the table, as the first video or for
    // another program's PCR, are read with its codec from now on.
    codecOfPid_[stream.pid] = codec;
    const int16_t track = trackOfPid_[stream.pid];
    if (track >= 0) {
      tracks_[static_cast<size_t>(track)]->pictures.SetCodec(codec);
    }
    if (!judged || (stream.pid == map.pcrPid && *judged != map.pcrPid)) {
      judged = stream.pid;
    }
  }
  if (judged) {
    videoOf_[map.pcrPid] = *judged;
  }
}

SplitPointScanner::Track& SplitPointScanner::TrackOf(uint16_t pid) {
  int16_t& index = trackOfPid_[pid];
  if (index < 0) {
    index = static_cast<int16_t>(tracks_.size());
    tracks_.push_back(std::make_unique<Track>());
    tracks_.back()->pid = pid;
    tracks_.back()->index = index;
    tracks_.back()->pictures.SetCodec(codecOfPid_[pid]);
  }
  return *tracks_[static_cast<size_t>(index)];
}

SplitPointScanner::Track& SplitPointScanner::NoVideoYet() {
  if (noVideoYet_ < 0) {
    noVideoYet_ = static_cast<int16_t>(tracks_.size());
    tracks_.push_back(std::make_unique<Track>());
    tracks_.back()->index = noVideoYet_;
  }
  return *tracks_[static_cast<size_t>(noVideoYet_)];
}

void SplitPointScanner::AwaitKey(Track& track, uint64_t sequence) {
  Pending& pending = At(sequence);
  pending.track = track.index;
  ++track.waitingOnClock[pending.item.point.pcrPid];
  track.awaitingKey.push_back(sequence);
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

  const auto judged = videoOf_.find(packet.pid);
  if (judged != videoOf_.end()) {
    Track& track = TrackOf(judged->second);
    if (packet.pid == track.pid && packet.payload != nullptr) {
      pending.boundaryKnown = true;
      point.onFrameBoundary = BeginsFrame(packet);
    } else {
      track.awaitingBoundary.push_back(sequence);
    }
    AwaitKey(track, sequence);
    return;
  }
  // No tables name this PCR: the packet itself must begin a frame of the
  // first video.
  pending.boundaryKnown = true;
  point.onFrameBoundary = BeginsFrame(packet) && (!firstVideo_ || *firstVideo_ == packet.pid);
  AwaitKey(firstVideo_ ? TrackOf(*firstVideo_) : NoVideoYet(), sequence);
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
  if (!track.heldForBoundary.Empty()) {
    const bool begins = BeginsFrame(packet);
    JudgeHeld(track.heldForBoundary, &HeldItem::previousForBoundary, [begins](HeldItem& held) {
      held.boundaryKnown = true;
      held.item.point.onFrameBoundary = begins;
      return true;
    });
  }
  if (BeginsFrame(packet)) {
    CompleteFrame(track);
    track.inFrame = true;
    track.frameStart = packets_;
    track.frameRandomAccess = packet.randomAccess;
    track.framePts.reset();
    track.framePlaces.clear();
    if (packet.hasPts) {
      track.framePts = packet.pts;
      for (const auto& waiting : track.waitingOnClock) {
        const auto clock = clocks_.find(waiting.first);
        if (clock != clocks_.end()) {
          track.framePlaces.emplace_back(waiting.first, clock->second.Place(packet.pts));
        }
      }
    }
    track.pictures.StartFrame();
  }
  if (track.inFrame && packet.dataOffset < packet.payloadSize) {
    track.pictures.Feed(packet.payload + packet.dataOffset, packet.payloadSize - packet.dataOffset);
  }
}

int64_t SplitPointScanner::KeyDelay(Track& track, uint16_t pcrPid, int64_t place) {
  const auto waiting = track.waitingOnClock.find(pcrPid);
  if (waiting != track.waitingOnClock.end() && --waiting->second == 0) {
    track.waitingOnClock.erase(waiting);
  }
  for (const auto& placed : track.framePlaces) {
    if (placed.first == pcrPid) {
      return placed.second - place;
    }
  }
  // Every clock waiting when the frame began was placed; this is for safety.
  return clocks_[pcrPid].Place(*track.framePts) - place;
}

void SplitPointScanner::CompleteFrame(Track& track) {
  if (!track.inFrame) {
    return;
  }
  track.inFrame = false;
  const FrameKind kind = track.pictures.Kind();
  const bool key = kind == FrameKind::kUnknown ? track.frameRandomAccess : kind == FrameKind::kKey;
  if (!key || !track.framePts) {
    return;
  }
  // Held points are older than those in memory: they take it first.
  for (HeldChain& chain : track.heldForKey) {
    JudgeHeld(chain, &HeldItem::previousForKey, [this, &track](HeldItem& held) {
      SplitPoint& point = held.item.point;
      if (point.packet > track.frameStart) {
        return false;
      }
      held.keyKnown = true;
      point.keyFrameDelay = KeyDelay(track, point.pcrPid, held.place);
      return true;
    });
  }
  track.heldForKey.erase(std::remove_if(track.heldForKey.begin(), track.heldForKey.end(),
                                        [](const HeldChain& chain) { return chain.Empty(); }),
                         track.heldForKey.end());
  while (!track.awaitingKey.empty()) {
    Pending& pending = At(track.awaitingKey.front());
    if (pending.item.point.packet > track.frameStart) {
      break;
    }
    pending.keyKnown = true;
    pending.item.point.keyFrameDelay = KeyDelay(track, pending.item.point.pcrPid, pending.place);
    track.awaitingKey.pop_front();
  }
}

// Walks a chain of held points newest first and writes back those that
// `judge` settles; those it leaves, the newest, go on waiting.
template <typename Judge>
void SplitPointScanner::JudgeHeld(HeldChain& chain, int64_t HeldItem::*previous, Judge judge) {
  int64_t firstLeft = -1;
  for (int64_t at = chain.last; at >= 0;) {
    HeldItem held;
    int64_t size = 0;
    if (!held_.Read(at, held, size)) {
      return;  // left waiting: they end unjudged
    }
    if (judge(held)) {
      held_.Rewrite(at, held);
      heldChanged_ = true;
    } else {
      firstLeft = at;
    }
    at = at == chain.first ? -1 : held.*previous;
  }
  chain.first = firstLeft;
  if (firstLeft < 0) {
    chain.last = -1;
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
  // Held items are older than those in memory: these wait behind them.
  if (held_.Empty() || TakeBackHeld()) {
    while (!pending_.empty() && pending_.front().boundaryKnown && pending_.front().keyKnown) {
      ready_.push_back(std::move(pending_.front().item));
      pending_.pop_front();
      ++firstPending_;
    }
  }
  while (pending_.size() > heldInMemory_ && HoldFront()) {
  }
}

// Moves the judged items at the front of held_ to ready_, no more than
// memory holds at once; true when held_ is empty.
bool SplitPointScanner::TakeBackHeld() {
  if (!heldChanged_ && !finished_) {
    return false;
  }
  while (!held_.Empty() && ready_.size() < heldInMemory_) {
    HeldItem held;
    int64_t size = 0;
    if (!held_.Read(held_.Front(), held, size)) {
      held.item = ReportItem();
      held.item.note = "FAIL the lines held in a temporary file cannot be read back";
      held.item.fails = true;
      ready_.push_back(held.item);
      held_.PopFront(held_.End() - held_.Front());
      for (const std::unique_ptr<Track>& track : tracks_) {
        track->heldForKey.clear();  // their points are lost with the rest
        track->heldForBoundary = HeldChain();
      }
      break;
    }
    if ((!held.keyKnown || !held.boundaryKnown) && !finished_) {
      heldChanged_ = false;
      return false;
    }
    ready_.push_back(std::move(held.item));
    held_.PopFront(size);
  }
  return held_.Empty();
}

// Moves the oldest item in memory to held_; false when it cannot go there.
bool SplitPointScanner::HoldFront() {
  Pending& front = pending_.front();
  Track* track = front.track >= 0 ? tracks_[static_cast<size_t>(front.track)].get() : nullptr;
  // A waiting point is the oldest its video waits for.
  const bool waitsForKey = !front.keyKnown;
  const bool waitsForBoundary = !front.boundaryKnown;
  if ((waitsForKey || waitsForBoundary) &&
      (track == nullptr ||
       (waitsForKey &&
        (track->awaitingKey.empty() || track->awaitingKey.front() != firstPending_)) ||
       (waitsForBoundary &&
        (track->awaitingBoundary.empty() || track->awaitingBoundary.front() != firstPending_)))) {
    return false;
  }
  HeldItem held;
  held.item = front.item;
  held.place = front.place;
  held.keyKnown = !waitsForKey;
  held.boundaryKnown = !waitsForBoundary;
  if (waitsForKey) {
    if (track->heldForKey.empty()) {
      track->heldForKey.emplace_back();
    }
    held.previousForKey = track->heldForKey.back().last;
  }
  if (waitsForBoundary) {
    held.previousForBoundary = track->heldForBoundary.last;
  }
  const int64_t offset = held_.Append(held);
  if (offset < 0) {
    return false;
  }
  if (waitsForKey) {
    track->awaitingKey.pop_front();
    track->heldForKey.back().Link(offset);
  }
  if (waitsForBoundary) {
    track->awaitingBoundary.pop_front();
    track->heldForBoundary.Link(offset);
  }
  pending_.pop_front();
  ++firstPending_;
  return true;
}

void SplitPointScanner::Finish() {
  for (const std::unique_ptr<Track>& track : tracks_) {
    CompleteFrame(*track);
    track->awaitingKey.clear();
    track->awaitingBoundary.clear();
    track->waitingOnClock.clear();
    track->heldForKey.clear();
    track->heldForBoundary = HeldChain();
  }
  for (Pending& pending : pending_) {
    pending.boundaryKnown = true;
    pending.keyKnown = true;
  }
  finished_ = true;
  Release();
}

std::vector<ReportItem> SplitPointScanner::TakeReady() {
  std::vector<ReportItem> items;
  items.swap(ready_);
  Release();
  if (items.empty()) {
    items.swap(ready_);
  }
  return items;
}

std::vector<SplitPoint> SplitPointScanner::Result() {
  Finish();
  std::vector<SplitPoint> points;
  for (auto items = TakeReady(); !items.empty(); items = TakeReady()) {
    for (const ReportItem& item : items) {
      if (item.isPoint) {
        points.push_back(item.point);
      }
    }
  }
  return points;
}
