// db -a d with the built StreamMgrCli and filePes on stream files of known
// shape: what a technician sees on a workstation.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "analysis/analysis_e2e_fixture.h"
#include "analysis/expected_split_report.h"
#include "sim/file_pes/ts_builder.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

namespace {

using namespace analysis_e2e;

// Writes the sample disk of tools/make-sample-disk into `disk`.
void MakeSampleDisk(const RecorderDisk& disk) {
  const std::string command =
      std::string(DB_SOURCE_DIR) + "/tools/make-sample-disk '" + disk.Path() + "' > /dev/null";
  ASSERT_EQ(0, std::system(command.c_str()));
}

class DiskAnalysisTools : public BothPaths {
 protected:
  // Stream files 1 and 3 are sound; file 2 has its key frames 4 seconds apart.
  void SetUp() override {
    disk_.Exec(FileRows(1, 3));
    StreamShape sound;
    disk_.WriteFile("streams/1.ts", MakeStream(sound));
    disk_.WriteFile("streams/3.ts", MakeStream(sound));
    StreamShape sparse;
    sparse.frames = 125;
    sparse.keyFrameEvery = 100;
    disk_.WriteFile("streams/2.ts", MakeStream(sparse));
  }
  RecorderDisk disk_;
};

// What -a d shows for files 1 to 3.
const char kFilesOneToThree[] =
    " Checking 1.ts:  extracting.../mnt/hd/1.ts  checking...PASS\n"
    " Checking 2.ts:  extracting.../mnt/hd/2.ts  checking...FAIL split point 2 at packet 75 (1.000 s): no key frame within 2 seconds (after 3.100 s)\n"
    "FAIL split point 3 at packet 150 (2.000 s): no key frame within 2 seconds (after 2.100 s)\n"
    "ok   split point 4 at packet 225 (3.000 s): key frame within 2 seconds (after 1.100 s)\n"
    "ok   split point 5 at packet 300 (4.000 s): key frame within 2 seconds (after 0.100 s)\n"
    "5 split points, 2 failed\n"
    " Checking 3.ts:  extracting.../mnt/hd/3.ts  checking...PASS\n";

TEST_P(DiskAnalysisTools, SoundFilesPassAndTheSparseOneShowsItsFailures) {
  EXPECT_RUN(RunDb(disk_, GetParam(), {"-a", "d"}),
             std::string("File count = 3\n") + kFilesOneToThree + "\n", "", 0);
  for (const char* name : {"1.ts", "2.ts", "3.ts"}) EXPECT_FALSE(disk_.Exists(name)) << name;
  EXPECT_TRUE(disk_.Exists("streams/2.ts"));
}

TEST_P(DiskAnalysisTools, FileWithoutContentsSilencesTheRest) {
  disk_.Exec(FileRows(4, 5));
  disk_.WriteFile("streams/5.ts", MakeStream(StreamShape()));
  EXPECT_RUN(
      RunDb(disk_, GetParam(), {"-a", "d"}),
      std::string("File count = 5\n") + kFilesOneToThree + " Checking 4.ts:  extracting...",
      "StreamMgrCli: cannot extract stream file 4: /mnt/hd/streams/4.ts: No such file or directory\n",
      0);
  // File 5 is still extracted, analysed and removed.
  EXPECT_FALSE(disk_.Exists("5.ts"));
}

// The sample disk of tools/make-sample-disk, as the demo shows it.
class SampleDisk : public BothPaths {
 protected:
  void SetUp() override { MakeSampleDisk(disk_); }
  RecorderDisk disk_{RecorderDisk::Store::kNone};
};

TEST_P(SampleDisk, StreamFilesFourAndSevenFail) {
  EXPECT_RUN(
      RunDb(disk_, GetParam(), {"-a", "d"}),
      "File count = 8\n"
      " Checking 1.ts:  extracting.../mnt/hd/1.ts  checking...PASS\n"
      " Checking 2.ts:  extracting.../mnt/hd/2.ts  checking...PASS\n"
      " Checking 3.ts:  extracting.../mnt/hd/3.ts  checking...PASS\n"
      " Checking 4.ts:  extracting.../mnt/hd/4.ts  checking...FAIL split point 2 at packet 75 (1.000 s): no key frame within 2 seconds (after 3.100 s)\n"
      "FAIL split point 3 at packet 150 (2.000 s): no key frame within 2 seconds (after 2.100 s)\n"
      "ok   split point 4 at packet 225 (3.000 s): key frame within 2 seconds (after 1.100 s)\n"
      "ok   split point 5 at packet 300 (4.000 s): key frame within 2 seconds (after 0.100 s)\n"
      "FAIL split point 6 at packet 375 (5.000 s): no key frame follows\n"
      "6 split points, 3 failed\n"
      " Checking 5.ts:  extracting.../mnt/hd/5.ts  checking...PASS\n"
      " Checking 6.ts:  extracting.../mnt/hd/6.ts  checking...PASS\n"
      " Checking 7.ts:  extracting.../mnt/hd/7.ts  checking...FAIL split point 1 at packet 1 (0.000 s): not on a frame boundary, key frame within 2 seconds (after 1.100 s)\n"
      "FAIL split point 2 at packet 76 (1.000 s): not on a frame boundary, key frame within 2 seconds (after 1.100 s)\n"
      "FAIL split point 3 at packet 151 (2.000 s): not on a frame boundary, key frame within 2 seconds (after 1.100 s)\n"
      "FAIL split point 4 at packet 226 (3.000 s): not on a frame boundary, key frame within 2 seconds (after 1.100 s)\n"
      "FAIL split point 5 at packet 301 (4.000 s): not on a frame boundary, key frame within 2 seconds (after 1.100 s)\n"
      "FAIL split point 6 at packet 376 (5.000 s): not on a frame boundary, no key frame follows\n"
      "6 split points, 6 failed\n"
      " Checking 8.ts:  extracting.../mnt/hd/8.ts  checking...PASS\n"
      "\n",
      "", 0);
  for (int n = 1; n <= 8; ++n) EXPECT_FALSE(disk_.Exists(std::to_string(n) + ".ts")) << n;
}

TEST_P(SampleDisk, SplitRecordingPassesWithTwoGigabytes) {
  EXPECT_RUN(RunDb(disk_, GetParam(), {"-a", "sz2"}),
             split_report::Passing("G-20240102-0304") + "  Verify part sizes <  2 GB...PASS\n\n",
             "", 0);
}

TEST(SampleDiskStreams, ScriptWritesTheStreamsTheBuilderWrites) {
  RecorderDisk disk(RecorderDisk::Store::kNone);
  ASSERT_NO_FATAL_FAILURE(MakeSampleDisk(disk));
  StreamShape sound;
  sound.frames = 150;
  EXPECT_TRUE(disk.ReadFile("streams/1.ts") == MakeStream(sound));
  StreamShape sparse = sound;
  sparse.keyFrameEvery = 100;
  EXPECT_TRUE(disk.ReadFile("streams/4.ts") == MakeStream(sparse));
  StreamShape inside = sound;
  inside.pcrInsideFrame = true;
  EXPECT_TRUE(disk.ReadFile("streams/7.ts") == MakeStream(inside));
}

INSTANTIATE_TEST_SUITE_P(BothPaths, SampleDisk, BothAccessPaths(), PathName);

INSTANTIATE_TEST_SUITE_P(BothPaths, DiskAnalysisTools, BothAccessPaths(), PathName);

}  // namespace
