#include "sim/config_mp/config_mp_options.h"

#include "recorder/host/daemon_options.h"
#include "recorder/host/ipc_codec.h"

const char kConfigMpHelp[] =
    "usage: ConfigMP [--reexport-hours N] [--fail] [--delay-ms N] [--garbage]\n"
    "\n"
    "Stand-in of the recorder's configuration service. It answers the video\n"
    "recording settings request on /run/linx/ConfigMP.\n"
    "\n"
    "  --reexport-hours N  hours after export until an event is re-exported\n"
    "                      (0 to 4294967295; default 0: re-export disabled)\n"
    "  --fail              answer every request with an error\n"
    "\n"
    "Test options, to reproduce misbehaving services:\n"
    "  --delay-ms N        wait N milliseconds before each answer\n"
    "  --garbage           answer every request with bytes no client can decode\n"
    "  --help              show this text\n";

bool ParseConfigMpOptions(int argc, char** argv, ConfigMpOptions& options, std::string& error) {
  const std::vector<HostIpc::DaemonOption> table = {
      HostIpc::Uint32Option("--reexport-hours", options.reExportHours),
      HostIpc::FlagOption("--fail", options.fail),
      HostIpc::MillisecondsOption("--delay-ms", options.delayMs),
      HostIpc::FlagOption("--garbage", options.garbage),
      HostIpc::FlagOption("--help", options.help),
  };
  return HostIpc::ParseDaemonOptions(argc, argv, table, error);
}

HostIpc::Reply HandleConfigMpRequest(const ConfigMpOptions& options, const std::string& request) {
  HostIpc::WireReader reader(request);
  HostIpc::Kind kind = HostIpc::kSettings;
  if (!HostIpc::ReadRequestHeader(reader, kind)) {
    return HostIpc::Reply{HostIpc::Reply::Action::kDrop, std::string()};
  }
  std::string answer;
  if (options.garbage) {
    answer = HostIpc::MalformedAnswer(kind);
  } else if (kind != HostIpc::kSettings || !reader.Finished() || options.fail) {
    answer = HostIpc::FailedAnswer(kind);
  } else {
    VideoRecordingSettings settings;
    settings.reExportHours = options.reExportHours;
    answer = HostIpc::SettingsAnswer(settings);
  }
  return HostIpc::Reply{HostIpc::Reply::Action::kAnswer, answer};
}
