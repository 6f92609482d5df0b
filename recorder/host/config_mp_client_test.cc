#include "recorder/config_mp_client.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <chrono>

#include "recorder/host/fake_daemon.h"
#include "recorder/host/ipc_channel.h"
#include "recorder/host/ipc_codec.h"
#include "recorder/host/linx_ipc_impl.h"

namespace HostIpc {
namespace {

using FD = FakeDaemon;

VideoRecordingSettings Settings(uint32_t hours) {
  VideoRecordingSettings settings;
  settings.preEventSeconds = 30;
  settings.postEventSeconds = 60;
  settings.reExportHours = hours;
  return settings;
}

FD::Script Answering(const std::string& body) {
  return [body](int fd, const std::string&) {
    FD::Frame(fd, body);
    return FD::Then::kNext;
  };
}

// Asks the fake for the settings through an endpoint that was never
// initialised: the configuration service is reached all the same.
int Ask(const FakeDaemon& daemon, VideoRecordingSettings& settings, int timeoutSeconds = 5) {
  LinxIpc ipc("db");
  HostIpc::EndpointOf(ipc).endpointDir = daemon.Dir();
  ConfigMPClient client(ipc, timeoutSeconds);
  return client.GetVideoRecordingSettings(settings);
}

TEST(ConfigMPClient, ReadsTheSettingsWithoutAnInitialisedEndpoint) {
  FakeDaemon daemon(kConfigMpName, Answering(SettingsAnswer(Settings(4294967295u))));
  VideoRecordingSettings settings;
  ASSERT_EQ(0, Ask(daemon, settings));
  EXPECT_EQ(30u, settings.preEventSeconds);
  EXPECT_EQ(60u, settings.postEventSeconds);
  EXPECT_EQ(4294967295u, settings.reExportHours);
  ASSERT_EQ(1u, daemon.Requests().size());
  EXPECT_EQ(SettingsRequest(), daemon.Requests()[0]);
}

// Asks the fake `times` times through one endpoint, with a client of its own
// for every request as the event table builds one per row, and expects `hours`.
void ExpectHours(const FakeDaemon& daemon, uint32_t hours, int times) {
  LinxIpc ipc("db");
  HostIpc::EndpointOf(ipc).endpointDir = daemon.Dir();
  for (int i = 0; i < times; ++i) {
    ConfigMPClient client(ipc, 5);
    VideoRecordingSettings settings;
    ASSERT_EQ(0, client.GetVideoRecordingSettings(settings)) << i;
    EXPECT_EQ(hours, settings.reExportHours) << i;
  }
}

TEST(ConfigMPClient, RequestsShareTheConnectionTheEndpointKeeps) {
  FakeDaemon daemon(kConfigMpName, Answering(SettingsAnswer(Settings(1))));
  ExpectHours(daemon, 1, 3);
  EXPECT_EQ(3u, daemon.Requests().size());
  EXPECT_EQ(1, daemon.Connections());
}

TEST(ConfigMPClient, ServiceThatHungUpIsReachedAfresh) {
  FakeDaemon daemon(kConfigMpName, [](int fd, const std::string&) {
    FD::Frame(fd, SettingsAnswer(Settings(2)));
    return FD::Then::kClose;
  });
  ExpectHours(daemon, 2, 3);
  EXPECT_EQ(3, daemon.Connections());
}

// Anything the service sent beyond its answer is never taken for the answer
// to a later request.
TEST(ConfigMPClient, ServiceSayingMoreThanItWasAskedIsNotBelievedLater) {
  FakeDaemon daemon(kConfigMpName, [](int fd, const std::string&) {
    // In one write, so the second is there by the time the first is read.
    const std::string first = SettingsAnswer(Settings(3));
    const std::string second = SettingsAnswer(Settings(99));
    FD::Raw(fd, FrameHeader(first.size()) + first + FrameHeader(second.size()) + second);
    return FD::Then::kNext;
  });
  ExpectHours(daemon, 3, 2);
  EXPECT_EQ(2, daemon.Connections());
}

TEST(ConfigMPClient, ConnectionThatTimedOutIsNotUsedAgain) {
  std::atomic<int> requests{0};
  FakeDaemon daemon(kConfigMpName, [&requests](int fd, const std::string&) {
    if (++requests == 1) return FD::Then::kHold;
    FD::Frame(fd, SettingsAnswer(Settings(4)));
    return FD::Then::kNext;
  });
  LinxIpc ipc("db");
  HostIpc::EndpointOf(ipc).endpointDir = daemon.Dir();
  ConfigMPClient client(ipc, 1);
  VideoRecordingSettings settings;
  EXPECT_NE(0, client.GetVideoRecordingSettings(settings));
  ASSERT_EQ(0, client.GetVideoRecordingSettings(settings));
  EXPECT_EQ(4u, settings.reExportHours);
  EXPECT_EQ(2, daemon.Connections());
}

TEST(ConfigMPClient, ServiceStartedAfterAFailedRequestIsReached) {
  char pattern[] = "/tmp/late-config-XXXXXX";
  ASSERT_NE(nullptr, mkdtemp(pattern));
  LinxIpc ipc("db");
  HostIpc::EndpointOf(ipc).endpointDir = pattern;
  ConfigMPClient client(ipc, 5);
  VideoRecordingSettings settings;
  EXPECT_NE(0, client.GetVideoRecordingSettings(settings));
  rmdir(pattern);
  FakeDaemon daemon(kConfigMpName, Answering(SettingsAnswer(Settings(6))));
  HostIpc::EndpointOf(ipc).endpointDir = daemon.Dir();
  ASSERT_EQ(0, client.GetVideoRecordingSettings(settings));
  EXPECT_EQ(6u, settings.reExportHours);
}

TEST(ConfigMPClient, FailsWhenTheServiceDoesNotRun) {
  char pattern[] = "/tmp/no-config-XXXXXX";
  ASSERT_NE(nullptr, mkdtemp(pattern));
  LinxIpc ipc("db");
  HostIpc::EndpointOf(ipc).endpointDir = pattern;
  ConfigMPClient client(ipc, 5);
  VideoRecordingSettings settings;
  settings.reExportHours = 7;
  EXPECT_NE(0, client.GetVideoRecordingSettings(settings));
  EXPECT_EQ(7u, settings.reExportHours);
  rmdir(pattern);
}

TEST(ConfigMPClient, DoesNotTalkToStreamMgr) {
  // A StreamMgr endpoint in the folder is not the configuration service.
  FakeDaemon daemon(kStreamMgrName, Answering(SettingsAnswer(Settings(5))));
  VideoRecordingSettings settings;
  EXPECT_NE(0, Ask(daemon, settings));
  EXPECT_EQ(0, daemon.Connections());
}

TEST(ConfigMPClient, FailedAnswerIsAnError) {
  FakeDaemon daemon(kConfigMpName, Answering(FailedAnswer(kSettings)));
  VideoRecordingSettings settings;
  settings.reExportHours = 7;
  EXPECT_NE(0, Ask(daemon, settings));
  EXPECT_EQ(7u, settings.reExportHours);
}

TEST(ConfigMPClient, GarbageIsAnError) {
  for (const std::string& body : {MalformedAnswer(kSettings), std::string("nonsense"),
                                  SettingsAnswer(Settings(3)) + "x", CountAnswer(3)}) {
    FakeDaemon daemon(kConfigMpName, Answering(body));
    VideoRecordingSettings settings;
    settings.reExportHours = 7;
    EXPECT_NE(0, Ask(daemon, settings));
    EXPECT_EQ(7u, settings.reExportHours);
  }
}

TEST(ConfigMPClient, ServiceHangingUpIsAnError) {
  FakeDaemon daemon(kConfigMpName, [](int, const std::string&) { return FD::Then::kClose; });
  VideoRecordingSettings settings;
  EXPECT_NE(0, Ask(daemon, settings));
}

TEST(ConfigMPClient, SilentServiceTimesOutInTheGivenSeconds) {
  FakeDaemon daemon(kConfigMpName, [](int, const std::string&) { return FD::Then::kHold; });
  VideoRecordingSettings settings;
  const auto start = std::chrono::steady_clock::now();
  EXPECT_NE(0, Ask(daemon, settings, 1));
  const double waited =
      std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
  EXPECT_GE(waited, 995);
  EXPECT_LT(waited, 3000);
}

}  // namespace
}  // namespace HostIpc
