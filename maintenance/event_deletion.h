// Deletion of events: one event or split group by id, or all of them.
#ifndef MAINTENANCE_EVENT_DELETION_H_
#define MAINTENANCE_EVENT_DELETION_H_

#include <string>

void DeleteEventsById(const std::string& id);
void DeleteAllEvents();

#endif  // MAINTENANCE_EVENT_DELETION_H_
