// Measures the record encoding of the host IPC against a JSON encoding of the
// same records (nlohmann-json), on pages of 1000 records: encode on the daemon
// side, decode on the client side. The numbers are quoted in PROTOCOL.md.
//
//   codec_bench [pages]   (default 200 pages, i.e. 200,000 records per kind)
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "recorder/host/ipc_codec.h"

namespace {

using nlohmann::json;
using StreamMgrApi::EventRecordItem;
using StreamMgrApi::StreamfileRecordItem;

constexpr int kPageRecords = 1000;

std::vector<StreamfileRecordItem> FilePage(int page) {
  std::vector<StreamfileRecordItem> files(kPageRecords);
  for (int i = 0; i < kPageRecords; ++i) {
    const uint32_t n = static_cast<uint32_t>(page * kPageRecords + i + 1);
    StreamfileRecordItem& f = files[static_cast<size_t>(i)];
    f.number = n;
    f.stream = n % 4;
    f.startTick = n * 100;
    f.stopTick = n * 100 + 99;
    f.startTime = 1704164645 + n;
    f.stopTime = 1704164745 + n;
    f.previous = n - 1;
    f.next = n + 1;
    f.size = 98566144;
  }
  return files;
}

std::vector<EventRecordItem> EventPage(int page) {
  std::vector<EventRecordItem> events(kPageRecords);
  for (int i = 0; i < kPageRecords; ++i) {
    EventRecordItem& e = events[static_cast<size_t>(i)];
    e.reid = "REID-" + std::to_string(page * kPageRecords + i);
    e.groupId = "GROUP-" + std::to_string(page);
    e.startTick = 1000;
    e.startTime = 1704164645;
    e.officer.name = std::string("Officer");
    e.vehicle.name = std::string("Car 54");
    StreamMgrApi::EventAnswerItem answer;
    answer.question = std::string("Q1");
    answer.answer = std::string("A1");
    e.answers.entries.push_back(answer);
  }
  return events;
}

// The JSON alternative: each record an array of its members in order.
template <typename... Values>
json Array(const Values&... values) {
  return json::array({json(values)...});
}

json FileToJson(const StreamfileRecordItem& f) {
  return json::array({f.number.GetValue(), f.stream.GetValue(), static_cast<uint32_t>(f.state),
                      f.startTick.GetValue(), f.stopTick.GetValue(), f.startTime.GetValue(),
                      f.stopTime.GetValue(), f.previous.GetValue(), f.next.GetValue(),
                      f.size.GetValue(), static_cast<uint32_t>(f.type)});
}

bool U32(const json& value, uint32_t& out) {
  if (!value.is_number_unsigned() || value.get<uint64_t>() > 0xffffffffu) return false;
  out = static_cast<uint32_t>(value.get<uint64_t>());
  return true;
}

bool FileFromJson(const json& value, StreamfileRecordItem& f) {
  if (!value.is_array() || value.size() != 11) return false;
  uint32_t v[11];
  for (size_t i = 0; i < 11; ++i) {
    if (!U32(value[i], v[i])) return false;
  }
  f.number = v[0];
  f.stream = v[1];
  f.state = static_cast<StreamMgrApi::StreamFileState>(v[2]);
  f.startTick = v[3];
  f.stopTick = v[4];
  f.startTime = v[5];
  f.stopTime = v[6];
  f.previous = v[7];
  f.next = v[8];
  f.size = v[9];
  f.type = static_cast<StreamMgrApi::StreamFileType>(v[10]);
  return true;
}

json EventToJson(const EventRecordItem& e) {
  json answers = json::array();
  for (const auto& a : e.answers.entries) {
    answers.push_back(json::array({a.question.GetValue(), a.answer.GetValue()}));
  }
  const Officer& o = e.officer;
  const Preferences& p = o.preferences;
  const json officer =
      json::array({o.id.GetValue(), o.name.GetValue(), o.badge.GetValue(), o.supervisor.GetValue(),
                   o.password.GetValue(),
                   json::array({p.camera.GetValue(), p.display.GetValue(), p.audio.GetValue(),
                                p.microphone.GetValue(), p.screenSaver.GetValue()}),
                   o.language.GetValue(), o.unit.GetValue()});
  return Array(e.reid.GetValue(), static_cast<uint32_t>(e.state),
               static_cast<uint32_t>(e.splitState), e.streamState.GetValue(), e.locked.GetValue(),
               e.confirmed.GetValue(), static_cast<uint32_t>(e.crCode1),
               static_cast<uint32_t>(e.crCode2), e.startTick.GetValue(), e.startTime.GetValue(),
               e.exportTime.GetValue(), e.stopTick.GetValue(), e.stopTime.GetValue(),
               e.description.GetValue(), officer, e.category.GetValue(), e.vehicle.name.GetValue(),
               e.flagged.GetValue(), e.background.GetValue(), e.totalFiles.GetValue(),
               e.groupId.GetValue(), e.part.GetValue(), e.totalParts.GetValue(), answers);
}

// Reads back the members db uses and checks the shape of the rest, as a
// client must before it trusts an answer.
bool EventFromJson(const json& v, EventRecordItem& e) {
  if (!v.is_array() || v.size() != 24 || !v[0].is_string() || !v[20].is_string() ||
      !v[14].is_array() || !v[23].is_array()) {
    return false;
  }
  uint32_t state = 0, split = 0, tick = 0, part = 0, total = 0;
  if (!U32(v[1], state) || !U32(v[2], split) || !U32(v[8], tick) || !U32(v[21], part) ||
      !U32(v[22], total) || !v[9].is_number_integer()) {
    return false;
  }
  e.reid = v[0].get<std::string>();
  e.state = static_cast<StreamMgrApi::EventState>(state);
  e.splitState = static_cast<StreamMgrApi::SplitEventState>(split);
  e.startTick = tick;
  e.startTime = v[9].get<int32_t>();
  e.groupId = v[20].get<std::string>();
  e.part = part;
  e.totalParts = total;
  for (const json& pair : v[23]) {
    if (!pair.is_array() || pair.size() != 2 || !pair[0].is_string() || !pair[1].is_string()) {
      return false;
    }
    StreamMgrApi::EventAnswerItem answer;
    answer.question = pair[0].get<std::string>();
    answer.answer = pair[1].get<std::string>();
    e.answers.entries.push_back(answer);
  }
  return true;
}

template <typename Record, typename ToJson, typename FromJson>
bool JsonRoundTrip(const std::vector<Record>& page, ToJson toJson, FromJson fromJson,
                   size_t& bytes) {
  json list = json::array();
  for (const Record& record : page) list.push_back(toJson(record));
  const std::string text = list.dump();
  bytes += text.size();
  const json parsed = json::parse(text, nullptr, false);
  if (!parsed.is_array()) return false;
  std::vector<Record> decoded(parsed.size());
  for (size_t i = 0; i < parsed.size(); ++i) {
    if (!fromJson(parsed[i], decoded[i])) return false;
  }
  return decoded.size() == page.size();
}

template <typename Run>
void Time(const char* name, int pages, Run run) {
  size_t bytes = 0;
  // Processor time is what the encoding costs; the wall clock adds the load
  // of whatever else runs on the machine.
  const std::clock_t startCpu = std::clock();
  const auto start = std::chrono::steady_clock::now();
  bool ok = true;
  for (int page = 0; page < pages; ++page) ok = run(page, bytes) && ok;
  const double cpu = 1000.0 * static_cast<double>(std::clock() - startCpu) / CLOCKS_PER_SEC;
  const double wall =
      std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
  std::printf(
      "%-14s %4d pages  %7.1f ms cpu  %7.1f ms wall  %6.3f ms cpu/page  %6zu bytes/page%s\n", name,
      pages, cpu, wall, cpu / pages, bytes / static_cast<size_t>(pages), ok ? "" : "  FAILED");
}

// Times the binary encoding of `pages`, then the JSON one.
template <typename Record, typename Answer, typename Decode, typename ToJson, typename FromJson>
void Compare(const std::string& kind, const std::vector<std::vector<Record>>& pages, Answer answer,
             Decode decode, ToJson toJson, FromJson fromJson) {
  const int count = static_cast<int>(pages.size());
  Time((kind + " binary").c_str(), count, [&](int page, size_t& bytes) {
    const std::string body = answer(pages[static_cast<size_t>(page)]);
    bytes += body.size();
    std::vector<Record> decoded;
    return decode(body, decoded) && decoded.size() == kPageRecords;
  });
  Time((kind + " json").c_str(), count, [&](int page, size_t& bytes) {
    return JsonRoundTrip(pages[static_cast<size_t>(page)], toJson, fromJson, bytes);
  });
}

}  // namespace

int main(int argc, char** argv) {
  const int pages = argc > 1 ? std::atoi(argv[1]) : 200;
  if (pages <= 0) return 2;
  std::vector<std::vector<StreamfileRecordItem>> files;
  std::vector<std::vector<EventRecordItem>> events;
  for (int page = 0; page < pages; ++page) {
    files.push_back(FilePage(page));
    events.push_back(EventPage(page));
  }
  Compare("files", files, HostIpc::FilesAnswer, HostIpc::DecodeFilesAnswer, FileToJson,
          FileFromJson);
  Compare("events", events, HostIpc::EventsAnswer, HostIpc::DecodeEventsAnswer, EventToJson,
          EventFromJson);
  return 0;
}
