// The status table (-s) and the row count of every table (-t).
#ifndef MAINTENANCE_STATUS_REPORT_H_
#define MAINTENANCE_STATUS_REPORT_H_

void DisplayStatus();
void DisplayTables();

#endif  // MAINTENANCE_STATUS_REPORT_H_
