#include "cli/option_table.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

TEST(OptionTable, ShortOptions) { EXPECT_STREQ("ha:d:eEf:r:R:spPtu", kShortOptions); }

TEST(OptionTable, LongOptionsInTableOrder) {
  struct Expected {
    const char* name;
    int hasArg;
    int val;
  };
  const std::vector<Expected> expected = {
      {"help", no_argument, 'h'},          {"usage", no_argument, 'h'},
      {"analyze", required_argument, 'a'}, {"delete", required_argument, 'd'},
      {"deleteall", no_argument, 65280},   {"events", no_argument, 'e'},
      {"files", required_argument, 'f'},   {"reid", required_argument, 'r'},
      {"split", no_argument, 'p'},         {"status", no_argument, 's'},
      {"tables", no_argument, 't'},        {"un", no_argument, 'u'},
  };
  size_t i = 0;
  for (; kLongOptions[i].name != nullptr; ++i) {
    ASSERT_LT(i, expected.size());
    EXPECT_STREQ(expected[i].name, kLongOptions[i].name);
    EXPECT_EQ(expected[i].hasArg, kLongOptions[i].has_arg);
    EXPECT_EQ(nullptr, kLongOptions[i].flag);
    EXPECT_EQ(expected[i].val, kLongOptions[i].val);
  }
  EXPECT_EQ(expected.size(), i);
  EXPECT_EQ(0, kLongOptions[i].val);
}

// Parses a command line with the table, as the option loop does.
std::vector<int> Parse(std::vector<std::string> words) {
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(&word[0]);
  argv.push_back(nullptr);
  optind = 0;
  opterr = 0;
  std::vector<int> options;
  int index = 0;
  int option;
  while ((option = getopt_long(static_cast<int>(words.size()), argv.data(), kShortOptions,
                               kLongOptions, &index)) != -1) {
    options.push_back(option);
  }
  opterr = 1;
  return options;
}

TEST(OptionTable, ParsesEveryOptionInCommandLineOrder) {
  EXPECT_EQ(
      (std::vector<int>{'e', 'E', 'p', 'P', 's', 't', 'u', 'h', 'h', kDeleteAllOption}),
      Parse({"db", "-e", "-E", "-p", "-P", "-s", "-t", "-u", "--help", "--usage", "--deleteall"}));
  EXPECT_EQ((std::vector<int>{'a', 'd', 'f', 'r', 'R'}),
            Parse({"db", "-as", "--delete=7", "--files", "s0f", "--reid", "x", "-R", "y"}));
}

TEST(OptionTable, UniquePrefixesOfLongOptionsAreAccepted) {
  EXPECT_EQ((std::vector<int>{'t', 'u', 'e'}), Parse({"db", "--tab", "--un", "--ev"}));
}

TEST(OptionTable, UnknownOrIncompleteOptionsAreQuestionMarks) {
  EXPECT_EQ((std::vector<int>{'?'}), Parse({"db", "-x"}));
  EXPECT_EQ((std::vector<int>{'?'}), Parse({"db", "-r"}));
  EXPECT_EQ((std::vector<int>{'?'}), Parse({"db", "--bogus"}));
  // "--de" could be --delete or --deleteall.
  EXPECT_EQ((std::vector<int>{'?'}), Parse({"db", "--de"}));
}

}  // namespace
