#include "files/file_options.h"

bool ProcessFileDisplayOptions(std::string&, FileOptions&) { return true; }
