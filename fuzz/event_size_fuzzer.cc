// Fuzzes EventSize on arbitrary description files. The first two bytes of the
// input give the size of the .mtd data file, the rest is written as the .xml
// description into a folder of the fuzzer's own.
#include <stdlib.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

#include "events/metadata_files.h"
#include "fuzz/fuzz_input.h"
#include "fuzz/quiet_streams.h"

namespace {

// A folder that lives as long as the fuzzer, removed again at exit.
class ScratchFolder {
 public:
  ScratchFolder() {
    char pattern[] = "/tmp/event-size-fuzzer-XXXXXX";
    const char* made = mkdtemp(pattern);
    Require(made != nullptr);
    path_ = std::string(made) + "/";
  }
  ~ScratchFolder() {
    unlink((path_ + "e.xml").c_str());
    unlink((path_ + "e.mtd").c_str());
    rmdir(path_.c_str());
  }
  const std::string& Path() const { return path_; }

 private:
  std::string path_;
};

void Write(const std::string& path, const uint8_t* data, size_t size) {
  FILE* file = std::fopen(path.c_str(), "wb");
  Require(file != nullptr);
  Require(size == 0 || std::fwrite(data, 1, size, file) == size);
  Require(std::fclose(file) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static ScratchFolder folder;
  QuietStreams();
  if (size < 2) return 0;
  const off_t dataBytes = data[0] | data[1] << 8;
  Write(folder.Path() + "e.mtd", nullptr, 0);
  Require(truncate((folder.Path() + "e.mtd").c_str(), dataBytes) == 0);
  Write(folder.Path() + "e.xml", data + 2, size - 2);

  const int64_t total = EventSizeIn(folder.Path(), "e");
  // Without the element path to a stream there is nothing to add to the
  // data file's size.
  const std::string description(reinterpret_cast<const char*>(data + 2), size - 2);
  if (description.find("recording-event") == std::string::npos ||
      description.find("stream") == std::string::npos) {
    Require(total == dataBytes);
  }
  return 0;
}
