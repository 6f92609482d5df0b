// The stream files listing of -f.
#ifndef FILES_FILES_TABLE_H_
#define FILES_FILES_TABLE_H_

#include "files/file_options.h"
#include "recorder/streamfile_record.h"

void DisplayFiles(FileOptions& options);
void DisplayFile(StreamMgrApi::StreamfileRecordItem& file);

#endif  // FILES_FILES_TABLE_H_
