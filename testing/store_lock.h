// Another writer holding the store: an exclusive transaction on it for as
// long as the lock is in scope, as the daemon or a second db would hold it.
#ifndef TESTING_STORE_LOCK_H_
#define TESTING_STORE_LOCK_H_

#include <sqlite3.h>

#include <string>

class StoreLock {
 public:
  // Fails the current test when the store cannot be opened or locked.
  explicit StoreLock(const std::string& storePath);
  ~StoreLock();  // rolls back and closes
  StoreLock(const StoreLock&) = delete;
  StoreLock& operator=(const StoreLock&) = delete;

 private:
  sqlite3* writer_ = nullptr;
};

#endif  // TESTING_STORE_LOCK_H_
