#include "files/file_row.h"

#include <iostream>
#include <string>
#include <string_view>

#include "cli/tool_context.h"
#include "recorder/stream_file_access.h"
#include "store/access_path.h"
#include "store/file_state_names.h"
#include "store/table_row.h"
#include "store/time_text.h"

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
  char startText[kTimeTextBytes];
  char stopText[kTimeTextBytes];
  const size_t startLength = DateTimeText(file.startTime.GetValue(), startText);
  const size_t stopLength = ClockText(file.stopTime.GetValue(), stopText);
  TableRow row;
  row.Unsigned(file.number.GetValue(), kNumberWidth).Add(kSeparator);
  row.Unsigned(file.stream.GetValue(), kStreamWidth).Add(kSeparator);
  row.Right(FileStateToStr(file.state), kStateWidth).Add(kSeparator);
  row.Unsigned(file.size.GetValue(), kSizeWidth).Add(kSeparator);
  row.Right(std::string_view(startText, startLength), kStartTimeWidth).Add(kSeparator);
  row.Right(std::string_view(stopText, stopLength), kStopTimeWidth).Add(kSeparator);
  row.Unsigned(file.startTick.GetValue(), kTickWidth).Add(kSeparator);
  row.Unsigned(file.stopTick.GetValue(), kTickWidth).Add(kSeparator);
  row.Unsigned(file.previous.GetValue(), kChainWidth).Add(kSeparator);
  row.Unsigned(file.next.GetValue(), kChainWidth).Add(kSeparator);
  row.Right(FileTypeToStr(file.type), kTypeWidth).Add(kSeparator).Add("\n");
  // The stream is left right-aligned, as field by field insertion would leave
  // it. The line end goes in with the row and the flush follows, as endl has it.
  std::cout << std::right << row.Line() << std::flush;
}
