#include "store/event_state_names.h"

#include <cstdint>

const char* EventStateToStr(StreamMgrApi::EventState state) {
  // Ten characters each so the column lines up; "Transfered" is the recorder's spelling.
  static const char* const kNames[] = {"RecordCmpl", "Transfered", "Recording ", "InPost    "};
  const uint32_t value = state;
  return value < sizeof kNames / sizeof kNames[0] ? kNames[value] : "Invalid";
}

const char* EventSplitStateToStr(StreamMgrApi::SplitEventState state) {
  static const char* const kNames[] = {"NotChecked", "NotNeeded ", "SplitPend ", "AlreadySpl",
                                       "ExportOnly"};
  const uint32_t value = state;
  return value < sizeof kNames / sizeof kNames[0] ? kNames[value] : "Invalid";
}
