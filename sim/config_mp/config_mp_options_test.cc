#include "sim/config_mp/config_mp_options.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "recorder/host/ipc_codec.h"
#include "testing/sim_command_line.h"

namespace {

bool Parse(const std::vector<std::string>& words, ConfigMpOptions& options, std::string& error) {
  return ParseWords(ParseConfigMpOptions, words, options, error);
}

TEST(ConfigMpOptions, DefaultsToReExportDisabled) {
  ConfigMpOptions options;
  std::string error;
  ASSERT_TRUE(Parse({}, options, error));
  EXPECT_EQ(0u, options.reExportHours);
  EXPECT_FALSE(options.fail || options.garbage || options.help);
  EXPECT_EQ(0, options.delayMs);
}

TEST(ConfigMpOptions, EveryOption) {
  ConfigMpOptions options;
  std::string error;
  ASSERT_TRUE(
      Parse({"--reexport-hours", "4294967295", "--fail", "--delay-ms=5", "--garbage", "--help"},
            options, error))
      << error;
  EXPECT_EQ(4294967295u, options.reExportHours);
  EXPECT_TRUE(options.fail);
  EXPECT_EQ(5, options.delayMs);
  EXPECT_TRUE(options.garbage);
  EXPECT_TRUE(options.help);
}

TEST(ConfigMpOptions, BadCommandLinesAreRefused) {
  const std::vector<std::vector<std::string>> bad = {
      {"--reexport-hours"},
      {"--reexport-hours", "-1"},
      {"--reexport-hours", "1e3"},
      {"--reexport-hours", "4294967296"},
      {"--reexport-hours", ""},
      {"--delay-ms", "x"},
      {"--fail=1"},
      {"--bogus"},
      {"24"},
  };
  for (const auto& words : bad) {
    ConfigMpOptions options;
    std::string error;
    EXPECT_FALSE(Parse(words, options, error)) << words[0];
    EXPECT_NE("", error);
  }
}

TEST(ConfigMpOptions, HelpDocumentsEveryOption) {
  const std::string help = kConfigMpHelp;
  for (const char* option :
       {"--reexport-hours N", "--fail", "--delay-ms N", "--garbage", "--help"}) {
    EXPECT_NE(std::string::npos, help.find(option)) << option;
  }
}

TEST(ConfigMpRequests, SettingsCarryTheReExportHours) {
  ConfigMpOptions options;
  options.reExportHours = 24;
  const HostIpc::Reply reply = HandleConfigMpRequest(options, HostIpc::SettingsRequest());
  ASSERT_EQ(HostIpc::Reply::Action::kAnswer, reply.action);
  VideoRecordingSettings settings;
  ASSERT_TRUE(HostIpc::DecodeSettingsAnswer(reply.body, settings));
  EXPECT_EQ(24u, settings.reExportHours);
}

TEST(ConfigMpRequests, FailAnswersAnError) {
  ConfigMpOptions options;
  options.fail = true;
  options.reExportHours = 24;
  const HostIpc::Reply reply = HandleConfigMpRequest(options, HostIpc::SettingsRequest());
  VideoRecordingSettings settings;
  EXPECT_EQ(HostIpc::FailedAnswer(HostIpc::kSettings), reply.body);
  EXPECT_FALSE(HostIpc::DecodeSettingsAnswer(reply.body, settings));
}

TEST(ConfigMpRequests, GarbageCannotBeDecoded) {
  ConfigMpOptions options;
  options.garbage = true;
  const HostIpc::Reply reply = HandleConfigMpRequest(options, HostIpc::SettingsRequest());
  VideoRecordingSettings settings;
  EXPECT_EQ(HostIpc::Reply::Action::kAnswer, reply.action);
  EXPECT_FALSE(HostIpc::DecodeSettingsAnswer(reply.body, settings));
}

TEST(ConfigMpRequests, OtherRequestsFailAndNonsenseHangsUp) {
  ConfigMpOptions options;
  EXPECT_EQ(HostIpc::FailedAnswer(HostIpc::kCount),
            HandleConfigMpRequest(options, HostIpc::TextRequest(HostIpc::kCount, "select 1")).body);
  EXPECT_EQ(HostIpc::FailedAnswer(HostIpc::kSettings),
            HandleConfigMpRequest(options, HostIpc::SettingsRequest() + "x").body);
  EXPECT_EQ(HostIpc::Reply::Action::kDrop, HandleConfigMpRequest(options, "nonsense").action);
  EXPECT_EQ(HostIpc::Reply::Action::kDrop, HandleConfigMpRequest(options, "").action);
}

}  // namespace
