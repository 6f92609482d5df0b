// The split-point model over streams of known shape.
#include "sim/file_pes/split_points.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "sim/file_pes/psi_tables.h"
#include "sim/file_pes/ts_builder.h"

namespace {

std::vector<SplitPoint> Scan(const std::string& stream) {
  SplitPointScanner scanner;
  for (size_t at = 0; at + kPacketSize <= stream.size(); at += kPacketSize) {
    scanner.Add(ParsePacket(reinterpret_cast<const uint8_t*>(stream.data() + at)));
  }
  return scanner.Result();
}

// The PCR of every tenth frame.
std::optional<uint64_t> EveryTenth(int frame, uint64_t clock) {
  return frame % 10 == 0 ? std::optional<uint64_t>(clock) : std::nullopt;
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

// A frame of `packets` packets on `pid`: a PES with `data`, the PCR on the
// first packet when given.
std::string Frame(uint16_t pid, uint64_t pts, const std::string& data,
                  std::optional<uint64_t> pcr = std::nullopt, bool randomAccess = false,
                  int packets = 2) {
  PacketSpec first = FrameStart(pts, pcr, randomAccess);
  first.pid = pid;
  first.data = data;
  std::string frame = MakePacket(first);
  for (int i = 1; i < packets; ++i) {
    PacketSpec rest;
    rest.pid = pid;
    frame += MakePacket(rest);
  }
  return frame;
}

std::string PcrOnly(uint16_t pid, uint64_t pcr, bool discontinuity = false) {
  PacketSpec fields;
  fields.pid = pid;
  fields.noPayload = true;
  fields.pcrBase = pcr;
  fields.discontinuity = discontinuity;
  return MakePacket(fields);
}

TEST(SplitPoints, PmtNamesTheVideoThatCarriesThePcr) {
  // Two videos; the first PES in the stream is on 0x101, but the PCR rides
  // on 0x102, whose frames decide.
  const std::string tables =
      MakePat({{1, 0x1000}}) + MakePmt({1, 0x1000}, 0x102, {{0x1B, 0x101}, {0x1B, 0x102}});
  const std::string stream =
      tables + Frame(0x101, 1000, H264Picture(false)) + Frame(0x102, 9000, H264Picture(true), 0) +
      Frame(0x101, 4600, H264Picture(false)) + Frame(0x102, 12600, H264Picture(false), 3600);
  const std::vector<SplitPoint> points = Scan(stream);
  ASSERT_EQ(2u, points.size());
  EXPECT_EQ(4u, points[0].packet);
  EXPECT_TRUE(points[0].onFrameBoundary);
  EXPECT_EQ(9000, points[0].keyFrameDelay.value_or(-1));
  EXPECT_TRUE(points[1].onFrameBoundary);
  EXPECT_FALSE(points[1].keyFrameDelay);  // 0x102 has no later key frame
}

TEST(SplitPoints, PcrOnItsOwnPidIsJudgedAgainstTheFirstVideo) {
  const std::string tables =
      MakePat({{1, 0x1000}}) + MakePmt({1, 0x1000}, 0x1FF, {{0x0F, 0x101}, {0x02, 0x100}});
  const std::string stream = tables + PcrOnly(0x1FF, 0) + Frame(0x100, 9000, Mpeg2Picture(1)) +
                             Frame(0x100, 12600, Mpeg2Picture(2)) + PcrOnly(0x1FF, 3600) +
                             Frame(0x100, 16200, Mpeg2Picture(3), std::nullopt, false, 1) +
                             PcrOnly(0x1FF, 7200) + Frame(0x100, 19800, Mpeg2Picture(1));
  const std::vector<SplitPoint> points = Scan(stream);
  ASSERT_EQ(3u, points.size());
  // Between frames: on a boundary, though its own packet begins nothing.
  EXPECT_TRUE(points[0].onFrameBoundary);
  EXPECT_EQ(9000, points[0].keyFrameDelay.value_or(-1));
  EXPECT_TRUE(points[1].onFrameBoundary);
  EXPECT_EQ(19800 - 3600, points[1].keyFrameDelay.value_or(-1));
  EXPECT_TRUE(points[2].Passes());
}

TEST(SplitPoints, PcrPacketInsideAFrameIsNotOnABoundary) {
  const std::string tables = MakePat({{1, 0x1000}}) + MakePmt({1, 0x1000}, 0x100, {{0x1B, 0x100}});
  PacketSpec start;
  start.unitStart = true;
  start.streamId = 0xE0;
  start.pts = 9000;
  start.data = H264Picture(true);
  PacketSpec middle;
  middle.pcrBase = 0;  // PCR on the frame's second packet, with payload
  PacketSpec pcrOnly;
  pcrOnly.noPayload = true;
  pcrOnly.pcrBase = 1800;  // PCR-only packet before the frame's third packet
  PacketSpec rest;
  const std::string stream = tables + MakePacket(start) + MakePacket(middle) + MakePacket(pcrOnly) +
                             MakePacket(rest) + Frame(0x100, 12600, H264Picture(true));
  const std::vector<SplitPoint> points = Scan(stream);
  ASSERT_EQ(2u, points.size());
  EXPECT_FALSE(points[0].onFrameBoundary);
  EXPECT_FALSE(points[1].onFrameBoundary);
  EXPECT_EQ(12600 - 1800, points[1].keyFrameDelay.value_or(-1));
}

TEST(SplitPoints, EachProgramIsJudgedAgainstItsOwnVideo) {
  const std::string tables = MakePat({{1, 0x1000}, {2, 0x1001}}) +
                             MakePmt({1, 0x1000}, 0x100, {{0x1B, 0x100}}) +
                             MakePmt({2, 0x1001}, 0x200, {{0x24, 0x200}});
  // Program 2's clock runs an hour ahead of program 1's.
  const uint64_t hour = 3600 * kClockHz;
  const std::string stream = tables + Frame(0x100, 9000, H264Picture(true), 0) +
                             Frame(0x200, hour + 4500, H265Picture(21), hour) +
                             Frame(0x100, 12600, H264Picture(false), 3600) +
                             Frame(0x200, hour + 8100, H265Picture(1), hour + 3600) +
                             Frame(0x200, hour + 11700, H265Picture(19)) +
                             Frame(0x100, 16200, H264Picture(true));
  const std::vector<SplitPoint> points = Scan(stream);
  ASSERT_EQ(4u, points.size());
  EXPECT_EQ(0x200, points[1].pcrPid);
  EXPECT_EQ(0, points[1].time);  // from its own clock's first PCR
  EXPECT_EQ(9000, points[0].keyFrameDelay.value_or(-1));
  EXPECT_EQ(4500, points[1].keyFrameDelay.value_or(-1));
  EXPECT_EQ(12600, points[2].keyFrameDelay.value_or(-1));
  EXPECT_EQ(8100, points[3].keyFrameDelay.value_or(-1));
  for (const SplitPoint& point : points) EXPECT_TRUE(point.Passes());
}

TEST(SplitPoints, PicturesDecideAndTheRandomAccessIndicatorIsAHint) {
  const std::string tables = MakePat({{1, 0x1000}}) + MakePmt({1, 0x1000}, 0x100, {{0x1B, 0x100}});
  // Flag set on a P picture: not a key frame. Flag clear on an IDR: one.
  const std::string stream = tables + Frame(0x100, 9000, H264Picture(false), 0, true) +
                             Frame(0x100, 12600, H264Picture(true), std::nullopt, false);
  const std::vector<SplitPoint> points = Scan(stream);
  ASSERT_EQ(1u, points.size());
  EXPECT_EQ(12600, points[0].keyFrameDelay.value_or(-1));
  // A picture that cannot be read falls back on the flag.
  const std::string unreadable = tables + Frame(0x100, 9000, std::string(50, '\x5A'), 0, true);
  EXPECT_EQ(9000, Scan(unreadable)[0].keyFrameDelay.value_or(-1));
}

TEST(SplitPoints, StartCodeSplitAcrossPackets) {
  const std::string tables = MakePat({{1, 0x1000}}) + MakePmt({1, 0x1000}, 0x100, {{0x1B, 0x100}});
  const std::string picture = H264Picture(true);  // "00 00 00 01 09 F0 00 00 01 65 ..."
  for (size_t cut = 6; cut <= 10; ++cut) {
    // The first packet is filled so that it ends `cut` bytes into the picture.
    PacketSpec first;
    first.unitStart = true;
    first.streamId = 0xE0;
    first.pts = 9000;
    first.pcrBase = 0;
    // Header 4, adaptation field 1 + 7 (flags and PCR), PES header 14.
    const size_t room = kPacketSize - 4 - 8 - 14;
    first.data = std::string(room - cut, '\x5A') + picture.substr(0, cut);
    PacketSpec second;
    second.data = picture.substr(cut);
    const std::string stream = tables + MakePacket(first) + MakePacket(second);
    ASSERT_EQ(first.data.substr(first.data.size() - cut),
              MakePacket(first).substr(kPacketSize - cut))
        << "the picture must end the first packet";
    const std::vector<SplitPoint> points = Scan(stream);
    ASSERT_EQ(1u, points.size());
    EXPECT_EQ(9000, points[0].keyFrameDelay.value_or(-1)) << cut;
  }
}

TEST(SplitPoints, UnflaggedClockJumpKeepsTimeContinuous) {
  // A recording joined to one whose clock restarts 40 s earlier.
  StreamShape first;
  first.frames = 50;
  StreamShape second = first;
  second.firstPcr = 900000 - 40 * kClockHz;
  const std::vector<SplitPoint> points = Scan(MakeStream(first) + MakeStream(second));
  ASSERT_EQ(4u, points.size());
  EXPECT_EQ(2 * static_cast<int64_t>(kClockHz), points[2].time);  // one PCR interval on
  for (const SplitPoint& point : points) EXPECT_EQ(9000, point.keyFrameDelay.value_or(-1));
}

TEST(SplitPoints, ClockJumpReachesAcrossTheJoin) {
  // Only the first frame of each recording is a key frame; the first
  // recording's PCRs are at 0, 1 and 2 s and it ends at 2.8 s.
  StreamShape first;
  first.frames = 70;
  first.keyFrameEvery = 100;
  StreamShape second;
  second.frames = 25;
  second.firstPcr = 50000;
  const std::vector<SplitPoint> points = Scan(MakeStream(first) + MakeStream(second));
  ASSERT_EQ(4u, points.size());
  // The first PCR after the join is taken one interval after the last one
  // before it, at 3 s; its key frame's PTS is 0.1 s later.
  EXPECT_EQ(2 * 90000 + 9000, points[1].keyFrameDelay.value_or(-1));
  EXPECT_EQ(90000 + 9000, points[2].keyFrameDelay.value_or(-1));
  EXPECT_EQ(9000, points[3].keyFrameDelay.value_or(-1));
}

TEST(SplitPoints, FlaggedDiscontinuity) {
  const std::string tables = MakePat({{1, 0x1000}}) + MakePmt({1, 0x1000}, 0x100, {{0x1B, 0x100}});
  const std::string stream =
      tables + Frame(0x100, 9000, H264Picture(true), 0) +
      Frame(0x100, 12600, H264Picture(false), 3600) +
      PcrOnly(0x100, 5000000, true) +  // the new clock: 3600 ticks on, as assumed
      Frame(0x100, 5000000 + 9000, H264Picture(true));
  const std::vector<SplitPoint> points = Scan(stream);
  ASSERT_EQ(3u, points.size());
  EXPECT_EQ(7200, points[2].time);
  EXPECT_EQ(16200 - 3600, points[1].keyFrameDelay.value_or(-1));
  EXPECT_TRUE(points[2].onFrameBoundary);
  EXPECT_EQ(9000, points[2].keyFrameDelay.value_or(-1));
}

TEST(SplitPoints, KeyFrameBeforeItsPcrHasANegativeDelay) {
  // The multiplex runs 0.3 s behind: the PTS is earlier than the PCR.
  PacketSpec late;
  late.unitStart = true;
  late.randomAccess = true;
  late.streamId = 0xE0;
  late.pts = 0;
  late.pcrBase = 27000;
  const std::vector<SplitPoint> points = Scan(MakePacket(late));
  ASSERT_EQ(1u, points.size());
  EXPECT_EQ(-27000, points[0].keyFrameDelay.value_or(1));
  EXPECT_TRUE(points[0].Passes());
  // Across the 33-bit wrap too.
  late.pts = kClockMask + 1 - 9000;
  late.pcrBase = 18000;
  EXPECT_EQ(-27000, Scan(MakePacket(late))[0].keyFrameDelay.value_or(1));
}

TEST(SplitPoints, PmtSentOnceAndLateGivesTheCodecToTracksMadeBeforeIt) {
  // The PMT names no PCR PID (0x1FFF), the PCRs ride on the video, and the
  // encoder sets the random access indicator on every picture: only the
  // pictures tell the IDR (frame 60) from the P pictures. The tables come
  // once: before the video, after a packet cut out of a frame, or after the
  // first frame.
  const std::string tables =
      MakePat({{1, 0x1000}}) + MakePmt({1, 0x1000}, 0x1FFF, {{0x0F, 0x101}, {0x1B, 0x100}});
  PacketSpec cut;  // the end of a frame whose start is not in the file
  cut.pcrBase = 0;
  for (int tablesAt = 0; tablesAt < 3; ++tablesAt) {
    std::string stream = tablesAt == 0 ? tables : "";
    stream += MakePacket(cut);
    stream += tablesAt == 1 ? tables : "";
    for (int frame = 1; frame < 75; ++frame) {
      const uint64_t clock = 3600 * static_cast<uint64_t>(frame);
      const std::optional<uint64_t> pcr = EveryTenth(frame, clock);
      stream += Frame(0x100, clock + 9000, H264Picture(frame == 60), pcr, true);
      stream += frame == 1 && tablesAt == 2 ? tables : "";
    }
    const std::vector<SplitPoint> points = Scan(stream);
    ASSERT_EQ(8u, points.size()) << tablesAt;
    EXPECT_EQ(225000, points[0].keyFrameDelay.value_or(-1)) << tablesAt;
    EXPECT_FALSE(points[0].Playable()) << tablesAt;
    EXPECT_EQ(225000 - 36000, points[1].keyFrameDelay.value_or(-1)) << tablesAt;
    EXPECT_FALSE(points[1].Playable()) << tablesAt;
    EXPECT_EQ(225000 - 72000, points[2].keyFrameDelay.value_or(-1)) << tablesAt;
    EXPECT_TRUE(points[2].Passes()) << tablesAt;
    EXPECT_EQ(9000, points[6].keyFrameDelay.value_or(-1)) << tablesAt;
    EXPECT_FALSE(points[7].keyFrameDelay) << tablesAt;
  }
}

TEST(SplitPoints, EveryPointIsMeasuredOnItsOwnClock) {
  // No tables. The first PCR belongs to another program, on a PID of its
  // own and on a clock about to wrap; the video's own PCRs, at 10 s, come
  // after. Both programs' points are judged against the first video, each
  // on its own clock.
  const uint64_t nearWrap = kClockMask + 1 - 18000;  // 0.2 s before the wrap
  std::string stream = PcrOnly(0x1FF, nearWrap);
  for (int frame = 0; frame < 50; ++frame) {
    const uint64_t clock = 900000 + 3600 * static_cast<uint64_t>(frame);
    const std::optional<uint64_t> pcr = EveryTenth(frame, clock);
    stream += Frame(0x100, clock + 9000, "", pcr, frame % 25 == 0);
    if (frame % 10 == 5) {  // 0.4 s on, past the wrap
      stream += PcrOnly(0x1FF, (nearWrap + 3600 * static_cast<uint64_t>(frame)) & kClockMask);
    }
  }
  const std::vector<SplitPoint> points = Scan(stream);
  ASSERT_EQ(11u, points.size());
  // The video's own points: key frames at 0 and 1 s, 0.1 s after their PCR.
  EXPECT_EQ(0x100, points[1].pcrPid);
  EXPECT_EQ(9000, points[1].keyFrameDelay.value_or(-1));
  EXPECT_EQ(90000 + 9000 - 36000, points[3].keyFrameDelay.value_or(-1));
  EXPECT_EQ(90000 + 9000 - 72000, points[5].keyFrameDelay.value_or(-1));
  EXPECT_TRUE(points[1].Passes() && points[3].Passes() && points[5].Passes());
  // The other program's: on its own line the wrap lies behind, and the
  // video's PTS of 10.1 and 11.1 s read against the wrapped PCRs.
  EXPECT_EQ(0x1FF, points[0].pcrPid);
  EXPECT_EQ(18000 + 909000, points[0].keyFrameDelay.value_or(-1));
  EXPECT_EQ(999000, points[2].keyFrameDelay.value_or(-1));
  EXPECT_EQ(999000 - 36000, points[4].keyFrameDelay.value_or(-1));
  EXPECT_FALSE(points[0].Passes() || points[2].Passes() || points[4].Passes());
}

TEST(SplitPoints, KeyFrameUpToTwoSecondsBehindItsPcrIsAccepted) {
  // The multiplex runs behind: PTS 1.9 s and 2.1 s before the PCR.
  for (const int64_t behind : {171000, 180000, 180001, 189000}) {
    const uint64_t pts = 900000 - static_cast<uint64_t>(behind);
    const std::vector<SplitPoint> points = Scan(MakePacket(FrameStart(pts, 900000, true)));
    ASSERT_EQ(1u, points.size());
    EXPECT_EQ(-behind, points[0].keyFrameDelay.value_or(1));
    EXPECT_EQ(behind <= 180000, points[0].Passes()) << behind;
    EXPECT_EQ(behind > 180000, points[0].Late()) << behind;
  }
}

// Every report item of a stream, read with at most `held` items in memory.
std::vector<ReportItem> Report(const std::string& stream, size_t held, size_t* most = nullptr) {
  SplitPointScanner scanner(held);
  std::vector<ReportItem> items;
  for (size_t at = 0; at + kPacketSize <= stream.size(); at += kPacketSize) {
    scanner.Add(ParsePacket(reinterpret_cast<const uint8_t*>(stream.data() + at)));
    if (at % (kPacketSize * 1000) == 0) {
      scanner.AddNote("note at byte " + std::to_string(at), at % 3 == 0);
      for (ReportItem& item : scanner.TakeReady()) items.push_back(std::move(item));
    }
    if (most != nullptr) *most = std::max(*most, scanner.HeldInMemory());
  }
  scanner.Finish();
  for (auto ready = scanner.TakeReady(); !ready.empty(); ready = scanner.TakeReady()) {
    EXPECT_LE(ready.size(), 2 * held + 2);  // what was held, then what was in memory
    for (ReportItem& item : ready) items.push_back(std::move(item));
  }
  return items;
}

void ExpectSameReport(const std::vector<ReportItem>& expected, const std::vector<ReportItem>& got) {
  ASSERT_EQ(expected.size(), got.size());
  for (size_t i = 0; i < expected.size(); ++i) {
    EXPECT_EQ(expected[i].isPoint, got[i].isPoint) << i;
    EXPECT_EQ(expected[i].note, got[i].note) << i;
    EXPECT_EQ(expected[i].fails, got[i].fails) << i;
    const SplitPoint& a = expected[i].point;
    const SplitPoint& b = got[i].point;
    EXPECT_EQ(a.packet, b.packet) << i;
    EXPECT_EQ(a.pcrPid, b.pcrPid) << i;
    EXPECT_EQ(a.pcrBase, b.pcrBase) << i;
    EXPECT_EQ(a.time, b.time) << i;
    EXPECT_EQ(a.onFrameBoundary, b.onFrameBoundary) << i;
    EXPECT_EQ(a.keyFrameDelay, b.keyFrameDelay) << i;
  }
}

TEST(SplitPoints, LongWaitForAKeyFrameHoldsLittleInMemory) {
  // 20 minutes with a PCR on every frame and no key frame: every point
  // waits to the end, and so does every line after it.
  StreamShape none;
  none.frames = 25 * 60 * 20;
  none.keyFrameEvery = 0;
  none.pcrEvery = 1;
  none.packetsPerFrame = 1;
  none.audio = false;
  size_t most = 0;
  const std::vector<ReportItem> items = Report(MakeStream(none), 64, &most);
  EXPECT_LE(most, 65u);
  size_t points = 0;
  for (const ReportItem& item : items) {
    if (!item.isPoint) continue;
    EXPECT_EQ(points++, item.point.packet);
    EXPECT_FALSE(item.point.keyFrameDelay);
    EXPECT_TRUE(item.point.onFrameBoundary);
  }
  EXPECT_EQ(static_cast<size_t>(none.frames), points);
}

TEST(SplitPoints, HeldItemsComeBackUnchanged) {
  // Key frames far apart, a clock jump, PCRs inside frames, two programs
  // on one video: the same report whether items are held in memory or not.
  StreamShape sparse;
  sparse.frames = 25 * 40;
  sparse.keyFrameEvery = 25 * 15;
  sparse.pcrEvery = 3;
  StreamShape inside = sparse;
  inside.pcrInsideFrame = true;
  inside.firstPcr = 100;
  std::string stream = MakeStream(sparse) + MakeStream(inside);
  for (size_t at = 0; at < 30; ++at) stream += PcrOnly(0x1FF, 5000000 + at * 9000);
  stream += MakeStream(sparse);
  const std::vector<ReportItem> inMemory = Report(stream, size_t{1} << 30);
  ASSERT_GT(inMemory.size(), 900u);
  for (const size_t held : {1, 7, 100}) {
    ExpectSameReport(inMemory, Report(stream, held));
  }
}

TEST(SplitPoints, PointsWaitingForAnyVideoOrForItsNextPacketAreHeldToo) {
  // PCRs for minutes before any video (as of a radio program), and PCRs
  // on their own PID while the video the PMT names sends nothing: then
  // the video comes, with a key frame at its second frame.
  std::string noVideo;
  std::string silentVideo = MakePat({{1, 0x1000}}) + MakePmt({1, 0x1000}, 0x1FF, {{0x1B, 0x100}});
  for (uint64_t at = 0; at < 3000; ++at) {
    noVideo += PcrOnly(0x1FF, 900000 + at * 3600);
    silentVideo += PcrOnly(0x1FF, 900000 + at * 3600);
  }
  for (std::string* stream : {&noVideo, &silentVideo}) {
    const uint64_t video = 900000 + 3000 * 3600;
    *stream += Frame(0x100, video, H264Picture(false), std::nullopt, false) +
               Frame(0x100, video + 3600, H264Picture(true), std::nullopt, true);
    size_t most = 0;
    const std::vector<ReportItem> held = Report(*stream, 16, &most);
    EXPECT_LE(most, 17u);
    const std::vector<ReportItem> inMemory = Report(*stream, size_t{1} << 30);
    ExpectSameReport(inMemory, held);
    const auto first = std::find_if(inMemory.begin(), inMemory.end(),
                                    [](const ReportItem& item) { return item.isPoint; });
    ASSERT_NE(inMemory.end(), first);
    EXPECT_EQ(3000 * 3600 + 3600, first->point.keyFrameDelay.value_or(-1));
    EXPECT_EQ(stream == &silentVideo, first->point.onFrameBoundary);
  }
}

}  // namespace
