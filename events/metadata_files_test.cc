// IsStaged and EventSize on metadata files in a scratch folder.
#include "events/metadata_files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <iostream>
#include <ostream>
#include <string>
#include <vector>

#include "testing/case_tables.h"
#include "testing/scratch_dir.h"
#include "testing/stream_capture.h"

namespace {

// Whether a pair is staged, what EventSize gave, and what it wrote to
// standard error, with the scratch folder written as DIR.
struct Metadata {
  bool staged;
  int64_t bytes;
  std::string errors;
  bool operator==(const Metadata& other) const {
    return staged == other.staged && bytes == other.bytes && errors == other.errors;
  }
};

void PrintTo(const Metadata& m, std::ostream* out) {
  *out << (m.staged ? "staged, " : "not staged, ") << m.bytes << " bytes, errors \"" << m.errors
       << "\"";
}

// The size of a data file that reads as its whole stream file: one segment
// with no offsets.
constexpr int64_t kWhole = kStreamFileBytes;

// What a case writes in place of a file's content to leave the file out, or
// to make a folder of that name.
const char kAbsent[] = "<absent>";
const char kFolder[] = "<folder>";

const char kNotLoaded[] = "Failed to load XML file: DIR/r.xml";

class MetadataFilesTest : public ::testing::Test {
 protected:
  std::string At(const std::string& name) const { return folder_.Path() + "/" + name; }
  void Write(const std::string& name, const std::string& content) const {
    if (content == kFolder) {
      ASSERT_EQ(0, mkdir(At(name).c_str(), 0755));
    } else if (content != kAbsent) {
      std::ofstream out(At(name), std::ios::binary | std::ios::trunc);
      out << content;
      ASSERT_TRUE(out.good()) << name;
    }
  }
  Metadata Observe(const std::string& reid) const {
    const bool staged = IsStaged(At(reid));
    const StreamCapture capture(std::cerr);
    const int64_t bytes = EventSizeIn(folder_.Path() + "/", reid);
    std::string errors = capture.Text();
    for (size_t at; (at = errors.find(folder_.Path())) != std::string::npos;) {
      errors.replace(at, folder_.Path().size(), "DIR");
    }
    return {staged, bytes, errors};
  }
  // The pair "r": the description `xml` and a data file of `dataBytes` bytes.
  Metadata Staged(const std::string& xml, size_t dataBytes) const {
    Write("r.xml", xml);
    Write("r.mtd", std::string(dataBytes, 'm'));
    return Observe("r");
  }

 private:
  ScratchDir folder_{"metadata"};
};

std::string Repeat(const std::string& text, int times) {
  std::string repeated;
  for (int i = 0; i < times; ++i) repeated += text;
  return repeated;
}

// A description whose one stream holds `segments`.
std::string Description(const std::string& segments) {
  return "<?xml version=\"1.0\"?>\n<recording-event>\n <video>\n  <streams>\n   <stream>\n" +
         segments + "\n   </stream>\n  </streams>\n </video>\n</recording-event>\n";
}

std::string Segment(const std::string& attributes) {
  return "    <segment name=\"1.ts\" src=\"1\" " + attributes + "/>\n";
}

// The streams element of a description holding `streams`.
std::string Streams(const std::string& streams) {
  return "<recording-event><video><streams>" + streams + "</streams></video></recording-event>";
}

// The pair "r" written as the case says, observed whole; an unreadable data
// file is still measured, never read.
struct PairCase {
  const char* name;
  std::string xml;
  std::string mtd;
  int64_t bytes;
  const char* errors;
  bool staged = true;
  bool unreadableData = false;
};

void PrintTo(const PairCase& c, std::ostream* out) { *out << c.name; }

const std::string kData = std::string(40, 'm');

const PairCase kPairCases[] = {
    {"StagedWhenBothFilesExist", Description(Segment("")), kData, 40 + kWhole, ""},
    {"DescriptionAloneIsNotStagedAndHasNoSize", Description(Segment("")), kAbsent, 0,
     "Failed to stat file: DIR/r.mtd", false},
    {"DataFileAloneIsNotStagedButSized", kAbsent, kData, 40, kNotLoaded, false},
    // A folder and an unreadable file are still "there".
    {"OnlyExistenceCounts", kFolder, "", 0, kNotLoaded, true, true},
    {"MalformedDescriptionGivesTheDataFileSize",
     "<recording-event><video><streams><stream><segment name='a' src='1'/>", kData, 40, kNotLoaded},
    {"EmptyDescriptionGivesTheDataFileSize", "", kData, 40, kNotLoaded},
    {"DescriptionThatIsAFolderGivesTheDataFileSize", kFolder, kData, 40, kNotLoaded},
    {"DeeplyNestedDescriptionIsRefusedNotRecursedInto",
     Repeat("<n>", 100000) + Repeat("</n>", 100000), kData, 40, kNotLoaded},
    {"HugeDescriptionIsSummedWhole",
     Description(Repeat(Segment("start-offset=\"1\" stop-offset=\"11\""), 200000)), "", 200000 * 10,
     ""},
    // An incomplete element path gives the data file size silently.
    {"OtherRootElement", "<other/>", kData, 40, ""},
    {"NoVideo", "<recording-event><audio/></recording-event>", kData, 40, ""},
    {"NoStreams", "<recording-event><video><stream/></video></recording-event>", kData, 40, ""},
    {"NoStream", Streams("<segment name='a' src='1'/>"), kData, 40, ""},
    {"SegmentsAndStreamsAreSummed",
     Streams("<stream><a name='x' src='1'/><b name='y' src='2' stop-offset='10'/></stream>"
             "<stream><c name='z' src='3' start-offset='1' stop-offset='3'/></stream>"),
     kData, 40 + kWhole + 10 + 2, ""},
    {"SiblingsAfterTheFirstStreamCountWhateverTheirName",
     Streams("<other><s name='x' src='1' stop-offset='1000'/></other>"
             "<stream><s name='x' src='1' stop-offset='10'/></stream>"
             "<audio><s name='x' src='1' stop-offset='20'/></audio>"),
     "", 30, ""},
    {"StreamOpeningWithACommentContributesNothing",
     Streams("<stream><!-- cut --><s name='x' src='1' stop-offset='1000'/></stream>"
             "<stream>text<s name='x' src='1' stop-offset='100'/></stream>"
             "<stream>\n   <s name='x' src='1' stop-offset='10'/></stream><stream/>"),
     "", 10, ""},
    {"InvalidStartStopsTheWholeComputation",
     Streams("<stream><s name='x' src='1' stop-offset='10'/>"
             "<s name='x' src='1' start-offset='abc' stop-offset='20'/>"
             "<s name='x' src='1' stop-offset='40'/></stream>"
             "<stream><s name='x' src='1' stop-offset='80'/></stream>"),
     kData, 50, "Start offset invalid"},
    {"DataFileSizeIsTakenFromStatNotFromReading", "<none/>", kData, 40, "", true, true},
};

class MetadataPair : public MetadataFilesTest, public ::testing::WithParamInterface<PairCase> {};

TEST_P(MetadataPair, IsObservedWhole) {
  const PairCase& c = GetParam();
  Write("r.xml", c.xml);
  Write("r.mtd", c.mtd);
  ASSERT_EQ(0, c.unreadableData ? chmod(At("r.mtd").c_str(), 0) : 0);
  EXPECT_EQ((Metadata{c.staged, c.bytes, c.errors}), Observe("r"));
}

INSTANTIATE_NAMED_CASES(Pairs, MetadataPair, kPairCases);

// The paths probed, and a probe that finds every one or only data files.
std::vector<std::string> probed;
bool ProbeFindsAll(const std::string& path) {
  probed.push_back(path);
  return true;
}
bool ProbeFindsDataFilesOnly(const std::string& path) {
  return ProbeFindsAll(path) && path.size() > 4 && path.compare(path.size() - 4, 4, ".mtd") == 0;
}

TEST(IsStagedProbes, DataFileIsNotProbedWhenTheDescriptionIsMissing) {
  probed.clear();
  EXPECT_FALSE(IsStagedWith("/x/r", ProbeFindsDataFilesOnly));
  EXPECT_EQ(std::vector<std::string>{"/x/r.xml"}, probed);
}

TEST(IsStagedProbes, DescriptionThenDataFile) {
  probed.clear();
  EXPECT_TRUE(IsStagedWith("/x/r", ProbeFindsAll));
  EXPECT_EQ((std::vector<std::string>{"/x/r.xml", "/x/r.mtd"}), probed);
}

TEST_F(MetadataFilesTest, SegmentContributions) {
  struct Case {
    std::string attributes;
    int64_t bytes;
  };
  const Case cases[] = {
      {"", kWhole},
      {"start-offset=\"1000\"", kWhole - 1000},
      {"start-offset=\"1000\" stop-offset=\"5000\"", 4000},
      {"start-offset=\"5000\" stop-offset=\"1000\"", -4000},
      {"stop-offset=\"-1\"", 0},
      {"start-offset=\"1000\" stop-offset=\"-1\"", 0},
      {"start-offset=\"-1000\" stop-offset=\"-1\"", 0},
      {"start-offset=\"-1000\"", 0},
      {"start-offset=\"-1000\" stop-offset=\"5000\"", 6000},
      {"start-offset=\"0\" stop-offset=\"0\"", kWhole},
      // Out-of-range numbers wrap to 32 bits as the XML library reads them.
      {"start-offset=\"4294968296\"", kWhole - 1000},
      {"start-offset=\"0x10\" stop-offset=\" 116abc\"", 100},
      // 2147483647 - (-2147483648) wraps to -1.
      {"start-offset=\"-2147483648\" stop-offset=\"2147483647\"", -1},
      // 98566144 - 2147483647 stays in range: a start past the file's end lowers the total.
      {"start-offset=\"2147483647\"", kWhole - 2147483647},
  };
  for (const Case& c : cases) {
    EXPECT_EQ((Metadata{true, 100 + c.bytes, ""}), Staged(Description(Segment(c.attributes)), 100))
        << c.attributes;
  }
}

TEST_F(MetadataFilesTest, MessagesOfUnusableSegments) {
  struct Case {
    std::string segment;
    std::string message;
  };
  const Case cases[] = {
      {"<s src='1'/>", ":'name' attribute missing"},
      {"<s name='x' start-offset='1.5x' src='1'/>", ""},  // digits first: read as 1
      {"<s name='x' start-offset='' src='1'/>", "Start offset invalid"},
      {"<s name='x' stop-offset='ten' src='1'/>", "Stop offset invalid"},
      {"<s name='x'/>", "Source file number missing"},
      {"<s name='x' src='one'/>", "Source file number missing"},
      // The first wrong attribute in the order name, start, stop, src is reported.
      {"<s start-offset='a' stop-offset='b'/>", ":'name' attribute missing"},
      {"<s name='x' start-offset='a' stop-offset='b'/>", "Start offset invalid"},
      {"<s name='x' stop-offset='b'/>", "Stop offset invalid"},
  };
  for (const Case& c : cases) {
    const int64_t bytes = c.message.empty() ? 3 + 7 + kWhole - 1 : 3 + 7;
    EXPECT_EQ((Metadata{true, bytes, c.message}),
              Staged(Description("<s name='first' src='1' stop-offset='7'/>" + c.segment), 3))
        << c.segment;
  }
}

TEST_F(MetadataFilesTest, DataFileThatIsAFolderCountsTheFolderSize) {
  Write("r.xml", "<none/>");
  Write("r.mtd", kFolder);
  struct stat info;
  ASSERT_EQ(0, stat(At("r.mtd").c_str(), &info));
  EXPECT_EQ((Metadata{true, info.st_size, ""}), Observe("r"));
}

TEST_F(MetadataFilesTest, DataFileSizeIsCutTo32BitsAndSignExtended) {
  Write("r.xml", "<none/>");
  Write("r.mtd", "");
  ASSERT_EQ(0, truncate(At("r.mtd").c_str(), 0xC0000010LL));  // sparse
  EXPECT_EQ(-1073741808, Observe("r").bytes);
  ASSERT_EQ(0, truncate(At("r.mtd").c_str(), 0x100000020LL));
  EXPECT_EQ(32, Observe("r").bytes);
}

TEST_F(MetadataFilesTest, ReidsAreUsedAsTheyAre) {
  for (const std::string reid : {"a b", "it's", "caf\xc3\xa9", "raw\xff\xfe", "-dash"}) {
    Write(reid + ".xml", Description(Segment("stop-offset=\"5\"")));
    Write(reid + ".mtd", "mm");
    EXPECT_EQ((Metadata{true, 7, ""}), Observe(reid)) << reid;
  }
}

TEST_F(MetadataFilesTest, OverlongReidIsNotStagedAndHasNoSize) {
  const std::string reid(1000, 'r');
  EXPECT_EQ((Metadata{false, 0, "Failed to stat file: DIR/" + reid + ".mtd"}), Observe(reid));
}

TEST(MetadataDirectory, IsTheRecordersFixedFolder) {
  EXPECT_STREQ("/mnt/hd/connectionmgr/", kMetadataDirectory);
}

}  // namespace
