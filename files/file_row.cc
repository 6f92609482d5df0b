#include "files/file_row.h"

#include <ctime>
#include <iomanip>
#include <iostream>
#include <string>

#include "cli/tool_context.h"
#include "recorder/stream_file_access.h"
#include "store/access_path.h"
#include "store/file_state_names.h"

namespace {

// Every field, the last one too, is followed by this separator.
const char kSeparator[] = "  ";

// Field widths, in column order.
enum Width : int {
  kNumberWidth = 6,
  kStreamWidth = 6,
  kStateWidth = 8,
  kSizeWidth = 8,
  kStartTimeWidth = 17,
  kStopTimeWidth = 8,
  kTickWidth = 10,
  kChainWidth = 4,
  kTypeWidth = 4,
};

struct Column {
  const char* heading;  // exactly as wide as the column
  int width;
};

const Column kColumns[] = {
    {"Number", kNumberWidth},
    {"Stream", kStreamWidth},
    {" State  ", kStateWidth},
    {"  Size  ", kSizeWidth},
    {"    Start Time   ", kStartTimeWidth},
    {"StopTime", kStopTimeWidth},
    {"Start Tick", kTickWidth},
    {" Stop Tick", kTickWidth},
    {"Prev", kChainWidth},
    {"Next", kChainWidth},
    {"Type", kTypeWidth},
};

// Local time of `seconds` in `format`; strftime fills at most the 20 bytes the
// recorder has always given it.
std::string TimeText(uint32_t seconds, const char* format) {
  const time_t when = static_cast<time_t>(seconds);
  const struct tm* local = std::localtime(&when);
  char buffer[20] = "";
  if (local == nullptr) {
    return std::string();
  }
  const size_t length = std::strftime(buffer, sizeof buffer, format, local);
  return std::string(buffer, length);
}

// The file being written grows while the table's size stands still.
void UseLiveSize(StreamMgrApi::StreamfileRecordItem& file) {
  if (file.next.GetValue() != 0 || !OverIpc()) {
    return;
  }
  StreamMgrFileMgmnt::FileMgmnt_t info{};
  if (toolContext.fileAccess.GetFileInfo(static_cast<int>(file.number.GetValue()), info)) {
    file.size.SetValue(info.size);
  }
}

}  // namespace

void PrintFileHeading() {
  std::cout << std::endl;
  for (const Column& column : kColumns) {
    std::cout << column.heading << kSeparator;
  }
  std::cout << std::endl;
  for (const Column& column : kColumns) {
    std::cout << std::string(static_cast<size_t>(column.width), '=') << kSeparator;
  }
  std::cout << std::endl;
}

void DisplayFile(StreamMgrApi::StreamfileRecordItem& file) {
  UseLiveSize(file);
  std::cout << std::right << std::setw(kNumberWidth) << file.number.GetValue() << kSeparator
            << std::setw(kStreamWidth) << file.stream.GetValue() << kSeparator
            << std::setw(kStateWidth) << FileStateToStr(file.state) << kSeparator
            << std::setw(kSizeWidth) << file.size.GetValue() << kSeparator
            << std::setw(kStartTimeWidth) << TimeText(file.startTime.GetValue(), "%x %X")
            << kSeparator << std::setw(kStopTimeWidth) << TimeText(file.stopTime.GetValue(), "%X")
            << kSeparator << std::setw(kTickWidth) << file.startTick.GetValue() << kSeparator
            << std::setw(kTickWidth) << file.stopTick.GetValue() << kSeparator
            << std::setw(kChainWidth) << file.previous.GetValue() << kSeparator
            << std::setw(kChainWidth) << file.next.GetValue() << kSeparator << std::setw(kTypeWidth)
            << FileTypeToStr(file.type) << kSeparator << std::endl;
}
