// The report of filePes -a over stream files written to a scratch folder.
#include "sim/file_pes/file_pes.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include "sim/file_pes/ts_builder.h"
#include "sim/file_pes/ts_packet.h"
#include "testing/scratch_dir.h"

namespace {

class FilePes : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_FALSE(folder_.empty()); }

  std::string Write(const std::string& content) {
    const std::string path = folder_ + "/stream.ts";
    std::ofstream(path, std::ios::binary | std::ios::trunc) << content;
    return path;
  }

  struct Result {
    int status;
    std::string out;
  };
  Result Analyze(const std::string& path) {
    std::ostringstream out;
    const int status = AnalyzeStreamFile(path.c_str(), out);
    return {status, out.str()};
  }

  const ScratchDir scratch_{"file_pes"};
  const std::string folder_ = scratch_.Path();
};

TEST_F(FilePes, GoodStreamPasses) {
  StreamShape shape;
  const Result r = Analyze(Write(MakeStream(shape)));
  EXPECT_EQ(
      "ok   split point 1 at packet 0 (0.000 s): key frame within 2 seconds (after 0.100 s)\n"
      "ok   split point 2 at packet 75 (1.000 s): key frame within 2 seconds (after 0.100 s)\n"
      "2 split points, 0 failed\n",
      r.out);
  EXPECT_EQ(0, r.status);
}

TEST_F(FilePes, EachFailingSplitPointHasAFailLine) {
  StreamShape shape;
  shape.frames = 100;
  shape.keyFrameEvery = 100;  // only at 0 s
  shape.pcrInsideFrame = true;
  const Result r = Analyze(Write(MakeStream(shape)));
  EXPECT_EQ(
      // The only key frame starts one packet before the first split point.
      "FAIL split point 1 at packet 1 (0.000 s): not on a frame boundary, no key frame follows\n"
      "FAIL split point 2 at packet 76 (1.000 s): not on a frame boundary, no key frame follows\n"
      "FAIL split point 3 at packet 151 (2.000 s): not on a frame boundary, no key frame follows\n"
      "FAIL split point 4 at packet 226 (3.000 s): not on a frame boundary, no key frame follows\n"
      "4 split points, 4 failed\n",
      r.out);
  EXPECT_EQ(1, r.status);
}

TEST_F(FilePes, LateKeyFrameFails) {
  StreamShape shape;
  shape.frames = 100;
  shape.keyFrameEvery = 75;
  const Result r = Analyze(Write(MakeStream(shape)));
  EXPECT_EQ(
      "ok   split point 1 at packet 0 (0.000 s): key frame within 2 seconds (after 0.100 s)\n"
      "FAIL split point 2 at packet 75 (1.000 s): no key frame within 2 seconds (after 2.100 s)\n"
      "ok   split point 3 at packet 150 (2.000 s): key frame within 2 seconds (after 1.100 s)\n"
      "ok   split point 4 at packet 225 (3.000 s): key frame within 2 seconds (after 0.100 s)\n"
      "4 split points, 1 failed\n",
      r.out);
  EXPECT_EQ(1, r.status);
}

TEST_F(FilePes, KeyFrameFarBehindItsPcrIsLate) {
  // PTS 1.9 s before the PCR: a multiplex running behind. 2.1 s: late.
  PacketSpec frame = FrameStart(900000 - 171000, 900000, true);
  const Result behind = Analyze(Write(MakePacket(frame)));
  EXPECT_EQ(
      "ok   split point 1 at packet 0 (0.000 s): key frame within 2 seconds (after -1.900 s)\n"
      "1 split points, 0 failed\n",
      behind.out);
  EXPECT_EQ(0, behind.status);
  frame.pts = 900000 - 189000;
  const Result late = Analyze(Write(MakePacket(frame)));
  EXPECT_EQ(
      "FAIL split point 1 at packet 0 (0.000 s): key frame late by 2.100 s (more than 2 seconds before its PCR)\n"
      "1 split points, 1 failed\n",
      late.out);
  EXPECT_EQ(1, late.status);
}

TEST_F(FilePes, MissingFileFails) {
  const Result r = Analyze(folder_ + "/none.ts");
  EXPECT_EQ("FAIL cannot read " + folder_ + "/none.ts: No such file or directory\n", r.out);
  EXPECT_EQ(1, r.status);
}

TEST_F(FilePes, FolderFails) {
  const Result r = Analyze(folder_);
  EXPECT_EQ(0u, r.out.find("FAIL cannot read " + folder_ + ": Is a directory\n")) << r.out;
  EXPECT_EQ(1, r.status);
}

TEST_F(FilePes, EmptyFileHasNoSplitPoint) {
  const Result r = Analyze(Write(""));
  EXPECT_EQ("FAIL no split point: no packet carries a PCR\n", r.out);
  EXPECT_EQ(1, r.status);
}

TEST_F(FilePes, LostSyncIsRegainedAndReportedInPlace) {
  StreamShape shape;
  shape.frames = 75;  // split points at packets 0, 75 and 150
  std::string stream = MakeStream(shape);
  stream[80 * kPacketSize] = 0;  // packet 80 is torn: 188 bytes are skipped
  const Result r = Analyze(Write(stream));
  EXPECT_EQ(
      "ok   split point 1 at packet 0 (0.000 s): key frame within 2 seconds (after 0.100 s)\n"
      "ok   split point 2 at packet 75 (1.000 s): key frame within 2 seconds (after 0.100 s)\n"
      "FAIL packet 80 has no sync byte (byte 15040); skipped 188 bytes, packets of 188 bytes go on at byte 15228\n"
      // The packet numbers after the gap count the packets read.
      "ok   split point 3 at packet 149 (2.000 s): key frame within 2 seconds (after 0.100 s)\n"
      "3 split points, 0 failed\n",
      r.out);
  EXPECT_EQ(1, r.status);
}

TEST_F(FilePes, GarbageInTheMiddleIsSkippedToTheNextPacket) {
  StreamShape shape;
  shape.frames = 75;
  const std::string stream = MakeStream(shape);
  // 100 bytes of a torn write, holding a lone sync byte, between packets 99 and 100.
  std::string garbage(100, '\0');
  for (size_t i = 0; i < garbage.size(); ++i) garbage[i] = static_cast<char>(i);
  garbage[50] = '\x47';
  const Result r = Analyze(
      Write(stream.substr(0, 100 * kPacketSize) + garbage + stream.substr(100 * kPacketSize)));
  EXPECT_EQ(
      "ok   split point 1 at packet 0 (0.000 s): key frame within 2 seconds (after 0.100 s)\n"
      "ok   split point 2 at packet 75 (1.000 s): key frame within 2 seconds (after 0.100 s)\n"
      "FAIL packet 100 has no sync byte (byte 18800); skipped 100 bytes, packets of 188 bytes go on at byte 18900\n"
      "ok   split point 3 at packet 150 (2.000 s): key frame within 2 seconds (after 0.100 s)\n"
      "3 split points, 0 failed\n",
      r.out);
  EXPECT_EQ(1, r.status);
}

TEST_F(FilePes, TruncatedLastPacketFails) {
  StreamShape shape;
  const std::string stream = MakeStream(shape);
  const Result r = Analyze(Write(stream.substr(0, stream.size() - 100)));
  EXPECT_EQ(
      "ok   split point 1 at packet 0 (0.000 s): key frame within 2 seconds (after 0.100 s)\n"
      "ok   split point 2 at packet 75 (1.000 s): key frame within 2 seconds (after 0.100 s)\n"
      "FAIL 88 bytes after the last whole packet\n"
      "2 split points, 0 failed\n",
      r.out);
  EXPECT_EQ(1, r.status);
}

TEST_F(FilePes, PacketsOf192And204BytesAreJudgedAlike) {
  StreamShape shape;
  const std::string stream = MakeStream(shape);
  const std::string expected =
      "ok   split point 1 at packet 0 (0.000 s): key frame within 2 seconds (after 0.100 s)\n"
      "ok   split point 2 at packet 75 (1.000 s): key frame within 2 seconds (after 0.100 s)\n"
      "2 split points, 0 failed\n";
  for (const size_t size : {size_t{192}, size_t{204}}) {
    const Result r = Analyze(Write(ResizePackets(stream, size)));
    EXPECT_EQ(expected, r.out) << size;
    EXPECT_EQ(0, r.status) << size;
  }
}

TEST_F(FilePes, ClockDiscontinuityIsNotedWhereItIsMet) {
  StreamShape first;
  first.frames = 50;
  StreamShape second = first;
  second.firstPcr = 126000;  // the clock restarts at 1.4 s
  const Result r = Analyze(Write(MakeStream(first) + MakeStream(second)));
  EXPECT_EQ(
      "ok   split point 1 at packet 0 (0.000 s): key frame within 2 seconds (after 0.100 s)\n"
      "ok   split point 2 at packet 75 (1.000 s): key frame within 2 seconds (after 0.100 s)\n"
      "note clock discontinuity at packet 150 (2.000 s) on PID 256, not flagged: the PCR goes from 11.000 s to 1.400 s; the clock is taken to run on 1.000 s after the previous PCR\n"
      "ok   split point 3 at packet 150 (2.000 s): key frame within 2 seconds (after 0.100 s)\n"
      "ok   split point 4 at packet 225 (3.000 s): key frame within 2 seconds (after 0.100 s)\n"
      "4 split points, 0 failed\n",
      r.out);
  EXPECT_EQ(0, r.status);
}

TEST_F(FilePes, GarbageOfEveryByteValue) {
  std::string garbage;
  for (int i = 0; i < 188 * 40; ++i) garbage += static_cast<char>(i * 7 % 256);
  const Result r = Analyze(Write(garbage));
  EXPECT_NE(std::string::npos, r.out.find("FAIL"));
  EXPECT_EQ(1, r.status);
}

TEST_F(FilePes, LargeStreamIsReadInPieces) {
  StreamShape shape;
  shape.frames = 25 * 120;  // two minutes, more than one read buffer
  const Result r = Analyze(Write(MakeStream(shape)));
  EXPECT_EQ(0, r.status);
  EXPECT_NE(std::string::npos, r.out.find("\n120 split points, 0 failed\n"));
  EXPECT_NE(std::string::npos, r.out.find("split point 120 at packet 8925 (119.000 s)"));
}

}  // namespace
