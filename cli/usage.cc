#include "cli/usage.h"

#include <iostream>

#include "cli/tool_context.h"

namespace {

// The columns depend on the leading blanks, so every line is kept whole.
const char* const kHelpLines[] = {
    "         [-h] or [--help] or [--usage] Shows this help message",
    "         [-a] or [--analyze] <d|s[z]>  Analyze the database and stream files (d = entire disk, s = split events)",
    "                    d = Analyze entire disk: all possible split points A) playable within 2 seconds, B) on frame boundary",
    "                    s = Analyze all split events: total parts, 2-sec overlap, last part >= 2 sec",
    "                    znn = Optional split event verification that all parts are < nn GB in size",
    "         [-d] or [--delete] <reid>  Delete this REID or all events with this groupId",
    "                 [--deleteall]      Delete all events",
    "         [-e] or [--events]         Display the events table",
    "         [-f] or [--files] <[*?num]s[0-3]cfklnrt>   Display the files table.  One or more options required:",
    "                    Options can be combined, and are processed in the order entered (might be important for sorting).",
    "                    [*?num] = Display a specific file num (or combined with wildcards). Default sort by num",
    "                    s[0-3]  = Display a specific stream number (i.e. show file chain).  Default sort by start tick",
    "                    a = Display allocated file(s) (to be written next). Default sort by start tick",
    "                    c = Display current file(s) being written. Default sort by start tick",
    "                    f = Display 'Free' or 'UsedFree' files.  Default sort by start tick",
    "                    k = Display 'UsedKeep' files (i.e. files locked by untransferred events). Default sort by start tick",
    "                    l = Limit output to the first 20 items.",
    "                    n = Sort by file number",
    "                    r = Reverse the sort",
    "                    t = Sort by start tick",
    "                    NOTE: if * is used, entire string must be enclosed in single quotes: e.g. '*r'",
    "                    Example: db -f '*r' = display all files, reverse sorted by (default) file number",
    "                    Example: db -f 20?tr = display files 200-209, reverse sorted by start tick",
    "                    Example: db -f s0f = display free files for stream 0, sorted by (default) start tick",
    "                    Example: db -f s2 = display file chain for stream 2, sorted by (default) start tick",
    "         [-r] or [--reid] <reid>  Display only this REID or groupId",
    "         [-p] or [--split]        Display only events that have been split",
    "         [-s] or [--status]       Display the status table",
    "         [-t] or [--tables]       Display the list of tables and number of rows in each",
    "         [-u] or [--un]           Display only events that are un-transferred (and un-confirmed)",
};

}  // namespace

void PrintUsage(const char* programName, const char* message) {
  std::cout << std::endl << std::endl;
  if (message != nullptr) {
    std::cout << message << std::endl;
  }
  std::cout << "Usage: " << programName << std::endl;
  for (const char* line : kHelpLines) {
    std::cout << line << std::endl;
  }
  std::cout << std::endl;
  std::cout << "StreamMgr is currently " << (toolContext.running ? "" : "NOT ") << "running"
            << std::endl;
  std::cout << std::endl;
}
