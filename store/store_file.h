// Opening the store file. A disk from the field may hold a FIFO, a socket or
// a device node where the store should be: SQLite would open a FIFO and then
// wait for ever on its first read, so such a file is never opened at all.
#ifndef STORE_STORE_FILE_H_
#define STORE_STORE_FILE_H_

#include <sqlite3.h>

// Opens `path` as sqlite3_open_v2 does with `flags` and SQLite's own file
// system, and returns its result code. What exists there but is neither a
// regular file nor a folder fails as a file that cannot be opened
// (SQLITE_CANTOPEN, as an unreadable store does), without being opened.
// `*database` is set as sqlite3_open_v2 sets it, also on failure.
int OpenStoreFile(const char* path, sqlite3** database, int flags);

#endif  // STORE_STORE_FILE_H_
