#include "sim/file_pes/split_points.h"

void SplitPointScanner::Add(const TsPacket& packet) {
  if (packet.hasPcr) {
    SplitPoint point;
    point.packet = packets_;
    point.pcrBase = packet.pcrBase;
    points_.push_back(point);
  }
  if (packet.pesStart && IsVideoStream(packet.streamId)) {
    Frame frame{packets_, packet.pid, packet.randomAccess, std::nullopt};
    if (packet.hasPts) {
      frame.pts = packet.pts;
    }
    videoStarts_.push_back(frame);
  }
  ++packets_;
}

std::vector<SplitPoint> SplitPointScanner::Result() const {
  std::vector<SplitPoint> points = points_;
  if (videoStarts_.empty()) {
    return points;  // no video: no frame boundaries and no key frames
  }
  const uint16_t videoPid = videoStarts_.front().pid;
  // Both lists are in stream order, so one walk pairs every split point with
  // the frames at or after it.
  size_t frame = 0;
  size_t key = 0;
  for (SplitPoint& point : points) {
    while (frame < videoStarts_.size() &&
           (videoStarts_[frame].packet < point.packet || videoStarts_[frame].pid != videoPid)) {
      ++frame;
    }
    point.onFrameBoundary =
        frame < videoStarts_.size() && videoStarts_[frame].packet == point.packet;
    if (key < frame) {
      key = frame;
    }
    while (key < videoStarts_.size() && (videoStarts_[key].pid != videoPid ||
                                         !videoStarts_[key].key || !videoStarts_[key].pts)) {
      ++key;
    }
    if (key < videoStarts_.size()) {
      point.keyFrameDelay = (*videoStarts_[key].pts - point.pcrBase) & kClockMask;
    }
  }
  return points;
}
