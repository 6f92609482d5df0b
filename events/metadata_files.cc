#include "events/metadata_files.h"

const char* const kMetadataDirectory = "/mnt/hd/connectionmgr/";

bool IsStaged(const std::string&) { return false; }

int64_t EventSize(const std::string&) { return 0; }
