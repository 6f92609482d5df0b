#include "ship/shell.h"

std::string SourceDir() { return DB_SOURCE_DIR; }
std::string BuildDir() { return DB_BUILD_DIR; }
