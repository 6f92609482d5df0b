#include "events/event_table.h"

#include <cstdint>
#include <ctime>
#include <iomanip>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "cli/tool_context.h"
#include "events/metadata_files.h"
#include "recorder/config_mp_client.h"
#include "recorder/log_client.h"
#include "store/event_state_names.h"

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
  return {{" GiB ", 5}, 1073741824.0, 3};
}

// Formats a stored time with the process's own (POSIX) locale.
std::string FormatTime(int32_t seconds, const char* format) {
  const time_t time = seconds;
  char text[20] = "";
  const struct tm* local = std::localtime(&time);
  if (local != nullptr) {
    std::strftime(text, sizeof text, format, local);
  }
  return text;
}

// Stored times are signed 32-bit seconds and their differences wrap likewise.
int32_t Difference32(int64_t later, int64_t earlier) {
  return static_cast<int32_t>(static_cast<uint32_t>(later) - static_cast<uint32_t>(earlier));
}

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
  const int32_t sinceExport = Difference32(std::time(nullptr), exportTime);
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
  const std::string startText = FormatTime(event.startTime.GetValue(), "%x %X");
  const std::string stopText = FormatTime(event.stopTime.GetValue(), "%X");
  const std::string exportText =
      event.exportTime.GetValue() <= 0 ? "0" : FormatTime(event.exportTime.GetValue(), "%X");
  const std::string& reid = event.reid.GetValue();
  const std::string path = kMetadataDirectory + reid;
  int32_t seconds = Difference32(event.stopTime.GetValue(), event.startTime.GetValue());
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

  std::cout << std::left << std::setw(28) << reid << kSeparator << std::right;
  std::cout << std::setw(10) << EventStateToStr(event.state) << kSeparator;
  std::cout << std::setw(10) << EventSplitStateToStr(event.splitState) << kSeparator;
  std::cout << std::setw(5) << seconds << kSeparator;
  std::cout << std::setw(17) << startText << kSeparator;
  std::cout << std::setw(8) << stopText << kSeparator;
  std::cout << std::setw(10) << exportText << kSeparator;
  std::cout << std::setw(10) << event.startTick.GetValue() << kSeparator;
  std::cout << std::setw(10) << event.stopTick.GetValue() << kSeparator;
  std::cout << CodeLetter(event.crCode1) << ' ' << CodeLetter(event.crCode2) << kSeparator;
  std::cout << std::setw(2) << (event.background.GetValue() ? " Y" : " N") << kSeparator;
  std::cout << std::setw(5) << event.totalFiles.GetValue() << kSeparator;
  std::cout << std::left << std::setw(28) << event.groupId.GetValue() << kSeparator << std::right;
  std::cout << std::setw(3) << event.part.GetValue() << kSeparator;
  std::cout << std::setw(3) << event.totalParts.GetValue() << kSeparator;
  std::cout << std::setw(3) << (IsStaged(path) ? "  Y" : "  N") << kSeparator;
  const double bytes =
      IsStaged(path) ? static_cast<double>(static_cast<uint64_t>(EventSize(reid))) : 0.0;
  std::cout << std::fixed << std::setprecision(size.decimals) << std::setw(size.column.rule)
            << bytes / size.divisor << kSeparator;
  std::cout << std::setw(20) << hours << kSeparator;
  const std::vector<StreamMgrApi::EventAnswerItem>& answers = event.answers.entries;
  if (!answers.empty()) {
    std::cout << std::setw(20) << answers.front().answer.GetValue() << kSeparator;
  }
  std::cout << std::endl;
}
