// ConfigMP: stand-in of the recorder's configuration service (see --help).
#include "recorder/host/ipc_protocol.h"
#include "recorder/host/ipc_server.h"
#include "sim/common/usage.h"
#include "sim/config_mp/config_mp_options.h"

int main(int argc, char** argv) {
  ConfigMpOptions options;
  std::string error;
  const bool parsed = ParseConfigMpOptions(argc, argv, options, error);
  const int status = UsageStatus("ConfigMP", parsed, error, parsed && options.help, kConfigMpHelp);
  if (status >= 0) return status;
  return HostIpc::RunDaemon(
      HostIpc::kEndpointDir, HostIpc::kConfigMpName, true, options.delayMs,
      [&options](const std::string& request) { return HandleConfigMpRequest(options, request); });
}
