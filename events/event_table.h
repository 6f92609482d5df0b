// The event table: heading block and one row per event. The flag is the size
// mode: 0 for gibibytes with three decimals, non-zero for whole bytes.
#ifndef EVENTS_EVENT_TABLE_H_
#define EVENTS_EVENT_TABLE_H_

#include "recorder/event_record.h"

void PrintEventHeader(unsigned flag);
void DisplayEvent(const StreamMgrApi::EventRecordItem& event, unsigned flag);

#endif  // EVENTS_EVENT_TABLE_H_
