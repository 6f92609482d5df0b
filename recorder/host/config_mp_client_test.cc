#include "recorder/config_mp_client.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>

#include "recorder/host/fake_daemon.h"
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
  ipc.GetImpl().endpointDir = daemon.Dir();
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

TEST(ConfigMPClient, EachRequestUsesAConnectionOfItsOwn) {
  FakeDaemon daemon(kConfigMpName, Answering(SettingsAnswer(Settings(1))));
  LinxIpc ipc("db");
  ipc.GetImpl().endpointDir = daemon.Dir();
  ConfigMPClient client(ipc, 5);
  for (int i = 0; i < 3; ++i) {
    VideoRecordingSettings settings;
    ASSERT_EQ(0, client.GetVideoRecordingSettings(settings));
    EXPECT_EQ(1u, settings.reExportHours);
  }
  EXPECT_EQ(3, daemon.Connections());
}

TEST(ConfigMPClient, FailsWhenTheServiceDoesNotRun) {
  char pattern[] = "/tmp/no-config-XXXXXX";
  ASSERT_NE(nullptr, mkdtemp(pattern));
  LinxIpc ipc("db");
  ipc.GetImpl().endpointDir = pattern;
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
