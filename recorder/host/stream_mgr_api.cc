// Host requests of the stream manager's client library: each sends one
// request over the endpoint's connection and decodes the answer. A failed,
// late or malformed answer leaves the caller's list or count as it was.
#include "recorder/stream_mgr_api.h"

#include <utility>

#include "recorder/host/ipc_codec.h"
#include "recorder/host/linx_ipc_impl.h"

namespace StreamMgrApi {

namespace {

template <typename Record, typename Decode>
bool ListRequest(LinxIpc& ipc, HostIpc::Kind kind, const std::string& sql,
                 std::vector<Record>& items, int timeout, Decode decode) {
  std::string answer;
  return HostIpc::StreamMgrRequest(ipc, HostIpc::TextRequest(kind, sql), answer, timeout) &&
         decode(answer, items);
}

}  // namespace

bool GetEventsFromSqlStatement(LinxIpc& ipc, std::string sql, EventRecordListMessage& list,
                               int timeout) {
  return ListRequest(ipc, HostIpc::kEvents, sql, list.items, timeout, HostIpc::DecodeEventsAnswer);
}

bool GetFilesFromSqlStatement(LinxIpc& ipc, std::string sql, StreamfileRecordListMessage& list,
                              int timeout) {
  return ListRequest(ipc, HostIpc::kFiles, sql, list.items, timeout, HostIpc::DecodeFilesAnswer);
}

bool GetCountFromSqlStatement(LinxIpc& ipc, std::string sql, unsigned int& count, int timeout) {
  std::string answer;
  uint32_t value = 0;
  if (!HostIpc::StreamMgrRequest(ipc, HostIpc::TextRequest(HostIpc::kCount, sql), answer,
                                 timeout) ||
      !HostIpc::DecodeCountAnswer(answer, value)) {
    return false;
  }
  count = value;
  return true;
}

bool DeleteEvent(std::string reid, LinxIpc& ipc) {
  std::string answer;
  bool deleted = false;
  return HostIpc::StreamMgrRequest(ipc, HostIpc::TextRequest(HostIpc::kDelete, reid), answer,
                                   HostIpc::kDefaultTimeoutMs) &&
         HostIpc::DecodeDeleteAnswer(answer, deleted) && deleted;
}

}  // namespace StreamMgrApi
