#include "cli/start_up.h"

#include <cstdlib>
#include <iostream>

#include "cli/tool_context.h"
#include "recorder/log_client.h"
#include "recorder/recorder_places.h"
#include "store/row_bound.h"
#include "store/sql_statement.h"
#include "store/store_file.h"

const char* const kStorePath = Recorder::kStorePath;

FILE* ProbeForDaemon() {
  FILE* probe = popen(Recorder::kDaemonProbe, "r");
  char line[1024];
  toolContext.running = probe != nullptr && fgets(line, sizeof line, probe) != nullptr;
  return probe;
}

namespace {

// Without the daemon, stream file access learns each file's size from the store.
void LoadStreamFileSizes() {
  // Every option reads its table once from start to end, so on a large store
  // SQLite's page cache (2 MB by default) saves nothing and only adds to the
  // tool's memory; a smaller one still holds the small tables read twice.
  sqlite3_exec(toolContext.database, "pragma cache_size = -512", nullptr, nullptr, nullptr);
  SQLStatement sizes(toolContext.database, "select number, size from streamfiles");
  if (sizes.resultCode != SQLITE_OK) {
    std::cerr << "mainunable to access database" << std::endl;
    return;
  }
  RowBound bound(toolContext.database);
  while (bound.Step(sizes) == kStepRow) {
    toolContext.fileAccess.InitializeFileSize(sqlite3_column_int(sizes.handle, 0),
                                              sqlite3_column_int(sizes.handle, 1));
  }
  if (sizes.resultCode != kStepDone) {
    std::cerr << "main:Error initializing file sizes from the database:" << std::endl;
  }
}

}  // namespace

int StartUp() { return StartUpOn(kStorePath); }

int StartUpOn(const char* storePath) {
  // As sqlite3_open opens it; the tool runs one thread, so SQLite need not
  // lock the connection on every call.
  const int exitStatus =
      OpenStoreFile(storePath, &toolContext.database,
                    SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX);
  if (exitStatus != SQLITE_OK) {
    std::cerr << "error opening sqlite3" << std::endl;
  }
  if (!toolContext.fileAccess.InitializeFileAccess(false, true)) {
    // The tool carries on all the same; the handlers report their own failures.
    std::cerr << " cannot proceed without fileAccess initialized" << std::endl;
  }
  if (toolContext.running) {
    if (toolContext.ipc.Init() != 0) {
      std::cerr << "Error initializing the ipc connection" << std::endl;
      std::exit(1);
    }
  } else {
    LoadStreamFileSizes();
  }
  LogClient::Instance().ProcessName("db");
  return exitStatus;
}
