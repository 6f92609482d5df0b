// The StreamMgr program itself, run in the recorder sandbox: its endpoint
// appears only when it listens, is gone when it ends, and it ends cleanly on
// SIGTERM and SIGINT.
#include <gtest/gtest.h>

#include <string>

#include "sim/stream_mgr/stream_mgr_options.h"
#include "testing/expected_start_up.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"
#include "testing/sim_program_fixture.h"

namespace {

// Shell lines that start StreamMgr with `args` in the background ($pid) and
// wait up to 20 s for its endpoint.
std::string StartStreamMgr(const std::string& args) {
  return "StreamMgr " + args +
         " & pid=$!\n"
         "n=0; while [ ! -S /run/linx/StreamMgr ] && [ $n -lt 2000 ]; do sleep 0.01; n=$((n+1)); done\n";
}

// A script that starts StreamMgr, runs `then` (which may use $pid), and
// lists what is left in /run/linx.
std::string Lifecycle(const std::string& args, const std::string& then) {
  return StartStreamMgr(args) + then + "\necho \"left: $(ls -A /run/linx)\"\n";
}

TEST(StreamMgrProgram, EndsWithStatusZeroOnSigtermAndRemovesItsEndpoint) {
  EXPECT_RUN(RunScript(Lifecycle("", "kill -TERM $pid; wait $pid; echo \"status $?\"")),
             "status 0\nleft: \n", "", 0);
}

TEST(StreamMgrProgram, EndsWithStatusZeroOnSigintAndRemovesItsEndpoint) {
  EXPECT_RUN(RunScript(Lifecycle("", "kill -INT $pid; wait $pid; echo \"status $?\"")),
             "status 0\nleft: \n", "", 0);
}

TEST(StreamMgrProgram, EndpointIsASocketUnderItsFixedName) {
  EXPECT_RUN(RunScript(Lifecycle("",
                                 "ls -A /run/linx; [ -S /run/linx/StreamMgr ] && echo socket\n"
                                 "pidof StreamMgr > /dev/null && echo named\n"
                                 "kill $pid; wait $pid")),
             "StreamMgr\nsocket\nnamed\nleft: \n", "", 0);
}

TEST(StreamMgrProgram, EndsAbruptlyWhenTheRequestAfterTheLastAllowedArrives) {
  RecorderDisk disk;
  disk.Exec(EventRow{"a"}.Insert());
  EXPECT_RUN(RunInSandbox(disk, {"sh", "-c",
                                 Lifecycle("--die-after 1 --log /mnt/hd/requests.log",
                                           "db -t; wait $pid; echo \"status $?\"")}),
             std::string(kTablesHeading) +
                 "events             1\n"
                 "streamfiles        0\n"
                 "status             0\n"
                 "\n"
                 "status 3\n"
                 "left: \n",
             "", 0);
  EXPECT_EQ(
      "count\tselect count(*) from events\n"
      "count\tselect count(*) from streamfiles\n",
      disk.ReadFile("requests.log"));
}

TEST(StreamMgrProgram, WithoutIpcRunsUnderItsNameWithNoEndpoint) {
  const std::string script =
      "StreamMgr --no-ipc & pid=$!\n"
      "n=0; until pidof StreamMgr > /dev/null || [ $n -ge 2000 ]; do sleep 0.01; n=$((n+1)); done\n"
      "sleep 0.2; echo \"endpoints: $(ls -A /run/linx)\"\n"
      "kill -TERM $pid; wait $pid; echo \"status $?\"\n";
  EXPECT_RUN(RunScript(script), "endpoints: \nstatus 0\n", "", 0);
}

TEST(StreamMgrProgram, ReplacesAStaleEndpointFile) {
  const std::string script =
      "touch /run/linx/StreamMgr\n" + StartStreamMgr("") +
      "db -t > /dev/null; echo \"db $?\"; kill $pid; wait $pid; echo \"status $?\"\n";
  EXPECT_RUN(RunScript(script), "db 0\nstatus 0\n", "", 0);
}

TEST(StreamMgrProgram, CreatesTheEndpointFolderWhenMissing) {
  EXPECT_RUN(RunScript("rmdir /run/linx\n" + StartStreamMgr("") +
                       "[ -S /run/linx/StreamMgr ] && echo up; kill $pid; wait $pid\n"),
             "up\n", "", 0);
}

// The options themselves are in StreamMgrOptions.HelpDocumentsEveryOption.
TEST(StreamMgrProgram, HelpDescribesTheTestOptions) {
  ASSERT_EQ(0u, std::string(kStreamMgrHelp).find("usage: StreamMgr [--refuse-delete REID]..."));
  EXPECT_RUN(RunLine("StreamMgr --help"), kStreamMgrHelp, "", 0);
}

TEST(StreamMgrProgram, BadOptionIsRefusedWithStatusTwo) {
  EXPECT_RUN(RunLine("StreamMgr --live-size 12"),
             Refused("StreamMgr: bad value for --live-size: '12'", kStreamMgrHelp));
}

TEST(StreamMgrProgram, SandboxRefusesToStartABrokenDaemon) {
  RecorderDisk disk;
  SandboxOptions options;
  options.streamMgr = true;
  options.streamMgrArgs = "--bogus";
  EXPECT_RUN(RunDb(disk, {"-t"}, options), "",
             "recorder-sandbox: StreamMgr ended before it was ready\n", 125);
}

}  // namespace
