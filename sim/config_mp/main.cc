// ConfigMP: stand-in of the recorder's configuration service (see --help).
#include "recorder/host/ipc_protocol.h"
#include "recorder/host/ipc_server.h"
#include "sim/common/usage.h"
#include "sim/config_mp/config_mp_options.h"

int main(int argc, char** argv) {
  ConfigMpOptions options;
  const int status =
      ParsedUsageStatus("ConfigMP", argc, argv, ParseConfigMpOptions, kConfigMpHelp, options);
  if (status >= 0) return status;
  return HostIpc::RunDaemon(
      HostIpc::kEndpointDir, HostIpc::kConfigMpName, true, options.delayMs,
      [&options](const std::string& request) { return HandleConfigMpRequest(options, request); });
}
