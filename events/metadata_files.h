// The metadata pair that the connection manager leaves for a staged event:
// <reid>.xml (its description) and <reid>.mtd (its data).
#ifndef EVENTS_METADATA_FILES_H_
#define EVENTS_METADATA_FILES_H_

#include <cstdint>
#include <string>

// Directory of the metadata files, with its trailing slash.
extern const char* const kMetadataDirectory;

// Every stream file is pre-allocated at this size, so a segment that runs to
// the end of its file counts this many bytes, whatever the file holds.
constexpr int32_t kStreamFileBytes = 98566144;

// True when both base path + ".xml" and base path + ".mtd" exist.
bool IsStaged(const std::string& path);

// Bytes the staged event amounts to: the .mtd size plus every segment of the
// description. Problems are written to standard error without a line end.
int64_t EventSize(const std::string& reid);

// EventSize on the metadata files below `directory` (which ends in a slash)
// rather than the recorder's own; lets the rules be exercised on any folder.
int64_t EventSizeIn(const std::string& directory, const std::string& reid);

// IsStaged with its existence probe supplied by the caller, so the order and
// number of probes can be observed.
using PathProbe = bool (*)(const std::string& path);
bool IsStagedWith(const std::string& path, PathProbe exists);

#endif  // EVENTS_METADATA_FILES_H_
