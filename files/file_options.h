// The argument language of -f: which stream files to list and in which order.
#ifndef FILES_FILE_OPTIONS_H_
#define FILES_FILE_OPTIONS_H_

#include <cstdint>
#include <string>

// Stream number that stands for every stream.
constexpr uint32_t kAllStreams = 99;

struct FileOptions {
  std::string numberPattern = "%";  // SQL LIKE pattern for the file number
  uint32_t stream = kAllStreams;
  bool showCurrent = false;
  bool showAllocated = false;
  bool showFree = false;
  bool showKept = false;
  bool limit = false;
  bool sortByStartTick = false;
  bool sortByNumber = false;  // recorded, never consulted by the listing
  bool reverse = false;
};

// Applies `argument` to `options`, consuming it; false at the first character
// not understood, which stays in `argument` with everything after it.
bool ProcessFileDisplayOptions(std::string& argument, FileOptions& options);

#endif  // FILES_FILE_OPTIONS_H_
