#include "recorder/host/ipc_server.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "recorder/host/ipc_client_fixture.h"
#include "recorder/host/served_daemon.h"
#include "testing/scratch_dir.h"
#include "testing/store_folder_listing.h"

namespace HostIpc {
namespace {

// Answers a count request with the number its text holds; "die" and "drop"
// make the handler ask for those actions.
Reply Echo(const std::string& request) {
  WireReader reader(request);
  Kind kind = kEvents;
  std::string text;
  if (!ReadRequestHeader(reader, kind) || !reader.String(text)) return {Reply::Action::kDrop, ""};
  if (text == "die") return {Reply::Action::kDie, ""};
  if (text == "drop") return {Reply::Action::kDrop, ""};
  return {Reply::Action::kAnswer, CountAnswer(static_cast<uint32_t>(std::atoi(text.c_str())))};
}

// The frame of a count request carrying `text`.
std::string Framed(const std::string& text) {
  const std::string request = TextRequest(kCount, text);
  return FrameHeader(request.size()) + request;
}

// An Echo daemon that waits `delayMs` before each answer, and db's client
// aimed at it and initialised.
struct EchoAndClient : Served<ServedDaemon> {
  explicit EchoAndClient(int delayMs = 0) : Served(Echo, delayMs) {}
  // A connection of its own to the daemon, on which `bytes` have been sent.
  int Sent(const std::string& bytes) const {
    const int fd = Connect(daemon.Path());
    EXPECT_GE(fd, 0);
    FakeDaemon::Raw(fd, bytes);
    return fd;
  }
};

// Sends `text`, which the daemon does not answer: the request fails at once.
void ExpectUnansweredAtOnce(LinxIpc& ipc, const std::string& text) {
  const Clock::time_point start = Clock::now();
  EXPECT_EQ(-1, Asked(ipc, text));
  EXPECT_LT(MillisecondsSince(start), 2000);
}

TEST(IpcEndpoint, AppearsAsASocketWithNothingElseBeside) {
  ServedDaemon daemon(kStreamMgrName, Echo);
  EXPECT_EQ("StreamMgr socket", Listing(daemon.Dir()));
}

TEST(IpcEndpoint, ReplacesAStaleFile) {
  ScratchDir folder("endpoint");
  const std::string path = EndpointPath(folder.Path(), kStreamMgrName);
  ASSERT_TRUE(std::ofstream(path).is_open());
  const int fd = CreateEndpoint(path);
  ASSERT_GE(fd, 0);
  const int client = Connect(path);
  EXPECT_GE(client, 0);
  close(client);
  close(fd);
}

TEST(IpcEndpoint, FailsInAMissingFolderAndLeavesNothing) {
  EXPECT_EQ(-1, CreateEndpoint("/tmp/no-such-folder-for-endpoints/StreamMgr"));
  EXPECT_FALSE(std::filesystem::exists("/tmp/no-such-folder-for-endpoints"));
}

TEST(IpcServe, ServesSeveralConnectionsAtOnce) {
  EchoAndClient served;
  LinxIpc second("second");
  served.daemon.Aim(second);
  ASSERT_EQ(0, second.Init());
  for (int i = 0; i < 10; ++i) {
    EXPECT_EQ(i, Asked(served.ipc, std::to_string(i)));
    EXPECT_EQ(100 + i, Asked(second, std::to_string(100 + i)));
  }
}

TEST(IpcServe, AnswersRequestsSentTogetherInOrder) {
  EchoAndClient served;
  const int fd = served.Sent(Framed("1") + Framed("2") + Framed("3"));
  for (uint32_t expected = 1; expected <= 3; ++expected) {
    std::string answer;
    uint32_t count = 0;
    ASSERT_TRUE(ReceiveFrame(fd, answer, DeadlineIn(5000)));
    ASSERT_TRUE(DecodeCountAnswer(answer, count));
    EXPECT_EQ(expected, count);
  }
  close(fd);
}

TEST(IpcServe, ClientLeavingMidRequestIsDroppedWithoutHarm) {
  EchoAndClient served;
  for (size_t cut : {1, 3, 4, 6}) {
    close(served.Sent(Framed("12345").substr(0, cut)));
    EXPECT_EQ(7, Asked(served.ipc, "7"));
  }
  EXPECT_FALSE(served.daemon.Ended());
}

TEST(IpcServe, ClientLeavingBeforeItsAnswerIsDroppedWithoutHarm) {
  EchoAndClient served(100);
  close(served.Sent(Framed("1")));  // the daemon is still waiting its 100 ms
  EXPECT_EQ(8, Asked(served.ipc, "8"));
}

TEST(IpcServe, OversizedRequestDropsOnlyThatConnection) {
  EchoAndClient served;
  const int fd = served.Sent(FrameHeader(static_cast<size_t>(kMaxFrameBytes) + 1));
  std::string answer;
  EXPECT_FALSE(ReceiveFrame(fd, answer, DeadlineIn(5000)));  // hung up, not answered
  close(fd);
  EXPECT_EQ(9, Asked(served.ipc, "9"));
}

TEST(IpcServe, DroppedRequestFailsAndTheNextOneReconnects) {
  EchoAndClient served;
  ExpectUnansweredAtOnce(served.ipc, "drop");
  EXPECT_EQ(6, Asked(served.ipc, "6"));
}

TEST(IpcServe, DyingEndsTheLoopWithoutAnswering) {
  EchoAndClient served;
  ExpectUnansweredAtOnce(served.ipc, "die");
  EXPECT_EQ(ServeEnd::kDied, served.daemon.Stop());
}

TEST(IpcServe, DelayComesBeforeEachAnswer) {
  EchoAndClient served(200);
  const Clock::time_point start = Clock::now();
  EXPECT_EQ(1, Asked(served.ipc, "1"));
  EXPECT_EQ(2, Asked(served.ipc, "2"));
  EXPECT_GE(MillisecondsSince(start), 400);
  EXPECT_EQ(-1, Asked(served.ipc, "3", 50));  // gives up before the delay is over
}

TEST(IpcServe, StopEndsTheLoopEvenDuringADelay) {
  EchoAndClient served(60000);
  EXPECT_EQ(-1, Asked(served.ipc, "1", 100));
  const Clock::time_point start = Clock::now();
  EXPECT_EQ(ServeEnd::kStopped, served.daemon.Stop());
  EXPECT_LT(MillisecondsSince(start), 2000);
}

}  // namespace
}  // namespace HostIpc
