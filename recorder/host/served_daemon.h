// Runs the real daemon loop (HostIpc::Serve) on a thread of the test, with
// its endpoint in a folder of its own, so that clients and request handlers
// can be tested together without a sandbox.
#ifndef RECORDER_HOST_SERVED_DAEMON_H_
#define RECORDER_HOST_SERVED_DAEMON_H_

#include <atomic>
#include <string>
#include <thread>

#include "recorder/host/ipc_server.h"
#include "recorder/linx_ipc.h"
#include "testing/scratch_dir.h"

namespace HostIpc {

class ServedDaemon {
 public:
  ServedDaemon(const char* name, RequestHandler handler, int delayMs = 0,
               HangUpHandler hungUp = nullptr);
  ~ServedDaemon();  // stops the loop if it still runs
  ServedDaemon(const ServedDaemon&) = delete;
  ServedDaemon& operator=(const ServedDaemon&) = delete;

  const std::string& Dir() const { return dir_.Path(); }
  std::string Path() const;
  // Points `ipc` at this daemon's folder.
  void Aim(LinxIpc& ipc) const;
  // Stops the loop and waits for it; how it ended.
  ServeEnd Stop();
  bool Ended() const { return ended_; }

 private:
  ScratchDir dir_{"served-daemon"};
  std::string name_;
  int listenFd_ = -1;
  int stop_[2] = {-1, -1};
  std::atomic<bool> ended_{false};
  ServeEnd end_ = ServeEnd::kStopped;
  std::thread thread_;
};

}  // namespace HostIpc

#endif  // RECORDER_HOST_SERVED_DAEMON_H_
