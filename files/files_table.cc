#include "files/files_table.h"

void DisplayFiles(FileOptions&) {}

void DisplayFile(StreamMgrApi::StreamfileRecordItem&) {}
