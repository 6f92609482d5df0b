// Where the sources and the build of this tree are, for the tests of what
// ships with db (groff, bash, cmake --install, cpack, dpkg-deb), with the
// shell runner and scratch folders they work with.
#ifndef SHIP_SHELL_H_
#define SHIP_SHELL_H_

#include <string>

#include "testing/scratch_dir.h"
#include "testing/shell.h"

std::string SourceDir();
std::string BuildDir();

#endif  // SHIP_SHELL_H_
