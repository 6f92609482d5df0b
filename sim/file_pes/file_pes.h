// filePes: the recorder's transport stream checker, reduced to its -a mode.
#ifndef SIM_FILE_PES_FILE_PES_H_
#define SIM_FILE_PES_FILE_PES_H_

#include <ostream>

extern const char kFilePesHelp[];

// Checks every split point of the transport stream in `path` and writes one
// line per split point to `out`; every line about a problem holds "FAIL".
// Returns the exit status: 0 when every split point passes, 1 otherwise.
int AnalyzeStreamFile(const char* path, std::ostream& out);

#endif  // SIM_FILE_PES_FILE_PES_H_
