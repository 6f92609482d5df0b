// Framed messages over Unix-domain stream sockets. A frame is a 4-byte
// little-endian body length followed by the body. Every wait goes through
// poll() against one deadline, so a silent or stuck peer costs at most the
// time-out; writes never raise SIGPIPE.
#ifndef RECORDER_HOST_IPC_CHANNEL_H_
#define RECORDER_HOST_IPC_CHANNEL_H_

#include <chrono>
#include <string>

namespace HostIpc {

using Clock = std::chrono::steady_clock;

// Milliseconds from now until `deadline`, never negative.
int MillisecondsLeft(Clock::time_point deadline);
Clock::time_point DeadlineIn(int milliseconds);

// Connects to the socket at `path`; a non-blocking descriptor, or -1.
int Connect(const std::string& path);

// Writes one frame holding `body`; false when the peer is gone or too slow.
bool SendFrame(int fd, const std::string& body, Clock::time_point deadline);

// Reads one frame into `body`; false on end of stream, a frame longer than
// kMaxFrameBytes, an error, or when the deadline passes first.
bool ReceiveFrame(int fd, std::string& body, Clock::time_point deadline);

// Sends `request` and reads the answer, all within `timeoutMs`.
bool Exchange(int fd, const std::string& request, std::string& answer, int timeoutMs);

// One request on a connection of its own to the endpoint at `path`.
bool ExchangeOnce(const std::string& path, const std::string& request, std::string& answer,
                  int timeoutMs);

// Length prefix of a frame holding `size` bytes.
std::string FrameHeader(size_t size);

}  // namespace HostIpc

#endif  // RECORDER_HOST_IPC_CHANNEL_H_
