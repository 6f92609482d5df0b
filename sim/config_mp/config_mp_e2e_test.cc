// The ConfigMP program, run in the recorder sandbox: its life cycle, and the
// tool reaching it (or not) for every event row it lists. Whether the tool got
// the settings shows in the recorder log, which records each failure.
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

namespace {

SandboxOptions Logged(bool configMp, const std::string& configMpArgs = "") {
  SandboxOptions options;
  options.configMp = configMp;
  options.configMpArgs = configMpArgs;
  options.environment = {"RECORDER_LOG=/mnt/hd/recorder.log", "RECORDER_LOG_LEVEL=2"};
  return options;
}

// How many lines of the recorder log report a failed settings request.
int Failures(const RecorderDisk& disk) {
  if (!disk.Exists("recorder.log")) return 0;
  const std::string ending = ": Error getting video recording settings";
  std::istringstream log(disk.ReadFile("recorder.log"));
  int failures = 0;
  for (std::string line; std::getline(log, line);) {
    if (line.rfind("db: ", 0) == 0 && line.size() > ending.size() &&
        line.compare(line.size() - ending.size(), ending.size(), ending) == 0) {
      ++failures;
    }
  }
  return failures;
}

void TwoEvents(RecorderDisk& disk) { disk.Exec(EventRow{"a"}.Insert() + EventRow{"b"}.Insert()); }

class ConfigMpReached : public testing::TestWithParam<AccessPath> {};

TEST_P(ConfigMpReached, RunningServiceAnswersEveryRow) {
  RecorderDisk disk;
  TwoEvents(disk);
  const RunResult r = RunDb(disk, GetParam(), {"-e"}, Logged(true, "--reexport-hours 24"));
  EXPECT_EQ(0, r.status);
  EXPECT_EQ(0, Failures(disk));
  EXPECT_FALSE(disk.Exists("recorder.log"));
}

TEST_P(ConfigMpReached, SlowServiceStillAnswers) {
  RecorderDisk disk;
  TwoEvents(disk);
  const RunResult r = RunDb(disk, GetParam(), {"-e"}, Logged(true, "--delay-ms 100"));
  EXPECT_EQ(0, r.status);
  EXPECT_EQ(0, Failures(disk));
}

TEST_P(ConfigMpReached, MissingServiceFailsEveryRow) {
  RecorderDisk disk;
  TwoEvents(disk);
  const RunResult r = RunDb(disk, GetParam(), {"-e"}, Logged(false));
  EXPECT_EQ(0, r.status);
  EXPECT_EQ(2, Failures(disk));
}

TEST_P(ConfigMpReached, FailingServiceFailsEveryRow) {
  RecorderDisk disk;
  TwoEvents(disk);
  const RunResult r = RunDb(disk, GetParam(), {"-e"}, Logged(true, "--fail"));
  EXPECT_EQ(0, r.status);
  EXPECT_EQ(2, Failures(disk));
}

TEST_P(ConfigMpReached, GarbledServiceFailsEveryRow) {
  RecorderDisk disk;
  TwoEvents(disk);
  const RunResult r = RunDb(disk, GetParam(), {"-e"}, Logged(true, "--garbage"));
  EXPECT_EQ(0, r.status);
  EXPECT_EQ(2, Failures(disk));
}

TEST_P(ConfigMpReached, SameListingWhetherTheServiceAnswersSlowlyOrAtOnce) {
  RecorderDisk disk;
  TwoEvents(disk);
  const RunResult quick = RunDb(disk, GetParam(), {"-e"}, Logged(true, "--reexport-hours 5"));
  const RunResult slow =
      RunDb(disk, GetParam(), {"-e"}, Logged(true, "--reexport-hours 5 --delay-ms 50"));
  EXPECT_EQ(quick.out, slow.out);
  EXPECT_EQ(quick.err, slow.err);
}

INSTANTIATE_TEST_SUITE_P(BothPaths, ConfigMpReached, BothAccessPaths(), PathName);

TEST(ConfigMpProgram, EndsWithStatusZeroOnSigtermAndRemovesItsEndpoint) {
  RecorderDisk disk;
  const std::string script =
      "ConfigMP --reexport-hours 3 & pid=$!\n"
      "n=0; while [ ! -S /run/linx/ConfigMP ] && [ $n -lt 2000 ]; do sleep 0.01; n=$((n+1)); done\n"
      "pidof ConfigMP > /dev/null && echo named\n"
      "kill -TERM $pid; wait $pid; echo \"status $?\"\n"
      "echo \"left: $(ls -A /run/linx)\"\n";
  const RunResult r = RunInSandbox(disk, {"sh", "-c", script});
  EXPECT_EQ("named\nstatus 0\nleft: \n", r.out);
  EXPECT_EQ("", r.err);
}

TEST(ConfigMpProgram, HelpAndBadOptions) {
  RecorderDisk disk;
  const RunResult help = RunInSandbox(disk, {"ConfigMP", "--help"});
  EXPECT_EQ(0, help.status);
  EXPECT_EQ(0u, help.out.find("usage: ConfigMP [--reexport-hours N] [--fail]"));
  const RunResult bad = RunInSandbox(disk, {"ConfigMP", "--reexport-hours", "-1"});
  EXPECT_EQ(2, bad.status);
  EXPECT_EQ(0u, bad.err.find("ConfigMP: bad value for --reexport-hours: '-1'\n"));
}

}  // namespace
