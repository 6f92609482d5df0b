// Command-line words of the recorder simulators: both take their options as
// "--name value" or "--name=value" and refuse anything they do not know.
#ifndef RECORDER_HOST_DAEMON_OPTIONS_H_
#define RECORDER_HOST_DAEMON_OPTIONS_H_

#include <cstdint>
#include <string>
#include <vector>

namespace HostIpc {

// Walks the arguments of a simulator one option at a time.
class DaemonArgs {
 public:
  DaemonArgs(int argc, char** argv) : words_(argv + 1, argv + (argc > 0 ? argc : 1)) {}

  // Takes the next option; false at the end. `name` is the word up to any '='.
  bool Next(std::string& name);
  // The option's value: after '=', or the next word. False when there is none.
  bool Value(std::string& value);
  // True when the option was given a value it does not take ("--fail=x").
  bool HasInlineValue() const { return hasInline_; }

 private:
  std::vector<std::string> words_;
  size_t next_ = 0;
  bool hasInline_ = false;
  std::string inline_;
};

// A decimal number of 0 to 4294967295 and nothing else.
bool ParseUint32(const std::string& text, uint32_t& value);

// A non-negative decimal number of milliseconds that fits an int.
bool ParseMilliseconds(const std::string& text, int& value);

}  // namespace HostIpc

#endif  // RECORDER_HOST_DAEMON_OPTIONS_H_
