// Host endpoint: a persistent connection to the StreamMgr simulator's Unix
// socket, used by every request of the process.
#include "recorder/linx_ipc.h"

#include <unistd.h>

#include "recorder/host/ipc_channel.h"
#include "recorder/host/linx_ipc_impl.h"

LinxIpc::Impl::~Impl() { Disconnect(); }

void LinxIpc::Impl::Disconnect() {
  if (fd >= 0) {
    close(fd);
    fd = -1;
  }
}

LinxIpc::LinxIpc(const std::string& name) : impl_(new Impl(name)) {}

LinxIpc::~LinxIpc() = default;

int LinxIpc::Init() {
  impl_->Disconnect();
  impl_->fd = HostIpc::Connect(HostIpc::EndpointPath(impl_->endpointDir, HostIpc::kStreamMgrName));
  impl_->initialised = impl_->fd >= 0;
  return impl_->initialised ? 0 : -1;
}

const std::string& LinxIpc::Name() const { return impl_->name; }

namespace HostIpc {

std::string EndpointPath(const std::string& dir, const char* name) { return dir + "/" + name; }

bool StreamMgrRequest(LinxIpc& ipc, const std::string& request, std::string& answer,
                      int timeoutMs) {
  LinxIpc::Impl& impl = ipc.GetImpl();
  if (!impl.initialised) return false;
  if (impl.fd < 0) {
    impl.fd = Connect(EndpointPath(impl.endpointDir, kStreamMgrName));
  }
  if (Exchange(impl.fd, request, answer, timeoutMs)) return true;
  impl.Disconnect();
  return false;
}

}  // namespace HostIpc
