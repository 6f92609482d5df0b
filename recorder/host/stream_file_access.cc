// Host stream file access: a table of file sizes, filled at start-up when the
// daemon does not run. While StreamMgr runs it owns the files and knows the
// size of the one being written, so the size is asked of it instead, over a
// connection of this object's own.
#include "recorder/stream_file_access.h"

#include <unistd.h>

#include <string>

#include "recorder/host/file_size_table.h"
#include "recorder/host/ipc_channel.h"
#include "recorder/host/ipc_codec.h"
#include "recorder/host/linx_ipc_impl.h"

struct StreamFileAccess::Impl {
  ~Impl() { Disconnect(); }
  void Disconnect() {
    if (daemon >= 0) close(daemon);
    daemon = -1;
  }

  FileSizeTable sizes;
  int daemon = -1;  // connection to StreamMgr, -1 when there is none
};

StreamFileAccess::StreamFileAccess() : impl_(new Impl) {}

StreamFileAccess::~StreamFileAccess() = default;

bool StreamFileAccess::InitializeFileAccess(bool, bool) { return true; }

void StreamFileAccess::InitializeFileSize(int number, int size) {
  impl_->sizes.Set(number, static_cast<uint32_t>(size));
}

bool StreamFileAccess::GetFileInfo(int number, StreamMgrFileMgmnt::FileMgmnt_t& info) {
  if (impl_->daemon < 0) {
    impl_->daemon =
        HostIpc::Connect(HostIpc::EndpointPath(HostIpc::kEndpointDir, HostIpc::kStreamMgrName));
  }
  if (impl_->daemon >= 0) {
    std::string answer;
    uint32_t size = 0;
    if (!HostIpc::Exchange(impl_->daemon, HostIpc::LiveSizeRequest(static_cast<uint32_t>(number)),
                           answer, HostIpc::kDefaultTimeoutMs)) {
      impl_->Disconnect();
      return false;
    }
    if (!HostIpc::DecodeLiveSizeAnswer(answer, size)) return false;
    info = StreamMgrFileMgmnt::FileMgmnt_t{static_cast<uint32_t>(number), 0, 0, size};
    return true;
  }
  uint32_t size = 0;
  if (!impl_->sizes.Find(number, size)) {
    return false;
  }
  info = StreamMgrFileMgmnt::FileMgmnt_t{static_cast<uint32_t>(number), 0, 0, size};
  return true;
}
