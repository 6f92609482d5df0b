// Layout of the files table: its heading and one row per stream file.
#ifndef FILES_FILE_ROW_H_
#define FILES_FILE_ROW_H_

#include "recorder/streamfile_record.h"

// An empty line, the column headings and the rule under them.
void PrintFileHeading();

// One row. While the daemon runs, the last file of a chain is still being
// written, so its size is replaced by the live size first.
void DisplayFile(StreamMgrApi::StreamfileRecordItem& file);

#endif  // FILES_FILE_ROW_H_
