// The metadata pair that the connection manager leaves for a staged event:
// <reid>.xml (its description) and <reid>.mtd (its data).
#ifndef EVENTS_METADATA_FILES_H_
#define EVENTS_METADATA_FILES_H_

#include <cstdint>
#include <string>

// Directory of the metadata files, with its trailing slash.
extern const char* const kMetadataDirectory;

// True when both base path + ".xml" and base path + ".mtd" exist.
bool IsStaged(const std::string& path);

// Bytes the staged event amounts to: the .mtd size plus every segment of the
// description. Problems are written to standard error without a line end.
int64_t EventSize(const std::string& reid);

#endif  // EVENTS_METADATA_FILES_H_
