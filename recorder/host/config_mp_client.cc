// Host configuration client. ConfigMP is a process of its own, reached over a
// connection to its endpoint that the caller's endpoint keeps, whether or not
// it was initialised for StreamMgr. A listing asks once per row: setting up
// a connection for every request cost twice as much as the request itself.
#include "recorder/config_mp_client.h"

#include "recorder/host/ipc_codec.h"
#include "recorder/host/linx_ipc_impl.h"

ConfigMPClient::ConfigMPClient(LinxIpc& ipc, int timeoutSeconds)
    : ipc_(ipc), timeoutSeconds_(timeoutSeconds) {}

ConfigMPClient::~ConfigMPClient() = default;

int ConfigMPClient::GetVideoRecordingSettings(VideoRecordingSettings& settings) {
  // Seconds as the library takes them; the wait itself is in milliseconds.
  const int timeoutMs = timeoutSeconds_ > 0 && timeoutSeconds_ <= 0x7fffffff / 1000
                            ? timeoutSeconds_ * 1000
                            : HostIpc::kDefaultTimeoutMs;
  std::string answer;
  if (!HostIpc::ConfigMpRequest(ipc_, HostIpc::SettingsRequest(), answer, timeoutMs) ||
      !HostIpc::DecodeSettingsAnswer(answer, settings)) {
    return -1;
  }
  return 0;
}
