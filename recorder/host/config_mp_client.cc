// Placeholder configuration client: the service cannot be reached yet.
#include "recorder/config_mp_client.h"

ConfigMPClient::ConfigMPClient(LinxIpc& ipc, int timeoutSeconds)
    : ipc_(ipc), timeoutSeconds_(timeoutSeconds) {}

ConfigMPClient::~ConfigMPClient() = default;

int ConfigMPClient::GetVideoRecordingSettings(VideoRecordingSettings&) { return -1; }
