// Requests of the stream manager's client library. Each sends SQL text (or a
// reid) to the running daemon through an initialised endpoint.
#ifndef RECORDER_STREAM_MGR_API_H_
#define RECORDER_STREAM_MGR_API_H_

#include <string>

#include "recorder/event_record.h"
#include "recorder/linx_ipc.h"
#include "recorder/streamfile_record.h"

namespace StreamMgrApi {

// Fill `list` with the events the daemon's query returns. On failure or
// time-out the list is left empty.
bool GetEventsFromSqlStatement(LinxIpc& ipc, std::string sql, EventRecordListMessage& list,
                               int timeout);

// Fill `list` with the stream files the daemon's query returns.
bool GetFilesFromSqlStatement(LinxIpc& ipc, std::string sql, StreamfileRecordListMessage& list,
                              int timeout);

// Store the first column of the first row of a count query in `count`; on
// failure `count` keeps its value.
bool GetCountFromSqlStatement(LinxIpc& ipc, std::string sql, unsigned int& count, int timeout);

// Ask the daemon to delete the event with this reid; true when it did.
bool DeleteEvent(std::string reid, LinxIpc& ipc);

}  // namespace StreamMgrApi

#endif  // RECORDER_STREAM_MGR_API_H_
