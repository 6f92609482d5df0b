// The split-point model over streams of known shape. Each test compares the
// points found, one line each: packet, PCR, PCR PID, time on its clock, and
// the judgement (delays and times in 90 kHz ticks).
#include "sim/file_pes/split_points.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "sim/file_pes/psi_tables.h"
#include "sim/file_pes/ts_builder.h"
#include "testing/sim_named_cases.h"

namespace {

std::string Describe(const SplitPoint& point) {
  std::ostringstream line;
  line << "packet " << point.packet << " PCR " << point.pcrBase << " on " << point.pcrPid << " at "
       << point.time << ": " << (point.onFrameBoundary ? "" : "inside a frame, ");
  if (point.keyFrameDelay) {
    line << "key frame after " << *point.keyFrameDelay;
  } else {
    line << "no key frame";
  }
  line << (point.Passes()     ? ", passes"
           : point.Late()     ? ", late"
           : point.Playable() ? ", playable"
                              : ", not playable");
  return line.str() + "\n";
}

// The split points of `stream`, one line each.
std::string Scan(const std::string& stream) {
  SplitPointScanner scanner;
  for (size_t at = 0; at + kPacketSize <= stream.size(); at += kPacketSize) {
    scanner.Add(ParsePacket(reinterpret_cast<const uint8_t*>(stream.data() + at)));
  }
  std::string lines;
  for (const SplitPoint& point : scanner.Result()) lines += Describe(point);
  return lines;
}

// The PCR of every tenth frame.
std::optional<uint64_t> EveryTenth(int frame, uint64_t clock) {
  return frame % 10 == 0 ? std::optional<uint64_t>(clock) : std::nullopt;
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
  PacketSpec rest;
  rest.pid = pid;
  for (int i = 1; i < packets; ++i) frame += MakePacket(rest);
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

// A PES start on `pid` with `streamId`, a PTS and maybe a PCR.
PacketSpec PesStart(uint16_t pid, uint8_t streamId, std::optional<uint64_t> pts,
                    std::optional<uint64_t> pcr, bool randomAccess = false) {
  PacketSpec start;
  start.pid = pid;
  start.unitStart = true;
  start.streamId = streamId;
  start.pts = pts;
  start.pcrBase = pcr;
  start.randomAccess = randomAccess;
  return start;
}

// The tables of one program whose only video, H.264 on 0x100, carries the PCR.
std::string H264Tables() {
  return MakePat({{1, 0x1000}}) + MakePmt({1, 0x1000}, 0x100, {{0x1B, 0x100}});
}

// A stream of `frames` frames, a key frame every `keyFrameEvery`, the first
// PCR at `firstPcr`.
StreamShape Shape(int frames = 50, int keyFrameEvery = 25, uint64_t firstPcr = 900000) {
  StreamShape shape;
  shape.frames = frames;
  shape.keyFrameEvery = keyFrameEvery;
  shape.firstPcr = firstPcr;
  return shape;
}

StreamShape PcrInsideFrame() {
  StreamShape shape;
  shape.pcrInsideFrame = true;
  return shape;
}

StreamShape PtsLead(uint64_t lead) {
  StreamShape shape = Shape(100, 75);  // split points at 0, 1, 2 and 3 s; key frames at 0 and 3 s
  shape.ptsLead = lead;
  return shape;
}

using Streams = std::vector<std::string>;

// Streams, and the split points found in each, one line each.
struct Case {
  const char* name;
  Streams (*streams)();
  const char* points;
};

void PrintTo(const Case& c, std::ostream* out) { *out << c.name; }

const Case kCases[] = {
    // 2 s of 25 frames per second, a key frame and PCR each second.
    {"WellFormedStreamPassesEverywhere", [] { return Streams{MakeStream(Shape())}; },
     "packet 0 PCR 900000 on 256 at 0: key frame after 9000, passes\n"
     "packet 75 PCR 990000 on 256 at 90000: key frame after 9000, passes\n"},
    // The next key frame is a second later.
    {"PcrInsideAFrameIsNotOnAFrameBoundary", [] { return Streams{MakeStream(PcrInsideFrame())}; },
     "packet 1 PCR 900000 on 256 at 0: inside a frame, key frame after 99000, playable\n"
     "packet 76 PCR 990000 on 256 at 90000: inside a frame, no key frame, not playable\n"},
    // Key frames at 0 and 4 s: at 1 and 2 s the next is 3.1 s and 2.1 s
    // away; at 3 s it is 1.1 s away.
    {"KeyFramesTooFarApartAreNotPlayableInTime",
     [] { return Streams{MakeStream(Shape(125, 100))}; },
     "packet 0 PCR 900000 on 256 at 0: key frame after 9000, passes\n"
     "packet 75 PCR 990000 on 256 at 90000: key frame after 279000, not playable\n"
     "packet 150 PCR 1080000 on 256 at 180000: key frame after 189000, not playable\n"
     "packet 225 PCR 1170000 on 256 at 270000: key frame after 99000, passes\n"
     "packet 300 PCR 1260000 on 256 at 360000: key frame after 9000, passes\n"},
    // One tick more than 2 s is too late.
    {"ExactlyTwoSecondsIsStillPlayable",
     [] {
       return Streams{MakeStream(PtsLead(0)), MakeStream(PtsLead(1))};
     },
     "packet 0 PCR 900000 on 256 at 0: key frame after 0, passes\n"
     "packet 75 PCR 990000 on 256 at 90000: key frame after 180000, passes\n"
     "packet 150 PCR 1080000 on 256 at 180000: key frame after 90000, passes\n"
     "packet 225 PCR 1170000 on 256 at 270000: key frame after 0, passes\n"
     "packet 0 PCR 900000 on 256 at 0: key frame after 1, passes\n"
     "packet 75 PCR 990000 on 256 at 90000: key frame after 180001, not playable\n"
     "packet 150 PCR 1080000 on 256 at 180000: key frame after 90001, passes\n"
     "packet 225 PCR 1170000 on 256 at 270000: key frame after 1, passes\n"},
    {"NoKeyFrameAfterTheSplitPoint", [] { return Streams{MakeStream(Shape(50, 0))}; },
     "packet 0 PCR 900000 on 256 at 0: no key frame, not playable\n"
     "packet 75 PCR 990000 on 256 at 90000: no key frame, not playable\n"},
    {"StreamWithoutPcrHasNoSplitPoints",
     [] {
       StreamShape shape;
       shape.pcrEvery = 0;
       return Streams{MakeStream(shape), ""};
     },
     ""},
    // A PCR on the audio PID's PES start is not on a video frame boundary.
    {"AudioFramesAreNotVideoFrames",
     [] {
       return Streams{MakePacket(PesStart(0x101, 0xC0, 1000, 1000)) +
                      MakePacket(PesStart(0x100, 0xE0, 2000, std::nullopt, true))};
     },
     "packet 0 PCR 1000 on 257 at 0: inside a frame, key frame after 1000, playable\n"},
    // A second video PID's key frames do not count.
    {"VideoIsTheFirstPidWithAVideoPes",
     [] {
       return Streams{MakePacket(PesStart(0x100, 0xE0, 500, 0)) +
                      MakePacket(PesStart(0x200, 0xE0, 500, std::nullopt, true))};
     },
     "packet 0 PCR 0 on 256 at 0: no key frame, not playable\n"},
    {"KeyFrameWithoutPtsCannotBeTimed",
     [] { return Streams{MakePacket(PesStart(0x100, 0xE0, std::nullopt, 0, true))}; },
     "packet 0 PCR 0 on 256 at 0: no key frame, not playable\n"},
    // The PTS wraps past zero.
    {"ClockWrapsAt33Bits", [] { return Streams{MakeStream(Shape(50, 25, kClockMask - 1000))}; },
     "packet 0 PCR 8589933591 on 256 at 0: key frame after 9000, passes\n"
     "packet 75 PCR 88999 on 256 at 90000: key frame after 9000, passes\n"},
    // Two videos; the first PES in the stream is on 0x101, but the PCR rides
    // on 0x102, whose frames decide: it has no key frame after its first.
    {"PmtNamesTheVideoThatCarriesThePcr",
     [] {
       return Streams{
           MakePat({{1, 0x1000}}) + MakePmt({1, 0x1000}, 0x102, {{0x1B, 0x101}, {0x1B, 0x102}}) +
           Frame(0x101, 1000, H264Picture(false)) + Frame(0x102, 9000, H264Picture(true), 0) +
           Frame(0x101, 4600, H264Picture(false)) + Frame(0x102, 12600, H264Picture(false), 3600)};
     },
     "packet 4 PCR 0 on 258 at 0: key frame after 9000, passes\n"
     "packet 8 PCR 3600 on 258 at 3600: no key frame, not playable\n"},
    // The first point lies between frames: on a boundary, though its own
    // packet begins nothing.
    {"PcrOnItsOwnPidIsJudgedAgainstTheFirstVideo",
     [] {
       return Streams{MakePat({{1, 0x1000}}) +
                      MakePmt({1, 0x1000}, 0x1FF, {{0x0F, 0x101}, {0x02, 0x100}}) +
                      PcrOnly(0x1FF, 0) + Frame(0x100, 9000, Mpeg2Picture(1)) +
                      Frame(0x100, 12600, Mpeg2Picture(2)) + PcrOnly(0x1FF, 3600) +
                      Frame(0x100, 16200, Mpeg2Picture(3), std::nullopt, false, 1) +
                      PcrOnly(0x1FF, 7200) + Frame(0x100, 19800, Mpeg2Picture(1))};
     },
     "packet 2 PCR 0 on 511 at 0: key frame after 9000, passes\n"
     "packet 7 PCR 3600 on 511 at 3600: key frame after 16200, passes\n"
     "packet 9 PCR 7200 on 511 at 7200: key frame after 12600, passes\n"},
    // A PCR on a frame's second packet, with payload, and a PCR-only packet
    // before its third.
    {"PcrPacketInsideAFrameIsNotOnABoundary",
     [] {
       PacketSpec start = PesStart(0x100, 0xE0, 9000, std::nullopt);
       start.data = H264Picture(true);
       PacketSpec middle;
       middle.pcrBase = 0;
       return Streams{H264Tables() + MakePacket(start) + MakePacket(middle) + PcrOnly(0x100, 1800) +
                      MakePacket(PacketSpec()) + Frame(0x100, 12600, H264Picture(true))};
     },
     "packet 3 PCR 0 on 256 at 0: inside a frame, key frame after 12600, playable\n"
     "packet 4 PCR 1800 on 256 at 1800: inside a frame, key frame after 10800, playable\n"},
    // Program 2's clock runs an hour ahead of program 1's; its time counts
    // from its own clock's first PCR.
    {"EachProgramIsJudgedAgainstItsOwnVideo",
     [] {
       const uint64_t hour = 3600 * kClockHz;
       return Streams{
           MakePat({{1, 0x1000}, {2, 0x1001}}) + MakePmt({1, 0x1000}, 0x100, {{0x1B, 0x100}}) +
           MakePmt({2, 0x1001}, 0x200, {{0x24, 0x200}}) + Frame(0x100, 9000, H264Picture(true), 0) +
           Frame(0x200, hour + 4500, H265Picture(21), hour) +
           Frame(0x100, 12600, H264Picture(false), 3600) +
           Frame(0x200, hour + 8100, H265Picture(1), hour + 3600) +
           Frame(0x200, hour + 11700, H265Picture(19)) + Frame(0x100, 16200, H264Picture(true))};
     },
     "packet 3 PCR 0 on 256 at 0: key frame after 9000, passes\n"
     "packet 5 PCR 324000000 on 512 at 0: key frame after 4500, passes\n"
     "packet 7 PCR 3600 on 256 at 3600: key frame after 12600, passes\n"
     "packet 9 PCR 324003600 on 512 at 3600: key frame after 8100, passes\n"},
    // Flag set on a P picture: not a key frame. Flag clear on an IDR: one. A
    // picture that cannot be read falls back on the flag.
    {"PicturesDecideAndTheRandomAccessIndicatorIsAHint",
     [] {
       return Streams{H264Tables() + Frame(0x100, 9000, H264Picture(false), 0, true) +
                          Frame(0x100, 12600, H264Picture(true), std::nullopt, false),
                      H264Tables() + Frame(0x100, 9000, std::string(50, '\x5A'), 0, true)};
     },
     "packet 2 PCR 0 on 256 at 0: key frame after 12600, passes\n"
     "packet 2 PCR 0 on 256 at 0: key frame after 9000, passes\n"},
    // A recording joined to one whose clock restarts 40 s earlier: the
    // clock runs on one PCR interval after the join.
    {"UnflaggedClockJumpKeepsTimeContinuous",
     [] {
       return Streams{MakeStream(Shape()) + MakeStream(Shape(50, 25, 900000 - 40 * kClockHz))};
     },
     "packet 0 PCR 900000 on 256 at 0: key frame after 9000, passes\n"
     "packet 75 PCR 990000 on 256 at 90000: key frame after 9000, passes\n"
     "packet 150 PCR 8587234592 on 256 at 180000: key frame after 9000, passes\n"
     "packet 225 PCR 8587324592 on 256 at 270000: key frame after 9000, passes\n"},
    // Only the first frame of each recording is a key frame; the first
    // recording's PCRs are at 0, 1 and 2 s and it ends at 2.8 s. The first
    // PCR after the join is taken one interval after the last one before
    // it, at 3 s; its key frame's PTS is 0.1 s later.
    {"ClockJumpReachesAcrossTheJoin",
     [] { return Streams{MakeStream(Shape(70, 100)) + MakeStream(Shape(25, 25, 50000))}; },
     "packet 0 PCR 900000 on 256 at 0: key frame after 9000, passes\n"
     "packet 75 PCR 990000 on 256 at 90000: key frame after 189000, not playable\n"
     "packet 150 PCR 1080000 on 256 at 180000: key frame after 99000, passes\n"
     "packet 210 PCR 50000 on 256 at 270000: key frame after 9000, passes\n"},
    // The new clock is 3600 ticks on, as assumed.
    {"FlaggedDiscontinuity",
     [] {
       return Streams{H264Tables() + Frame(0x100, 9000, H264Picture(true), 0) +
                      Frame(0x100, 12600, H264Picture(false), 3600) +
                      PcrOnly(0x100, 5000000, true) +
                      Frame(0x100, 5000000 + 9000, H264Picture(true))};
     },
     "packet 2 PCR 0 on 256 at 0: key frame after 9000, passes\n"
     "packet 4 PCR 3600 on 256 at 3600: key frame after 12600, passes\n"
     "packet 6 PCR 5000000 on 256 at 7200: key frame after 9000, passes\n"},
    // The multiplex runs 0.3 s behind: the PTS is earlier than the PCR; and
    // so across the 33-bit wrap.
    {"KeyFrameBeforeItsPcrHasANegativeDelay",
     [] {
       return Streams{MakePacket(PesStart(0x100, 0xE0, 0, 27000, true)),
                      MakePacket(PesStart(0x100, 0xE0, kClockMask + 1 - 9000, 18000, true))};
     },
     "packet 0 PCR 27000 on 256 at 0: key frame after -27000, passes\n"
     "packet 0 PCR 18000 on 256 at 0: key frame after -27000, passes\n"},
    // The multiplex runs behind: PTS 1.9 s and 2.1 s before the PCR.
    {"KeyFrameUpToTwoSecondsBehindItsPcrIsAccepted",
     [] {
       Streams streams;
       for (const uint64_t behind : {171000, 180000, 180001, 189000}) {
         streams.push_back(MakePacket(FrameStart(900000 - behind, 900000, true)));
       }
       return streams;
     },
     "packet 0 PCR 900000 on 256 at 0: key frame after -171000, passes\n"
     "packet 0 PCR 900000 on 256 at 0: key frame after -180000, passes\n"
     "packet 0 PCR 900000 on 256 at 0: key frame after -180001, late\n"
     "packet 0 PCR 900000 on 256 at 0: key frame after -189000, late\n"},
};

class SplitPointCases : public ::testing::TestWithParam<Case> {};

TEST_P(SplitPointCases, Found) {
  std::string points;
  for (const std::string& stream : GetParam().streams()) points += Scan(stream);
  EXPECT_EQ(GetParam().points, points);
}

INSTANTIATE_NAMED_CASES(SplitPoints, SplitPointCases, kCases);

TEST(SplitPoints, StartCodeSplitAcrossPackets) {
  const std::string picture = H264Picture(true);  // "00 00 00 01 09 F0 00 00 01 65 ..."
  for (size_t cut = 6; cut <= 10; ++cut) {
    // The first packet is filled so that it ends `cut` bytes into the
    // picture: header 4, adaptation field 1 + 7 (flags and PCR), PES header 14.
    PacketSpec first = PesStart(0x100, 0xE0, 9000, 0);
    first.data = std::string(kPacketSize - 4 - 8 - 14 - cut, '\x5A') + picture.substr(0, cut);
    ASSERT_EQ(picture.substr(0, cut), MakePacket(first).substr(kPacketSize - cut))
        << "the picture must end the first packet";
    PacketSpec second;
    second.data = picture.substr(cut);
    EXPECT_EQ("packet 2 PCR 0 on 256 at 0: key frame after 9000, passes\n",
              Scan(H264Tables() + MakePacket(first) + MakePacket(second)))
        << cut;
  }
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
      stream +=
          Frame(0x100, clock + 9000, H264Picture(frame == 60), EveryTenth(frame, clock), true);
      stream += frame == 1 && tablesAt == 2 ? tables : "";
    }
    // The tables before the cut packet come first.
    EXPECT_EQ("packet " + std::to_string(tablesAt == 0 ? 2 : 0) +
                  " PCR 0 on 256 at 0: inside a frame, key frame after 225000, not playable\n"
                  "packet 21 PCR 36000 on 256 at 36000: key frame after 189000, not playable\n"
                  "packet 41 PCR 72000 on 256 at 72000: key frame after 153000, passes\n"
                  "packet 61 PCR 108000 on 256 at 108000: key frame after 117000, passes\n"
                  "packet 81 PCR 144000 on 256 at 144000: key frame after 81000, passes\n"
                  "packet 101 PCR 180000 on 256 at 180000: key frame after 45000, passes\n"
                  "packet 121 PCR 216000 on 256 at 216000: key frame after 9000, passes\n"
                  "packet 141 PCR 252000 on 256 at 252000: no key frame, not playable\n",
              Scan(stream))
        << tablesAt;
  }
}

TEST(SplitPoints, EveryPointIsMeasuredOnItsOwnClock) {
  // No tables. The first PCR belongs to another program, on a PID of its
  // own and on a clock about to wrap; the video's own PCRs, at 10 s, come
  // after. Both programs' points are judged against the first video, each
  // on its own clock: the video's own points find key frames at 0 and 1 s,
  // 0.1 s after their PCR; on the other program's line the wrap lies
  // behind, and the video's PTS of 10.1 and 11.1 s read against the
  // wrapped PCRs.
  const uint64_t nearWrap = kClockMask + 1 - 18000;  // 0.2 s before the wrap
  std::string stream = PcrOnly(0x1FF, nearWrap);
  for (int frame = 0; frame < 50; ++frame) {
    const uint64_t clock = 900000 + 3600 * static_cast<uint64_t>(frame);
    stream += Frame(0x100, clock + 9000, "", EveryTenth(frame, clock), frame % 25 == 0);
    if (frame % 10 == 5) {  // 0.4 s on, past the wrap
      stream += PcrOnly(0x1FF, (nearWrap + 3600 * static_cast<uint64_t>(frame)) & kClockMask);
    }
  }
  EXPECT_EQ(
      "packet 0 PCR 8589916592 on 511 at 0: inside a frame, key frame after 927000, not playable\n"
      "packet 1 PCR 900000 on 256 at 0: key frame after 9000, passes\n"
      "packet 13 PCR 0 on 511 at 18000: inside a frame, key frame after 999000, not playable\n"
      "packet 22 PCR 936000 on 256 at 36000: key frame after 63000, passes\n"
      "packet 34 PCR 36000 on 511 at 54000: inside a frame, key frame after 963000, not playable\n"
      "packet 43 PCR 972000 on 256 at 72000: key frame after 27000, passes\n"
      "packet 55 PCR 72000 on 511 at 90000: inside a frame, no key frame, not playable\n"
      "packet 64 PCR 1008000 on 256 at 108000: no key frame, not playable\n"
      "packet 76 PCR 108000 on 511 at 126000: inside a frame, no key frame, not playable\n"
      "packet 85 PCR 1044000 on 256 at 144000: no key frame, not playable\n"
      "packet 97 PCR 144000 on 511 at 162000: inside a frame, no key frame, not playable\n",
      Scan(stream));
}

// Every report item of a stream, read with at most `held` items in memory,
// one line each.
std::string Report(const std::string& stream, size_t held, size_t* most = nullptr) {
  SplitPointScanner scanner(held);
  std::string lines;
  const auto take = [&lines](std::vector<ReportItem> items) {
    for (const ReportItem& item : items) {
      lines +=
          item.isPoint ? Describe(item.point) : (item.fails ? "failing " : "") + item.note + "\n";
    }
  };
  for (size_t at = 0; at + kPacketSize <= stream.size(); at += kPacketSize) {
    scanner.Add(ParsePacket(reinterpret_cast<const uint8_t*>(stream.data() + at)));
    if (at % (kPacketSize * 1000) == 0) {
      scanner.AddNote("note at byte " + std::to_string(at), at % 3 == 0);
      take(scanner.TakeReady());
    }
    if (most != nullptr) *most = std::max(*most, scanner.HeldInMemory());
  }
  scanner.Finish();
  for (auto ready = scanner.TakeReady(); !ready.empty(); ready = scanner.TakeReady()) {
    EXPECT_LE(ready.size(), 2 * held + 2);  // what was held, then what was in memory
    take(std::move(ready));
  }
  return lines;
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
  std::istringstream lines(Report(MakeStream(none), 64, &most));
  EXPECT_LE(most, 65u);
  int points = 0;
  for (std::string line; std::getline(lines, line);) {
    if (line.rfind("packet ", 0) != 0) continue;
    EXPECT_EQ(0u, line.find("packet " + std::to_string(points++) + " ")) << line;
    EXPECT_NE(std::string::npos, line.find(": no key frame, not playable")) << line;
  }
  EXPECT_EQ(none.frames, points);
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
  const std::string inMemory = Report(stream, size_t{1} << 30);
  ASSERT_GT(std::count(inMemory.begin(), inMemory.end(), '\n'), 900);
  for (const size_t held : {1, 7, 100}) EXPECT_EQ(inMemory, Report(stream, held)) << held;
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
    const std::string held = Report(*stream, 16, &most);
    EXPECT_LE(most, 17u);
    const std::string inMemory = Report(*stream, size_t{1} << 30);
    EXPECT_EQ(inMemory, held);
    const std::string first = inMemory.substr(inMemory.find("packet "));
    // Without tables the first point's packet begins no video frame.
    EXPECT_EQ(
        stream == &noVideo
            ? "packet 0 PCR 900000 on 511 at 0: inside a frame, key frame after 10803600, not playable\n"
            : "packet 2 PCR 900000 on 511 at 0: key frame after 10803600, not playable\n",
        first.substr(0, first.find('\n') + 1));
  }
}

}  // namespace
