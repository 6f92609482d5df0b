// Row loaders. Columns are matched by name, case-insensitively, so the order
// of the table's columns does not matter; unknown columns are ignored, and a
// NULL or missing column leaves its member at 0 or "".
#include "recorder/stream_db.h"

#include <strings.h>

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>

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

void LoadEventColumn(sqlite3_stmt* h, int i, const char* name, EventRecordItem& e) {
  if (Is(name, "reid")) {
    e.reid.SetValue(Text(h, i));
  } else if (Is(name, "state")) {
    e.state = static_cast<StreamMgrApi::EventState>(Bits32(h, i));
  } else if (Is(name, "splitstate")) {
    e.splitState = static_cast<StreamMgrApi::SplitEventState>(Bits32(h, i));
  } else if (Is(name, "streamstate")) {
    e.streamState.SetValue(Bits32(h, i) != 0);
  } else if (Is(name, "locked")) {
    e.locked.SetValue(Bits32(h, i) != 0);
  } else if (Is(name, "confirmed")) {
    e.confirmed.SetValue(Bits32(h, i) != 0);
  } else if (Is(name, "crcode1")) {
    e.crCode1 = static_cast<StreamMgrApi::CrCode>(Bits32(h, i));
  } else if (Is(name, "crcode2")) {
    e.crCode2 = static_cast<StreamMgrApi::CrCode>(Bits32(h, i));
  } else if (Is(name, "starttick")) {
    e.startTick.SetValue(Bits32(h, i));
  } else if (Is(name, "starttime")) {
    e.startTime.SetValue(static_cast<int32_t>(Bits32(h, i)));
  } else if (Is(name, "exporttime")) {
    e.exportTime.SetValue(static_cast<int32_t>(Bits32(h, i)));
  } else if (Is(name, "stoptick")) {
    e.stopTick.SetValue(Bits32(h, i));
  } else if (Is(name, "stoptime")) {
    e.stopTime.SetValue(static_cast<int32_t>(Bits32(h, i)));
  } else if (Is(name, "description")) {
    e.description.SetValue(Text(h, i));
  } else if (Is(name, "officerid")) {
    e.officer.id.SetValue(Bits32(h, i));
  } else if (Is(name, "officername")) {
    e.officer.name.SetValue(Text(h, i));
  } else if (Is(name, "category")) {
    e.category.SetValue(Text(h, i));
  } else if (Is(name, "vehicle")) {
    e.vehicle.name.SetValue(Text(h, i));
  } else if (Is(name, "flagged")) {
    e.flagged.SetValue(Bits32(h, i) != 0);
  } else if (Is(name, "background")) {
    e.background.SetValue(Bits32(h, i) != 0);
  } else if (Is(name, "totalfiles")) {
    e.totalFiles.SetValue(Bits32(h, i));
  } else if (Is(name, "groupid")) {
    e.groupId.SetValue(Text(h, i));
  } else if (Is(name, "part")) {
    e.part.SetValue(Bits32(h, i));
  } else if (Is(name, "totalparts")) {
    e.totalParts.SetValue(Bits32(h, i));
  } else if (Is(name, "answers")) {
    LoadAnswers(Text(h, i), e.answers);
  }
}

void LoadFileColumn(sqlite3_stmt* h, int i, const char* name, StreamfileRecordItem& f) {
  if (Is(name, "number")) {
    f.number.SetValue(Bits32(h, i));
  } else if (Is(name, "stream")) {
    f.stream.SetValue(Bits32(h, i));
  } else if (Is(name, "state")) {
    f.state = static_cast<StreamMgrApi::StreamFileState>(Bits32(h, i));
  } else if (Is(name, "starttick")) {
    f.startTick.SetValue(Bits32(h, i));
  } else if (Is(name, "stoptick")) {
    f.stopTick.SetValue(Bits32(h, i));
  } else if (Is(name, "starttime")) {
    f.startTime.SetValue(Bits32(h, i));
  } else if (Is(name, "stoptime")) {
    f.stopTime.SetValue(Bits32(h, i));
  } else if (Is(name, "previous")) {
    f.previous.SetValue(Bits32(h, i));
  } else if (Is(name, "next")) {
    f.next.SetValue(Bits32(h, i));
  } else if (Is(name, "size")) {
    f.size.SetValue(Bits32(h, i));
  } else if (Is(name, "type")) {
    f.type = static_cast<StreamMgrApi::StreamFileType>(Bits32(h, i));
  }
}

}  // namespace

namespace StreamDB {

StreamMgrApi::EventRecordItem LoadEventInfoFromStatement(SQLStatement& statement) {
  EventRecordItem event;
  const int columns = sqlite3_column_count(statement.handle);
  for (int i = 0; i < columns; ++i) {
    const char* name = sqlite3_column_name(statement.handle, i);
    if (name != nullptr) {
      LoadEventColumn(statement.handle, i, name, event);
    }
  }
  return event;
}

StreamMgrApi::StreamfileRecordItem LoadFileInfoFromStatement(SQLStatement& statement) {
  StreamfileRecordItem file;
  const int columns = sqlite3_column_count(statement.handle);
  for (int i = 0; i < columns; ++i) {
    const char* name = sqlite3_column_name(statement.handle, i);
    if (name != nullptr) {
      LoadFileColumn(statement.handle, i, name, file);
    }
  }
  return file;
}

}  // namespace StreamDB
