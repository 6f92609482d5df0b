#include "sim/config_mp/config_mp_options.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "recorder/host/ipc_codec.h"
#include "testing/sim_options_fixture.h"

namespace {

std::string Describe(const ConfigMpOptions& options) {
  return "re-export after " + std::to_string(options.reExportHours) + " h, delay " +
         std::to_string(options.delayMs) + " ms" + (options.fail ? ", fail" : "") +
         (options.garbage ? ", garbage" : "") + (options.help ? ", help" : "");
}

std::string Parse(const std::vector<std::string>& words) {
  return Parsed(ParseConfigMpOptions, Describe, words);
}

TEST(ConfigMpOptions, DefaultsToReExportDisabled) {
  EXPECT_EQ("re-export after 0 h, delay 0 ms", Parse({}));
}

TEST(ConfigMpOptions, EveryOption) {
  EXPECT_EQ(
      "re-export after 4294967295 h, delay 5 ms, fail, garbage, help",
      Parse({"--reexport-hours", "4294967295", "--fail", "--delay-ms=5", "--garbage", "--help"}));
}

TEST(ConfigMpOptions, BadCommandLinesAreRefused) {
  for (const char* line : {"--reexport-hours", "--reexport-hours -1", "--reexport-hours 1e3",
                           "--reexport-hours 4294967296", "--reexport-hours ", "--delay-ms x",
                           "--fail=1", "--bogus", "24"}) {
    EXPECT_EQ("refused", Parse(Words(line))) << line;
  }
}

TEST(ConfigMpOptions, HelpDocumentsEveryOption) {
  const std::string help = kConfigMpHelp;
  for (const char* option :
       {"--reexport-hours N", "--fail", "--delay-ms N", "--garbage", "--help"}) {
    EXPECT_NE(std::string::npos, help.find(option)) << option;
  }
}

// How ConfigMP started with the words of `line` answers `request`, in words.
std::string Reply(const std::string& line, const std::string& request) {
  ConfigMpOptions options;
  std::string error;
  EXPECT_TRUE(ParseWords(ParseConfigMpOptions, Words(line), options, error)) << error;
  const HostIpc::Reply reply = HandleConfigMpRequest(options, request);
  VideoRecordingSettings settings;
  if (reply.action != HostIpc::Reply::Action::kAnswer) {
    return reply.action == HostIpc::Reply::Action::kDrop ? "hangs up" : "dies";
  }
  if (HostIpc::DecodeSettingsAnswer(reply.body, settings)) {
    return "re-export after " + std::to_string(settings.reExportHours) + " h";
  }
  return reply.body == HostIpc::FailedAnswer(HostIpc::kSettings) ? "settings failed"
         : reply.body == HostIpc::FailedAnswer(HostIpc::kCount)  ? "count failed"
                                                                 : "garbage";
}

TEST(ConfigMpRequests, SettingsCarryTheReExportHours) {
  EXPECT_EQ("re-export after 24 h", Reply("--reexport-hours 24", HostIpc::SettingsRequest()));
}

TEST(ConfigMpRequests, FailAnswersAnError) {
  EXPECT_EQ("settings failed", Reply("--fail --reexport-hours 24", HostIpc::SettingsRequest()));
}

TEST(ConfigMpRequests, GarbageCannotBeDecoded) {
  EXPECT_EQ("garbage", Reply("--garbage", HostIpc::SettingsRequest()));
}

TEST(ConfigMpRequests, OtherRequestsFailAndNonsenseHangsUp) {
  EXPECT_EQ("count failed", Reply("", HostIpc::TextRequest(HostIpc::kCount, "select 1")));
  EXPECT_EQ("settings failed", Reply("", HostIpc::SettingsRequest() + "x"));
  EXPECT_EQ("hangs up", Reply("", "nonsense"));
  EXPECT_EQ("hangs up", Reply("", ""));
}

}  // namespace
