// Row loaders of the stream manager: turn the current row of a stepped
// "select *" statement into a record, mapping columns by name.
#ifndef RECORDER_STREAM_DB_H_
#define RECORDER_STREAM_DB_H_

#include "recorder/event_record.h"
#include "recorder/streamfile_record.h"

class SQLStatement;

namespace StreamDB {

StreamMgrApi::EventRecordItem LoadEventInfoFromStatement(SQLStatement& statement);
StreamMgrApi::StreamfileRecordItem LoadFileInfoFromStatement(SQLStatement& statement);

}  // namespace StreamDB

#endif  // RECORDER_STREAM_DB_H_
