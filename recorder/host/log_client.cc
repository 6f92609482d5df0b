// Host logger: appends each logged message as one line to the file named by
// RECORDER_LOG; the level comes from RECORDER_LOG_LEVEL. It never writes to
// the process's own standard output or error.
#include "recorder/log_client.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

LogClient::LogClient() = default;

LogClient& LogClient::Instance() {
  static LogClient instance;
  return instance;
}

void LogClient::ProcessName(const std::string& name) { processName_ = name; }

const std::string& LogClient::GetProcessName() const { return processName_; }

int LogClient::GetLevel() const {
  const char* level = std::getenv("RECORDER_LOG_LEVEL");
  return level == nullptr ? 0 : static_cast<int>(std::strtol(level, nullptr, 0));
}

void LogClient::Write(const std::string& line) {
  const char* path = std::getenv("RECORDER_LOG");
  if (path == nullptr || *path == '\0') {
    return;
  }
  FILE* log = std::fopen(path, "a");
  if (log == nullptr) {
    return;
  }
  std::fprintf(log, "%s: %s\n", processName_.c_str(), line.c_str());
  std::fclose(log);
}

void LogMsg(int level, const char* file, int line, const char* function, const std::string& text) {
  LogClient& logger = LogClient::Instance();
  if ((logger.GetLevel() & level) == 0) {
    return;
  }
  const char* slash = std::strrchr(file, '/');
  const char* base = slash == nullptr ? file : slash + 1;
  logger.Write(std::string(base) + ":" + std::to_string(line) + " " + function + ": " + text);
}
