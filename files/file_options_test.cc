#include "files/file_options.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

// Compares every member, so a letter that touches more than it should fails.
void ExpectRecord(const FileOptions& expected, const FileOptions& actual) {
  EXPECT_EQ(expected.numberPattern, actual.numberPattern);
  EXPECT_EQ(expected.stream, actual.stream);
  EXPECT_EQ(expected.showCurrent, actual.showCurrent);
  EXPECT_EQ(expected.showAllocated, actual.showAllocated);
  EXPECT_EQ(expected.showFree, actual.showFree);
  EXPECT_EQ(expected.showKept, actual.showKept);
  EXPECT_EQ(expected.limit, actual.limit);
  EXPECT_EQ(expected.sortByStartTick, actual.sortByStartTick);
  EXPECT_EQ(expected.sortByNumber, actual.sortByNumber);
  EXPECT_EQ(expected.reverse, actual.reverse);
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

TEST(FileOptions, DefaultsOfAFreshRecord) {
  const FileOptions options;
  EXPECT_EQ("%", options.numberPattern);
  EXPECT_EQ(99u, options.stream);
  EXPECT_FALSE(options.showCurrent || options.showAllocated || options.showFree ||
               options.showKept || options.limit || options.sortByStartTick ||
               options.sortByNumber || options.reverse);
}

// The table of resulting records, each from a fresh record.
struct RecordCase {
  const char* argument;
  FileOptions expected;
};

FileOptions Record(void (*change)(FileOptions&)) {
  FileOptions options;
  change(options);
  return options;
}

class FileOptionRecords : public ::testing::TestWithParam<RecordCase> {};

TEST_P(FileOptionRecords, ParseFromFreshRecord) {
  const Parsed parsed = Parse(GetParam().argument);
  EXPECT_TRUE(parsed.understood);
  EXPECT_EQ("", parsed.left);
  ExpectRecord(GetParam().expected, parsed.options);
}

INSTANTIATE_TEST_SUITE_P(
    Examples, FileOptionRecords,
    ::testing::Values(RecordCase{"*r", Record([](FileOptions& o) {
                                   o.sortByNumber = true;
                                   o.reverse = true;
                                 })},
                      RecordCase{"20?tr", Record([](FileOptions& o) {
                                   o.numberPattern = "20_";
                                   o.sortByStartTick = true;
                                   o.reverse = true;
                                 })},
                      RecordCase{"s0f", Record([](FileOptions& o) {
                                   o.stream = 0;
                                   o.showFree = true;
                                   o.sortByStartTick = true;
                                 })},
                      RecordCase{"s2", Record([](FileOptions& o) {
                                   o.stream = 2;
                                   o.sortByStartTick = true;
                                 })},
                      RecordCase{"c", Record([](FileOptions& o) {
                                   o.showCurrent = true;
                                   o.sortByStartTick = true;
                                 })},
                      RecordCase{"k", Record([](FileOptions& o) {
                                   o.showKept = true;
                                   o.sortByStartTick = true;
                                 })},
                      RecordCase{"a", Record([](FileOptions& o) {
                                   o.showAllocated = true;
                                   o.sortByNumber = true;
                                 })},
                      RecordCase{"tn", Record([](FileOptions& o) { o.sortByNumber = true; })},
                      RecordCase{"nt", Record([](FileOptions& o) { o.sortByStartTick = true; })},
                      RecordCase{"12", Record([](FileOptions& o) {
                                   o.numberPattern = "12";
                                   o.sortByNumber = true;
                                 })},
                      RecordCase{"???", Record([](FileOptions& o) {
                                   o.numberPattern = "___";
                                   o.sortByNumber = true;
                                 })},
                      RecordCase{"*", Record([](FileOptions& o) { o.sortByNumber = true; })},
                      RecordCase{"1*5", Record([](FileOptions& o) {
                                   o.numberPattern = "1%5";
                                   o.sortByNumber = true;
                                 })},
                      RecordCase{"s3a", Record([](FileOptions& o) {
                                   o.stream = 3;
                                   o.showAllocated = true;
                                   o.sortByNumber = true;
                                   o.sortByStartTick = true;
                                 })},
                      RecordCase{"fkal", Record([](FileOptions& o) {
                                   o.showFree = true;
                                   o.showKept = true;
                                   o.showAllocated = true;
                                   o.limit = true;
                                   o.sortByStartTick = true;
                                   o.sortByNumber = true;
                                 })},
                      RecordCase{"s1s3", Record([](FileOptions& o) {
                                   o.stream = 3;
                                   o.sortByStartTick = true;
                                 })},
                      RecordCase{"?*?*", Record([](FileOptions& o) {
                                   o.numberPattern = "_%_%";
                                   o.sortByNumber = true;
                                 })}));

TEST(FileOptions, EmptyArgumentIsUnderstoodAndChangesNothing) {
  FileOptions before;
  before.numberPattern = "7";
  before.showKept = true;
  const Parsed parsed = Parse("", before);
  EXPECT_TRUE(parsed.understood);
  ExpectRecord(before, parsed.options);
}

TEST(FileOptions, NumberPartKeepsTheSortByStartTick) {
  FileOptions before;
  before.sortByStartTick = true;
  const Parsed parsed = Parse("12", before);
  EXPECT_TRUE(parsed.options.sortByStartTick);
  EXPECT_TRUE(parsed.options.sortByNumber);
}

TEST(FileOptions, SecondArgumentStartsFromWhatTheFirstLeft) {
  const Parsed first = Parse("s0f");
  const Parsed second = Parse("n", first.options);
  EXPECT_TRUE(second.understood);
  FileOptions expected;
  expected.stream = 0;
  expected.showFree = true;
  expected.sortByNumber = true;
  ExpectRecord(expected, second.options);
}

TEST(FileOptions, LaterCurrentKeepsTheEarlierPattern) {
  const Parsed second = Parse("c", Parse("12").options);
  EXPECT_EQ("12", second.options.numberPattern);
  EXPECT_TRUE(second.options.showCurrent);
}

TEST(FileOptions, NoLetterClearsAFilterLimitOrReverse) {
  const Parsed first = Parse("s1acfklr");
  const Parsed second = Parse("ntn", first.options);
  EXPECT_EQ(1u, second.options.stream);
  EXPECT_TRUE(second.options.showAllocated && second.options.showCurrent &&
              second.options.showFree && second.options.showKept && second.options.limit &&
              second.options.reverse);
  EXPECT_FALSE(second.options.sortByStartTick);
}

// Failures: what went before stays applied, the bad character and everything
// after it stay in the argument.
struct FailureCase {
  const char* argument;
  const char* left;
  FileOptions expected;
};

class FileOptionFailures : public ::testing::TestWithParam<FailureCase> {};

TEST_P(FileOptionFailures, StopAtTheFirstCharacterNotUnderstood) {
  const Parsed parsed = Parse(GetParam().argument);
  EXPECT_FALSE(parsed.understood);
  EXPECT_EQ(GetParam().left, parsed.left);
  ExpectRecord(GetParam().expected, parsed.options);
}

INSTANTIATE_TEST_SUITE_P(
    Examples, FileOptionFailures,
    ::testing::Values(FailureCase{"cx", "x", Record([](FileOptions& o) {
                                    o.showCurrent = true;
                                    o.sortByStartTick = true;
                                  })},
                      FailureCase{"x", "x", FileOptions()}, FailureCase{"s4", "4", FileOptions()},
                      FailureCase{"s", "", FileOptions()}, FailureCase{"sa", "a", FileOptions()},
                      FailureCase{"s-1", "-1", FileOptions()},
                      FailureCase{"c5", "5", Record([](FileOptions& o) {
                                    o.showCurrent = true;
                                    o.sortByStartTick = true;
                                  })},
                      FailureCase{"r*", "*", Record([](FileOptions& o) { o.reverse = true; })},
                      FailureCase{"12 r", " r", Record([](FileOptions& o) {
                                    o.numberPattern = "12";
                                    o.sortByNumber = true;
                                  })},
                      FailureCase{"C", "C", FileOptions()}, FailureCase{"'", "'", FileOptions()},
                      FailureCase{"%", "%", FileOptions()}, FailureCase{"_", "_", FileOptions()},
                      FailureCase{"+1", "+1", FileOptions()},
                      FailureCase{"\xc3\xa9", "\xc3\xa9", FileOptions()}));

// Every byte value alone, from a fresh record.
TEST(FileOptions, EveryByteAlone) {
  for (int value = 0; value < 256; ++value) {
    const char byte = static_cast<char>(value);
    SCOPED_TRACE("byte " + std::to_string(value));
    const Parsed parsed = Parse(std::string(1, byte));
    FileOptions expected;
    bool understood = true;
    std::string left;
    if (byte != '\0' && std::strchr("0123456789", byte) != nullptr) {
      expected.numberPattern = std::string(1, byte);
      expected.sortByNumber = true;
    } else if (byte == '?') {
      expected.numberPattern = "_";
      expected.sortByNumber = true;
    } else if (byte == '*') {
      expected.sortByNumber = true;
    } else if (byte == 'a') {
      expected.showAllocated = true;
      expected.sortByNumber = true;
    } else if (byte == 'c') {
      expected.showCurrent = true;
      expected.sortByStartTick = true;
    } else if (byte == 'f') {
      expected.showFree = true;
      expected.sortByStartTick = true;
    } else if (byte == 'k') {
      expected.showKept = true;
      expected.sortByStartTick = true;
    } else if (byte == 'l') {
      expected.limit = true;
    } else if (byte == 'n') {
      expected.sortByNumber = true;
    } else if (byte == 'r') {
      expected.reverse = true;
    } else if (byte == 't') {
      expected.sortByStartTick = true;
    } else if (byte == 's') {
      understood = false;  // no stream digit follows; the "s" is consumed
    } else {
      understood = false;
      left = std::string(1, byte);
    }
    EXPECT_EQ(understood, parsed.understood);
    EXPECT_EQ(left, parsed.left);
    ExpectRecord(expected, parsed.options);
  }
}

// Every byte value after a letter: only letters go on, and a number part is
// never recognised after a letter.
TEST(FileOptions, EveryByteAfterALetter) {
  for (int value = 1; value < 256; ++value) {
    const char byte = static_cast<char>(value);
    SCOPED_TRACE("byte " + std::to_string(value));
    const Parsed parsed = Parse(std::string("r") + byte);
    const bool letter = std::strchr("acfklnrt", byte) != nullptr;
    EXPECT_EQ(letter, parsed.understood);
    EXPECT_TRUE(parsed.options.reverse);
    EXPECT_EQ("%", parsed.options.numberPattern);
    if (byte == 's') {
      EXPECT_EQ("", parsed.left);
    } else {
      EXPECT_EQ(letter ? "" : std::string(1, byte), parsed.left);
    }
  }
}

// Every byte value as the stream digit.
TEST(FileOptions, EveryByteAfterS) {
  for (int value = 1; value < 256; ++value) {
    const char byte = static_cast<char>(value);
    SCOPED_TRACE("byte " + std::to_string(value));
    const Parsed parsed = Parse(std::string("s") + byte);
    const bool digit = byte >= '0' && byte <= '3';
    EXPECT_EQ(digit, parsed.understood);
    EXPECT_EQ(digit ? "" : std::string(1, byte), parsed.left);
    EXPECT_EQ(digit ? static_cast<uint32_t>(byte - '0') : 99u, parsed.options.stream);
    EXPECT_EQ(digit, parsed.options.sortByStartTick);
  }
}

TEST(FileOptions, LongArguments) {
  const Parsed digits = Parse(std::string(100000, '7'));
  EXPECT_TRUE(digits.understood);
  EXPECT_EQ(std::string(100000, '7'), digits.options.numberPattern);

  const Parsed wildcards = Parse(std::string(50000, '?') + std::string(50000, '*'));
  EXPECT_TRUE(wildcards.understood);
  EXPECT_EQ(std::string(50000, '_') + std::string(50000, '%'), wildcards.options.numberPattern);

  const Parsed letters = Parse(std::string(100000, 'c'));
  EXPECT_TRUE(letters.understood);
  EXPECT_TRUE(letters.options.showCurrent);

  const Parsed streams = Parse(std::string(50000, 's') + "2");
  EXPECT_FALSE(streams.understood);
  EXPECT_EQ(std::string(49999, 's') + "2", streams.left);
  EXPECT_EQ(99u, streams.options.stream);

  const std::string bad = "n" + std::string(99999, 'x');
  const Parsed unknown = Parse(bad);
  EXPECT_FALSE(unknown.understood);
  EXPECT_EQ(bad.substr(1), unknown.left);
  EXPECT_TRUE(unknown.options.sortByNumber);
}

}  // namespace
