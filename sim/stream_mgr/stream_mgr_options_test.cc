#include "sim/stream_mgr/stream_mgr_options.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "testing/sim_command_line.h"
namespace {

bool Parse(const std::vector<std::string>& words, StreamMgrOptions& options, std::string& error) {
  return ParseWords(ParseStreamMgrOptions, words, options, error);
}

TEST(StreamMgrOptions, NoneGivesTheDefaults) {
  StreamMgrOptions options;
  std::string error;
  ASSERT_TRUE(Parse({}, options, error));
  EXPECT_TRUE(options.refusedDeletes.empty());
  EXPECT_FALSE(options.failRequests || options.noIpc || options.garbage || options.dieAfterSet ||
               options.help);
  EXPECT_TRUE(options.liveSizes.empty());
  EXPECT_EQ("", options.logPath);
  EXPECT_EQ(0, options.delayMs);
}

TEST(StreamMgrOptions, EveryOptionInBothSpellings) {
  StreamMgrOptions options;
  std::string error;
  ASSERT_TRUE(
      Parse({"--refuse-delete", "a", "--refuse-delete=b c", "--fail-requests", "--no-ipc",
             "--live-size", "3=4", "--live-size=4294967295=4294967295", "--log",
             "/mnt/hd/requests.log", "--delay-ms=250", "--garbage", "--die-after", "0", "--help"},
            options, error))
      << error;
  EXPECT_EQ((std::set<std::string>{"a", "b c"}), options.refusedDeletes);
  EXPECT_TRUE(options.failRequests);
  EXPECT_TRUE(options.noIpc);
  EXPECT_EQ((std::map<uint32_t, uint32_t>{{3, 4}, {4294967295u, 4294967295u}}), options.liveSizes);
  EXPECT_EQ("/mnt/hd/requests.log", options.logPath);
  EXPECT_EQ(250, options.delayMs);
  EXPECT_TRUE(options.garbage);
  EXPECT_TRUE(options.dieAfterSet);
  EXPECT_EQ(0u, options.dieAfter);
  EXPECT_TRUE(options.help);
}

TEST(StreamMgrOptions, LaterLiveSizeOfTheSameFileWins) {
  StreamMgrOptions options;
  std::string error;
  ASSERT_TRUE(Parse({"--live-size", "3=4", "--live-size", "3=5"}, options, error));
  EXPECT_EQ(5u, options.liveSizes[3]);
}

TEST(StreamMgrOptions, BadCommandLinesAreRefused) {
  const std::vector<std::vector<std::string>> bad = {
      {"--bogus"},
      {"-x"},
      {"stray"},
      {"--log"},
      {"--log="},
      {"--refuse-delete"},
      {"--live-size", "3"},
      {"--live-size", "=4"},
      {"--live-size", "3="},
      {"--live-size", "3=-4"},
      {"--live-size", "x=4"},
      {"--live-size", "3=4294967296"},
      {"--delay-ms", "-1"},
      {"--delay-ms", "2147483648"},
      {"--delay-ms", "10ms"},
      {"--die-after", ""},
      {"--die-after"},
      {"--fail-requests=yes"},
  };
  for (const auto& words : bad) {
    StreamMgrOptions options;
    std::string error;
    EXPECT_FALSE(Parse(words, options, error)) << words[0];
    EXPECT_NE("", error);
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
