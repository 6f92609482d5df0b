// Command lines parsed with the option table as the option loop parses them.
#include "cli/option_table.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "testing/case_tables.h"

namespace {

// The options getopt_long returns for `words` (after the program name), each
// with its argument in parentheses: "a(s) d(7)"; --deleteall as "deleteall".
std::string Parse(std::vector<std::string> words) {
  words.insert(words.begin(), "db");
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(&word[0]);
  argv.push_back(nullptr);
  optind = 0;
  opterr = 0;
  std::string options;
  int index = 0;
  for (int option; (option = getopt_long(static_cast<int>(words.size()), argv.data(), kShortOptions,
                                         kLongOptions, &index)) != -1;) {
    options += options.empty() ? "" : " ";
    options += option == kDeleteAllOption ? "deleteall" : std::string(1, static_cast<char>(option));
    if (optarg != nullptr) options += std::string("(") + optarg + ")";
  }
  opterr = 1;
  return options;
}

struct ParseCase {
  const char* name;
  std::vector<std::string> words;
  const char* options;
};

void PrintTo(const ParseCase& c, std::ostream* out) { *out << c.name; }

const ParseCase kParseCases[] = {
    {"EveryFlagInCommandLineOrder", {"-e", "-E", "-p", "-P", "-s", "-t", "-u"}, "e E p P s t u"},
    {"HelpUsageAndDeleteAll", {"--help", "--usage", "--deleteall"}, "h h deleteall"},
    {"ArgumentsGluedAfterAnEqualsSignOrInTheNextWord",
     {"-as", "--delete=7", "--files", "s0f", "--reid", "x", "-R", "y"},
     "a(s) d(7) f(s0f) r(x) R(y)"},
    {"UniquePrefixesOfLongOptions", {"--tab", "--un", "--ev"}, "t u e"},
    {"UnknownOptionsAreQuestionMarks", {"-x", "--bogus"}, "? ?"},
    {"MissingArgumentIsAQuestionMark", {"-r"}, "?"},
    // "--de" could be --delete or --deleteall.
    {"AmbiguousPrefixIsAQuestionMark", {"--de"}, "?"},
};

class OptionTable : public ::testing::TestWithParam<ParseCase> {};

TEST_P(OptionTable, Parses) { EXPECT_EQ(GetParam().options, Parse(GetParam().words)); }

INSTANTIATE_NAMED_CASES(CommandLines, OptionTable, kParseCases);

}  // namespace
