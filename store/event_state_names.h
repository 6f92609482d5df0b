// Fixed-width texts of an event's state and split state for the event table.
#ifndef STORE_EVENT_STATE_NAMES_H_
#define STORE_EVENT_STATE_NAMES_H_

#include "recorder/event_record.h"

const char* EventStateToStr(StreamMgrApi::EventState state);
const char* EventSplitStateToStr(StreamMgrApi::SplitEventState state);

#endif  // STORE_EVENT_STATE_NAMES_H_
