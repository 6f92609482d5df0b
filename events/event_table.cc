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
#include "store/event_state_names.h"
#include "store/recorder_arithmetic.h"
#include "store/table_row.h"
#include "store/time_text.h"

namespace {

const char kSeparator[] = "  ";

// Heading and rule of each column, in order; the size column is chosen by the
// size mode. The Answer1 rule is wider than its heading.
struct Column {
  const char* heading;
  int rule;
};

const Column kColumnsBeforeSize[] = {
    {"           REID             ", 28},
    {"  State   ", 10},
    {"SplitState", 10},
    {" Sec ", 5},
    {"    Start Time   ", 17},
    {"StopTime", 8},
    {"ExportTime", 10},
    {"Start Tick", 10},
    {" Stop Tick", 10},
    {"c/r", 3},
    {"BG", 2},
    {"Files", 5},
    {"         groupId            ", 28},
    {"Prt", 3},
    {"Tot", 3},
    {"Stg", 3},
};

const Column kColumnsAfterSize[] = {
    {"Hours Till Re-Export", 20},
    {"Answer1", 20},
};

// How the size column shows an event's bytes.
struct SizeMode {
  Column column;
  double divisor;
  int decimals;
};

SizeMode SizeModeOf(unsigned flag) {
  if (flag != 0) {
    return {{"   Bytes   ", 11}, 1.0, 0};
  }
  return {{" GiB ", 5}, kBytesPerGiB, 3};
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
  const Column& size = SizeModeOf(flag).column;
  std::cout << std::endl;
  for (const Column& column : kColumnsBeforeSize) std::cout << column.heading << kSeparator;
  std::cout << size.heading << kSeparator;
  for (const Column& column : kColumnsAfterSize) std::cout << column.heading << kSeparator;
  std::cout << std::endl;
  for (const Column& column : kColumnsBeforeSize) {
    std::cout << std::string(column.rule, '=') << kSeparator;
  }
  std::cout << std::string(size.rule, '=') << kSeparator;
  for (const Column& column : kColumnsAfterSize) {
    std::cout << std::string(column.rule, '=') << kSeparator;
  }
  std::cout << std::endl;
}

void DisplayEvent(const StreamMgrApi::EventRecordItem& event, unsigned flag) {
  const SizeMode size = SizeModeOf(flag);
  const RowTimes times(event);
  const std::string& reid = event.reid.GetValue();
  const std::string path = kMetadataDirectory + reid;
  int32_t seconds = WrappedDifference(event.stopTime.GetValue(), event.startTime.GetValue());
  if (seconds < 0) {
    seconds = -1;
  }
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
  TableRow row;
  row.Left(reid, 28).Add(kSeparator);
  row.Right(EventStateToStr(event.state), 10).Add(kSeparator);
  row.Right(EventSplitStateToStr(event.splitState), 10).Add(kSeparator);
  row.Signed(seconds, 5).Add(kSeparator);
  row.Right(times.start, 17).Add(kSeparator);
  row.Right(times.stop, 8).Add(kSeparator);
  row.Right(times.export_, 10).Add(kSeparator);
  row.Unsigned(event.startTick.GetValue(), 10).Add(kSeparator);
  row.Unsigned(event.stopTick.GetValue(), 10).Add(kSeparator);
  row.Add(std::string_view(codes, sizeof codes)).Add(kSeparator);
  row.Right(event.background.GetValue() ? " Y" : " N", 2).Add(kSeparator);
  row.Unsigned(event.totalFiles.GetValue(), 5).Add(kSeparator);
  row.Left(event.groupId.GetValue(), 28).Add(kSeparator);
  row.Unsigned(event.part.GetValue(), 3).Add(kSeparator);
  row.Unsigned(event.totalParts.GetValue(), 3).Add(kSeparator);
  row.Right(IsStaged(path) ? "  Y" : "  N", 3).Add(kSeparator);
  double bytes = 0.0;
  if (IsStaged(path)) {
    // EventSize may complain on standard error, which is tied to standard
    // output: the columns so far go into the stream first, so that they come
    // out ahead of the complaint as they would written field by field.
    std::cout << row.Line();
    row.Clear();
    bytes = static_cast<double>(static_cast<uint64_t>(EventSize(reid)));
  }
  row.Fixed(bytes / size.divisor, size.decimals, size.column.rule).Add(kSeparator);
  row.Right(hours, 20).Add(kSeparator);
  const std::vector<StreamMgrApi::EventAnswerItem>& answers = event.answers.entries;
  if (!answers.empty()) {
    row.Right(answers.front().answer.GetValue(), 20).Add(kSeparator);
  }
  row.Add("\n");
  // The stream is left right-aligned and in the size column's notation, as
  // field by field insertion would leave it. The line end goes in with the
  // row and the flush follows, as endl has it.
  std::cout << std::right << std::fixed << std::setprecision(size.decimals) << row.Line()
            << std::flush;
}
