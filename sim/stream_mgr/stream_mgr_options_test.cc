#include "sim/stream_mgr/stream_mgr_options.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "testing/sim_options_fixture.h"

namespace {

std::string Describe(const StreamMgrOptions& options) {
  std::ostringstream text;
  for (const std::string& reid : options.refusedDeletes) text << "refuse " << reid << ", ";
  for (const auto& [number, bytes] : options.liveSizes) text << number << " is " << bytes << ", ";
  if (!options.logPath.empty()) text << "log to " << options.logPath << ", ";
  if (options.dieAfterSet) text << "die after " << options.dieAfter << ", ";
  text << "delay " << options.delayMs << " ms" << (options.failRequests ? ", fail" : "")
       << (options.noIpc ? ", no IPC" : "") << (options.garbage ? ", garbage" : "")
       << (options.help ? ", help" : "");
  return text.str();
}

std::string Parse(const std::vector<std::string>& words) {
  return Parsed(ParseStreamMgrOptions, Describe, words);
}

TEST(StreamMgrOptions, NoneGivesTheDefaults) { EXPECT_EQ("delay 0 ms", Parse({})); }

TEST(StreamMgrOptions, EveryOptionInBothSpellings) {
  EXPECT_EQ(
      "refuse a, refuse b c, 3 is 4, 4294967295 is 4294967295, log to /mnt/hd/requests.log, "
      "die after 0, delay 250 ms, fail, no IPC, garbage, help",
      Parse({"--refuse-delete", "a", "--refuse-delete=b c", "--fail-requests", "--no-ipc",
             "--live-size", "3=4", "--live-size=4294967295=4294967295", "--log",
             "/mnt/hd/requests.log", "--delay-ms=250", "--garbage", "--die-after", "0", "--help"}));
}

TEST(StreamMgrOptions, LaterLiveSizeOfTheSameFileWins) {
  EXPECT_EQ("3 is 5, delay 0 ms", Parse({"--live-size", "3=4", "--live-size", "3=5"}));
}

TEST(StreamMgrOptions, BadCommandLinesAreRefused) {
  for (const char* line :
       {"--bogus", "-x", "stray", "--log", "--log=", "--refuse-delete", "--live-size 3",
        "--live-size =4", "--live-size 3=", "--live-size 3=-4", "--live-size x=4",
        "--live-size 3=4294967296", "--delay-ms -1", "--delay-ms 2147483648", "--delay-ms 10ms",
        "--die-after ", "--die-after", "--fail-requests=yes"}) {
    EXPECT_EQ("refused", Parse(Words(line))) << line;
  }
}

TEST(StreamMgrOptions, HelpDocumentsEveryOption) {
  const std::string help = kStreamMgrHelp;
  for (const char* option :
       {"--refuse-delete REID", "--fail-requests", "--no-ipc", "--live-size NUMBER=BYTES",
        "--log FILE", "--delay-ms N", "--garbage", "--die-after N", "--help"}) {
    EXPECT_NE(std::string::npos, help.find(option)) << option;
  }
}

}  // namespace
