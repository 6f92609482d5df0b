#include "files/file_row.h"

#include <charconv>
#include <cstdint>
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

using StreamMgrApi::StreamfileRecordItem;
using Field = UIntItem StreamfileRecordItem::*;

// Every field, the last one too, is followed by this separator.
const char kSeparator[] = "  ";

enum class Align { kLeft, kRight };

// How a column shows the file's value.
enum class Format { kNumber, kDateTime, kClock, kState, kType };

// One column of the table: what heads it, how wide its rule and its cells
// are, and what a file shows in it. A value wider than the column is written
// whole and pushes the rest of the row right.
struct Column {
  const char* heading;  // exactly as wide as the column
  int width;
  Align align;
  Format format;
  Field field;  // none for the state and the type, which have their own
};

const Column kColumns[] = {
    {"Number", 6, Align::kRight, Format::kNumber, &StreamfileRecordItem::number},
    {"Stream", 6, Align::kRight, Format::kNumber, &StreamfileRecordItem::stream},
    {" State  ", 8, Align::kRight, Format::kState, nullptr},
    {"  Size  ", 8, Align::kRight, Format::kNumber, &StreamfileRecordItem::size},
    {"    Start Time   ", 17, Align::kRight, Format::kDateTime, &StreamfileRecordItem::startTime},
    {"StopTime", 8, Align::kRight, Format::kClock, &StreamfileRecordItem::stopTime},
    {"Start Tick", 10, Align::kRight, Format::kNumber, &StreamfileRecordItem::startTick},
    {" Stop Tick", 10, Align::kRight, Format::kNumber, &StreamfileRecordItem::stopTick},
    {"Prev", 4, Align::kRight, Format::kNumber, &StreamfileRecordItem::previous},
    {"Next", 4, Align::kRight, Format::kNumber, &StreamfileRecordItem::next},
    {"Type", 4, Align::kRight, Format::kType, nullptr},
};

// Room for any cell's text: a time, or the digits of a 32-bit number.
using CellBuffer = char[kTimeTextBytes];

std::string_view CellText(const Column& column, const StreamfileRecordItem& file,
                          CellBuffer& buffer) {
  switch (column.format) {
    case Format::kState:
      return FileStateToStr(file.state);
    case Format::kType:
      return FileTypeToStr(file.type);
    case Format::kDateTime:
      return {buffer, DateTimeText((file.*column.field).GetValue(), buffer)};
    case Format::kClock:
      return {buffer, ClockText((file.*column.field).GetValue(), buffer)};
    case Format::kNumber:
      break;
  }
  const uint32_t value = (file.*column.field).GetValue();
  const std::to_chars_result end = std::to_chars(buffer, buffer + sizeof buffer, value);
  return {buffer, static_cast<size_t>(end.ptr - buffer)};
}

// The file being written grows while the table's size stands still.
void UseLiveSize(StreamfileRecordItem& file) {
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

void DisplayFile(StreamfileRecordItem& file) {
  UseLiveSize(file);
  TableRow row;
  for (const Column& column : kColumns) {
    CellBuffer buffer;
    const std::string_view text = CellText(column, file, buffer);
    if (column.align == Align::kLeft) {
      row.Left(text, column.width);
    } else {
      row.Right(text, column.width);
    }
    row.Add(kSeparator);
  }
  row.Add("\n");
  // The stream is left right-aligned, as field by field insertion would leave
  // it. The line end goes in with the row and the flush follows, as endl has it.
  std::cout << std::right << row.Line() << std::flush;
}
