// The -a argument language, case by case.
#include "analysis/analysis_options.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct Parsed {
  bool accepted;
  AnalysisOptions options;
  std::string rest;  // what the parser left of the argument
};

Parsed Parse(const std::string& text, AnalysisOptions options = AnalysisOptions()) {
  std::string argument = text;
  const bool accepted = ProcessAnalysisOptions(argument, options);
  return {accepted, options, argument};
}

TEST(AnalysisOptions, EmptyArgumentChangesNothing) {
  AnalysisOptions start;
  start.split = true;
  start.maxPartSize = 7;
  const Parsed p = Parse("", start);
  EXPECT_TRUE(p.accepted);
  EXPECT_TRUE(p.options.split);
  EXPECT_FALSE(p.options.disk);
  EXPECT_EQ(7u, p.options.maxPartSize);
}

TEST(AnalysisOptions, DiskAndSplitLetters) {
  const Parsed d = Parse("d");
  EXPECT_TRUE(d.accepted);
  EXPECT_TRUE(d.options.disk);
  EXPECT_FALSE(d.options.split);
  EXPECT_EQ("", d.rest);

  const Parsed s = Parse("s");
  EXPECT_TRUE(s.accepted);
  EXPECT_FALSE(s.options.disk);
  EXPECT_TRUE(s.options.split);
  EXPECT_EQ(0u, s.options.maxPartSize);
}

TEST(AnalysisOptions, LettersInAnyOrderAndRepeated) {
  for (const char* text : {"sd", "ds", "ssdd", "dsds"}) {
    const Parsed p = Parse(text);
    EXPECT_TRUE(p.accepted) << text;
    EXPECT_TRUE(p.options.disk) << text;
    EXPECT_TRUE(p.options.split) << text;
  }
  const Parsed ss = Parse("ss");
  EXPECT_TRUE(ss.accepted);
  EXPECT_TRUE(ss.options.split);
  EXPECT_FALSE(ss.options.disk);
}

TEST(AnalysisOptions, NumberAfterZ) {
  for (const char* text : {"sz20", "zs20"}) {
    const Parsed p = Parse(text);
    EXPECT_TRUE(p.accepted) << text;
    EXPECT_TRUE(p.options.split) << text;
    EXPECT_FALSE(p.options.disk) << text;
    EXPECT_EQ(20u, p.options.maxPartSize) << text;
    EXPECT_EQ("", p.rest) << text;
  }
}

TEST(AnalysisOptions, EverythingAfterTheDigitsIsLost) {
  const Parsed p = Parse("sz20d");
  EXPECT_TRUE(p.accepted);
  EXPECT_TRUE(p.options.split);
  EXPECT_FALSE(p.options.disk);
  EXPECT_EQ(20u, p.options.maxPartSize);

  const Parsed z = Parse("z20s");
  EXPECT_TRUE(z.accepted);
  EXPECT_FALSE(z.options.split);
  EXPECT_EQ(20u, z.options.maxPartSize);

  // Even an unknown letter after the digits is dropped unseen.
  const Parsed q = Parse("sz5?");
  EXPECT_TRUE(q.accepted);
  EXPECT_EQ(5u, q.options.maxPartSize);
}

TEST(AnalysisOptions, TheNumberBelongsToTheFirstZ) {
  const Parsed p = Parse("zz3");
  EXPECT_TRUE(p.accepted);
  EXPECT_EQ(3u, p.options.maxPartSize);
  // Letters between the z and the digits are still read.
  const Parsed between = Parse("zds12");
  EXPECT_TRUE(between.accepted);
  EXPECT_TRUE(between.options.disk);
  EXPECT_TRUE(between.options.split);
  EXPECT_EQ(12u, between.options.maxPartSize);
  // Non-digits between the z and its digits make the argument invalid there.
  const Parsed bad = Parse("sz?9");
  EXPECT_FALSE(bad.accepted);
  EXPECT_TRUE(bad.options.split);
  EXPECT_EQ(9u, bad.options.maxPartSize);
  EXPECT_EQ("?", bad.rest);
}

TEST(AnalysisOptions, ZWithoutDigitsKeepsTheEarlierNumber) {
  AnalysisOptions start;
  start.maxPartSize = 20;
  const Parsed p = Parse("sz", start);
  EXPECT_TRUE(p.accepted);
  EXPECT_TRUE(p.options.split);
  EXPECT_EQ(20u, p.options.maxPartSize);
  EXPECT_EQ(0u, Parse("sz").options.maxPartSize);
}

TEST(AnalysisOptions, ZAloneOnlyStoresTheNumber) {
  const Parsed p = Parse("z20");
  EXPECT_TRUE(p.accepted);
  EXPECT_FALSE(p.options.split);
  EXPECT_FALSE(p.options.disk);
  EXPECT_EQ(20u, p.options.maxPartSize);
}

TEST(AnalysisOptions, ZeroIsAValidNumber) {
  AnalysisOptions start;
  start.maxPartSize = 20;
  const Parsed p = Parse("sz0", start);
  EXPECT_TRUE(p.accepted);
  EXPECT_EQ(0u, p.options.maxPartSize);
  EXPECT_EQ(7u, Parse("z007").options.maxPartSize);
}

TEST(AnalysisOptions, DigitsBeforeAnyZAreInvalid) {
  const Parsed p = Parse("d20");
  EXPECT_FALSE(p.accepted);
  EXPECT_TRUE(p.options.disk);
  EXPECT_EQ(0u, p.options.maxPartSize);
  EXPECT_EQ("20", p.rest);
}

TEST(AnalysisOptions, UnknownCharacterStopsButKeepsEarlierFlags) {
  const Parsed s = Parse("s?");
  EXPECT_FALSE(s.accepted);
  EXPECT_TRUE(s.options.split);
  EXPECT_EQ("?", s.rest);

  const Parsed x = Parse("x");
  EXPECT_FALSE(x.accepted);
  EXPECT_FALSE(x.options.split);
  EXPECT_FALSE(x.options.disk);
  EXPECT_EQ("x", x.rest);

  const Parsed q = Parse("qsd");
  EXPECT_FALSE(q.accepted);
  EXPECT_FALSE(q.options.split);
  EXPECT_FALSE(q.options.disk);
  EXPECT_EQ("qsd", q.rest);

  // Upper case letters are not the same letters.
  EXPECT_FALSE(Parse("S").accepted);
  EXPECT_FALSE(Parse("D").options.disk);
}

TEST(AnalysisOptions, NumbersSaturateAtThirtyTwoBits) {
  EXPECT_EQ(4294967295u, Parse("sz4294967295").options.maxPartSize);
  EXPECT_EQ(4294967295u, Parse("sz4294967296").options.maxPartSize);
  EXPECT_EQ(4294967295u, Parse("sz99999999999").options.maxPartSize);
  EXPECT_EQ(4294967295u, Parse("sz" + std::string(5000, '9')).options.maxPartSize);
  EXPECT_EQ(4294967294u, Parse("sz4294967294").options.maxPartSize);
}

TEST(AnalysisOptions, RecordIsSharedAcrossCalls) {
  AnalysisOptions options;
  std::string first = "s";
  std::string second = "d";
  EXPECT_TRUE(ProcessAnalysisOptions(first, options));
  EXPECT_TRUE(options.split);
  EXPECT_FALSE(options.disk);
  EXPECT_TRUE(ProcessAnalysisOptions(second, options));
  EXPECT_TRUE(options.split);
  EXPECT_TRUE(options.disk);
}

TEST(AnalysisOptions, EveryByteValue) {
  for (int value = 0; value < 256; ++value) {
    const char c = static_cast<char>(value);
    const Parsed p = Parse(std::string(1, c) + "s");
    const bool known = c == 's' || c == 'd' || c == 'z';
    EXPECT_EQ(known, p.accepted) << value;
    EXPECT_EQ(c == 'd', p.options.disk) << value;
    EXPECT_EQ(known, p.options.split) << value;
    EXPECT_EQ(known ? "" : std::string(1, c) + "s", p.rest) << value;
  }
}

TEST(AnalysisOptions, LongArgumentsAreHandledInLinearTime) {
  // 100,000 characters of each kind; quadratic work would take far too long
  // for the test's time limit under the sanitizers.
  const Parsed zs = Parse(std::string(100000, 'z'));
  EXPECT_TRUE(zs.accepted);
  EXPECT_EQ("", zs.rest);

  const Parsed letters = Parse(std::string(50000, 's') + std::string(50000, 'd'));
  EXPECT_TRUE(letters.accepted);
  EXPECT_TRUE(letters.options.disk);

  std::string mixed;
  for (int i = 0; i < 20000; ++i) mixed += "zsdzd";
  mixed += "42";
  const Parsed m = Parse(mixed);
  EXPECT_TRUE(m.accepted);
  EXPECT_EQ(42u, m.options.maxPartSize);

  const Parsed bad = Parse(std::string(99999, 's') + "!");
  EXPECT_FALSE(bad.accepted);
  EXPECT_EQ("!", bad.rest);
}

}  // namespace
