#include "recorder/host/daemon_options.h"

namespace HostIpc {

DaemonOption FlagOption(const char* name, bool& flag) {
  return {name, false, [&flag](const std::string&) { return flag = true; }};
}

DaemonOption Uint32Option(const char* name, uint32_t& number) {
  return {name, true, [&number](const std::string& value) { return ParseUint32(value, number); }};
}

DaemonOption MillisecondsOption(const char* name, int& milliseconds) {
  return {name, true, [&milliseconds](const std::string& value) {
            return ParseMilliseconds(value, milliseconds);
          }};
}

bool ParseDaemonOptions(int argc, char** argv, const std::vector<DaemonOption>& options,
                        std::string& error) {
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    const size_t equals = word.compare(0, 2, "--") == 0 ? word.find('=') : std::string::npos;
    const std::string name = word.substr(0, equals);
    const DaemonOption* option = nullptr;
    for (const DaemonOption& candidate : options) {
      if (name == candidate.name) option = &candidate;
    }
    if (option == nullptr) {
      error = "unknown option " + name;
      return false;
    }
    std::string value;
    if (equals != std::string::npos) {
      if (!option->takesValue) {
        error = "option " + name + " takes no value";
        return false;
      }
      value = word.substr(equals + 1);
    } else if (option->takesValue) {
      if (i + 1 >= argc) {
        error = "option " + name + " needs a value";
        return false;
      }
      value = argv[++i];
    }
    if (!option->apply(value)) {
      error = "bad value for " + name + ": '" + value + "'";
      return false;
    }
  }
  return true;
}

bool ParseUint32(const std::string& text, uint32_t& value) {
  if (text.empty() || text.size() > 10) return false;
  uint64_t number = 0;
  for (const char c : text) {
    if (c < '0' || c > '9') return false;
    number = number * 10 + static_cast<uint64_t>(c - '0');
  }
  if (number > 0xffffffffu) return false;
  value = static_cast<uint32_t>(number);
  return true;
}

bool ParseMilliseconds(const std::string& text, int& value) {
  uint32_t number = 0;
  if (!ParseUint32(text, number) || number > 0x7fffffffu) return false;
  value = static_cast<int>(number);
  return true;
}

}  // namespace HostIpc
