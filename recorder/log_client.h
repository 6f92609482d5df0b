// The recorder's logger. A message is logged only when the current level has
// the message level's bit set.
#ifndef RECORDER_LOG_CLIENT_H_
#define RECORDER_LOG_CLIENT_H_

#include <string>

class LogClient {
 public:
  static LogClient& Instance();

  void ProcessName(const std::string& name);
  const std::string& GetProcessName() const;
  int GetLevel() const;
  void Write(const std::string& line);

 private:
  LogClient();
  std::string processName_;
};

// Log `text` at `level` as "FILE:LINE FUNCTION: TEXT", FILE without its folders.
void LogMsg(int level, const char* file, int line, const char* function, const std::string& text);

#define SysLogMsg(level, text) LogMsg((level), __FILE__, __LINE__, __func__, (text))

#endif  // RECORDER_LOG_CLIENT_H_
