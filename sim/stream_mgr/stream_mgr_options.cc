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

bool IsFlag(const std::string& name) {
  return name == "--fail-requests" || name == "--no-ipc" || name == "--garbage" || name == "--help";
}

void SetFlag(const std::string& name, StreamMgrOptions& options) {
  if (name == "--fail-requests") options.failRequests = true;
  if (name == "--no-ipc") options.noIpc = true;
  if (name == "--garbage") options.garbage = true;
  if (name == "--help") options.help = true;
}

// Applies an option that takes a value; false when the value is bad.
bool SetValue(const std::string& name, const std::string& value, StreamMgrOptions& options) {
  if (name == "--refuse-delete") {
    options.refusedDeletes.insert(value);
    return true;
  }
  if (name == "--live-size") return ParseLiveSize(value, options);
  if (name == "--log") {
    options.logPath = value;
    return !value.empty();
  }
  if (name == "--delay-ms") return HostIpc::ParseMilliseconds(value, options.delayMs);
  options.dieAfterSet = true;
  return HostIpc::ParseUint32(value, options.dieAfter);
}

bool TakesValue(const std::string& name) {
  return name == "--refuse-delete" || name == "--live-size" || name == "--log" ||
         name == "--delay-ms" || name == "--die-after";
}

}  // namespace

bool ParseStreamMgrOptions(int argc, char** argv, StreamMgrOptions& options, std::string& error) {
  HostIpc::DaemonArgs args(argc, argv);
  std::string name, value;
  while (args.Next(name)) {
    if (IsFlag(name) && !args.HasInlineValue()) {
      SetFlag(name, options);
    } else if (TakesValue(name)) {
      if (!args.Value(value)) {
        error = "option " + name + " needs a value";
        return false;
      }
      if (!SetValue(name, value, options)) {
        error = "bad value for " + name + ": '" + value + "'";
        return false;
      }
    } else {
      error = "unknown option " + name;
      return false;
    }
  }
  return true;
}
