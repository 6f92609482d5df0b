// StreamMgrCli: the stream manager's command line tool, reduced to its -x mode.
#ifndef SIM_STREAM_MGR_CLI_STREAM_MGR_CLI_H_
#define SIM_STREAM_MGR_CLI_STREAM_MGR_CLI_H_

#include <ostream>
#include <string>

extern const char kStreamMgrCliHelp[];

// Copies the contents of stream file `number` (decimal digits) from
// `disk` + "/streams/" + number + ".ts" to `disk` + "/" + number + ".ts" and
// writes "copied: " and the copy's path to `out`. Problems go to `err`.
// Returns the exit status: 0 on success, 1 otherwise.
int ExtractStreamFile(const std::string& disk, const std::string& number, std::ostream& out,
                      std::ostream& err);

#endif  // SIM_STREAM_MGR_CLI_STREAM_MGR_CLI_H_
