// The stream manager requests against scripted daemons: good answers, and
// every way an answer can go wrong.
#include "recorder/stream_mgr_api.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "recorder/host/fake_daemon.h"
#include "recorder/host/ipc_channel.h"
#include "recorder/host/ipc_codec.h"
#include "recorder/host/linx_ipc_impl.h"

namespace HostIpc {
namespace {

using FD = FakeDaemon;
using std::chrono::milliseconds;

constexpr int kShortTimeoutMs = 300;

// The kind of a request as the fake received it.
Kind KindOf(const std::string& request) {
  WireReader reader(request);
  Kind kind = kSettings;
  ReadRequestHeader(reader, kind);
  return kind;
}

std::string TextOf(const std::string& request) {
  WireReader reader(request);
  Kind kind = kSettings;
  std::string text;
  ReadRequestHeader(reader, kind);
  reader.String(text);
  return text;
}

// A daemon that answers every request with `body`.
FD::Script Answering(const std::string& body) {
  return [body](int fd, const std::string&) {
    FD::Frame(fd, body);
    return FD::Then::kNext;
  };
}

struct Endpoint {
  explicit Endpoint(const FakeDaemon& daemon) {
    HostIpc::EndpointOf(ipc).endpointDir = daemon.Dir();
  }
  LinxIpc ipc{"test"};
};

StreamMgrApi::StreamfileRecordItem File(uint32_t number) {
  StreamMgrApi::StreamfileRecordItem file;
  file.number = number;
  return file;
}

double MillisecondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
      .count();
}

TEST(LinxIpc, InitFailsWithoutAnEndpoint) {
  char pattern[] = "/tmp/no-daemon-XXXXXX";
  ASSERT_NE(nullptr, mkdtemp(pattern));
  LinxIpc ipc("db");
  HostIpc::EndpointOf(ipc).endpointDir = pattern;
  EXPECT_NE(0, ipc.Init());
  EXPECT_EQ("db", ipc.Name());
  unsigned int count = 5;
  EXPECT_FALSE(StreamMgrApi::GetCountFromSqlStatement(ipc, "select 1", count, 1000));
  EXPECT_EQ(5u, count);
  rmdir(pattern);
}

TEST(LinxIpc, InitFailsWhenTheEndpointIsNotASocket) {
  char pattern[] = "/tmp/no-daemon-XXXXXX";
  ASSERT_NE(nullptr, mkdtemp(pattern));
  const std::string path = EndpointPath(pattern, kStreamMgrName);
  FILE* file = fopen(path.c_str(), "w");
  ASSERT_NE(nullptr, file);
  fclose(file);
  LinxIpc ipc("db");
  HostIpc::EndpointOf(ipc).endpointDir = pattern;
  EXPECT_NE(0, ipc.Init());
  unlink(path.c_str());
  rmdir(pattern);
}

TEST(LinxIpc, RequestsBeforeInitFailWithoutReachingTheDaemon) {
  FakeDaemon daemon(kStreamMgrName, Answering(CountAnswer(3)));
  Endpoint endpoint(daemon);
  unsigned int count = 5;
  EXPECT_FALSE(StreamMgrApi::GetCountFromSqlStatement(endpoint.ipc, "select 1", count, 1000));
  EXPECT_EQ(5u, count);
  EXPECT_EQ(0, daemon.Connections());
}

TEST(StreamMgrApi, RequestsShareOneConnectionAndCarryTheirText) {
  FakeDaemon daemon(kStreamMgrName, [](int fd, const std::string& request) {
    switch (KindOf(request)) {
      case kEvents: {
        StreamMgrApi::EventRecordItem event;
        event.reid = TextOf(request);
        FD::Frame(fd, EventsAnswer({event}));
        break;
      }
      case kFiles:
        FD::Frame(fd, FilesAnswer({File(1), File(2)}));
        break;
      case kCount:
        FD::Frame(fd, CountAnswer(42));
        break;
      default:
        FD::Frame(fd, DeleteAnswer(TextOf(request) == "yes"));
        break;
    }
    return FD::Then::kNext;
  });
  Endpoint endpoint(daemon);
  ASSERT_EQ(0, endpoint.ipc.Init());
  StreamMgrApi::EventRecordListMessage events;
  EXPECT_TRUE(
      StreamMgrApi::GetEventsFromSqlStatement(endpoint.ipc, "select * from events", events, 1000));
  ASSERT_EQ(1u, events.items.size());
  EXPECT_EQ("select * from events", events.items[0].reid.GetValue());
  StreamMgrApi::StreamfileRecordListMessage files;
  EXPECT_TRUE(StreamMgrApi::GetFilesFromSqlStatement(endpoint.ipc, "f", files, 1000));
  ASSERT_EQ(2u, files.items.size());
  EXPECT_EQ(2u, files.items[1].number.GetValue());
  unsigned int count = 0;
  EXPECT_TRUE(StreamMgrApi::GetCountFromSqlStatement(endpoint.ipc, "c", count, 1000));
  EXPECT_EQ(42u, count);
  EXPECT_TRUE(StreamMgrApi::DeleteEvent("yes", endpoint.ipc));
  EXPECT_FALSE(StreamMgrApi::DeleteEvent("no", endpoint.ipc));
  EXPECT_EQ(1, daemon.Connections());
  const std::vector<std::string> requests = daemon.Requests();
  ASSERT_EQ(5u, requests.size());
  EXPECT_EQ(TextRequest(kFiles, "f"), requests[1]);
  EXPECT_EQ(TextRequest(kCount, "c"), requests[2]);
  EXPECT_EQ(TextRequest(kDelete, "no"), requests[4]);
}

TEST(StreamMgrApi, FailedAnswersLeaveListCountAndDeleteAsTheyWere) {
  FakeDaemon daemon(kStreamMgrName, [](int fd, const std::string& request) {
    FD::Frame(fd, FailedAnswer(KindOf(request)));
    return FD::Then::kNext;
  });
  Endpoint endpoint(daemon);
  ASSERT_EQ(0, endpoint.ipc.Init());
  StreamMgrApi::EventRecordListMessage events;
  EXPECT_FALSE(StreamMgrApi::GetEventsFromSqlStatement(endpoint.ipc, "e", events, 1000));
  EXPECT_TRUE(events.items.empty());
  StreamMgrApi::StreamfileRecordListMessage files;
  EXPECT_FALSE(StreamMgrApi::GetFilesFromSqlStatement(endpoint.ipc, "f", files, 1000));
  EXPECT_TRUE(files.items.empty());
  unsigned int count = 9;
  EXPECT_FALSE(StreamMgrApi::GetCountFromSqlStatement(endpoint.ipc, "c", count, 1000));
  EXPECT_EQ(9u, count);
  EXPECT_FALSE(StreamMgrApi::DeleteEvent("r", endpoint.ipc));
}

TEST(StreamMgrApi, SilentDaemonTimesOutWithinTheTimeOut) {
  FakeDaemon daemon(kStreamMgrName, [](int, const std::string&) { return FD::Then::kHold; });
  Endpoint endpoint(daemon);
  ASSERT_EQ(0, endpoint.ipc.Init());
  unsigned int count = 9;
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(StreamMgrApi::GetCountFromSqlStatement(endpoint.ipc, "c", count, kShortTimeoutMs));
  const double waited = MillisecondsSince(start);
  EXPECT_EQ(9u, count);
  EXPECT_GE(waited, kShortTimeoutMs - 5);
  EXPECT_LT(waited, kShortTimeoutMs + 1000);
  StreamMgrApi::EventRecordListMessage events;
  EXPECT_FALSE(StreamMgrApi::GetEventsFromSqlStatement(endpoint.ipc, "e", events, kShortTimeoutMs));
  EXPECT_TRUE(events.items.empty());
}

TEST(StreamMgrApi, HalfAnAnswerThenSilenceTimesOut) {
  const std::string answer = FilesAnswer({File(1), File(2)});
  FakeDaemon daemon(kStreamMgrName, [&answer](int fd, const std::string&) {
    FD::Raw(fd, FrameHeader(answer.size()) + answer.substr(0, answer.size() / 2));
    return FD::Then::kHold;
  });
  Endpoint endpoint(daemon);
  ASSERT_EQ(0, endpoint.ipc.Init());
  StreamMgrApi::StreamfileRecordListMessage files;
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(StreamMgrApi::GetFilesFromSqlStatement(endpoint.ipc, "f", files, kShortTimeoutMs));
  EXPECT_LT(MillisecondsSince(start), kShortTimeoutMs + 1000);
  EXPECT_TRUE(files.items.empty());
}

TEST(StreamMgrApi, DaemonDyingMidAnswerFailsAtOnce) {
  const std::string answer = FilesAnswer({File(1), File(2)});
  FakeDaemon daemon(kStreamMgrName, [&answer](int fd, const std::string&) {
    FD::Raw(fd, FrameHeader(answer.size()) + answer.substr(0, answer.size() - 1));
    return FD::Then::kClose;
  });
  Endpoint endpoint(daemon);
  ASSERT_EQ(0, endpoint.ipc.Init());
  StreamMgrApi::StreamfileRecordListMessage files;
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(StreamMgrApi::GetFilesFromSqlStatement(endpoint.ipc, "f", files, 10000));
  EXPECT_LT(MillisecondsSince(start), 5000);
  EXPECT_TRUE(files.items.empty());
}

TEST(StreamMgrApi, DaemonHangingUpBeforeTheAnswerFailsAtOnce) {
  FakeDaemon daemon(kStreamMgrName, [](int, const std::string&) { return FD::Then::kClose; });
  Endpoint endpoint(daemon);
  ASSERT_EQ(0, endpoint.ipc.Init());
  unsigned int count = 9;
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(StreamMgrApi::GetCountFromSqlStatement(endpoint.ipc, "c", count, 10000));
  EXPECT_LT(MillisecondsSince(start), 5000);
  EXPECT_EQ(9u, count);
  EXPECT_FALSE(StreamMgrApi::DeleteEvent("r", endpoint.ipc));
}

TEST(StreamMgrApi, WritingToADaemonThatHungUpDoesNotRaiseSigpipe) {
  // The daemon closes each connection as soon as it has one; the client's
  // write then meets a closed socket, which must be a failed request only.
  FakeDaemon daemon(kStreamMgrName, [](int, const std::string&) { return FD::Then::kClose; });
  Endpoint endpoint(daemon);
  ASSERT_EQ(0, endpoint.ipc.Init());
  unsigned int count = 0;
  StreamMgrApi::GetCountFromSqlStatement(endpoint.ipc, "c", count, 2000);
  // The connection is gone now; a large request is written into nothing.
  for (int i = 0; i < 3; ++i) {
    EXPECT_FALSE(StreamMgrApi::GetCountFromSqlStatement(endpoint.ipc, std::string(1 << 20, 'x'),
                                                        count, 2000));
  }
}

TEST(StreamMgrApi, OversizedAnswerIsRefusedWithoutWaiting) {
  FakeDaemon daemon(kStreamMgrName, [](int fd, const std::string&) {
    FD::Raw(fd, FrameHeader(static_cast<size_t>(kMaxFrameBytes) + 1) + CountAnswer(3));
    return FD::Then::kHold;
  });
  Endpoint endpoint(daemon);
  ASSERT_EQ(0, endpoint.ipc.Init());
  unsigned int count = 9;
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(StreamMgrApi::GetCountFromSqlStatement(endpoint.ipc, "c", count, 10000));
  EXPECT_LT(MillisecondsSince(start), 5000);
  EXPECT_EQ(9u, count);
}

TEST(StreamMgrApi, LargestLengthIsRefused) {
  FakeDaemon daemon(kStreamMgrName, [](int fd, const std::string&) {
    FD::Raw(fd, std::string("\xff\xff\xff\xff", 4));
    return FD::Then::kHold;
  });
  Endpoint endpoint(daemon);
  ASSERT_EQ(0, endpoint.ipc.Init());
  StreamMgrApi::EventRecordListMessage events;
  EXPECT_FALSE(StreamMgrApi::GetEventsFromSqlStatement(endpoint.ipc, "e", events, 10000));
  EXPECT_TRUE(events.items.empty());
}

TEST(StreamMgrApi, MalformedAnswersAreFailedRequests) {
  const std::vector<std::string> bodies = {
      "",
      "garbage that is no answer",
      std::string("\x01\x02\x00\xff", 4),
      MalformedAnswer(kFiles),
      CountAnswer(3),  // an answer to another request
      FilesAnswer({File(1)}) + "x",
  };
  for (const std::string& body : bodies) {
    SCOPED_TRACE(body);
    FakeDaemon daemon(kStreamMgrName, Answering(body));
    Endpoint endpoint(daemon);
    ASSERT_EQ(0, endpoint.ipc.Init());
    StreamMgrApi::StreamfileRecordListMessage files;
    EXPECT_FALSE(StreamMgrApi::GetFilesFromSqlStatement(endpoint.ipc, "f", files, 2000));
    EXPECT_TRUE(files.items.empty());
  }
}

TEST(StreamMgrApi, LateAnswerIsNeverTakenForTheNextRequest) {
  // The first request is answered only after the client gave up on it; the
  // next request must get its own answer.
  int calls = 0;
  FakeDaemon daemon(kStreamMgrName, [&calls](int fd, const std::string&) {
    if (++calls == 1) {
      std::this_thread::sleep_for(milliseconds(2 * kShortTimeoutMs));
      FD::Frame(fd, CountAnswer(1));
      return FD::Then::kNext;
    }
    FD::Frame(fd, CountAnswer(2));
    return FD::Then::kNext;
  });
  Endpoint endpoint(daemon);
  ASSERT_EQ(0, endpoint.ipc.Init());
  unsigned int count = 0;
  EXPECT_FALSE(StreamMgrApi::GetCountFromSqlStatement(endpoint.ipc, "c", count, kShortTimeoutMs));
  EXPECT_EQ(0u, count);
  EXPECT_TRUE(StreamMgrApi::GetCountFromSqlStatement(endpoint.ipc, "c", count, 5000));
  EXPECT_EQ(2u, count);
  EXPECT_EQ(2, daemon.Connections());
}

TEST(StreamMgrApi, NegativeTimeOutDoesNotWaitForever) {
  FakeDaemon daemon(kStreamMgrName, [](int, const std::string&) { return FD::Then::kHold; });
  Endpoint endpoint(daemon);
  ASSERT_EQ(0, endpoint.ipc.Init());
  unsigned int count = 9;
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(StreamMgrApi::GetCountFromSqlStatement(endpoint.ipc, "c", count, -1));
  EXPECT_LT(MillisecondsSince(start), 1000);
}

}  // namespace
}  // namespace HostIpc
