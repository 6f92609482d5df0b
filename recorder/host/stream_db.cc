// Row loaders. Columns are matched by name, case-insensitively, so the order
// of the table's columns does not matter; unknown columns are ignored, and a
// NULL or missing column leaves its member at 0 or "".
#include "recorder/stream_db.h"

#include <strings.h>

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "store/sql_statement.h"

namespace {

using StreamMgrApi::EventRecordItem;
using StreamMgrApi::StreamfileRecordItem;

// Integer columns are 32 bits wide in the recorder: wider values wrap.
uint32_t Bits32(sqlite3_stmt* handle, int column) {
  return static_cast<uint32_t>(sqlite3_column_int64(handle, column));
}

std::string Text(sqlite3_stmt* handle, int column) {
  const unsigned char* text = sqlite3_column_text(handle, column);
  if (text == nullptr) {
    return std::string();
  }
  return std::string(reinterpret_cast<const char*>(text),
                     static_cast<size_t>(sqlite3_column_bytes(handle, column)));
}

// An answer pair sits at depth 1 and its texts at depth 2; a little more is
// kept so that odd but shallow values still show.
constexpr int kMaxAnswerDepth = 8;

std::string JsonText(const nlohmann::json& value) {
  if (value.is_string()) {
    return value.get_ref<const std::string&>();
  }
  return value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

// The answers column holds a JSON array of [question, answer] pairs. Anything
// else (NULL, '', '[]', text that is not JSON) means no answers.
void LoadAnswers(const std::string& text, StreamMgrApi::VectorEventAnswerItem& answers) {
  // Most events have no answers (NULL or ''); that is not JSON, so it needs no parser.
  if (text.empty()) {
    return;
  }
  // Values nested deeper than an answer can be are dropped while parsing, so
  // hostile text cannot make the document deep enough to exhaust the stack
  // when a value is written back out as text.
  const nlohmann::json::parser_callback_t shallow = [](int depth, nlohmann::json::parse_event_t,
                                                       nlohmann::json&) {
    return depth <= kMaxAnswerDepth;
  };
  const nlohmann::json document = nlohmann::json::parse(text, shallow, false);
  if (!document.is_array()) {
    return;
  }
  for (const nlohmann::json& pair : document) {
    if (!pair.is_array() || pair.empty()) {
      continue;
    }
    StreamMgrApi::EventAnswerItem entry;
    entry.question.SetValue(JsonText(pair[0]));
    if (pair.size() > 1) {
      entry.answer.SetValue(JsonText(pair[1]));
    }
    answers.entries.push_back(entry);
  }
}

bool Is(const char* column, const char* name) { return strcasecmp(column, name) == 0; }

// The record member a column fills; kNone for a column that is ignored.
enum Member : uint8_t {
  kNone,
  kReid,
  kState,
  kSplitState,
  kStreamState,
  kLocked,
  kConfirmed,
  kCrCode1,
  kCrCode2,
  kStartTick,
  kStartTime,
  kExportTime,
  kStopTick,
  kStopTime,
  kDescription,
  kOfficerId,
  kOfficerName,
  kCategory,
  kVehicle,
  kFlagged,
  kBackground,
  kTotalFiles,
  kGroupId,
  kPart,
  kTotalParts,
  kAnswers,
  kNumber,
  kStream,
  kPrevious,
  kNext,
  kSize,
  kType,
};

struct Column {
  const char* name;
  Member member;
};

const Column kEventColumns[] = {
    {"reid", kReid},
    {"state", kState},
    {"splitstate", kSplitState},
    {"streamstate", kStreamState},
    {"locked", kLocked},
    {"confirmed", kConfirmed},
    {"crcode1", kCrCode1},
    {"crcode2", kCrCode2},
    {"starttick", kStartTick},
    {"starttime", kStartTime},
    {"exporttime", kExportTime},
    {"stoptick", kStopTick},
    {"stoptime", kStopTime},
    {"description", kDescription},
    {"officerid", kOfficerId},
    {"officername", kOfficerName},
    {"category", kCategory},
    {"vehicle", kVehicle},
    {"flagged", kFlagged},
    {"background", kBackground},
    {"totalfiles", kTotalFiles},
    {"groupid", kGroupId},
    {"part", kPart},
    {"totalparts", kTotalParts},
    {"answers", kAnswers},
};

const Column kFileColumns[] = {
    {"number", kNumber},       {"stream", kStream},     {"state", kState},
    {"starttick", kStartTick}, {"stoptick", kStopTick}, {"starttime", kStartTime},
    {"stoptime", kStopTime},   {"previous", kPrevious}, {"next", kNext},
    {"size", kSize},           {"type", kType},
};

template <size_t N>
Member MemberOf(const char* name, const Column (&columns)[N]) {
  for (const Column& column : columns) {
    if (Is(name, column.name)) return column.member;
  }
  return kNone;
}

// Which member each column of a statement fills. Matching names
// case-insensitively against the record's columns costs more than loading the
// row, so it is done once for a run of a statement and kept for its rows,
// whose columns cannot change. The statement's address alone does not tell
// it apart (SQLite may place a later statement where a finalised one was),
// so the map marks the run it was built for: SQLite counts the runs of each
// statement, starting every run of any statement (a new one, or this one
// run again, perhaps compiled afresh for a changed schema) by counting it,
// and the map sets that count to 0 once built. A count still 0 at the next
// row is the same run of the same statement. An EXPLAIN statement does not
// count its runs, so its columns are matched on every row.
class ColumnMap {
 public:
  template <size_t N>
  const std::vector<Member>& For(sqlite3_stmt* handle, const Column (&columns)[N]) {
    if (!built_ || handle != handle_ || handle == nullptr ||
        sqlite3_stmt_status(handle, SQLITE_STMTSTATUS_RUN, 0) != 0 ||
        sqlite3_stmt_isexplain(handle) != 0) {
      Rebuild(handle, columns);
      handle_ = handle;
      built_ = handle != nullptr;
      // Marks this run.
      if (built_) sqlite3_stmt_status(handle, SQLITE_STMTSTATUS_RUN, 1);
    }
    return members_;
  }

 private:
  template <size_t N>
  void Rebuild(sqlite3_stmt* handle, const Column (&columns)[N]) {
    members_.clear();
    const int count = handle == nullptr ? 0 : sqlite3_column_count(handle);
    for (int i = 0; i < count; ++i) {
      const char* name = sqlite3_column_name(handle, i);
      members_.push_back(name == nullptr ? kNone : MemberOf(name, columns));
    }
  }

  bool built_ = false;
  sqlite3_stmt* handle_ = nullptr;
  std::vector<Member> members_;
};

void LoadEventColumn(sqlite3_stmt* h, int i, Member member, EventRecordItem& e) {
  switch (member) {
    case kReid:
      e.reid.SetValue(Text(h, i));
      break;
    case kState:
      e.state = static_cast<StreamMgrApi::EventState>(Bits32(h, i));
      break;
    case kSplitState:
      e.splitState = static_cast<StreamMgrApi::SplitEventState>(Bits32(h, i));
      break;
    case kStreamState:
      e.streamState.SetValue(Bits32(h, i) != 0);
      break;
    case kLocked:
      e.locked.SetValue(Bits32(h, i) != 0);
      break;
    case kConfirmed:
      e.confirmed.SetValue(Bits32(h, i) != 0);
      break;
    case kCrCode1:
      e.crCode1 = static_cast<StreamMgrApi::CrCode>(Bits32(h, i));
      break;
    case kCrCode2:
      e.crCode2 = static_cast<StreamMgrApi::CrCode>(Bits32(h, i));
      break;
    case kStartTick:
      e.startTick.SetValue(Bits32(h, i));
      break;
    case kStartTime:
      e.startTime.SetValue(static_cast<int32_t>(Bits32(h, i)));
      break;
    case kExportTime:
      e.exportTime.SetValue(static_cast<int32_t>(Bits32(h, i)));
      break;
    case kStopTick:
      e.stopTick.SetValue(Bits32(h, i));
      break;
    case kStopTime:
      e.stopTime.SetValue(static_cast<int32_t>(Bits32(h, i)));
      break;
    case kDescription:
      e.description.SetValue(Text(h, i));
      break;
    case kOfficerId:
      e.officer.id.SetValue(Bits32(h, i));
      break;
    case kOfficerName:
      e.officer.name.SetValue(Text(h, i));
      break;
    case kCategory:
      e.category.SetValue(Text(h, i));
      break;
    case kVehicle:
      e.vehicle.name.SetValue(Text(h, i));
      break;
    case kFlagged:
      e.flagged.SetValue(Bits32(h, i) != 0);
      break;
    case kBackground:
      e.background.SetValue(Bits32(h, i) != 0);
      break;
    case kTotalFiles:
      e.totalFiles.SetValue(Bits32(h, i));
      break;
    case kGroupId:
      e.groupId.SetValue(Text(h, i));
      break;
    case kPart:
      e.part.SetValue(Bits32(h, i));
      break;
    case kTotalParts:
      e.totalParts.SetValue(Bits32(h, i));
      break;
    case kAnswers:
      LoadAnswers(Text(h, i), e.answers);
      break;
    default:
      break;
  }
}

void LoadFileColumn(sqlite3_stmt* h, int i, Member member, StreamfileRecordItem& f) {
  switch (member) {
    case kNumber:
      f.number.SetValue(Bits32(h, i));
      break;
    case kStream:
      f.stream.SetValue(Bits32(h, i));
      break;
    case kState:
      f.state = static_cast<StreamMgrApi::StreamFileState>(Bits32(h, i));
      break;
    case kStartTick:
      f.startTick.SetValue(Bits32(h, i));
      break;
    case kStopTick:
      f.stopTick.SetValue(Bits32(h, i));
      break;
    case kStartTime:
      f.startTime.SetValue(Bits32(h, i));
      break;
    case kStopTime:
      f.stopTime.SetValue(Bits32(h, i));
      break;
    case kPrevious:
      f.previous.SetValue(Bits32(h, i));
      break;
    case kNext:
      f.next.SetValue(Bits32(h, i));
      break;
    case kSize:
      f.size.SetValue(Bits32(h, i));
      break;
    case kType:
      f.type = static_cast<StreamMgrApi::StreamFileType>(Bits32(h, i));
      break;
    default:
      break;
  }
}

}  // namespace

namespace StreamDB {

StreamMgrApi::EventRecordItem LoadEventInfoFromStatement(SQLStatement& statement) {
  thread_local ColumnMap columns;
  EventRecordItem event;
  const std::vector<Member>& members = columns.For(statement.handle, kEventColumns);
  for (size_t i = 0; i < members.size(); ++i) {
    LoadEventColumn(statement.handle, static_cast<int>(i), members[i], event);
  }
  return event;
}

StreamMgrApi::StreamfileRecordItem LoadFileInfoFromStatement(SQLStatement& statement) {
  thread_local ColumnMap columns;
  StreamfileRecordItem file;
  const std::vector<Member>& members = columns.For(statement.handle, kFileColumns);
  for (size_t i = 0; i < members.size(); ++i) {
    LoadFileColumn(statement.handle, static_cast<int>(i), members[i], file);
  }
  return file;
}

}  // namespace StreamDB
