#include "store/regular_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

int OpenRegularFile(const char* path, bool& notRegular) {
  notRegular = false;
  struct stat info;
  if (stat(path, &info) != 0) {
    return -1;
  }
  if (!S_ISREG(info.st_mode)) {
    notRegular = true;
    return -1;
  }
  // Non-blocking, in case a FIFO took the file's place since the stat.
  const int descriptor = open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  if (descriptor < 0) {
    return -1;
  }
  if (fstat(descriptor, &info) != 0 || !S_ISREG(info.st_mode)) {
    close(descriptor);
    notRegular = true;
    return -1;
  }
  return descriptor;
}
