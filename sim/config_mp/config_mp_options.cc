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
  HostIpc::DaemonArgs args(argc, argv);
  std::string name, value;
  while (args.Next(name)) {
    const bool inlineValue = args.HasInlineValue();
    if (name == "--fail" && !inlineValue) {
      options.fail = true;
    } else if (name == "--garbage" && !inlineValue) {
      options.garbage = true;
    } else if (name == "--help" && !inlineValue) {
      options.help = true;
    } else if (name == "--reexport-hours" || name == "--delay-ms") {
      if (!args.Value(value)) {
        error = "option " + name + " needs a value";
        return false;
      }
      const bool good = name == "--delay-ms" ? HostIpc::ParseMilliseconds(value, options.delayMs)
                                             : HostIpc::ParseUint32(value, options.reExportHours);
      if (!good) {
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
