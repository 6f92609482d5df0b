// StreamMgrCli: stand-in of the stream manager's command line tool (see --help).
#include <cstring>
#include <iostream>

#include "recorder/recorder_places.h"
#include "sim/stream_mgr_cli/stream_mgr_cli.h"

int main(int argc, char** argv) {
  if (argc == 2 && (std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0)) {
    std::cout << kStreamMgrCliHelp;
    return 0;
  }
  if (argc != 3 || std::strcmp(argv[1], "-x") != 0) {
    std::cerr << "StreamMgrCli: expected -x N\n" << kStreamMgrCliHelp;
    return 2;
  }
  return ExtractStreamFile(Recorder::kDisk, argv[2], std::cout, std::cerr);
}
