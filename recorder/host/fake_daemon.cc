#include "recorder/host/fake_daemon.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>

#include "recorder/host/ipc_channel.h"
#include "recorder/host/ipc_server.h"
#include "recorder/host/linx_ipc_impl.h"

namespace HostIpc {

FakeDaemon::FakeDaemon(const char* name, Script script) : script_(std::move(script)) {
  listenFd_ = CreateEndpoint(EndpointPath(Dir(), name));
  if (pipe2(stop_, O_CLOEXEC) != 0) stop_[0] = stop_[1] = -1;
  thread_ = std::thread([this] { Run(); });
}

FakeDaemon::~FakeDaemon() {
  if (write(stop_[1], "x", 1) != 1) std::abort();
  thread_.join();
  close(stop_[0]);
  close(stop_[1]);
  close(listenFd_);
}

std::vector<std::string> FakeDaemon::Requests() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return requests_;
}

void FakeDaemon::Raw(int fd, const std::string& bytes) {
  size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t sent = send(fd, bytes.data() + done, bytes.size() - done, MSG_NOSIGNAL);
    if (sent <= 0) return;
    done += static_cast<size_t>(sent);
  }
}

void FakeDaemon::Frame(int fd, const std::string& body) {
  Raw(fd, FrameHeader(body.size()) + body);
}

FakeDaemon::Script FakeDaemon::Answering(const std::string& body) {
  return [body](int fd, const std::string&) {
    Frame(fd, body);
    return Then::kNext;
  };
}

FakeDaemon::Script FakeDaemon::Sending(const std::string& bytes, Then then) {
  return [bytes, then](int fd, const std::string&) {
    Raw(fd, bytes);
    return then;
  };
}

FakeDaemon::Script FakeDaemon::Holding() {
  return [](int, const std::string&) { return Then::kHold; };
}

FakeDaemon::Script FakeDaemon::HangingUp() {
  return [](int, const std::string&) { return Then::kClose; };
}

// Waits up to `timeoutMs` (forever when negative) for `fd` or the stop pipe;
// true when the test is over.
bool FakeDaemon::Stopping(int fd, int timeoutMs) const {
  pollfd entries[2] = {{stop_[0], POLLIN, 0}, {fd, POLLIN, 0}};
  poll(entries, 2, timeoutMs);
  return entries[0].revents != 0;
}

void FakeDaemon::Run() {
  while (!Stopping(listenFd_, -1)) {
    const int fd = accept4(listenFd_, nullptr, nullptr, SOCK_CLOEXEC);
    if (fd < 0) continue;
    ++connections_;
    Then then = Then::kNext;
    while (then == Then::kNext && !Stopping(fd, -1)) {
      std::string request;
      if (!ReceiveFrame(fd, request, DeadlineIn(5000))) break;
      {
        std::lock_guard<std::mutex> lock(mutex_);
        requests_.push_back(request);
      }
      then = script_(fd, request);
    }
    if (then == Then::kHold) {
      // Until the client hangs up or the test ends.
      char byte;
      while (!Stopping(fd, -1) && recv(fd, &byte, 1, 0) > 0) {
      }
    }
    close(fd);
  }
}

}  // namespace HostIpc
