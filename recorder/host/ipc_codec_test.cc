#include "recorder/host/ipc_codec.h"

#include <gtest/gtest.h>

namespace HostIpc {
namespace {

using StreamMgrApi::EventRecordItem;
using StreamMgrApi::StreamfileRecordItem;

// An event whose every member differs from its default and from the others.
EventRecordItem FullEvent(const std::string& reid) {
  EventRecordItem e;
  e.reid = reid;
  e.state = StreamMgrApi::EVENT_IN_POST;
  e.splitState = static_cast<StreamMgrApi::SplitEventState>(4294967295u);
  e.streamState = true;
  e.locked = true;
  e.confirmed = true;
  e.crCode1 = StreamMgrApi::CR_CODE_K;
  e.crCode2 = StreamMgrApi::CR_CODE_A;
  e.startTick = 4000000000u;
  e.startTime = -5;
  e.exportTime = 2147483647;
  e.stopTick = 12;
  e.stopTime = -2147483647 - 1;
  e.description = std::string("descr\0iption", 12);
  e.officer.id = 13;
  e.officer.name = std::string("name");
  e.officer.badge = std::string("badge");
  e.officer.supervisor = true;
  e.officer.password = std::string("pw");
  e.officer.preferences.camera = 14;
  e.officer.preferences.display = 15;
  e.officer.preferences.audio = true;
  e.officer.preferences.microphone = true;
  e.officer.preferences.screenSaver = 16;
  e.officer.language = 65535;
  e.officer.unit = std::string("unit");
  e.category = std::string("category");
  e.vehicle.name = std::string("vehicle \xc3\xa9");
  e.flagged = true;
  e.background = true;
  e.totalFiles = 17;
  e.groupId = std::string("group");
  e.part = 18;
  e.totalParts = 19;
  StreamMgrApi::EventAnswerItem first, second;
  first.question = std::string("Q1");
  first.answer = std::string("A1");
  second.question = std::string("");
  second.answer = std::string("A2");
  e.answers.entries = {first, second};
  return e;
}

void ExpectSameEvent(const EventRecordItem& a, const EventRecordItem& b) {
  EXPECT_EQ(a.reid.GetValue(), b.reid.GetValue());
  EXPECT_EQ(a.state, b.state);
  EXPECT_EQ(a.splitState, b.splitState);
  EXPECT_EQ(a.streamState.GetValue(), b.streamState.GetValue());
  EXPECT_EQ(a.locked.GetValue(), b.locked.GetValue());
  EXPECT_EQ(a.confirmed.GetValue(), b.confirmed.GetValue());
  EXPECT_EQ(a.crCode1, b.crCode1);
  EXPECT_EQ(a.crCode2, b.crCode2);
  EXPECT_EQ(a.startTick.GetValue(), b.startTick.GetValue());
  EXPECT_EQ(a.startTime.GetValue(), b.startTime.GetValue());
  EXPECT_EQ(a.exportTime.GetValue(), b.exportTime.GetValue());
  EXPECT_EQ(a.stopTick.GetValue(), b.stopTick.GetValue());
  EXPECT_EQ(a.stopTime.GetValue(), b.stopTime.GetValue());
  EXPECT_EQ(a.description.GetValue(), b.description.GetValue());
  EXPECT_EQ(a.officer.id.GetValue(), b.officer.id.GetValue());
  EXPECT_EQ(a.officer.name.GetValue(), b.officer.name.GetValue());
  EXPECT_EQ(a.officer.badge.GetValue(), b.officer.badge.GetValue());
  EXPECT_EQ(a.officer.supervisor.GetValue(), b.officer.supervisor.GetValue());
  EXPECT_EQ(a.officer.password.GetValue(), b.officer.password.GetValue());
  EXPECT_EQ(a.officer.preferences.camera.GetValue(), b.officer.preferences.camera.GetValue());
  EXPECT_EQ(a.officer.preferences.display.GetValue(), b.officer.preferences.display.GetValue());
  EXPECT_EQ(a.officer.preferences.audio.GetValue(), b.officer.preferences.audio.GetValue());
  EXPECT_EQ(a.officer.preferences.microphone.GetValue(),
            b.officer.preferences.microphone.GetValue());
  EXPECT_EQ(a.officer.preferences.screenSaver.GetValue(),
            b.officer.preferences.screenSaver.GetValue());
  EXPECT_EQ(a.officer.language.GetValue(), b.officer.language.GetValue());
  EXPECT_EQ(a.officer.unit.GetValue(), b.officer.unit.GetValue());
  EXPECT_EQ(a.category.GetValue(), b.category.GetValue());
  EXPECT_EQ(a.vehicle.name.GetValue(), b.vehicle.name.GetValue());
  EXPECT_EQ(a.flagged.GetValue(), b.flagged.GetValue());
  EXPECT_EQ(a.background.GetValue(), b.background.GetValue());
  EXPECT_EQ(a.totalFiles.GetValue(), b.totalFiles.GetValue());
  EXPECT_EQ(a.groupId.GetValue(), b.groupId.GetValue());
  EXPECT_EQ(a.part.GetValue(), b.part.GetValue());
  EXPECT_EQ(a.totalParts.GetValue(), b.totalParts.GetValue());
  ASSERT_EQ(a.answers.entries.size(), b.answers.entries.size());
  for (size_t i = 0; i < a.answers.entries.size(); ++i) {
    EXPECT_EQ(a.answers.entries[i].question.GetValue(), b.answers.entries[i].question.GetValue());
    EXPECT_EQ(a.answers.entries[i].answer.GetValue(), b.answers.entries[i].answer.GetValue());
  }
}

StreamfileRecordItem FullFile(uint32_t number) {
  StreamfileRecordItem f;
  f.number = number;
  f.stream = 2;
  f.state = StreamMgrApi::FILE_USED_KEEP;
  f.startTick = 3;
  f.stopTick = 4;
  f.startTime = 4294967295u;
  f.stopTime = 6;
  f.previous = 7;
  f.next = 8;
  f.size = 98566144;
  f.type = static_cast<StreamMgrApi::StreamFileType>(4294967295u);
  return f;
}

void ExpectSameFile(const StreamfileRecordItem& a, const StreamfileRecordItem& b) {
  EXPECT_EQ(a.number.GetValue(), b.number.GetValue());
  EXPECT_EQ(a.stream.GetValue(), b.stream.GetValue());
  EXPECT_EQ(a.state, b.state);
  EXPECT_EQ(a.startTick.GetValue(), b.startTick.GetValue());
  EXPECT_EQ(a.stopTick.GetValue(), b.stopTick.GetValue());
  EXPECT_EQ(a.startTime.GetValue(), b.startTime.GetValue());
  EXPECT_EQ(a.stopTime.GetValue(), b.stopTime.GetValue());
  EXPECT_EQ(a.previous.GetValue(), b.previous.GetValue());
  EXPECT_EQ(a.next.GetValue(), b.next.GetValue());
  EXPECT_EQ(a.size.GetValue(), b.size.GetValue());
  EXPECT_EQ(a.type, b.type);
}

TEST(IpcCodec, EventsAnswerCarriesEveryMemberInOrder) {
  const std::vector<EventRecordItem> sent = {FullEvent("first"), EventRecordItem(),
                                             FullEvent("third")};
  std::vector<EventRecordItem> received;
  ASSERT_TRUE(DecodeEventsAnswer(EventsAnswer(sent), received));
  ASSERT_EQ(3u, received.size());
  for (size_t i = 0; i < sent.size(); ++i) {
    SCOPED_TRACE(i);
    ExpectSameEvent(sent[i], received[i]);
  }
}

TEST(IpcCodec, FilesAnswerCarriesEveryMemberInOrder) {
  const std::vector<StreamfileRecordItem> sent = {FullFile(1), StreamfileRecordItem(),
                                                  FullFile(4294967295u)};
  std::vector<StreamfileRecordItem> received;
  ASSERT_TRUE(DecodeFilesAnswer(FilesAnswer(sent), received));
  ASSERT_EQ(3u, received.size());
  for (size_t i = 0; i < sent.size(); ++i) {
    SCOPED_TRACE(i);
    ExpectSameFile(sent[i], received[i]);
  }
}

TEST(IpcCodec, EmptyListsDecodeAsEmpty) {
  std::vector<EventRecordItem> events = {EventRecordItem()};
  ASSERT_TRUE(DecodeEventsAnswer(EventsAnswer({}), events));
  EXPECT_TRUE(events.empty());
  std::vector<StreamfileRecordItem> files = {StreamfileRecordItem()};
  ASSERT_TRUE(DecodeFilesAnswer(FilesAnswer({}), files));
  EXPECT_TRUE(files.empty());
}

TEST(IpcCodec, OneValueAnswersRoundTrip) {
  uint32_t count = 0, size = 0;
  bool deleted = false;
  VideoRecordingSettings settings;
  EXPECT_TRUE(DecodeCountAnswer(CountAnswer(4294967295u), count));
  EXPECT_EQ(4294967295u, count);
  EXPECT_TRUE(DecodeDeleteAnswer(DeleteAnswer(true), deleted));
  EXPECT_TRUE(deleted);
  EXPECT_TRUE(DecodeDeleteAnswer(DeleteAnswer(false), deleted));
  EXPECT_FALSE(deleted);
  EXPECT_TRUE(DecodeLiveSizeAnswer(LiveSizeAnswer(123456789), size));
  EXPECT_EQ(123456789u, size);
  VideoRecordingSettings sent;
  sent.preEventSeconds = 1;
  sent.postEventSeconds = 2;
  sent.reExportHours = 4294967295u;
  ASSERT_TRUE(DecodeSettingsAnswer(SettingsAnswer(sent), settings));
  EXPECT_EQ(1u, settings.preEventSeconds);
  EXPECT_EQ(2u, settings.postEventSeconds);
  EXPECT_EQ(4294967295u, settings.reExportHours);
}

TEST(IpcCodec, RequestsCarryTheirKindAndText) {
  for (Kind kind : {kEvents, kFiles, kCount, kDelete}) {
    const std::string request = TextRequest(kind, "select 1; drop table x");
    WireReader reader(request);
    Kind read = kSettings;
    std::string text;
    ASSERT_TRUE(ReadRequestHeader(reader, read));
    EXPECT_EQ(kind, read);
    ASSERT_TRUE(reader.String(text));
    EXPECT_EQ("select 1; drop table x", text);
    EXPECT_TRUE(reader.Finished());
  }
  const std::string liveRequest = LiveSizeRequest(77);
  WireReader live(liveRequest);
  Kind kind = kEvents;
  uint32_t number = 0;
  ASSERT_TRUE(ReadRequestHeader(live, kind) && live.U32(number));
  EXPECT_EQ(kLiveSize, kind);
  EXPECT_EQ(77u, number);
  const std::string settingsRequest = SettingsRequest();
  WireReader settings(settingsRequest);
  ASSERT_TRUE(ReadRequestHeader(settings, kind));
  EXPECT_EQ(kSettings, kind);
  EXPECT_TRUE(settings.Finished());
}

TEST(IpcCodec, RequestOfAnotherVersionOrUnknownKindIsRefused) {
  Kind kind = kEvents;
  std::string request = TextRequest(kCount, "x");
  request[0] = static_cast<char>(kVersion + 1);
  WireReader otherVersion(request);
  EXPECT_FALSE(ReadRequestHeader(otherVersion, kind));
  for (const char byte : {'\0', '\x07', '\xff'}) {
    const std::string unknown = {static_cast<char>(kVersion), byte};
    WireReader reader(unknown);
    EXPECT_FALSE(ReadRequestHeader(reader, kind));
  }
  const std::string nothing;
  WireReader empty(nothing);
  EXPECT_FALSE(ReadRequestHeader(empty, kind));
}

// Every answer the client decodes, with a function that decodes one body
// and says whether it was accepted, leaving a sentinel output untouched otherwise.
struct AnswerCase {
  const char* name;
  Kind kind;
  std::string good;
  bool (*accepts)(const std::string& body);
};

void PrintTo(const AnswerCase& answer, std::ostream* out) { *out << answer.name; }

bool AcceptsEvents(const std::string& body) {
  std::vector<EventRecordItem> events = {FullEvent("sentinel")};
  const bool ok = DecodeEventsAnswer(body, events);
  if (!ok) {
    EXPECT_EQ(1u, events.size());
  }
  return ok;
}
bool AcceptsFiles(const std::string& body) {
  std::vector<StreamfileRecordItem> files = {FullFile(99)};
  const bool ok = DecodeFilesAnswer(body, files);
  if (!ok) {
    EXPECT_EQ(1u, files.size());
  }
  return ok;
}
bool AcceptsCount(const std::string& body) {
  uint32_t count = 77;
  const bool ok = DecodeCountAnswer(body, count);
  if (!ok) {
    EXPECT_EQ(77u, count);
  }
  return ok;
}
bool AcceptsDelete(const std::string& body) {
  bool deleted = false;
  return DecodeDeleteAnswer(body, deleted);
}
bool AcceptsLiveSize(const std::string& body) {
  uint32_t size = 77;
  const bool ok = DecodeLiveSizeAnswer(body, size);
  if (!ok) {
    EXPECT_EQ(77u, size);
  }
  return ok;
}
bool AcceptsSettings(const std::string& body) {
  VideoRecordingSettings settings;
  settings.reExportHours = 77;
  const bool ok = DecodeSettingsAnswer(body, settings);
  if (!ok) {
    EXPECT_EQ(77u, settings.reExportHours);
  }
  return ok;
}

std::vector<AnswerCase> AnswerCases() {
  return {
      {"events", kEvents, EventsAnswer({FullEvent("a"), FullEvent("b")}), AcceptsEvents},
      {"files", kFiles, FilesAnswer({FullFile(1), FullFile(2)}), AcceptsFiles},
      {"count", kCount, CountAnswer(5), AcceptsCount},
      {"delete", kDelete, DeleteAnswer(true), AcceptsDelete},
      {"liveSize", kLiveSize, LiveSizeAnswer(5), AcceptsLiveSize},
      {"settings", kSettings, SettingsAnswer(VideoRecordingSettings()), AcceptsSettings},
  };
}

class AnswerDecoding : public testing::TestWithParam<AnswerCase> {};

TEST_P(AnswerDecoding, GoodAnswerIsAccepted) { EXPECT_TRUE(GetParam().accepts(GetParam().good)); }

TEST_P(AnswerDecoding, EveryTruncationIsRefused) {
  const std::string& good = GetParam().good;
  for (size_t length = 0; length < good.size(); ++length) {
    SCOPED_TRACE(length);
    EXPECT_FALSE(GetParam().accepts(good.substr(0, length)));
  }
}

TEST_P(AnswerDecoding, TrailingBytesAreRefused) {
  EXPECT_FALSE(GetParam().accepts(GetParam().good + '\0'));
}

TEST_P(AnswerDecoding, FailedAnswerIsRefused) {
  EXPECT_FALSE(GetParam().accepts(FailedAnswer(GetParam().kind)));
}

TEST_P(AnswerDecoding, MalformedAnswerIsRefused) {
  EXPECT_FALSE(GetParam().accepts(MalformedAnswer(GetParam().kind)));
}

TEST_P(AnswerDecoding, OtherVersionIsRefused) {
  std::string body = GetParam().good;
  body[0] = static_cast<char>(kVersion + 1);
  EXPECT_FALSE(GetParam().accepts(body));
}

TEST_P(AnswerDecoding, AnswerToAnotherKindIsRefused) {
  std::string body = GetParam().good;
  body[1] = static_cast<char>(GetParam().kind == kCount ? kDelete : kCount);
  EXPECT_FALSE(GetParam().accepts(body));
}

TEST_P(AnswerDecoding, UnknownStatusIsRefused) {
  std::string body = GetParam().good;
  body[2] = '\x02';
  EXPECT_FALSE(GetParam().accepts(body));
}

TEST_P(AnswerDecoding, TextIsRefused) {
  EXPECT_FALSE(GetParam().accepts("this is not an answer"));
  EXPECT_FALSE(GetParam().accepts(std::string(1000, '\xff')));
}

INSTANTIATE_TEST_SUITE_P(AllAnswers, AnswerDecoding, testing::ValuesIn(AnswerCases()),
                         [](const testing::TestParamInfo<AnswerCase>& info) {
                           return std::string(info.param.name);
                         });

TEST(IpcCodec, ListAnnouncingMoreRecordsThanItHoldsIsRefused) {
  WireWriter writer = StartAnswer(kFiles);
  writer.U32(4294967295u);
  EncodeFile(writer, FullFile(1));
  std::vector<StreamfileRecordItem> files;
  EXPECT_FALSE(DecodeFilesAnswer(writer.Bytes(), files));
  WireWriter events = StartAnswer(kEvents);
  events.U32(2);
  EncodeEvent(events, FullEvent("only one"));
  std::vector<EventRecordItem> received;
  EXPECT_FALSE(DecodeEventsAnswer(events.Bytes(), received));
}

TEST(IpcCodec, AnswersAnnouncingHugeInnerListsAreRefused) {
  // An event whose answers claim four billion entries.
  WireWriter writer = StartAnswer(kEvents);
  writer.U32(1);
  EncodeEvent(writer, EventRecordItem());
  std::string body = writer.Bytes();
  body.replace(body.size() - 4, 4, std::string("\xff\xff\xff\xff", 4));
  std::vector<EventRecordItem> events;
  EXPECT_FALSE(DecodeEventsAnswer(body, events));
}

TEST(IpcCodec, BooleanOtherThanZeroOrOneIsRefused) {
  std::string body = DeleteAnswer(true);
  body.back() = '\x02';
  bool deleted = false;
  EXPECT_FALSE(DecodeDeleteAnswer(body, deleted));
}

}  // namespace
}  // namespace HostIpc
