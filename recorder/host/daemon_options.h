// Command lines of the recorder simulators: options as "--name value" or
// "--name=value", described by a table; anything not in it is refused.
#ifndef RECORDER_HOST_DAEMON_OPTIONS_H_
#define RECORDER_HOST_DAEMON_OPTIONS_H_

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace HostIpc {

struct DaemonOption {
  const char* name;  // with its dashes, e.g. "--log"
  bool takesValue;
  // Applies the option (flags get ""); false when the value is bad.
  std::function<bool(const std::string& value)> apply;
};

// The common kinds of options.
DaemonOption FlagOption(const char* name, bool& flag);
DaemonOption Uint32Option(const char* name, uint32_t& number);
DaemonOption MillisecondsOption(const char* name, int& milliseconds);

// False with a message in `error` on the first word that is not a good option.
bool ParseDaemonOptions(int argc, char** argv, const std::vector<DaemonOption>& options,
                        std::string& error);

// A decimal number of 0 to 4294967295 and nothing else.
bool ParseUint32(const std::string& text, uint32_t& value);

// A non-negative decimal number of milliseconds that fits an int.
bool ParseMilliseconds(const std::string& text, int& value);

}  // namespace HostIpc

#endif  // RECORDER_HOST_DAEMON_OPTIONS_H_
