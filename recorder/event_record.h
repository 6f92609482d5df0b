// One row of the stream manager's events table as its client library hands
// it out, and the list that an events request fills.
#ifndef RECORDER_EVENT_RECORD_H_
#define RECORDER_EVENT_RECORD_H_

#include <cstdint>
#include <vector>

#include "recorder/item.h"

namespace StreamMgrApi {

enum EventState : uint32_t {
  EVENT_RECORD_COMPLETE = 0,
  EVENT_TRANSFERRED = 1,
  EVENT_RECORDING = 2,
  EVENT_IN_POST = 3,
};

enum SplitEventState : uint32_t {
  SPLIT_NOT_CHECKED = 0,
  SPLIT_NOT_NEEDED = 1,
  SPLIT_PENDING = 2,
  SPLIT_ALREADY_SPLIT = 3,
  SPLIT_EXPORT_ONLY = 4,
};

// The two c/r codes of an event; shown as the letters r, c, a, k.
enum CrCode : uint32_t {
  CR_CODE_R = 0,
  CR_CODE_C = 1,
  CR_CODE_A = 2,
  CR_CODE_K = 3,
};

class EventAnswerItem : public Item {
 public:
  StringItem question;
  StringItem answer;
};

class VectorEventAnswerItem : public Item {
 public:
  std::vector<EventAnswerItem> entries;
};

class EventRecordItem : public Item {
 public:
  StringItem reid;
  EventState state = EVENT_RECORD_COMPLETE;
  SplitEventState splitState = SPLIT_NOT_CHECKED;
  BoolItem streamState;
  BoolItem locked;
  BoolItem confirmed;
  CrCode crCode1 = CR_CODE_R;
  CrCode crCode2 = CR_CODE_R;
  UIntItem startTick;
  IntItem startTime;
  IntItem exportTime;
  UIntItem stopTick;
  IntItem stopTime;
  StringItem description;
  Officer officer;
  StringItem category;
  VehicleInfo vehicle;
  BoolItem flagged;
  BoolItem background;
  UIntItem totalFiles;
  StringItem groupId;
  UIntItem part;
  UIntItem totalParts;
  VectorEventAnswerItem answers;
};

class EventRecordListMessage : public Item {
 public:
  std::vector<EventRecordItem> items;
};

}  // namespace StreamMgrApi

#endif  // RECORDER_EVENT_RECORD_H_
