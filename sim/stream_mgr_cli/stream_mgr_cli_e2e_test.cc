// The StreamMgrCli program as db runs it: its command line, output and status.
#include <gtest/gtest.h>

#include <string>

#include "sim/stream_mgr_cli/stream_mgr_cli.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"
#include "testing/sim_program_fixture.h"

namespace {

TEST(StreamMgrCliProgram, ExtractsIntoTheDiskRoot) {
  RecorderDisk disk;
  disk.WriteFile("streams/3.ts", "contents");
  EXPECT_RUN(RunInSandbox(disk, {"StreamMgrCli", "-x", "3"}), "copied: /mnt/hd/3.ts\n", "", 0);
  EXPECT_EQ("contents", disk.ReadFile("3.ts"));
}

TEST(StreamMgrCliProgram, StreamFileWithoutContents) {
  RecorderDisk disk;
  EXPECT_RUN(
      RunInSandbox(disk, {"StreamMgrCli", "-x", "3"}), "",
      "StreamMgrCli: cannot extract stream file 3: /mnt/hd/streams/3.ts: No such file or directory\n",
      1);
  EXPECT_FALSE(disk.Exists("3.ts"));
}

TEST(StreamMgrCliProgram, Help) {
  EXPECT_RUN(RunLine("StreamMgrCli --help"), kStreamMgrCliHelp, "", 0);
}

TEST(StreamMgrCliProgram, BadCommandLines) {
  for (const char* line :
       {"StreamMgrCli", "StreamMgrCli -x", "StreamMgrCli -a 1", "StreamMgrCli -x 1 2"}) {
    EXPECT_RUN(RunLine(line), Refused("StreamMgrCli: expected -x N", kStreamMgrCliHelp)) << line;
  }
}

}  // namespace
