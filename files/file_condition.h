// The SQL condition of the files listing: everything after "where", built from
// the -f options. Every piece starts with a blank, so the text itself does too.
#ifndef FILES_FILE_CONDITION_H_
#define FILES_FILE_CONDITION_H_

#include <string>

#include "files/file_options.h"

// Rows listed at most when the limit letter was given.
constexpr int kFileListLimit = 20;

std::string BuildFileCondition(const FileOptions& options);

#endif  // FILES_FILE_CONDITION_H_
