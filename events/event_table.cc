#include "events/event_table.h"

void PrintEventHeader(unsigned) {}

void DisplayEvent(const StreamMgrApi::EventRecordItem&, unsigned) {}
