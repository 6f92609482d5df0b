#include "files/file_condition.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct ConditionCase {
  const char* argument;
  const char* condition;
};

class FileConditionTable : public ::testing::TestWithParam<ConditionCase> {};

TEST_P(FileConditionTable, FromFreshRecord) {
  FileOptions options;
  std::string argument = GetParam().argument;
  ProcessFileDisplayOptions(argument, options);
  EXPECT_EQ(GetParam().condition, BuildFileCondition(options));
}

INSTANTIATE_TEST_SUITE_P(
    Examples, FileConditionTable,
    ::testing::Values(
        ConditionCase{"*r", " number like '%' order by number desc"},
        ConditionCase{"20?tr", " number like '20_' order by starttick desc"},
        ConditionCase{"s0f",
                      " number like '%' and stream=0 and ( state=0 or state=2) order by "
                      "starttick asc"},
        ConditionCase{"s2", " number like '%' and stream=2 order by starttick asc"},
        ConditionCase{"c", " next=0 and previous!=0 order by starttick asc"},
        ConditionCase{"k", " number like '%' and ( state=3) order by starttick asc"},
        ConditionCase{"a", " number like '%' and ( state=1) order by number asc"},
        ConditionCase{"fkal",
                      " number like '%' and ( state=0 or state=2 or state=3 or state=1) order by "
                      "starttick asc limit 20"},
        // The state tests keep their order whatever the order of the letters.
        ConditionCase{"akf",
                      " number like '%' and ( state=0 or state=2 or state=3 or state=1) order by "
                      "starttick asc"},
        ConditionCase{"ka", " number like '%' and ( state=3 or state=1) order by starttick asc"},
        ConditionCase{"af",
                      " number like '%' and ( state=0 or state=2 or state=1) order by "
                      "starttick asc"},
        ConditionCase{"", " number like '%' order by number asc"},
        ConditionCase{"x", " number like '%' order by number asc"},
        ConditionCase{"???", " number like '___' order by number asc"},
        ConditionCase{"1*5l", " number like '1%5' order by number asc limit 20"},
        ConditionCase{"12c", " next=0 and previous!=0 order by starttick asc"},
        ConditionCase{"s3a", " number like '%' and stream=3 and ( state=1) order by starttick asc"},
        ConditionCase{"s1cfr",
                      " next=0 and previous!=0 and stream=1 and ( state=0 or state=2) order by "
                      "starttick desc"}));

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
  FileOptions kept;
  kept.showKept = true;
  EXPECT_EQ(" number like '%' and ( state=3) order by number asc", BuildFileCondition(kept));
  FileOptions allocated;
  allocated.showAllocated = true;
  EXPECT_EQ(" number like '%' and ( state=1) order by number asc", BuildFileCondition(allocated));
}

TEST(FileCondition, SecondArgumentCarriesTheFirst) {
  FileOptions options;
  std::string first = "s0f";
  ProcessFileDisplayOptions(first, options);
  std::string second = "n";
  ProcessFileDisplayOptions(second, options);
  EXPECT_EQ(" number like '%' and stream=0 and ( state=0 or state=2) order by number asc",
            BuildFileCondition(options));
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
