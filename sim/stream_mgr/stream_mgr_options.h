// Options of the StreamMgr simulator.
#ifndef SIM_STREAM_MGR_STREAM_MGR_OPTIONS_H_
#define SIM_STREAM_MGR_STREAM_MGR_OPTIONS_H_

#include <cstdint>
#include <map>
#include <set>
#include <string>

struct StreamMgrOptions {
  std::set<std::string> refusedDeletes;    // --refuse-delete REID
  bool failRequests = false;               // --fail-requests
  bool noIpc = false;                      // --no-ipc
  std::map<uint32_t, uint32_t> liveSizes;  // --live-size NUMBER=BYTES
  std::string logPath;                     // --log FILE
  int delayMs = 0;                         // --delay-ms N
  bool garbage = false;                    // --garbage
  bool dieAfterSet = false;                // --die-after N
  uint32_t dieAfter = 0;
  bool help = false;  // --help
};

extern const char kStreamMgrHelp[];

// Parses the command line; false with a message in `error` on a bad one.
bool ParseStreamMgrOptions(int argc, char** argv, StreamMgrOptions& options, std::string& error);

#endif  // SIM_STREAM_MGR_STREAM_MGR_OPTIONS_H_
