// ConfigMP: stand-in of the recorder's configuration service (see --help).
#include <cstdio>

#include "recorder/host/ipc_protocol.h"
#include "recorder/host/ipc_server.h"
#include "sim/config_mp/config_mp_options.h"

int main(int argc, char** argv) {
  ConfigMpOptions options;
  std::string error;
  if (!ParseConfigMpOptions(argc, argv, options, error)) {
    std::fprintf(stderr, "ConfigMP: %s\n%s", error.c_str(), kConfigMpHelp);
    return 2;
  }
  if (options.help) {
    std::fputs(kConfigMpHelp, stdout);
    return 0;
  }
  return HostIpc::RunDaemon(
      HostIpc::kEndpointDir, HostIpc::kConfigMpName, true, options.delayMs,
      [&options](const std::string& request) { return HandleConfigMpRequest(options, request); });
}
