#include "analysis/disk_analysis.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>

#include "recorder/recorder_places.h"
#include "store/row_count.h"

namespace {

// Output of the recorder's tools is read in pieces of at most 1023 characters.
constexpr int kLineBuffer = 1024;
constexpr char kCopiedMarker[] = "copied: ";

// Has StreamMgrCli extract stream file `number` and returns the name it
// reports: the text after the last "copied: ", less the line end. Empty when
// the tool printed no such line or could not be run.
std::string Extract(const std::string& number) {
  // The tool writes to the same terminal: what db printed must come first.
  std::cout.flush();
  std::string name;
  FILE* pipe = popen((Recorder::kExtractCommand + number).c_str(), "r");
  if (pipe == nullptr) {
    return name;
  }
  char line[kLineBuffer];
  while (std::fgets(line, sizeof line, pipe) != nullptr) {
    const char* marker = std::strstr(line, kCopiedMarker);
    if (marker != nullptr) {
      name = marker + std::strlen(kCopiedMarker);
      // Drops the line end, or the last character of a line that has none.
      if (!name.empty()) {
        name.pop_back();
      }
    }
  }
  pclose(pipe);
  return name;
}

// Runs filePes on the extracted file and shows its output from the first line
// that mentions FAIL on. True when there was such a line.
bool ShowFailures(const std::string& path) {
  std::cout.flush();
  bool failed = false;
  FILE* pipe = popen((Recorder::kPacketCheckCommand + path).c_str(), "r");
  if (pipe == nullptr) {
    return failed;
  }
  char line[kLineBuffer];
  while (std::fgets(line, sizeof line, pipe) != nullptr) {
    if (!failed && std::strstr(line, "FAIL") != nullptr) {
      failed = true;
    }
    if (failed) {
      // Pieces of a long line are shown as they come, line end or not.
      std::cout << line << std::flush;
    }
  }
  pclose(pipe);
  return failed;
}

void CheckStreamFile(uint64_t number) {
  const std::string text = std::to_string(number);
  std::cout << " Checking " << text << ".ts:  extracting..." << std::flush;
  const std::string name = Extract(text);
  if (name.empty()) {
    // Without a name standard output fails for the rest of the run, as it
    // does on the recorder; the file is neither analysed nor removed.
    std::cout.setstate(std::ios::badbit);
    std::cout << std::endl;
    return;
  }
  std::cout << name << std::flush;
  std::cout << "  checking..." << std::flush;
  // The tool's reported name is only shown: the file is always here.
  const std::string path = std::string(Recorder::kDisk) + "/" + text + ".ts";
  const bool failed = ShowFailures(path);
  std::cout.flush();
  std::system(("rm " + path + " > /dev/null").c_str());
  if (!failed) {
    std::cout << "PASS" << std::endl;
  }
}

}  // namespace

void AnalyzeDisk() {
  const unsigned int count = CountRows("streamfiles");
  std::cout << "File count = " << count << std::endl;
  // Files are taken to be numbered 1 to the count, whatever the table says.
  for (uint64_t number = 1; number <= count; ++number) {
    CheckStreamFile(number);
  }
  std::cout << std::endl;
}
