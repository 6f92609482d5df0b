#include "sim/stream_mgr/stream_mgr_options.h"

#include "recorder/host/daemon_options.h"

const char kStreamMgrHelp[] =
    "usage: StreamMgr [--refuse-delete REID]... [--fail-requests] [--no-ipc]\n"
    "                 [--live-size NUMBER=BYTES]... [--log FILE]\n"
    "                 [--delay-ms N] [--garbage] [--die-after N]\n"
    "\n"
    "Stand-in of the recorder's stream manager daemon. It owns\n"
    "/mnt/hd/streammgr/stream.db and answers the events, files, count and delete\n"
    "requests of the stream manager's client library on /run/linx/StreamMgr.\n"
    "\n"
    "  --refuse-delete REID     a delete request for REID answers false (repeatable)\n"
    "  --fail-requests          answer every request at once as failed\n"
    "  --no-ipc                 run under the name StreamMgr but offer no endpoint\n"
    "  --live-size NUMBER=BYTES report BYTES as the live size of stream file NUMBER\n"
    "                           (repeatable); other files report the stored size\n"
    "  --log FILE               append \"OPERATION<TAB>SQL or REID\" per request\n"
    "\n"
    "Test options, to reproduce misbehaving daemons:\n"
    "  --delay-ms N             wait N milliseconds before each answer\n"
    "  --garbage                answer every request with bytes no client can decode\n"
    "  --die-after N            answer N requests, then exit without answering when\n"
    "                           request N+1 arrives\n"
    "  --help                   show this text\n";

namespace {

bool ParseLiveSize(const std::string& text, StreamMgrOptions& options) {
  const size_t equals = text.find('=');
  uint32_t number = 0, bytes = 0;
  if (equals == std::string::npos || !HostIpc::ParseUint32(text.substr(0, equals), number) ||
      !HostIpc::ParseUint32(text.substr(equals + 1), bytes)) {
    return false;
  }
  options.liveSizes[number] = bytes;
  return true;
}

}  // namespace

bool ParseStreamMgrOptions(int argc, char** argv, StreamMgrOptions& options, std::string& error) {
  StreamMgrOptions& o = options;
  const std::vector<HostIpc::DaemonOption> table = {
      {"--refuse-delete", true,
       [&o](const std::string& reid) {
         o.refusedDeletes.insert(reid);
         return true;
       }},
      HostIpc::FlagOption("--fail-requests", o.failRequests),
      HostIpc::FlagOption("--no-ipc", o.noIpc),
      {"--live-size", true, [&o](const std::string& v) { return ParseLiveSize(v, o); }},
      {"--log", true,
       [&o](const std::string& path) {
         o.logPath = path;
         return !path.empty();
       }},
      HostIpc::MillisecondsOption("--delay-ms", o.delayMs),
      HostIpc::FlagOption("--garbage", o.garbage),
      {"--die-after", true,
       [&o](const std::string& v) {
         o.dieAfterSet = true;
         return HostIpc::ParseUint32(v, o.dieAfter);
       }},
      HostIpc::FlagOption("--help", o.help),
  };
  return HostIpc::ParseDaemonOptions(argc, argv, table, error);
}
