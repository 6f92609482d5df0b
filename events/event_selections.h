// The event listings of -e/-E, -r/-R, -p/-P and -u.
#ifndef EVENTS_EVENT_SELECTIONS_H_
#define EVENTS_EVENT_SELECTIONS_H_

#include <string>

void DisplayEvents(unsigned flag);
void DisplayEventsById(const std::string& id, unsigned flag);
void DisplaySplitEvents(unsigned flag);
// -u: the events not yet transferred, always in gibibytes.
void DisplayUntransferredEvents();

#endif  // EVENTS_EVENT_SELECTIONS_H_
