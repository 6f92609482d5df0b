// Host configuration client. ConfigMP is a process of its own, reached by a
// short connection per request to its endpoint, whether or not the caller's
// endpoint was initialised for StreamMgr.
#include "recorder/config_mp_client.h"

#include "recorder/host/ipc_channel.h"
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
  const std::string path =
      HostIpc::EndpointPath(ipc_.GetImpl().endpointDir, HostIpc::kConfigMpName);
  if (!HostIpc::ExchangeOnce(path, HostIpc::SettingsRequest(), answer, timeoutMs) ||
      !HostIpc::DecodeSettingsAnswer(answer, settings)) {
    return -1;
  }
  return 0;
}
