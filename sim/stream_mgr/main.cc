// StreamMgr: stand-in of the recorder's stream manager daemon. It owns the
// store while it runs and answers the stream manager's requests over the
// host IPC (see --help).
#include <sqlite3.h>

#include "recorder/host/ipc_protocol.h"
#include "recorder/host/ipc_server.h"
#include "recorder/recorder_places.h"
#include "sim/common/usage.h"
#include "sim/stream_mgr/stream_mgr_options.h"
#include "sim/stream_mgr/stream_mgr_service.h"

int main(int argc, char** argv) {
  StreamMgrOptions options;
  const int usage =
      ParsedUsageStatus("StreamMgr", argc, argv, ParseStreamMgrOptions, kStreamMgrHelp, options);
  if (usage >= 0) return usage;
  sqlite3* database = OpenOwnedStore(Recorder::kStorePath);
  StreamMgrService service(database, options);
  const int status = HostIpc::RunDaemon(
      HostIpc::kEndpointDir, HostIpc::kStreamMgrName, !options.noIpc, options.delayMs,
      [&service](const std::string& request) { return service.Handle(request); },
      [&service] { service.HungUp(); });
  sqlite3_close(database);
  return status;
}
