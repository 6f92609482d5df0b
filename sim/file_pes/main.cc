// filePes: stand-in of the recorder's transport stream checker (see --help).
#include <cstring>
#include <iostream>

#include "sim/common/usage.h"
#include "sim/file_pes/file_pes.h"

int main(int argc, char** argv) {
  const bool help = argc == 2 && IsHelp(argv[1]);
  const bool parsed = argc == 3 && std::strcmp(argv[1], "-a") == 0;
  const int status = UsageStatus("filePes", parsed, "expected -a FILE", help, kFilePesHelp);
  if (status >= 0) return status;
  return AnalyzeStreamFile(argv[2], std::cout);
}
