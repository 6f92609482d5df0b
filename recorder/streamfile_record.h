// One row of the stream manager's streamfiles table as its client library
// hands it out, and the list that a files request fills.
#ifndef RECORDER_STREAMFILE_RECORD_H_
#define RECORDER_STREAMFILE_RECORD_H_

#include <cstdint>
#include <vector>

#include "recorder/item.h"

namespace StreamMgrApi {

enum StreamFileState : uint32_t {
  FILE_FREE = 0,
  FILE_ALLOCATED = 1,
  FILE_USED_FREE = 2,
  FILE_USED_KEEP = 3,
};

enum StreamFileType : uint32_t {
  FILE_TYPE_INIT = 0,
  FILE_TYPE_NORMAL = 1,
  FILE_TYPE_BACKGROUND = 2,
  FILE_TYPE_WIPED = 3,
};

class StreamfileRecordItem : public Item {
 public:
  UIntItem number;
  UIntItem stream;
  StreamFileState state = FILE_FREE;
  UIntItem startTick;
  UIntItem stopTick;
  UIntItem startTime;
  UIntItem stopTime;
  UIntItem previous;
  UIntItem next;
  UIntItem size;
  StreamFileType type = FILE_TYPE_INIT;
};

class StreamfileRecordListMessage : public Item {
 public:
  std::vector<StreamfileRecordItem> items;
};

}  // namespace StreamMgrApi

#endif  // RECORDER_STREAMFILE_RECORD_H_
