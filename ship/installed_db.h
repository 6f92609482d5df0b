// Checks shared by the tests of an installed and a packaged db.
#ifndef SHIP_INSTALLED_DB_H_
#define SHIP_INSTALLED_DB_H_

#include <string>

#include "testing/recorder_disk.h"

// Puts two events and one stream file into the store of `disk`.
void FillRecorderDisk(const RecorderDisk& disk);

// Runs `db` (an absolute path) in the recorder sandbox on a disk with two
// events and one stream file, and expects its usage text for -h and its table
// counts for -t, byte for byte.
void ExpectDbRunsOnARecorderDisk(const std::string& db);

// Runs `man` with the arguments `args` (which show db's page) on an 80
// column terminal, expects the page's header and its NAME line, and returns
// the page for further checks. man lays the page out for the host, so only
// those lines are compared.
std::string ExpectManShowsDb(const std::string& args);

// Sources the completion script `script` in bash and expects it to register
// its function for db.
void ExpectCompletionRegistered(const std::string& script);

// The table counts that db -t prints for that disk.
extern const std::string kFilledDiskTables;

#endif  // SHIP_INSTALLED_DB_H_
