// Number of rows of one table, asked of the daemon while it runs and of the
// database file otherwise.
#ifndef STORE_ROW_COUNT_H_
#define STORE_ROW_COUNT_H_

#include <string>

// Runs "select count(*) from " + table. A count that cannot be prepared on the
// database file is reported as "Error getting count for " + table on standard
// error, and a count that cannot be had is 0.
unsigned int CountRows(const std::string& table);

#endif  // STORE_ROW_COUNT_H_
