// The daemon side of the host IPC, shared by the StreamMgr and ConfigMP
// simulators: the endpoint socket and one poll() loop that serves any number
// of connections, answering the requests of each one after another.
#ifndef RECORDER_HOST_IPC_SERVER_H_
#define RECORDER_HOST_IPC_SERVER_H_

#include <functional>
#include <string>

namespace HostIpc {

// What the daemon does with one request.
struct Reply {
  enum class Action {
    kAnswer,  // send `body` as the answer
    kDrop,    // close this connection without answering
    kDie,     // end the daemon at once, without answering
  };
  Action action = Action::kAnswer;
  std::string body;
};

using RequestHandler = std::function<Reply(const std::string& request)>;

// Told that a client connection has closed (or been dropped), so that a
// daemon can let go of what it held for that client.
using HangUpHandler = std::function<void()>;

// Creates the listening socket at `path`. It is bound under a temporary name
// and renamed into place once it listens, so whoever sees the socket file can
// connect. Returns the descriptor, or -1.
int CreateEndpoint(const std::string& path);

enum class ServeEnd { kStopped, kDied };

// Serves connections on `listenFd` (none when -1) until `stopFd` becomes
// readable or a handler asks to die. Each answer waits `delayMs` first;
// `hungUp`, when given, is called for every connection that closes.
ServeEnd Serve(int listenFd, int stopFd, int delayMs, const RequestHandler& handler,
               const HangUpHandler& hungUp = nullptr);

// A daemon's whole life: offers the endpoint `dir`/`name` (unless
// `offerEndpoint` is false), serves until SIGTERM or SIGINT and removes the
// endpoint again. Returns the exit status; a handler that asks to die ends
// the process here with status 3, after removing the endpoint.
int RunDaemon(const std::string& dir, const char* name, bool offerEndpoint, int delayMs,
              const RequestHandler& handler, const HangUpHandler& hungUp = nullptr);

}  // namespace HostIpc

#endif  // RECORDER_HOST_IPC_SERVER_H_
