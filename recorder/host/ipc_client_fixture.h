// What the client tests share: an endpoint aimed at a folder of the test's
// own, and a stopwatch.
#ifndef RECORDER_HOST_IPC_CLIENT_FIXTURE_H_
#define RECORDER_HOST_IPC_CLIENT_FIXTURE_H_

#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "recorder/host/fake_daemon.h"
#include "recorder/host/ipc_channel.h"
#include "recorder/host/ipc_codec.h"
#include "recorder/host/linx_ipc_impl.h"
#include "recorder/stream_mgr_api.h"

namespace HostIpc {

using FD = FakeDaemon;

// db's endpoint, looking for the daemons in `dir` instead of the fixed folder.
struct AimedIpc {
  explicit AimedIpc(const std::string& dir) { EndpointOf(ipc).endpointDir = dir; }
  LinxIpc ipc{"db"};
};

// A daemon named as StreamMgr, made of `args`, and db's endpoint aimed at it
// and initialised.
template <typename Daemon>
struct Served {
  template <typename... Args>
  explicit Served(Args... args) : daemon(kStreamMgrName, std::move(args)...) {
    EXPECT_EQ(0, ipc.Init());
  }
  Daemon daemon;
  AimedIpc aimed{daemon.Dir()};
  LinxIpc& ipc = aimed.ipc;
};

// The count the daemon answers to `text`; -1 when the request fails, which
// must leave the count as it was.
inline int64_t Asked(LinxIpc& ipc, const std::string& text, int timeoutMs = 5000) {
  unsigned int count = 5;
  if (StreamMgrApi::GetCountFromSqlStatement(ipc, text, count, timeoutMs)) return count;
  EXPECT_EQ(5u, count);
  return -1;
}

inline double MillisecondsSince(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

}  // namespace HostIpc

#endif  // RECORDER_HOST_IPC_CLIENT_FIXTURE_H_
