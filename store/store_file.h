// Opening the store file of a disk from the field. A FIFO, socket or device
// node may stand where the store should be: SQLite would open a FIFO and then
// wait for ever on its first read, so such a file is never opened at all. A
// link may lead nowhere: SQLite would create the file it names, wherever that
// is.
#ifndef STORE_STORE_FILE_H_
#define STORE_STORE_FILE_H_

#include <sqlite3.h>

// Opens `path` as sqlite3_open_v2 does with `flags` and SQLite's own file
// system, and returns its result code, except that:
// - what exists there but is neither a regular file nor a folder fails as a
//   file that cannot be opened (SQLITE_CANTOPEN, as an unreadable store
//   does), without being opened;
// - a store that is a link is opened without SQLITE_OPEN_CREATE, so that one
//   leading nowhere creates nothing.
// `*database` is set as sqlite3_open_v2 sets it, also on failure.
int OpenStoreFile(const char* path, sqlite3** database, int flags);

#endif  // STORE_STORE_FILE_H_
