// The ConfigMP program, run in the recorder sandbox: its life cycle, and the
// tool reaching it (or not) for every event row it lists. Whether the tool got
// the settings shows in the recorder log, which records each failure.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <tuple>

#include "sim/config_mp/config_mp_options.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"
#include "testing/sim_program_fixture.h"

namespace {

// How many lines of the recorder log report a failed settings request.
int Failures(const RecorderDisk& disk) {
  std::istringstream log(disk.Exists("recorder.log") ? disk.ReadFile("recorder.log") : "");
  const std::string tail = ": Error getting video recording settings";
  int failures = 0;
  for (std::string line; std::getline(log, line);) {
    failures += line.rfind("db: ", 0) == 0 && line.size() >= 4 + tail.size() &&
                line.compare(line.size() - tail.size(), tail.size(), tail) == 0;
  }
  return failures;
}

// db -e over two events, with ConfigMP started with `configMpArgs` unless
// it is null, logging to the disk's recorder.log.
RunResult ListTwoEvents(RecorderDisk& disk, AccessPath path, const char* configMpArgs) {
  disk.Exec(EventRow{"a"}.Insert() + EventRow{"b"}.Insert());
  SandboxOptions options;
  options.configMp = configMpArgs != nullptr;
  options.configMpArgs = configMpArgs == nullptr ? "" : configMpArgs;
  options.environment = {"RECORDER_LOG=/mnt/hd/recorder.log", "RECORDER_LOG_LEVEL=2"};
  return RunDb(disk, path, {"-e"}, options);
}

// The listing of the two events: their Hours Till Re-Export column shows NA,
// or Disabled when the service gives 0 hours.
std::string Listing(bool disabled) {
  return std::string(
             "\n"
             "           REID                 State     SplitState   Sec       Start Time     StopTime  ExportTime  Start Tick   Stop Tick  c/r  BG  Files           groupId              Prt  Tot  Stg   GiB   Hours Till Re-Export  Answer1  \n"
             "============================  ==========  ==========  =====  =================  ========  ==========  ==========  ==========  ===  ==  =====  ============================  ===  ===  ===  =====  ====================  ====================  \n") +
         (disabled
              ? "a                             RecordCmpl  NotNeeded     100  01/02/24 03:04:05  03:05:45           0        1000        1200  r r   N      1                                  0    0    N  0.000              Disabled  \n"
                "b                             RecordCmpl  NotNeeded     100  01/02/24 03:04:05  03:05:45           0        1000        1200  r r   N      1                                  0    0    N  0.000              Disabled  \n"
              : "a                             RecordCmpl  NotNeeded     100  01/02/24 03:04:05  03:05:45           0        1000        1200  r r   N      1                                  0    0    N  0.000                    NA  \n"
                "b                             RecordCmpl  NotNeeded     100  01/02/24 03:04:05  03:05:45           0        1000        1200  r r   N      1                                  0    0    N  0.000                    NA  \n");
}

struct Service {
  const char* name;
  const char* configMpArgs;  // null: not running
  bool disabled;             // re-export, in the listing
  int failures;              // one per event row when the settings cannot be had
};

const Service kServices[] = {
    {"RunningServiceAnswersEveryRow", "--reexport-hours 24", false, 0},
    {"SlowServiceStillAnswers", "--delay-ms 100", true, 0},
    {"MissingServiceFailsEveryRow", nullptr, false, 2},
    {"FailingServiceFailsEveryRow", "--fail", false, 2},
    {"GarbledServiceFailsEveryRow", "--garbage", false, 2},
};

class ConfigMpReached : public testing::TestWithParam<std::tuple<Service, AccessPath>> {};

TEST_P(ConfigMpReached, AsTheRecorderLogSays) {
  const auto& [service, path] = GetParam();
  RecorderDisk disk;
  EXPECT_RUN(ListTwoEvents(disk, path, service.configMpArgs), Listing(service.disabled), "", 0);
  EXPECT_EQ(service.failures, Failures(disk));
  EXPECT_EQ(service.failures != 0, disk.Exists("recorder.log"));
}

INSTANTIATE_TEST_SUITE_P(BothPaths, ConfigMpReached,
                         testing::Combine(testing::ValuesIn(kServices), BothAccessPaths()),
                         [](const testing::TestParamInfo<std::tuple<Service, AccessPath>>& info) {
                           return std::string(std::get<0>(info.param).name) + "_" +
                                  AccessPathName(std::get<1>(info.param));
                         });

class ConfigMpTimed : public testing::TestWithParam<AccessPath> {};

TEST_P(ConfigMpTimed, SameListingWhetherTheServiceAnswersSlowlyOrAtOnce) {
  RecorderDisk quick, slow;
  EXPECT_RUN(ListTwoEvents(slow, GetParam(), "--reexport-hours 5 --delay-ms 50"),
             ListTwoEvents(quick, GetParam(), "--reexport-hours 5"));
}

INSTANTIATE_TEST_SUITE_P(BothPaths, ConfigMpTimed, BothAccessPaths(), PathName);

TEST(ConfigMpProgram, EndsWithStatusZeroOnSigtermAndRemovesItsEndpoint) {
  const std::string script =
      "ConfigMP --reexport-hours 3 & pid=$!\n"
      "n=0; while [ ! -S /run/linx/ConfigMP ] && [ $n -lt 2000 ]; do sleep 0.01; n=$((n+1)); done\n"
      "pidof ConfigMP > /dev/null && echo named\n"
      "kill -TERM $pid; wait $pid; echo \"status $?\"\n"
      "echo \"left: $(ls -A /run/linx)\"\n";
  EXPECT_RUN(RunScript(script), "named\nstatus 0\nleft: \n", "", 0);
}

TEST(ConfigMpProgram, HelpAndBadOptions) {
  EXPECT_RUN(RunLine("ConfigMP --help"), kConfigMpHelp, "", 0);
  EXPECT_RUN(RunLine("ConfigMP --reexport-hours -1"),
             Refused("ConfigMP: bad value for --reexport-hours: '-1'", kConfigMpHelp));
}

}  // namespace
