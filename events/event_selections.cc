#include "events/event_selections.h"

void DisplayEvents(unsigned) {}

void DisplayEventsById(const std::string&, unsigned) {}

void DisplaySplitEvents(unsigned) {}

void DisplayUntransferredEvents() {}
