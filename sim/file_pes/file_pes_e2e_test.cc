// The filePes program as db runs it: its command line, output and status.
#include <gtest/gtest.h>

#include <string>

#include "sim/file_pes/file_pes.h"
#include "sim/file_pes/ts_builder.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

namespace {

TEST(FilePesProgram, ChecksTheFileItIsGiven) {
  RecorderDisk disk;
  StreamShape shape;
  shape.keyFrameEvery = 0;
  disk.WriteFile("7.ts", MakeStream(shape));
  const RunResult r = RunInSandbox(disk, {"filePes", "-a", "/mnt/hd/7.ts"});
  EXPECT_RUN(r,
             "FAIL split point 1 at packet 0 (0.000 s): no key frame follows\n"
             "FAIL split point 2 at packet 75 (1.000 s): no key frame follows\n"
             "2 split points, 2 failed\n",
             "", 1);
}

TEST(FilePesProgram, PassingFileExitsZero) {
  RecorderDisk disk;
  disk.WriteFile("1.ts", MakeStream(StreamShape()));
  const RunResult r = RunInSandbox(disk, {"filePes", "-a", "/mnt/hd/1.ts"});
  EXPECT_EQ(std::string::npos, r.out.find("FAIL"));
  EXPECT_EQ(0, r.status);
}

TEST(FilePesProgram, Help) {
  RecorderDisk disk;
  const RunResult r = RunInSandbox(disk, {"filePes", "--help"});
  EXPECT_RUN(r, kFilePesHelp, "", 0);
}

TEST(FilePesProgram, BadCommandLines) {
  RecorderDisk disk;
  for (const std::vector<std::string>& command : {std::vector<std::string>{"filePes"},
                                                  {"filePes", "-a"},
                                                  {"filePes", "-x", "/mnt/hd/1.ts"},
                                                  {"filePes", "-a", "/mnt/hd/1.ts", "more"}}) {
    const RunResult r = RunInSandbox(disk, command);
    EXPECT_RUN(r, "", std::string("filePes: expected -a FILE\n") + kFilePesHelp, 2);
  }
}

}  // namespace
