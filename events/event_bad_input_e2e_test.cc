// Rows that the recorder should never have written, and awkward identifiers:
// each is listed as the table shows it, and nothing changes in the store.
#include <string>
#include <vector>

#include "events/event_listing_fixture.h"

namespace {

const char kTextsRow[] =
    "texts                         RecordCmpl  AlreadySpl      0  01/01/70 00:00:00  00:00:00           0          12        1200  r r   N      0  7                               2    0    N  0.000                    NA  \n";

const ListingCase kBadRows[] = {
    {"NullInEveryColumnReadsAsZeroAndIsWarnedOf", "insert into events (reid) values ('nulls');",
     "-e",
     std::string(kGibHeading) +
         "nulls                         RecordCmpl  NotChecked      0  01/01/70 00:00:00  00:00:00           0           0           0  r r   N      0                                  0    0    N  0.000                    NA  \n" +
         kNullWarning +
         "reid|splitstate|totalfiles|groupId|part|totalparts\n"
         "nulls|||||\n"
         "\n"},
    {"NullReidIsListedAsEmpty", Event("x", "reid = NULL"), "-e", kGibHeading + DefaultRow("")},
    {"TextInIntegerColumnsReadsAsItsLeadingNumber",
     "insert into events (reid, state, splitstate, streamstate, crcode1, crcode2, starttick, "
     "starttime, exporttime, stoptick, stoptime, background, totalfiles, groupId, part, "
     "totalparts) values ('texts', 'abc', '3x', 'on', 'c', '', '12abc', 'noon', 'later', "
     "'1200', 'x', 'yes', 'many', 7, '2', 'two');",
     "-e -p", std::string(kGibHeading) + kTextsRow + kGibHeading + kTextsRow},
    {"IntegersWiderThan32BitsWrap",
     Event("wide",
           "starttick = 4294967303, stoptick = -2, totalfiles = -1, "
           "starttime = 4294967296 + 1704164645, stoptime = 4294967296 + 1704164745"),
     "-e",
     std::string(kGibHeading) +
         "wide                          RecordCmpl  NotNeeded     100  01/02/24 03:04:05  03:05:45           0           7  4294967294  r r   N  4294967295                                  0    0    N  0.000                    NA  \n"},
    {"AnswersThatAreNotAListShowNoAnswer",
     Event("a0", "answers = 'not json'") + Event("a1", R"(answers = '{"a":1}')") +
         Event("a2", "answers = '[]'") + Event("a3", R"(answers = '"text"')") +
         Event("a4", "answers = '[1]'") +
         Event("wide", R"(answers = '[["Why","An answer longer than twenty"]]')"),
     "-e",
     kGibHeading + DefaultRow("a0") + DefaultRow("a1") + DefaultRow("a2") + DefaultRow("a3") +
         DefaultRow("a4") +
         "wide                          RecordCmpl  NotNeeded     100  01/02/24 03:04:05  03:05:45           0        1000        1200  r r   N      1                                  0    0    N  0.000                    NA  An answer longer than twenty  \n"},
    {"OverlongIdentifierIsNotFound", "", "-r " + std::string(1000, 'q'),
     "\nNOT FOUND: " + std::string(1000, 'q') + "\n\n"},
};

class BadRows : public ListingCases {};
TEST_P(BadRows, AreListedAsTheTableShowsThem) { ExpectListing(); }
INSTANTIATE_TEST_SUITE_P(Cases, BadRows, OnBothPaths(kBadRows), CaseOnPathName<ListingCase>);

class EventBadInput : public EventListing {};
INSTANTIATE_TEST_SUITE_P(Paths, EventBadInput, BothAccessPaths(), PathName);

TEST_P(EventBadInput, AwkwardReidsAreListedAndFound) {
  const std::vector<std::string> reids = {"it's",        "a b",         " lead",
                                          "caf\xc3\xa9", "raw\xff\xfe", std::string(1000, 'x')};
  std::string sql;
  for (const std::string& reid : reids) sql += Event(reid);
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

  std::string all = kGibHeading;
  for (const std::string& row : rows) all += row;
  EXPECT_RUN(Run({"-e"}), all, "", 0);

  // Each but the quoted one is found by its reid.
  for (size_t i = 1; i < reids.size(); ++i) {
    EXPECT_RUN(Run({"-r", reids[i]}), kGibHeading + rows[i] + Gap(), "", 0) << reids[i];
  }
  EXPECT_EQ(store, disk_.Dump());
}

}  // namespace
