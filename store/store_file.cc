#include "store/store_file.h"

#include <sys/stat.h>

namespace {

// Every file opened through it fails as one that cannot be opened; all else
// (full path names, access checks) is SQLite's own file system's.
int RefuseOpen(sqlite3_vfs*, const char*, sqlite3_file* file, int, int*) {
  file->pMethods = nullptr;  // nothing to close
  return SQLITE_CANTOPEN;
}

// The name of a file system that opens nothing, registered on first use.
const char* RefusingFileSystem() {
  static sqlite3_vfs refusing = [] {
    sqlite3_vfs own = *sqlite3_vfs_find(nullptr);
    own.zName = "db-refuse-to-open";
    own.xOpen = RefuseOpen;
    own.pNext = nullptr;
    return own;
  }();
  // Should it fail to register, opening by its name fails all the same.
  static const int registered = sqlite3_vfs_register(&refusing, 0);
  (void)registered;
  return refusing.zName;
}

}  // namespace

int OpenStoreFile(const char* path, sqlite3** database, int flags) {
  struct stat info;
  if (lstat(path, &info) == 0 && S_ISLNK(info.st_mode)) {
    flags &= ~SQLITE_OPEN_CREATE;
  }
  const bool odd = stat(path, &info) == 0 && !S_ISREG(info.st_mode) && !S_ISDIR(info.st_mode);
  return sqlite3_open_v2(path, database, flags, odd ? RefusingFileSystem() : nullptr);
}
