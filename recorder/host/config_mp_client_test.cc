#include "recorder/config_mp_client.h"

#include <gtest/gtest.h>

#include <atomic>

#include "recorder/host/ipc_client_fixture.h"
#include "testing/scratch_dir.h"
#include "testing/sim_named_cases.h"

namespace HostIpc {
namespace {

std::string Settings(uint32_t hours) { return SettingsAnswer({30, 60, hours}); }

// The settings `client` reads, as "pre post re-export", or "refused" when the
// request fails, which must leave the settings alone.
std::string Read(ConfigMPClient& client) {
  VideoRecordingSettings s{0, 0, 7};
  if (client.GetVideoRecordingSettings(s) != 0) return s.reExportHours == 7 ? "refused" : "changed";
  return std::to_string(s.preEventSeconds) + " " + std::to_string(s.postEventSeconds) + " " +
         std::to_string(s.reExportHours);
}

// What `times` requests to the service in `dir` read, through one endpoint
// that was never initialised, with a client of its own for every request as
// the event table builds one per row: the configuration service is reached
// all the same.
std::string Asked(const std::string& dir, int times, int timeoutSeconds = 5) {
  AimedIpc aimed(dir);
  std::string read;
  for (int i = 0; i < times; ++i) {
    ConfigMPClient client(aimed.ipc, timeoutSeconds);
    read += (i == 0 ? "" : ", ") + Read(client);
  }
  return read;
}

// Answers `body`, then hangs up.
FD::Script Closing(const std::string& body) {
  return [body](int fd, const std::string&) {
    FD::Frame(fd, body);
    return FD::Then::kClose;
  };
}

// Answers with two frames in one write, so the second is there by the time
// the first is read: anything beyond the answer is never taken for the
// answer to a later request.
FD::Script SayingMore(const std::string& first, const std::string& second) {
  return [=](int fd, const std::string&) {
    FD::Raw(fd, FrameHeader(first.size()) + first + FrameHeader(second.size()) + second);
    return FD::Then::kNext;
  };
}

// A service, and what a few requests to it read: the settings each, then the
// requests and connections the service saw.
struct Conversation {
  const char* name;
  const char* service;  // the only endpoint in the folder
  FD::Script script;
  int times;
  const char* read;
};

const Conversation kConversations[] = {
    {"ReadsTheSettingsWithoutAnInitialisedEndpoint", kConfigMpName,
     FD::Answering(Settings(4294967295u)), 1, "30 60 4294967295; requests 1, connections 1"},
    {"RequestsShareTheConnectionTheEndpointKeeps", kConfigMpName, FD::Answering(Settings(1)), 3,
     "30 60 1, 30 60 1, 30 60 1; requests 3, connections 1"},
    {"ServiceThatHungUpIsReachedAfresh", kConfigMpName, Closing(Settings(2)), 3,
     "30 60 2, 30 60 2, 30 60 2; requests 3, connections 3"},
    {"ServiceSayingMoreThanItWasAskedIsNotBelievedLater", kConfigMpName,
     SayingMore(Settings(3), Settings(99)), 2, "30 60 3, 30 60 3; requests 2, connections 2"},
    // A StreamMgr endpoint in the folder is not the configuration service.
    {"DoesNotTalkToStreamMgr", kStreamMgrName, FD::Answering(Settings(5)), 1,
     "refused; requests 0, connections 0"},
    {"FailedAnswerIsAnError", kConfigMpName, FD::Answering(FailedAnswer(kSettings)), 1,
     "refused; requests 1, connections 1"},
    {"MalformedAnswerIsAnError", kConfigMpName, FD::Answering(MalformedAnswer(kSettings)), 1,
     "refused; requests 1, connections 1"},
    {"NonsenseIsAnError", kConfigMpName, FD::Answering("nonsense"), 1,
     "refused; requests 1, connections 1"},
    {"TrailingBytesAreAnError", kConfigMpName, FD::Answering(Settings(3) + "x"), 1,
     "refused; requests 1, connections 1"},
    {"AnswerToAnotherRequestIsAnError", kConfigMpName, FD::Answering(CountAnswer(3)), 1,
     "refused; requests 1, connections 1"},
    {"ServiceHangingUpIsAnError", kConfigMpName, FD::HangingUp(), 1,
     "refused; requests 1, connections 1"},
};

class Conversing : public testing::TestWithParam<Conversation> {};

TEST_P(Conversing, ReadsWhatTheServiceSays) {
  const Conversation& c = GetParam();
  FakeDaemon daemon(c.service, c.script);
  const std::string read = Asked(daemon.Dir(), c.times);
  const std::vector<std::string> requests = daemon.Requests();
  EXPECT_EQ(std::vector<std::string>(requests.size(), SettingsRequest()), requests);
  EXPECT_EQ(c.read, read + "; requests " + std::to_string(requests.size()) + ", connections " +
                        std::to_string(daemon.Connections()));
}

INSTANTIATE_NAMED_CASES(ConfigMPClient, Conversing, kConversations);

TEST(ConfigMPClient, ConnectionThatTimedOutIsNotUsedAgain) {
  std::atomic<int> requests{0};
  FakeDaemon daemon(kConfigMpName, [&requests](int fd, const std::string&) {
    if (++requests == 1) return FD::Then::kHold;
    FD::Frame(fd, Settings(4));
    return FD::Then::kNext;
  });
  AimedIpc aimed(daemon.Dir());
  ConfigMPClient client(aimed.ipc, 1);
  EXPECT_EQ("refused", Read(client));
  EXPECT_EQ("30 60 4", Read(client));
  EXPECT_EQ(2, daemon.Connections());
}

TEST(ConfigMPClient, ServiceStartedAfterAFailedRequestIsReached) {
  ScratchDir empty("late-config");
  AimedIpc aimed(empty.Path());
  ConfigMPClient client(aimed.ipc, 5);
  EXPECT_EQ("refused", Read(client));
  FakeDaemon daemon(kConfigMpName, FD::Answering(Settings(6)));
  EndpointOf(aimed.ipc).endpointDir = daemon.Dir();
  EXPECT_EQ("30 60 6", Read(client));
}

TEST(ConfigMPClient, FailsWhenTheServiceDoesNotRun) {
  EXPECT_EQ("refused", Asked(ScratchDir("no-config").Path(), 1));
}

TEST(ConfigMPClient, SilentServiceTimesOutInTheGivenSeconds) {
  FakeDaemon daemon(kConfigMpName, FD::Holding());
  const Clock::time_point start = Clock::now();
  EXPECT_EQ("refused", Asked(daemon.Dir(), 1, 1));
  const double waited = MillisecondsSince(start);
  EXPECT_GE(waited, 995);
  EXPECT_LT(waited, 3000);
}

}  // namespace
}  // namespace HostIpc
