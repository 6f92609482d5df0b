// The argument language of -f.
#include "files/file_options.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <ostream>
#include <string>

namespace {

// The whole record on one line, so that a letter that touches more than it
// should fails: the number pattern, the stream, then the letter of every flag
// that is set, always in the order c a f k l t n r.
std::string Summary(const FileOptions& o) {
  std::string text = o.numberPattern + " s" + std::to_string(o.stream) + " ";
  const bool flags[] = {o.showCurrent, o.showAllocated,   o.showFree,     o.showKept,
                        o.limit,       o.sortByStartTick, o.sortByNumber, o.reverse};
  for (size_t i = 0; i < sizeof flags; ++i) {
    if (flags[i]) text += "cafkltnr"[i];
  }
  return text;
}

struct Parsed {
  bool understood;
  std::string left;
  FileOptions options;
};

Parsed Parse(const std::string& text, FileOptions options = FileOptions()) {
  std::string argument = text;
  const bool understood = ProcessFileDisplayOptions(argument, options);
  return {understood, argument, options};
}

// The record after `start` and then `argument`, each applied from what the
// one before left; a failure of `argument` says what it left unread.
std::string Outcome(const std::string& argument, const std::string& start = "") {
  const Parsed parsed = Parse(argument, Parse(start).options);
  return (parsed.understood ? "" : "stops at \"" + parsed.left + "\": ") + Summary(parsed.options);
}

TEST(FileOptions, DefaultsOfAFreshRecord) { EXPECT_EQ("% s99 ", Summary(FileOptions())); }

struct OptionCase {
  const char* argument;
  const char* outcome;
  const char* start = "";  // applied first; "" for a fresh record
};

void PrintTo(const OptionCase& c, std::ostream* out) {
  *out << '"' << c.start << "\" then \"" << c.argument << '"';
}

class FileOptionRecords : public ::testing::TestWithParam<OptionCase> {};

TEST_P(FileOptionRecords, Parse) {
  EXPECT_EQ(GetParam().outcome, Outcome(GetParam().argument, GetParam().start));
}

INSTANTIATE_TEST_SUITE_P(
    Examples, FileOptionRecords,
    ::testing::Values(
        OptionCase{"*r", "% s99 nr"}, OptionCase{"20?tr", "20_ s99 tr"},
        OptionCase{"s0f", "% s0 ft"}, OptionCase{"s2", "% s2 t"}, OptionCase{"c", "% s99 ct"},
        OptionCase{"k", "% s99 kt"}, OptionCase{"a", "% s99 an"}, OptionCase{"tn", "% s99 n"},
        OptionCase{"nt", "% s99 t"}, OptionCase{"12", "12 s99 n"}, OptionCase{"???", "___ s99 n"},
        OptionCase{"*", "% s99 n"}, OptionCase{"1*5", "1%5 s99 n"}, OptionCase{"s3a", "% s3 atn"},
        OptionCase{"fkal", "% s99 afkltn"}, OptionCase{"s1s3", "% s3 t"},
        OptionCase{"?*?*", "_%_% s99 n"},
        // An empty argument is understood and changes nothing.
        OptionCase{"", "7 s99 ktn", "7k"},
        // A number part keeps the sort by start tick.
        OptionCase{"12", "12 s99 tn", "t"},
        // A second argument starts from what the first left.
        OptionCase{"n", "% s0 fn", "s0f"},
        // A later current filter keeps the earlier pattern.
        OptionCase{"c", "12 s99 ctn", "12"},
        // No letter clears a filter, the limit or the reverse.
        OptionCase{"ntn", "% s1 cafklnr", "s1acfklr"},
        // Failures: what went before stays applied, the bad character and
        // everything after it stay in the argument.
        OptionCase{"cx", "stops at \"x\": % s99 ct"}, OptionCase{"x", "stops at \"x\": % s99 "},
        OptionCase{"s4", "stops at \"4\": % s99 "}, OptionCase{"s", "stops at \"\": % s99 "},
        OptionCase{"sa", "stops at \"a\": % s99 "}, OptionCase{"s-1", "stops at \"-1\": % s99 "},
        OptionCase{"c5", "stops at \"5\": % s99 ct"}, OptionCase{"r*", "stops at \"*\": % s99 r"},
        OptionCase{"12 r", "stops at \" r\": 12 s99 n"}, OptionCase{"C", "stops at \"C\": % s99 "},
        OptionCase{"'", "stops at \"'\": % s99 "}, OptionCase{"%", "stops at \"%\": % s99 "},
        OptionCase{"_", "stops at \"_\": % s99 "}, OptionCase{"+1", "stops at \"+1\": % s99 "},
        OptionCase{"\xc3\xa9", "stops at \"\xc3\xa9\": % s99 "}));

TEST(FileOptions, EveryByteAlone) {
  // What each byte that is understood leaves in a fresh record; "s" is
  // consumed although no stream digit follows it.
  const std::map<char, std::string> understood = {
      {'?', "_ s99 n"},  {'*', "% s99 n"}, {'a', "% s99 an"}, {'c', "% s99 ct"}, {'f', "% s99 ft"},
      {'k', "% s99 kt"}, {'l', "% s99 l"}, {'n', "% s99 n"},  {'r', "% s99 r"},  {'t', "% s99 t"}};
  for (int value = 0; value < 256; ++value) {
    const std::string byte(1, static_cast<char>(value));
    std::string expected = "stops at \"" + (value == 's' ? "" : byte) + "\": % s99 ";
    if (value >= '0' && value <= '9') expected = byte + " s99 n";
    if (understood.count(byte[0]) != 0) expected = understood.at(byte[0]);
    EXPECT_EQ(expected, Outcome(byte)) << "byte " << value;
  }
}

// Every byte value after a letter: only letters go on, and a number part is
// never recognised after a letter.
TEST(FileOptions, EveryByteAfterALetter) {
  for (int value = 1; value < 256; ++value) {
    const char byte = static_cast<char>(value);
    const Parsed parsed = Parse(std::string("r") + byte);
    const bool letter = std::strchr("acfklnrt", byte) != nullptr;
    EXPECT_EQ(letter, parsed.understood) << "byte " << value;
    EXPECT_TRUE(parsed.options.reverse) << "byte " << value;
    EXPECT_EQ("%", parsed.options.numberPattern) << "byte " << value;
    EXPECT_EQ(letter || byte == 's' ? "" : std::string(1, byte), parsed.left) << "byte " << value;
  }
}

// Every byte value as the stream digit.
TEST(FileOptions, EveryByteAfterS) {
  for (int value = 1; value < 256; ++value) {
    const std::string byte(1, static_cast<char>(value));
    const bool digit = value >= '0' && value <= '3';
    EXPECT_EQ(digit ? "% s" + byte + " t" : "stops at \"" + byte + "\": % s99 ",
              Outcome("s" + byte))
        << "byte " << value;
  }
}

TEST(FileOptions, LongArguments) {
  EXPECT_EQ(std::string(100000, '7') + " s99 n", Outcome(std::string(100000, '7')));
  EXPECT_EQ(std::string(50000, '_') + std::string(50000, '%') + " s99 n",
            Outcome(std::string(50000, '?') + std::string(50000, '*')));
  EXPECT_EQ("% s99 ct", Outcome(std::string(100000, 'c')));
  EXPECT_EQ("stops at \"" + std::string(49999, 's') + "2\": % s99 ",
            Outcome(std::string(50000, 's') + "2"));
  EXPECT_EQ("stops at \"" + std::string(99999, 'x') + "\": % s99 n",
            Outcome("n" + std::string(99999, 'x')));
}

}  // namespace
