// Fuzzes the row loaders on stores they were not made for: a table whose
// columns, declared types and values all come from the input is built in an
// in-memory database, "select *" is stepped over it, and every row is loaded
// as an event and as a stream file, printed as the listings print it, and
// sent through the daemon's encoding and back.
#include <fuzzer/FuzzedDataProvider.h>
#include <sqlite3.h>
#include <strings.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "events/event_table.h"
#include "files/file_row.h"
#include "fuzz/fuzz_input.h"
#include "fuzz/quiet_streams.h"
#include "recorder/host/ipc_codec.h"
#include "recorder/stream_db.h"
#include "store/sql_statement.h"

namespace {

// Column names the loaders know, from both tables, and a few they do not.
const char* const kNames[] = {"reid",        "state",    "splitstate", "streamstate", "locked",
                              "confirmed",   "crcode1",  "crcode2",    "starttick",   "starttime",
                              "exporttime",  "stoptick", "stoptime",   "description", "officerid",
                              "officername", "category", "vehicle",    "flagged",     "background",
                              "totalfiles",  "groupId",  "part",       "totalparts",  "answers",
                              "number",      "stream",   "size",       "previous",    "next",
                              "type",        "unknown",  "",           "reid2"};

const char* const kTypes[] = {"", "integer", "text", "blob", "real", "numeric", "varchar(3)"};

std::string QuotedName(const std::string& name) {
  std::string quoted = "\"";
  for (char c : name) {
    quoted += c;
    if (c == '"') quoted += '"';
  }
  return quoted + "\"";
}

std::string ColumnName(FuzzedDataProvider& input) {
  std::string name = input.ConsumeBool() ? input.ConsumeRandomLengthString(12)
                                         : std::string(input.PickValueInArray(kNames));
  // Names match without regard to case, so vary it.
  for (char& c : name) {
    if (c >= 'a' && c <= 'z' && input.ConsumeBool()) c = static_cast<char>(c - 'a' + 'A');
  }
  return name;
}

bool IsTaken(const std::vector<std::string>& names, const std::string& name) {
  for (const std::string& taken : names) {
    if (strcasecmp(taken.c_str(), name.c_str()) == 0) return true;
  }
  return false;
}

// JSON-like text for the answers column, where the loader parses what it gets.
std::string AnswersText(FuzzedDataProvider& input) {
  static const char* const kPieces[] = {"[",           "]",           ",",          "\"q\"", "\"\"",
                                        "1",           "-2.5e9",      "null",       "true",  "{}",
                                        "{\"a\":[1]}", "\"\\u00e9\"", "\"\\ud800\""};
  std::string text;
  const int pieces = input.ConsumeIntegralInRange(0, 24);
  for (int i = 0; i < pieces; ++i) text += input.PickValueInArray(kPieces);
  return text;
}

void Bind(sqlite3_stmt* insert, int index, FuzzedDataProvider& input) {
  switch (input.ConsumeIntegralInRange(0, 6)) {
    case 0:
      sqlite3_bind_null(insert, index);
      break;
    case 1:
      sqlite3_bind_int64(insert, index, input.ConsumeIntegral<int64_t>());
      break;
    case 2:
      sqlite3_bind_int64(insert, index, input.ConsumeIntegralInRange<int64_t>(-5, 5));
      break;
    case 3:
      sqlite3_bind_double(insert, index, input.ConsumeFloatingPoint<double>());
      break;
    case 4: {
      const std::string text = input.ConsumeRandomLengthString(40);
      sqlite3_bind_text(insert, index, text.data(), static_cast<int>(text.size()),
                        SQLITE_TRANSIENT);
      break;
    }
    case 5: {
      const std::string text = AnswersText(input);
      sqlite3_bind_text(insert, index, text.data(), static_cast<int>(text.size()),
                        SQLITE_TRANSIENT);
      break;
    }
    default: {
      const std::string bytes = input.ConsumeRandomLengthString(16);
      sqlite3_bind_blob(insert, index, bytes.data(), static_cast<int>(bytes.size()),
                        SQLITE_TRANSIENT);
      break;
    }
  }
}

// Makes table t from the input; false when SQLite refuses it.
bool BuildTable(sqlite3* database, FuzzedDataProvider& input) {
  const int columns = input.ConsumeIntegralInRange(1, 12);
  std::vector<std::string> names;
  std::string create = "create table t(";
  std::string insertSql = "insert into t values(";
  for (int i = 0; i < columns; ++i) {
    std::string name = ColumnName(input);
    if (IsTaken(names, name)) name += "_" + std::to_string(i);
    names.push_back(name);
    create += (i ? ", " : "") + QuotedName(name) + " " + input.PickValueInArray(kTypes);
    insertSql += i ? ", ?" : "?";
  }
  if (sqlite3_exec(database, (create + ")").c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
    return false;
  }
  sqlite3_stmt* insert = nullptr;
  if (sqlite3_prepare_v2(database, (insertSql + ")").c_str(), -1, &insert, nullptr) != SQLITE_OK) {
    return false;
  }
  const int rows = input.ConsumeIntegralInRange(0, 4);
  for (int row = 0; row < rows; ++row) {
    for (int i = 1; i <= columns; ++i) Bind(insert, i, input);
    sqlite3_step(insert);
    sqlite3_reset(insert);
  }
  sqlite3_finalize(insert);
  return true;
}

template <typename Record, typename Encode, typename Decode>
void RequireRoundTrip(const Record& record, Encode encode, Decode decode) {
  const std::string body = encode(std::vector<Record>{record});
  std::vector<Record> decoded;
  Require(decode(body, decoded));
  Require(decoded.size() == 1);
  Require(encode(decoded) == body);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  QuietStreams();
  FuzzedDataProvider input(data, size);
  sqlite3* database = nullptr;
  Require(sqlite3_open(":memory:", &database) == SQLITE_OK);
  if (BuildTable(database, input)) {
    SQLStatement rows(database, "select * from t");
    Require(rows.prepared);
    while (rows.Step() == kStepRow) {
      const StreamMgrApi::EventRecordItem event = StreamDB::LoadEventInfoFromStatement(rows);
      StreamMgrApi::StreamfileRecordItem file = StreamDB::LoadFileInfoFromStatement(rows);
      DisplayEvent(event, 0);
      DisplayEvent(event, 1);
      DisplayFile(file);
      RequireRoundTrip(event, HostIpc::EventsAnswer, HostIpc::DecodeEventsAnswer);
      RequireRoundTrip(file, HostIpc::FilesAnswer, HostIpc::DecodeFilesAnswer);
    }
    Require(rows.resultCode == kStepDone);
  }
  sqlite3_close(database);
  return 0;
}
