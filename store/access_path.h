// Which way a query reaches the store: while the stream manager daemon runs it
// owns the database, so every query goes to it as SQL text over IPC; otherwise
// the tool prepares the same text on the database file itself.
#ifndef STORE_ACCESS_PATH_H_
#define STORE_ACCESS_PATH_H_

#include "cli/tool_context.h"
#include "recorder/recorder_places.h"

// Time-out handed unchanged to every stream manager request.
constexpr int kIpcTimeout = Recorder::kRequestTimeoutMs;

inline bool OverIpc() { return toolContext.running; }

#endif  // STORE_ACCESS_PATH_H_
