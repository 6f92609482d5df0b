// Rows that the recorder should never have written, and awkward identifiers:
// each is listed as the table shows it, and nothing changes in the store.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "events/expected_event_table.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

namespace {

class EventBadInput : public ::testing::TestWithParam<AccessPath> {
 protected:
  RunResult Run(const std::vector<std::string>& args) { return RunDb(disk_, GetParam(), args); }
  bool Direct() const { return GetParam() == AccessPath::kDirect; }
  RecorderDisk disk_;
};

INSTANTIATE_TEST_SUITE_P(Paths, EventBadInput, BothAccessPaths(), PathName);

TEST_P(EventBadInput, NullInEveryColumnReadsAsZeroAndIsWarnedOf) {
  disk_.Exec("insert into events (reid) values ('nulls');");
  const std::string store = disk_.Dump();
  const RunResult r = Run({"-e"});
  EXPECT_EQ(
      std::string(kGibHeading) +
          "nulls                         RecordCmpl  NotChecked      0  01/01/70 00:00:00  00:00:00           0           0           0  r r   N      0                                  0    0    N  0.000                    NA  \n" +
          kNullWarning +
          "reid|splitstate|totalfiles|groupId|part|totalparts\n"
          "nulls|||||\n"
          "\n",
      r.out);
  EXPECT_EQ("", r.err);
  EXPECT_EQ(store, disk_.Dump());
}

TEST_P(EventBadInput, NullReidIsListedAsEmpty) {
  disk_.Exec(EventRow{"x"}.Insert() + "update events set reid = NULL;");
  const RunResult r = Run({"-e"});
  EXPECT_EQ(kGibHeading + DefaultRow(""), r.out);
  EXPECT_EQ("", r.err);
}

TEST_P(EventBadInput, TextInIntegerColumnsReadsAsItsLeadingNumber) {
  disk_.Exec(
      "insert into events (reid, state, splitstate, streamstate, crcode1, crcode2, starttick, "
      "starttime, exporttime, stoptick, stoptime, background, totalfiles, groupId, part, "
      "totalparts) values ('texts', 'abc', '3x', 'on', 'c', '', '12abc', 'noon', 'later', "
      "'1200', 'x', 'yes', 'many', 7, '2', 'two');");
  const std::string store = disk_.Dump();
  const RunResult r = Run({"-e", "-p"});
  const std::string row =
      "texts                         RecordCmpl  AlreadySpl      0  01/01/70 00:00:00  00:00:00           0          12        1200  r r   N      0  7                               2    0    N  0.000                    NA  \n";
  EXPECT_EQ(kGibHeading + row + kGibHeading + row, r.out);
  EXPECT_EQ("", r.err);
  EXPECT_EQ(store, disk_.Dump());
}

TEST_P(EventBadInput, IntegersWiderThan32BitsWrap) {
  EventRow wide{"wide"};
  wide.startTick = 4294967296LL + 7;
  wide.stopTick = -2;
  wide.totalFiles = -1;
  wide.startTime = 4294967296LL + 1704164645;
  wide.stopTime = 4294967296LL + 1704164745;
  disk_.Exec(wide.Insert());
  const RunResult r = Run({"-e"});
  EXPECT_EQ(
      std::string(kGibHeading) +
          "wide                          RecordCmpl  NotNeeded     100  01/02/24 03:04:05  03:05:45           0           7  4294967294  r r   N  4294967295                                  0    0    N  0.000                    NA  \n",
      r.out);
}

TEST_P(EventBadInput, AnswersThatAreNotAListShowNoAnswer) {
  const std::vector<std::string> answers = {"not json", "{\"a\":1}", "[]", "\"text\"", "[1]"};
  std::string sql;
  for (size_t i = 0; i < answers.size(); ++i) {
    EventRow row{"a" + std::to_string(i)};
    row.answers = answers[i];
    sql += row.Insert();
  }
  EventRow wide{"wide"};
  wide.answers = R"([["Why","An answer longer than twenty"]])";
  disk_.Exec(sql + wide.Insert());
  const RunResult r = Run({"-e"});
  std::string expected = kGibHeading;
  for (size_t i = 0; i < answers.size(); ++i) expected += DefaultRow("a" + std::to_string(i));
  const std::string wideRow = DefaultRow("wide");
  expected += wideRow.substr(0, wideRow.size() - 1) + "An answer longer than twenty  \n";
  EXPECT_EQ(expected, r.out);
}

TEST_P(EventBadInput, AwkwardReidsAreListedAndFound) {
  const std::vector<std::string> reids = {"it's",        "a b",         " lead",
                                          "caf\xc3\xa9", "raw\xff\xfe", std::string(1000, 'x')};
  std::string sql;
  for (const std::string& reid : reids) sql += EventRow{reid}.Insert();
  disk_.Exec(sql);
  disk_.WriteFile("connectionmgr/a b.xml", "<nothing/>");
  disk_.WriteFile("connectionmgr/a b.mtd", "");
  const std::string store = disk_.Dump();

  // "a b" is staged; widths count bytes, so the two-byte letter of "café"
  // leaves 23 blanks, not 24.
  const std::string plain = DefaultRow("a b");
  const std::string stagedRow = plain.substr(0, plain.find("  N  0.000")) + "  Y  0.000" +
                                plain.substr(plain.find("  N  0.000") + 10);
  const std::string cafeRow =
      "caf\xc3\xa9                         RecordCmpl  NotNeeded     100  01/02/24 03:04:05  "
      "03:05:45           0        1000        1200  r r   N      1                                  0    0    N  0.000                    NA  \n";
  const std::vector<std::string> rows = {DefaultRow("it's"),        stagedRow,
                                         DefaultRow(" lead"),       cafeRow,
                                         DefaultRow("raw\xff\xfe"), DefaultRow(reids[5])};

  const RunResult r = Run({"-e"});
  std::string all = kGibHeading;
  for (const std::string& row : rows) all += row;
  EXPECT_EQ(all, r.out);
  EXPECT_EQ("", r.err);

  // Each but the quoted one is found by its reid.
  for (size_t i = 1; i < reids.size(); ++i) {
    const RunResult found = Run({"-r", reids[i]});
    EXPECT_EQ(kGibHeading + rows[i] + (Direct() ? "\n" : ""), found.out) << reids[i];
    EXPECT_EQ("", found.err) << reids[i];
  }
  EXPECT_EQ(store, disk_.Dump());
}

TEST_P(EventBadInput, OverlongIdentifierIsNotFound) {
  const std::string id(1000, 'q');
  const RunResult r = Run({"-r", id});
  EXPECT_EQ("\nNOT FOUND: " + id + "\n\n", r.out);
  EXPECT_EQ("", r.err);
}

}  // namespace
