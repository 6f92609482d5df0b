// The SQL condition of the files listing, from the record that -f fills.
#include "files/file_condition.h"

#include <gtest/gtest.h>

#include <string>

#include "files/file_options.h"

namespace {

// The record after `argument`, applied to `options`.
FileOptions Parsed(std::string argument, FileOptions options = FileOptions()) {
  ProcessFileDisplayOptions(argument, options);
  return options;
}

// The SQL condition the listing asks for, from the record.
struct ConditionCase {
  const char* argument;
  const char* condition;
};

class FileConditionTable : public ::testing::TestWithParam<ConditionCase> {};

TEST_P(FileConditionTable, FromFreshRecord) {
  EXPECT_EQ(GetParam().condition, BuildFileCondition(Parsed(GetParam().argument)));
}

const ConditionCase kConditions[] = {
    {"*r", " number like '%' order by number desc"},
    {"20?tr", " number like '20_' order by starttick desc"},
    {"s0f", " number like '%' and stream=0 and ( state=0 or state=2) order by starttick asc"},
    {"s2", " number like '%' and stream=2 order by starttick asc"},
    {"c", " next=0 and previous!=0 order by starttick asc"},
    {"k", " number like '%' and ( state=3) order by starttick asc"},
    {"a", " number like '%' and ( state=1) order by number asc"},
    {"fkal",
     " number like '%' and ( state=0 or state=2 or state=3 or state=1) order by starttick asc limit 20"},
    // The state tests keep their order whatever the order of the letters.
    {"akf",
     " number like '%' and ( state=0 or state=2 or state=3 or state=1) order by starttick asc"},
    {"ka", " number like '%' and ( state=3 or state=1) order by starttick asc"},
    {"af", " number like '%' and ( state=0 or state=2 or state=1) order by starttick asc"},
    {"", " number like '%' order by number asc"},
    {"x", " number like '%' order by number asc"},
    {"???", " number like '___' order by number asc"},
    {"1*5l", " number like '1%5' order by number asc limit 20"},
    {"12c", " next=0 and previous!=0 order by starttick asc"},
    {"s3a", " number like '%' and stream=3 and ( state=1) order by starttick asc"},
    {"s1cfr",
     " next=0 and previous!=0 and stream=1 and ( state=0 or state=2) order by starttick desc"},
};

INSTANTIATE_TEST_SUITE_P(Examples, FileConditionTable, ::testing::ValuesIn(kConditions));

// The records below have no sort letter or a stream outside 0 to 3, which no
// argument makes.
TEST(FileCondition, EmptyPatternMatchesEveryNumber) {
  FileOptions options;
  options.numberPattern = "";
  EXPECT_EQ(" number like '%' order by number asc", BuildFileCondition(options));
}

TEST(FileCondition, CurrentIgnoresThePattern) {
  FileOptions options;
  options.numberPattern = "12";
  options.showCurrent = true;
  EXPECT_EQ(" next=0 and previous!=0 order by number asc", BuildFileCondition(options));
}

TEST(FileCondition, StreamIsWrittenAsUnsigned) {
  FileOptions options;
  options.stream = 4294967295u;
  EXPECT_EQ(" number like '%' and stream=4294967295 order by number asc",
            BuildFileCondition(options));
  options.stream = 98;
  EXPECT_EQ(" number like '%' and stream=98 order by number asc", BuildFileCondition(options));
}

TEST(FileCondition, KeptAloneAndAllocatedAlone) {
  FileOptions options;
  options.showKept = true;
  EXPECT_EQ(" number like '%' and ( state=3) order by number asc", BuildFileCondition(options));
  options.showKept = false;
  options.showAllocated = true;
  EXPECT_EQ(" number like '%' and ( state=1) order by number asc", BuildFileCondition(options));
}

TEST(FileCondition, SecondArgumentCarriesTheFirst) {
  EXPECT_EQ(" number like '%' and stream=0 and ( state=0 or state=2) order by number asc",
            BuildFileCondition(Parsed("n", Parsed("s0f"))));
}

TEST(FileCondition, ReadsTheRecordWithoutChangingIt) {
  FileOptions options;
  options.numberPattern = "";
  options.showFree = true;
  const std::string first = BuildFileCondition(options);
  EXPECT_EQ("", options.numberPattern);
  EXPECT_EQ(first, BuildFileCondition(options));
}

}  // namespace
