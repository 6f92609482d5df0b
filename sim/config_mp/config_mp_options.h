// Options of the ConfigMP simulator and the answers they make it give.
#ifndef SIM_CONFIG_MP_CONFIG_MP_OPTIONS_H_
#define SIM_CONFIG_MP_CONFIG_MP_OPTIONS_H_

#include <cstdint>
#include <string>

#include "recorder/host/ipc_server.h"

struct ConfigMpOptions {
  uint32_t reExportHours = 0;  // --reexport-hours N
  bool fail = false;           // --fail
  int delayMs = 0;             // --delay-ms N
  bool garbage = false;        // --garbage
  bool help = false;           // --help
};

extern const char kConfigMpHelp[];

// Parses the command line; false with a message in `error` on a bad one.
bool ParseConfigMpOptions(int argc, char** argv, ConfigMpOptions& options, std::string& error);

// Answers one request: the video recording settings, or a failure.
HostIpc::Reply HandleConfigMpRequest(const ConfigMpOptions& options, const std::string& request);

#endif  // SIM_CONFIG_MP_CONFIG_MP_OPTIONS_H_
