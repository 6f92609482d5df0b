// StreamMgrCli: stand-in of the stream manager's command line tool (see --help).
#include <cstring>
#include <iostream>

#include "recorder/recorder_places.h"
#include "sim/common/usage.h"
#include "sim/stream_mgr_cli/stream_mgr_cli.h"

int main(int argc, char** argv) {
  const bool help = argc == 2 && IsHelp(argv[1]);
  const bool parsed = argc == 3 && std::strcmp(argv[1], "-x") == 0;
  const int status = UsageStatus("StreamMgrCli", parsed, "expected -x N", help, kStreamMgrCliHelp);
  if (status >= 0) return status;
  return ExtractStreamFile(Recorder::kDisk, argv[2], std::cout, std::cerr);
}
