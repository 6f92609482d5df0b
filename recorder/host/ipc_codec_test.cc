#include "recorder/host/ipc_codec.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include "testing/sim_named_cases.h"

namespace HostIpc {
namespace {

using namespace StreamMgrApi;
using namespace std::string_literals;

// Every member of a record, in the order of the encoding.
auto Fields(EventRecordItem& e) {
  Officer& o = e.officer;
  Preferences& p = o.preferences;
  return std::tie(e.reid, e.state, e.splitState, e.streamState, e.locked, e.confirmed, e.crCode1,
                  e.crCode2, e.startTick, e.startTime, e.exportTime, e.stopTick, e.stopTime,
                  e.description, o.id, o.name, o.badge, o.supervisor, o.password, p.camera,
                  p.display, p.audio, p.microphone, p.screenSaver, o.language, o.unit, e.category,
                  e.vehicle.name, e.flagged, e.background, e.totalFiles, e.groupId, e.part,
                  e.totalParts, e.answers.entries);
}

auto Fields(StreamfileRecordItem& f) {
  return std::tie(f.number, f.stream, f.state, f.startTick, f.stopTick, f.startTime, f.stopTime,
                  f.previous, f.next, f.size, f.type);
}

template <typename Member>
auto Value(const Member& member) {
  if constexpr (std::is_enum_v<Member>) {
    return member;
  } else {
    return member.GetValue();
  }
}

auto Value(const std::vector<EventAnswerItem>& answers) {
  std::vector<std::pair<std::string, std::string>> values;
  for (const auto& a : answers) values.emplace_back(a.question.GetValue(), a.answer.GetValue());
  return values;
}

// Every member of a record as one value.
template <typename Record>
auto Members(Record record) {
  return std::apply([](const auto&... m) { return std::make_tuple(Value(m)...); }, Fields(record));
}

// An event whose every member differs from its default.
EventRecordItem FullEvent(const std::string& reid) {
  EventRecordItem e;
  Fields(e) = std::make_tuple(
      reid, EVENT_IN_POST, static_cast<SplitEventState>(4294967295u), true, true, true, CR_CODE_K,
      CR_CODE_A, 4000000000u, -5, 2147483647, 12u, -2147483647 - 1, "descr\0iption"s, 13u, "name"s,
      "badge"s, true, "pw"s, 14u, 15u, true, true, 16u, uint16_t{65535}, "unit"s, "category"s,
      "vehicle \xc3\xa9"s, true, true, 17u, "group"s, 18u, 19u, std::vector<EventAnswerItem>(2));
  e.answers.entries[0].question = "Q1"s;
  e.answers.entries[0].answer = "A1"s;
  e.answers.entries[1].answer = "A2"s;
  return e;
}

StreamfileRecordItem FullFile(uint32_t number) {
  StreamfileRecordItem f;
  Fields(f) = std::make_tuple(number, 2u, FILE_USED_KEEP, 3u, 4u, 4294967295u, 6u, 7u, 8u,
                              98566144u, static_cast<StreamFileType>(4294967295u));
  return f;
}

// What `decode` makes of `body`, starting from `out`; the decoding must succeed.
template <typename Out>
Out Decoded(bool (*decode)(const std::string&, Out&), const std::string& body, Out out = Out()) {
  EXPECT_TRUE(decode(body, out));
  return out;
}

template <typename Record>
void ExpectSameRecords(const std::vector<Record>& sent, const std::vector<Record>& received) {
  ASSERT_EQ(sent.size(), received.size());
  for (size_t i = 0; i < sent.size(); ++i) {
    EXPECT_EQ(Members(sent[i]), Members(received[i])) << i;
  }
}

TEST(IpcCodec, EventsAnswerCarriesEveryMemberInOrder) {
  const std::vector<EventRecordItem> sent = {FullEvent("first"), {}, FullEvent("third")};
  ExpectSameRecords(sent, Decoded(DecodeEventsAnswer, EventsAnswer(sent)));
}

TEST(IpcCodec, FilesAnswerCarriesEveryMemberInOrder) {
  const std::vector<StreamfileRecordItem> sent = {FullFile(1), {}, FullFile(4294967295u)};
  ExpectSameRecords(sent, Decoded(DecodeFilesAnswer, FilesAnswer(sent)));
}

TEST(IpcCodec, EmptyListsDecodeAsEmpty) {
  EXPECT_TRUE(Decoded(DecodeEventsAnswer, EventsAnswer({}), {EventRecordItem()}).empty());
  EXPECT_TRUE(Decoded(DecodeFilesAnswer, FilesAnswer({}), {StreamfileRecordItem()}).empty());
}

TEST(IpcCodec, OneValueAnswersRoundTrip) {
  EXPECT_EQ(4294967295u, Decoded(DecodeCountAnswer, CountAnswer(4294967295u)));
  EXPECT_TRUE(Decoded(DecodeDeleteAnswer, DeleteAnswer(true), false));
  EXPECT_FALSE(Decoded(DecodeDeleteAnswer, DeleteAnswer(false), true));
  EXPECT_EQ(123456789u, Decoded(DecodeLiveSizeAnswer, LiveSizeAnswer(123456789)));
  const VideoRecordingSettings s =
      Decoded(DecodeSettingsAnswer, SettingsAnswer({1, 2, 4294967295u}));
  EXPECT_EQ(std::make_tuple(1u, 2u, 4294967295u),
            std::make_tuple(s.preEventSeconds, s.postEventSeconds, s.reExportHours));
}

// The kind a request announces, and the bytes after its header.
std::pair<Kind, std::string> Parts(const std::string& request) {
  WireReader reader(request);
  Kind kind = kEvents;
  EXPECT_TRUE(ReadRequestHeader(reader, kind));
  return {kind, request.substr(request.size() - reader.Remaining())};
}

TEST(IpcCodec, RequestsCarryTheirKindAndText) {
  WireWriter text, number;
  text.String("select 1; drop table x");
  number.U32(77);
  for (Kind kind : {kEvents, kFiles, kCount, kDelete}) {
    EXPECT_EQ(std::make_pair(kind, text.Bytes()),
              Parts(TextRequest(kind, "select 1; drop table x")));
  }
  EXPECT_EQ(std::make_pair(kLiveSize, number.Bytes()), Parts(LiveSizeRequest(77)));
  EXPECT_EQ(std::make_pair(kSettings, std::string()), Parts(SettingsRequest()));
}

TEST(IpcCodec, RequestOfAnotherVersionOrUnknownKindIsRefused) {
  std::string otherVersion = TextRequest(kCount, "x");
  otherVersion[0] = static_cast<char>(kVersion + 1);
  const char version = static_cast<char>(kVersion);
  for (const std::string& request :
       {otherVersion, {version, '\0'}, {version, '\x07'}, {version, '\xff'}, std::string()}) {
    WireReader reader(request);
    Kind kind = kEvents;
    EXPECT_FALSE(ReadRequestHeader(reader, kind)) << testing::PrintToString(request);
  }
}

// What a decoder's output tells of it, for seeing that a refusal left it alone.
size_t Mark(const std::vector<EventRecordItem>& events) { return events.size(); }
size_t Mark(const std::vector<StreamfileRecordItem>& files) { return files.size(); }
uint32_t Mark(uint32_t value) { return value; }
uint32_t Mark(const VideoRecordingSettings& settings) { return settings.reExportHours; }

template <typename Out>
bool Decodes(bool (*decode)(const std::string&, Out&), Out sentinel, const std::string& body) {
  Out out = sentinel;
  if (decode(body, out)) return true;
  EXPECT_EQ(Mark(sentinel), Mark(out)) << "a refused answer changed the output";
  return false;
}

// Whether the client accepts `body` as the answer to a request of `kind`.
bool Accepts(Kind kind, const std::string& body) {
  return kind == kEvents   ? Decodes(DecodeEventsAnswer, std::vector{FullEvent("sentinel")}, body)
         : kind == kFiles  ? Decodes(DecodeFilesAnswer, std::vector{FullFile(99)}, body)
         : kind == kCount  ? Decodes(DecodeCountAnswer, 77u, body)
         : kind == kDelete ? Decodes(DecodeDeleteAnswer, false, body)
         : kind == kLiveSize
             ? Decodes(DecodeLiveSizeAnswer, 77u, body)
             : Decodes(DecodeSettingsAnswer, VideoRecordingSettings{0, 0, 77}, body);
}

// Answers to a request of `kind`.
struct AnswerCase {
  std::string name;
  Kind kind;
  std::vector<std::string> bodies;
};

// A good answer of every kind the client decodes.
std::vector<AnswerCase> GoodAnswers() {
  return {
      {"events", kEvents, {EventsAnswer({FullEvent("a"), FullEvent("b")})}},
      {"files", kFiles, {FilesAnswer({FullFile(1), FullFile(2)})}},
      {"count", kCount, {CountAnswer(5)}},
      {"delete", kDelete, {DeleteAnswer(true)}},
      {"liveSize", kLiveSize, {LiveSizeAnswer(5)}},
      {"settings", kSettings, {SettingsAnswer(VideoRecordingSettings())}},
  };
}

std::string With(std::string body, size_t at, char byte) {
  body[at] = byte;
  return body;
}

// `answer` announcing `count` records, whatever it holds.
std::string Announcing(std::string answer, uint32_t count) {
  WireWriter writer;
  writer.U32(count);
  return answer.replace(3, 4, writer.Bytes());
}

// Every good answer spoiled in every way, and answers whose header is good
// but whose payload lies about itself.
std::vector<AnswerCase> BadAnswers() {
  std::vector<AnswerCase> bad;
  const auto add = [&bad](std::string name, Kind kind, std::vector<std::string> bodies) {
    bad.push_back({std::move(name), kind, std::move(bodies)});
  };
  for (const AnswerCase& a : GoodAnswers()) {
    const std::string& good = a.bodies[0];
    const auto spoilt = [&](const char* how, std::vector<std::string> bodies) {
      add(std::string(how) + "_" + a.name, a.kind, std::move(bodies));
    };
    std::vector<std::string> cut;
    for (size_t length = 0; length < good.size(); ++length) cut.push_back(good.substr(0, length));
    spoilt("EveryTruncation", cut);
    spoilt("TrailingBytes", {good + '\0'});
    spoilt("FailedAnswer", {FailedAnswer(a.kind)});
    spoilt("MalformedAnswer", {MalformedAnswer(a.kind)});
    spoilt("OtherVersion", {With(good, 0, kVersion + 1)});
    spoilt("AnswerToAnotherKind", {With(good, 1, a.kind == kCount ? kDelete : kCount)});
    spoilt("UnknownStatus", {With(good, 2, 2)});
    spoilt("Text", {"this is not an answer", std::string(1000, '\xff')});
  }
  add("FilesAnnouncingMoreThanTheyHold", kFiles, {Announcing(FilesAnswer({FullFile(1)}), ~0u)});
  add("EventsAnnouncingMoreThanTheyHold", kEvents, {Announcing(EventsAnswer({FullEvent("")}), 2)});
  // An event whose answers claim four billion entries.
  std::string hugeAnswers = EventsAnswer({EventRecordItem()});
  add("AnswersAnnouncingHugeInnerLists", kEvents,
      {hugeAnswers.replace(hugeAnswers.size() - 4, 4, "\xff\xff\xff\xff")});
  add("BooleanOtherThanZeroOrOne", kDelete, {With(DeleteAnswer(true), 3, 2)});
  return bad;
}

class GoodAnswer : public testing::TestWithParam<AnswerCase> {};
class BadAnswer : public testing::TestWithParam<AnswerCase> {};

TEST_P(GoodAnswer, IsAccepted) { EXPECT_TRUE(Accepts(GetParam().kind, GetParam().bodies[0])); }

TEST_P(BadAnswer, IsRefused) {
  for (const std::string& body : GetParam().bodies) {
    EXPECT_FALSE(Accepts(GetParam().kind, body)) << testing::PrintToString(body);
  }
}

INSTANTIATE_NAMED_CASES(AllAnswers, GoodAnswer, GoodAnswers());
INSTANTIATE_NAMED_CASES(AllAnswers, BadAnswer, BadAnswers());

}  // namespace
}  // namespace HostIpc
