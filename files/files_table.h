// The stream files listing of -f.
#ifndef FILES_FILES_TABLE_H_
#define FILES_FILES_TABLE_H_

#include "files/file_options.h"
#include "files/file_row.h"

// Lists the stream files that `options` select, on the access path of the
// moment, under a heading and above a closing count line.
void DisplayFiles(FileOptions& options);

#endif  // FILES_FILES_TABLE_H_
