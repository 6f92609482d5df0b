#include "recorder/host/ipc_server.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>

#include "recorder/host/fake_daemon.h"
#include "recorder/host/ipc_channel.h"
#include "recorder/host/ipc_codec.h"
#include "recorder/host/linx_ipc_impl.h"
#include "recorder/host/served_daemon.h"
#include "recorder/stream_mgr_api.h"

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

bool Count(LinxIpc& ipc, const std::string& text, unsigned int& count, int timeoutMs = 5000) {
  return StreamMgrApi::GetCountFromSqlStatement(ipc, text, count, timeoutMs);
}

double MillisecondsSince(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// An Echo daemon that waits `delayMs` before each answer, and db's client
// aimed at it.
struct EchoAndClient {
  explicit EchoAndClient(int delayMs = 0) : daemon(kStreamMgrName, Echo, delayMs) {
    daemon.Aim(ipc);
  }
  ServedDaemon daemon;
  LinxIpc ipc{"db"};
};

// Sends `text`, which the daemon does not answer: the request fails at once
// and leaves the count as it was.
void ExpectUnansweredAtOnce(LinxIpc& ipc, const std::string& text) {
  unsigned int count = 5;
  const Clock::time_point start = Clock::now();
  EXPECT_FALSE(Count(ipc, text, count));
  EXPECT_LT(MillisecondsSince(start), 2000);
  EXPECT_EQ(5u, count);
}

TEST(IpcEndpoint, AppearsAsASocketWithNothingElseBeside) {
  ServedDaemon daemon(kStreamMgrName, Echo);
  struct stat info {};
  ASSERT_EQ(0, stat(daemon.Path().c_str(), &info));
  EXPECT_TRUE(S_ISSOCK(info.st_mode));
  FILE* listing = popen(("ls -A '" + daemon.Dir() + "'").c_str(), "r");
  char line[256] = "";
  ASSERT_NE(nullptr, fgets(line, sizeof line, listing));
  EXPECT_STREQ("StreamMgr\n", line);
  EXPECT_EQ(nullptr, fgets(line, sizeof line, listing));
  pclose(listing);
}

TEST(IpcEndpoint, ReplacesAStaleFile) {
  char pattern[] = "/tmp/endpoint-XXXXXX";
  ASSERT_NE(nullptr, mkdtemp(pattern));
  const std::string path = EndpointPath(pattern, kStreamMgrName);
  FILE* stale = fopen(path.c_str(), "w");
  ASSERT_NE(nullptr, stale);
  fclose(stale);
  const int fd = CreateEndpoint(path);
  ASSERT_GE(fd, 0);
  const int client = Connect(path);
  EXPECT_GE(client, 0);
  close(client);
  close(fd);
  unlink(path.c_str());
  rmdir(pattern);
}

TEST(IpcEndpoint, FailsInAMissingFolderAndLeavesNothing) {
  EXPECT_EQ(-1, CreateEndpoint("/tmp/no-such-folder-for-endpoints/StreamMgr"));
  struct stat info {};
  EXPECT_NE(0, stat("/tmp/no-such-folder-for-endpoints", &info));
}

TEST(IpcServe, ServesSeveralConnectionsAtOnce) {
  ServedDaemon daemon(kStreamMgrName, Echo);
  LinxIpc first("first"), second("second");
  daemon.Aim(first);
  daemon.Aim(second);
  ASSERT_EQ(0, first.Init());
  ASSERT_EQ(0, second.Init());
  for (unsigned int i = 0; i < 10; ++i) {
    unsigned int a = 0, b = 0;
    ASSERT_TRUE(Count(first, std::to_string(i), a));
    ASSERT_TRUE(Count(second, std::to_string(100 + i), b));
    EXPECT_EQ(i, a);
    EXPECT_EQ(100 + i, b);
  }
}

TEST(IpcServe, AnswersRequestsSentTogetherInOrder) {
  ServedDaemon daemon(kStreamMgrName, Echo);
  const int fd = Connect(daemon.Path());
  ASSERT_GE(fd, 0);
  std::string both;
  for (const char* text : {"1", "2", "3"}) {
    const std::string request = TextRequest(kCount, text);
    both += FrameHeader(request.size()) + request;
  }
  FakeDaemon::Raw(fd, both);
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
  ServedDaemon daemon(kStreamMgrName, Echo);
  LinxIpc other("other");
  daemon.Aim(other);
  ASSERT_EQ(0, other.Init());
  for (size_t cut : {1, 3, 4, 6}) {
    const int fd = Connect(daemon.Path());
    ASSERT_GE(fd, 0);
    const std::string request = TextRequest(kCount, "12345");
    FakeDaemon::Raw(fd, (FrameHeader(request.size()) + request).substr(0, cut));
    close(fd);
    unsigned int count = 0;
    ASSERT_TRUE(Count(other, "7", count));
    EXPECT_EQ(7u, count);
  }
  EXPECT_FALSE(daemon.Ended());
}

TEST(IpcServe, ClientLeavingBeforeItsAnswerIsDroppedWithoutHarm) {
  ServedDaemon daemon(kStreamMgrName, Echo, 100);
  const int fd = Connect(daemon.Path());
  ASSERT_GE(fd, 0);
  const std::string request = TextRequest(kCount, "1");
  FakeDaemon::Raw(fd, FrameHeader(request.size()) + request);
  close(fd);  // the daemon is still waiting its 100 ms
  LinxIpc other("other");
  daemon.Aim(other);
  ASSERT_EQ(0, other.Init());
  unsigned int count = 0;
  ASSERT_TRUE(Count(other, "8", count));
  EXPECT_EQ(8u, count);
}

TEST(IpcServe, OversizedRequestDropsOnlyThatConnection) {
  ServedDaemon daemon(kStreamMgrName, Echo);
  LinxIpc other("other");
  daemon.Aim(other);
  ASSERT_EQ(0, other.Init());
  const int fd = Connect(daemon.Path());
  ASSERT_GE(fd, 0);
  FakeDaemon::Raw(fd, FrameHeader(static_cast<size_t>(kMaxFrameBytes) + 1));
  std::string answer;
  EXPECT_FALSE(ReceiveFrame(fd, answer, DeadlineIn(5000)));  // hung up, not answered
  close(fd);
  unsigned int count = 0;
  ASSERT_TRUE(Count(other, "9", count));
  EXPECT_EQ(9u, count);
}

TEST(IpcServe, DroppedRequestFailsAndTheNextOneReconnects) {
  EchoAndClient served;
  ASSERT_EQ(0, served.ipc.Init());
  ExpectUnansweredAtOnce(served.ipc, "drop");
  unsigned int count = 5;
  ASSERT_TRUE(Count(served.ipc, "6", count));
  EXPECT_EQ(6u, count);
}

TEST(IpcServe, DyingEndsTheLoopWithoutAnswering) {
  EchoAndClient served;
  ASSERT_EQ(0, served.ipc.Init());
  ExpectUnansweredAtOnce(served.ipc, "die");
  EXPECT_EQ(ServeEnd::kDied, served.daemon.Stop());
}

TEST(IpcServe, DelayComesBeforeEachAnswer) {
  EchoAndClient served(200);
  ASSERT_EQ(0, served.ipc.Init());
  unsigned int count = 0;
  const Clock::time_point start = Clock::now();
  ASSERT_TRUE(Count(served.ipc, "1", count));
  ASSERT_TRUE(Count(served.ipc, "2", count));
  EXPECT_GE(MillisecondsSince(start), 400);
  EXPECT_EQ(2u, count);
  EXPECT_FALSE(Count(served.ipc, "3", count, 50));  // gives up before the delay is over
  EXPECT_EQ(2u, count);
}

TEST(IpcServe, StopEndsTheLoopEvenDuringADelay) {
  EchoAndClient served(60000);
  ASSERT_EQ(0, served.ipc.Init());
  unsigned int count = 0;
  EXPECT_FALSE(Count(served.ipc, "1", count, 100));
  const Clock::time_point start = Clock::now();
  EXPECT_EQ(ServeEnd::kStopped, served.daemon.Stop());
  EXPECT_LT(MillisecondsSince(start), 2000);
}

}  // namespace
}  // namespace HostIpc
