#include "recorder/host/served_daemon.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>

#include "recorder/host/linx_ipc_impl.h"

namespace HostIpc {

ServedDaemon::ServedDaemon(const char* name, RequestHandler handler, int delayMs,
                           HangUpHandler hungUp)
    : name_(name) {
  listenFd_ = CreateEndpoint(Path());
  if (pipe2(stop_, O_CLOEXEC) != 0) stop_[0] = stop_[1] = -1;
  thread_ = std::thread([this, handler, delayMs, hungUp] {
    end_ = Serve(listenFd_, stop_[0], delayMs, handler, hungUp);
    ended_ = true;
  });
}

ServedDaemon::~ServedDaemon() {
  Stop();
  close(stop_[0]);
  close(stop_[1]);
  close(listenFd_);
}

std::string ServedDaemon::Path() const { return EndpointPath(Dir(), name_.c_str()); }

void ServedDaemon::Aim(LinxIpc& ipc) const { HostIpc::EndpointOf(ipc).endpointDir = Dir(); }

ServeEnd ServedDaemon::Stop() {
  if (thread_.joinable()) {
    if (write(stop_[1], "x", 1) != 1) std::abort();
    thread_.join();
  }
  return end_;
}

}  // namespace HostIpc
