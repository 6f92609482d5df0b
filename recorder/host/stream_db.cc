// Row loaders. Columns are matched by name, case-insensitively, so the order
// of the table's columns does not matter; unknown columns are ignored, and a
// NULL or missing column leaves its member at 0 or "".
#include "recorder/stream_db.h"

#include <strings.h>

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <type_traits>
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

// Each kind of member takes a column's value as the recorder's loaders do.
void Set(sqlite3_stmt* h, int i, StringItem& v) { v.SetValue(Text(h, i)); }
void Set(sqlite3_stmt* h, int i, UIntItem& v) { v.SetValue(Bits32(h, i)); }
void Set(sqlite3_stmt* h, int i, IntItem& v) { v.SetValue(static_cast<int32_t>(Bits32(h, i))); }
void Set(sqlite3_stmt* h, int i, BoolItem& v) { v.SetValue(Bits32(h, i) != 0); }
void Set(sqlite3_stmt* h, int i, StreamMgrApi::VectorEventAnswerItem& v) {
  LoadAnswers(Text(h, i), v);
}
template <typename Enum, typename = std::enable_if_t<std::is_enum<Enum>::value>>
void Set(sqlite3_stmt* h, int i, Enum& v) {
  v = static_cast<Enum>(Bits32(h, i));
}

// Fills one member of a record from column `i` of the current row.
template <typename Record>
using Loader = void (*)(sqlite3_stmt* h, int i, Record& record);

template <typename Record, auto member>
void Fill(sqlite3_stmt* h, int i, Record& record) {
  Set(h, i, record.*member);
}

template <typename Record>
struct Column {
  const char* name;
  Loader<Record> load;
};

using E = EventRecordItem;
const Column<E> kEventColumns[] = {
    {"reid", Fill<E, &E::reid>},
    {"state", Fill<E, &E::state>},
    {"splitstate", Fill<E, &E::splitState>},
    {"streamstate", Fill<E, &E::streamState>},
    {"locked", Fill<E, &E::locked>},
    {"confirmed", Fill<E, &E::confirmed>},
    {"crcode1", Fill<E, &E::crCode1>},
    {"crcode2", Fill<E, &E::crCode2>},
    {"starttick", Fill<E, &E::startTick>},
    {"starttime", Fill<E, &E::startTime>},
    {"exporttime", Fill<E, &E::exportTime>},
    {"stoptick", Fill<E, &E::stopTick>},
    {"stoptime", Fill<E, &E::stopTime>},
    {"description", Fill<E, &E::description>},
    {"officerid", [](sqlite3_stmt* h, int i, E& e) { Set(h, i, e.officer.id); }},
    {"officername", [](sqlite3_stmt* h, int i, E& e) { Set(h, i, e.officer.name); }},
    {"category", Fill<E, &E::category>},
    {"vehicle", [](sqlite3_stmt* h, int i, E& e) { Set(h, i, e.vehicle.name); }},
    {"flagged", Fill<E, &E::flagged>},
    {"background", Fill<E, &E::background>},
    {"totalfiles", Fill<E, &E::totalFiles>},
    {"groupid", Fill<E, &E::groupId>},
    {"part", Fill<E, &E::part>},
    {"totalparts", Fill<E, &E::totalParts>},
    {"answers", Fill<E, &E::answers>},
};

using F = StreamfileRecordItem;
const Column<F> kFileColumns[] = {
    {"number", Fill<F, &F::number>},     {"stream", Fill<F, &F::stream>},
    {"state", Fill<F, &F::state>},       {"starttick", Fill<F, &F::startTick>},
    {"stoptick", Fill<F, &F::stopTick>}, {"starttime", Fill<F, &F::startTime>},
    {"stoptime", Fill<F, &F::stopTime>}, {"previous", Fill<F, &F::previous>},
    {"next", Fill<F, &F::next>},         {"size", Fill<F, &F::size>},
    {"type", Fill<F, &F::type>},
};

// The loader of the column `name`; none for a column that is ignored.
template <typename Record, size_t N>
Loader<Record> LoaderOf(const char* name, const Column<Record> (&columns)[N]) {
  for (const Column<Record>& column : columns) {
    if (strcasecmp(name, column.name) == 0) return column.load;
  }
  return nullptr;
}

// Which loader each column of a statement takes. Matching names
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
template <typename Record>
class ColumnMap {
 public:
  template <size_t N>
  const std::vector<Loader<Record>>& For(sqlite3_stmt* handle, const Column<Record> (&columns)[N]) {
    if (!built_ || handle != handle_ || handle == nullptr ||
        sqlite3_stmt_status(handle, SQLITE_STMTSTATUS_RUN, 0) != 0 ||
        sqlite3_stmt_isexplain(handle) != 0) {
      Rebuild(handle, columns);
      handle_ = handle;
      built_ = handle != nullptr;
      // Marks this run.
      if (built_) sqlite3_stmt_status(handle, SQLITE_STMTSTATUS_RUN, 1);
    }
    return loaders_;
  }

 private:
  template <size_t N>
  void Rebuild(sqlite3_stmt* handle, const Column<Record> (&columns)[N]) {
    loaders_.clear();
    const int count = handle == nullptr ? 0 : sqlite3_column_count(handle);
    for (int i = 0; i < count; ++i) {
      const char* name = sqlite3_column_name(handle, i);
      loaders_.push_back(name == nullptr ? nullptr : LoaderOf(name, columns));
    }
  }

  bool built_ = false;
  sqlite3_stmt* handle_ = nullptr;
  std::vector<Loader<Record>> loaders_;
};

// The record in the current row of `statement`.
template <typename Record, size_t N>
Record Load(SQLStatement& statement, const Column<Record> (&columns)[N]) {
  thread_local ColumnMap<Record> map;
  Record record;
  const std::vector<Loader<Record>>& loaders = map.For(statement.handle, columns);
  for (size_t i = 0; i < loaders.size(); ++i) {
    if (loaders[i] != nullptr) loaders[i](statement.handle, static_cast<int>(i), record);
  }
  return record;
}

}  // namespace

namespace StreamDB {

StreamMgrApi::EventRecordItem LoadEventInfoFromStatement(SQLStatement& statement) {
  return Load(statement, kEventColumns);
}

StreamMgrApi::StreamfileRecordItem LoadFileInfoFromStatement(SQLStatement& statement) {
  return Load(statement, kFileColumns);
}

}  // namespace StreamDB
