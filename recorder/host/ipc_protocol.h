// Constants of the host IPC between the recorder's client libraries and the
// StreamMgr and ConfigMP simulators. PROTOCOL.md describes the bytes.
#ifndef RECORDER_HOST_IPC_PROTOCOL_H_
#define RECORDER_HOST_IPC_PROTOCOL_H_

#include <cstdint>

#include "recorder/recorder_places.h"

namespace HostIpc {

// The folder of the endpoints; the recorder sandbox makes it private.
constexpr const char* kEndpointDir = "/run/linx";
constexpr const char* kStreamMgrName = "StreamMgr";
constexpr const char* kConfigMpName = "ConfigMP";

// First byte of every message body; bumped on any incompatible change.
constexpr uint8_t kVersion = 1;

// A frame announcing more than this is refused unread: no answer of a sane
// daemon comes near it, and a corrupt length must not make us allocate.
constexpr uint32_t kMaxFrameBytes = 32u * 1024u * 1024u;

// Time-out of the requests whose callers pass none (delete, live size).
constexpr int kDefaultTimeoutMs = Recorder::kRequestTimeoutMs;

enum Kind : uint8_t {
  kEvents = 1,
  kFiles = 2,
  kCount = 3,
  kDelete = 4,
  kLiveSize = 5,
  kSettings = 6
};

enum Status : uint8_t { kOk = 0, kFailed = 1 };

}  // namespace HostIpc

#endif  // RECORDER_HOST_IPC_PROTOCOL_H_
