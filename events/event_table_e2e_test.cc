// The event table end to end: heading, every column of a row, sizes from the
// metadata files and hours till re-export, on both access paths.
#include <sys/stat.h>

#include <cstdio>
#include <ctime>
#include <string>

#include "events/event_listing_fixture.h"
#include "testing/staged_metadata.h"

namespace {

class EventTable : public EventListing {};
INSTANTIATE_TEST_SUITE_P(Paths, EventTable, BothAccessPaths(), PathName);

// Writes the metadata pair of `reid` as given, whether it makes sense or not.
void WritePair(const RecorderDisk& disk, const std::string& reid, const std::string& xml,
               const std::string& mtd) {
  disk.WriteFile("connectionmgr/" + reid + ".xml", xml);
  disk.WriteFile("connectionmgr/" + reid + ".mtd", mtd);
}

std::string Repeat(const std::string& text, int times) {
  std::string repeated;
  for (int i = 0; i < times; ++i) repeated += text;
  return repeated;
}

std::string WholeFiles(int count) {
  std::string segments;
  for (int i = 0; i < count; ++i) {
    segments +=
        "    <segment name=\"" + std::to_string(i) + ".ts\" src=\"" + std::to_string(i) + "\"/>\n";
  }
  return segments;
}

// Staged events of 1.5 GiB, of more than 10 GiB, of the data file alone, one
// whose data file is missing, and one whose segments sum below zero.
const std::string kSizeEvents =
    Event("gib15") + Event("big") + Event("mtdonly") + Event("xmlonly") + Event("negative");
void StageSizes(const RecorderDisk& disk) {
  // 16 whole stream files and 32 MiB: 1610612736 bytes.
  StageMetadata(disk, "gib15",
                WholeFiles(16) + "<segment name=\"x\" src=\"1\" stop-offset=\"33554432\"/>", 0);
  StageMetadata(disk, "big", WholeFiles(120), 0);
  WritePair(disk, "mtdonly", "<nothing/>", std::string(1000, 'm'));
  disk.WriteFile("connectionmgr/xmlonly.xml", "<nothing/>");
  StageMetadata(disk, "negative",
                "<segment name=\"x\" src=\"1\" start-offset=\"5000\" stop-offset=\"1000\"/>", 0);
}

const std::string kUnusableEvents = Event("malformed") + Event("noname") + Event("notint") +
                                    Event("empty") + Event("deep") + Event("locked") +
                                    Event("wrapped") + Event("huge") + Event("comment");
void StageUnusable(const RecorderDisk& disk) {
  WritePair(disk, "malformed", "<recording-event><video><streams><stream>", std::string(10, 'm'));
  StageMetadata(disk, "noname", WholeFiles(1) + "<segment src=\"2\"/>" + WholeFiles(1), 0);
  StageMetadata(
      disk, "notint",
      WholeFiles(1) + "<segment name=\"x\" src=\"2\" start-offset=\"abc\"/>" + WholeFiles(1), 0);
  WritePair(disk, "empty", "", "");
  WritePair(disk, "deep", Repeat("<recording-event>", 100000), std::string(7, 'm'));
  StageMetadata(disk, "locked", "", 2048);
  ASSERT_EQ(0, chmod((disk.Path() + "/connectionmgr/locked.mtd").c_str(), 0));
  // Offsets out of the 32-bit range wrap: 4294968296 reads as 1000.
  StageMetadata(disk, "wrapped", "<segment name=\"x\" src=\"1\" stop-offset=\"4294968296\"/>", 0);
  StageMetadata(
      disk, "huge",
      Repeat("<segment name=\"x\" src=\"1\" start-offset=\"5\" stop-offset=\"15\"/>\n", 200000), 0);
  StageMetadata(disk, "comment", "<!-- cut -->" + WholeFiles(3), 5);
}

const ListingCase kTables[] = {
    {"EveryColumnOfARow",
     Event("plain") +
         // Stop before start, codes c and k, BG set.
         Event("backwards",
               "state = 1, splitstate = 3, stoptime = 1704164600, crcode1 = 1, crcode2 = 3, "
               "background = 1") +
         // Values outside every table, wrapped ticks, wide counts.
         Event("odd",
               "state = 9, splitstate = 7, crcode1 = 7, crcode2 = 2, starttick = -1, "
               "stoptick = 4294967301, exporttime = 1704168245, totalfiles = 123456, part = 1000, "
               "totalparts = 7") +
         // Only the first entry's answer is shown.
         Event("answers",
               "state = 2, splitstate = 2, answers = '[[\"Q1\",\"A1\"],[\"Q2\",\"A2\"]]'") +
         Event(std::string(40, 'L'),
               "state = 3, splitstate = 4, groupId = '" + std::string(30, 'G') + "'") +
         // A negative export time means never exported.
         Event("exportneg", "splitstate = 0, exporttime = -5"),
     "-e",
     std::string(kGibHeading) +
         "plain                         RecordCmpl  NotNeeded     100  01/02/24 03:04:05  03:05:45           0        1000        1200  r r   N      1                                  0    0    N  0.000                    NA  \n"
         "backwards                     Transfered  AlreadySpl     -1  01/02/24 03:04:05  03:03:20           0        1000        1200  c k   Y      1                                  0    0    N  0.000                    NA  \n"
         "odd                              Invalid     Invalid    100  01/02/24 03:04:05  03:05:45    04:04:05  4294967295           5  ? a   N  123456                                1000    7    N  0.000                    NA  \n"
         "answers                       Recording   SplitPend     100  01/02/24 03:04:05  03:05:45           0        1000        1200  r r   N      1                                  0    0    N  0.000                    NA                    A1  \n"
         "LLLLLLLLLLLLLLLLLLLLLLLLLLLLLLLLLLLLLLLL  InPost      ExportOnly    100  01/02/24 03:04:05  03:05:45           0        1000        1200  r r   N      1  GGGGGGGGGGGGGGGGGGGGGGGGGGGGGG    0    0    N  0.000                    NA  \n"
         "exportneg                     RecordCmpl  NotChecked    100  01/02/24 03:04:05  03:05:45           0        1000        1200  r r   N      1                                  0    0    N  0.000                    NA  \n"},
    {"SizesInGibibytes", kSizeEvents, "-e",
     kGibHeading + StagedRow("gib15", "1.500") + StagedRow("big", "11.016") +
         StagedRow("mtdonly", "0.000") + DefaultRow("xmlonly") +
         StagedRow("negative", "17179869184.000"),
     "", StageSizes},
    {"SizesInBytes", kSizeEvents, "-E",
     kBytesHeading + StagedRow("gib15", "1610612736") + StagedRow("big", "11827937280") +
         StagedRow("mtdonly", "1000") + DefaultRow("xmlonly", true) +
         StagedRow("negative", "18446744073709547520"),
     "", StageSizes},
    {"DataFileThatIsAFolderIsStagedWithTheFolderSize", Event("mtddir"), "-e",
     kGibHeading + StagedRow("mtddir", "0.000"), "",
     [](const RecorderDisk& disk) {
       disk.WriteFile("connectionmgr/mtddir.xml", "<nothing/>");
       ASSERT_EQ(0, mkdir((disk.Path() + "/connectionmgr/mtddir.mtd").c_str(), 0755));
     }},
    // Unusable metadata still gives a row, and the messages.
    {"UnusableMetadataStillGivesARowAndTheMessages", kUnusableEvents, "-E",
     kBytesHeading + StagedRow("malformed", "10") + StagedRow("noname", "98566144") +
         StagedRow("notint", "98566144") + StagedRow("empty", "0") + StagedRow("deep", "7") +
         StagedRow("locked", "2048") + StagedRow("wrapped", "1000") + StagedRow("huge", "2000000") +
         StagedRow("comment", "5"),
     "Failed to load XML file: /mnt/hd/connectionmgr/malformed.xml"
     ":'name' attribute missing"
     "Start offset invalid"
     "Failed to load XML file: /mnt/hd/connectionmgr/empty.xml"
     "Failed to load XML file: /mnt/hd/connectionmgr/deep.xml",
     StageUnusable},
};

class Table : public ListingCases {};
TEST_P(Table, IsPrintedWhole) { ExpectListing(); }
INSTANTIATE_TEST_SUITE_P(Cases, Table, OnBothPaths(kTables), CaseOnPathName<ListingCase>);

TEST_P(EventTable, AComplaintAboutMetadataComesAfterTheColumnsBeforeTheSize) {
  // Standard error is tied to standard output: with both on one file, a
  // complaint about a description file lands inside its row, after the
  // staged column, as the row's columns are written one after another.
  disk_.Exec(Event("malformed") + Event("plain"));
  WritePair(disk_, "malformed", "<recording-event>", std::string(10, 'm'));
  SandboxOptions options;
  options.streamMgr = !Direct();
  EXPECT_RUN(
      RunInSandbox(disk_, {"sh", "-c", "db -E 2>&1"}, options),
      std::string(kBytesHeading) +
          "malformed                     RecordCmpl  NotNeeded     100  01/02/24 03:04:05  03:05:45           0        1000        1200  r r   N      1                                  0    0    Y  Failed to load XML file: /mnt/hd/connectionmgr/malformed.xml         10                    NA  \n" +
          DefaultRow("plain", true),
      "", 0);
}

// Row of an unstaged event exported at `exportText` with `hours` in the hours column.
std::string HoursRow(const std::string& reid, const std::string& exportText,
                     const std::string& hours) {
  return reid + std::string(28 - reid.size(), ' ') +
         "  RecordCmpl  NotNeeded     100  01/02/24 03:04:05  03:05:45  " +
         std::string(10 - exportText.size(), ' ') + exportText +
         "        1000        1200  r r   N      1                                  0    0    N  "
         "0.000  " +
         std::string(20 - hours.size(), ' ') + hours + "  \n";
}

std::string TimeOfDay(long long seconds) {
  const time_t time = static_cast<time_t>(seconds);
  struct tm utc;
  gmtime_r(&time, &utc);
  char text[20];
  strftime(text, sizeof text, "%H:%M:%S", &utc);
  return text;
}

// The log with its line numbers blanked out: "FILE:LINE FUNCTION: TEXT"
// names the reporting statement, whose line is the source's business.
std::string WithoutLineNumbers(const std::string& log) {
  const auto digitAfter = [&log](size_t at) {
    return at + 1 < log.size() && log[at + 1] >= '0' && log[at + 1] <= '9';
  };
  std::string text;
  for (size_t at = 0; at < log.size(); ++at) {
    text += log[at];
    if (log[at] != ':' || !digitAfter(at)) continue;
    text += 'N';
    while (digitAfter(at)) ++at;
  }
  return text;
}

const char kLogLine[] =
    "db: event_table.cc:N DisplayEvent: Error getting video recording settings\n";

class ReExportHours : public EventTable {
 protected:
  // Events exported 10 and 30 hours ago, and one never exported.
  void SetUp() override {
    const long long now = static_cast<long long>(time(nullptr));
    disk_.Exec(Event("ten", "exporttime = " + std::to_string(now - 10 * 3600)) +
               Event("thirty", "exporttime = " + std::to_string(now - 30 * 3600)) + Event("never"));
    tenText_ = TimeOfDay(now - 10 * 3600);
    thirtyText_ = TimeOfDay(now - 30 * 3600);
  }
  std::string Rows(const std::string& ten, const std::string& thirty, const std::string& never) {
    return std::string(kGibHeading) + HoursRow("ten", tenText_, ten) +
           HoursRow("thirty", thirtyText_, thirty) + HoursRow("never", "0", never);
  }
  static SandboxOptions Config(const std::string& args, const std::string& level = "2") {
    SandboxOptions options;
    options.configMp = true;
    options.configMpArgs = args;
    options.environment = {"RECORDER_LOG=/mnt/hd/log.txt", "RECORDER_LOG_LEVEL=" + level};
    return options;
  }
  // Lists the events with `options`: the three hours in the rows, and the
  // log with one line for each row when `logged`, or no log at all.
  void ExpectHours(const SandboxOptions& options, const char* ten, const char* thirty,
                   const char* never, bool logged) {
    EXPECT_RUN(Run({"-e"}, options), Rows(ten, thirty, never), "", 0);
    if (logged) {
      EXPECT_EQ(std::string(kLogLine) + kLogLine + kLogLine,
                WithoutLineNumbers(disk_.ReadFile("log.txt")));
    } else {
      EXPECT_FALSE(disk_.Exists("log.txt"));
    }
    std::remove((disk_.Path() + "/log.txt").c_str());
  }
  std::string tenText_;
  std::string thirtyText_;
};

INSTANTIATE_TEST_SUITE_P(Paths, ReExportHours, BothAccessPaths(), PathName);

TEST_P(ReExportHours, IntervalOfZeroIsDisabledForEveryEvent) {
  ExpectHours(Config("--reexport-hours 0"), "Disabled", "Disabled", "Disabled", false);
}

TEST_P(ReExportHours, IntervalOf24CountsDownFromTheExport) {
  // 24 - 10 = 14 hours left; 30 hours ago and never exported are overdue.
  ExpectHours(Config("--reexport-hours 24"), "14.00", "NA", "NA", false);
}

TEST_P(ReExportHours, LongIntervalDoesNotOverflow) {
  // 4000000 hours are more seconds than 32 bits hold, and more hours than
  // have passed since the epoch: even the event never exported has some left.
  const RunResult r = Run({"-e"}, Config("--reexport-hours 4000000"));
  const double neverLeft = 4000000.0 - static_cast<double>(time(nullptr)) / 3600;
  ASSERT_GT(r.out.size(), 23u);
  // The last row's hours depend on the clock: read, then compared whole.
  const std::string hours = r.out.substr(r.out.size() - 23, 20);
  EXPECT_NEAR(neverLeft, std::stod(hours), 0.02) << hours;
  EXPECT_RUN(r, Rows("3999990.00", "3999970.00", hours.substr(hours.find_first_not_of(' '))), "",
             0);
}

TEST_P(ReExportHours, FailingServiceShowsNaAndLogsEveryRow) {
  ExpectHours(Config("--fail"), "NA", "NA", "NA", true);
}

TEST_P(ReExportHours, MissingServiceShowsNaAndLogs) {
  SandboxOptions options = Config("");
  options.configMp = false;
  ExpectHours(options, "NA", "NA", "NA", true);
}

TEST_P(ReExportHours, MessageIsLoggedOnlyWhenTheLevelHasBitTwo) {
  for (const char* level : {"0", "1", "4", "5"}) {
    SCOPED_TRACE(level);
    ExpectHours(Config("--fail", level), "NA", "NA", "NA", false);
  }
  for (const char* level : {"3", "6", "255"}) {
    SCOPED_TRACE(level);
    EXPECT_RUN(Run({"-r", "ten"}, Config("--fail", level)),
               kGibHeading + HoursRow("ten", tenText_, "NA") + Gap(), "", 0);
    EXPECT_EQ(kLogLine, WithoutLineNumbers(disk_.ReadFile("log.txt")));
    std::remove((disk_.Path() + "/log.txt").c_str());
  }
}

TEST_P(EventTable, UnreadableMetadataForAnUnprivilegedUser) {
  disk_.Exec(Event("xmlhidden") + Event("mtdhidden"));
  StageMetadata(disk_, "xmlhidden", WholeFiles(1), 30);
  StageMetadata(disk_, "mtdhidden", WholeFiles(1), 40);
  ASSERT_EQ(0, chmod((disk_.Path() + "/connectionmgr/xmlhidden.xml").c_str(), 0));
  ASSERT_EQ(0, chmod((disk_.Path() + "/connectionmgr/mtdhidden.mtd").c_str(), 0));
  SandboxOptions options;
  options.unprivileged = true;
  // The description cannot be read; the data file is only measured, never read.
  EXPECT_RUN(Run({"-E"}, options),
             kBytesHeading + StagedRow("xmlhidden", "30") + StagedRow("mtdhidden", "98566184"),
             "Failed to load XML file: /mnt/hd/connectionmgr/xmlhidden.xml", 0);
}

}  // namespace
