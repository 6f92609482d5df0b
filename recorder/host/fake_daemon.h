// A scripted stand-in of a daemon for the client tests: it listens on an
// endpoint in a folder of its own and does, per request, whatever the test
// says, including the things a real daemon should not do (stay silent, send
// half an answer, send nonsense, hang up).
#ifndef RECORDER_HOST_FAKE_DAEMON_H_
#define RECORDER_HOST_FAKE_DAEMON_H_

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "testing/scratch_dir.h"

namespace HostIpc {

class FakeDaemon {
 public:
  enum class Then {
    kNext,   // read the next request on this connection
    kClose,  // hang up this connection
    kHold,   // keep the connection open and answer nothing more on it
  };
  // Handles one request: write whatever bytes to `fd`, then say what follows.
  using Script = std::function<Then(int fd, const std::string& request)>;

  FakeDaemon(const char* name, Script script);
  ~FakeDaemon();
  FakeDaemon(const FakeDaemon&) = delete;
  FakeDaemon& operator=(const FakeDaemon&) = delete;

  const std::string& Dir() const { return dir_.Path(); }
  std::vector<std::string> Requests() const;
  int Connections() const { return connections_; }

  // Writes `bytes` as they are; a frame holding `body`.
  static void Raw(int fd, const std::string& bytes);
  static void Frame(int fd, const std::string& body);

  // Scripts for every request: answer `body`; send `bytes` as they are and
  // then do `then`; answer nothing and keep the connection; hang up.
  static Script Answering(const std::string& body);
  static Script Sending(const std::string& bytes, Then then = Then::kHold);
  static Script Holding();
  static Script HangingUp();

 private:
  void Run();
  bool Stopping(int fd, int timeoutMs) const;

  ScratchDir dir_{"fake-daemon"};
  Script script_;
  int listenFd_ = -1;
  int stop_[2] = {-1, -1};
  std::atomic<int> connections_{0};
  mutable std::mutex mutex_;
  std::vector<std::string> requests_;
  std::thread thread_;
};

}  // namespace HostIpc

#endif  // RECORDER_HOST_FAKE_DAEMON_H_
