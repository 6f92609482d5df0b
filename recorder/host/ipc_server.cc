#include "recorder/host/ipc_server.h"

#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <vector>

#include "recorder/host/ipc_channel.h"
#include "recorder/host/ipc_protocol.h"
#include "recorder/host/linx_ipc_impl.h"
#include "recorder/host/wire.h"
#include "recorder/recorder_places.h"

namespace HostIpc {

namespace {

// A client that does not take its answer within the time a client waits for
// it is dropped.
constexpr int kAnswerTimeoutMs = Recorder::kRequestTimeoutMs;

struct Connection {
  int fd;
  std::string input;  // bytes received and not yet taken as requests
  bool open = true;
};

bool Bind(int fd, const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) return false;
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
  unlink(path.c_str());
  return bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

void AcceptAll(int listenFd, std::vector<Connection>& connections) {
  for (;;) {
    const int fd = accept4(listenFd, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (fd < 0) {
      if (errno == EINTR) continue;
      return;
    }
    connections.push_back(Connection{fd, std::string()});
  }
}

// True when `stopFd` became readable within `milliseconds`.
bool StopWithin(int stopFd, int milliseconds) {
  const Clock::time_point deadline = DeadlineIn(milliseconds);
  for (;;) {
    pollfd entry = {stopFd, POLLIN, 0};
    const int ready = poll(&entry, stopFd >= 0 ? 1 : 0, MillisecondsLeft(deadline));
    if (ready < 0 && errno == EINTR) continue;
    return ready > 0;
  }
}

// Answers every complete request in the connection's input. Returns false
// when the daemon is to stop (kStopped or kDied in `end`).
bool AnswerRequests(Connection& c, int stopFd, int delayMs, const RequestHandler& handler,
                    ServeEnd& end) {
  while (c.open && c.input.size() >= 4) {
    uint32_t length = 0;
    WireReader header(c.input.data(), 4);
    header.U32(length);
    if (length > kMaxFrameBytes) {
      c.open = false;
      break;
    }
    if (c.input.size() - 4 < length) break;
    const std::string request = c.input.substr(4, length);
    c.input.erase(0, 4 + static_cast<size_t>(length));
    const Reply reply = handler(request);
    if (reply.action == Reply::Action::kDie) {
      end = ServeEnd::kDied;
      return false;
    }
    if (reply.action == Reply::Action::kDrop) {
      c.open = false;
      break;
    }
    if (delayMs > 0 && StopWithin(stopFd, delayMs)) {
      end = ServeEnd::kStopped;
      return false;
    }
    if (!SendFrame(c.fd, reply.body, DeadlineIn(kAnswerTimeoutMs))) {
      c.open = false;
    }
  }
  return true;
}

// Takes one read of what the client sent, so that no client can keep the
// loop to itself; a closed or failed connection is marked closed.
void Receive(Connection& c) {
  char buffer[65536];
  for (;;) {
    const ssize_t got = recv(c.fd, buffer, sizeof buffer, 0);
    if (got > 0) {
      c.input.append(buffer, static_cast<size_t>(got));
    } else if (got < 0 && errno == EINTR) {
      continue;
    } else if (got == 0 || (errno != EAGAIN && errno != EWOULDBLOCK)) {
      c.open = false;
    }
    return;
  }
}

}  // namespace

int CreateEndpoint(const std::string& path) {
  const std::string temporary = path + ".new." + std::to_string(getpid());
  const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (fd < 0) return -1;
  if (!Bind(fd, temporary) || listen(fd, SOMAXCONN) != 0 ||
      rename(temporary.c_str(), path.c_str()) != 0) {
    unlink(temporary.c_str());
    close(fd);
    return -1;
  }
  return fd;
}

ServeEnd Serve(int listenFd, int stopFd, int delayMs, const RequestHandler& handler,
               const HangUpHandler& hungUp) {
  std::vector<Connection> connections;
  ServeEnd end = ServeEnd::kStopped;
  bool serving = true;
  while (serving) {
    std::vector<pollfd> entries = {{stopFd, POLLIN, 0}, {listenFd, POLLIN, 0}};
    for (const Connection& c : connections) entries.push_back({c.fd, POLLIN, 0});
    if (poll(entries.data(), entries.size(), -1) < 0) {
      if (errno == EINTR) continue;
      break;
    }
    if (entries[0].revents != 0) break;
    if (entries[1].revents != 0) AcceptAll(listenFd, connections);
    // Connections accepted just now have no entry yet; they are polled next turn.
    for (size_t i = 2; i < entries.size() && serving; ++i) {
      if (entries[i].revents == 0) continue;
      Connection& c = connections[i - 2];
      Receive(c);
      serving = AnswerRequests(c, stopFd, delayMs, handler, end);
    }
    for (auto it = connections.begin(); it != connections.end();) {
      if (it->open) {
        ++it;
      } else {
        close(it->fd);
        it = connections.erase(it);
        if (hungUp) hungUp();
      }
    }
  }
  for (const Connection& c : connections) close(c.fd);
  return end;
}

int RunDaemon(const std::string& dir, const char* name, bool offerEndpoint, int delayMs,
              const RequestHandler& handler, const HangUpHandler& hungUp) {
  // The signals are taken through a descriptor, so the loop sees them in
  // poll(). A shell starts background jobs with SIGINT ignored; undo that.
  signal(SIGTERM, SIG_DFL);
  signal(SIGINT, SIG_DFL);
  sigset_t stopSignals;
  sigemptyset(&stopSignals);
  sigaddset(&stopSignals, SIGTERM);
  sigaddset(&stopSignals, SIGINT);
  sigprocmask(SIG_BLOCK, &stopSignals, nullptr);
  const int stopFd = signalfd(-1, &stopSignals, SFD_CLOEXEC);
  signal(SIGPIPE, SIG_IGN);

  const std::string path = EndpointPath(dir, name);
  int listenFd = -1;
  if (offerEndpoint) {
    mkdir(dir.c_str(), 0755);
    listenFd = CreateEndpoint(path);
    if (listenFd < 0) {
      std::fprintf(stderr, "%s: cannot offer the endpoint %s: %s\n", name, path.c_str(),
                   std::strerror(errno));
      return 1;
    }
  }
  const ServeEnd end = Serve(listenFd, stopFd, delayMs, handler, hungUp);
  if (offerEndpoint) {
    close(listenFd);
    unlink(path.c_str());
  }
  if (end == ServeEnd::kDied) {
    _exit(3);
  }
  return 0;
}

}  // namespace HostIpc
