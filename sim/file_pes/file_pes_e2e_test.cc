// The filePes program as db runs it: its command line, output and status.
#include <gtest/gtest.h>

#include <string>

#include "sim/file_pes/file_pes.h"
#include "sim/file_pes/ts_builder.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"
#include "testing/sim_program_fixture.h"

namespace {

TEST(FilePesProgram, ChecksTheFileItIsGiven) {
  RecorderDisk disk;
  StreamShape shape;
  shape.keyFrameEvery = 0;
  disk.WriteFile("7.ts", MakeStream(shape));
  EXPECT_RUN(RunInSandbox(disk, {"filePes", "-a", "/mnt/hd/7.ts"}),
             "FAIL split point 1 at packet 0 (0.000 s): no key frame follows\n"
             "FAIL split point 2 at packet 75 (1.000 s): no key frame follows\n"
             "2 split points, 2 failed\n",
             "", 1);
}

TEST(FilePesProgram, PassingFileExitsZero) {
  RecorderDisk disk;
  disk.WriteFile("1.ts", MakeStream(StreamShape()));
  EXPECT_RUN(
      RunInSandbox(disk, {"filePes", "-a", "/mnt/hd/1.ts"}),
      "ok   split point 1 at packet 0 (0.000 s): key frame within 2 seconds (after 0.100 s)\n"
      "ok   split point 2 at packet 75 (1.000 s): key frame within 2 seconds (after 0.100 s)\n"
      "2 split points, 0 failed\n",
      "", 0);
}

TEST(FilePesProgram, Help) { EXPECT_RUN(RunLine("filePes --help"), kFilePesHelp, "", 0); }

TEST(FilePesProgram, BadCommandLines) {
  for (const char* line :
       {"filePes", "filePes -a", "filePes -x /mnt/hd/1.ts", "filePes -a /mnt/hd/1.ts more"}) {
    EXPECT_RUN(RunLine(line), Refused("filePes: expected -a FILE", kFilePesHelp)) << line;
  }
}

}  // namespace
