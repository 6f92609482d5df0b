// Client of the recorder's configuration service.
#ifndef RECORDER_CONFIG_MP_CLIENT_H_
#define RECORDER_CONFIG_MP_CLIENT_H_

#include <cstdint>

class LinxIpc;

struct VideoRecordingSettings {
  uint32_t preEventSeconds = 0;
  uint32_t postEventSeconds = 0;
  uint32_t reExportHours = 0;  // hours after export until re-export; 0 disables it
};

class ConfigMPClient {
 public:
  ConfigMPClient(LinxIpc& ipc, int timeoutSeconds);
  ~ConfigMPClient();
  ConfigMPClient(const ConfigMPClient&) = delete;
  ConfigMPClient& operator=(const ConfigMPClient&) = delete;

  // 0 on success; non-zero when the service cannot be asked or answers an error.
  int GetVideoRecordingSettings(VideoRecordingSettings& settings);

 private:
  LinxIpc& ipc_;
  int timeoutSeconds_;
};

#endif  // RECORDER_CONFIG_MP_CLIENT_H_
