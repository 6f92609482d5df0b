// The bodies of the host IPC messages: requests, answers and the records they
// carry, in the versioned format of PROTOCOL.md. Decoding checks every byte
// and reports failure for anything malformed, truncated or left over.
#ifndef RECORDER_HOST_IPC_CODEC_H_
#define RECORDER_HOST_IPC_CODEC_H_

#include <cstdint>
#include <string>
#include <vector>

#include "recorder/config_mp_client.h"
#include "recorder/event_record.h"
#include "recorder/host/ipc_protocol.h"
#include "recorder/host/wire.h"
#include "recorder/streamfile_record.h"

namespace HostIpc {

// Records.
void EncodeEvent(WireWriter& writer, const StreamMgrApi::EventRecordItem& event);
bool DecodeEvent(WireReader& reader, StreamMgrApi::EventRecordItem& event);
void EncodeFile(WireWriter& writer, const StreamMgrApi::StreamfileRecordItem& file);
bool DecodeFile(WireReader& reader, StreamMgrApi::StreamfileRecordItem& file);

// Requests, client side.
std::string TextRequest(Kind kind, const std::string& text);  // events, files, count, delete
std::string LiveSizeRequest(uint32_t number);
std::string SettingsRequest();

// Requests, daemon side: the header, then the payload through the reader.
bool ReadRequestHeader(WireReader& reader, Kind& kind);

// Answers, daemon side. Each starts with the header of a successful answer;
// the daemon appends the payload.
WireWriter StartAnswer(Kind kind);
std::string FailedAnswer(Kind kind);
std::string EventsAnswer(const std::vector<StreamMgrApi::EventRecordItem>& events);
std::string FilesAnswer(const std::vector<StreamMgrApi::StreamfileRecordItem>& files);
std::string CountAnswer(uint32_t count);
std::string DeleteAnswer(bool deleted);
std::string LiveSizeAnswer(uint32_t size);
std::string SettingsAnswer(const VideoRecordingSettings& settings);
// An answer with a valid header and a payload no client can decode, for
// simulating a garbled daemon.
std::string MalformedAnswer(Kind kind);

// Answers, client side: true only for a well-formed successful answer to a
// request of that kind; the output is touched only then.
bool DecodeEventsAnswer(const std::string& body,
                        std::vector<StreamMgrApi::EventRecordItem>& events);
bool DecodeFilesAnswer(const std::string& body,
                       std::vector<StreamMgrApi::StreamfileRecordItem>& files);
bool DecodeCountAnswer(const std::string& body, uint32_t& count);
bool DecodeDeleteAnswer(const std::string& body, bool& deleted);
bool DecodeLiveSizeAnswer(const std::string& body, uint32_t& size);
bool DecodeSettingsAnswer(const std::string& body, VideoRecordingSettings& settings);

}  // namespace HostIpc

#endif  // RECORDER_HOST_IPC_CODEC_H_
