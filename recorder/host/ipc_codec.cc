#include "recorder/host/ipc_codec.h"

#include <type_traits>
#include <utility>

namespace HostIpc {

using StreamMgrApi::EventRecordItem;
using StreamMgrApi::StreamfileRecordItem;

namespace {

// One overload per value class, so the record layouts below read as lists.
void Put(WireWriter& w, const StringItem& v) { w.String(v.GetValue()); }
void Put(WireWriter& w, const IntItem& v) { w.I32(v.GetValue()); }
void Put(WireWriter& w, const UIntItem& v) { w.U32(v.GetValue()); }
void Put(WireWriter& w, const UShortItem& v) { w.U16(v.GetValue()); }
void Put(WireWriter& w, const BoolItem& v) { w.Bool(v.GetValue()); }
template <typename Enum, typename = std::enable_if_t<std::is_enum<Enum>::value>>
void Put(WireWriter& w, Enum v) {
  w.U32(static_cast<uint32_t>(v));
}

template <typename Wrapper, typename Value, typename Read>
bool GetValue(WireReader& r, Wrapper& v, Read read) {
  Value value{};
  if (!(r.*read)(value)) return false;
  v.SetValue(std::move(value));
  return true;
}
bool Get(WireReader& r, StringItem& v) {
  return GetValue<StringItem, std::string>(r, v, &WireReader::String);
}
bool Get(WireReader& r, IntItem& v) { return GetValue<IntItem, int32_t>(r, v, &WireReader::I32); }
bool Get(WireReader& r, UIntItem& v) {
  return GetValue<UIntItem, uint32_t>(r, v, &WireReader::U32);
}
bool Get(WireReader& r, UShortItem& v) {
  return GetValue<UShortItem, uint16_t>(r, v, &WireReader::U16);
}
bool Get(WireReader& r, BoolItem& v) { return GetValue<BoolItem, bool>(r, v, &WireReader::Bool); }
template <typename Enum, typename = std::enable_if_t<std::is_enum<Enum>::value>>
bool Get(WireReader& r, Enum& v) {
  uint32_t bits = 0;
  if (!r.U32(bits)) return false;
  v = static_cast<Enum>(bits);
  return true;
}

// The composite values, declared ahead so the lists below can name them.
void Put(WireWriter& w, const Preferences& p);
bool Get(WireReader& r, Preferences& p);
void Put(WireWriter& w, const Officer& o);
bool Get(WireReader& r, Officer& o);
void Put(WireWriter& w, const VehicleInfo& v);
bool Get(WireReader& r, VehicleInfo& v);
void Put(WireWriter& w, const StreamMgrApi::VectorEventAnswerItem& answers);
bool Get(WireReader& r, StreamMgrApi::VectorEventAnswerItem& answers);

// Writes or reads every listed member in order; `Get` stops at the first failure.
template <typename... Members>
void PutAll(WireWriter& w, const Members&... members) {
  (Put(w, members), ...);
}
template <typename... Members>
bool GetAll(WireReader& r, Members&... members) {
  return (Get(r, members) && ...);
}

void Put(WireWriter& w, const Preferences& p) {
  PutAll(w, p.camera, p.display, p.audio, p.microphone, p.screenSaver);
}
bool Get(WireReader& r, Preferences& p) {
  return GetAll(r, p.camera, p.display, p.audio, p.microphone, p.screenSaver);
}

void Put(WireWriter& w, const Officer& o) {
  PutAll(w, o.id, o.name, o.badge, o.supervisor, o.password, o.preferences, o.language, o.unit);
}
bool Get(WireReader& r, Officer& o) {
  return GetAll(r, o.id, o.name, o.badge, o.supervisor, o.password, o.preferences, o.language,
                o.unit);
}

void Put(WireWriter& w, const VehicleInfo& v) { Put(w, v.name); }
bool Get(WireReader& r, VehicleInfo& v) { return Get(r, v.name); }

void Put(WireWriter& w, const StreamMgrApi::VectorEventAnswerItem& answers) {
  w.U32(static_cast<uint32_t>(answers.entries.size()));
  for (const StreamMgrApi::EventAnswerItem& entry : answers.entries) {
    PutAll(w, entry.question, entry.answer);
  }
}
bool Get(WireReader& r, StreamMgrApi::VectorEventAnswerItem& answers) {
  uint32_t count = 0;
  if (!r.U32(count)) return false;
  answers.entries.clear();
  for (uint32_t i = 0; i < count; ++i) {
    StreamMgrApi::EventAnswerItem entry;
    if (!GetAll(r, entry.question, entry.answer)) return false;
    answers.entries.push_back(std::move(entry));
  }
  return true;
}

// Bytes of the smallest encoding of a record: a list announcing more records
// than its bytes can hold is malformed, and is refused before any allocation.
template <typename Record, typename Encode>
size_t SmallestEncoding(Encode encode) {
  WireWriter writer;
  encode(writer, Record());
  return writer.Bytes().size();
}

template <typename Record, typename Encode>
std::string ListAnswer(Kind kind, const std::vector<Record>& records, Encode encode) {
  WireWriter writer = StartAnswer(kind);
  writer.U32(static_cast<uint32_t>(records.size()));
  for (const Record& record : records) {
    encode(writer, record);
  }
  return std::move(writer.MutableBytes());
}

bool ReadAnswerHeader(WireReader& reader, Kind expected) {
  uint8_t version = 0, kind = 0, status = 0;
  return reader.U8(version) && reader.U8(kind) && reader.U8(status) && version == kVersion &&
         kind == expected && status == kOk;
}

template <typename Record, typename Encode, typename Decode>
bool DecodeList(const std::string& body, Kind kind, std::vector<Record>& records, Encode encode,
                Decode decode) {
  static const size_t smallest = SmallestEncoding<Record>(encode);
  WireReader reader(body);
  uint32_t count = 0;
  if (!ReadAnswerHeader(reader, kind) || !reader.U32(count) ||
      count > reader.Remaining() / smallest) {
    return false;
  }
  std::vector<Record> decoded(count);
  for (Record& record : decoded) {
    if (!decode(reader, record)) return false;
  }
  if (!reader.Finished()) return false;
  records = std::move(decoded);
  return true;
}

}  // namespace

void EncodeEvent(WireWriter& w, const EventRecordItem& e) {
  PutAll(w, e.reid, e.state, e.splitState, e.streamState, e.locked, e.confirmed, e.crCode1,
         e.crCode2, e.startTick, e.startTime, e.exportTime, e.stopTick, e.stopTime, e.description,
         e.officer, e.category, e.vehicle, e.flagged, e.background, e.totalFiles, e.groupId, e.part,
         e.totalParts, e.answers);
}

bool DecodeEvent(WireReader& r, EventRecordItem& e) {
  return GetAll(r, e.reid, e.state, e.splitState, e.streamState, e.locked, e.confirmed, e.crCode1,
                e.crCode2, e.startTick, e.startTime, e.exportTime, e.stopTick, e.stopTime,
                e.description, e.officer, e.category, e.vehicle, e.flagged, e.background,
                e.totalFiles, e.groupId, e.part, e.totalParts, e.answers);
}

void EncodeFile(WireWriter& w, const StreamfileRecordItem& f) {
  PutAll(w, f.number, f.stream, f.state, f.startTick, f.stopTick, f.startTime, f.stopTime,
         f.previous, f.next, f.size, f.type);
}

bool DecodeFile(WireReader& r, StreamfileRecordItem& f) {
  return GetAll(r, f.number, f.stream, f.state, f.startTick, f.stopTick, f.startTime, f.stopTime,
                f.previous, f.next, f.size, f.type);
}

namespace {

// The version and kind every message starts with.
WireWriter Header(Kind kind) {
  WireWriter writer;
  writer.U8(kVersion);
  writer.U8(kind);
  return writer;
}

WireWriter AnswerHeader(Kind kind, Status status) {
  WireWriter writer = Header(kind);
  writer.U8(status);
  return writer;
}

// The message begun in `writer`, ended with one value that `put` writes.
template <typename Put, typename Value>
std::string EndedWith(WireWriter writer, Put put, const Value& value) {
  (writer.*put)(value);
  return writer.Bytes();
}

}  // namespace

std::string TextRequest(Kind kind, const std::string& text) {
  return EndedWith(Header(kind), &WireWriter::String, text);
}

std::string LiveSizeRequest(uint32_t number) {
  return EndedWith(Header(kLiveSize), &WireWriter::U32, number);
}

std::string SettingsRequest() { return Header(kSettings).Bytes(); }

bool ReadRequestHeader(WireReader& reader, Kind& kind) {
  uint8_t version = 0, byte = 0;
  if (!reader.U8(version) || !reader.U8(byte) || version != kVersion || byte < kEvents ||
      byte > kSettings) {
    return false;
  }
  kind = static_cast<Kind>(byte);
  return true;
}

WireWriter StartAnswer(Kind kind) { return AnswerHeader(kind, kOk); }

std::string FailedAnswer(Kind kind) { return AnswerHeader(kind, kFailed).Bytes(); }

std::string EventsAnswer(const std::vector<EventRecordItem>& events) {
  return ListAnswer(kEvents, events, EncodeEvent);
}

std::string FilesAnswer(const std::vector<StreamfileRecordItem>& files) {
  return ListAnswer(kFiles, files, EncodeFile);
}

std::string CountAnswer(uint32_t count) {
  return EndedWith(StartAnswer(kCount), &WireWriter::U32, count);
}

std::string DeleteAnswer(bool deleted) {
  return EndedWith(StartAnswer(kDelete), &WireWriter::Bool, deleted);
}

std::string LiveSizeAnswer(uint32_t size) {
  return EndedWith(StartAnswer(kLiveSize), &WireWriter::U32, size);
}

std::string SettingsAnswer(const VideoRecordingSettings& settings) {
  WireWriter writer = StartAnswer(kSettings);
  writer.U32(settings.preEventSeconds);
  writer.U32(settings.postEventSeconds);
  writer.U32(settings.reExportHours);
  return writer.Bytes();
}

std::string MalformedAnswer(Kind kind) {
  // Too short for any value, and not a boolean either.
  WireWriter writer = StartAnswer(kind);
  writer.U8(0xff);
  writer.U8(0xff);
  writer.U8(0xff);
  return writer.Bytes();
}

bool DecodeEventsAnswer(const std::string& body, std::vector<EventRecordItem>& events) {
  return DecodeList(body, kEvents, events, EncodeEvent, DecodeEvent);
}

bool DecodeFilesAnswer(const std::string& body, std::vector<StreamfileRecordItem>& files) {
  return DecodeList(body, kFiles, files, EncodeFile, DecodeFile);
}

namespace {

// A one-value answer: the header, the value, and nothing after it.
template <typename Value, typename Read>
bool DecodeValue(const std::string& body, Kind kind, Value& out, Read read) {
  WireReader reader(body);
  Value value{};
  if (!ReadAnswerHeader(reader, kind) || !(reader.*read)(value) || !reader.Finished()) {
    return false;
  }
  out = value;
  return true;
}

}  // namespace

bool DecodeCountAnswer(const std::string& body, uint32_t& count) {
  return DecodeValue(body, kCount, count, &WireReader::U32);
}

bool DecodeDeleteAnswer(const std::string& body, bool& deleted) {
  return DecodeValue(body, kDelete, deleted, &WireReader::Bool);
}

bool DecodeLiveSizeAnswer(const std::string& body, uint32_t& size) {
  return DecodeValue(body, kLiveSize, size, &WireReader::U32);
}

bool DecodeSettingsAnswer(const std::string& body, VideoRecordingSettings& settings) {
  WireReader reader(body);
  VideoRecordingSettings read;
  if (!ReadAnswerHeader(reader, kSettings) || !reader.U32(read.preEventSeconds) ||
      !reader.U32(read.postEventSeconds) || !reader.U32(read.reExportHours) || !reader.Finished()) {
    return false;
  }
  settings = read;
  return true;
}

}  // namespace HostIpc
