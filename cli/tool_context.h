// Process-wide state of db, built before main runs and torn down after it
// returns (members are destroyed in reverse order).
#ifndef CLI_TOOL_CONTEXT_H_
#define CLI_TOOL_CONTEXT_H_

#include <sqlite3.h>

#include "recorder/linx_ipc.h"
#include "recorder/stream_file_access.h"

struct ToolContext {
  bool running = false;  // StreamMgr was found running at start-up
  LinxIpc ipc{"db"};     // initialised only while StreamMgr runs
  StreamFileAccess fileAccess;
  sqlite3* database = nullptr;  // never closed: process exit releases it
};

extern ToolContext toolContext;

#endif  // CLI_TOOL_CONTEXT_H_
