// The bash completion of db, driven as bash drives it: COMP_WORDS and
// COMP_CWORD set, the completion function called, COMPREPLY read back. What it
// offers is checked against the tool's own option table and parsers.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <sstream>
#include <string>
#include <vector>

#include "analysis/analysis_options.h"
#include "cli/option_table.h"
#include "files/file_options.h"
#include "ship/installed_db.h"
#include "ship/shell.h"

namespace {

using Words = std::vector<std::string>;

std::string CompletionScript() { return SourceDir() + "/tools/db-completion.bash"; }

// Completes the last of `words` (the command line up to the cursor).
Words Complete(const Words& words) {
  std::string array;
  for (const std::string& word : words) array += " " + ShellQuote(word);
  const std::string script =
      "source " + ShellQuote(CompletionScript()) + " || exit 1\n" + "COMP_WORDS=(" + array +
      " )\n" + "COMP_CWORD=" + std::to_string(words.size() - 1) + "\n" +
      "COMP_LINE=\"${COMP_WORDS[*]}\"\nCOMP_POINT=${#COMP_LINE}\n" + "_db || exit 1\n" +
      "for reply in \"${COMPREPLY[@]}\"; do printf '%s\\n' \"$reply\"; done\n";
  const RunResult result = RunShell("bash --norc -c " + ShellQuote(script));
  EXPECT_EQ(0, result.status) << result.err;
  EXPECT_EQ("", result.err);
  Words replies;
  std::istringstream lines(result.out);
  for (std::string line; std::getline(lines, line);) replies.push_back(line);
  return replies;
}

Words Each(const std::string& prefix, const std::string& characters) {
  Words words;
  for (char c : characters) words.push_back(prefix + c);
  return words;
}

bool SelectionAccepted(std::string argument) {
  FileOptions options;
  return ProcessFileDisplayOptions(argument, options);
}

bool AnalysisAccepted(std::string argument) {
  AnalysisOptions options;
  return ProcessAnalysisOptions(argument, options);
}

// The parser accepts each lower-case letter (but `unchecked`) that is
// offered, and refuses every other one.
void ExpectOfferedLettersAccepted(const Words& offered, bool (*accepted)(std::string),
                                  char unchecked = '\0') {
  for (char c = 'a'; c <= 'z'; ++c) {
    const std::string word(1, c);
    if (c == unchecked) continue;
    EXPECT_EQ(std::find(offered.begin(), offered.end(), word) != offered.end(), accepted(word))
        << word;
  }
}

// Every long option of the table, in table order, with its dashes.
Words LongOptions() {
  Words words;
  for (const struct option* o = kLongOptions; o->name != nullptr; ++o) {
    words.push_back(std::string("--") + o->name);
  }
  return words;
}

}  // namespace

TEST(Completion, IsRegisteredForDb) { ExpectCompletionRegistered(CompletionScript()); }

TEST(Completion, OffersEveryLongOptionInTableOrder) {
  EXPECT_EQ(LongOptions(), Complete({"db", "--"}));
  EXPECT_EQ(Words{"--files"}, Complete({"db", "--fi"}));
  EXPECT_EQ((Words{"--delete", "--deleteall"}), Complete({"db", "--del"}));
  EXPECT_EQ(Words{}, Complete({"db", "--nothing"}));
}

TEST(Completion, OffersTheShortOptionsOfTheUsageTextThenTheLongOnes) {
  Words expected;
  for (const char* c = kShortOptions; *c != '\0'; ++c) {
    if (*c != ':' && !std::isupper(static_cast<unsigned char>(*c))) {
      expected.push_back(std::string("-") + *c);
    }
  }
  const Words offered = Complete({"db", "-"});
  ASSERT_GE(offered.size(), expected.size());
  // The short ones in any order.
  Words shortOffered(offered.begin(), offered.begin() + expected.size());
  std::sort(expected.begin(), expected.end());
  std::sort(shortOffered.begin(), shortOffered.end());
  EXPECT_EQ(expected, shortOffered);
  EXPECT_EQ(LongOptions(), Words(offered.begin() + expected.size(), offered.end()));
}

TEST(Completion, OffersAHiddenOptionOnlyWhenItIsTyped) {
  const Words all = Complete({"db", "-"});
  for (const std::string hidden : {"-E", "-R", "-P"}) {
    EXPECT_EQ(Words{hidden}, Complete({"db", hidden}));
    for (const std::string& word : all) EXPECT_NE(hidden, word);
  }
}

TEST(Completion, OffersFileSelectionLettersThatTheParserAccepts) {
  const Words offered = Complete({"db", "-f", ""});
  EXPECT_EQ(Each("", "acfklnrst"), offered);
  // An s waits for its stream digit.
  ExpectOfferedLettersAccepted(offered, SelectionAccepted, 's');
}

TEST(Completion, OffersStreamDigitsAfterS) {
  EXPECT_EQ(Each("s", "0123"), Complete({"db", "-f", "s"}));
  EXPECT_EQ(Each("cs", "0123"), Complete({"db", "-f", "cs"}));
  for (const std::string& word : Complete({"db", "-f", "s"})) {
    EXPECT_TRUE(SelectionAccepted(word)) << word;
  }
  EXPECT_FALSE(SelectionAccepted("s4"));
}

TEST(Completion, LettersFollowANumberPatternAndEarlierLetters) {
  EXPECT_EQ(Each("20?", "acfklnrst"), Complete({"db", "-f", "20?"}));
  EXPECT_EQ(Each("*", "acfklnrst"), Complete({"db", "-f", "*"}));
  EXPECT_EQ(Each("s0f", "acfklnrst"), Complete({"db", "-f", "s0f"}));
  for (const std::string& word : Complete({"db", "-f", "20?t"})) {
    // An s waits for its stream digit.
    if (word.back() != 's') {
      EXPECT_TRUE(SelectionAccepted(word)) << word;
    }
  }
}

TEST(Completion, OffersNothingAfterWhatTheParserRefuses) {
  for (const std::string refused : {"x", "cx", "sx", "s4", "c5", "A", " "}) {
    EXPECT_FALSE(SelectionAccepted(refused)) << refused;
    EXPECT_EQ(Words{}, Complete({"db", "-f", refused})) << refused;
  }
}

TEST(Completion, OffersAnalysisLettersThatTheParserAccepts) {
  const Words offered = Complete({"db", "-a", ""});
  EXPECT_EQ(Each("", "dsz"), offered);
  ExpectOfferedLettersAccepted(offered, AnalysisAccepted);
  EXPECT_EQ(Each("s", "dsz"), Complete({"db", "-a", "s"}));
}

TEST(Completion, OffersTheSizeLimitDigitsAfterZ) {
  EXPECT_EQ(Each("sz", "dsz0123456789"), Complete({"db", "-a", "sz"}));
  EXPECT_EQ(Each("sz2", "0123456789"), Complete({"db", "-a", "sz2"}));
  for (const std::string& word : Complete({"db", "-a", "sz"})) {
    EXPECT_TRUE(AnalysisAccepted(word)) << word;
  }
  // db drops whatever follows the number, and digits before any z are refused.
  EXPECT_EQ(Words{}, Complete({"db", "-a", "z20s"}));
  EXPECT_EQ(Words{}, Complete({"db", "-a", "d20"}));
  EXPECT_FALSE(AnalysisAccepted("d20"));
  EXPECT_EQ(Words{}, Complete({"db", "-a", "q"}));
}

TEST(Completion, ArgumentsGivenWithLongOptionsAndInClusters) {
  // bash splits --files=s at the '=' by default; without that it is one word.
  EXPECT_EQ(Each("", "acfklnrst"), Complete({"db", "--files", "="}));
  EXPECT_EQ(Each("s", "0123"), Complete({"db", "--files", "=", "s"}));
  EXPECT_EQ(Each("--files=s", "0123"), Complete({"db", "--files=s"}));
  EXPECT_EQ(Each("", "dsz"), Complete({"db", "--analyze", ""}));
  EXPECT_EQ(Each("s", "dsz"), Complete({"db", "--analyze", "=", "s"}));
  // Glued to the option, and after a cluster of flags.
  EXPECT_EQ(Each("-fs", "0123"), Complete({"db", "-fs"}));
  EXPECT_EQ(Each("-eas", "dsz"), Complete({"db", "-eas"}));
  EXPECT_EQ(Each("", "acfklnrst"), Complete({"db", "-ef", ""}));
  EXPECT_EQ(Each("", "dsz"), Complete({"db", "-tua", ""}));
}

TEST(Completion, OffersNoReidsAndNoPlainWords) {
  for (const std::string option : {"-d", "--delete", "-r", "--reid", "-R", "-er"}) {
    EXPECT_EQ(Words{}, Complete({"db", option, ""})) << option;
  }
  EXPECT_EQ(Words{}, Complete({"db", ""}));
  EXPECT_EQ(Words{}, Complete({"db", "-e", "word"}));
  // After an option's argument, options are offered again.
  EXPECT_EQ(Words{"-f"}, Complete({"db", "-f", "s0", "-f"}));
}
