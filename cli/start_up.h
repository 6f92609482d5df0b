// Start-up of db: find out whether StreamMgr runs and prepare the matching
// access path to the store.
#ifndef CLI_START_UP_H_
#define CLI_START_UP_H_

#include <cstdio>

// Path of the stream manager's database.
extern const char* const kStorePath;

// Runs "pidof StreamMgr" and sets toolContext.running when it prints a line.
// Returns the probe's pipe, which stays open for the whole run.
FILE* ProbeForDaemon();

// Opens the store and prepares the access path; returns the open's result
// code, the tool's exit status. Ends the process with status 1 when the
// daemon runs but its IPC endpoint cannot be initialised.
int StartUp();

// StartUp on the store at `storePath` instead of the recorder's.
int StartUpOn(const char* storePath);

#endif  // CLI_START_UP_H_
