// Texts of a stream file's state and type for the files table.
#ifndef STORE_FILE_STATE_NAMES_H_
#define STORE_FILE_STATE_NAMES_H_

#include "recorder/streamfile_record.h"

const char* FileStateToStr(StreamMgrApi::StreamFileState state);
const char* FileTypeToStr(StreamMgrApi::StreamFileType type);

#endif  // STORE_FILE_STATE_NAMES_H_
