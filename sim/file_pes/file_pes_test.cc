// The report of filePes -a over stream files written to a scratch folder.
#include "sim/file_pes/file_pes.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "sim/file_pes/ts_builder.h"
#include "sim/file_pes/ts_packet.h"
#include "testing/run_result.h"
#include "testing/scratch_dir.h"

namespace {

StreamShape Shape(int frames, int keyFrameEvery = 25) {
  StreamShape shape;
  shape.frames = frames;
  shape.keyFrameEvery = keyFrameEvery;
  return shape;
}

const char kTwoGoodPoints[] =
    "ok   split point 1 at packet 0 (0.000 s): key frame within 2 seconds (after 0.100 s)\n"
    "ok   split point 2 at packet 75 (1.000 s): key frame within 2 seconds (after 0.100 s)\n";

struct Case {
  const char* name;
  std::string (*stream)();
  std::string report;
  int status;
};

const Case kCases[] = {
    {"GoodStreamPasses", [] { return MakeStream(StreamShape()); },
     std::string(kTwoGoodPoints) + "2 split points, 0 failed\n", 0},
    // The only key frame starts one packet before the first split point.
    {"EachFailingSplitPointHasAFailLine",
     [] {
       StreamShape shape = Shape(100, 100);
       shape.pcrInsideFrame = true;
       return MakeStream(shape);
     },
     "FAIL split point 1 at packet 1 (0.000 s): not on a frame boundary, no key frame follows\n"
     "FAIL split point 2 at packet 76 (1.000 s): not on a frame boundary, no key frame follows\n"
     "FAIL split point 3 at packet 151 (2.000 s): not on a frame boundary, no key frame follows\n"
     "FAIL split point 4 at packet 226 (3.000 s): not on a frame boundary, no key frame follows\n"
     "4 split points, 4 failed\n",
     1},
    {"LateKeyFrameFails", [] { return MakeStream(Shape(100, 75)); },
     "ok   split point 1 at packet 0 (0.000 s): key frame within 2 seconds (after 0.100 s)\n"
     "FAIL split point 2 at packet 75 (1.000 s): no key frame within 2 seconds (after 2.100 s)\n"
     "ok   split point 3 at packet 150 (2.000 s): key frame within 2 seconds (after 1.100 s)\n"
     "ok   split point 4 at packet 225 (3.000 s): key frame within 2 seconds (after 0.100 s)\n"
     "4 split points, 1 failed\n",
     1},
    // PTS 1.9 s before the PCR: a multiplex running behind. 2.1 s: late.
    {"KeyFrameSomewhatBehindItsPcrPasses",
     [] { return MakePacket(FrameStart(900000 - 171000, 900000, true)); },
     "ok   split point 1 at packet 0 (0.000 s): key frame within 2 seconds (after -1.900 s)\n"
     "1 split points, 0 failed\n",
     0},
    {"KeyFrameFarBehindItsPcrIsLate",
     [] { return MakePacket(FrameStart(900000 - 189000, 900000, true)); },
     "FAIL split point 1 at packet 0 (0.000 s): key frame late by 2.100 s (more than 2 seconds before its PCR)\n"
     "1 split points, 1 failed\n",
     1},
    {"EmptyFileHasNoSplitPoint", [] { return std::string(); },
     "FAIL no split point: no packet carries a PCR\n", 1},
    // Packet 80 is torn: 188 bytes are skipped. The packet numbers after
    // the gap count the packets read.
    {"LostSyncIsRegainedAndReportedInPlace",
     [] {
       std::string stream = MakeStream(Shape(75));
       stream[80 * kPacketSize] = 0;
       return stream;
     },
     std::string(kTwoGoodPoints) +
         "FAIL packet 80 has no sync byte (byte 15040); skipped 188 bytes, packets of 188 bytes go on at byte 15228\n"
         "ok   split point 3 at packet 149 (2.000 s): key frame within 2 seconds (after 0.100 s)\n"
         "3 split points, 0 failed\n",
     1},
    // 100 bytes of a torn write, holding a lone sync byte, between packets
    // 99 and 100.
    {"GarbageInTheMiddleIsSkippedToTheNextPacket",
     [] {
       const std::string stream = MakeStream(Shape(75));
       std::string garbage(100, '\0');
       for (size_t i = 0; i < garbage.size(); ++i) garbage[i] = static_cast<char>(i);
       garbage[50] = '\x47';
       return stream.substr(0, 100 * kPacketSize) + garbage + stream.substr(100 * kPacketSize);
     },
     std::string(kTwoGoodPoints) +
         "FAIL packet 100 has no sync byte (byte 18800); skipped 100 bytes, packets of 188 bytes go on at byte 18900\n"
         "ok   split point 3 at packet 150 (2.000 s): key frame within 2 seconds (after 0.100 s)\n"
         "3 split points, 0 failed\n",
     1},
    {"TruncatedLastPacketFails",
     [] {
       const std::string stream = MakeStream(StreamShape());
       return stream.substr(0, stream.size() - 100);
     },
     std::string(kTwoGoodPoints) + "FAIL 88 bytes after the last whole packet\n"
                                   "2 split points, 0 failed\n",
     1},
    {"PacketsOf192BytesAreJudgedAlike",
     [] { return ResizePackets(MakeStream(StreamShape()), 192); },
     std::string(kTwoGoodPoints) + "2 split points, 0 failed\n", 0},
    {"PacketsOf204BytesAreJudgedAlike",
     [] { return ResizePackets(MakeStream(StreamShape()), 204); },
     std::string(kTwoGoodPoints) + "2 split points, 0 failed\n", 0},
    // The clock restarts at 1.4 s.
    {"ClockDiscontinuityIsNotedWhereItIsMet",
     [] {
       StreamShape second = Shape(50);
       second.firstPcr = 126000;
       return MakeStream(Shape(50)) + MakeStream(second);
     },
     std::string(kTwoGoodPoints) +
         "note clock discontinuity at packet 150 (2.000 s) on PID 256, not flagged: the PCR goes from 11.000 s to 1.400 s; the clock is taken to run on 1.000 s after the previous PCR\n"
         "ok   split point 3 at packet 150 (2.000 s): key frame within 2 seconds (after 0.100 s)\n"
         "ok   split point 4 at packet 225 (3.000 s): key frame within 2 seconds (after 0.100 s)\n"
         "4 split points, 0 failed\n",
     0},
};

class FilePes : public ::testing::Test {
 protected:
  RunResult Analyze(const std::string& path) {
    std::ostringstream out;
    const int status = AnalyzeStreamFile(path.c_str(), out);
    return {out.str(), "", status};
  }
  RunResult AnalyzeStream(const std::string& content) {
    std::ofstream(folder_ + "/stream.ts", std::ios::binary | std::ios::trunc) << content;
    return Analyze(folder_ + "/stream.ts");
  }

  const ScratchDir scratch_{"file_pes"};
  const std::string folder_ = scratch_.Path();
};

class FilePesReport : public FilePes, public ::testing::WithParamInterface<Case> {};

TEST_P(FilePesReport, IsAsExpected) {
  EXPECT_RUN(AnalyzeStream(GetParam().stream()), GetParam().report, "", GetParam().status);
}

INSTANTIATE_TEST_SUITE_P(Streams, FilePesReport, ::testing::ValuesIn(kCases),
                         [](const ::testing::TestParamInfo<Case>& info) {
                           return info.param.name;
                         });

TEST_F(FilePes, MissingFileFails) {
  EXPECT_RUN(Analyze(folder_ + "/none.ts"),
             "FAIL cannot read " + folder_ + "/none.ts: No such file or directory\n", "", 1);
}

TEST_F(FilePes, FolderFails) {
  // Only the first line: what follows it depends on how the host reads a folder.
  const RunResult r = Analyze(folder_);
  EXPECT_RUN((RunResult{r.out.substr(0, r.out.find('\n') + 1), "", r.status}),
             "FAIL cannot read " + folder_ + ": Is a directory\n", "", 1);
}

// Whatever the lines, garbage must end in a failure and not in a crash.
TEST_F(FilePes, GarbageOfEveryByteValue) {
  std::string garbage;
  for (int i = 0; i < 188 * 40; ++i) garbage += static_cast<char>(i * 7 % 256);
  const RunResult r = AnalyzeStream(garbage);
  EXPECT_NE(std::string::npos, r.out.find("FAIL"));
  EXPECT_EQ(1, r.status);
}

TEST_F(FilePes, LargeStreamIsReadInPieces) {
  // Two minutes, more than one read buffer: the last point and the count.
  const RunResult r = AnalyzeStream(MakeStream(Shape(25 * 120)));
  EXPECT_EQ(0, r.status);
  EXPECT_NE(std::string::npos, r.out.find("\n120 split points, 0 failed\n"));
  EXPECT_NE(std::string::npos, r.out.find("split point 120 at packet 8925 (119.000 s)"));
}

}  // namespace
