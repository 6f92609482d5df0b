#include "recorder/host/daemon_options.h"

namespace HostIpc {

bool DaemonArgs::Next(std::string& name) {
  if (next_ >= words_.size()) return false;
  const std::string& word = words_[next_++];
  const size_t equals = word.find('=');
  hasInline_ = equals != std::string::npos && word.compare(0, 2, "--") == 0;
  name = hasInline_ ? word.substr(0, equals) : word;
  inline_ = hasInline_ ? word.substr(equals + 1) : std::string();
  return true;
}

bool DaemonArgs::Value(std::string& value) {
  if (hasInline_) {
    value = inline_;
    hasInline_ = false;
    return true;
  }
  if (next_ >= words_.size()) return false;
  value = words_[next_++];
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
