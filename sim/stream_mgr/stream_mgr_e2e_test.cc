// The StreamMgr program itself, run in the recorder sandbox: its endpoint
// appears only when it listens, is gone when it ends, and it ends cleanly on
// SIGTERM and SIGINT.
#include <gtest/gtest.h>

#include <string>

#include "testing/expected_start_up.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

namespace {

// Shell lines that start StreamMgr with `args` in the background ($pid) and
// wait up to 20 s for its endpoint.
std::string StartStreamMgr(const std::string& args) {
  return "StreamMgr " + args +
         " & pid=$!\n"
         "n=0; while [ ! -S /run/linx/StreamMgr ] && [ $n -lt 2000 ]; do sleep 0.01; n=$((n+1)); done\n";
}

// Starts StreamMgr, runs `then` (which may use $pid), and lists what is left
// in /run/linx.
RunResult Lifecycle(const RecorderDisk& disk, const std::string& args, const std::string& then) {
  return RunInSandbox(
      disk, {"sh", "-c", StartStreamMgr(args) + then + "\necho \"left: $(ls -A /run/linx)\"\n"});
}

TEST(StreamMgrProgram, EndsWithStatusZeroOnSigtermAndRemovesItsEndpoint) {
  RecorderDisk disk;
  const RunResult r = Lifecycle(disk, "", "kill -TERM $pid; wait $pid; echo \"status $?\"");
  EXPECT_RUN(r, "status 0\nleft: \n", "", 0);
}

TEST(StreamMgrProgram, EndsWithStatusZeroOnSigintAndRemovesItsEndpoint) {
  RecorderDisk disk;
  const RunResult r = Lifecycle(disk, "", "kill -INT $pid; wait $pid; echo \"status $?\"");
  EXPECT_EQ("status 0\nleft: \n", r.out);
  EXPECT_EQ(0, r.status);
}

TEST(StreamMgrProgram, EndpointIsASocketUnderItsFixedName) {
  RecorderDisk disk;
  const RunResult r = Lifecycle(disk, "",
                                "ls -A /run/linx; [ -S /run/linx/StreamMgr ] && echo socket\n"
                                "pidof StreamMgr > /dev/null && echo named\n"
                                "kill $pid; wait $pid");
  EXPECT_EQ("StreamMgr\nsocket\nnamed\nleft: \n", r.out);
}

TEST(StreamMgrProgram, EndsAbruptlyWhenTheRequestAfterTheLastAllowedArrives) {
  RecorderDisk disk;
  disk.Exec(EventRow{"a"}.Insert());
  const RunResult r = Lifecycle(disk, "--die-after 1 --log /mnt/hd/requests.log",
                                "db -t; wait $pid; echo \"status $?\"");
  EXPECT_EQ(std::string(kTablesHeading) +
                "events             1\n"
                "streamfiles        0\n"
                "status             0\n"
                "\n"
                "status 3\n"
                "left: \n",
            r.out);
  EXPECT_EQ("", r.err);
  EXPECT_EQ(
      "count\tselect count(*) from events\n"
      "count\tselect count(*) from streamfiles\n",
      disk.ReadFile("requests.log"));
}

TEST(StreamMgrProgram, WithoutIpcRunsUnderItsNameWithNoEndpoint) {
  RecorderDisk disk;
  const std::string script =
      "StreamMgr --no-ipc & pid=$!\n"
      "n=0; until pidof StreamMgr > /dev/null || [ $n -ge 2000 ]; do sleep 0.01; n=$((n+1)); done\n"
      "sleep 0.2; echo \"endpoints: $(ls -A /run/linx)\"\n"
      "kill -TERM $pid; wait $pid; echo \"status $?\"\n";
  const RunResult r = RunInSandbox(disk, {"sh", "-c", script});
  EXPECT_EQ("endpoints: \nstatus 0\n", r.out);
}

TEST(StreamMgrProgram, ReplacesAStaleEndpointFile) {
  RecorderDisk disk;
  const std::string script =
      "touch /run/linx/StreamMgr\n" + StartStreamMgr("") +
      "db -t > /dev/null; echo \"db $?\"; kill $pid; wait $pid; echo \"status $?\"\n";
  const RunResult r = RunInSandbox(disk, {"sh", "-c", script});
  EXPECT_EQ("db 0\nstatus 0\n", r.out);
}

TEST(StreamMgrProgram, CreatesTheEndpointFolderWhenMissing) {
  RecorderDisk disk;
  const RunResult missing =
      RunInSandbox(disk, {"sh", "-c",
                          "rmdir /run/linx\n" + StartStreamMgr("") +
                              "[ -S /run/linx/StreamMgr ] && echo up; kill $pid; wait $pid\n"});
  EXPECT_EQ("up\n", missing.out);
}

TEST(StreamMgrProgram, HelpDescribesTheTestOptions) {
  RecorderDisk disk;
  const RunResult r = RunInSandbox(disk, {"StreamMgr", "--help"});
  EXPECT_EQ(0, r.status);
  EXPECT_EQ(0u, r.out.find("usage: StreamMgr [--refuse-delete REID]..."));
  for (const char* option : {"--delay-ms N", "--garbage", "--die-after N"}) {
    EXPECT_NE(std::string::npos, r.out.find(option)) << option;
  }
  EXPECT_EQ("", r.err);
}

TEST(StreamMgrProgram, BadOptionIsRefusedWithStatusTwo) {
  RecorderDisk disk;
  const RunResult r = RunInSandbox(disk, {"StreamMgr", "--live-size", "12"});
  EXPECT_EQ(2, r.status);
  EXPECT_EQ("", r.out);
  EXPECT_EQ(0u, r.err.find("StreamMgr: bad value for --live-size: '12'\nusage: StreamMgr"));
}

TEST(StreamMgrProgram, SandboxRefusesToStartABrokenDaemon) {
  RecorderDisk disk;
  SandboxOptions options;
  options.streamMgr = true;
  options.streamMgrArgs = "--bogus";
  const RunResult r = RunDb(disk, {"-t"}, options);
  EXPECT_RUN(r, "", "recorder-sandbox: StreamMgr ended before it was ready\n", 125);
}

}  // namespace
