// Host stream file access: a table of file sizes, filled at start-up when the
// daemon does not run.
#include "recorder/stream_file_access.h"

#include <unordered_map>

struct StreamFileAccess::Impl {
  std::unordered_map<int, StreamMgrFileMgmnt::FileMgmnt_t> files;
};

StreamFileAccess::StreamFileAccess() : impl_(new Impl) {}

StreamFileAccess::~StreamFileAccess() = default;

bool StreamFileAccess::InitializeFileAccess(bool, bool) { return true; }

void StreamFileAccess::InitializeFileSize(int number, int size) {
  StreamMgrFileMgmnt::FileMgmnt_t& file = impl_->files[number];
  file.number = static_cast<uint32_t>(number);
  file.size = static_cast<uint32_t>(size);
}

bool StreamFileAccess::GetFileInfo(int number, StreamMgrFileMgmnt::FileMgmnt_t& info) {
  const auto found = impl_->files.find(number);
  if (found == impl_->files.end()) {
    return false;
  }
  info = found->second;
  return true;
}
