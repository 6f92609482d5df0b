// Opening a file of a disk from the field for reading. Such a disk may hold
// a FIFO, socket, device node or folder where a file belongs; opening a FIFO
// would wait for a writer for ever, and none of the others holds data.
#ifndef STORE_REGULAR_FILE_H_
#define STORE_REGULAR_FILE_H_

// Opens `path` read-only if it is a regular file or a link to one, and
// returns the descriptor. Otherwise returns -1: with `notRegular` set when
// something else is there, or with errno saying why `path` cannot be opened.
// Never waits, even if a FIFO takes the file's place during the call.
int OpenRegularFile(const char* path, bool& notRegular);

#endif  // STORE_REGULAR_FILE_H_
