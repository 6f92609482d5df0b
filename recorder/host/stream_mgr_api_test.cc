// The stream manager requests against scripted daemons: good answers, and
// every way an answer can go wrong.
#include "recorder/stream_mgr_api.h"

#include <gtest/gtest.h>

#include <fstream>
#include <thread>

#include "recorder/host/ipc_client_fixture.h"
#include "testing/scratch_dir.h"
#include "testing/sim_named_cases.h"

namespace HostIpc {
namespace {

using namespace StreamMgrApi;
using namespace std::string_literals;

constexpr int kShortTimeoutMs = 300;

// The kind and text of a request as the fake received it.
std::pair<Kind, std::string> Parsed(const std::string& request) {
  WireReader reader(request);
  std::pair<Kind, std::string> parsed = {kSettings, ""};
  ReadRequestHeader(reader, parsed.first);
  reader.String(parsed.second);
  return parsed;
}

using Client = Served<FakeDaemon>;

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
  EXPECT_EQ(std::make_tuple(0u, 0u, 9u),
            std::make_tuple(events.items.size(), files.items.size(), count));
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
  FakeDaemon daemon(kStreamMgrName, FD::Answering(CountAnswer(3)));
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
  StreamfileRecordListMessage files;
  unsigned int count = 0;
  EXPECT_TRUE(GetEventsFromSqlStatement(client.ipc, "select * from events", events, 1000));
  EXPECT_TRUE(GetFilesFromSqlStatement(client.ipc, "f", files, 1000));
  EXPECT_TRUE(GetCountFromSqlStatement(client.ipc, "c", count, 1000));
  EXPECT_TRUE(DeleteEvent("yes", client.ipc));
  EXPECT_FALSE(DeleteEvent("no", client.ipc));
  ASSERT_EQ(std::make_tuple(1u, 2u), std::make_tuple(events.items.size(), files.items.size()));
  EXPECT_EQ(
      std::make_tuple("select * from events"s, 2u, 42u),
      std::make_tuple(events.items[0].reid.GetValue(), files.items[1].number.GetValue(), count));
  EXPECT_EQ(1, client.daemon.Connections());
  EXPECT_EQ((std::vector<std::string>{TextRequest(kEvents, "select * from events"),
                                      TextRequest(kFiles, "f"), TextRequest(kCount, "c"),
                                      TextRequest(kDelete, "yes"), TextRequest(kDelete, "no")}),
            client.daemon.Requests());
}

TEST(StreamMgrApi, FailedAnswersLeaveListCountAndDeleteAsTheyWere) {
  Client client([](int fd, const std::string& request) {
    FD::Frame(fd, FailedAnswer(Parsed(request).first));
    return FD::Then::kNext;
  });
  for (Kind kind : {kEvents, kFiles, kCount, kDelete}) ExpectFailed(client.ipc, kind, 1000);
}

// How long a request may take: its time-out, and the least and most it waits.
struct Timing {
  int timeoutMs;
  double fastestMs;
  double slowestMs;
};
constexpr Timing kTimesOut = {kShortTimeoutMs, kShortTimeoutMs - 5, kShortTimeoutMs + 1000};
constexpr Timing kAtOnce = {10000, 0, 5000};

// A daemon that goes wrong, and requests that must fail in good time.
struct Misbehaviour {
  const char* name;
  Timing timing;
  std::vector<Kind> requests;  // asked one after another
  FD::Script script;
};

// The frame of two files cut short: half of it, and all but its last byte.
std::string Cut(size_t length) {
  return FrameHeader(kTwoFiles.size()) + kTwoFiles.substr(0, length);
}
const std::string kHalf = Cut(kTwoFiles.size() / 2), kButOne = Cut(kTwoFiles.size() - 1);
const std::string kOversized = FrameHeader(size_t{kMaxFrameBytes} + 1) + CountAnswer(3);

const Misbehaviour kMisbehaviours[] = {
    {"SilentDaemonTimesOutWithinTheTimeOut", kTimesOut, {kCount, kEvents}, FD::Holding()},
    {"HalfAnAnswerThenSilenceTimesOut", kTimesOut, {kFiles}, FD::Sending(kHalf)},
    {"DaemonDyingMidAnswerFailsAtOnce", kAtOnce, {kFiles}, FD::Sending(kButOne, FD::Then::kClose)},
    {"DaemonHangingUpBeforeTheAnswerFailsAtOnce", kAtOnce, {kCount, kDelete}, FD::HangingUp()},
    {"OversizedAnswerIsRefusedWithoutWaiting", kAtOnce, {kCount}, FD::Sending(kOversized)},
    {"LargestLengthIsRefused", kAtOnce, {kEvents}, FD::Sending("\xff\xff\xff\xff")},
    {"NegativeTimeOutDoesNotWaitForever", {-1, 0, 1000}, {kCount}, FD::Holding()},
    // Answers that are no answer to a files request.
    {"EmptyAnswer", kAtOnce, {kFiles}, FD::Answering("")},
    {"GarbageAnswer", kAtOnce, {kFiles}, FD::Answering("garbage that is no answer")},
    {"UnknownStatusAndKind", kAtOnce, {kFiles}, FD::Answering(std::string("\x01\x02\x00\xff", 4))},
    {"MalformedAnswer", kAtOnce, {kFiles}, FD::Answering(MalformedAnswer(kFiles))},
    {"AnswerToAnotherRequest", kAtOnce, {kFiles}, FD::Answering(CountAnswer(3))},
    {"AnswerWithTrailingBytes", kAtOnce, {kFiles}, FD::Answering(FilesAnswer({File(1)}) + "x")},
};

class Misbehaving : public testing::TestWithParam<Misbehaviour> {};

TEST_P(Misbehaving, RequestsFailInTime) {
  const Misbehaviour& daemon = GetParam();
  Client client(daemon.script);
  for (Kind kind : daemon.requests) {
    const Clock::time_point start = Clock::now();
    ExpectFailed(client.ipc, kind, daemon.timing.timeoutMs);
    EXPECT_GE(MillisecondsSince(start), daemon.timing.fastestMs);
    EXPECT_LT(MillisecondsSince(start), daemon.timing.slowestMs);
  }
}

INSTANTIATE_NAMED_CASES(StreamMgrApi, Misbehaving, kMisbehaviours);

TEST(StreamMgrApi, WritingToADaemonThatHungUpDoesNotRaiseSigpipe) {
  // The daemon closes each connection as soon as it has one; the client's
  // write then meets a closed socket, which must be a failed request only.
  Client client(FD::HangingUp());
  Asked(client.ipc, "c", 2000);
  // The connection is gone now; a large request is written into nothing.
  for (int i = 0; i < 3; ++i) EXPECT_EQ(-1, Asked(client.ipc, std::string(1 << 20, 'x'), 2000));
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
  EXPECT_EQ(-1, Asked(client.ipc, "c", kShortTimeoutMs));
  EXPECT_EQ(2, Asked(client.ipc, "c"));
  EXPECT_EQ(2, client.daemon.Connections());
}

}  // namespace
}  // namespace HostIpc
