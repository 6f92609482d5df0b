// filePes: stand-in of the recorder's transport stream checker (see --help).
#include <cstring>
#include <iostream>

#include "sim/file_pes/file_pes.h"

int main(int argc, char** argv) {
  if (argc == 2 && (std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0)) {
    std::cout << kFilePesHelp;
    return 0;
  }
  if (argc != 3 || std::strcmp(argv[1], "-a") != 0) {
    std::cerr << "filePes: expected -a FILE\n" << kFilePesHelp;
    return 2;
  }
  return AnalyzeStreamFile(argv[2], std::cout);
}
