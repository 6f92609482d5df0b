#include "files/file_condition.h"

#include "recorder/streamfile_record.h"

namespace {

std::string RowSelection(const FileOptions& options) {
  if (options.showCurrent) {
    // The file being written is the last of a chain that has a predecessor;
    // a pattern would say nothing useful about it.
    return " next=0 and previous!=0";
  }
  if (!options.numberPattern.empty()) {
    // Only digits and wildcards reach the pattern, so it needs no quoting.
    return " number like '" + options.numberPattern + "'";
  }
  return " number like '%'";
}

std::string StateTest(StreamMgrApi::StreamFileState state) {
  return " state=" + std::to_string(static_cast<int>(state));
}

std::string StateSelection(const FileOptions& options) {
  if (!options.showFree && !options.showKept && !options.showAllocated) {
    return "";
  }
  std::string tests;
  if (options.showFree) {
    // Both kinds of free file: never used, and used but released.
    tests += StateTest(StreamMgrApi::FILE_FREE) + " or" + StateTest(StreamMgrApi::FILE_USED_FREE);
  }
  if (options.showKept) {
    tests += (tests.empty() ? "" : " or") + StateTest(StreamMgrApi::FILE_USED_KEEP);
  }
  if (options.showAllocated) {
    tests += (tests.empty() ? "" : " or") + StateTest(StreamMgrApi::FILE_ALLOCATED);
  }
  return " and (" + tests + ")";
}

}  // namespace

std::string BuildFileCondition(const FileOptions& options) {
  std::string condition = RowSelection(options);
  if (options.stream != kAllStreams) {
    condition += " and stream=" + std::to_string(options.stream);
  }
  condition += StateSelection(options);
  condition += " order by ";
  condition += options.sortByStartTick ? "starttick" : "number";
  condition += options.reverse ? " desc" : " asc";
  if (options.limit) {
    condition += " limit " + std::to_string(kFileListLimit);
  }
  return condition;
}
