#include "recorder/config_mp_client.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>

#include "recorder/host/ipc_client_fixture.h"
#include "testing/scratch_dir.h"

namespace HostIpc {
namespace {

std::string Settings(uint32_t hours) { return SettingsAnswer({30, 60, hours}); }

using Answers = std::vector<std::array<uint32_t, 3>>;  // pre, post, re-export

// Asks the service in `dir` for the settings `times` times through one
// endpoint that was never initialised, with a client of its own for every
// request as the event table builds one per row: the configuration service is
// reached all the same. The settings of each request.
Answers Ask(const std::string& dir, int times) {
  AimedIpc aimed(dir);
  Answers answers;
  for (int i = 0; i < times; ++i) {
    ConfigMPClient client(aimed.ipc, 5);
    VideoRecordingSettings s;
    EXPECT_EQ(0, client.GetVideoRecordingSettings(s));
    answers.push_back({s.preEventSeconds, s.postEventSeconds, s.reExportHours});
  }
  return answers;
}

// Expects the request to the service in `dir` to fail and leave the settings alone.
void ExpectRefused(const std::string& dir, int timeoutSeconds = 5) {
  AimedIpc aimed(dir);
  ConfigMPClient client(aimed.ipc, timeoutSeconds);
  VideoRecordingSettings settings{0, 0, 7};
  EXPECT_NE(0, client.GetVideoRecordingSettings(settings));
  EXPECT_EQ(7u, settings.reExportHours);
}

TEST(ConfigMPClient, ReadsTheSettingsWithoutAnInitialisedEndpoint) {
  FakeDaemon daemon(kConfigMpName, FD::Answering(Settings(4294967295u)));
  EXPECT_EQ((Answers{{30, 60, 4294967295u}}), Ask(daemon.Dir(), 1));
  EXPECT_EQ(std::vector<std::string>{SettingsRequest()}, daemon.Requests());
}

TEST(ConfigMPClient, RequestsShareTheConnectionTheEndpointKeeps) {
  FakeDaemon daemon(kConfigMpName, FD::Answering(Settings(1)));
  EXPECT_EQ(Answers(3, {30, 60, 1}), Ask(daemon.Dir(), 3));
  EXPECT_EQ(3u, daemon.Requests().size());
  EXPECT_EQ(1, daemon.Connections());
}

TEST(ConfigMPClient, ServiceThatHungUpIsReachedAfresh) {
  FakeDaemon daemon(kConfigMpName, [](int fd, const std::string&) {
    FD::Frame(fd, Settings(2));
    return FD::Then::kClose;
  });
  EXPECT_EQ(Answers(3, {30, 60, 2}), Ask(daemon.Dir(), 3));
  EXPECT_EQ(3, daemon.Connections());
}

// Anything the service sent beyond its answer is never taken for the answer
// to a later request.
TEST(ConfigMPClient, ServiceSayingMoreThanItWasAskedIsNotBelievedLater) {
  FakeDaemon daemon(kConfigMpName, [](int fd, const std::string&) {
    // In one write, so the second is there by the time the first is read.
    const std::string first = Settings(3), second = Settings(99);
    FD::Raw(fd, FrameHeader(first.size()) + first + FrameHeader(second.size()) + second);
    return FD::Then::kNext;
  });
  EXPECT_EQ(Answers(2, {30, 60, 3}), Ask(daemon.Dir(), 2));
  EXPECT_EQ(2, daemon.Connections());
}

TEST(ConfigMPClient, ConnectionThatTimedOutIsNotUsedAgain) {
  std::atomic<int> requests{0};
  FakeDaemon daemon(kConfigMpName, [&requests](int fd, const std::string&) {
    if (++requests == 1) return FD::Then::kHold;
    FD::Frame(fd, Settings(4));
    return FD::Then::kNext;
  });
  AimedIpc aimed(daemon.Dir());
  ConfigMPClient client(aimed.ipc, 1);
  VideoRecordingSettings settings;
  EXPECT_NE(0, client.GetVideoRecordingSettings(settings));
  ASSERT_EQ(0, client.GetVideoRecordingSettings(settings));
  EXPECT_EQ(4u, settings.reExportHours);
  EXPECT_EQ(2, daemon.Connections());
}

TEST(ConfigMPClient, ServiceStartedAfterAFailedRequestIsReached) {
  ScratchDir empty("late-config");
  AimedIpc aimed(empty.Path());
  ConfigMPClient client(aimed.ipc, 5);
  VideoRecordingSettings settings;
  EXPECT_NE(0, client.GetVideoRecordingSettings(settings));
  FakeDaemon daemon(kConfigMpName, FD::Answering(Settings(6)));
  EndpointOf(aimed.ipc).endpointDir = daemon.Dir();
  ASSERT_EQ(0, client.GetVideoRecordingSettings(settings));
  EXPECT_EQ(6u, settings.reExportHours);
}

TEST(ConfigMPClient, FailsWhenTheServiceDoesNotRun) {
  ExpectRefused(ScratchDir("no-config").Path());
}

TEST(ConfigMPClient, DoesNotTalkToStreamMgr) {
  // A StreamMgr endpoint in the folder is not the configuration service.
  FakeDaemon daemon(kStreamMgrName, FD::Answering(Settings(5)));
  ExpectRefused(daemon.Dir());
  EXPECT_EQ(0, daemon.Connections());
}

TEST(ConfigMPClient, FailedAnswerIsAnError) {
  FakeDaemon daemon(kConfigMpName, FD::Answering(FailedAnswer(kSettings)));
  ExpectRefused(daemon.Dir());
}

TEST(ConfigMPClient, GarbageIsAnError) {
  for (const std::string& body :
       {MalformedAnswer(kSettings), std::string("nonsense"), Settings(3) + "x", CountAnswer(3)}) {
    FakeDaemon daemon(kConfigMpName, FD::Answering(body));
    ExpectRefused(daemon.Dir());
  }
}

TEST(ConfigMPClient, ServiceHangingUpIsAnError) {
  FakeDaemon daemon(kConfigMpName, FD::HangingUp());
  ExpectRefused(daemon.Dir());
}

TEST(ConfigMPClient, SilentServiceTimesOutInTheGivenSeconds) {
  FakeDaemon daemon(kConfigMpName, FD::Holding());
  const Clock::time_point start = Clock::now();
  ExpectRefused(daemon.Dir(), 1);
  const double waited = MillisecondsSince(start);
  EXPECT_GE(waited, 995);
  EXPECT_LT(waited, 3000);
}

}  // namespace
}  // namespace HostIpc
