// The split-point model over streams of known shape.
#include "sim/file_pes/split_points.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "sim/file_pes/ts_builder.h"

namespace {

std::vector<SplitPoint> Scan(const std::string& stream) {
  SplitPointScanner scanner;
  for (size_t at = 0; at + kPacketSize <= stream.size(); at += kPacketSize) {
    scanner.Add(ParsePacket(reinterpret_cast<const uint8_t*>(stream.data() + at)));
  }
  return scanner.Result();
}

TEST(SplitPoints, WellFormedStreamPassesEverywhere) {
  StreamShape shape;  // 2 s of 25 frames per second, a key frame and PCR each second
  const std::vector<SplitPoint> points = Scan(MakeStream(shape));
  ASSERT_EQ(2u, points.size());
  EXPECT_EQ(0u, points[0].packet);
  EXPECT_EQ(75u, points[1].packet);  // 25 frames of 3 packets
  EXPECT_EQ(900000u, points[0].pcrBase);
  EXPECT_EQ(990000u, points[1].pcrBase);
  for (const SplitPoint& point : points) {
    EXPECT_TRUE(point.onFrameBoundary);
    ASSERT_TRUE(point.keyFrameDelay);
    EXPECT_EQ(9000u, *point.keyFrameDelay);
    EXPECT_TRUE(point.Passes());
  }
}

TEST(SplitPoints, PcrInsideAFrameIsNotOnAFrameBoundary) {
  StreamShape shape;
  shape.pcrInsideFrame = true;
  const std::vector<SplitPoint> points = Scan(MakeStream(shape));
  ASSERT_EQ(2u, points.size());
  EXPECT_EQ(1u, points[0].packet);
  EXPECT_FALSE(points[0].onFrameBoundary);
  // The next key frame is a second later.
  ASSERT_TRUE(points[0].keyFrameDelay);
  EXPECT_EQ(90000u + 9000u, *points[0].keyFrameDelay);
  EXPECT_TRUE(points[0].Playable());
  EXPECT_FALSE(points[0].Passes());
}

TEST(SplitPoints, KeyFramesTooFarApartAreNotPlayableInTime) {
  StreamShape shape;
  shape.frames = 125;         // 5 s
  shape.keyFrameEvery = 100;  // 4 s
  const std::vector<SplitPoint> points = Scan(MakeStream(shape));
  ASSERT_EQ(5u, points.size());
  // At 0 s the key frame is there; at 1 and 2 s the next is at 4 s: 3.1 s
  // and 2.1 s away; at 3 s it is 1.1 s away; at 4 s it is there.
  EXPECT_TRUE(points[0].Passes());
  EXPECT_FALSE(points[1].Playable());
  EXPECT_EQ(3 * 90000u + 9000u, *points[1].keyFrameDelay);
  EXPECT_FALSE(points[2].Playable());
  EXPECT_TRUE(points[3].Passes());
  EXPECT_TRUE(points[4].Passes());
}

TEST(SplitPoints, ExactlyTwoSecondsIsStillPlayable) {
  StreamShape shape;
  shape.frames = 100;        // split points at 0, 1, 2 and 3 s
  shape.keyFrameEvery = 75;  // key frames at 0 and 3 s
  shape.ptsLead = 0;
  const std::vector<SplitPoint> points = Scan(MakeStream(shape));
  ASSERT_EQ(4u, points.size());
  EXPECT_EQ(180000u, *points[1].keyFrameDelay);
  EXPECT_TRUE(points[1].Passes());
  EXPECT_EQ(90000u, *points[2].keyFrameDelay);
  EXPECT_EQ(0u, *points[3].keyFrameDelay);

  shape.ptsLead = 1;  // one tick more is too late
  const std::vector<SplitPoint> late = Scan(MakeStream(shape));
  ASSERT_EQ(4u, late.size());
  EXPECT_EQ(180001u, *late[1].keyFrameDelay);
  EXPECT_FALSE(late[1].Playable());
  EXPECT_TRUE(late[2].Passes());
}

TEST(SplitPoints, NoKeyFrameAfterTheSplitPoint) {
  StreamShape shape;
  shape.keyFrameEvery = 0;
  const std::vector<SplitPoint> points = Scan(MakeStream(shape));
  ASSERT_EQ(2u, points.size());
  EXPECT_TRUE(points[0].onFrameBoundary);
  EXPECT_FALSE(points[0].keyFrameDelay);
  EXPECT_FALSE(points[0].Passes());
}

TEST(SplitPoints, StreamWithoutPcrHasNoSplitPoints) {
  StreamShape shape;
  shape.pcrEvery = 0;
  EXPECT_TRUE(Scan(MakeStream(shape)).empty());
  EXPECT_TRUE(Scan("").empty());
}

TEST(SplitPoints, AudioFramesAreNotVideoFrames) {
  // A PCR on the audio PID's PES start is not on a video frame boundary.
  PacketSpec audio;
  audio.pid = 0x101;
  audio.unitStart = true;
  audio.streamId = 0xC0;
  audio.pts = 1000;
  audio.pcrBase = 1000;
  PacketSpec video;
  video.unitStart = true;
  video.randomAccess = true;
  video.streamId = 0xE0;
  video.pts = 2000;
  const std::vector<SplitPoint> points = Scan(MakePacket(audio) + MakePacket(video));
  ASSERT_EQ(1u, points.size());
  EXPECT_FALSE(points[0].onFrameBoundary);
  EXPECT_EQ(1000u, *points[0].keyFrameDelay);
}

TEST(SplitPoints, VideoIsTheFirstPidWithAVideoPes) {
  // A second video PID's key frames do not count.
  PacketSpec first;
  first.unitStart = true;
  first.streamId = 0xE0;
  first.pts = 500;
  first.pcrBase = 0;
  PacketSpec other = first;
  other.pid = 0x200;
  other.randomAccess = true;
  other.pcrBase.reset();
  const std::vector<SplitPoint> points = Scan(MakePacket(first) + MakePacket(other));
  ASSERT_EQ(1u, points.size());
  EXPECT_TRUE(points[0].onFrameBoundary);
  EXPECT_FALSE(points[0].keyFrameDelay);
}

TEST(SplitPoints, KeyFrameWithoutPtsCannotBeTimed) {
  PacketSpec key;
  key.unitStart = true;
  key.randomAccess = true;
  key.streamId = 0xE0;
  key.pcrBase = 0;
  const std::vector<SplitPoint> points = Scan(MakePacket(key));
  ASSERT_EQ(1u, points.size());
  EXPECT_TRUE(points[0].onFrameBoundary);
  EXPECT_FALSE(points[0].keyFrameDelay);
}

TEST(SplitPoints, ClockWrapsAt33Bits) {
  StreamShape shape;
  shape.firstPcr = kClockMask - 1000;  // the PTS wraps past zero
  const std::vector<SplitPoint> points = Scan(MakeStream(shape));
  ASSERT_EQ(2u, points.size());
  EXPECT_EQ(9000u, *points[0].keyFrameDelay);
  EXPECT_EQ(9000u, *points[1].keyFrameDelay);
  EXPECT_TRUE(points[1].Passes());
}

}  // namespace
