// Host stream file access: a table of file sizes, filled at start-up when the
// daemon does not run. While StreamMgr runs it owns the files and knows the
// size of the one being written, so the size is asked of it instead, over a
// connection of this object's own.
#include "recorder/stream_file_access.h"

#include <unistd.h>

#include <memory>
#include <string>

#include "recorder/host/file_size_table.h"
#include "recorder/host/ipc_channel.h"
#include "recorder/host/ipc_codec.h"
#include "recorder/host/linx_ipc_impl.h"
#include "recorder/host/object_states.h"

namespace {

struct FileAccessState {
  FileAccessState() = default;
  ~FileAccessState() { Disconnect(); }
  FileAccessState(const FileAccessState&) = delete;
  FileAccessState& operator=(const FileAccessState&) = delete;
  void Disconnect() {
    if (daemon >= 0) close(daemon);
    daemon = -1;
  }

  FileSizeTable sizes;
  int daemon = -1;  // connection to StreamMgr, -1 when there is none
};

using FileAccessStates = ObjectStates<StreamFileAccess, FileAccessState>;

}  // namespace

StreamFileAccess::StreamFileAccess() {
  FileAccessStates::Instance().Add(this, std::make_unique<FileAccessState>());
}

StreamFileAccess::~StreamFileAccess() { FileAccessStates::Instance().Remove(this); }

bool StreamFileAccess::InitializeFileAccess(bool, bool) { return true; }

void StreamFileAccess::InitializeFileSize(int number, int size) {
  FileAccessStates::Instance().Of(this).sizes.Set(number, static_cast<uint32_t>(size));
}

bool StreamFileAccess::GetFileInfo(int number, StreamMgrFileMgmnt::FileMgmnt_t& info) {
  FileAccessState& state = FileAccessStates::Instance().Of(this);
  if (state.daemon < 0) {
    state.daemon =
        HostIpc::Connect(HostIpc::EndpointPath(HostIpc::kEndpointDir, HostIpc::kStreamMgrName));
  }
  if (state.daemon >= 0) {
    std::string answer;
    uint32_t size = 0;
    if (!HostIpc::Exchange(state.daemon, HostIpc::LiveSizeRequest(static_cast<uint32_t>(number)),
                           answer, HostIpc::kDefaultTimeoutMs)) {
      state.Disconnect();
      return false;
    }
    if (!HostIpc::DecodeLiveSizeAnswer(answer, size)) return false;
    info = StreamMgrFileMgmnt::FileMgmnt_t{static_cast<uint32_t>(number), 0, 0, size};
    return true;
  }
  uint32_t size = 0;
  if (!state.sizes.Find(number, size)) {
    return false;
  }
  info = StreamMgrFileMgmnt::FileMgmnt_t{static_cast<uint32_t>(number), 0, 0, size};
  return true;
}
