// The -a argument language, case by case.
#include "analysis/analysis_options.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

namespace {

// The record after `start` and then `argument`, each applied to what the one
// before left, on one line: "d" for disk, "s" for split ("-" for neither), the
// size limit, and what the parser left of the argument and whether it refused it.
std::string Outcome(const std::string& argument, const std::string& start = "") {
  AnalysisOptions options;
  std::string first = start;
  ProcessAnalysisOptions(first, options);
  std::string rest = argument;
  const bool accepted = ProcessAnalysisOptions(rest, options);
  std::string text = std::string(options.disk ? "d" : "") + (options.split ? "s" : "");
  text = (text.empty() ? "-" : text) + " z" + std::to_string(options.maxPartSize);
  if (!accepted) return text + " refused at \"" + rest + "\"";
  return rest.empty() ? text : text + " left \"" + rest + "\"";
}

struct OptionCase {
  std::string argument;
  std::string outcome;
  std::string start = "";  // applied first; "" for a fresh record
};

void PrintTo(const OptionCase& c, std::ostream* out) {
  *out << '"' << c.start << "\" then \"" << c.argument << '"';
}

class AnalysisOptionCases : public ::testing::TestWithParam<OptionCase> {};

TEST_P(AnalysisOptionCases, Parse) {
  EXPECT_EQ(GetParam().outcome, Outcome(GetParam().argument, GetParam().start));
}

// First an empty argument, which changes nothing, and the letters alone.
INSTANTIATE_TEST_SUITE_P(
    Examples, AnalysisOptionCases,
    ::testing::Values(
        OptionCase{"", "s z7", "sz7"}, OptionCase{"d", "d z0"}, OptionCase{"s", "s z0"},
        // Letters in any order, and repeated.
        OptionCase{"sd", "ds z0"}, OptionCase{"ds", "ds z0"}, OptionCase{"ssdd", "ds z0"},
        OptionCase{"dsds", "ds z0"}, OptionCase{"ss", "s z0"},
        // The number after z.
        OptionCase{"sz20", "s z20"}, OptionCase{"zs20", "s z20"},
        // Everything after the digits is lost, even an unknown letter.
        OptionCase{"sz20d", "s z20"}, OptionCase{"z20s", "- z20"}, OptionCase{"sz5?", "s z5"},
        // The number belongs to the first z; letters between the z and the
        // digits are still read, anything else stops the parse there.
        OptionCase{"zz3", "- z3"}, OptionCase{"zds12", "ds z12"},
        OptionCase{"sz?9", "s z9 refused at \"?\""},
        // z without digits keeps the earlier number.
        OptionCase{"sz", "s z20", "z20"}, OptionCase{"sz", "s z0"},
        // z alone only stores the number.
        OptionCase{"z20", "- z20"},
        // Zero is a number like any other.
        OptionCase{"sz0", "s z0", "z20"}, OptionCase{"z007", "- z7"},
        // Digits before any z are refused.
        OptionCase{"d20", "d z0 refused at \"20\""},
        // An unknown character stops the parse and keeps the earlier flags;
        // upper case letters are not the same letters.
        OptionCase{"s?", "s z0 refused at \"?\""}, OptionCase{"x", "- z0 refused at \"x\""},
        OptionCase{"qsd", "- z0 refused at \"qsd\""}, OptionCase{"S", "- z0 refused at \"S\""},
        OptionCase{"D", "- z0 refused at \"D\""},
        // Numbers saturate at 32 bits.
        OptionCase{"sz4294967295", "s z4294967295"}, OptionCase{"sz4294967296", "s z4294967295"},
        OptionCase{"sz99999999999", "s z4294967295"},
        OptionCase{"sz" + std::string(5000, '9'), "s z4294967295"},
        OptionCase{"sz4294967294", "s z4294967294"},
        // The record is shared across calls.
        OptionCase{"d", "ds z0", "s"}));

TEST(AnalysisOptions, EveryByteValue) {
  for (int value = 0; value < 256; ++value) {
    const std::string c(1, static_cast<char>(value));
    const bool known = c == "s" || c == "d" || c == "z";
    const std::string expected = c == "d" ? "ds z0"
                                 : known  ? "s z0"
                                          : "- z0 refused at \"" + c + "s\"";
    EXPECT_EQ(expected, Outcome(c + "s")) << value;
  }
}

TEST(AnalysisOptions, LongArgumentsAreHandledInLinearTime) {
  // 100,000 characters of each kind; quadratic work would take far too long
  // for the test's time limit under the sanitizers.
  EXPECT_EQ("- z0", Outcome(std::string(100000, 'z')));
  EXPECT_EQ("ds z0", Outcome(std::string(50000, 's') + std::string(50000, 'd')));
  std::string mixed;
  for (int i = 0; i < 20000; ++i) mixed += "zsdzd";
  EXPECT_EQ("ds z42", Outcome(mixed + "42"));
  EXPECT_EQ("s z0 refused at \"!\"", Outcome(std::string(99999, 's') + "!"));
}

}  // namespace
