// db -a d with the built StreamMgrCli and filePes on a disk whose streams/
// holds recordings made with ffmpeg (sim/testdata/make-test-streams): each
// file passes or shows its failures as sim/testdata/derive-truth derived
// them from ffprobe's packets and its own reading of the PCRs.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

namespace {

// Stream files 1 to 10, in this order.
const char* const kFiles[] = {
    "h264-open-gop.ts", "h264-joined.ts", "two-videos.ts", "two-programs.ts", "h264-no-rai.ts",
    "h264-192.m2ts",    "mpeg2-204.ts",   "h264-torn.ts",  "mpeg2-gop12.ts",  "h265-no-rai.ts",
};
const char kReport[] =
    "File count = 10\n"
    // h264-open-gop.ts
    " Checking 1.ts:  extracting.../mnt/hd/1.ts  checking...PASS\n"
    // h264-joined.ts
    " Checking 2.ts:  extracting.../mnt/hd/2.ts  checking...FAIL split point 23 at packet 1044 (7.200 s): no key frame follows\n"
    "FAIL split point 24 at packet 1104 (7.600 s): no key frame follows\n"
    "24 split points, 2 failed\n"
    // two-videos.ts
    " Checking 3.ts:  extracting.../mnt/hd/3.ts  checking...PASS\n"
    // two-programs.ts
    " Checking 4.ts:  extracting.../mnt/hd/4.ts  checking...FAIL split point 27 at packet 1296 (4.400 s): no key frame follows\n"
    "FAIL split point 28 at packet 1301 (4.400 s): no key frame follows\n"
    "FAIL split point 29 at packet 1408 (4.800 s): no key frame follows\n"
    "FAIL split point 30 at packet 1413 (4.800 s): no key frame follows\n"
    "30 split points, 4 failed\n"
    // h264-no-rai.ts
    " Checking 5.ts:  extracting.../mnt/hd/5.ts  checking...FAIL split point 17 at packet 807 (5.200 s): no key frame follows\n"
    "FAIL split point 18 at packet 864 (5.600 s): no key frame follows\n"
    "18 split points, 2 failed\n"
    // h264-192.m2ts
    " Checking 6.ts:  extracting.../mnt/hd/6.ts  checking...FAIL split point 14 at packet 603 (4.400 s): no key frame follows\n"
    "FAIL split point 15 at packet 651 (4.800 s): no key frame follows\n"
    "15 split points, 2 failed\n"
    // mpeg2-204.ts
    " Checking 7.ts:  extracting.../mnt/hd/7.ts  checking...FAIL split point 21 at packet 1412 (4.800 s): no key frame follows\n"
    "21 split points, 1 failed\n"
    // h264-torn.ts
    " Checking 8.ts:  extracting.../mnt/hd/8.ts  checking...FAIL packet 308 has no sync byte (byte 57904); skipped 1000 bytes, packets of 188 bytes go on at byte 58904\n"
    "ok   split point 8 at packet 353 (2.400 s): key frame within 2 seconds (after 1.380 s)\n"
    "ok   split point 9 at packet 414 (2.800 s): key frame within 2 seconds (after 0.980 s)\n"
    "ok   split point 10 at packet 441 (3.000 s): key frame within 2 seconds (after 0.780 s)\n"
    "ok   split point 11 at packet 485 (3.200 s): key frame within 2 seconds (after 1.580 s)\n"
    "ok   split point 12 at packet 544 (3.600 s): key frame within 2 seconds (after 1.180 s)\n"
    "ok   split point 13 at packet 608 (4.000 s): key frame within 2 seconds (after 0.780 s)\n"
    "FAIL packet 616 has no sync byte (byte 116808); skipped 88 bytes, packets of 188 bytes go on at byte 116896\n"
    "ok   split point 14 at packet 680 (4.400 s): key frame within 2 seconds (after 1.380 s)\n"
    "ok   split point 15 at packet 736 (4.800 s): key frame within 2 seconds (after 0.980 s)\n"
    "ok   split point 16 at packet 764 (5.000 s): key frame within 2 seconds (after 0.780 s)\n"
    "FAIL split point 17 at packet 806 (5.200 s): no key frame follows\n"
    "FAIL split point 18 at packet 863 (5.600 s): no key frame follows\n"
    "18 split points, 2 failed\n"
    // mpeg2-gop12.ts
    " Checking 9.ts:  extracting.../mnt/hd/9.ts  checking...PASS\n"
    // h265-no-rai.ts
    " Checking 10.ts:  extracting.../mnt/hd/10.ts  checking...FAIL split point 2 at packet 79 (0.400 s): no key frame within 2 seconds (after 2.380 s)\n"
    "ok   split point 3 at packet 131 (0.800 s): key frame within 2 seconds (after 1.980 s)\n"
    "ok   split point 4 at packet 182 (1.200 s): key frame within 2 seconds (after 1.580 s)\n"
    "ok   split point 5 at packet 233 (1.600 s): key frame within 2 seconds (after 1.180 s)\n"
    "ok   split point 6 at packet 282 (1.960 s): key frame within 2 seconds (after 0.820 s)\n"
    "FAIL split point 7 at packet 311 (2.000 s): no key frame within 2 seconds (after 2.780 s)\n"
    "FAIL split point 8 at packet 368 (2.400 s): no key frame within 2 seconds (after 2.380 s)\n"
    "ok   split point 9 at packet 421 (2.800 s): key frame within 2 seconds (after 1.980 s)\n"
    "ok   split point 10 at packet 478 (3.200 s): key frame within 2 seconds (after 1.580 s)\n"
    "ok   split point 11 at packet 532 (3.600 s): key frame within 2 seconds (after 1.180 s)\n"
    "ok   split point 12 at packet 591 (4.000 s): key frame within 2 seconds (after 0.780 s)\n"
    "FAIL split point 13 at packet 671 (4.400 s): no key frame follows\n"
    "FAIL split point 14 at packet 730 (4.800 s): no key frame follows\n"
    "FAIL split point 15 at packet 785 (5.200 s): no key frame follows\n"
    "FAIL split point 16 at packet 843 (5.600 s): no key frame follows\n"
    "16 split points, 7 failed\n"
    "\n";

std::string ReadRecording(const std::string& name) {
  std::ifstream in(std::string(DB_SOURCE_DIR) + "/sim/testdata/recordings/" + name,
                   std::ios::binary);
  std::ostringstream content;
  content << in.rdbuf();
  return content.str();
}

class Recordings : public ::testing::TestWithParam<AccessPath> {
 protected:
  void SetUp() override {
    std::string rows;
    int number = 0;
    for (const char* name : kFiles) {
      FileRow row;
      row.number = ++number;
      rows += row.Insert();
      const std::string content = ReadRecording(name);
      ASSERT_FALSE(content.empty()) << name;
      disk_.WriteFile("streams/" + std::to_string(number) + ".ts", content);
    }
    disk_.Exec(rows);
  }
  RecorderDisk disk_;
};

TEST_P(Recordings, EachFileIsJudgedAsTheTruthSays) {
  EXPECT_RUN(RunDb(disk_, GetParam(), {"-a", "d"}), kReport, "", 0);
  for (int n = 1; n <= 10; ++n) {
    EXPECT_FALSE(disk_.Exists(std::to_string(n) + ".ts")) << n;
    EXPECT_TRUE(disk_.Exists("streams/" + std::to_string(n) + ".ts")) << n;
  }
}

INSTANTIATE_TEST_SUITE_P(BothPaths, Recordings, BothAccessPaths(), PathName);

}  // namespace
