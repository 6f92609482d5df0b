// What a disk holds, written out so that two looks at it can be compared: a
// run that must leave a disk as it was leaves the same manifest.
#ifndef TESTING_DISK_MANIFEST_H_
#define TESTING_DISK_MANIFEST_H_

#include <string>

// One line per entry below `folder` (itself included): path, type, size,
// mode, owner, modification and change times in nanoseconds, link target;
// then the MD5 of every regular file. Sorted, so that the order in which the
// file system lists entries does not matter.
std::string DiskManifest(const std::string& folder);

#endif  // TESTING_DISK_MANIFEST_H_
