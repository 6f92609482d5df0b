// Placeholder requests: every request fails until the daemon path exists.
#include "recorder/stream_mgr_api.h"

namespace StreamMgrApi {

bool GetEventsFromSqlStatement(LinxIpc&, std::string, EventRecordListMessage&, int) {
  return false;
}

bool GetFilesFromSqlStatement(LinxIpc&, std::string, StreamfileRecordListMessage&, int) {
  return false;
}

bool GetCountFromSqlStatement(LinxIpc&, std::string, unsigned int&, int) { return false; }

bool DeleteEvent(std::string, LinxIpc&) { return false; }

}  // namespace StreamMgrApi
