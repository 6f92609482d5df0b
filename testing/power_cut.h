// A store as a power cut leaves it in the middle of a transaction.
#ifndef TESTING_POWER_CUT_H_
#define TESTING_POWER_CUT_H_

#include <string>

// A writer opens the store at `path`, deletes every event and stream file and
// adds thousands of events in one transaction, with a page cache too small to
// hold the change, and dies before it commits. SQLite has then written new
// pages into the store itself and kept the old ones in a hot rollback journal
// beside it, which the next reader must roll back before it can read. False
// (and a test failure) when the store did not end that way.
bool LeaveHotJournal(const std::string& path);

#endif  // TESTING_POWER_CUT_H_
