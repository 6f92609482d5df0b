#include "recorder/host/ipc_channel.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "recorder/host/ipc_protocol.h"
#include "recorder/host/wire.h"

namespace HostIpc {

int MillisecondsLeft(Clock::time_point deadline) {
  // Rounded up, so that a wait never ends before its deadline.
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
  if (left <= 0) return 0;
  return left > 0x7fffffff ? 0x7fffffff : static_cast<int>(left);
}

Clock::time_point DeadlineIn(int milliseconds) {
  return Clock::now() + std::chrono::milliseconds(milliseconds < 0 ? 0 : milliseconds);
}

int Connect(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) return -1;
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
  const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (fd < 0) return -1;
  if (connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    // A Unix socket connects at once or not at all (EAGAIN: backlog full).
    close(fd);
    return -1;
  }
  return fd;
}

namespace {

// Waits until `fd` is ready for `events`; false on time-out, hang-up or error.
bool WaitFor(int fd, short events, Clock::time_point deadline) {
  for (;;) {
    pollfd entry = {fd, events, 0};
    const int ready = poll(&entry, 1, MillisecondsLeft(deadline));
    if (ready < 0 && errno == EINTR) continue;
    if (ready <= 0) return false;
    // Data that is already there is still read after the peer hung up.
    return (entry.revents & events) != 0;
  }
}

// Moves `size` bytes, `transfer` moving as many of the bytes left as it can
// at a time and saying how many it moved; waits for `events` whenever the
// socket is not ready. False on time-out, a peer that closed the connection
// mid-frame, or an error.
template <typename Transfer>
bool TransferAll(int fd, size_t size, short events, Clock::time_point deadline, Transfer transfer) {
  while (size > 0) {
    const ssize_t moved = transfer(size);
    if (moved > 0) {
      size -= static_cast<size_t>(moved);
    } else if (moved < 0 && errno == EINTR) {
      continue;
    } else if (moved < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
      if (!WaitFor(fd, events, deadline)) return false;
    } else {
      return false;
    }
  }
  return true;
}

bool SendAll(int fd, const char* data, size_t size, Clock::time_point deadline) {
  return TransferAll(fd, size, POLLOUT, deadline, [&](size_t left) {
    const ssize_t sent = send(fd, data, left, MSG_NOSIGNAL);
    if (sent > 0) data += sent;
    return sent;
  });
}

// Appends exactly `size` bytes read from `fd` to `out`.
bool ReceiveAll(int fd, std::string& out, size_t size, Clock::time_point deadline) {
  char buffer[65536];
  return TransferAll(fd, size, POLLIN, deadline, [&](size_t left) {
    const ssize_t got = recv(fd, buffer, left < sizeof buffer ? left : sizeof buffer, 0);
    if (got > 0) out.append(buffer, static_cast<size_t>(got));
    return got;
  });
}

}  // namespace

std::string FrameHeader(size_t size) {
  WireWriter writer;
  writer.U32(static_cast<uint32_t>(size));
  return writer.Bytes();
}

bool SendFrame(int fd, const std::string& body, Clock::time_point deadline) {
  if (body.size() > kMaxFrameBytes) return false;
  // One write for the whole frame: the peer wakes once, to a complete frame,
  // and a request costs one system call instead of two.
  std::string frame = FrameHeader(body.size());
  frame.reserve(frame.size() + body.size());
  frame.append(body);
  return SendAll(fd, frame.data(), frame.size(), deadline);
}

bool ReceiveFrame(int fd, std::string& body, Clock::time_point deadline) {
  std::string header;
  if (!ReceiveAll(fd, header, 4, deadline)) return false;
  uint32_t length = 0;
  WireReader reader(header);
  if (!reader.U32(length) || length > kMaxFrameBytes) return false;
  body.clear();
  return ReceiveAll(fd, body, length, deadline);
}

bool Exchange(int fd, const std::string& request, std::string& answer, int timeoutMs) {
  const Clock::time_point deadline = DeadlineIn(timeoutMs);
  // The answer cannot be there the moment the request is sent: wait for it
  // first instead of trying a read that would only find nothing.
  return fd >= 0 && SendFrame(fd, request, deadline) && WaitFor(fd, POLLIN, deadline) &&
         ReceiveFrame(fd, answer, deadline);
}

bool ExchangeOnce(const std::string& path, const std::string& request, std::string& answer,
                  int timeoutMs) {
  const int fd = Connect(path);
  if (fd < 0) return false;
  const bool answered = Exchange(fd, request, answer, timeoutMs);
  close(fd);
  return answered;
}

}  // namespace HostIpc
