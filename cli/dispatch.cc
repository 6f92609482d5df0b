#include "cli/dispatch.h"

#include <getopt.h>

#include <string>

#include "analysis/analysis_options.h"
#include "analysis/disk_analysis.h"
#include "analysis/split_events.h"
#include "cli/option_table.h"
#include "cli/usage.h"
#include "events/event_selections.h"
#include "files/file_options.h"
#include "files/files_table.h"
#include "maintenance/event_deletion.h"
#include "maintenance/status_report.h"

namespace {

// State kept across the whole option loop. Repeated -f and -a options share
// one record each, so a later one starts from what the earlier one left.
struct LoopState {
  int exitStatus = 0;
  std::string reid;
  std::string optionArgument;  // last -a or -f argument, consumed by its parser
  FileOptions fileOptions;
  AnalysisOptions analysisOptions;
};

void HandleAnalyze(LoopState& state) {
  ProcessAnalysisOptions(state.optionArgument, state.analysisOptions);
  if (state.analysisOptions.disk) {
    AnalyzeDisk();
  } else if (state.analysisOptions.split) {
    AnalyzeSplitEvents(state.analysisOptions);
  }
}

void HandleFiles(LoopState& state) {
  ProcessFileDisplayOptions(state.optionArgument, state.fileOptions);
  DisplayFiles(state.fileOptions);
}

void Dispatch(int option, const char* argument, const char* programName, LoopState& state) {
  switch (option) {
    case 'h':
      PrintUsage(programName, nullptr);
      state.exitStatus = 0;
      break;
    case 'a':
      state.optionArgument = argument != nullptr ? argument : "";
      HandleAnalyze(state);
      break;
    case 'd':
      state.reid = argument;
      DeleteEventsById(state.reid);
      break;
    case kDeleteAllOption:
      DeleteAllEvents();
      break;
    case 'e':
    case 'E':
      DisplayEvents(option == 'E');
      break;
    case 'f':
      state.optionArgument = argument;
      HandleFiles(state);
      break;
    case 'r':
    case 'R':
      state.reid = argument;
      DisplayEventsById(state.reid, option == 'R');
      break;
    case 'p':
    case 'P':
      DisplaySplitEvents(option == 'P');
      break;
    case 's':
      DisplayStatus();
      break;
    case 't':
      DisplayTables();
      break;
    case 'u':
      DisplayUntransferredEvents();
      break;
    default:
      PrintUsage(programName, "Error: unknown option specified");
      state.exitStatus = 0;
      break;
  }
}

}  // namespace

int RunOptionLoop(int argc, char** argv, int exitStatus) {
  LoopState state;
  state.exitStatus = exitStatus;
  int index = 0;
  int option;
  while ((option = getopt_long(argc, argv, kShortOptions, kLongOptions, &index)) != -1) {
    Dispatch(option, optarg, argv[0], state);
  }
  return state.exitStatus;
}
