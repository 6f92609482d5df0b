#include "events/event_table.h"

#include <cstdint>
#include <ctime>
#include <iomanip>
#include <iostream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "cli/tool_context.h"
#include "events/metadata_files.h"
#include "recorder/config_mp_client.h"
#include "recorder/log_client.h"
#include "store/digits.h"
#include "store/event_state_names.h"
#include "store/recorder_arithmetic.h"
#include "store/table_row.h"
#include "store/time_text.h"

namespace {

const char kSeparator[] = "  ";

enum class Align { kLeft, kRight };

// One column of the table: its heading as printed, the width of its rule and
// of its cells (a wider cell is written whole and pushes the rest of the row
// right), and the side its cells keep to. Only Answer1 is wider than its
// heading.
struct Column {
  const char* heading;
  int width;
  Align align;
};

enum ColumnIndex {
  kReid,
  kState,
  kSplitState,
  kSeconds,
  kStartTime,
  kStopTime,
  kExportTime,
  kStartTick,
  kStopTick,
  kCodes,
  kBackground,
  kFiles,
  kGroupId,
  kPart,
  kTotalParts,
  kStaged,
  kSize,
  kHours,
  kAnswer,
  kColumnCount
};

// The columns in the order of ColumnIndex, with the size column of the
// gibibyte mode.
const Column kColumns[] = {
    {"           REID             ", 28, Align::kLeft},
    {"  State   ", 10, Align::kRight},
    {"SplitState", 10, Align::kRight},
    {" Sec ", 5, Align::kRight},
    {"    Start Time   ", 17, Align::kRight},
    {"StopTime", 8, Align::kRight},
    {"ExportTime", 10, Align::kRight},
    {"Start Tick", 10, Align::kRight},
    {" Stop Tick", 10, Align::kRight},
    {"c/r", 3, Align::kRight},
    {"BG", 2, Align::kRight},
    {"Files", 5, Align::kRight},
    {"         groupId            ", 28, Align::kLeft},
    {"Prt", 3, Align::kRight},
    {"Tot", 3, Align::kRight},
    {"Stg", 3, Align::kRight},
    {" GiB ", 5, Align::kRight},
    {"Hours Till Re-Export", 20, Align::kRight},
    {"Answer1", 20, Align::kRight},
};
static_assert(sizeof kColumns / sizeof kColumns[0] == kColumnCount, "one entry per column");

const Column kBytesColumn = {"   Bytes   ", 11, Align::kRight};

// Column `index` in the size mode `flag`: only the size column changes.
const Column& ColumnOf(int index, unsigned flag) {
  return index == kSize && flag != 0 ? kBytesColumn : kColumns[index];
}

// Appends the cells of columns [first, last) to `row`, each padded to its
// column's width on the side the column keeps to, and followed by the
// separator.
void AddCells(TableRow& row, unsigned flag, const std::string_view* cells, int first, int last) {
  for (int index = first; index < last; ++index) {
    const Column& column = ColumnOf(index, flag);
    if (column.align == Align::kLeft) {
      row.Left(cells[index], column.width);
    } else {
      row.Right(cells[index], column.width);
    }
    row.Add(kSeparator);
  }
}

// The decimal text of `value` as the stream writes it, put in `room`.
std::string_view DecimalText(uint64_t value, char (&room)[kMaxDecimalBytes]) {
  const char* const begin = DecimalEndingAt(room + sizeof room, value);
  return std::string_view(begin, static_cast<size_t>(room + sizeof room - begin));
}

// How the size column shows an event's bytes.
struct SizeMode {
  double divisor;
  int decimals;
};

SizeMode SizeModeOf(unsigned flag) {
  return flag != 0 ? SizeMode{1.0, 0} : SizeMode{kBytesPerGiB, 3};
}

// Start, stop and export times of a row, formatted with the process's own
// (POSIX) locale. An export time that is 0 or negative shows as "0".
struct RowTimes {
  explicit RowTimes(const StreamMgrApi::EventRecordItem& event) {
    start = std::string_view(startText, DateTimeText(event.startTime.GetValue(), startText));
    stop = std::string_view(stopText, ClockText(event.stopTime.GetValue(), stopText));
    export_ =
        event.exportTime.GetValue() <= 0
            ? std::string_view("0")
            : std::string_view(exportText, ClockText(event.exportTime.GetValue(), exportText));
  }
  RowTimes(const RowTimes&) = delete;
  RowTimes& operator=(const RowTimes&) = delete;

  char startText[kTimeTextBytes];
  char stopText[kTimeTextBytes];
  char exportText[kTimeTextBytes];
  std::string_view start;
  std::string_view stop;
  std::string_view export_;
};

char CodeLetter(StreamMgrApi::CrCode code) {
  static const char kLetters[] = "rcak";
  const uint32_t value = code;
  return value < 4 ? kLetters[value] : '?';
}

// Hours left until an event exported at `exportTime` is exported again under
// a re-export interval of `reExportHours`; 0 when re-export is disabled.
// Worked in double so that a long interval cannot overflow.
double HoursTillReExport(uint32_t reExportHours, int32_t exportTime) {
  if (reExportHours == 0) {
    return 0;
  }
  const int32_t sinceExport = WrappedDifference(std::time(nullptr), exportTime);
  return (static_cast<double>(reExportHours) * 3600 - sinceExport) / 3600;
}

std::string HoursText(double hours) {
  if (hours < 0) {
    return "NA";
  }
  if (hours == 0) {
    return "Disabled";
  }
  // A stream of its own, so the row's size precision is left alone.
  std::ostringstream text;
  text << std::fixed << std::setprecision(2) << hours;
  return text.str();
}

}  // namespace

void PrintEventHeader(unsigned flag) {
  std::cout << std::endl;
  for (int index = 0; index < kColumnCount; ++index) {
    std::cout << ColumnOf(index, flag).heading << kSeparator;
  }
  std::cout << std::endl;
  for (int index = 0; index < kColumnCount; ++index) {
    std::cout << std::string(ColumnOf(index, flag).width, '=') << kSeparator;
  }
  std::cout << std::endl;
}

void DisplayEvent(const StreamMgrApi::EventRecordItem& event, unsigned flag) {
  const SizeMode size = SizeModeOf(flag);
  const RowTimes times(event);
  const std::string& reid = event.reid.GetValue();
  const std::string path = kMetadataDirectory + reid;
  const int32_t seconds = WrappedDifference(event.stopTime.GetValue(), event.startTime.GetValue());
  // The settings are asked afresh for every row, so a listing always shows the
  // service's current answer; -1 stands for "cannot be had".
  double hoursLeft = -1;
  {
    ConfigMPClient config(toolContext.ipc, 30);
    VideoRecordingSettings settings;
    if (config.GetVideoRecordingSettings(settings) != 0) {
      if (LogClient::Instance().GetLevel() & 2) {
        SysLogMsg(2, "Error getting video recording settings");
      }
    } else {
      hoursLeft = HoursTillReExport(settings.reExportHours, event.exportTime.GetValue());
    }
  }
  const std::string hours = HoursText(hoursLeft);

  const char codes[] = {CodeLetter(event.crCode1), ' ', CodeLetter(event.crCode2)};
  const std::vector<StreamMgrApi::EventAnswerItem>& answers = event.answers.entries;
  std::string_view cells[kColumnCount];
  char digits[kColumnCount][kMaxDecimalBytes];  // of the columns that show numbers
  cells[kReid] = reid;
  cells[kState] = EventStateToStr(event.state);
  cells[kSplitState] = EventSplitStateToStr(event.splitState);
  // A stop before the start shows as -1 seconds.
  cells[kSeconds] = seconds < 0 ? std::string_view("-1")
                                : DecimalText(static_cast<uint32_t>(seconds), digits[kSeconds]);
  cells[kStartTime] = times.start;
  cells[kStopTime] = times.stop;
  cells[kExportTime] = times.export_;
  cells[kStartTick] = DecimalText(event.startTick.GetValue(), digits[kStartTick]);
  cells[kStopTick] = DecimalText(event.stopTick.GetValue(), digits[kStopTick]);
  cells[kCodes] = std::string_view(codes, sizeof codes);
  cells[kBackground] = event.background.GetValue() ? "Y" : "N";
  cells[kFiles] = DecimalText(event.totalFiles.GetValue(), digits[kFiles]);
  cells[kGroupId] = event.groupId.GetValue();
  cells[kPart] = DecimalText(event.part.GetValue(), digits[kPart]);
  cells[kTotalParts] = DecimalText(event.totalParts.GetValue(), digits[kTotalParts]);
  cells[kStaged] = IsStaged(path) ? "Y" : "N";
  cells[kHours] = hours;
  if (!answers.empty()) cells[kAnswer] = answers.front().answer.GetValue();

  TableRow row;
  AddCells(row, flag, cells, 0, kSize);
  double bytes = 0.0;
  if (IsStaged(path)) {
    // EventSize may complain on standard error, which is tied to standard
    // output: the columns so far go into the stream first, so that they come
    // out ahead of the complaint as they would written field by field.
    std::cout << row.Line();
    row.Clear();
    bytes = static_cast<double>(static_cast<uint64_t>(EventSize(reid)));
  }
  TableRow sizeText;
  sizeText.Fixed(bytes / size.divisor, size.decimals, 0);
  cells[kSize] = sizeText.Line();
  // Without answers the row ends after the hours.
  AddCells(row, flag, cells, kSize, answers.empty() ? kAnswer : kColumnCount);
  row.Add("\n");
  // The stream is left right-aligned and in the size column's notation, as
  // field by field insertion would leave it. The line end goes in with the
  // row and the flush follows, as endl has it.
  std::cout << std::right << std::fixed << std::setprecision(size.decimals) << row.Line()
            << std::flush;
}
