// The requests the StreamMgr simulator answers: events, files and count
// requests run their SQL on the database it owns, with the same row loaders
// as the tool's direct path; a delete request deletes one events row.
#ifndef SIM_STREAM_MGR_STREAM_MGR_SERVICE_H_
#define SIM_STREAM_MGR_STREAM_MGR_SERVICE_H_

#include <sqlite3.h>

#include <cstdint>
#include <string>
#include <vector>

#include "recorder/host/ipc_server.h"
#include "sim/stream_mgr/page_cursor.h"
#include "sim/stream_mgr/stream_mgr_options.h"

// Opens the store the daemon owns, for reading and writing but never creating
// it: a missing store stays missing. The handle is returned even when the
// open failed; queries on it then fail.
sqlite3* OpenOwnedStore(const std::string& path);

class StreamMgrService {
 public:
  // `database` stays the caller's; it may be a handle whose open failed, in
  // which case every query is answered as failed.
  StreamMgrService(sqlite3* database, StreamMgrOptions options);

  HostIpc::Reply Handle(const std::string& request);

  // A client went away. A listing it left half-paged must not keep the
  // store's read lock (and writers out) until some other request comes.
  void HungUp() { cursor_.Drop(); }

 private:
  std::string Events(const std::string& sql);
  std::string Files(const std::string& sql);
  // The rows `sql` selects, from the page cursor when it asks for the next
  // page; false when it cannot be prepared or a step fails.
  template <typename Record, typename Load>
  bool Rows(HostIpc::Kind kind, const std::string& sql, std::vector<Record>& records, Load load);
  std::string Count(const std::string& sql);
  std::string Delete(const std::string& reid);
  std::string LiveSize(uint32_t number);
  void Log(const char* operation, const std::string& text) const;

  sqlite3* database_;
  StreamMgrOptions options_;
  uint64_t requests_ = 0;  // events, files, count and delete requests received
  PageCursor cursor_;
};

#endif  // SIM_STREAM_MGR_STREAM_MGR_SERVICE_H_
