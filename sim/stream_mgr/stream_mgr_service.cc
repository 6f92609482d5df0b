#include "sim/stream_mgr/stream_mgr_service.h"

#include <cstdio>
#include <utility>
#include <vector>

#include "recorder/host/ipc_codec.h"
#include "recorder/stream_db.h"
#include "store/row_bound.h"
#include "store/sql_statement.h"
#include "store/store_file.h"

using HostIpc::Kind;
using HostIpc::Reply;

namespace {

const char* OperationName(Kind kind) {
  switch (kind) {
    case HostIpc::kEvents:
      return "events";
    case HostIpc::kFiles:
      return "files";
    case HostIpc::kCount:
      return "count";
    default:
      return "delete";
  }
}

Reply Answer(std::string body) { return Reply{Reply::Action::kAnswer, std::move(body)}; }

// Runs `sql` and loads every row; false when it cannot be prepared or a step fails.
template <typename Record, typename Load>
bool LoadAll(sqlite3* database, const std::string& sql, std::vector<Record>& records, Load load) {
  SQLStatement statement(database, sql);
  if (statement.resultCode != SQLITE_OK) return false;
  RowBound bound(database);
  while (bound.Step(statement) == kStepRow) {
    records.push_back(load(statement));
  }
  return statement.resultCode == kStepDone;
}

// An answer too big for one frame cannot be sent; it is answered as failed.
std::string Bounded(std::string answer, Kind kind) {
  if (answer.size() > HostIpc::kMaxFrameBytes) return HostIpc::FailedAnswer(kind);
  return answer;
}

}  // namespace

sqlite3* OpenOwnedStore(const std::string& path) {
  sqlite3* database = nullptr;
  // One thread serves every request, so the connection needs no locking.
  OpenStoreFile(path.c_str(), &database, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX);
  return database;
}

StreamMgrService::StreamMgrService(sqlite3* database, StreamMgrOptions options)
    : database_(database), options_(std::move(options)) {}

Reply StreamMgrService::Handle(const std::string& request) {
  HostIpc::WireReader reader(request);
  Kind kind = HostIpc::kEvents;
  if (!HostIpc::ReadRequestHeader(reader, kind)) {
    return Reply{Reply::Action::kDrop, std::string()};
  }
  if (kind == HostIpc::kLiveSize) {
    uint32_t number = 0;
    if (!reader.U32(number) || !reader.Finished()) return Reply{Reply::Action::kDrop, ""};
    return Answer(options_.garbage ? HostIpc::MalformedAnswer(kind) : LiveSize(number));
  }
  if (kind == HostIpc::kSettings) {
    return Answer(HostIpc::FailedAnswer(kind));  // ConfigMP's business, not ours
  }
  std::string text;
  if (!reader.String(text) || !reader.Finished()) return Reply{Reply::Action::kDrop, ""};
  Log(OperationName(kind), text);
  ++requests_;
  if (options_.dieAfterSet && requests_ > options_.dieAfter) {
    return Reply{Reply::Action::kDie, std::string()};
  }
  if (options_.garbage) return Answer(HostIpc::MalformedAnswer(kind));
  if (options_.failRequests) return Answer(HostIpc::FailedAnswer(kind));
  if (kind != HostIpc::kEvents && kind != HostIpc::kFiles) {
    cursor_.Drop();  // a delete must not change rows under it
  }
  switch (kind) {
    case HostIpc::kEvents:
      return Answer(Events(text));
    case HostIpc::kFiles:
      return Answer(Files(text));
    case HostIpc::kCount:
      return Answer(Count(text));
    default:
      return Answer(Delete(text));
  }
}

template <typename Record, typename Load>
bool StreamMgrService::Rows(HostIpc::Kind kind, const std::string& sql,
                            std::vector<Record>& records, Load load) {
  if (!cursor_.Continues(kind, sql) && !cursor_.Open(database_, kind, sql)) {
    return LoadAll(database_, sql, records, load);
  }
  return cursor_.NextPage(records, load);
}

std::string StreamMgrService::Events(const std::string& sql) {
  std::vector<StreamMgrApi::EventRecordItem> events;
  if (!Rows(HostIpc::kEvents, sql, events, StreamDB::LoadEventInfoFromStatement)) {
    return HostIpc::FailedAnswer(HostIpc::kEvents);
  }
  return Bounded(HostIpc::EventsAnswer(events), HostIpc::kEvents);
}

std::string StreamMgrService::Files(const std::string& sql) {
  std::vector<StreamMgrApi::StreamfileRecordItem> files;
  if (!Rows(HostIpc::kFiles, sql, files, StreamDB::LoadFileInfoFromStatement)) {
    return HostIpc::FailedAnswer(HostIpc::kFiles);
  }
  return Bounded(HostIpc::FilesAnswer(files), HostIpc::kFiles);
}

std::string StreamMgrService::Count(const std::string& sql) {
  SQLStatement statement(database_, sql);
  if (statement.resultCode != SQLITE_OK || statement.Step() != kStepRow) {
    return HostIpc::FailedAnswer(HostIpc::kCount);
  }
  return HostIpc::CountAnswer(static_cast<uint32_t>(sqlite3_column_int64(statement.handle, 0)));
}

std::string StreamMgrService::Delete(const std::string& reid) {
  if (options_.refusedDeletes.count(reid) != 0) {
    return HostIpc::DeleteAnswer(false);
  }
  SQLStatement statement(database_, "delete from events where reid=?");
  if (statement.resultCode != SQLITE_OK ||
      sqlite3_bind_text(statement.handle, 1, reid.data(), static_cast<int>(reid.size()),
                        SQLITE_TRANSIENT) != SQLITE_OK ||
      statement.Step() != kStepDone) {
    return HostIpc::FailedAnswer(HostIpc::kDelete);
  }
  return HostIpc::DeleteAnswer(sqlite3_changes(database_) > 0);
}

std::string StreamMgrService::LiveSize(uint32_t number) {
  const auto live = options_.liveSizes.find(number);
  if (live != options_.liveSizes.end()) {
    return HostIpc::LiveSizeAnswer(live->second);
  }
  SQLStatement statement(database_, "select size from streamfiles where number=?");
  if (statement.resultCode != SQLITE_OK ||
      sqlite3_bind_int64(statement.handle, 1, number) != SQLITE_OK ||
      statement.Step() != kStepRow) {
    return HostIpc::FailedAnswer(HostIpc::kLiveSize);
  }
  return HostIpc::LiveSizeAnswer(static_cast<uint32_t>(sqlite3_column_int64(statement.handle, 0)));
}

void StreamMgrService::Log(const char* operation, const std::string& text) const {
  if (options_.logPath.empty()) return;
  // Opened per line, so every line is on disk the moment it is written.
  FILE* log = std::fopen(options_.logPath.c_str(), "a");
  if (log == nullptr) return;
  std::fprintf(log, "%s\t%s\n", operation, text.c_str());
  std::fclose(log);
}
