// Fuzzes the host client's decoding of the daemons' answers: every decoder
// gets the same bytes. An answer that decodes must be the one encoding of
// what was decoded, so that no two byte strings mean the same records.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "fuzz/fuzz_input.h"
#include "recorder/host/ipc_codec.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string body(reinterpret_cast<const char*>(data), size);

  std::vector<StreamMgrApi::EventRecordItem> events;
  if (HostIpc::DecodeEventsAnswer(body, events)) {
    Require(HostIpc::EventsAnswer(events) == body);
  } else {
    Require(events.empty());  // a failed decoding leaves the list alone
  }

  std::vector<StreamMgrApi::StreamfileRecordItem> files;
  if (HostIpc::DecodeFilesAnswer(body, files)) {
    Require(HostIpc::FilesAnswer(files) == body);
  } else {
    Require(files.empty());
  }

  uint32_t count = 12345;
  if (HostIpc::DecodeCountAnswer(body, count)) {
    Require(HostIpc::CountAnswer(count) == body);
  } else {
    Require(count == 12345);
  }

  bool deleted = false;
  if (HostIpc::DecodeDeleteAnswer(body, deleted)) {
    Require(HostIpc::DeleteAnswer(deleted) == body);
  }

  uint32_t liveSize = 0;
  if (HostIpc::DecodeLiveSizeAnswer(body, liveSize)) {
    Require(HostIpc::LiveSizeAnswer(liveSize) == body);
  }

  VideoRecordingSettings settings;
  if (HostIpc::DecodeSettingsAnswer(body, settings)) {
    Require(HostIpc::SettingsAnswer(settings) == body);
  }

  // The daemon side reads the same kind of bytes as a request.
  HostIpc::WireReader reader(body);
  HostIpc::Kind kind = HostIpc::kEvents;
  if (HostIpc::ReadRequestHeader(reader, kind)) {
    std::string text;
    if (reader.String(text) && reader.Finished()) {
      Require(HostIpc::TextRequest(kind, text) == body);
    }
  }
  return 0;
}
