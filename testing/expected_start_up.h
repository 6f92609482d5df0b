// Texts that runs of db in many folders share, written out once.
#ifndef TESTING_EXPECTED_START_UP_H_
#define TESTING_EXPECTED_START_UP_H_

// Start-up could not read the stream file sizes from the store (it is
// missing, empty, locked or not a database); the text runs on from the
// statement wrapper's own.
const char kNoFileSizesLine[] =
    "unable to prepare: select number, size from streamfilesmainunable to access database\n";

// The heading of -t, before the first table's row.
const char kTablesHeading[] =
    "\n"
    "Table Name    Entries\n"
    "============  =======\n";

#endif  // TESTING_EXPECTED_START_UP_H_
