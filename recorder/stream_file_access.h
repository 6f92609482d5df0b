// The stream manager's stream file access: a table of per-file records, of
// which db uses the current size.
#ifndef RECORDER_STREAM_FILE_ACCESS_H_
#define RECORDER_STREAM_FILE_ACCESS_H_

#include <cstdint>

namespace StreamMgrFileMgmnt {

struct FileMgmnt_t {
  uint32_t number;
  uint32_t stream;
  uint32_t state;
  uint32_t size;  // the file's current size in bytes
};

}  // namespace StreamMgrFileMgmnt

class StreamFileAccess {
 public:
  StreamFileAccess();
  ~StreamFileAccess();
  StreamFileAccess(const StreamFileAccess&) = delete;
  StreamFileAccess& operator=(const StreamFileAccess&) = delete;

  // Prepare the table of files; true on success.
  bool InitializeFileAccess(bool create, bool readOnly);

  // Record one stream file's size (used while the daemon does not run).
  void InitializeFileSize(int number, int size);

  // Fill `info` for stream file `number`; true when the file is known. While
  // the daemon runs, the size is the file's live size.
  bool GetFileInfo(int number, StreamMgrFileMgmnt::FileMgmnt_t& info);
};

#endif  // RECORDER_STREAM_FILE_ACCESS_H_
