// IsStaged and EventSize on metadata files in a temporary folder.
#include "events/metadata_files.h"
#include "testing/stream_capture.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

namespace {

// Collects what the code under test writes to standard error.
class ErrorCapture : public StreamCapture {
 public:
  ErrorCapture() : StreamCapture(std::cerr) {}
};

class MetadataFilesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/metadata.XXXXXX";
    ASSERT_NE(nullptr, mkdtemp(pattern));
    directory_ = std::string(pattern) + "/";
  }
  void TearDown() override {
    std::system(("chmod -R u+rwX '" + directory_ + "'; rm -rf '" + directory_ + "'").c_str());
  }

  void Write(const std::string& name, const std::string& content) const {
    std::ofstream out(directory_ + name, std::ios::binary | std::ios::trunc);
    out << content;
    ASSERT_TRUE(out.good()) << name;
  }
  // A staged pair: the description and a data file of `dataBytes` bytes.
  void Stage(const std::string& reid, const std::string& xml, size_t dataBytes = 100) const {
    Write(reid + ".xml", xml);
    Write(reid + ".mtd", std::string(dataBytes, 'm'));
  }
  // Runs EventSize on this folder and keeps what it wrote to standard error.
  int64_t Size(const std::string& reid) {
    ErrorCapture capture;
    const int64_t size = EventSizeIn(directory_, reid);
    errors_ = capture.Text();
    return size;
  }

  std::string directory_;
  std::string errors_;
};

// A description whose one stream holds `segments`.
std::string Description(const std::string& segments) {
  return "<?xml version=\"1.0\"?>\n<recording-event>\n <video>\n  <streams>\n   <stream>\n" +
         segments + "\n   </stream>\n  </streams>\n </video>\n</recording-event>\n";
}

std::string Segment(const std::string& attributes) {
  return "    <segment name=\"1.ts\" src=\"1\" " + attributes + "/>\n";
}

constexpr int64_t kWhole = 98566144;

TEST_F(MetadataFilesTest, StagedWhenBothFilesExist) {
  Stage("r", Description(Segment("")));
  EXPECT_TRUE(IsStaged(directory_ + "r"));
}

TEST_F(MetadataFilesTest, NotStagedWithTheDescriptionAlone) {
  Write("r.xml", Description(Segment("")));
  EXPECT_FALSE(IsStaged(directory_ + "r"));
}

TEST_F(MetadataFilesTest, NotStagedWithTheDataFileAlone) {
  Write("r.mtd", "data");
  EXPECT_FALSE(IsStaged(directory_ + "r"));
}

std::vector<std::string> probed;
bool RecordProbe(const std::string& path) {
  probed.push_back(path);
  return path.size() > 4 && path.compare(path.size() - 4, 4, ".mtd") == 0;
}

TEST(IsStagedProbes, DataFileIsNotProbedWhenTheDescriptionIsMissing) {
  probed.clear();
  EXPECT_FALSE(IsStagedWith("/x/r", RecordProbe));
  EXPECT_EQ(std::vector<std::string>{"/x/r.xml"}, probed);
}

bool AlwaysThere(const std::string& path) {
  probed.push_back(path);
  return true;
}

TEST(IsStagedProbes, DescriptionThenDataFile) {
  probed.clear();
  EXPECT_TRUE(IsStagedWith("/x/r", AlwaysThere));
  EXPECT_EQ((std::vector<std::string>{"/x/r.xml", "/x/r.mtd"}), probed);
}

TEST_F(MetadataFilesTest, OnlyExistenceCounts) {
  // A folder and an unreadable file are still "there".
  ASSERT_EQ(0, mkdir((directory_ + "r.xml").c_str(), 0755));
  Write("r.mtd", "");
  ASSERT_EQ(0, chmod((directory_ + "r.mtd").c_str(), 0));
  EXPECT_TRUE(IsStaged(directory_ + "r"));
}

TEST_F(MetadataFilesTest, MissingDataFileGivesZeroEvenWithAValidDescription) {
  Write("r.xml", Description(Segment("")));
  EXPECT_EQ(0, Size("r"));
  EXPECT_EQ("Failed to stat file: " + directory_ + "r.mtd", errors_);
}

TEST_F(MetadataFilesTest, MissingDescriptionGivesTheDataFileSize) {
  Write("r.mtd", std::string(321, 'm'));
  EXPECT_EQ(321, Size("r"));
  EXPECT_EQ("Failed to load XML file: " + directory_ + "r.xml", errors_);
}

TEST_F(MetadataFilesTest, MalformedDescriptionGivesTheDataFileSize) {
  Stage("r", "<recording-event><video><streams><stream><segment name='a' src='1'/>", 77);
  EXPECT_EQ(77, Size("r"));
  EXPECT_EQ("Failed to load XML file: " + directory_ + "r.xml", errors_);
}

TEST_F(MetadataFilesTest, EmptyDescriptionGivesTheDataFileSize) {
  Stage("r", "", 12);
  EXPECT_EQ(12, Size("r"));
  EXPECT_EQ("Failed to load XML file: " + directory_ + "r.xml", errors_);
}

TEST_F(MetadataFilesTest, DescriptionThatIsAFolderGivesTheDataFileSize) {
  ASSERT_EQ(0, mkdir((directory_ + "r.xml").c_str(), 0755));
  Write("r.mtd", std::string(5, 'm'));
  EXPECT_EQ(5, Size("r"));
  EXPECT_EQ("Failed to load XML file: " + directory_ + "r.xml", errors_);
}

TEST_F(MetadataFilesTest, DeeplyNestedDescriptionIsRefusedNotRecursedInto) {
  std::string xml;
  for (int i = 0; i < 100000; ++i) xml += "<n>";
  for (int i = 0; i < 100000; ++i) xml += "</n>";
  Stage("r", xml, 9);
  EXPECT_EQ(9, Size("r"));
  EXPECT_EQ("Failed to load XML file: " + directory_ + "r.xml", errors_);
}

TEST_F(MetadataFilesTest, HugeDescriptionIsSummedWhole) {
  std::string segments;
  for (int i = 0; i < 200000; ++i) segments += Segment("start-offset=\"1\" stop-offset=\"11\"");
  Stage("r", Description(segments), 0);
  EXPECT_EQ(200000 * 10, Size("r"));
  EXPECT_EQ("", errors_);
}

TEST_F(MetadataFilesTest, IncompleteElementPathGivesTheDataFileSizeSilently) {
  const std::vector<std::string> descriptions = {
      "<other/>",
      "<recording-event><audio/></recording-event>",
      "<recording-event><video><stream/></video></recording-event>",
      "<recording-event><video><streams><segment name='a' src='1'/></streams></video>"
      "</recording-event>",
  };
  for (const std::string& xml : descriptions) {
    Stage("r", xml, 40);
    EXPECT_EQ(40, Size("r")) << xml;
    EXPECT_EQ("", errors_) << xml;
  }
}

TEST_F(MetadataFilesTest, SegmentContributions) {
  struct Case {
    std::string attributes;
    int64_t bytes;
  };
  const std::vector<Case> cases = {
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
    Stage("r", Description(Segment(c.attributes)), 100);
    EXPECT_EQ(100 + c.bytes, Size("r")) << c.attributes;
    EXPECT_EQ("", errors_) << c.attributes;
  }
}

TEST_F(MetadataFilesTest, SegmentsAndStreamsAreSummed) {
  const std::string xml =
      "<recording-event><video><streams>"
      "<stream><a name='x' src='1'/><b name='y' src='2' stop-offset='10'/></stream>"
      "<stream><c name='z' src='3' start-offset='1' stop-offset='3'/></stream>"
      "</streams></video></recording-event>";
  Stage("r", xml, 1);
  EXPECT_EQ(1 + kWhole + 10 + 2, Size("r"));
}

TEST_F(MetadataFilesTest, SiblingsAfterTheFirstStreamCountWhateverTheirName) {
  const std::string xml =
      "<recording-event><video><streams>"
      "<other><s name='x' src='1' stop-offset='1000'/></other>"
      "<stream><s name='x' src='1' stop-offset='10'/></stream>"
      "<audio><s name='x' src='1' stop-offset='20'/></audio>"
      "</streams></video></recording-event>";
  Stage("r", xml, 0);
  EXPECT_EQ(30, Size("r"));
}

TEST_F(MetadataFilesTest, StreamOpeningWithACommentContributesNothing) {
  const std::string xml =
      "<recording-event><video><streams>"
      "<stream><!-- cut --><s name='x' src='1' stop-offset='1000'/></stream>"
      "<stream>text<s name='x' src='1' stop-offset='100'/></stream>"
      "<stream>\n   <s name='x' src='1' stop-offset='10'/></stream>"
      "<stream/>"
      "</streams></video></recording-event>";
  Stage("r", xml, 0);
  EXPECT_EQ(10, Size("r"));
  EXPECT_EQ("", errors_);
}

TEST_F(MetadataFilesTest, InvalidStartStopsTheWholeComputation) {
  const std::string xml =
      "<recording-event><video><streams>"
      "<stream><s name='x' src='1' stop-offset='10'/>"
      "<s name='x' src='1' start-offset='abc' stop-offset='20'/>"
      "<s name='x' src='1' stop-offset='40'/></stream>"
      "<stream><s name='x' src='1' stop-offset='80'/></stream>"
      "</streams></video></recording-event>";
  Stage("r", xml, 1);
  EXPECT_EQ(11, Size("r"));
  EXPECT_EQ("Start offset invalid", errors_);
}

TEST_F(MetadataFilesTest, MessagesOfUnusableSegments) {
  struct Case {
    std::string segment;
    std::string message;
  };
  const std::vector<Case> cases = {
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
    Stage("r", Description("<s name='first' src='1' stop-offset='7'/>" + c.segment), 3);
    const int64_t expected = c.message.empty() ? 3 + 7 + kWhole - 1 : 3 + 7;
    EXPECT_EQ(expected, Size("r")) << c.segment;
    EXPECT_EQ(c.message, errors_) << c.segment;
  }
}

TEST_F(MetadataFilesTest, DataFileSizeIsTakenFromStatNotFromReading) {
  Stage("r", "<none/>", 64);
  ASSERT_EQ(0, chmod((directory_ + "r.mtd").c_str(), 0));
  EXPECT_EQ(64, Size("r"));
  EXPECT_EQ("", errors_);
}

TEST_F(MetadataFilesTest, DataFileThatIsAFolderCountsTheFolderSize) {
  Write("r.xml", "<none/>");
  ASSERT_EQ(0, mkdir((directory_ + "r.mtd").c_str(), 0755));
  struct stat info;
  ASSERT_EQ(0, stat((directory_ + "r.mtd").c_str(), &info));
  EXPECT_EQ(info.st_size, Size("r"));
  EXPECT_EQ("", errors_);
}

TEST_F(MetadataFilesTest, DataFileSizeIsCutTo32BitsAndSignExtended) {
  Write("r.xml", "<none/>");
  Write("r.mtd", "");
  ASSERT_EQ(0, truncate((directory_ + "r.mtd").c_str(), 0xC0000010LL));  // sparse
  EXPECT_EQ(-1073741808, Size("r"));
  ASSERT_EQ(0, truncate((directory_ + "r.mtd").c_str(), 0x100000020LL));
  EXPECT_EQ(32, Size("r"));
}

TEST_F(MetadataFilesTest, ReidsAreUsedAsTheyAre) {
  for (const std::string reid : {"a b", "it's", "caf\xc3\xa9", "raw\xff\xfe", "-dash"}) {
    Stage(reid, Description(Segment("stop-offset=\"5\"")), 2);
    EXPECT_TRUE(IsStaged(directory_ + reid)) << reid;
    EXPECT_EQ(7, Size(reid)) << reid;
  }
}

TEST_F(MetadataFilesTest, OverlongReidIsNotStagedAndHasNoSize) {
  const std::string reid(1000, 'r');
  EXPECT_FALSE(IsStaged(directory_ + reid));
  EXPECT_EQ(0, Size(reid));
  EXPECT_EQ("Failed to stat file: " + directory_ + reid + ".mtd", errors_);
}

TEST(MetadataDirectory, IsTheRecordersFixedFolder) {
  EXPECT_STREQ("/mnt/hd/connectionmgr/", kMetadataDirectory);
}

}  // namespace
