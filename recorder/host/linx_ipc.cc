// Host endpoint: a persistent connection to the StreamMgr simulator's Unix
// socket, used by every request of the process.
#include "recorder/linx_ipc.h"

#include <poll.h>
#include <unistd.h>

#include <memory>

#include "recorder/host/ipc_channel.h"
#include "recorder/host/linx_ipc_impl.h"
#include "recorder/host/object_states.h"

namespace {

using Endpoints = ObjectStates<LinxIpc, HostIpc::Endpoint>;

}  // namespace

namespace HostIpc {

Endpoint::~Endpoint() {
  Disconnect();
  DisconnectConfig();
}

void Endpoint::DisconnectConfig() {
  if (configFd >= 0) {
    close(configFd);
    configFd = -1;
  }
}

void Endpoint::Disconnect() {
  if (fd >= 0) {
    close(fd);
    fd = -1;
  }
}

Endpoint& EndpointOf(LinxIpc& ipc) { return Endpoints::Instance().Of(&ipc); }

}  // namespace HostIpc

LinxIpc::LinxIpc(const std::string& name) {
  Endpoints::Instance().Add(this, std::make_unique<HostIpc::Endpoint>(name));
}

LinxIpc::~LinxIpc() { Endpoints::Instance().Remove(this); }

int LinxIpc::Init() {
  HostIpc::Endpoint& endpoint = HostIpc::EndpointOf(*this);
  endpoint.Disconnect();
  endpoint.fd =
      HostIpc::Connect(HostIpc::EndpointPath(endpoint.endpointDir, HostIpc::kStreamMgrName));
  endpoint.initialised = endpoint.fd >= 0;
  return endpoint.initialised ? 0 : -1;
}

const std::string& LinxIpc::Name() const { return Endpoints::Instance().Of(this).name; }

namespace HostIpc {

std::string EndpointPath(const std::string& dir, const char* name) { return dir + "/" + name; }

bool StreamMgrRequest(LinxIpc& ipc, const std::string& request, std::string& answer,
                      int timeoutMs) {
  Endpoint& impl = EndpointOf(ipc);
  if (!impl.initialised) return false;
  if (impl.fd < 0) {
    impl.fd = Connect(EndpointPath(impl.endpointDir, kStreamMgrName));
  }
  if (Exchange(impl.fd, request, answer, timeoutMs)) return true;
  impl.Disconnect();
  return false;
}

namespace {

// True when nothing waits to be read on `fd` and the peer has not hung up.
bool Quiet(int fd) {
  pollfd entry = {fd, POLLIN, 0};
  return poll(&entry, 1, 0) == 0;
}

}  // namespace

bool ConfigMpRequest(LinxIpc& ipc, const std::string& request, std::string& answer, int timeoutMs) {
  Endpoint& impl = EndpointOf(ipc);
  const std::string path = EndpointPath(impl.endpointDir, kConfigMpName);
  if (impl.configFd >= 0 && (path != impl.configPath || !Quiet(impl.configFd))) {
    impl.DisconnectConfig();
  }
  const bool kept = impl.configFd >= 0;
  if (!kept) {
    impl.configFd = Connect(path);
    impl.configPath = path;
  }
  const Clock::time_point deadline = DeadlineIn(timeoutMs);
  if (Exchange(impl.configFd, request, answer, timeoutMs)) return true;
  impl.DisconnectConfig();
  // The service may have closed a kept connection just as the request went
  // out (it was restarting). Unless it ran out of time, the request is asked
  // once more on a new connection, as it would have been without the kept one.
  if (!kept || Clock::now() >= deadline) return false;
  impl.configFd = Connect(path);
  if (Exchange(impl.configFd, request, answer, timeoutMs)) return true;
  impl.DisconnectConfig();
  return false;
}

}  // namespace HostIpc
