// The host endpoint's state, shared by the host stand-ins that talk to the
// recorder's daemons. Tests may point endpointDir at a folder of their own.
#ifndef RECORDER_HOST_LINX_IPC_IMPL_H_
#define RECORDER_HOST_LINX_IPC_IMPL_H_

#include <string>

#include "recorder/host/ipc_protocol.h"
#include "recorder/linx_ipc.h"

namespace HostIpc {

// What a LinxIpc endpoint holds on the host.
struct Endpoint {
  explicit Endpoint(const std::string& endpointName) : name(endpointName) {}
  ~Endpoint();
  Endpoint(const Endpoint&) = delete;
  Endpoint& operator=(const Endpoint&) = delete;
  void Disconnect();

  void DisconnectConfig();

  std::string name;
  std::string endpointDir = HostIpc::kEndpointDir;
  int fd = -1;               // the connection to StreamMgr, -1 when there is none
  bool initialised = false;  // Init() succeeded once
  int configFd = -1;         // the connection to ConfigMP, -1 when there is none
  std::string configPath;    // the endpoint configFd is connected to
};

Endpoint& EndpointOf(LinxIpc& ipc);

std::string EndpointPath(const std::string& dir, const char* name);

// One request on the endpoint's connection to StreamMgr. After a failure the
// connection is dropped, so a late answer can never pass for the answer to a
// later request; the next request connects afresh.
bool StreamMgrRequest(LinxIpc& ipc, const std::string& request, std::string& answer, int timeoutMs);

// One request to ConfigMP, whether or not Init() ran, on a connection the
// endpoint keeps for the requests after it. A kept connection with anything
// to read before the request goes out (the service hung up or restarted, or
// said more than it was asked) is replaced by a new one, and one that fails
// other than by a time-out is tried again on a new one; after a failure the
// connection is dropped, as for StreamMgr.
bool ConfigMpRequest(LinxIpc& ipc, const std::string& request, std::string& answer, int timeoutMs);

}  // namespace HostIpc

#endif  // RECORDER_HOST_LINX_IPC_IMPL_H_
