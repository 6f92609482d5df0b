// The stream manager requests against scripted daemons: good answers, and
// every way an answer can go wrong.
#include "recorder/stream_mgr_api.h"

#include <gtest/gtest.h>

#include <fstream>
#include <thread>

#include "recorder/host/ipc_client_fixture.h"
#include "testing/scratch_dir.h"

namespace HostIpc {
namespace {

using namespace StreamMgrApi;

constexpr int kShortTimeoutMs = 300;

// The kind and text of a request as the fake received it.
std::pair<Kind, std::string> Parsed(const std::string& request) {
  WireReader reader(request);
  std::pair<Kind, std::string> parsed = {kSettings, ""};
  ReadRequestHeader(reader, parsed.first);
  reader.String(parsed.second);
  return parsed;
}

// A fake StreamMgr following `script`, and db's endpoint, initialised, aimed at it.
struct Client {
  explicit Client(FD::Script script) : daemon(kStreamMgrName, std::move(script)) {
    EXPECT_EQ(0, aimed.ipc.Init());
  }
  FakeDaemon daemon;
  AimedIpc aimed{daemon.Dir()};
  LinxIpc& ipc = aimed.ipc;
};

StreamfileRecordItem File(uint32_t number) {
  StreamfileRecordItem file;
  file.number = number;
  return file;
}

const std::string kTwoFiles = FilesAnswer({File(1), File(2)});

// Asks for a list or count of `kind` and expects the request to fail, leaving
// the list empty, the count as it was, or the event undeleted.
void ExpectFailed(LinxIpc& ipc, Kind kind, int timeoutMs) {
  EventRecordListMessage events;
  StreamfileRecordListMessage files;
  unsigned int count = 9;
  EXPECT_FALSE(kind == kEvents  ? GetEventsFromSqlStatement(ipc, "e", events, timeoutMs)
               : kind == kFiles ? GetFilesFromSqlStatement(ipc, "f", files, timeoutMs)
               : kind == kCount ? GetCountFromSqlStatement(ipc, "c", count, timeoutMs)
                                : DeleteEvent("r", ipc));
  EXPECT_TRUE(events.items.empty());
  EXPECT_TRUE(files.items.empty());
  EXPECT_EQ(9u, count);
}

TEST(LinxIpc, InitFailsWithoutAnEndpoint) {
  ScratchDir empty("no-daemon");
  AimedIpc aimed(empty.Path());
  EXPECT_NE(0, aimed.ipc.Init());
  EXPECT_EQ("db", aimed.ipc.Name());
  ExpectFailed(aimed.ipc, kCount, 1000);
}

TEST(LinxIpc, InitFailsWhenTheEndpointIsNotASocket) {
  ScratchDir folder("no-daemon");
  ASSERT_TRUE(std::ofstream(EndpointPath(folder.Path(), kStreamMgrName)).is_open());
  AimedIpc aimed(folder.Path());
  EXPECT_NE(0, aimed.ipc.Init());
}

TEST(LinxIpc, RequestsBeforeInitFailWithoutReachingTheDaemon) {
  FakeDaemon daemon(kStreamMgrName, Answering(CountAnswer(3)));
  AimedIpc aimed(daemon.Dir());
  ExpectFailed(aimed.ipc, kCount, 1000);
  EXPECT_EQ(0, daemon.Connections());
}

TEST(StreamMgrApi, RequestsShareOneConnectionAndCarryTheirText) {
  Client client([](int fd, const std::string& request) {
    EventRecordItem event;
    const auto [kind, text] = Parsed(request);
    event.reid = text;
    const std::string answers[] = {EventsAnswer({event}), kTwoFiles, CountAnswer(42),
                                   DeleteAnswer(text == "yes")};
    FD::Frame(fd, answers[kind - kEvents]);
    return FD::Then::kNext;
  });
  EventRecordListMessage events;
  EXPECT_TRUE(GetEventsFromSqlStatement(client.ipc, "select * from events", events, 1000));
  ASSERT_EQ(1u, events.items.size());
  EXPECT_EQ("select * from events", events.items[0].reid.GetValue());
  StreamfileRecordListMessage files;
  EXPECT_TRUE(GetFilesFromSqlStatement(client.ipc, "f", files, 1000));
  ASSERT_EQ(2u, files.items.size());
  EXPECT_EQ(2u, files.items[1].number.GetValue());
  unsigned int count = 0;
  EXPECT_TRUE(GetCountFromSqlStatement(client.ipc, "c", count, 1000));
  EXPECT_EQ(42u, count);
  EXPECT_TRUE(DeleteEvent("yes", client.ipc));
  EXPECT_FALSE(DeleteEvent("no", client.ipc));
  EXPECT_EQ(1, client.daemon.Connections());
  const std::vector<std::string> requests = client.daemon.Requests();
  ASSERT_EQ(5u, requests.size());
  EXPECT_EQ(TextRequest(kFiles, "f"), requests[1]);
  EXPECT_EQ(TextRequest(kCount, "c"), requests[2]);
  EXPECT_EQ(TextRequest(kDelete, "no"), requests[4]);
}

TEST(StreamMgrApi, FailedAnswersLeaveListCountAndDeleteAsTheyWere) {
  Client client([](int fd, const std::string& request) {
    FD::Frame(fd, FailedAnswer(Parsed(request).first));
    return FD::Then::kNext;
  });
  for (Kind kind : {kEvents, kFiles, kCount, kDelete}) ExpectFailed(client.ipc, kind, 1000);
}

// A daemon that goes wrong, and requests that must fail in good time.
struct Misbehaviour {
  const char* name;
  FD::Script script;
  std::vector<Kind> requests;  // asked one after another
  int timeoutMs;
  double fastestMs;  // of the first request
  double slowestMs;
};

std::string NameOf(const testing::TestParamInfo<Misbehaviour>& info) { return info.param.name; }

// A frame that announces the whole of `answer` and carries the first `bytes`.
FD::Script Partly(size_t bytes, FD::Then then) {
  return [bytes, then](int fd, const std::string&) {
    FD::Raw(fd, FrameHeader(kTwoFiles.size()) + kTwoFiles.substr(0, bytes));
    return then;
  };
}

FD::Script Sending(const std::string& bytes) {
  return [bytes](int fd, const std::string&) {
    FD::Raw(fd, bytes);
    return FD::Then::kHold;
  };
}

const Misbehaviour kMisbehaviours[] = {
    {"SilentDaemonTimesOutWithinTheTimeOut",
     Silent(FD::Then::kHold),
     {kCount, kEvents},
     kShortTimeoutMs,
     kShortTimeoutMs - 5,
     kShortTimeoutMs + 1000},
    {"HalfAnAnswerThenSilenceTimesOut",
     Partly(kTwoFiles.size() / 2, FD::Then::kHold),
     {kFiles},
     kShortTimeoutMs,
     0,
     kShortTimeoutMs + 1000},
    {"DaemonDyingMidAnswerFailsAtOnce",
     Partly(kTwoFiles.size() - 1, FD::Then::kClose),
     {kFiles},
     10000,
     0,
     5000},
    {"DaemonHangingUpBeforeTheAnswerFailsAtOnce",
     Silent(FD::Then::kClose),
     {kCount, kDelete},
     10000,
     0,
     5000},
    {"OversizedAnswerIsRefusedWithoutWaiting",
     Sending(FrameHeader(static_cast<size_t>(kMaxFrameBytes) + 1) + CountAnswer(3)),
     {kCount},
     10000,
     0,
     5000},
    {"LargestLengthIsRefused", Sending("\xff\xff\xff\xff"), {kEvents}, 10000, 0, 11000},
    {"NegativeTimeOutDoesNotWaitForever", Silent(FD::Then::kHold), {kCount}, -1, 0, 1000},
    // Answers that are no answer to a files request.
    {"EmptyAnswer", Answering(""), {kFiles}, 2000, 0, 3000},
    {"GarbageAnswer", Answering("garbage that is no answer"), {kFiles}, 2000, 0, 3000},
    {"UnknownStatusAndKind",
     Answering(std::string("\x01\x02\x00\xff", 4)),
     {kFiles},
     2000,
     0,
     3000},
    {"MalformedAnswer", Answering(MalformedAnswer(kFiles)), {kFiles}, 2000, 0, 3000},
    {"AnswerToAnotherRequest", Answering(CountAnswer(3)), {kFiles}, 2000, 0, 3000},
    {"AnswerWithTrailingBytes", Answering(FilesAnswer({File(1)}) + "x"), {kFiles}, 2000, 0, 3000},
};

class Misbehaving : public testing::TestWithParam<Misbehaviour> {};

TEST_P(Misbehaving, RequestsFailInTime) {
  const Misbehaviour& daemon = GetParam();
  Client client(daemon.script);
  for (size_t i = 0; i < daemon.requests.size(); ++i) {
    const Clock::time_point start = Clock::now();
    ExpectFailed(client.ipc, daemon.requests[i], daemon.timeoutMs);
    const double waited = MillisecondsSince(start);
    EXPECT_GE(waited, i == 0 ? daemon.fastestMs : 0);
    EXPECT_LT(waited, daemon.slowestMs);
  }
}

INSTANTIATE_TEST_SUITE_P(StreamMgrApi, Misbehaving, testing::ValuesIn(kMisbehaviours), NameOf);

TEST(StreamMgrApi, WritingToADaemonThatHungUpDoesNotRaiseSigpipe) {
  // The daemon closes each connection as soon as it has one; the client's
  // write then meets a closed socket, which must be a failed request only.
  Client client(Silent(FD::Then::kClose));
  unsigned int count = 0;
  GetCountFromSqlStatement(client.ipc, "c", count, 2000);
  // The connection is gone now; a large request is written into nothing.
  for (int i = 0; i < 3; ++i) {
    EXPECT_FALSE(GetCountFromSqlStatement(client.ipc, std::string(1 << 20, 'x'), count, 2000));
  }
}

TEST(StreamMgrApi, LateAnswerIsNeverTakenForTheNextRequest) {
  // The first request is answered only after the client gave up on it; the
  // next request must get its own answer.
  int calls = 0;
  Client client([&calls](int fd, const std::string&) {
    if (++calls == 1) std::this_thread::sleep_for(std::chrono::milliseconds(2 * kShortTimeoutMs));
    FD::Frame(fd, CountAnswer(calls == 1 ? 1 : 2));
    return FD::Then::kNext;
  });
  unsigned int count = 0;
  EXPECT_FALSE(GetCountFromSqlStatement(client.ipc, "c", count, kShortTimeoutMs));
  EXPECT_EQ(0u, count);
  EXPECT_TRUE(GetCountFromSqlStatement(client.ipc, "c", count, 5000));
  EXPECT_EQ(2u, count);
  EXPECT_EQ(2, client.daemon.Connections());
}

}  // namespace
}  // namespace HostIpc
